// Merging two shapes: the point and line kernels to the byte, the joins of many lines, the
// collection of polygons and the statuses.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

#include "core/blob.h"
#include "support/blob_builder.h"

using namespace xgtest;

namespace {

struct Merged {
  int32_t status = 0;
  Bytes blob;
};

Merged merge(const Bytes& a, const Bytes& b, double t = 1e-6) {
  const Misaligned ma(a), mb(b);
  unsigned char* out = nullptr;
  Merged m;
  m.status = xgWKB_shape_merge(ma.data(), mb.data(), &out, t);
  if (m.status == XGWKB_OK) {
    uint32_t size = 0;
    EXPECT_EQ(xgWKB_shape_get_WKB_size(out, &size), XGWKB_OK);
    m.blob.assign(out, out + size);
  } else {
    EXPECT_EQ(out, nullptr);
  }
  xgWKB_shape_free(out);
  return m;
}

Bytes multipoint_of(const Ring& pts) {
  std::vector<Bytes> members;
  for (const _xgWKB_POINT& p : pts) members.push_back(point(p.x, p.y));
  return multi(XGWKB_TYPE_MULTIPOINT, members);
}

TEST(Merge, TwoLinesJoinByTheFourEndCases) {
  const struct {
    const char* name;
    Ring a, b, want;
  } cases[] = {
      {"case 1: first-first", {{1, 0}, {0, 0}}, {{1, 0}, {2, 0}}, {{0, 0}, {1, 0}, {2, 0}}},
      {"case 2: first-last", {{1, 0}, {2, 0}, {3, 1}}, {{0, 0}, {1, 0}}, {{0, 0}, {1, 0}, {2, 0}, {3, 1}}},
      {"case 3: last-first", {{0, 0}, {1, 0}}, {{1, 0}, {2, 0}}, {{0, 0}, {1, 0}, {2, 0}}},
      {"case 4: last-last", {{0, 0}, {1, 0}}, {{3, 3}, {2, 0}, {1, 0}}, {{0, 0}, {1, 0}, {2, 0}, {3, 3}}},
      {"case 1 wins over case 3", {{0, 0}, {1, 0}}, {{0, 0}, {5, 5}, {1, 0}}, {{1, 0}, {0, 0}, {5, 5}, {1, 0}}},
      {"ends equal within t, shared point from the first", {{0, 0}, {1, 0}}, {{1.0000001, 0}, {2, 0}},
       {{0, 0}, {1, 0}, {2, 0}}},
  };
  for (const auto& c : cases) {
    const Bytes a = linestring(c.a), b = linestring(c.b);
    const Merged m = merge(a, b);
    ASSERT_EQ(m.status, XGWKB_OK) << c.name;
    EXPECT_EQ(m.blob, linestring(c.want)) << c.name;
  }
  // Case 5 and the -1e-? neighbours: no end within t gives both lines as they are.
  const Bytes a = linestring({{0, 0}, {1, 0}}), b = linestring({{1.1, 0}, {2, 0}});
  EXPECT_EQ(merge(a, b).blob, multi(XGWKB_TYPE_MULTILINESTRING, {a, b}));
  EXPECT_EQ(merge(a, b, 0.1).blob, multi(XGWKB_TYPE_MULTILINESTRING, {a, b}));  // strict: 0.1 apart is not within
  // Sharing both ends: one line closing on itself (case 2 comes before case 3).
  EXPECT_EQ(merge(linestring({{0, 0}, {1, 0}}), linestring({{1, 0}, {0.5, 1}, {0, 0}})).blob,
            linestring({{1, 0}, {0.5, 1}, {0, 0}, {1, 0}}));
  EXPECT_EQ(merge(linestring({}), a).blob, multi(XGWKB_TYPE_MULTILINESTRING, {linestring({}), a}));
}

TEST(Merge, PointKernels) {
  const Bytes p = point(1, 1);
  EXPECT_EQ(merge(p, point(1.0000001, 1)).blob, p);
  EXPECT_EQ(merge(p, point(2, 2)).blob, multipoint_of({{1, 1}, {2, 2}}));
  // Only the first member is compared: a point equal to a later member is appended all the same
  // (intended).
  const Bytes mp = multipoint_of({{1, 1}, {5, 5}});
  EXPECT_EQ(merge(p, mp).blob, mp);
  EXPECT_EQ(merge(mp, p).blob, mp);
  EXPECT_EQ(merge(point(5, 5), mp).blob, multipoint_of({{1, 1}, {5, 5}, {5, 5}}));
  EXPECT_EQ(merge(mp, point(7, 7)).blob.size(), mp.size() + 21);
  EXPECT_EQ(merge(point(7, 7), multipoint_of({})).blob, multipoint_of({{7, 7}}));
  // Two multipoints: the second's members that equal none of the first's.
  EXPECT_EQ(merge(mp, multipoint_of({{5, 5.0000001}, {6, 6}, {1, 1}})).blob, multipoint_of({{1, 1}, {5, 5}, {6, 6}}));
  EXPECT_EQ(merge(mp, multipoint_of({{5, 5}}), 0).blob, multipoint_of({{1, 1}, {5, 5}, {5, 5}}));
  // Tolerances far below the coordinates' spacing (no grid cell can hold them) still find equals.
  EXPECT_EQ(merge(multipoint_of({{1e4, 1}}), multipoint_of({{1e4, 1}, {2, 2}}), 1e-12).blob,
            multipoint_of({{1e4, 1}, {2, 2}}));
}

TEST(Merge, ManyLinesJoinEndToEnd) {
  // A multilinestring and a line: the members are joined wherever ends meet; a member meeting
  // nothing stays apart.
  const Bytes ml = multiline({{{2, 0}, {3, 0}}, {{10, 10}, {11, 11}}, {{1, 0}, {0, 0}}});
  const Merged m = merge(ml, linestring({{1, 0}, {2, 0}}));
  EXPECT_EQ(m.blob, multiline({{{0, 0}, {1, 0}, {2, 0}, {3, 0}}, {{10, 10}, {11, 11}}}));
  // Everything in one line gives a linestring; a closed member is left alone.
  EXPECT_EQ(merge(linestring({{0, 0}, {1, 0}}), multiline({{{2, 0}, {1, 0}}})).blob,
            linestring({{0, 0}, {1, 0}, {2, 0}}));
  const Bytes ring = linestring({{0, 0}, {1, 1}, {0, 1}, {0, 0}});
  EXPECT_EQ(merge(multiline({{{0, 0}, {1, 1}, {0, 1}, {0, 0}}}), linestring({{0, 0}, {-1, 0}})).blob,
            multi(XGWKB_TYPE_MULTILINESTRING, {ring, linestring({{0, 0}, {-1, 0}})}));

  // A long path cut into pieces, shuffled and some reversed, comes back whole.
  std::mt19937 rng(3);
  for (int round = 0; round < 20; ++round) {
    Ring path;
    for (int i = 0; i < 200; ++i) path.push_back({i + 0.25 * (rng() % 4), 0.5 * (rng() % 7)});
    std::vector<Ring> pieces;
    for (std::size_t i = 0; i + 1 < path.size();) {
      const std::size_t len = 1 + rng() % 6;
      const std::size_t end = std::min(path.size() - 1, i + len);
      Ring piece(path.begin() + i, path.begin() + end + 1);
      if (rng() % 2) std::reverse(piece.begin(), piece.end());
      pieces.push_back(piece);
      i = end;
    }
    std::shuffle(pieces.begin(), pieces.end(), rng);
    const Ring first = pieces.back();
    pieces.pop_back();
    const Merged joined = merge(multiline(pieces), linestring(first), 1e-9);
    ASSERT_EQ(joined.status, XGWKB_OK);
    Ring backwards(path.rbegin(), path.rend());
    EXPECT_TRUE(joined.blob == linestring(path) || joined.blob == linestring(backwards)) << round;
  }
}

// Polygons that overlap or share an edge fuse; one apart is collected byte for byte.
TEST(Merge, PolygonsFuseWhereTheyMeetAndAreCollectedOtherwise) {
  const Bytes a = polygon({square(0, 0, 2)}), b = polygon({square(1, 1, 2)}), c = polygon({square(9, 9, 1)});
  const Bytes d = polygon({square(2, 0, 2)});  // shares a's right edge
  const struct {
    Bytes a, b;
    uint32_t members;
    double area;
  } cases[] = {
      {a, b, 1, 7}, {a, d, 1, 8}, {multi(XGWKB_TYPE_MULTIPOLYGON, {a, c}), b, 2, 8},
      {c, multi(XGWKB_TYPE_MULTIPOLYGON, {}), 1, 1}, {a, c, 2, 5},
  };
  for (const auto& k : cases) {
    const Merged m = merge(k.a, k.b);
    ASSERT_EQ(m.status, XGWKB_OK);
    ASSERT_EQ(xg::shape_type(m.blob.data()), uint32_t{XGWKB_TYPE_MULTIPOLYGON});
    EXPECT_EQ(xg::shape_count(m.blob.data()), k.members);
    double area = 0;
    ASSERT_EQ(xgWKB_shape_get_area(m.blob.data(), 0, &area), XGWKB_OK);
    EXPECT_NEAR(area, k.area, 1e-12);
  }
  EXPECT_EQ(merge(a, c).blob, multi(XGWKB_TYPE_MULTIPOLYGON, {a, c}));
}

TEST(Merge, Statuses) {
  unsigned char* out = nullptr;
  const Bytes p = point(0, 0);
  EXPECT_EQ(xgWKB_shape_merge(nullptr, p.data(), &out, 0), XGWKB_E_NULL_POINTER);
  EXPECT_EQ(xgWKB_shape_merge(p.data(), nullptr, &out, 0), XGWKB_E_NULL_POINTER);
  EXPECT_EQ(xgWKB_shape_merge(p.data(), p.data(), nullptr, 0), XGWKB_E_NULL_POINTER);
  const Bytes square_polygon = polygon({square(0, 0, 1)});
  const struct {
    Bytes a, b;
    int32_t want;
  } cases[] = {
      {p, square_polygon, XGWKB_E_INCOMPATIBLE},
      {square_polygon, linestring({{0, 0}, {1, 1}}), XGWKB_E_INCOMPATIBLE},
      {p, nil(), XGWKB_E_INCOMPATIBLE},
      {header(XGWKB_TYPE_SINGLETEXT), p, XGWKB_E_INVALID_ENTITY},
      {nil(), p, XGWKB_E_INVALID_ENTITY},
      {multi(XGWKB_TYPE_MULTIPOINT, {point(1, 1), linestring({{0, 0}})}), p, XGWKB_E_INVALID_ENTITY},
  };
  for (const auto& c : cases) EXPECT_EQ(merge(c.a, c.b).status, c.want);
  // NaN tolerances and coordinates join nothing and do not hang.
  const Bytes nan_line = linestring({{NAN, 0}, {1, 1}});
  EXPECT_EQ(merge(nan_line, nan_line, NAN).blob, multi(XGWKB_TYPE_MULTILINESTRING, {nan_line, nan_line}));
  EXPECT_EQ(merge(multiline({{{NAN, 0}, {1, 1}}}), nan_line, 1).status, XGWKB_OK);
}

}  // namespace
