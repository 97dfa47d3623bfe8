#!/usr/bin/env bash
# Installs the Debian packages a build needs, when they are missing.
#   scripts/deps.sh run     - what the library, the tool, the examples and the Python package need
#   scripts/deps.sh test    - that, plus GoogleTest and GEOS for the tests, pytest, Shapely and Dask
#   scripts/deps.sh bench   - that, plus Google Benchmark (and Shapely for bench_python.py)
set -euo pipefail

packages=(cmake make g++ pkg-config libpolyclipping-dev libsimdjson-dev pybind11-dev python3-dev python3-numpy)
case "${1:-run}" in
  run) ;;
  test) packages+=(libgtest-dev libgeos-dev python3-pytest python3-shapely python3-dask python3-distributed) ;;
  bench) packages+=(libgtest-dev libgeos-dev libbenchmark-dev zlib1g-dev python3-shapely) ;;
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
