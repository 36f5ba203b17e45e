#!/usr/bin/env bash
# scripts/build.sh PRESET [CMAKE-BUILD-ARGUMENT...]: configures a preset where that was not done yet, and builds it.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

preset=$1
shift
folder=build-$preset
[ "$preset" != release ] || folder=build
# Lets ccache keep what is compiled with precompiled headers.
export CCACHE_SLOPPINESS=pch_defines,time_macros
# Once there is a build.ninja, the build itself configures again when a CMake file changed.
[ -f "$folder/build.ninja" ] || cmake --preset "$preset"
cmake --build --preset "$preset" "$@"
