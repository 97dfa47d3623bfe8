// access.cpp - counting the parts, rings and points of a shape and copying its coordinates out.
//
// A part is a ring of a polygon or a member of a multi-type; a subpart is a ring of a member
// polygon of a multipolygon.  Indices are 1-based; 0 means all of them where it is allowed.
// The caller sizes every output array from the counting functions; nothing here checks them.
#include "core/blob.h"

using namespace xg;

namespace {

// Total points of all rings of a polygon blob.
uint32_t polygon_points(const byte* polygon) {
  uint32_t total = 0;
  for_each_ring(polygon, [&](PointRun ring, uint32_t) { total += ring.size(); });
  return total;
}

// Points of a member blob of a multi-type.
uint32_t member_points(const byte* member) {
  switch (shape_type(member)) {
    case XGWKB_TYPE_POINT:
      return 1;
    case XGWKB_TYPE_LINESTRING:
      return line_run(member).size();
    case XGWKB_TYPE_POLYGON:
      return polygon_points(member);
    default:
      return 0;
  }
}

uint32_t multi_points(const byte* multi) {
  uint32_t total = 0;
  for_each_member(multi, [&](const byte* member, uint32_t) { total += member_points(member); });
  return total;
}

bool in_one_based_range(int32_t index, uint32_t count) {
  return index >= 1 && static_cast<uint32_t>(index) <= count;
}

bool in_zero_based_range(int32_t index, uint32_t count) {
  return index >= 0 && static_cast<uint32_t>(index) <= count;
}

int32_t invalid_offset(uint32_t* count) {
  *count = 0;
  return XGWKB_E_INVALID_PART_OFFSET;
}

int32_t multipolygon_num_points(const byte* shape, int32_t part, int32_t subpart, uint32_t* count) {
  const uint32_t members = shape_count(shape);
  if (!in_zero_based_range(part, members)) return invalid_offset(count);
  if (part == 0) {
    *count = multi_points(shape);
    return XGWKB_OK;
  }
  const byte* polygon = member_at(shape, static_cast<uint32_t>(part - 1));
  if (!in_zero_based_range(subpart, shape_count(polygon))) return invalid_offset(count);
  *count = subpart == 0 ? polygon_points(polygon)
                        : PointRun{ring_at(polygon, static_cast<uint32_t>(subpart - 1))}.size();
  return XGWKB_OK;
}

// Copies the points of every ring of a polygon; returns the slot after the last one.
_xgWKB_POINT* copy_polygon(const byte* polygon, _xgWKB_POINT* out) {
  for_each_ring(polygon, [&](PointRun ring, uint32_t) { out = ring.copy_to(out); });
  return out;
}

}  // namespace

