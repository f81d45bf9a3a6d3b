#!/usr/bin/env bash
# test-display.sh [PICTURE]: shows the box of failed assertions on a display that nobody sees, presses
# its buttons by real keys, with and without SHIFT and CTRL held, and compares what the program does.
# PICTURE gets the box as a PNG file.
source "$(dirname -- "${BASH_SOURCE[0]}")/common.sh"
build=$root/build/release
work=$build/display-test
picture=${1:+$(realpath -- "$1")}

rm -rf "$work"
make_folder "$work"
export WINEPREFIX=$work/wine WINEARCH=win32 WINEDEBUG=-all WINEDLLOVERRIDES="mscoree,mshtml="
# In English, and without this user's settings.
export LC_ALL=C.UTF-8 HOME=$work

Xvfb -displayfd 3 -screen 0 1000x800x24 -nolisten tcp 3> "$work/display" 2> "$work/xvfb.log" &
xvfb=$!
clean_up() {
    wineserver --kill 2> /dev/null || true
    kill "$xvfb" 2> /dev/null || true
}
trap clean_up EXIT

# await SECONDS COMMAND...: until the command succeeds.
await() {
    local end=$((SECONDS + $1))
    shift
    until "$@"; do
        ((SECONDS < end)) || fail "this did not come: $*"
        sleep 0.1
    done
}
await 30 test -s "$work/display"
DISPLAY=:$(cat "$work/display")
export DISPLAY

say "preparing Wine with a display (about ten seconds)"
attempt "wine-with-display" wineboot --init
# Wine draws the frame: there is no window manager that would.
wine reg add 'HKCU\Software\Wine\X11 Driver' /v Managed /d N /f > /dev/null
folder=$WINEPREFIX/drive_c/demo
mkdir "$folder"
cp "$build"/bin/{tarv.exe,*.dll} "$folder"
cd "$folder"

has_focus() { [[ $(xdotool getwindowfocus 2> /dev/null) == "$1" ]]; }

# press KEYS MODIFIER EXPECTED: shows the box, presses these keys and then the button that has the
# focus, with the modifier held; the program says EXPECTED.
press() {
    local keys=$1 modifier=$2 expected=$3 program box
    wine 'C:\demo\tarv.exe' demo assert --box > "$work/output" 2> "$work/errors" &
    program=$!
    box=$(timeout 60 xdotool search --sync --onlyvisible --name '^Varnholt Core Library$') ||
        fail "no box appeared"
    await 30 has_focus "$box"
    if [[ -n $picture ]]; then
        import -window "$box" -strip "PNG8:$picture"
        picture=
    fi
    # shellcheck disable=SC2086  # as many keys as there are
    [[ -z $keys ]] || xdotool key $keys
    [[ -z $modifier ]] || xdotool keydown "$modifier"
    xdotool key space
    timeout 60 tail --pid="$program" -f /dev/null || fail "the box did not go"
    [[ -z $modifier ]] || xdotool keyup "$modifier"
    [[ $(head -n 1 "$work/output") == "$expected"* ]] ||
        fail "${modifier:+$modifier and }${keys:-no key} and the button:" "$(cat "$work/output")"
}

press "Tab" "" "The program stops in a debugger."
press "Tab" shift "The program catches:"
press "Tab" ctrl "The program catches:"
press "Tab Tab" "" "The program goes on."
press "Tab Tab" shift "The program goes on."
say "display: every box did what its button says"
