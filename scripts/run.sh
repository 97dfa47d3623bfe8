#!/usr/bin/env bash
# Builds the library and runs the main job: the bundled example.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/deps.sh run
cmake -S . -B build-release -DCMAKE_BUILD_TYPE=Release -DXGGEO_BUILD_TESTS=OFF >/dev/null
if ! cmake --build build-release -j"$(nproc)" >build-release/build.log 2>&1; then
  cat build-release/build.log
  exit 1
fi
if [ -x examples/demo.sh ] && [ -x build-release/tools/xggeo ]; then
  exec examples/demo.sh build-release/tools/xggeo
fi
exec build-release/examples/quickstart
