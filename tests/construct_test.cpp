// Shape construction: exact layouts of the constructors, argument checks in their order, and the
// conversions between dimensions.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include "core/blob.h"
#include "support/blob_builder.h"
#include "support/edit_result.h"
#include "support/geos_oracle.h"

using namespace xgtest;

namespace {

// Runs a builder and returns the result's bytes (the first `size` bytes when given, for blobs
// whose size cannot be computed), failing the test on a non-zero status.
Bytes build(const Call& f, std::size_t size = 0) {
  Out out;
  EXPECT_EQ(f(&out.p), 0);
  if (out.p == nullptr) return {};
  return size ? Bytes(out.p, out.p + size) : out.bytes();
}

const Ring kPts = {{0, 0}, {1, 0}, {1, 1}, {0, 1}, {0, 0}, {5, 5}, {6, 5}, {6, 6}, {5, 5}};
const _xgWKB_POINT kOrigin{0, 0};

}  // namespace

TEST(Construct, ConstructorsWriteTheExpectedLayouts) {
  const _xgWKB_BOX box{1, 2, 3, 4};
  const int32_t line_counts[] = {2, 3}, ring_counts[] = {5, 4};
  const std::pair<Call, Bytes> cases[] = {
      {[](auto o) { return xgWKB_shape_generate_point(&kPts[1], o); }, point(1, 0)},
      {[](auto o) { return xgWKB_shape_generate_multipoint(2, kPts.data(), o); },
       multi(XGWKB_TYPE_MULTIPOINT, {point(0, 0), point(1, 0)})},
      {[](auto o) { return xgWKB_shape_generate_line(3, kPts.data(), o); }, linestring({{0, 0}, {1, 0}, {1, 1}})},
      {[&](auto o) { return xgWKB_shape_generate_multiline(99, 2, line_counts, kPts.data(), o); },
       multiline({{{0, 0}, {1, 0}}, {{1, 1}, {0, 1}, {0, 0}}})},
      {[](auto o) { return xgWKB_shape_generate_multiline(0, 0, nullptr, kPts.data(), o); }, multiline({})},
      {[&](auto o) { return xgWKB_shape_generate_polygon(9, 2, ring_counts, kPts.data(), o); },
       polygon({square(0, 0, 1), {{5, 5}, {6, 5}, {6, 6}, {5, 5}}})},
      {[](auto o) { return xgWKB_shape_generate_polygon(4, 1, nullptr, kPts.data(), o); },  // left open
       polygon({{{0, 0}, {1, 0}, {1, 1}, {0, 1}}})},
      {[&](auto o) { return xgWKB_shape_generate_polygon_from_rectangle(&box, o); },  // clockwise, closed
       polygon({{{1, 2}, {1, 4}, {3, 4}, {3, 2}, {1, 2}}})},
  };
  for (const auto& c : cases) EXPECT_EQ(build(c.first), c.second) << c.second[1];
  Bytes envelope;
  put_header(envelope, XGWKB_TYPE_ENVELOPE);
  for (double v : {1, 2, 3, 4}) put_f64(envelope, v);
  EXPECT_EQ(build([&](auto o) { return xgWKB_shape_generate_envelope(&box, o); }, 37), envelope);
}

TEST(Construct, ArgumentsAreCheckedInTheirStatedOrder) {
  const int32_t short_line[] = {2, 1}, short_ring[] = {5, 3}, five[] = {5};
  const _xgWKB_POINT* pts = kPts.data();
  const std::pair<int32_t, Call> cases[] = {
      {-148, [](auto o) { return xgWKB_shape_generate_multipoint(0, nullptr, o); }},  // k 0 before null
      {-65, [](auto o) { return xgWKB_shape_generate_line(1, nullptr, o); }},         // null before count
      {-148, [&](auto o) { return xgWKB_shape_generate_multiline(3, 2, short_line, pts, o); }},
      {-65, [](auto o) { return xgWKB_shape_generate_polygon(3, 1, nullptr, nullptr, o); }},
      {-148, [&](auto o) { return xgWKB_shape_generate_polygon(3, 1, five, pts, o); }},  // total 3, counts fine
      {-148, [&](auto o) { return xgWKB_shape_generate_polygon(8, 2, short_ring, pts, o); }},
      {-66, [&](auto o) { return xgWKB_shape_generate_polygon(9, 2, nullptr, pts, o); }},  // two rings, no counts
      {-66, [](auto o) { return xgWKB_shape_generate_polygon_from_circle(&kOrigin, 1, 3, o); }},
      {-66, [](auto o) { return xgWKB_shape_generate_polygon_from_circle(&kOrigin, NAN, 8, o); }},
      {-66, [](auto o) { return xgWKB_shape_generate_from_ellipse(&kOrigin, 1, 2, 0, 12, o); }},  // a < b
      {-66, [](auto o) { return xgWKB_shape_generate_from_ellipse(&kOrigin, 2, 1, 0, 8, o); }},
      {-66, [](auto o) { return xgWKB_shape_generate_from_ellipse(nullptr, 2, 1, -1, 12, o); }},  // before null
  };
  for (std::size_t i = 0; i < std::size(cases); ++i) {
    Out out;
    EXPECT_EQ(cases[i].second(&out.p), cases[i].first) << "case " << i;
    EXPECT_EQ(out.p, nullptr) << "case " << i;
  }
}

