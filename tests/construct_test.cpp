// Shape construction: exact layouts of the constructors, argument checks in their order, and the
// conversions between dimensions.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <functional>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "core/blob.h"
#include "support/blob_builder.h"
#include "support/geos_oracle.h"

using namespace xgtest;

namespace {

struct Freer {
  void operator()(unsigned char* p) const { xgWKB_shape_free(p); }
};
using Shape = std::unique_ptr<unsigned char, Freer>;

// The computed size of a returned shape (nil: its 5 bytes).
Bytes bytes_of(const unsigned char* s) {
  uint32_t size = 5;
  xgWKB_shape_get_WKB_size(s, &size);
  return Bytes(s, s + size);
}

using Build = std::function<int32_t(unsigned char**)>;

// Runs a builder and returns the result's bytes (the first `size` bytes when given, for blobs
// whose size cannot be computed), failing the test on a non-zero status.
Bytes build(const Build& f, std::size_t size = 0) {
  unsigned char* out = nullptr;
  EXPECT_EQ(f(&out), 0);
  Shape hold(out);
  if (out == nullptr) return {};
  return size ? Bytes(out, out + size) : bytes_of(out);
}

const Ring kPts = {{0, 0}, {1, 0}, {1, 1}, {0, 1}, {0, 0}, {5, 5}, {6, 5}, {6, 6}, {5, 5}};

}  // namespace

TEST(Construct, ConstructorsWriteTheExpectedLayouts) {
  const _xgWKB_BOX box{1, 2, 3, 4};
  const int32_t line_counts[] = {2, 3};
  const int32_t ring_counts[] = {5, 4};
  struct Case {
    std::string name;
    Build f;
    Bytes want;
  } cases[] = {
      {"point", [](auto o) { return xgWKB_shape_generate_point(&kPts[1], o); }, point(1, 0)},
      {"multipoint", [](auto o) { return xgWKB_shape_generate_multipoint(2, kPts.data(), o); },
       multi(XGWKB_TYPE_MULTIPOINT, {point(0, 0), point(1, 0)})},
      {"line", [](auto o) { return xgWKB_shape_generate_line(3, kPts.data(), o); },
       linestring({{0, 0}, {1, 0}, {1, 1}})},
      {"multiline", [&](auto o) { return xgWKB_shape_generate_multiline(99, 2, line_counts, kPts.data(), o); },
       multi(XGWKB_TYPE_MULTILINESTRING,
             {linestring({{0, 0}, {1, 0}}), linestring({{1, 1}, {0, 1}, {0, 0}})})},
      {"empty multiline", [](auto o) { return xgWKB_shape_generate_multiline(0, 0, nullptr, kPts.data(), o); },
       multi(XGWKB_TYPE_MULTILINESTRING, {})},
      {"polygon with counts", [&](auto o) { return xgWKB_shape_generate_polygon(9, 2, ring_counts, kPts.data(), o); },
       polygon({square(0, 0, 1), {{5, 5}, {6, 5}, {6, 6}, {5, 5}}})},
      {"polygon without counts, ring not closed",
       [](auto o) { return xgWKB_shape_generate_polygon(4, 1, nullptr, kPts.data(), o); },
       polygon({{{0, 0}, {1, 0}, {1, 1}, {0, 1}}})},
      {"rectangle, clockwise and closed", [&](auto o) { return xgWKB_shape_generate_polygon_from_rectangle(&box, o); },
       polygon({{{1, 2}, {1, 4}, {3, 4}, {3, 2}, {1, 2}}})},
  };
  for (const Case& c : cases) EXPECT_EQ(build(c.f), c.want) << c.name;
  Bytes envelope;
  put_header(envelope, XGWKB_TYPE_ENVELOPE);
  for (double v : {1, 2, 3, 4}) put_f64(envelope, v);
  EXPECT_EQ(build([&](auto o) { return xgWKB_shape_generate_envelope(&box, o); }, 37), envelope);
}

