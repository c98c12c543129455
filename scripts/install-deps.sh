#!/usr/bin/env bash
# Installs the Debian packages that building, testing and running searchdata need.
# Safe to run again: it only installs what is missing.
set -euo pipefail

packages=(
  cmake ninja-build g++ pkg-config
  qt6-base-dev qt6-base-dev-tools libqt6sql6-sqlite libqt6sql6-psql
  # the entry control's Designer plugin
  qt6-tools-dev
  googletest libgtest-dev libgmock-dev libbenchmark-dev
  postgresql-15 postgresql-client-15
  # widget tests and screenshots pin DejaVu Sans; IPA Gothic gives the forms Japanese glyphs
  fonts-dejavu-core fonts-ipafont-gothic
)

missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done

if [ ${#missing[@]} -gt 0 ]; then
  echo "installing: ${missing[*]}"
  SUDO=""
  [ "$(id -u)" -eq 0 ] || SUDO="sudo"
  export DEBIAN_FRONTEND=noninteractive
  $SUDO apt-get update -qq
  $SUDO apt-get install -y -qq --no-install-recommends "${missing[@]}"
fi
