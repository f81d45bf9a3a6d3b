#!/usr/bin/env bash
# planted_faults.sh COMMAND...: shows that the checkers see.  Runs COMMAND, which starts
# planted_faults.exe, with the name of every fault in it, and compares what is reported.
set -u
failures=0

# expect FAULT STATUS TEXT: the output has TEXT in it.
expect() {
    local fault=$1 status=$2 text=$3 output actual
    output=$("${command[@]}" "$fault" 2>&1 < /dev/null)
    actual=$?
    if ((actual != status)) || [[ $output != *"$text"* ]]; then
        printf '%s: expected status %d and "%s", found status %d and:\n%s\n' \
            "$fault" "$status" "$text" "$actual" "$output"
        failures=$((failures + 1))
    fi
}

command=("$@")
expect none 0 survived
expect exceptions 0 survived
expect threads 0 survived

expect heap_write 99 "write of 1 bytes"
expect heap_read 99 "outside a heap block"
expect heap_before 99 "outside a heap block"
expect heap_copy 99 "memcpy's write of 10 bytes"
expect heap_text 99 "strlen's read"
expect freed 99 "in a freed heap block"
expect stale_iterator 99 "in a freed heap block"
expect second_free 99 "second free"
expect inner_free 99 "no heap block"
expect stack 99 "outside a local variable"
expect scope 99 "out of scope"
expect global 99 "outside a global variable"

expect signed 99 "overflow in an addition at"
expect shift 99 "shift out of bounds at"
expect index 99 "index out of bounds at"
expect cast 99 "out of the integer's range at"
expect misaligned 99 "misaligned address at"
expect null 99 "use of a null pointer at"

expect vector_index 3 "__n < this->size()"

((failures == 0))
