// bench_relate.cpp - the relation predicates against GEOS's on the same random inputs.
//
// Each case is a pair of shapes built for one size (see random_shapes.h) and arranged so that
// the predicate has to look at the geometry rather than settle on the boxes: overlapping stars,
// stars whose boxes overlap but which stay apart, a star nested in another's inner disk, a star
// touching its mirror image in one vertex, a wavy line crossing a star, random points in a
// star's box, and two grids of four stars shifted against each other.
//
// Both libraries get their native inputs ready before timing: our blobs are built, and the GEOS
// geometries are converted from the very same blobs, OUTSIDE the timed loop.  The loop times
// the predicate call alone (GEOS plain GEOSIntersects_r etc.; GEOSPrepared only where labelled
// so, with the prepared geometry built and its index warmed up before timing).
//
// Names read BM_Xg<Op>/<case>/<size> and BM_Geos<Op>/<case>/<size>, size being the vertex count
// of one operand (of the polygon for the point case, of one multipolygon for the grid case).
// Items are input vertices, both operands together, so items/s compare across sizes and the
// ratio of two lines is the speed ratio.  Each line's label gives the answer, and says MISMATCH
// when the two libraries disagree on it.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <string>
#include <vector>

#include "random_shapes.h"
#include "support/geos_oracle.h"

