// polygon_tests.cpp - points, rings and polygons against a polygon with holes.
//
// The tests that ask one polygon about many points and segments attach edge indexes to its
// large rings first (ring_index.h).
#include "relate/ring_index.h"
#include "relate/segment_tests.h"

namespace xg {

namespace {

// point_within_polygon once p has been found inside the polygon's box and its relation to the
// outer ring is known.
int32_t within_given_outer(const _xgWKB_POINT& p, const PolySpans& polygon, double t, int32_t outer) {
  if (outer != 1) return 0;
  for (uint32_t h = 1; h < polygon.count; ++h) {
    if (ring_relation(p, polygon.rings[h], t) != 0) return 0;  // in a hole or on its boundary
  }
  return 1;
}

// segment_enters_polygon once the segment's box has been found to meet the outer ring's and
// the relations of its ends to the outer ring are known.
int32_t enters_given_outer(const _xgWKB_POINT& a, const _xgWKB_POINT& b, const PolySpans& polygon,
                           double t, int32_t ra, int32_t rb) {
  if (!segment_enters_located(a, b, polygon.rings[0], t, ra, rb)) return 0;
  for (uint32_t h = 1; h < polygon.count; ++h) {
    if (!segment_leaves_ring(a, b, polygon.rings[h], t)) return 0;  // stays within one hole
  }
  return 1;
}

}  // namespace

int32_t point_within_polygon(const _xgWKB_POINT& p, const PolySpans& polygon, double t) {
  if (polygon.count == 0 || outside_box(p, polygon.box(), t)) return 0;
  return within_given_outer(p, polygon, t, ring_relation(p, polygon.rings[0], t));
}

int32_t point_outside_polygon(const _xgWKB_POINT& p, const PolySpans& polygon, double t) {
  if (polygon.count == 0 || outside_box(p, polygon.box(), t)) return 1;
  const int32_t outer = ring_relation(p, polygon.rings[0], t);
  if (outer != 1) return outer == 0 ? 1 : 0;
  for (uint32_t h = 1; h < polygon.count; ++h) {
    const int32_t r = ring_relation(p, polygon.rings[h], t);
    if (r == 1) return 1;  // strictly inside a hole
    if (r == 2) return 0;  // on a hole's boundary ends the search
  }
  return 0;
}

int32_t segment_enters_polygon(const _xgWKB_POINT& a, const _xgWKB_POINT& b, const PolySpans& polygon,
                               double t) {
  if (polygon.count == 0 || !segment_enters_ring(a, b, polygon.rings[0], t)) return 0;
  for (uint32_t h = 1; h < polygon.count; ++h) {
    if (!segment_leaves_ring(a, b, polygon.rings[h], t)) return 0;  // stays within one hole
  }
  return 1;
}

int32_t ring_reaches_polygon(const Span& ring, const PolySpans& given, double t) {
  if (given.count == 0 || wkb_boxes_disjoint_tol(ring.box, given.box(), t)) return 0;
  const IndexedPolygon indexed(given, t);
  const PolySpans& polygon = indexed.spans();
  const Span& outer = polygon.rings[0];
  // The vertices' relations to the outer ring, found by the vertex pass (-1 where it had no
  // need of one) and reused by the segment pass.
  SmallVec<int8_t, 64> located;
  located.reserve(ring.n);
  if (outer.index != nullptr) {
    // Each vertex inside the polygon's box asks the outer ring once.
    uint32_t asking = 0;
    for (uint32_t i = 0; i < ring.n; ++i) asking += !outside_box(ring.p[i], polygon.box(), t);
    outer.index->expect_queries(asking);
  }
  for (uint32_t i = 0; i < ring.n; ++i) {
    const _xgWKB_POINT& p = ring.p[i];
    int32_t r = -1;
    if (!outside_box(p, polygon.box(), t)) {
      r = ring_relation(p, outer, t);
      if (within_given_outer(p, polygon, t, r)) return 1;
    }
    located.push_back(static_cast<int8_t>(r));
  }
  auto relation = [&](uint32_t i) {
    return located[i] >= 0 ? located[i] : ring_relation(ring.p[i], outer, t);
  };
  for (uint32_t i = 0; i + 1 < ring.n; ++i) {
    const _xgWKB_POINT& a = ring.p[i];
    const _xgWKB_POINT& b = ring.p[i + 1];
    if (wkb_boxes_disjoint_tol(segment_box(a, b), outer.box, t)) continue;  // enters no ring
    const int32_t ra = relation(i);
    const int32_t rb = ra == 1 ? 1 : relation(i + 1);  // rb is not looked at when ra is 1
    if (enters_given_outer(a, b, polygon, t, ra, rb)) return 1;
  }
  return 0;
}

int32_t polygons_overlap(const PolySpans& given_a, const PolySpans& given_b, double t) {
  if (given_a.count == 0 || given_b.count == 0) return 0;
  const IndexedPolygon indexed_a(given_a, t);
  const IndexedPolygon indexed_b(given_b, t);
  const PolySpans& a = indexed_a.spans();
  const PolySpans& b = indexed_b.spans();
  for (uint32_t r = 0; r < a.count; ++r) {
    if (ring_reaches_polygon(a.rings[r], b, t)) return 1;
  }
  for (uint32_t r = 0; r < b.count; ++r) {
    if (ring_reaches_polygon(b.rings[r], a, t)) return 1;
  }
  auto some_vertex_outside = [t](const PolySpans& of, const PolySpans& other) {
    for (uint32_t r = 0; r < of.count; ++r) {
      const Span& ring = of.rings[r];
      for (uint32_t i = 0; i < ring.n; ++i) {
        if (point_outside_polygon(ring.p[i], other, t)) return true;
      }
    }
    return false;
  };
  if (some_vertex_outside(a, b) || some_vertex_outside(b, a)) return 0;
  // Intended: no ring reaches the other's interior and no vertex lies outside, so every vertex
  // lies on the other's boundary; two such polygons count as overlapping.
  return 1;
}

int32_t polygons_disjoint(const PolySpans& a, const PolySpans& b, double t) {
  if (a.count == 0 || b.count == 0 || wkb_boxes_disjoint_tol(a.box(), b.box(), t)) return 1;
  if (polygons_overlap(a, b, t)) return 0;
  // The further ring-against-polygon tests that could follow here each begin by requiring the
  // ring to reach the other polygon, which the overlap test has just ruled out for every ring;
  // they can never answer, so they are not run.
  for (uint32_t i = 0; i < a.count; ++i) {
    for (uint32_t j = 0; j < b.count; ++j) {
      if (!runs_disjoint(a.rings[i], b.rings[j], t)) return 0;
    }
  }
  return 1;
}

// ---- blob forms --------------------------------------------------------------------------

namespace {

// A polygon blob unpacked as it is stored (rings not closed artificially: the point-in-ring
// relation examines the stored edges only).
struct LoadedPolygon {
  ShapeRuns runs;
  bool ok;
  explicit LoadedPolygon(const byte* polygon)
      : ok(shape_type(polygon) == XGWKB_TYPE_POLYGON && runs.load(polygon, false)) {}
  PolySpans spans() const { return ok ? runs.polygon(0) : PolySpans{nullptr, 0}; }
};

}  // namespace

int32_t ring_reaches_polygon(const byte* ring, const byte* polygon, double t) {
  PointBuffer buf;
  const LoadedPolygon poly(polygon);
  return ring_reaches_polygon(load_run(ring, buf), poly.spans(), t);
}

int32_t point_within_polygon(const _xgWKB_POINT& p, const byte* polygon, double t) {
  const LoadedPolygon poly(polygon);
  return point_within_polygon(p, poly.spans(), t);
}

int32_t point_outside_polygon(const _xgWKB_POINT& p, const byte* polygon, double t) {
  const LoadedPolygon poly(polygon);
  return point_outside_polygon(p, poly.spans(), t);
}

int32_t polygons_overlap(const byte* polygon_a, const byte* polygon_b, double t) {
  const LoadedPolygon a(polygon_a);
  const LoadedPolygon b(polygon_b);
  return polygons_overlap(a.spans(), b.spans(), t);
}

int32_t polygons_disjoint(const byte* polygon_a, const byte* polygon_b, double t) {
  const LoadedPolygon a(polygon_a);
  const LoadedPolygon b(polygon_b);
  return polygons_disjoint(a.spans(), b.spans(), t);
}

}  // namespace xg
