// The WKT writer: exact text per type and place of a point, status codes, and the coordinate
// formatter against printf("%lf").
#include "wkt/wkt_writer.h"

#include <gtest/gtest.h>
#include <malloc.h>

#include <cfloat>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>
#include <random>
#include <string>

#include "support/blob_builder.h"
#include "support/geos_oracle.h"
#include "wkt/number_format.h"
#include "xggeokit.h"

using namespace xgtest;

namespace {

// The text of a blob, or "<status N>" when the writer refuses it.  The blob is read from an odd
// address.
std::string wkt_of(const Bytes& blob) {
  Misaligned m(blob);
  char* text = nullptr;
  const int32_t status = xgWKB_shape_generate_to_WKT(m.data(), &text);
  if (status != XGWKB_OK) return "<status " + std::to_string(status) + ">";
  std::string s(text);
  xgWKB_shape_free_WKT(text);
  return s;
}

std::string printf_lf(double v) {
  char buf[400];
  std::snprintf(buf, sizeof buf, "%lf", v);
  return buf;
}

std::string fixed6(double v) {
  char buf[xg::kMaxFixed6Length];
  return std::string(buf, xg::format_fixed6(v, buf));
}

const Ring kTriangle = {{0, 0}, {1, 0}, {1, 1}, {0, 0}};

struct TextCase {
  const char* name;
  Bytes blob;
  const char* text;
};

}  // namespace

TEST(WktWriter, WritesEachTypeInTheDialect) {
  const TextCase cases[] = {
      {"point", point(1.5, -2), "point (1.500000 -2.000000)"},
      {"linestring", linestring({{0, 0}, {1, 1}, {2, 0}}),
       "linestring (0.000000 0.000000,1.000000 1.000000,2.000000 0.000000)"},
      {"two-point linestring", linestring({{0, 0}, {1, 1}}),
       "linestring (0.000000 0.000000,1.000000 1.000000)"},
      {"polygon", polygon({kTriangle}),
       "polygon ((0.000000 0.000000,1.000000 0.000000,1.000000 1.000000,0.000000 0.000000))"},
      {"polygon with hole", polygon({{{0, 0}, {4, 0}, {0, 4}}, {{1, 1}, {2, 1}, {1, 2}}}),
       "polygon ((0.000000 0.000000,4.000000 0.000000,0.000000 4.000000),"
       "(1.000000 1.000000,2.000000 1.000000,1.000000 2.000000))"},
      {"multipoint", multi(XGWKB_TYPE_MULTIPOINT, {point(1, 2), point(3, 4)}),
       "multipoint (1.000000 2.000000,3.000000 4.000000)"},
      {"multilinestring",
       multi(XGWKB_TYPE_MULTILINESTRING,
             {linestring({{0, 0}, {1, 1}}), linestring({{2, 2}, {3, 3}})}),
       "multilinestring ((0.000000 0.000000,1.000000 1.000000),(2.000000 2.000000,3.000000 "
       "3.000000))"},
      {"multipolygon",
       multi(XGWKB_TYPE_MULTIPOLYGON,
             {polygon({{{0, 0}, {1, 0}, {0, 1}}, {{5, 5}, {6, 5}, {5, 6}}}),
              polygon({{{9, 9}, {8, 9}}})}),
       "multipolygon (((0.000000 0.000000,1.000000 0.000000,0.000000 1.000000),"
       "(5.000000 5.000000,6.000000 5.000000,5.000000 6.000000)),"
       "((9.000000 9.000000,8.000000 9.000000)))"},
  };
  for (const TextCase& c : cases) EXPECT_EQ(wkt_of(c.blob), c.text) << c.name;
}

