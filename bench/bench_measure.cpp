// bench_measure.cpp - metrics and the validity check against GEOS on polygons with holes.
//
// Inputs: a star-shaped shell of n vertices with four star holes of n/4 vertices each (see
// random_shapes.h), one polygon per size from a fixed seed.  Size is n; items are all vertices
// of the polygon (about 2n), so items/s compare across sizes and the ratio of two lines is the
// speed ratio.
//
// Both libraries get their native representation before timing: our blob is built, and the GEOS
// geometry is converted from the same blob OUTSIDE the timed loop.  Each line's label gives the
// answer, and says MISMATCH when the two libraries disagree on it.
//
// Pairs whose work differs by design:
//   Centroid  ours is the centroid of the shell alone (holes ignored), so GEOS is handed the
//             shell alone (a polygon of the exterior ring) to compute the same point; it also
//             allocates a point geometry for the answer.
//   WkbSize   ours computes the blob's byte size from its counts.  GEOS keeps no WKB, and its
//             nearest walk over the counts is GEOSGetNumCoordinates_r.
//   Extent    ours walks every vertex; GEOS caches the envelope inside the geometry, so after
//             the first call GEOSGeom_getExtent_r only copies four numbers.
#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdio>
#include <string>

#include "random_shapes.h"
#include "support/geos_oracle.h"

namespace {

using xgbench::Bytes;

constexpr int64_t kSmallest = 8;
constexpr int64_t kLargest = 4096;

struct Inputs {
  xgtest::GeosOracle oracle;
  Bytes blob;
  GEOSGeometry* geos = nullptr;
  GEOSGeometry* shell = nullptr;  // the exterior ring alone, as a polygon
  int64_t items = 0;

