// Noding against GEOS: xgWKB_shape_as_simple_line and GEOSNode on the same multilinestring, a
// random walk of n unit steps that crosses itself and 1000 random segments laid over it.  The
// answers differ in form (we split members only where they meet other members; GEOSNode also
// nodes every line against itself and merges nothing back), so only times compare.  Labels give
// the piece counts of both.
#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdio>
#include <cstring>
#include <string>

#include "random_shapes.h"
#include "support/geos_oracle.h"

namespace {

using namespace xgbench;

constexpr std::size_t kSegments = 1000;

// Member 0: a walk of n unit steps whose heading turns by up to half a radian a step.  Then
// kSegments segments of length up to a tenth of the walk's extent, placed at random over it.
Bytes walk_and_segments(std::size_t n) {
  std::mt19937_64 rng = seeded(60, n);
  std::uniform_real_distribution<double> turn(-0.5, 0.5);
  Ring walk{{kCx, kCy}};
  double a = 0;
  _xgWKB_BOX box{kCx, kCy, kCx, kCy};
  for (std::size_t i = 1; i < n; ++i) {
    a += turn(rng);
    walk.push_back({walk.back().x + std::cos(a), walk.back().y + std::sin(a)});
    box.minx = std::fmin(box.minx, walk.back().x);
    box.maxx = std::fmax(box.maxx, walk.back().x);
    box.miny = std::fmin(box.miny, walk.back().y);
    box.maxy = std::fmax(box.maxy, walk.back().y);
  }
  std::vector<Ring> members{walk};
  std::uniform_real_distribution<double> ux(box.minx, box.maxx), uy(box.miny, box.maxy);
  std::uniform_real_distribution<double> angle(0, 2 * M_PI);
  const double reach = 0.1 * std::fmax(box.maxx - box.minx, box.maxy - box.miny);
  std::uniform_real_distribution<double> length(0, reach);
  for (std::size_t k = 0; k < kSegments; ++k) {
    const _xgWKB_POINT p{ux(rng), uy(rng)};
    const double h = angle(rng), l = length(rng);
    members.push_back({p, {p.x + l * std::cos(h), p.y + l * std::sin(h)}});
  }
  return xgtest::multiline(members);
}

uint32_t pieces(const unsigned char* blob) {
  uint32_t n = 0;
  std::memcpy(&n, blob + 5, 4);
  return n;
}

void BM_XgSimpleLine(benchmark::State& state) {
  const Bytes in = walk_and_segments(static_cast<std::size_t>(state.range(0)));
  unsigned char* once = nullptr;
  xgWKB_shape_as_simple_line(in.data(), &once);
  state.SetLabel("pieces " + std::to_string(once ? pieces(once) : 0));
  xgWKB_shape_free(once);
  for (auto _ : state) {
    unsigned char* r = nullptr;
    benchmark::DoNotOptimize(xgWKB_shape_as_simple_line(in.data(), &r));
    xgWKB_shape_free(r);
  }
}

void BM_GeosNode(benchmark::State& state) {
  const Bytes in = walk_and_segments(static_cast<std::size_t>(state.range(0)));
  xgtest::GeosOracle oracle;
  GEOSGeometry* g = oracle.to_geos(in.data());
  GEOSGeometry* once = GEOSNode_r(oracle.handle(), g);
  state.SetLabel("pieces " + std::to_string(once ? GEOSGetNumGeometries_r(oracle.handle(), once) : 0));
  if (once) oracle.destroy(once);
  for (auto _ : state) oracle.destroy(GEOSNode_r(oracle.handle(), g));
  oracle.destroy(g);
}

BENCHMARK(BM_XgSimpleLine)->Arg(10000)->Arg(100000)->Arg(1000000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_GeosNode)->Arg(10000)->Arg(100000)->Arg(1000000)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
