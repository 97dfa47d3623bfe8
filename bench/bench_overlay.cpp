// Polygon overlay against GEOS (OverlayNG) on the same inputs: two overlapping star polygons,
// spiky (radii in [0.8R, R]) or smooth (radii in [R(1 - 2 pi / n), R]), and two multipolygons of
// 100 star members each, the second shifted by half a member.  BM_XgOverlay makes all three
// parts in one call; BM_GeosOverlay asks GEOS for the same three (intersection and both
// differences).  BM_XgClip times the clipper adapter alone on contours already unpacked, so that
// the rest of an export's time (unpacking the blobs, cleaning, hole assignment, writing) shows as
// the difference.  Labels give the result's area from each library and flag a disagreement.
#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdio>
#include <string>

#include "construct/gpc_adapter.h"
#include "construct/overlay_convert.h"
#include "random_shapes.h"
#include "support/geos_oracle.h"

namespace {

using namespace xgbench;

enum class Kind { kSpiky, kSmooth, kMulti };

struct Inputs {
  Bytes a, b;
};

Inputs make_inputs(Kind kind, std::size_t n) {
  std::mt19937_64 rng = seeded(static_cast<uint64_t>(kind), n);
  if (kind != Kind::kMulti) {
    const double rmin = kind == Kind::kSpiky ? 0.8 * kRadius : kRadius * (1 - 2 * M_PI / static_cast<double>(n));
    return {star_polygon(rng, kCx, kCy, rmin, kRadius, n),
            star_polygon(rng, kCx + 0.6 * kRadius, kCy + 0.3 * kRadius, rmin, kRadius, n)};
  }
  // Ten by ten members of n / 100 vertices each, the second set half a cell up and right.
  const std::size_t per = n / 100 < 8 ? 8 : n / 100;
  const double cell = 2.5 * kRadius;
  std::vector<Bytes> ma, mb;
  for (int i = 0; i < 10; ++i) {
    for (int j = 0; j < 10; ++j) {
      const double x = kCx + i * cell, y = kCy + j * cell;
      ma.push_back(star_polygon(rng, x, y, 0.8 * kRadius, kRadius, per));
      mb.push_back(star_polygon(rng, x + 0.5 * cell, y + 0.5 * cell, 0.8 * kRadius, kRadius, per));
    }
  }
  return {xgtest::multi(XGWKB_TYPE_MULTIPOLYGON, ma), xgtest::multi(XGWKB_TYPE_MULTIPOLYGON, mb)};
}

enum class Op { kIntersection, kUnion, kDifference, kOverlay };

using XgBinary = int32_t (*)(const unsigned char*, const unsigned char*, unsigned char**, double);
using GeosBinary = GEOSGeometry* (*)(GEOSContextHandle_t, const GEOSGeometry*, const GEOSGeometry*);

XgBinary xg_op(Op op) {
  return op == Op::kIntersection ? xgWKB_shape_intersection
                                 : (op == Op::kUnion ? xgWKB_shape_union : xgWKB_shape_difference);
}
GeosBinary geos_op(Op op) {
  return op == Op::kIntersection ? GEOSIntersection_r : (op == Op::kUnion ? GEOSUnion_r : GEOSDifference_r);
}
xg::gpc_op gpc_code(Op op) {
  return op == Op::kIntersection ? xg::GPC_INT : (op == Op::kUnion ? xg::GPC_UNION : xg::GPC_DIFF);
}

// Runs once, outside timing: the areas of both libraries' results, as the label.
class Fixture {
 public:
  Fixture(Kind kind, std::size_t n) : in_(make_inputs(kind, n)) {
    ga_ = oracle_.to_geos(in_.a.data());
    gb_ = oracle_.to_geos(in_.b.data());
  }
  ~Fixture() {
    oracle_.destroy(ga_);
    oracle_.destroy(gb_);
  }

  // Ours: one call; the three parts' areas summed for overlay.
  double xg_area(Op op) {
    double total = 0;
    if (op == Op::kOverlay) {
      unsigned char *p[3] = {nullptr, nullptr, nullptr};
      xgWKB_shape_overlay(in_.a.data(), in_.b.data(), &p[0], &p[1], &p[2], 0);
      for (unsigned char* part : p) total += area_of_blob(part);
      return total;
    }
    unsigned char* r = nullptr;
    xg_op(op)(in_.a.data(), in_.b.data(), &r, 0);
    return area_of_blob(r);
  }
  double geos_area(Op op) {
    if (op != Op::kOverlay) return geos_once(geos_op(op), ga_, gb_);
    return geos_once(GEOSIntersection_r, ga_, gb_) + geos_once(GEOSDifference_r, ga_, gb_) +
           geos_once(GEOSDifference_r, gb_, ga_);
  }
  std::string label(Op op) {
    const double x = xg_area(op), g = geos_area(op);
    char text[96];
    std::snprintf(text, sizeof text, "%s area %.6g", std::fabs(x - g) > 1e-9 * g ? "MISMATCH" : "", x);
    return text;
  }

