#!/usr/bin/env bash
# The whole test suite once more, built with AddressSanitizer and UndefinedBehaviorSanitizer in
# build-sanitize/ (clang, configured once), the fuzz targets of every decoder of the exchange
# included: each runs a bounded number of inputs. Extra arguments go to ctest.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
"$root/scripts/bootstrap.sh"
build="$root/build-sanitize"
if [ ! -f "$build/CMakeCache.txt" ]; then
  cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
    -DCMAKE_CXX_COMPILER=clang++ -DVD_FUZZ=ON
fi
cmake --build "$build" --parallel "$(nproc)"
cd "$build"
# Each test is a process of its own with its own store, so they run side by side.
ctest --output-on-failure --timeout 300 --parallel "$(nproc)" "$@"
