// Metrics: length, area and centroid against GEOS on random polygons, the part-index rules of
// area, closedness and boundaries.
#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

#include "support/blob_builder.h"
#include "support/edit_result.h"
#include "support/geos_oracle.h"

using namespace xgtest;

TEST(Metrics, AreaLengthAndCentroidMatchGeosOnRandomPolygons) {
  GeosOracle oracle;
  std::mt19937 rng(20240611);
  std::uniform_real_distribution<double> centre(-1000, 1000), size(1, 500);
  for (int trial = 0; trial < 200; ++trial) {
    // A simple polygon with up to four holes placed apart from each other inside the outer ring.
    // Rings are star-shaped, radii in [0.7r, r], either orientation.  With 16 or more vertices
    // the outer ring keeps clear of the holes, which reach 0.6 r.
    const int holes = trial % 5;
    const _xgWKB_POINT o{centre(rng), centre(rng)};
    const double r = size(rng);
    std::vector<Ring> rings = {star_ring(rng, o, 0.7 * r, r, 16 + static_cast<int>(rng() % 45), rng() % 2)};
    for (int h = 0; h < holes; ++h) {
      const _xgWKB_POINT hc{o.x + 0.4 * r * std::cos(h * M_PI / 2), o.y + 0.4 * r * std::sin(h * M_PI / 2)};
      rings.push_back(star_ring(rng, hc, 0.14 * r, 0.2 * r, 3 + static_cast<int>(rng() % 38), rng() % 2));
    }
    const Bytes poly = polygon(rings);
    const Misaligned m(poly);
    GEOSContextHandle_t h = oracle.handle();
    GeosGeom g(oracle, oracle.to_geos(poly.data()));
    ASSERT_EQ(GEOSisValid_r(h, g.get()), 1) << trial;
    double area = 0, length = 0, got_area = 0, got_length = 0;
    ASSERT_EQ(GEOSArea_r(h, g.get(), &area) & GEOSLength_r(h, g.get(), &length), 1);
    ASSERT_EQ(xgWKB_shape_get_area(m.data(), 0, &got_area) | xgWKB_shape_get_length(m.data(), 0, &got_length), 0);
    EXPECT_NEAR(got_area, area, 1e-9 * area) << trial;
    EXPECT_NEAR(got_length, length, 1e-9 * length) << trial;
    if (holes > 0) continue;
    GeosGeom gc(oracle, GEOSGetCentroid_r(h, g.get()));
    double x = 0, y = 0;
    _xgWKB_POINT c{};
    ASSERT_EQ(GEOSGeomGetX_r(h, gc.get(), &x) & GEOSGeomGetY_r(h, gc.get(), &y), 1);
    ASSERT_EQ(xgWKB_shape_get_centroid(m.data(), &c), 0);
    EXPECT_NEAR(c.x, x, 1e-9 * (1 + std::fabs(x))) << trial;
    EXPECT_NEAR(c.y, y, 1e-9 * (1 + std::fabs(y))) << trial;
  }
}

TEST(Metrics, AreaAndLengthByPartIndexAndTheirRefusals) {
  // A polygon's area index skips the second ring (0 and 2 answer the whole of a one-hole
  // polygon); a ring's area adds no closing term.
  const auto area = xgWKB_shape_get_area, length = xgWKB_shape_get_length;
  const Bytes one_hole = polygon({square(0, 0, 10), square(2, 2, 2)});
  const Bytes two_holes = polygon({square(0, 0, 10), square(1, 1, 1), square(5, 5, 3)});
  const Bytes mpg = multi(XGWKB_TYPE_MULTIPOLYGON, {one_hole, polygon({square(20, 0, 3)})});
  const Bytes ml = multiline({{{0, 0}, {1, 0}}, {{0, 0}, {0, 5}}});
  const struct { decltype(area) metric; Bytes blob; int32_t part, status; double value; } cases[] = {
      {area, one_hole, 0, 0, 96}, {area, one_hole, 1, 0, 100}, {area, one_hole, 2, 0, 96},
      {area, two_holes, 2, 0, 9}, {area, two_holes, 3, 0, 90}, {area, two_holes, 4, -135, 0},
      {area, mpg, 0, 0, 105},     {area, mpg, 1, 0, 96},       {area, mpg, 2, 0, 9},
      {area, polygon({{{1, 1}, {3, 1}, {3, 3}, {1, 3}}}), 0, 0, 5},  // stored edges sum to 10, not 8
      {length, one_hole, 2, 0, 8}, {length, mpg, 1, 0, 48}, {length, ml, 2, 0, 5}, {length, ml, 3, -135, 0},
      {length, multi(XGWKB_TYPE_MULTIPOINT, {point(0, 0), point(1, 1)}), 0, -27, 0},
      {length, nil(), 0, -134, 0},
  };
  for (const auto& c : cases) {
    double v = -1;
    EXPECT_EQ((std::pair{c.metric(Misaligned(c.blob).data(), c.part, &v), v}), (std::pair{c.status, c.value}))
        << (c.metric == area ? "area " : "length ") << int{c.blob[1]} << "/" << c.part;
  }
}

