// The coordinate codec: its integer code, rounding and range, the stream of every shape type,
// the shared result buffer, and round trips of random shapes.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

#include "codec/varint_code.h"
#include "support/blob_builder.h"
#include "support/codec_samples.h"
#include "xggeokit.h"

using xgtest::Bytes;
using xgtest::Ring;

namespace {

// Exposes the protected members the tests look at.
struct Codec : CDataTransfer {
  using CDataTransfer::AllocSize;
  using CDataTransfer::GetNextXY;
  Bytes result() {
    unsigned char* p = *this;
    return Bytes(p, p + GetResultSize());
  }
};

// A stream: byte 1, the type word, the length, the body.
Bytes stream(uint32_t shape_type, const Bytes& body) {
  Bytes s{1};
  xgtest::put_u32(s, 10000 + shape_type);
  xgtest::put_u32(s, static_cast<uint32_t>(9 + body.size()));
  s.insert(s.end(), body.begin(), body.end());
  return s;
}

Bytes u32(uint32_t v) {
  Bytes b;
  xgtest::put_u32(b, v);
  return b;
}

Bytes operator+(Bytes a, const Bytes& b) {
  a.insert(a.end(), b.begin(), b.end());
  return a;
}

Bytes encoded(Codec& c, const Bytes& shape) {
  EXPECT_EQ(c.ConvertWkb2Compress(shape.data()), 0);
  return c.result();
}

}  // namespace

TEST(CodecCode, BytesAndLengthsIncludingTheExtraZeroByte) {
  const struct { int32_t v; Bytes bytes; } exact[] = {
      {0, {0x00}}, {-1, {0x41}}, {1, {0x01}}, {31, {0x1F}}, {-31, {0x5F}},
      {63, {0xBF, 0x00}}, {-63, {0xFF, 0x00}}, {64, {0x80, 0x01}}, {-64, {0xC0, 0x01}},
      {8191, {0xBF, 0xFF, 0x00}},  // 13 bits: one zero byte more
  };
  for (const auto& c : exact) {
    unsigned char buf[8];
    const Bytes got(buf, xg::codec::put_code(buf, c.v));
    EXPECT_EQ(got, c.bytes) << c.v;
  }
  // Bit length -> bytes: 6, 13, 20 and 27 bits take one byte more than they need, ending in 0.
  const struct { int bits; int bytes; } lengths[] = {{0, 1}, {5, 1}, {6, 2}, {7, 2}, {12, 2}, {13, 3}, {14, 3},
                                                     {19, 3}, {20, 4}, {21, 4}, {26, 4}, {27, 5}, {28, 5}, {31, 5}};
  for (const auto& l : lengths) {
    for (const int64_t mag : {l.bits == 0 ? int64_t{0} : int64_t{1} << (l.bits - 1), (int64_t{1} << l.bits) - 1}) {
      for (const int64_t v : {mag, -mag}) {
        unsigned char buf[8];
        const unsigned char* end = xg::codec::put_code(buf, static_cast<int32_t>(v));
        ASSERT_EQ(end - buf, l.bytes) << v;
        if (l.bits % 7 == 6) {
          EXPECT_EQ(end[-1], 0) << v;
        }
        int64_t back = 99;
        EXPECT_EQ(xg::codec::get_code(buf, end, &back), end);
        EXPECT_EQ(back, v);
      }
    }
  }
  unsigned char buf[8];  // the separator of a line ending at the top of the range
  EXPECT_EQ(xg::codec::put_code(buf, INT32_MIN) - buf, 5);
  // The encoder's branch-free writer gives the same bytes.
  for (int64_t v = INT32_MIN; v <= INT32_MAX; v += v < -70000 || v > 70000 ? 9973 * 1237 : 1) {
    unsigned char plain[8], wide[8 + xg::codec::kWideSlack];
    const Bytes a(plain, xg::codec::put_code(plain, static_cast<int32_t>(v)));
    const Bytes b(wide, xg::codec::put_code_wide(wide, static_cast<int32_t>(v)));
    ASSERT_EQ(a, b) << v;
  }
}

