// buffer.h - the region within a distance of a shape, built from circles around the vertices and
// rectangles around the segments, united through the clipper adapter.
#ifndef XGGEO_CONSTRUCT_BUFFER_H
#define XGGEO_CONSTRUCT_BUFFER_H

#include <cstdint>

#include "construct/gpc_adapter.h"
#include "core/blob.h"

namespace xg {

// Sides of every buffer circle; the circle block is a multipolygon of one ring of 41 points.
constexpr int kCircleSides = 40;
constexpr std::size_t kCircleBlockSize = 2 * kCountedHeaderSize + kCountSize + (kCircleSides + 1) * kCoordSize;

// The 40 vertices of the circle around c with radius d, counter-clockwise from (c.x + d, c.y):
// vertex i is (d, 0) turned by i * 2pi / 40, where 2pi and 40 are single-precision constants.
void circle_vertices(const _xgWKB_POINT& c, double d, gpc_vertex* out);

// Buffer of a shape of type 1-6 whose members and coordinates the caller has checked, with
// distance d (finite) and minimum radius m.  A point gives the circle block (null stored when
// d < m); the other types give a multipolygon (or nil for an empty region), or leave *out
// unwritten when the radius is below m or a polygon has no ring.  Returns 0, or -66 / -1 from
// the adapter and the writers; may throw std::bad_alloc.
int32_t buffer_shape(const byte* shape, double d, double m, byte** out);

}  // namespace xg

#endif  // XGGEO_CONSTRUCT_BUFFER_H