TEST(Construct, CircleAndEllipseWriteAnUncountedClosingPointAndUseTheFloatTwoPi) {
  Out circle;
  ASSERT_EQ(xgWKB_shape_generate_polygon_from_circle(&kOrigin, 1, 4, &circle.p), 0);
  const Bytes counted = circle.bytes();
  ASSERT_EQ(counted.size(), 13u + 16 * 4);
  const _xgWKB_POINT want[] = {{1, 0}, {0, 1}, {-1, 0}, {0, -1}, {1, 0}};  // the last past the ring
  for (uint32_t i = 0; i < 5; ++i) {
    EXPECT_NEAR(xg::load_point(circle.p + 13 + 16 * i).x, want[i].x, 1e-6);
    EXPECT_NEAR(xg::load_point(circle.p + 13 + 16 * i).y, want[i].y, 1e-6);
  }
  // With n = 6, point 3 sits at half of the single-precision 2pi, a little past pi.
  Out six;
  ASSERT_EQ(xgWKB_shape_generate_polygon_from_circle(&kOrigin, 1, 6, &six.p), 0);
  EXPECT_NEAR(xg::PointRun{six.p + 9}.point(3).y, -8.742278e-8, 1e-13);

  // The ellipse starts on the circle of radius a and sweeps to the single-precision 2pi.
  const _xgWKB_POINT c{10, 20};
  const double start = 1.5707963267948966, two_pi_f = 6.2831854820251465;
  Out ellipse;
  ASSERT_EQ(xgWKB_shape_generate_from_ellipse(&c, 2, 1, start, 9, &ellipse.p), 0);
  const xg::PointRun ring{ellipse.p + 9};
  ASSERT_EQ(ring.size(), 9u);
  EXPECT_NEAR(ring.point(0).y, 22, 1e-12);  // y from a, not b
  const double u = (ring.point(4).x - 10) / 2, v = ring.point(4).y - 20;
  EXPECT_NEAR(u * u + v * v, 1, 1e-12);  // the others lie on the ellipse
  EXPECT_NEAR(ring.point(8).x, 10 + 2 * std::cos(two_pi_f - (two_pi_f - start) / 9), 1e-12);
  EXPECT_NEAR(xg::load_point(ellipse.p + 13 + 16 * 9).y, 22, 1e-12);
}

TEST(Construct, FromPartCopiesOneMemberOfAMisalignedMultiType) {
  const Bytes second = polygon({square(5, 5, 2), square(5.5, 5.5, 1)});
  const Misaligned mpg(multi(XGWKB_TYPE_MULTIPOLYGON, {polygon({square(0, 0, 1)}), second}));
  Out out;
  EXPECT_EQ(xgWKB_shape_generate_from_part(mpg.data(), 0, &out.p), -66);
  EXPECT_EQ(xgWKB_shape_generate_from_part(mpg.data(), 3, &out.p), -66);
  EXPECT_EQ(xgWKB_shape_generate_from_part(second.data(), 1, &out.p), -27);
  EXPECT_EQ(out.p, nullptr);
  EXPECT_EQ(build([&](auto o) { return xgWKB_shape_generate_from_part(mpg.data(), 2, o); }), second);
}

