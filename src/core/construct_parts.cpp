// construct_parts.cpp - shapes made from the members of other shapes: one member taken out of a
// multi-type, and many shapes combined into one multi-type.
#include <cstring>
#include <vector>

#include "core/boundary.h"
#include "core/construct.h"

using namespace xg;

namespace {

// The multi-type that holds members of the given type's dimension, or 0 for a non-geometry.
uint32_t multi_type_for(uint32_t type) {
  switch (type) {
    case XGWKB_TYPE_POINT:
    case XGWKB_TYPE_MULTIPOINT:
      return XGWKB_TYPE_MULTIPOINT;
    case XGWKB_TYPE_LINESTRING:
    case XGWKB_TYPE_MULTILINESTRING:
      return XGWKB_TYPE_MULTILINESTRING;
    case XGWKB_TYPE_POLYGON:
    case XGWKB_TYPE_MULTIPOLYGON:
      return XGWKB_TYPE_MULTIPOLYGON;
    default:
      return 0;
  }
}

}  // namespace

namespace xg {

int32_t combine_shapes(const byte* const* shapes, int32_t count, byte** out) {
  // The sizes double as the flag array: a multi-type input contributes its members (its bytes
  // after the 9-byte header), any other input itself as one member.
  std::vector<uint32_t> sizes(static_cast<std::size_t>(count), 0);
  std::size_t total_size = kCountedHeaderSize;
  uint32_t members = 0;
  for (int32_t i = 0; i < count; ++i) {
    const byte* s = shapes[i];
    if (s == nullptr) return XGWKB_E_NULL_POINTER;
    uint32_t size = 0;
    if (geometry_size(s, &size) != XGWKB_OK) {
      // An input we cannot size cannot be copied.  Only the last one is let through here: its
      // type is what the check below reports on.
      if (i + 1 < count) return XGWKB_E_INVALID_SHAPE;
      continue;
    }
    sizes[i] = size;
    if (is_multi_type(shape_type(s))) {
      members += shape_count(s);
      total_size += size - kCountedHeaderSize;
    } else {
      members += 1;
      total_size += size;
    }
  }
  byte* blob = blob_alloc(total_size);
  if (blob == nullptr) return XGWKB_E_FAILED;
  // Intended: the block is handed to the caller before the output type is known; on -134 the
  // caller still owns it and frees it.  It is zeroed, so it reads as a nil shape.
  std::memset(blob, 0, total_size);
  *out = blob;
  // The last input decides the output type.  Intended: the inputs are not checked to share a
  // dimension, so mixed inputs give members that do not match the type.
  const uint32_t type = multi_type_for(shape_type(shapes[count - 1]));
  if (type == 0) return XGWKB_E_INVALID_SHAPE;
  BlobWriter w(blob);
  w.header(type).u32(members);
  for (int32_t i = 0; i < count; ++i) {
    const byte* s = shapes[i];
    if (is_multi_type(shape_type(s))) {
      w.bytes(s + kCountedHeaderSize, sizes[i] - kCountedHeaderSize);
    } else {
      w.bytes(s, sizes[i]);
    }
  }
  return XGWKB_OK;
}

}  // namespace xg

extern "C" {

int32_t xgWKB_shape_generate_from_part(const unsigned char* shape, int32_t index,
                                       unsigned char** out) noexcept {
  if (shape == nullptr) return XGWKB_E_NULL_POINTER;
  if (!is_multi_type(shape_type(shape))) return XGWKB_E_INVALID_ENTITY;
  if (!members_well_typed(shape)) return XGWKB_E_INVALID_SHAPE;
  if (index < 1 || static_cast<uint32_t>(index) > shape_count(shape)) {
    return XGWKB_E_INVALID_ARGUMENT;
  }
  if (out == nullptr) return XGWKB_E_NULL_POINTER;
  const byte* member = member_at(shape, static_cast<uint32_t>(index - 1));
  uint32_t size = 0;
  if (geometry_size(member, &size) != XGWKB_OK) return XGWKB_E_INVALID_ENTITY;
  return guarded([&] { return blob_copy(member, size, out); });
}

int32_t xgWKB_shape_combine(const unsigned char* const* shapes, int32_t count,
                            unsigned char** out) noexcept {
  if (shapes == nullptr || out == nullptr) return XGWKB_E_NULL_POINTER;
  if (count < 1) return XGWKB_E_INVALID_ARGUMENT;
  return guarded([&] { return combine_shapes(shapes, count, out); });
}

}  // extern "C"
