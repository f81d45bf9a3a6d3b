#!/usr/bin/env bash
# check.sh: everything about the source that needs no running program.  Goes through all checks and
# fails at the end if one has failed.
source "$(dirname -- "${BASH_SOURCE[0]}")/common.sh"
cd "$root"
failed=()

# check NAME ADVICE COMMAND...: one check; its output shows only what is wrong.
check() {
    local name=$1 help=$2 start=$SECONDS
    shift 2
    if "$@"; then
        say "$name: good ($((SECONDS - start)) s)"
    else
        say "$name: FAILED ($help)"
        failed+=("$name")
    fi
}

folders=()
for folder in tarvcore tarvcoremain tarvmoduleregistry tools tests bench examples; do
    [[ -d $folder ]] && folders+=("$folder")
done
mapfile -t sources < <(find "${folders[@]}" -name '*.cpp' -o -name '*.h' | sort)
mapfile -t scripts < <(grep -lE '^#!.*bash' -r scripts tests .ci tarv)

# The C++ of README, as a program of its own would have it: without our flags, which say that there
# are SSE2 instructions.
example_compiles() {
    awk '/^```/ { inside = $0 == "```cpp"; next } inside { print; n++ } END { exit !n }' README.md |
        i686-w64-mingw32-g++-posix -std=c++20 -O2 -Wall -Wextra -Werror -I. -S -o /dev/null \
            -isystem "$(scripts/library-location.sh ace)/include" -x c++ -
}
exports_are_listed() { scripts/exports.sh | diff -u cmake/exports.txt -; }

check "format" "clang-format -i the files named" clang-format --dry-run -Werror "${sources[@]}"
check "text files" "see .editorconfig" scripts/check_editorconfig.py
check "layers" "see cmake/layers.txt" python3 scripts/check_layers.py
check "picture of the layers" "scripts/draw_layers.py" python3 scripts/draw_layers.py --check
check "picture of the performance" "scripts/draw_performance.py" \
    scripts/draw_performance.py --check
check "shell scripts" "shellcheck" shellcheck --external-sources --source-path=scripts "${scripts[@]}"
check "whose each file is" "see .reuse/dep5" reuse lint --quiet
check "documents' links" "mend the links named" python3 scripts/check_docs.py
check "examples in the documents" "scripts/embed_examples.py" \
    python3 scripts/embed_examples.py --check
check "manual" "see above" scripts/manual.sh
check "README's example" "mend it" example_compiles
check "headers, and layers without those above" "see above" \
    scripts/build.sh release header_checks layer_links tarvcore
check "exported symbols" "if the change is meant: make exports" exports_are_listed
check "lint" "see .clang-tidy" scripts/lint.sh

((${#failed[@]} == 0)) || fail "these checks failed: $(printf '%s; ' "${failed[@]}")"