TEST(Construct, CombineTakesItsTypeFromTheLastInputAndHandsOverItsBlockBeforeRefusingIt) {
  const Bytes p = point(1, 2), poly = polygon({square(0, 0, 1)}), n = nil();
  const Misaligned mpt(multi(XGWKB_TYPE_MULTIPOINT, {point(3, 4), point(5, 6)}));
  const unsigned char* mixed[] = {p.data(), poly.data()};
  // Mixed dimensions are not refused: the members keep their own types.
  const Bytes want = multi(XGWKB_TYPE_MULTIPOLYGON, {p, poly});
  EXPECT_EQ(build([&](auto o) { return xgWKB_shape_combine(mixed, 2, o); }, want.size()), want);
  const unsigned char* points[] = {mpt.data(), p.data()};
  EXPECT_EQ(build([&](auto o) { return xgWKB_shape_combine(points, 2, o); }),
            multi(XGWKB_TYPE_MULTIPOINT, {point(3, 4), point(5, 6), p}));
  const unsigned char* last_bad[] = {p.data(), n.data()};
  const unsigned char* middle_bad[] = {n.data(), p.data()};
  Out handed, none;
  EXPECT_EQ(xgWKB_shape_combine(last_bad, 2, &handed.p), -134);
  EXPECT_NE(handed.p, nullptr);  // the caller owns it
  EXPECT_EQ(xgWKB_shape_combine(middle_bad, 2, &none.p), -134);
  EXPECT_EQ(none.p, nullptr);
}

namespace {

using Convert = int32_t (*)(const unsigned char*, unsigned char**);

const Ring kShell = square(0, 0, 10), kHole = square(2, 2, 6), kIsland = square(4, 4, 2);
const Ring kShell2 = square(20, 0, 5), kHole2 = square(21, 1, 1);

}  // namespace

TEST(Convert, ShapesTakeTheirOtherFormsOrAreRefused) {
  const Bytes two_rings = polygon({square(0, 0, 4), square(1, 1, 1)});
  const Ring bow_tie = {{0, 0}, {2, 2}, {2, 0}, {0, 2}, {0, 0}};
  const struct { const char* name; Convert f; Bytes in; int32_t status; Bytes want; } cases[] = {
      {"vertices of a polygon", xgWKB_shape_as_point, polygon({{{0, 0}, {2, 0}, {0, 2}, {0, 0}}}), 0,
       multi(XGWKB_TYPE_MULTIPOINT, {point(0, 0), point(2, 0), point(0, 2), point(0, 0)})},
      {"a point as a multipoint", xgWKB_shape_as_point, point(7, 8), 0, multi(XGWKB_TYPE_MULTIPOINT, {point(7, 8)})},
      {"a point has no line", xgWKB_shape_as_line, point(1, 1), 0, nil()},
      {"a multipoint as one line", xgWKB_shape_as_line, multi(XGWKB_TYPE_MULTIPOINT, {point(1, 2), point(3, 4)}), 0,
       linestring({{1, 2}, {3, 4}})},
      {"every ring of a multipolygon", xgWKB_shape_as_line,
       multi(XGWKB_TYPE_MULTIPOLYGON, {two_rings, polygon({square(9, 9, 1)})}), 0,
       multiline({square(0, 0, 4), square(1, 1, 1), square(9, 9, 1)})},
      {"a closed line", xgWKB_shape_as_polygon, linestring(square(0, 0, 2)), 0,
       multi(XGWKB_TYPE_MULTIPOLYGON, {polygon({square(0, 0, 2)})})},
      // The island lies inside the shell too, and so becomes one of its holes.
      {"shell, hole, island", xgWKB_shape_as_polygon, multiline({kShell, kHole, kIsland}), 0,
       multi(XGWKB_TYPE_MULTIPOLYGON, {polygon({kShell, kHole, kIsland})})},
      {"two shells, holes given last", xgWKB_shape_as_polygon, multiline({kShell, kShell2, kHole2, kHole}), 0,
       multi(XGWKB_TYPE_MULTIPOLYGON, {polygon({kShell, kHole}), polygon({kShell2, kHole2})})},
      {"a crossing at a vertex", xgWKB_shape_as_simple_line, multiline({{{0, 0}, {1, 1}, {2, 0}}, {{1, 0}, {1, 2}}}),
       0, multiline({{{0, 0}, {1, 1}}, {{1, 1}, {2, 0}}, {{1, 0}, {1, 1}}, {{1, 1}, {1, 2}}})},
      {"running along each other", xgWKB_shape_as_simple_line, multiline({{{0, 0}, {3, 0}}, {{1, 0}, {5, 0}}}), 0,
       multiline({{{0, 0}, {1, 0}}, {{1, 0}, {3, 0}}, {{1, 0}, {3, 0}}, {{3, 0}, {5, 0}}})},
      {"a member crossing itself is left whole", xgWKB_shape_as_simple_line, multiline({bow_tie}), 0,
       multiline({bow_tie})},
      {"nil has no vertices", xgWKB_shape_as_point, nil(), -27, {}},
      {"nil has no line", xgWKB_shape_as_line, nil(), -134, {}},
      {"a polygon without rings", xgWKB_shape_as_line, polygon({}), -27, {}},
      {"an open line", xgWKB_shape_as_polygon, linestring({{0, 0}, {2, 0}, {2, 2}, {0, 2}}), -27, {}},
      {"a bow tie", xgWKB_shape_as_polygon, linestring(bow_tie), -27, {}},
      {"an open member", xgWKB_shape_as_polygon, multiline({kShell, {{30, 0}, {31, 0}}}), -27, {}},
      {"members crossing", xgWKB_shape_as_polygon, multiline({kShell, square(5, 5, 10)}), -27, {}},
      {"as_simple_line passes nothing on", xgWKB_shape_as_simple_line, nil(), 0, {}},
  };
  for (const auto& c : cases) {
    const Misaligned in(c.in);
    Out out;
    EXPECT_EQ(c.f(in.data(), &out.p), c.status) << c.name;
    EXPECT_EQ(out.p ? out.bytes() : Bytes{}, c.want) << c.name;
  }
}

