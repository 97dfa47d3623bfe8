// The WKT writer: exact text per type and place of a point, status codes, and the coordinate
// formatter against printf("%lf").
#include <gtest/gtest.h>
#include <malloc.h>

#include <cctype>
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

// The text of a blob read from an odd address, or "<status N>" when the writer refuses it.
std::string wkt_of(const Bytes& blob) {
  Misaligned m(blob);
  char* text = nullptr;
  const int32_t status = xgWKB_shape_generate_to_WKT(m.data(), &text);
  if (status != XGWKB_OK) return "<status " + std::to_string(status) + ">";
  std::string s(text);
  xgWKB_shape_free_WKT(text);
  return s;
}

// Expected texts are written with integers: "point (1 -2)" stands for
// "point (1.000000 -2.000000)".
std::string six(const char* text) {
  std::string out;
  for (const char* p = text; *p != '\0'; ++p) {
    out += *p;
    if (std::isdigit(static_cast<unsigned char>(*p)) &&
        !std::isdigit(static_cast<unsigned char>(p[1]))) {
      out += ".000000";
    }
  }
  return out;
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

struct TextCase {
  Bytes blob;
  const char* text;  // in integers, see six()
};

void expect_texts(const std::vector<TextCase>& cases) {
  for (const TextCase& c : cases) EXPECT_EQ(wkt_of(c.blob), six(c.text));
}

Bytes lines(std::vector<Ring> members) {
  std::vector<Bytes> blobs;
  for (const Ring& r : members) blobs.push_back(linestring(r));
  return multi(XGWKB_TYPE_MULTILINESTRING, blobs);
}

}  // namespace

TEST(WktWriter, WritesEachTypeInTheDialect) {
  expect_texts({
      {point(1, -2), "point (1 -2)"},
      {linestring({{0, 0}, {1, 1}, {2, 0}}), "linestring (0 0,1 1,2 0)"},
      {polygon({{{0, 0}, {4, 0}, {0, 0}}, {{1, 1}, {2, 1}, {1, 1}}}),
       "polygon ((0 0,4 0,0 0),(1 1,2 1,1 1))"},
      {multi(XGWKB_TYPE_MULTIPOINT, {point(1, 2), point(3, 4)}), "multipoint (1 2,3 4)"},
      {lines({{{0, 0}, {1, 1}}, {{2, 2}, {3, 3}}}), "multilinestring ((0 0,1 1),(2 2,3 3))"},
      {multi(XGWKB_TYPE_MULTIPOLYGON,
             {polygon({{{0, 0}, {1, 0}, {0, 1}}, {{5, 5}, {6, 5}}}), polygon({{{9, 9}, {8, 9}}})}),
       "multipolygon (((0 0,1 0,0 1),(5 5,6 5)),((9 9,8 9)))"},
  });
  EXPECT_EQ(wkt_of(point(1.5, -0.25)), "point (1.500000 -0.250000)");
}

TEST(WktWriter, LeavesParenthesesOfOnePointPartsOpen) {
  expect_texts({
      {linestring({{1, 2}}), "linestring (1 2"},
      {multi(XGWKB_TYPE_MULTIPOINT, {point(1, 2)}), "multipoint (1 2"},
      {lines({{{1, 2}}, {{3, 4}, {5, 6}}}), "multilinestring ((1 2,(3 4,5 6))"},
      {polygon({{{0, 0}, {1, 0}, {0, 0}}, {{7, 7}}}), "polygon ((0 0,1 0,0 0),(7 7"},
      {multi(XGWKB_TYPE_MULTIPOLYGON, {polygon({{{0, 0}, {1, 1}}}), polygon({{{7, 7}}})}),
       "multipolygon (((0 0,1 1)),((7 7"},
  });
}

TEST(WktWriter, LeavesOutPartsWithoutPoints) {
  expect_texts({
      {linestring({}), ""},
      {polygon({}), ""},
      {polygon({{}, {{1, 1}, {2, 2}}}), ",(1 1,2 2))"},
      {polygon({{{0, 0}, {1, 1}}, {}}), "polygon ((0 0,1 1)"},
      {lines({{{0, 0}, {1, 1}}, {}, {{2, 2}, {3, 3}}}), "multilinestring ((0 0,1 1),(2 2,3 3))"},
      {multi(XGWKB_TYPE_MULTIPOLYGON, {polygon({}), polygon({{{1, 1}, {2, 2}}})}), ",((1 1,2 2)))"},
  });
}

TEST(WktWriter, PrintsLargeAndNegativeCoordinatesInFull) {
  EXPECT_EQ(wkt_of(point(1e20, -1e20)),
            six("point (100000000000000000000 -100000000000000000000)"));
  EXPECT_EQ(wkt_of(point(-0.0, -1e-9)), "point (-0.000000 -0.000000)");
  EXPECT_EQ(wkt_of(point(1e300, 1)), "point (" + printf_lf(1e300) + " 1.000000)");
}

TEST(WktWriter, IgnoresTypeCodesOfMembers) {
  Bytes mp = multi(XGWKB_TYPE_MULTIPOINT, {point(1, 2), point(3, 4)});
  mp[9 + 1] = 77;  // the first member's type code
  EXPECT_EQ(wkt_of(mp), six("multipoint (1 2,3 4)"));
}

