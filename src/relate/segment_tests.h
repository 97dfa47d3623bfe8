// segment_tests.h - the segment and ring tests shared by the relation predicates, shape
// construction, validation and distance.
//
// Operands are read only.  A "run" is a counted point run (u32 n then n points: a polygon ring,
// or a linestring body at line + 5); a "line" is a whole linestring blob; a "polygon" a whole
// polygon blob.  Every test takes the tolerance t of its caller.  Yes/no answers are 1/0.
#ifndef XGGEO_RELATE_SEGMENT_TESTS_H
#define XGGEO_RELATE_SEGMENT_TESTS_H

#include <cstdint>

#include "core/blob.h"
#include "relate/point_runs.h"

namespace xg {

// Meeting of segment (a1, a2) with segment (b1, b2), computed in the frame of the first segment.
// 0: no meeting; 1: one meeting point, returned as a new 21-byte point blob through *point
// (caller frees; point may be null when the caller does not want it); 2: overlap along a
// stretch, *point set to null.
int32_t segment_intersection(const _xgWKB_POINT& a1, const _xgWKB_POINT& a2,
                             const _xgWKB_POINT& b1, const _xgWKB_POINT& b2, byte** point,
                             double t);

// 1 when the linestring does not cross itself (two non-adjacent segments meeting in one point;
// the first and last segment may meet at the closing point).  With crossings non-null, every
// meeting point is collected and, when there is any, a new multipoint block is handed back.
int32_t line_is_simple(const byte* line, double t, byte** crossings);

// 1 when no member of the multilinestring crosses itself and no two members meet.
int32_t multiline_is_simple(const byte* multiline, double t);

// 1 when segment (a, b) leaves the ring, 0 when it stays inside or on it.
int32_t segment_leaves_ring(const _xgWKB_POINT& a, const _xgWKB_POINT& b, const byte* ring, double t);

// 1 when every segment of ring a lies inside ring b (a run of fewer than two points: 1).
int32_t ring_inside_ring(const byte* ring_a, const byte* ring_b, double t);

// 1 when the two runs have no point in common.
int32_t runs_disjoint(const byte* run_a, const byte* run_b, double t);

// 1 when two closed linestrings meet in exactly one point.
int32_t lines_touch(const byte* line_a, const byte* line_b, double t);

// 1 when segment (a, b) reaches the interior of the ring.
int32_t segment_enters_ring(const _xgWKB_POINT& a, const _xgWKB_POINT& b, const byte* ring, double t);

// 1 when ring a lies partly inside ring b (callers test both orders).
int32_t ring_overlaps_ring(const byte* ring_a, const byte* ring_b, double t);

// 1 when some vertex or segment of the ring reaches the polygon's interior.
int32_t ring_reaches_polygon(const byte* ring, const byte* polygon, double t);

// 1 when p lies in the polygon's interior (inside the outer ring, in no hole, on no boundary).
int32_t point_within_polygon(const _xgWKB_POINT& p, const byte* polygon, double t);

// 1 when p lies outside the polygon (outside the outer ring or strictly inside a hole).
int32_t point_outside_polygon(const _xgWKB_POINT& p, const byte* polygon, double t);

// 1 when the interiors of the two polygons share an area.
int32_t polygons_overlap(const byte* polygon_a, const byte* polygon_b, double t);

// 1 when a segment of one multilinestring crosses a segment of the other.
int32_t multilines_cross(const byte* multiline_a, const byte* multiline_b, double t);

// 1 when the two polygons have no point in common.
int32_t polygons_disjoint(const byte* polygon_a, const byte* polygon_b, double t);

// ---- array forms ----------------------------------------------------------------------------
// The same tests on runs and polygons already unpacked into aligned points (point_runs.h), for
// callers that test one shape many times.  The blob forms above unpack and call these.

// segment_intersection without the allocation: the meeting point (result 1) goes to *at.
int32_t segment_meet(const _xgWKB_POINT& a1, const _xgWKB_POINT& a2, const _xgWKB_POINT& b1,
                     const _xgWKB_POINT& b2, double t, _xgWKB_POINT* at);

// 1 when the run does not cross itself (line_is_simple without collecting).
int32_t run_is_simple(const Span& run, double t);

int32_t segment_leaves_ring(const _xgWKB_POINT& a, const _xgWKB_POINT& b, const Span& ring, double t);
int32_t ring_inside_ring(const Span& ring_a, const Span& ring_b, double t);
int32_t runs_disjoint(const Span& run_a, const Span& run_b, double t);
int32_t segment_enters_ring(const _xgWKB_POINT& a, const _xgWKB_POINT& b, const Span& ring, double t);
int32_t ring_overlaps_ring(const Span& ring_a, const Span& ring_b, double t);

// segment_enters_ring for a segment whose box meets the ring's (within t), with a and b already
// located against the ring (ra, rb: their ring_relation).
int32_t segment_enters_located(const _xgWKB_POINT& a, const _xgWKB_POINT& b, const Span& ring,
                               double t, int32_t ra, int32_t rb);

// lines_touch on two runs (closed when their ends are equal within t).
int32_t lines_touch(const Span& a, const Span& b, double t);

// True when no vertex of either run can lie on the other, judged from their boxes alone, so
// that lines_touch answers 0.  The runs must hold no NaN coordinate (a box does not show one).
bool lines_out_of_reach(const Span& a, const Span& b, double t);

// runs_disjoint(run, ring, t), answered through the ring's edge index when it carries a built
// one (the answer is the same).
int32_t run_disjoint_from_ring(const Span& run, const Span& ring, double t);

// The run's box grown by the largest touch_margin of its edges: for a run free of NaN, no vertex
// or edge of it relates to a point outside (lines_out_of_reach compares these boxes).
_xgWKB_BOX ring_reach_box(const Span& run, double t);

// 1 when segment (a, b) reaches the polygon's interior: it enters the outer ring and does not
// stay inside (or on) one hole.
int32_t segment_enters_polygon(const _xgWKB_POINT& a, const _xgWKB_POINT& b, const PolySpans& polygon,
                               double t);
int32_t ring_reaches_polygon(const Span& ring, const PolySpans& polygon, double t);
int32_t point_within_polygon(const _xgWKB_POINT& p, const PolySpans& polygon, double t);
int32_t point_outside_polygon(const _xgWKB_POINT& p, const PolySpans& polygon, double t);
int32_t polygons_overlap(const PolySpans& polygon_a, const PolySpans& polygon_b, double t);
int32_t polygons_disjoint(const PolySpans& polygon_a, const PolySpans& polygon_b, double t);

}  // namespace xg

#endif  // XGGEO_RELATE_SEGMENT_TESTS_H
