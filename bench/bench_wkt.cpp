// bench_wkt.cpp - the WKT writer and reader against GEOS's on the same polygons, and the
// six-decimal coordinate formatter against snprintf("%lf").
#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

#include "support/blob_builder.h"
#include "support/geos_oracle.h"
#include "wkt/number_format.h"
#include "xggeokit.h"

namespace {

constexpr std::size_t kValueCount = 4096;  // a power of two, indexed with a mask

// Map coordinates as they come: projected metres with a few decimals of noise.
std::vector<double> coordinates() {
  std::mt19937_64 rng(17);
  std::uniform_real_distribution<double> metres(-5e6, 5e6);
  std::vector<double> v(kValueCount);
  for (double& x : v) x = metres(rng);
  return v;
}

// A closed ring of n points on a circle around a projected-looking centre.
xgtest::Bytes circle_polygon(std::size_t n) {
  xgtest::Ring ring;
  for (std::size_t i = 0; i < n; ++i) {
    const double a = 2 * M_PI * static_cast<double>(i) / static_cast<double>(n);
    ring.push_back({512345.678 + 1000 * std::cos(a), 4012345.678 + 1000 * std::sin(a)});
  }
  ring.push_back(ring.front());
  return xgtest::polygon({ring});
}

std::string our_text(const xgtest::Bytes& blob) {
  char* text = nullptr;
  xgWKB_shape_generate_to_WKT(blob.data(), &text);
  std::string s(text);
  xgWKB_shape_free_WKT(text);
  return s;
}

void BM_FormatFixed6(benchmark::State& state) {
  const std::vector<double> values = coordinates();
  char buf[xg::kMaxFixed6Length];
  std::size_t i = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(xg::format_fixed6(values[i++ & (kValueCount - 1)], buf));
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_FormatFixed6);

void BM_SnprintfLf(benchmark::State& state) {
  const std::vector<double> values = coordinates();
  char buf[xg::kMaxFixed6Length + 1];
  std::size_t i = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(
        std::snprintf(buf, sizeof buf, "%lf", values[i++ & (kValueCount - 1)]));
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_SnprintfLf);

void BM_WktWrite(benchmark::State& state) {
  const xgtest::Bytes blob = circle_polygon(static_cast<std::size_t>(state.range(0)));
  for (auto _ : state) {
    char* text = nullptr;
    xgWKB_shape_generate_to_WKT(blob.data(), &text);
    benchmark::DoNotOptimize(text);
    xgWKB_shape_free_WKT(text);
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_WktWrite)->RangeMultiplier(8)->Range(8, 8 << 12);

// GEOS writing the same polygon with six fixed decimals, the nearest it has to "%lf".
void BM_GeosWktWrite(benchmark::State& state) {
  const xgtest::Bytes blob = circle_polygon(static_cast<std::size_t>(state.range(0)));
  xgtest::GeosOracle oracle;
  GEOSContextHandle_t ctx = oracle.handle();
  xgtest::GeosGeom g(oracle, oracle.to_geos(blob.data()));
  GEOSWKTWriter* writer = GEOSWKTWriter_create_r(ctx);
  GEOSWKTWriter_setTrim_r(ctx, writer, 0);
  GEOSWKTWriter_setRoundingPrecision_r(ctx, writer, 6);
  for (auto _ : state) {
    char* text = GEOSWKTWriter_write_r(ctx, writer, g.get());
    benchmark::DoNotOptimize(text);
    GEOSFree_r(ctx, text);
  }
  GEOSWKTWriter_destroy_r(ctx, writer);
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_GeosWktWrite)->RangeMultiplier(8)->Range(8, 8 << 12);

void BM_WktRead(benchmark::State& state) {
  const std::string text = our_text(circle_polygon(static_cast<std::size_t>(state.range(0))));
  for (auto _ : state) {
    unsigned char* shape = nullptr;
    xgWKB_shape_generate_from_WKT(text.c_str(), &shape);
    benchmark::DoNotOptimize(shape);
    xgWKB_shape_free(shape);
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_WktRead)->RangeMultiplier(8)->Range(8, 8 << 12);

// GEOS reading the very text our writer made (its reader takes our dialect as it stands).
void BM_GeosWktRead(benchmark::State& state) {
  const std::string text = our_text(circle_polygon(static_cast<std::size_t>(state.range(0))));
  xgtest::GeosOracle oracle;
  GEOSContextHandle_t ctx = oracle.handle();
  GEOSWKTReader* reader = GEOSWKTReader_create_r(ctx);
  for (auto _ : state) {
    GEOSGeometry* g = GEOSWKTReader_read_r(ctx, reader, text.c_str());
    benchmark::DoNotOptimize(g);
    GEOSGeom_destroy_r(ctx, g);
  }
  GEOSWKTReader_destroy_r(ctx, reader);
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_GeosWktRead)->RangeMultiplier(8)->Range(8, 8 << 12);

}  // namespace

BENCHMARK_MAIN();
