// envelope_polygon.h - the polygon predicates against an axis-parallel rectangle.
#ifndef XGGEO_RELATE_ENVELOPE_POLYGON_H
#define XGGEO_RELATE_ENVELOPE_POLYGON_H

#include "relate/envelope_tests.h"
#include "relate/point_runs.h"
#include "relate/small_vec.h"

namespace xg {

// One polygon (its rings as stored) against the rectangle E with tolerance t.  The facts of
// every ring are gathered once, after the box pre-test on the polygon's extent (its outer
// ring's box); the rectangle tests are computed when first asked.  Every predicate includes the
// pre-test: a polygon apart from E is disjoint and nothing else.
class EnvPolygonStand {
 public:
  EnvPolygonStand(const PolySpans& polygon, const _xgWKB_BOX& e, double t);
  EnvPolygonStand(const EnvPolygonStand&) = delete;
  EnvPolygonStand& operator=(const EnvPolygonStand&) = delete;

  bool disjoint() const;
  bool within() const;      // the polygon lies within E
  bool contains() const;    // the polygon contains E
  bool overlapping() const;
  bool touching() const;

 private:
  template <class Pred>
  bool some_ring(Pred pred) const;
  bool test_a() const;
  bool test_b() const;
  bool interiors_meet() const;
  bool some_ring_in() const;
  bool rectangle_held() const;
  bool some_ring_disagrees() const;
  bool ring_leaves(bool fuller) const;

  PolySpans polygon_;
  _xgWKB_BOX e_;
  double t_;
  bool apart_;
  SmallVec<EnvRunFacts, 4> rings_;
  mutable int a_ = -1;  // rectangle tests, -1 until computed
  mutable int b_ = -1;
};

}  // namespace xg

#endif  // XGGEO_RELATE_ENVELOPE_POLYGON_H