  explicit Inputs(std::size_t n) {
    auto rng = xgbench::seeded(11, n);
    blob = xgbench::star_with_holes(rng, xgbench::kCx, xgbench::kCy, n);
    geos = oracle.to_geos(blob.data());
    GEOSContextHandle_t ctx = oracle.handle();
    shell = GEOSGeom_createPolygon_r(
        ctx, GEOSGeom_clone_r(ctx, GEOSGetExteriorRing_r(ctx, geos)), nullptr, 0);
    items = xgbench::vertex_count(blob);
  }
  ~Inputs() {
    oracle.destroy(geos);
    oracle.destroy(shell);
  }
  Inputs(const Inputs&) = delete;
  Inputs& operator=(const Inputs&) = delete;
  GEOSContextHandle_t ctx() const { return oracle.handle(); }
};

// "value" when both agree within a relative 1e-9, else the two values.
std::string agreement(double ours, double theirs) {
  char text[96];
  const double scale = std::fmax(1.0, std::fabs(theirs));
  if (std::fabs(ours - theirs) <= 1e-9 * scale) {
    std::snprintf(text, sizeof text, "%.6g", ours);
  } else {
    std::snprintf(text, sizeof text, "MISMATCH xg=%.10g geos=%.10g", ours, theirs);
  }
  return text;
}

std::size_t size_of(const benchmark::State& state) {
  return static_cast<std::size_t>(state.range(0));
}

// ---- area ---------------------------------------------------------------------------------

double xg_area(const Inputs& in) {
  double a = 0;
  xgWKB_shape_get_area(in.blob.data(), 0, &a);
  return a;
}
double geos_area(const Inputs& in) {
  double a = 0;
  GEOSArea_r(in.ctx(), in.geos, &a);
  return a;
}

void BM_XgArea(benchmark::State& state) {
  const Inputs in(size_of(state));
  state.SetLabel(agreement(xg_area(in), geos_area(in)));
  for (auto _ : state) benchmark::DoNotOptimize(xg_area(in));
  state.SetItemsProcessed(state.iterations() * in.items);
}
BENCHMARK(BM_XgArea)->RangeMultiplier(4)->Range(kSmallest, kLargest);

void BM_GeosArea(benchmark::State& state) {
  const Inputs in(size_of(state));
  state.SetLabel(agreement(xg_area(in), geos_area(in)));
  for (auto _ : state) benchmark::DoNotOptimize(geos_area(in));
  state.SetItemsProcessed(state.iterations() * in.items);
}
BENCHMARK(BM_GeosArea)->RangeMultiplier(4)->Range(kSmallest, kLargest);

// ---- length (every ring) ------------------------------------------------------------------

double xg_length(const Inputs& in) {
  double l = 0;
  xgWKB_shape_get_length(in.blob.data(), 0, &l);
  return l;
}
double geos_length(const Inputs& in) {
  double l = 0;
  GEOSLength_r(in.ctx(), in.geos, &l);
  return l;
}

void BM_XgLength(benchmark::State& state) {
  const Inputs in(size_of(state));
  state.SetLabel(agreement(xg_length(in), geos_length(in)));
  for (auto _ : state) benchmark::DoNotOptimize(xg_length(in));
  state.SetItemsProcessed(state.iterations() * in.items);
}
BENCHMARK(BM_XgLength)->RangeMultiplier(4)->Range(kSmallest, kLargest);

void BM_GeosLength(benchmark::State& state) {
  const Inputs in(size_of(state));
  state.SetLabel(agreement(xg_length(in), geos_length(in)));
  for (auto _ : state) benchmark::DoNotOptimize(geos_length(in));
  state.SetItemsProcessed(state.iterations() * in.items);
}
BENCHMARK(BM_GeosLength)->RangeMultiplier(4)->Range(kSmallest, kLargest);

// ---- centroid of the shell ----------------------------------------------------------------

_xgWKB_POINT xg_centroid(const Inputs& in) {
  _xgWKB_POINT c{0, 0};
  xgWKB_shape_get_centroid(in.blob.data(), &c);
  return c;
}
_xgWKB_POINT geos_centroid(const Inputs& in) {
  _xgWKB_POINT c{0, 0};
  GEOSGeometry* p = GEOSGetCentroid_r(in.ctx(), in.shell);
  GEOSGeomGetX_r(in.ctx(), p, &c.x);
  GEOSGeomGetY_r(in.ctx(), p, &c.y);
  GEOSGeom_destroy_r(in.ctx(), p);
  return c;
}
std::string centroid_label(const Inputs& in) {
  const _xgWKB_POINT a = xg_centroid(in);
  const _xgWKB_POINT b = geos_centroid(in);
  return agreement(a.x, b.x) + " " + agreement(a.y, b.y);
}

void BM_XgCentroid(benchmark::State& state) {
  const Inputs in(size_of(state));
  state.SetLabel(centroid_label(in));
  for (auto _ : state) benchmark::DoNotOptimize(xg_centroid(in));
  state.SetItemsProcessed(state.iterations() * in.items);
}
BENCHMARK(BM_XgCentroid)->RangeMultiplier(4)->Range(kSmallest, kLargest);

void BM_GeosCentroid(benchmark::State& state) {
  const Inputs in(size_of(state));
  state.SetLabel(centroid_label(in) + " (shell)");
  for (auto _ : state) benchmark::DoNotOptimize(geos_centroid(in));
  state.SetItemsProcessed(state.iterations() * in.items);
}
BENCHMARK(BM_GeosCentroid)->RangeMultiplier(4)->Range(kSmallest, kLargest);

// ---- validity -----------------------------------------------------------------------------

uint32_t xg_valid(const Inputs& in) {
  int32_t status = 0;
  return xgWKB_shape_check_WKBdata(in.blob.data(), &status);
}
char geos_valid(const Inputs& in) { return GEOSisValid_r(in.ctx(), in.geos); }
std::string validity_label(const Inputs& in) {
  const uint32_t ours = xg_valid(in);
  const char theirs = geos_valid(in);
  char text[64];
  std::snprintf(text, sizeof text, ours == static_cast<uint32_t>(theirs) ? "%u" :
                "MISMATCH xg=%u geos=%d", ours, theirs);
  return text;
}

void BM_XgValid(benchmark::State& state) {
  const Inputs in(size_of(state));
  state.SetLabel(validity_label(in));
  for (auto _ : state) benchmark::DoNotOptimize(xg_valid(in));
  state.SetItemsProcessed(state.iterations() * in.items);
}
BENCHMARK(BM_XgValid)->RangeMultiplier(4)->Range(kSmallest, kLargest);

void BM_GeosValid(benchmark::State& state) {
  const Inputs in(size_of(state));
  state.SetLabel(validity_label(in));
  for (auto _ : state) benchmark::DoNotOptimize(geos_valid(in));
  state.SetItemsProcessed(state.iterations() * in.items);
}
BENCHMARK(BM_GeosValid)->RangeMultiplier(4)->Range(kSmallest, kLargest);

// ---- blob size / coordinate count ---------------------------------------------------------

void BM_XgWkbSize(benchmark::State& state) {
  const Inputs in(size_of(state));
  for (auto _ : state) {
    uint32_t size = 0;
    xgWKB_shape_get_WKB_size(in.blob.data(), &size);
    benchmark::DoNotOptimize(size);
  }
  state.SetItemsProcessed(state.iterations() * in.items);
}
BENCHMARK(BM_XgWkbSize)->RangeMultiplier(4)->Range(kSmallest, kLargest);

void BM_GeosNumCoordinates(benchmark::State& state) {
  const Inputs in(size_of(state));
  for (auto _ : state) benchmark::DoNotOptimize(GEOSGetNumCoordinates_r(in.ctx(), in.geos));
  state.SetItemsProcessed(state.iterations() * in.items);
}
BENCHMARK(BM_GeosNumCoordinates)->RangeMultiplier(4)->Range(kSmallest, kLargest);

// ---- extent -------------------------------------------------------------------------------

_xgWKB_BOX xg_extent(const Inputs& in) {
  _xgWKB_BOX box{};
  xgWKB_shape_get_extent(in.blob.data(), 0, &box);
  return box;
}
_xgWKB_BOX geos_extent(const Inputs& in) {
  _xgWKB_BOX box{};
  GEOSGeom_getExtent_r(in.ctx(), in.geos, &box.minx, &box.miny, &box.maxx, &box.maxy);
  return box;
}
std::string extent_label(const Inputs& in) {
  const _xgWKB_BOX a = xg_extent(in);
  const _xgWKB_BOX b = geos_extent(in);
  const bool same = a.minx == b.minx && a.miny == b.miny && a.maxx == b.maxx && a.maxy == b.maxy;
  return same ? "same box" : "MISMATCH";
}

void BM_XgExtent(benchmark::State& state) {
  const Inputs in(size_of(state));
  state.SetLabel(extent_label(in));
  for (auto _ : state) benchmark::DoNotOptimize(xg_extent(in));
  state.SetItemsProcessed(state.iterations() * in.items);
}
BENCHMARK(BM_XgExtent)->RangeMultiplier(4)->Range(kSmallest, kLargest);

void BM_GeosExtent(benchmark::State& state) {
  const Inputs in(size_of(state));
  state.SetLabel(extent_label(in) + " (cached envelope)");
  for (auto _ : state) benchmark::DoNotOptimize(geos_extent(in));
  state.SetItemsProcessed(state.iterations() * in.items);
}
BENCHMARK(BM_GeosExtent)->RangeMultiplier(4)->Range(kSmallest, kLargest);

}  // namespace

BENCHMARK_MAIN();
