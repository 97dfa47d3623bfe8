// The relation predicates: identities, dispatch, contacts within the tolerance, shared edges,
// closed lines, and the deliberately partial equality test.
#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <string>

#include "support/blob_builder.h"

using namespace xgtest;

namespace {

using Predicate = int32_t (*)(const unsigned char*, const unsigned char*, double);

constexpr double kT = 1e-9;
const Predicate kAll[] = {xgWKB_shape_is_disjoint, xgWKB_shape_is_intersecting, xgWKB_shape_is_within,
                          xgWKB_shape_is_containing, xgWKB_shape_is_crossing, xgWKB_shape_is_overlapping,
                          xgWKB_shape_is_touching, xgWKB_shape_is_equal};
const Bytes kSquare = polygon({square(0, 0, 10)});

// One or two shapes of every type, all around the square (0,0)-(10,10), plus shapes the
// predicates do not take.
std::vector<std::pair<const char*, Bytes>> samples() {
  Bytes annotation = header(XGWKB_TYPE_SINGLETEXT), envelope = header(XGWKB_TYPE_ENVELOPE);
  put_u32(annotation, 0);
  for (double v : {0.0, 0.0, 10.0, 10.0}) put_f64(envelope, v);
  return {{"point inside", point(5, 5)},
          {"point on edge", point(10, 5)},
          {"line across", linestring({{-5, 5}, {15, 5}})},
          {"closed line", linestring(square(2, 2, 3))},
          {"square", kSquare},
          {"square with hole", polygon({square(0, 0, 10), square(4, 4, 2)})},
          {"multipoint", multi(XGWKB_TYPE_MULTIPOINT, {point(5, 5), point(20, 20)})},
          {"multiline", multiline({{{0, 0}, {10, 10}}, {{10, 0}, {12, 3}}})},
          {"multipolygon", multi(XGWKB_TYPE_MULTIPOLYGON, {polygon({square(1, 1, 3)}), polygon({square(10, 10, 2)})})},
          {"nil", nil()},
          {"annotation", annotation},
          {"envelope", envelope}};
}

bool is_geometry(const Bytes& b) { return b[1] >= 1 && b[1] <= 6; }

}  // namespace

TEST(RelateIdentities, HoldForEveryPairOfSamples) {
  const Predicate symmetric[] = {xgWKB_shape_is_disjoint, xgWKB_shape_is_touching,
                                 xgWKB_shape_is_crossing, xgWKB_shape_is_overlapping};
  const auto all = samples();
  for (const auto& [a_name, a] : all) {
    for (const auto& [b_name, b] : all) {
      SCOPED_TRACE(std::string(a_name) + " / " + b_name);
      const Misaligned ma(a), mb(b);
      EXPECT_EQ(xgWKB_shape_is_containing(ma.data(), mb.data(), kT), xgWKB_shape_is_within(mb.data(), ma.data(), kT));
      for (Predicate p : symmetric) EXPECT_EQ(p(ma.data(), mb.data(), kT), p(mb.data(), ma.data(), kT));
      if (is_geometry(a) && is_geometry(b)) {
        EXPECT_EQ(xgWKB_shape_is_intersecting(ma.data(), mb.data(), kT),
                  1 - xgWKB_shape_is_disjoint(ma.data(), mb.data(), kT));
      } else {
        for (Predicate p : kAll) EXPECT_EQ(p(ma.data(), mb.data(), kT), 0);
      }
    }
  }
}

TEST(RelateDegenerate, EmptyAndShortPartsAreReadWithinTheirBlobs) {
  // Misaligned copies end where their heap buffers end: a read past a blob shows under the
  // address sanitizer.
  const std::vector<Bytes> shapes = {
      point(0, 0),  linestring({}),  linestring({{0, 0}}), linestring({{0, 0}, {0, 0}}), polygon({}), polygon({{}}),
      polygon({{{0, 0}, {1, 1}}}), polygon({square(-1, -1, 2), {}}), multi(XGWKB_TYPE_MULTIPOINT, {}),
      multiline({{}}), multi(XGWKB_TYPE_MULTIPOLYGON, {polygon({})}), multi(XGWKB_TYPE_MULTIPOLYGON, {}),
      multi(XGWKB_TYPE_MULTIPOINT, {point(0, 0), point(1, 1)}),
      multi(XGWKB_TYPE_MULTIPOLYGON, {polygon({}), polygon({square(-1, -1, 2)}), polygon({})})};
  for (const Bytes& a : shapes) {
    for (const Bytes& b : shapes) {
      const Misaligned ma(a), mb(b);
      for (Predicate p : kAll) EXPECT_LE(static_cast<uint32_t>(p(ma.data(), mb.data(), kT)), 1u);
    }
  }
}

