#!/usr/bin/env bash
# Builds Bramble and starts it in the host stand-in. Without a display it runs under Xvfb,
# prints what came up and saves a picture of the window to build/bramble.png.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh
cmake -S . -B build >/dev/null
cmake --build build -j2 --target bramble-host bramble
if [ -n "${DISPLAY:-}" ] || [ -n "${WAYLAND_DISPLAY:-}" ]; then
  exec build/host/bramble-host "$@"
fi
echo "No display: running under Xvfb." >&2
exec xvfb-run -a -s '-screen 0 1400x1000x24' build/host/bramble-host \
  --screenshot build/bramble.png --quit-after 2000 "$@"
