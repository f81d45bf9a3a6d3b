#!/usr/bin/env bash
# setup.sh [GROUP...]: makes this machine able to build and test: Debian packages (those of the
# group "build" and of the groups named) and ACE for the target; for the group "bench" also its
# harness and those peers that no package has for the target.  Takes no time when all is there.
source "$(dirname -- "${BASH_SOURCE[0]}")/common.sh"

"$root/scripts/install-packages.sh" build "$@"
libraries=(ace)
[[ " $* " == *" bench "* ]] && libraries+=(benchmark abseil icu)
for library in "${libraries[@]}"; do
    "$root/scripts/build-library.sh" "$library"
done
