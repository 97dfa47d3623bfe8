// The shared segment and ring tests at their boundaries.
#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <set>
#include <utility>

#include "relate/point_runs.h"
#include "relate/segment_pairs.h"
#include "relate/segment_tests.h"
#include "support/blob_builder.h"

using namespace xgtest;
using xg::byte;

namespace {

// Segment meetings work in exact coordinates, so a tiny tolerance keeps its meaning there.
constexpr double kT = 1e-9;
// The ring and polygon tests locate points with the point-in-ring relation of the point
// primitives, whose frame carries single-precision angle constants; they are exercised at the
// tolerance their callers use.
constexpr double kRingT = 1e-4;

// A counted run (the body of a linestring), kept at an odd address.
struct RunBlob {
  Misaligned line;
  explicit RunBlob(const Ring& pts) : line(linestring(pts)) {}
  const byte* run() const { return line.data() + 5; }
  const byte* blob() const { return line.data(); }
};

_xgWKB_POINT P(double x, double y) { return _xgWKB_POINT{x, y}; }

// A U-shaped ring: a 10x10 square with a notch 4 wide and 5 deep cut from the top.
Ring notched_square() {
  return {{0, 0}, {10, 0}, {10, 10}, {7, 10}, {7, 5}, {3, 5}, {3, 10}, {0, 10}, {0, 0}};
}

}  // namespace

// ---- segment intersection ----------------------------------------------------------------

struct MeetCase {
  const char* name;
  _xgWKB_POINT a1, a2, b1, b2;
  double t;
  int32_t expected;
};

TEST(SegmentIntersection, ClassifiesMeetings) {
  const MeetCase cases[] = {
      {"proper crossing", P(0, 0), P(4, 4), P(0, 4), P(4, 0), kT, 1},
      {"crossing of a leftward segment", P(9, 3), P(1, 3), P(5, -7), P(5, 7), kT, 1},
      {"boxes apart", P(0, 0), P(1, 1), P(3, 3), P(4, 5), kT, 0},
      {"parallel apart", P(0, 0), P(10, 0), P(0, 1), P(10, 1), kT, 0},
      {"collinear overlap", P(0, 0), P(10, 0), P(5, 0), P(15, 0), kT, 2},
      {"collinear overlap, b inside a", P(0, 0), P(10, 0), P(7, 0), P(3, 0), kT, 2},
      {"collinear, end to end", P(0, 0), P(10, 0), P(10, 0), P(15, 0), kT, 1},
      {"collinear gap", P(0, 0), P(10, 0), P(10.5, 0), P(15, 0), kT, 0},
      {"b's end on a's inside", P(0, 0), P(10, 0), P(5, 0), P(5, 3), kT, 1},
      {"a's end on b's inside", P(5, 0), P(5, 3), P(0, 0), P(10, 0), kT, 1},
      {"near miss beyond t", P(0, 0), P(10, 0), P(5, 2e-9), P(5, 3), kT, 0},
      {"end within t of a", P(0, 0), P(10, 0), P(5, 5e-10), P(5, 3), kT, 1},
      {"crossing beyond a's end", P(0, 0), P(10, 0), P(11, -1), P(11, 1), kT, 0},
      {"vertical, long, tiny t", P(3, -1000), P(3, 1000), P(-1, 999), P(7, 999), kT, 1},
  };
  for (const MeetCase& c : cases) {
    byte* blob = reinterpret_cast<byte*>(1);  // must be overwritten
    EXPECT_EQ(xg::segment_intersection(c.a1, c.a2, c.b1, c.b2, &blob, c.t), c.expected) << c.name;
    if (c.expected == 1) {
      EXPECT_NE(blob, nullptr) << c.name;
    } else {
      EXPECT_EQ(blob, nullptr) << c.name;
    }
    if (c.expected == 1) std::free(blob);
  }
}

TEST(SegmentIntersection, ReturnsMeetingPointAsPointBlob) {
  const MeetCase cases[] = {{"crossing", P(0, 0), P(4, 4), P(0, 4), P(4, 0), kT, 1},
                            {"end to end", P(0, 0), P(10, 0), P(10, 0), P(10, 5), kT, 1}};
  const _xgWKB_POINT at[] = {P(2, 2), P(10, 0)};
  for (int i = 0; i < 2; ++i) {
    const MeetCase& c = cases[i];
    byte* blob = nullptr;
    ASSERT_EQ(xg::segment_intersection(c.a1, c.a2, c.b1, c.b2, &blob, c.t), 1) << c.name;
    EXPECT_EQ(blob[0], 0);
    EXPECT_EQ(xg::load_u32(blob + 1), uint32_t{XGWKB_TYPE_POINT});
    EXPECT_NEAR(xg::load_f64(blob + 5), at[i].x, 1e-12) << c.name;
    EXPECT_NEAR(xg::load_f64(blob + 13), at[i].y, 1e-12) << c.name;
    std::free(blob);
  }
}

