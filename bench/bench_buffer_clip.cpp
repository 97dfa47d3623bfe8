// Buffer and box clipping against GEOS on the same inputs.  Buffers: a random-walk linestring of
// 1k and 10k unit steps and a 1k-vertex star polygon, at distances 1, 10 and 100 (GEOS with ten
// segments per quadrant, the 40-gon our circles use).  Clipping: a 100k-vertex line and a
// 100k-vertex polygon (spiky and smooth) cut by a box over part of them (GEOS: GEOSClipByRect).  Labels give our
// result's area or length over GEOS's.
#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdio>
#include <string>

#include "random_shapes.h"
#include "support/geos_oracle.h"

namespace {

using namespace xgbench;

enum class Shape { kWalk, kPolygon, kWavyLine, kBigPolygon, kSmoothPolygon };

// A walk of n unit steps from the centre whose heading turns by up to half a radian a step (a
// winding track that crosses itself now and then).
Bytes random_walk(std::size_t n) {
  std::mt19937_64 rng = seeded(40, n);
  std::uniform_real_distribution<double> turn(-0.5, 0.5);
  Ring pts{{kCx, kCy}};
  double a = 0;
  for (std::size_t i = 1; i < n; ++i) {
    a += turn(rng);
    pts.push_back({pts.back().x + std::cos(a), pts.back().y + std::sin(a)});
  }
  return xgtest::linestring(pts);
}

Bytes make(Shape s, std::size_t n) {
  std::mt19937_64 rng = seeded(41 + static_cast<uint64_t>(s), n);
  switch (s) {
    case Shape::kWalk:
      return random_walk(n);
    case Shape::kPolygon:
    case Shape::kBigPolygon:
      return star_polygon(rng, kCx, kCy, 0.8 * kRadius, kRadius, n);
    case Shape::kSmoothPolygon:  // radii within one sector's arc of each other: no spikes
      return star_polygon(rng, kCx, kCy, kRadius * (1 - 2 * M_PI / static_cast<double>(n)), kRadius, n);
    case Shape::kWavyLine:
    default:
      return wavy_line(rng, kCx - kRadius, kCx + kRadius, kCy, 0.5 * kRadius, n);
  }
}

// The clip box: the right half of the shapes' extent, a little above the centre line.
const _xgWKB_BOX kClipBox{kCx, kCy - 0.3 * kRadius, kCx + 2 * kRadius, kCy + 2 * kRadius};

struct Measure {
  xgtest::GeosOracle oracle;
  double of(GEOSGeometry* g) {
    double v = 0;
    const int type = GEOSGeomTypeId_r(oracle.handle(), g);
    if (type == GEOS_LINESTRING || type == GEOS_MULTILINESTRING) {
      GEOSLength_r(oracle.handle(), g, &v);  // line types
    } else {
      GEOSArea_r(oracle.handle(), g, &v);
    }
    return v;
  }
  double of_blob(unsigned char* blob) {
    if (blob == nullptr || xgWKB_shape_is_nil(blob)) return 0;
    GEOSGeometry* g = oracle.to_geos(blob);
    const double v = of(g);
    oracle.destroy(g);
    return v;
  }
};

std::string ratio_label(double ours, double geos) {
  char text[64];
  std::snprintf(text, sizeof text, "ours/GEOS size %.5f", geos != 0 ? ours / geos : 0.0);
  return text;
}

void BM_XgBuffer(benchmark::State& state, Shape s) {
  const Bytes in = make(s, static_cast<std::size_t>(state.range(0)));
  const double d = static_cast<double>(state.range(1));
  Measure m;
  GEOSGeometry* g = m.oracle.to_geos(in.data());
  GEOSGeometry* ref = GEOSBuffer_r(m.oracle.handle(), g, d, 10);
  unsigned char* once = nullptr;
  xgWKB_shape_generate_buffer(in.data(), d, &once, 0);
  state.SetLabel(ratio_label(m.of_blob(once), m.of(ref)));
  xgWKB_shape_free(once);
  m.oracle.destroy(ref);
  m.oracle.destroy(g);
  for (auto _ : state) {
    unsigned char* r = nullptr;
    benchmark::DoNotOptimize(xgWKB_shape_generate_buffer(in.data(), d, &r, 0));
    xgWKB_shape_free(r);
  }
}

void BM_GeosBuffer(benchmark::State& state, Shape s) {
  const Bytes in = make(s, static_cast<std::size_t>(state.range(0)));
  const double d = static_cast<double>(state.range(1));
  Measure m;
  GEOSGeometry* g = m.oracle.to_geos(in.data());
  for (auto _ : state) GEOSGeom_destroy_r(m.oracle.handle(), GEOSBuffer_r(m.oracle.handle(), g, d, 10));
  m.oracle.destroy(g);
}

void BM_XgClip(benchmark::State& state, Shape s) {
  const Bytes in = make(s, static_cast<std::size_t>(state.range(0)));
  unsigned char* box = nullptr;
  xgWKB_shape_generate_envelope(&kClipBox, &box);
  Measure m;
  GEOSGeometry* g = m.oracle.to_geos(in.data());
  GEOSGeometry* ref = GEOSClipByRect_r(m.oracle.handle(), g, kClipBox.minx, kClipBox.miny, kClipBox.maxx, kClipBox.maxy);
  unsigned char* once = nullptr;
  xgWKB_shape_clip(in.data(), box, &once, 0.0001);
  state.SetLabel(ratio_label(m.of_blob(once), m.of(ref)));
  xgWKB_shape_free(once);
  m.oracle.destroy(ref);
  m.oracle.destroy(g);
  for (auto _ : state) {
    unsigned char* r = nullptr;
    benchmark::DoNotOptimize(xgWKB_shape_clip(in.data(), box, &r, 0.0001));
    xgWKB_shape_free(r);
  }
  xgWKB_shape_free(box);
}

void BM_GeosClip(benchmark::State& state, Shape s) {
  const Bytes in = make(s, static_cast<std::size_t>(state.range(0)));
  Measure m;
  GEOSGeometry* g = m.oracle.to_geos(in.data());
  for (auto _ : state) {
    GEOSGeom_destroy_r(m.oracle.handle(), GEOSClipByRect_r(m.oracle.handle(), g, kClipBox.minx, kClipBox.miny,
                                                           kClipBox.maxx, kClipBox.maxy));
  }
  m.oracle.destroy(g);
}

void buffer_args(benchmark::internal::Benchmark* b, std::initializer_list<int64_t> sizes) {
  for (int64_t n : sizes)
    for (int64_t d : {1, 10, 100}) b->Args({n, d});
  b->Unit(benchmark::kMillisecond);
}

void register_all() {
  const struct {
    const char* name;
    Shape shape;
    std::initializer_list<int64_t> sizes;
  } buffers[] = {{"Walk", Shape::kWalk, {1000, 10000}}, {"Polygon", Shape::kPolygon, {1000}}};
  for (const auto& b : buffers) {
    buffer_args(benchmark::RegisterBenchmark((std::string("BM_XgBuffer/") + b.name).c_str(), BM_XgBuffer, b.shape), b.sizes);
    buffer_args(benchmark::RegisterBenchmark((std::string("BM_GeosBuffer/") + b.name).c_str(), BM_GeosBuffer, b.shape),
                b.sizes);
  }
  const struct {
    const char* name;
    Shape shape;
  } clips[] = {{"Line", Shape::kWavyLine}, {"SpikyPolygon", Shape::kBigPolygon}, {"SmoothPolygon", Shape::kSmoothPolygon}};
  for (const auto& c : clips) {
    benchmark::RegisterBenchmark((std::string("BM_XgClip/") + c.name).c_str(), BM_XgClip, c.shape)
        ->Arg(100000)
        ->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark((std::string("BM_GeosClip/") + c.name).c_str(), BM_GeosClip, c.shape)
        ->Arg(100000)
        ->Unit(benchmark::kMillisecond);
  }
}

}  // namespace

int main(int argc, char** argv) {
  register_all();
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
