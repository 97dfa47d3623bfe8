// part_edit.cpp - adding, inserting, replacing and deleting whole parts of multi-types and whole
// rings of polygons.
//
// A part of a multi-type is a whole member blob; a part given for a polygon is read as a
// linestring, whose counted run becomes the ring.  Every result is a Splice of the input.
#include "core/blob.h"
#include "core/boundary.h"
#include "edit/edit_checks.h"
#include "edit/splice.h"

using namespace xg;
using namespace xg::edit;

namespace xg {
namespace {

// The member type of a multi-type (multipoint 4 -> point 1, and so on).
uint32_t member_type(uint32_t multi_type) { return multi_type - 3; }

bool takes_parts(uint32_t type) { return type == XGWKB_TYPE_POLYGON || is_multi_type(type); }

// Part or ring index (0-based) of a polygon or multi-type.
ByteRange part_span(const byte* shape, uint32_t i) {
  return shape_type(shape) == XGWKB_TYPE_POLYGON ? ring_span(shape, i) : member_span(shape, i);
}

// The bytes a part contributes as one new ring or member: for a polygon the part's run read as
// a linestring, for a multi-type the part blob itself when it has the member type.  False when
// the part does not fit.
bool single_piece(const byte* shape, const byte* part, ByteRange* piece) {
  if (shape_type(shape) == XGWKB_TYPE_POLYGON) {
    const byte* run = nullptr;
    if (!part_as_run(part, &run)) return false;
    *piece = ByteRange{run, PointRun{run}.end()};
    return true;
  }
  std::size_t size = 0;
  if (!sized_as(part, member_type(shape_type(shape)), &size)) return false;
  *piece = whole(part, size);
  return true;
}

int32_t add_part(const byte* shape, std::size_t size, const byte* part, byte** out) {
  const uint32_t type = shape_type(shape);
  const uint32_t count = shape_count(shape);
  Splice edit(shape, size);
  ByteRange piece{};
  if (single_piece(shape, part, &piece)) {
    if (type == XGWKB_TYPE_POLYGON && !inside_first_ring(piece.from, shape))
      return XGWKB_E_INTEGRITY;
    edit.append(piece).set_count(shape, count + 1);
  } else {
    // A multi-type of the shape's own kind gives all its members at once.
    std::size_t part_size = 0;
    if (type == XGWKB_TYPE_POLYGON || !sized_as(part, type, &part_size))
      return XGWKB_E_INVALID_SHAPE;
    edit.append(body_of(part, part_size)).set_count(shape, count + shape_count(part));
  }
  return edit.build(out);
}

int32_t insert_part(const byte* shape, std::size_t size, const byte* part, int32_t index,
                    byte** out) {
  const uint32_t type = shape_type(shape);
  const uint32_t count = shape_count(shape);
  ByteRange piece{};
  if (!single_piece(shape, part, &piece)) return XGWKB_E_INCOMPATIBLE;
  if (type == XGWKB_TYPE_POLYGON && !inside_first_ring(piece.from, shape)) return XGWKB_E_INTEGRITY;
  Splice edit(shape, size);
  byte* block = nullptr;
  if (type == XGWKB_TYPE_MULTIPOINT) {
    // Intended: a multipoint hands its result block out before the index test.
    block = hand_out_block(size + piece.size(), out);
    if (block == nullptr) return XGWKB_E_FAILED;
  }
  if (!in_range(index, count)) return XGWKB_E_NO_PART;
  edit.insert(part_span(shape, slot(index)).from, piece).renew_header(shape, count + 1);
  if (block == nullptr) return edit.build(out);
  edit.write(block);
  return XGWKB_OK;
}

int32_t replace_part(const byte* shape, std::size_t size, const byte* part, int32_t index,
                     byte** out) {
  ByteRange piece{};
  if (!single_piece(shape, part, &piece)) return XGWKB_E_INCOMPATIBLE;
  // Only an inner ring is tested; a new outer ring is taken as it is.
  if (shape_type(shape) == XGWKB_TYPE_POLYGON && index != 1 &&
      !inside_first_ring(piece.from, shape)) {
    return XGWKB_E_UNCHANGED;
  }
  if (!in_range(index, shape_count(shape))) return XGWKB_E_NO_PART;
  Splice edit(shape, size);
  edit.replace(part_span(shape, slot(index)), piece);
  return edit.build(out);
}

int32_t delete_part(const byte* shape, std::size_t size, int32_t index, byte** out) {
  const uint32_t type = shape_type(shape);
  const uint32_t count = shape_count(shape);
  if (type == XGWKB_TYPE_POLYGON) {
    // The outer ring cannot be deleted; this is tested before the index range.
    if (count < 2 || index == 1) return XGWKB_E_UNCHANGED;
  }
  if (!in_range(index, count)) return XGWKB_E_NO_PART;
  if (count == 1) {
    // Deleting the only member leaves the nil shape.
    byte* nil = blob_alloc(kHeaderSize);
    if (nil == nullptr) return XGWKB_E_FAILED;
    write_header(nil, XGWKB_TYPE_NIL);
    *out = nil;
    return XGWKB_OK;
  }
  Splice edit(shape, size);
  edit.erase(part_span(shape, slot(index))).renew_header(shape, count - 1);
  return edit.build(out);
}

// Size of a shape that takes parts; false for any other type or a blob without a size.
bool sized_part_holder(const byte* shape, std::size_t* size) {
  return takes_parts(shape_type(shape)) && sized_as(shape, shape_type(shape), size);
}

}  // namespace
}  // namespace xg

extern "C" {

int32_t xgWKB_shape_add_part(const unsigned char* shape, const unsigned char* part,
                             unsigned char** out) noexcept {
  if (shape == nullptr || part == nullptr || out == nullptr) return XGWKB_E_NULL_POINTER;
  std::size_t size = 0;
  if (!sized_part_holder(shape, &size)) return XGWKB_E_INVALID_SHAPE;
  return guarded([&] { return add_part(shape, size, part, out); });
}

int32_t xgWKB_shape_insert_part(const unsigned char* shape, const unsigned char* part,
                                int32_t index, unsigned char** out) noexcept {
  if (shape == nullptr || part == nullptr || out == nullptr) return XGWKB_E_NULL_POINTER;
  std::size_t size = 0;
  if (!sized_part_holder(shape, &size)) return XGWKB_E_INVALID_SHAPE;
  return guarded([&] { return insert_part(shape, size, part, index, out); });
}

int32_t xgWKB_shape_replace_part(const unsigned char* shape, const unsigned char* part,
                                 int32_t index, unsigned char** out) noexcept {
  if (shape == nullptr || part == nullptr || out == nullptr) return XGWKB_E_NULL_POINTER;
  std::size_t size = 0;
  // Intended: a shape of the wrong type is an invalid entity here, unlike the sibling operations.
  if (!sized_part_holder(shape, &size)) return XGWKB_E_INVALID_ENTITY;
  return guarded([&] { return replace_part(shape, size, part, index, out); });
}

int32_t xgWKB_shape_delete_part(const unsigned char* shape, int32_t index,
                                unsigned char** out) noexcept {
  if (shape == nullptr || out == nullptr) return XGWKB_E_NULL_POINTER;
  std::size_t size = 0;
  if (!sized_part_holder(shape, &size)) return XGWKB_E_INVALID_SHAPE;
  return guarded([&] { return delete_part(shape, size, index, out); });
}

}  // extern "C"
