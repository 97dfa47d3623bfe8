// Move, rotate, stretch and mirror: exact results on small shapes, the mirror's horizontal rule,
// the mirror's output layout, and agreement with GEOS coordinate transforms on random shapes.
#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

#include "core/blob.h"
#include "support/blob_builder.h"
#include "support/geos_oracle.h"

using namespace xgtest;

namespace {

// One blob of every type the transforms take.
std::vector<Bytes> every_type() {
  return {
      point(1, 2),
      linestring({{0, 0}, {1, 1}, {2, 0}}),
      polygon({square(0, 0, 10), square(2, 2, 1)}),
      multi(XGWKB_TYPE_MULTIPOINT, {point(0, 0), point(3, 4)}),
      multi(XGWKB_TYPE_MULTILINESTRING, {linestring({{0, 0}, {1, 0}}), linestring({{5, 5}, {6, 7}})}),
      multi(XGWKB_TYPE_MULTIPOLYGON, {polygon({square(0, 0, 1)}), polygon({square(5, 5, 2), square(6, 6, 0.5)})}),
  };
}

std::vector<_xgWKB_POINT> coords_of(const unsigned char* blob) {
  std::vector<_xgWKB_POINT> out;
  xg::for_each_coord(blob, [&](const unsigned char* at) { out.push_back(xg::load_point(at)); });
  return out;
}

uint32_t size_of(const unsigned char* blob) {
  uint32_t size = 0;
  EXPECT_EQ(xgWKB_shape_get_WKB_size(blob, &size), 0);
  return size;
}

Bytes bytes_of(const unsigned char* blob) { return Bytes(blob, blob + size_of(blob)); }

// The blob with every coordinate replaced by f(coordinate), written by the test's own walk.
template <class F>
Bytes mapped(const Bytes& blob, F f) {
  Bytes copy = blob;
  xg::for_each_coord(copy.data(), [&](unsigned char* at) { xg::store_point(at, f(xg::load_point(at))); });
  return copy;
}

Bytes singletext() {
  Bytes b;
  put_header(b, XGWKB_TYPE_SINGLETEXT);
  for (int i = 0; i < 40; ++i) b.push_back(0);
  return b;
}

struct Owned {
  unsigned char* p = nullptr;
  ~Owned() { xgWKB_shape_free(p); }
};

}  // namespace

TEST(ShapeTransforms, RefuseShapesOtherThanTheSixGeometryTypes) {
  const _xgWKB_POINT base{0, 0}, p2{1, 1};
  // A multipoint whose member carries a linestring type code cannot be walked either.
  Bytes foreign_member = multi(XGWKB_TYPE_MULTIPOINT, {point(0, 0)});
  foreign_member[10] = XGWKB_TYPE_LINESTRING;
  for (Bytes blob : {nil(), singletext(), foreign_member}) {
    const Bytes before = blob;
    EXPECT_EQ(xgWKB_shape_move(blob.data(), 1, 1), XGWKB_E_INVALID_ENTITY);
    EXPECT_EQ(xgWKB_shape_rotate(blob.data(), 1, 0, 0), XGWKB_E_INVALID_ENTITY);
    EXPECT_EQ(xgWKB_shape_stretch(blob.data(), &base, 2, 2), XGWKB_E_INVALID_ENTITY);
    unsigned char* out = nullptr;
    EXPECT_EQ(xgWKB_shape_mirror(blob.data(), &base, &p2, &out, 0.001), XGWKB_E_INVALID_ENTITY);
    EXPECT_EQ(out, nullptr);
    EXPECT_EQ(blob, before);
  }
}

TEST(ShapeTransforms, RefuseNullShapes) {
  const _xgWKB_POINT base{0, 0};
  unsigned char* out = nullptr;
  EXPECT_EQ(xgWKB_shape_move(nullptr, 1, 1), XGWKB_E_NULL_POINTER);
  EXPECT_EQ(xgWKB_shape_rotate(nullptr, 1, 0, 0), XGWKB_E_NULL_POINTER);
  EXPECT_EQ(xgWKB_shape_stretch(nullptr, &base, 1, 1), XGWKB_E_NULL_POINTER);
  EXPECT_EQ(xgWKB_shape_mirror(nullptr, &base, &base, &out, 0), XGWKB_E_NULL_POINTER);
}

