#!/usr/bin/env bash
# Tests the on-screen window as a person uses it: under a virtual X server, drags out a
# rectangle with the mouse, saves with Ctrl+S, checks the saved mask against a headless replay
# of the saved log, and checks that the window sleeps while idle and while the ants march.
# Usage: tools/window-test.sh [BUILD_DIR]   (default build)
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=$(cd "${1:-$root/build}" && pwd)
host="$build/Quillmark.app/Contents/bin/quillmark-host"
# Percent of one core the window may use: idle, and with the ants marching.
idle_limit=2
ants_limit=8

for tool in Xvfb xdotool; do
    command -v "$tool" >/dev/null || { echo "window test: $tool is missing (tools/debian-packages.txt)" >&2; exit 1; }
done

work=$(mktemp -d)
xvfb_pid=""
host_pid=""
cleanup() {
    [ -n "$host_pid" ] && kill "$host_pid" 2>/dev/null && wait "$host_pid" 2>/dev/null
    [ -n "$xvfb_pid" ] && kill "$xvfb_pid" 2>/dev/null && wait "$xvfb_pid" 2>/dev/null
    rm -rf "$work"
}
trap cleanup EXIT
fail() {
    echo "window test: $*" >&2
    [ -s "$work/host.log" ] && sed 's/^/  host: /' "$work/host.log" >&2
    exit 1
}

# A display number no other server holds.
display=""
for n in $(seq 91 140); do
    if [ ! -e "/tmp/.X$n-lock" ] && [ ! -e "/tmp/.X11-unix/X$n" ]; then
        display=":$n"
        break
    fi
done
[ -n "$display" ] || fail "no free display number"
Xvfb "$display" -screen 0 1600x1200x24 -nolisten tcp >"$work/xvfb.log" 2>&1 &
xvfb_pid=$!
export DISPLAY=$display
for _ in $(seq 50); do
    xdotool getmouselocation >/dev/null 2>&1 && break
    sleep 0.1
done
xdotool getmouselocation >/dev/null 2>&1 || fail "the X server did not start"

cd "$work"
"$host" >"$work/host.log" 2>&1 &
host_pid=$!
window=""
for _ in $(seq 100); do
    window=$(xdotool search --onlyvisible --name '^Quillmark$' 2>/dev/null | head -1 || true)
    [ -n "$window" ] && break
    kill -0 "$host_pid" 2>/dev/null || fail "quillmark-host ended before its window showed"
    sleep 0.1
done
[ -n "$window" ] || fail "no window appeared"
xdotool windowmove --sync "$window" 0 0 >/dev/null 2>&1 || true
sleep 1.5 # the plug-in's bar comes up on its own timers

# Ticks of processor time (user + system) the host used in `seconds`, as a percent of a core.
cpu_percent() {
    local seconds=$1 hz before after
    hz=$(getconf CLK_TCK)
    before=$(awk '{ print $14 + $15 }' "/proc/$host_pid/stat")
    sleep "$seconds"
    after=$(awk '{ print $14 + $15 }' "/proc/$host_pid/stat")
    echo $(((after - before) * 100 / (hz * seconds)))
}

idle=$(cpu_percent 4)
echo "idle: $idle % of a core"
[ "$idle" -le "$idle_limit" ] || fail "idle window uses $idle % of a core (at most $idle_limit)"

# A drag from (300, 300) to (500, 450) in the window's content, rows running down: at zoom 1
# the 1000 x 800 canvas sits 100 points in from the 1200 x 900 window's sides.
eval "$(xdotool getwindowgeometry --shell "$window")"
xdotool mousemove $((X + 300)) $((Y + 300))
sleep 0.1
xdotool mousedown 1
for step in 1 2 3 4; do
    xdotool mousemove $((X + 300 + step * 50)) $((Y + 300 + step * 37))
    sleep 0.05
done
xdotool mousemove $((X + 500)) $((Y + 450)) mouseup 1
sleep 0.5

ants=$(cpu_percent 4)
echo "ants marching: $ants % of a core"
[ "$ants" -le "$ants_limit" ] || fail "the marching ants use $ants % of a core (at most $ants_limit)"

xdotool key --window "$window" ctrl+s
for _ in $(seq 50); do
    [ -s untitled-log.jsonl ] && [ -s untitled-mask.png ] && break
    sleep 0.1
done
[ -s untitled-mask.png ] || fail "Ctrl+S wrote no mask"
[ -s untitled-log.jsonl ] || fail "Ctrl+S wrote no log"
grep -q '"kind":90,' untitled-log.jsonl || fail "the saved log holds no selection: $(cat untitled-log.jsonl)"
# The record's rectangle: x, y, width and height in canvas pixels.
read -r x y w h < <(sed -n 's/.*"param3":\([-0-9.e]*\),"param4":\([-0-9.e]*\),"param5":\([-0-9.e]*\),"param6":\([-0-9.e]*\),.*/\1 \2 \3 \4/p' untitled-log.jsonl | head -1)
[ "$x $y $w $h" = "200 250 200 150" ] || fail "the dragged rectangle was recorded as $x $y $w $h, not 200 250 200 150"
timeout 60 "$host" replay untitled-log.jsonl --out replayed >/dev/null || fail "the saved log does not replay"
cmp -s untitled-mask.png replayed/replay-mask.png || fail "the saved mask differs from the replayed rectangle's"

kill "$host_pid"
wait "$host_pid" 2>/dev/null || true
host_pid=""
echo "window test passed"