TEST(RelateDegenerate, ShapesWithoutRingsHaveNoPoints) {
  const Bytes no_rings[] = {polygon({}), multi(XGWKB_TYPE_MULTIPOLYGON, {polygon({})}),
                            multi(XGWKB_TYPE_MULTIPOLYGON, {polygon({}), polygon({})})};
  const Bytes others[] = {point(5, 5), multi(XGWKB_TYPE_MULTIPOINT, {point(5, 5), point(0, 0)}),
                          linestring({{0, 0}, {10, 10}}), kSquare, multiline({{{0, 0}, {10, 10}}}),
                          multi(XGWKB_TYPE_MULTIPOLYGON, {kSquare})};
  for (const Bytes& e : no_rings) {
    for (const Bytes& o : others) {
      const Misaligned me(e), mo(o);
      for (const auto& [a, b] : {std::pair{me.data(), mo.data()}, std::pair{mo.data(), me.data()}}) {
        std::vector<int32_t> got;  // the eight predicates in the order of kAll
        for (Predicate p : kAll) got.push_back(p(a, b, kT));
        EXPECT_EQ(got, std::vector<int32_t>({1, 0, 0, 0, 0, 0, 0, 0}))
            << "types " << int(e[1]) << ", " << int(o[1]) << (a == me.data() ? "" : " exchanged");
      }
    }
  }
}

TEST(RelateContacts, AVertexWithinTOfAnEdgeTouchesIt) {
  const double t = 1e-3;
  const Bytes& sq = kSquare;
  for (double gap : {0.5 * t, 2 * t}) {
    const bool near = gap < t;
    const struct {
      const char* name;
      Bytes a, b;
      int32_t touching;  // and so not disjoint; with the gap at 2t instead: disjoint
    } cases[] = {
        {"point by a line", point(5, gap), linestring({{10, 0}, {0, 0}}), 0},
        {"point by a line's end", point(-gap, 0), linestring({{0, 0}, {10, 0}}), 1},
        {"point by a polygon's edge", point(10 + gap, 5), sq, 1},
        {"line ending by a line", linestring({{5, gap}, {5, 5}}), linestring({{0, 0}, {10, 0}}), 1},
        {"line ending by a polygon", linestring({{-5, 5}, {-gap, 5}}), sq, 1},
        {"polygon corner by a polygon's edge", polygon({{{10 + gap, 5}, {15, 0}, {15, 10}, {10 + gap, 5}}}), sq, 1},
        {"parallel edges", polygon({square(10 + gap, 2, 3)}), sq, 1},
        {"multipoint by a multipolygon", multi(XGWKB_TYPE_MULTIPOINT, {point(10 + gap, 5), point(20, 20)}),
         multi(XGWKB_TYPE_MULTIPOLYGON, {sq}), 1},
    };
    for (const auto& c : cases) {
      const int32_t touching = xgWKB_shape_is_touching(c.a.data(), c.b.data(), t);
      EXPECT_EQ((std::pair{touching, xgWKB_shape_is_disjoint(c.a.data(), c.b.data(), t)}),
                (std::pair{near ? c.touching : 0, near ? 0 : 1})) << c.name << (near ? " at t/2" : " at 2t");
    }
  }
}

