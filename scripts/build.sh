#!/usr/bin/env bash
# build.sh PRESET [TARGET...]: configures and builds the tree build/PRESET.
source "$(dirname -- "${BASH_SOURCE[0]}")/common.sh"
preset=$1
shift

cd "$root"
make_folder "$logs"
log=$logs/configure-$preset.log
cmake --preset "$preset" > "$log" 2>&1 || {
    tail -n 15 "$log" | sed 's/^/    /' >&2
    fail "configuring failed: $(advice "$log") (command: cmake --preset $preset; log: $log)"
}
NINJA_STATUS="[%f/%t, %es] " cmake --build --preset "$preset" ${1:+--target "$@"} ||
    fail "building failed: see above (command: cmake --build --preset $preset)"
