#!/usr/bin/env bash
# Installs what is missing, builds, installs the program and its demo
# question banks into a local folder, creates the all-users data tree the way
# an installer would (in a local folder, so no root is needed) and starts
# the program.
set -euo pipefail
cd "$(dirname "$0")/.."

prefix="${KESTA_PREFIX:-$HOME/.local/opt/kesta-demo}"
appdata="${KESTA_APPDATA:-$HOME/.local/share/kesta-appdata/}"
case "$appdata" in */) ;; *) appdata="$appdata/" ;; esac

bash scripts/deps.sh

cmake -S . -B build/release -G Ninja -DCMAKE_BUILD_TYPE=Release -DKESTA_BUILD_TESTS=OFF -DKESTA_BUILD_BENCH=OFF \
      -DCMAKE_INSTALL_PREFIX="$prefix" -DKESTA_COMMON_APPDATA="$appdata" >/dev/null
cmake --build build/release -j 2
cmake --install build/release >/dev/null

echo "Installed into $prefix (data folders under ${appdata}MORVO/KESTA/All)."
if [ -z "${DISPLAY:-}" ] && [ -z "${WAYLAND_DISPLAY:-}" ]; then
  echo "There is no display here. Start the program under a virtual one with:"
  echo "  xvfb-run -a \"$prefix/bin/kesta-demo\""
  exit 0
fi
exec "$prefix/bin/kesta-demo"
