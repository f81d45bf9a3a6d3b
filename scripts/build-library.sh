#!/usr/bin/env bash
# build-library.sh NAME: builds what cmake/NAME describes (ACE, a peer of the benchmarks) for the
# target into the cache, unless it is there.  The result appears under its final name only when it is
# whole; a second run at the same time waits for the first.
source "$(dirname -- "${BASH_SOURCE[0]}")/common.sh"

name=$1

location=$("$root/scripts/library-location.sh" "$name")
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
need_room "$work" 300

say "building $name, once for this machine (minutes)"
"$root/scripts/fetch-source.sh" "$name" "$cache"
read -r _ archive < "$root/cmake/$name/source.sha256"
mkdir "$work/source"
run "unpack-$name" tar --extract --file "$cache/$archive" --directory "$work/source" \
    --strip-components=1
run "configure-$name" cmake -S "$root/cmake/$name" -B "$work/build" -G Ninja \
    -DCMAKE_TOOLCHAIN_FILE="$root/cmake/mingw-i686.cmake" -DCMAKE_BUILD_TYPE=Release \
    -D"${name^^}_SOURCE=$work/source" -DCMAKE_INSTALL_PREFIX="$work/installed"
run "build-$name" cmake --build "$work/build"
run "install-$name" cmake --install "$work/build"
mv "$work/installed" "$location"
