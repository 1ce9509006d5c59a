#!/usr/bin/env bash
# Builds and runs every test twice: in a normal build and in a build with
# AddressSanitizer and UndefinedBehaviorSanitizer; then builds the Debian
# package and a local install and checks both (scripts/check-install.sh), and
# runs each fuzz target for a few seconds. Any failure, sanitizer report, or
# error or warning about the package fails the run.
set -euo pipefail
cd "$(dirname "$0")/.."

bash scripts/deps.sh

for preset in dev asan; do
  echo "=== ${preset}: configure and build"
  cmake --preset "$preset" >/dev/null
  cmake --build --preset "$preset" -j 2
  echo "=== ${preset}: tests"
  ctest --preset "$preset"
done

echo "=== package and local install"
bash scripts/check-install.sh

echo "=== fuzz"
bash scripts/fuzz.sh