TEST(WktWriter, LeavesParenthesesOfOnePointPartsOpen) {
  const TextCase cases[] = {
      {"linestring", linestring({{1, 2}}), "linestring (1.000000 2.000000"},
      {"multipoint", multi(XGWKB_TYPE_MULTIPOINT, {point(1, 2)}), "multipoint (1.000000 2.000000"},
      {"first line of two",
       multi(XGWKB_TYPE_MULTILINESTRING, {linestring({{1, 2}}), linestring({{3, 4}, {5, 6}})}),
       "multilinestring ((1.000000 2.000000,(3.000000 4.000000,5.000000 6.000000))"},
      {"last line of two",
       multi(XGWKB_TYPE_MULTILINESTRING, {linestring({{3, 4}, {5, 6}}), linestring({{1, 2}})}),
       "multilinestring ((3.000000 4.000000,5.000000 6.000000),(1.000000 2.000000"},
      {"hole", polygon({kTriangle, {{7, 7}}}),
       "polygon ((0.000000 0.000000,1.000000 0.000000,1.000000 1.000000,0.000000 "
       "0.000000),(7.000000 7.000000"},
      {"second polygon",
       multi(XGWKB_TYPE_MULTIPOLYGON, {polygon({{{0, 0}, {1, 1}}}), polygon({{{7, 7}}})}),
       "multipolygon (((0.000000 0.000000,1.000000 1.000000)),((7.000000 7.000000"},
  };
  for (const TextCase& c : cases) EXPECT_EQ(wkt_of(c.blob), c.text) << c.name;
}

TEST(WktWriter, LeavesOutPartsWithoutPoints) {
  const TextCase cases[] = {
      {"empty linestring", linestring({}), ""},
      {"empty multipoint", multi(XGWKB_TYPE_MULTIPOINT, {}), ""},
      {"polygon without rings", polygon({}), ""},
      {"empty first ring", polygon({{}, {{1, 1}, {2, 2}}}),
       ",(1.000000 1.000000,2.000000 2.000000))"},
      {"empty middle line",
       multi(XGWKB_TYPE_MULTILINESTRING,
             {linestring({{0, 0}, {1, 1}}), linestring({}), linestring({{2, 2}, {3, 3}})}),
       "multilinestring ((0.000000 0.000000,1.000000 1.000000),(2.000000 2.000000,3.000000 "
       "3.000000))"},
      {"empty last ring", polygon({{{0, 0}, {1, 1}}, {}}),
       "polygon ((0.000000 0.000000,1.000000 1.000000)"},
      {"multipolygon with an empty polygon",
       multi(XGWKB_TYPE_MULTIPOLYGON, {polygon({}), polygon({{{1, 1}, {2, 2}}})}),
       ",((1.000000 1.000000,2.000000 2.000000)))"},
  };
  for (const TextCase& c : cases) EXPECT_EQ(wkt_of(c.blob), c.text) << c.name;
}

TEST(WktWriter, PrintsLargeAndNegativeCoordinatesInFull) {
  EXPECT_EQ(wkt_of(point(1e20, -1e20)),
            "point (100000000000000000000.000000 -100000000000000000000.000000)");
  EXPECT_EQ(wkt_of(point(-0.5, -0.0)), "point (-0.500000 -0.000000)");
  EXPECT_EQ(wkt_of(point(-1e-9, 0.0000005)), "point (-0.000000 0.000000)");
  EXPECT_EQ(wkt_of(point(1e300, 1)), "point (" + printf_lf(1e300) + " 1.000000)");
}

TEST(WktWriter, IgnoresTypeCodesOfMembers) {
  Bytes mp = multi(XGWKB_TYPE_MULTIPOINT, {point(1, 2), point(3, 4)});
  mp[9 + 1] = 77;  // the first member's type code
  EXPECT_EQ(wkt_of(mp), "multipoint (1.000000 2.000000,3.000000 4.000000)");
}