TEST(RelateSharedEdges, FollowTheInteriorsOnEitherSideAndClosedLinesHaveNoEnds) {
  const Bytes& sq = kSquare;
  const Bytes two = multiline({{{0, 0}, {4, 0}}, {{4, 0}, {4, 4}}});
  const struct { const char* name; Bytes a, b; int32_t within, touching, overlapping, crossing; } cases[] = {
      {"squares side by side", polygon({square(10, 0, 10)}), sq, 0, 1, 0, 0},
      {"half of the square", polygon({{{0, 0}, {5, 0}, {5, 10}, {0, 10}, {0, 0}}}), sq, 1, 0, 0, 0},
      {"the square itself, other start", polygon({{{10, 10}, {0, 10}, {0, 0}, {10, 0}, {10, 10}}}), sq, 1, 0, 0, 0},
      {"overlapping along an edge", polygon({{{5, 0}, {15, 0}, {15, 10}, {5, 10}, {5, 0}}}), sq, 0, 0, 1, 0},
      {"filling the hole", polygon({square(4, 4, 2)}), polygon({square(0, 0, 10), square(4, 4, 2)}), 0, 1, 0, 0},
      {"line along an edge", linestring({{2, 0}, {8, 0}}), sq, 0, 1, 0, 0},
      {"line along an edge, then inside", linestring({{2, 0}, {8, 0}, {5, 5}}), sq, 1, 0, 0, 0},
      {"line along an edge, then outside", linestring({{2, 0}, {8, 0}, {5, -5}}), sq, 0, 1, 0, 0},
      {"lines sharing a stretch", linestring({{0, 0}, {6, 0}}), linestring({{4, 0}, {10, 0}}), 0, 0, 1, 0},
      {"line on part of a line", linestring({{2, 0}, {4, 0}}), linestring({{0, 0}, {10, 0}}), 1, 0, 0, 0},
      // A closed line has no end points; ends shared by two members of a multilinestring cancel.
      {"start of an open line", point(0, 0), linestring({{0, 0}, {4, 0}, {4, 4}}), 0, 1, 0, 0},
      {"start of a closed line", point(0, 0), linestring(square(0, 0, 4)), 1, 0, 0, 0},
      {"joint of two members", point(4, 0), two, 1, 0, 0, 0},
      {"free end of two members", point(0, 0), two, 0, 1, 0, 0},
      {"line through the joint of two members", linestring({{2, -2}, {6, 2}}), two, 0, 0, 0, 1},
  };
  for (const auto& c : cases) {
    std::vector<int32_t> got;  // within, touching, overlapping, crossing, disjoint
    for (Predicate p : {xgWKB_shape_is_within, xgWKB_shape_is_touching, xgWKB_shape_is_overlapping,
                        xgWKB_shape_is_crossing, xgWKB_shape_is_disjoint})
      got.push_back(p(c.a.data(), c.b.data(), kT));
    EXPECT_EQ(got, std::vector<int32_t>({c.within, c.touching, c.overlapping, c.crossing, 0})) << c.name;
  }
}

TEST(RelateNearParallel, AnEdgeLeavingTheToleranceBandIsSplitWhereItLeaves) {
  // X's bottom edge dips 1e-6 below Y's: for t between 5e-7 and 1e-6 the first part of Y's edge
  // lies within t of X's boundary and the rest does not.
  const Bytes x = polygon({{{0, 0}, {50, -1e-6}, {60, -50}, {200, -50}, {200, 200}, {-50, 200}, {0, 0}}});
  const Bytes y = polygon({{{0, 0}, {100, 0}, {50, 50}, {0, 0}}});
  for (double t : {1e-9, 5e-7, 6e-7, 9e-7, 1e-6, 2e-6, 1e-4}) {
    const Misaligned mx(x), my(y);
    EXPECT_EQ((std::vector<int32_t>{xgWKB_shape_is_containing(mx.data(), my.data(), t),
                                    xgWKB_shape_is_within(my.data(), mx.data(), t),
                                    xgWKB_shape_is_overlapping(mx.data(), my.data(), t),
                                    xgWKB_shape_is_disjoint(mx.data(), my.data(), t)}),
              (std::vector<int32_t>{1, 1, 0, 0})) << t;
  }
}

