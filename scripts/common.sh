# What the scripts here share; sourced by them, with bash.
#
# shellcheck shell=bash
set -euo pipefail

root=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")/.." && pwd)
# shellcheck disable=SC2034  # used by the scripts that source this one
cache=${XDG_CACHE_HOME:-${HOME:-$root/build}/.cache}/tarvcore
logs=$root/build/log

# Progress goes to standard error: standard output is the tool's.
say() { printf '%s\n' "==> $*" >&2; }

fail() {
    printf '%s\n' "error: $*" >&2
    exit 1
}

# make_folder FOLDER: creates it, or says in one line why that cannot be.
make_folder() {
    local why
    why=$(mkdir -p -- "$1" 2>&1) && [[ -w $1 ]] && return
    case $why in
        *"No space left"*) fail "the disk is full: cannot create $1" ;;
        *) fail "cannot write to $1: this user needs the right to" \
                "(for the cache, XDG_CACHE_HOME may name another folder)" ;;
    esac
}

# need_room FOLDER MEGABYTES: fails if the disk has not that much left.  Asked before a long step:
# some programs try for ever to write to a full disk.
need_room() {
    local free
    free=$(df --output=avail --block-size=1M "$1" | tail -n 1)
    ((free >= $2)) || fail "the disk is full: $1 needs $2 MB more, and has $((free)) MB"
}

# advice LOG...: what a person can do about the failure that the logs tell of; fails if that is not
# known.
advice() {
    if grep -qE 'No space left on device|Disk quota exceeded' "$@"; then
        echo "the disk is full: make room and run the command again"
    elif grep -qE 'Temporary failure resolving|Could not resolve|Network is unreachable|(Could not|Cannot|Unable to) (connect|initiate)|Connection (refused|timed out)' "$@"; then
        echo "the network cannot be reached: connect this machine and run the command again"
    elif grep -qE 'Permission denied|Read-only file system|Operation not permitted' "$@"; then
        echo "a permission is missing, see above"
        return 1
    else
        echo "the end of its output is above"
        return 1
    fi
}

# explain STEP COMMAND LOG...: ends the script because of a failed step.  Shows the end of the log
# only where it must speak for itself.
explain() {
    local step=$1 command=$2 advice
    shift 2
    advice=$(advice "$@") || tail -n 15 "$1" | sed 's/^/    /' >&2
    fail "$step failed: $advice (command: $command; log: $1)"
}

# watch START LOG: says now and then how far a step is.
watch() {
    local start=$1 log=$2 next=10
    while sleep 1 > /dev/null 2>&1 && kill -0 $$ 2> /dev/null; do
        ((SECONDS - start >= next)) || continue
        printf '    %4d s: %.90s\n' "$next" "$(tail -n 1 "$log" | tr -d '\r')" >&2
        next=$((next + 10))
    done
}

# attempt NAME COMMAND...: runs a step that has much to say.  Its output goes to build/log/NAME.log;
# here appear a line now and then while it works, and its duration.  Answers the command's status.
attempt() {
    local name=$1 log=$logs/$1.log start=$SECONDS watcher status=0
    shift
    make_folder "$logs"
    watch "$start" "$log" &
    watcher=$!
    "$@" > "$log" 2>&1 || status=$?
    kill "$watcher"
    wait "$watcher" 2> /dev/null || true
    ((status == 0)) && say "$name: done in $((SECONDS - start)) s"
    return "$status"
}

# run NAME COMMAND...: the same, and on failure shows the end of the log, the command and what to do.
# `earlier_log`, if set, is the log of a step which this one needs and which may have failed.
run() {
    local name=$1 log=$logs/$1.log
    attempt "$@" && return
    shift
    explain "$name" "$*" "$log" ${earlier_log:+"$earlier_log"}
}