// ---- self-crossing -------------------------------------------------------------------------

TEST(LineIsSimple, DetectsCrossingsButNotTheClosingPoint) {
  struct Case {
    const char* name;
    Ring pts;
    int32_t simple;
  } cases[] = {
      {"zigzag", {{0, 0}, {1, 1}, {2, 0}, {3, 1}}, 1},
      {"bow tie", {{0, 0}, {2, 2}, {2, 0}, {0, 2}}, 0},
      {"closed square", square(0, 0, 4), 1},
      {"closed bow tie", {{0, 0}, {2, 2}, {2, 0}, {0, 2}, {0, 0}}, 0},
      {"touches itself at a vertex", {{0, 0}, {4, 0}, {4, 2}, {2, 2}, {2, 0}}, 0},
      {"doubles back along a stretch", {{0, 0}, {4, 0}, {6, 0}, {2, 0}}, 1},
      {"three points", {{0, 0}, {1, 0}, {0, 0}}, 1},
  };
  for (const Case& c : cases) {
    const RunBlob line(c.pts);
    EXPECT_EQ(xg::line_is_simple(line.blob(), kT, nullptr), c.simple) << c.name;
  }
}

TEST(LineIsSimple, CollectsNothingForASimpleLine) {
  const RunBlob line(square(0, 0, 4));
  byte* crossings = reinterpret_cast<byte*>(1);
  EXPECT_EQ(xg::line_is_simple(line.blob(), kT, &crossings), 1);
  EXPECT_EQ(crossings, nullptr);
}

TEST(LineIsSimple, HandsBackBlockWithOnlyItsFirstKBytesCopied) {
  // A long base segment, then a zigzag whose ten strokes each cross it once.
  Ring pts = {{0, 0}, {20, 0}};
  for (int i = 0; i < 11; ++i) pts.push_back(P(19.5 - 1.5 * i, i % 2 == 0 ? 1 : -1));
  const RunBlob line(pts);
  byte* crossings = nullptr;
  ASSERT_EQ(xg::line_is_simple(line.blob(), kT, &crossings), 0);
  ASSERT_NE(crossings, nullptr);
  const std::size_t k = 10;
  // The first k bytes are those of the collected multipoint: header, count, and the first
  // member's byte-order byte; everything after them is zero.
  EXPECT_EQ(crossings[0], 0);
  EXPECT_EQ(xg::load_u32(crossings + 1), uint32_t{XGWKB_TYPE_MULTIPOINT});
  EXPECT_EQ(xg::load_u32(crossings + 5), k);
  for (std::size_t i = 9; i < 9 + 21 * k; ++i) ASSERT_EQ(crossings[i], 0) << i;
  std::free(crossings);
}

TEST(LineIsSimple, CollectsEachMeetingPointOnce) {
  // Two strokes meeting the base segment at the same point count once.
  const RunBlob line({{0, 0}, {10, 0}, {10, 2}, {5, 0}, {2, 3}});
  byte* crossings = nullptr;
  ASSERT_EQ(xg::line_is_simple(line.blob(), kT, &crossings), 0);
  // k = 1: only the byte-order byte is copied, the type and count stay zero.
  EXPECT_EQ(crossings[0], 0);
  for (std::size_t i = 1; i < 30; ++i) EXPECT_EQ(crossings[i], 0) << i;
  std::free(crossings);
}

TEST(MultilineIsSimple, RejectsMeetingMembers) {
  const Bytes apart = multi(XGWKB_TYPE_MULTILINESTRING,
                            {linestring({{0, 0}, {1, 0}}), linestring({{0, 1}, {1, 1}})});
  const Bytes meeting = multi(XGWKB_TYPE_MULTILINESTRING,
                              {linestring({{0, 0}, {2, 0}}), linestring({{1, -1}, {1, 1}})});
  const Bytes self_crossing =
      multi(XGWKB_TYPE_MULTILINESTRING, {linestring({{0, 0}, {2, 2}, {2, 0}, {0, 2}})});
  EXPECT_EQ(xg::multiline_is_simple(Misaligned(apart).data(), kT), 1);
  EXPECT_EQ(xg::multiline_is_simple(Misaligned(meeting).data(), kT), 0);
  EXPECT_EQ(xg::multiline_is_simple(Misaligned(self_crossing).data(), kT), 0);
}