TEST(ShapeMove, AddsTheOffsetToEveryVertexOfEveryType) {
  for (const Bytes& blob : every_type()) {
    Misaligned copy(blob);
    ASSERT_EQ(xgWKB_shape_move(copy.data(), 1.5, -2), 0);
    const Bytes expected = mapped(blob, [](_xgWKB_POINT p) { return _xgWKB_POINT{p.x + 1.5, p.y - 2}; });
    EXPECT_EQ(bytes_of(copy.data()), expected);
  }
}

TEST(ShapeRotate, PositiveQuarterTurnGoesClockwise) {
  Bytes p = point(1, 0);
  ASSERT_EQ(xgWKB_shape_rotate(p.data(), M_PI / 2, 0, 0), 0);
  const _xgWKB_POINT r = coords_of(p.data())[0];
  EXPECT_NEAR(r.x, 0, 1e-15);
  EXPECT_NEAR(r.y, -1, 1e-15);

  Bytes line = linestring({{2, 1}, {1, 3}});
  ASSERT_EQ(xgWKB_shape_rotate(line.data(), M_PI / 2, 1, 1), 0);
  const std::vector<_xgWKB_POINT> q = coords_of(line.data());
  EXPECT_NEAR(q[0].x, 1, 1e-15);
  EXPECT_NEAR(q[0].y, 0, 1e-15);
  EXPECT_NEAR(q[1].x, 3, 1e-15);
  EXPECT_NEAR(q[1].y, 1, 1e-15);
}

TEST(ShapeRotate, MatchesThePointPrimitiveBitForBit) {
  const double angle = 0.7;
  Bytes line = linestring({{3.25, -1.5}, {-7, 11.125}});
  Misaligned copy(line);
  ASSERT_EQ(xgWKB_shape_rotate(copy.data(), angle, 0, 0), 0);
  const std::vector<_xgWKB_POINT> got = coords_of(copy.data());
  for (std::size_t i = 0; i < got.size(); ++i) {
    _xgWKB_POINT p = coords_of(line.data())[i];
    xgWKB_baseGeo_rotate_point(&p, angle);
    EXPECT_EQ(got[i].x, p.x);
    EXPECT_EQ(got[i].y, p.y);
  }
}

TEST(ShapeRotate, FullTurnReturnsEveryVertexToItsPlace) {
  for (const Bytes& blob : every_type()) {
    Bytes copy = blob;
    ASSERT_EQ(xgWKB_shape_rotate(copy.data(), 2 * M_PI, 3, -4), 0);
    const std::vector<_xgWKB_POINT> a = coords_of(blob.data()), b = coords_of(copy.data());
    ASSERT_EQ(a.size(), b.size());
    for (std::size_t i = 0; i < a.size(); ++i) {
      EXPECT_NEAR(a[i].x, b[i].x, 1e-12);
      EXPECT_NEAR(a[i].y, b[i].y, 1e-12);
    }
  }
}

TEST(ShapeStretch, ScalesAboutTheBasePoint) {
  const _xgWKB_POINT base{1, 1};
  Bytes p = point(3, 5);
  ASSERT_EQ(xgWKB_shape_stretch(p.data(), &base, 2, 1), 0);
  EXPECT_EQ(p, point(5, 5));

  for (const Bytes& blob : every_type()) {
    Bytes same = blob;
    ASSERT_EQ(xgWKB_shape_stretch(same.data(), &base, 1, 1), 0);
    EXPECT_EQ(same, blob);
    Bytes flipped = blob;
    ASSERT_EQ(xgWKB_shape_stretch(flipped.data(), &base, -1, 0), 0);
    EXPECT_EQ(flipped, mapped(blob, [](_xgWKB_POINT q) { return _xgWKB_POINT{2 - q.x, 1}; }));
  }
}

// Mirror of the point (x, y) about the line p1-p2 with tolerance t.
_xgWKB_POINT mirror_point(_xgWKB_POINT p, _xgWKB_POINT p1, _xgWKB_POINT p2, double t) {
  Bytes b = point(p.x, p.y);
  Owned out;
  EXPECT_EQ(xgWKB_shape_mirror(b.data(), &p1, &p2, &out.p, t), 0);
  return coords_of(out.p)[0];
}

