// Move, rotate, stretch and mirror: exact results on small shapes, the mirror's horizontal rule
// and output layout, and agreement with GEOS coordinate transforms on random shapes.
#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

#include "core/blob.h"
#include "support/edit_result.h"
#include "support/geos_oracle.h"

using namespace xgtest;

namespace {

const std::vector<Bytes> kEveryType = {
    point(1, 2),
    linestring({{0, 0}, {1, 1}, {2, 0}}),
    polygon({square(0, 0, 10), square(2, 2, 1)}),
    multi(XGWKB_TYPE_MULTIPOINT, {point(0, 0), point(3, 4)}),
    multiline({{{0, 0}, {1, 0}}, {{5, 5}, {6, 7}}}),
    multi(XGWKB_TYPE_MULTIPOLYGON, {polygon({square(0, 0, 1)}), polygon({square(5, 5, 2), square(6, 6, 0.5)})})};

std::vector<_xgWKB_POINT> coords_of(const unsigned char* blob) {
  std::vector<_xgWKB_POINT> out;
  xg::for_each_coord(blob, [&](const unsigned char* at) { out.push_back(xg::load_point(at)); });
  return out;
}

// The blob with every coordinate replaced by f(coordinate).
template <class F>
Bytes mapped(Bytes blob, F f) {
  xg::for_each_coord(blob.data(), [&](unsigned char* at) { xg::store_point(at, f(xg::load_point(at))); });
  return blob;
}

void expect_near(const std::vector<_xgWKB_POINT>& a, const std::vector<_xgWKB_POINT>& b, double tol) {
  ASSERT_EQ(a.size(), b.size());
  for (std::size_t i = 0; i < a.size(); ++i) {
    EXPECT_NEAR(a[i].x, b[i].x, tol) << "vertex " << i;
    EXPECT_NEAR(a[i].y, b[i].y, tol) << "vertex " << i;
  }
}

// A random transform for the comparison with GEOS.
struct Params {
  double angle, cx, cy;  // rotation
  _xgWKB_POINT a, b;     // mirror line
};

}  // namespace

TEST(ShapeTransforms, RefuseNullAndEveryTypeButTheSixGeometries) {
  const _xgWKB_POINT a{0, 0}, b{1, 1};
  Out out;
  EXPECT_EQ(xgWKB_shape_move(nullptr, 1, 1), XGWKB_E_NULL_POINTER);
  EXPECT_EQ(xgWKB_shape_mirror(nullptr, &a, &b, &out.p, 0), XGWKB_E_NULL_POINTER);
  Bytes foreign_member = multi(XGWKB_TYPE_MULTIPOINT, {point(0, 0)});
  foreign_member[10] = XGWKB_TYPE_LINESTRING;
  for (Bytes blob : {nil(), foreign_member}) {
    const Bytes before = blob;
    EXPECT_EQ(xgWKB_shape_move(blob.data(), 1, 1), XGWKB_E_INVALID_ENTITY);
    EXPECT_EQ(xgWKB_shape_rotate(blob.data(), 1, 0, 0), XGWKB_E_INVALID_ENTITY);
    EXPECT_EQ(xgWKB_shape_stretch(blob.data(), &a, 2, 2), XGWKB_E_INVALID_ENTITY);
    EXPECT_EQ(xgWKB_shape_mirror(blob.data(), &a, &b, &out.p, 0.001), XGWKB_E_INVALID_ENTITY);
    EXPECT_EQ(out.p, nullptr);
    EXPECT_EQ(blob, before);
  }
}

TEST(ShapeTransforms, MoveStretchAndRotateRewriteEveryVertexOfEveryType) {
  const _xgWKB_POINT base{1, 1};
  for (const Bytes& blob : kEveryType) {
    Misaligned moved(blob), stretched(blob), turned(blob);
    ASSERT_EQ(xgWKB_shape_move(moved.data(), 1.5, -2), 0);
    EXPECT_EQ(bytes_of(moved.data()), mapped(blob, [](_xgWKB_POINT p) { return _xgWKB_POINT{p.x + 1.5, p.y - 2}; }));
    ASSERT_EQ(xgWKB_shape_stretch(stretched.data(), &base, 2, -1), 0);
    EXPECT_EQ(bytes_of(stretched.data()),
              mapped(blob, [](_xgWKB_POINT p) { return _xgWKB_POINT{2 * p.x - 1, 2 - p.y}; }));
    ASSERT_EQ(xgWKB_shape_rotate(turned.data(), M_PI / 2, 3, -4), 0);  // clockwise for a positive angle
    const Bytes quarter = mapped(blob, [](_xgWKB_POINT p) { return _xgWKB_POINT{p.y + 7, -1 - p.x}; });
    expect_near(coords_of(turned.data()), coords_of(quarter.data()), 1e-12);
    Bytes copy = blob;
    ASSERT_EQ(xgWKB_shape_rotate(copy.data(), 2 * M_PI, 3, -4), 0);
    expect_near(coords_of(copy.data()), coords_of(blob.data()), 1e-12);
  }
}

