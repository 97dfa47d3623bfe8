// relate_operand.cpp - the operands of the relation walk: loading a lineal or areal shape and
// locating points on it.
#include "relate/relation_facts.h"

#include <algorithm>
#include <cmath>

#include "relate/planar.h"

namespace xg {

bool RelateOperand::load(const byte* shape, double t, bool indexed) {
  const uint32_t type = shape_type(shape);
  if (type == XGWKB_TYPE_LINESTRING || type == XGWKB_TYPE_MULTILINESTRING) {
    dim_ = 1;
  } else if (type == XGWKB_TYPE_POLYGON || type == XGWKB_TYPE_MULTIPOLYGON) {
    dim_ = 2;
  } else {
    return false;
  }
  if (!runs_.load(shape, dim_ == 2, true)) return false;
  ends_.clear();
  left_.clear();
  indexes_.clear();
  if (indexed) {
    bool any = false;
    for (uint32_t r = 0; r < runs_.run_count(); ++r) any = any || runs_.run(r).n > kPlainRingPoints;
    if (any) {
      indexes_ = std::vector<RingIndex>(runs_.run_count());
      for (uint32_t r = 0; r < runs_.run_count(); ++r) indexes_[r].prepare(runs_.run(r), t);
    }
  }

  if (dim_ == 1) {
    // End points of open members; a point where an even number of ends meet is interior.
    SmallVec<_xgWKB_POINT, 8> all;
    for (uint32_t r = 0; r < runs_.run_count(); ++r) {
      const Span& run = runs_.run(r);
      if (run.n == 0) continue;
      const bool closed = run.n >= 2 && wkb_point_equal_tol(run.p[0], run.p[run.n - 1], t);
      if (closed) continue;
      all.push_back(run.p[0]);
      all.push_back(run.p[run.n - 1]);
    }
    for (std::size_t i = 0; i < all.size(); ++i) {
      std::size_t same = 0;
      for (const _xgWKB_POINT& q : all) same += wkb_point_equal_tol(all[i], q, t);
      if (same % 2 == 0) continue;
      bool listed = false;
      for (const _xgWKB_POINT& q : ends_) listed = listed || wkb_point_equal_tol(all[i], q, t);
      if (!listed) ends_.push_back(all[i]);
    }
  } else {
    // The interior lies left of an outer ring running counter-clockwise and of a hole running
    // clockwise.
    for (uint32_t part = 0; part < runs_.part_count(); ++part) {
      const ShapeRuns::Part& pr = runs_.part(part);
      for (uint32_t k = 0; k < pr.runs; ++k) {
        const Span& ring = runs_.run(pr.first_run + k);
        const bool ccw = twice_area(ring.p, ring.n) > 0;
        left_.push_back(ccw != (k > 0) ? 1 : 0);
      }
    }
  }
  return true;
}

Loc RelateOperand::locate(const _xgWKB_POINT& p, double t, EdgeHit* hit) const {
  return dim_ == 1 ? locate_lineal(p, t, hit) : locate_areal(p, t, hit);
}

Loc RelateOperand::locate_on_shape(const _xgWKB_POINT& p, double t) const {
  if (dim_ == 2) return kOn;
  for (const _xgWKB_POINT& q : ends_) {
    if (wkb_point_equal_tol(p, q, t)) return kOn;
  }
  return kIn;
}

const RingIndex* RelateOperand::index_for(uint32_t r, const _xgWKB_POINT& p, double t) const {
  // The index offers the edges whose y-range grown by at least t holds p.y: every edge within t
  // of p, for t >= 0.  A negative t is left to the plain loops.
  if (indexes_.empty() || !(t >= 0) || !indexable(p) || !indexes_[r].ready(t)) return nullptr;
  return &indexes_[r];
}

Loc RelateOperand::locate_lineal(const _xgWKB_POINT& p, double t, EdgeHit* hit) const {
  for (uint32_t r = 0; r < runs_.run_count(); ++r) {
    const Span& run = runs_.run(r);
    if (run.n == 0 || outside_box(p, run.box, t)) continue;
    if (const RingIndex* index = index_for(r, p, t)) {
      // The plain loop below answers with the first segment near p: the lowest-numbered one.
      uint32_t best = run.n;
      index->edges_at(p.y, [&](uint32_t j) {
        if (j < best && near_segment(p, run.p[j], run.p[j + 1], t)) best = j;
        return false;
      });
      if (best == run.n) continue;
      if (hit) *hit = EdgeHit{run.p[best], run.p[best + 1], false};
      return locate_on_shape(p, t);
    }
    const uint32_t segments = run.n == 1 ? 1 : run.n - 1;  // a lone point: a segment of length 0
    for (uint32_t i = 0; i < segments; ++i) {
      const _xgWKB_POINT& a = run.p[i];
      const _xgWKB_POINT& b = run.p[run.n == 1 ? 0 : i + 1];
      if (near_segment(p, a, b, t)) {
        if (hit) *hit = EdgeHit{a, b, false};
        return locate_on_shape(p, t);
      }
    }
  }
  return kOut;
}

namespace {

// Edge (a, b) holds p within t (a box test first: cheap, and it keeps the answers of negative t).
bool near_edge(const _xgWKB_POINT& p, const _xgWKB_POINT& a, const _xgWKB_POINT& b, double t) {
  const bool near_box = p.y >= std::min(a.y, b.y) - t && p.y <= std::max(a.y, b.y) + t &&
                        p.x >= std::min(a.x, b.x) - t && p.x <= std::max(a.x, b.x) + t;
  return near_box && near_segment(p, a, b, t);
}

// Edge (a, b) crosses the ray from p to the right (half-open in y: a vertex counts once).
bool crosses_right(const _xgWKB_POINT& p, const _xgWKB_POINT& a, const _xgWKB_POINT& b) {
  return (a.y > p.y) != (b.y > p.y) && p.x < a.x + (p.y - a.y) * (b.x - a.x) / (b.y - a.y);
}

}  // namespace

Loc RelateOperand::locate_areal(const _xgWKB_POINT& p, double t, EdgeHit* hit) const {
  for (uint32_t part = 0; part < runs_.part_count(); ++part) {
    const ShapeRuns::Part& pr = runs_.part(part);
    if (pr.runs == 0 || outside_box(p, runs_.run(pr.first_run).box, t)) continue;
    bool inside = false;
    for (uint32_t k = 0; k < pr.runs; ++k) {
      const uint32_t r = pr.first_run + k;
      const Span& ring = runs_.run(r);
      if (outside_box(p, ring.box, t)) continue;  // neither on it nor inside it
      bool odd = false;
      if (const RingIndex* index = index_for(r, p, t)) {
        // Every edge near p or crossing its horizontal is offered.  The plain loop below stops at
        // the first edge near p (the lowest-numbered one); the parity does not depend on order.
        // Edges wholly beyond reach of p on one side are passed over, the parity mended as in
        // indexed_ring_relation (ring_index.cpp).
        uint32_t best = ring.n;
        bool crossings = false;
        bool skipped_right = false;
        index->edges_at_side(p.y, p.x, index->reach_for(p.x), &skipped_right, [&](uint32_t j) {
          const _xgWKB_POINT& a = ring.p[j];
          const _xgWKB_POINT& b = ring.p[j + 1];
          if (j < best && near_edge(p, a, b, t)) best = j;
          if (crosses_right(p, a, b)) odd = !odd;
          if ((a.y > p.y) != (b.y > p.y)) crossings = !crossings;
          return false;
        });
        if (skipped_right) {
          const bool all = (ring.p[0].y > p.y) != (ring.p[ring.n - 1].y > p.y);
          odd = all != (crossings != odd);
        }
        if (best < ring.n) {
          if (hit) *hit = EdgeHit{ring.p[best], ring.p[best + 1], interior_left(r)};
          return kOn;
        }
      } else {
        for (uint32_t i = 1; i < ring.n; ++i) {
          const _xgWKB_POINT& a = ring.p[i - 1];
          const _xgWKB_POINT& b = ring.p[i];
          if (near_edge(p, a, b, t)) {
            if (hit) *hit = EdgeHit{a, b, interior_left(r)};
            return kOn;
          }
          if (crosses_right(p, a, b)) odd = !odd;
        }
      }
      if (k == 0) {
        if (!odd) break;  // outside this polygon's outer ring, so off its holes as well
        inside = true;
      } else if (odd) {
        inside = false;  // in a hole
        break;
      }
    }
    if (inside) return kIn;
  }
  return kOut;
}

const RingIndex* RelateOperand::segment_index(uint32_t r, double t) const {
  if (indexes_.empty() || !(t >= 0) || !indexes_[r].ready(t)) return nullptr;
  return &indexes_[r];
}

}  // namespace xg
