// Standard WKB in and out, and the structural check of foreign blobs.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <string>

#include "support/blob_builder.h"

using namespace xgtest;

namespace {

// Foreign WKB, built by hand in either byte order.
struct Wkb {
  bool big;
  Bytes b;
  Wkb& u32(uint32_t v) {
    for (int i = 0; i < 4; ++i) b.push_back(static_cast<unsigned char>(v >> (big ? 24 - 8 * i : 8 * i)));
    return *this;
  }
  Wkb& f64(double d) {
    uint64_t v;
    std::memcpy(&v, &d, 8);
    for (int i = 0; i < 8; ++i) b.push_back(static_cast<unsigned char>(v >> (big ? 56 - 8 * i : 8 * i)));
    return *this;
  }
  Wkb& head(uint32_t type) {
    b.push_back(big ? 0 : 1);
    return u32(type);
  }
  Wkb& pt(double x, double y, int extra = 0) {
    f64(x).f64(y);
    for (int i = 0; i < extra; ++i) f64(99);
    return *this;
  }
};

struct Read {
  int32_t status;
  Bytes blob;
  size_t offset;
};

Read read(const Bytes& wkb, uint32_t flags = 0) {
  Misaligned m(wkb);
  unsigned char* out = nullptr;
  size_t offset = 12345;
  Read r{xgWKB_shape_from_wkb_ex(m.data(), wkb.size(), flags, &out, &offset), {}, offset};
  if (out != nullptr) r.blob = take_shape(out);
  return r;
}

const Bytes kTriangle = polygon({{{0, 0}, {4, 0}, {0, 3}, {0, 0}}});

}  // namespace

TEST(WkbRead, EveryTypeAndVariantInBothByteOrdersGivesTheSameBlob) {
  for (bool big : {false, true}) {
    // {type code, ordinates beyond x y, SRID present}: ISO and extended spellings of Z, M, ZM.
    const struct { uint32_t point, line, poly, mpoly; int extra; bool srid; } variants[] = {
        {1, 2, 3, 6, 0, false},          {1001, 1002, 1003, 1006, 1, false}, {2001, 2002, 2003, 2006, 1, false},
        {3001, 3002, 3003, 3006, 2, false}, {0x80000001, 0x80000002, 0x80000003, 0x80000006, 1, false},
        {0xC0000001, 0xC0000002, 0xC0000003, 0xC0000006, 2, false}, {0x20000001, 0x20000002, 0x20000003, 0x20000006, 0, true},
    };
    for (const auto& v : variants) {
      auto head = [&](Wkb& w, uint32_t type, bool top) -> Wkb& {
        w.head(top ? type : type & ~0x20000000u);  // only the outermost header has an SRID
        return top && v.srid ? w.u32(4326) : w;
      };
      Wkb p{big, {}};
      head(p, v.point, true).pt(1.5, -2, v.extra);
      EXPECT_EQ(read(p.b).blob, point(1.5, -2)) << v.point;
      Wkb l{big, {}};
      head(l, v.line, true).u32(2).pt(0, 0, v.extra).pt(1, 1, v.extra);
      EXPECT_EQ(read(l.b).blob, linestring({{0, 0}, {1, 1}})) << v.line;
      Wkb mp{big, {}};
      head(mp, v.mpoly, true).u32(2);
      head(mp, v.poly, false).u32(1).u32(4).pt(0, 0, v.extra).pt(4, 0, v.extra).pt(0, 3, v.extra).pt(0, 0, v.extra);
      head(mp, v.poly, false).u32(0);
      EXPECT_EQ(read(mp.b).blob, multi(XGWKB_TYPE_MULTIPOLYGON, {kTriangle, polygon({})})) << v.mpoly;
    }
    Wkb mpt{big, {}};  // members in the other byte order than their container
    mpt.head(4).u32(2);
    Wkb m1{!big, {}}, m2{big, {}};
    m1.head(1).pt(1, 2);
    m2.head(1).pt(3, 4);
    mpt.b.insert(mpt.b.end(), m1.b.begin(), m1.b.end());
    mpt.b.insert(mpt.b.end(), m2.b.begin(), m2.b.end());
    EXPECT_EQ(read(mpt.b).blob, multi(XGWKB_TYPE_MULTIPOINT, {point(1, 2), point(3, 4)}));
    Wkb empty{big, {}};
    empty.head(1).pt(NAN, NAN);
    EXPECT_EQ(read(empty.b).blob, nil());
  }
}