extern "C" {

int32_t xgWKB_shape_get_num_parts(const unsigned char* shape, uint32_t* count) noexcept {
  if (shape == nullptr) return XGWKB_E_NULL_POINTER;
  const uint32_t type = shape_type(shape);
  if (type == XGWKB_TYPE_POLYGON || is_multi_type(type)) {
    *count = shape_count(shape);
    return XGWKB_OK;
  }
  *count = 0;
  return XGWKB_E_INVALID_ENTITY;
}

int32_t xgWKB_shape_get_num_subparts(const unsigned char* shape, int32_t part,
                                     uint32_t* count) noexcept {
  if (shape == nullptr) {
    *count = 0;
    return XGWKB_E_NULL_POINTER;
  }
  if (!members_well_typed(shape)) return XGWKB_E_INVALID_SHAPE;
  if (shape_type(shape) != XGWKB_TYPE_MULTIPOLYGON) {
    *count = 1;
    return XGWKB_E_INVALID_ENTITY;
  }
  if (!in_zero_based_range(part, shape_count(shape))) return invalid_offset(count);
  if (part > 0) {
    *count = shape_count(member_at(shape, static_cast<uint32_t>(part - 1)));
    return XGWKB_OK;
  }
  uint32_t total = 0;
  for_each_member(shape, [&](const byte* polygon, uint32_t) { total += shape_count(polygon); });
  *count = total;
  return XGWKB_OK;
}

int32_t xgWKB_shape_get_num_points(const unsigned char* shape, int32_t part, int32_t subpart,
                                   uint32_t* count) noexcept {
  if (shape == nullptr) return XGWKB_E_NULL_POINTER;
  if (!members_well_typed(shape)) return XGWKB_E_INVALID_SHAPE;
  switch (shape_type(shape)) {
    case XGWKB_TYPE_POINT:
      *count = 1;
      return XGWKB_OK;
    case XGWKB_TYPE_LINESTRING:
    case XGWKB_TYPE_MULTIPOINT:
      *count = shape_count(shape);
      return XGWKB_OK;
    case XGWKB_TYPE_POLYGON:
      if (!in_zero_based_range(part, shape_count(shape))) return invalid_offset(count);
      *count = part == 0 ? polygon_points(shape)
                         : PointRun{ring_at(shape, static_cast<uint32_t>(part - 1))}.size();
      return XGWKB_OK;
    case XGWKB_TYPE_MULTILINESTRING:
      if (!in_zero_based_range(part, shape_count(shape))) return invalid_offset(count);
      *count = part == 0 ? multi_points(shape)
                         : member_points(member_at(shape, static_cast<uint32_t>(part - 1)));
      return XGWKB_OK;
    case XGWKB_TYPE_MULTIPOLYGON:
      return multipolygon_num_points(shape, part, subpart, count);
    default:
      return XGWKB_E_INVALID_SHAPE;
  }
}

int32_t xgWKB_shape_get_points(const unsigned char* shape, int32_t part,
                               _xgWKB_POINT* points) noexcept {
  if (shape == nullptr) return XGWKB_E_NULL_POINTER;
  if (!members_well_typed(shape)) return XGWKB_E_INVALID_SHAPE;
  const uint32_t type = shape_type(shape);
  switch (type) {
    case XGWKB_TYPE_POINT:
    case XGWKB_TYPE_LINESTRING:
    case XGWKB_TYPE_MULTIPOINT: {
      _xgWKB_POINT* out = points;
      const bool walked = for_each_coord(shape, [&](const byte* at) { *out++ = load_point(at); });
      return walked ? XGWKB_OK : XGWKB_E_INVALID_SHAPE;
    }
    case XGWKB_TYPE_POLYGON:
    case XGWKB_TYPE_MULTILINESTRING:
    case XGWKB_TYPE_MULTIPOLYGON: {
      if (!in_one_based_range(part, shape_count(shape))) return XGWKB_E_INVALID_PART_OFFSET;
      const uint32_t index = static_cast<uint32_t>(part - 1);
      if (type == XGWKB_TYPE_POLYGON) {
        PointRun{ring_at(shape, index)}.copy_to(points);
      } else if (type == XGWKB_TYPE_MULTILINESTRING) {
        line_run(member_at(shape, index)).copy_to(points);
      } else {
        copy_polygon(member_at(shape, index), points);
      }
      return XGWKB_OK;
    }
    default:
      return XGWKB_E_INVALID_SHAPE;
  }
}

int32_t xgWKB_shape_get_all_points(const unsigned char* shape, int32_t* part_offsets,
                                   int32_t* subpart_offsets, _xgWKB_POINT* points) noexcept {
  if (shape == nullptr) return XGWKB_E_NULL_POINTER;
  const uint32_t type = shape_type(shape);
  if (!is_geometry_type(type) || !members_well_typed(shape)) return XGWKB_E_INVALID_SHAPE;

  _xgWKB_POINT* out = points;
  auto written = [&]() { return static_cast<int32_t>(out - points); };
  // Element 0 of each given array is 0; then the start of every part but the first.
  auto record = [](int32_t* offsets, uint32_t slot, int32_t value) {
    if (offsets != nullptr) offsets[slot] = value;
  };

  if (type == XGWKB_TYPE_POLYGON || type == XGWKB_TYPE_MULTILINESTRING ||
      type == XGWKB_TYPE_MULTIPOLYGON) {
    record(part_offsets, 0, 0);
    record(subpart_offsets, 0, 0);
  }
  // The caller sized the arrays from the counts of members of the multi-type's own member type;
  // the walks stop before a member of another type, and the shape is refused.
  bool walked = true;
  switch (type) {
    case XGWKB_TYPE_POLYGON:
      // Both arrays receive the start of each ring.
      for_each_ring(shape, [&](PointRun ring, uint32_t i) {
        record(part_offsets, i, written());
        record(subpart_offsets, i, written());
        out = ring.copy_to(out);
      });
      break;
    case XGWKB_TYPE_MULTILINESTRING:
      // Both arrays receive the start of each member.
      walked = for_each_member(shape, [&](const byte* line, uint32_t i) {
        record(part_offsets, i, written());
        record(subpart_offsets, i, written());
        out = line_run(line).copy_to(out);
      });
      break;
    case XGWKB_TYPE_MULTIPOLYGON: {
      // Subparts: the start of every ring across all polygons.  Parts: the subpart index at
      // which each polygon's rings begin.
      uint32_t rings_so_far = 0;
      walked = for_each_member(shape, [&](const byte* polygon, uint32_t i) {
        record(part_offsets, i, static_cast<int32_t>(rings_so_far));
        for_each_ring(polygon, [&](PointRun ring, uint32_t) {
          record(subpart_offsets, rings_so_far++, written());
          out = ring.copy_to(out);
        });
      });
      break;
    }
    default:
      // Point, linestring, multipoint: only the points; the offset arrays are not touched.
      walked = for_each_coord(shape, [&](const byte* at) { *out++ = load_point(at); });
      break;
  }
  return walked ? XGWKB_OK : XGWKB_E_INVALID_SHAPE;
}

}  // extern "C"
