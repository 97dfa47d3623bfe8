// Point primitives: equality, moves, angles and the point-against-segment/run/ring relations.
#include <gtest/gtest.h>

#include <cmath>
#include <tuple>

#include "xggeokit.h"

TEST(PointEquality, StrictOnEachOfTheFourSides) {
  // t and the offsets are exact in binary, so each point below lies exactly t from a on one side.
  const _xgWKB_POINT a{1, 1}, sides[] = {{1.25, 1}, {0.75, 1}, {1, 1.25}, {1, 0.75}};
  const double t = 0.25;
  for (const _xgWKB_POINT& b : sides) {
    // Both argument orders: a lies on one side of b and b on the opposite side of a.
    EXPECT_EQ(xgWKB_baseGeo_point_is_equal(&a, &b, t), 0) << b.x << "," << b.y;
    EXPECT_EQ(xgWKB_baseGeo_point_is_equal(&b, &a, t), 0) << b.x << "," << b.y;
    EXPECT_EQ(xgWKB_baseGeo_point_is_equal(&a, &b, t * (1 + 1e-12)), 1) << b.x << "," << b.y;
    EXPECT_EQ(xgWKB_baseGeo_point_is_equal(&b, &a, t * (1 + 1e-12)), 1) << b.x << "," << b.y;
  }
  EXPECT_EQ(xgWKB_baseGeo_point_is_equal(&a, &a, 0.0), 0);  // tolerance 0: never equal
  EXPECT_EQ(xgWKB_baseGeo_point_is_equal(&a, &a, 1e-12), 1);
}

TEST(PointMoves, OffsetIsSubtracted) {
  _xgWKB_POINT p{5, 7}, out{}, d{2, -3};
  xgWKB_baseGeo_move_point(&p, &d);
  xgWKB_baseGeo_moveEx_point(&p, &d, &out);
  EXPECT_EQ(std::make_tuple(p.x, p.y, out.x, out.y), std::make_tuple(3.0, 10.0, 1.0, 13.0));  // p kept by moveEx
  EXPECT_DOUBLE_EQ(xgWKB_baseGeo_point_calculate_distance(&p, &out), std::sqrt(4.0 + 9.0));
}

TEST(DirectionAngle, QuadrantsUseSinglePrecisionConstants) {
  const double pi_f = float(M_PI), half_pi_f = float(M_PI / 2), three_half_pi_f = float(1.5 * M_PI), two_pi_f = 2 * pi_f;
  const struct { _xgWKB_POINT from, to; double want; } cases[] = {
      {{0, 0}, {0, 0}, half_pi_f},  // equal points
      {{0, 0}, {0, 5}, half_pi_f},  {{0, 0}, {0, -1}, three_half_pi_f}, {{0, 0}, {-1, 0}, pi_f},
      {{0, 0}, {1, 0}, 0.0},        {{1, 1}, {2, 2}, std::atan(1.0)},   {{0, 0}, {-1, 1}, std::atan(-1.0) + pi_f},
      {{0, 0}, {-1, -1}, std::atan(1.0) + pi_f}, {{0, 0}, {1, -1}, std::atan(-1.0) + two_pi_f},
  };
  for (const auto& c : cases)
    EXPECT_EQ(xgWKB_baseGeo_point_calculate_angle(&c.from, &c.to), c.want) << c.to.x << "," << c.to.y;
  const _xgWKB_POINT o{0, 0}, below{1, -1e-300};
  EXPECT_GT(xgWKB_baseGeo_point_calculate_angle(&o, &below), 2 * M_PI);  // may exceed the double 2pi
}

