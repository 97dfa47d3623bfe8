// planar.h - exact-frame vector arithmetic for the relation tests.
//
// These work directly in the coordinates given (no angle round trip), so a tolerance as small
// as 1e-9 keeps its meaning on segments of any direction.
#ifndef XGGEO_RELATE_PLANAR_H
#define XGGEO_RELATE_PLANAR_H

#include <algorithm>
#include <cmath>
#include <limits>

#include "xggeokit.h"

namespace xg {

inline double cross3(const _xgWKB_POINT& o, const _xgWKB_POINT& a, const _xgWKB_POINT& b) {
  return (a.x - o.x) * (b.y - o.y) - (a.y - o.y) * (b.x - o.x);
}

inline double dot3(const _xgWKB_POINT& o, const _xgWKB_POINT& a, const _xgWKB_POINT& b) {
  return (a.x - o.x) * (b.x - o.x) + (a.y - o.y) * (b.y - o.y);
}

inline double dist2(const _xgWKB_POINT& a, const _xgWKB_POINT& b) {
  const double dx = a.x - b.x;
  const double dy = a.y - b.y;
  return dx * dx + dy * dy;
}

inline _xgWKB_POINT lerp(const _xgWKB_POINT& a, const _xgWKB_POINT& b, double u) {
  return _xgWKB_POINT{a.x + (b.x - a.x) * u, a.y + (b.y - a.y) * u};
}

// Parameter of p's projection on segment (a, b), clamped to [0, 1]; 0 for a degenerate segment.
inline double project(const _xgWKB_POINT& p, const _xgWKB_POINT& a, const _xgWKB_POINT& b) {
  const double len2 = dist2(a, b);
  if (len2 == 0) return 0;
  const double u = dot3(a, b, p) / len2;
  return u < 0 ? 0 : (u > 1 ? 1 : u);
}

// Squared distance from p to segment (a, b).
inline double segment_dist2(const _xgWKB_POINT& p, const _xgWKB_POINT& a, const _xgWKB_POINT& b) {
  return dist2(p, lerp(a, b, project(p, a, b)));
}

// p lies within t of segment (a, b) (closed segment, distance <= t).
inline bool near_segment(const _xgWKB_POINT& p, const _xgWKB_POINT& a, const _xgWKB_POINT& b,
                         double t) {
  return segment_dist2(p, a, b) <= t * t;
}

// Signed distance of p from the line through a and b (positive on the left); 0 when a == b.
inline double side_distance(const _xgWKB_POINT& p, const _xgWKB_POINT& a, const _xgWKB_POINT& b) {
  const double len = std::sqrt(dist2(a, b));
  return len == 0 ? 0 : cross3(a, b, p) / len;
}

// The parameters [*lo, *hi] (within [0, 1]) of the part of segment (p, q) that lies within t of
// segment (c, d): where p + u (q - p) enters and leaves the band of width 2t around (c, d) with
// its round ends.  The band is convex, so that part is one interval, the hull of the pieces in
// the two end discs and in the strip beside the segment.  False when the segments keep farther
// apart than t (or p equals q).
inline bool band_interval(const _xgWKB_POINT& p, const _xgWKB_POINT& q, const _xgWKB_POINT& c,
                          const _xgWKB_POINT& d, double t, double* lo, double* hi) {
  const double vx = q.x - p.x, vy = q.y - p.y;
  const double vv = vx * vx + vy * vy;
  if (!(vv > 0)) return false;
  double from = 2, to = -1;  // the hull so far (empty)
  auto take = [&](double a, double b) {
    if (a > b) return;
    from = std::min(from, a);
    to = std::max(to, b);
  };
  // The discs of radius t around c and d: |p + u v - e|^2 <= t^2.
  for (const _xgWKB_POINT* e : {&c, &d}) {
    const double wx = p.x - e->x, wy = p.y - e->y;
    const double half_b = vx * wx + vy * wy;
    // half_b^2 - vv (|w|^2 - t^2), written without the cancellation of the two large squares.
    const double side = vx * wy - vy * wx;
    const double disc = vv * t * t - side * side;
    if (disc < 0) continue;
    const double root = std::sqrt(disc);
    take((-half_b - root) / vv, (-half_b + root) / vv);
  }
  // The strip: |side distance| <= t and the projection on (c, d) between its ends.
  const double ex = d.x - c.x, ey = d.y - c.y;
  const double ee = ex * ex + ey * ey;
  if (ee > 0) {
    double a = -std::numeric_limits<double>::infinity(), b = std::numeric_limits<double>::infinity();
    // Clips [a, b] to the u where f0 + u (f1 - f0) lies in [lo_f, hi_f].
    auto clip = [&](double f0, double f1, double lo_f, double hi_f) {
      const double df = f1 - f0;
      if (df == 0) {
        if (f0 < lo_f || f0 > hi_f) b = a - 1;
        return;
      }
      double u0 = (lo_f - f0) / df, u1 = (hi_f - f0) / df;
      if (u0 > u1) std::swap(u0, u1);
      a = std::max(a, u0);
      b = std::min(b, u1);
    };
    const double len = std::sqrt(ee);
    clip(cross3(c, d, p) / len, cross3(c, d, q) / len, -t, t);
    clip(dot3(c, d, p) / ee, dot3(c, d, q) / ee, 0, 1);
    take(a, b);
  }
  *lo = std::max(from, 0.0);
  *hi = std::min(to, 1.0);
  return *lo <= *hi;
}

// Twice the signed area of a closed run (positive counter-clockwise).
inline double twice_area(const _xgWKB_POINT* p, uint32_t n) {
  double s = 0;
  for (uint32_t i = 1; i < n; ++i) s += (p[i - 1].x - p[0].x) * (p[i].y - p[0].y) -
                                         (p[i].x - p[0].x) * (p[i - 1].y - p[0].y);
  return s;
}

}  // namespace xg

#endif  // XGGEO_RELATE_PLANAR_H
