#!/usr/bin/env bash
# Configures (once) and builds incrementally into build/. Extra arguments go to cmake --build.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
"$root/scripts/bootstrap.sh"
build="$root/build"
if [ ! -f "$build/CMakeCache.txt" ]; then
  cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo
fi
cmake --build "$build" --parallel "$(nproc)" "$@"
