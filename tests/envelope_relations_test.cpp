// The predicates between a shape and the rectangle of an envelope blob: hand-made cases at the
// tolerance's edges, the deliberate multipoint skip, refusals, and GEOS relations with the box
// polygon on seeded random shapes in general position.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <string>

#include "relate/envelope_tests.h"
#include "support/blob_builder.h"
#include "support/geos_oracle.h"

using namespace xgtest;

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

using EnvPredicate = uint32_t (*)(const unsigned char*, const unsigned char*, double);

// The seven predicates in the order of the answer strings below.
const EnvPredicate kPredicates[] = {
    xgWKB_shape_envelope_is_disjoint, xgWKB_shape_envelope_is_intersecting, xgWKB_shape_envelope_is_within,
    xgWKB_shape_envelope_is_containing, xgWKB_shape_envelope_is_crossing, xgWKB_shape_envelope_is_overlapping,
    xgWKB_shape_envelope_is_touching};
const char* const kNames[] = {"disjoint", "intersecting", "within", "containing", "crossing", "overlapping",
                              "touching"};

Bytes envelope(double minx, double miny, double maxx, double maxy) {
  Bytes b = header(XGWKB_TYPE_ENVELOPE);
  for (double v : {minx, miny, maxx, maxy}) put_f64(b, v);
  return b;
}

// The seven answers as a string of 0 and 1, in the order of kPredicates.
std::string answers(const Bytes& shape, const Bytes& env, double t) {
  const Misaligned s(shape), e(env);
  std::string r;
  for (EnvPredicate p : kPredicates) r += p(s.data(), e.data(), t) == 1 ? '1' : '0';
  return r;
}

struct Case {
  const char* what;
  Bytes shape;
  double t;
  const char* expected;  // disjoint, intersecting, within, containing, crossing, overlapping, touching
};

void run_cases(const Bytes& env, const std::vector<Case>& cases) {
  for (const Case& c : cases) EXPECT_EQ(answers(c.shape, env, c.t), c.expected) << c.what;
}

const Bytes kBox = envelope(0, 0, 10, 10);

}  // namespace

