#!/usr/bin/env bash
# Runs the libFuzzer programs, one after the other.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)

usage() {
  cat <<TEXT
usage: fuzz/run.sh [--seconds N] [NAME...]

Builds the fuzzers with clang into build-fuzz and runs those named (all by default) for N seconds each (600 by
default). What they learn is kept in build-fuzz/corpus/NAME, an input that breaks something in
build-fuzz/found, and each one's output in build-fuzz/logs/NAME.log.
Status 1 when one of them found something.
TEXT
}

seconds=600
names=()
while [ $# -gt 0 ]; do
  case $1 in
    --help | -h) usage; exit 0 ;;
    --seconds) [ $# -gt 1 ] || { usage >&2; exit 2; }; seconds=$2; shift ;;
    -*) usage >&2; exit 2 ;;
    *) names+=("$1") ;;
  esac
  shift
done
if [ ${#names[@]} -eq 0 ]; then
  for corpus in "$root"/fuzz/corpus/*/; do names+=("$(basename "$corpus")"); done
fi

build=$root/build-fuzz
cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_CXX_COMPILER=clang++ \
  -DCW_WITH_QT=OFF -DCW_WITH_BENCH=OFF -DCW_FUZZER=ON -DCW_SANITIZE=address,undefined,fuzzer-no-link >/dev/null
ninja -C "$build" "${names[@]/%/_fuzzer}"

mkdir -p "$build/logs" "$build/found"
status=0
for name in "${names[@]}"; do
  mkdir -p "$build/corpus/$name"
  if "$build/bin/${name}_fuzzer" -max_total_time="$seconds" -rss_limit_mb=2048 -timeout=10 -max_len=16384 \
    -artifact_prefix="$build/found/$name-" "$build/corpus/$name" "$root/fuzz/corpus/$name" \
    >"$build/logs/$name.log" 2>&1; then
    echo "$name: nothing found ($(grep -c . "$build/logs/$name.log") lines in $build/logs/$name.log)"
  else
    echo "$name: see $build/logs/$name.log"
    status=1
  fi
done
exit $status
