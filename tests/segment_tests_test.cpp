// The shared segment and ring tests at their boundaries, and the fast locators and segment pairing
// against plain references.  The ring, polygon and line-pair tests are also exercised through the
// relation predicates (against GEOS) and validation.
#include <gtest/gtest.h>

#include <random>
#include <set>
#include <utility>

#include "relate/point_runs.h"
#include "relate/segment_pairs.h"
#include "relate/segment_tests.h"
#include "support/blob_builder.h"

using namespace xgtest;

namespace {

// Segment meetings work in exact coordinates, so a tiny tolerance keeps its meaning there.
constexpr double kT = 1e-9;
// The ring tests locate points with the point-in-ring relation of the point primitives, whose
// frame carries single-precision angle constants; they run at the tolerance their callers use.
constexpr double kRingT = 1e-4;

_xgWKB_POINT P(double x, double y) { return _xgWKB_POINT{x, y}; }

}  // namespace

TEST(SegmentIntersection, ClassifiesMeetingsAndHandsBackTheMeetingPoint) {
  const struct {
    const char* name;
    _xgWKB_POINT a1, a2, b1, b2;
    int32_t expected;
    _xgWKB_POINT at;  // for a single meeting point
  } cases[] = {
      {"proper crossing", P(0, 0), P(4, 4), P(0, 4), P(4, 0), 1, P(2, 2)},
      {"crossing of a leftward segment", P(9, 3), P(1, 3), P(5, -7), P(5, 7), 1, P(5, 3)},
      {"boxes apart", P(0, 0), P(1, 1), P(3, 3), P(4, 5), 0, {}},
      {"parallel apart", P(0, 0), P(10, 0), P(0, 1), P(10, 1), 0, {}},
      {"collinear overlap", P(0, 0), P(10, 0), P(5, 0), P(15, 0), 2, {}},
      {"collinear overlap, b inside a", P(0, 0), P(10, 0), P(7, 0), P(3, 0), 2, {}},
      {"collinear, end to end", P(0, 0), P(10, 0), P(10, 0), P(15, 0), 1, P(10, 0)},
      {"collinear gap", P(0, 0), P(10, 0), P(10.5, 0), P(15, 0), 0, {}},
      {"b's end on a's inside", P(0, 0), P(10, 0), P(5, 0), P(5, 3), 1, P(5, 0)},
      {"a's end on b's inside", P(5, 0), P(5, 3), P(0, 0), P(10, 0), 1, P(5, 0)},
      {"near miss beyond t", P(0, 0), P(10, 0), P(5, 2e-9), P(5, 3), 0, {}},
      {"end within t of a", P(0, 0), P(10, 0), P(5, 5e-10), P(5, 3), 1, P(5, 5e-10)},
      {"crossing beyond a's end", P(0, 0), P(10, 0), P(11, -1), P(11, 1), 0, {}},
      {"vertical, long, tiny t", P(3, -1000), P(3, 1000), P(-1, 999), P(7, 999), 1, P(3, 999)},
  };
  for (const auto& c : cases) {
    unsigned char* blob = reinterpret_cast<unsigned char*>(1);  // must be overwritten
    ASSERT_EQ(xg::segment_intersection(c.a1, c.a2, c.b1, c.b2, &blob, kT), c.expected) << c.name;
    ASSERT_EQ(blob != nullptr, c.expected == 1) << c.name;
    if (blob == nullptr) continue;
    EXPECT_EQ(Bytes(blob, blob + 5), Bytes({0, XGWKB_TYPE_POINT, 0, 0, 0})) << c.name;
    EXPECT_NEAR(xg::load_f64(blob + 5), c.at.x, 1e-12) << c.name;
    EXPECT_NEAR(xg::load_f64(blob + 13), c.at.y, 1e-12) << c.name;
    std::free(blob);
  }
}

