#!/usr/bin/env bash
# Installs what is missing, builds, and installs the program for the current
# user in the XDG user folders: the launcher and kesta-qbank in ~/.local/bin,
# the program beside its demo question banks in ~/.local/lib/kesta-demo, the
# desktop entry and icon where desktops look for them. Creates the data tree
# the way an installer would (in the user's own folder, so no root is needed)
# and starts the program.
#
#   scripts/setup-and-run.sh              install (again) and start
#   scripts/setup-and-run.sh --uninstall  remove what the install put in place
#
#   KESTA_PREFIX   install prefix (default ~/.local)
#   KESTA_APPDATA  the folder the data tree goes in (default ~/.local/share/kesta-appdata/)
set -euo pipefail
cd "$(dirname "$0")/.."

prefix="${KESTA_PREFIX:-$HOME/.local}"
appdata="${KESTA_APPDATA:-$HOME/.local/share/kesta-appdata/}"
case "$appdata" in */) ;; *) appdata="$appdata/" ;; esac
# What the last install put in place, one path a line, so that exactly that is removed.
manifest="$prefix/lib/kesta-demo/installed-files"

remove_installed() {
  [ -f "$manifest" ] || return 1
  while IFS= read -r path || [ -n "$path" ]; do  # the list has no line end after its last path
    rm -f -- "$path"
  done <"$manifest"
  rm -f -- "$manifest"
  # Folders of the program's own, unless they hold something the install did not put there.
  rmdir -- "$prefix/lib/kesta-demo/Questions" "$prefix/lib/kesta-demo" "$prefix/share/doc/kesta-demo" \
    2>/dev/null || true
}

if [ "${1:-}" = "--uninstall" ]; then
  if ! remove_installed; then
    echo "KESTA DEMO is not installed in $prefix (no $manifest)." >&2
    exit 1
  fi
  echo "Removed KESTA DEMO from $prefix."
  [ ! -d "$prefix/lib/kesta-demo" ] || echo "Kept $prefix/lib/kesta-demo: it holds files the install did not put there."
  echo "Progress, scores and options stay in ${appdata}MORVO/KESTA/All; remove that folder to delete them too."
  exit 0
fi

bash scripts/deps.sh

# The build folder is the package's (scripts/package.sh): only the data folder differs, and it is compiled
# into one file.
cmake -S . -B build/release -G Ninja -DCMAKE_BUILD_TYPE=Release -DKESTA_BUILD_TESTS=OFF -DKESTA_BUILD_BENCH=OFF \
      -DCMAKE_INSTALL_PREFIX="$prefix" -DCMAKE_INSTALL_LIBDIR=lib -DKESTA_COMMON_APPDATA="$appdata" >/dev/null
cmake --build build/release -j 2
remove_installed || true
cmake --install build/release >/dev/null
cp build/release/install_manifest.txt "$manifest"

launcher="$prefix/bin/kesta-demo"
echo "Installed KESTA DEMO: $launcher (data folders under ${appdata}MORVO/KESTA/All)."
echo "It is in your desktop's menu of applications; remove it with: $0 --uninstall"
case ":$PATH:" in
  *":$prefix/bin:"*) command="kesta-demo" ;;
  *)
    command="$launcher"
    echo "$prefix/bin is not on your PATH. Debian adds ~/.local/bin at your next login once it exists;"
    echo "until then start the program by its full path, or add the folder to PATH in ~/.profile."
    ;;
esac
if [ -z "${DISPLAY:-}" ] && [ -z "${WAYLAND_DISPLAY:-}" ]; then
  echo "There is no display here. Start the program under a virtual one with:"
  echo "  xvfb-run -a \"$launcher\""
  exit 0
fi
echo "Starting it; next time start it with: $command"
exec "$launcher"