TEST(Construct, ArgumentsAreCheckedInTheirStatedOrder) {
  const int32_t short_line[] = {2, 1};
  const int32_t short_ring[] = {5, 3};
  const _xgWKB_POINT c{0, 0};
  struct Case {
    std::string name;
    Build f;
    int32_t want;
  } cases[] = {
      {"multipoint k 0 before null array", [](auto o) { return xgWKB_shape_generate_multipoint(0, nullptr, o); }, -148},
      {"line null before count", [](auto o) { return xgWKB_shape_generate_line(1, nullptr, o); }, -65},
      {"multiline member of one point", [&](auto o) { return xgWKB_shape_generate_multiline(3, 2, short_line, kPts.data(), o); }, -148},
      {"polygon null points", [](auto o) { return xgWKB_shape_generate_polygon(3, 1, nullptr, nullptr, o); }, -65},
      {"polygon total 3 with valid counts", [](auto o) {
         const int32_t counts[] = {5};
         return xgWKB_shape_generate_polygon(3, 1, counts, kPts.data(), o); }, -148},
      {"polygon ring of 3", [&](auto o) { return xgWKB_shape_generate_polygon(8, 2, short_ring, kPts.data(), o); }, -148},
      {"polygon two rings without counts", [](auto o) { return xgWKB_shape_generate_polygon(9, 2, nullptr, kPts.data(), o); }, -66},
      {"circle n 3", [&](auto o) { return xgWKB_shape_generate_polygon_from_circle(&c, 1, 3, o); }, -66},
      {"circle NaN radius", [&](auto o) { return xgWKB_shape_generate_polygon_from_circle(&c, NAN, 8, o); }, -66},
      {"ellipse a < b", [&](auto o) { return xgWKB_shape_generate_from_ellipse(&c, 1, 2, 0, 12, o); }, -66},
      {"ellipse n 8", [&](auto o) { return xgWKB_shape_generate_from_ellipse(&c, 2, 1, 0, 8, o); }, -66},
      {"ellipse check before null centre", [](auto o) { return xgWKB_shape_generate_from_ellipse(nullptr, 2, 1, -1, 12, o); }, -66},
  };
  for (const Case& c : cases) {
    unsigned char* out = nullptr;
    EXPECT_EQ(c.f(&out), c.want) << c.name;
    EXPECT_EQ(out, nullptr) << c.name;
  }
}

TEST(Construct, CircleWritesAnUncountedClosingPointAndUsesTheFloatTwoPi) {
  const _xgWKB_POINT c{0, 0};
  unsigned char* out = nullptr;
  ASSERT_EQ(xgWKB_shape_generate_polygon_from_circle(&c, 1, 4, &out), 0);
  Shape hold(out);
  uint32_t size = 0;
  ASSERT_EQ(xgWKB_shape_get_WKB_size(out, &size), 0);
  EXPECT_EQ(size, 13u + 16 * 4);
  const xg::PointRun ring{out + 9};
  ASSERT_EQ(ring.size(), 4u);
  const _xgWKB_POINT want[] = {{1, 0}, {0, 1}, {-1, 0}, {0, -1}};
  for (uint32_t i = 0; i < 4; ++i) {
    EXPECT_NEAR(ring.point(i).x, want[i].x, 1e-6);
    EXPECT_NEAR(ring.point(i).y, want[i].y, 1e-6);
  }
  const _xgWKB_POINT extra = xg::load_point(out + size);  // the 16 bytes past the counted ring
  EXPECT_EQ(extra.x, 1.0);
  EXPECT_EQ(extra.y, 0.0);
  // With n = 6, point 3 sits at half of the single-precision 2pi, a little past pi: its y is
  // -8.74e-8, not ~0.
  ASSERT_EQ(xgWKB_shape_generate_polygon_from_circle(&c, 1, 6, &out), 0);
  Shape hold6(out);
  EXPECT_NEAR(xg::PointRun{out + 9}.point(3).y, -8.742278e-8, 1e-13);
}