TEST(WktWriter, RefusesNilAnnotationAndUnknownTypes) {
  EXPECT_EQ(wkt_of(nil()), "<status -27>");
  char untouched = 0;
  char* const sentinel = &untouched;
  for (uint32_t type : {9u, 10u, 11u, 12u, 13u, 21u, 7u, 1000u}) {
    Bytes b;
    put_header(b, type);
    put_u32(b, 0);
    char* text = sentinel;
    EXPECT_EQ(xgWKB_shape_generate_to_WKT(b.data(), &text), XGWKB_E_INVALID_ENTITY) << type;
    EXPECT_EQ(text, sentinel);
  }
  char* text = nullptr;
  EXPECT_EQ(xgWKB_shape_generate_to_WKT(nullptr, &text), XGWKB_E_NULL_POINTER);
  EXPECT_EQ(text, nullptr);
}

TEST(WktWriter, AllocatesExactlyTheTextAndItsTerminator) {
  const Bytes blob = polygon({kTriangle});
  char* text = nullptr;
  ASSERT_EQ(xgWKB_shape_generate_to_WKT(blob.data(), &text), XGWKB_OK);
  const std::size_t needed = std::strlen(text) + 1;
#if defined(__SANITIZE_ADDRESS__)
  EXPECT_EQ(malloc_usable_size(text), needed);  // the sanitizer's allocator reports the request
#else
  EXPECT_GE(malloc_usable_size(text), needed);
#endif
  xgWKB_shape_free_WKT(text);
  xgWKB_shape_free_WKT(nullptr);
}

TEST(WktWriter, TypeWritersHandedNoShapeWriteTheEmptyText) {
  using Writer = void (*)(const unsigned char*, std::string&);
  const std::pair<Writer, const char*> cases[] = {
      {xg::append_point_wkt, "point empty"},
      {xg::append_linestring_wkt, "linestring empty"},
      {xg::append_polygon_wkt, "polygon empty"},
      {xg::append_multipoint_wkt, "multipoint empty"},
      {xg::append_multilinestring_wkt, "multilinestring empty"},
      {xg::append_multipolygon_wkt, "multipolygon empty"},
  };
  for (const auto& c : cases) {
    std::string out;
    c.first(nullptr, out);
    EXPECT_EQ(out, c.second);
  }
}

// GEOS reads our text back as the geometry we wrote (coordinates exact in six decimals).
TEST(WktWriter, GeosReadsTheTextAsTheSameGeometry) {
  GeosOracle oracle;
  std::mt19937 rng(20240611);
  std::uniform_int_distribution<int> coord(-64000, 64000);
  auto run = [&](std::size_t n) {
    Ring r;
    for (std::size_t i = 0; i < n; ++i) r.push_back({coord(rng) / 64.0, coord(rng) / 64.0});
    return r;
  };
  auto closed = [&](std::size_t n) {
    Ring r = run(n);
    r.push_back(r.front());
    return r;
  };
  for (int iter = 0; iter < 200; ++iter) {
    const std::vector<Bytes> blobs = {
        point(coord(rng) / 64.0, coord(rng) / 64.0),
        linestring(run(2 + iter % 5)),
        polygon({closed(3 + iter % 4), closed(3)}),
        multi(XGWKB_TYPE_MULTIPOINT, {point(1, 2), point(coord(rng) / 64.0, 0.25)}),
        multi(XGWKB_TYPE_MULTILINESTRING, {linestring(run(2)), linestring(run(3 + iter % 3))}),
        multi(XGWKB_TYPE_MULTIPOLYGON, {polygon({closed(3)}), polygon({closed(4), closed(3)})}),
    };
    for (const Bytes& b : blobs) {
      const std::string text = wkt_of(b);
      GeosGeom g(oracle, oracle.from_wkt(text));
      EXPECT_EQ(oracle.from_geos(g.get()), b) << text;
    }
  }
}

// ---- the coordinate formatter ----------------------------------------------------------------

