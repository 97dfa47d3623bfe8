// bench_hull_distance.cpp - convex hulls and distances against GEOS on the same inputs.
//
// Hull inputs: n random points (a multipoint) uniformly in a disc, and n random points on a
// circle, where every point is a hull vertex (the worst case for gift wrapping).  At a million
// points on the circle some neighbours come within 0.0001 of each other, and the walk's rules for
// coinciding points end it early (the label gives the hull points found).
// Distance inputs: two star polygons of n vertices each, the second the mirror image of the first
// about a vertical line half a unit right of the first's rightmost vertex, so that they are
// exactly 1 apart; and n random points in a box above a wavy n-vertex line about 1 below it.
//
// GEOS geometries are converted from the very same blobs outside the timed loop.  GEOS distance
// runs plain (GEOSDistance) and indexed (GEOSDistanceIndexed, which builds its index on every
// call, as ours does).  Each label gives the answer so that the two can be compared.
#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdio>
#include <string>

#include "random_shapes.h"
#include "support/geos_oracle.h"

namespace {

using xgbench::Bytes;
using xgbench::Ring;

Bytes multipoint_of(const Ring& pts) {
  Bytes b = xgtest::header(XGWKB_TYPE_MULTIPOINT);
  xgtest::put_u32(b, static_cast<uint32_t>(pts.size()));
  for (const _xgWKB_POINT& p : pts) {
    const Bytes m = xgtest::point(p.x, p.y);
    b.insert(b.end(), m.begin(), m.end());
  }
  return b;
}

Bytes disc_points(std::size_t n) {
  auto rng = xgbench::seeded(11, n);
  std::uniform_real_distribution<double> u(-1, 1);
  Ring pts;
  while (pts.size() < n) {
    const double x = u(rng), y = u(rng);
    if (x * x + y * y <= 1) pts.push_back({xgbench::kCx + xgbench::kRadius * x, xgbench::kCy + xgbench::kRadius * y});
  }
  return multipoint_of(pts);
}

Bytes circle_points(std::size_t n) {
  auto rng = xgbench::seeded(12, n);
  std::uniform_real_distribution<double> u(0, 2 * M_PI);
  Ring pts;
  for (std::size_t i = 0; i < n; ++i) {
    const double a = u(rng);
    pts.push_back({xgbench::kCx + xgbench::kRadius * std::cos(a), xgbench::kCy + xgbench::kRadius * std::sin(a)});
  }
  return multipoint_of(pts);
}

struct Pair {
  Bytes a, b;
};

Pair mirrored_stars(std::size_t n) {
  auto rng = xgbench::seeded(13, n);
  const Ring ring = xgbench::star_ring(rng, xgbench::kCx, xgbench::kCy, 0.8 * xgbench::kRadius, xgbench::kRadius, n);
  double maxx = ring[0].x;
  for (const _xgWKB_POINT& p : ring) maxx = std::fmax(maxx, p.x);
  const double axis = maxx + 0.5;
  Ring mirror;
  for (const _xgWKB_POINT& p : ring) mirror.push_back({2 * axis - p.x, p.y});
  return {xgtest::polygon({ring}), xgtest::polygon({mirror})};
}

Pair points_over_line(std::size_t n) {
  auto rng = xgbench::seeded(14, n);
  std::uniform_real_distribution<double> u(0, 1);
  const double w = 2 * xgbench::kRadius;
  Ring pts, line;
  for (std::size_t i = 0; i < n; ++i) pts.push_back({xgbench::kCx + w * u(rng), xgbench::kCy + w * u(rng)});
  for (std::size_t i = 0; i < n; ++i) {
    const double x = w * static_cast<double>(i) / static_cast<double>(n - 1);
    line.push_back({xgbench::kCx + x, xgbench::kCy - 1 - 20 * std::fabs(std::sin(x / 37))});
  }
  return {multipoint_of(pts), xgtest::linestring(line)};
}

const xgtest::GeosOracle& oracle() {
  static const xgtest::GeosOracle o;
  return o;
}

void BM_XgHull(benchmark::State& state, Bytes (*make)(std::size_t)) {
  const Bytes in = make(static_cast<std::size_t>(state.range(0)));
  uint32_t size = 0;
  for (auto _ : state) {
    unsigned char* out = nullptr;
    if (xgWKB_shape_generate_convex_hull(in.data(), &out, 1e-6) != XGWKB_OK) state.SkipWithError("hull failed");
    xgWKB_shape_get_WKB_size(out, &size);
    xgWKB_shape_free(out);
  }
  state.SetLabel("hull points " + std::to_string(size > 13 ? (size - 13) / 16 : 0));
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

void BM_GeosHull(benchmark::State& state, Bytes (*make)(std::size_t)) {
  const Bytes in = make(static_cast<std::size_t>(state.range(0)));
  GEOSContextHandle_t h = oracle().handle();
  xgtest::GeosGeom g(oracle(), oracle().to_geos(in.data()));
  int points = 0;
  for (auto _ : state) {
    GEOSGeometry* hull = GEOSConvexHull_r(h, g.get());
    points = GEOSGetNumCoordinates_r(h, hull);
    GEOSGeom_destroy_r(h, hull);
  }
  state.SetLabel("hull points " + std::to_string(points));
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

void BM_XgDistance(benchmark::State& state, Pair (*make)(std::size_t)) {
  const Pair in = make(static_cast<std::size_t>(state.range(0)));
  double d = 0;
  for (auto _ : state) {
    if (xgWKB_shape_calculate_distance(in.a.data(), in.b.data(), &d, 1e-9) != XGWKB_OK) {
      state.SkipWithError("distance failed");
    }
    benchmark::DoNotOptimize(d);
  }
  char label[64];
  std::snprintf(label, sizeof label, "distance %.12g", d);
  state.SetLabel(label);
}

using GeosDistanceFn = int (*)(GEOSContextHandle_t, const GEOSGeometry*, const GEOSGeometry*, double*);

void geos_distance(benchmark::State& state, Pair (*make)(std::size_t), GeosDistanceFn distance) {
  const Pair in = make(static_cast<std::size_t>(state.range(0)));
  GEOSContextHandle_t h = oracle().handle();
  xgtest::GeosGeom a(oracle(), oracle().to_geos(in.a.data()));
  xgtest::GeosGeom b(oracle(), oracle().to_geos(in.b.data()));
  double d = 0;
  for (auto _ : state) {
    distance(h, a.get(), b.get(), &d);
    benchmark::DoNotOptimize(d);
  }
  char label[64];
  std::snprintf(label, sizeof label, "distance %.12g", d);
  state.SetLabel(label);
}

void BM_GeosDistance(benchmark::State& state, Pair (*make)(std::size_t)) {
  geos_distance(state, make, GEOSDistance_r);
}

void BM_GeosDistanceIndexed(benchmark::State& state, Pair (*make)(std::size_t)) {
  geos_distance(state, make, GEOSDistanceIndexed_r);
}

}  // namespace

constexpr auto kMs = benchmark::kMillisecond;
BENCHMARK_CAPTURE(BM_XgHull, disc, disc_points)->Arg(10000)->Arg(100000)->Arg(1000000)->Unit(kMs);
BENCHMARK_CAPTURE(BM_GeosHull, disc, disc_points)->Arg(10000)->Arg(100000)->Arg(1000000)->Unit(kMs);
BENCHMARK_CAPTURE(BM_XgHull, circle, circle_points)->Arg(10000)->Arg(100000)->Arg(1000000)->Unit(kMs);
BENCHMARK_CAPTURE(BM_GeosHull, circle, circle_points)->Arg(10000)->Arg(100000)->Arg(1000000)->Unit(kMs);
BENCHMARK_CAPTURE(BM_XgDistance, polygons, mirrored_stars)->Arg(10000)->Unit(kMs);
BENCHMARK_CAPTURE(BM_GeosDistance, polygons, mirrored_stars)->Arg(10000)->Unit(kMs);
BENCHMARK_CAPTURE(BM_GeosDistanceIndexed, polygons, mirrored_stars)->Arg(10000)->Unit(kMs);
BENCHMARK_CAPTURE(BM_XgDistance, points_line, points_over_line)->Arg(10000)->Unit(kMs);
BENCHMARK_CAPTURE(BM_GeosDistance, points_line, points_over_line)->Arg(10000)->Unit(kMs);
BENCHMARK_CAPTURE(BM_GeosDistanceIndexed, points_line, points_over_line)->Arg(10000)->Unit(kMs);

BENCHMARK_MAIN();
