#!/usr/bin/env bash
# Installs the Debian 12 packages that the build, the tests, the package and
# its checks, and the program need, when any is missing. Runs apt-get as root,
# through sudo when needed.
set -euo pipefail

packages=(
  cmake ninja-build g++ pkg-config
  qt6-base-dev qt6-base-dev-tools libgl-dev
  libgtest-dev libgmock-dev googletest libbenchmark-dev
  xvfb xauth xdotool poppler-utils fonts-liberation2
  dbus at-spi2-core python3-pyatspi
  clang-14 libclang-rt-14-dev
  dpkg-dev file lintian desktop-file-utils appstream
)

missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
[ ${#missing[@]} -eq 0 ] && exit 0

echo "Installing: ${missing[*]}"
sudo=""
[ "$(id -u)" -eq 0 ] || sudo="sudo"
$sudo apt-get update -qq
DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
