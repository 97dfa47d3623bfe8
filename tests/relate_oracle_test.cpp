// The relation predicates against GEOS on seeded random shapes of every pair of types.
//
// Two kinds of input:
//   - general position: real coordinates, so that nothing comes within t = 1e-9 of anything
//     else except where a point is placed exactly on a vertex of the other shape;
//   - integer grid: vertices on a coarse grid, so that shapes share vertices and edges and
//     points fall on edges; t = 1e-5 there (the point primitives measure in a frame with
//     single-precision angles, good to a few 1e-7 on these sizes), far below the grid step.
// Every defined cell must agree with GEOS.  Cells the predicate tables leave undefined answer 0
// whatever GEOS says (a point within an equal point, for instance, is not defined here).
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <random>
#include <string>

#include "core/blob.h"
#include "support/blob_builder.h"
#include "support/geos_oracle.h"

using namespace xgtest;

namespace {

using Predicate = int32_t (*)(const unsigned char*, const unsigned char*, double);
using GeosPredicate = char (*)(GEOSContextHandle_t, const GEOSGeometry*, const GEOSGeometry*);

struct PredicateCase {
  const char* name;
  Predicate ours;
  GeosPredicate geos;
  // Defined cells: six rows of six, for the first shape and the second shape in the order point,
  // line, polygon, multipoint, multiline, multipolygon.
  const char* cells;
};

const PredicateCase kPredicates[] = {
    {"disjoint", xgWKB_shape_is_disjoint, GEOSDisjoint_r, "yyyyyy yyyyyy yyyyyy yyyyyy yyyyyy yyyyyy"},
    {"intersecting", xgWKB_shape_is_intersecting, GEOSIntersects_r, "yyyyyy yyyyyy yyyyyy yyyyyy yyyyyy yyyyyy"},
    {"within", xgWKB_shape_is_within, GEOSWithin_r, "-yyyyy -yy-yy --y--y -yyyyy -yy-yy --y--y"},
    // Within, transposed.
    {"containing", xgWKB_shape_is_containing, GEOSContains_r, "------ yy-yy- yyyyyy y--y-- yy-yy- yyyyyy"},
    {"crossing", xgWKB_shape_is_crossing, GEOSCrosses_r, "------ -yyyyy -y-yy- -yy-yy -yyyyy -y-yy-"},
    {"overlapping", xgWKB_shape_is_overlapping, GEOSOverlaps_r, "------ -y--y- --y--y ---y-- -y--y- --y--y"},
    {"touching", xgWKB_shape_is_touching, GEOSTouches_r, "-yy-yy yyyyyy yyyyyy -yy-yy yyyyyy yyyyyy"},
};

class ShapeGen {
 public:
  ShapeGen(uint32_t seed, bool grid) : rng_(seed), grid_(grid) {}

  // A shape of the type; point types may take their points from `near`'s vertices.
  Bytes make(uint32_t type, const Ring& near) {
    switch (type) {
      case XGWKB_TYPE_POINT: return some_point(near);
      case XGWKB_TYPE_LINESTRING: return linestring(line());
      case XGWKB_TYPE_POLYGON: return polygon(poly(pos(), pos(), real(1.5, 4)));
      case XGWKB_TYPE_MULTIPOINT:
      case XGWKB_TYPE_MULTILINESTRING: {
        std::vector<Bytes> members(1 + rng_() % (type == XGWKB_TYPE_MULTIPOINT ? 4 : 3));
        for (Bytes& m : members) m = make(type - 3, near);  // the member type
        return multi(type, members);
      }
      default: {
        // Members on discs that keep apart, so that the multipolygon is valid.
        std::vector<Bytes> polys;
        std::vector<std::array<double, 3>> discs;
        const int k = 1 + static_cast<int>(rng_() % 3);
        for (int tries = 0; tries < 50 && static_cast<int>(polys.size()) < k; ++tries) {
          const double x = pos(), y = pos(), r = real(1, 3);
          auto close = [&](const auto& d) { return std::hypot(d[0] - x, d[1] - y) <= d[2] + r + (grid_ ? 3.5 : 0.5); };
          if (std::any_of(discs.begin(), discs.end(), close)) continue;
          discs.push_back({x, y, r});
          polys.push_back(polygon(poly(x, y, r)));
        }
        return multi(type, polys);
      }
    }
  }

 private:
  double real(double lo, double hi) { return std::uniform_real_distribution<double>(lo, hi)(rng_); }
  double snap(double v) { return grid_ ? std::round(v) : v; }
  double pos() { return snap(real(0, 10)); }

  // A point blob, half the time at one of near's vertices.
  Bytes some_point(const Ring& near) {
    const _xgWKB_POINT p = !near.empty() && rng_() % 2 == 0 ? near[rng_() % near.size()] : _xgWKB_POINT{pos(), pos()};
    return point(p.x, p.y);
  }

