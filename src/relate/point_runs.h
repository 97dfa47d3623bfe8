// point_runs.h - aligned views of the point runs of a shape, for the relation tests.
//
// Blob coordinates sit at odd offsets, so the relation code copies a shape's runs once into an
// aligned buffer (ShapeRuns) and then works on Spans: a pointer, a count and the run's box.
// The point locators of the point primitives (locate_on_run, ring_relation) take spans here.
#ifndef XGGEO_RELATE_POINT_RUNS_H
#define XGGEO_RELATE_POINT_RUNS_H

#include <cstdint>
#include <limits>

#include "core/blob.h"
#include "core/point_primitives.h"
#include "relate/small_vec.h"

namespace xg {

// ---- boxes -------------------------------------------------------------------------------

// The box of nothing: disjoint from every box under wkb_boxes_disjoint_tol.
inline _xgWKB_BOX empty_box() {
  const double inf = std::numeric_limits<double>::infinity();
  return _xgWKB_BOX{inf, inf, -inf, -inf};
}

inline void box_add(_xgWKB_BOX* box, const _xgWKB_POINT& p) {
  if (p.x < box->minx) box->minx = p.x;
  if (p.y < box->miny) box->miny = p.y;
  if (p.x > box->maxx) box->maxx = p.x;
  if (p.y > box->maxy) box->maxy = p.y;
}

inline bool boxes_meet(const _xgWKB_BOX& a, const _xgWKB_BOX& b, double t) {
  return wkb_boxes_disjoint_tol(a, b, t) == 0;
}

// p lies outside the box grown by t on some side (strict comparisons).
inline bool outside_box(const _xgWKB_POINT& p, const _xgWKB_BOX& box, double t) {
  return p.x < box.minx - t || p.x > box.maxx + t || p.y < box.miny - t || p.y > box.maxy + t;
}

inline _xgWKB_BOX segment_box(const _xgWKB_POINT& a, const _xgWKB_POINT& b) {
  _xgWKB_BOX box;
  wkb_box_of_two_points(a, b, &box);
  return box;
}

// ---- runs --------------------------------------------------------------------------------

class RingIndex;

// n aligned points; segments are (p[i], p[i+1]).  box covers the points (empty_box() for n 0).
// index, when set, is an edge index over these very points (relate/ring_index.h) that the point
// locators and the segment tests use in place of their plain loops.
struct Span {
  const _xgWKB_POINT* p;
  uint32_t n;
  _xgWKB_BOX box;
  const RingIndex* index = nullptr;

  uint32_t segments() const { return n > 1 ? n - 1 : 0; }
};

Span make_span(const _xgWKB_POINT* p, uint32_t n);

// The rings of one polygon: rings[0] is the outer ring, the rest are holes.
struct PolySpans {
  const Span* rings;
  uint32_t count;

  // The polygon's extent is its outer ring's box (empty for a polygon without rings).
  _xgWKB_BOX box() const { return count > 0 ? rings[0].box : empty_box(); }
};

using PointBuffer = SmallVec<_xgWKB_POINT, 64>;

// The runs of a shape unpacked into aligned points.  Parts are the members of a multi-type (a
// single shape is one part); a linestring part has one run, a polygon part one run per ring, a
// point part one run of one point.
class ShapeRuns {
 public:
  struct Part {
    uint32_t first_run;
    uint32_t runs;
  };

  // Unpacks a shape of type 1-6.  With close_rings, a ring whose last point differs from its
  // first gets the first point appended, so that its edges enclose it.  Returns false for any
  // other type or a multi-type member of a foreign type.
  //
  // With collapse, every stretch of three or more bit-identical consecutive points of a run is
  // stored as two.  The run keeps the same distinct segments (one zero-length segment stands for
  // the many), so the tests that look at segments one by one answer the same, while a run of n
  // copies of one point neither offers n squared pairs of segments nor is copied n times.  Boxes
  // cover the points as stored and dropped alike (they are the same points).
  bool load(const byte* shape, bool close_rings, bool collapse = false);

  uint32_t type() const { return type_; }
  uint32_t part_count() const { return static_cast<uint32_t>(parts_.size()); }
  uint32_t run_count() const { return static_cast<uint32_t>(spans_.size()); }
  const Span& run(uint32_t i) const { return spans_[i]; }
  const Part& part(uint32_t i) const { return parts_[i]; }
  PolySpans polygon(uint32_t part) const {
    return PolySpans{spans_.data() + parts_[part].first_run, parts_[part].runs};
  }
  // The index of run i's first point in the shared buffer (segment keys of the relation engine).
  uint32_t run_offset(uint32_t i) const { return offsets_[i]; }
  const _xgWKB_POINT* points() const { return pts_.data(); }
  _xgWKB_BOX box() const { return box_; }

 private:
  uint32_t type_ = 0;
  PointBuffer pts_;
  SmallVec<Span, 8> spans_;
  SmallVec<uint32_t, 8> offsets_;
  SmallVec<Part, 4> parts_;
  _xgWKB_BOX box_ = empty_box();
};

// A counted run of a blob copied into buf; the span points into buf.
Span load_run(const byte* run, PointBuffer& buf);

// ---- point locators ----------------------------------------------------------------------

// The point locators of the point primitives on a span (see core/point_primitives.h), through
// the span's index when it has one (same answers; defined in ring_index.cpp).
int32_t indexed_locate_on_run(const _xgWKB_POINT& p, const Span& run, double t);
int32_t indexed_ring_relation(const _xgWKB_POINT& p, const Span& ring, double t);

inline int32_t locate_on_run(const _xgWKB_POINT& p, const Span& run, double t) {
  return run.index ? indexed_locate_on_run(p, run, t) : locate_on_run(p, run.p, run.n, t);
}

inline int32_t ring_relation(const _xgWKB_POINT& p, const Span& ring, double t) {
  return ring.index ? indexed_ring_relation(p, ring, t) : ring_relation(p, ring.p, ring.n, t);
}

}  // namespace xg

#endif  // XGGEO_RELATE_POINT_RUNS_H
