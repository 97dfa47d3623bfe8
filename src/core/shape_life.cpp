// shape_life.cpp - life cycle, size and type queries of shape blobs.
#include <cstdlib>

#include "core/blob.h"
#include "core/boundary.h"
#include "core/construct.h"

using namespace xg;

extern "C" {

int32_t xgWKB_shape_get_WKB_size(const unsigned char* shape, uint32_t* size) noexcept {
  if (shape == nullptr) {
    *size = 0;
    return XGWKB_E_NULL_POINTER;
  }
  // The nil shape has no WKB size (message -208 says so); like any other non-geometry type it
  // gets -134 and the size is left untouched.
  return geometry_size(shape, size);
}

int32_t xgWKB_shape_make_nil(uint32_t handle, unsigned char** shape) noexcept {
  // The handle is only tested for being non-zero; it is never read further.
  if (handle == 0) return XGWKB_E_NULL_POINTER;
  return guarded([&]() -> int32_t {
    byte* nil = alloc_nil();
    if (nil == nullptr) return kOutOfMemory;
    *shape = nil;
    return XGWKB_OK;
  });
}

void xgWKB_shape_free(void* shape) noexcept { std::free(shape); }

void xgWKB_shape_free_array(int32_t count, unsigned char** shapes) noexcept {
  for (int32_t i = 0; i < count; ++i) std::free(shapes[i]);
}

int32_t xgWKB_shape_duplicate(const unsigned char* shape, unsigned char** copy) noexcept {
  // Intended: a null shape is reported as an invalid handle here, not as a null pointer.
  if (shape == nullptr) return XGWKB_E_INVALID_SHAPE;
  uint32_t size = 0;
  if (geometry_size(shape, &size) != XGWKB_OK) {
    // The nil shape and the envelope have fixed sizes; anything else unsized is refused rather
    // than copied from an undefined length.
    const uint32_t type = shape_type(shape);
    if (type == XGWKB_TYPE_NIL) {
      size = kHeaderSize;
    } else if (type == XGWKB_TYPE_ENVELOPE) {
      size = kEnvelopeBlobSize;
    } else if (type >= XGWKB_TYPE_SINGLETEXT && type <= XGWKB_TYPE_ALIGNEDDIM) {
      // Annotations and dimensions carry their own total size after the header.
      size = load_u32(shape + kHeaderSize);
    } else {
      return XGWKB_E_INVALID_SHAPE;
    }
  }
  return guarded([&] { return blob_copy(shape, size, copy); });
}

int32_t xgWKB_shape_get_type(const unsigned char* shape, uint32_t* type) noexcept {
  if (shape == nullptr) {
    *type = 0;
    return XGWKB_E_NULL_POINTER;
  }
  *type = shape_type(shape);
  return XGWKB_OK;
}

uint32_t xgWKB_shape_is_nil(const unsigned char* shape) noexcept {
  return shape != nullptr && shape_type(shape) == XGWKB_TYPE_NIL;
}

uint32_t xgWKB_shape_is_point(const unsigned char* shape) noexcept {
  if (shape == nullptr) return 0;
  const uint32_t t = shape_type(shape);
  return t == XGWKB_TYPE_POINT || t == XGWKB_TYPE_MULTIPOINT;
}

uint32_t xgWKB_shape_is_line(const unsigned char* shape) noexcept {
  if (shape == nullptr) return 0;
  const uint32_t t = shape_type(shape);
  return t == XGWKB_TYPE_LINESTRING || t == XGWKB_TYPE_MULTILINESTRING;
}

uint32_t xgWKB_shape_is_polygon(const unsigned char* shape) noexcept {
  if (shape == nullptr) return 0;
  const uint32_t t = shape_type(shape);
  return t == XGWKB_TYPE_POLYGON || t == XGWKB_TYPE_MULTIPOLYGON;
}

uint32_t xgWKB_shape_is_multipart(const unsigned char* shape) noexcept {
  return shape != nullptr && is_multi_type(shape_type(shape));
}

}  // extern "C"
