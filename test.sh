#!/usr/bin/env bash
# Builds everything and runs every test. Arguments go to ctest, for example: ./test.sh -R StoreWriter
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"

scripts/setup.sh
scripts/build.sh release
# Tests of the window program draw off screen where there is no display.
if [ -z "${DISPLAY-}${WAYLAND_DISPLAY-}" ]; then
  export QT_QPA_PLATFORM=offscreen
fi
# The preset shows the output of what fails, and takes a run of no tests as a failure.
status=0
ctest --preset release "$@" || status=$?
if [ $status = 0 ]; then
  echo "test.sh: all tests passed"
else
  echo "test.sh: TESTS FAILED (ctest's status is $status); the list stands above" >&2
fi
exit $status
