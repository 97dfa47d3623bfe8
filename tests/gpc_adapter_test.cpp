// The clipper adapter: the integer grid's round trip, exactness at large offsets and small
// scales, refused coordinates and degenerate contours.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

#include "construct/gpc_adapter.h"

using namespace xg;

namespace {

gpc_polygon square_at(double x0, double y0, double size) {
  gpc_polygon p;
  p.add_contour({{x0, y0}, {x0 + size, y0}, {x0 + size, y0 + size}, {x0, y0 + size}}, 0);
  return p;
}

double area(const gpc_polygon& p) {
  double a = 0;
  for (int c = 0; c < p.num_contours(); ++c) {
    const auto& v = p.contour[c].vertex;
    double s = 0;
    // Relative to the first vertex, so that far offsets cancel exactly.
    for (std::size_t i = 1; i + 1 < v.size(); ++i) {
      s += (v[i].x - v[0].x) * (v[i + 1].y - v[0].y) - (v[i + 1].x - v[0].x) * (v[i].y - v[0].y);
    }
    a += (p.hole[c] ? -1 : 1) * std::fabs(s) / 2;
  }
  return a;
}

// A star of n points about (cx, cy), radii drawn from [rmin, 1].
gpc_polygon star(std::mt19937_64& rng, double cx, double cy, double rmin, int n) {
  std::uniform_real_distribution<double> radius(rmin, 1);
  std::vector<gpc_vertex> v;
  for (int k = 0; k < n; ++k) {
    const double a = 2 * M_PI * k / n, r = radius(rng);
    v.push_back({cx + r * std::cos(a), cy + r * std::sin(a)});
  }
  gpc_polygon p;
  p.add_contour(std::move(v), 0);
  return p;
}

}  // namespace

TEST(GridAxis, DoublesOnTheGridAndProducedIntegersSurviveTheTrip) {
  std::mt19937_64 rng(11);
  const struct {
    double lo, hi;
  } extents[] = {{1e-9, 3e-9}, {1e9, 1.5e9}, {1e7, 1e7 + 1}, {-2e-9, 5e-10}, {-1e9, 1e-9}, {-1e300, 1e300}};
  for (const auto& e : extents) {
    GridAxis g;
    ASSERT_TRUE(g.fit(e.lo, e.hi));
    std::uniform_real_distribution<double> pick(e.lo, e.hi);
    const double step = std::ldexp(1.0, -g.shift);
    for (int k = 0; k < 2000; ++k) {
      const double v = k == 0 ? e.lo : (k == 1 ? e.hi : pick(rng));
      const int64_t i = g.to_int(v);
      ASSERT_LT(std::llabs(i), int64_t{1} << 62);
      const double back = g.to_double(i);
      // Away from zero every double of the extent lies on the grid (its last place is coarser
      // than the step) and comes back unchanged; near zero the finer ones land on the nearest
      // grid point.
      const bool on_grid = e.lo > 0 && std::ldexp(1.0, std::ilogb(e.lo) - 52) >= step;
      if (on_grid) {
        ASSERT_EQ(back, v) << e.lo << " " << v;
      }
      ASSERT_LE(std::fabs(back - v), step + std::fabs(v) * 0x1p-52) << e.lo << " " << v;
      ASSERT_EQ(g.to_int(back), i) << e.lo << " " << v;  // the integer trip is exact
    }
  }
  GridAxis g;
  EXPECT_FALSE(g.fit(-1.5e308, 1.5e308));  // the extent itself overflows
}

TEST(GpcAdapter, UnitSquareFarFromTheOriginKeepsItsArea) {
  for (double offset : {1e7, -1e7 + 0.1, 1e9}) {
    gpc_polygon a = square_at(offset, offset, 1), b = square_at(offset - 5, offset - 5, 10), r;
    ASSERT_EQ(gpc_polygon_clip(GPC_INT, a, b, &r), 0);
    ASSERT_EQ(r.num_contours(), 1);
    EXPECT_NEAR(area(r), 1, 1e-9) << offset;
    for (const gpc_vertex& v : r.contour[0].vertex) {
      EXPECT_TRUE(v.x == offset || v.x == offset + 1) << v.x;  // input vertices come back exactly
    }
  }
  gpc_polygon tiny = square_at(3e-9, 3e-9, 1e-9), cut = square_at(3.5e-9, 2.5e-9, 1e-9), r;
  ASSERT_EQ(gpc_polygon_clip(GPC_DIFF, tiny, cut, &r), 0);
  EXPECT_NEAR(area(r), 0.75e-18, 1e-27);
}

