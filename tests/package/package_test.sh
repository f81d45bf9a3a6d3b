#!/usr/bin/env bash
# package_test.sh BUILD CASE: tries the package as somebody does who has nothing else.
#
# Faults to catch: a file that a program needs and the package does not have; a path of this machine
# in one; a folder's name that is not quoted somewhere; programs that are built with what does not fit,
# and nobody tells.
set -euo pipefail
build=$1 # of the library
case=$2
source=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")/../.." && pwd)
work=$build/package-test
# As folders are called by people.
folder="$work/Bücher und anderes"
package=$(echo "$folder"/tarvcore-*-w32)

fail() {
    printf '%s\n' "$@" >&2
    exit 1
}

# runs PROGRAM: its output is that of the example, whatever this machine is called.
runs() {
    local output
    output=$(WINEPATH='' "$source/scripts/wine-run" "$build" "$1" < /dev/null |
        sed -E 's/\r$//; s/^(Hostname: +).*/\1HOST/; s/\([0-9]+\)$/(LINE)/')
    diff - <(printf '%s\n' "$output") << 'EXPECTED' || fail "$1 says something else: see above"
2014-07-16T13:23:00Z is 1405516980000000000 ns

ErrorCode:   error.tarvcore.absoluteTime.invalidUtcString
Description: Invalid date/time separator in UTC time string.  Expecting ' ' or 'T': "2014-07-16X13:23:00Z"
Hostname:    HOST
Function:    tarvcore::AbsoluteTime::from_string_nothrow()
File(Line):  //tarvcore/absolute_time_parser.cpp#1(LINE)
Parameters:  'utcTime' => "2014-07-16X13:23:00Z"
in time: false
in time: true, one soup
cancelled: true
8f1f4c2a-7b63-4d0e-9c55-1c7f3a90d2e4 is Mensa
error.exception.assert: 1 + 1 == 3
EXPECTED
}

# refuses TEXT COMMAND...: the command fails, and says why.
refuses() {
    local text=$1 output
    shift
    if output=$("$@" 2>&1); then fail "this went well: $*" "$output"; fi
    # CMake breaks lines.
    [[ $(tr -s '[:space:]' ' ' <<< "$output") == *"$text"* ]] ||
        fail "$* does not say \"$text\" but:" "$output"
}

case $case in
    unpack)
        rm -rf "$work"
        mkdir -p "$folder"
        cpack --config "$build/CPackConfig.cmake" -B "$work"
        cd "$folder"
        cmake -E tar xf "$work"/tarvcore-*-w32.zip
        if grep -rlF -e "$source" -e "$build" -e "${XDG_CACHE_HOME:-$HOME/.cache}/tarvcore" .; then
            fail "these files name folders of this machine"
        fi
        ;;
    cmake)
        # As its README says.
        cd "$package"
        commands=$(sed -n 's/^    //p' README.md)
        [[ $commands == cmake*$'\nbuild/consumer.exe' ]] || fail "README.md has other commands"
        CMAKE_GENERATOR=Ninja bash -euc "${commands%$'\n'*}"
        runs build/consumer.exe
        ;;
    pkg-config)
        mkdir "$folder/by hand"
        cd "$folder/by hand"
        export PKG_CONFIG_LIBDIR=$package/lib/pkgconfig
        eval i686-w64-mingw32-g++-posix -std=c++20 '"$package"/share/tarvcore/consumer/consumer.cpp' \
            "$(pkg-config --cflags --libs tarvcore-main)" -o consumer.exe
        cp "$package"/bin/*.dll .
        runs ./consumer.exe
        ;;
    refusals)
        cd "$work"
        echo '#include "tarvcore/tarvcore.h"' > any.cpp
        refuses "tarvcore needs C++20: compile with -std=c++20" i686-w64-mingw32-g++-posix -std=c++17 \
            -I "$package/include" -c any.cpp
        # What CMake knows of a compiler, each time with one fault.
        printf 'cmake_minimum_required(VERSION 3.25)\nfind_package(tarvcore REQUIRED PATHS "%s")\n' \
            "$package" > any.cmake
        printf '#!/bin/sh\necho Thread model: win32 >&2\n' > other_threads
        chmod +x other_threads
        finds=(cmake -D WIN32=1 -D CMAKE_CXX_COMPILER_LOADED=1
            -D CMAKE_CXX_COMPILER=i686-w64-mingw32-g++-posix -D CMAKE_CXX_COMPILER_ID=GNU
            -D CMAKE_CXX_COMPILER_VERSION=12.2 -D CMAKE_SIZEOF_VOID_P=4)
        refuses "has not enabled the language CXX" \
            "${finds[@]}" -D CMAKE_CXX_COMPILER_LOADED=0 -P any.cmake
        refuses "is Clang for" "${finds[@]}" -D CMAKE_CXX_COMPILER_ID=Clang -P any.cmake
        refuses "is GNU for" "${finds[@]}" -D WIN32=0 -P any.cmake
        refuses "is not for 32-bit programs" "${finds[@]}" -D CMAKE_SIZEOF_VOID_P=8 -P any.cmake
        refuses "GCC 11.4, older than 12" "${finds[@]}" -D CMAKE_CXX_COMPILER_VERSION=11.4 -P any.cmake
        refuses "has other threads" "${finds[@]}" -D CMAKE_CXX_COMPILER="$PWD/other_threads" -P any.cmake
        ;;
esac