TEST(MultilinesCross, CountsOnlyCrossingsInsideBothSegments) {
  auto ml = [](const Ring& r) { return multi(XGWKB_TYPE_MULTILINESTRING, {linestring(r)}); };
  const Bytes base = ml({{0, 0}, {10, 0}});
  EXPECT_EQ(xg::multilines_cross(base.data(), ml({{5, -1}, {5, 1}}).data(), kT), 1);
  EXPECT_EQ(xg::multilines_cross(base.data(), ml({{5, 0}, {5, 1}}).data(), kT), 0);   // T
  EXPECT_EQ(xg::multilines_cross(base.data(), ml({{2, 0}, {8, 0}}).data(), kT), 0);   // stretch
  EXPECT_EQ(xg::multilines_cross(base.data(), ml({{5, 1}, {6, 1}}).data(), kT), 0);   // apart
}

// ---- disjoint runs -----------------------------------------------------------------------

TEST(RunsDisjoint, AnyMeetingMakesRunsNonDisjoint) {
  const RunBlob base({{0, 0}, {10, 0}, {10, 10}});
  struct Case {
    const char* name;
    Ring other;
    int32_t disjoint;
  } cases[] = {
      {"boxes apart", {{20, 20}, {30, 30}}, 1},
      {"boxes meet, lines apart", {{1, 5}, {5, 9}}, 1},
      {"crossing", {{5, -1}, {5, 1}}, 0},
      {"end within t", {{5, 5e-10}, {5, 1}}, 0},
      {"end just beyond t", {{5, 2e-9}, {5, 1}}, 1},
      {"shared stretch", {{2, 0}, {4, 0}}, 0},
  };
  for (const Case& c : cases) {
    const RunBlob other(c.other);
    EXPECT_EQ(xg::runs_disjoint(base.run(), other.run(), kT), c.disjoint) << c.name;
  }
}

// ---- segments and rings ------------------------------------------------------------------

struct SegmentRingCase {
  const char* name;
  _xgWKB_POINT a, b;
  int32_t leaves;
  int32_t enters;
};

TEST(SegmentAgainstRing, LeavesAndEntersANotchedSquare) {
  const RunBlob ring(notched_square());
  const SegmentRingCase cases[] = {
      {"far away", P(20, 20), P(30, 30), 1, 0},
      {"inside", P(1, 1), P(2, 8), 0, 1},
      {"one end outside", P(5, 2), P(5, -2), 1, 1},
      {"across the notch, ends inside", P(1, 7), P(9, 7), 1, 1},
      {"along the bottom edge", P(2, 0), P(8, 0), 0, 0},
      {"outside, touching a corner", P(-1, 1), P(1, -1), 1, 0},
      {"chord over the notch between corners", P(0, 10), P(10, 10), 1, 0},
      {"chord along the top, then over the notch", P(0, 10), P(5, 10), 1, 0},
      {"chord through the inside between boundary points", P(0, 2), P(10, 2), 0, 1},
      {"inside, grazing the notch's corner", P(1, 7), P(5, 3), 0, 1},
      {"outside, along the notch", P(3, 6), P(3, 9), 0, 0},
  };
  for (const SegmentRingCase& c : cases) {
    EXPECT_EQ(xg::segment_leaves_ring(c.a, c.b, ring.run(), kRingT), c.leaves) << c.name;
    EXPECT_EQ(xg::segment_enters_ring(c.a, c.b, ring.run(), kRingT), c.enters) << c.name;
  }
}

TEST(SegmentAgainstRing, LeavesThroughAReflexVertex) {
  // A C-shaped ring open to the right.  The segment starts inside, passes the reflex corner
  // (6, 4) into the opening and ends on the opening's upper edge: no edge is crossed in its
  // interior, yet the boundary passes from one side of the segment to the other at the corner.
  const RunBlob ring({{0, 0}, {10, 0}, {10, 4}, {6, 4}, {6, 8}, {10, 8}, {10, 12}, {0, 12}, {0, 0}});
  EXPECT_EQ(xg::segment_leaves_ring(P(5, 2), P(8, 8), ring.run(), kRingT), 1);
}

