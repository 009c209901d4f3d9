#!/usr/bin/env bash
# Builds and starts the console with its embedded server. Arguments go to vdconsole
# (--user LOGIN, --requests N, --screenshot FILE.png, --help).
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
"$root/scripts/build.sh" --target vdconsole requestview
if [ -z "${DISPLAY:-}${WAYLAND_DISPLAY:-}" ] && [ -z "${QT_QPA_PLATFORM:-}" ]; then
  # No screen: still useful for --screenshot, which renders off screen.
  export QT_QPA_PLATFORM=offscreen
  echo "run: no display found, running off screen (use --screenshot FILE.png to see the console)" >&2
fi
if [ -z "${XDG_RUNTIME_DIR:-}" ]; then
  export XDG_RUNTIME_DIR="/tmp/runtime-$(id -u)"
  mkdir -p -m 700 "$XDG_RUNTIME_DIR"
fi
exec "$root/build/bin/vdconsole" "$@"
