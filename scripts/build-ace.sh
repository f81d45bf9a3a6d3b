#!/usr/bin/env bash
# Builds ACE for the target into the cache, unless it is there.  The result appears under its final
# name only when it is whole; a second run at the same time waits for the first.
source "$(dirname -- "${BASH_SOURCE[0]}")/common.sh"

location=$("$root/scripts/ace-location.sh")
[[ -e $location ]] && exit 0

make_folder "$cache"
exec 9> "$cache/lock" || fail "cannot write to $cache"
if ! flock --nonblock 9; then
    say "waiting for another set-up on this machine"
    flock 9
    [[ -e $location ]] && exit 0
fi

# What an earlier run left behind when it was killed.
rm -rf "$cache"/*.partial
work=$location.partial
trap 'rm -rf "$work"' EXIT
make_folder "$work"

say "building ACE, once for this machine (about two minutes)"
"$root/scripts/fetch-ace.sh" "$cache"
mkdir "$work/source"
run "unpack-ace" tar --extract --file "$cache"/ace_*.tar.gz --directory "$work/source" \
    --strip-components=1 --wildcards '*/ace' '*/COPYING' '*/VERSION.txt'
run "configure-ace" cmake -S "$root/cmake/ace" -B "$work/build" -G Ninja \
    -DCMAKE_TOOLCHAIN_FILE="$root/cmake/mingw-i686.cmake" -DCMAKE_BUILD_TYPE=Release \
    -DACE_SOURCE="$work/source" -DCMAKE_INSTALL_PREFIX="$work/installed"
run "build-ace" cmake --build "$work/build"
run "install-ace" cmake --install "$work/build"
mv "$work/installed" "$location"
