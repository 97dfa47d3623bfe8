// Distance between shapes: exact cases, statuses, and GEOS on seeded random shapes of every pair
// of types in both orders.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

#include "construct/nearest_pair.h"
#include "support/blob_builder.h"
#include "support/geos_oracle.h"

using namespace xgtest;

namespace {

double distance_of(const Bytes& a, const Bytes& b, double t) {
  const Misaligned ma(a), mb(b);
  double d = -1;
  EXPECT_EQ(xgWKB_shape_calculate_distance(ma.data(), mb.data(), &d, t), XGWKB_OK);
  return d;
}

const Ring kSquare = square(0, 0, 10);
const Ring kHole = square(4, 4, 2);

// The tolerance rules and the holes; distances in general position are left to GEOS below.
TEST(Distance, ToleranceAndHoleCases) {
  const struct {
    const char* name;
    Bytes a, b;
    double t, want;
  } cases[] = {
      {"point inside a hole: as far as the hole's ring", point(5, 5.5), polygon({kSquare, kHole}), 1e-9, 0.5},
      {"point on the boundary within t", point(10.00005, 3), polygon({kSquare}), 1e-4, 0},
      {"point on a hole's boundary within t", point(4, 5.00001), polygon({kSquare, kHole}), 1e-4, 0},
      {"zero-length segment is a point", linestring({{1, 1}, {1, 1}}), linestring({{0, 0}, {4, 0}}), 1e-9, 1},
      {"multipoint member closer than t counts 0", multi(XGWKB_TYPE_MULTIPOINT, {point(9, 9), point(0, 0.00001)}),
       point(0, 0), 1e-4, 0},
      // Two linestrings do not snap below t, a multilinestring does: intended.
      {"line and line do not snap below t", linestring({{0, 0}, {1, 0}}), linestring({{0, 0.00005}, {1, 0.00005}}),
       1e-4, 0.00005},
      {"multilines snap below t", multiline({{{0, 0}, {1, 0}}}), linestring({{0, 0.00005}, {1, 0.00005}}), 1e-4, 0},
      {"polygons 0.00005 apart meet under the fixed tolerance", polygon({square(10.00005, 0, 1)}),
       polygon({kSquare}), 1e-12, 0},
      {"multipolygon member inside the other's hole",
       multi(XGWKB_TYPE_MULTIPOLYGON, {polygon({square(30, 0, 1)}), polygon({square(4.25, 4.5, 1)})}),
       polygon({kSquare, kHole}), 1e-9, 0.25},
  };
  for (const auto& c : cases) {
    EXPECT_NEAR(distance_of(c.a, c.b, c.t), c.want, 1e-12) << c.name;
    EXPECT_NEAR(distance_of(c.b, c.a, c.t), c.want, 1e-12) << c.name << " (mirror)";
  }
}

TEST(Distance, StatusesForBadInput) {
  const Bytes p = point(0, 0);
  double d = -7;
  EXPECT_EQ(xgWKB_shape_calculate_distance(nullptr, p.data(), &d, 0), XGWKB_E_NULL_POINTER);
  EXPECT_EQ(xgWKB_shape_calculate_distance(p.data(), nullptr, &d, 0), XGWKB_E_NULL_POINTER);
  EXPECT_EQ(xgWKB_shape_calculate_distance(p.data(), p.data(), nullptr, 0), XGWKB_E_NULL_POINTER);
  const struct {
    Bytes other;
    int32_t want;
  } cases[] = {
      {header(XGWKB_TYPE_SINGLETEXT), XGWKB_E_INVALID_ENTITY},
      {nil(), XGWKB_E_INVALID_ENTITY},
      {multi(XGWKB_TYPE_MULTILINESTRING, {point(1, 1)}), XGWKB_E_INVALID_ENTITY},
      {linestring({}), XGWKB_E_TOO_FEW_POINTS},
      {polygon({}), XGWKB_E_TOO_FEW_POINTS},
      {multi(XGWKB_TYPE_MULTIPOINT, {}), XGWKB_E_TOO_FEW_POINTS},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(xgWKB_shape_calculate_distance(p.data(), c.other.data(), &d, 0), c.want);
    EXPECT_EQ(xgWKB_shape_calculate_distance(c.other.data(), p.data(), &d, 0), c.want);
    EXPECT_EQ(d, -7);  // not written on failure
  }
  // Empty members are passed over; NaN coordinates and tolerances do not hang.
  EXPECT_NEAR(distance_of(multi(XGWKB_TYPE_MULTIPOLYGON, {polygon({}), polygon({square(3, 0, 1)})}), p, 0), 3,
              1e-12);
  distance_of(linestring({{NAN, 0}, {1, NAN}, {2, 2}}), polygon({{{0, NAN}, {5, 0}, {5, 5}, {0, NAN}}}), NAN);
  EXPECT_TRUE(std::isnan(distance_of(point(NAN, 0), point(1, 1), 0)));
}

// Random shapes of each type around (10, 10).  With `inner`, the shape is small and sits at the
// centre, where the polygons made by `holed` have a hole.
class Shapes {
 public:
  explicit Shapes(uint32_t seed) : rng_(seed) {}

