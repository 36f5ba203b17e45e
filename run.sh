#!/usr/bin/env bash
# Builds Chronoweave and opens a trace.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)

usage() {
  cat <<TEXT
usage: ./run.sh [FILE]      build, and open FILE (samples/build-2cpu.trr by default)
       ./run.sh --build     build the programs only
       ./run.sh --help      this text

FILE is a .trr, a .core, a .trs, or the base name of a store. Without a display (neither DISPLAY nor
WAYLAND_DISPLAY is set) a picture of the whole trace is written instead, and its facts are printed.
The first run installs what is missing from Debian's packages; programs go to build/bin.
TEXT
}

if [ $# -gt 1 ]; then
  usage >&2
  exit 2
fi
case ${1-} in
  --help | -h) usage; exit 0 ;;
  --build) ;;
  -*) usage >&2; exit 2 ;;
esac

"$root/scripts/setup.sh"
# What it runs; tests, benchmarks, fuzzers and tools are built by ./test.sh.
"$root/scripts/build.sh" release --target trvgui chronoweave trv_companion gexec svc_router chronoweave_remote gdb_link
[ "${1-}" != --build ] || exit 0

file=${1-$root/samples/build-2cpu.trr}
if [ -n "${DISPLAY-}${WAYLAND_DISPLAY-}" ]; then
  exec "$root/build/bin/trvgui" "$file"
fi
name=${file##*/}
picture=$root/build/${name%.*}.png
"$root/build/bin/chronoweave" render "$file" -o "$picture" >/dev/null
echo "There is no display; the picture is $picture"
"$root/build/bin/chronoweave" info "$file"
