#!/usr/bin/env bash
# printers_test.sh BUILD: a program of the library's values writes its memory to a file, and GDB, which
# loads the printers by itself with the DLL, shows them.
set -euo pipefail
build=$1
folder=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")" && pwd)
work=$build/gdb-test

if [[ $(gdb -batch -nx -ex 'python print("has Python")' 2> /dev/null) != "has Python" ]]; then
    echo "skipped: no gdb with Python"
    exit 0
fi
mkdir -p "$work"
cd "$work"
"$folder/../../scripts/wine-run" "$build" "$build/bin/gdb_values.exe" core expected
LC_ALL=C.UTF-8 gdb -batch -nx -iex "add-auto-load-safe-path $build/bin" "$build/bin/gdb_values.exe" \
    -ex "core-file core" -ex "add-symbol-file '$(echo "$build"/bin/tarvcore-*.dll)' -o 0" \
    -ex 'set print max-depth -1' -ex "set \$expected = \"expected\"" -x "$folder/printers_test.py" \
    -ex 'quit 1' # after an exception GDB goes on