namespace {

using xgbench::Bytes;
using xgbench::kCx;
using xgbench::kCy;
using xgbench::kRadius;

constexpr double kTol = 1e-6;          // far below the vertex spacing at every size
constexpr std::size_t kPointCount = 256;  // query points of the point case, a power of two

// The first operands (one shape, or many query points) and the second operand of one case.
struct Operands {
  std::vector<Bytes> a;
  Bytes b;
};

Operands overlapping_stars(std::size_t n) {
  auto rng = xgbench::seeded(1, n);
  Operands o;
  o.a.push_back(xgbench::star_polygon(rng, kCx, kCy, 0.8 * kRadius, kRadius, n));
  o.b = xgbench::star_polygon(rng, kCx + 0.8 * kRadius, kCy + 0.3 * kRadius, 0.8 * kRadius,
                              kRadius, n);
  return o;
}

// Centres 2.05 R apart diagonally: the stars cannot meet, yet each reaches at least 0.8 R
// towards the other, so their boxes always overlap.
Operands stars_apart(std::size_t n) {
  auto rng = xgbench::seeded(2, n);
  Operands o;
  o.a.push_back(xgbench::star_polygon(rng, kCx, kCy, 0.8 * kRadius, kRadius, n));
  o.b = xgbench::star_polygon(rng, kCx + 1.45 * kRadius, kCy + 1.45 * kRadius, 0.8 * kRadius,
                              kRadius, n);
  return o;
}

// a (radii up to 0.4 R) inside the disk of radius 0.8 R that b surely covers.
Operands nested_stars(std::size_t n) {
  auto rng = xgbench::seeded(3, n);
  Operands o;
  o.a.push_back(xgbench::star_polygon(rng, kCx, kCy, 0.2 * kRadius, 0.4 * kRadius, n));
  o.b = xgbench::star_polygon(rng, kCx, kCy, 0.8 * kRadius, kRadius, n);
  return o;
}

// b is a mirrored about the vertical line through a's easternmost vertex: the two share that
// vertex exactly (2m - m == m in doubles) and nothing else.
Operands touching_stars(std::size_t n) {
  auto rng = xgbench::seeded(4, n);
  xgbench::Ring ring = xgbench::star_ring(rng, kCx, kCy, 0.8 * kRadius, kRadius, n);
  double east = ring.front().x;
  for (const _xgWKB_POINT& p : ring) east = p.x > east ? p.x : east;
  xgbench::Ring image;
  for (auto it = ring.rbegin(); it != ring.rend(); ++it) image.push_back({2 * east - it->x, it->y});
  Operands o;
  o.a.push_back(xgtest::polygon({ring}));
  o.b = xgtest::polygon({image});
  return o;
}

// A line of n points from 1.5 R west to 1.5 R east of the centre, within 0.5 R of it in y.
Operands line_across_star(std::size_t n) {
  auto rng = xgbench::seeded(5, n);
  Operands o;
  o.a.push_back(xgbench::wavy_line(rng, kCx - 1.5 * kRadius, kCx + 1.5 * kRadius, kCy,
                                   0.5 * kRadius, n));
  o.b = xgbench::star_polygon(rng, kCx, kCy, 0.5 * kRadius, kRadius, n);
  return o;
}

// Points spread over the star's box: about two thirds fall inside.
Operands points_in_box(std::size_t n) {
  auto rng = xgbench::seeded(6, n);
  Operands o;
  o.b = xgbench::star_polygon(rng, kCx, kCy, 0.5 * kRadius, kRadius, n);
  std::uniform_real_distribution<double> x(kCx - kRadius, kCx + kRadius);
  std::uniform_real_distribution<double> y(kCy - kRadius, kCy + kRadius);
  for (std::size_t i = 0; i < kPointCount; ++i) o.a.push_back(xgtest::point(x(rng), y(rng)));
  return o;
}

// Four stars of n/4 vertices on a 2.5 R grid, against the same grid shifted by (0.8 R, 0.3 R).
Operands shifted_grids(std::size_t n) {
  auto rng = xgbench::seeded(7, n);
  std::vector<Bytes> first;
  std::vector<Bytes> second;
  for (int i = 0; i < 4; ++i) {
    const double cx = kCx + 2.5 * kRadius * (i % 2);
    const double cy = kCy + 2.5 * kRadius * (i / 2);
    first.push_back(xgbench::star_polygon(rng, cx, cy, 0.8 * kRadius, kRadius, n / 4));
    second.push_back(xgbench::star_polygon(rng, cx + 0.8 * kRadius, cy + 0.3 * kRadius,
                                           0.8 * kRadius, kRadius, n / 4));
  }
  Operands o;
  o.a.push_back(xgtest::multi(XGWKB_TYPE_MULTIPOLYGON, first));
  o.b = xgtest::multi(XGWKB_TYPE_MULTIPOLYGON, second);
  return o;
}

using XgPredicate = int32_t (*)(const unsigned char*, const unsigned char*, double);
using GeosPredicate = char (*)(GEOSContextHandle_t, const GEOSGeometry*, const GEOSGeometry*);
using GeosPreparedPredicate = char (*)(GEOSContextHandle_t, const GEOSPreparedGeometry*,
                                       const GEOSGeometry*);

struct Predicate {
  const char* name;
  XgPredicate xg;
  GeosPredicate geos;
};

const Predicate kIntersects{"Intersects", xgWKB_shape_is_intersecting, GEOSIntersects_r};
const Predicate kDisjoint{"Disjoint", xgWKB_shape_is_disjoint, GEOSDisjoint_r};
const Predicate kWithin{"Within", xgWKB_shape_is_within, GEOSWithin_r};
const Predicate kContains{"Contains", xgWKB_shape_is_containing, GEOSContains_r};
const Predicate kTouches{"Touches", xgWKB_shape_is_touching, GEOSTouches_r};
const Predicate kCrosses{"Crosses", xgWKB_shape_is_crossing, GEOSCrosses_r};
const Predicate kOverlaps{"Overlaps", xgWKB_shape_is_overlapping, GEOSOverlaps_r};

struct Case {
  const char* name;
  Operands (*make)(std::size_t);
  int64_t smallest;  // sizes run from here to kLargest
};

constexpr int64_t kLargest = 4096;

// One benchmark line: a predicate on a case, with the operands exchanged when `swapped` (so that
// Contains asks the big star about the small one).
struct Entry {
  Predicate pred;
  Case c;
  bool swapped;
};

// The case's inputs in both representations, built and converted once per benchmark run.
class Prepared {
 public:
  explicit Prepared(const Entry& e, std::size_t n) : ops_(e.c.make(n)), swapped_(e.swapped) {
    for (const Bytes& a : ops_.a) ga_.push_back(oracle_.to_geos(a.data()));
    gb_ = oracle_.to_geos(ops_.b.data());
    items_ = xgbench::vertex_count(ops_.a.front()) + xgbench::vertex_count(ops_.b);
  }
  ~Prepared() {
    for (GEOSGeometry* g : ga_) oracle_.destroy(g);
    oracle_.destroy(gb_);
  }
  Prepared(const Prepared&) = delete;
  Prepared& operator=(const Prepared&) = delete;

  std::size_t count() const { return ops_.a.size(); }
  GEOSContextHandle_t ctx() const { return oracle_.handle(); }
  int64_t items() const { return items_; }

  int32_t xg(const Predicate& p, std::size_t i) const {
    const unsigned char* a = ops_.a[i].data();
    const unsigned char* b = ops_.b.data();
    return swapped_ ? p.xg(b, a, kTol) : p.xg(a, b, kTol);
  }
  char geos(const Predicate& p, std::size_t i) const {
    return swapped_ ? p.geos(ctx(), gb_, ga_[i]) : p.geos(ctx(), ga_[i], gb_);
  }
  const GEOSGeometry* a_geos(std::size_t i) const { return ga_[i]; }
  const GEOSGeometry* b_geos() const { return gb_; }

