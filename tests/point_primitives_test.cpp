// Point primitives: equality, angles, rotation and the point-against-segment/run/ring relations.
#include <gtest/gtest.h>

#include <cmath>

#include "xggeokit.h"

namespace {

int32_t line_rel(_xgWKB_POINT p, _xgWKB_POINT a, _xgWKB_POINT b, double t) {
  return xgWKB_baseGeo_point_line_relation(&p, &a, &b, t);
}

double angle(_xgWKB_POINT from, _xgWKB_POINT to) { return xgWKB_baseGeo_point_calculate_angle(&from, &to); }

}  // namespace

TEST(PointEquality, StrictOnBothAxes) {
  const _xgWKB_POINT a{1, 1};
  const _xgWKB_POINT same = a;
  const _xgWKB_POINT dx{1.25, 1}, dy{1, 0.75};
  EXPECT_EQ(xgWKB_baseGeo_point_is_equal(&a, &same, 0.0), 0);  // tolerance 0: never equal
  EXPECT_EQ(xgWKB_baseGeo_point_is_equal(&a, &same, 1e-12), 1);
  EXPECT_EQ(xgWKB_baseGeo_point_is_equal(&a, &dx, 0.25), 0);  // exactly t apart
  EXPECT_EQ(xgWKB_baseGeo_point_is_equal(&a, &dy, 0.25), 0);
  EXPECT_EQ(xgWKB_baseGeo_point_is_equal(&a, &dx, 0.2500001), 1);
  EXPECT_EQ(xgWKB_baseGeo_point_is_equal(&dy, &a, 0.2500001), 1);
}

TEST(PointMoves, OffsetIsSubtracted) {
  _xgWKB_POINT p{5, 7};
  const _xgWKB_POINT d{2, -3};
  xgWKB_baseGeo_move_point(&p, &d);
  EXPECT_EQ(p.x, 3);
  EXPECT_EQ(p.y, 10);
  _xgWKB_POINT out{};
  xgWKB_baseGeo_moveEx_point(&p, &d, &out);
  EXPECT_EQ(out.x, 1);
  EXPECT_EQ(out.y, 13);
  EXPECT_EQ(p.x, 3);  // input untouched
  EXPECT_DOUBLE_EQ(xgWKB_baseGeo_point_calculate_distance(&p, &out), std::sqrt(4.0 + 9.0));
}

TEST(PointRotation, PositiveAngleTurnsClockwise) {
  _xgWKB_POINT p{1, 0};
  xgWKB_baseGeo_rotate_point(&p, M_PI / 2);
  EXPECT_NEAR(p.x, 0, 1e-15);
  EXPECT_NEAR(p.y, -1, 1e-15);
  _xgWKB_POINT q{3, 4};
  xgWKB_baseGeo_rotate_point(&q, 0.7);
  xgWKB_baseGeo_rotate_point(&q, -0.7);
  EXPECT_NEAR(q.x, 3, 1e-14);
  EXPECT_NEAR(q.y, 4, 1e-14);
}

TEST(DirectionAngle, QuadrantsUseSinglePrecisionConstants) {
  const double half_pi_f = 1.5707963705062866, pi_f = 3.1415927410125732;
  const double three_half_pi_f = 4.71238899230957, two_pi_f = 6.2831854820251465;
  EXPECT_EQ(angle({0, 0}, {0, 0}), half_pi_f);  // equal points
  EXPECT_EQ(angle({0, 0}, {0, 5}), half_pi_f);
  EXPECT_EQ(angle({0, 0}, {0, -1}), three_half_pi_f);
  EXPECT_EQ(angle({0, 0}, {-1, 0}), pi_f);
  EXPECT_EQ(angle({0, 0}, {1, 0}), 0.0);
  EXPECT_EQ(angle({1, 1}, {2, 2}), std::atan(1.0));
  EXPECT_EQ(angle({0, 0}, {-1, 1}), std::atan(-1.0) + pi_f);
  EXPECT_EQ(angle({0, 0}, {-1, -1}), std::atan(1.0) + pi_f);
  EXPECT_EQ(angle({0, 0}, {1, -1}), std::atan(-1.0) + two_pi_f);
  EXPECT_GT(angle({0, 0}, {1, -1e-300}), 2 * M_PI);  // may exceed the double 2pi slightly
}

