// distance.cpp - the shortest distance between two shapes.
//
// Every pair of types is answered the same way, which gives the minimum over the pairs of
// parts that a kernel per pair of types would take:
//   1. the least distance between the two shapes' segments (points count as zero-length
//      segments, polygon rings as the lines they are stored as), by branch and bound
//      (nearest_pair.h), which is 0 where lines or boundaries cross or touch;
//   2. 0 when a part of one lies inside a polygon of the other: a point on the boundary within
//      t, or inside the outer ring without lying inside a hole (a point strictly inside a hole
//      is as far as the hole's ring, the nearest ring to it, which step 1 measured); a line
//      whose first vertex is so placed (a line that crosses no ring lies wholly in one region);
//      a polygon whose outer ring's first vertex lies within the other (nested in its interior);
//   3. two polygons that the relation layer's disjointness test (tolerance 0.0001) does not
//      find disjoint are at distance 0.  That test can only disagree with steps 1-2 for
//      polygons within a few 0.0001 of each other, so it runs only when the distance found is
//      that small, and only on the pairs of polygons whose boxes come that close;
//   4. where either shape is a point set, a multilinestring or a multipolygon, a distance below
//      t counts as 0 (such pairs stop searching as soon as they find one).
// A polygon inside a hole of another is nearest to that hole's ring and a polygon outside
// another nearest to its outer ring, so step 1 measures those cases exactly too.
#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>

#include "construct/nearest_pair.h"
#include "core/boundary.h"
#include "core/point_primitives.h"
#include "relate/ring_index.h"
#include "relate/segment_tests.h"

namespace xg {

namespace {

bool is_points(uint32_t type) { return type == XGWKB_TYPE_POINT || type == XGWKB_TYPE_MULTIPOINT; }
bool is_polygons(uint32_t type) { return type == XGWKB_TYPE_POLYGON || type == XGWKB_TYPE_MULTIPOLYGON; }

// Polygons farther apart than this are disjoint under the 0.0001 disjointness test whatever it
// finds (it meets segments within 0.0001 measured in a rotated frame, so within about 1.5e-4).
constexpr double kNearPolygons = 3e-4;

// The largest absolute coordinate of a box (the scale of the rounding in the relation tests).
double magnitude(const _xgWKB_BOX& b) {
  return std::fmax(std::fmax(std::fabs(b.minx), std::fabs(b.maxx)),
                   std::fmax(std::fabs(b.miny), std::fabs(b.maxy)));
}

// The shape's segments, line after line, and its isolated points (runs of one point), in a box
// tree.
SegmentTree segment_tree(const ShapeRuns& runs) {
  std::vector<SegmentItem> segments;
  std::vector<_xgWKB_POINT> points;
  std::size_t total = 0;
  for (uint32_t i = 0; i < runs.run_count(); ++i) total += runs.run(i).n;
  segments.reserve(total);
  for (uint32_t i = 0; i < runs.run_count(); ++i) {
    const Span& s = runs.run(i);
    if (s.n == 1) points.push_back(s.p[0]);
    for (uint32_t j = 0; j + 1 < s.n; ++j) segments.push_back(make_segment_item(s.p[j], s.p[j + 1]));
  }
  return SegmentTree(std::move(segments), points);
}

// The polygons of a shape with their edge indexes, made when first asked for.
class PolygonCache {
 public:
  PolygonCache(const ShapeRuns& runs, double t) : runs_(runs), t_(t), made_(runs.part_count()) {}

  const PolySpans& polygon(uint32_t part) {
    if (!made_[part]) made_[part] = std::make_unique<IndexedPolygon>(runs_.polygon(part), t_);
    return made_[part]->spans();
  }

