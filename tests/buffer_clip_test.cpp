// Buffer, box clipping and line-by-polygon cutting: exact blocks and layouts, the statuses, and
// the cases where the rules are easy to get wrong (minimum radius, the clipping margin, the
// re-joining of parts, cleaning for multipolygons only).
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>

#include "support/edit_result.h"
#include "support/geos_oracle.h"

using namespace xgtest;

namespace {

const double kNaN = std::numeric_limits<double>::quiet_NaN();

// Area by GEOS (nil: 0).
double area_of(const unsigned char* s) {
  static const GeosOracle oracle;
  if (xgWKB_shape_is_nil(s)) return 0;
  GeosGeom g(oracle, oracle.to_geos(s));
  return oracle.area(g.get());
}

Bytes envelope(double minx, double miny, double maxx, double maxy) {
  Bytes b = header(XGWKB_TYPE_ENVELOPE);
  for (double v : {minx, miny, maxx, maxy}) put_f64(b, v);
  return b;
}

// The u32 after the header: the member count of a multi-type.
uint32_t count_of(const unsigned char* s) {
  uint32_t n = 0;
  std::memcpy(&n, s + 5, 4);
  return n;
}

}  // namespace

TEST(Buffer, PointGivesTheExactCircleBlock) {
  Out out;
  ASSERT_EQ(xgWKB_shape_generate_buffer(Misaligned(point(3, -2)).data(), 1, &out.p, 0), 0);
  Bytes want = header(XGWKB_TYPE_MULTIPOLYGON);
  put_u32(want, 1);
  put_header(want, XGWKB_TYPE_POLYGON);
  put_u32(want, 1);
  put_u32(want, 41);
  const double two_pi = 6.2831855f;  // the single-precision constant, written out independently
  for (int i = 0; i <= 40; ++i) {
    const double a = i % 40 * two_pi / 40.0f;
    put_f64(want, i % 40 == 0 ? 4.0 : 3 + std::cos(a));
    put_f64(want, i % 40 == 0 ? -2.0 : -2 + std::sin(a));
  }
  ASSERT_EQ(want.size(), 678u);
  EXPECT_EQ(Bytes(out.p, out.p + 678), want);
  // The eleventh point is a quarter turn on, up to the float rounding of 2pi.
  double x11, y11;
  std::memcpy(&x11, out.p + 22 + 10 * 16, 8);
  std::memcpy(&y11, out.p + 30 + 10 * 16, 8);
  EXPECT_NEAR(x11, 3, 1e-7);
  EXPECT_NEAR(y11, -1, 1e-12);
}

TEST(Buffer, MinimumRadiusDecidesWhetherABufferIsMade) {
  const Bytes pt = point(0, 0), line = linestring({{0, 0}, {4, 0}});
  const Bytes sq = polygon({square(0, 0, 10)});
  static unsigned char sentinel;
  const struct {
    const char* name;
    const Bytes& shape;
    double d, m;
    bool made;
    unsigned char* unmade;  // what *out holds when nothing is made
  } cases[] = {
      {"point d = m", pt, 2, 2, true, nullptr},
      {"point d < m", pt, 1.999, 2, false, nullptr},  // null stored
      {"line d = m", line, 2, 2, true, nullptr},
      {"line d < m", line, 1, 2, false, &sentinel},  // left unwritten
      {"polygon |d| < m", sq, -1, 2, false, &sentinel},
      {"polygon |d| = m", sq, -2, 2, true, nullptr},
  };
  for (const auto& c : cases) {
    Out out;
    out.p = &sentinel;
    EXPECT_EQ(xgWKB_shape_generate_buffer(c.shape.data(), c.d, &out.p, c.m), 0) << c.name;
    if (c.made) {
      EXPECT_NE(out.p, &sentinel) << c.name;
      EXPECT_GT(area_of(out.p), 0) << c.name;
    } else {
      EXPECT_EQ(out.p, c.unmade) << c.name;
    }
    if (out.p == &sentinel) out.p = nullptr;
  }
}

