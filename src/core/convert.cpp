// convert.cpp - a shape of one dimension turned into another: its vertices as a multipoint, its
// rings and lines as linestrings.

#include "core/boundary.h"
#include "core/construct.h"

using namespace xg;

namespace {

// Hands a blob written by a walk to the caller, or frees it and answers -134 when the walk met a
// member of a foreign type.
int32_t deliver_walked(bool walked, byte* blob, byte** out) {
  if (!walked) {
    std::free(blob);
    return XGWKB_E_INVALID_SHAPE;
  }
  *out = blob;
  return XGWKB_OK;
}

int32_t copy_shape(const byte* shape, byte** out) {
  uint32_t size = 0;
  if (geometry_size(shape, &size) != XGWKB_OK) return XGWKB_E_INVALID_SHAPE;
  return blob_copy(shape, size, out);
}

int32_t vertices_as_multipoint(const byte* shape, byte** out) {
  uint32_t n = 0;
  if (!for_each_coord(shape, [&n](const byte*) { ++n; })) return XGWKB_E_INVALID_SHAPE;
  byte* blob = blob_alloc(kCountedHeaderSize + kPointBlobSize * static_cast<std::size_t>(n));
  if (blob == nullptr) return XGWKB_E_FAILED;
  BlobWriter w(blob);
  w.header(XGWKB_TYPE_MULTIPOINT).u32(n);
  for_each_coord(shape, [&](const byte* at) { w.header(XGWKB_TYPE_POINT).bytes(at, kCoordSize); });
  *out = blob;
  return XGWKB_OK;
}

int32_t multipoint_as_line(const byte* multipoint, byte** out) {
  const uint32_t n = shape_count(multipoint);
  byte* blob = blob_alloc(kHeaderSize + run_bytes(n));
  if (blob == nullptr) return XGWKB_E_FAILED;
  BlobWriter w(blob);
  w.header(XGWKB_TYPE_LINESTRING).u32(n);
  // The points are counted by the members, so a member of another type must not be written.
  const bool walked = for_each_coord(multipoint, [&](const byte* at) { w.bytes(at, kCoordSize); });
  return deliver_walked(walked, blob, out);
}

// Calls f(PointRun) for every ring of a polygon or of every member of a multipolygon.  False when
// a member of the multipolygon is not a polygon.
template <class F>
bool for_each_polygon_ring(const byte* shape, F&& f) {
  auto rings = [&f](const byte* polygon) {
    for_each_ring(polygon, [&f](PointRun ring, uint32_t) { f(ring); });
  };
  if (shape_type(shape) == XGWKB_TYPE_POLYGON) {
    rings(shape);
    return true;
  }
  return for_each_member(shape, [&rings](const byte* polygon, uint32_t) { rings(polygon); });
}

// A multilinestring with one linestring per ring, in storage order; -27 when there is no ring,
// -134 when a member is not a polygon.
int32_t rings_as_multiline(const byte* shape, byte** out) {
  uint32_t rings = 0;
  std::size_t size = kCountedHeaderSize;
  const bool walked = for_each_polygon_ring(shape, [&](PointRun ring) {
    ++rings;
    size += kHeaderSize + ring.bytes();
  });
  if (!walked) return XGWKB_E_INVALID_SHAPE;
  if (rings == 0) return XGWKB_E_INVALID_ENTITY;
  byte* blob = blob_alloc(size);
  if (blob == nullptr) return XGWKB_E_FAILED;
  BlobWriter w(blob);
  w.header(XGWKB_TYPE_MULTILINESTRING).u32(rings);
  // A ring's body (count and points) is exactly a linestring's body.
  for_each_polygon_ring(shape, [&](PointRun ring) {
    w.header(XGWKB_TYPE_LINESTRING).bytes(ring.at, ring.bytes());
  });
  *out = blob;
  return XGWKB_OK;
}

}  // namespace

namespace xg {

int32_t shape_as_line(const byte* shape, byte** out) {
  switch (shape_type(shape)) {
    case XGWKB_TYPE_POINT: {
      byte* nil = alloc_nil();
      if (nil == nullptr) return XGWKB_E_FAILED;
      *out = nil;
      return XGWKB_OK;
    }
    case XGWKB_TYPE_LINESTRING:
    case XGWKB_TYPE_MULTILINESTRING:
      return copy_shape(shape, out);
    case XGWKB_TYPE_MULTIPOINT:
      return multipoint_as_line(shape, out);
    case XGWKB_TYPE_POLYGON:
    case XGWKB_TYPE_MULTIPOLYGON:
      return rings_as_multiline(shape, out);
    default:
      return XGWKB_E_INVALID_SHAPE;
  }
}

}  // namespace xg

extern "C" {

int32_t xgWKB_shape_as_point(const unsigned char* shape, unsigned char** out) noexcept {
  if (shape == nullptr) return XGWKB_E_NULL_POINTER;
  const uint32_t type = shape_type(shape);
  if (!is_geometry_type(type)) return XGWKB_E_INVALID_ENTITY;
  if (out == nullptr) return XGWKB_E_NULL_POINTER;
  return guarded([&] {
    return type == XGWKB_TYPE_MULTIPOINT ? copy_shape(shape, out)
                                         : vertices_as_multipoint(shape, out);
  });
}

int32_t xgWKB_shape_as_line(const unsigned char* shape, unsigned char** out) noexcept {
  if (shape == nullptr) return XGWKB_E_NULL_POINTER;
  if (!is_geometry_type(shape_type(shape))) return XGWKB_E_INVALID_SHAPE;
  if (out == nullptr) return XGWKB_E_NULL_POINTER;
  return guarded([&] { return shape_as_line(shape, out); });
}

}  // extern "C"
