#!/bin/sh
# With --json every line the desk host writes is one JSON object, even when the service writes to
# standard output: a PNG capture whose temporary file is a full device makes the writer print its
# long-jump line, which must arrive as a "stdout" event.
# usage: json-stdout.sh [EMULATOR...] SYSCTRL_SIM
set -eu
[ -w /dev/full ] || { echo "this test needs /dev/full" >&2; exit 1; }
root=$(mktemp -d -t sysctrl-json-stdout.XXXXXX)
trap 'rm -rf "$root"' EXIT
trap 'exit 1' HUP INT TERM
mkdir -p "$root/captures"
ln -s /dev/full "$root/captures/temp.png"
printf 'state ScreenCapture.width 1920\nstate ScreenCapture.height 1080\ncmdCaptureScreen %s shot.png 2\n' \
    "$root/captures" > "$root/capture.sim"
"$@" --json --only return,stdout --root "$root" "$root/capture.sim" > "$root/out" || true
cat "$root/out"
if grep -v '^{.*}$' "$root/out"; then
    echo "lines above are not JSON objects" >&2
    exit 1
fi
grep -qx '{"event":"stdout","text":"Error: set jmp"}' "$root/out"