TEST(RingInsideRing, RequiresEverySegmentInside) {
  const RunBlob outer(notched_square());
  EXPECT_EQ(xg::ring_inside_ring(RunBlob(square(1, 1, 1)).run(), outer.run(), kRingT), 1);
  EXPECT_EQ(xg::ring_inside_ring(RunBlob(square(2, 2, 6)).run(), outer.run(), kRingT), 0);
  EXPECT_EQ(xg::ring_inside_ring(RunBlob(square(0, 0, 10)).run(), outer.run(), kRingT), 0);
  EXPECT_EQ(xg::ring_inside_ring(RunBlob({{50, 50}}).run(), outer.run(), kRingT), 1);
}

TEST(RingOverlapsRing, NeedsPartOfTheFirstInsideTheSecond) {
  const RunBlob big(square(0, 0, 10));
  EXPECT_EQ(xg::ring_overlaps_ring(RunBlob(square(5, 5, 10)).run(), big.run(), kRingT), 1);
  EXPECT_EQ(xg::ring_overlaps_ring(RunBlob(square(10, 0, 5)).run(), big.run(), kRingT), 0);
  EXPECT_EQ(xg::ring_overlaps_ring(RunBlob(square(2, 2, 1)).run(), big.run(), kRingT), 1);
  // The first ring's boundary must reach inside the second: callers test both orders.
  EXPECT_EQ(xg::ring_overlaps_ring(big.run(), RunBlob(square(2, 2, 1)).run(), kRingT), 0);
}

TEST(LinesTouch, MeetInExactlyOnePoint) {
  const RunBlob a(square(0, 0, 2));
  EXPECT_EQ(xg::lines_touch(a.blob(), RunBlob(square(2, 2, 2)).blob(), kRingT), 1);   // corner
  EXPECT_EQ(xg::lines_touch(a.blob(), RunBlob(square(2, 0, 2)).blob(), kRingT), 0);   // edge
  EXPECT_EQ(xg::lines_touch(a.blob(), RunBlob(square(5, 5, 2)).blob(), kRingT), 0);   // apart
  EXPECT_EQ(xg::lines_touch(a.blob(), RunBlob({{2, 1}, {3, 0}, {3, 2}, {2, 1}}).blob(), kRingT), 1);
  EXPECT_EQ(xg::lines_touch(a.blob(), RunBlob({{2, 1}, {3, 0}, {3, 2}}).blob(), kRingT), 0);  // open
}

// ---- points and polygons -----------------------------------------------------------------

TEST(PointAgainstPolygon, WithinAndOutsideRespectHoles) {
  const Bytes poly = polygon({square(0, 0, 10), square(4, 4, 2)});
  const Misaligned blob(poly);
  struct Case {
    const char* name;
    _xgWKB_POINT p;
    int32_t within;
    int32_t outside;
  } cases[] = {
      {"interior", P(1, 1), 1, 0},
      {"in the hole", P(5, 5), 0, 1},
      {"on the hole's boundary", P(4, 5), 0, 0},
      {"on the outer boundary", P(0, 5), 0, 0},
      {"outside the box", P(-1, 5), 0, 1},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(xg::point_within_polygon(c.p, blob.data(), kRingT), c.within) << c.name;
    EXPECT_EQ(xg::point_outside_polygon(c.p, blob.data(), kRingT), c.outside) << c.name;
  }
}

struct PolygonPairCase {
  const char* name;
  std::vector<Ring> b;
  int32_t overlap;
  int32_t disjoint;
};

TEST(PolygonPair, OverlapAndDisjointness) {
  const Bytes a = polygon({square(0, 0, 10), square(4, 4, 2)});
  const PolygonPairCase cases[] = {
      {"far apart", {square(20, 20, 1)}, 0, 1},
      {"boxes meet, shapes apart", {{{9, 12}, {12, 9}, {12, 12}, {9, 12}}}, 0, 1},
      {"inside the interior", {square(1, 1, 2)}, 1, 0},
      {"inside the hole", {square(4.5, 4.5, 1)}, 0, 1},
      {"filling the hole (A's outer vertices lie outside)", {square(4, 4, 2)}, 0, 0},
      {"crossing the outer ring", {square(8, 8, 5)}, 1, 0},
      {"a bar across, no vertex inside either", {{{-2, 1}, {12, 1}, {12, 3}, {-2, 3}, {-2, 1}}}, 1, 0},
      {"touching at a corner", {square(10, 10, 3)}, 0, 0},
      {"sharing an edge", {square(10, 0, 5)}, 0, 0},
      {"covering all of it", {square(-1, -1, 12)}, 1, 0},
  };
  for (const auto& c : cases) {
    const Bytes b = polygon(c.b);
    EXPECT_EQ(xg::polygons_overlap(a.data(), b.data(), kRingT), c.overlap) << c.name;
    EXPECT_EQ(xg::polygons_overlap(b.data(), a.data(), kRingT), c.overlap) << c.name;
    EXPECT_EQ(xg::polygons_disjoint(a.data(), b.data(), kRingT), c.disjoint) << c.name;
    EXPECT_EQ(xg::polygons_disjoint(b.data(), a.data(), kRingT), c.disjoint) << c.name;
  }
}

