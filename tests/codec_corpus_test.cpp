// The bounded stream decoder on damaged streams: every prefix and thousands of byte flips of
// valid streams of every type.  Each must decode to a well-formed blob or give -501 with a
// result size of 0, and never read past the bytes it was given (heap buffers of exactly the
// stream's size, so the address sanitizer sees any overrun).
#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <vector>

#include "core/blob.h"
#include "support/codec_samples.h"
#include "xggeokit.h"

using xgtest::Bytes;

namespace {

std::vector<Bytes> valid_streams() {
  CDataTransfer c;
  c.SetCoordinateInf(-100, -100, 100);
  xgtest::CodecSampler sampler(99, -100, -100, 100, 200);
  std::vector<Bytes> streams;
  for (int i = 0; i < 18; ++i) {
    const xgtest::CodecSample sample = sampler.make(1 + i % 6);
    EXPECT_EQ(c.ConvertWkb2Compress(sample.shape.data()), 0);
    unsigned char* p = c;
    streams.emplace_back(p, p + c.GetResultSize());
  }
  return streams;
}

// Decodes bytes (copied to a heap block of exactly their size) with `available` = their size.
void expect_decodes_or_refuses(CDataTransfer& c, const Bytes& bytes) {
  std::unique_ptr<unsigned char[]> exact(new unsigned char[bytes.size() + (bytes.empty() ? 1 : 0)]);
  if (!bytes.empty()) std::memcpy(exact.get(), bytes.data(), bytes.size());
  const int32_t status = c.ConvertCompress2Wkb(exact.get(), static_cast<int32_t>(bytes.size()));
  if (status != 0) {
    ASSERT_EQ(status, -501);
    ASSERT_EQ(c.GetResultSize(), 0);
    return;
  }
  uint32_t size = 0;
  ASSERT_EQ(xg::geometry_size(c, &size), XGWKB_OK);
  ASSERT_EQ(static_cast<int32_t>(size), c.GetResultSize());
}

}  // namespace

TEST(CodecCorpus, EveryPrefixIsDecodedOrRefused) {
  CDataTransfer c;
  c.SetCoordinateInf(-100, -100, 100);
  for (const Bytes& s : valid_streams()) {
    for (std::size_t k = 0; k < s.size(); ++k) {
      Bytes prefix(s.begin(), s.begin() + static_cast<std::ptrdiff_t>(k));
      expect_decodes_or_refuses(c, prefix);  // its length field points past the end: refused
      if (k < 9) continue;
      xg::store_u32(prefix.data() + 5, static_cast<uint32_t>(k));  // a body cut short
      expect_decodes_or_refuses(c, prefix);
    }
  }
}

TEST(CodecCorpus, ByteFlipsAreDecodedOrRefused) {
  CDataTransfer c;
  c.SetCoordinateInf(-100, -100, 100);
  std::mt19937 rng(7);
  int refused = 0, runs = 0;
  for (const Bytes& s : valid_streams()) {
    std::uniform_int_distribution<std::size_t> at(0, s.size() - 1);
    for (int i = 0; i < 250; ++i, ++runs) {
      Bytes damaged = s;
      for (int flips = 1 + i % 3; flips > 0; --flips) damaged[at(rng)] ^= static_cast<unsigned char>(1 + rng() % 255);
      expect_decodes_or_refuses(c, damaged);
      refused += c.GetResultSize() == 0;
    }
  }
  EXPECT_GT(refused, runs / 10);  // the damage does reach the checks
  EXPECT_LT(refused, runs);       // and some damaged bodies still make shapes
}