TEST(RelateNearParallel, EdgesPlacedBetweenHalfTAndTwiceTFromEachOther) {
  // In a frame turned, scaled and moved at random: a triangle with base A B and shapes whose
  // edges run from A at a slant ending between 1.2t and 2t off the base (so that they leave the
  // band of width t part way), or parallel to it between t/2 and t off (inside the band).
  std::mt19937 rng(20261124);
  auto real = [&](double lo, double hi) { return std::uniform_real_distribution<double>(lo, hi)(rng); };
  const Predicate preds[] = {xgWKB_shape_is_within, xgWKB_shape_is_overlapping, xgWKB_shape_is_crossing,
                             xgWKB_shape_is_touching, xgWKB_shape_is_disjoint};
  for (int trial = 0; trial < 300; ++trial) {
    const double size = std::pow(10.0, real(-1, 3)), t = size * std::pow(10.0, real(-9, -4));
    const double m = real(0.3, 0.9);
    const double turn = real(0, 2 * M_PI), ox = real(-1e3, 1e3), oy = real(-1e3, 1e3);
    const double near = real(0.5, 1) * t / size, far = real(1.2, 2) * t / size;
    auto place = [&](Ring r) {
      for (auto& p : r) {
        const double x = p.x * size, y = p.y * size;
        p = {ox + x * std::cos(turn) - y * std::sin(turn), oy + x * std::sin(turn) + y * std::cos(turn)};
      }
      return r;
    };
    auto slant = [&](double dy) {
      return polygon({place({{0, 0}, {m, dy}, {m + 0.1, -0.5}, {2, -0.5}, {2, 2}, {-0.5, 2}, {0, 0}})});
    };
    auto flat = [&](double dy) { return polygon({place({{-0.5, dy}, {2, dy}, {2, 2}, {-0.5, 2}, {-0.5, dy}})}); };
    const Bytes tri = polygon({place({{0, 0}, {1, 0}, {0.5, 0.5}, {0, 0}})});
    const Bytes base = linestring(place({{0, 0}, {1, 0}}));
    const struct { const char* name; Bytes a, b; const char* want; } cases[] = {
        // within(a, b), overlapping, crossing, touching, disjoint; '-' not asked.
        {"triangle, edge slanting off outside", tri, slant(-far), "10-00"},
        {"triangle, edge slanting into it", tri, slant(far), "01-00"},
        {"triangle, parallel edge outside", tri, flat(-near), "10-00"},
        {"triangle, parallel edge inside", tri, flat(near), "10-00"},
        {"base, edge slanting off outside", base, slant(-far), "1-000"},
        {"base, edge slanting into it", base, slant(far), "0-100"},
        {"base, parallel edge inside", base, flat(near), "0-010"},
        {"base, line slanting off", base, linestring(place({{0, 0}, {m, far}, {m + 0.1, -0.5}})), "01000"},
        {"base, parallel line", base, linestring(place({{-0.5, near}, {1.5, near}})), "10000"},
    };
    for (const auto& c : cases) {
      std::string got;
      for (int i = 0; i < 5; ++i)
        got += c.want[i] == '-' ? '-' : static_cast<char>('0' + preds[i](c.a.data(), c.b.data(), t));
      ASSERT_EQ(got, c.want) << c.name << " at trial " << trial << ", t " << t;
    }
  }
}

TEST(ShapeIsEqual, ComparesVertexByVertexWithItsDeliberateGaps) {
  const Ring ring = square(0, 0, 10);
  // Five points: only the first six doubles (x0 .. y2) take part, so a change in the fourth
  // point goes unseen while one in the second point does not.
  const Ring tail_changed = {{0, 0}, {10, 0}, {10, 10}, {99, 99}, {0, 0}};
  const Ring head_changed = {{0, 0}, {10, 7}, {10, 10}, {0, 10}, {0, 0}};
  auto mpoint = [](std::initializer_list<double> xs) {
    std::vector<Bytes> pts;
    for (double x : xs) pts.push_back(point(x, 0));
    return multi(XGWKB_TYPE_MULTIPOINT, pts);
  };
  const struct { const char* name; Bytes a, b; int32_t equal; } cases[] = {
      {"points within t", point(1, 1), point(1 + 0.5 * kT, 1), 1},
      {"points exactly t apart", point(1, 1), point(1 + kT, 1), 0},
      {"point and multipoint", point(1, 0), mpoint({1}), 0},
      {"same line", linestring(ring), linestring(ring), 1},
      {"line reversed", linestring({{0, 0}, {1, 1}}), linestring({{1, 1}, {0, 0}}), 0},
      {"line with one more point", linestring({{0, 0}, {1, 1}}), linestring({{0, 0}, {1, 1}, {2, 2}}), 0},
      {"multipoint with extra points", mpoint({1, 2, 3}), mpoint({1, 2}), 1},
      {"multipoint with fewer points", mpoint({1, 2}), mpoint({1, 2, 3}), 0},
      {"multipoints differing", mpoint({1, 5}), mpoint({1, 2}), 0},
      {"rings differing in the second half", polygon({ring}), polygon({tail_changed}), 1},
      {"rings differing in the first half", polygon({ring}), polygon({head_changed}), 0},
      {"different ring counts", polygon({ring}), polygon({ring, square(2, 2, 1)}), 0},
      {"multilines member by member", multiline({{{0, 0}, {1, 1}}, {{5, 5}, {6, 6}}}),
       multiline({{{0, 0}, {1, 1}}, {{5, 5}, {6, 7}}}), 0},
      {"multipolygons with the ring stride",
       multi(XGWKB_TYPE_MULTIPOLYGON, {polygon({square(0, 0, 1)}), polygon({ring})}),
       multi(XGWKB_TYPE_MULTIPOLYGON, {polygon({square(0, 0, 1)}), polygon({tail_changed})}), 1},
      {"nil shapes", nil(), nil(), 0},
  };
  for (const auto& c : cases) {
    const Misaligned a(c.a), b(c.b);
    EXPECT_EQ(xgWKB_shape_is_equal(a.data(), b.data(), kT), c.equal) << c.name;
  }
}
