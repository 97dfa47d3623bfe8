#!/usr/bin/env bash
# Builds everything and runs every test.
#   scripts/test.sh             - the normal build (build/)
#   scripts/test.sh --sanitize  - with AddressSanitizer and UndefinedBehaviorSanitizer (build-asan/)
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/deps.sh test

dir=build
flags=(-DCMAKE_BUILD_TYPE=RelWithDebInfo)
if [ "${1:-}" = "--sanitize" ]; then
  dir=build-asan
  flags=(-DCMAKE_BUILD_TYPE=Debug -DXGGEO_SANITIZE=ON)
  export ASAN_OPTIONS=detect_leaks=1:abort_on_error=1
  export UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1
fi
cmake -S . -B "$dir" "${flags[@]}" >/dev/null
cmake --build "$dir" -j"$(nproc)"
ctest --test-dir "$dir" --output-on-failure -j"$(nproc)"
