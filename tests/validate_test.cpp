// Validation: each rejection on a minimal offending shape, valid shapes of every type, and
// agreement with GEOS's isValid on random polygons.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <utility>

#include "support/blob_builder.h"
#include "support/geos_oracle.h"

using namespace xgtest;

namespace {

// The verdict and the status word.
using Outcome = std::pair<uint32_t, int32_t>;

Outcome check(const Bytes& blob, int32_t preset = 0) {
  Misaligned m(blob);
  Outcome o{0, preset};
  o.first = xgWKB_shape_check_WKBdata(m.data(), &o.second);
  return o;
}

Ring triangle(_xgWKB_POINT a, _xgWKB_POINT b, _xgWKB_POINT c) { return {a, b, c, a}; }

}  // namespace

TEST(Validation, RejectsEachRuleOnAMinimalShape) {
  const Ring shell = square(0, 0, 10);
  // Two holes touching the shell at (0,5) and (10,5) and each other at (5,4): shell - left -
  // right - shell is a cycle that cuts the piece between them off.
  const Ring left = triangle({0, 5}, {5, 4}, {4, 7}), right = triangle({10, 5}, {5, 4}, {8, 7});
  const Ring dented = {{0, 0}, {10, 0}, {10, 10}, {5, 6}, {0, 10}, {0, 0}};
  auto mpoly = [](const Ring& a, const Ring& b) {
    return multi(XGWKB_TYPE_MULTIPOLYGON, {polygon({a}), polygon({b})});
  };
  const struct { const char* what; Bytes blob; int32_t status; } cases[] = {
      {"closed line of three points", linestring({{0, 0}, {1, 0}, {0, 0}}), XGWKB_E_TOO_FEW_POINTS},
      {"one-point line", linestring({{0, 0}}), XGWKB_E_TOO_FEW_POINTS},
      {"line doubling back", linestring({{0, 0}, {10, 0}, {5, 0}}), XGWKB_E_OVERLAPPING_POLYGONS},
      {"unclosed ring", polygon({{{0, 0}, {10, 0}, {10, 10}, {0, 10}}}), XGWKB_E_NOT_CLOSED},
      {"bow-tie ring", polygon({{{0, 0}, {10, 10}, {10, 0}, {0, 10}, {0, 0}}}), XGWKB_E_SELF_INTERSECTION},
      // The spike's base is met by two non-adjacent segments: the self-crossing test answers first.
      {"ring with a spike", polygon({{{0, 0}, {10, 0}, {10, 10}, {10, 15}, {10, 10}, {0, 10}, {0, 0}}}),
       XGWKB_E_SELF_INTERSECTION},
      {"hole partly outside", polygon({shell, square(8, 8, 4)}), XGWKB_E_HOLE_OUTSIDE},
      {"overlapping holes", polygon({shell, square(1, 1, 4), square(3, 3, 4)}), XGWKB_E_RINGS_OVERLAP},
      // Rings through the same points are nested as well, whatever their start and direction.
      {"nested holes", polygon({shell, square(1, 1, 6), square(2, 2, 2)}), XGWKB_E_RINGS_OVERLAP},
      {"identical holes", polygon({shell, square(1, 1, 4), square(1, 1, 4)}), XGWKB_E_RINGS_OVERLAP},
      {"identical holes, other start and direction",
       polygon({shell, square(1, 1, 4), {{5, 5}, {5, 1}, {1, 1}, {1, 5}, {5, 5}}}), XGWKB_E_RINGS_OVERLAP},
      {"hole identical to the shell", polygon({shell, shell}), XGWKB_E_RINGS_OVERLAP},
      {"hole identical to the shell, reversed", polygon({shell, {{0, 0}, {0, 10}, {10, 10}, {10, 0}, {0, 0}}}),
       XGWKB_E_RINGS_OVERLAP},
      {"holes cutting the interior apart", polygon({shell, left, right}), XGWKB_E_INTEGRITY},
      {"hole along a stretch of the shell", polygon({shell, {{0, 2}, {3, 3}, {0, 4}, {0, 2}}}), XGWKB_E_INTEGRITY},
      // A hole vertex on the shell's bottom edge and the shell's reflex vertex on a hole edge.
      {"hole touching the shell twice", polygon({dented, triangle({3, 6}, {7, 6}, {5, 0})}), XGWKB_E_INTEGRITY},
      {"empty multilinestring", multi(XGWKB_TYPE_MULTILINESTRING, {}), XGWKB_E_INTEGRITY},
      {"bad member line", multiline({{{0, 0}, {1, 1}}, {{0, 0}}}), XGWKB_E_TOO_FEW_POINTS},
      {"second member's hole outside",
       multi(XGWKB_TYPE_MULTIPOLYGON, {polygon({square(20, 20, 2)}), polygon({shell, square(9, 9, 3)})}),
       XGWKB_E_HOLE_OUTSIDE},
      {"overlapping members", mpoly(square(0, 0, 4), square(2, 2, 4)), XGWKB_E_RINGS_OVERLAP},
      {"nested members", mpoly(shell, square(2, 2, 1)), XGWKB_E_RINGS_OVERLAP},
      {"equal members", mpoly(shell, shell), XGWKB_E_RINGS_OVERLAP},
  };
  for (const auto& c : cases) EXPECT_EQ(check(c.blob), (Outcome{0, c.status})) << c.what;
  // Holes touching the shell or each other without closing a cycle are fine.
  EXPECT_EQ(check(polygon({shell, left, triangle({9, 1}, {8, 2}, {9, 3})})).first, 1u);
}

