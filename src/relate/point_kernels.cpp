// point_kernels.cpp - points and multipoints against every shape type.
#include "relate/point_kernels.h"

#include <optional>

#include "relate/relation_facts.h"
#include "relate/ring_index.h"
#include "relate/segment_tests.h"

namespace xg {
namespace {

_xgWKB_POINT the_point(const byte* point) { return load_point(point + kHeaderSize); }

bool line_closed(const Span& line, double t) {
  return line.n >= 2 && wkb_point_equal_tol(line.p[0], line.p[line.n - 1], t);
}

// Touching of a point and a linestring: an end of an open line.
bool at_open_end(const _xgWKB_POINT& p, const Span& line, double t) {
  if (line.n == 0 || line_closed(line, t)) return false;
  return wkb_point_equal_tol(p, line.p[0], t) || wkb_point_equal_tol(p, line.p[line.n - 1], t);
}

// Intended: the run is searched from its start, so a last vertex that also lies on an earlier
// segment is found there and counts as within an open line.
bool within_line(const _xgWKB_POINT& p, const Span& line, double t) {
  const int32_t r = locate_on_run(p, line, t);
  if (r == 0) return false;
  return line_closed(line, t) || (r != -1 && r != -static_cast<int32_t>(line.n));
}

bool touches_polygon(const _xgWKB_POINT& p, const PolySpans& polygon, double t) {
  if (polygon.count == 0 || outside_box(p, polygon.box(), t)) return false;
  for (uint32_t r = 0; r < polygon.count; ++r) {
    if (locate_on_run(p, polygon.rings[r], t) != 0) return true;
  }
  return false;
}

// Outside (point_outside_polygon), within (point_within_polygon) or neither, in one pass over
// the rings: both tests read the outer ring and then the holes in order, and stop at the first
// hole that holds the point inside (outside the polygon) or on its boundary (neither).
Loc locate_in_polygon(const _xgWKB_POINT& p, const PolySpans& polygon, double t) {
  if (polygon.count == 0 || outside_box(p, polygon.box(), t)) return kOut;
  const int32_t outer = ring_relation(p, polygon.rings[0], t);
  if (outer != 1) return outer == 0 ? kOut : kOn;
  for (uint32_t h = 1; h < polygon.count; ++h) {
    const int32_t r = ring_relation(p, polygon.rings[h], t);
    if (r != 0) return r == 1 ? kOut : kOn;
  }
  return kIn;
}

// The other shape, unpacked as stored, against which points are located.
class PointTarget {
 public:
  // Unpacks the shape; its large runs get edge indexes, built once enough points have been
  // located against them.
  bool load(const byte* shape, double t) {
    if (!runs_.load(shape, false)) return false;
    if (runs_.run_count() > 0) indexed_.emplace(PolySpans{&runs_.run(0), runs_.run_count()}, t);
    return true;
  }

  Loc locate(const _xgWKB_POINT& p, double t) const {
    switch (runs_.type()) {
      case XGWKB_TYPE_POINT:
      case XGWKB_TYPE_MULTIPOINT:
        for (uint32_t i = 0; i < runs_.run_count(); ++i) {
          if (wkb_point_equal_tol(p, run(i).p[0], t)) return kIn;
        }
        return kOut;
      case XGWKB_TYPE_LINESTRING: {
        const Span& line = run(0);
        if (locate_on_run(p, line, t) == 0) return kOut;
        return at_open_end(p, line, t) ? kOn : kIn;
      }
      case XGWKB_TYPE_MULTILINESTRING: {
        bool on = false;
        uint32_t ends = 0;
        for (uint32_t i = 0; i < runs_.run_count(); ++i) {
          const Span& line = run(i);
          on = on || locate_on_run(p, line, t) != 0;
          if (line.n > 0 && !line_closed(line, t)) {
            ends += wkb_point_equal_tol(p, line.p[0], t) + wkb_point_equal_tol(p, line.p[line.n - 1], t);
          }
        }
        if (!on) return kOut;
        return ends % 2 == 1 ? kOn : kIn;
      }
      case XGWKB_TYPE_POLYGON:
        return locate_in_polygon(p, polygon(0), t);
      default: {  // multipolygon
        Loc best = kOut;
        for (uint32_t i = 0; i < runs_.part_count(); ++i) {
          const Loc l = locate_in_polygon(p, polygon(i), t);
          if (l == kIn) return kIn;
          if (l == kOn) best = kOn;
        }
        return best;
      }
    }
  }