// ---- the fast locators agree with the point primitives -----------------------------------

TEST(PointLocators, AgreeWithThePointPrimitives) {
  std::mt19937 rng(7);
  std::uniform_real_distribution<double> coord(-50, 50);
  std::uniform_real_distribution<double> unit(0, 1);
  const double tolerances[] = {1e-9, 1e-3, 0.5};
  for (int round = 0; round < 200; ++round) {
    Ring ring;
    const int n = 3 + round % 6;
    for (int i = 0; i < n; ++i) ring.push_back(P(coord(rng), coord(rng)));
    ring.push_back(ring[0]);
    for (int k = 0; k < 20; ++k) {
      // Probe points on edges, near vertices and anywhere.
      const std::size_t e = rng() % (ring.size() - 1);
      const double u = unit(rng);
      _xgWKB_POINT p = k % 3 == 0 ? P(coord(rng), coord(rng))
                                  : P(ring[e].x + u * (ring[e + 1].x - ring[e].x),
                                      ring[e].y + u * (ring[e + 1].y - ring[e].y));
      if (k % 3 == 2) p = P(ring[e].x + 5e-5 * (unit(rng) - 0.5), ring[e].y);
      for (double t : tolerances) {
        const xg::Span span = xg::make_span(ring.data(), static_cast<uint32_t>(ring.size()));
        const int32_t count = static_cast<int32_t>(ring.size());
        ASSERT_EQ(xg::locate_on_run(p, span, t),
                  xgWKB_baseGeo_point_linestring_relation(&p, ring.data(), count, t));
        ASSERT_EQ(xg::ring_relation(p, span, t),
                  xgWKB_baseGeo_point_simplePolygon_relation(&p, ring.data(), count, t));
      }
    }
  }
}

// ---- pairing segments --------------------------------------------------------------------

TEST(SegmentPairs, OffersExactlyThePairsWhoseBoxesMeet) {
  // Runs long enough for the sweep; the expected pairs come from testing every box pair.
  std::mt19937 rng(11);
  std::uniform_real_distribution<double> step(-3, 3);
  auto walk = [&](int n, double x) {
    Ring r{P(x, 0)};
    for (int i = 1; i < n; ++i) r.push_back(P(r.back().x + step(rng), r.back().y + step(rng)));
    return r;
  };
  const double t = 0.01;
  auto meet = [t](const _xgWKB_POINT* p, uint32_t i, const _xgWKB_POINT* q, uint32_t j) {
    return xg::boxes_meet(xg::segment_box(p[i], p[i + 1]), xg::segment_box(q[j], q[j + 1]), t);
  };
  for (int round = 0; round < 5; ++round) {
    const Ring ra = walk(120, 0), rb = walk(90, 4);
    const xg::Span a = xg::make_span(ra.data(), 120), b = xg::make_span(rb.data(), 90);
    std::set<std::pair<uint32_t, uint32_t>> expected, got, expected_self, got_self;
    for (uint32_t i = 0; i < 119; ++i) {
      for (uint32_t j = 0; j < 89; ++j) {
        if (meet(ra.data(), i, rb.data(), j)) expected.insert({i, j});
      }
      for (uint32_t j = i + 2; j < 119; ++j) {
        if (meet(ra.data(), i, ra.data(), j)) expected_self.insert({i, j});
      }
    }
    xg::any_segment_pair(a, b, t, [&](uint32_t i, uint32_t j) { return !got.insert({i, j}).second; });
    xg::any_segment_pair_within(a, 2, t, [&](uint32_t i, uint32_t j) {
      return !got_self.insert({i, j}).second;
    });
    EXPECT_EQ(got, expected);
    EXPECT_EQ(got_self, expected_self);
  }
}
