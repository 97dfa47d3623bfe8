// Buffer, box clipping and line cutting against GEOS on seeded random shapes: buffer areas
// within 1% of GEOS's buffer with ten segments per quadrant (the same 40-gon circles) and every
// input vertex covered; clipped lengths and areas equal to GEOS's intersection with the box
// polygon to 1e-9 relative; the inside and outside pieces of a cut line summing to the line.
#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "support/edit_result.h"
#include "support/geos_oracle.h"

using namespace xgtest;

namespace {

class Shapes {
 public:
  explicit Shapes(uint32_t seed) : rng_(seed) {}

  double real(double lo, double hi) { return std::uniform_real_distribution<double>(lo, hi)(rng_); }
  int integer(int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(rng_); }

  // A random walk of n points from (x, y) with steps of about `step`.
  Ring walk(double x, double y, int n, double step) {
    Ring r{{x, y}};
    double heading = real(0, 2 * M_PI);
    for (int i = 1; i < n; ++i) {
      heading += real(-1.2, 1.2);
      const double s = step * real(0.3, 1.7);
      r.push_back({r.back().x + s * std::cos(heading), r.back().y + s * std::sin(heading)});
    }
    return r;
  }

  // A star polygon around (cx, cy) of radius about r with up to two holes.
  Bytes star_polygon(double cx, double cy, double r) {
    std::vector<Ring> rings{star_ring(rng_, {cx, cy}, 0.7 * r, r, integer(6, 30))};
    for (int h = integer(0, 2); h > 0; --h) {
      const double a = h * M_PI + real(0.6, 2.5);
      rings.push_back(star_ring(rng_, {cx + 0.35 * r * std::cos(a), cy + 0.35 * r * std::sin(a)}, 0.05 * r, 0.12 * r,
                                integer(3, 9), true));
    }
    return polygon(rings);
  }

  // One shape of each kind in turn: point, linestring, polygon, multipoint, multilinestring,
  // multipolygon.
  Bytes make(int kind) {
    switch (kind) {
      case 0:
        return point(real(0, 100), real(0, 100));
      case 1:
        return linestring(walk(real(20, 80), real(20, 80), integer(2, 40), real(1, 8)));
      case 2:
        return star_polygon(real(30, 70), real(30, 70), real(10, 40));
      case 3: {
        std::vector<Bytes> pts;
        for (int i = integer(1, 12); i > 0; --i) pts.push_back(point(real(0, 100), real(0, 100)));
        return multi(XGWKB_TYPE_MULTIPOINT, pts);
      }
      case 4: {
        std::vector<Ring> lines;
        for (int i = integer(1, 4); i > 0; --i) lines.push_back(walk(real(0, 100), real(0, 100), integer(2, 20), 5));
        return multiline(lines);
      }
      default:
        return mp({star_polygon(real(15, 30), real(20, 80), 12), star_polygon(real(60, 80), real(20, 80), 15)});
    }
  }

 private:
  std::mt19937 rng_;
};

class Oracle : public ::testing::Test {
 protected:
  GEOSGeometry* box(double minx, double miny, double maxx, double maxy) {
    char wkt[256];
    std::snprintf(wkt, sizeof wkt, "POLYGON ((%.17g %.17g, %.17g %.17g, %.17g %.17g, %.17g %.17g, %.17g %.17g))",
                  minx, miny, maxx, miny, maxx, maxy, minx, maxy, minx, miny);
    return oracle_.from_wkt(wkt);
  }

  GeosOracle oracle_;
};

Bytes envelope(double minx, double miny, double maxx, double maxy) {
  Bytes b = header(XGWKB_TYPE_ENVELOPE);
  for (double v : {minx, miny, maxx, maxy}) put_f64(b, v);
  return b;
}

}  // namespace

TEST_F(Oracle, BuffersMatchGeosAreasAndCoverTheInput) {
  Shapes gen(12);
  for (int k = 0; k < 120; ++k) {
    const int kind = k % 6;
    const Bytes shape = gen.make(kind);
    // Polygons are also shrunk, by less than a tenth of their size.
    const double d = kind % 3 == 2 && (k / 6) % 2 == 1 ? -gen.real(0.2, 1.5) : gen.real(0.5, 12);
    SCOPED_TRACE(::testing::Message() << "shape " << k << " d " << d);
    GeosGeom input(oracle_, oracle_.to_geos(shape.data()));
    SCOPED_TRACE(oracle_.to_wkt(input.get()));
    Out ours;
    ASSERT_EQ(xgWKB_shape_generate_buffer(Misaligned(shape).data(), d, &ours.p, 0), 0);
    ASSERT_NE(ours.p, nullptr);
    GeosGeom mine(oracle_, oracle_.to_geos_or_empty(ours.p)), ref(oracle_, GEOSBuffer_r(oracle_.handle(), input.get(), d, 10));
    EXPECT_TRUE(GEOSisValid_r(oracle_.handle(), mine.get())) << oracle_.to_wkt(mine.get());
    EXPECT_NEAR(oracle_.area(mine.get()), oracle_.area(ref.get()), 0.01 * oracle_.area(ref.get()));
    if (d > 0) {
      EXPECT_TRUE(GEOSCovers_r(oracle_.handle(), mine.get(), input.get()));
    }
  }
}