TEST(Buffer, LinesAndPolygonsGiveTheUnitedRegion) {
  // A two-point line: two circles and a rectangle make one polygon.
  Out line;
  ASSERT_EQ(xgWKB_shape_generate_buffer(linestring({{0, 0}, {10, 0}}).data(), 1, &line.p, 0), 0);
  EXPECT_EQ(count_of(line.p), 1u);
  const double disc40 = 20 * std::sin(2 * M_PI / 40);  // area of the 40-gon of radius 1
  EXPECT_NEAR(area_of(line.p), 20 + disc40, 1e-3);

  // A square shrunk by 1 on every side, exactly.
  Out shrunk;
  ASSERT_EQ(xgWKB_shape_generate_buffer(polygon({square(0, 0, 10)}).data(), -1, &shrunk.p, 0), 0);
  EXPECT_EQ(shrunk.p[1], XGWKB_TYPE_MULTIPOLYGON);
  EXPECT_DOUBLE_EQ(area_of(shrunk.p), 64);

  // A grown square: the square plus the strips and rounded corners (the 40-gon's quarters).
  Out grown;
  ASSERT_EQ(xgWKB_shape_generate_buffer(polygon({square(0, 0, 10)}).data(), 1, &grown.p, 0), 0);
  EXPECT_NEAR(area_of(grown.p), 100 + 40 + disc40, 1e-3);

  // Two far points of a multipoint: two discs.
  Out two;
  ASSERT_EQ(xgWKB_shape_generate_buffer(
                multi(XGWKB_TYPE_MULTIPOINT, {point(0, 0), point(100, 0)}).data(), 1, &two.p, 0),
            0);
  EXPECT_EQ(count_of(two.p), 2u);
  EXPECT_NEAR(area_of(two.p), 2 * disc40, 1e-9);

  // A square shrunk to nothing: nil.
  Out gone;
  ASSERT_EQ(xgWKB_shape_generate_buffer(polygon({square(0, 0, 10)}).data(), -6, &gone.p, 0), 0);
  EXPECT_EQ(gone.bytes(), nil());
}

TEST(Buffer, BadInputGivesAStatusAndStoresNothing) {
  const Bytes line = linestring({{0, 0}, {kNaN, 1}});
  const Bytes bad_multi = multi(XGWKB_TYPE_MULTIPOINT, {linestring({{0, 0}, {1, 1}})});
  const Bytes text = header(XGWKB_TYPE_SINGLETEXT);
  const Bytes pt = point(0, 0), nil_shape = nil();
  const struct {
    const char* name;
    const unsigned char* shape;
    double d;
    int32_t status;
  } cases[] = {
      {"null", nullptr, 1, XGWKB_E_NULL_POINTER},
      {"nil", nil_shape.data(), 1, XGWKB_E_INVALID_ENTITY},
      {"annotation", text.data(), 1, XGWKB_E_INVALID_ENTITY},
      {"foreign member", bad_multi.data(), 1, XGWKB_E_INVALID_ENTITY},
      {"NaN coordinate", line.data(), 1, XGWKB_E_INVALID_ARGUMENT},
      {"NaN distance", pt.data(), kNaN, XGWKB_E_INVALID_ARGUMENT},
      {"infinite distance", pt.data(), INFINITY, XGWKB_E_INVALID_ARGUMENT},
  };
  for (const auto& c : cases) {
    Out out;
    EXPECT_EQ(xgWKB_shape_generate_buffer(c.shape, c.d, &out.p, 0), c.status) << c.name;
    EXPECT_EQ(out.p, nullptr) << c.name;
  }
  EXPECT_EQ(xgWKB_shape_generate_buffer(pt.data(), 1, nullptr, 0), XGWKB_E_NULL_POINTER);
}

