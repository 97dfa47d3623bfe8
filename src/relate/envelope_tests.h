// envelope_tests.h - how vertices, segments and point runs stand to an axis-parallel rectangle.
//
// The building blocks of the envelope predicates: cheap box tests, a per-vertex edge test, an
// outcode clipper for segments, and the facts of a whole run gathered in one pass.  E is the
// rectangle (minx, miny, maxx, maxy), t the caller's tolerance.
#ifndef XGGEO_RELATE_ENVELOPE_TESTS_H
#define XGGEO_RELATE_ENVELOPE_TESTS_H

#include <cstdint>

#include "core/blob.h"
#include "relate/point_runs.h"

namespace xg {

// ---- vertices --------------------------------------------------------------------------------

// Strictly inside E by more than t on every side.
inline bool env_vertex_inside(const _xgWKB_POINT& v, const _xgWKB_BOX& e, double t) {
  return e.minx + t < v.x && v.x + t < e.maxx && e.miny + t < v.y && v.y + t < e.maxy;
}

// Outside E, exactly (t plays no part): a vertex on an edge is not outside.
inline bool env_vertex_outside(const _xgWKB_POINT& v, const _xgWKB_BOX& e) {
  return v.x < e.minx || v.x > e.maxx || v.y < e.miny || v.y > e.maxy;
}

enum EnvEdge : int { kEnvNoEdge = 0, kEnvLeft = 1, kEnvBottom = 2, kEnvRight = 3, kEnvTop = 4 };

// The edge v lies on: within t of the edge's line (strictly) and inside its span (exactly, so a
// vertex just beyond a corner is on no edge).  Tried left, right, bottom, top; the first holds.
int env_edge_of(const _xgWKB_POINT& v, const _xgWKB_BOX& e, double t);

// On the boundary of E within t: on some edge.
inline bool env_vertex_on_boundary(const _xgWKB_POINT& v, const _xgWKB_BOX& e, double t) {
  return env_edge_of(v, e, t) != kEnvNoEdge;
}

// The box b lies apart from E by more than t (tested above, below, right, left, in that order).
inline bool env_apart(const _xgWKB_BOX& b, const _xgWKB_BOX& e, double t) {
  return wkb_boxes_disjoint_tol(e, b, t) != 0;
}

// ---- segments ----------------------------------------------------------------------------

// Outcode of v with the fixed margin 0.0001 (not t): 1 left of E, else 2 right of it; 4 below,
// else 8 above.
uint32_t env_outcode(const _xgWKB_POINT& v, const _xgWKB_BOX& e);

// Cohen-Sutherland with env_outcode: moves an outside end onto the line of its first outside bit
// until both ends have code 0 (true: a-b is now the piece inside E grown by the margin) or both
// lie beyond one side (false).  Each move puts an end on an edge line, so a few moves settle it;
// a cap guards against coordinates that keep no order (NaN gets no code and cannot loop).
bool env_clip_segment(_xgWKB_POINT& a, _xgWKB_POINT& b, const _xgWKB_BOX& e);

// The segment lies along one edge: both ends on that same edge (env_edge_of's test for it).
bool env_segment_along_boundary(const _xgWKB_POINT& a, const _xgWKB_POINT& b, const _xgWKB_BOX& e,
                                double t);

// Some point of the segment lies strictly inside E by more than t.
bool env_segment_in_interior(const _xgWKB_POINT& a, const _xgWKB_POINT& b, const _xgWKB_BOX& e, double t);

// The segment comes closer than t to the boundary of E without reaching its interior (above).
bool env_segment_touches_boundary(const _xgWKB_POINT& a, const _xgWKB_POINT& b, const _xgWKB_BOX& e,
                                  double t);

// Classification of segment (a, b): 1 inside, 2 along the boundary, 0 outside, -1 passing
// through E (by the outcode clipper).
int env_classify_segment(_xgWKB_POINT a, _xgWKB_POINT b, const _xgWKB_BOX& e, double t);

// ---- runs ----------------------------------------------------------------------------------

// What one pass over a run (a linestring or a ring, as stored) finds.  When the run's box is
// apart from E only the vertex facts are gathered and the segment facts stay false.
struct EnvRunFacts {
  bool apart = false;           // the run's box is apart from E by more than t
  bool any_inside = false;      // a vertex strictly inside, or a segment reaching the interior
  bool any_on = false;          // a segment touching the boundary, passing through E or along it
  bool any_outside = false;     // a vertex outside, or a segment passing through E
  bool vertex_outside = false;  // a vertex outside
  bool vertex_on = false;       // a vertex on the boundary
  bool all_along = false;       // not apart, and every segment lies along the boundary
};

EnvRunFacts env_run_facts(const Span& run, const _xgWKB_BOX& e, double t);

// How a linestring stands to E: its run's facts and those of its ends.  The end facts hold only
// for a line that is not closed (ends equal within t; fewer than two points: not closed).
struct EnvLineStand {
  EnvRunFacts f;
  bool end_inside = false;   // an end strictly inside with the fixed 0.0001
  bool end_on = false;       // an end on the boundary within t
  bool end_outside = false;  // an end outside
};

EnvLineStand env_line_stand(const Span& run, const _xgWKB_BOX& e, double t);

// The linestring predicates, the box pre-test included.
bool env_line_disjoint(const EnvLineStand& s);
bool env_line_within(const EnvLineStand& s);
bool env_line_crossing(const EnvLineStand& s);
bool env_line_touching(const EnvLineStand& s);

}  // namespace xg

#endif  // XGGEO_RELATE_ENVELOPE_TESTS_H
