#!/usr/bin/env bash
# check_package.sh: packs this tree, and a copy of it in another folder, which finds the cache at
# another place, too.  Fails where the two packages are not the same to the byte.
source "$(dirname -- "${BASH_SOURCE[0]}")/common.sh"
cd "$root"

scripts/package.sh
package=$(echo build/tarvcore-*-w32.zip)

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
# Blanks and more than ASCII: another kind of name, too.
copy=$work/"naïve copy of tarvcore"
mkdir "$copy" "$work/cache"
ln -s "$cache" "$work/cache/tarvcore"
git ls-files -z --cached --others --exclude-standard |
    xargs -0 cp --parents --no-dereference --target-directory="$copy"
XDG_CACHE_HOME=$work/cache "$copy/scripts/package.sh"

if ! cmp "$package" "$copy/$package"; then
    trap - EXIT
    for folder in "$root" "$copy"; do
        mkdir -p "$work/unpacked/${folder##*/}"
        (cd "$work/unpacked/${folder##*/}" && cmake -E tar xf "$folder/$package")
    done
    diff -rq "$work/unpacked"/* >&2 || true
    fail "two builds of one source give different packages: see above, and the folder $work;" \
        "where this tree was built on and on, \"make clean\" is worth a try"
fi
say "two builds give the same package: $(sha256sum "$package")"
