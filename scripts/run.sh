#!/usr/bin/env bash
# Builds Bramble and starts it in the host stand-in, with a simulated board published as the
# virtual port "sim0" and a demo all-in-one image to download into it, a second board on "sim1"
# whose software speaks frames from the start, for the flash tab, and a third on "sim2" whose
# firmware runs from the start, for the command tab.
#
# With a display: pick sim0 as the port, choose build/demo/demo-aio.bin on the all-in-one tab
# and press start. Without one: the same download runs by itself under Xvfb, the process log is
# printed, and a picture of the window is saved to build/download.png.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh
cmake -S . -B build >/dev/null
cmake --build build -j2 --target bramble-host bramble bramble-sim
mkdir -p build/demo
image=build/demo/demo-aio.bin
build/sim/bramble-sim --make-demo-image "$image" >/dev/null

build/sim/bramble-sim --name sim0 --quiet </dev/null >build/demo/sim.log 2>&1 &
sim=$!
build/sim/bramble-sim --name sim1 --frames --quiet </dev/null >build/demo/sim1.log 2>&1 &
sim1=$!
build/sim/bramble-sim --name sim2 --firmware --quiet </dev/null >build/demo/sim2.log 2>&1 &
sim2=$!
trap 'kill $sim $sim1 $sim2 2>/dev/null || true' EXIT
sleep 0.3

if [ -n "${DISPLAY:-}" ] || [ -n "${WAYLAND_DISPLAY:-}" ]; then
  echo "Simulated boards on ports sim0 (download), sim1 (flash tab) and sim2 (command tab);" \
    "demo image: $image"
  build/host/bramble-host "$@"
  exit $?
fi
echo "No display: downloading $image into the simulated board under Xvfb." >&2
# The result is the download's own, read from the host's last line: Xvfb's wrapper sometimes
# exits non-zero while it cleans up after a good run.
xvfb-run -a -s '-screen 0 1400x1000x24' build/host/bramble-host \
  --download-port sim0 --download-image "$image" --screenshot build/download.png "$@" |
  tee build/demo/run.log || true
grep -qx 'download: succeeded' build/demo/run.log
