#!/usr/bin/env bash
# package.sh: builds what is delivered, the manual too, and packs it: build/tarvcore-VERSION-w32.zip.
source "$(dirname -- "${BASH_SOURCE[0]}")/common.sh"
cd "$root"

scripts/build.sh release tarv tarvcore_main
run "manual" scripts/manual.sh
rm -f build/release/package/*.zip
run "package" cpack --preset release
package=$(echo build/release/package/*.zip)
rm -f build/tarvcore-*-w32.zip
mv "$package" build/
say "packed: build/${package##*/}"
command -v wine > /dev/null ||
    say "the tests need Wine to try what was packed; \"make test\" installs it"