TEST(FixedSixFormat, MatchesPrintfOnSpecialValues) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const double inf = std::numeric_limits<double>::infinity();
  const double cases[] = {0.0,
                          -0.0,
                          1.0,
                          -1.0,
                          0.5,
                          -0.5,
                          1e20,
                          -1e20,
                          1e300,
                          DBL_MAX,
                          -DBL_MAX,
                          DBL_MIN,
                          DBL_TRUE_MIN,
                          -DBL_TRUE_MIN,
                          inf,
                          -inf,
                          nan,
                          -nan,
                          2.5e-7,
                          1.0000005,
                          5e-7,
                          4.999999e-7,
                          0.0000015,
                          999999.9999995,
                          0.9999995,
                          9.9999995,
                          0.0078125,
                          0.0234375,
                          -0.0078125,
                          std::ldexp(1.0, 52),
                          std::ldexp(1.0, 53),
                          std::ldexp(1.0, 64),
                          std::ldexp(1.0, 64) - 2048,
                          std::ldexp(1.0, 126),
                          std::ldexp(1.0, 127),
                          std::nextafter(std::ldexp(1.0, 127), 0.0),
                          std::ldexp(1.0, 128),
                          std::ldexp(1.0, -73),
                          std::ldexp(1.0, -74),
                          std::ldexp(3.0, -75),
                          std::ldexp(1.0, -21),
                          4503599627370495.5,
                          9007199254740991.0};
  for (double v : cases) EXPECT_EQ(fixed6(v), printf_lf(v)) << v;
}

TEST(FixedSixFormat, RoundsExactTiesToEven) {
  // Odd multiples of 1/128 are the binary fractions whose seventh decimal is a final 5.
  for (int64_t q = 1; q < 200000; q += 2) {
    const double v = static_cast<double>(q) / 128;
    ASSERT_EQ(fixed6(v), printf_lf(v)) << v;
    ASSERT_EQ(fixed6(-v), printf_lf(-v)) << -v;
  }
  std::mt19937_64 rng(7);
  for (int i = 0; i < 20000; ++i) {
    const double v = static_cast<double>(rng() >> 12 | 1) / 128;  // up to 2^52 / 128
    ASSERT_EQ(fixed6(v), printf_lf(v)) << v;
  }
}

TEST(FixedSixFormat, MatchesPrintfOnRandomDoubles) {
  std::mt19937_64 rng(12345);
  std::uniform_real_distribution<double> decade(-12, 40);
  std::uniform_real_distribution<double> unit(1, 10);
  std::uniform_int_distribution<int64_t> micro(-4000000000000LL, 4000000000000LL);
  std::size_t checked = 0;
  auto check = [&](double v) {
    ++checked;
    ASSERT_EQ(fixed6(v), printf_lf(v)) << std::hexfloat << v;
  };
  for (int i = 0; i < 40000; ++i) {  // every bit pattern is fair game
    uint64_t bits = rng();
    double v;
    std::memcpy(&v, &bits, sizeof v);
    check(v);
  }
  for (int i = 0; i < 40000; ++i) {  // log-uniform magnitudes from 1e-12 to 1e40, both signs
    const double v = unit(rng) * std::pow(10.0, std::floor(decade(rng)));
    check((rng() & 1) ? v : -v);
  }
  for (int i = 0; i < 30000; ++i) {  // near the decimal ties k.xxxxxx5 and on either side
    const double v = (static_cast<double>(micro(rng)) + 0.5) / 1e6;
    check(v);
    check(std::nextafter(v, HUGE_VAL));
    check(std::nextafter(v, -HUGE_VAL));
  }
  for (int k = -80; k < 80; ++k) {  // 0.0000005 and friends scaled by powers of two
    for (double base : {5e-7, 2.5e-7, 1.0000005, 0.1, 1.5e-6, 123456.7890125}) {
      check(std::ldexp(base, k));
      check(-std::ldexp(base, k));
    }
  }
  EXPECT_GE(checked, 150000u);
}
