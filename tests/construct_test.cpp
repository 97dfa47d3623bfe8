// Shape construction: exact layouts of the constructors, argument checks in their order, and the
// conversions between dimensions.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "core/blob.h"
#include "support/blob_builder.h"

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
}

TEST(Construct, EnvelopeIsA37ByteBlobOfType21) {
  const _xgWKB_BOX box{-1, -2, 3, 4};
  unsigned char* out = nullptr;
  ASSERT_EQ(xgWKB_shape_generate_envelope(&box, &out), 0);
  Shape hold(out);
  Bytes want;
  put_header(want, XGWKB_TYPE_ENVELOPE);
  for (double v : {-1.0, -2.0, 3.0, 4.0}) put_f64(want, v);
  EXPECT_EQ(Bytes(out, out + 37), want);
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
      {"multipoint null array", [](auto o) { return xgWKB_shape_generate_multipoint(2, nullptr, o); }, -65},
      {"line null before count", [](auto o) { return xgWKB_shape_generate_line(1, nullptr, o); }, -65},
      {"line one point", [](auto o) { return xgWKB_shape_generate_line(1, kPts.data(), o); }, -148},
      {"multiline null points", [&](auto o) { return xgWKB_shape_generate_multiline(3, 2, short_line, nullptr, o); }, -65},
      {"multiline member of one point", [&](auto o) { return xgWKB_shape_generate_multiline(3, 2, short_line, kPts.data(), o); }, -148},
      {"polygon null points", [](auto o) { return xgWKB_shape_generate_polygon(3, 1, nullptr, nullptr, o); }, -65},
      {"polygon total 3 with valid counts", [](auto o) {
         const int32_t counts[] = {5};
         return xgWKB_shape_generate_polygon(3, 1, counts, kPts.data(), o); }, -148},
      {"polygon ring of 3", [&](auto o) { return xgWKB_shape_generate_polygon(8, 2, short_ring, kPts.data(), o); }, -148},
      {"polygon two rings without counts", [](auto o) { return xgWKB_shape_generate_polygon(9, 2, nullptr, kPts.data(), o); }, -66},
      {"circle n 3", [&](auto o) { return xgWKB_shape_generate_polygon_from_circle(&c, 1, 3, o); }, -66},
      {"circle negative radius", [&](auto o) { return xgWKB_shape_generate_polygon_from_circle(&c, -1, 8, o); }, -66},
      {"circle NaN radius", [&](auto o) { return xgWKB_shape_generate_polygon_from_circle(&c, NAN, 8, o); }, -66},
      {"ellipse a < b", [&](auto o) { return xgWKB_shape_generate_from_ellipse(&c, 1, 2, 0, 12, o); }, -66},
      {"ellipse start above 360", [&](auto o) { return xgWKB_shape_generate_from_ellipse(&c, 2, 1, 361, 12, o); }, -66},
      {"ellipse n 8", [&](auto o) { return xgWKB_shape_generate_from_ellipse(&c, 2, 1, 0, 8, o); }, -66},
      {"ellipse check before null centre", [](auto o) { return xgWKB_shape_generate_from_ellipse(nullptr, 2, 1, -1, 12, o); }, -66},
  };
  for (const Case& c : cases) {
    unsigned char* out = nullptr;
    EXPECT_EQ(c.f(&out), c.want) << c.name;
    EXPECT_EQ(out, nullptr) << c.name;
  }
}

TEST(Construct, CircleWritesAnUncountedClosingPointAfterItsRing) {
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
}

TEST(Construct, CircleStepsUseTheSinglePrecisionTwoPi) {
  const _xgWKB_POINT c{0, 0};
  unsigned char* out = nullptr;
  ASSERT_EQ(xgWKB_shape_generate_polygon_from_circle(&c, 1, 6, &out), 0);
  Shape hold(out);
  // Point 3 sits at half of 6.2831854820251465, a little past pi: sin is -8.74e-8, not ~0.
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
  EXPECT_NEAR(ring.point(0).x, 10, 1e-12);
  EXPECT_NEAR(ring.point(0).y, 22, 1e-12);  // y from a, not b
  for (uint32_t i = 1; i < 9; ++i) {
    const double u = (ring.point(i).x - 10) / 2;
    const double v = ring.point(i).y - 20;
    EXPECT_NEAR(u * u + v * v, 1, 1e-12) << i;
  }
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
  ASSERT_EQ(xgWKB_shape_generate_from_part(mpg.data(), 2, &out), 0);
  Shape hold(out);
  EXPECT_EQ(bytes_of(out), second);

  EXPECT_EQ(xgWKB_shape_generate_from_part(mpg.data(), 0, &out), -66);
  EXPECT_EQ(xgWKB_shape_generate_from_part(mpg.data(), 3, &out), -66);
  EXPECT_EQ(xgWKB_shape_generate_from_part(second.data(), 1, &out), -27);
  EXPECT_EQ(xgWKB_shape_generate_from_part(nullptr, 1, &out), -65);
}

