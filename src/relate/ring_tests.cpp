// ring_tests.cpp - a segment or a ring against a ring: leaving, entering, inside, overlapping,
// and the one-point touch of two closed lines.
//
// End points are located with the point-in-ring relation of the point primitives (0 outside,
// 1 inside, 2 on the boundary).  Between its end points a segment is judged by
//   crossing  - the ring's boundary passes from one side of the segment to the other inside it,
//               through the interior of an edge or through a chain of vertices on the segment;
//   stretches - the pieces of the segment between the ring vertices lying on it, each located
//               by its midpoint (a segment running along edges and over a notch shows it there).
// A ring carrying an edge index (ring_index.h) is searched through it; the answers are those of
// the plain walks.  Where the index shows a part of the other run to lie clear of the ring
// (ClearChunks), that part is settled by one located vertex, or none, instead of a walk.
#include <algorithm>
#include <cmath>
#include <limits>

#include "relate/planar.h"
#include "relate/ring_index.h"
#include "relate/segment_tests.h"

namespace xg {
namespace {

// Where q lies against the line of segment (a, b): +1 left, -1 right (farther than t), 0 on it.
int side_of(const _xgWKB_POINT& q, const _xgWKB_POINT& a, const _xgWKB_POINT& b, double t) {
  const double d = side_distance(q, a, b);
  return d > t ? 1 : (d < -t ? -1 : 0);
}

// q lies on segment (a, b) within t and farther than t from both of its ends.
bool inside_segment(const _xgWKB_POINT& q, const _xgWKB_POINT& a, const _xgWKB_POINT& b,
                    double len, double t) {
  if (!near_segment(q, a, b, t)) return false;
  const double along = dot3(a, b, q) / len;
  return along > t && along < len - t;
}

// segment_crosses_ring through the ring's index.  The walk's answer is whether some passage
// from one off-line vertex u to the next off-line vertex v fires; each passage is judged on its
// own, so it is enough to judge those that can fire.  A direct one (edge (u, v)) fires only
// when the edge truly crosses the segment, so its box meets the segment's; one through a chain
// fires only when the chain's first vertex lies near the segment, in the box of edge (u, c1).
// The index offers every edge whose box comes that near (see RingIndex::segment_margin), and
// each offered edge starting at an off-line vertex is followed like the walk would.
bool crossing_near(const _xgWKB_POINT& a, const _xgWKB_POINT& b, const Span& ring, double t,
                   double len, bool closed, uint32_t m, double margin) {
  auto next = [&](uint32_t i) { return closed ? (i + 1) % m : i + 1; };  // open: n past the end
  return ring.index->edges_near(segment_box(a, b), margin, [&](uint32_t j) {
    const _xgWKB_POINT& u = ring.p[j];
    const int su = side_of(u, a, b, t);
    if (su == 0) return false;
    uint32_t k = next(j);  // stored edge n - 2 of a closed ring ends at vertex 0 of the walk
    int sk = side_of(ring.p[k], a, b, t);
    if (sk != 0) {
      if (sk != -su) return false;
      const int sa = side_of(a, u, ring.p[k], t);
      const int sb = side_of(b, u, ring.p[k], t);
      return sa != 0 && sa == -sb;
    }
    while (sk == 0) {
      if (!inside_segment(ring.p[k], a, b, len, t)) return false;
      k = next(k);
      if (k == ring.n) return false;  // an open run ending on the line
      sk = side_of(ring.p[k], a, b, t);
    }
    return sk == -su;
  });
}

// The ring's boundary crosses segment (a, b) strictly between its end points.
bool segment_crosses_ring(const _xgWKB_POINT& a, const _xgWKB_POINT& b, const Span& ring, double t) {
  const double len = std::sqrt(dist2(a, b));
  if (len <= 2 * t || ring.n < 2) return false;
  // A closed ring is walked cyclically over its distinct vertices; an open run from end to end.
  const bool closed = ring.n > 2 && ring.p[0].x == ring.p[ring.n - 1].x &&
                      ring.p[0].y == ring.p[ring.n - 1].y;
  const uint32_t m = closed ? ring.n - 1 : ring.n;
  double margin = 0;
  if (ring.index && ring.index->ready(t) && ring.index->segment_margin(a, b, t, &margin)) {
    return crossing_near(a, b, ring, t, len, closed, m, margin);
  }
  uint32_t start = 0;
  if (closed) {
    while (start < m && side_of(ring.p[start], a, b, t) == 0) ++start;
    if (start == m) return false;  // the whole ring lies on the segment's line
  }
  int last_side = 0;          // side of the last vertex off the line
  uint32_t last_index = 0;    // and its index
  bool chain = false;         // vertices on the line since then
  bool chain_inside = true;   // all of them strictly inside the segment
  const uint32_t steps = closed ? m + 1 : m;
  for (uint32_t k = 0; k < steps; ++k) {
    const uint32_t i = closed ? (start + k) % m : k;
    const _xgWKB_POINT& v = ring.p[i];
    const int side = side_of(v, a, b, t);
    if (side == 0) {
      chain = true;
      chain_inside = chain_inside && inside_segment(v, a, b, len, t);
      continue;
    }
    if (last_side == -side) {
      if (chain) {
        if (chain_inside) return true;  // the boundary passes through the segment at a vertex
      } else {
        // An edge from one side to the other: it crosses the segment when a and b lie on
        // either side of the edge's line.
        const _xgWKB_POINT& u = ring.p[last_index];
        const int sa = side_of(a, u, v, t);
        const int sb = side_of(b, u, v, t);
        if (sa != 0 && sa == -sb) return true;
      }
    }
    last_side = side;
    last_index = i;
    chain = false;
    chain_inside = true;
  }
  return false;
}

// Some edge of the ring holds both a and b (point-on-segment within t, ends included).
bool edge_holds_both(const _xgWKB_POINT& a, const _xgWKB_POINT& b, const Span& ring, double t) {
  if (ring.index && ring.index->ready(t) && indexable(a)) {
    return ring.index->edges_at(a.y, [&](uint32_t j) {  // the edges that can hold a
      return segment_relation(a, ring.p[j], ring.p[j + 1], t) > 0 &&
             segment_relation(b, ring.p[j], ring.p[j + 1], t) > 0;
    });
  }
  for (uint32_t i = 1; i < ring.n; ++i) {
    if (segment_relation(a, ring.p[i - 1], ring.p[i], t) > 0 &&
        segment_relation(b, ring.p[i - 1], ring.p[i], t) > 0) {
      return true;
    }
  }
  return false;
}

// Locates the midpoints of the stretches of (a, b) between the ring vertices lying on it and
// returns true as soon as one has the relation wanted (0 outside, 1 inside).  Stretches no
// longer than t form no point.
bool some_stretch_is(const _xgWKB_POINT& a, const _xgWKB_POINT& b, const Span& ring, double t,
                     int32_t wanted) {
  const double len = std::sqrt(dist2(a, b));
  if (len <= t) return false;
  SmallVec<double, 16> cuts;
  cuts.push_back(0);
  cuts.push_back(1);
  auto cut_at = [&](uint32_t i) {
    if (near_segment(ring.p[i], a, b, t)) cuts.push_back(project(ring.p[i], a, b));
  };
  double margin = 0;
  if (ring.index && ring.index->ready(t) && ring.index->segment_margin(a, b, t, &margin)) {
    // Each vertex through the edge it starts (the last one through the last edge).  Sorting
    // makes the order they come in irrelevant.
    ring.index->edges_near(segment_box(a, b), margin, [&](uint32_t j) {
      cut_at(j);
      if (j + 2 == ring.n) cut_at(j + 1);
      return false;
    });
  } else {
    for (uint32_t i = 0; i < ring.n; ++i) cut_at(i);
  }
  std::sort(cuts.begin(), cuts.end());
  for (std::size_t k = 1; k < cuts.size(); ++k) {
    if ((cuts[k] - cuts[k - 1]) * len <= t) continue;
    const _xgWKB_POINT mid = lerp(a, b, 0.5 * (cuts[k - 1] + cuts[k]));
    if (ring_relation(mid, ring, t) == wanted) return true;
  }
  return false;
}

// segment_leaves_ring once the box test has passed and a and b are located (ra, rb).
int32_t leaves_located(const _xgWKB_POINT& a, const _xgWKB_POINT& b, const Span& ring, double t,
                       int32_t ra, int32_t rb) {
  if (ra == 0 || rb == 0 || segment_crosses_ring(a, b, ring, t)) return 1;
  if (ra == 1 || rb == 1) return 0;
  if (edge_holds_both(a, b, ring, t)) return 0;
  return some_stretch_is(a, b, ring, t, 0) ? 1 : 0;
}

// Consecutive segments of a run are taken in chunks of this many when a chunk's box can be shown
// to lie clear of an indexed ring's edges (see ClearChunks).
constexpr uint32_t kChunkSegments = 32;

// Splits a run into chunks of consecutive segments and tells, for each, whether its box lies
// clear of the indexed ring's edges (RingIndex::box_clear): the index offers no edge within t
// of the box, so that no segment of the chunk has its box within t of an edge's; and with
// points, none within the margin of the segment tests either, so that the crossing test of
// each segment is offered no edge and answers no (the plain walk answers the same: its
// passages fire only at edges that truly cross the segment or at vertices within t of it), and
// none within the point locator's reach: no vertex of the chunk lies on an edge, and every edge
// whose y-range holds a vertex's y lies wholly left or right of the box, beyond the reach where
// rounding could misjudge the side of its crossing.  In that case every vertex of the chunk has
// the same relation to the ring, 0 or 1, when the ring is closed exactly (last point equal to
// the first): the edges met by the horizontal band of the box form, right of it, pieces of the
// ring that enter and leave the band through its top or bottom, so the parity of those crossing
// the horizontal through a vertex, right of it, does not change within the band.
bool exactly_closed(const Span& ring) {
  return ring.n >= 2 && ring.p[0].x == ring.p[ring.n - 1].x && ring.p[0].y == ring.p[ring.n - 1].y;
}

class ClearChunks {
 public:
  // with_points: also require what the point locator needs (reach, exact closing).
  ClearChunks(const Span& run, const Span& ring, double t, bool with_points)
      : run_(run), ring_(ring), t_(t), with_points_(with_points) {
    usable_ = run.n >= 2 && t > 0 && ring.index != nullptr && (!with_points || exactly_closed(ring));
  }