TEST(CodecCode, GetNextXYReadsBothCodesAndRefusesASixthByte) {
  Codec c;
  const unsigned char xy[] = {0xBF, 0x00, 0x41, 0xEE};
  int32_t x = 0, y = 0, used = 0;
  EXPECT_EQ(c.GetNextXY(xy, x, y, used), 1);
  EXPECT_EQ(x, 63);
  EXPECT_EQ(y, -1);
  EXPECT_EQ(used, 3);
  const unsigned char overlong[] = {0x80, 0x80, 0x80, 0x80, 0x80, 0x00, 0x00};
  EXPECT_EQ(c.GetNextXY(overlong, x, y, used), 0);
}

// The rounding rule itself is checked over many frames by the round trip at the end.
TEST(CodecFrame, RoundingRangeAndSettings) {
  Codec c;
  _xgWKB_BOX box{};
  double scale = 0;
  c.GetCoordinateInf(&box, &scale);
  EXPECT_EQ(scale, 100.0);
  EXPECT_EQ(box.maxx, 2147483647 / 100.0);
  c.GetCoordinateInf(nullptr, nullptr);  // both skipped
  double v = 1.234, w = 1.235;
  int32_t ix = 0, iy = 0;
  ASSERT_EQ(c.Double2Long(v, w, ix, iy), 0);
  EXPECT_EQ(ix, 123);
  EXPECT_EQ(iy, 124);

  c.SetCoordinateInf(10, 20, 1000);
  c.GetCoordinateInf(&box, nullptr);
  const double nan = std::nan("");
  const struct { double x, y; int32_t status, ix, iy; } to_int[] = {
      {11.5, 22.5, 0, 1500, 2500},  {box.maxx, 25, 0, 2147483647, 5000},
      {std::nextafter(10.0, 0.0), 25, -500, 0, 0}, {25, 19.999, -500, 0, 0}, {box.maxx + 1e-3, 25, -500, 0, 0},
      {25, nan, -500, 0, 0},
  };
  for (auto k : to_int) {
    ix = iy = -7;
    EXPECT_EQ(c.Double2Long(k.x, k.y, ix, iy), k.status) << k.x << " " << k.y;
    if (k.status == 0) {
      EXPECT_EQ(ix, k.ix);
      EXPECT_EQ(iy, k.iy);
    }
  }
  int32_t neg = -1, pos = 1500, pos_y = 2500;
  double x = 0, y = 0;
  ASSERT_EQ(c.Long2Double(pos, pos_y, x, y), 0);
  EXPECT_EQ(x, 11.5);
  EXPECT_EQ(y, 22.5);
  EXPECT_EQ(c.Long2Double(neg, pos, x, y), -500);
  EXPECT_EQ(c.Long2Double(pos, neg, x, y), -500);
}

TEST(CodecEncode, StatusesForBadShapes) {
  Codec c;
  const Bytes square = xgtest::polygon({xgtest::square(0, 0, 10)});
  ASSERT_EQ(c.ConvertWkb2Compress(square.data()), 0);
  const struct { Bytes shape; int32_t status; } cases[] = {
      {xgtest::nil(), -199},
      {xgtest::header(XGWKB_TYPE_ENVELOPE), -199},
      {xgtest::point(-0.01, 5), -500},
      {xgtest::linestring({{1, 1}, {1, 2147483647 / 100.0 + 1}}), -500},
      {xgtest::polygon({xgtest::square(0, 0, 10), xgtest::square(-5, 2, 1)}), -500},  // a hole outside
      // The range verdict covers the rings that are never written, and comes before -501.
      {xgtest::polygon({{{0, 0}, {1, 0}, {0, 0}, {0, 0}}, xgtest::square(-5, 2, 1)}), -500},
      {xgtest::multi(XGWKB_TYPE_MULTIPOLYGON, {xgtest::polygon({{{0, 0}, {0, 0}}, xgtest::square(2, -9, 1)})}), -500},
      {xgtest::linestring({{1, 1}, {1, std::nan("")}}), -500},
      {xgtest::linestring({{1, 1}, {1.001, 1.001}, {1, 1}}), -501},  // collapses to one point
      {xgtest::linestring({}), -501},
      {xgtest::polygon({{{0, 0}, {1, 0}, {0, 0}, {0, 0}}, xgtest::square(0, 0, 1)}), -501},  // outer dropped
      {xgtest::polygon({}), -501},
      {xgtest::multiline({{{1, 1}}, {{2, 2}, {2.001, 2}}}), -501},
      {xgtest::multi(XGWKB_TYPE_MULTIPOLYGON, {xgtest::polygon({{{0, 0}, {1, 1}, {0, 0}}})}), -501},
      {xgtest::multi(XGWKB_TYPE_MULTIPOLYGON, {}), -501},
      {xgtest::multi(XGWKB_TYPE_MULTILINESTRING, {xgtest::point(1, 1)}), -134},
  };
  for (const auto& k : cases) {
    EXPECT_EQ(c.ConvertWkb2Compress(k.shape.data()), k.status);
    EXPECT_EQ(c.GetResultSize(), 0);
  }
  EXPECT_EQ(c.ConvertWkb2Compress(nullptr), -65);
}

