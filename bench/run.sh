#!/usr/bin/env bash
# Builds the release and prints one table of measurements.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)

usage() {
  cat <<TEXT
usage: bench/run.sh [--json FILE] [--small] [--traces DIR] [--work DIR] [--only REGEX]

--json FILE    the figures also as JSON
--only REGEX   only the benchmarks whose names fit
The rest is explained by build/bin/cw_bench --help. Status 1 when a limit is missed.
TEXT
}

arguments=()
while [ $# -gt 0 ]; do
  case $1 in
    --help | -h) usage; exit 0 ;;
    --small) arguments+=("$1") ;;
    --json | --only | --traces | --work)
      [ $# -gt 1 ] || { usage >&2; exit 2; }
      case $1 in
        --json) arguments+=("--benchmark_out=$2" --benchmark_out_format=json) ;;
        --only) arguments+=("--benchmark_filter=$2") ;;
        *) arguments+=("$1" "$2") ;;
      esac
      shift ;;
    *) usage >&2; exit 2 ;;
  esac
  shift
done

cmake -S "$root" -B "$root/build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DCW_WITH_BENCH=ON >/dev/null
ninja -C "$root/build" cw_bench >/dev/null || { ninja -C "$root/build" cw_bench; exit 1; }
exec "$root/build/bin/cw_bench" "${arguments[@]+"${arguments[@]}"}"