TEST(ShapeMirror, ReflectsAboutTheLineOrTheVerticalThroughP1WhenNearlyHorizontal) {
  struct Case {
    _xgWKB_POINT p1, p2;
    double t;
    _xgWKB_POINT in, expected;
  };
  const Case cases[] = {
      {{0, 0}, {1, 1}, 0.001, {2, 0}, {0, 2}},
      {{1, 0}, {1, 5}, 0.001, {3, 2}, {-1, 2}},  // vertical line
      // A horizontal line reflects about the vertical through p1.
      {{0, 0}, {5, 0}, 0.001, {2, 3}, {-2, 3}},
      {{1, 7}, {-4, 7}, 0.001, {2, 3}, {0, 3}},
      // The y difference is truncated to an integer before it is compared with t.
      {{0, 0}, {5, 0.9}, 1e-9, {2, 3}, {-2, 3}},
      {{0, 0}, {10, 0.5}, 0.001, {4, -1}, {-4, -1}},
      {{0, 0}, {2, -0.999}, 1.0, {2, 3}, {-2, 3}},
  };
  for (const Case& c : cases) {
    const _xgWKB_POINT r = mirror_point(c.in, c.p1, c.p2, c.t);
    EXPECT_NEAR(r.x, c.expected.x, 1e-12) << c.p2.x << "," << c.p2.y;
    EXPECT_NEAR(r.y, c.expected.y, 1e-12) << c.p2.x << "," << c.p2.y;
  }
}

TEST(ShapeMirror, TruncatedDifferenceOfOneIsNotHorizontalForToleranceOne) {
  // trunc(-1.5) = -1, |-1| < 1 fails: the general reflection applies.
  const _xgWKB_POINT p1{0, 0}, p2{3, 1.5};
  const _xgWKB_POINT r = mirror_point({1, 2}, p1, p2, 1.0);
  // Reflection of (1, 2) about y = x/2: foot (1.6, 0.8), image (2.2, -0.4).
  EXPECT_NEAR(r.x, 2.2, 1e-12);
  EXPECT_NEAR(r.y, -0.4, 1e-12);
}

TEST(ShapeMirror, ZeroToleranceOnHorizontalLineGivesNonFiniteCoordinates) {
  const _xgWKB_POINT r = mirror_point({2, 3}, {0, 1}, {5, 1}, 0);
  EXPECT_FALSE(std::isfinite(r.x) && std::isfinite(r.y));
}

TEST(ShapeMirror, WritesZeroByteOrderInPartHeadersAndCopiesTheOuterHeader) {
  const _xgWKB_POINT p1{0, 0}, p2{0, 1};  // the y axis: x -> -x
  for (const Bytes& blob : every_type()) {
    Bytes marked = blob;
    marked[0] = 1;
    if (xg::is_multi_type(xg::shape_type(marked.data()))) {
      xg::for_each_member(marked.data(), [&](const unsigned char* m, uint32_t) {
        marked[static_cast<std::size_t>(m - marked.data())] = 1;
      });
    }
    const Bytes before = marked;
    Misaligned input(marked);
    Owned out;
    ASSERT_EQ(xgWKB_shape_mirror(input.data(), &p1, &p2, &out.p, 0.001), 0);
    Bytes expected = mapped(blob, [](_xgWKB_POINT q) { return _xgWKB_POINT{0.0 - q.x, q.y}; });
    if (xg::shape_type(blob.data()) != XGWKB_TYPE_POINT) expected[0] = 1;  // outer header copied
    EXPECT_EQ(bytes_of(out.p), expected);
    EXPECT_EQ(Bytes(input.data(), input.data() + before.size()), before);
  }
}

// ---- agreement with GEOS ----------------------------------------------------------------