TEST(LineIsSimple, DetectsCrossingsButNotTheClosingPointAndHandsBackOnlyKBytes) {
  const std::pair<Ring, int32_t> cases[] = {
      {{{0, 0}, {1, 1}, {2, 0}, {3, 1}}, 1},
      {{{0, 0}, {2, 2}, {2, 0}, {0, 2}}, 0},  // bow tie
      {square(0, 0, 4), 1},
      {{{0, 0}, {2, 2}, {2, 0}, {0, 2}, {0, 0}}, 0},
      {{{0, 0}, {4, 0}, {4, 2}, {2, 2}, {2, 0}}, 0},  // touches itself at a vertex
      {{{0, 0}, {4, 0}, {6, 0}, {2, 0}}, 1},          // doubles back along a stretch
      {{{0, 0}, {1, 0}, {0, 0}}, 1},
  };
  for (const auto& c : cases) {
    const Misaligned line(linestring(c.first));
    unsigned char* crossings = reinterpret_cast<unsigned char*>(1);
    EXPECT_EQ(xg::line_is_simple(line.data(), kT, nullptr), c.second) << c.first.size();
    EXPECT_EQ(xg::line_is_simple(line.data(), kT, &crossings), c.second) << c.first.size();
    EXPECT_EQ(crossings == nullptr, c.second == 1) << c.first.size();
    if (c.second == 0) std::free(crossings);
  }
  // The block has room for the multipoint of the k distinct meeting points, but only its first k
  // bytes are copied; the rest is zero.  A base segment and a zigzag crossing it ten times, then
  // two strokes meeting the base at one point (k = 1: only the byte-order byte).
  Ring zigzag = {{0, 0}, {20, 0}};
  for (int i = 0; i < 11; ++i) zigzag.push_back(P(19.5 - 1.5 * i, i % 2 == 0 ? 1 : -1));
  for (const auto& [pts, k] : {std::make_pair(zigzag, std::size_t{10}),
                               std::make_pair(Ring{{0, 0}, {10, 0}, {10, 2}, {5, 0}, {2, 3}}, std::size_t{1})}) {
    const Misaligned line(linestring(pts));
    unsigned char* crossings = nullptr;
    ASSERT_EQ(xg::line_is_simple(line.data(), kT, &crossings), 0);
    Bytes want(9 + 21 * k, 0);
    xg::BlobWriter(want.data()).header(XGWKB_TYPE_MULTIPOINT).u32(static_cast<uint32_t>(k));
    std::fill(want.begin() + static_cast<long>(k), want.end(), 0);
    EXPECT_EQ(Bytes(crossings, crossings + want.size()), want) << k;
    std::free(crossings);
  }
}

TEST(SegmentAgainstRing, LeavesAndEntersANotchedSquare) {
  // Plain crossings and runs along edges come through the relation predicates against GEOS; here
  // the chords and grazing contacts.  A U-shaped ring: a 10x10 square with a notch 4 wide and
  // 5 deep cut from the top.
  const Misaligned ring(linestring({{0, 0}, {10, 0}, {10, 10}, {7, 10}, {7, 5}, {3, 5}, {3, 10}, {0, 10}, {0, 0}}));
  const struct { const char* name; _xgWKB_POINT a, b; int32_t leaves, enters; } cases[] = {
      {"chord over the notch between corners", P(0, 10), P(10, 10), 1, 0},
      {"chord through the inside between boundary points", P(0, 2), P(10, 2), 0, 1},
      {"inside, grazing the notch's corner", P(1, 7), P(5, 3), 0, 1},
      {"outside, along the notch", P(3, 6), P(3, 9), 0, 0},
  };
  for (const auto& c : cases) {
    EXPECT_EQ((std::pair{xg::segment_leaves_ring(c.a, c.b, ring.data() + 5, kRingT),
                         xg::segment_enters_ring(c.a, c.b, ring.data() + 5, kRingT)}),
              (std::pair{c.leaves, c.enters})) << c.name;
  }
  // A C-shaped ring open to the right.  The segment starts inside, passes the reflex corner
  // (6, 4) into the opening and ends on the opening's upper edge: no edge is crossed in its
  // interior, yet the boundary passes from one side of the segment to the other at the corner.
  const Misaligned c_shape(linestring({{0, 0}, {10, 0}, {10, 4}, {6, 4}, {6, 8}, {10, 8}, {10, 12}, {0, 12}, {0, 0}}));
  EXPECT_EQ(xg::segment_leaves_ring(P(5, 2), P(8, 8), c_shape.data() + 5, kRingT), 1);
}

