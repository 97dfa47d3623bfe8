// Shape construction: exact layouts of the constructors, argument checks in their order, the
// conversions between dimensions, and the noding of lines against GEOS.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <random>
#include <vector>

#include "core/blob.h"
#include "support/edit_result.h"
#include "support/geos_oracle.h"

using namespace xgtest;

namespace {

const Ring kPts = {{0, 0}, {1, 0}, {1, 1}, {0, 1}, {0, 0}, {5, 5}, {6, 5}, {6, 6}, {5, 5}};
const _xgWKB_POINT* const P = kPts.data();
const _xgWKB_POINT kOrigin{0, 0};
const _xgWKB_BOX kBox{1, 2, 3, 4};
const int32_t kLineCounts[] = {2, 3}, kRingCounts[] = {5, 4}, kShortLine[] = {2, 1}, kShortRing[] = {5, 3};
const int32_t kFive[] = {5}, kTwoTwo[] = {2, 2};
const _xgWKB_POINT kCross[] = {{0, 0}, {2, 2}, {0, 2}, {2, 0}};
const Bytes kPoint = point(1, 2), kNil = nil();
const Bytes kSecond = polygon({square(5, 5, 2), square(5.5, 5.5, 1)});
const Bytes kTwoPolygons = mp({polygon({square(0, 0, 1)}), kSecond});
const Bytes kTwoPoints = multi(XGWKB_TYPE_MULTIPOINT, {point(3, 4), point(5, 6)});
const Misaligned kTwoPointsOdd(kTwoPoints), kTwoPolygonsOdd(kTwoPolygons);
const Ring kShell = square(0, 0, 10), kHole = square(2, 2, 6), kIsland = square(4, 4, 2);
const Ring kShell2 = square(20, 0, 5), kHole2 = square(21, 1, 1);
const Ring kBowTie = {{0, 0}, {2, 2}, {2, 0}, {0, 2}, {0, 0}};
const Ring kVee = {{0, 0}, {1, 1}, {2, 0}}, kUpright = {{1, 0}, {1, 2}};

using Convert = int32_t (*)(const unsigned char*, unsigned char**);

// A conversion of a copy of in placed at an odd address.
Call conv(Convert f, const Bytes& in) {
  return [=](auto o) { return f(Misaligned(in).data(), o); };
}

Call combine(std::vector<const unsigned char*> shapes) {
  return [=](auto o) { return xgWKB_shape_combine(shapes.data(), static_cast<int32_t>(shapes.size()), o); };
}

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

TEST(Construct, EachCallGivesItsStatusAndExactBlob) {
  const Bytes two_rings = polygon({square(0, 0, 4), square(1, 1, 1)});
  const EditCase cases[] = {
      // Layouts: every header byte-order byte 0; no ring closed, reordered or reoriented.
      {"point", on(xgWKB_shape_generate_point, &P[1]), 0, point(1, 0)},
      {"multipoint", on(xgWKB_shape_generate_multipoint, 2, P), 0,
       multi(XGWKB_TYPE_MULTIPOINT, {point(0, 0), point(1, 0)})},
      {"line", on(xgWKB_shape_generate_line, 3, P), 0, linestring({{0, 0}, {1, 0}, {1, 1}})},
      {"multiline", on(xgWKB_shape_generate_multiline, 99, 2, kLineCounts, P), 0,
       multiline({{{0, 0}, {1, 0}}, {{1, 1}, {0, 1}, {0, 0}}})},
      {"empty multiline", on(xgWKB_shape_generate_multiline, 0, 0, nullptr, P), 0, multiline({})},
      {"polygon", on(xgWKB_shape_generate_polygon, 9, 2, kRingCounts, P), 0,
       polygon({square(0, 0, 1), {{5, 5}, {6, 5}, {6, 6}, {5, 5}}})},
      {"polygon left open", on(xgWKB_shape_generate_polygon, 4, 1, nullptr, P), 0,
       polygon({{{0, 0}, {1, 0}, {1, 1}, {0, 1}}})},
      {"rectangle clockwise", on(xgWKB_shape_generate_polygon_from_rectangle, &kBox), 0,
       polygon({{{1, 2}, {1, 4}, {3, 4}, {3, 2}, {1, 2}}})},
      {"simple line noded", on(xgWKB_shape_generate_simple_line, 4, 2, kTwoTwo, kCross), 0,
       multiline({{{0, 0}, {1, 1}}, {{1, 1}, {2, 2}}, {{0, 2}, {1, 1}}, {{1, 1}, {2, 0}}})},
      {"simple line never fails", on(xgWKB_shape_generate_simple_line, 4, 2, kTwoTwo, nullptr), 0, {}},
      {"member 2", on(xgWKB_shape_generate_from_part, kTwoPolygonsOdd.data(), 2), 0, kSecond},
      {"combine takes the last type", combine({kTwoPointsOdd.data(), kPoint.data()}), 0,
       multi(XGWKB_TYPE_MULTIPOINT, {point(3, 4), point(5, 6), kPoint})},
      // Argument checks, in their order.
      {"multipoint k 0 before null", on(xgWKB_shape_generate_multipoint, 0, nullptr), -148},
      {"line null before count", on(xgWKB_shape_generate_line, 1, nullptr), -65},
      {"multiline member of one", on(xgWKB_shape_generate_multiline, 3, 2, kShortLine, P), -148},
      {"polygon null", on(xgWKB_shape_generate_polygon, 3, 1, nullptr, nullptr), -65},
      {"polygon total 3, counts fine", on(xgWKB_shape_generate_polygon, 3, 1, kFive, P), -148},
      {"polygon ring of 3", on(xgWKB_shape_generate_polygon, 8, 2, kShortRing, P), -148},
      {"two rings, no counts", on(xgWKB_shape_generate_polygon, 9, 2, nullptr, P), -66},
      {"circle n 3", on(xgWKB_shape_generate_polygon_from_circle, &kOrigin, 1, 3), -66},
      {"circle NaN", on(xgWKB_shape_generate_polygon_from_circle, &kOrigin, NAN, 8), -66},
      {"ellipse a < b", on(xgWKB_shape_generate_from_ellipse, &kOrigin, 1, 2, 0, 12), -66},
      {"ellipse n 8", on(xgWKB_shape_generate_from_ellipse, &kOrigin, 2, 1, 0, 8), -66},
      {"ellipse before null", on(xgWKB_shape_generate_from_ellipse, nullptr, 2, 1, -1, 12), -66},
      {"member 0", on(xgWKB_shape_generate_from_part, kTwoPolygons.data(), 0), -66},
      {"member 3", on(xgWKB_shape_generate_from_part, kTwoPolygons.data(), 3), -66},
      {"member of a polygon", on(xgWKB_shape_generate_from_part, kSecond.data(), 1), -27},
      // Combine hands its block over before it looks at the last type.
      {"combine, last not a geometry", combine({kPoint.data(), kNil.data()}), -134, {}, true},
      {"combine, middle not a geometry", combine({kNil.data(), kPoint.data()}), -134},
      // Conversions.
      {"vertices of a polygon", conv(xgWKB_shape_as_point, polygon({{{0, 0}, {2, 0}, {0, 2}, {0, 0}}})), 0,
       multi(XGWKB_TYPE_MULTIPOINT, {point(0, 0), point(2, 0), point(0, 2), point(0, 0)})},
      {"a point has no line", conv(xgWKB_shape_as_line, point(1, 1)), 0, nil()},
      {"a multipoint as one line", conv(xgWKB_shape_as_line, kTwoPoints), 0, linestring({{3, 4}, {5, 6}})},
      {"every ring of a multipolygon", conv(xgWKB_shape_as_line, mp({two_rings})), 0,
       multiline({square(0, 0, 4), square(1, 1, 1)})},
      {"a closed line", conv(xgWKB_shape_as_polygon, linestring(square(0, 0, 2))), 0, mp({polygon({square(0, 0, 2)})})},
      // The island lies inside the shell too, and so becomes one of its holes.
      {"shell, hole, island", conv(xgWKB_shape_as_polygon, multiline({kShell, kHole, kIsland})), 0,
       mp({polygon({kShell, kHole, kIsland})})},
      {"two shells, holes last", conv(xgWKB_shape_as_polygon, multiline({kShell, kShell2, kHole2, kHole})), 0,
       mp({polygon({kShell, kHole}), polygon({kShell2, kHole2})})},
      {"crossing at a vertex", conv(xgWKB_shape_as_simple_line, multiline({kVee, kUpright})), 0,
       multiline({{{0, 0}, {1, 1}}, {{1, 1}, {2, 0}}, {{1, 0}, {1, 1}}, {{1, 1}, {1, 2}}})},
      {"running along", conv(xgWKB_shape_as_simple_line, multiline({{{0, 0}, {3, 0}}, {{1, 0}, {5, 0}}})), 0,
       multiline({{{0, 0}, {1, 0}}, {{1, 0}, {3, 0}}, {{1, 0}, {3, 0}}, {{3, 0}, {5, 0}}})},
      {"self-crossing member left whole", conv(xgWKB_shape_as_simple_line, multiline({kBowTie})), 0,
       multiline({kBowTie})},
      {"nil has no vertices", conv(xgWKB_shape_as_point, nil()), -27},
      {"nil has no line", conv(xgWKB_shape_as_line, nil()), -134},
      {"polygon without rings", conv(xgWKB_shape_as_line, polygon({})), -27},
      {"an open line", conv(xgWKB_shape_as_polygon, linestring({{0, 0}, {2, 0}, {2, 2}, {0, 2}})), -27},
      {"a bow tie", conv(xgWKB_shape_as_polygon, linestring(kBowTie)), -27},
      {"an open member", conv(xgWKB_shape_as_polygon, multiline({kShell, {{30, 0}, {31, 0}}})), -27},
      {"members crossing", conv(xgWKB_shape_as_polygon, multiline({kShell, square(5, 5, 10)})), -27},
      {"simple line of nil", conv(xgWKB_shape_as_simple_line, nil()), 0, {}},
  };
  for (const EditCase& c : cases) check_edit(c);
}

TEST(Construct, BlobsWithoutAComputedSize) {
  // The envelope's type has no computed size; combining mixed dimensions is not refused, and
  // its members keep their own types.
  Out envelope, mixed;
  ASSERT_EQ(xgWKB_shape_generate_envelope(&kBox, &envelope.p), 0);
  Bytes want = header(XGWKB_TYPE_ENVELOPE);
  for (double v : {1, 2, 3, 4}) put_f64(want, v);
  EXPECT_EQ(Bytes(envelope.p, envelope.p + 37), want);
  const Bytes poly = polygon({square(0, 0, 1)}), both = mp({kPoint, poly});
  ASSERT_EQ(combine({kPoint.data(), poly.data()})(&mixed.p), 0);
  EXPECT_EQ(Bytes(mixed.p, mixed.p + both.size()), both);
}

TEST(Construct, CircleAndEllipseWriteAnUncountedClosingPointAndUseTheFloatTwoPi) {
  Out circle, six, ellipse;
  ASSERT_EQ(xgWKB_shape_generate_polygon_from_circle(&kOrigin, 1, 4, &circle.p), 0);
  ASSERT_EQ(circle.bytes().size(), 13u + 16 * 4);
  const double want[] = {1, 0, 0, 1, -1, 0, 0, -1, 1, 0};  // the last point past the ring
  for (uint32_t i = 0; i < 10; ++i) EXPECT_NEAR(xg::load_f64(circle.p + 13 + 8 * i), want[i], 1e-6) << i;
  // With n = 6, point 3 sits at half of the single-precision 2pi, a little past pi.
  ASSERT_EQ(xgWKB_shape_generate_polygon_from_circle(&kOrigin, 1, 6, &six.p), 0);
  EXPECT_NEAR(xg::PointRun{six.p + 9}.point(3).y, -8.742278e-8, 1e-13);

  // The ellipse starts on the circle of radius a and sweeps to the single-precision 2pi.
  const _xgWKB_POINT c{10, 20};
  const double start = 1.5707963267948966, two_pi_f = 6.2831854820251465;
  ASSERT_EQ(xgWKB_shape_generate_from_ellipse(&c, 2, 1, start, 9, &ellipse.p), 0);
  const xg::PointRun ring{ellipse.p + 9};
  ASSERT_EQ(ring.size(), 9u);
  EXPECT_NEAR(ring.point(0).y, 22, 1e-12);  // y from a, not b
  const double u = (ring.point(4).x - 10) / 2, v = ring.point(4).y - 20;
  EXPECT_NEAR(u * u + v * v, 1, 1e-12);  // the others lie on the ellipse
  EXPECT_NEAR(ring.point(8).x, 10 + 2 * std::cos(two_pi_f - (two_pi_f - start) / 9), 1e-12);
  EXPECT_NEAR(xg::load_point(ellipse.p + 13 + 16 * 9).y, 22, 1e-12);
}

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
    Out got;
    ASSERT_EQ(xgWKB_shape_as_simple_line(in.data(), &got.p), 0);
    EXPECT_EQ(segments_of(got.p), segments_of(oracle.from_geos(noded.get()).data())) << trial;
  }
}