namespace {

Ring random_ring(std::mt19937& rng, int n) {
  std::uniform_real_distribution<double> u(-1000, 1000);
  Ring r;
  for (int i = 0; i < n; ++i) r.push_back({u(rng), u(rng)});
  r.push_back(r.front());
  return r;
}

// A random shape of a random type; its coordinates need not make a valid geometry.
Bytes random_shape(std::mt19937& rng) {
  std::uniform_int_distribution<int> members(1, 4), count(3, 9);
  auto line = [&] {
    Ring r = random_ring(rng, count(rng));
    r.pop_back();
    return linestring(r);
  };
  auto poly = [&] {
    std::vector<Ring> rings;
    const int k = members(rng);
    for (int i = 0; i < k; ++i) rings.push_back(random_ring(rng, count(rng)));
    return polygon(rings);
  };
  std::vector<Bytes> parts;
  const int k = members(rng);
  switch (std::uniform_int_distribution<int>(1, 6)(rng)) {
    case 1: return point(random_ring(rng, 1)[0].x, random_ring(rng, 1)[0].y);
    case 2: return line();
    case 3: return poly();
    case 4:
      for (int i = 0; i < k; ++i) parts.push_back(point(random_ring(rng, 1)[0].x, 7));
      return multi(XGWKB_TYPE_MULTIPOINT, parts);
    case 5:
      for (int i = 0; i < k; ++i) parts.push_back(line());
      return multi(XGWKB_TYPE_MULTILINESTRING, parts);
    default:
      for (int i = 0; i < k; ++i) parts.push_back(poly());
      return multi(XGWKB_TYPE_MULTIPOLYGON, parts);
  }
}

// The GEOS image of blob under f (a GEOSTransformXYCallback over the user data), as our blob.
Bytes geos_transform(const GeosOracle& oracle, const Bytes& blob, GEOSTransformXYCallback f, void* data) {
  GeosGeom g(oracle, oracle.to_geos(blob.data()));
  GeosGeom t(oracle, GEOSGeom_transformXY_r(oracle.handle(), g.get(), f, data));
  return oracle.from_geos(t.get());
}

void expect_same_shape(const unsigned char* ours, const Bytes& reference, double tol) {
  ASSERT_EQ(size_of(ours), reference.size());
  const std::vector<_xgWKB_POINT> a = coords_of(ours), b = coords_of(reference.data());
  ASSERT_EQ(a.size(), b.size());
  for (std::size_t i = 0; i < a.size(); ++i) {
    EXPECT_NEAR(a[i].x, b[i].x, tol) << "vertex " << i;
    EXPECT_NEAR(a[i].y, b[i].y, tol) << "vertex " << i;
  }
}

struct Rotation {
  double angle, cx, cy;
};

// Textbook counter-clockwise rotation by -angle about the centre.
int rotate_ccw_by_minus(double* x, double* y, void* data) {
  const Rotation& r = *static_cast<Rotation*>(data);
  const double th = -r.angle, dx = *x - r.cx, dy = *y - r.cy;
  *x = r.cx + dx * std::cos(th) - dy * std::sin(th);
  *y = r.cy + dx * std::sin(th) + dy * std::cos(th);
  return 1;
}

struct Line {
  _xgWKB_POINT a, b;
};

// Textbook reflection: project onto the line's direction, then double the step to the foot.
int reflect(double* x, double* y, void* data) {
  const Line& l = *static_cast<Line*>(data);
  const double vx = l.b.x - l.a.x, vy = l.b.y - l.a.y;
  const double s = ((*x - l.a.x) * vx + (*y - l.a.y) * vy) / (vx * vx + vy * vy);
  const double fx = l.a.x + s * vx, fy = l.a.y + s * vy;
  *x = 2 * fx - *x;
  *y = 2 * fy - *y;
  return 1;
}

}  // namespace

TEST(ShapeTransformsAgainstGeos, RotationAgreesOnRandomShapes) {
  GeosOracle oracle;
  std::mt19937 rng(20240611);
  std::uniform_real_distribution<double> angle(-7, 7), centre(-500, 500);
  for (int trial = 0; trial < 200; ++trial) {
    const Bytes blob = random_shape(rng);
    Rotation r{angle(rng), centre(rng), centre(rng)};
    Misaligned ours(blob, 5);
    ASSERT_EQ(xgWKB_shape_rotate(ours.data(), r.angle, r.cx, r.cy), 0);
    expect_same_shape(ours.data(), geos_transform(oracle, blob, rotate_ccw_by_minus, &r), 1e-9);
  }
}

TEST(ShapeTransformsAgainstGeos, MirrorAboutGeneralLinesAgreesOnRandomShapes) {
  GeosOracle oracle;
  std::mt19937 rng(77);
  std::uniform_real_distribution<double> u(-500, 500);
  for (int trial = 0; trial < 200; ++trial) {
    const Bytes blob = random_shape(rng);
    Line l{{u(rng), u(rng)}, {u(rng), u(rng)}};
    if (std::fabs(l.a.y - l.b.y) < 1) l.b.y = l.a.y + 1.5;  // keep clear of the horizontal rule
    Owned out;
    ASSERT_EQ(xgWKB_shape_mirror(blob.data(), &l.a, &l.b, &out.p, 1e-6), 0);
    expect_same_shape(out.p, geos_transform(oracle, blob, reflect, &l), 1e-6);
  }
}