TEST(PointSegmentRelation, ClassifiesAlongAndAcrossTheSegment) {
  const struct { _xgWKB_POINT p, a, b; double t; int32_t want; } cases[] = {
      {{5, 0}, {0, 0}, {10, 0}, 0.01, 1},         {{5, 0.009}, {0, 0}, {10, 0}, 0.01, 1},
      {{5, 0.011}, {0, 0}, {10, 0}, 0.01, 0},     {{5, -0.011}, {0, 0}, {10, 0}, 0.01, 0},
      {{0.00005, 0}, {0, 0}, {10, 0}, 5, 2},      {{10.00009, 0}, {0, 0}, {10, 0}, 0.01, 3},
      {{-3, 0}, {0, 0}, {10, 0}, 0.01, -2},       {{13, 0}, {0, 0}, {10, 0}, 0.01, -1},
      {{10.005, 0}, {0, 0}, {10, 0}, 0.01, 1},
      {{0.0002, 0}, {0, 0}, {10, 0}, 0.001, -2},  // on the segment but closer than t to a: before a
      {{0.002, 0}, {0, 0}, {10, 0}, 0.001, 1},
      {{1, 1}, {0, 0}, {2, 2}, 1e-9, 1},          {{3, 3}, {0, 0}, {2, 2}, 1e-9, -1},
      {{1, 1.1}, {0, 0}, {2, 2}, 0.01, 0},        // a slanted segment in its own frame
  };
  for (const auto& c : cases)
    EXPECT_EQ(xgWKB_baseGeo_point_line_relation(&c.p, &c.a, &c.b, c.t), c.want) << c.p.x << "," << c.p.y;
}

TEST(PointRunRelation, VerticesBeforeSegmentsAndNoClosingSegment) {
  const _xgWKB_POINT run[4] = {{0, 0}, {10, 0}, {10, 10}, {0, 10}};
  const std::pair<_xgWKB_POINT, int32_t> cases[] = {
      {{0, 0}, -1}, {{10, 0}, -2}, {{10, 10}, -3}, {{0, 10}, -4}, {{5, 0}, 1}, {{10, 5}, 2}, {{5, 10}, 3}, {{5, 5}, 0},
      {{0, 5}, 0}};
  for (const auto& c : cases)
    EXPECT_EQ(xgWKB_baseGeo_point_linestring_relation(&c.first, run, 4, 0.001), c.second) << c.first.x << c.first.y;
  const _xgWKB_POINT three[3] = {{1, 1}, {2, 2}, {1.00001, 1}};
  EXPECT_EQ(xgWKB_baseGeo_linestring_is_closed(three, 2, 0.001), 0);  // needs three points
  EXPECT_EQ(xgWKB_baseGeo_linestring_is_closed(three, 3, 0.001), 1);
  EXPECT_EQ(xgWKB_baseGeo_linestring_is_closed(three, 3, 0.00001), 0);
}

TEST(PointInRing, InsideOutsideAndBoundary) {
  // A concave ring with a horizontal edge and a vertex at y = 5.
  const _xgWKB_POINT ring[7] = {{0, 0}, {10, 0}, {10, 10}, {5, 5}, {0, 10}, {0, 0}, {0, 0}};
  const std::pair<_xgWKB_POINT, int32_t> cases[] = {
      {{2, 2}, 1},   {{8, 2}, 1},   {{5, 8}, 0},   {{-1, 5}, 0},   {{11, 5}, 0},
      {{2, 5}, 1},   // the ray through the reflex vertex at y = 5 counts it once
      {{-1, 0}, 0},  // on the line of the bottom edge, outside
      {{5, 0}, 2},   {{10, 10}, 2}, {{7.5, 7.5}, 2}, {{0, 3}, 2},
      {{5, 5.00005}, 2},  // within the fixed 0.0001 of a vertex
  };
  // The edge frames use the single-precision angle constants, which put a point on an edge up to
  // ~1e-7 off the carrier line; the tolerance must cover that.
  for (const auto& c : cases)
    EXPECT_EQ(xgWKB_baseGeo_point_simplePolygon_relation(&c.first, ring, 6, 1e-5), c.second)
        << c.first.x << "," << c.first.y;
  // An open ring has no closing edge: (0,5) is not on the boundary, the ray from (-5,5) crosses
  // the right edge only.
  const _xgWKB_POINT open[4] = {{0, 0}, {10, 0}, {10, 10}, {0, 10}}, on_missing_edge{0, 5}, left{-5, 5};
  EXPECT_EQ(xgWKB_baseGeo_point_simplePolygon_relation(&on_missing_edge, open, 4, 1e-5), 1);
  EXPECT_EQ(xgWKB_baseGeo_point_simplePolygon_relation(&left, open, 4, 1e-5), 1);
}
