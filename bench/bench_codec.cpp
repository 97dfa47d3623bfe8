// bench_codec.cpp - the coordinate codec on a 1,000,000-point linestring and on 10,000 small
// polygons: encode and decode speed in bytes of blob per second, and the stream's size against
// the raw blob and against the blob compressed with zlib (whose own speed runs alongside for
// comparison).  Counters: stream/blob and gzip/blob are size ratios.
#include <benchmark/benchmark.h>
#include <zlib.h>

#include <cstring>
#include <vector>

#include "random_shapes.h"
#include "xggeokit.h"

namespace {

using xgbench::Bytes;

constexpr std::size_t kLinePoints = 1000000;
constexpr std::size_t kPolygonCount = 10000;

// A road-like line of 1,000,000 points over 1000 km, a metre apart on average (the codec keeps
// centimetres at its default scale).
const Bytes& long_line() {
  static const Bytes line = [] {
    std::mt19937_64 rng = xgbench::seeded(1, kLinePoints);
    return xgbench::wavy_line(rng, xgbench::kCx - 5e5, xgbench::kCx + 5e5, xgbench::kCy, 2000, kLinePoints);
  }();
  return line;
}

// Parcels: star polygons of 8 to 24 vertices and 10 to 50 m across, spread over 100 km.
const std::vector<Bytes>& small_polygons() {
  static const std::vector<Bytes> polygons = [] {
    std::mt19937_64 rng = xgbench::seeded(2, kPolygonCount);
    std::uniform_real_distribution<double> at(-5e4, 5e4);
    std::uniform_int_distribution<std::size_t> n(8, 24);
    std::vector<Bytes> out;
    for (std::size_t i = 0; i < kPolygonCount; ++i) {
      out.push_back(xgbench::star_polygon(rng, xgbench::kCx + at(rng), xgbench::kCy + at(rng), 10, 25, n(rng)));
    }
    return out;
  }();
  return polygons;
}

Bytes encode(CDataTransfer& codec, const Bytes& blob) {
  if (codec.ConvertWkb2Compress(blob.data()) != 0) std::abort();
  const unsigned char* p = codec;
  return Bytes(p, p + codec.GetResultSize());
}

std::size_t gzip_size(const Bytes& blob) {
  uLongf size = compressBound(blob.size());
  Bytes out(size);
  if (compress2(out.data(), &size, blob.data(), blob.size(), Z_DEFAULT_COMPRESSION) != Z_OK) std::abort();
  return size;
}

void ratios(benchmark::State& state, std::size_t blob, std::size_t stream, std::size_t gzip) {
  state.counters["stream/blob"] = static_cast<double>(stream) / static_cast<double>(blob);
  state.counters["gzip/blob"] = static_cast<double>(gzip) / static_cast<double>(blob);
}

void BM_CodecEncodeLine(benchmark::State& state) {
  const Bytes& line = long_line();
  CDataTransfer codec;
  const Bytes stream = encode(codec, line);
  for (auto _ : state) {
    benchmark::DoNotOptimize(codec.ConvertWkb2Compress(line.data()));
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * line.size()));
  ratios(state, line.size(), stream.size(), gzip_size(line));
}
BENCHMARK(BM_CodecEncodeLine)->Unit(benchmark::kMillisecond);

void BM_CodecDecodeLine(benchmark::State& state) {
  const Bytes& line = long_line();
  CDataTransfer codec;
  const Bytes stream = encode(codec, line);
  for (auto _ : state) {
    benchmark::DoNotOptimize(codec.ConvertCompress2Wkb(stream.data(), static_cast<int32_t>(stream.size())));
    benchmark::ClobberMemory();
  }
  if (codec.GetResultSize() != static_cast<int32_t>(line.size())) state.SkipWithError("decoded size differs");
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * line.size()));
}
BENCHMARK(BM_CodecDecodeLine)->Unit(benchmark::kMillisecond);

void BM_CodecEncodePolygons(benchmark::State& state) {
  const std::vector<Bytes>& polygons = small_polygons();
  CDataTransfer codec;
  std::size_t blob = 0, stream = 0, gzip = 0;
  for (const Bytes& p : polygons) {
    blob += p.size();
    stream += encode(codec, p).size();
    gzip += gzip_size(p);  // each parcel on its own, as it would be stored
  }
  for (auto _ : state) {
    for (const Bytes& p : polygons) benchmark::DoNotOptimize(codec.ConvertWkb2Compress(p.data()));
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * blob));
  ratios(state, blob, stream, gzip);
}
BENCHMARK(BM_CodecEncodePolygons)->Unit(benchmark::kMillisecond);

void BM_CodecDecodePolygons(benchmark::State& state) {
  const std::vector<Bytes>& polygons = small_polygons();
  CDataTransfer codec;
  std::vector<Bytes> streams;
  std::size_t blob = 0;
  for (const Bytes& p : polygons) {
    blob += p.size();
    streams.push_back(encode(codec, p));
  }
  for (auto _ : state) {
    for (const Bytes& s : streams) {
      benchmark::DoNotOptimize(codec.ConvertCompress2Wkb(s.data(), static_cast<int32_t>(s.size())));
    }
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * blob));
}
BENCHMARK(BM_CodecDecodePolygons)->Unit(benchmark::kMillisecond);

// zlib on the same line, for comparison.
void BM_ZlibCompressLine(benchmark::State& state) {
  const Bytes& line = long_line();
  Bytes out(compressBound(line.size()));
  for (auto _ : state) {
    uLongf size = out.size();
    benchmark::DoNotOptimize(compress2(out.data(), &size, line.data(), line.size(), Z_DEFAULT_COMPRESSION));
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * line.size()));
}
BENCHMARK(BM_ZlibCompressLine)->Unit(benchmark::kMillisecond);

void BM_ZlibUncompressLine(benchmark::State& state) {
  const Bytes& line = long_line();
  uLongf packed_size = compressBound(line.size());
  Bytes packed(packed_size), out(line.size());
  compress2(packed.data(), &packed_size, line.data(), line.size(), Z_DEFAULT_COMPRESSION);
  for (auto _ : state) {
    uLongf size = out.size();
    benchmark::DoNotOptimize(uncompress(out.data(), &size, packed.data(), packed_size));
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * line.size()));
}
BENCHMARK(BM_ZlibUncompressLine)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