TEST(Clip, PointsLinesAndPolygonsAgainstTheBox) {
  const Bytes box = envelope(0, 0, 10, 10);
  const struct {
    const char* name;
    Bytes shape;
    Bytes want;
    double t = 0.0001;
  } cases[] = {
      {"nil", nil(), nil()},
      {"point on the edge", point(10, 3), point(10, 3)},
      {"point just outside", point(10.000001, 3), nil()},
      {"multipoint keeps members in order",
       multi(XGWKB_TYPE_MULTIPOINT, {point(1, 1), point(11, 1), point(0, 10)}),
       multi(XGWKB_TYPE_MULTIPOINT, {point(1, 1), point(0, 10)})},
      {"parallel 0.00005 outside: kept whole", linestring({{2, 10.00005}, {8, 10.00005}}),
       multiline({{{2, 10.00005}, {8, 10.00005}}})},
      {"leaving and re-entering: two parts", linestring({{1, 1}, {5, 15}, {9, 1}}),
       multiline({{{1, 1}, {3.5714285714285716, 10}}, {{6.4285714285714288, 10}, {9, 1}}})},
      {"pieces joined within t", linestring({{-5, 5}, {5, 5}, {5, 8}, {20, 8}}),
       multiline({{{0, 5}, {5, 5}, {5, 8}, {10, 8}}})},
      {"t = 0 joins nothing", linestring({{-5, 5}, {5, 5}, {5, 8}}), multiline({{{0, 5}, {5, 5}}, {{5, 5}, {5, 8}}}),
       0},
      {"wholly outside", linestring({{-5, -5}, {-1, 20}}), nil()},
      {"multilinestring: parts of all members", multiline({{{-1, 1}, {1, 1}}, {{20, 0}, {30, 0}}, {{9, 9}, {11, 11}}}),
       multiline({{{0, 1}, {1, 1}}, {{9, 9}, {10, 10}}})},
      {"polygon larger than the box: the box", polygon({square(-5, -5, 20)}),
       mp({polygon({{{10, 10}, {0, 10}, {0, 0}, {10, 0}, {10, 10}}})})},
      {"polygon outside", polygon({square(20, 20, 5)}), nil()},
  };
  for (const auto& c : cases) {
    Out out;
    ASSERT_EQ(xgWKB_shape_clip(Misaligned(c.shape).data(), Misaligned(box).data(), &out.p, c.t), 0) << c.name;
    EXPECT_EQ(out.bytes(), c.want) << c.name;
  }
}

TEST(Clip, OnlyAMultipolygonIsCleaned) {
  // (5, 5.00005) lies within 0.0001 of the line through its neighbours.
  const Ring ring{{0, 0}, {10, 0}, {10, 10}, {5, 10.00005}, {0, 10}, {0, 0}};
  const Bytes box = envelope(-1, 2, 20, 20);
  Out as_polygon, as_multi;
  ASSERT_EQ(xgWKB_shape_clip(polygon({ring}).data(), box.data(), &as_polygon.p, 0), 0);
  ASSERT_EQ(xgWKB_shape_clip(mp({polygon({ring})}).data(), box.data(), &as_multi.p, 0), 0);
  uint32_t n_poly = 0, n_multi = 0;
  // Points of the one ring: the near-collinear vertex stays only in the polygon's result.
  std::memcpy(&n_poly, as_polygon.p + 18, 4);
  std::memcpy(&n_multi, as_multi.p + 18, 4);
  EXPECT_EQ(n_poly, 6u);
  EXPECT_EQ(n_multi, 5u);
  EXPECT_NEAR(area_of(as_polygon.p), area_of(as_multi.p), 1e-3);
}

