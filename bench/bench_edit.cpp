// bench_edit.cpp - move, rotate, mirror and a vertex insert on a long linestring, against GEOS
// where it has an equivalent.
//
// Input: a road-like line of n points (see random_shapes.h), one per size from a fixed seed.
// Items are the line's vertices, so the ratio of two lines is the speed ratio.
//
// Both libraries get their native representation before timing: our blob is built, and the GEOS
// geometry is converted from the same blob OUTSIDE the timed loop.
//
// What is compared:
//   Move, Rotate  ours rewrite the blob in place; the benchmark works on a copy made before
//                 timing and alternates the sign of the step so the coordinates stay put.  GEOS
//                 has no in-place transform: GEOSGeom_transformXY_r clones the geometry and
//                 calls back once per vertex, so it also pays an allocation and a copy.  The
//                 *OnCopy lines do the same on our side (duplicate, transform, free) for the
//                 like-for-like ratio.
//   Mirror        both make a new geometry: ours with xgWKB_shape_mirror, GEOS with
//                 GEOSGeom_transformXY_r and the reflection about the same line.
//   InsertVertex  a new blob one vertex longer.  GEOS has no vertex insert (its geometries are
//                 immutable and the C API offers no splice), so there is no GEOS line; the
//                 Duplicate and Clone lines give each library's cost of a plain copy as a
//                 yardstick.
// Before timing, each GEOS transform's result is checked against ours (same coordinates within
// 1e-6); the label says MISMATCH otherwise.
#include <benchmark/benchmark.h>

#include <cmath>
#include <string>

#include "random_shapes.h"
#include "support/geos_oracle.h"

namespace {

using xgbench::Bytes;
using xgbench::kCx;
using xgbench::kCy;
using xgbench::kRadius;

constexpr int64_t kSmallest = 1024;
constexpr int64_t kLargest = 65536;

constexpr double kDx = 12.5;
constexpr double kDy = -7.25;
constexpr double kAngle = 0.3;  // radians; positive turns clockwise in our convention
const _xgWKB_POINT kPivot{kCx + 10, kCy - 20};
// A slanted mirror line, so ours takes its general branch rather than the vertical-line one.
const _xgWKB_POINT kMirrorA{kCx - 300, kCy - 500};
const _xgWKB_POINT kMirrorB{kCx + 400, kCy + 700};
constexpr double kMirrorTol = 1e-6;

struct Inputs {
  xgtest::GeosOracle oracle;
  Bytes blob;
  GEOSGeometry* geos = nullptr;
  int64_t items = 0;

