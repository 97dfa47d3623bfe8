#!/usr/bin/env bash
# Builds everything and runs every test: the C++ suites (ctest), then the Python package's
# pytest suite when the package was built.
#   scripts/test.sh             - the normal build (build/)
#   scripts/test.sh --sanitize  - with AddressSanitizer and UndefinedBehaviorSanitizer (build-asan/)
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/deps.sh test

dir=build
flags=(-DCMAKE_BUILD_TYPE=RelWithDebInfo)
sanitize=0
if [ "${1:-}" = "--sanitize" ]; then
  dir=build-asan
  flags=(-DCMAKE_BUILD_TYPE=Debug -DXGGEO_SANITIZE=ON)
  sanitize=1
  export ASAN_OPTIONS=detect_leaks=1:abort_on_error=1
  export UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1
fi
cmake -S . -B "$dir" "${flags[@]}" >/dev/null
cmake --build "$dir" -j"$(nproc)"
ctest --test-dir "$dir" --output-on-failure -j"$(nproc)"

# The Python suite runs with the interpreter the build found.
if [ -f "$dir/python/xggeokit/__init__.py" ]; then
  python=$(sed -n 's/^Python3_EXECUTABLE:FILEPATH=//p' "$dir/CMakeCache.txt")
  if [ "$sanitize" = 1 ]; then
    # The interpreter itself is not instrumented: the sanitizer runtime is preloaded so that the
    # instrumented extension and library can load, and leak detection is off because the
    # interpreter keeps its own objects alive at exit (the suite counts its own allocations).
    LD_PRELOAD="$(g++ -print-file-name=libasan.so)" ASAN_OPTIONS=detect_leaks=0:abort_on_error=1 \
      XGGEO_SANITIZED=1 PYTHONPATH="$dir/python" "$python" -m pytest -q -p no:cacheprovider python/tests
  else
    PYTHONPATH="$dir/python" "$python" -m pytest -q -p no:cacheprovider python/tests
  fi
fi
