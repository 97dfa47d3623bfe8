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

}  // namespace xg

extern "C" {

int32_t xgWKB_baseGeo_point_is_equal(const _xgWKB_POINT* a, const _xgWKB_POINT* b, double tol) {
  // Strict on purpose: with tol 0 no two points are equal, and a difference of exactly tol is
  // not equal either.
  return b->x - tol < a->x && a->x < b->x + tol && b->y - tol < a->y && a->y < b->y + tol;
}

double xgWKB_baseGeo_point_calculate_distance(const _xgWKB_POINT* a, const _xgWKB_POINT* b) {
  const double dx = a->x - b->x;
  const double dy = a->y - b->y;
  return std::sqrt(dx * dx + dy * dy);
}

void xgWKB_baseGeo_move_point(_xgWKB_POINT* p, const _xgWKB_POINT* offset) {
  // The offset is subtracted: the operation moves the origin to offset.
  p->x -= offset->x;
  p->y -= offset->y;
}

void xgWKB_baseGeo_moveEx_point(const _xgWKB_POINT* p, const _xgWKB_POINT* origin, _xgWKB_POINT* out) {
  out->x = p->x - origin->x;
  out->y = p->y - origin->y;
}

void xgWKB_baseGeo_rotate_point(_xgWKB_POINT* p, double angle) {
  // A positive angle turns clockwise.
  *p = rotate_cs(*p, std::cos(angle), std::sin(angle));
}

double xgWKB_baseGeo_point_calculate_angle(const _xgWKB_POINT* from, const _xgWKB_POINT* to) {
  return direction_angle(*from, *to);
}

int32_t xgWKB_baseGeo_point_line_relation(const _xgWKB_POINT* p, const _xgWKB_POINT* a,
                                          const _xgWKB_POINT* b, double tol) {
  // The end points are matched with the fixed tolerance, not with tol.
  if (xgWKB_baseGeo_point_is_equal(p, a, kFixedTolerance)) return 2;
  if (xgWKB_baseGeo_point_is_equal(p, b, kFixedTolerance)) return 3;
  const double len = xgWKB_baseGeo_point_calculate_distance(a, b);
  const double theta = xgWKB_baseGeo_point_calculate_angle(a, b);
  _xgWKB_POINT q;
  xgWKB_baseGeo_moveEx_point(p, a, &q);
  xgWKB_baseGeo_rotate_point(&q, theta);  // the segment now runs along +x from the origin
  if (-tol > q.y || q.y > tol) return 0;
  // Intended asymmetry: the start is tested against +tol, so a point on the segment closer than
  // tol to a (that did not match a above) counts as lying before a.
  if (q.x < tol) return -2;
  return len + tol >= q.x ? 1 : -1;
}

int32_t xgWKB_baseGeo_point_linestring_relation(const _xgWKB_POINT* p, const _xgWKB_POINT* pts,
                                                int32_t n, double tol) {
  return n > 0 ? locate_on_run(*p, pts, static_cast<uint32_t>(n), tol) : 0;
}

int32_t xgWKB_baseGeo_linestring_is_closed(const _xgWKB_POINT* pts, int32_t n, double tol) {
  if (n < 3) return 0;
  return xgWKB_baseGeo_point_is_equal(&pts[0], &pts[n - 1], tol);
}

int32_t xgWKB_baseGeo_point_simplePolygon_relation(const _xgWKB_POINT* p, const _xgWKB_POINT* pts,
                                                   int32_t n, double tol) {
  return n > 0 ? ring_relation(*p, pts, static_cast<uint32_t>(n), tol) : 0;
}

}  // extern "C"
