#!/usr/bin/env bash
# Installs the Debian packages the build and the tests need. Idempotent, and quiet when all is there.
set -euo pipefail
packages=(
  build-essential cmake ninja-build ccache clang-format
  qt6-base-dev qt6-base-dev-tools qt6-svg-dev
  libgtest-dev libgmock-dev libbenchmark-dev nlohmann-json3-dev
  fonts-dejavu-core
)
missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
if [ ${#missing[@]} -gt 0 ]; then
  echo "Installing: ${missing[*]}"
  sudo_cmd=""
  [ "$(id -u)" -ne 0 ] && sudo_cmd="sudo"
  $sudo_cmd apt-get update -qq
  DEBIAN_FRONTEND=noninteractive $sudo_cmd apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
fi
