#!/usr/bin/env bash
# Checks what a user installs: the Debian package that scripts/package.sh
# builds (lintian, the desktop entry, the AppStream metadata: any error or
# warning fails), and the local install of scripts/setup-and-run.sh for a new
# user with an empty home and no display (a valid desktop entry whose Exec=
# starts the program, which reaches its idle page; an uninstall that leaves
# only the user's data).
set -euo pipefail
cd "$(dirname "$0")/.."

scratch=$(mktemp -d "${TMPDIR:-/tmp}/kesta-install.XXXXXX")
trap 'rm -rf "$scratch"' EXIT
fail() { echo "check-install: $*" >&2; exit 1; }
# desktop-file-validate ends well after warnings and hints too; any word from it fails.
validate() { local out; out=$(desktop-file-validate "$1" 2>&1) && [ -z "$out" ] || fail "$1: ${out:-invalid}"; }

echo "=== package"
deb=$(KESTA_JOBS=2 bash scripts/package.sh)
lintian --pedantic --fail-on error,warning "$deb"
dpkg-deb -x "$deb" "$scratch/deb"
validate "$scratch/deb/usr/share/applications/kesta-demo.desktop"
appstreamcli validate --pedantic --no-net "$scratch"/deb/usr/share/metainfo/*.metainfo.xml |
  tee "$scratch/appstream.txt"
! grep -q '^[EW]:' "$scratch/appstream.txt" || fail "AppStream metadata with errors or warnings"

echo "=== local install"
home="$scratch/home"
mkdir "$home"
env -u DISPLAY -u WAYLAND_DISPLAY -u XDG_DATA_HOME -u KESTA_PREFIX -u KESTA_APPDATA HOME="$home" \
  bash scripts/setup-and-run.sh | tee "$scratch/setup.txt"
grep -qF "xvfb-run -a \"$home/.local/bin/kesta-demo\"" "$scratch/setup.txt" || fail "no way to start it printed"
entry="$home/.local/share/applications/kesta-demo.desktop"
validate "$entry"
[ "$(sed -n 's/^Exec=//p' "$entry")" = "$home/.local/bin/kesta-demo" ] || fail "$entry: Exec= is not the launcher"
[ -f "$home/.local/share/icons/hicolor/scalable/apps/$(sed -n 's/^Icon=//p' "$entry").svg" ] || fail "no icon"

# The launcher starts the program, which finds its banks and data tree and shows its idle page.
page="$home/.local/share/kesta-appdata/MORVO/KESTA/All/Log/qtmp.htm"
HOME="$home" timeout 60 xvfb-run -a sh -c '
  "$1" 2>"$3" & program=$!
  for _ in $(seq 200); do
    grep -q "Select a new Domain Quiz or Exam" "$2" 2>/dev/null && kill "$program" && exit 0
    sleep 0.2
  done
  kill "$program"; exit 1' sh "$home/.local/bin/kesta-demo" "$page" "$scratch/stderr.txt" ||
  fail "the launcher did not bring up the idle page: $(cat "$scratch/stderr.txt")"

env -u KESTA_PREFIX -u KESTA_APPDATA HOME="$home" bash scripts/setup-and-run.sh --uninstall
left=$(cd "$home" && find . ! -type d | grep -v '^\./\.local/share/kesta-appdata/' || true)
[ -z "$left" ] || fail "the uninstall left: $left"
echo "check-install: package and local install passed"
