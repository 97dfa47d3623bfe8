// The WKT writer: exact text per type and place of a point, status codes, round trips through
// the reader and GEOS, and the coordinate formatter against printf("%lf").
#include <gtest/gtest.h>

#include <cctype>
#include <cfloat>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>
#include <random>
#include <string>

#include "support/edit_result.h"
#include "support/geos_oracle.h"
#include "wkt/number_format.h"

using namespace xgtest;

namespace {

// The text of a blob read from an odd address, or "<status N>" when the writer refuses it (and
// "<status N, touched>" when it then changed the out-pointer).
std::string wkt_of(const Bytes& blob) {
  Misaligned m(blob);
  char untouched = 0;
  char* text = &untouched;
  const int32_t status = xgWKB_shape_generate_to_WKT(m.data(), &text);
  if (status != XGWKB_OK) return "<status " + std::to_string(status) + (text == &untouched ? ">" : ", touched>");
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
    if (std::isdigit(static_cast<unsigned char>(*p)) && !std::isdigit(static_cast<unsigned char>(p[1]))) {
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

}  // namespace

TEST(WktWriter, WritesEachTypeAndLeavesOnePointPartsOpenAndEmptyPartsOut) {
  const std::pair<Bytes, const char*> cases[] = {
      {point(1, -2), "point (1 -2)"},
      {linestring({{0, 0}, {1, 1}, {2, 0}}), "linestring (0 0,1 1,2 0)"},
      {polygon({{{0, 0}, {4, 0}, {0, 0}}, {{1, 1}, {2, 1}, {1, 1}}}), "polygon ((0 0,4 0,0 0),(1 1,2 1,1 1))"},
      {multi(XGWKB_TYPE_MULTIPOINT, {point(1, 2), point(3, 4)}), "multipoint (1 2,3 4)"},
      {multiline({{{0, 0}, {1, 1}}, {{2, 2}, {3, 3}}}), "multilinestring ((0 0,1 1),(2 2,3 3))"},
      {multi(XGWKB_TYPE_MULTIPOLYGON,
             {polygon({{{0, 0}, {1, 0}, {0, 1}}, {{5, 5}, {6, 5}}}), polygon({{{9, 9}, {8, 9}}})}),
       "multipolygon (((0 0,1 0,0 1),(5 5,6 5)),((9 9,8 9)))"},
      // A part of one point leaves its parentheses open...
      {linestring({{1, 2}}), "linestring (1 2"},
      {multi(XGWKB_TYPE_MULTIPOINT, {point(1, 2)}), "multipoint (1 2"},
      {multiline({{{1, 2}}, {{3, 4}, {5, 6}}}), "multilinestring ((1 2,(3 4,5 6))"},
      {polygon({{{0, 0}, {1, 0}, {0, 0}}, {{7, 7}}}), "polygon ((0 0,1 0,0 0),(7 7"},
      {multi(XGWKB_TYPE_MULTIPOLYGON, {polygon({{{0, 0}, {1, 1}}}), polygon({{{7, 7}}})}),
       "multipolygon (((0 0,1 1)),((7 7"},
      // ...and one of none is left out, with whatever opened it.
      {linestring({}), ""},
      {polygon({}), ""},
      {polygon({{}, {{1, 1}, {2, 2}}}), ",(1 1,2 2))"},
      {polygon({{{0, 0}, {1, 1}}, {}}), "polygon ((0 0,1 1)"},
      {multiline({{{0, 0}, {1, 1}}, {}, {{2, 2}, {3, 3}}}), "multilinestring ((0 0,1 1),(2 2,3 3))"},
      {multi(XGWKB_TYPE_MULTIPOLYGON, {polygon({}), polygon({{{1, 1}, {2, 2}}})}), ",((1 1,2 2)))"},
      {point(1e20, -1e20), "point (100000000000000000000 -100000000000000000000)"},
  };
  for (const auto& c : cases) EXPECT_EQ(wkt_of(c.first), six(c.second));
  Bytes foreign_member = multi(XGWKB_TYPE_MULTIPOINT, {point(1, 2), point(3, 4)});
  foreign_member[9 + 1] = 77;  // a member's type code is checked: foreign members are refused
  EXPECT_EQ(wkt_of(foreign_member), "<status -134>");
  EXPECT_EQ(wkt_of(point(1.5, -1e-9)), "point (1.500000 -0.000000)");  // other values: the formatter test
}

TEST(WktWriter, RefusesNilAnnotationAndUnknownTypes) {
  for (uint32_t type : {0u, 9u, 10u, 11u, 12u, 13u, 21u, 7u, 1000u}) {
    Bytes b = header(type);
    put_u32(b, 0);
    EXPECT_EQ(wkt_of(b), "<status -27>") << type;
  }
  char* text = nullptr;
  EXPECT_EQ(xgWKB_shape_generate_to_WKT(nullptr, &text), XGWKB_E_NULL_POINTER);
}

// The reader and GEOS read our text back as the geometry we wrote (coordinates exact in six
// decimals).
TEST(WktRoundTrip, ReaderAndGeosReadTheTextAsTheSameGeometry) {
  GeosOracle oracle;
  std::mt19937 rng(20240611);
  auto value = [&] { return static_cast<int>(rng() % 2000001) / 64.0 - 15625; };
  auto run = [&](std::size_t n, bool closed) {
    Ring r;
    for (std::size_t i = 0; i < n; ++i) r.push_back({value(), value()});
    if (closed) r.push_back(r.front());
    return r;
  };
  for (int iter = 0; iter < 300; ++iter) {
    const std::size_t n = 3 + iter % 6;
    const Bytes mpg = multi(XGWKB_TYPE_MULTIPOLYGON, {polygon({run(3, true)}), polygon({run(n, true), run(3, true)})});
    for (const Bytes& b : {point(value(), -0.5), linestring(run(n, false)), polygon({run(n, true), run(3, true)}),
                           multi(XGWKB_TYPE_MULTIPOINT, {point(1, 2), point(value(), 0.25)}),
                           multiline({run(2, false), run(n, false)}), mpg}) {
      const std::string text = wkt_of(b);
      Out back;
      EXPECT_EQ(xgWKB_shape_generate_from_WKT(text.c_str(), &back.p), XGWKB_OK);
      EXPECT_EQ(back.bytes(), b) << text;
      GeosGeom g(oracle, oracle.from_wkt(text));
      EXPECT_EQ(oracle.from_geos(g.get()), b) << text;
    }
  }
}

TEST(FixedSixFormat, MatchesPrintfOnSpecialTiedAndRandomDoubles) {
  auto check = [](double v) {
    char buf[xg::kMaxFixed6Length];
    ASSERT_EQ(std::string(buf, xg::format_fixed6(v, buf)), printf_lf(v)) << std::hexfloat << v;
  };
  const double nan = std::numeric_limits<double>::quiet_NaN(), inf = std::numeric_limits<double>::infinity();
  const double two64 = std::ldexp(1.0, 64), two127 = std::ldexp(1.0, 127);
  for (double v : {0.0, -0.0, 1e20, 1e300, DBL_MAX, -DBL_MAX, DBL_MIN, -DBL_TRUE_MIN, inf, -inf, nan, -nan, 2.5e-7,
                   1.0000005, 5e-7, 0.9999995, 999999.9999995, 0.0078125, two64, two64 - 2048, two127,
                   std::nextafter(two127, 0.0), std::ldexp(1.0, -74), std::ldexp(3.0, -75), 4503599627370495.5,
                   9007199254740991.0})
    check(v);
  // Odd multiples of 1/128 are the binary fractions whose seventh decimal is a final 5: exact
  // ties, rounded to even.
  std::mt19937_64 rng(7);
  for (int i = 0; i < 100000; ++i) {
    const int64_t q = i < 50000 ? 2 * i + 1 : static_cast<int64_t>(rng() >> 12 | 1);
    check(static_cast<double>(q) / ((i & 1) ? 128 : -128));
  }
  std::uniform_real_distribution<double> decade(-12, 40), unit(1, 10);
  std::uniform_int_distribution<int64_t> micro(-4000000000000LL, 4000000000000LL);
  for (int i = 0; i < 40000; ++i) {
    const uint64_t bits = rng();  // any bit pattern
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
}
