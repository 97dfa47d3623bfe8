// point_kernels.h - the relation kernels whose first shape is a point or a multipoint.
//
// The single-point kernels against a linestring and a polygon follow the point primitives to
// the letter (locate on a run, point-in-ring with holes).  Multipoints, and a point against a
// multi-type, take each point's location in the other shape from the same primitives:
//   point / multipoint  - equal within t: interior, else exterior;
//   linestring          - off it: exterior; on an end of an open line: boundary; else interior;
//   multilinestring     - on some member; boundary when it is an end of an odd number of open
//                         members, interior otherwise;
//   polygon             - outside (point_outside_polygon): exterior; within: interior; else
//                         boundary;
//   multipolygon        - interior of some member, else boundary of some member, else exterior.
// A multipoint is then disjoint when no point meets the other shape, within when none lies
// outside and one lies inside, touching when none lies inside and one on the boundary, and
// crossing when one lies inside and one outside.
#ifndef XGGEO_RELATE_POINT_KERNELS_H
#define XGGEO_RELATE_POINT_KERNELS_H

#include <cstdint>

#include "core/blob.h"

namespace xg {

// Point against point.
int32_t pt_pt_disjoint(const byte* a, const byte* b, double t);

// Point against linestring.
int32_t pt_ln_disjoint(const byte* point, const byte* line, double t);
int32_t pt_ln_within(const byte* point, const byte* line, double t);
int32_t pt_ln_touching(const byte* point, const byte* line, double t);

// Point against polygon.
int32_t pt_pg_disjoint(const byte* point, const byte* polygon, double t);
int32_t pt_pg_within(const byte* point, const byte* polygon, double t);
int32_t pt_pg_touching(const byte* point, const byte* polygon, double t);

// A point or multipoint against any shape of types 1-6, from the points' locations.
int32_t points_disjoint(const byte* points, const byte* other, double t);
int32_t points_within(const byte* points, const byte* other, double t);
int32_t points_touching(const byte* points, const byte* other, double t);
int32_t points_crossing(const byte* points, const byte* other, double t);

// Two multipoints overlap when each has a point the other lacks and they share one.
int32_t multipoints_overlapping(const byte* a, const byte* b, double t);

}  // namespace xg

#endif  // XGGEO_RELATE_POINT_KERNELS_H
