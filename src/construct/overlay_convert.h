// overlay_convert.h - between shape blobs and clipper polygons: the conversion of polygons and
// multipolygons into contours, the cleaning of clip results and the writing of a clip result
// as a multipolygon.  Shared by overlay, buffer and clipping.
#ifndef XGGEO_CONSTRUCT_OVERLAY_CONVERT_H
#define XGGEO_CONSTRUCT_OVERLAY_CONVERT_H

#include <cstdint>

#include "construct/gpc_adapter.h"
#include "core/blob.h"

namespace xg {

// Below this a vertex is collinear with its neighbours, and two hole vertices coincide.
constexpr double kCleanTolerance = 0.0001;

// True when every coordinate of a shape of type 1-6 is finite.
bool shape_coords_finite(const byte* shape);

// Appends the rings of a polygon (type 3) or of every member of a multipolygon (type 6) to out,
// in blob order: the first ring of each polygon flagged outer, the others holes, each contour
// without the ring's last point.  Other types append nothing.
void append_polygon_contours(const byte* shape, gpc_polygon* out);

// Drops contours of two vertices or fewer and removes every vertex whose nearer neighbour lies
// within kCleanTolerance of the line through it and its farther neighbour (walking each contour
// once, re-examining an index after a removal, while more than two vertices remain).
void clean_clip_result(gpc_polygon* p);

// Writes a cleaned clip result as a new blob (blob_alloc) in *out:
//  - no contour: the nil shape;
//  - holes only: an empty multipolygon;
//  - one outer contour: a multipolygon of one polygon, the outer ring first and every other
//    contour as a hole (near-duplicate hole vertices removed; the block keeps the size computed
//    before that removal, zero-filled at its end);
//  - several outer contours: one polygon per outer ring, smallest area first, each given the
//    unused holes (smallest first) that its outer ring holds: no vertex outside the ring and at
//    least one strictly inside (point-in-ring test, tolerance kCleanTolerance), so that a hole
//    touching its ring at a vertex stays; holes no ring holds are dropped.
// Rings are closed by repeating their first vertex.  Returns 0, or XGWKB_E_FAILED when memory
// runs out (nothing stored).  Throws std::bad_alloc from its working vectors.
int32_t contours_to_shape(const gpc_polygon& p, byte** out);

}  // namespace xg

#endif  // XGGEO_CONSTRUCT_OVERLAY_CONVERT_H