  // The whole run lies clear.  Tried once, before the ring's index need be built: when it
  // answers yes, so does every chunk (a box inside a clear box is offered no edge either).
  bool whole() {
    if (whole_ == 0) whole_ = usable_ && clear_between(0, run_.n - 1) ? 1 : -1;
    return whole_ > 0;
  }

  // The chunk of segments [first, first + kChunkSegments), cut at the run's end, lies clear.
  bool clear(uint32_t first) {
    if (whole()) return true;
    if (!usable_ || !ring_.index->ready(t_)) return false;  // built after a few calls
    return clear_between(first, std::min(first + kChunkSegments, run_.n - 1));
  }

 private:
  // The points first..last lie clear.
  bool clear_between(uint32_t first, uint32_t last) const {
    _xgWKB_BOX box = empty_box();
    for (uint32_t i = first; i <= last; ++i) {
      if (!indexable(run_.p[i])) return false;
      box_add(&box, run_.p[i]);
    }
    return ring_.index->box_clear(box, t_, with_points_);
  }

  const Span& run_;
  const Span& ring_;
  double t_;
  bool with_points_;
  bool usable_ = false;
  int whole_ = 0;  // the whole run lies clear: 1, not: -1, not yet tried: 0
};

// Vertex relations to one ring, each computed once for the two segments that share the vertex.
class VertexRelations {
 public:
  VertexRelations(const Span& ring, double t) : ring_(ring), t_(t) {}