TEST(Construct, EllipseStartsOnTheCircleOfRadiusAAndSweepsToTwoPi) {
  const _xgWKB_POINT c{10, 20};
  const double start = 1.5707963267948966;
  unsigned char* out = nullptr;
  ASSERT_EQ(xgWKB_shape_generate_from_ellipse(&c, 2, 1, start, 9, &out), 0);
  Shape hold(out);
  const xg::PointRun ring{out + 9};
  ASSERT_EQ(ring.size(), 9u);
  EXPECT_NEAR(ring.point(0).y, 22, 1e-12);  // y from a, not b
  const double u = (ring.point(4).x - 10) / 2, v = ring.point(4).y - 20;
  EXPECT_NEAR(u * u + v * v, 1, 1e-12);  // the others lie on the ellipse
  // The last counted point is one step short of the single-precision 2pi.
  const double two_pi_f = 6.2831854820251465;
  const double step = (two_pi_f - start) / 9;
  EXPECT_NEAR(ring.point(8).x, 10 + 2 * std::cos(two_pi_f - step), 1e-12);
  const _xgWKB_POINT extra = xg::load_point(out + 13 + 16 * 9);
  EXPECT_NEAR(extra.y, 22, 1e-12);
}

TEST(Construct, FromPartCopiesOneMemberOfAMisalignedMultiType) {
  const Bytes second = polygon({square(5, 5, 2), square(5.5, 5.5, 1)});
  const Misaligned mpg(multi(XGWKB_TYPE_MULTIPOLYGON, {polygon({square(0, 0, 1)}), second}));
  unsigned char* out = nullptr;
  EXPECT_EQ(xgWKB_shape_generate_from_part(mpg.data(), 0, &out), -66);
  EXPECT_EQ(xgWKB_shape_generate_from_part(mpg.data(), 3, &out), -66);
  EXPECT_EQ(xgWKB_shape_generate_from_part(second.data(), 1, &out), -27);
  EXPECT_EQ(out, nullptr);
  EXPECT_EQ(build([&](auto o) { return xgWKB_shape_generate_from_part(mpg.data(), 2, o); }), second);
}

TEST(Construct, CombineTakesItsTypeFromTheLastInput) {
  const Bytes p = point(1, 2);
  const Bytes poly = polygon({square(0, 0, 1)});
  const Misaligned mpt(multi(XGWKB_TYPE_MULTIPOINT, {point(3, 4), point(5, 6)}));
  const unsigned char* mixed[] = {p.data(), poly.data()};
  // Mixed dimensions are not refused: the members keep their own types.
  const Bytes want = multi(XGWKB_TYPE_MULTIPOLYGON, {p, poly});
  EXPECT_EQ(build([&](auto o) { return xgWKB_shape_combine(mixed, 2, o); }, want.size()), want);
  const unsigned char* points[] = {mpt.data(), p.data()};
  EXPECT_EQ(build([&](auto o) { return xgWKB_shape_combine(points, 2, o); }),
            multi(XGWKB_TYPE_MULTIPOINT, {point(3, 4), point(5, 6), p}));
}

TEST(Construct, CombineHandsOverItsBlockBeforeRefusingTheLastType) {
  const Bytes p = point(1, 2);
  const Bytes n = nil();
  const unsigned char* last_bad[] = {p.data(), n.data()};
  unsigned char* out = nullptr;
  EXPECT_EQ(xgWKB_shape_combine(last_bad, 2, &out), -134);
  EXPECT_NE(out, nullptr);  // the caller owns it
  xgWKB_shape_free(out);
  const unsigned char* middle_bad[] = {n.data(), p.data()};
  out = nullptr;
  EXPECT_EQ(xgWKB_shape_combine(middle_bad, 2, &out), -134);
  EXPECT_EQ(out, nullptr);
}

