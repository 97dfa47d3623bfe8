// construct.h - internal builders shared by the construction exports and the metrics.
//
// They know nothing about the C boundary: arguments are already checked unless stated, results
// are fresh blob_alloc blocks handed back through out, and failures are status codes.
#ifndef XGGEO_CORE_CONSTRUCT_H
#define XGGEO_CORE_CONSTRUCT_H

#include <cstdint>

#include "core/blob.h"

namespace xg {

// A new 5-byte nil shape, or null when memory runs out.
inline byte* alloc_nil() {
  byte* nil = blob_alloc(kHeaderSize);
  if (nil != nullptr) write_header(nil, XGWKB_TYPE_NIL);
  return nil;
}

// A new nil shape into *out; XGWKB_E_FAILED (out untouched) when memory runs out.
inline int32_t nil_into(byte** out) {
  byte* nil = alloc_nil();
  if (nil == nullptr) return XGWKB_E_FAILED;
  *out = nil;
  return XGWKB_OK;
}

// Multilinestring of parts members, member i taking the next counts[i] points.  Checks points
// (-65), parts (-66 when negative), counts (-65 when null with parts > 0) and every count
// (-148 below two) before anything is allocated, then out (-65).
int32_t make_multiline(int32_t parts, const int32_t* counts, const _xgWKB_POINT* points, byte** out);

// The line form of a geometry of type 1-6: nil for a point, a copy of a linestring or
// multilinestring, one linestring through a multipoint, a multilinestring of all rings of a
// polygon or multipolygon (-27 when there is no ring).  Other types: -134.
int32_t shape_as_line(const byte* shape, byte** out);

// The closed, clockwise five-point polygon of a box: (minx,miny), (minx,maxy), (maxx,maxy),
// (maxx,miny), (minx,miny).  Null when memory runs out.
byte* polygon_of_box(const _xgWKB_BOX& b);

// One multi-type of every member of the multi-type shapes and every other shape as a member; the
// last shape's type picks the result (count >= 1, no null entry).  -134 for an earlier shape that
// is not a geometry (nothing allocated), or for a last one that is not (a zeroed block is already
// in *out and the caller frees it).
int32_t combine_shapes(const byte* const* shapes, int32_t count, byte** out);

}  // namespace xg

#endif  // XGGEO_CORE_CONSTRUCT_H
