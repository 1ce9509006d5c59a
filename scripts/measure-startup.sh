#!/usr/bin/env bash
# Measures the real program from outside: a Release build of kesta-demo,
# installed into a scratch folder with 42 question files of 1000 questions
# each and its own all-users data tree, started under a virtual X server.
# Reports the time from launch to the splash, from dismissing the splash to
# the main window, and the program's peak resident memory (VmHWM).
#
#   scripts/measure-startup.sh [build-dir]     (default: build/measure-startup)
set -euo pipefail

if [[ "${1:-}" == "--inner" ]]; then
  # Runs inside xvfb-run: $2 is the program to start.
  program=$2
  now_ms() { echo $(( $(date +%s%N) / 1000000 )); }

  t0=$(now_ms)
  "$program" >/dev/null 2>&1 &
  pid=$!
  trap 'kill "$pid" 2>/dev/null || true' EXIT

  # The splash is the program's first visible window; it has no title.
  splash=""
  for _ in $(seq 1 1000); do
    splash=$(xdotool search --onlyvisible --pid "$pid" 2>/dev/null | head -n 1 || true)
    [[ -n "$splash" ]] && break
    kill -0 "$pid" 2>/dev/null || { echo "the program ended before showing its splash" >&2; exit 1; }
    sleep 0.01
  done
  [[ -n "$splash" ]] || { echo "no splash window within 10 s" >&2; exit 1; }
  t_splash=$(now_ms)

  # A click dismisses the splash at once instead of after its four seconds.
  xdotool mousemove --window "$splash" 40 40 click 1
  t_click=$(now_ms)
  main=""
  for _ in $(seq 1 3000); do
    main=$(xdotool search --onlyvisible --name '^KESTA DEMO$' 2>/dev/null | head -n 1 || true)
    [[ -n "$main" ]] && break
    kill -0 "$pid" 2>/dev/null || { echo "the program ended before its main window" >&2; exit 1; }
    sleep 0.01
  done
  [[ -n "$main" ]] || { echo "no main window within 30 s" >&2; exit 1; }
  t_main=$(now_ms)

  sleep 1 # let the first paint and the idle page settle before reading memory
  echo "launch to splash:               $((t_splash - t0)) ms"
  echo "splash dismissed to main window: $((t_main - t_click)) ms"
  grep -E '^(VmHWM|VmRSS):' "/proc/$pid/status"
  exit 0
fi

root=$(cd "$(dirname "$0")/.." && pwd)
build=${1:-$root/build/measure-startup}
scratch=$(mktemp -d /tmp/kesta-measure.XXXXXX)
trap 'rm -rf "$scratch"' EXIT

for tool in xvfb-run xdotool cmake ninja; do
  command -v "$tool" >/dev/null || { echo "needs $tool" >&2; exit 1; }
done

# The data folder is compiled in, so this build dir belongs to this scratch tree.
cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DKESTA_BUILD_TESTS=OFF \
  -DKESTA_COMMON_APPDATA="$scratch/appdata/" >/dev/null
cmake --build "$build" -j 2 --target kesta-demo startup_bench >/dev/null

mkdir -p "$scratch/appdata/MORVO/KESTA/All/Log" "$scratch/appdata/MORVO/KESTA/All/User" "$scratch/program"
cp "$build/bin/kesta-demo" "$scratch/program/"
"$build/bin/startup_bench" --write-banks "$scratch/program/Questions"
echo "installed $(ls "$scratch/program/Questions" | wc -l) question files ($(du -sh "$scratch/program/Questions" | cut -f1))"

xvfb-run -a -s "-screen 0 1280x1024x24" bash "$0" --inner "$scratch/program/kesta-demo"
