#!/usr/bin/env bash
# Installs the Debian packages a build needs, when they are missing.
#   scripts/deps.sh run     - what the library, the tool and the examples need
#   scripts/deps.sh test    - that, plus GoogleTest and GEOS for the tests
#   scripts/deps.sh bench   - that, plus Google Benchmark
set -euo pipefail

packages=(cmake make g++ pkg-config libpolyclipping-dev libsimdjson-dev)
case "${1:-run}" in
  run) ;;
  test) packages+=(libgtest-dev libgeos-dev) ;;
  bench) packages+=(libgtest-dev libgeos-dev libbenchmark-dev zlib1g-dev) ;;
  *) echo "usage: $0 [run|test|bench]" >&2; exit 2 ;;
esac

missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed' || missing+=("$p")
done
[ ${#missing[@]} -eq 0 ] && exit 0

echo "installing: ${missing[*]}"
sudo=""
[ "$(id -u)" -ne 0 ] && sudo="sudo"
export DEBIAN_FRONTEND=noninteractive
$sudo apt-get update -qq
$sudo apt-get install -y -qq --no-install-recommends "${missing[@]}"
