// OGC simple-features WKT in and out.
#include <gtest/gtest.h>

#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <string>

#include "support/blob_builder.h"

using namespace xgtest;

namespace {

struct Read {
  int32_t status;
  Bytes blob;
  size_t offset;
};

Read read(const char* text, uint32_t flags = 0) {
  unsigned char* out = nullptr;
  size_t offset = 12345;
  Read r{xgWKB_shape_from_ogc_wkt_ex(text, flags, &out, &offset), {}, offset};
  if (out != nullptr) r.blob = take_shape(out);
  return r;
}

std::string write(const Bytes& blob, int32_t precision = -1) {
  char* text = nullptr;
  const int32_t s = xgWKB_shape_to_ogc_wkt(Misaligned(blob).data(), precision, &text);
  if (s != 0) return "status " + std::to_string(s);
  std::string t(text);
  xgWKB_shape_free_WKT(text);
  return t;
}

const Bytes kSquareWithHole = polygon({square(0, 0, 10), square(2, 2, 1)});

}  // namespace

TEST(OgcWktRead, AcceptsTheSpellingsOfEveryType) {
  const struct { const char* text; Bytes blob; } cases[] = {
      {"POINT (1 2)", point(1, 2)},
      {"  point(+1.5e1\t-2E-1)  ", point(15, -0.2)},
      {"SRID=4326;Point Z (1 2 3)", point(1, 2)},
      {"POINTZM (1 2 3 4)", point(1, 2)},
      {"point m(1 2 3)", point(1, 2)},
      {"POINT (1 2 3)", point(1, 2)},
      {"POINT EMPTY", nil()},
      {"LINESTRING (0 0, 1 1,2 2)", linestring({{0, 0}, {1, 1}, {2, 2}})},
      {"LineString EMPTY", linestring({})},
      {"POLYGON ((0 0, 10 0, 10 10, 0 10, 0 0), (2 2, 3 2, 3 3, 2 3, 2 2))", kSquareWithHole},
      {"MULTIPOINT (1 2, 3 4)", multi(XGWKB_TYPE_MULTIPOINT, {point(1, 2), point(3, 4)})},
      {"MULTIPOINT ((1 2), 3 4)", multi(XGWKB_TYPE_MULTIPOINT, {point(1, 2), point(3, 4)})},
      {"MULTILINESTRING ((0 0, 1 1), EMPTY)", multiline({{{0, 0}, {1, 1}}, {}})},
      {"MULTIPOLYGON (((0 0, 10 0, 10 10, 0 10, 0 0), (2 2, 3 2, 3 3, 2 3, 2 2)), EMPTY)",
       multi(XGWKB_TYPE_MULTIPOLYGON, {kSquareWithHole, polygon({})})},
      {"multipolygon empty", multi(XGWKB_TYPE_MULTIPOLYGON, {})},
  };
  for (const auto& c : cases) {
    const Read r = read(c.text);
    EXPECT_EQ(r.status, 0) << c.text;
    EXPECT_EQ(r.blob, c.blob) << c.text;
  }
}

TEST(OgcWktRead, FaultsNameTheirOffsetAndAllocateNothing) {
  const struct { const char* text; uint32_t flags; int32_t status; size_t offset; } cases[] = {
      {"", 0, XGWKB_E_TEXT_SYNTAX, 0},
      {"POINT (1 2", 0, XGWKB_E_TEXT_SYNTAX, 10},
      {"POINT (1 2) x", 0, XGWKB_E_TEXT_SYNTAX, 12},
      {"POINT (1 nan)", 0, XGWKB_E_TEXT_SYNTAX, 9},
      {"POINT (1 2.5.1)", 0, XGWKB_E_TEXT_SYNTAX, 9},
      {"POINT (1 1e999)", 0, XGWKB_E_TEXT_SYNTAX, 9},
      {"POINT (1 2 3 4 5)", 0, XGWKB_E_TEXT_SYNTAX, 15},
      {"POINT Z (1 2)", 0, XGWKB_E_TEXT_SYNTAX, 9},
      {"LINESTRING (0 0,, 1 1)", 0, XGWKB_E_TEXT_SYNTAX, 16},
      {"POLYGON ((0 0, 1 0, 1 1 0 0))", 0, XGWKB_E_TEXT_SYNTAX, 20},  // a missing comma, not Z and M
      {"POLYGON (EMPTY)", 0, XGWKB_E_TEXT_SYNTAX, 9},
      {"MULTIPOINT (EMPTY)", 0, XGWKB_E_TEXT_SYNTAX, 12},
      {"POINT FOO (1 2)", 0, XGWKB_E_TEXT_SYNTAX, 6},
      {"CIRCULARSTRING (0 0, 1 1, 2 0)", 0, XGWKB_E_INVALID_GEOMETRY_TYPE, 0},
      {" GEOMETRYCOLLECTION (POINT (1 2))", 0, XGWKB_E_WKB_COLLECTION, 1},
      {"POINT Z (1 2 3)", XGWKB_REFUSE_Z, XGWKB_E_EXTRA_ORDINATES, 6},
      {"LINESTRING (0 0 0, 1 1 1)", XGWKB_REFUSE_Z, XGWKB_E_EXTRA_ORDINATES, 12},
      {"POINTM (1 2 3)", XGWKB_REFUSE_M, XGWKB_E_EXTRA_ORDINATES, 5},
  };
  for (const auto& c : cases) {
    const Read r = read(c.text, c.flags);
    EXPECT_EQ(r.status, c.status) << c.text;
    EXPECT_EQ(r.offset, c.offset) << c.text;
    EXPECT_TRUE(r.blob.empty()) << c.text;
  }
  EXPECT_EQ(read("POINT Z (1 2 3)", XGWKB_REFUSE_M).status, 0);
  unsigned char* out = nullptr;
  EXPECT_EQ(xgWKB_shape_from_ogc_wkt(nullptr, 0, &out), XGWKB_E_NULL_POINTER);
}