  explicit Inputs(std::size_t n) {
    auto rng = xgbench::seeded(21, n);
    blob = xgbench::wavy_line(rng, kCx - kRadius, kCx + kRadius, kCy, 0.2 * kRadius, n);
    geos = oracle.to_geos(blob.data());
    items = xgbench::vertex_count(blob);
  }
  ~Inputs() { oracle.destroy(geos); }
  Inputs(const Inputs&) = delete;
  Inputs& operator=(const Inputs&) = delete;
  GEOSContextHandle_t ctx() const { return oracle.handle(); }
};

std::size_t size_of(const benchmark::State& state) {
  return static_cast<std::size_t>(state.range(0));
}

// ---- the affine maps as GEOS callbacks ------------------------------------------------------

struct Shift {
  double dx, dy;
};
int shift_xy(double* x, double* y, void* data) {
  const Shift* s = static_cast<const Shift*>(data);
  *x += s->dx;
  *y += s->dy;
  return 1;
}

// Clockwise by the angle whose cosine and sine are c and s, about (cx, cy): our convention.
struct Turn {
  double c, s, cx, cy;
};
int turn_xy(double* x, double* y, void* data) {
  const Turn* t = static_cast<const Turn*>(data);
  const double u = *x - t->cx;
  const double v = *y - t->cy;
  *x = t->cx + u * t->c + v * t->s;
  *y = t->cy + v * t->c - u * t->s;
  return 1;
}

// Reflection about the line through a with unit direction (ux, uy).
struct Reflect {
  double ax, ay, ux, uy;
};
int reflect_xy(double* x, double* y, void* data) {
  const Reflect* r = static_cast<const Reflect*>(data);
  const double px = *x - r->ax;
  const double py = *y - r->ay;
  const double along = px * r->ux + py * r->uy;
  *x = r->ax + 2 * along * r->ux - px;
  *y = r->ay + 2 * along * r->uy - py;
  return 1;
}

Reflect mirror_line() {
  const double dx = kMirrorB.x - kMirrorA.x;
  const double dy = kMirrorB.y - kMirrorA.y;
  const double len = std::hypot(dx, dy);
  return Reflect{kMirrorA.x, kMirrorA.y, dx / len, dy / len};
}

// "same" when our blob and the GEOS geometry hold the same coordinates within 1e-6.
std::string compare(const Inputs& in, const Bytes& ours, const GEOSGeometry* theirs) {
  GEOSGeometry* mine = in.oracle.to_geos(ours.data());
  const char same = GEOSEqualsExact_r(in.ctx(), mine, theirs, 1e-6);
  in.oracle.destroy(mine);
  return same == 1 ? "same" : "MISMATCH";
}

template <class OurMap>
std::string check_map(const Inputs& in, OurMap&& ours, GEOSTransformXYCallback cb, void* data) {
  Bytes copy = in.blob;
  ours(copy.data());
  GEOSGeometry* theirs = GEOSGeom_transformXY_r(in.ctx(), in.geos, cb, data);
  const std::string label = compare(in, copy, theirs);
  in.oracle.destroy(theirs);
  return label;
}

void time_geos_map(benchmark::State& state, const Inputs& in, GEOSTransformXYCallback cb,
                   void* data) {
  for (auto _ : state) {
    GEOSGeometry* g = GEOSGeom_transformXY_r(in.ctx(), in.geos, cb, data);
    benchmark::DoNotOptimize(g);
    GEOSGeom_destroy_r(in.ctx(), g);
  }
  state.SetItemsProcessed(state.iterations() * in.items);
}

// ---- move ---------------------------------------------------------------------------------

void BM_XgMove(benchmark::State& state) {
  const Inputs in(size_of(state));
  Bytes work = in.blob;
  double sign = 1;
  for (auto _ : state) {
    benchmark::DoNotOptimize(xgWKB_shape_move(work.data(), sign * kDx, sign * kDy));
    benchmark::ClobberMemory();
    sign = -sign;
  }
  state.SetItemsProcessed(state.iterations() * in.items);
}
BENCHMARK(BM_XgMove)->RangeMultiplier(8)->Range(kSmallest, kLargest);

void BM_XgMoveOnCopy(benchmark::State& state) {
  const Inputs in(size_of(state));
  for (auto _ : state) {
    unsigned char* copy = nullptr;
    xgWKB_shape_duplicate(in.blob.data(), &copy);
    benchmark::DoNotOptimize(xgWKB_shape_move(copy, kDx, kDy));
    xgWKB_shape_free(copy);
  }
  state.SetItemsProcessed(state.iterations() * in.items);
}
BENCHMARK(BM_XgMoveOnCopy)->RangeMultiplier(8)->Range(kSmallest, kLargest);

void BM_GeosMove(benchmark::State& state) {
  const Inputs in(size_of(state));
  Shift shift{kDx, kDy};
  state.SetLabel(check_map(in, [](unsigned char* b) { xgWKB_shape_move(b, kDx, kDy); }, shift_xy,
                           &shift));
  time_geos_map(state, in, shift_xy, &shift);
}
BENCHMARK(BM_GeosMove)->RangeMultiplier(8)->Range(kSmallest, kLargest);

// ---- rotate -------------------------------------------------------------------------------

void BM_XgRotate(benchmark::State& state) {
  const Inputs in(size_of(state));
  Bytes work = in.blob;
  double sign = 1;
  for (auto _ : state) {
    benchmark::DoNotOptimize(xgWKB_shape_rotate(work.data(), sign * kAngle, kPivot.x, kPivot.y));
    benchmark::ClobberMemory();
    sign = -sign;
  }
  state.SetItemsProcessed(state.iterations() * in.items);
}
BENCHMARK(BM_XgRotate)->RangeMultiplier(8)->Range(kSmallest, kLargest);

void BM_XgRotateOnCopy(benchmark::State& state) {
  const Inputs in(size_of(state));
  for (auto _ : state) {
    unsigned char* copy = nullptr;
    xgWKB_shape_duplicate(in.blob.data(), &copy);
    benchmark::DoNotOptimize(xgWKB_shape_rotate(copy, kAngle, kPivot.x, kPivot.y));
    xgWKB_shape_free(copy);
  }
  state.SetItemsProcessed(state.iterations() * in.items);
}
BENCHMARK(BM_XgRotateOnCopy)->RangeMultiplier(8)->Range(kSmallest, kLargest);

// The callback gets the cosine and sine ready-made, as ours computes them once per call too.
void BM_GeosRotate(benchmark::State& state) {
  const Inputs in(size_of(state));
  Turn turn{std::cos(kAngle), std::sin(kAngle), kPivot.x, kPivot.y};
  state.SetLabel(check_map(
      in, [](unsigned char* b) { xgWKB_shape_rotate(b, kAngle, kPivot.x, kPivot.y); }, turn_xy,
      &turn));
  time_geos_map(state, in, turn_xy, &turn);
}
BENCHMARK(BM_GeosRotate)->RangeMultiplier(8)->Range(kSmallest, kLargest);

// ---- mirror -------------------------------------------------------------------------------

void BM_XgMirror(benchmark::State& state) {
  const Inputs in(size_of(state));
  for (auto _ : state) {
    unsigned char* out = nullptr;
    xgWKB_shape_mirror(in.blob.data(), &kMirrorA, &kMirrorB, &out, kMirrorTol);
    benchmark::DoNotOptimize(out);
    xgWKB_shape_free(out);
  }
  state.SetItemsProcessed(state.iterations() * in.items);
}
BENCHMARK(BM_XgMirror)->RangeMultiplier(8)->Range(kSmallest, kLargest);

void BM_GeosMirror(benchmark::State& state) {
  const Inputs in(size_of(state));
  Reflect reflect = mirror_line();
  unsigned char* ours = nullptr;
  xgWKB_shape_mirror(in.blob.data(), &kMirrorA, &kMirrorB, &ours, kMirrorTol);
  uint32_t size = 0;
  xgWKB_shape_get_WKB_size(ours, &size);
  const Bytes mirrored(ours, ours + size);
  xgWKB_shape_free(ours);
  GEOSGeometry* theirs = GEOSGeom_transformXY_r(in.ctx(), in.geos, reflect_xy, &reflect);
  state.SetLabel(compare(in, mirrored, theirs));
  in.oracle.destroy(theirs);
  time_geos_map(state, in, reflect_xy, &reflect);
}
BENCHMARK(BM_GeosMirror)->RangeMultiplier(8)->Range(kSmallest, kLargest);

// ---- vertex insert (no GEOS counterpart) and the plain-copy yardsticks --------------------

void BM_XgInsertVertex(benchmark::State& state) {
  const Inputs in(size_of(state));
  const _xgWKB_POINT p{kCx, kCy + 1};
  const int32_t middle = static_cast<int32_t>(in.items / 2);
  for (auto _ : state) {
    unsigned char* out = nullptr;
    xgWKB_shape_add_lineString_point(in.blob.data(), middle, &p, &out);
    benchmark::DoNotOptimize(out);
    xgWKB_shape_free(out);
  }
  state.SetItemsProcessed(state.iterations() * in.items);
}
BENCHMARK(BM_XgInsertVertex)->RangeMultiplier(8)->Range(kSmallest, kLargest);

void BM_XgDuplicate(benchmark::State& state) {
  const Inputs in(size_of(state));
  for (auto _ : state) {
    unsigned char* copy = nullptr;
    xgWKB_shape_duplicate(in.blob.data(), &copy);
    benchmark::DoNotOptimize(copy);
    xgWKB_shape_free(copy);
  }
  state.SetItemsProcessed(state.iterations() * in.items);
}
BENCHMARK(BM_XgDuplicate)->RangeMultiplier(8)->Range(kSmallest, kLargest);

void BM_GeosClone(benchmark::State& state) {
  const Inputs in(size_of(state));
  for (auto _ : state) {
    GEOSGeometry* g = GEOSGeom_clone_r(in.ctx(), in.geos);
    benchmark::DoNotOptimize(g);
    GEOSGeom_destroy_r(in.ctx(), g);
  }
  state.SetItemsProcessed(state.iterations() * in.items);
}
BENCHMARK(BM_GeosClone)->RangeMultiplier(8)->Range(kSmallest, kLargest);

}  // namespace

BENCHMARK_MAIN();
