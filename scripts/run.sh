#!/usr/bin/env bash
# Builds the library and the xggeo tool, then runs the main job: the tool over the bundled
# example data (examples/demo.sh), each command shown with its output.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/deps.sh run
cmake -S . -B build-release -DCMAKE_BUILD_TYPE=Release -DXGGEO_BUILD_TESTS=OFF >/dev/null
if ! cmake --build build-release -j"$(nproc)" >build-release/build.log 2>&1; then
  cat build-release/build.log
  exit 1
fi
exec examples/demo.sh build-release/tools/xggeo
