// The shortcuts of the relation search (segments walked on their own while contacts are still
// being gathered, repeated contacts dropped) decide every query exactly as the plain search
// does: seeded random pairs of shapes go through both.
#include <gtest/gtest.h>

#include <cmath>
#include <iterator>
#include <random>
#include <vector>

#include "relate/relation_facts.h"
#include "support/blob_builder.h"

using namespace xgtest;
using xg::FactBits;
using xg::FactQuery;

namespace {

using Rng = std::mt19937_64;

constexpr double kR = 100.0;
const _xgWKB_POINT kC{512345.678, 4012345.678};
const double kTolerances[] = {0.0, 1e-6, 1e-3, 0.5};

constexpr FactBits kII = xg::fact(xg::kIn, xg::kIn);
constexpr FactBits kIE = xg::fact(xg::kIn, xg::kOut);
constexpr FactBits kBE = xg::fact(xg::kOn, xg::kOut);
constexpr FactBits kEI = xg::fact(xg::kOut, xg::kIn);

// What the predicates ask (touching, within, disjoint, crossing at equal and at lower
// dimension, overlapping of areas and of lines), and a search that nothing stops; the test
// adds a search for each single fact.
const FactQuery kQueries[] = {{kII, 0},      {kIE | kBE, 0},       {xg::kFirstMeetsSecond, 0},
                              {xg::kSharedStretch, 0}, {0, kII | kIE}, {0, kII | kIE | kEI},
                              {0, xg::kSharedStretch | kIE | kEI}, {0, 0}};

double uniform(Rng& rng, double lo, double hi) {
  return std::uniform_real_distribution<double>(lo, hi)(rng);
}

_xgWKB_POINT at(double dx, double dy) { return {kC.x + dx, kC.y + dy}; }

// Every vertex moved by up to 1.2 t either way (so within t of its old edges or just beyond),
// and here and there repeated up to four times.
Ring jittered(Rng& rng, const Ring& r, double t) {
  Ring out;
  for (std::size_t i = 0; i < r.size(); ++i) {
    _xgWKB_POINT p = r[i];
    if (i > 0 && i + 1 < r.size()) p = {p.x + uniform(rng, -1.2, 1.2) * t, p.y + uniform(rng, -1.2, 1.2) * t};
    const int copies = uniform(rng, 0, 1) < 0.1 ? static_cast<int>(uniform(rng, 2, 5)) : 1;
    for (int k = 0; k < copies; ++k) out.push_back(p);
  }
  return out;
}

// An open zigzag of n points across [-R, R] in x, swinging by up to R in y: crosses a spiky
// star or another zigzag many times.
Ring zigzag(Rng& rng, int n, double dy) {
  Ring r;
  for (int i = 0; i < n; ++i) r.push_back(at(-kR + 2 * kR * i / (n - 1), dy + uniform(rng, -kR, kR)));
  return r;
}

// A fan of m segments through one hub, as a multilinestring: every segment of one fan meets
// every segment of another at the hub.
Bytes fan(Rng& rng, int m, const _xgWKB_POINT& hub) {
  std::vector<Ring> members;
  for (int k = 0; k < m; ++k) {
    const double a = uniform(rng, 0, M_PI), len = uniform(rng, 1, kR);
    members.push_back({{hub.x - len * std::cos(a), hub.y - len * std::sin(a)}, hub,
                       {hub.x + len * std::cos(a), hub.y + len * std::sin(a)}});
  }
  return multiline(members);
}

struct Pair {
  Bytes a, b;  // a's dimension not above b's
};

// Pairs of one family per trial: spiky stars overlapping, touching or apart (large enough for
// the sampling that precedes the gathering), shapes sharing edges, a copy with vertices within
// t of the original's edges and repeated points, lines across stars, zigzags across each other,
// and fans sharing a hub.
Pair make_pair(Rng& rng, int family, double t) {
  const bool large = family <= 2 && uniform(rng, 0, 1) < 0.25;
  const int n = static_cast<int>(large ? uniform(rng, 1030, 1300) : uniform(rng, 8, 200));
  const Ring star = star_ring(rng, kC, 0.8 * kR, kR, n);
  switch (family) {
    case 0: {  // overlapping, the second with a hole
      const _xgWKB_POINT c2 = at(0.8 * kR, 0.3 * kR);
      return {polygon({star}), polygon({star_ring(rng, c2, 0.8 * kR, kR, n),
                                        star_ring(rng, c2, 0.1 * kR, 0.3 * kR, 20, true)})};
    }
    case 1:  // rims about touching
      return {polygon({star}), polygon({star_ring(rng, at(1.8 * kR, 0), 0.8 * kR, kR, n)})};
    case 2:  // apart, boxes overlapping
      return {polygon({star}), polygon({star_ring(rng, at(1.45 * kR, 1.45 * kR), 0.8 * kR, kR, n)})};
    case 3: {  // squares sharing a side or one inside the other, one of them jittered
      const double x2 = uniform(rng, 0, 1) < 0.5 ? kR : 0.5 * kR;
      return {polygon({square(kC.x, kC.y, kR)}), polygon({jittered(rng, square(kC.x + x2, kC.y, kR), t)})};
    }
    case 4:  // a copy, moved within about t, with repeated points
      return {polygon({jittered(rng, star, t)}), polygon({star})};
    case 5:  // the star's boundary, or a zigzag across it, against the star
      return {uniform(rng, 0, 1) < 0.5 ? linestring(jittered(rng, star, t)) : linestring(zigzag(rng, n, 0)),
              polygon({star})};
    case 6:  // zigzags across each other, one of them in two members
      return {linestring(zigzag(rng, n, 0)),
              multiline({zigzag(rng, n / 2 + 2, 0.5 * kR), zigzag(rng, n / 2 + 2, -0.5 * kR)})};
    default:  // fans sharing a hub (every segment pair finds the hub)
      return {fan(rng, 40, kC), fan(rng, 40, kC)};
  }
}

struct Search {
  FactBits facts;
  uint32_t local_walks;
};

Search search(const Bytes& a, const Bytes& b, double t, FactQuery q, bool shortcuts) {
  xg::RelateOperand x, y;
  EXPECT_TRUE(x.load(a.data(), t) && y.load(b.data(), t));
  xg::FactSearch s;
  s.shortcuts = shortcuts;
  const FactBits f = xg::relate_facts(x, y, t, q, &s);
  return {f, s.local_walks};
}

// The shortcuts decide each query exactly when the plain search does, note only facts the full
// plain search notes, and find those same facts when nothing stops the search.
TEST(RelateEarlyExitTest, ShortcutsDecideEveryQueryAsThePlainSearch) {
  Rng rng(16);
  constexpr int kFamilies = 8;
  uint32_t walks[kFamilies] = {};
  for (int trial = 0; trial < 10 * kFamilies; ++trial) {
    const int family = trial % kFamilies;
    const double t = kTolerances[(trial / kFamilies) % 4];
    const Pair p = make_pair(rng, family, t);
    for (int order = 0; order < 2; ++order) {
      const Bytes& a = order == 0 ? p.a : p.b;
      const Bytes& b = order == 0 ? p.b : p.a;
      if (order == 1 && xg::shape_type(a.data()) % 3 != xg::shape_type(b.data()) % 3) continue;
      // Asking for every fact at once runs every walk (stopping only once all are found).
      const FactBits full = search(a, b, t, FactQuery{0, 2 * xg::kSharedStretch - 1}, false).facts;
      std::vector<FactQuery> queries(std::begin(kQueries), std::end(kQueries));
      for (FactBits bit = 1; bit <= xg::kSharedStretch; bit <<= 1) queries.push_back({bit, 0});
      for (const FactQuery& q : queries) {
        const Search fast = search(a, b, t, q, true);
        const FactBits plain = search(a, b, t, q, false).facts;
        walks[family] += fast.local_walks;
        SCOPED_TRACE(testing::Message() << "trial " << trial << " order " << order << " query "
                                        << q.stop_any << "/" << q.stop_all);
        EXPECT_EQ(xg::decides(fast.facts, q), xg::decides(plain, q));
        EXPECT_EQ(fast.facts & ~full, 0u);
        if (!xg::decides(plain, q)) {
          EXPECT_EQ(fast.facts, plain);
        }
      }
    }
  }
  // The families meant to cross do reach the walks under test.
  for (int family : {0, 5, 6}) EXPECT_GT(walks[family], 0u) << family;
}

// Overlapping spiky stars: an interior contact settles touching after walking a handful of
// segments, not after gathering the crossings of every spike with every other.
TEST(RelateEarlyExitTest, OverlappingStarsSettleTouchingAfterAFewSegments) {
  Rng rng(7);
  for (int n : {200, 5000}) {
    const Bytes a = polygon({star_ring(rng, kC, 0.8 * kR, kR, n)});
    const Bytes b = polygon({star_ring(rng, at(0.8 * kR, 0.3 * kR), 0.8 * kR, kR, n)});
    const Search s = search(a, b, 1e-6, FactQuery{kII, 0}, true);
    EXPECT_NE(s.facts & kII, 0u) << n;
    // Small: the first crossing segment settles it.  Large: the sampled segments up to the
    // first one across the other's rim (most samples lie far from it, and note nothing).
    EXPECT_LE(s.local_walks, n < 1024 ? 1u : 16u) << n;
  }
}

}  // namespace
