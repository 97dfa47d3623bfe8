// blob.cpp - size computation and the small internal operations every subsystem shares.
#include "core/blob.h"

#include <cmath>

namespace xg {
namespace {

// Each per-type routine first checks that the blob is of its own type, so a multi-type whose
// member carries a foreign type code has no size.
int32_t point_size(const byte* s, uint32_t* size) {
  if (shape_type(s) != XGWKB_TYPE_POINT) return XGWKB_E_INVALID_SHAPE;
  *size = kPointBlobSize;
  return XGWKB_OK;
}

int32_t linestring_size(const byte* s, uint32_t* size) {
  if (shape_type(s) != XGWKB_TYPE_LINESTRING) return XGWKB_E_INVALID_SHAPE;
  *size = static_cast<uint32_t>(kHeaderSize) + wkb_ring_size(s + kHeaderSize);
  return XGWKB_OK;
}

int32_t polygon_size(const byte* s, uint32_t* size) {
  if (shape_type(s) != XGWKB_TYPE_POLYGON) return XGWKB_E_INVALID_SHAPE;
  const byte* end = for_each_ring(s, [](PointRun, uint32_t) {});
  *size = static_cast<uint32_t>(end - s);
  return XGWKB_OK;
}

int32_t multi_size(const byte* s, uint32_t type, int32_t (*member)(const byte*, uint32_t*),
                   uint32_t* size) {
  if (shape_type(s) != type) return XGWKB_E_INVALID_SHAPE;
  const uint32_t members = shape_count(s);
  uint32_t total = kCountedHeaderSize;
  const byte* at = s + kCountedHeaderSize;
  for (uint32_t i = 0; i < members; ++i) {
    uint32_t one = 0;
    const int32_t status = member(at, &one);
    if (status != XGWKB_OK) return status;
    total += one;
    at += one;
  }
  *size = total;
  return XGWKB_OK;
}

}  // namespace

int32_t geometry_size(const byte* s, uint32_t* size) {
  switch (shape_type(s)) {
    case XGWKB_TYPE_POINT:
      return point_size(s, size);
    case XGWKB_TYPE_LINESTRING:
      return linestring_size(s, size);
    case XGWKB_TYPE_POLYGON:
      return polygon_size(s, size);
    case XGWKB_TYPE_MULTIPOINT:
      return multi_size(s, XGWKB_TYPE_MULTIPOINT, point_size, size);
    case XGWKB_TYPE_MULTILINESTRING:
      return multi_size(s, XGWKB_TYPE_MULTILINESTRING, linestring_size, size);
    case XGWKB_TYPE_MULTIPOLYGON:
      return multi_size(s, XGWKB_TYPE_MULTIPOLYGON, polygon_size, size);
    default:
      return XGWKB_E_INVALID_SHAPE;
  }
}

namespace {

void grow_by_run(const PointRun& run, _xgWKB_BOX* box) {
  const uint32_t n = run.size();
  for (uint32_t i = 0; i < n; ++i) {
    const _xgWKB_POINT p = run.point(i);
    if (p.x < box->minx) box->minx = p.x;
    if (p.y < box->miny) box->miny = p.y;
    if (p.x > box->maxx) box->maxx = p.x;
    if (p.y > box->maxy) box->maxy = p.y;
  }
}

void grow_by_lineal_or_areal(const byte* shape, _xgWKB_BOX* box) {
  if (shape_type(shape) == XGWKB_TYPE_LINESTRING) {
    grow_by_run(line_run(shape), box);
  } else {
    for_each_ring(shape, [&](PointRun ring, uint32_t) { grow_by_run(ring, box); });
  }
}

}  // namespace

bool shape_points_box(const byte* shape, _xgWKB_BOX* box) {
  const double inf = HUGE_VAL;
  *box = _xgWKB_BOX{inf, inf, -inf, -inf};
  switch (shape_type(shape)) {
    case XGWKB_TYPE_LINESTRING:
    case XGWKB_TYPE_POLYGON:
      grow_by_lineal_or_areal(shape, box);
      return true;
    case XGWKB_TYPE_MULTILINESTRING:
    case XGWKB_TYPE_MULTIPOLYGON:
      return for_each_member(shape,
                             [&](const byte* m, uint32_t) { grow_by_lineal_or_areal(m, box); });
    default:
      return false;
  }
}

int32_t wkb_points_extent(const byte* run, _xgWKB_BOX* box) {
  const PointRun pts{run};
  const uint32_t n = pts.size();
  if (n == 0) {
    // The first slot of an empty run belongs to whatever follows it; report the zero box.
    *box = _xgWKB_BOX{0, 0, 0, 0};
    return 0;
  }
  const _xgWKB_POINT first = pts.point(0);
  *box = _xgWKB_BOX{first.x, first.y, first.x, first.y};
  for (uint32_t i = 1; i < n; ++i) {
    const _xgWKB_POINT p = pts.point(i);
    if (p.x < box->minx) box->minx = p.x;
    if (p.y < box->miny) box->miny = p.y;
    if (p.x > box->maxx) box->maxx = p.x;
    if (p.y > box->maxy) box->maxy = p.y;
  }
  return 0;
}

int32_t wkb_line_is_closed_tol(const byte* shape, double t) {
  if (shape_type(shape) != XGWKB_TYPE_LINESTRING) {
    // Intended: a shape that is not a linestring is judged by its first four bytes (byte-order
    // byte plus the low three bytes of the type) read as one integer, so every non-nil
    // non-linestring counts as closed and the nil shape as open.
    return load_u32(shape) >= 2 ? 1 : 0;
  }
  const PointRun pts = line_run(shape);
  if (pts.size() < 2) return 0;
  return wkb_point_equal_tol(pts.front(), pts.back(), t);
}

int32_t wkb_multiline_is_closed_tol(const byte* shape, double t) {
  int32_t closed = 1;
  for_each_member(shape, [&](const byte* member, uint32_t) {
    if (closed && !wkb_line_is_closed_tol(member, t)) closed = 0;
  });
  return closed;
}

}  // namespace xg
