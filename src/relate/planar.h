// planar.h - exact-frame vector arithmetic for the relation tests.
//
// These work directly in the coordinates given (no angle round trip), so a tolerance as small
// as 1e-9 keeps its meaning on segments of any direction.
#ifndef XGGEO_RELATE_PLANAR_H
#define XGGEO_RELATE_PLANAR_H

#include <cmath>

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

// Twice the signed area of a closed run (positive counter-clockwise).
inline double twice_area(const _xgWKB_POINT* p, uint32_t n) {
  double s = 0;
  for (uint32_t i = 1; i < n; ++i) s += (p[i - 1].x - p[0].x) * (p[i].y - p[0].y) -
                                         (p[i].x - p[0].x) * (p[i - 1].y - p[0].y);
  return s;
}

}  // namespace xg

#endif  // XGGEO_RELATE_PLANAR_H
