// Metrics: length, area and centroid against GEOS on random polygons, the part-index rules of
// area, closedness and boundaries.
#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "support/blob_builder.h"
#include "support/geos_oracle.h"

using namespace xgtest;

namespace {

struct Freer {
  void operator()(unsigned char* p) const { xgWKB_shape_free(p); }
};
using Shape = std::unique_ptr<unsigned char, Freer>;

// A closed star-shaped ring around c: m vertices at jittered angles, radii in [0.7r, r].
Ring star_ring(std::mt19937& rng, _xgWKB_POINT c, double r, int m, bool clockwise) {
  std::uniform_real_distribution<double> jitter(0.1, 0.9), radius(0.7 * r, r);
  Ring ring;
  for (int i = 0; i < m; ++i) {
    const double a = (i + jitter(rng)) * 2 * M_PI / m * (clockwise ? -1 : 1);
    const double rr = radius(rng);
    ring.push_back({c.x + rr * std::cos(a), c.y + rr * std::sin(a)});
  }
  ring.push_back(ring.front());
  return ring;
}

// A simple polygon with up to four holes placed apart from each other inside the outer ring.
Bytes random_polygon(std::mt19937& rng, int holes) {
  std::uniform_real_distribution<double> centre(-1000, 1000), size(1, 500);
  std::bernoulli_distribution flip(0.5);
  std::uniform_int_distribution<int> count(3, 40), outer_count(16, 60);
  const _xgWKB_POINT c{centre(rng), centre(rng)};
  const double r = size(rng);
  // With 16 or more vertices the outer ring keeps clear of the holes, which reach 0.6 r.
  std::vector<Ring> rings = {star_ring(rng, c, r, outer_count(rng), flip(rng))};
  for (int h = 0; h < holes; ++h) {
    const double a = h * M_PI / 2;
    const _xgWKB_POINT hc{c.x + 0.4 * r * std::cos(a), c.y + 0.4 * r * std::sin(a)};
    rings.push_back(star_ring(rng, hc, 0.2 * r, count(rng), flip(rng)));
  }
  return polygon(rings);
}

double area(const Bytes& s, int32_t part) {
  double a = -1;
  EXPECT_EQ(xgWKB_shape_get_area(Misaligned(s).data(), part, &a), 0);
  return a;
}

}  // namespace

TEST(Metrics, AreaLengthAndCentroidMatchGeosOnRandomPolygons) {
  GeosOracle oracle;
  std::mt19937 rng(20240611);
  for (int trial = 0; trial < 200; ++trial) {
    const int holes = trial % 5;
    const Bytes poly = random_polygon(rng, holes);
    const Misaligned m(poly);
    GeosGeom g(oracle, oracle.to_geos(poly.data()));
    ASSERT_EQ(GEOSisValid_r(oracle.handle(), g.get()), 1) << trial;
    double want = 0;
    double got = 0;
    ASSERT_EQ(GEOSArea_r(oracle.handle(), g.get(), &want), 1);
    ASSERT_EQ(xgWKB_shape_get_area(m.data(), 0, &got), 0);
    EXPECT_NEAR(got, want, 1e-9 * want) << trial;
    ASSERT_EQ(GEOSLength_r(oracle.handle(), g.get(), &want), 1);
    ASSERT_EQ(xgWKB_shape_get_length(m.data(), 0, &got), 0);
    EXPECT_NEAR(got, want, 1e-9 * want) << trial;
    if (holes == 0) {
      GeosGeom gc(oracle, GEOSGetCentroid_r(oracle.handle(), g.get()));
      double x = 0, y = 0;
      GEOSGeomGetX_r(oracle.handle(), gc.get(), &x);
      GEOSGeomGetY_r(oracle.handle(), gc.get(), &y);
      _xgWKB_POINT c{};
      ASSERT_EQ(xgWKB_shape_get_centroid(m.data(), &c), 0);
      EXPECT_NEAR(c.x, x, 1e-9 * (1 + std::fabs(x))) << trial;
      EXPECT_NEAR(c.y, y, 1e-9 * (1 + std::fabs(y))) << trial;
    }
  }
}

TEST(Metrics, PolygonAreaIndexSkipsTheSecondRingAndAddsNoClosingTerm) {
  const Bytes one_hole = polygon({square(0, 0, 10), square(2, 2, 2)});
  EXPECT_DOUBLE_EQ(area(one_hole, 0), 96);
  EXPECT_DOUBLE_EQ(area(one_hole, 1), 100);
  EXPECT_DOUBLE_EQ(area(one_hole, 2), 96);  // the ring count answers the whole polygon
  const Bytes two_holes = polygon({square(0, 0, 10), square(1, 1, 1), square(5, 5, 3)});
  EXPECT_DOUBLE_EQ(area(two_holes, 2), 9);   // the third ring
  EXPECT_DOUBLE_EQ(area(two_holes, 3), 90);
  double a = -1;
  EXPECT_EQ(xgWKB_shape_get_area(two_holes.data(), 4, &a), -135);
  EXPECT_EQ(a, 0);
  // No closing term: the stored edges of (1,1) (3,1) (3,3) (1,3) sum to 10, half of it 5, not 4.
  EXPECT_DOUBLE_EQ(area(polygon({{{1, 1}, {3, 1}, {3, 3}, {1, 3}}}), 0), 5);
}

