// parallel.h - runs a loop body over [0, n) on a few threads without the GIL.
#pragma once

#include <pybind11/pybind11.h>

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <thread>
#include <vector>

namespace xgpy {

// Loops shorter than this run on the calling thread: starting threads would cost more.
constexpr std::size_t kParallelMin = 4096;

// The number of threads a threads= argument asks for: <= 0 means every core.
inline int thread_count(int requested) {
  if (requested > 0) return requested;
  // Asking the system costs microseconds (it reads /sys), so it is asked once.
  static const unsigned cores = std::thread::hardware_concurrency();
  return cores == 0 ? 1 : static_cast<int>(cores);
}

// Calls body(i) for every i in [0, n) with the GIL released.  Each index is handled exactly once
// and writes only its own output slots, so the results do not depend on the thread count.
// body must not throw and must not touch Python objects.
template <class Body>
void parallel_for(std::size_t n, int threads, Body body) {
  pybind11::gil_scoped_release nogil;
  int workers = n < kParallelMin ? 1 : thread_count(threads);
  if (workers <= 1) {
    for (std::size_t i = 0; i < n; ++i) body(i);
    return;
  }
  // Chunks handed out from a shared counter balance uneven element costs.
  const std::size_t chunk = std::max<std::size_t>(256, n / (static_cast<std::size_t>(workers) * 16));
  std::atomic<std::size_t> next{0};
  auto worker = [&] {
    for (;;) {
      std::size_t begin = next.fetch_add(chunk);
      if (begin >= n) return;
      std::size_t end = std::min(n, begin + chunk);
      for (std::size_t i = begin; i < end; ++i) body(i);
    }
  };
  std::vector<std::thread> pool;
  pool.reserve(static_cast<std::size_t>(workers - 1));
  for (int w = 1; w < workers; ++w) {
    // A thread that cannot start leaves its share to the others.
    try {
      pool.emplace_back(worker);
    } catch (...) {
      break;
    }
  }
  worker();
  for (auto &t : pool) t.join();
}

}  // namespace xgpy
