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
#include "edit/transforms.h"

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

}  // namespace

int32_t edit::shape_move(byte* shape, double dx, double dy) {
  return transform_in_place(shape, MoveBy{dx, dy});
}

int32_t edit::shape_rotate(byte* shape, double angle, double cx, double cy) {
  return transform_in_place(shape, RotateAbout(angle, cx, cy));
}

int32_t edit::shape_stretch(byte* shape, const _xgWKB_POINT& base, double fx, double fy) {
  return transform_in_place(shape, StretchAbout{base, fx, fy});
}

int32_t edit::shape_mirror(const byte* shape, const _xgWKB_POINT& p1, const _xgWKB_POINT& p2,
                           double tol, byte** out) {
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

}  // namespace xg

extern "C" {

int32_t xgWKB_shape_move(unsigned char* shape, double dx, double dy) noexcept {
  if (shape == nullptr) return XGWKB_E_NULL_POINTER;
  return edit::shape_move(shape, dx, dy);
}

int32_t xgWKB_shape_rotate(unsigned char* shape, double angle, double cx, double cy) noexcept {
  if (shape == nullptr) return XGWKB_E_NULL_POINTER;
  return edit::shape_rotate(shape, angle, cx, cy);
}

int32_t xgWKB_shape_stretch(unsigned char* shape, const _xgWKB_POINT* base, double fx,
                            double fy) noexcept {
  if (shape == nullptr || base == nullptr) return XGWKB_E_NULL_POINTER;
  return edit::shape_stretch(shape, *base, fx, fy);
}

int32_t xgWKB_shape_mirror(const unsigned char* shape, const _xgWKB_POINT* p1,
                           const _xgWKB_POINT* p2, unsigned char** out, double tol) noexcept {
  if (shape == nullptr || p1 == nullptr || p2 == nullptr || out == nullptr) {
    return XGWKB_E_NULL_POINTER;
  }
  return guarded([&] { return edit::shape_mirror(shape, *p1, *p2, tol, out); });
}

}  // extern "C"