TEST(Metrics, MultipolygonAreaAndLengthByPart) {
  const Bytes mpg = multi(XGWKB_TYPE_MULTIPOLYGON,
                          {polygon({square(0, 0, 10), square(2, 2, 2)}), polygon({square(20, 0, 3)})});
  EXPECT_DOUBLE_EQ(area(mpg, 0), 105);
  EXPECT_DOUBLE_EQ(area(mpg, 1), 96);
  EXPECT_DOUBLE_EQ(area(mpg, 2), 9);
  double len = -1;
  ASSERT_EQ(xgWKB_shape_get_length(mpg.data(), 1, &len), 0);
  EXPECT_DOUBLE_EQ(len, 48);
}

TEST(Metrics, LengthRefusesPointsAndForeignTypes) {
  struct Case {
    std::string name;
    Bytes shape;
    int32_t part;
    int32_t status;
    double length;
  } cases[] = {
      {"polygon ring 2", polygon({square(0, 0, 10), square(2, 2, 2)}), 2, 0, 8},
      {"multiline member 2", multi(XGWKB_TYPE_MULTILINESTRING,
                                   {linestring({{0, 0}, {1, 0}}), linestring({{0, 0}, {0, 5}})}), 2, 0, 5},
      {"multiline part too large", multi(XGWKB_TYPE_MULTILINESTRING, {linestring({{0, 0}, {1, 0}})}), 2, -135, 0},
      {"multipoint", multi(XGWKB_TYPE_MULTIPOINT, {point(0, 0), point(1, 1)}), 0, -27, 0},
      {"nil", nil(), 0, -134, 0},
  };
  for (const Case& c : cases) {
    double len = -1;
    EXPECT_EQ(xgWKB_shape_get_length(Misaligned(c.shape).data(), c.part, &len), c.status) << c.name;
    EXPECT_DOUBLE_EQ(len, c.length) << c.name;
  }
}

TEST(Metrics, CentroidUsesTheOuterRingOnly) {
  _xgWKB_POINT c{};
  ASSERT_EQ(xgWKB_shape_get_centroid(polygon({square(0, 0, 10), square(6, 6, 3)}).data(), &c), 0);
  EXPECT_DOUBLE_EQ(c.x, 5);
  EXPECT_DOUBLE_EQ(c.y, 5);
  // A degenerate ring answers its first point.
  ASSERT_EQ(xgWKB_shape_get_centroid(polygon({{{2, 2}, {4, 4}, {6, 6}, {2, 2}}}).data(), &c), 0);
  EXPECT_EQ(c.x, 2);
  EXPECT_EQ(c.y, 2);
  const Bytes mpg = multi(XGWKB_TYPE_MULTIPOLYGON, {polygon({square(0, 0, 1)})});
  EXPECT_EQ(xgWKB_shape_get_centroid(mpg.data(), &c), -134);
  EXPECT_EQ(xgWKB_shape_get_centroid(nullptr, &c), -65);
}

TEST(Metrics, IsCloseComparesEndPointsWithinTheTolerance) {
  const Bytes almost = linestring({{0, 0}, {1, 0}, {0.05, 0}});
  EXPECT_EQ(xgWKB_shape_is_close(almost.data(), 0.1), 1);
  EXPECT_EQ(xgWKB_shape_is_close(almost.data(), 0.05), 0);
  EXPECT_EQ(xgWKB_shape_is_close(multi(XGWKB_TYPE_MULTILINESTRING, {}).data(), 0.1), 1);
  EXPECT_EQ(xgWKB_shape_is_close(multi(XGWKB_TYPE_MULTILINESTRING, {linestring(square(0, 0, 1)), almost}).data(), 0.05), 0);
  EXPECT_EQ(xgWKB_shape_is_close(polygon({square(0, 0, 1)}).data(), 0.1), -27);
}

TEST(Metrics, BoundaryOfEachType) {
  const Bytes open = linestring({{0, 0}, {2, 2}, {5, 5}});
  struct Case {
    std::string name;
    Bytes shape;
    int32_t status;
    Bytes want;
  } cases[] = {
      {"open line", open, 0, multi(XGWKB_TYPE_MULTIPOINT, {point(0, 0), point(5, 5)})},
      {"closed line", linestring(square(0, 0, 1)), 0, nil()},
      {"point", point(1, 1), -208, nil()},
      {"lines sharing an end", multi(XGWKB_TYPE_MULTILINESTRING, {open, linestring({{5, 5}, {9, 0}})}), 0,
       multi(XGWKB_TYPE_MULTIPOINT, {point(0, 0), point(9, 0)})},
      {"three lines at one point keep it", multi(XGWKB_TYPE_MULTILINESTRING,
           {linestring({{0, 0}, {1, 0}}), linestring({{0, 0}, {0, 1}}), linestring({{-1, 0}, {0, 0}})}), 0,
       multi(XGWKB_TYPE_MULTIPOINT, {point(0, 0), point(1, 0), point(0, 1), point(-1, 0)})},
      {"every end cancelled", multi(XGWKB_TYPE_MULTILINESTRING,
           {linestring({{0, 0}, {1, 0}}), linestring({{1, 0}, {1, 1}}), linestring({{1, 1}, {0, 0}})}), 0, nil()},
  };
  for (const Case& c : cases) {
    unsigned char* out = nullptr;
    EXPECT_EQ(xgWKB_shape_get_boundary(Misaligned(c.shape).data(), &out), c.status) << c.name;
    ASSERT_NE(out, nullptr) << c.name;
    Shape hold(out);
    uint32_t size = 5;
    xgWKB_shape_get_WKB_size(out, &size);
    EXPECT_EQ(Bytes(out, out + size), c.want) << c.name;
  }
  unsigned char* out = nullptr;
  EXPECT_EQ(xgWKB_shape_get_boundary(nil().data(), &out), -134);
  EXPECT_EQ(out, nullptr);
}