TEST_F(Oracle, ClippedLinesAndPolygonsMatchGeosIntersectionWithTheBox) {
  const int kKinds[] = {1, 4, 2, 5};
  Shapes gen(34);
  for (int k = 0; k < 150; ++k) {
    const int kind = kKinds[k % 4];  // the line and polygon kinds of Shapes::make
    const Bytes shape = gen.make(kind);
    const double minx = gen.real(0, 60), miny = gen.real(0, 60);
    const double maxx = minx + gen.real(5, 60), maxy = miny + gen.real(5, 60);
    SCOPED_TRACE(::testing::Message() << "shape " << k);
    GeosGeom input(oracle_, oracle_.to_geos(shape.data())), b(oracle_, box(minx, miny, maxx, maxy));
    SCOPED_TRACE(oracle_.to_wkt(input.get()) + "\n" + oracle_.to_wkt(b.get()));
    Out ours;
    ASSERT_EQ(xgWKB_shape_clip(shape.data(), envelope(minx, miny, maxx, maxy).data(), &ours.p, 1e-9), 0);
    GeosGeom mine(oracle_, oracle_.to_geos_or_empty(ours.p)), ref(oracle_, GEOSIntersection_r(oracle_.handle(), input.get(), b.get()));
    ASSERT_TRUE(mine.get() != nullptr && ref.get() != nullptr);
    const bool lines = kind == 1 || kind == 4;
    const double want = lines ? oracle_.length(ref.get()) : oracle_.area(ref.get());
    const double got = lines ? oracle_.length(mine.get()) : oracle_.area(mine.get());
    EXPECT_NEAR(got, want, 1e-9 * (lines ? oracle_.length(input.get()) : oracle_.area(input.get())));
  }
}

TEST_F(Oracle, CutLinePiecesAddUpAndTheInsideMatchesGeos) {
  Shapes gen(56);
  for (int k = 0; k < 80; ++k) {
    const Bytes line = gen.make(k % 2 ? 1 : 4), poly = gen.make(k % 3 ? 2 : 5);
    SCOPED_TRACE(::testing::Message() << "pair " << k);
    GeosGeom gl(oracle_, oracle_.to_geos(line.data())), gp(oracle_, oracle_.to_geos(poly.data()));
    SCOPED_TRACE(oracle_.to_wkt(gl.get()) + "\n" + oracle_.to_wkt(gp.get()));
    _xgWKB_LINE_PIECES pieces{nullptr, nullptr};
    ASSERT_EQ(xgWKB_shape_ClipLinestringPolygon(line.data(), poly.data(), &pieces, 1e-7), 1);
    Out inside, outside;
    inside.p = pieces.inside;
    outside.p = pieces.outside;
    GeosGeom in(oracle_, oracle_.to_geos_or_empty(inside.p)), out(oracle_, oracle_.to_geos_or_empty(outside.p));
    GeosGeom ref(oracle_, GEOSIntersection_r(oracle_.handle(), gl.get(), gp.get()));
    const double total = oracle_.length(gl.get());
    EXPECT_NEAR(oracle_.length(in.get()) + oracle_.length(out.get()), total, 1e-9 * total);
    EXPECT_NEAR(oracle_.length(in.get()), oracle_.length(ref.get()), 1e-9 * total);
  }
}

// A line's buffer is exactly the union of the 40-gon circles around its vertices and the
// rectangles around its segments, however the pieces are put together: built here piece by piece
// with GEOS and compared by the area of the symmetric difference.  The result's cleaning drops
// vertices within 0.0001 of the line through their neighbours, each taking a sliver of at most
// half that height over its two edges: half 0.0001 of the perimeter bounds the difference.
TEST_F(Oracle, LineBufferIsExactlyTheUnionOfCirclesAndRectangles) {
  Shapes gen(78);
  for (int k = 0; k < 40; ++k) {
    const double d = k % 3 == 0 ? 0.5 : gen.real(0.5, 6);
    const Ring pts = gen.walk(50, 50, gen.integer(2, 30), gen.real(0.5, 8));
    SCOPED_TRACE(::testing::Message() << "line " << k << " d " << d);
    std::vector<Bytes> pieces;
    for (std::size_t i = 0; i < pts.size(); ++i) {
      Ring circle;
      for (int j = 0; j < 40; ++j) {
        const double a = j * static_cast<double>(6.2831855f) / 40;
        circle.push_back({pts[i].x + d * std::cos(a), pts[i].y + d * std::sin(a)});
      }
      circle.push_back(circle.front());
      pieces.push_back(polygon({circle}));
      if (i == 0) continue;
      const _xgWKB_POINT p = pts[i - 1], q = pts[i];
      const double len = std::hypot(q.x - p.x, q.y - p.y), nx = -(q.y - p.y) / len * d, ny = (q.x - p.x) / len * d;
      pieces.push_back(polygon({{{p.x - nx, p.y - ny}, {q.x - nx, q.y - ny}, {q.x + nx, q.y + ny}, {p.x + nx, p.y + ny},
                                 {p.x - nx, p.y - ny}}}));
    }
    GeosGeom all(oracle_, oracle_.to_geos(mp(pieces).data()));
    GeosGeom ref(oracle_, GEOSUnaryUnion_r(oracle_.handle(), all.get()));
    Out ours;
    ASSERT_EQ(xgWKB_shape_generate_buffer(linestring(pts).data(), d, &ours.p, 0), 0);
    GeosGeom mine(oracle_, oracle_.to_geos_or_empty(ours.p));
    GeosGeom diff(oracle_, GEOSSymDifference_r(oracle_.handle(), mine.get(), ref.get()));
    GeosGeom ring(oracle_, GEOSBoundary_r(oracle_.handle(), ref.get()));
    EXPECT_LT(oracle_.area(diff.get()), 0.5e-4 * oracle_.length(ring.get())) << oracle_.to_wkt(mine.get());
  }
}
