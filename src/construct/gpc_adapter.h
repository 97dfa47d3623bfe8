// gpc_adapter.h - the polygon clipper of the library: Boolean operations on sets of contours
// with even-odd fill.
//
// This is the one place that talks to the integer clipping engine (Clipper 6.4).  Callers work
// on gpc_polygon records (contours of double vertices with hole flags) and never see the engine.
//
// Coordinates travel to the engine's 64-bit integers on a grid chosen per call from the extent
// of both operands, per axis: the grid is origin + i * 2^-shift with origin the axis minimum and
// the largest shift that keeps every i below 2^62.  A double that lies on the grid converts
// exactly and comes back as the same double; other doubles round to the nearest grid point, so
// every bit that fits in 62 is kept.  Result vertices come back as the doubles nearest to their
// grid points.
#ifndef XGGEO_CONSTRUCT_GPC_ADAPTER_H
#define XGGEO_CONSTRUCT_GPC_ADAPTER_H

#include <cstdint>
#include <vector>

#include "xggeokit.h"

namespace xg {

// A vertex: x then y, the library's point structure (so contours can be handed to the point
// and ring tests without copying).
using gpc_vertex = _xgWKB_POINT;

// One contour: its vertices, without a repeated closing vertex.
struct gpc_vertex_list {
  std::vector<gpc_vertex> vertex;

  int num_vertices() const { return static_cast<int>(vertex.size()); }
};

// A set of contours, each with a hole flag (0 outer, 1 hole).  Clip operations read every
// contour with even-odd fill; the flags of an operand are carried along but not used.  Results
// flag each contour: outer contours turn counter-clockwise, holes clockwise.
struct gpc_polygon {
  std::vector<gpc_vertex_list> contour;
  std::vector<int> hole;  // one flag per contour

  int num_contours() const { return static_cast<int>(contour.size()); }
  void add_contour(std::vector<gpc_vertex> vertices, int hole_flag) {
    contour.push_back(gpc_vertex_list{std::move(vertices)});
    hole.push_back(hole_flag);
  }
};

// Operation codes: the library's operation selector uses the same numbers.
enum gpc_op { GPC_DIFF = 0, GPC_INT = 1, GPC_XOR = 2, GPC_UNION = 3 };

// result = subject op clip (difference: subject minus clip).  Contours of fewer than three
// distinct vertices contribute nothing.  Returns 0, or XGWKB_E_INVALID_ARGUMENT (-66) when a
// coordinate is NaN or infinite or an extent does not fit in a double (result left empty).
// result's previous contents are dropped.  Throws std::bad_alloc when memory runs out.
int32_t gpc_polygon_clip(gpc_op op, const gpc_polygon& subject, const gpc_polygon& clip, gpc_polygon* result);

// The three parts of one overlay: common = subject and clip, subject_only = subject minus clip,
// clip_only = clip minus subject.  The three are computed on the same integer grid from the
// same converted contours (the common part and the symmetric difference by one engine, whose
// rings are then sorted into the two one-sided parts), so their regions are disjoint and
// together make the union.  Same returns as gpc_polygon_clip.
int32_t three_way_polygon_clip(const gpc_polygon& subject, const gpc_polygon& clip, gpc_polygon* common,
                               gpc_polygon* subject_only, gpc_polygon* clip_only);

// The union of the regions the contours enclose, by winding: a point belongs to the result when
// the sum of the contours' winding numbers around it is positive.  Give outer contours
// counter-clockwise and holes clockwise (the form of clip results, so earlier results can be fed
// back in): the result is then every point some contour's region covers, however the regions
// overlap, in one sweep of the engine instead of one union per contour.  Hole flags are not read.
// Same returns as gpc_polygon_clip.
int32_t gpc_union_winding(const gpc_polygon& contours, gpc_polygon* result);

// Releases the contours of p (p itself belongs to the caller and may be reused).
void gpc_free_polygon(gpc_polygon* p);

// ---- the integer grid (exposed for its tests) ---------------------------------------------

// One axis of the grid: value = origin + i * 2^-shift.
struct GridAxis {
  double origin = 0;
  int shift = 0;

  // Fits the axis to [lo, hi] (lo <= hi, both finite); false when hi - lo overflows.
  bool fit(double lo, double hi);
  // The grid index nearest to v (v within the fitted range).
  int64_t to_int(double v) const;
  // The double nearest to grid point i; exact when the grid point is a double.
  double to_double(int64_t i) const;
};

}  // namespace xg

#endif  // XGGEO_CONSTRUCT_GPC_ADAPTER_H
