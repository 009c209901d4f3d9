#!/usr/bin/env bash
# Installs the Debian packages that the build, the console and the tests need, and nothing else.
# Safe to run again: packages already present are left alone.
set -euo pipefail

packages=(
  cmake ninja-build g++ pkg-config
  clang libclang-rt-14-dev llvm  # the sanitizer build: libFuzzer, the sanitizers, readable stacks
  qtbase5-dev qtbase5-dev-tools libqt5svg5-dev
  libqt5sql5-sqlite libqt5sql5-psql
  libsodium-dev
  postgresql
  fonts-dejavu-core
  qttranslations5-l10n
)

missing=()
for p in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed'; then
    missing+=("$p")
  fi
done
[ ${#missing[@]} -eq 0 ] && exit 0

echo "bootstrap: installing ${missing[*]}"
as_root=()
if [ "$(id -u)" -ne 0 ]; then
  command -v sudo >/dev/null || { echo "bootstrap: need root or sudo to install ${missing[*]}" >&2; exit 1; }
  as_root=(sudo)
fi
export DEBIAN_FRONTEND=noninteractive
"${as_root[@]}" apt-get update -qq
"${as_root[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}"
