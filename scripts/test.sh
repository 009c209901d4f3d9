#!/usr/bin/env bash
# Builds everything and runs the whole test suite headless; then the same suite, with the fuzz
# targets, under the sanitizers in a build of its own. Extra arguments go to both ctests.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
"$root/scripts/build.sh"
export QT_QPA_PLATFORM=offscreen
(cd "$root/build" && ctest --output-on-failure --timeout 300 "$@")
"$root/scripts/test-sanitize.sh" "$@"
