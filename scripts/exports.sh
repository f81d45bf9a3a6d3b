#!/usr/bin/env bash
# exports.sh: prints what the built library exports, readable and sorted.
source "$(dirname -- "${BASH_SOURCE[0]}")/common.sh"

i686-w64-mingw32-objdump -p "$root/build/release/bin/tarvcore-w32r-2-1.dll" |
    sed -nE '/^\[Ordinal\/Name Pointer\] Table/,/^$/ s/^\t\[ *[0-9]+\].* ([^ ]+)$/\1/p' |
    c++filt | LC_ALL=C sort --unique