TEST(Clip, StatusesAndUnusualBoxes) {
  const Bytes box = envelope(0, 0, 10, 10), pt = point(1, 1), text = header(XGWKB_TYPE_SINGLETEXT);
  Out out;
  EXPECT_EQ(xgWKB_shape_clip(nullptr, box.data(), &out.p, 0), XGWKB_E_NULL_POINTER);
  EXPECT_EQ(xgWKB_shape_clip(pt.data(), nullptr, &out.p, 0), XGWKB_E_NULL_POINTER);
  EXPECT_EQ(xgWKB_shape_clip(text.data(), box.data(), &out.p, 0), XGWKB_E_INVALID_ENTITY);
  EXPECT_EQ(xgWKB_shape_clip(polygon({{{0, 0}, {kNaN, 1}, {1, 1}, {0, 0}}}).data(), box.data(), &out.p, 0),
            XGWKB_E_INVALID_ARGUMENT);
  EXPECT_EQ(out.p, nullptr);
  // A box turned inside out: no point is in it; lines and polygons run through the formulas.
  const Bytes inverted = envelope(10, 10, 0, 0);
  for (const Bytes& s : {point(5, 5), linestring({{-5, 5}, {15, 5}, {5, -5}, {5, 15}}), polygon({square(-5, -5, 20)})}) {
    Out r;
    EXPECT_EQ(xgWKB_shape_clip(s.data(), inverted.data(), &r.p, 0.0001), 0);
    ASSERT_NE(r.p, nullptr);
  }
  // NaN coordinates in a line come through without harm.
  Out nan_line;
  EXPECT_EQ(xgWKB_shape_clip(linestring({{1, 1}, {kNaN, 2}, {3, 3}}).data(), box.data(), &nan_line.p, 0.1), 0);
}

TEST(CutLine, PiecesInsideAndOutsideInLineOrder) {
  const Bytes sq = polygon({square(0, 0, 10)});
  // Crossing twice, with a stretch along the boundary (which counts as inside).
  const Bytes line = linestring({{-5, 5}, {5, 5}, {5, 20}, {10, 20}, {10, 5}, {10, 0}, {15, 0}});
  _xgWKB_LINE_PIECES pieces{nullptr, nullptr};
  ASSERT_EQ(xgWKB_shape_ClipLinestringPolygon(line.data(), sq.data(), &pieces, 0.0001), 1);
  Out inside, outside;
  inside.p = pieces.inside;
  outside.p = pieces.outside;
  EXPECT_EQ(inside.bytes(), multiline({{{0, 5}, {5, 5}, {5, 10}}, {{10, 10}, {10, 5}, {10, 0}}}));
  EXPECT_EQ(outside.bytes(), multiline({{{-5, 5}, {0, 5}}, {{5, 10}, {5, 20}, {10, 20}, {10, 10}}, {{10, 0}, {15, 0}}}));

  // Wholly outside: nil inside.
  _xgWKB_LINE_PIECES far{nullptr, nullptr};
  ASSERT_EQ(xgWKB_shape_ClipLinestringPolygon(linestring({{20, 20}, {30, 30}}).data(), sq.data(), &far, 1e-9), 1);
  Out fi, fo;
  fi.p = far.inside;
  fo.p = far.outside;
  EXPECT_EQ(fi.bytes(), nil());
  EXPECT_EQ(fo.bytes(), multiline({{{20, 20}, {30, 30}}}));

  // Failures leave the pieces as they were.
  unsigned char marker = 0;
  const Bytes nan_line = linestring({{0, 0}, {kNaN, 1}});
  const struct {
    const unsigned char *line, *polygon;
  } bad[] = {{nullptr, sq.data()}, {line.data(), nullptr}, {sq.data(), sq.data()}, {line.data(), line.data()},
             {nan_line.data(), sq.data()}};
  for (const auto& b : bad) {
    _xgWKB_LINE_PIECES p{&marker, &marker};
    EXPECT_EQ(xgWKB_shape_ClipLinestringPolygon(b.line, b.polygon, &p, 1e-9), -1);
    EXPECT_TRUE(p.inside == &marker && p.outside == &marker);
  }
  EXPECT_EQ(xgWKB_shape_ClipLinestringPolygon(line.data(), sq.data(), nullptr, 1e-9), -1);
}