  Bytes make(uint32_t type, bool inner, int vertices = 0) {
    switch (type) {
      case XGWKB_TYPE_POINT: {
        const _xgWKB_POINT p = at(inner);
        return point(p.x, p.y);
      }
      case XGWKB_TYPE_LINESTRING: return linestring(walk(inner));
      case XGWKB_TYPE_POLYGON: return polygon(rings(inner, vertices));
      default: {
        std::vector<Bytes> members;
        const int k = 1 + static_cast<int>(rng_() % 3);
        for (int i = 0; i < k; ++i) {
          // Members of a multipolygon on separate sides, so that they do not overlap.
          if (type == XGWKB_TYPE_MULTIPOLYGON) {
            const double r = real(0.5, 1.5);
            const _xgWKB_POINT c = inner ? at(true) : _xgWKB_POINT{3.5 * i + real(-1, 1), real(-2, 22)};
            members.push_back(polygon({star_ring(rng_, c, (inner ? 0.05 : 0.6) * r, (inner ? 0.1 : 1) * r, 7)}));
            if (inner) break;
          } else {
            members.push_back(make(type - 3, inner));
          }
        }
        return multi(type, members);
      }
    }
  }

  // A polygon of radius about 8 around (10, 10) with a hole of radius about 2.5 about the centre.
  Bytes holed(uint32_t type) {
    Bytes p = polygon({star_ring(rng_, {10, 10}, 6, 8, 9), star_ring(rng_, {10, 10}, 2.3, 2.8, 8, true)});
    return type == XGWKB_TYPE_POLYGON ? p : multi(XGWKB_TYPE_MULTIPOLYGON, {polygon({square(30, 30, 1)}), p});
  }

 private:
  double real(double lo, double hi) { return std::uniform_real_distribution<double>(lo, hi)(rng_); }
  _xgWKB_POINT at(bool inner) {
    return inner ? _xgWKB_POINT{10 + real(-1, 1), 10 + real(-1, 1)} : _xgWKB_POINT{real(0, 20), real(0, 20)};
  }
  Ring walk(bool inner) {
    Ring r{at(inner)};
    const int k = 2 + static_cast<int>(rng_() % 5);
    const double step = inner ? 0.4 : 4;
    while (static_cast<int>(r.size()) < k) {
      const double a = real(0, 2 * M_PI);
      _xgWKB_POINT p{r.back().x + step * std::cos(a), r.back().y + step * std::sin(a)};
      if (inner) p = {std::clamp(p.x, 9.0, 11.0), std::clamp(p.y, 9.0, 11.0)};
      r.push_back(p);
    }
    return r;
  }
  std::vector<Ring> rings(bool inner, int vertices) {
    const _xgWKB_POINT c = at(inner);
    const double r = inner ? real(0.2, 0.8) : real(1.5, 5);
    const int n = vertices > 0 ? vertices : 5 + static_cast<int>(rng_() % 8);
    std::vector<Ring> out{star_ring(rng_, c, 0.6 * r, r, n)};
    if (rng_() % 2 == 0) out.push_back(star_ring(rng_, c, 0.2 * r, 0.35 * r, 6, true));
    return out;
  }

