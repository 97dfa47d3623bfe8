// overlay_kernels.h - the kernels behind the overlay exports, one per kind of operand pair.
//
// Operands are shapes of the types each kernel names, already checked by the caller (types,
// finite coordinates).  Results are fresh blob_alloc blocks in *out; a kernel that leaves an
// output unwritten says so.  The operation selector is the clipper's operation code (GPC_DIFF
// difference, GPC_INT intersection, GPC_XOR symmetric difference, GPC_UNION union).  Kernels
// return 0, or XGWKB_E_FAILED when memory runs out; they may throw std::bad_alloc.
#ifndef XGGEO_CONSTRUCT_OVERLAY_KERNELS_H
#define XGGEO_CONSTRUCT_OVERLAY_KERNELS_H

#include <cstdint>
#include <vector>

#include "construct/gpc_adapter.h"
#include "core/blob.h"

namespace xg {

// ---- points (overlay_points.cpp) ----------------------------------------------------------

// A multipoint of the given 21-byte point blobs, copied as they are; nil when there are none.
int32_t multipoint_or_nil(const std::vector<const byte*>& members, byte** out);
// Two points are equal when the first 16 bytes of their blobs, read as two doubles, differ by
// less than t on both.  Results are multipoints of member blobs copied byte for byte, or nil.

int32_t point_point_kernel(gpc_op op, const byte* a, const byte* b, double t, byte** out);
// Compares the point with the multipoint's first member only.
int32_t point_multipoint_kernel(gpc_op op, const byte* point, const byte* multipoint, double t, byte** out);
// a is a multipoint, b a point or a multipoint; member by member.
int32_t multipoint_kernel(gpc_op op, const byte* a, const byte* b, double t, byte** out);

// The members of a point or multipoint that lie on a linestring or multilinestring (keep_on) or
// off it.  shifted: each member's coordinates are read five bytes past their place (bytes past
// the end of the blob read as zero).
int32_t points_on_lines(const byte* points, const byte* lines, bool keep_on, bool shifted, double t, byte** out);
// The members of a point or multipoint inside or on a polygon or multipolygon (keep_in), or
// outside it.
int32_t points_in_polygons(const byte* points, const byte* polygons, bool keep_in, double t, byte** out);

// Overlay of a point or multipoint a with a point or multipoint b.  Outputs a kernel leaves
// unwritten stay as they are.
int32_t overlay_points(const byte* a, const byte* b, double t, byte** only_a, byte** only_b, byte** common);

// ---- lines (overlay_lines.cpp) ------------------------------------------------------------

// The lines as one multilinestring (member order kept), or nil when there is none.
int32_t write_multiline(const std::vector<std::vector<_xgWKB_POINT>>& lines, byte** out);

// Set operation between two linestrings or multilinestrings: the lines are split where they
// meet within t and the pieces each operation keeps are joined back along their line; the
// result is a multilinestring, or nil when no piece is kept.  An intersection of lines without
// any common point sets *out to null.
int32_t line_line_kernel(gpc_op op, const byte* a, const byte* b, double t, byte** out);

// The pieces of a linestring or multilinestring inside or on a polygon or multipolygon
// (keep_inside), or outside it, as a multilinestring; nil when there is none.
int32_t line_polygon_kernel(const byte* line, const byte* polygon, bool keep_inside, double t, byte** out);

// ---- polygons (overlay_polygons.cpp) ------------------------------------------------------

// op between two polygons or multipolygons (empty operands as the exports document them; both
// empty sets *out to null).  Returns -66 when the clipper refuses the coordinates.
int32_t polygon_kernel(gpc_op op, const byte* a, const byte* b, byte** out);

// The three-way overlay of two polygons or multipolygons; all three outputs are written.
int32_t overlay_polygons(const byte* a, const byte* b, byte** only_a, byte** only_b, byte** common);

}  // namespace xg

#endif  // XGGEO_CONSTRUCT_OVERLAY_KERNELS_H