namespace {

using Convert = int32_t (*)(const unsigned char*, unsigned char**);

Bytes lines(const std::vector<Ring>& rings) {
  std::vector<Bytes> members;
  for (const Ring& r : rings) members.push_back(linestring(r));
  return multi(XGWKB_TYPE_MULTILINESTRING, members);
}

const Ring kShell = square(0, 0, 10), kHole = square(2, 2, 6), kIsland = square(4, 4, 2);
const Ring kShell2 = square(20, 0, 5), kHole2 = square(21, 1, 1);

}  // namespace

TEST(Convert, ShapesTakeTheirOtherForms) {
  const Bytes two_rings = polygon({square(0, 0, 4), square(1, 1, 1)});
  struct Case {
    std::string name;
    Convert f;
    Bytes in;
    Bytes want;
  } cases[] = {
      {"vertices of a polygon", xgWKB_shape_as_point, polygon({{{0, 0}, {2, 0}, {0, 2}, {0, 0}}}),
       multi(XGWKB_TYPE_MULTIPOINT, {point(0, 0), point(2, 0), point(0, 2), point(0, 0)})},
      {"a point as a 30-byte multipoint", xgWKB_shape_as_point, point(7, 8), multi(XGWKB_TYPE_MULTIPOINT, {point(7, 8)})},
      {"a point has no line", xgWKB_shape_as_line, point(1, 1), nil()},
      {"a multipoint as one line", xgWKB_shape_as_line, multi(XGWKB_TYPE_MULTIPOINT, {point(1, 2), point(3, 4)}),
       linestring({{1, 2}, {3, 4}})},
      {"every ring of a multipolygon", xgWKB_shape_as_line,
       multi(XGWKB_TYPE_MULTIPOLYGON, {two_rings, polygon({square(9, 9, 1)})}),
       lines({square(0, 0, 4), square(1, 1, 1), square(9, 9, 1)})},
      {"a closed line as a 102-byte multipolygon", xgWKB_shape_as_polygon, linestring(square(0, 0, 2)),
       multi(XGWKB_TYPE_MULTIPOLYGON, {polygon({square(0, 0, 2)})})},
      // The island lies inside the shell too, and so becomes one of its holes.
      {"shell, hole, island", xgWKB_shape_as_polygon, lines({kShell, kHole, kIsland}),
       multi(XGWKB_TYPE_MULTIPOLYGON, {polygon({kShell, kHole, kIsland})})},
      {"two shells, holes given last", xgWKB_shape_as_polygon, lines({kShell, kShell2, kHole2, kHole}),
       multi(XGWKB_TYPE_MULTIPOLYGON, {polygon({kShell, kHole}), polygon({kShell2, kHole2})})},
      {"an end inside the other", xgWKB_shape_as_simple_line, lines({{{0, 0}, {4, 0}}, {{2, 3}, {2, 0}}}),
       lines({{{0, 0}, {2, 0}}, {{2, 0}, {4, 0}}, {{2, 3}, {2, 0}}})},
      {"a crossing at a vertex", xgWKB_shape_as_simple_line, lines({{{0, 0}, {1, 1}, {2, 0}}, {{1, 0}, {1, 2}}}),
       lines({{{0, 0}, {1, 1}}, {{1, 1}, {2, 0}}, {{1, 0}, {1, 1}}, {{1, 1}, {1, 2}}})},
      {"running along each other", xgWKB_shape_as_simple_line, lines({{{0, 0}, {3, 0}}, {{1, 0}, {5, 0}}}),
       lines({{{0, 0}, {1, 0}}, {{1, 0}, {3, 0}}, {{1, 0}, {3, 0}}, {{3, 0}, {5, 0}}})},
      {"a member crossing itself is left whole", xgWKB_shape_as_simple_line,
       lines({{{0, 0}, {2, 2}, {2, 0}, {0, 2}}}), lines({{{0, 0}, {2, 2}, {2, 0}, {0, 2}}})},
      {"a polygon's rings", xgWKB_shape_as_simple_line, two_rings, lines({square(0, 0, 4), square(1, 1, 1)})},
  };
  for (const Case& c : cases) {
    const Misaligned in(c.in);
    EXPECT_EQ(build([&](auto o) { return c.f(in.data(), o); }), c.want) << c.name;
  }
}