TEST(CodecEncode, ExactStreamsOfEveryType) {
  Codec c;
  c.SetCoordinateInf(0, 0, 1);
  const Ring sq = xgtest::square(0, 0, 4);  // (0 0, 4 0, 4 4, 0 4, 0 0)
  const Bytes sq_body = u32(5) + Bytes{0x00, 0x00, 0x04, 0x00, 0x00, 0x04, 0x44, 0x00, 0x00, 0x44};
  const Ring hole{{1, 1}, {2, 1}, {2, 2}, {1, 1}};
  const Bytes hole_body = u32(4) + Bytes{0x01, 0x01, 0x01, 0x00, 0x00, 0x01, 0x41, 0x41};  // from (0, 0)
  const Ring flat{{1, 1}, {2, 2}, {2, 2}, {1, 1}};  // three points once the repeat goes: dropped
  const Ring l1{{0, 0}, {2, 0}}, l2{{1, 1}, {1, 3}}, dot{{5, 5}, {5, 5}};
  const Bytes l1_body{0x00, 0x00, 0x02, 0x00}, l2_body{0x01, 0x01, 0x00, 0x02}, l1_sep{0x43, 0x00};
  const Bytes dot_poly = xgtest::polygon({{{5, 5}, {6, 6}, {5, 5}}});
  const struct { const char* what; Bytes shape; Bytes stream; } cases[] = {
      {"point", xgtest::point(63, 64), stream(1, {0xBF, 0x00, 0x80, 0x01})},
      {"repeated point left out", xgtest::linestring({{0, 0}, {0, 0}, {1, 1}}), stream(2, {0x00, 0x00, 0x01, 0x01})},
      {"multipoint", xgtest::multi(4, {xgtest::point(1, 1), xgtest::point(1, 1), xgtest::point(0, 3)}),
       stream(4, {0x01, 0x01, 0x41, 0x02})},
      {"empty multipoint", xgtest::multi(4, {}), stream(4, {})},
      {"hole continues from the outer ring", xgtest::polygon({sq, hole}), stream(3, sq_body + hole_body)},
      {"flat hole dropped, next hole from the last ring kept", xgtest::polygon({sq, flat, hole}),
       stream(3, sq_body + hole_body)},
      {"separator between lines", xgtest::multiline({l1, l2}), stream(5, l1_body + l1_sep + l2_body)},
      {"last line dropped takes its separator", xgtest::multiline({l1, l2, dot}),
       stream(5, l1_body + l1_sep + l2_body)},
      {"middle line dropped", xgtest::multiline({l1, dot, l2}), stream(5, l1_body + l1_sep + l2_body)},
      {"only line left", xgtest::multiline({dot, l1, dot}), stream(5, l1_body)},
      {"0 word between members", xgtest::multi(6, {xgtest::polygon({sq}), xgtest::polygon({hole, sq})}),
       stream(6, sq_body + u32(0) + hole_body +  // the square now continues from (1, 1)
                     u32(5) + Bytes{0x41, 0x41, 0x04, 0x00, 0x00, 0x04, 0x44, 0x00, 0x00, 0x44})},
      {"last member dropped takes its 0 word", xgtest::multi(6, {xgtest::polygon({sq, hole}), dot_poly}),
       stream(6, sq_body + hole_body)},
      {"member with dropped outer ring", xgtest::multi(6, {dot_poly, xgtest::polygon({sq}), dot_poly}),
       stream(6, sq_body)},
  };
  for (const auto& k : cases) {
    const Bytes got = encoded(c, k.shape);
    EXPECT_EQ(got, k.stream) << k.what;
    Bytes copy = got;  // trusted and bounded decoders agree
    ASSERT_EQ(c.ConvertCompress2Wkb(copy.data()), 0) << k.what;
    const Bytes blob = c.result();
    ASSERT_EQ(c.ConvertCompress2Wkb(copy.data(), static_cast<int32_t>(copy.size())), 0) << k.what;
    EXPECT_EQ(c.result(), blob) << k.what;
  }
  // What comes back after dropping: the kept rings, lines and members only.
  ASSERT_EQ(c.ConvertWkb2Compress(xgtest::polygon({sq, flat, hole}).data()), 0);
  Bytes s = c.result();
  ASSERT_EQ(c.ConvertCompress2Wkb(s.data()), 0);
  EXPECT_EQ(c.result(), xgtest::polygon({sq, hole}));
  s = encoded(c, xgtest::multiline({l1, dot, l2, dot}));
  ASSERT_EQ(c.ConvertCompress2Wkb(s.data()), 0);
  EXPECT_EQ(c.result(), xgtest::multiline({l1, l2}));
  s = encoded(c, xgtest::multi(6, {dot_poly, xgtest::polygon({sq, flat}), dot_poly, xgtest::polygon({sq})}));
  ASSERT_EQ(c.ConvertCompress2Wkb(s.data()), 0);
  EXPECT_EQ(c.result(), xgtest::multi(6, {xgtest::polygon({sq}), xgtest::polygon({sq})}));
}

