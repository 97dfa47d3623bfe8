// The shortcuts that keep relations, validity and noding near-linear give the answers of the
// plain all-pairs loops: seeded random shapes with repeated points, self-crossing rings and
// vertices within t of edges go through both and must agree exactly.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <random>
#include <set>
#include <tuple>
#include <utility>
#include <vector>

#include "construct/noding.h"
#include "relate/relation_facts.h"
#include "relate/ring_index.h"
#include "relate/segment_pairs.h"
#include "support/blob_builder.h"
#include "xggeokit.h"

using namespace xgtest;

namespace {

constexpr double kX0 = 512345.678, kY0 = 4012345.678;
const double kTolerances[] = {0.0, 1e-6, 1e-4, 0.5};

using Rng = std::mt19937_64;
using Pairs = std::set<std::pair<uint32_t, uint32_t>>;

double uniform(Rng& rng, double lo, double hi) {
  return std::uniform_real_distribution<double>(lo, hi)(rng);
}

// A random run of n points: grid points (exact repeats and collinear runs), stretches of
// repeated points, and points pushed to within about t of the previous segment.
Ring random_run(Rng& rng, int n, double extent, double t, bool closed) {
  Ring r;
  while (static_cast<int>(r.size()) < n) {
    const int kind = static_cast<int>(uniform(rng, 0, 10));
    if (kind < 5 || r.size() < 2) {
      r.push_back({kX0 + static_cast<int>(uniform(rng, 0, extent)), kY0 + static_cast<int>(uniform(rng, 0, extent))});
    } else if (kind < 7) {
      const int copies = static_cast<int>(uniform(rng, 1, 5));
      for (int i = 0; i < copies; ++i) r.push_back(r.back());
    } else {
      // Near the middle of the last segment, off it by a fraction of t either way.
      const _xgWKB_POINT a = r[r.size() - 2], b = r.back();
      const double f = uniform(rng, -1.2, 1.2) * t;
      r.push_back({0.5 * (a.x + b.x) + f, 0.5 * (a.y + b.y) - f});
    }
  }
  if (closed) r.push_back(r.front());
  return r;
}

xg::Span span(const Ring& r) { return xg::make_span(r.data(), static_cast<uint32_t>(r.size())); }

Pairs all_pairs(const xg::Span& a, const xg::Span& b, double t) {
  std::vector<_xgWKB_BOX> boxes;
  for (uint32_t j = 0; j + 1 < b.n; ++j) boxes.push_back(xg::segment_box(b.p[j], b.p[j + 1]));
  Pairs p;
  for (uint32_t i = 0; i + 1 < a.n; ++i) {
    const _xgWKB_BOX box = xg::segment_box(a.p[i], a.p[i + 1]);
    for (uint32_t j = 0; j < boxes.size(); ++j) {
      if (xg::boxes_meet(box, boxes[j], t)) p.insert({i, j});
    }
  }
  return p;
}

// The sweep offers exactly the pairs the double loop finds, each once.
void expect_sweep_offers_each_pair_once(const Ring& a, const Ring& b, double t, int trial) {
  Pairs seen;
  bool twice = false;
  xg::any_segment_pair(span(a), span(b), t, [&](uint32_t i, uint32_t j) {
    twice = twice || !seen.insert({i, j}).second;
    return false;
  });
  EXPECT_FALSE(twice) << trial;
  EXPECT_EQ(seen, all_pairs(span(a), span(b), t)) << trial;
}

// Pairs of one run's segments at least two apart: those of the double loop, each once.
void expect_pairs_within_as_double_loop(const Ring& a, double t, int trial) {
  Pairs within;
  bool twice = false;
  xg::any_segment_pair_within(span(a), 2, t, [&](uint32_t i, uint32_t j) {
    twice = twice || !within.insert({i, j}).second;
    return false;
  });
  Pairs expected;
  for (const auto& p : all_pairs(span(a), span(a), t)) {
    if (p.second >= p.first + 2) expected.insert(p);
  }
  EXPECT_FALSE(twice) << trial;
  EXPECT_EQ(within, expected) << trial;
}

// Large runs facing each other across a diagonal gap, a few spikes reaching across, are swept
// along the diagonal: the same pairs again.
TEST(SegmentPairsTest, DiagonalSweepOffersExactlyThePairsTheDoubleLoopDoes) {
  Rng rng(17);
  for (int trial = 0; trial < 2; ++trial) {
    const double t = kTolerances[trial + 1];
    const double gap = 43.5;  // apart, boxes overlapping in a corner; the gap along x + y or x - y
    Ring a = star_ring(rng, {kX0, kY0}, 24, 30, 18000);
    const double dy = trial % 2 ? gap : -gap;
    const Ring b = star_ring(rng, {kX0 + gap, kY0 + dy}, 24, 30, 18000);
    // Three long spikes of a reach across the gap into b, so that some pairs do meet.
    const std::size_t toward = (trial % 2 ? 1 : 7) * a.size() / 8;
    for (std::size_t k = toward - 200; k <= toward + 200; k += 200) {
      a[k] = {kX0 + gap - 5 + uniform(rng, 0, 10), kY0 + dy - 5 + uniform(rng, 0, 10)};
    }
    expect_sweep_offers_each_pair_once(a, b, t, trial);
  }
}

// The sweep (with its window on the other run's box) offers each pair whose boxes meet, once.
TEST(SegmentPairsTest, SweepOffersExactlyThePairsTheDoubleLoopDoes) {
  Rng rng(16);
  for (int trial = 0; trial < 40; ++trial) {
    const double t = kTolerances[trial % 4];
    const Ring a = random_run(rng, 60 + trial * 5, 50, t, trial % 2 == 0);
    // b shifted so that the two boxes overlap partly, wholly or not at all.
    Ring b = random_run(rng, 50 + trial * 3, 50, t, false);
    const double shift = (trial % 5) * 15.0;
    for (auto& p : b) p.x += shift;
    expect_sweep_offers_each_pair_once(a, b, t, trial);
    expect_pairs_within_as_double_loop(a, t, trial);
  }
}

// Runs made of long monotone stretches: arcs of circles (smooth or with radius noise),
// staircases of axis-parallel steps with repeated points, and a zig-zag whose segments are
// shorter than t.
Ring chain_run(Rng& rng, int kind, int n, double t) {
  Ring r;
  const double cx = kX0 + uniform(rng, -3, 3), cy = kY0 + uniform(rng, -3, 3);
  for (int i = 0; i < n; ++i) {
    const double f = static_cast<double>(i) / n;
    if (kind == 0) {  // an arc of a circle, a turn and a quarter, radius noise about t
      const double a = 2.5 * M_PI * f, rad = 20 + uniform(rng, -1, 1) * t;
      r.push_back({cx + rad * std::cos(a), cy + rad * std::sin(a)});
    } else if (kind == 1) {  // a staircase: steps along x, then y, some repeated
      const _xgWKB_POINT last = r.empty() ? _xgWKB_POINT{cx, cy} : r.back();
      const int step = static_cast<int>(uniform(rng, 0, 3));
      r.push_back(step == 0 ? last : step == 1 ? _xgWKB_POINT{last.x + 0.25, last.y}
                                               : _xgWKB_POINT{last.x, last.y - 0.25});
    } else {  // a zig-zag of tiny steps along a line
      r.push_back({cx + 40 * f + (i % 2) * 0.3 * t, cy + 10 * f - (i % 3) * 0.3 * t});
    }
  }
  return r;
}

// Where runs are cut into long monotone chains, the chains' binary searches still offer exactly
// the pairs of the double loop: one run against another in every mix of kinds, the run against
// itself, and tolerances from negative to far above the segment lengths.
TEST(SegmentPairsTest, LongChainsOfferExactlyThePairsTheDoubleLoopDoes) {
  Rng rng(23);
  const double tolerances[] = {-0.01, 0.0, 1e-4, 0.5, 3.0};
  for (int trial = 0; trial < 45; ++trial) {
    const double t = tolerances[trial % 5];
    const Ring a = chain_run(rng, trial % 3, 400 + trial * 7, t);
    const Ring b = chain_run(rng, (trial / 3) % 3, 300 + trial * 5, t);
    expect_sweep_offers_each_pair_once(a, b, t, trial);    expect_pairs_within_as_double_loop(a, t, trial);
  }
}

// Shapes of many runs are paired in one sweep over all their chains, against another shape or
// among themselves: the same pairs as the double loop over every pair of runs, each once.
TEST(SegmentPairsTest, ManyRunsArePairedAsEveryPairOfRunsIs) {
  Rng rng(29);
  for (int trial = 0; trial < 12; ++trial) {
    const double t = kTolerances[trial % 4];
    std::vector<Ring> xr, yr;
    for (int k = 0; k < 3 + trial; ++k) xr.push_back(random_run(rng, 20 + 9 * k, 60, t, true));
    for (int k = 0; k < 2 + trial / 2; ++k) yr.push_back(chain_run(rng, k % 3, 30 + 11 * k, t));
    yr.push_back({{kX0 + 1, kY0 + 1}});  // a lone point: no segments
    xg::ShapeRuns xs, ys;
    ASSERT_TRUE(xs.load(multiline(xr).data(), false));
    ASSERT_TRUE(ys.load(multiline(yr).data(), false));
    std::set<std::tuple<uint32_t, uint32_t, uint32_t, uint32_t>> seen, expected;
    bool twice = false;
    xg::any_run_segment_pair(xs, ys, t, [&](uint32_t rx, uint32_t i, uint32_t ry, uint32_t j) {
      twice = twice || !seen.insert({rx, i, ry, j}).second;
      return false;
    });
    for (uint32_t rx = 0; rx < xs.run_count(); ++rx) {
      for (uint32_t ry = 0; ry < ys.run_count(); ++ry) {
        if (!xg::boxes_meet(xs.run(rx).box, ys.run(ry).box, t)) continue;
        for (const auto& p : all_pairs(xs.run(rx), ys.run(ry), t)) expected.insert({rx, p.first, ry, p.second});
      }
    }
    EXPECT_FALSE(twice) << trial;
    EXPECT_EQ(seen, expected) << trial;

    // The runs of one shape against each other (as the noder pairs its members).
    std::vector<xg::Span> spans;
    for (uint32_t r = 0; r < xs.run_count(); ++r) spans.push_back(xs.run(r));
    seen.clear();
    expected.clear();
    xg::any_segment_pair_between(spans.data(), static_cast<uint32_t>(spans.size()), t,
                                 [&](uint32_t ra, uint32_t i, uint32_t rb, uint32_t j) {
                                   twice = twice || ra >= rb || !seen.insert({ra, i, rb, j}).second;
                                   return false;
                                 });
    for (uint32_t ra = 0; ra < spans.size(); ++ra) {
      for (uint32_t rb = ra + 1; rb < spans.size(); ++rb) {
        if (!xg::boxes_meet(spans[ra].box, spans[rb].box, t)) continue;
        for (const auto& p : all_pairs(spans[ra], spans[rb], t)) expected.insert({ra, p.first, rb, p.second});
      }
    }
    EXPECT_FALSE(twice) << trial;
    EXPECT_EQ(seen, expected) << trial;
  }
}

// The keys' sort, on the orders it meets: spread at random, rising and falling with jitter (a
// smooth ring's chains), crowded onto a few values, and holding a NaN.  It keeps every key and
// orders them by left edge.
TEST(SegmentPairsTest, KeysSortByLeftEdgeWhateverTheirOrder) {
  Rng rng(31);
  for (int kind = 0; kind < 4; ++kind) {
    xg::detail::SegmentKeys keys;
    const uint32_t n = 20000 + 777 * kind;
    for (uint32_t i = 0; i < n; ++i) {
      double x = uniform(rng, 0, 1000);
      if (kind == 1) x = 1000 * std::sin(M_PI * i / n) + uniform(rng, 0, 0.01);
      if (kind == 2) x = static_cast<int>(x) % 3;
      if (kind == 3 && i == n / 2) x = std::nan("");
      keys.push_back(xg::detail::SegmentKey{{x, 0, x + 1, 1}, i, 0, 0, false, false});
    }
    xg::detail::sort_segment_keys(keys);
    std::vector<bool> seen(n, false);
    bool ordered = true;
    for (std::size_t i = 0; i < keys.size(); ++i) {
      seen[keys[i].index] = true;
      if (kind != 3 && i > 0) ordered = ordered && keys[i - 1].box.minx <= keys[i].box.minx;
    }
    EXPECT_TRUE(ordered) << kind;
    EXPECT_EQ(std::count(seen.begin(), seen.end(), true), n) << kind;
  }
}

// Random lineal and areal shapes, some with holes, rings crossing themselves.
Bytes random_shape(Rng& rng, int dim, int n, double t) {
  if (dim == 1) {
    std::vector<Ring> lines;
    const int members = static_cast<int>(uniform(rng, 1, 3));
    for (int m = 0; m < members; ++m) lines.push_back(random_run(rng, n, 40, t, m == 1));
    return members == 1 ? linestring(lines[0]) : multiline(lines);
  }
  std::vector<Ring> rings{random_run(rng, n, 40, t, true)};
  if (uniform(rng, 0, 1) < 0.5) rings.push_back(random_run(rng, n / 2, 20, t, true));
  return polygon(rings);
}

bool same_point(const _xgWKB_POINT& a, const _xgWKB_POINT& b) { return std::memcmp(&a, &b, sizeof a) == 0; }

// Point location through the edge index answers as the plain loops, down to the edge it names.
TEST(RelateScalingTest, IndexedLocationMatchesThePlainLoops) {
  Rng rng(7);
  for (int trial = 0; trial < 24; ++trial) {
    const double t = kTolerances[trial % 4];
    const Bytes shape = random_shape(rng, 1 + trial % 2, 80, t);
    xg::RelateOperand indexed, plain;
    ASSERT_TRUE(indexed.load(shape.data(), t, true));
    ASSERT_TRUE(plain.load(shape.data(), t, false));
    const xg::Span& run = plain.runs().run(0);
    for (int q = 0; q < 400; ++q) {
      _xgWKB_POINT p;
      if (q % 3 == 0) {
        p = run.p[static_cast<uint32_t>(uniform(rng, 0, run.n))];  // a vertex
      } else if (q % 3 == 1) {
        const uint32_t i = static_cast<uint32_t>(uniform(rng, 0, run.n - 1));
        const double f = uniform(rng, 0, 1), d = uniform(rng, -1.5, 1.5) * t;
        p = {run.p[i].x + f * (run.p[i + 1].x - run.p[i].x) + d, run.p[i].y + f * (run.p[i + 1].y - run.p[i].y)};
      } else {
        p = {kX0 + uniform(rng, -5, 45), kY0 + uniform(rng, -5, 45)};
      }
      xg::EdgeHit hi{}, hp{};
      const xg::Loc li = indexed.locate(p, t, &hi);
      const xg::Loc lp = plain.locate(p, t, &hp);
      ASSERT_EQ(li, lp) << trial << " " << q;
      if (indexed.near_location(li)) {
        EXPECT_TRUE(same_point(hi.a, hp.a) && same_point(hi.b, hp.b)) << trial << " " << q;
        EXPECT_EQ(hi.interior_left, hp.interior_left);
      }
    }
  }
}

// On a spiky star most edges of a band lie far to one side of a query and are passed over;
// the parity mended from the others is the plain loop's, open and closed rings alike.
TEST(RelateScalingTest, PassingOverFarEdgesKeepsTheParity) {
  Rng rng(5);
  for (int trial = 0; trial < 8; ++trial) {
    const double t = kTolerances[trial % 4];
    Ring ring = star_ring(rng, {kX0, kY0}, 80, 100, 600);
    if (trial % 2) ring.pop_back();  // open: the closing edge is not stored
    const Bytes shape = polygon({ring});
    xg::RelateOperand indexed, plain;
    ASSERT_TRUE(indexed.load(shape.data(), t, true) && plain.load(shape.data(), t, false));
    xg::RingIndex index;
    xg::Span s = span(ring);
    ASSERT_TRUE(index.prepare(s, t));
    s.index = &index;
    for (int q = 0; q < 2000; ++q) {
      _xgWKB_POINT p = q % 4 == 0 ? ring[static_cast<std::size_t>(uniform(rng, 0, ring.size()))]
                                  : _xgWKB_POINT{kX0 + uniform(rng, -101, 101), kY0 + uniform(rng, -101, 101)};
      if (q % 4 == 1) p.y = ring[static_cast<std::size_t>(uniform(rng, 0, ring.size()))].y;  // through a vertex
      ASSERT_EQ(xg::ring_relation(p, s, t), xg::ring_relation(p, ring.data(), static_cast<uint32_t>(ring.size()), t))
          << trial << " " << q;
      ASSERT_EQ(indexed.locate(p, t, nullptr), plain.locate(p, t, nullptr)) << trial << " " << q;
    }
  }
}

// The facts found with indexes (and the search stopping early) agree with the plain walk.
TEST(RelateScalingTest, FactsMatchThePlainWalk) {
  Rng rng(11);
  const xg::FactQuery everything{0, 0};
  for (int trial = 0; trial < 60; ++trial) {
    const double t = kTolerances[trial % 4];
    const int da = 1 + (trial / 4) % 2;
    const Bytes a = random_shape(rng, da, 50, t);
    const Bytes b = random_shape(rng, 2, 50, t);
    xg::RelateOperand ia, ib, pa, pb;
    ASSERT_TRUE(ia.load(a.data(), t, true) && ib.load(b.data(), t, true));
    ASSERT_TRUE(pa.load(a.data(), t, false) && pb.load(b.data(), t, false));
    const xg::FactBits full = xg::relate_facts(pa, pb, t, everything);
    EXPECT_EQ(xg::relate_facts(ia, ib, t, everything), full) << trial;
    // Stopping at the first fact of a kind finds that kind exactly when the full walk does.
    for (xg::FactBits bit = 1; bit <= xg::kSharedStretch; bit <<= 1) {
      const xg::FactBits found = xg::relate_facts(ia, ib, t, xg::FactQuery{bit, 0});
      EXPECT_EQ((found & bit) != 0, (full & bit) != 0) << trial << " " << bit;
    }
  }
}

// Stretches of three or more repeated points answer as the same shape with two.
Ring two_copies(const Ring& r) {
  Ring out;
  for (const auto& p : r) {
    const std::size_t n = out.size();
    if (n >= 2 && same_point(out[n - 1], p) && same_point(out[n - 2], p)) continue;
    out.push_back(p);
  }
  return out;
}

TEST(RelateScalingTest, RepeatedPointsAnswerAsTwoCopies) {
  using Predicate = int32_t (*)(const unsigned char*, const unsigned char*, double) noexcept;
  const Predicate predicates[] = {xgWKB_shape_is_intersecting, xgWKB_shape_is_disjoint, xgWKB_shape_is_within,
                                  xgWKB_shape_is_containing,   xgWKB_shape_is_touching, xgWKB_shape_is_crossing,
                                  xgWKB_shape_is_overlapping};
  Rng rng(3);
  for (int trial = 0; trial < 40; ++trial) {
    const double t = kTolerances[trial % 4];
    const Ring ra = random_run(rng, 40, 30, t, true);
    const Ring rb = random_run(rng, 40, 30, t, trial % 3 != 0);
    const Bytes a = polygon({ra}), a2 = polygon({two_copies(ra)});
    const Bytes b = trial % 3 == 0 ? polygon({rb}) : linestring(rb);
    const Bytes b2 = trial % 3 == 0 ? polygon({two_copies(rb)}) : linestring(two_copies(rb));
    for (Predicate f : predicates) {
      EXPECT_EQ(f(a.data(), b.data(), t), f(a2.data(), b2.data(), t)) << trial;
      EXPECT_EQ(f(b.data(), a.data(), t), f(b2.data(), a2.data(), t)) << trial;
    }
  }
}

// Shapes far apart, and n copies of one point: answered at once, and as before.
TEST(RelateScalingTest, DegenerateAndFarApartShapes) {
  const Ring copies(5000, _xgWKB_POINT{kX0, kY0});
  const Bytes ring = polygon({copies}), line = linestring(copies);
  EXPECT_EQ(xgWKB_shape_is_intersecting(ring.data(), line.data(), 1e-6), 1);
  EXPECT_EQ(xgWKB_shape_is_touching(ring.data(), line.data(), 1e-6), 1);
  const Bytes far = linestring({{kX0 + 10, kY0}, {kX0 + 11, kY0}});
  EXPECT_EQ(xgWKB_shape_is_disjoint(ring.data(), far.data(), 1e-6), 1);
  EXPECT_EQ(xgWKB_shape_is_within(far.data(), ring.data(), 1e-6), 0);
  // Apart by exactly t is not within t; the malformed multi-type keeps its answer of 0.
  const Bytes next = linestring({{kX0 + 1e-6, kY0}, {kX0 + 2, kY0}});
  EXPECT_EQ(xgWKB_shape_is_disjoint(line.data(), next.data(), 1e-6), 1);
  const Bytes bad = multi(XGWKB_TYPE_MULTILINESTRING, {point(kX0 + 50, kY0)});
  EXPECT_EQ(xgWKB_shape_is_disjoint(line.data(), bad.data(), 1e-6), 0);
}

// The point count of every piece node_multiline makes of the members.
std::vector<uint32_t> piece_sizes(const std::vector<Ring>& members, double t) {
  const Bytes in = multiline(members);
  unsigned char* out = nullptr;
  std::vector<uint32_t> sizes;
  if (xg::node_multiline(in.data(), t, &out) != 0) return sizes;
  uint32_t count = 0;
  std::memcpy(&count, out + 5, 4);
  const unsigned char* at = out + 9;
  for (uint32_t i = 0; i < count; ++i) {
    uint32_t n = 0;
    std::memcpy(&n, at + 5, 4);
    sizes.push_back(n);
    at += 9 + 16 * static_cast<std::size_t>(n);
  }
  std::free(out);
  return sizes;
}

// Noding members made of repeated points: each copy is cut as it would be alone (the expected
// pieces are those of the plain all-pairs noder).
TEST(NodingScalingTest, RepeatedPointsAreCutLikeSeparateSegments) {
  struct Row {
    std::vector<Ring> members;
    double t;
    std::vector<uint32_t> pieces;
  };
  const _xgWKB_POINT p{kX0, kY0}, q{kX0 + 1, kY0}, r{kX0 + 1, kY0 + 1};
  const std::vector<Row> rows = {
      {{Ring(6, p), Ring(6, p)}, 1e-4, {2, 2, 2, 2, 2, 2, 2, 2, 2, 2}},
      {{{q, p, p, p, r}, {p, {kX0 - 1, kY0}}}, 1e-4, {2, 2, 2, 2, 2}},  // copies at the meeting
      // At t = 0 every copy met inside a segment cuts it once more.
      {{{q, p, p, p, r}, {{kX0, kY0 - 1}, {kX0, kY0 + 1}}}, 0, {2, 3, 3, 3, 2, 2, 2, 2, 2, 2}},
      {{{{kX0 - 1, kY0}, q}, {p, p, p, {kX0, kY0 + 1}}}, 0, {2, 2, 2, 2, 2, 3, 3, 2}},
  };
  for (std::size_t i = 0; i < rows.size(); ++i) {
    const auto got = piece_sizes(rows[i].members, rows[i].t);
    EXPECT_EQ(got, rows[i].pieces) << i;
  }
}

}  // namespace
