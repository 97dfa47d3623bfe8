// transforms.cpp - move, rotate, stretch and mirror every vertex of a geometry.
//
// Move, rotate and stretch rewrite the coordinates of the caller's blob in place; mirror writes a
// transformed copy.  Sizes, counts, type codes and vertex order never change, so a mirrored
// polygon keeps its vertex order and its rings reverse their orientation.
#include <cmath>

#include "core/blob.h"
#include "core/boundary.h"
#include "core/rotation.h"
#include "edit/splice.h"

using namespace xg;
using namespace xg::edit;

namespace xg {
namespace {

// Size of a point, linestring, polygon or multi-type whose members all have their proper type.
bool transformable(const byte* shape, uint32_t* size) {
  return geometry_size(shape, size) == XGWKB_OK;
}

// Replaces every vertex v of the blob by f(v).
template <class F>
void map_coords(byte* shape, F&& f) {
  for_each_coord(shape, [&f](byte* at) { store_point(at, f(load_point(at))); });
}

template <class F>
int32_t transform_in_place(byte* shape, F&& f) {
  uint32_t size = 0;
  if (!transformable(shape, &size)) return XGWKB_E_INVALID_ENTITY;
  map_coords(shape, f);
  return XGWKB_OK;
}

// Reflection about the line through p1 and p2.
class MirrorLine {
 public:
  MirrorLine(const _xgWKB_POINT& p1, const _xgWKB_POINT& p2, double tol) : p1_(p1) {
    // Intended: the line counts as horizontal when the y difference, truncated toward zero to an
    // integer, is below tol in magnitude - and a horizontal line reflects about the vertical
    // through p1.  trunc() gives the integer a 32-bit conversion would for every difference that
    // fits one; larger differences keep their size instead of overflowing.
    horizontal_ = std::fabs(std::trunc(p1.y - p2.y)) < tol;
    k_ = (p1.x - p2.x) / (p1.y - p2.y);
    k2_ = k_ * k_;
    d_ = k2_ + 1;
  }

  _xgWKB_POINT operator()(const _xgWKB_POINT& p) const {
    if (horizontal_) return _xgWKB_POINT{2 * p1_.x - p.x, p.y};
    // Foot of the perpendicular from p, evaluated term by term in this order.
    const double fx = (k_ * p.y + k2_ * p.x + p1_.x - k_ * p1_.y) / d_;
    const double fy = (k_ * p.x - k_ * p1_.x + k2_ * p1_.y + p.y) / d_;
    return _xgWKB_POINT{2 * fx - p.x, 2 * fy - p.y};
  }

 private:
  _xgWKB_POINT p1_;
  bool horizontal_;
  double k_, k2_, d_;
};

// The byte-order byte of a point result and of every member of a multi-type is written as 0;
// the outer header of the other types is kept as copied.
void renew_part_headers(byte* shape) {
  const uint32_t type = shape_type(shape);
  if (type == XGWKB_TYPE_POINT) write_header(shape, type);
  if (!is_multi_type(type)) return;
  for_each_member(shape, [shape](const byte* member, uint32_t) {
    write_header(writable(shape, member), shape_type(member));
  });
}

int32_t mirror(const byte* shape, const _xgWKB_POINT& p1, const _xgWKB_POINT& p2, double tol,
               byte** out) {
  uint32_t size = 0;
  if (!transformable(shape, &size)) return XGWKB_E_INVALID_ENTITY;
  byte* copy = blob_alloc(size);
  if (copy == nullptr) return XGWKB_E_FAILED;
  BlobWriter(copy).bytes(shape, size);
  map_coords(copy, MirrorLine(p1, p2, tol));
  renew_part_headers(copy);
  *out = copy;
  return XGWKB_OK;
}

}  // namespace
}  // namespace xg

extern "C" {

int32_t xgWKB_shape_move(unsigned char* shape, double dx, double dy) noexcept {
  if (shape == nullptr) return XGWKB_E_NULL_POINTER;
  return transform_in_place(shape, [dx, dy](const _xgWKB_POINT& p) {
    return _xgWKB_POINT{p.x + dx, p.y + dy};
  });
}

int32_t xgWKB_shape_rotate(unsigned char* shape, double angle, double cx, double cy) noexcept {
  if (shape == nullptr) return XGWKB_E_NULL_POINTER;
  const double c = std::cos(angle);
  const double s = std::sin(angle);
  return transform_in_place(shape, [=](const _xgWKB_POINT& p) {
    const _xgWKB_POINT r = rotate_cs(_xgWKB_POINT{p.x - cx, p.y - cy}, c, s);
    return _xgWKB_POINT{cx + r.x, cy + r.y};
  });
}

int32_t xgWKB_shape_stretch(unsigned char* shape, const _xgWKB_POINT* base, double fx,
                            double fy) noexcept {
  if (shape == nullptr || base == nullptr) return XGWKB_E_NULL_POINTER;
  const _xgWKB_POINT b = *base;
  return transform_in_place(shape, [b, fx, fy](const _xgWKB_POINT& p) {
    return _xgWKB_POINT{(p.x - b.x) * fx + b.x, (p.y - b.y) * fy + b.y};
  });
}

int32_t xgWKB_shape_mirror(const unsigned char* shape, const _xgWKB_POINT* p1,
                           const _xgWKB_POINT* p2, unsigned char** out, double tol) noexcept {
  if (shape == nullptr || p1 == nullptr || p2 == nullptr || out == nullptr) {
    return XGWKB_E_NULL_POINTER;
  }
  return guarded([&] { return mirror(shape, *p1, *p2, tol, out); });
}

}  // extern "C"
