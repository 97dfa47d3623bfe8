// centroid.cpp - the centroid of a polygon's outer ring.
#include <cmath>

#include "core/blob.h"

using namespace xg;

namespace {

// Below this magnitude of the doubled signed area the ring counts as degenerate.
constexpr double kDegenerateArea = 1e-7;

// Centroid of the area enclosed by a ring, from the triangles it spans with the origin.  The
// pair (last, first) is included, so an unclosed ring is closed implicitly; a stored closing
// point adds nothing.  A degenerate ring answers its first point.
_xgWKB_POINT ring_centroid(PointRun ring) {
  const uint32_t n = ring.size();
  double a_sum = 0;
  double cx = 0;
  double cy = 0;
  for (uint32_t i = 0; i < n; ++i) {
    const _xgWKB_POINT p = ring.point(i);
    const _xgWKB_POINT q = ring.point(i + 1 == n ? 0 : i + 1);
    const double a = p.x * q.y - q.x * p.y;
    a_sum += a;
    cx += (p.x + q.x) * a / 3;
    cy += (p.y + q.y) * a / 3;
  }
  if (std::fabs(a_sum) >= kDegenerateArea) return {cx / a_sum, cy / a_sum};
  return ring.front();
}

}  // namespace

extern "C" {

int32_t xgWKB_shape_get_centroid(const unsigned char* shape, _xgWKB_POINT* centroid) noexcept {
  if (shape == nullptr || centroid == nullptr) return XGWKB_E_NULL_POINTER;
  // Only polygons: a multipolygon is refused like any other type.
  if (shape_type(shape) != XGWKB_TYPE_POLYGON) return XGWKB_E_INVALID_SHAPE;
  // Holes are ignored: the centroid is the outer ring's.
  if (shape_count(shape) == 0) return XGWKB_E_INVALID_ENTITY;
  const PointRun outer = first_ring(shape);
  if (outer.size() == 0) return XGWKB_E_INVALID_ENTITY;
  *centroid = ring_centroid(outer);
  return XGWKB_OK;
}

}  // extern "C"
