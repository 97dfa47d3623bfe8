// hull_walk.h - the rules of the gift-wrapping walk, shared by its plain and indexed steps.
#ifndef XGGEO_CONSTRUCT_HULL_WALK_H
#define XGGEO_CONSTRUCT_HULL_WALK_H

#include <cstddef>
#include <vector>

#include "core/blob.h"

namespace xg {

// Coincidence of the walk: both coordinate differences strictly below 0.0001 (the same test as
// wkb_point_equal_tol with the fixed tolerance, inline because the walk makes it in its inner
// loops).
inline bool hull_coincide(const _xgWKB_POINT& a, const _xgWKB_POINT& b) {
  const double dx = a.x - b.x;
  const double dy = a.y - b.y;
  return -kFixedTolerance < dx && dx < kFixedTolerance && -kFixedTolerance < dy && dy < kFixedTolerance;
}

// cross(o, d, p) as the walk computes it: (d - o) x (p - o).
inline double hull_cross(const _xgWKB_POINT& o, const _xgWKB_POINT& d, const _xgWKB_POINT& p) {
  return (d.x - o.x) * (p.y - o.y) - (d.y - o.y) * (p.x - o.x);
}

// Whether point p rejects candidate c from the current point h (indices into pts): p lies right
// of h -> c (cross below -t2), or collinear within the tolerance (|cross| < t2) and beyond c
// (dot below t2); p is not consulted when it is h or c or coincides with either.
inline bool hull_rejects(const _xgWKB_POINT* pts, std::size_t h, std::size_t c, std::size_t p, double t2) {
  const _xgWKB_POINT& hp = pts[h];
  const _xgWKB_POINT& cp = pts[c];
  const _xgWKB_POINT& pp = pts[p];
  const double cross = hull_cross(hp, cp, pp);
  bool r = cross < -t2;
  if (!r && cross < t2) {
    const double dot = (hp.x - cp.x) * (pp.x - cp.x) + (hp.y - cp.y) * (pp.y - cp.y);
    r = dot < t2;
  }
  // The skipped points are tested only once p would reject: the same answer, sooner.
  return r && p != h && p != c && !hull_coincide(pp, hp) && !hull_coincide(pp, cp);
}

// The walk around a step: starts at the first point of smallest x, calls step(h) for the index
// of the candidate accepted from h (n for none) and stops when none is accepted, when the point
// taken coincides with the start, or when a point is taken a second time (the walk would go
// round for ever).  Returns the list of points taken, the start first.
template <class Step>
std::vector<_xgWKB_POINT> hull_walk(const _xgWKB_POINT* pts, std::size_t n, Step&& step) {
  std::vector<_xgWKB_POINT> list;
  if (n == 0) return list;
  std::size_t h = 0;
  for (std::size_t i = 1; i < n; ++i) {
    if (pts[i].x < pts[h].x) h = i;  // only a strictly smaller x replaces the first found
  }
  const _xgWKB_POINT start = pts[h];
  list.push_back(start);
  std::vector<char> taken_before(n, 0);
  taken_before[h] = 1;
  for (;;) {
    const std::size_t taken = step(h);
    if (taken >= n) break;  // nothing accepted: repeating the step would change nothing
    list.push_back(pts[taken]);
    h = taken;
    if (hull_coincide(pts[h], start)) break;
    // A point taken again without coinciding with the start: from here the walk would repeat
    // itself for ever (a start in the middle of a straight run of the hull can do that).
    if (taken_before[h]) break;
    taken_before[h] = 1;
  }
  return list;
}

}  // namespace xg

#endif  // XGGEO_CONSTRUCT_HULL_WALK_H
