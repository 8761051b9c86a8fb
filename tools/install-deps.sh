#!/usr/bin/env bash
# Installs the Debian packages that building and testing TavrinDatabase needs, if any are missing.
set -euo pipefail
packages=(g++ make cmake libboost-dev libboost-regex-dev libboost-filesystem-dev libboost-system-dev
          libgtest-dev libgmock-dev libbenchmark-dev libcli11-dev doxygen pkg-config)
missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
if [ ${#missing[@]} -gt 0 ]; then
  sudo=""
  [ "$(id -u)" -ne 0 ] && sudo="sudo"
  echo "installing: ${missing[*]}"
  $sudo apt-get update -qq
  DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq "${missing[@]}"
fi