  // A random walk of 2 to 5 vertices without repeated points, or now and then a closed line.
  Ring line() {
    if (rng_() % 6 == 0) {
      Ring closed = star(pos(), pos(), real(1.5, 3.5));
      if (!closed.empty()) return closed;
    }
    Ring r{{pos(), pos()}};
    const int k = 2 + static_cast<int>(rng_() % 4);
    while (static_cast<int>(r.size()) < k) {
      const double a = real(0, 2 * M_PI), len = real(1, 4);
      const _xgWKB_POINT p{snap(r.back().x + len * std::cos(a)), snap(r.back().y + len * std::sin(a))};
      if (p.x != r.back().x || p.y != r.back().y) r.push_back(p);
    }
    return r;
  }

  // A star-shaped closed ring around (cx, cy): 6 to 9 vertices at radii 0.6 r..r, snapped.
  // Grid rounding may merge vertices; such rings are drawn again, and after 20 failures the
  // result is empty.
  Ring star(double cx, double cy, double r) {
    for (int tries = 0; tries < 20; ++tries) {
      Ring ring;
      for (const _xgWKB_POINT& v : star_ring(rng_, {cx, cy}, 0.6 * r, r, 6 + static_cast<int>(rng_() % 4))) {
        const _xgWKB_POINT p{snap(v.x), snap(v.y)};
        if (ring.empty() || p.x != ring.back().x || p.y != ring.back().y) ring.push_back(p);
      }
      if (ring.size() >= 4) return ring;
    }
    return {};
  }

  // Half the polygons get a hole: a smaller star well inside the outer one.
  std::vector<Ring> poly(double cx, double cy, double r) {
    if (grid_) r += 1.5;  // room for rounded vertices
    std::vector<Ring> rings{star(cx, cy, r)};
    while (rings[0].empty()) rings[0] = star(cx, cy, r += 1);
    if (rng_() % 2 == 0) rings.push_back(star(cx, cy, (grid_ ? 0.45 : 0.25) * r));
    if (rings.back().empty()) rings.pop_back();
    return rings;
  }

  std::mt19937 rng_;
  bool grid_;
};

Ring vertices_of(const Bytes& blob) {
  Ring out;
  xg::for_each_coord(blob.data(), [&](const unsigned char* at) { out.push_back(xg::load_point(at)); });
  return out;
}

const char* const kTypeNames[] = {"point", "line", "polygon", "multipoint", "multiline", "multipolygon"};

// Every line member of g is simple.
bool lines_simple(GEOSContextHandle_t h, const GEOSGeometry* g) {
  for (int i = 0; i < GEOSGetNumGeometries_r(h, g); ++i) {
    const GEOSGeometry* m = GEOSGetGeometryN_r(h, g, i);
    if (GEOSGeomTypeId_r(h, m) == GEOS_LINESTRING && GEOSisSimple_r(h, m) != 1) return false;
  }
  return true;
}

// Runs `cases` random pairs for every ordered pair of types.
void compare_with_geos(bool grid, double t, int cases, uint32_t seed) {
  GeosOracle oracle;
  GEOSContextHandle_t h = oracle.handle();
  for (uint32_t ta = 1; ta <= 6; ++ta) {
    for (uint32_t tb = 1; tb <= 6; ++tb) {
      ShapeGen gen(seed + 97 * ta + tb, grid);
      int done = 0;
      for (int attempt = 0; done < cases && attempt < 20 * cases; ++attempt) {
        const Bytes b = gen.make(tb, {});
        const Bytes a = gen.make(ta, vertices_of(b));
        GeosGeom ga(oracle, oracle.to_geos(a.data()));
        GeosGeom gb(oracle, oracle.to_geos(b.data()));
        if (!GEOSisValid_r(h, ga.get()) || !GEOSisValid_r(h, gb.get())) continue;  // rounding
        // On the grid a line may end on itself.  A point at such an end is, for a point and a
        // linestring, located on the run first (and so within the line), while GEOS counts it
        // a boundary point; those lines are left out.
        if (grid && (!lines_simple(h, ga.get()) || !lines_simple(h, gb.get()))) continue;
        ++done;
        const Misaligned ma(a), mb(b);
        for (const PredicateCase& pc : kPredicates) {
          const bool defined = pc.cells[7 * (ta - 1) + tb - 1] == 'y';
          const int expected = defined ? (pc.geos(h, ga.get(), gb.get()) == 1) : 0;
          const int got = pc.ours(ma.data(), mb.data(), t);
          ASSERT_EQ(got, expected) << pc.name << "(" << kTypeNames[ta - 1] << ", "
                                   << kTypeNames[tb - 1] << ")\n  a = " << oracle.to_wkt(ga.get())
                                   << "\n  b = " << oracle.to_wkt(gb.get());
        }
      }
      ASSERT_EQ(done, cases) << "too few valid shapes for " << ta << ", " << tb;
    }
  }
}

}  // namespace

TEST(RelateAgainstGeos, AgreesInGeneralPosition) { compare_with_geos(false, 1e-9, 150, 1000); }

TEST(RelateAgainstGeos, AgreesWithSharedVerticesAndEdges) { compare_with_geos(true, 1e-5, 150, 2000); }