TEST(CodecDecode, RefusesMalformedStreams) {
  Codec c;
  c.SetCoordinateInf(0, 0, 1);
  const Bytes ring4 = u32(4) + Bytes{0x01, 0x01, 0x01, 0x00, 0x00, 0x01, 0x41, 0x41};
  Bytes long_length = stream(2, {0, 0, 1, 1});
  long_length[5] = 14;
  Bytes wrong_mark = stream(2, {0, 0, 1, 1});
  wrong_mark[0] = 0;
  const struct { const char* what; Bytes s; } cases[] = {
      {"length beyond what is available", long_length},
      {"first byte not 1", wrong_mark},
      {"type word 10007", stream(7, {0, 0})},
      {"shorter than a header", Bytes{1, 0x12, 0x27, 0, 0}},
      {"code running past the end", stream(2, {0, 0, 0x81})},
      {"code of six bytes", stream(2, {0, 0, 0x80, 0x80, 0x80, 0x80, 0x80, 0x00, 0x00})},
      {"point below the origin", stream(2, {0, 0, 0x41, 0})},
      {"point past the top", stream(1, {0xBF, 0xFF, 0xFF, 0xFF, 0x1F, 0})},
      {"point with bytes left over", stream(1, {1, 1, 1})},
      {"linestring of one point", stream(2, {5, 5})},
      {"ring count larger than the body", stream(3, u32(5) + Bytes{1, 1, 1, 0, 0, 1, 0x41, 0x41})},
      {"ring of three points", stream(3, u32(3) + Bytes{1, 1, 1, 0, 0x41, 0x41})},
      {"count word cut short", stream(3, ring4 + Bytes{0, 0})},
      {"polygon with a 0 word", stream(3, ring4 + u32(0) + ring4)},
      {"empty polygon", stream(3, {})},
      {"trailing separator", stream(5, {0, 0, 2, 0, 0x43, 0})},
      {"separator after one point", stream(5, {0, 0, 0x41, 0, 1, 1, 2, 2})},
      {"trailing 0 word", stream(6, ring4 + u32(0))},
      {"member starting with 0", stream(6, u32(0) + ring4)},
  };
  for (const auto& k : cases) {
    ASSERT_EQ(c.ConvertWkb2Compress(xgtest::point(1, 1).data()), 0);
    EXPECT_EQ(c.ConvertCompress2Wkb(k.s.data(), static_cast<int32_t>(k.s.size())), -501) << k.what;
    EXPECT_EQ(c.GetResultSize(), 0) << k.what;
  }
  // The one-argument form trusts the length field but not the type word.
  EXPECT_EQ(c.ConvertCompress2Wkb(stream(7, {0, 0}).data()), -199);
  EXPECT_EQ(c.ConvertCompress2Wkb(nullptr), -65);
  EXPECT_EQ(c.ConvertCompress2Wkb(nullptr, 20), -65);
  const Bytes ok = stream(2, {0, 0, 1, 1});
  EXPECT_EQ(c.ConvertCompress2Wkb(ok.data(), -1), -501);
  EXPECT_EQ(c.ConvertCompress2Wkb((ok + Bytes{0xFF}).data(), 14), 0);  // bytes past the length
}