  // "1", "0", or "171/256 true" for many query points; MISMATCH when the libraries disagree.
  std::string answers(const Predicate& p) const {
    std::size_t ours = 0;
    std::size_t theirs = 0;
    std::size_t differ = 0;
    for (std::size_t i = 0; i < count(); ++i) {
      const bool x = xg(p, i) == 1;
      const bool g = geos(p, i) == 1;
      ours += x;
      theirs += g;
      differ += x != g;
    }
    char text[96];
    if (count() == 1) {
      std::snprintf(text, sizeof text, differ ? "MISMATCH xg=%zu geos=%zu" : "%zu", ours, theirs);
    } else if (differ) {
      std::snprintf(text, sizeof text, "MISMATCH on %zu of %zu points", differ, count());
    } else {
      std::snprintf(text, sizeof text, "%zu/%zu true", ours, count());
    }
    return text;
  }

 private:
  xgtest::GeosOracle oracle_;
  Operands ops_;
  bool swapped_;
  std::vector<GEOSGeometry*> ga_;
  GEOSGeometry* gb_ = nullptr;
  int64_t items_ = 0;
};

void run_xg(benchmark::State& state, const Entry& e) {
  const Prepared in(e, static_cast<std::size_t>(state.range(0)));
  state.SetLabel(in.answers(e.pred));
  const std::size_t mask = in.count() - 1;
  std::size_t i = 0;
  for (auto _ : state) benchmark::DoNotOptimize(in.xg(e.pred, i++ & mask));
  state.SetItemsProcessed(state.iterations() * in.items());
}

void run_geos(benchmark::State& state, const Entry& e) {
  const Prepared in(e, static_cast<std::size_t>(state.range(0)));
  state.SetLabel(in.answers(e.pred));
  const std::size_t mask = in.count() - 1;
  std::size_t i = 0;
  for (auto _ : state) benchmark::DoNotOptimize(in.geos(e.pred, i++ & mask));
  state.SetItemsProcessed(state.iterations() * in.items());
}

// A prepared polygon asked about each query point.  "Within" asks whether the polygon contains
// the point, the same question seen from the other side.
void run_geos_prepared(benchmark::State& state, const Entry& e, GeosPreparedPredicate ask) {
  const Prepared in(e, static_cast<std::size_t>(state.range(0)));
  state.SetLabel(in.answers(e.pred) + " (prepared polygon)");
  GEOSContextHandle_t ctx = in.ctx();
  const GEOSPreparedGeometry* prepared = GEOSPrepare_r(ctx, in.b_geos());
  ask(ctx, prepared, in.a_geos(0));  // builds the prepared geometry's index before timing
  const std::size_t mask = in.count() - 1;
  std::size_t i = 0;
  for (auto _ : state) benchmark::DoNotOptimize(ask(ctx, prepared, in.a_geos(i++ & mask)));
  GEOSPreparedGeom_destroy_r(ctx, prepared);
  state.SetItemsProcessed(state.iterations() * in.items());
}

void register_all() {
  const Case overlap{"PolyPolyOverlap", overlapping_stars, 8};
  const Case apart{"PolyPolyApart", stars_apart, 8};
  const Case nested{"PolyInPoly", nested_stars, 8};
  const Case touch{"PolyPolyTouch", touching_stars, 8};
  const Case line{"LinePoly", line_across_star, 8};
  const Case points{"PointPoly", points_in_box, 8};
  const Case grids{"MultiPolyMultiPoly", shifted_grids, 32};
  static const std::vector<Entry> entries = {
      {kIntersects, overlap, false}, {kOverlaps, overlap, false}, {kTouches, overlap, false},
      {kDisjoint, apart, false},     {kIntersects, apart, false}, {kWithin, nested, false},
      {kContains, nested, true},     {kTouches, touch, false},    {kIntersects, line, false},
      {kCrosses, line, false},       {kTouches, line, false},     {kIntersects, points, false},
      {kWithin, points, false},      {kIntersects, grids, false}, {kOverlaps, grids, false},
  };
  for (const Entry& e : entries) {
    const std::string suffix = std::string(e.pred.name) + "/" + e.c.name;
    benchmark::RegisterBenchmark(("BM_Xg" + suffix).c_str(), run_xg, e)
        ->RangeMultiplier(4)
        ->Range(e.c.smallest, kLargest);
    benchmark::RegisterBenchmark(("BM_Geos" + suffix).c_str(), run_geos, e)
        ->RangeMultiplier(4)
        ->Range(e.c.smallest, kLargest);
  }
  const Entry& in_poly = entries[11];
  const Entry& within_poly = entries[12];
  benchmark::RegisterBenchmark("BM_GeosPreparedIntersects/PointPoly", run_geos_prepared, in_poly,
                               GEOSPreparedIntersects_r)
      ->RangeMultiplier(4)
      ->Range(8, kLargest);
  benchmark::RegisterBenchmark("BM_GeosPreparedWithin/PointPoly", run_geos_prepared, within_poly,
                               GEOSPreparedContains_r)
      ->RangeMultiplier(4)
      ->Range(8, kLargest);
}

}  // namespace

int main(int argc, char** argv) {
  register_all();
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
