// envelope_tests.cpp - vertices, segments and runs against an axis-parallel rectangle.
#include "relate/envelope_tests.h"

#include <cmath>

#include "relate/planar.h"

namespace xg {

namespace {

// v within t of the edge's line and inside the edge's span (exact range test).
bool on_edge(const _xgWKB_POINT& v, const _xgWKB_BOX& e, double t, int edge) {
  switch (edge) {
    case kEnvLeft:
      return std::fabs(v.x - e.minx) < t && e.miny <= v.y && v.y <= e.maxy;
    case kEnvRight:
      return std::fabs(v.x - e.maxx) < t && e.miny <= v.y && v.y <= e.maxy;
    case kEnvBottom:
      return std::fabs(v.y - e.miny) < t && e.minx <= v.x && v.x <= e.maxx;
    case kEnvTop:
      return std::fabs(v.y - e.maxy) < t && e.minx <= v.x && v.x <= e.maxx;
    default:
      return false;
  }
}

constexpr int kEdgeOrder[] = {kEnvLeft, kEnvRight, kEnvBottom, kEnvTop};

constexpr uint32_t kOutLeft = 1, kOutRight = 2, kOutBelow = 4, kOutAbove = 8;

// Each end of a segment moves at most twice (once per axis) in exact arithmetic; rounding with
// huge coordinates could keep an end from settling, so the clipper gives up after this many
// moves and calls the segment outside.
constexpr int kMaxClipMoves = 8;

bool segment_apart(const _xgWKB_POINT& a, const _xgWKB_POINT& b, const _xgWKB_BOX& e, double t) {
  return env_apart(segment_box(a, b), e, t);
}

// Squared distance between segments (a, b) and (c, d): 0 when they cross, else the least
// distance from an end of one to the other.
double segments_dist2(const _xgWKB_POINT& a, const _xgWKB_POINT& b, const _xgWKB_POINT& c,
                      const _xgWKB_POINT& d) {
  const double d1 = cross3(c, d, a), d2 = cross3(c, d, b);
  const double d3 = cross3(a, b, c), d4 = cross3(a, b, d);
  if (((d1 > 0 && d2 < 0) || (d1 < 0 && d2 > 0)) && ((d3 > 0 && d4 < 0) || (d3 < 0 && d4 > 0))) return 0;
  double best = segment_dist2(a, c, d);
  const double others[] = {segment_dist2(b, c, d), segment_dist2(c, a, b), segment_dist2(d, a, b)};
  for (double v : others) {
    if (v < best) best = v;
  }
  return best;
}

}  // namespace

int env_edge_of(const _xgWKB_POINT& v, const _xgWKB_BOX& e, double t) {
  for (int edge : kEdgeOrder) {
    if (on_edge(v, e, t, edge)) return edge;
  }
  return kEnvNoEdge;
}

uint32_t env_outcode(const _xgWKB_POINT& v, const _xgWKB_BOX& e) {
  // The fixed margin, not t: intended, the clipper ignores the caller's tolerance.
  uint32_t code = 0;
  if (v.x + kFixedTolerance < e.minx) {
    code |= kOutLeft;
  } else if (e.maxx + kFixedTolerance < v.x) {
    code |= kOutRight;
  }
  if (v.y + kFixedTolerance < e.miny) {
    code |= kOutBelow;
  } else if (e.maxy + kFixedTolerance < v.y) {
    code |= kOutAbove;
  }
  return code;
}

bool env_segment_along_boundary(const _xgWKB_POINT& a, const _xgWKB_POINT& b, const _xgWKB_BOX& e,
                                double t) {
  if (segment_apart(a, b, e, t)) return false;
  for (int edge : kEdgeOrder) {
    if (on_edge(a, e, t, edge) && on_edge(b, e, t, edge)) return true;
  }
  return false;
}

bool env_segment_in_interior(const _xgWKB_POINT& a, const _xgWKB_POINT& b, const _xgWKB_BOX& e, double t) {
  if (segment_apart(a, b, e, t)) return false;
  // The points a + u (b - a), u in [0, 1], for which all four strict inequalities of the inside
  // test hold form an interval (lo, hi) cut from [0, 1]; the segment reaches the interior when
  // it is not empty.  Each inequality reads c0 + c1 u > 0; where c1 is 0 it holds everywhere
  // or nowhere.
  const double c0[] = {a.x - (e.minx + t), (e.maxx - t) - a.x, a.y - (e.miny + t), (e.maxy - t) - a.y};
  const double c1[] = {b.x - a.x, a.x - b.x, b.y - a.y, a.y - b.y};
  double lo = 0, hi = 1;
  for (int i = 0; i < 4; ++i) {
    if (c1[i] > 0 || c1[i] < 0) {
      const double u = -c0[i] / c1[i];
      if (std::isnan(u)) return false;
      if (c1[i] > 0 && u > lo) lo = u;
      if (c1[i] < 0 && u < hi) hi = u;
    } else if (!(c1[i] == 0 && c0[i] > 0)) {
      return false;  // fails along the whole segment, or NaN
    }
  }
  return lo < hi;
}

bool env_segment_touches_boundary(const _xgWKB_POINT& a, const _xgWKB_POINT& b, const _xgWKB_BOX& e,
                                  double t) {
  if (!(t > 0) || segment_apart(a, b, e, t)) return false;
  if (env_segment_in_interior(a, b, e, t)) return false;
  const _xgWKB_POINT c[] = {{e.minx, e.miny}, {e.minx, e.maxy}, {e.maxx, e.maxy}, {e.maxx, e.miny}};
  const double t2 = t * t;
  for (int i = 0; i < 4; ++i) {
    if (segments_dist2(a, b, c[i], c[(i + 1) % 4]) < t2) return true;
  }
  return false;
}

int env_classify_segment(_xgWKB_POINT a, _xgWKB_POINT b, const _xgWKB_BOX& e, double t) {
  const bool a_inside = env_vertex_inside(a, e, t);
  const bool b_inside = env_vertex_inside(b, e, t);
  if (a_inside && b_inside) return 1;
  if (env_segment_along_boundary(a, b, e, t)) return 2;
  const bool a_on = env_vertex_on_boundary(a, e, t);
  const bool b_on = env_vertex_on_boundary(b, e, t);
  if (a_on && b_on) return 1;
  if ((a_on && b_inside) || (b_on && a_inside)) return 1;
  // The segment passes through E when the outcode clipper keeps a piece of it.
  return env_clip_segment(a, b, e) ? -1 : 0;
}

bool env_clip_segment(_xgWKB_POINT& a, _xgWKB_POINT& b, const _xgWKB_BOX& e) {
  uint32_t ca = env_outcode(a, e);
  uint32_t cb = env_outcode(b, e);
  for (int moves = 0; (ca | cb) != 0; ++moves) {
    if ((ca & cb) != 0 || moves == kMaxClipMoves) return false;
    const bool move_a = ca != 0;
    const uint32_t code = move_a ? ca : cb;
    // Each move is taken from the segment as it stands (both ends, possibly moved already).
    _xgWKB_POINT at;
    if (code & kOutLeft) {
      at = {e.minx, a.y + (b.y - a.y) * (e.minx - a.x) / (b.x - a.x)};
    } else if (code & kOutRight) {
      at = {e.maxx, a.y + (b.y - a.y) * (e.maxx - a.x) / (b.x - a.x)};
    } else if (code & kOutBelow) {
      at = {a.x + (b.x - a.x) * (e.miny - a.y) / (b.y - a.y), e.miny};
    } else {
      at = {a.x + (b.x - a.x) * (e.maxy - a.y) / (b.y - a.y), e.maxy};
    }
    if (move_a) {
      a = at;
      ca = env_outcode(a, e);
    } else {
      b = at;
      cb = env_outcode(b, e);
    }
  }
  return true;
}

EnvRunFacts env_run_facts(const Span& run, const _xgWKB_BOX& e, double t) {
  EnvRunFacts f;
  f.apart = env_apart(run.box, e, t);
  for (uint32_t i = 0; i < run.n; ++i) {
    const _xgWKB_POINT& v = run.p[i];
    if (env_vertex_inside(v, e, t)) f.any_inside = true;
    if (env_vertex_outside(v, e)) f.vertex_outside = true;
    if (!f.vertex_on && env_vertex_on_boundary(v, e, t)) f.vertex_on = true;
  }
  f.any_outside = f.vertex_outside;
  if (f.apart) return f;
  f.all_along = true;
  // A segment apart from E by more than both t and the clipping margin is outside: no vertex of
  // it is inside or on an edge (even with a negative t, which grows the inside test), the
  // clipper finds a side both ends share, and every segment test fails its pre-test.
  const double far = std::fabs(t) > kFixedTolerance ? std::fabs(t) : kFixedTolerance;
  for (uint32_t i = 1; i < run.n; ++i) {
    const _xgWKB_POINT& a = run.p[i - 1];
    const _xgWKB_POINT& b = run.p[i];
    if (env_apart(segment_box(a, b), e, far)) {
      f.all_along = false;
      continue;
    }
    if (!f.any_on || !f.any_outside) {
      const int c = env_classify_segment(a, b, e, t);
      if (c == -1) f.any_on = f.any_outside = true;
      if (c == 2) f.any_on = true;
    }
    if (!f.any_inside && env_segment_in_interior(a, b, e, t)) f.any_inside = true;
    if (!f.any_on && env_segment_touches_boundary(a, b, e, t)) f.any_on = true;
    if (f.all_along && !env_segment_along_boundary(a, b, e, t)) f.all_along = false;
  }
  return f;
}

EnvLineStand env_line_stand(const Span& run, const _xgWKB_BOX& e, double t) {
  EnvLineStand s;
  s.f = env_run_facts(run, e, t);
  const bool closed = run.n >= 2 && wkb_point_equal_tol(run.p[0], run.p[run.n - 1], t);
  if (closed || run.n == 0) return s;
  for (const _xgWKB_POINT& end : {run.p[0], run.p[run.n - 1]}) {
    if (env_vertex_inside(end, e, kFixedTolerance)) s.end_inside = true;  // fixed, not t: intended
    if (env_vertex_on_boundary(end, e, t)) s.end_on = true;
    if (env_vertex_outside(end, e)) s.end_outside = true;
  }
  return s;
}

bool env_line_disjoint(const EnvLineStand& s) {
  if (s.f.apart) return true;
  return !(s.f.any_inside || s.end_inside || s.f.any_on || s.end_on);
}

bool env_line_within(const EnvLineStand& s) {
  return !s.f.apart && s.f.any_inside && !s.f.any_outside && !s.end_outside;
}

bool env_line_crossing(const EnvLineStand& s) { return !s.f.apart && s.f.any_inside && s.f.any_on; }

bool env_line_touching(const EnvLineStand& s) {
  return !s.f.apart && !s.f.any_inside && (s.f.any_on || s.end_on);
}

}  // namespace xg