 private:
  // The runs with their indexes (load succeeded and run i exists).
  const Span& run(uint32_t i) const { return indexed_->spans().rings[i]; }
  // A polygon without rings (there may be no runs at all, and so no index) has no points.
  PolySpans polygon(uint32_t part) const {
    const ShapeRuns::Part& pr = runs_.part(part);
    if (pr.runs == 0) return PolySpans{nullptr, 0};
    return PolySpans{indexed_->spans().rings + pr.first_run, pr.runs};
  }

  ShapeRuns runs_;
  std::optional<IndexedPolygon> indexed_;  // all runs, as one list
};

// Which locations the points of a point or multipoint take in the other shape.  stop lists the
// locations after which the caller's answer is settled.
struct Seen {
  bool in = false, on = false, out = false, ok = false;
};

Seen locate_points(const byte* points, const byte* other, double t, bool stop_in, bool stop_out) {
  Seen seen;
  ShapeRuns pts;
  PointTarget target;
  if (!pts.load(points, false) || !target.load(other, t)) return seen;
  seen.ok = true;
  for (uint32_t i = 0; i < pts.run_count(); ++i) {
    switch (target.locate(pts.run(i).p[0], t)) {
      case kIn:
        seen.in = true;
        if (stop_in) return seen;
        break;
      case kOn:
        seen.on = true;
        break;
      case kOut:
        seen.out = true;
        if (stop_out) return seen;
        break;
    }
  }
  return seen;
}

}  // namespace

int32_t pt_pt_disjoint(const byte* a, const byte* b, double t) {
  return wkb_point_equal_tol(the_point(a), the_point(b), t) ? 0 : 1;
}

int32_t pt_ln_disjoint(const byte* point, const byte* line, double t) {
  PointBuffer buf;
  return locate_on_run(the_point(point), load_run(line + kHeaderSize, buf), t) == 0 ? 1 : 0;
}

int32_t pt_ln_within(const byte* point, const byte* line, double t) {
  PointBuffer buf;
  return within_line(the_point(point), load_run(line + kHeaderSize, buf), t) ? 1 : 0;
}

int32_t pt_ln_touching(const byte* point, const byte* line, double t) {
  PointBuffer buf;
  return at_open_end(the_point(point), load_run(line + kHeaderSize, buf), t) ? 1 : 0;
}

int32_t pt_pg_disjoint(const byte* point, const byte* polygon, double t) {
  return point_outside_polygon(the_point(point), polygon, t);
}

int32_t pt_pg_within(const byte* point, const byte* polygon, double t) {
  return point_within_polygon(the_point(point), polygon, t);
}

int32_t pt_pg_touching(const byte* point, const byte* polygon, double t) {
  ShapeRuns runs;
  if (!runs.load(polygon, false)) return 0;
  return touches_polygon(the_point(point), runs.polygon(0), t) ? 1 : 0;
}

int32_t points_disjoint(const byte* points, const byte* other, double t) {
  const Seen s = locate_points(points, other, t, true, false);
  return s.ok && !s.in && !s.on ? 1 : 0;
}

int32_t points_within(const byte* points, const byte* other, double t) {
  const Seen s = locate_points(points, other, t, false, true);
  return s.in && !s.out ? 1 : 0;
}

int32_t points_touching(const byte* points, const byte* other, double t) {
  const Seen s = locate_points(points, other, t, true, false);
  return s.on && !s.in ? 1 : 0;
}

int32_t points_crossing(const byte* points, const byte* other, double t) {
  const Seen s = locate_points(points, other, t, false, false);
  return s.in && s.out ? 1 : 0;
}

int32_t multipoints_overlapping(const byte* a, const byte* b, double t) {
  const Seen ab = locate_points(a, b, t, false, false);
  if (!ab.in || !ab.out) return 0;
  const Seen ba = locate_points(b, a, t, false, true);
  return ba.out ? 1 : 0;
}

}  // namespace xg