namespace {

using Segment = std::array<double, 4>;

// The segments of every linestring of a line shape, each with its smaller end first, rounded to
// 1e-6 and sorted: two nodings of the same lines give the same list.
std::vector<Segment> segments_of(const unsigned char* shape) {
  std::vector<Segment> out;
  xg::for_each_member(shape, [&](const unsigned char* m, uint32_t) {
    const xg::PointRun r = xg::line_run(m);
    for (uint32_t i = 0; i + 1 < r.size(); ++i) {
      _xgWKB_POINT a = r.point(i), b = r.point(i + 1);
      if (b.x < a.x || (b.x == a.x && b.y < a.y)) std::swap(a, b);
      Segment s = {a.x, a.y, b.x, b.y};
      for (double& v : s) v = std::round(v * 1e6) / 1e6;
      out.push_back(s);
    }
  });
  std::sort(out.begin(), out.end());
  return out;
}

}  // namespace

TEST(SimpleLine, NodingMatchesGeosOnRandomLines) {
  GeosOracle oracle;
  std::mt19937 rng(7);
  std::uniform_real_distribution<double> coord(0, 100);
  for (int trial = 0; trial < 100; ++trial) {
    std::vector<Ring> parts(2 + rng() % 11);
    for (Ring& r : parts) {
      for (int k = 2 + rng() % 2; k > 0; --k) r.push_back({coord(rng), coord(rng)});
    }
    const Bytes in = multiline(parts);
    GeosGeom g(oracle, oracle.to_geos(in.data()));
    GeosGeom noded(oracle, GEOSNode_r(oracle.handle(), g.get()));
    const Bytes want = oracle.from_geos(noded.get());
    const Bytes got = build([&](auto o) { return xgWKB_shape_as_simple_line(in.data(), o); });
    EXPECT_EQ(segments_of(got.data()), segments_of(want.data())) << trial;
  }
}

TEST(SimpleLine, GenerateNodesTheLinesItBuildsAndNeverFails) {
  const _xgWKB_POINT pts[] = {{0, 0}, {2, 2}, {0, 2}, {2, 0}};
  const int32_t counts[] = {2, 2};
  EXPECT_EQ(build([&](auto o) { return xgWKB_shape_generate_simple_line(4, 2, counts, pts, o); }),
            multiline({{{0, 0}, {1, 1}}, {{1, 1}, {2, 2}}, {{0, 2}, {1, 1}}, {{1, 1}, {2, 0}}}));
  Out out;
  EXPECT_EQ(xgWKB_shape_generate_simple_line(4, 2, counts, nullptr, &out.p), 0);
  EXPECT_EQ(out.p, nullptr);
}
