// convex_hull.h - the gift-wrapping walk behind xgWKB_shape_generate_convex_hull, and the
// pre-filter that spares it the points that can play no part in it.
#ifndef XGGEO_CONSTRUCT_CONVEX_HULL_H
#define XGGEO_CONSTRUCT_CONVEX_HULL_H

#include <cstddef>
#include <vector>

#include "core/blob.h"

namespace xg {

// The walk over pts[0..n-1] (n >= 1): starts at the first point of smallest x and repeatedly
// takes, in input order, the first candidate that has no other point to its right (cross
// product below -t*t) and no collinear point (|cross| < t*t) beyond it (dot below t*t); points
// coinciding within 0.0001 with the current point or the candidate are not consulted.  Returns
// the list of points taken, ending with the one that coincides with the start again.  Stops
// early when no candidate is accepted, and when it takes a point (by index) a second time: such
// a walk would go round for ever without coming back to its start (a start in the middle of a
// straight run of the hull can cause it).  Quadratic per hull point.
std::vector<_xgWKB_POINT> gift_wrap(const _xgWKB_POINT* pts, std::size_t n, double t);

// One step of the walk from pts[h] by the plain double loop: the index of the accepted
// candidate, or n.  *hint is a point to ask first (n for none), updated to the last rejecting
// point; t2 is t * t.
std::size_t gift_wrap_step(const _xgWKB_POINT* pts, std::size_t n, std::size_t h, double t2, std::size_t* hint);

// gift_wrap's list found with a point index (hull_walk_index.cpp): each step asks only the
// candidates that the next vertex of a sorted hull does not reject, and only the points that
// can reject them.
std::vector<_xgWKB_POINT> gift_wrap_indexed(const _xgWKB_POINT* pts, std::size_t n, double t);

// The points of pts[0..n-1], in input order, less those that lie deep inside the polygon of the
// extreme points (see convex_hull.cpp): gift_wrap gives the same list on the result as on the
// whole set.
std::vector<_xgWKB_POINT> hull_candidates(const _xgWKB_POINT* pts, std::size_t n, double t);

// gift_wrap_indexed on hull_candidates: gift_wrap's list, at a fraction of the cost.
std::vector<_xgWKB_POINT> convex_hull_list(const _xgWKB_POINT* pts, std::size_t n, double t);

}  // namespace xg

#endif  // XGGEO_CONSTRUCT_CONVEX_HULL_H
