#!/usr/bin/env bash
# Builds the libFuzzer targets with clang 14 (ASan + UBSan) and runs each for
# a bounded time on a copy of its seed corpus. Any crash, leak, timeout or
# out-of-memory report fails the run. Needs the Debian packages clang-14 and
# libclang-rt-14-dev (this script installs nothing).
#
#   FUZZ_SECONDS  seconds per target (default 10)
#   FUZZ_JOBS     build parallelism (default 2)
set -euo pipefail
cd "$(dirname "$0")/.."
root=$PWD

CXX=${CXX_FUZZ:-clang++-14}
seconds=${FUZZ_SECONDS:-10}
jobs=${FUZZ_JOBS:-2}
build=$root/build/fuzz
targets=(cipher loader progress bank_source interchange)

if ! command -v "$CXX" >/dev/null 2>&1; then
  echo "fuzz.sh: $CXX not found; install the packages clang-14 and libclang-rt-14-dev" >&2
  exit 2
fi

echo "=== fuzz: configure and build ($build)"
cmake -S "$root" -B "$build" -G Ninja \
  -DCMAKE_BUILD_TYPE=RelWithDebInfo \
  -DCMAKE_CXX_COMPILER="$CXX" \
  -DKESTA_BUILD_GUI=OFF -DKESTA_BUILD_TESTS=OFF -DKESTA_BUILD_BENCH=OFF \
  -DKESTA_SANITIZE=address,undefined -DKESTA_FUZZ=ON >/dev/null
cmake --build "$build" -j "$jobs" --target "${targets[@]/%/_fuzz}"

# Everything a run writes (corpus copies, new inputs, crash files, the
# targets' temporary files) stays below one scratch folder, never in the
# repository.
work=$(mktemp -d "${TMPDIR:-/tmp}/kesta-fuzz.XXXXXX")
# The loader and progress targets rewrite one temporary file per input; on
# a memory file system that is ten times faster than on disk.
if [ -d /dev/shm ] && [ -w /dev/shm ]; then
  scratch=$(mktemp -d /dev/shm/kesta-fuzz.XXXXXX)
else
  scratch=$work/tmp
  mkdir -p "$scratch"
fi
trap 'rm -rf "$work" "$scratch"' EXIT
export TMPDIR=$scratch
export ASAN_OPTIONS=${ASAN_OPTIONS:-detect_leaks=1:abort_on_error=1}
export UBSAN_OPTIONS=${UBSAN_OPTIONS:-print_stacktrace=1:halt_on_error=1}

failed=()
summary=()
for t in "${targets[@]}"; do
  corpus=$work/corpus/$t
  artifacts=$work/artifacts/$t/
  mkdir -p "$corpus" "$artifacts"
  if [ -d "$root/fuzz/corpus/$t" ]; then
    cp -R "$root/fuzz/corpus/$t/." "$corpus/"
  fi
  log=$work/$t.log
  echo "=== fuzz: $t (${seconds}s)"
  status=0
  "$build/fuzz/${t}_fuzz" "$corpus" \
    -max_total_time="$seconds" -rss_limit_mb=2048 -timeout=10 -max_len=65536 \
    -print_final_stats=1 -artifact_prefix="$artifacts" >"$log" 2>&1 || status=$?
  execs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log" | tail -1)
  if [ "$status" -ne 0 ] || grep -qE '^==[0-9]+==ERROR|runtime error:|SUMMARY: |ALARM: working on the last Unit|out-of-memory' "$log"; then
    echo "--- $t FAILED (exit $status); log:"
    tail -60 "$log"
    for f in "$artifacts"*; do
      [ -e "$f" ] || continue
      mkdir -p "$root/build/fuzz-findings/$t"
      cp "$f" "$root/build/fuzz-findings/$t/"
      echo "    reproducer kept: build/fuzz-findings/$t/$(basename "$f")"
    done
    failed+=("$t")
  fi
  summary+=("$(printf '%-12s %12s executions' "$t" "${execs:-?}")")
done

echo "=== fuzz: summary"
printf '%s\n' "${summary[@]}"
if [ "${#failed[@]}" -ne 0 ]; then
  echo "fuzz.sh: findings in: ${failed[*]}" >&2
  exit 1
fi
echo "fuzz.sh: no findings"
