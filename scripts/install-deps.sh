#!/usr/bin/env bash
# Installs the Debian packages that building, running and testing Vorra need,
# but only those that are missing, so a prepared machine is left untouched.
set -euo pipefail

packages=(
  build-essential cmake ninja-build pkg-config
  libsdl2-dev libsdl2-image-dev
  libglew-dev libglu1-mesa-dev libgl1-mesa-dri
  xvfb xauth xdotool
  googletest libgtest-dev libgmock-dev libbenchmark-dev libfreetype-dev fonts-dejavu-core
)

missing=()
for p in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed"; then
    missing+=("$p")
  fi
done

if [ ${#missing[@]} -eq 0 ]; then
  echo "All build and test packages are present."
  exit 0
fi

echo "Installing: ${missing[*]}"
SUDO=""
if [ "$(id -u)" -ne 0 ]; then SUDO="sudo"; fi
export DEBIAN_FRONTEND=noninteractive
$SUDO apt-get update -qq
$SUDO apt-get install -y -qq --no-install-recommends "${missing[@]}"