TEST(WkbRead, FaultsGiveTheirStatusAndOffsetAndAllocateNothing) {
  auto w = [](auto&& build) {
    Wkb x{true, {}};
    build(x);
    return x.b;
  };
  const struct { Bytes wkb; uint32_t flags; int32_t status; size_t offset; } cases[] = {
      {{}, 0, XGWKB_E_WKB_TRUNCATED, 0},
      {w([](Wkb& x) { x.head(1).f64(1); }), 0, XGWKB_E_WKB_TRUNCATED, 5},
      {w([](Wkb& x) { x.head(2).u32(0xFFFFFFFF).pt(1, 1); }), 0, XGWKB_E_WKB_TRUNCATED, 5},  // count past the end
      {w([](Wkb& x) { x.head(3).u32(0x40000000).u32(0); }), 0, XGWKB_E_WKB_TRUNCATED, 5},
      {w([](Wkb& x) { x.head(6).u32(0x7FFFFFFF).head(3).u32(0); }), 0, XGWKB_E_WKB_TRUNCATED, 5},
      {w([](Wkb& x) { x.head(0x20000001).u32(4326); }), 0, XGWKB_E_WKB_TRUNCATED, 9},
      {{2, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}, 0, XGWKB_E_WKB_BYTE_ORDER, 0},
      {w([](Wkb& x) { x.head(7).u32(0); }), 0, XGWKB_E_WKB_COLLECTION, 1},
      {w([](Wkb& x) { x.head(1007).u32(0); }), 0, XGWKB_E_WKB_COLLECTION, 1},
      {w([](Wkb& x) { x.head(8).u32(0); }), 0, XGWKB_E_INVALID_GEOMETRY_TYPE, 1},
      {w([](Wkb& x) { x.head(0x80001001).pt(1, 1, 1); }), 0, XGWKB_E_INVALID_GEOMETRY_TYPE, 1},
      {w([](Wkb& x) { x.head(5).u32(1).head(1).pt(1, 1); }), 0, XGWKB_E_INVALID_GEOMETRY_TYPE, 10},
      {w([](Wkb& x) { x.head(1).pt(1, 1).u32(0); }), 0, XGWKB_E_WKB_TRAILING, 21},
      {w([](Wkb& x) { x.head(1001).pt(1, 1, 1); }), XGWKB_REFUSE_Z, XGWKB_E_EXTRA_ORDINATES, 1},
      {w([](Wkb& x) { x.head(4).u32(1).head(0x40000001).pt(1, 1, 1); }), XGWKB_REFUSE_M, XGWKB_E_EXTRA_ORDINATES, 10},
  };
  for (const auto& c : cases) {
    const Read r = read(c.wkb, c.flags);
    EXPECT_EQ(r.status, c.status) << ::testing::PrintToString(c.wkb);
    EXPECT_EQ(r.offset, c.offset) << ::testing::PrintToString(c.wkb);
    EXPECT_TRUE(r.blob.empty());
  }
  Wkb z{false, {}};
  z.head(1001).pt(1, 1, 1);
  EXPECT_EQ(read(z.b, XGWKB_REFUSE_M).status, 0);  // Z alone is not refused by the M flag
  unsigned char* out = nullptr;
  EXPECT_EQ(xgWKB_shape_from_wkb(nullptr, 0, &out), XGWKB_E_NULL_POINTER);
  EXPECT_EQ(xgWKB_shape_from_wkb(z.b.data(), z.b.size(), nullptr), XGWKB_E_NULL_POINTER);
}

TEST(WkbWrite, BothByteOrdersHaveTheStandardBytes) {
  const Bytes shape = multi(XGWKB_TYPE_MULTILINESTRING, {linestring({{1, 2}, {3, 4}}), linestring({})});
  for (bool big : {false, true}) {
    Wkb want{big, {}};
    want.head(5).u32(2).head(2).u32(2).pt(1, 2).pt(3, 4).head(2).u32(0);
    Misaligned m(shape);
    unsigned char* out = nullptr;
    uint32_t size = 0;
    ASSERT_EQ(xgWKB_shape_to_wkb(m.data(), big, &out, &size), 0);
    EXPECT_EQ(Bytes(out, out + size), want.b);
    EXPECT_EQ(read(Bytes(out, out + size)).blob, shape);
    xgWKB_shape_free(out);
  }
  unsigned char* out = nullptr;
  uint32_t size = 0;
  EXPECT_EQ(xgWKB_shape_to_wkb(nil().data(), 0, &out, &size), XGWKB_E_NIL_AS_WKB);
  EXPECT_EQ(xgWKB_shape_to_wkb(header(XGWKB_TYPE_SINGLETEXT).data(), 0, &out, &size), XGWKB_E_INVALID_SHAPE);
  EXPECT_EQ(out, nullptr);
}

TEST(BlobCheck, AcceptsExactBlobsAndNamesTheFirstFault) {
  Bytes wrong_member = multi(XGWKB_TYPE_MULTIPOLYGON, {kTriangle});
  wrong_member[9 + 1] = XGWKB_TYPE_LINESTRING;
  Bytes huge_rings = kTriangle;
  huge_rings[5 + 3] = 0x40;  // ring count 0x40000001
  Bytes envelope = header(XGWKB_TYPE_ENVELOPE);
  envelope.resize(37);
  const struct { Bytes blob; size_t len; int32_t status; } cases[] = {
      {nil(), 5, 0},
      {envelope, 37, 0},
      {kTriangle, kTriangle.size(), 0},
      {multi(XGWKB_TYPE_MULTIPOINT, {point(1, 2)}), 30, 0},
      {kTriangle, kTriangle.size() - 1, XGWKB_E_BLOB_TOO_SMALL},
      {nil(), 4, XGWKB_E_BLOB_TOO_SMALL},
      {huge_rings, kTriangle.size(), XGWKB_E_BLOB_TOO_SMALL},
      {wrong_member, wrong_member.size(), XGWKB_E_INVALID_GEOMETRY_TYPE},
      {header(XGWKB_TYPE_SINGLETEXT), 5, XGWKB_E_INVALID_GEOMETRY_TYPE},
      {point(1, 2), 20, XGWKB_E_BLOB_TOO_SMALL},
  };
  for (const auto& c : cases) {
    Bytes bytes = c.blob;
    bytes.resize(c.len, 0);
    EXPECT_EQ(xgWKB_shape_check_blob(Misaligned(bytes).data(), c.len), c.status) << ::testing::PrintToString(c.blob);
  }
  Bytes longer = point(1, 2);
  longer.push_back(0);
  EXPECT_EQ(xgWKB_shape_check_blob(longer.data(), longer.size()), XGWKB_E_BUFFER_SIZE);
  EXPECT_EQ(xgWKB_shape_check_blob(nullptr, 5), XGWKB_E_NULL_POINTER);
}
