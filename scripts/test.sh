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
    # The interpreter is not instrumented, so the sanitizer runtime is preloaded for the
    # instrumented extension and library, with libstdc++ after it (the runtime must find the C++
    # exception functions when it starts, and the interpreter does not load them itself).  Leak
    # detection is off because the interpreter keeps objects alive at exit; the suite counts the
    # library's allocations itself in the normal run.  --capture=sys leaves file descriptor 2
    # alone so that a sanitizer report reaches the terminal.
    LD_PRELOAD="$(g++ -print-file-name=libasan.so) $(g++ -print-file-name=libstdc++.so.6)" \
      ASAN_OPTIONS=detect_leaks=0:abort_on_error=1 XGGEO_SANITIZED=1 PYTHONPATH="$dir/python" \
      "$python" -m pytest -q -p no:cacheprovider --capture=sys python/tests
  else
    PYTHONPATH="$dir/python" "$python" -m pytest -q -p no:cacheprovider python/tests
  fi
fi