// Cases at the tolerance's edges, on the boundary and the deliberate irregularities; shapes in
// general position are left to the GEOS comparison below.
TEST(EnvelopeRelations, HandMadeCasesAtTheEdges) {
  auto mp = [](std::initializer_list<_xgWKB_POINT> pts) {
    std::vector<Bytes> members;
    for (const _xgWKB_POINT& p : pts) members.push_back(point(p.x, p.y));
    return multi(XGWKB_TYPE_MULTIPOINT, members);
  };
  const Ring big = square(-10, -10, 30);
  const Bytes outside = polygon({square(20, 20, 2)});
  run_cases(kBox, {
      // d i w c x o t
      {"point on the left edge", point(0, 5), 0.001, "0100001"},
      {"point on the left edge, t 0", point(0, 5), 0, "0100000"},
      {"point half t outside: touching and disjoint", point(-0.0005, 5), 0.001, "1000001"},
      {"point inside by exactly t is not inside", point(1, 5), 1, "0100000"},
      {"point just beyond a corner: no edge", point(-0.5, 10.5), 2, "1000000"},
      {"line inside, starting on an edge", linestring({{0, 5}, {5, 5}, {5, 8}}), 0.001, "0110000"},
      {"line along an edge", linestring({{0, 2}, {0, 8}}), 0.001, "0100001"},
      {"line outside, one vertex on an edge", linestring({{-5, 5}, {0, 5}, {-5, 8}}), 0.001, "0100001"},
      {"line outside, passing closer than t", linestring({{-1, 5}, {-0.0005, 6}, {-1, 7}}), 0.001, "0100001"},
      {"line outside, beyond the clipping margin", linestring({{-1, 5}, {-0.001, 6}, {-1, 7}}), 0.0001, "1000000"},
      // Within the fixed margin of 0.0001 the clipper calls the segment passing through, whatever
      // t says: intended.
      {"line outside, within the clipping margin", linestring({{-0.00005, 2}, {-0.00005, 8}, {-1, 12}, {5, 12}}),
       1e-6, "0100001"},
      // An end 0.0001 inside is inside for the end tests; with t = 1 a vertex exactly t inside is
      // neither inside nor on the boundary, and no segment comes closer than t.
      {"one-point line, t inside: end-inside", linestring({{1, 5}}), 1, "0100000"},
      {"one-point line on an edge: end-on", linestring({{0.5, 5}}), 1, "0100001"},
      {"empty line", linestring({}), 1, "1000000"},
      // The within walk never examines the last point of a multipoint: intended.
      {"last point far outside is never examined", mp({{5, 5}, {6, 6}, {50, 50}}), 0.001, "0110100"},
      {"an outside point before it is", mp({{5, 5}, {50, 50}, {6, 6}}), 0.001, "0100100"},
      {"points: boundary, then inside last", mp({{0, 5}, {5, 5}}), 0.001, "0110000"},
      {"points: boundary and outside", mp({{0, 5}, {50, 50}}), 0.001, "0100001"},
      {"no points", mp({}), 0.001, "1000000"},
      {"the rectangle itself", polygon({square(0, 0, 10)}), 0.001, "0111000"},
      {"a hole holding it", polygon({big, square(-5, -5, 20)}), 0.001, "1000000"},
      {"a hole equal to it", polygon({big, square(0, 0, 10)}), 0.001, "0100001"},
      {"inside it, one vertex on an edge", polygon({{{0, 5}, {5, 2}, {5, 8}, {0, 5}}}), 0.001, "0110000"},
      {"sharing the right edge from outside", polygon({square(10, 0, 10)}), 0.001, "0100001"},
      {"touching a corner", polygon({square(10, 10, 5)}), 0.001, "0100001"},
      {"L around a corner, apart",
       polygon({{{-1, -1}, {-1, 11}, {-0.5, 11}, {-0.5, -0.5}, {11, -0.5}, {11, -1}, {-1, -1}}}), 0.001, "1000000"},
      {"no rings", polygon({}), 0.001, "1000000"},
      // The part along the boundary is not within, so it counts as outside for crossing while
      // within lets it pass.
      {"lines: in and along", multiline({{{1, 1}, {2, 2}}, {{0, 1}, {0, 9}}}), 0.001, "0110100"},
      {"lines: touching and apart", multiline({{{0, 1}, {0, 9}}, {{20, 20}, {30, 30}}}), 0.001, "0100001"},
      {"lines: none", multiline({}), 0.001, "1000000"},
      {"polygons: one holds it", multi(XGWKB_TYPE_MULTIPOLYGON, {outside, polygon({big})}), 0.001, "0101000"},
  });
}

TEST(EnvelopeRelations, ClosedLinesHaveNoEndFacts) {
  // Any end on the boundary or outside is also a vertex there, so only the internal facts show it.
  const _xgWKB_BOX e{0, 0, 10, 10};
  const _xgWKB_POINT open[] = {{0.5, 5}, {5, 5}, {5, 6}};
  const _xgWKB_POINT closed[] = {{0.5, 5}, {5, 5}, {5, 6}, {0.5, 5}};
  const xg::EnvLineStand a = xg::env_line_stand(xg::make_span(open, 3), e, 1);
  const xg::EnvLineStand b = xg::env_line_stand(xg::make_span(closed, 4), e, 1);
  EXPECT_TRUE(a.end_inside && a.end_on && !a.end_outside);  // 0.5 inside: inside by 0.0001, on within 1
  EXPECT_FALSE(b.end_inside || b.end_on || b.end_outside);
}

TEST(EnvelopeRelations, OtherTypesAnswerNothingAndBadNumbersDoNotHang) {
  for (const Bytes& other : {nil(), kBox, header(9), header(13)}) EXPECT_EQ(answers(other, kBox, 0.001), "0000000");
  // A multi-type holding a member of another type cannot be judged: neither disjoint nor not.
  EXPECT_EQ(answers(multi(XGWKB_TYPE_MULTILINESTRING, {point(1, 1)}), kBox, 0.001), "0000000");
  const std::vector<Bytes> shapes = {
      point(kNaN, 5),
      linestring({{kNaN, 1}, {5, kNaN}, {5, 5}}),
      linestring({{-1e308, 5}, {1e308, 6}}),
      linestring({{-INFINITY, 5}, {5, 5}}),
      polygon({{{0, 0}, {kNaN, 5}, {5, 5}, {0, 0}}, {}}),
      multi(XGWKB_TYPE_MULTIPOINT, {point(kNaN, kNaN), point(5, 5)}),
      multiline({{}, {{kNaN, kNaN}, {1, 1}}}),
      multi(XGWKB_TYPE_MULTIPOLYGON, {polygon({}), polygon({{}, square(1, 1, 1)})}),
  };
  for (const Bytes& env : {kBox, envelope(kNaN, 0, 10, kNaN), envelope(5, 5, 5, 5)}) {
    for (const Bytes& s : shapes) {
      for (double t : {0.001, 0.0, -1.0, kNaN}) {
        const std::string a = answers(s, env, t);
        EXPECT_EQ(a[1], a[0] == '1' ? '0' : '1');  // intersecting is exactly not disjoint
      }
    }
  }
}