  const Inputs& in() const { return in_; }
  GEOSContextHandle_t ctx() const { return oracle_.handle(); }
  const GEOSGeometry* ga() const { return ga_; }
  const GEOSGeometry* gb() const { return gb_; }

 private:
  double area_of_blob(unsigned char* blob) {
    if (blob == nullptr || xgWKB_shape_is_nil(blob)) {
      xgWKB_shape_free(blob);
      return 0;
    }
    GEOSGeometry* g = oracle_.to_geos(blob);
    double a = 0;
    GEOSArea_r(oracle_.handle(), g, &a);
    oracle_.destroy(g);
    xgWKB_shape_free(blob);
    return a;
  }
  double geos_once(GeosBinary f, const GEOSGeometry* a, const GEOSGeometry* b) {
    GEOSGeometry* r = f(oracle_.handle(), a, b);
    double area = 0;
    GEOSArea_r(oracle_.handle(), r, &area);
    oracle_.destroy(r);
    return area;
  }

  xgtest::GeosOracle oracle_;
  Inputs in_;
  GEOSGeometry* ga_ = nullptr;
  GEOSGeometry* gb_ = nullptr;
};

void run_xg(benchmark::State& state, Kind kind, Op op) {
  Fixture f(kind, static_cast<std::size_t>(state.range(0)));
  state.SetLabel(f.label(op));
  const unsigned char* a = f.in().a.data();
  const unsigned char* b = f.in().b.data();
  for (auto _ : state) {
    if (op == Op::kOverlay) {
      unsigned char *p = nullptr, *q = nullptr, *c = nullptr;
      benchmark::DoNotOptimize(xgWKB_shape_overlay(a, b, &p, &q, &c, 0));
      xgWKB_shape_free(p);
      xgWKB_shape_free(q);
      xgWKB_shape_free(c);
    } else {
      unsigned char* r = nullptr;
      benchmark::DoNotOptimize(xg_op(op)(a, b, &r, 0));
      xgWKB_shape_free(r);
    }
  }
}

void run_geos(benchmark::State& state, Kind kind, Op op) {
  Fixture f(kind, static_cast<std::size_t>(state.range(0)));
  state.SetLabel(f.label(op));
  GEOSContextHandle_t ctx = f.ctx();
  for (auto _ : state) {
    if (op == Op::kOverlay) {
      GEOSGeom_destroy_r(ctx, GEOSIntersection_r(ctx, f.ga(), f.gb()));
      GEOSGeom_destroy_r(ctx, GEOSDifference_r(ctx, f.ga(), f.gb()));
      GEOSGeom_destroy_r(ctx, GEOSDifference_r(ctx, f.gb(), f.ga()));
    } else {
      GEOSGeom_destroy_r(ctx, geos_op(op)(ctx, f.ga(), f.gb()));
    }
  }
}

// The clipper adapter alone: contours unpacked before timing, clip result not cleaned or written.
void run_clip(benchmark::State& state, Kind kind, Op op) {
  const Inputs in = make_inputs(kind, static_cast<std::size_t>(state.range(0)));
  xg::gpc_polygon a, b;
  xg::append_polygon_contours(in.a.data(), &a);
  xg::append_polygon_contours(in.b.data(), &b);
  for (auto _ : state) {
    if (op == Op::kOverlay) {
      xg::gpc_polygon c, p, q;
      benchmark::DoNotOptimize(xg::three_way_polygon_clip(a, b, &c, &p, &q));
    } else {
      xg::gpc_polygon r;
      benchmark::DoNotOptimize(xg::gpc_polygon_clip(gpc_code(op), a, b, &r));
    }
  }
}

void register_all() {
  const struct {
    const char* name;
    Kind kind;
  } kinds[] = {{"Spiky", Kind::kSpiky}, {"Smooth", Kind::kSmooth}, {"Multi100", Kind::kMulti}};
  const struct {
    const char* name;
    Op op;
  } ops[] = {{"Intersection", Op::kIntersection},
             {"Union", Op::kUnion},
             {"Difference", Op::kDifference},
             {"Overlay", Op::kOverlay}};
  for (const auto& k : kinds) {
    for (const auto& o : ops) {
      const std::string suffix = std::string(o.name) + "/" + k.name;
      for (const auto& [prefix, fn] : {std::pair{"BM_Xg", run_xg}, {"BM_Geos", run_geos}, {"BM_XgClip", run_clip}}) {
        auto* b = benchmark::RegisterBenchmark((prefix + suffix).c_str(), fn, k.kind, o.op);
        b->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);
        // Spiky stars of 100k vertices cross each other some 10^6 times: minutes for either
        // library, so that size is left to the smooth stars and the multipolygons.
        if (k.kind != Kind::kSpiky) b->Arg(100000);
      }
    }
  }
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
