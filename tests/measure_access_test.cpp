// Part and point access: counts, per-part copies and the offset arrays of get_all_points.
#include <gtest/gtest.h>

#include <vector>

#include "support/blob_builder.h"

using namespace xgtest;

namespace {

Ring ring_n(double x0, uint32_t n) {
  Ring r;
  for (uint32_t i = 0; i < n; ++i) r.push_back({x0 + i, static_cast<double>(i)});
  return r;
}

Bytes two_polygon_multipolygon() {
  return multi(XGWKB_TYPE_MULTIPOLYGON, {polygon({ring_n(0, 5)}), polygon({ring_n(100, 6), ring_n(200, 4)})});
}

}  // namespace

TEST(PartCounts, PartsAndSubparts) {
  uint32_t n = 99;
  EXPECT_EQ(xgWKB_shape_get_num_parts(linestring(ring_n(0, 3)).data(), &n), XGWKB_E_INVALID_ENTITY);
  EXPECT_EQ(n, 0u);
  EXPECT_EQ(xgWKB_shape_get_num_parts(point(1, 1).data(), &n), XGWKB_E_INVALID_ENTITY);
  ASSERT_EQ(xgWKB_shape_get_num_parts(polygon({ring_n(0, 5), ring_n(1, 4)}).data(), &n), 0);
  EXPECT_EQ(n, 2u);
  ASSERT_EQ(xgWKB_shape_get_num_parts(two_polygon_multipolygon().data(), &n), 0);
  EXPECT_EQ(n, 2u);
  EXPECT_EQ(xgWKB_shape_get_num_parts(nullptr, &n), XGWKB_E_NULL_POINTER);

  const Bytes mp = two_polygon_multipolygon();
  const struct {
    int32_t part;
    int32_t status;
    uint32_t count;
  } sub[] = {{0, 0, 3}, {1, 0, 1}, {2, 0, 2}, {3, XGWKB_E_INVALID_PART_OFFSET, 0}, {-1, XGWKB_E_INVALID_PART_OFFSET, 0}};
  for (const auto& c : sub) {
    n = 99;
    EXPECT_EQ(xgWKB_shape_get_num_subparts(mp.data(), c.part, &n), c.status) << c.part;
    EXPECT_EQ(n, c.count) << c.part;
  }
  EXPECT_EQ(xgWKB_shape_get_num_subparts(polygon({ring_n(0, 5)}).data(), 0, &n), XGWKB_E_INVALID_ENTITY);
  EXPECT_EQ(n, 1u);
  EXPECT_EQ(xgWKB_shape_get_num_subparts(nullptr, 0, &n), XGWKB_E_NULL_POINTER);
  EXPECT_EQ(n, 0u);
}

TEST(PointCounts, ByPartAndSubpart) {
  const Bytes pg = polygon({ring_n(0, 5), ring_n(1, 4)});
  const Bytes ml = multi(XGWKB_TYPE_MULTILINESTRING, {linestring(ring_n(0, 2)), linestring(ring_n(0, 7))});
  const Bytes mp = two_polygon_multipolygon();
  const struct {
    const Bytes* blob;
    int32_t part, sub;
    int32_t status;
    uint32_t count;
  } cases[] = {
      {&pg, 0, 0, 0, 9},   {&pg, 2, 5, 0, 4},  {&pg, 3, 0, XGWKB_E_INVALID_PART_OFFSET, 0},
      {&ml, 0, 0, 0, 9},   {&ml, 2, 0, 0, 7},  {&ml, -1, 0, XGWKB_E_INVALID_PART_OFFSET, 0},
      {&mp, 0, 7, 0, 15},  {&mp, 2, 0, 0, 10}, {&mp, 2, 2, 0, 4},
      {&mp, 2, 9, XGWKB_E_INVALID_PART_OFFSET, 0}, {&mp, 3, 0, XGWKB_E_INVALID_PART_OFFSET, 0},
  };
  for (const auto& c : cases) {
    Misaligned m(*c.blob);
    uint32_t n = 99;
    EXPECT_EQ(xgWKB_shape_get_num_points(m.data(), c.part, c.sub, &n), c.status) << c.part << "/" << c.sub;
    EXPECT_EQ(n, c.status == 0 ? c.count : 0u) << c.part << "/" << c.sub;
  }
  uint32_t n = 0;
  EXPECT_EQ(xgWKB_shape_get_num_points(point(0, 0).data(), 5, 5, &n), 0);
  EXPECT_EQ(n, 1u);
  EXPECT_EQ(xgWKB_shape_get_num_points(nil().data(), 0, 0, &n), XGWKB_E_INVALID_SHAPE);
}