TEST(CodecBuffer, CopiesShareOneBufferReleasedOnce) {
  Ring zigzag;
  for (int i = 0; i < 3000; ++i) zigzag.push_back({i * 10.0, i % 7 * 1.0});
  const Bytes big = xgtest::linestring(zigzag);
  Codec a;
  unsigned char* first = a;
  ASSERT_NE(first, nullptr);
  {
    Codec b(a);  // a copy sees the same buffer, and a conversion through it
    EXPECT_EQ(static_cast<unsigned char*>(b), first);
    ASSERT_EQ(b.ConvertWkb2Compress(big.data()), 0);  // grows past 2048 bytes
    EXPECT_EQ(static_cast<unsigned char*>(a), static_cast<unsigned char*>(b));
    EXPECT_EQ(a.GetResultSize(), 0);  // the result size is each object's own
  }
  const Bytes s = encoded(a, big);  // still a's buffer after b is gone
  Codec d;
  d.SetCoordinateInf(5, 5, 10);
  d = a;  // d's own buffer is released, a's shared
  d = d;
  EXPECT_EQ(static_cast<unsigned char*>(d), static_cast<unsigned char*>(a));
  EXPECT_EQ(d.result(), s);
  double scale = 0;
  d.GetCoordinateInf(nullptr, &scale);
  EXPECT_EQ(scale, 100.0);
  Codec e;
  e = d;
  d = Codec();  // a and e still hold the buffer
  EXPECT_EQ(e.result(), s);
}  // the address sanitizer reports any double free or leak of these buffers

TEST(CodecBuffer, AllocSizeGrowsPastTheNeedAndKeepsTheContents) {
  Codec c;
  unsigned char* p = c;
  for (int i = 0; i < 2048; ++i) p[i] = static_cast<unsigned char>(i * 7);
  c.AllocSize(100);  // room enough already: nothing moves
  EXPECT_EQ(static_cast<unsigned char*>(c), p);
  for (const int32_t need : {2048, 5000, 70000}) {
    c.AllocSize(need);
    p = c;
    for (int i = 0; i < 2048; ++i) ASSERT_EQ(p[i], static_cast<unsigned char>(i * 7)) << need;
    p[need] = 1;  // the capacity exceeds need (the address sanitizer checks the write)
  }
}

TEST(CodecRoundTrip, RandomShapesOfEveryTypeComeBackOnTheGrid) {
  const struct { double ox, oy, scale; } frames[] = {{0, 0, 100}, {-1e6, 2.5e6, 1000}, {500.25, -3.5, 1}, {0, 0, 0.25}};
  int f = 0;
  for (const auto& fr : frames) {
    Codec c;
    c.SetCoordinateInf(fr.ox, fr.oy, fr.scale);
    xgtest::CodecSampler sampler(1234 + f++, fr.ox, fr.oy, fr.scale, std::fmin(1e6, 1e9 / fr.scale));
    for (int i = 0; i < 200; ++i) {
      const uint32_t type = 1 + i % 6;
      const xgtest::CodecSample sample = sampler.make(type);
      ASSERT_EQ(c.ConvertWkb2Compress(sample.shape.data()), 0);
      Bytes s = c.result();
      uint32_t length;
      std::memcpy(&length, s.data() + 5, 4);
      ASSERT_EQ(length, s.size());
      EXPECT_EQ(s[0], 1);
      // Decoded from every misalignment, and from exactly the bytes of the stream.
      for (std::size_t shift = 0; shift < 8; shift += 3) {
        xgtest::Misaligned at(s, shift);
        ASSERT_EQ(c.ConvertCompress2Wkb(at.data(), static_cast<int32_t>(s.size())), 0) << type;
        ASSERT_EQ(c.result(), sample.expected) << "type " << type << " sample " << i;
      }
    }
  }
}
