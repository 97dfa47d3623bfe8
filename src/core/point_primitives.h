// point_primitives.h - the point locators behind the point primitives, for internal callers
// that hold aligned point arrays (the relation tests among them).
#ifndef XGGEO_CORE_POINT_PRIMITIVES_H
#define XGGEO_CORE_POINT_PRIMITIVES_H

#include <cmath>
#include <cstdint>

#include "core/angles.h"
#include "core/blob.h"

namespace xg {

// How far beyond the box of segment (a, b) a point may lie and still relate to the segment.
// The relation matches the ends within the fixed 0.0001 and measures in a frame whose angle
// carries single-precision constants (an error of some 2e-7 radians), so the box is grown by
// t, 0.0001 and 1e-6 of its size.  Symmetric in a and b.  The edge indexes (relate/ring_index.h)
// grow their ranges by this very expression, so that they drop only edges the test drops.
inline double touch_margin(const _xgWKB_POINT& a, const _xgWKB_POINT& b, double t) {
  const double tt = t > 0 ? t : 0;
  const double dx = b.x > a.x ? b.x - a.x : a.x - b.x;
  const double dy = b.y > a.y ? b.y - a.y : a.y - b.y;
  return 1.5 * tt + kFixedTolerance + 1e-6 * (dx + dy);
}

// Euclidean distance between a and b.
double point_distance(const _xgWKB_POINT& a, const _xgWKB_POINT& b);

// Direction angle from `from` to `to` in [0, 2pi], built on the single-precision constants of
// angles.h; equal points give pi/2.
double point_angle(const _xgWKB_POINT& from, const _xgWKB_POINT& to);

// Where p lies against segment (a, b) within t: 2 at a, 3 at b (ends matched with the fixed
// 0.0001, not t), 1 on the segment, 0 off its line, -2 before a, -1 beyond b.
int32_t point_segment_relation(const _xgWKB_POINT& p, const _xgWKB_POINT& a, const _xgWKB_POINT& b,
                               double t);

// False only when point_segment_relation(p, a, b, t) is certainly not positive, so
// the exact relation need not be computed: p lies outside the box of the segment grown by
// touch_margin.
inline bool may_touch_segment(const _xgWKB_POINT& p, const _xgWKB_POINT& a, const _xgWKB_POINT& b,
                              double t) {
  const double g = touch_margin(a, b, t);
  const double minx = a.x < b.x ? a.x : b.x;
  const double maxx = a.x < b.x ? b.x : a.x;
  const double miny = a.y < b.y ? a.y : b.y;
  const double maxy = a.y < b.y ? b.y : a.y;
  return !(p.x < minx - g || p.x > maxx + g || p.y < miny - g || p.y > maxy + g);
}

// point_segment_relation with the box test in front: 1 on the segment, 2 at a, 3 at b, 0 off
// the line, -1 / -2 beyond the ends; a point failing the box test answers 0.
inline int32_t segment_relation(const _xgWKB_POINT& p, const _xgWKB_POINT& a, const _xgWKB_POINT& b,
                                double t) {
  if (!may_touch_segment(p, a, b, t)) return 0;
  return point_segment_relation(p, a, b, t);
}

// Locates p on the run pts[0..n-1]: -(k+1) at vertex k, i inside the segment ending at vertex i
// (vertices tested before the segment that ends there), 0 off the run.
int32_t locate_on_run(const _xgWKB_POINT& p, const _xgWKB_POINT* pts, uint32_t n, double t);

// One edge (prev, cur) of the crossing-parity walk of ring_relation: true when p lies on the
// edge; otherwise *inside flips when the edge crosses the horizontal through p right of p.  An
// edge can do either only when p.y lies in its y-range grown by touch_margin.
inline bool ring_edge_step(const _xgWKB_POINT& p, const _xgWKB_POINT& prev, const _xgWKB_POINT& cur,
                           double t, int32_t* inside) {
  if (segment_relation(p, cur, prev, t) > 0) return true;  // on the edge or at its ends; cur first
  // The half-open rule on y (lower end in, upper end out) counts a vertex on the line once.
  const double lhs = (prev.x - cur.x) * (p.y - cur.y);
  const double rhs = (prev.y - cur.y) * (p.x - cur.x);
  if (cur.y <= p.y && p.y < prev.y) {
    if (lhs > rhs) *inside ^= 1;
  } else if (prev.y <= p.y && p.y < cur.y) {
    if (lhs < rhs) *inside ^= 1;
  }
  return false;
}

// Point against the ring pts[0..n-1] by crossing parity over its stored edges (no closing edge
// is added): 0 outside, 1 inside, 2 on the boundary.
int32_t ring_relation(const _xgWKB_POINT& p, const _xgWKB_POINT* pts, uint32_t n, double t);

}  // namespace xg

#endif  // XGGEO_CORE_POINT_PRIMITIVES_H
