#!/usr/bin/env bash
# Builds everything and runs the whole test suite headless.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
"$root/scripts/build.sh"
export QT_QPA_PLATFORM=offscreen
cd "$root/build"
ctest --output-on-failure --timeout 300 "$@"
