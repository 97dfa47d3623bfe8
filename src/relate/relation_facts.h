// relation_facts.h - which parts of two lineal or areal shapes meet.
//
// The predicates between lines and polygons are defined, as usual, by which of the interior,
// boundary and exterior of the one shape meet which of the other.  relate_facts() finds those
// facts with tolerance t:
//   - every segment of the first shape is cut where the second comes within t of it (crossings,
//     vertices of either lying on the other); each cut point is a contact, located on both
//     shapes; each stretch between cuts lies wholly inside, on or outside the second shape and
//     is located once by its midpoint (inside or outside an areal shape, or off a lineal one, the
//     location only changes at a cut, so runs of uncut segments share one location); a stretch
//     found within t of a segment of the second is on it only where it stays within t of that
//     segment: it is split where it leaves that band and the parts beyond are located anew;
//   - the boundary points of a lineal first shape (ends of its open members, counted modulo 2)
//     are located in the second;
//   - for two areal shapes the same walk is made over the second's boundary as well; a stretch
//     of boundary inside the other shape, outside it, or shared with it (interiors on the same
//     or opposite sides, told by the rings' orientation) gives the interior facts, since two
//     regions whose boundaries keep off each other cannot share interior points.  A stretch
//     within t of a segment is shared with it (lines share a stretch, boundaries have sides to
//     compare) only when it runs along it, advancing more than 2t; a shorter one is a spot of
//     contact where the two cross or touch within t.
// Boundary contacts within t count: a vertex within t of an edge touches it.
#ifndef XGGEO_RELATE_RELATION_FACTS_H
#define XGGEO_RELATE_RELATION_FACTS_H

#include <cstdint>

#include <vector>

#include "relate/point_runs.h"
#include "relate/ring_index.h"

namespace xg {

enum Loc : uint8_t { kIn = 0, kOn = 1, kOut = 2 };  // interior, boundary, exterior

// Bit 3a + b: the first shape's part a meets the second shape's part b.
using FactBits = uint32_t;
constexpr FactBits fact(Loc a, Loc b) { return 1u << (3 * a + b); }
// The interiors of two lineal shapes share a stretch (not only isolated points).
constexpr FactBits kSharedStretch = 1u << 9;
constexpr FactBits kFirstMeetsSecond =
    fact(kIn, kIn) | fact(kIn, kOn) | fact(kOn, kIn) | fact(kOn, kOn);

// What the caller needs: the search stops once any bit of stop_any, or every bit of stop_all
// (when not 0), has been found; the predicate is decided then.
struct FactQuery {
  FactBits stop_any;
  FactBits stop_all;
};

// The boundary edge a point was found on.
struct EdgeHit {
  _xgWKB_POINT a, b;
  bool interior_left;  // the shape's interior lies left of a -> b
};

// One operand: a linestring, multilinestring, polygon or multipolygon.
class RelateOperand {
 public:
  RelateOperand() = default;
  RelateOperand(const RelateOperand&) = delete;
  RelateOperand& operator=(const RelateOperand&) = delete;

  // False for any other type or a malformed multi-type.  Stretches of repeated points are
  // shortened (ShapeRuns::load with collapse).  With indexed, large runs get an edge index that
  // locate() consults (same answers as the plain loops, which indexed = false keeps: the tests
  // compare the two).
  bool load(const byte* shape, double t, bool indexed = true);

  int dim() const { return dim_; }
  const ShapeRuns& runs() const { return runs_; }
  bool interior_left(uint32_t run) const { return left_[run] != 0; }

  // Where p lies: interior, boundary or exterior, with tolerance t.  For a point within t of a
  // segment (on the boundary of an areal shape, anywhere on a lineal one), *hit receives that
  // segment.
  Loc locate(const _xgWKB_POINT& p, double t, EdgeHit* hit) const;

  // Whether a location found by locate() rests on nearness to a segment (the boundary of an areal
  // shape, any point of a lineal one) rather than on a region, which holds for a whole stretch
  // between cuts.
  bool near_location(Loc loc) const { return dim_ == 1 ? loc != kOut : loc == kOn; }

  // Where a point already known to lie on the shape lies: a lineal shape's boundary points are
  // the ends of its open members that occur an odd number of times; an areal shape is met on
  // its boundary.
  Loc locate_on_shape(const _xgWKB_POINT& p, double t) const;

  const SmallVec<_xgWKB_POINT, 8>& boundary_points() const { return ends_; }

  // The edge index of run r when it answers segment queries with tolerance t, else null (a
  // small run, an unindexed load, or an index not built yet: each call counts as a query).
  const RingIndex* segment_index(uint32_t r, double t) const;

 private:
  Loc locate_lineal(const _xgWKB_POINT& p, double t, EdgeHit* hit) const;
  Loc locate_areal(const _xgWKB_POINT& p, double t, EdgeHit* hit) const;
  // The index of run r when it answers queries with tolerance t, else null.
  const RingIndex* index_for(uint32_t r, const _xgWKB_POINT& p, double t) const;

  int dim_ = 0;
  ShapeRuns runs_;
  SmallVec<_xgWKB_POINT, 8> ends_;
  SmallVec<uint8_t, 8> left_;
  std::vector<RingIndex> indexes_;  // one per run when indexed (unprepared for small runs)
};

// Whether facts f decide query q.
inline bool decides(FactBits f, FactQuery q) {
  return (f & q.stop_any) != 0 || (q.stop_all != 0 && (f & q.stop_all) == q.stop_all);
}

// How relate_facts searches.  With shortcuts, a segment of the first shape found crossing the
// second (and, for large shapes, a sample of its segments) is walked on its own while the
// contacts are still being gathered, so that a query one interior contact settles stops there
// instead of after gathering every contact; and repeated contacts are dropped as the list
// grows.  The answers are those of the plain search (shortcuts = false), which the tests
// compare it with.  local_walks receives the number of segments walked on their own.
struct FactSearch {
  bool shortcuts = true;
  uint32_t local_walks = 0;
};

// The facts between a and b (a's dimension not above b's), searched until q is decided.
FactBits relate_facts(const RelateOperand& a, const RelateOperand& b, double t, FactQuery q,
                      FactSearch* search = nullptr);

}  // namespace xg

#endif  // XGGEO_RELATE_RELATION_FACTS_H
