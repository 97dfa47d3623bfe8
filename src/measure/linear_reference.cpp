// linear_reference.cpp - the point at a fraction of a line's length, and snapping a point onto
// a shape's end points, vertices or edges.
//
// Both write a caller's point and allocate nothing but scratch space for aligned coordinates.
#include <cmath>
#include <cstdint>

#include "core/blob.h"
#include "core/boundary.h"
#include "core/point_primitives.h"
#include "measure/length.h"
#include "relate/planar.h"
#include "relate/point_runs.h"

using namespace xg;

namespace {

// ---- find along ------------------------------------------------------------------------------

// The number of points the walk may read.  The walk reads any shape as a linestring (intended:
// the type is not tested); for a shape of another type it reads no further than the shape's own
// bytes reach, and a blob of no geometry type gives no points at all.
uint32_t walkable_points(const byte* shape) {
  if (shape_type(shape) == XGWKB_TYPE_LINESTRING) return shape_count(shape);
  uint32_t size = 0;
  if (geometry_size(shape, &size) != XGWKB_OK || size < kCountedHeaderSize) return 0;
  const uint32_t room = (size - static_cast<uint32_t>(kCountedHeaderSize)) / kCoordSize;
  const uint32_t n = shape_count(shape);
  return n < room ? n : room;
}

double distance(const _xgWKB_POINT& a, const _xgWKB_POINT& b) { return std::sqrt(dist2(a, b)); }

// The target lies strictly inside a segment: the two tests are strict, so a target exactly on
// a vertex matches neither neighbouring segment (intended: the walk then fails).
bool holds_target(double before, double length, double target) {
  return before < target && target < before + length;
}

int32_t find_along(const byte* line, double fraction, _xgWKB_POINT* out) {
  double length = 0;
  shape_length(line, 0, &length);  // a failure leaves 0: a point type then finds nothing
  if (fraction > 1) return XGWKB_E_INVALID_ARGUMENT;
  const uint32_t n = walkable_points(line);
  if (n == 0) return XGWKB_E_FAILED;
  const PointRun run = line_run(line);
  if (fraction == 0) {
    *out = run.point(0);
    return XGWKB_OK;
  }
  if (fraction == 1) {
    *out = run.point(n - 1);
    return XGWKB_OK;
  }
  const double target = length * fraction;
  double before = 0;
  if (fraction <= 0.5) {
    // Forward over segments (i - 1, i).
    _xgWKB_POINT prev = run.point(0);
    for (uint32_t i = 1; i < n; ++i) {
      const _xgWKB_POINT cur = run.point(i);
      const double s = distance(prev, cur);
      if (holds_target(before, s, target)) {
        *out = lerp(prev, cur, (target - before) / s);
        return XGWKB_OK;
      }
      before += s;
      prev = cur;
    }
    return XGWKB_E_FAILED;
  }
  // Backward from the end, the target measured from the last point.  Intended: segment (k-1, k)
  // is measured for k = n-2 down to 1, so the line's last segment is never visited, and the
  // point is placed on segment (k, k+1), one segment nearer the end than the one measured.
  // Reaching k = 0 (whose segment would start before the first point) fails.
  const double back_target = length - target;
  for (uint32_t k = n >= 2 ? n - 2 : 0; k >= 1; --k) {
    const _xgWKB_POINT pk = run.point(k);
    const double s = distance(run.point(k - 1), pk);
    if (holds_target(before, s, back_target)) {
      *out = lerp(run.point(k + 1), pk, (back_target - before) / s);
      return XGWKB_OK;
    }
    before += s;
  }
  return XGWKB_E_FAILED;
}

// ---- snapping ----------------------------------------------------------------------------

// Calls f(PointRun) for every counted point run of a line or polygon type, in storage order
// (members one after another, each polygon's rings in order), until f returns true.  Returns
// whether f did.  Members of a foreign type end the walk.
template <class F>
bool any_run(const byte* shape, F&& f) {
  auto in_polygon = [&f](const byte* polygon) {
    const uint32_t rings = shape_count(polygon);
    const byte* at = polygon + kCountedHeaderSize;
    for (uint32_t i = 0; i < rings; ++i) {
      const PointRun ring{at};
      if (f(ring)) return true;
      at = ring.end();
    }
    return false;
  };
  auto in_simple = [&](const byte* s, uint32_t type) {
    if (type == XGWKB_TYPE_LINESTRING) return f(line_run(s));
    if (type == XGWKB_TYPE_POLYGON) return in_polygon(s);
    return false;
  };
  const uint32_t type = shape_type(shape);
  if (type != XGWKB_TYPE_MULTILINESTRING && type != XGWKB_TYPE_MULTIPOLYGON) return in_simple(shape, type);
  const uint32_t want = type == XGWKB_TYPE_MULTILINESTRING ? XGWKB_TYPE_LINESTRING : XGWKB_TYPE_POLYGON;
  const uint32_t members = shape_count(shape);
  const byte* at = shape + kCountedHeaderSize;
  for (uint32_t i = 0; i < members; ++i) {
    if (shape_type(at) != want) return false;
    if (in_simple(at, want)) return true;
    at += member_size(at);
  }
  return false;
}

bool is_line_type(uint32_t type) {
  return type == XGWKB_TYPE_LINESTRING || type == XGWKB_TYPE_MULTILINESTRING;
}

// The first or last point of an open line within distance t (strictly) of p, line by line.  A
// line whose ends are equal within the fixed tolerance is closed and never snaps to its ends.
bool snap_to_ends(const byte* shape, const _xgWKB_POINT& p, double t, _xgWKB_POINT* out) {
  if (!is_line_type(shape_type(shape))) return false;
  return any_run(shape, [&](const PointRun& line) {
    const uint32_t n = line.size();
    if (n == 0) return false;
    const _xgWKB_POINT first = line.point(0);
    const _xgWKB_POINT last = line.point(n - 1);
    if (wkb_point_equal_tol(first, last, kFixedTolerance)) return false;  // fixed, not t: intended
    if (distance(p, first) < t) {
      *out = first;
      return true;
    }
    if (distance(p, last) < t) {
      *out = last;
      return true;
    }
    return false;
  });
}

// A vertex equal to p within t.  Each run is located as a whole: a run where p first meets a
// segment answers no vertex even if a later vertex would match.
bool snap_to_vertices(const byte* shape, const _xgWKB_POINT& p, double t, _xgWKB_POINT* out) {
  const uint32_t type = shape_type(shape);
  if (type == XGWKB_TYPE_POINT || type == XGWKB_TYPE_MULTIPOINT) {
    const uint32_t members = type == XGWKB_TYPE_POINT ? 1 : shape_count(shape);
    const byte* at = type == XGWKB_TYPE_POINT ? shape : shape + kCountedHeaderSize;
    for (uint32_t i = 0; i < members; ++i, at += kPointBlobSize) {
      const _xgWKB_POINT q = load_point(at + kHeaderSize);
      if (wkb_point_equal_tol(p, q, t)) {
        *out = q;
        return true;
      }
    }
    return false;
  }
  PointBuffer buf;
  return any_run(shape, [&](const PointRun& run) {
    const Span span = load_run(run.at, buf);
    const int32_t r = locate_on_run(p, span.p, span.n, t);
    if (r >= 0) return false;
    *out = span.p[-r - 1];
    return true;
  });
}

// The foot of the perpendicular from p onto the line through a and b (a itself when they
// coincide).
_xgWKB_POINT foot_on_line(const _xgWKB_POINT& p, const _xgWKB_POINT& a, const _xgWKB_POINT& b) {
  const double len2 = dist2(a, b);
  return len2 > 0 ? lerp(a, b, dot3(a, b, p) / len2) : a;
}

// p within t of a vertex or segment: the foot on the line of segment (k, k+1), k being the
// vertex found or the start of the segment found.  The last vertex has no segment after it: it
// uses the last segment; a one-point run gives its point.
bool snap_to_edges(const byte* shape, const _xgWKB_POINT& p, double t, _xgWKB_POINT* out) {
  PointBuffer buf;
  return any_run(shape, [&](const PointRun& run) {
    const Span span = load_run(run.at, buf);
    const int32_t r = locate_on_run(p, span.p, span.n, t);
    if (r == 0) return false;
    uint32_t k = static_cast<uint32_t>(r < 0 ? -r - 1 : r - 1);
    if (span.n == 1) {
      *out = span.p[0];
      return true;
    }
    if (k + 1 >= span.n) k = span.n - 2;
    *out = foot_on_line(p, span.p[k], span.p[k + 1]);
    return true;
  });
}

int32_t snap_point(const byte* shape, const _xgWKB_POINT& p, double t, int32_t modes, _xgWKB_POINT* out) {
  // End points first, then vertices, then edges: the first mode that snaps answers.
  if ((modes & XGWKB_SNAP_END) && snap_to_ends(shape, p, t, out)) return XGWKB_OK;
  if ((modes & XGWKB_SNAP_VERTEX) && snap_to_vertices(shape, p, t, out)) return XGWKB_OK;
  if ((modes & XGWKB_SNAP_EDGE) && snap_to_edges(shape, p, t, out)) return XGWKB_OK;
  return XGWKB_E_FAILED;
}

}  // namespace

extern "C" {

int32_t xgWKB_shape_find_along(const unsigned char* line, double fraction, _xgWKB_POINT* out) noexcept {
  if (line == nullptr || out == nullptr) return XGWKB_E_NULL_POINTER;
  return guarded([&] { return find_along(line, fraction, out); });
}

int32_t xgWKB_shape_snap_point(const unsigned char* shape, const _xgWKB_POINT* p, double t, int32_t modes,
                               _xgWKB_POINT* out) noexcept {
  if (shape == nullptr || p == nullptr || out == nullptr) return XGWKB_E_NULL_POINTER;
  return guarded([&] { return snap_point(shape, *p, t, modes, out); });
}

}  // extern "C"