TEST(PointLocators, BoxTestNeverChangesTheSegmentRelation) {
  std::mt19937 rng(7);
  std::uniform_real_distribution<double> coord(-50, 50), unit(0, 1);
  for (int round = 0; round < 200; ++round) {
    const Ring ring = star_ring(rng, P(coord(rng), coord(rng)), 1, 50, 3 + round % 6);
    for (int k = 0; k < 20; ++k) {
      // Probe points anywhere, on edges and near vertices.
      const std::size_t e = rng() % (ring.size() - 1);
      const _xgWKB_POINT &v = ring[e], &w = ring[e + 1];
      const double u = unit(rng);
      const _xgWKB_POINT p = k % 3 == 0 ? P(coord(rng), coord(rng))
                             : k % 3 == 1 ? P(v.x + u * (w.x - v.x), v.y + u * (w.y - v.y))
                                          : P(v.x + 5e-5 * (u - 0.5), v.y);
      // The locators skip the exact relation where the grown segment box rules out a positive
      // answer (on the segment or at an end); only the positive answers must survive.
      for (double t : {1e-9, 1e-3, 0.5}) {
        for (std::size_t i = 1; i < ring.size(); ++i) {
          const int32_t exact = xgWKB_baseGeo_point_line_relation(&p, &ring[i - 1], &ring[i], t);
          ASSERT_EQ(xg::segment_relation(p, ring[i - 1], ring[i], t) > 0 ? exact : 0, exact > 0 ? exact : 0);
        }
      }
    }
  }
}

TEST(SegmentPairs, OffersExactlyThePairsWhoseBoxesMeet) {
  // Random walks long enough for the sweep; the expected pairs come from testing every box pair.
  std::mt19937 rng(11);
  std::uniform_real_distribution<double> step(-3, 3);
  const double t = 0.01;
  for (int round = 0; round < 5; ++round) {
    Ring r{P(0, 0)};  // points 0..119 are run a, 120..209 run b
    for (int i = 1; i < 210; ++i) r.push_back(i == 120 ? P(4, 0) : P(r.back().x + step(rng), r.back().y + step(rng)));
    auto meet = [&](uint32_t i, uint32_t j) {
      return xg::boxes_meet(xg::segment_box(r[i], r[i + 1]), xg::segment_box(r[j], r[j + 1]), t);
    };
    std::set<std::pair<uint32_t, uint32_t>> expected[2], got[2];
    for (uint32_t i = 0; i < 119; ++i) {
      for (uint32_t j = 0; j < 89; ++j) if (meet(i, 120 + j)) expected[0].insert({i, j});
      for (uint32_t j = i + 2; j < 119; ++j) if (meet(i, j)) expected[1].insert({i, j});
    }
    const xg::Span a = xg::make_span(r.data(), 120), b = xg::make_span(r.data() + 120, 90);
    xg::any_segment_pair(a, b, t, [&](uint32_t i, uint32_t j) { return !got[0].insert({i, j}).second; });
    xg::any_segment_pair_within(a, 2, t, [&](uint32_t i, uint32_t j) { return !got[1].insert({i, j}).second; });
    EXPECT_EQ(got[0], expected[0]);
    EXPECT_EQ(got[1], expected[1]);
  }
}
