#!/usr/bin/env bash
# Builds the Debian package of the system install (the program under /usr, the
# data tree under /var/lib/, made by the package's post-install step) and
# prints the package's path. The build folder is the one scripts/setup-and-run.sh
# uses: the two differ only in the data folder, compiled into one file.
#
#   KESTA_JOBS  build parallelism (default: the build tool's own)
set -euo pipefail
cd "$(dirname "$0")/.."

cmake -S . -B build/release -G Ninja -DCMAKE_BUILD_TYPE=Release -DCMAKE_INSTALL_PREFIX=/usr \
      -DKESTA_COMMON_APPDATA=/var/lib/ -DKESTA_BUILD_TESTS=OFF -DKESTA_BUILD_BENCH=OFF >/dev/null
cmake --build build/release ${KESTA_JOBS:+-j "$KESTA_JOBS"} >&2
(cd build/release && cpack) | sed -n 's/^CPack: - package: \(.*\) generated\.$/\1/p'
