#!/usr/bin/env bash
# build.sh PRESET [TARGET...]: configures and builds the tree build/PRESET.
source "$(dirname -- "${BASH_SOURCE[0]}")/common.sh"
preset=$1
shift

cd "$root"
make_folder "$logs"
[[ -e build/$preset ]] || need_room "$logs" 1000
log=$logs/configure-$preset.log
cmake --preset "$preset" > "$log" 2>&1 || explain "configuring" "cmake --preset $preset" "$log"
NINJA_STATUS="[%f/%t, %es] " cmake --build --preset "$preset" ${1:+--target "$@"} ||
    fail "building failed: see above (command: cmake --build --preset $preset)"