TEST(ShapeMirror, ReflectsAboutTheLineOrAboutTheVerticalThroughP1WhenNearlyHorizontal) {
  const struct { _xgWKB_POINT p1, p2; double t; _xgWKB_POINT in, expected; } cases[] = {
      {{0, 0}, {3, 1.5}, 1.0, {1, 2}, {2.2, -0.4}},  // trunc(-1.5) = -1 is not below t = 1
      {{0, 0}, {5, 0}, 0.001, {2, 3}, {-2, 3}},     {{1, 7}, {-4, 7}, 0.001, {2, 3}, {0, 3}},
      {{0, 0}, {5, 0.9}, 1e-9, {2, 3}, {-2, 3}},    {{0, 0}, {2, -0.999}, 1.0, {2, 3}, {-2, 3}},  // trunc() = 0
  };
  for (const auto& c : cases) {
    Out out;
    ASSERT_EQ(xgWKB_shape_mirror(point(c.in.x, c.in.y).data(), &c.p1, &c.p2, &out.p, c.t), 0);
    expect_near(coords_of(out.p), {c.expected}, 1e-12);
  }
  // With t = 0 a horizontal line is not taken as horizontal and the slope divides by zero.
  const _xgWKB_POINT a{0, 1}, b{5, 1};
  Out out;
  ASSERT_EQ(xgWKB_shape_mirror(point(2, 3).data(), &a, &b, &out.p, 0), 0);
  EXPECT_FALSE(std::isfinite(coords_of(out.p)[0].x));
}

TEST(ShapeMirror, WritesZeroByteOrderInPartHeadersAndCopiesTheOuterHeader) {
  const _xgWKB_POINT a{0, 0}, b{0, 1};  // the y axis
  for (const Bytes& blob : kEveryType) {
    Bytes ones = marked(blob);
    if (xg::is_multi_type(xg::shape_type(blob.data())))
      xg::for_each_member(blob.data(), [&](const unsigned char* m, uint32_t) { ones[m - blob.data()] = 1; });
    Misaligned input(ones);
    Out out;
    ASSERT_EQ(xgWKB_shape_mirror(input.data(), &a, &b, &out.p, 0.001), 0);
    Bytes expected = mapped(blob, [](_xgWKB_POINT q) { return _xgWKB_POINT{0.0 - q.x, q.y}; });
    if (xg::shape_type(blob.data()) != XGWKB_TYPE_POINT) expected[0] = 1;
    EXPECT_EQ(bytes_of(out.p), expected);
    EXPECT_EQ(bytes_of(input.data()), ones);
  }
}

// GEOS's C API has no affine call, so the reference applies textbook formulas through
// GEOSGeom_transformXY to GEOS's own coordinate sequences.
TEST(ShapeTransformsAgainstGeos, RotationAndMirrorAgreeOnRandomShapes) {
  GeosOracle oracle;
  std::mt19937 rng(20240611);
  std::uniform_real_distribution<double> u(-1000, 1000), angle(-7, 7);
  // A random multipolygon with holes or multilinestring (the coordinates need not make valid
  // geometry).
  auto ring = [&] {
    Ring r(3 + rng() % 7);
    for (auto& p : r) p = {u(rng), u(rng)};
    r.push_back(r.front());
    return r;
  };
  const GEOSTransformXYCallback rotate_counter_clockwise_by_minus_angle = [](double* x, double* y, void* data) {
    const Params& r = *static_cast<Params*>(data);
    const double c = std::cos(-r.angle), s = std::sin(-r.angle), dx = *x - r.cx, dy = *y - r.cy;
    *x = r.cx + dx * c - dy * s;
    *y = r.cy + dx * s + dy * c;
    return 1;
  };
  const GEOSTransformXYCallback reflect_by_projection = [](double* x, double* y, void* data) {
    const Params& l = *static_cast<Params*>(data);
    const double vx = l.b.x - l.a.x, vy = l.b.y - l.a.y;
    const double s = ((*x - l.a.x) * vx + (*y - l.a.y) * vy) / (vx * vx + vy * vy);
    *x = 2 * (l.a.x + s * vx) - *x;
    *y = 2 * (l.a.y + s * vy) - *y;
    return 1;
  };
  auto transformed = [&](const Bytes& blob, GEOSTransformXYCallback f, Params* p) {
    GeosGeom g(oracle, oracle.to_geos(blob.data())), t(oracle, GEOSGeom_transformXY_r(oracle.handle(), g.get(), f, p));
    return oracle.from_geos(t.get());
  };
  for (int trial = 0; trial < 200; ++trial) {
    std::vector<Bytes> parts(1 + rng() % 4);
    const bool polygons = rng() % 2 == 0;
    for (Bytes& part : parts) part = polygons ? polygon({ring(), ring()}) : linestring(ring());
    const Bytes blob = multi(polygons ? XGWKB_TYPE_MULTIPOLYGON : XGWKB_TYPE_MULTILINESTRING, parts);
    Params p{angle(rng), u(rng) / 2, u(rng) / 2, {u(rng) / 2, u(rng) / 2}, {u(rng) / 2, u(rng) / 2}};
    if (std::fabs(p.a.y - p.b.y) < 1) p.b.y = p.a.y + 1.5;  // clear of the horizontal rule
    Misaligned turned(blob, 5);
    ASSERT_EQ(xgWKB_shape_rotate(turned.data(), p.angle, p.cx, p.cy), 0);
    const Bytes rotated = transformed(blob, rotate_counter_clockwise_by_minus_angle, &p);
    expect_near(coords_of(turned.data()), coords_of(rotated.data()), 1e-9);
    Out mirrored;
    ASSERT_EQ(xgWKB_shape_mirror(blob.data(), &p.a, &p.b, &mirrored.p, 1e-6), 0);
    const Bytes reflected = transformed(blob, reflect_by_projection, &p);
    ASSERT_EQ(bytes_of(mirrored.p).size(), reflected.size());  // the layout, not just the vertices
    expect_near(coords_of(mirrored.p), coords_of(reflected.data()), 1e-6);
  }
}