TEST(WktWriter, RefusesNilAnnotationAndUnknownTypes) {
  char untouched = 0;
  for (uint32_t type : {0u, 9u, 10u, 11u, 12u, 13u, 21u, 7u, 1000u}) {
    Bytes b;
    put_header(b, type);
    put_u32(b, 0);
    char* text = &untouched;
    EXPECT_EQ(xgWKB_shape_generate_to_WKT(b.data(), &text), XGWKB_E_INVALID_ENTITY) << type;
    EXPECT_EQ(text, &untouched);
  }
  char* text = nullptr;
  EXPECT_EQ(xgWKB_shape_generate_to_WKT(nullptr, &text), XGWKB_E_NULL_POINTER);
  EXPECT_EQ(text, nullptr);
}

TEST(WktWriter, AllocatesExactlyTheTextAndItsTerminator) {
  const Bytes blob = polygon({{{0, 0}, {1, 0}, {0, 0}}});
  char* text = nullptr;
  ASSERT_EQ(xgWKB_shape_generate_to_WKT(blob.data(), &text), XGWKB_OK);
#if defined(__SANITIZE_ADDRESS__)
  EXPECT_EQ(malloc_usable_size(text), std::strlen(text) + 1);  // the sanitizer reports requests
#else
  EXPECT_GE(malloc_usable_size(text), std::strlen(text) + 1);
#endif
  xgWKB_shape_free_WKT(text);
}

// GEOS reads our text back as the geometry we wrote (coordinates exact in six decimals).
TEST(WktWriter, GeosReadsTheTextAsTheSameGeometry) {
  GeosOracle oracle;
  std::mt19937 rng(20240611);
  std::uniform_int_distribution<int> coord(-64000, 64000);
  auto run = [&](std::size_t n, bool closed) {
    Ring r;
    for (std::size_t i = 0; i < n; ++i) r.push_back({coord(rng) / 64.0, coord(rng) / 64.0});
    if (closed) r.push_back(r.front());
    return r;
  };
  for (int iter = 0; iter < 200; ++iter) {
    const std::size_t n = 3 + iter % 4;
    for (const Bytes& b :
         {point(coord(rng) / 64.0, -0.5), linestring(run(n, false)),
          polygon({run(n, true), run(3, true)}),
          multi(XGWKB_TYPE_MULTIPOINT, {point(1, 2), point(coord(rng), 0.25)}),
          lines({run(2, false), run(n, false)}),
          multi(XGWKB_TYPE_MULTIPOLYGON,
                {polygon({run(3, true)}), polygon({run(n, true), run(3, true)})})}) {
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
  for (double v : {0.0,
                   -0.0,
                   1e20,
                   1e300,
                   DBL_MAX,
                   -DBL_MAX,
                   DBL_MIN,
                   -DBL_TRUE_MIN,
                   inf,
                   -inf,
                   nan,
                   -nan,
                   2.5e-7,
                   1.0000005,
                   5e-7,
                   0.9999995,
                   999999.9999995,
                   0.0078125,
                   std::ldexp(1.0, 64),
                   std::ldexp(1.0, 64) - 2048,
                   std::ldexp(1.0, 127),
                   std::nextafter(std::ldexp(1.0, 127), 0.0),
                   std::ldexp(1.0, -74),
                   std::ldexp(3.0, -75),
                   4503599627370495.5,
                   9007199254740991.0}) {
    EXPECT_EQ(fixed6(v), printf_lf(v)) << v;
  }
}

TEST(FixedSixFormat, RoundsExactTiesToEven) {
  // Odd multiples of 1/128 are the binary fractions whose seventh decimal is a final 5.
  std::mt19937_64 rng(7);
  for (int i = 0; i < 100000; ++i) {
    const int64_t q = i < 50000 ? 2 * i + 1 : static_cast<int64_t>(rng() >> 12 | 1);
    const double v = static_cast<double>(q) / ((i & 1) ? 128 : -128);
    ASSERT_EQ(fixed6(v), printf_lf(v)) << v;
  }
}

TEST(FixedSixFormat, MatchesPrintfOnRandomDoubles) {
  std::mt19937_64 rng(12345);
  std::uniform_real_distribution<double> decade(-12, 40);
  std::uniform_real_distribution<double> unit(1, 10);
  std::uniform_int_distribution<int64_t> micro(-4000000000000LL, 4000000000000LL);
  auto check = [&](double v) { ASSERT_EQ(fixed6(v), printf_lf(v)) << std::hexfloat << v; };
  for (int i = 0; i < 40000; ++i) {
    uint64_t bits = rng();  // any bit pattern
    double v;
    std::memcpy(&v, &bits, sizeof v);
    check(v);
    const double m = unit(rng) * std::pow(10.0, std::floor(decade(rng)));  // log-uniform
    check((rng() & 1) ? m : -m);
    const double tie = (static_cast<double>(micro(rng)) + 0.5) / 1e6;  // near k.xxxxxx5
    check(tie);
    check(std::nextafter(tie, HUGE_VAL));
    check(std::nextafter(tie, -HUGE_VAL));
  }
  for (int k = -80; k < 80; ++k) {  // 0.0000005 and friends scaled by powers of two
    for (double base : {5e-7, -2.5e-7, 1.0000005, 0.1, 123456.7890125}) check(std::ldexp(base, k));
  }
}