TEST(Construct, CombineTakesItsTypeFromTheLastInput) {
  const Bytes p = point(1, 2);
  const Bytes poly = polygon({square(0, 0, 1)});
  const Misaligned mpt(multi(XGWKB_TYPE_MULTIPOINT, {point(3, 4), point(5, 6)}));
  {
    const unsigned char* in[] = {p.data(), poly.data()};
    // Mixed dimensions are not refused: the members keep their own types.
    const Bytes want = multi(XGWKB_TYPE_MULTIPOLYGON, {p, poly});
    EXPECT_EQ(build([&](auto o) { return xgWKB_shape_combine(in, 2, o); }, want.size()), want);
  }
  {
    const unsigned char* in[] = {mpt.data(), p.data()};
    EXPECT_EQ(build([&](auto o) { return xgWKB_shape_combine(in, 2, o); }),
              multi(XGWKB_TYPE_MULTIPOINT, {point(3, 4), point(5, 6), p}));
  }
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

TEST(Construct, AsPointListsEveryVertexInStorageOrder) {
  const Misaligned poly(polygon({square(0, 0, 4), {{1, 1}, {2, 1}, {1, 2}, {1, 1}}}));
  std::vector<Bytes> members;
  for (const Ring& r : {square(0, 0, 4), Ring{{1, 1}, {2, 1}, {1, 2}, {1, 1}}}) {
    for (const _xgWKB_POINT& q : r) members.push_back(point(q.x, q.y));
  }
  EXPECT_EQ(build([&](auto o) { return xgWKB_shape_as_point(poly.data(), o); }),
            multi(XGWKB_TYPE_MULTIPOINT, members));
  const Bytes p = point(7, 8);
  const Bytes one = build([&](auto o) { return xgWKB_shape_as_point(p.data(), o); });
  EXPECT_EQ(one, multi(XGWKB_TYPE_MULTIPOINT, {p}));
  EXPECT_EQ(one.size(), 30u);
  unsigned char* out = nullptr;
  EXPECT_EQ(xgWKB_shape_as_point(nil().data(), &out), -27);
}

TEST(Construct, AsLineTurnsEachTypeIntoItsLineForm) {
  const Bytes a = polygon({square(0, 0, 4), square(1, 1, 1)});
  const Bytes b = polygon({square(9, 9, 1)});
  struct Case {
    std::string name;
    Bytes in;
    Bytes want;
  } cases[] = {
      {"point gives nil", point(1, 1), nil()},
      {"multipoint gives one line", multi(XGWKB_TYPE_MULTIPOINT, {point(1, 2), point(3, 4)}),
       linestring({{1, 2}, {3, 4}})},
      {"linestring is copied", linestring({{1, 2}, {3, 4}}), linestring({{1, 2}, {3, 4}})},
      {"multipolygon gives every ring", multi(XGWKB_TYPE_MULTIPOLYGON, {a, b}),
       multi(XGWKB_TYPE_MULTILINESTRING,
             {linestring(square(0, 0, 4)), linestring(square(1, 1, 1)), linestring(square(9, 9, 1))})},
  };
  for (const Case& c : cases) {
    const Misaligned in(c.in);
    EXPECT_EQ(build([&](auto o) { return xgWKB_shape_as_line(in.data(), o); }), c.want) << c.name;
  }
  unsigned char* out = nullptr;
  EXPECT_EQ(xgWKB_shape_as_line(polygon({}).data(), &out), -27);
  EXPECT_EQ(xgWKB_shape_as_line(multi(XGWKB_TYPE_MULTIPOLYGON, {}).data(), &out), -27);
  EXPECT_EQ(xgWKB_shape_as_line(nil().data(), &out), -134);
  EXPECT_EQ(out, nullptr);
}

TEST(Construct, ReservedEntryPointsSucceed) {
  EXPECT_EQ(xgWKB_shape_build(), 0);
  EXPECT_EQ(xgWKB_shape_filter_coordinate(), 0);
  EXPECT_EQ(xgWKB_shape_change_coordref(), 0);
  EXPECT_EQ(xgWKB_shape_get_coordref(), 0);
}
