// The edge index of large rings: every test answers through it exactly as the plain loops do.
#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

#include "relate/ring_index.h"
#include "relate/segment_tests.h"
#include "support/blob_builder.h"

using namespace xgtest;

namespace {

// Far from the origin, as projected data is, so that rounding matters.
constexpr double kX0 = 512345.678, kY0 = 4012345.678;
const double kTolerances[] = {1e-9, 1e-6, 1e-4, 0.01, 1.0};

using Rng = std::mt19937_64;

_xgWKB_POINT P(double x, double y) { return _xgWKB_POINT{x, y}; }

double uniform(Rng& rng, double lo, double hi) { return std::uniform_real_distribution<double>(lo, hi)(rng); }

Ring star(Rng& rng, int n) { return star_ring(rng, P(kX0, kY0), 50, 100, n); }

xg::Span span(const Ring& r) { return xg::make_span(r.data(), static_cast<uint32_t>(r.size())); }

// A comb on a half-unit grid: teeth of random heights joined by horizontal runs, with repeated
// vertices, closed along a flat bottom.
Ring comb(Rng& rng, int teeth) {
  Ring r{P(kX0, kY0)};
  double x = kX0;
  for (int i = 0; i < teeth; ++i) {
    const double h = 0.5 * static_cast<int>(uniform(rng, 1, 40)), x1 = x + 0.5 * static_cast<int>(uniform(rng, 1, 4));
    r.push_back(P(x, kY0 + h));
    if (i % 3 == 0) r.push_back(r.back());  // a repeated vertex
    r.insert(r.end(), {P(x1, kY0 + h), P(x1, kY0 + 1), P(x1 + 0.5, kY0 + 1)});
    x = x1 + 0.5;
  }
  r.insert(r.end(), {P(x, kY0), r.front()});
  return r;
}

// Open zig-zag line: x rising in small steps, y jumping up and down.
Ring zigzag(Rng& rng, int n) {
  Ring r;
  for (int i = 0; i < n; ++i) r.push_back(P(kX0 + i * 0.75, kY0 + (i % 2 ? 10.0 : 0.0) + uniform(rng, -1, 1)));
  return r;
}

// The span with a built index attached.
struct Indexed {
  xg::RingIndex index;
  xg::Span span;
  Indexed(const xg::Span& plain, double t) : span(plain) {
    EXPECT_TRUE(index.prepare(plain, t));
    span.index = &index;
    bool built = false;
    for (int i = 0; i < 16 && !built; ++i) built = index.ready(t);
    EXPECT_TRUE(built) << "the index was never built";
  }
};

// Probe points: anywhere near the ring, exactly on vertices and edges, on the horizontals
// through vertices, and a tolerance or the fixed 0.0001 away from vertices.
_xgWKB_POINT probe(Rng& rng, const Ring& r, double t) {
  const std::size_t j = rng() % (r.size() - 1);
  const _xgWKB_POINT &a = r[j], &b = r[j + 1];
  const double offsets[] = {0, t, -t, 1.5 * t, 1e-4, -1e-4, 1e-9}, d = offsets[rng() % 7];
  switch (rng() % 5) {
    case 0: return P(uniform(rng, kX0 - 110, kX0 + 110), uniform(rng, kY0 - 110, kY0 + 110));
    case 1: return P(a.x + d, a.y - d);
    case 2: {
      const double u = uniform(rng, 0, 1);
      return P(a.x + u * (b.x - a.x), a.y + u * (b.y - a.y) + d);
    }
    case 3: return P(uniform(rng, kX0 - 110, kX0 + 110), a.y + d);
    default: return P(a.x + uniform(rng, -2, 2), a.y + d);
  }
}

std::vector<std::pair<const char*, Ring>> shapes() {
  Rng rng(2024);
  return {{"star", star(rng, 300)}, {"comb", comb(rng, 60)}, {"zigzag", zigzag(rng, 200)},
          {"small star", star(rng, 40)}};
}

// ---- answers equal the plain ones --------------------------------------------------------

TEST(RingIndex, LocatorsAndSegmentTestsAnswerAsThePlainLoops) {
  int seen[3] = {0, 0, 0}, leaves[2] = {0, 0}, enters[2] = {0, 0};
  for (const auto& [name, pts] : shapes()) {
    const xg::Span plain = span(pts);
    for (double t : {0.0, 1e-9, 1e-6, 1e-4, 0.01, 1.0}) {
      const Indexed ix(plain, t);
      Rng rng(static_cast<uint64_t>(t * 1e9) + pts.size());
      for (int q = 0; q < 3000; ++q) {
        SCOPED_TRACE(testing::Message() << name << " t=" << t << " q=" << q);
        _xgWKB_POINT a = probe(rng, pts, t), b = probe(rng, pts, t);
        const int32_t rel = xg::ring_relation(a, plain, t);
        ASSERT_EQ(xg::ring_relation(a, ix.span, t), rel);
        ASSERT_EQ(xg::locate_on_run(a, ix.span, t), xg::locate_on_run(a, plain, t));
        ++seen[rel];
        // Segments: mostly between probe points or short; some between vertices or horizontal.
        const std::size_t j = rng() % (pts.size() - 1);
        if (q % 4 == 0) b = P(a.x + uniform(rng, -5, 5), a.y + uniform(rng, -5, 5));
        if (q % 4 == 1) a = pts[j], b = pts[(j + 1 + rng() % 3) % pts.size()];
        if (q % 8 == 2) b = P(a.x + uniform(rng, -20, 20), a.y);
        const int32_t l = xg::segment_leaves_ring(a, b, plain, t), e = xg::segment_enters_ring(a, b, plain, t);
        ASSERT_EQ(xg::segment_leaves_ring(a, b, ix.span, t), l);
        ASSERT_EQ(xg::segment_enters_ring(a, b, ix.span, t), e);
        ++leaves[l];
        ++enters[e];
      }
    }
  }
  // The probes reach every answer, boundary included.
  for (int n : {seen[0], seen[1], seen[2], leaves[0], leaves[1], enters[0], enters[1]}) EXPECT_GT(n, 1000);
}

TEST(RingIndex, RingTestsAnswerAsTheirSegmentTests) {
  // ring_inside_ring and ring_overlaps_ring index the large ring themselves and reuse vertex
  // answers between segments; the plain segment tests give the expected answers.
  Rng rng(99);
  int inside = 0, overlaps = 0;
  for (int round = 0; round < 40; ++round) {
    const bool middle = round % 2 == 1;  // the small ring in the star's middle, else in the comb's box
    const Ring big = middle ? star(rng, 200) : comb(rng, 50);
    const xg::Span b = span(big);
    const double scale = uniform(rng, 0.002, 0.3);
    const double cx = middle ? kX0 + uniform(rng, -40, 40) : uniform(rng, b.box.minx, b.box.maxx);
    const double cy = middle ? kY0 + uniform(rng, -40, 40) : uniform(rng, b.box.miny, b.box.maxy);
    Ring small = star_ring(rng, P(cx, cy), 50 * scale, 100 * scale, 12);
    if (round % 5 == 0) small.insert(small.begin() + 3, big.begin() + 5, big.begin() + 9);  // shared vertices
    const xg::Span a = span(small);
    for (double t : kTolerances) {
      int32_t want_inside = 1, want_overlap = 0;
      for (uint32_t i = 0; i + 1 < a.n; ++i) {
        want_inside &= !xg::segment_leaves_ring(a.p[i], a.p[i + 1], b, t);
        want_overlap |= xg::segment_enters_ring(a.p[i], a.p[i + 1], b, t);
      }
      ASSERT_EQ(xg::ring_inside_ring(a, b, t), want_inside) << round << " t=" << t;
      ASSERT_EQ(xg::ring_overlaps_ring(a, b, t), want_overlap) << round << " t=" << t;
      inside += want_inside;
      overlaps += want_overlap;
    }
  }
  EXPECT_GT(inside, 40);
  EXPECT_GT(overlaps, inside + 20);
}

TEST(RingIndex, RunsOutOfReachHaveNoVertexOnTheOther) {
  Rng rng(5);
  int apart = 0;
  for (int round = 0; round < 200; ++round) {
    const Ring a = star(rng, 8), b = star_ring(rng, P(kX0 + uniform(rng, 140, 220), kY0), 50, 100, 8);
    for (double t : kTolerances) {
      if (!xg::lines_out_of_reach(span(a), span(b), t)) continue;
      ++apart;
      for (const _xgWKB_POINT& p : a) ASSERT_EQ(xg::locate_on_run(p, span(b), t), 0);
      for (const _xgWKB_POINT& p : b) ASSERT_EQ(xg::locate_on_run(p, span(a), t), 0);
    }
  }
  EXPECT_GT(apart, 100);
}

TEST(RingIndex, AnOpenRunEndingOnASegmentSplitsItsStretches) {
  // A = (0,0) up, across (in 40 steps), down to B = (10,0), down to (5,-5), ending at (5,0) in
  // the middle of AB.  AB enters the run's parity interior beside that last vertex, which is
  // only seen when the vertex cuts AB into two stretches.
  Ring run{P(0, 0)};
  for (int i = 0; i <= 40; ++i) run.push_back(P(0.25 * i, 5));
  for (const _xgWKB_POINT& p : {P(10, 0), P(5, -5), P(5, 0)}) run.push_back(p);
  const xg::Span plain = span(run);
  const Indexed ix(plain, 1e-6);
  EXPECT_EQ(xg::segment_enters_ring(P(0, 0), P(10, 0), plain, 1e-6), 1);
  EXPECT_EQ(xg::segment_enters_ring(P(0, 0), P(10, 0), ix.span, 1e-6), 1);
}

TEST(RingIndex, ClearBoxesHoldNothingNearTheRing) {
  // A box found clear, by the scan before the build or by the built index (which the scan never
  // contradicts), holds no point or segment that meets the ring; with points, every point in
  // it has one relation to an exactly closed ring, and a segment in it leaves just when that
  // relation is "outside".
  int clear[2] = {0, 0}, scans = 0;
  for (const auto& [name, pts] : shapes()) {
    const xg::Span plain = span(pts);
    const bool closed = pts.front().x == pts.back().x && pts.front().y == pts.back().y;
    for (double t : kTolerances) {
      const Indexed ix(plain, t);
      xg::RingIndex shared;  // scans a dozen times, then is built
      ASSERT_TRUE(shared.prepare(plain, t));
      Rng rng(static_cast<uint64_t>(t * 1e9) + pts.size());
      for (int q = 0; q < 400; ++q) {
        SCOPED_TRACE(testing::Message() << name << " t=" << t << " q=" << q);
        xg::RingIndex scanned;  // new each time: scans, never built
        ASSERT_TRUE(scanned.prepare(plain, t));
        const double w = q % 2 ? uniform(rng, 0.01, 1) : uniform(rng, 1, 40);
        const _xgWKB_POINT c = q % 3 ? probe(rng, pts, t) : P(uniform(rng, kX0 - 110, kX0 + 110), uniform(rng, kY0 - 110, kY0 + 110));
        const _xgWKB_BOX box{c.x, c.y, c.x + w, c.y + uniform(rng, 0.01, 1) * w};
        const bool points = closed && q % 4 != 0;
        const bool by_scan = scanned.box_clear(box, t, points), by_index = ix.index.box_clear(box, t, points);
        ASSERT_TRUE(by_index || !by_scan);
        ASSERT_TRUE(by_index || !shared.box_clear(box, t, points));
        ASSERT_EQ(shared.locate_by_scan(c), xg::ring_relation(c, plain, t));
        scans += by_scan;
        if (!by_index) continue;
        ++clear[points];
        auto inside = [&] { return P(uniform(rng, box.minx, box.maxx), uniform(rng, box.miny, box.maxy)); };
        const int32_t rel = xg::ring_relation(inside(), plain, t);
        for (int k = 0; k < 10; ++k) {
          const _xgWKB_POINT a = inside(), b = inside();
          for (uint32_t j = 0; j + 1 < plain.n; ++j) {
            ASSERT_EQ(xg::segment_meet(a, b, plain.p[j], plain.p[j + 1], t, nullptr), 0);
          }
          if (!points) continue;
          ASSERT_EQ(xg::ring_relation(a, plain, t), rel);
          ASSERT_EQ(xg::segment_leaves_ring(a, b, plain, t), rel == 0 ? 1 : 0);
        }
      }
    }
  }
  EXPECT_GT(clear[0], 200);
  EXPECT_GT(clear[1], 500);
  EXPECT_GT(scans, 300);
}

// ---- when the index stays out ------------------------------------------------------------

TEST(RingIndex, IsNotUsedForOtherTolerances) {
  Rng rng(3);
  const Ring big = star(rng, 100);
  xg::RingIndex unusable;
  EXPECT_FALSE(unusable.prepare(span(big), NAN));
  EXPECT_FALSE(unusable.ready(NAN));
  Indexed ix(span(big), 0.01);
  EXPECT_FALSE(ix.index.ready(0.02));  // built for another tolerance: the plain loops answer
}

}  // namespace