TEST(PointCopies, OnePartAtATime) {
  const Bytes mp = two_polygon_multipolygon();
  Misaligned m(mp);
  std::vector<_xgWKB_POINT> pts(10, _xgWKB_POINT{-1, -1});
  ASSERT_EQ(xgWKB_shape_get_points(m.data(), 2, pts.data()), 0);
  EXPECT_EQ(pts[0].x, 100);
  EXPECT_EQ(pts[5].x, 105);
  EXPECT_EQ(pts[6].x, 200);
  EXPECT_EQ(pts[9].x, 203);
  EXPECT_EQ(xgWKB_shape_get_points(m.data(), 0, pts.data()), XGWKB_E_INVALID_PART_OFFSET);
  EXPECT_EQ(xgWKB_shape_get_points(polygon({ring_n(0, 5)}).data(), 0, pts.data()), XGWKB_E_INVALID_PART_OFFSET);

  std::vector<_xgWKB_POINT> two(2);
  Misaligned mpt(multi(XGWKB_TYPE_MULTIPOINT, {point(1, 2), point(3, 4)}));
  ASSERT_EQ(xgWKB_shape_get_points(mpt.data(), 77, two.data()), 0);  // index ignored
  EXPECT_EQ(two[1].y, 4);
}

TEST(AllPoints, OffsetsOfPolygonsAndMultipolygons) {
  std::vector<_xgWKB_POINT> pts(16);
  int32_t parts[4] = {-9, -9, -9, -9}, subs[4] = {-9, -9, -9, -9};

  ASSERT_EQ(xgWKB_shape_get_all_points(polygon({ring_n(0, 5), ring_n(50, 4)}).data(), parts, subs, pts.data()), 0);
  EXPECT_EQ(pts[8].x, 53);
  EXPECT_EQ(std::vector<int32_t>(parts, parts + 3), (std::vector<int32_t>{0, 5, -9}));
  EXPECT_EQ(std::vector<int32_t>(subs, subs + 3), (std::vector<int32_t>{0, 5, -9}));

  const Bytes two_simple = multi(XGWKB_TYPE_MULTIPOLYGON, {polygon({ring_n(0, 5)}), polygon({ring_n(9, 5)})});
  ASSERT_EQ(xgWKB_shape_get_all_points(two_simple.data(), parts, subs, pts.data()), 0);
  EXPECT_EQ(parts[0], 0);
  EXPECT_EQ(parts[1], 1);
  EXPECT_EQ(subs[0], 0);
  EXPECT_EQ(subs[1], 5);

  // Parts index the subpart array: polygon 2's rings start at subpart 1.
  ASSERT_EQ(xgWKB_shape_get_all_points(two_polygon_multipolygon().data(), parts, subs, pts.data()), 0);
  EXPECT_EQ(std::vector<int32_t>(parts, parts + 2), (std::vector<int32_t>{0, 1}));
  EXPECT_EQ(std::vector<int32_t>(subs, subs + 3), (std::vector<int32_t>{0, 5, 11}));
  EXPECT_EQ(pts[14].x, 203);

  const Bytes ml = multi(XGWKB_TYPE_MULTILINESTRING, {linestring(ring_n(0, 2)), linestring(ring_n(0, 3))});
  ASSERT_EQ(xgWKB_shape_get_all_points(ml.data(), nullptr, subs, pts.data()), 0);  // arrays are optional
  EXPECT_EQ(subs[1], 2);
}

TEST(AllPoints, SimpleTypesLeaveOffsetArraysAlone) {
  int32_t parts[2] = {-9, -9}, subs[2] = {-9, -9};
  std::vector<_xgWKB_POINT> pts(3);
  ASSERT_EQ(xgWKB_shape_get_all_points(linestring(ring_n(0, 3)).data(), parts, subs, pts.data()), 0);
  EXPECT_EQ(parts[0], -9);
  EXPECT_EQ(subs[0], -9);
  EXPECT_EQ(pts[2].x, 2);
  EXPECT_EQ(xgWKB_shape_get_all_points(nullptr, parts, subs, pts.data()), XGWKB_E_NULL_POINTER);
  EXPECT_EQ(xgWKB_shape_get_all_points(nil().data(), parts, subs, pts.data()), XGWKB_E_INVALID_SHAPE);
}