  int32_t at(const Span& run, uint32_t i) {
    if (i != index_) {
      index_ = i;
      value_ = ring_relation(run.p[i], ring_, t_);
    }
    return value_;
  }

 private:
  const Span& ring_;
  double t_;
  uint32_t index_ = UINT32_MAX;
  int32_t value_ = 0;
};

}  // namespace

int32_t segment_leaves_ring(const _xgWKB_POINT& a, const _xgWKB_POINT& b, const Span& ring, double t) {
  if (wkb_boxes_disjoint_tol(segment_box(a, b), ring.box, t)) return 1;
  return leaves_located(a, b, ring, t, ring_relation(a, ring, t), ring_relation(b, ring, t));
}

int32_t segment_enters_located(const _xgWKB_POINT& a, const _xgWKB_POINT& b, const Span& ring,
                               double t, int32_t ra, int32_t rb) {
  if (ra == 1 || rb == 1 || segment_crosses_ring(a, b, ring, t)) return 1;
  if (ra == 0 || rb == 0) return 0;
  if (edge_holds_both(a, b, ring, t)) return 0;
  return some_stretch_is(a, b, ring, t, 1) ? 1 : 0;
}

int32_t segment_enters_ring(const _xgWKB_POINT& a, const _xgWKB_POINT& b, const Span& ring, double t) {
  if (wkb_boxes_disjoint_tol(segment_box(a, b), ring.box, t)) return 0;
  const int32_t ra = ring_relation(a, ring, t);
  if (ra == 1) return 1;
  return segment_enters_located(a, b, ring, t, ra, ring_relation(b, ring, t));
}

int32_t ring_inside_ring(const Span& ring_a, const Span& ring_b, double t) {
  const IndexedSpan indexed(ring_b, t);
  const Span& ring = indexed.span();
  VertexRelations located(ring, t);
  ClearChunks chunks(ring_a, ring, t, true);
  // In a clear chunk all vertices share the first one's relation, 0 or 1, and no segment
  // crosses the ring: each segment leaves when it is 0 and stays when it is 1.  When the whole
  // run lies clear, one vertex is located for all, by a scan (the index answers the same), so
  // that a ring asked only this is not indexed for it.
  const int32_t whole = ring_a.n >= 2 && chunks.whole() ? ring.index->locate_by_scan(ring_a.p[0]) : 2;
  // Every segment then stays inside; with all the points (free of NaN: the clear test took
  // them) inside the ring's box, so do the segments' boxes, and the box test passes them all.
  const _xgWKB_BOX& rb = ring.box;
  if (whole == 1 && ring_a.box.minx >= rb.minx && ring_a.box.maxx <= rb.maxx &&
      ring_a.box.miny >= rb.miny && ring_a.box.maxy <= rb.maxy) {
    return 1;
  }
  for (uint32_t first = 0; first + 1 < ring_a.n; first += kChunkSegments) {
    const uint32_t end = std::min(first + kChunkSegments, ring_a.n - 1);
    const int32_t shared = whole != 2 ? whole : chunks.clear(first) ? located.at(ring_a, first) : 2;
    if (shared == 0) return 0;
    for (uint32_t i = first; i < end; ++i) {
      const _xgWKB_POINT& a = ring_a.p[i];
      const _xgWKB_POINT& b = ring_a.p[i + 1];
      if (wkb_boxes_disjoint_tol(segment_box(a, b), ring.box, t)) return 0;
      if (shared == 1) continue;
      const int32_t ra = located.at(ring_a, i);
      if (leaves_located(a, b, ring, t, ra, located.at(ring_a, i + 1))) return 0;
    }
  }
  return 1;
}

int32_t ring_overlaps_ring(const Span& ring_a, const Span& ring_b, double t) {
  if (ring_a.n == 0 || wkb_boxes_disjoint_tol(ring_a.box, ring_b.box, t)) return 0;
  if (ring_a.n == 1) return ring_relation(ring_a.p[0], ring_b, t) == 1 ? 1 : 0;
  const IndexedSpan indexed(ring_b, t);
  const Span& ring = indexed.span();
  if (ring.index != nullptr && t > 0 && exactly_closed(ring)) {
    // When the segments that meet the ring's box lie in a box clear of the ring (see
    // ClearChunks), their vertices share one relation to it, 0 or 1, and none crosses it: the
    // answer is whether that relation is "inside".  One vertex is located, by a scan.
    _xgWKB_BOX near = empty_box();
    uint32_t first = ring_a.n;
    bool indexable_all = true;
    for (uint32_t i = 0; i + 1 < ring_a.n; ++i) {
      if (wkb_boxes_disjoint_tol(segment_box(ring_a.p[i], ring_a.p[i + 1]), ring.box, t)) continue;
      if (first == ring_a.n) first = i;
      indexable_all = indexable_all && indexable(ring_a.p[i]) && indexable(ring_a.p[i + 1]);
      box_add(&near, ring_a.p[i]);
      box_add(&near, ring_a.p[i + 1]);
    }
    if (first == ring_a.n) return 0;  // no segment comes near
    if (indexable_all && ring.index->box_clear(near, t, true)) {
      return ring.index->locate_by_scan(ring_a.p[first]) == 1 ? 1 : 0;
    }
  }
  VertexRelations located(ring, t);
  for (uint32_t i = 0; i + 1 < ring_a.n; ++i) {
    const _xgWKB_POINT& a = ring_a.p[i];
    const _xgWKB_POINT& b = ring_a.p[i + 1];
    if (wkb_boxes_disjoint_tol(segment_box(a, b), ring.box, t)) continue;
    const int32_t ra = located.at(ring_a, i);
    if (ra == 1 || segment_enters_located(a, b, ring, t, ra, located.at(ring_a, i + 1))) return 1;
  }
  return 0;
}

// ---- blob forms --------------------------------------------------------------------------

int32_t segment_leaves_ring(const _xgWKB_POINT& a, const _xgWKB_POINT& b, const byte* ring, double t) {
  PointBuffer buf;
  return segment_leaves_ring(a, b, load_run(ring, buf), t);
}

int32_t segment_enters_ring(const _xgWKB_POINT& a, const _xgWKB_POINT& b, const byte* ring, double t) {
  PointBuffer buf;
  return segment_enters_ring(a, b, load_run(ring, buf), t);
}

int32_t ring_inside_ring(const byte* ring_a, const byte* ring_b, double t) {
  PointBuffer buf_a;
  PointBuffer buf_b;
  return ring_inside_ring(load_run(ring_a, buf_a), load_run(ring_b, buf_b), t);
}

int32_t ring_overlaps_ring(const byte* ring_a, const byte* ring_b, double t) {
  PointBuffer buf_a;
  PointBuffer buf_b;
  return ring_overlaps_ring(load_run(ring_a, buf_a), load_run(ring_b, buf_b), t);
}

int32_t run_disjoint_from_ring(const Span& run, const Span& ring, double t) {
  if (run.n < 2 || ring.n < 2 || !(t >= 0) || ring.index == nullptr) return runs_disjoint(run, ring, t);
  ClearChunks chunks(run, ring, t, false);
  if (chunks.whole()) return 1;  // checks the points as well
  if (!ring.index->ready(t)) return runs_disjoint(run, ring, t);
  for (uint32_t i = 0; i < run.n; ++i) {
    if (!indexable(run.p[i])) return runs_disjoint(run, ring, t);
  }
  if (wkb_boxes_disjoint_tol(run.box, ring.box, t)) return 1;
  // runs_disjoint asks whether some pair of segments meets; segment_meet answers 0 for every
  // pair whose boxes are apart by more than t, and the index offers every edge whose box comes
  // within t of the segment's (none for a chunk of segments clear of the ring).  The segments
  // are passed in the order runs_disjoint passes them.
  for (uint32_t i = 0; i + 1 < run.n; ++i) {
    if (i % kChunkSegments == 0 && chunks.clear(i)) {
      i += kChunkSegments - 1;
      continue;
    }
    const _xgWKB_POINT& a = run.p[i];
    const _xgWKB_POINT& b = run.p[i + 1];
    const _xgWKB_BOX box = segment_box(a, b);
    if (!boxes_meet(box, ring.box, t)) continue;
    const bool meet = ring.index->edges_near(box, t, [&](uint32_t j) {
      return segment_meet(a, b, ring.p[j], ring.p[j + 1], t, nullptr) != 0;
    });
    if (meet) return 0;
  }
  return 1;
}

namespace {

// Points outside this box lie on no vertex and no edge of the run: the run's box grown by the
// largest touch_margin of its edges (see reach_box), when the run holds no NaN and its
// coordinates are small enough (below 1e9) that the rounding of the grown box cannot bring a
// point outside it within t of a vertex.  Otherwise an infinite box, which rules nothing out.
_xgWKB_BOX locate_window(const Span& run, double t);

// True when no vertex of `run` (closing point left out) inside `window` can lie on `other`:
// they all lie in a box clear of it with points (RingIndex::box_clear), which keeps them beyond
// the reach of its edges.  False when that is not shown.
bool none_on(const Span& run, const _xgWKB_BOX& window, const Span& other, double t) {
  if (other.index == nullptr || !(t > 0)) return false;
  _xgWKB_BOX box = empty_box();
  bool any = false;
  for (uint32_t i = 0; i + 1 < run.n; ++i) {
    if (outside_box(run.p[i], window, 0)) continue;
    if (!indexable(run.p[i])) return false;
    box_add(&box, run.p[i]);
    any = true;
  }
  return !any || other.index->box_clear(box, t, true);
}

// The two closed lines a and b meet in exactly one point.  Only vertices are examined: edges
// crossing each other away from any vertex are no contact here.
int32_t closed_lines_touch(const Span& line_a, const Span& line_b, double t) {
  const IndexedSpan indexed_a(line_a, t);
  const IndexedSpan indexed_b(line_b, t);
  const Span& a = indexed_a.span();
  const Span& b = indexed_b.span();
  // Vertices outside the other line's window locate nowhere on it and are passed over.
  const _xgWKB_BOX window_a = locate_window(a, t);
  const _xgWKB_BOX window_b = locate_window(b, t);
  if (none_on(a, window_b, b, t) && none_on(b, window_a, a, t)) return 0;
  // Step 1: vertices of a (closing point left out) lying on b; at most one may.
  bool found = false;
  _xgWKB_POINT contact{};
  for (uint32_t i = 0; i + 1 < a.n; ++i) {
    if (outside_box(a.p[i], window_b, 0) || locate_on_run(a.p[i], b, t) == 0) continue;
    if (found) return 0;
    found = true;
    contact = a.p[i];
  }
  // Step 2: vertices of b lying on a must all be that same contact; with none found in step 1,
  // at most one may.
  for (uint32_t i = 0; i + 1 < b.n; ++i) {
    if (outside_box(b.p[i], window_a, 0) || locate_on_run(b.p[i], a, t) == 0) continue;
    if (found) {
      if (!wkb_point_equal_tol(b.p[i], contact, t)) return 0;
    } else {
      found = true;
      contact = b.p[i];
    }
  }
  return found ? 1 : 0;
}

bool run_is_closed(const Span& run, double t) {
  return run.n >= 2 && wkb_point_equal_tol(run.p[0], run.p[run.n - 1], t);
}

// The box of the run grown by the largest touch_margin of its edges: no vertex and no edge of
// the run relates to a point outside it.
_xgWKB_BOX reach_box(const Span& run, double t) {
  const double g = touch_margin(_xgWKB_POINT{run.box.minx, run.box.miny},
                                _xgWKB_POINT{run.box.maxx, run.box.maxy}, t);
  return _xgWKB_BOX{run.box.minx - g, run.box.miny - g, run.box.maxx + g, run.box.maxy + g};
}

_xgWKB_BOX locate_window(const Span& run, double t) {
  const double inf = std::numeric_limits<double>::infinity();
  const _xgWKB_BOX all{-inf, -inf, inf, inf};
  if (!(t >= 0 && t < 1)) return all;
  for (uint32_t i = 0; i < run.n; ++i) {
    const _xgWKB_POINT& p = run.p[i];
    if (!(std::fabs(p.x) < 1e9 && std::fabs(p.y) < 1e9)) return all;  // NaN fails as well
  }
  // A vertex v counts as p when |p.x - v.x| < t; outside the window p.x lies more than the
  // margin (t + 0.0001 at least) from v.x, less the rounding of the grown box (below 1e-7).
  return reach_box(run, t);
}

// The box of `of` lies wholly outside `reach`.
bool box_outside(const _xgWKB_BOX& of, const _xgWKB_BOX& reach) {
  return of.maxx < reach.minx || of.minx > reach.maxx || of.maxy < reach.miny || of.miny > reach.maxy;
}

}  // namespace

_xgWKB_BOX ring_reach_box(const Span& run, double t) { return reach_box(run, t); }

int32_t lines_touch(const Span& a, const Span& b, double t) {
  if (!run_is_closed(a, t) || !run_is_closed(b, t)) return 0;
  return closed_lines_touch(a, b, t);
}

bool lines_out_of_reach(const Span& a, const Span& b, double t) {
  // Each edge's margin is at most that of the whole box (the margin grows with the size), and
  // the rounding of both is monotone, so every edge's grown box lies within the run's.
  return box_outside(a.box, reach_box(b, t)) && box_outside(b.box, reach_box(a, t));
}

int32_t lines_touch(const byte* line_a, const byte* line_b, double t) {
  if (!wkb_line_is_closed_tol(line_a, t) || !wkb_line_is_closed_tol(line_b, t)) return 0;
  PointBuffer buf_a;
  PointBuffer buf_b;
  return closed_lines_touch(load_run(line_a + kHeaderSize, buf_a),
                            load_run(line_b + kHeaderSize, buf_b), t);
}

}  // namespace xg