TEST(Convert, RefusalsAndTheirCodes) {
  struct Case {
    std::string name;
    Convert f;
    Bytes in;
    int32_t want;
  } cases[] = {
      {"nil has no vertices", xgWKB_shape_as_point, nil(), -27},
      {"nil has no line", xgWKB_shape_as_line, nil(), -134},
      {"a polygon without rings", xgWKB_shape_as_line, polygon({}), -27},
      {"an open line", xgWKB_shape_as_polygon, linestring({{0, 0}, {2, 0}, {2, 2}, {0, 2}}), -27},
      {"a bow tie", xgWKB_shape_as_polygon, linestring({{0, 0}, {2, 2}, {2, 0}, {0, 2}, {0, 0}}), -27},
      {"an open member", xgWKB_shape_as_polygon, lines({kShell, {{30, 0}, {31, 0}}}), -27},
      {"members crossing", xgWKB_shape_as_polygon, lines({kShell, square(5, 5, 10)}), -27},
      {"as_simple_line passes nothing on", xgWKB_shape_as_simple_line, nil(), 0},
  };
  for (const Case& c : cases) {
    unsigned char* out = nullptr;
    EXPECT_EQ(c.f(c.in.data(), &out), c.want) << c.name;
    EXPECT_EQ(out, nullptr) << c.name;
    xgWKB_shape_free(out);
  }
}

namespace {

using Segment = std::array<double, 4>;

// The segments of every linestring of a line shape, each with its smaller end first, rounded to
// 1e-6 and sorted: two nodings of the same lines give the same list.
std::vector<Segment> segments_of(const unsigned char* shape) {
  std::vector<Segment> out;
  auto add_run = [&](xg::PointRun r) {
    for (uint32_t i = 0; i + 1 < r.size(); ++i) {
      _xgWKB_POINT a = r.point(i), b = r.point(i + 1);
      if (b.x < a.x || (b.x == a.x && b.y < a.y)) std::swap(a, b);
      Segment s = {a.x, a.y, b.x, b.y};
      for (double& v : s) v = std::round(v * 1e6) / 1e6;
      out.push_back(s);
    }
  };
  if (xg::shape_type(shape) == XGWKB_TYPE_LINESTRING) {
    add_run(xg::line_run(shape));
  } else {
    xg::for_each_member(shape, [&](const unsigned char* m, uint32_t) { add_run(xg::line_run(m)); });
  }
  std::sort(out.begin(), out.end());
  return out;
}

}  // namespace

TEST(SimpleLine, NodingMatchesGeosOnRandomLines) {
  GeosOracle oracle;
  std::mt19937 rng(7);
  std::uniform_real_distribution<double> coord(0, 100);
  std::uniform_int_distribution<int> points(2, 3), members(2, 12);
  for (int trial = 0; trial < 100; ++trial) {
    std::vector<Ring> parts(members(rng));
    for (Ring& r : parts) {
      for (int k = points(rng); k > 0; --k) r.push_back({coord(rng), coord(rng)});
    }
    const Bytes in = lines(parts);
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
            lines({{{0, 0}, {1, 1}}, {{1, 1}, {2, 2}}, {{0, 2}, {1, 1}}, {{1, 1}, {2, 0}}}));
  unsigned char* out = nullptr;
  EXPECT_EQ(xgWKB_shape_generate_simple_line(4, 2, counts, nullptr, &out), 0);
  EXPECT_EQ(out, nullptr);
}
