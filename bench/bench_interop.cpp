// bench_interop.cpp - standard WKB and OGC WKT of a 1,000,000-point linestring, read and written
// by the interchange functions and by GEOS's readers and writers on the same bytes and text.
// Bytes per second count the input of a read and the output of a write.
#include <benchmark/benchmark.h>

#include <geos_c.h>

#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "support/blob_builder.h"
#include "xggeokit.h"

namespace {

constexpr std::size_t kPoints = 1000000;

// A random walk in projected metres: full-precision doubles, as real data carries.
const xgtest::Bytes& line() {
  static const xgtest::Bytes blob = [] {
    std::mt19937_64 rng(5);
    std::normal_distribution<double> step(0, 10);
    xgtest::Ring pts;
    double x = 512345.678, y = 4012345.678;
    for (std::size_t i = 0; i < kPoints; ++i) pts.push_back({x += step(rng), y += step(rng)});
    return xgtest::linestring(pts);
  }();
  return blob;
}

struct Geos {
  GEOSContextHandle_t h = GEOS_init_r();
  GEOSWKBReader* wkb_reader = GEOSWKBReader_create_r(h);
  GEOSWKBWriter* wkb_writer = GEOSWKBWriter_create_r(h);
  GEOSWKTReader* wkt_reader = GEOSWKTReader_create_r(h);
  GEOSWKTWriter* wkt_writer = GEOSWKTWriter_create_r(h);
  GEOSGeometry* g = nullptr;
  Geos() {
    GEOSWKBWriter_setByteOrder_r(h, wkb_writer, GEOS_WKB_NDR);
    GEOSWKTWriter_setTrim_r(h, wkt_writer, 1);
    GEOSWKTWriter_setRoundingPrecision_r(h, wkt_writer, 17);  // reads back exactly, as ours does
  }
  ~Geos() {
    if (g != nullptr) GEOSGeom_destroy_r(h, g);
    GEOSWKBReader_destroy_r(h, wkb_reader);
    GEOSWKBWriter_destroy_r(h, wkb_writer);
    GEOSWKTReader_destroy_r(h, wkt_reader);
    GEOSWKTWriter_destroy_r(h, wkt_writer);
    GEOS_finish_r(h);
  }
};

std::vector<unsigned char> wkb(int big) {
  unsigned char* out = nullptr;
  uint32_t size = 0;
  xgWKB_shape_to_wkb(line().data(), big, &out, &size);
  std::vector<unsigned char> v(out, out + size);
  xgWKB_shape_free(out);
  return v;
}

std::string ogc_text() {
  char* text = nullptr;
  xgWKB_shape_to_ogc_wkt(line().data(), -1, &text);
  std::string s(text);
  xgWKB_shape_free_WKT(text);
  return s;
}

// ---- WKB -------------------------------------------------------------------------------------

void BM_XgWkbRead(benchmark::State& state) {
  const std::vector<unsigned char> bytes = wkb(static_cast<int>(state.range(0)));
  for (auto _ : state) {
    unsigned char* out = nullptr;
    xgWKB_shape_from_wkb(bytes.data(), bytes.size(), &out);
    benchmark::DoNotOptimize(out);
    xgWKB_shape_free(out);
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * bytes.size()));
}
BENCHMARK(BM_XgWkbRead)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

void BM_GeosWkbRead(benchmark::State& state) {
  const std::vector<unsigned char> bytes = wkb(static_cast<int>(state.range(0)));
  Geos geos;
  for (auto _ : state) {
    GEOSGeometry* g = GEOSWKBReader_read_r(geos.h, geos.wkb_reader, bytes.data(), bytes.size());
    benchmark::DoNotOptimize(g);
    GEOSGeom_destroy_r(geos.h, g);
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * bytes.size()));
}
BENCHMARK(BM_GeosWkbRead)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

void BM_XgWkbWrite(benchmark::State& state) {
  std::size_t bytes = 0;
  for (auto _ : state) {
    unsigned char* out = nullptr;
    uint32_t size = 0;
    xgWKB_shape_to_wkb(line().data(), static_cast<int32_t>(state.range(0)), &out, &size);
    bytes = size;
    xgWKB_shape_free(out);
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * bytes));
}
BENCHMARK(BM_XgWkbWrite)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

void BM_GeosWkbWrite(benchmark::State& state) {
  const std::vector<unsigned char> bytes = wkb(0);
  Geos geos;
  geos.g = GEOSWKBReader_read_r(geos.h, geos.wkb_reader, bytes.data(), bytes.size());
  GEOSWKBWriter_setByteOrder_r(geos.h, geos.wkb_writer, state.range(0) ? GEOS_WKB_XDR : GEOS_WKB_NDR);
  std::size_t size = 0;
  for (auto _ : state) {
    unsigned char* out = GEOSWKBWriter_write_r(geos.h, geos.wkb_writer, geos.g, &size);
    GEOSFree_r(geos.h, out);
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * size));
}
BENCHMARK(BM_GeosWkbWrite)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

// ---- OGC WKT ---------------------------------------------------------------------------------

void BM_XgOgcWktRead(benchmark::State& state) {
  const std::string text = ogc_text();
  for (auto _ : state) {
    unsigned char* out = nullptr;
    xgWKB_shape_from_ogc_wkt(text.c_str(), 0, &out);
    benchmark::DoNotOptimize(out);
    xgWKB_shape_free(out);
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
}
BENCHMARK(BM_XgOgcWktRead)->Unit(benchmark::kMillisecond);

void BM_GeosOgcWktRead(benchmark::State& state) {
  const std::string text = ogc_text();
  Geos geos;
  for (auto _ : state) {
    GEOSGeometry* g = GEOSWKTReader_read_r(geos.h, geos.wkt_reader, text.c_str());
    benchmark::DoNotOptimize(g);
    GEOSGeom_destroy_r(geos.h, g);
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
}
BENCHMARK(BM_GeosOgcWktRead)->Unit(benchmark::kMillisecond);

void BM_XgOgcWktWrite(benchmark::State& state) {
  std::size_t bytes = 0;
  for (auto _ : state) {
    char* text = nullptr;
    xgWKB_shape_to_ogc_wkt(line().data(), -1, &text);
    bytes = std::strlen(text);
    xgWKB_shape_free_WKT(text);
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * bytes));
}
BENCHMARK(BM_XgOgcWktWrite)->Unit(benchmark::kMillisecond);

void BM_GeosOgcWktWrite(benchmark::State& state) {
  const std::vector<unsigned char> bytes = wkb(0);
  Geos geos;
  geos.g = GEOSWKBReader_read_r(geos.h, geos.wkb_reader, bytes.data(), bytes.size());
  std::size_t size = 0;
  for (auto _ : state) {
    char* text = GEOSWKTWriter_write_r(geos.h, geos.wkt_writer, geos.g);
    size = std::strlen(text);
    GEOSFree_r(geos.h, text);
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * size));
}
BENCHMARK(BM_GeosOgcWktWrite)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