// ---- against GEOS ----------------------------------------------------------------------------

namespace {

// Random shapes around a random box, kept in general position: no vertex within kClear of an
// edge's line and no segment within kClear of a corner, far beyond t and the clipping margin.
class Scene {
 public:
  explicit Scene(uint32_t seed) : rng_(seed) {
    const double x = real(-5, 5), y = real(-5, 5);
    box_ = {x, y, x + real(2, 8), y + real(2, 8)};
  }

  const _xgWKB_BOX& box() const { return box_; }

  Bytes make(uint32_t type) {
    for (;;) {
      Bytes b = attempt(type);
      if (clear_) return b;
    }
  }

 private:
  static constexpr double kClear = 1e-3;

  double real(double lo, double hi) { return std::uniform_real_distribution<double>(lo, hi)(rng_); }
  int count(int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(rng_); }

  _xgWKB_POINT pos() {
    const _xgWKB_POINT p{real(box_.minx - 6, box_.maxx + 6), real(box_.miny - 6, box_.maxy + 6)};
    check(p);
    return p;
  }

  void check(const _xgWKB_POINT& p) {
    for (double d : {p.x - box_.minx, p.x - box_.maxx, p.y - box_.miny, p.y - box_.maxy}) {
      if (std::fabs(d) < kClear) clear_ = false;
    }
  }

  void check_segments(const Ring& r) {
    const _xgWKB_POINT corners[] = {{box_.minx, box_.miny}, {box_.minx, box_.maxy}, {box_.maxx, box_.miny},
                                    {box_.maxx, box_.maxy}};
    for (std::size_t i = 1; i < r.size(); ++i) {
      const _xgWKB_POINT a = r[i - 1], b = r[i];
      const double dx = b.x - a.x, dy = b.y - a.y, len2 = dx * dx + dy * dy;
      for (const _xgWKB_POINT& c : corners) {
        double u = len2 > 0 ? ((c.x - a.x) * dx + (c.y - a.y) * dy) / len2 : 0;
        u = u < 0 ? 0 : (u > 1 ? 1 : u);
        if (std::hypot(a.x + u * dx - c.x, a.y + u * dy - c.y) < kClear) clear_ = false;
      }
    }
  }

  Ring line() {
    Ring r;
    for (int i = count(2, 6); i > 0; --i) r.push_back(pos());
    check_segments(r);
    return r;
  }

  Ring star(_xgWKB_POINT c, double r_min, double r_max, int n) {
    Ring r = star_ring(rng_, c, r_min, r_max, n);
    for (const _xgWKB_POINT& p : r) check(p);
    check_segments(r);
    return r;
  }

  // A star-shaped polygon, sometimes with a star-shaped hole well inside it: with eight or more
  // vertices at radii from 0.6 r, no edge of the outer ring comes nearer the centre than 0.44 r.
  Bytes star_polygon(_xgWKB_POINT c, double r) {
    if (count(0, 2) != 0) return polygon({star(c, 0.6 * r, r, count(3, 9))});
    return polygon({star(c, 0.6 * r, r, count(8, 12)), star(c, 0.1 * r, 0.3 * r, count(3, 9))});
  }

