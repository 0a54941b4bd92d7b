#!/usr/bin/env bash
# Installs the Debian 12 packages that building, running and testing Bramble need.
# Safe to run again: apt-get skips what is already there.
set -euo pipefail
packages=(cmake g++ make qtbase5-dev qtbase5-private-dev libqt5serialport5-dev libgtest-dev xvfb xauth
  fonts-wqy-microhei clang libclang-rt-14-dev)
missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed' || missing+=("$p")
done
if [ ${#missing[@]} -gt 0 ]; then
  SUDO=""
  [ "$(id -u)" -eq 0 ] || SUDO="sudo"
  $SUDO apt-get update -qq
  DEBIAN_FRONTEND=noninteractive $SUDO apt-get install -y -qq "${missing[@]}"
fi