 private:
  const ShapeRuns& runs_;
  double t_;
  std::vector<std::unique_ptr<IndexedPolygon>> made_;
};

// p on the polygon's boundary within t, or inside its outer ring and inside no hole.  A point on
// a hole's boundary ends the search with a yes.
bool point_reaches(const _xgWKB_POINT& p, const PolySpans& polygon, double t) {
  const int32_t outer = ring_relation(p, polygon.rings[0], t);
  if (outer != 1) return outer == 2;
  for (uint32_t h = 1; h < polygon.count; ++h) {
    const int32_t r = ring_relation(p, polygon.rings[h], t);
    if (r == 2) return true;
    if (r == 1) return false;  // inside a hole: as far as the hole's ring
  }
  return true;
}

// Step 2: some part of `other` lies in (or, for points, on) a polygon of `polys`.  Each part is
// placed by one vertex (a polygon by its outer ring's first); the vertices are sorted by x so
// that each polygon looks only at those within its box.
bool part_inside(const ShapeRuns& polys, PolygonCache& cache, const ShapeRuns& other, double t) {
  const bool areas = is_polygons(other.type());
  std::vector<_xgWKB_POINT> probes;
  for (uint32_t j = 0; j < other.part_count(); ++j) {
    const ShapeRuns::Part& part = other.part(j);
    for (uint32_t r = 0; r < part.runs && (r == 0 || !areas); ++r) {
      const Span& run = other.run(part.first_run + r);
      // A vertex with a NaN coordinate lies inside nothing (and would upset the sort).
      if (run.n > 0 && !std::isnan(run.p[0].x) && !std::isnan(run.p[0].y)) probes.push_back(run.p[0]);
    }
  }
  std::sort(probes.begin(), probes.end(),
            [](const _xgWKB_POINT& l, const _xgWKB_POINT& r) { return l.x < r.x; });
  for (uint32_t i = 0; i < polys.part_count(); ++i) {
    const PolySpans raw = polys.polygon(i);
    if (raw.count == 0 || raw.rings[0].n == 0) continue;
    const _xgWKB_BOX box = raw.box();
    auto at = std::lower_bound(probes.begin(), probes.end(), box.minx - t,
                               [](const _xgWKB_POINT& p, double x) { return p.x < x; });
    for (; at != probes.end() && at->x <= box.maxx + t; ++at) {
      const _xgWKB_POINT& p = *at;
      if (outside_box(p, box, t)) continue;
      const PolySpans& polygon = cache.polygon(i);
      if (areas ? point_within_polygon(p, polygon, t) == 1 : point_reaches(p, polygon, t)) return true;
    }
  }
  return false;
}

// Step 3 on the pairs of polygons whose boxes come within 0.0001.
bool polygons_meet(const ShapeRuns& a, const ShapeRuns& b) {
  for (uint32_t i = 0; i < a.part_count(); ++i) {
    const PolySpans pa = a.polygon(i);
    if (pa.count == 0) continue;
    for (uint32_t j = 0; j < b.part_count(); ++j) {
      const PolySpans pb = b.polygon(j);
      if (pb.count == 0 || wkb_boxes_disjoint_tol(pa.box(), pb.box(), kFixedTolerance)) continue;
      if (!polygons_disjoint(pa, pb, kFixedTolerance)) return true;
    }
  }
  return false;
}

int32_t shape_distance(const byte* a, const byte* b, double t, double* distance) {
  ShapeRuns ra;
  ShapeRuns rb;
  if (!ra.load(a, false) || !rb.load(b, false)) return XGWKB_E_INVALID_ENTITY;
  const uint32_t ta = ra.type();
  const uint32_t tb = rb.type();
  const SegmentTree tree_a = segment_tree(ra);
  const SegmentTree tree_b = segment_tree(rb);
  if (tree_a.empty() || tree_b.empty()) return XGWKB_E_TOO_FEW_POINTS;
  // Intended: pairs with a point set or a multi-line or multi-polygon shape take a distance
  // below t as 0; the single line and polygon pairs report what they find.
  const bool snap = is_points(ta) || is_points(tb) || ta >= XGWKB_TYPE_MULTILINESTRING ||
                    tb >= XGWKB_TYPE_MULTILINESTRING;
  double d = nearest_distance(tree_a, tree_b, snap ? t : 0);
  if (std::isinf(d) && d > 0) d = std::numeric_limits<double>::quiet_NaN();  // only NaN pairs
  if (d != 0 && is_polygons(ta)) {
    PolygonCache cache(ra, t);
    if (part_inside(ra, cache, rb, t)) d = 0;
  }
  if (d != 0 && is_polygons(tb)) {
    PolygonCache cache(rb, t);
    if (part_inside(rb, cache, ra, t)) d = 0;
  }
  // Intended: polygons within the disjointness test's tolerance of each other count as meeting.
  const double reach = kNearPolygons + 1e-12 * std::fmax(magnitude(ra.box()), magnitude(rb.box()));
  if (d != 0 && d <= reach && is_polygons(ta) && is_polygons(tb) && polygons_meet(ra, rb)) d = 0;
  if (snap && d < t) d = 0;
  *distance = d;
  return XGWKB_OK;
}

}  // namespace

}  // namespace xg

extern "C" int32_t xgWKB_shape_calculate_distance(const unsigned char* a, const unsigned char* b,
                                                  double* distance, double t) noexcept {
  return xg::guarded([&]() -> int32_t {
    if (a == nullptr || b == nullptr || distance == nullptr) return XGWKB_E_NULL_POINTER;
    if (!xg::is_geometry_type(xg::shape_type(a)) || !xg::is_geometry_type(xg::shape_type(b))) {
      return XGWKB_E_INVALID_ENTITY;
    }
    return xg::shape_distance(a, b, t, distance);
  });
}
