#!/usr/bin/env bash
# Installs what building, running and testing need on Debian 12. When all of it is there already, nothing is
# asked of the network and nothing is changed.
set -euo pipefail

packages=(
  # to build
  cmake ninja-build g++ ccache qt6-base-dev qt6-svg-dev libcli11-dev nlohmann-json3-dev
  # to trace this system live; without them the target says that it is not in the build
  libtracefs-dev libtraceevent-dev pkg-config
  # to test and to measure
  libgtest-dev libbenchmark-dev python3
  # to look at printed pages in tests; without it they are not looked at
  poppler-utils
  # to keep the habits: looks, and what is easily done wrong
  git clang-format clang-tidy
  # to drive the window program in tests: an X server without a screen, a window manager, pointer and keys
  xvfb openbox xdotool
  # to run: Qt's platform plug-ins (window and off screen), its SVG reader, and a font
  libqt6gui6 libqt6svg6 libqt6printsupport6 libgl1 libegl1 fontconfig fonts-dejavu-core
)

if ! command -v dpkg-query >/dev/null; then
  echo "setup: this is no Debian system; the packages that Debian 12 calls ${packages[*]} are taken as installed." >&2
  exit 0
fi

missing=()
for package in "${packages[@]}"; do
  state=$(dpkg-query -W -f='${db:Status-Status}' "$package" 2>/dev/null || true)
  [ "$state" = installed ] || missing+=("$package")
done
[ ${#missing[@]} -gt 0 ] || exit 0

as_root=()
if [ "$(id -u)" != 0 ]; then
  if ! command -v sudo >/dev/null; then
    echo "setup: these packages are missing: ${missing[*]}" >&2
    echo "setup: install them as root, or install sudo; then start again." >&2
    exit 1
  fi
  as_root=(sudo)
fi
echo "setup: installing ${missing[*]}"
"${as_root[@]}" apt-get update -q
"${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -q --no-install-recommends "${missing[@]}"