  std::mt19937 rng_;
};

void expect_as_geos(const GeosOracle& oracle, const Bytes& a, const Bytes& b, const char* what, int round) {
  GeosGeom ga(oracle, oracle.to_geos(a.data())), gb(oracle, oracle.to_geos(b.data()));
  double want = -1;
  EXPECT_EQ(GEOSDistance_r(oracle.handle(), ga.get(), gb.get(), &want), 1);
  const double ab = distance_of(a, b, 1e-12);
  const double ba = distance_of(b, a, 1e-12);
  EXPECT_NEAR(ab, want, 1e-9 * want + 1e-12) << what << " round " << round;
  EXPECT_EQ(ab, ba) << what << " round " << round;
}

TEST(Distance, EveryPairOfTypesAgreesWithGeos) {
  GeosOracle oracle;
  Shapes gen(2024);
  for (uint32_t ta = 1; ta <= 6; ++ta) {
    for (uint32_t tb = ta; tb <= 6; ++tb) {
      for (int round = 0; round < 40; ++round) {
        const std::string what = std::to_string(ta) + "-" + std::to_string(tb);
        expect_as_geos(oracle, gen.make(ta, false), gen.make(tb, false), what.c_str(), round);
      }
    }
  }
}

TEST(Distance, ShapesInsideHolesAndInteriorsAgreeWithGeos) {
  GeosOracle oracle;
  Shapes gen(99);
  for (uint32_t outer : {XGWKB_TYPE_POLYGON, XGWKB_TYPE_MULTIPOLYGON}) {
    for (uint32_t type = 1; type <= 6; ++type) {
      for (int round = 0; round < 15; ++round) {
        const Bytes holed = gen.holed(outer);
        const Bytes inner = gen.make(type, true);
        expect_as_geos(oracle, holed, inner, "in a hole", round);
        // The same shape moved into the polygon's ring body: distance 0.
        Bytes moved = inner;
        ASSERT_EQ(xgWKB_shape_move(moved.data(), 4.5, 0), XGWKB_OK);
        expect_as_geos(oracle, holed, moved, "in the ring body", round);
      }
    }
  }
}

TEST(Distance, LargeShapesAgreeWithGeosAndWithAllPairs) {
  GeosOracle oracle;
  Shapes gen(5);
  std::mt19937 rng(5);
  for (int round = 0; round < 6; ++round) {
    const Bytes a = gen.make(XGWKB_TYPE_POLYGON, false, 1500);
    const Bytes b = gen.make(round % 2 ? XGWKB_TYPE_POLYGON : XGWKB_TYPE_LINESTRING, false, 1500);
    expect_as_geos(oracle, a, b, "large", round);
  }
  // The branch and bound against the plain double loop on segment soups.
  std::uniform_real_distribution<double> u(0, 100), v(-3, 3);
  for (int round = 0; round < 5; ++round) {
    std::vector<xg::SegmentItem> sa, sb;
    std::vector<_xgWKB_POINT> points;  // isolated points go into the tree apart
    for (int i = 0; i < 700; ++i) {
      const _xgWKB_POINT p{u(rng), u(rng)}, q{u(rng) + 150, u(rng)};
      sa.push_back(xg::make_segment_item(p, {p.x + v(rng), p.y + v(rng)}));
      if (i % 3) {
        sb.push_back(xg::make_segment_item(q, {q.x + v(rng), q.y + v(rng)}));
      } else {
        points.push_back(q);
      }
    }
    double want = INFINITY;
    for (const auto& s : sa) {
      for (const auto& w : sb) want = std::min(want, xg::segment_distance(s, w));
      for (const auto& q : points) want = std::min(want, xg::segment_distance(s, xg::make_segment_item(q, q)));
    }
    EXPECT_EQ(xg::nearest_distance(xg::SegmentTree(sa), xg::SegmentTree(sb, points), 0), want) << round;
  }
}

}  // namespace
