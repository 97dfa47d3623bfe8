// construct_curves.cpp - polygons approximating circles and ellipses.
//
// Both write one ring of n counted points and then, intended, one more point repeating the first
// after the counted ring: the block is 16 bytes longer than the shape's computed size and the
// counted ring is not closed.  Callers rely on this layout, so it is kept.
#include <cmath>

#include "core/angles.h"
#include "core/boundary.h"
#include "core/construct.h"

using namespace xg;

namespace {

// Size of a one-ring polygon of n counted points plus the uncounted closing point.
std::size_t curve_block_size(int32_t n) {
  return kCountedHeaderSize + run_bytes(static_cast<std::size_t>(n) + 1);
}

byte* circle_polygon(const _xgWKB_POINT& c, double r, int32_t n) {
  byte* blob = blob_alloc(curve_block_size(n));
  if (blob == nullptr) return nullptr;
  BlobWriter w(blob);
  w.header(XGWKB_TYPE_POLYGON).u32(1).u32(static_cast<uint32_t>(n));
  const _xgWKB_POINT start{c.x + r, c.y};
  w.point(start);
  for (int32_t i = 1; i < n; ++i) {
    // Intended: the single-precision 2pi, multiplied by i before the division by n.
    const double theta = i * kTwoPiF / n;
    // (r, 0) turned counter-clockwise by theta, then moved to the centre.
    w.point({r * std::cos(theta) + c.x, r * std::sin(theta) + c.y});
  }
  w.point(start);  // intended: outside the counted ring
  return blob;
}

byte* ellipse_polygon(const _xgWKB_POINT& c, double a, double b, double start, int32_t n) {
  byte* blob = blob_alloc(curve_block_size(n));
  if (blob == nullptr) return nullptr;
  BlobWriter w(blob);
  w.header(XGWKB_TYPE_POLYGON).u32(1).u32(static_cast<uint32_t>(n));
  // Intended: the start angle is used as radians and the sweep runs from it to 2pi, not a full
  // turn; the first (and repeated last) point uses a for its y as well, so it lies on the circle
  // of radius a.  Long-standing behaviour callers rely on.
  const _xgWKB_POINT first{c.x + a * std::cos(start), c.y + a * std::sin(start)};
  const double step = (kTwoPiF - start) / n;
  w.point(first);
  double angle = start;
  for (int32_t i = 1; i < n; ++i) {
    angle += step;
    w.point({c.x + a * std::cos(angle), c.y + b * std::sin(angle)});
  }
  w.point(first);  // intended: outside the counted ring
  return blob;
}

}  // namespace

extern "C" {

int32_t xgWKB_shape_generate_polygon_from_circle(const _xgWKB_POINT* centre, double radius,
                                                 int32_t n, unsigned char** out) noexcept {
  // Written as a negation so that a NaN radius is refused too.
  if (!(radius >= 0 && n >= 4)) return XGWKB_E_INVALID_ARGUMENT;
  if (centre == nullptr || out == nullptr) return XGWKB_E_NULL_POINTER;
  return guarded([&]() -> int32_t {
    byte* blob = circle_polygon(*centre, radius, n);
    if (blob == nullptr) return kOutOfMemory;
    *out = blob;
    return XGWKB_OK;
  });
}

int32_t xgWKB_shape_generate_from_ellipse(const _xgWKB_POINT* centre, double a, double b,
                                          double start, int32_t n, unsigned char** out) noexcept {
  // Intended: the start angle is bounded by 0 and 360 although it is used as radians.
  if (!(a >= 0 && b >= 0 && a >= b && start >= 0 && start <= 360 && n >= 9)) {
    return XGWKB_E_INVALID_ARGUMENT;
  }
  if (centre == nullptr || out == nullptr) return XGWKB_E_NULL_POINTER;
  return guarded([&]() -> int32_t {
    byte* blob = ellipse_polygon(*centre, a, b, start, n);
    if (blob == nullptr) return kOutOfMemory;
    *out = blob;
    return XGWKB_OK;
  });
}

}  // extern "C"