TEST(GpcAdapter, ThreeWayPartsMatchTheSingleOperations) {
  gpc_polygon a = square_at(0, 0, 4), b = square_at(2, 1, 4);
  a.add_contour({{1, 1}, {1, 2}, {1.5, 2}, {1.5, 1}}, 1);  // a hole, clockwise
  gpc_polygon common, only_a, only_b, x;
  ASSERT_EQ(three_way_polygon_clip(a, b, &common, &only_a, &only_b), 0);
  for (const auto& [op, part] : {std::pair{GPC_INT, &common}, {GPC_DIFF, &only_a}}) {
    ASSERT_EQ(gpc_polygon_clip(op, a, b, &x), 0);
    EXPECT_DOUBLE_EQ(area(*part), area(x));
  }
  ASSERT_EQ(gpc_polygon_clip(GPC_UNION, a, b, &x), 0);
  EXPECT_DOUBLE_EQ(area(common) + area(only_a) + area(only_b), area(x));
  EXPECT_DOUBLE_EQ(area(common), 6);
  EXPECT_DOUBLE_EQ(area(only_b), 16 - 6);
  EXPECT_DOUBLE_EQ(area(only_a), 16 - 0.5 - 6);
  gpc_free_polygon(&common);
  EXPECT_EQ(common.num_contours(), 0);
}

// Stars crossing each other many times: spiky ones cut pieces bounded by crossing points only.
// The three parts must have the areas of the single operations and make up the union.
TEST(GpcAdapter, ThreeWayPartsOfCrossingStarsMatchTheSingleOperations) {
  std::mt19937_64 rng(5);
  const struct {
    double rmin, dx;
    int n;
  } cases[] = {{0.2, 0.3, 60}, {0.5, 0.6, 400}, {0.97, 0.6, 1000}, {0.8, 0.05, 300}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.n);
    gpc_polygon a = star(rng, 0, 0, c.rmin, c.n), b = star(rng, c.dx, 0.1, c.rmin, c.n);
    gpc_polygon common, only_a, only_b, x;
    ASSERT_EQ(three_way_polygon_clip(a, b, &common, &only_a, &only_b), 0);
    const struct {
      gpc_op op;
      const gpc_polygon *l, *r, *part;
    } checks[] = {{GPC_INT, &a, &b, &common}, {GPC_DIFF, &a, &b, &only_a}, {GPC_DIFF, &b, &a, &only_b}};
    for (const auto& k : checks) {
      ASSERT_EQ(gpc_polygon_clip(k.op, *k.l, *k.r, &x), 0);
      EXPECT_NEAR(area(*k.part), area(x), 1e-12);
    }
    ASSERT_EQ(gpc_polygon_clip(GPC_UNION, a, b, &x), 0);
    EXPECT_NEAR(area(common) + area(only_a) + area(only_b), area(x), 1e-12);
  }
}

TEST(GpcAdapter, RefusesNonFiniteCoordinatesAndIgnoresDegenerateContours) {
  const double inf = std::numeric_limits<double>::infinity();
  gpc_polygon ok = square_at(0, 0, 1), r;
  r.add_contour({{9, 9}, {9, 8}, {8, 8}}, 0);
  for (double bad : {std::nan(""), inf, -inf}) {
    gpc_polygon p = square_at(0, 0, 1);
    p.contour[0].vertex[2].y = bad;
    EXPECT_EQ(gpc_polygon_clip(GPC_UNION, ok, p, &r), XGWKB_E_INVALID_ARGUMENT);
    EXPECT_EQ(r.num_contours(), 0);
    gpc_polygon c, a, b;
    EXPECT_EQ(three_way_polygon_clip(p, ok, &c, &a, &b), XGWKB_E_INVALID_ARGUMENT);
  }
  gpc_polygon huge = square_at(-1e308, -1e308, 1), far = square_at(1e308, 1e308, 1);
  EXPECT_EQ(gpc_polygon_clip(GPC_UNION, huge, far, &r), XGWKB_E_INVALID_ARGUMENT);
  // Two-vertex, single-point and collinear contours add nothing to a union.
  gpc_polygon junk;
  junk.add_contour({{0, 0}, {5, 5}}, 0);
  junk.add_contour({{3, 3}, {3, 3}, {3, 3}, {3, 3}}, 0);
  junk.add_contour({{0, 0}, {1, 1}, {2, 2}}, 0);
  junk.add_contour({}, 1);
  ASSERT_EQ(gpc_polygon_clip(GPC_UNION, ok, junk, &r), 0);
  ASSERT_EQ(r.num_contours(), 1);
  EXPECT_DOUBLE_EQ(area(r), 1);
  EXPECT_EQ(r.hole[0], 0);
}
