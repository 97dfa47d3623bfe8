// envelope_polygon.cpp - how a polygon stands to an axis-parallel rectangle.
//
// Built from the facts of each ring (envelope_tests.h) and three tests of our own, whose roles
// the compositions below fix:
//   - rectangle test A, "the rectangle lies in the polygon where no ring enters it": the centre
//     of the rectangle lies in the polygon's interior (inside the outer ring, in no hole, on no
//     ring within t).  Where no ring reaches the rectangle's interior, the whole interior of the
//     rectangle lies in one face of the rings, and the centre tells which.
//   - rectangle test B, "part of the rectangle lies outside the polygon": some ring reaches the
//     rectangle's interior (the polygon's exterior lies beside every ring), or a corner of the
//     rectangle lies outside the polygon (outside the outer ring or strictly inside a hole).
//     So the polygon contains the rectangle when A holds and B does not.
//   - ring-agrees, "the ring keeps clear of the rectangle's boundary": its box is apart, or none
//     of its segments meets the boundary within t and none of its vertices lies on it.
#include "relate/envelope_polygon.h"

#include "relate/segment_tests.h"

namespace xg {

namespace {

bool ring_reaches_interior(const EnvRunFacts& r) { return !r.apart && r.any_inside; }

bool ring_within(const EnvRunFacts& r) { return !r.apart && r.any_inside && !r.any_outside; }

bool ring_crossing(const EnvRunFacts& r) { return !r.apart && r.any_inside && r.any_outside; }

bool ring_along(const EnvRunFacts& r) { return !r.apart && !r.any_inside && r.any_on; }

bool ring_agrees(const EnvRunFacts& r) { return r.apart || (!r.any_on && !r.vertex_on); }

}  // namespace

EnvPolygonStand::EnvPolygonStand(const PolySpans& polygon, const _xgWKB_BOX& e, double t)
    : polygon_(polygon), e_(e), t_(t), apart_(env_apart(polygon.box(), e, t)) {
  if (apart_) return;
  rings_.reserve(polygon.count);
  for (uint32_t i = 0; i < polygon.count; ++i) rings_.push_back(env_run_facts(polygon.rings[i], e, t));
}

template <class Pred>
bool EnvPolygonStand::some_ring(Pred pred) const {
  for (const EnvRunFacts& r : rings_) {
    if (pred(r)) return true;
  }
  return false;
}

bool EnvPolygonStand::test_a() const {
  if (a_ < 0) {
    const _xgWKB_POINT centre{(e_.minx + e_.maxx) / 2, (e_.miny + e_.maxy) / 2};
    a_ = point_within_polygon(centre, polygon_, t_) ? 1 : 0;
  }
  return a_ == 1;
}

bool EnvPolygonStand::test_b() const {
  if (b_ < 0) {
    b_ = some_ring(ring_reaches_interior) ? 1 : 0;
    const _xgWKB_POINT corners[] = {{e_.minx, e_.miny}, {e_.minx, e_.maxy}, {e_.maxx, e_.maxy}, {e_.maxx, e_.miny}};
    for (const _xgWKB_POINT& c : corners) {
      if (b_ == 0 && point_outside_polygon(c, polygon_, t_)) b_ = 1;
    }
  }
  return b_ == 1;
}

bool EnvPolygonStand::interiors_meet() const {
  if (some_ring(ring_reaches_interior)) return true;
  if (test_a()) return true;
  if (some_ring([](const EnvRunFacts& r) { return r.vertex_outside; })) return false;
  // Every vertex lies in the rectangle, none deeper than t, and the centre is not in the
  // polygon: whatever area the polygon has there lies in the band along the edges, which
  // counts as meeting the boundary only.
  return false;
}

bool EnvPolygonStand::some_ring_in() const {
  return some_ring([](const EnvRunFacts& r) { return ring_within(r) || ring_crossing(r); });
}

bool EnvPolygonStand::rectangle_held() const { return contains() || (test_a() && test_b()); }

bool EnvPolygonStand::some_ring_disagrees() const {
  return some_ring([](const EnvRunFacts& r) { return !ring_agrees(r); });
}

bool EnvPolygonStand::ring_leaves(bool fuller) const {
  for (const EnvRunFacts& r : rings_) {
    if (ring_within(r)) continue;
    if (!ring_along(r)) return true;
    if (r.vertex_outside) return true;
    if (fuller && !r.all_along) return true;
  }
  return false;
}

bool EnvPolygonStand::contains() const { return !apart_ && test_a() && !test_b(); }

bool EnvPolygonStand::touching() const {
  if (apart_ || interiors_meet()) return false;
  return some_ring_in() || rectangle_held() || some_ring_disagrees();
}

bool EnvPolygonStand::within() const {
  return !apart_ && interiors_meet() && !ring_leaves(true) && !ring_leaves(false);
}

bool EnvPolygonStand::disjoint() const {
  if (apart_) return true;
  return !interiors_meet() && !some_ring_in() && !rectangle_held() && !some_ring_disagrees();
}

bool EnvPolygonStand::overlapping() const {
  return !apart_ && interiors_meet() && ring_leaves(true) && test_b();
}

}  // namespace xg