TEST(OgcWktWrite, WritesEveryTypeAndReadsItBack) {
  const struct { Bytes blob; const char* text; } cases[] = {
      {point(1, -2.5), "POINT (1 -2.5)"},
      {nil(), "POINT EMPTY"},
      {linestring({{0, 0}, {0.1, 1e21}}), "LINESTRING (0 0, 0.1 1e+21)"},
      {linestring({}), "LINESTRING EMPTY"},
      {polygon({}), "POLYGON EMPTY"},
      {kSquareWithHole, "POLYGON ((0 0, 10 0, 10 10, 0 10, 0 0), (2 2, 3 2, 3 3, 2 3, 2 2))"},
      {multi(XGWKB_TYPE_MULTIPOINT, {point(1, 2), point(3, 4)}), "MULTIPOINT ((1 2), (3 4))"},
      {multiline({{{0, 0}, {1, 1}}, {}}), "MULTILINESTRING ((0 0, 1 1), EMPTY)"},
      {multi(XGWKB_TYPE_MULTIPOLYGON, {polygon({square(0, 0, 1)}), polygon({})}),
       "MULTIPOLYGON (((0 0, 1 0, 1 1, 0 1, 0 0)), EMPTY)"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(write(c.blob), c.text);
    EXPECT_EQ(read(c.text).blob, c.blob) << c.text;
  }
  EXPECT_EQ(write(point(1.0 / 3, 2), 3), "POINT (0.333 2.000)");
  EXPECT_EQ(write(point(1, 2), 18), "status -66");
  EXPECT_EQ(write(point(1, 2), -2), "status -66");
  EXPECT_EQ(write(header(XGWKB_TYPE_HORIDIM)), "status -134");
}

TEST(OgcWktWrite, ShortestDigitsReadBackToTheSameDouble) {
  std::mt19937_64 rng(17);
  std::vector<_xgWKB_POINT> pts;
  for (int i = 0; i < 2000; ++i) {
    uint64_t bits = rng();
    double v;
    std::memcpy(&v, &bits, 8);
    if (!std::isfinite(v)) v = std::ldexp(static_cast<double>(bits >> 11), -30);
    pts.push_back({v, std::nextafter(1.0 / (i + 1), 2.0)});
  }
  pts.push_back({std::numeric_limits<double>::denorm_min(), -0.0});
  const Bytes line = linestring(pts);
  const std::string text = write(line);
  EXPECT_EQ(read(text.c_str()).blob, line);
}

// Fixed digits of huge values outgrow the first estimate of the text's length many times over.
TEST(OgcWktWrite, LongFixedTextsGrowTheBufferAndStayExact) {
  std::vector<_xgWKB_POINT> pts;
  std::string expected = "LINESTRING (";
  for (int i = 0; i < 300; ++i) {
    pts.push_back({-1.5e308 / (i + 1), 3.25 * i});
    char buf[700];
    char* at = std::to_chars(buf, buf + sizeof buf, pts.back().x, std::chars_format::fixed, 17).ptr;
    *at++ = ' ';
    at = std::to_chars(at, buf + sizeof buf, pts.back().y, std::chars_format::fixed, 17).ptr;
    expected += (i == 0 ? "" : ", ") + std::string(buf, at);
  }
  EXPECT_EQ(write(linestring(pts), 17), expected + ")");
}