TEST(Validation, AcceptsValidShapesOfEveryType) {
  const Bytes shapes[] = {
      point(1, 2),
      linestring({{0, 0}, {1, 0}, {0, 0.5}, {1, 1}}),  // an open line may cross itself
      linestring({{0, 0}, {1, 0}, {1, 1}, {0, 0}}),
      multi(XGWKB_TYPE_MULTIPOINT, {}),
      multi(XGWKB_TYPE_MULTIPOINT, {point(0, 0), point(0, 0)}),
      multiline({{{0, 0}, {1, 1}}, {{0, 1}, {1, 0}}}),
      multi(XGWKB_TYPE_MULTIPOLYGON, {polygon({square(0, 0, 1)}), polygon({square(3, 3, 1)})}),
      // Members meeting at one point: a corner, and a vertex on an edge.
      multi(XGWKB_TYPE_MULTIPOLYGON, {polygon({square(0, 0, 4)}), polygon({square(4, 4, 4)})}),
      multi(XGWKB_TYPE_MULTIPOLYGON, {polygon({square(0, 0, 4)}), polygon({triangle({6, 4}, {4, 2}, {6, 0})})}),
  };
  for (const Bytes& b : shapes) EXPECT_EQ(check(b), (Outcome{1, 0})) << "type " << b[1];
}

TEST(Validation, StatusWordRules) {
  for (int32_t status : {0, 0x100}) {  // the null-pointer code is ORed in, not assigned
    const int32_t preset = status;
    EXPECT_EQ(xgWKB_shape_check_WKBdata(nullptr, &status), 0u);
    EXPECT_EQ(status, XGWKB_E_NULL_POINTER | preset);
  }
  // Not a geometry: no verdict, the status stays as preset.
  EXPECT_EQ(check(nil(), 123), (Outcome{0, 123}));
  // An empty polygon's -82 is ORed in as well.
  EXPECT_EQ(check(polygon({}), 0x1000).second, XGWKB_E_INTEGRITY | 0x1000);
  // Assigned codes replace the preset value.
  EXPECT_EQ(check(linestring({{0, 0}}), 0x1000).second, XGWKB_E_TOO_FEW_POINTS);
}

TEST(Validation, AgreesWithGeosOnRandomPolygons) {
  GeosOracle oracle;
  std::mt19937 rng(20261122);
  std::uniform_int_distribution<int> vertices(3, 9);
  std::uniform_real_distribution<double> offset(-40, 40);
  int seen[2] = {0, 0};
  for (int i = 0; i < 400; ++i) {
    // A star shell, half the time with its vertices shuffled (usually self-crossing), and up to
    // two star holes placed anywhere near its middle.
    std::vector<Ring> rings{star_ring(rng, {0, 0}, 50, 100, vertices(rng))};
    if (rng() % 2) {
      std::shuffle(rings[0].begin(), rings[0].end() - 1, rng);
      rings[0].back() = rings[0].front();
    }
    for (int h = 0; h < i % 3; ++h) rings.push_back(star_ring(rng, {offset(rng), offset(rng)}, 2, 12, vertices(rng)));
    const Bytes blob = polygon(rings);
    GeosGeom g(oracle, oracle.to_geos(blob.data()));
    const bool geos_valid = GEOSisValid_r(oracle.handle(), g.get()) == 1;
    const Outcome o = check(blob);
    EXPECT_EQ(o.first == 1, geos_valid) << oracle.to_wkt(g.get()) << " status " << o.second;
    ++seen[geos_valid];
  }
  EXPECT_GT(seen[0], 50);
  EXPECT_GT(seen[1], 50);
}
