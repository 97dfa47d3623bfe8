// Convex hull: the walk's exact results, the pre-filter against the unfiltered walk, and GEOS.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <random>
#include <set>
#include <string>
#include <utility>

#include "construct/convex_hull.h"
#include "core/blob.h"
#include "support/blob_builder.h"
#include "support/edit_result.h"
#include "support/geos_oracle.h"

using namespace xgtest;

namespace {

Bytes multipoint_of(const Ring& pts) {
  std::vector<Bytes> members;
  for (const _xgWKB_POINT& p : pts) members.push_back(point(p.x, p.y));
  return multi(XGWKB_TYPE_MULTIPOINT, members);
}

TEST(ConvexHull, ExactResultsOfTheWalk) {
  const Ring unit = {{0, 0}, {1, 0}, {1, 1}, {0, 1}, {0, 0}};
  const struct {
    const char* name;
    Bytes in;
    Bytes want;
  } cases[] = {
      {"square scrambled: starts at the first smallest x, counter-clockwise",
       multipoint_of({{1, 1}, {0, 1}, {1, 0}, {0, 0}, {0.5, 0.5}}),
       polygon({{{0, 1}, {0, 0}, {1, 0}, {1, 1}, {0, 1}}})},
      {"three collinear points: the list (0,0) (2,0) (0,0)", multipoint_of({{0, 0}, {1, 0}, {2, 0}}),
       linestring({{2, 0}, {0, 0}})},
      {"three coinciding points: a one-point ring", multipoint_of({{3, 3}, {3, 3.00001}, {3.00002, 3}}),
       polygon({{{3, 3}}})},
      {"two coinciding members: both, in input order", multipoint_of({{1, 1}, {1, 1}}),
       linestring({{1, 1}, {1, 1}})},
      {"two points of a line", linestring({{5, 5}, {1, 2}}), linestring({{5, 5}, {1, 2}})},
      {"a point is copied", point(7, -3), point(7, -3)},
      {"a one-point line gives the point", linestring({{7, -3}}), point(7, -3)},
      {"from the lower left corner; holes play no part", polygon({unit, {{0.2, 0.2}, {0.2, 2}, {0.4, 0.4}, {0.2, 0.2}}}), polygon({unit})},
      {"a multipolygon's inner rings play no part",
       multi(XGWKB_TYPE_MULTIPOLYGON, {polygon({unit, {{0.5, 0.5}, {-9, 9}, {0.6, 0.5}, {0.5, 0.5}}}),
                                       polygon({{{3, 0}, {4, 0}, {3, 1}, {3, 0}}})}),
       polygon({{{0, 0}, {4, 0}, {3, 1}, {0, 1}, {0, 0}}})},
      {"collinear points between hull points are skipped", linestring({{0, 0}, {1, 0}, {2, 0}, {2, 2}, {0, 2}}),
       polygon({{{0, 0}, {2, 0}, {2, 2}, {0, 2}, {0, 0}}})},
      {"multilinestring points member after member",
       multiline({{{0, 0}, {2, 0}}, {{1, 1}, {1, -1}}}),
       polygon({{{0, 0}, {1, -1}, {2, 0}, {1, 1}, {0, 0}}})},
  };
  for (const auto& c : cases) {
    const Misaligned in(c.in);
    Out out;
    ASSERT_EQ(xgWKB_shape_generate_convex_hull(in.data(), &out.p, 1e-6), XGWKB_OK) << c.name;
    EXPECT_EQ(out.bytes(), c.want) << c.name;
  }
}

TEST(ConvexHull, StatusesForBadInput) {
  unsigned char* out = nullptr;
  EXPECT_EQ(xgWKB_shape_generate_convex_hull(nullptr, &out, 0), XGWKB_E_NULL_POINTER);
  EXPECT_EQ(xgWKB_shape_generate_convex_hull(point(1, 1).data(), nullptr, 0), XGWKB_E_NULL_POINTER);
  const struct {
    Bytes in;
    int32_t want;
  } cases[] = {
      {header(XGWKB_TYPE_SINGLETEXT), XGWKB_E_INVALID_ENTITY},
      {nil(), XGWKB_E_INVALID_ENTITY},
      {multi(XGWKB_TYPE_MULTIPOINT, {point(0, 0), linestring({{1, 1}, {2, 2}})}), XGWKB_E_INVALID_ENTITY},
      {linestring({}), XGWKB_E_TOO_FEW_POINTS},
      {polygon({}), XGWKB_E_TOO_FEW_POINTS},
      {multi(XGWKB_TYPE_MULTIPOLYGON, {}), XGWKB_E_TOO_FEW_POINTS},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(xgWKB_shape_generate_convex_hull(c.in.data(), &out, 0), c.want);
    EXPECT_EQ(out, nullptr);
  }
  // NaN coordinates and tolerances end in some shape, without hanging.
  for (double t : {0.0, static_cast<double>(NAN)}) {
    const Bytes in = multipoint_of({{0, 0}, {NAN, 1}, {2, NAN}, {1, 1}, {3, 0}});
    ASSERT_EQ(xgWKB_shape_generate_convex_hull(in.data(), &out, t), XGWKB_OK);
    xgWKB_shape_free(out);
    out = nullptr;
  }
}

// Point sets that stress the filter and the indexed walk: a disc, a circle, a grid with repeats
// and collinear runs, clusters of near-coinciding points, and points on one line.
Ring random_set(std::mt19937& rng, int kind, int n, double scale) {
  std::uniform_real_distribution<double> u(-1, 1);
  Ring pts;
  while (static_cast<int>(pts.size()) < n) {
    const double x = u(rng), y = u(rng);
    switch (kind) {
      case 0:
        if (x * x + y * y <= 1) pts.push_back({scale * x, scale * y});
        break;
      case 1: {
        const double a = M_PI * u(rng);
        pts.push_back({scale * std::cos(a), scale * std::sin(a)});
        break;
      }
      case 2:
        pts.push_back({std::round(5 * x), std::round(5 * y)});
        break;
      case 3:
        pts.push_back({std::round(2 * x) + 5e-5 * u(rng), std::round(2 * y) + 5e-5 * u(rng)});
        break;
      default:
        pts.push_back({scale * x, scale * (2 * x + 1)});
        break;
    }
  }
  return pts;
}

std::vector<std::pair<double, double>> pairs(const std::vector<_xgWKB_POINT>& pts) {
  std::vector<std::pair<double, double>> out;
  for (const _xgWKB_POINT& p : pts) out.emplace_back(p.x, p.y);
  return out;
}

// The pre-filter and the indexed walk against the plain walk on the whole set.
TEST(ConvexHull, FilteredAndIndexedWalksGiveTheListOfThePlainWalk) {
  std::mt19937 rng(13);
  int dropped_some = 0;
  for (int round = 0; round < 200; ++round) {
    const int kind = round % 5;
    const double t = std::array<double, 4>{0, 1e-7, 1e-3, 0.05}[(round / 5) % 4];
    const double scale = std::array<double, 3>{1, 1e3, 1e-2}[(round / 20) % 3];
    const int n = round % 7 == 0 ? 1500 : 20 + static_cast<int>(rng() % 400);
    const Ring pts = random_set(rng, kind, n, scale);
    const auto whole = pairs(xg::gift_wrap(pts.data(), pts.size(), t));
    EXPECT_EQ(whole, pairs(xg::gift_wrap_indexed(pts.data(), pts.size(), t))) << "indexed, round " << round;
    EXPECT_EQ(whole, pairs(xg::convex_hull_list(pts.data(), pts.size(), t))) << "filtered, round " << round;
    if (xg::hull_candidates(pts.data(), pts.size(), t).size() < pts.size() / 2) ++dropped_some;
  }
  EXPECT_GT(dropped_some, 20);  // the filter was at work in the comparison
}

TEST(ConvexHull, VerticesAgreeWithGeos) {
  GeosOracle oracle;
  std::mt19937 rng(7);
  std::uniform_real_distribution<double> u(0, 100);
  for (int round = 0; round < 90; ++round) {
    const int n = 3 + static_cast<int>(rng() % 200);
    Ring pts;
    for (int i = 0; i < n; ++i) pts.push_back({u(rng), u(rng)});
    Bytes shape;
    switch (round % 3) {
      case 0: shape = multipoint_of(pts); break;
      case 1: shape = linestring(pts); break;
      default: {
        pts = star_ring(rng, {50, 50}, 5, 40, n);
        shape = polygon({pts, star_ring(rng, {50, 50}, 1, 3, 5)});
        break;
      }
    }
    Out ours;
    ASSERT_EQ(xgWKB_shape_generate_convex_hull(shape.data(), &ours.p, 1e-9), XGWKB_OK);
    ASSERT_EQ(xg::shape_type(ours.p), XGWKB_TYPE_POLYGON);
    const xg::PointRun ring{ours.p + xg::kCountedHeaderSize};
    std::vector<_xgWKB_POINT> ring_pts(ring.size());
    ring.copy_to(ring_pts.data());
    GeosGeom g(oracle, oracle.to_geos(shape.data()));
    GeosGeom hull(oracle, GEOSConvexHull_r(oracle.handle(), g.get()));
    std::set<std::pair<double, double>> ours_set, geos_set;
    for (std::size_t i = 0; i + 1 < ring_pts.size(); ++i) ours_set.insert({ring_pts[i].x, ring_pts[i].y});
    const Bytes geos_blob = oracle.from_geos(hull.get());
    const xg::PointRun gr{geos_blob.data() + xg::kCountedHeaderSize};
    for (uint32_t i = 0; i + 1 < gr.size(); ++i) geos_set.insert({gr.point(i).x, gr.point(i).y});
    EXPECT_EQ(ours_set, geos_set) << "round " << round;
  }
}

}  // namespace
