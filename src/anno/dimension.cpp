// dimension.cpp - move, rotate, mirror and stretch dimension shapes as a whole: the shape
// transforms on the five member geometries and the further geometry, the annotation transforms
// on the label, and the rules for the two whole-degree angles.
#include <cmath>
#include <cstdint>

#include "anno/anno_layout.h"
#include "anno/anno_transforms.h"
#include "core/angles.h"
#include "core/boundary.h"
#include "core/point_primitives.h"
#include "edit/transforms.h"

using namespace xg;
using namespace xg::anno;

namespace {

// Refuses a shape that is not a dimension (-134) or whose parts cannot be walked (-27) before
// anything is changed: the walk steps over the members by their sizes, so every one must be a
// geometry.
int32_t walk(const byte* s, DimLayout* l) {
  if (!is_dim_type(shape_type(s))) return XGWKB_E_INVALID_SHAPE;
  if (!dim_layout(s, l)) return XGWKB_E_INVALID_ENTITY;
  return XGWKB_OK;
}

// v truncated toward zero, held to the i32 range.
int32_t trunc_i32(double v) {
  const double t = std::trunc(v);
  if (!(t > INT32_MIN)) return t == t ? INT32_MIN : 0;
  if (t > INT32_MAX) return INT32_MAX;
  return static_cast<int32_t>(t);
}

int32_t saturate(int64_t v) {
  if (v < INT32_MIN) return INT32_MIN;
  if (v > INT32_MAX) return INT32_MAX;
  return static_cast<int32_t>(v);
}

double degrees(double radians) { return radians * 180 / kPiF; }

// Applies an in-place shape transform to the five members and the further geometry.
template <class F>
void each_geometry(byte* s, const DimLayout& l, F&& f) {
  for (int i = 0; i < kDimMembers; ++i) f(s + l.member[i]);
  if (dim_has_further(s, l)) f(s + l.further);
}

// Mirrors the geometry at `at` of the source into the same place of the copy.
int32_t mirror_into(const byte* at, byte* to, const _xgWKB_POINT& a, const _xgWKB_POINT& b, double tol,
                    uint32_t size) {
  byte* temp = nullptr;
  const int32_t status = edit::shape_mirror(at, a, b, tol, &temp);
  if (status != XGWKB_OK) return status;
  const OwnedBlob owned(temp);
  std::memcpy(to, temp, size);
  return XGWKB_OK;
}

int32_t mirror_dim(const byte* s, const DimLayout& l, const _xgWKB_POINT& a, const _xgWKB_POINT& b,
                   double tol, byte** out) {
  // Sized by the total-size field, or by the parts when they need more; only the walked parts
  // are read from the source.
  const std::size_t total = anno_total(s);
  const std::size_t size = total > l.end ? total : l.end;
  OwnedBlob copy(blob_alloc(size));
  if (copy == nullptr) return XGWKB_E_FAILED;
  byte* c = copy.get();
  std::memset(c + l.end, 0, size - l.end);
  std::memcpy(c, s, l.end);  // head, carried field, flag; the rest is overwritten below
  for (int i = 0; i < kDimMembers; ++i) {
    const int32_t status = mirror_into(s + l.member[i], c + l.member[i], a, b, tol, l.member_size[i]);
    if (status != XGWKB_OK) return status;
  }
  byte* label = nullptr;
  const int32_t status = single_mirror(s + l.label, a, b, tol, &label);
  if (status != XGWKB_OK) return status;
  const OwnedBlob owned_label(label);
  std::memcpy(c + l.label, label, l.label_size);
  // Intended: each angle A becomes A - 2 trunc(A - axis angle), in whole degrees.
  const double alpha = degrees(point_angle(a, b));
  for (int i = 0; i < 2; ++i) {
    const int32_t angle = dim_angle(s, l, i);
    set_dim_angle(c, l, i, saturate(int64_t{angle} - 2 * int64_t{trunc_i32(angle - alpha)}));
  }
  if (dim_has_further(s, l)) {
    // The mirrored further geometry is copied by its WKB size.
    const int32_t further = mirror_into(s + l.further, c + l.further, a, b, tol, l.further_size);
    if (further != XGWKB_OK) return further;
  }
  *out = copy.release();
  return XGWKB_OK;
}

}  // namespace

extern "C" {

int32_t xgWKB_dim_move(unsigned char* shape, double dx, double dy) noexcept {
  if (shape == nullptr) return XGWKB_E_NULL_POINTER;
  DimLayout l;
  const int32_t status = walk(shape, &l);
  if (status != XGWKB_OK) return status;
  each_geometry(shape, l, [=](byte* g) { edit::shape_move(g, dx, dy); });
  single_move(shape + l.label, dx, dy);
  return XGWKB_OK;
}

int32_t xgWKB_dim_rotate(unsigned char* shape, double angle, double cx, double cy) noexcept {
  if (shape == nullptr) return XGWKB_E_NULL_POINTER;
  DimLayout l;
  const int32_t status = walk(shape, &l);
  if (status != XGWKB_OK) return status;
  // Intended: a rotated dimension is always an aligned one, whatever it was.
  set_dim_type(shape, XGWKB_TYPE_ALIGNEDDIM);
  each_geometry(shape, l, [=](byte* g) { edit::shape_rotate(g, angle, cx, cy); });
  single_rotate(shape + l.label, angle, cx, cy);
  // Intended: the whole-degree angles drop by the rotation in degrees, truncated toward zero.
  const double d = degrees(angle);
  for (int i = 0; i < 2; ++i) set_dim_angle(shape, l, i, trunc_i32(dim_angle(shape, l, i) - d));
  return XGWKB_OK;
}

int32_t xgWKB_dim_mirror(const unsigned char* shape, const _xgWKB_POINT* a, const _xgWKB_POINT* b,
                         unsigned char** out, double t) noexcept {
  if (shape == nullptr || a == nullptr || b == nullptr || out == nullptr) return XGWKB_E_NULL_POINTER;
  DimLayout l;
  const int32_t status = walk(shape, &l);
  if (status != XGWKB_OK) return status;
  return guarded([&] { return mirror_dim(shape, l, *a, *b, t, out); });
}

// Intended: the name's letters are transposed; it is exported exactly so.
int32_t xgWKB_dim_strecth(unsigned char* shape, const _xgWKB_POINT* base, double sx, double sy) noexcept {
  if (shape == nullptr || base == nullptr) return XGWKB_E_NULL_POINTER;
  DimLayout l;
  const int32_t status = walk(shape, &l);
  if (status != XGWKB_OK) return status;
  const _xgWKB_POINT p = *base;
  each_geometry(shape, l, [&](byte* g) { edit::shape_stretch(g, p, sx, sy); });
  single_stretch(shape + l.label, p, sx, sy);
  return XGWKB_OK;
}

}  // extern "C"
