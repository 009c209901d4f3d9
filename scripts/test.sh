#!/usr/bin/env bash
# Builds everything and runs the whole test suite headless; then the same suite, with the fuzz
# targets, under the sanitizers in a build of its own. The server's suites run on SQLite and on a
# private PostgreSQL cluster that this script starts for the run and stops at its end, however the
# run ends; ctest finds it through VD_TEST_POSTGRESQL. Extra arguments go to both ctests.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
"$root/scripts/build.sh"
export QT_QPA_PLATFORM=offscreen

cluster="$root/build/pgtest"
trap '"$root/scripts/pgcluster.sh" stop "$cluster"' EXIT
if VD_TEST_POSTGRESQL=$("$root/scripts/pgcluster.sh" start "$cluster"); then
  echo "test: PostgreSQL for the tests at $VD_TEST_POSTGRESQL"
else
  # The suites that were to run on it fail and say that they can't reach it.
  echo "test: could not start PostgreSQL for the tests (see above)" >&2
  VD_TEST_POSTGRESQL="postgresql:///postgres?host=$cluster/socket"
fi
export VD_TEST_POSTGRESQL

(cd "$root/build" && ctest --output-on-failure --timeout 300 "$@")
"$root/scripts/test-sanitize.sh" "$@"
