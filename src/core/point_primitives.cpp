// point_primitives.cpp - the bottom layer: bare points and point arrays.
//
// Nothing here allocates, reports an error or checks a pointer.
#include <cmath>

#include "core/angles.h"
#include "core/blob.h"
#include "core/point_primitives.h"
#include "core/rotation.h"

using namespace xg;

namespace xg {

int32_t locate_on_run(const _xgWKB_POINT& p, const _xgWKB_POINT* pts, uint32_t n, double t) {
  if (n == 0) return 0;
  if (wkb_point_equal_tol(p, pts[0], t)) return -1;
  for (uint32_t i = 1; i < n; ++i) {
    // A vertex is tested before the segment that ends at it.
    if (wkb_point_equal_tol(p, pts[i], t)) return -static_cast<int32_t>(i + 1);
    if (segment_relation(p, pts[i - 1], pts[i], t) == 1) return static_cast<int32_t>(i);
  }
  return 0;
}

int32_t ring_relation(const _xgWKB_POINT& p, const _xgWKB_POINT* pts, uint32_t n, double t) {
  // Crossing parity over the n-1 stored edges; the ring is expected closed, no closing edge is
  // added.
  int32_t inside = 0;
  for (uint32_t i = 1; i < n; ++i) {
    if (ring_edge_step(p, pts[i - 1], pts[i], t, &inside)) return 2;
  }
  return inside;
}

double point_distance(const _xgWKB_POINT& a, const _xgWKB_POINT& b) {
  const double dx = a.x - b.x;
  const double dy = a.y - b.y;
  return std::sqrt(dx * dx + dy * dy);
}

double point_angle(const _xgWKB_POINT& from, const _xgWKB_POINT& to) {
  const double dx = to.x - from.x;
  const double dy = to.y - from.y;
  // Equal points give pi/2.  The constants are the single-precision ones, so results close to
  // 2pi may exceed the double value of 2pi slightly.
  if (dx == 0) return dy < 0 ? kThreeHalfPiF : kHalfPiF;
  const double a = std::atan(dy / dx);
  if (dy >= 0) return dx > 0 ? a : a + kPiF;
  return dx > 0 ? a + kTwoPiF : a + kPiF;
}

int32_t point_segment_relation(const _xgWKB_POINT& p, const _xgWKB_POINT& a, const _xgWKB_POINT& b,
                               double t) {
  // The end points are matched with the fixed tolerance, not with t.
  if (wkb_point_equal_tol(p, a, kFixedTolerance)) return 2;
  if (wkb_point_equal_tol(p, b, kFixedTolerance)) return 3;
  const double len = point_distance(a, b);
  const double theta = point_angle(a, b);
  // p moved so that a is the origin, then turned so that the segment runs along +x.
  const _xgWKB_POINT q = rotate_cs(_xgWKB_POINT{p.x - a.x, p.y - a.y}, std::cos(theta), std::sin(theta));
  if (-t > q.y || q.y > t) return 0;
  // Intended asymmetry: the start is tested against +t, so a point on the segment closer than
  // t to a (that did not match a above) counts as lying before a.
  if (q.x < t) return -2;
  return len + t >= q.x ? 1 : -1;
}

}  // namespace xg

extern "C" {

int32_t xgWKB_baseGeo_point_is_equal(const _xgWKB_POINT* a, const _xgWKB_POINT* b, double tol) noexcept {
  return wkb_point_equal_tol(*a, *b, tol);
}

double xgWKB_baseGeo_point_calculate_distance(const _xgWKB_POINT* a, const _xgWKB_POINT* b) noexcept {
  return point_distance(*a, *b);
}

void xgWKB_baseGeo_move_point(_xgWKB_POINT* p, const _xgWKB_POINT* offset) noexcept {
  // The offset is subtracted: the operation moves the origin to offset.
  p->x -= offset->x;
  p->y -= offset->y;
}

void xgWKB_baseGeo_moveEx_point(const _xgWKB_POINT* p, const _xgWKB_POINT* origin,
                                _xgWKB_POINT* out) noexcept {
  out->x = p->x - origin->x;
  out->y = p->y - origin->y;
}

void xgWKB_baseGeo_rotate_point(_xgWKB_POINT* p, double angle) noexcept {
  // A positive angle turns clockwise.
  *p = rotate_cs(*p, std::cos(angle), std::sin(angle));
}

double xgWKB_baseGeo_point_calculate_angle(const _xgWKB_POINT* from, const _xgWKB_POINT* to) noexcept {
  return point_angle(*from, *to);
}

int32_t xgWKB_baseGeo_point_line_relation(const _xgWKB_POINT* p, const _xgWKB_POINT* a,
                                          const _xgWKB_POINT* b, double tol) noexcept {
  return point_segment_relation(*p, *a, *b, tol);
}

int32_t xgWKB_baseGeo_point_linestring_relation(const _xgWKB_POINT* p, const _xgWKB_POINT* pts,
                                                int32_t n, double tol) noexcept {
  return n > 0 ? locate_on_run(*p, pts, static_cast<uint32_t>(n), tol) : 0;
}

int32_t xgWKB_baseGeo_linestring_is_closed(const _xgWKB_POINT* pts, int32_t n,
                                           double tol) noexcept {
  if (n < 3) return 0;
  return wkb_point_equal_tol(pts[0], pts[n - 1], tol);
}

int32_t xgWKB_baseGeo_point_simplePolygon_relation(const _xgWKB_POINT* p, const _xgWKB_POINT* pts,
                                                   int32_t n, double tol) noexcept {
  return n > 0 ? ring_relation(*p, pts, static_cast<uint32_t>(n), tol) : 0;
}

}  // extern "C"
