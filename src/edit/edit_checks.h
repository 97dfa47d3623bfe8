// edit_checks.h - the argument checks the editing operations share.
#ifndef XGGEO_EDIT_EDIT_CHECKS_H
#define XGGEO_EDIT_EDIT_CHECKS_H

#include <cstddef>
#include <cstdint>

#include "core/blob.h"

namespace xg::edit {

// 1-based index inside 1..count.
inline bool in_range(int32_t index, uint32_t count) {
  return index >= 1 && static_cast<uint32_t>(index) <= count;
}

// The 0-based position of a 1-based index already found in range.
inline uint32_t slot(int32_t index) { return static_cast<uint32_t>(index - 1); }

// Member part (1-based, already found in range) of a multi-type.
inline const byte* member_of(const byte* multi, int32_t part) {
  return member_at(multi, slot(part));
}

// Size of a blob of the given type; false when the type differs or the blob has no size
// (a member of a foreign type).
inline bool sized_as(const byte* shape, uint32_t type, std::size_t* size) {
  uint32_t s = 0;
  if (shape_type(shape) != type || geometry_size(shape, &s) != XGWKB_OK) return false;
  *size = s;
  return true;
}

// Reads a part as a linestring (its count at offset 5, then the points), which is how a part
// becomes a polygon ring.  False when the part is no sizable geometry or the run so read would
// reach past the part's own bytes.
bool part_as_run(const byte* part, const byte** run);

// 1 when the counted run lies inside the first ring of the polygon blob (tolerance 0.0001); a
// polygon without rings holds nothing.
bool inside_first_ring(const byte* run, const byte* polygon);

}  // namespace xg::edit

#endif  // XGGEO_EDIT_EDIT_CHECKS_H