TEST(Metrics, CentroidUsesTheOuterRingOnly) {
  _xgWKB_POINT c{};
  ASSERT_EQ(xgWKB_shape_get_centroid(polygon({square(0, 0, 10), square(6, 6, 3)}).data(), &c), 0);
  EXPECT_EQ(std::make_pair(c.x, c.y), std::make_pair(5.0, 5.0));
  // A degenerate ring answers its first point.
  ASSERT_EQ(xgWKB_shape_get_centroid(polygon({{{2, 2}, {4, 4}, {6, 6}, {2, 2}}}).data(), &c), 0);
  EXPECT_EQ(std::make_pair(c.x, c.y), std::make_pair(2.0, 2.0));
  EXPECT_EQ(xgWKB_shape_get_centroid(multi(XGWKB_TYPE_MULTIPOLYGON, {polygon({square(0, 0, 1)})}).data(), &c), -134);
  EXPECT_EQ(xgWKB_shape_get_centroid(nullptr, &c), -65);
}

TEST(Metrics, IsCloseComparesEndPointsWithinTheTolerance) {
  const Bytes almost = linestring({{0, 0}, {1, 0}, {0.05, 0}});
  EXPECT_EQ(xgWKB_shape_is_close(almost.data(), 0.1), 1);
  EXPECT_EQ(xgWKB_shape_is_close(almost.data(), 0.05), 0);
  EXPECT_EQ(xgWKB_shape_is_close(multi(XGWKB_TYPE_MULTILINESTRING, {}).data(), 0.1), 1);
  EXPECT_EQ(xgWKB_shape_is_close(multiline({square(0, 0, 1), {{0, 0}, {1, 0}, {0.05, 0}}}).data(), 0.05), 0);
  EXPECT_EQ(xgWKB_shape_is_close(polygon({square(0, 0, 1)}).data(), 0.1), -27);
}

TEST(Metrics, BoundaryOfEachType) {
  const Ring open = {{0, 0}, {2, 2}, {5, 5}};
  auto mpoint = [](std::initializer_list<Bytes> pts) { return multi(XGWKB_TYPE_MULTIPOINT, pts); };
  auto boundary = [](const Bytes& shape) { return on(xgWKB_shape_get_boundary, Misaligned(shape)); };
  const EditCase cases[] = {
      {"open line", boundary(linestring(open)), 0, mpoint({point(0, 0), point(5, 5)})},
      {"closed line", boundary(linestring(square(0, 0, 1))), 0, nil()},
      {"point", boundary(point(1, 1)), -208, nil()},
      {"a shared end cancels", boundary(multiline({open, {{5, 5}, {9, 0}}})), 0, mpoint({point(0, 0), point(9, 0)})},
      {"three ends at one point stay", boundary(multiline({{{0, 0}, {1, 0}}, {{0, 0}, {0, 1}}, {{-1, 0}, {0, 0}}})), 0,
       mpoint({point(0, 0), point(1, 0), point(0, 1), point(-1, 0)})},
      {"every end cancelled", boundary(multiline({{{0, 0}, {1, 0}}, {{1, 0}, {1, 1}}, {{1, 1}, {0, 0}}})), 0, nil()},
      {"nil", boundary(nil()), -134},
  };
  for (const EditCase& c : cases) check_edit(c);
}
