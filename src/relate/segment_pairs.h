// segment_pairs.h - the one place that pairs every segment of a run with every segment of
// another (or of itself).
//
// Every all-pairs walk of the relation layer goes through these two functions, so a faster
// candidate search (a sort-and-sweep or a segment tree) can replace the double loop here
// without touching any caller.  Callers must therefore not depend on the order in which pairs
// are visited.  Pairs whose boxes are apart by more than t are never offered.
#ifndef XGGEO_RELATE_SEGMENT_PAIRS_H
#define XGGEO_RELATE_SEGMENT_PAIRS_H

#include <cstdint>

#include "relate/point_runs.h"

namespace xg {

// Calls f(i, j) for segment i of a and segment j of b (segment i is (p[i], p[i+1])) whose boxes
// come within t of each other.  Stops as soon as f returns true and then returns true.
template <class F>
bool any_segment_pair(const Span& a, const Span& b, double t, F&& f) {
  if (a.n < 2 || b.n < 2 || !boxes_meet(a.box, b.box, t)) return false;
  for (uint32_t i = 0; i + 1 < a.n; ++i) {
    const _xgWKB_BOX sa = segment_box(a.p[i], a.p[i + 1]);
    if (!boxes_meet(sa, b.box, t)) continue;
    for (uint32_t j = 0; j + 1 < b.n; ++j) {
      if (!boxes_meet(sa, segment_box(b.p[j], b.p[j + 1]), t)) continue;
      if (f(i, j)) return true;
    }
  }
  return false;
}

// Calls f(i, j) for the pairs of segments i < j of one run with j >= i + gap whose boxes come
// within t of each other; stops as soon as f returns true and then returns true.
template <class F>
bool any_segment_pair_within(const Span& a, uint32_t gap, double t, F&& f) {
  if (a.n < 2) return false;
  const uint32_t segments = a.n - 1;
  for (uint32_t i = 0; i + gap < segments; ++i) {
    const _xgWKB_BOX sa = segment_box(a.p[i], a.p[i + 1]);
    for (uint32_t j = i + gap; j < segments; ++j) {
      if (!boxes_meet(sa, segment_box(a.p[j], a.p[j + 1]), t)) continue;
      if (f(i, j)) return true;
    }
  }
  return false;
}

}  // namespace xg

#endif  // XGGEO_RELATE_SEGMENT_PAIRS_H
