// overlay.cpp - the overlay exports: argument checks, the dispatch on type pairs, the kernels.
#include "xggeokit.h"

#include <cmath>

#include "construct/overlay_convert.h"
#include "construct/overlay_kernels.h"
#include "core/boundary.h"

namespace xg {
namespace {

// 0 points, 1 lines, 2 polygons.
int dimension(uint32_t type) { return static_cast<int>((type - 1) % 3); }

// The statuses of an operation for a first type outside 1..6, a second type outside 1..6 and a
// refused pair.  They differ between operations: intended, callers rely on each of them.
struct Statuses {
  int32_t bad_first;
  int32_t bad_second;
  int32_t refused;
};

Statuses statuses_of(gpc_op op, uint32_t first_type) {
  switch (op) {
    case GPC_DIFF:
      return {XGWKB_E_INVALID_SHAPE, XGWKB_E_INVALID_SHAPE, XGWKB_E_INVALID_ENTITY};
    case GPC_INT:
      // A polygon with a second shape of a foreign type answers 0 with nothing written: intended.
      return {XGWKB_E_INVALID_SHAPE, first_type == XGWKB_TYPE_POLYGON ? XGWKB_OK : XGWKB_E_INVALID_SHAPE, XGWKB_OK};
    case GPC_UNION:
      // Only a multipoint first gets -134 for a foreign second type: intended.
      return {XGWKB_E_INVALID_ENTITY,
              first_type == XGWKB_TYPE_MULTIPOINT ? XGWKB_E_INVALID_SHAPE : XGWKB_E_INVALID_ENTITY,
              XGWKB_E_INVALID_SHAPE};
    case GPC_XOR:
    default:
      return {XGWKB_E_INVALID_ENTITY, XGWKB_E_INVALID_ENTITY, XGWKB_E_INVALID_SHAPE};
  }
}

bool pair_supported(gpc_op op, int da, int db) {
  switch (op) {
    case GPC_DIFF:
      return da <= db;
    case GPC_INT:
      return true;
    default:
      return da == db;
  }
}

int32_t run_kernel(gpc_op op, const byte* a, const byte* b, double t, byte** out) {
  const uint32_t ta = shape_type(a);
  const uint32_t tb = shape_type(b);
  const int da = dimension(ta);
  const int db = dimension(tb);
  const bool keep_common = op == GPC_INT;
  if (da == 0 && db == 0) {
    if (ta == XGWKB_TYPE_POINT && tb == XGWKB_TYPE_POINT) return point_point_kernel(op, a, b, t, out);
    if (ta == XGWKB_TYPE_POINT) return point_multipoint_kernel(op, a, b, t, out);
    return multipoint_kernel(op, a, b, t, out);
  }
  // Pairs in reverse order (intersection only) go to the same kernel with the operands swapped.
  // A point minus a line reads its coordinates five bytes late (see points_on_lines): intended.
  if (da == 0 && db == 1) return points_on_lines(a, b, keep_common, op == GPC_DIFF, t, out);
  if (da == 1 && db == 0) return points_on_lines(b, a, true, false, t, out);
  if (da == 0 && db == 2) return points_in_polygons(a, b, keep_common, t, out);
  if (da == 2 && db == 0) return points_in_polygons(b, a, true, t, out);
  if (da == 1 && db == 1) return line_line_kernel(op, a, b, t, out);
  if (da == 1 && db == 2) return line_polygon_kernel(a, b, keep_common, t, out);
  if (da == 2 && db == 1) return line_polygon_kernel(b, a, true, t, out);
  return polygon_kernel(op, a, b, out);
}

int32_t binary_operation(gpc_op op, const byte* a, const byte* b, byte** out, double t) {
  if (a == nullptr || b == nullptr || out == nullptr) return XGWKB_E_NULL_POINTER;
  const uint32_t ta = shape_type(a);
  const uint32_t tb = shape_type(b);
  const Statuses st = statuses_of(op, ta);
  if (!is_geometry_type(ta)) return st.bad_first;
  if (!is_geometry_type(tb)) return st.bad_second;
  if (!pair_supported(op, dimension(ta), dimension(tb))) return st.refused;
  // A tolerance that is not a number (or infinite) would make every segment pair a candidate.
  if (!shape_coords_finite(a) || !shape_coords_finite(b) || !std::isfinite(t)) return XGWKB_E_INVALID_ARGUMENT;
  return run_kernel(op, a, b, t, out);
}

}  // namespace
}  // namespace xg

extern "C" {

int32_t xgWKB_shape_difference(const unsigned char* a, const unsigned char* b, unsigned char** out,
                               double t) noexcept {
  return xg::guarded([&] { return xg::binary_operation(xg::GPC_DIFF, a, b, out, t); });
}

int32_t xgWKB_shape_intersection(const unsigned char* a, const unsigned char* b, unsigned char** out,
                                 double t) noexcept {
  return xg::guarded([&] { return xg::binary_operation(xg::GPC_INT, a, b, out, t); });
}

int32_t xgWKB_shape_union(const unsigned char* a, const unsigned char* b, unsigned char** out, double t) noexcept {
  return xg::guarded([&] { return xg::binary_operation(xg::GPC_UNION, a, b, out, t); });
}

int32_t xgWKB_shape_symmetric_difference(const unsigned char* a, const unsigned char* b, unsigned char** out,
                                         double t) noexcept {
  return xg::guarded([&] { return xg::binary_operation(xg::GPC_XOR, a, b, out, t); });
}

int32_t xgWKB_shape_overlay(const unsigned char* a, const unsigned char* b, unsigned char** only_a,
                            unsigned char** only_b, unsigned char** common, double t) noexcept {
  return xg::guarded([&]() -> int32_t {
    if (a == nullptr || b == nullptr || only_a == nullptr || only_b == nullptr || common == nullptr) {
      return XGWKB_E_NULL_POINTER;
    }
    const uint32_t ta = xg::shape_type(a);
    const uint32_t tb = xg::shape_type(b);
    if (!xg::is_geometry_type(ta)) return XGWKB_E_INVALID_ENTITY;
    if (!xg::is_geometry_type(tb)) {
      // A line first gets -134 for a foreign second type, the others -27: intended.
      const bool line_first = ta == XGWKB_TYPE_LINESTRING || ta == XGWKB_TYPE_MULTILINESTRING;
      return line_first ? XGWKB_E_INVALID_SHAPE : XGWKB_E_INVALID_ENTITY;
    }
    const int da = xg::dimension(ta);
    if (da != xg::dimension(tb) || da == 1) return XGWKB_E_INVALID_SHAPE;
    if (!xg::shape_coords_finite(a) || !xg::shape_coords_finite(b) || !std::isfinite(t)) {
      return XGWKB_E_INVALID_ARGUMENT;
    }
    if (da == 0) return xg::overlay_points(a, b, t, only_a, only_b, common);
    return xg::overlay_polygons(a, b, only_a, only_b, common);
  });
}

}  // extern "C"