TEST(PointSegmentRelation, ClassifiesAlongAndAcrossTheSegment) {
  const _xgWKB_POINT a{0, 0}, b{10, 0};
  struct Case {
    _xgWKB_POINT p;
    double t;
    int32_t want;
  };
  const Case cases[] = {
      {{5, 0}, 0.01, 1},        {{5, 0.009}, 0.01, 1},     {{5, 0.011}, 0.01, 0},
      {{5, -0.011}, 0.01, 0},   {{0.00005, 0}, 5, 2},      {{10.00009, 0}, 0.01, 3},
      {{-3, 0}, 0.01, -2},      {{13, 0}, 0.01, -1},       {{10.005, 0}, 0.01, 1},
      {{0.0002, 0}, 0.001, -2},  // on the segment but closer than t to a: counted before a
      {{0.002, 0}, 0.001, 1},
  };
  for (const Case& c : cases)
    EXPECT_EQ(line_rel(c.p, a, b, c.t), c.want) << c.p.x << "," << c.p.y << " t=" << c.t;
  // A slanted segment works in its own frame.
  EXPECT_EQ(line_rel({1, 1}, {0, 0}, {2, 2}, 1e-9), 1);
  EXPECT_EQ(line_rel({3, 3}, {0, 0}, {2, 2}, 1e-9), -1);
  EXPECT_EQ(line_rel({1, 1.1}, {0, 0}, {2, 2}, 0.01), 0);
}

TEST(PointRunRelation, VerticesBeforeSegments) {
  const _xgWKB_POINT run[4] = {{0, 0}, {10, 0}, {10, 10}, {0, 10}};
  struct Case {
    _xgWKB_POINT p;
    int32_t want;
  };
  const Case cases[] = {{{0, 0}, -1}, {{10, 0}, -2}, {{10, 10}, -3}, {{0, 10}, -4},
                        {{5, 0}, 1},  {{10, 5}, 2},  {{5, 10}, 3},   {{5, 5}, 0},
                        {{0, 5}, 0}};  // no closing segment
  for (const Case& c : cases)
    EXPECT_EQ(xgWKB_baseGeo_point_linestring_relation(&c.p, run, 4, 0.001), c.want) << c.p.x << "," << c.p.y;
}

TEST(RunClosedness, NeedsThreePoints) {
  const _xgWKB_POINT two[2] = {{1, 1}, {1, 1}};
  const _xgWKB_POINT three[3] = {{1, 1}, {2, 2}, {1.00001, 1}};
  EXPECT_EQ(xgWKB_baseGeo_linestring_is_closed(two, 2, 0.001), 0);
  EXPECT_EQ(xgWKB_baseGeo_linestring_is_closed(three, 3, 0.001), 1);
  EXPECT_EQ(xgWKB_baseGeo_linestring_is_closed(three, 3, 0.00001), 0);
}

TEST(PointInRing, InsideOutsideAndBoundary) {
  // A concave ring with a horizontal edge and a vertex at y = 5.
  const _xgWKB_POINT ring[7] = {{0, 0}, {10, 0}, {10, 10}, {5, 5}, {0, 10}, {0, 0}, {0, 0}};
  struct Case {
    _xgWKB_POINT p;
    int32_t want;
  };
  const Case cases[] = {
      {{2, 2}, 1},   {{8, 2}, 1},   {{5, 8}, 0},   {{-1, 5}, 0},   {{11, 5}, 0},
      {{2, 5}, 1},   // the ray through the reflex vertex at y = 5 counts it once
      {{-1, 0}, 0},  // on the line of the bottom edge, outside
      {{5, 0}, 2},   {{10, 10}, 2}, {{7.5, 7.5}, 2}, {{0, 3}, 2},
      {{5, 5.00005}, 2},  // within the fixed 0.0001 of a vertex
  };
  // The edge frames use the single-precision angle constants, which put a point on an edge up to
  // ~1e-7 off the carrier line; the tolerance must cover that.
  for (const Case& c : cases)
    EXPECT_EQ(xgWKB_baseGeo_point_simplePolygon_relation(&c.p, ring, 6, 1e-5), c.want)
        << c.p.x << "," << c.p.y;
}

TEST(PointInRing, OpenRingHasNoClosingEdge) {
  const _xgWKB_POINT open[4] = {{0, 0}, {10, 0}, {10, 10}, {0, 10}};
  // (0,5) would lie on the closing edge and (-5,5) outside; without that edge the first is not on
  // the boundary and the ray from the second crosses the right edge only.
  const _xgWKB_POINT on_missing_edge{0, 5}, left{-5, 5};
  EXPECT_EQ(xgWKB_baseGeo_point_simplePolygon_relation(&on_missing_edge, open, 4, 1e-5), 1);
  EXPECT_EQ(xgWKB_baseGeo_point_simplePolygon_relation(&left, open, 4, 1e-5), 1);
}