  Bytes attempt(uint32_t type) {
    clear_ = true;
    switch (type) {
      case XGWKB_TYPE_POINT: {
        const _xgWKB_POINT p = pos();
        return point(p.x, p.y);
      }
      case XGWKB_TYPE_LINESTRING:
        return linestring(line());
      case XGWKB_TYPE_POLYGON:
        return star_polygon(pos(), real(0.5, 12));
      case XGWKB_TYPE_MULTIPOINT: {
        std::vector<Bytes> pts;
        for (int i = count(1, 6); i > 0; --i) {
          const _xgWKB_POINT p = pos();
          pts.push_back(point(p.x, p.y));
        }
        return multi(type, pts);
      }
      case XGWKB_TYPE_MULTILINESTRING: {
        std::vector<Ring> lines;
        for (int i = count(1, 3); i > 0; --i) lines.push_back(line());
        return multiline(lines);
      }
      default: {
        // Two polygons on either side of a line through the box's centre, too far apart to meet.
        const _xgWKB_POINT m{(box_.minx + box_.maxx) / 2, (box_.miny + box_.maxy) / 2};
        const double a = real(0, 2 * M_PI), r1 = real(0.5, 6), r2 = real(0.5, 6), gap = real(0, 4);
        const _xgWKB_POINT c1{m.x + (r1 + gap) * std::cos(a), m.y + (r1 + gap) * std::sin(a)};
        const _xgWKB_POINT c2{m.x - (r2 + 0.1) * std::cos(a), m.y - (r2 + 0.1) * std::sin(a)};
        check(c1);
        return multi(type, {star_polygon(c1, r1), star_polygon(c2, r2)});
      }
    }
  }

  std::mt19937 rng_;
  _xgWKB_BOX box_;
  bool clear_ = true;
};

}  // namespace

TEST(EnvelopeRelations, AgreeWithGeosOnShapesInGeneralPosition) {
  const GeosOracle oracle;
  const GEOSContextHandle_t h = oracle.handle();
  constexpr double kT = 1e-6;
  int counts[7][2] = {};
  for (uint32_t seed = 1; seed <= 1500; ++seed) {
    for (uint32_t type = XGWKB_TYPE_POINT; type <= XGWKB_TYPE_MULTIPOLYGON; ++type) {
      Scene scene(seed * 7 + type);
      const _xgWKB_BOX& b = scene.box();
      const Bytes shape = scene.make(type);
      const Bytes env = envelope(b.minx, b.miny, b.maxx, b.maxy);
      const Bytes box_polygon = polygon({{{b.minx, b.miny}, {b.maxx, b.miny}, {b.maxx, b.maxy}, {b.minx, b.maxy},
                                          {b.minx, b.miny}}});
      GeosGeom g(oracle, oracle.to_geos(shape.data())), r(oracle, oracle.to_geos(box_polygon.data()));
      // The multipoint within-walk never examines the last point of two or more.
      Bytes within_subject = shape;
      if (type == XGWKB_TYPE_MULTIPOINT && shape[5] >= 2) {
        within_subject[5] -= 1;
        within_subject.resize(within_subject.size() - 21);
      }
      GeosGeom w(oracle, oracle.to_geos(within_subject.data()));
      const bool polygonal = type == XGWKB_TYPE_POLYGON || type == XGWKB_TYPE_MULTIPOLYGON;
      const bool crossable = type == XGWKB_TYPE_LINESTRING || type == XGWKB_TYPE_MULTIPOINT ||
                             type == XGWKB_TYPE_MULTILINESTRING;
      const bool expected[7] = {
          GEOSDisjoint_r(h, g.get(), r.get()) == 1,
          GEOSIntersects_r(h, g.get(), r.get()) == 1,
          GEOSWithin_r(h, w.get(), r.get()) == 1,
          polygonal && GEOSContains_r(h, g.get(), r.get()) == 1,
          crossable && GEOSCrosses_r(h, g.get(), r.get()) == 1,
          polygonal && GEOSOverlaps_r(h, g.get(), r.get()) == 1,
          GEOSTouches_r(h, g.get(), r.get()) == 1,  // never, in general position
      };
      const std::string got = answers(shape, env, kT);
      for (int i = 0; i < 7; ++i) {
        EXPECT_EQ(got[i] == '1', expected[i]) << kNames[i] << " type " << type << " seed " << seed << ": "
                                              << oracle.to_wkt(g.get()) << " / " << oracle.to_wkt(r.get());
        ++counts[i][expected[i] ? 1 : 0];
      }
    }
  }
  // Every predicate but touching saw both answers.
  for (int i = 0; i < 7; ++i) {
    if (i != 6) {
      EXPECT_GT(counts[i][1], 0) << kNames[i];
    }
    EXPECT_GT(counts[i][0], 0) << kNames[i];
  }
}
