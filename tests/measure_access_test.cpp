// Part and point access: counts, per-part copies and the offset arrays of get_all_points.
#include <gtest/gtest.h>

#include <vector>

#include "support/blob_builder.h"

using namespace xgtest;

namespace {

// n points (x0 + i, i): the x of a copied point tells where it came from.
Ring ring_n(double x0, uint32_t n) {
  Ring r;
  for (uint32_t i = 0; i < n; ++i) r.push_back({x0 + i, static_cast<double>(i)});
  return r;
}

const Bytes kPolygon = polygon({ring_n(0, 5), ring_n(50, 4)});
const Bytes kMultipolygon =
    multi(XGWKB_TYPE_MULTIPOLYGON, {polygon({ring_n(0, 5)}), polygon({ring_n(100, 6), ring_n(200, 4)})});
const Bytes kMultiline = multiline({ring_n(0, 2), ring_n(0, 7)});
constexpr int32_t kBad = XGWKB_E_INVALID_PART_OFFSET;

}  // namespace

TEST(PartCounts, PartsAndSubparts) {
  using Count = std::pair<int32_t, uint32_t>;  // status, count
  auto parts = [](const unsigned char* b) { uint32_t n = 99; return Count{xgWKB_shape_get_num_parts(b, &n), n}; };
  EXPECT_EQ(parts(linestring(ring_n(0, 3)).data()), Count(XGWKB_E_INVALID_ENTITY, 0));
  EXPECT_EQ(parts(kPolygon.data()), Count(0, 2));
  EXPECT_EQ(parts(nullptr).first, XGWKB_E_NULL_POINTER);
  const struct { const unsigned char* blob; int32_t part; Count want; } cases[] = {
      {kMultipolygon.data(), 0, {0, 3}},     {kMultipolygon.data(), 2, {0, 2}},
      {kMultipolygon.data(), 3, {kBad, 0}},  {kMultipolygon.data(), -1, {kBad, 0}},
      {kPolygon.data(), 0, {XGWKB_E_INVALID_ENTITY, 1}}, {nullptr, 0, {XGWKB_E_NULL_POINTER, 0}}};
  for (const auto& c : cases) {
    uint32_t n = 99;
    EXPECT_EQ((Count{xgWKB_shape_get_num_subparts(c.blob, c.part, &n), n}), c.want) << c.part;
  }
}

TEST(PointCounts, ByPartAndSubpart) {
  const struct { const Bytes* blob; int32_t part, sub, status; uint32_t count; } cases[] = {
      {&kPolygon, 0, 0, 0, 9},       {&kPolygon, 2, 5, 0, 4},       {&kPolygon, 3, 0, kBad, 0},
      {&kMultiline, 0, 0, 0, 9},     {&kMultiline, 2, 0, 0, 7},     {&kMultiline, -1, 0, kBad, 0},
      {&kMultipolygon, 0, 7, 0, 15}, {&kMultipolygon, 2, 0, 0, 10}, {&kMultipolygon, 2, 2, 0, 4},
      {&kMultipolygon, 2, 9, kBad, 0},       {&kMultipolygon, 3, 0, kBad, 0},
  };
  for (const auto& c : cases) {
    Misaligned m(*c.blob);
    uint32_t n = 99;
    const int32_t status = xgWKB_shape_get_num_points(m.data(), c.part, c.sub, &n);
    EXPECT_EQ(std::make_pair(status, n), std::make_pair(c.status, c.count)) << c.part << "/" << c.sub;
  }
  uint32_t n = 0;
  // Indices ignored.
  EXPECT_EQ((std::pair{xgWKB_shape_get_num_points(point(0, 0).data(), 5, 5, &n), n}), (std::pair{0, 1u}));
  EXPECT_EQ(xgWKB_shape_get_num_points(nil().data(), 0, 0, &n), XGWKB_E_INVALID_SHAPE);
}

TEST(PointCopies, OnePartAtATime) {
  Misaligned m(kMultipolygon);
  std::vector<_xgWKB_POINT> pts(10, _xgWKB_POINT{-1, -1});
  ASSERT_EQ(xgWKB_shape_get_points(m.data(), 2, pts.data()), 0);
  EXPECT_EQ(std::vector<double>({pts[0].x, pts[5].x, pts[6].x, pts[9].x}), std::vector<double>({100, 105, 200, 203}));
  EXPECT_EQ(xgWKB_shape_get_points(m.data(), 0, pts.data()), XGWKB_E_INVALID_PART_OFFSET);
  EXPECT_EQ(xgWKB_shape_get_points(kPolygon.data(), 0, pts.data()), XGWKB_E_INVALID_PART_OFFSET);
  Misaligned mpt(multi(XGWKB_TYPE_MULTIPOINT, {point(1, 2), point(3, 4)}));
  ASSERT_EQ(xgWKB_shape_get_points(mpt.data(), 77, pts.data()), 0);  // index ignored
  EXPECT_EQ(pts[1].y, 4);
}

TEST(AllPoints, OffsetsOfPolygonsAndMultipolygons) {
  // The entries written to the offset arrays, followed by one left alone, and the last point.
  using Offsets = std::vector<int32_t>;
  const struct { Bytes blob; Offsets parts, subs; _xgWKB_POINT last; } cases[] = {
      {kPolygon, {0, 5, -9}, {0, 5, -9}, {53, 3}},
      {multi(XGWKB_TYPE_MULTIPOLYGON, {polygon({ring_n(0, 5)}), polygon({ring_n(9, 5)})}), {0, 1, -9}, {0, 5, -9},
       {13, 4}},
      // Parts index the subpart array: polygon 2's rings start at subpart 1.
      {kMultipolygon, {0, 1, -9}, {0, 5, 11, -9}, {203, 3}},
      {kMultiline, {0, 2, -9}, {0, 2, -9}, {6, 6}},
      {linestring(ring_n(0, 3)), {-9}, {-9}, {2, 2}},  // simple types leave the arrays alone
  };
  for (const auto& c : cases) {
    std::vector<_xgWKB_POINT> pts(16, _xgWKB_POINT{-1, -1});
    Offsets parts(4, -9), subs(4, -9);
    Misaligned m(c.blob);
    ASSERT_EQ(xgWKB_shape_get_all_points(m.data(), parts.data(), subs.data(), pts.data()), 0);
    EXPECT_EQ(Offsets(parts.begin(), parts.begin() + c.parts.size()), c.parts) << c.blob[1];
    EXPECT_EQ(Offsets(subs.begin(), subs.begin() + c.subs.size()), c.subs) << c.blob[1];
    uint32_t n = 0;
    xgWKB_shape_get_num_points(m.data(), 0, 0, &n);
    EXPECT_EQ(std::make_pair(pts[n - 1].x, pts[n - 1].y), std::make_pair(c.last.x, c.last.y));
    EXPECT_EQ(pts[n].x, -1) << c.blob[1];
  }
  int32_t subs[2];
  _xgWKB_POINT pts[9];
  EXPECT_EQ(xgWKB_shape_get_all_points(kMultiline.data(), nullptr, subs, pts), 0);  // arrays are optional
  EXPECT_EQ(subs[1], 2);
  EXPECT_EQ(xgWKB_shape_get_all_points(nullptr, subs, subs, pts), XGWKB_E_NULL_POINTER);
  EXPECT_EQ(xgWKB_shape_get_all_points(nil().data(), subs, subs, pts), XGWKB_E_INVALID_SHAPE);
}
