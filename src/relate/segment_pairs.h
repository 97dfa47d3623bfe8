// segment_pairs.h - the one place that pairs every segment of a run with every segment of
// another (or of itself).
//
// Every all-pairs walk of the relation layer goes through these two functions.  Small inputs
// are paired by a plain double loop; larger ones by a sort-and-sweep over the segments' x
// extents, which offers only pairs whose boxes overlap in x and then tests y; between two runs
// only the segments near the other run's box take part.  Callers must not
// depend on the order in which pairs are visited.  Pairs whose boxes are apart by more than t
// are never offered.
#ifndef XGGEO_RELATE_SEGMENT_PAIRS_H
#define XGGEO_RELATE_SEGMENT_PAIRS_H

#include <algorithm>
#include <cstdint>

#include "relate/point_runs.h"

namespace xg {

namespace detail {

// Below this many candidate pairs the double loop beats sorting.
constexpr uint64_t kSweepPairs = 1024;

struct SegmentKey {
  _xgWKB_BOX box;
  uint32_t index;  // segment index in its run
};

using SegmentKeys = SmallVec<SegmentKey, 64>;

inline void sort_segment_keys(SegmentKeys& keys) {
  std::sort(keys.begin(), keys.end(),
            [](const SegmentKey& l, const SegmentKey& r) { return l.box.minx < r.box.minx; });
}

// The boxes of a run's segments, sorted by their left edge.
inline void sorted_segment_keys(const Span& s, SegmentKeys& keys) {
  keys.reserve(s.segments());
  for (uint32_t i = 0; i + 1 < s.n; ++i) keys.push_back(SegmentKey{segment_box(s.p[i], s.p[i + 1]), i});
  sort_segment_keys(keys);
}

// The boxes of a run's segments that come within t of `window`, sorted by their left edge.  A
// segment farther from the other run's box than t meets none of its segments' boxes, so pairing
// two runs needs only the segments in the window shared by both: two large shapes whose boxes
// overlap in a corner are paired at the cost of that corner.
inline void sorted_segment_keys_in(const Span& s, const _xgWKB_BOX& window, double t,
                                   SegmentKeys& keys) {
  for (uint32_t i = 0; i + 1 < s.n; ++i) {
    const _xgWKB_BOX box = segment_box(s.p[i], s.p[i + 1]);
    if (boxes_meet(box, window, t)) keys.push_back(SegmentKey{box, i});
  }
  sort_segment_keys(keys);
}

// Offers key k every key still active in `active` whose box meets k's, dropping those that end
// left of k (k and everything after it start farther right).  Stops when offer returns true.
template <class Offer>
bool sweep_step(const SegmentKey& k, const SegmentKeys& keys, SmallVec<uint32_t, 32>& active,
                double t, Offer&& offer) {
  std::size_t kept = 0;
  for (std::size_t r = 0; r < active.size(); ++r) {
    const SegmentKey& o = keys[active[r]];
    if (o.box.maxx + t < k.box.minx) continue;
    active[kept++] = active[r];
    if (o.box.maxy + t < k.box.miny || o.box.miny - t > k.box.maxy) continue;
    if (offer(o)) return true;
  }
  active.truncate(kept);
  return false;
}

// Directions a sweep can run along: x, y, x + y and x - y.  A box's extent along a diagonal is
// the sum (or difference) of its extents; two boxes that meet within t overlap along every
// direction within the direction's slack.
enum class Axis { kX, kY, kSum, kDiff };

inline double axis_lo(const _xgWKB_BOX& b, Axis d) {
  switch (d) {
    case Axis::kX: return b.minx;
    case Axis::kY: return b.miny;
    case Axis::kSum: return b.minx + b.miny;
    case Axis::kDiff: return b.minx - b.maxy;
  }
  return b.minx;
}

inline double axis_hi(const _xgWKB_BOX& b, Axis d) {
  switch (d) {
    case Axis::kX: return b.maxx;
    case Axis::kY: return b.maxy;
    case Axis::kSum: return b.maxx + b.maxy;
    case Axis::kDiff: return b.maxx - b.miny;
  }
  return b.maxx;
}

// Below this many key pairs the sweep runs along x without looking for a better direction.
constexpr uint64_t kChooseAxisPairs = uint64_t{1} << 20;
constexpr std::size_t kAxisSample = 256;

// The direction along which the fewest sampled pairs of a key of ka and a key of kb overlap
// (x unless another offers under half as many): where two shapes face each other across a
// diagonal gap, a sweep along x would hold many keys of either side whose boxes never meet.
inline Axis sweep_axis(const SegmentKeys& ka, const SegmentKeys& kb, double t) {
  const std::size_t step_a = ka.size() / kAxisSample + 1;
  const std::size_t step_b = kb.size() / kAxisSample + 1;
  uint64_t count[4] = {0, 0, 0, 0};
  for (std::size_t i = 0; i < ka.size(); i += step_a) {
    for (std::size_t j = 0; j < kb.size(); j += step_b) {
      for (int d = 0; d < 4; ++d) {
        const Axis axis = static_cast<Axis>(d);
        const double slack = d < 2 ? t : 2 * t;
        count[d] += !(axis_hi(ka[i].box, axis) + slack < axis_lo(kb[j].box, axis) ||
                      axis_hi(kb[j].box, axis) + slack < axis_lo(ka[i].box, axis));
      }
    }
  }
  int best = 0;
  for (int d = 1; d < 4; ++d) {
    if (count[d] < count[best]) best = d;
  }
  return 2 * count[best] < count[0] ? static_cast<Axis>(best) : Axis::kX;
}

// The largest absolute coordinate of two boxes; infinite or NaN when either box is not finite.
inline double boxes_reach(const _xgWKB_BOX& a, const _xgWKB_BOX& b) {
  double r = 0;
  for (double v : {a.minx, a.miny, a.maxx, a.maxy, b.minx, b.miny, b.maxx, b.maxy}) {
    const double m = v < 0 ? -v : v;
    r = m > r || m != m ? m : r;
  }
  return r;
}

// No key's box holds a NaN (a run's box passes over NaN points; its segments' boxes do not).
inline bool all_finite(const SegmentKeys& keys) {
  for (const SegmentKey& k : keys) {
    if (!(k.box.minx - k.box.maxx <= 0 && k.box.miny - k.box.maxy <= 0)) return false;
  }
  return true;
}

// The sweep of any_segment_pair along another direction than x: keys sorted by their low end
// along it; a key is offered the other side's active keys whose boxes meet its own.  The slack
// covers t along x and y (2t along a diagonal) and the rounding of the sums, so that no pair of
// boxes that meet is passed over.
template <class F>
bool sweep_along(Axis d, SegmentKeys& ka, SegmentKeys& kb, double t, double reach, F&& f) {
  const double slack = (d == Axis::kY ? t : 2 * t) + 1e-12 * reach;
  auto by_lo = [d](const SegmentKey& l, const SegmentKey& r) {
    return axis_lo(l.box, d) < axis_lo(r.box, d);
  };
  std::sort(ka.begin(), ka.end(), by_lo);
  std::sort(kb.begin(), kb.end(), by_lo);
  SmallVec<uint32_t, 32> active_a, active_b;
  auto step = [&](const SegmentKey& k, const SegmentKeys& keys, SmallVec<uint32_t, 32>& active,
                  auto&& offer) {
    const double lo = axis_lo(k.box, d);
    std::size_t kept = 0;
    for (std::size_t r = 0; r < active.size(); ++r) {
      const SegmentKey& o = keys[active[r]];
      if (axis_hi(o.box, d) + slack < lo) continue;
      active[kept++] = active[r];
      if (boxes_meet(o.box, k.box, t) && offer(o)) return true;
    }
    active.truncate(kept);
    return false;
  };
  std::size_t ia = 0, ib = 0;
  while (ia < ka.size() || ib < kb.size()) {
    if (ib == kb.size() || (ia < ka.size() && axis_lo(ka[ia].box, d) <= axis_lo(kb[ib].box, d))) {
      const SegmentKey& k = ka[ia];
      if (step(k, kb, active_b, [&](const SegmentKey& o) { return f(k.index, o.index); })) return true;
      active_a.push_back(static_cast<uint32_t>(ia++));
    } else {
      const SegmentKey& k = kb[ib];
      if (step(k, ka, active_a, [&](const SegmentKey& o) { return f(o.index, k.index); })) return true;
      active_b.push_back(static_cast<uint32_t>(ib++));
    }
  }
  return false;
}

}  // namespace detail

// Calls f(i, j) for segment i of a and segment j of b (segment i is (p[i], p[i+1])) whose boxes
// come within t of each other.  Stops as soon as f returns true and then returns true.  Large
// runs are swept along x, or along y or a diagonal where a sample of the pairs shows that
// direction to separate the two runs' segments better.
template <class F>
bool any_segment_pair(const Span& a, const Span& b, double t, F&& f) {
  if (a.n < 2 || b.n < 2 || !boxes_meet(a.box, b.box, t)) return false;
  if (uint64_t{a.segments()} * b.segments() <= detail::kSweepPairs) {
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
  detail::SegmentKeys ka, kb;
  detail::sorted_segment_keys_in(a, b.box, t, ka);
  detail::sorted_segment_keys_in(b, a.box, t, kb);
  const double reach = detail::boxes_reach(a.box, b.box);
  if (uint64_t{ka.size()} * kb.size() > detail::kChooseAxisPairs && reach < 1e300 && t >= 0 &&
      t < 1e300 && detail::all_finite(ka) && detail::all_finite(kb)) {
    const detail::Axis d = detail::sweep_axis(ka, kb, t);
    if (d != detail::Axis::kX) return detail::sweep_along(d, ka, kb, t, reach, f);
  }
  SmallVec<uint32_t, 32> active_a, active_b;
  std::size_t ia = 0, ib = 0;
  while (ia < ka.size() || ib < kb.size()) {
    if (ib == kb.size() || (ia < ka.size() && ka[ia].box.minx <= kb[ib].box.minx)) {
      const detail::SegmentKey& k = ka[ia];
      auto offer = [&](const detail::SegmentKey& o) { return f(k.index, o.index); };
      if (detail::sweep_step(k, kb, active_b, t, offer)) return true;
      active_a.push_back(static_cast<uint32_t>(ia++));
    } else {
      const detail::SegmentKey& k = kb[ib];
      auto offer = [&](const detail::SegmentKey& o) { return f(o.index, k.index); };
      if (detail::sweep_step(k, ka, active_a, t, offer)) return true;
      active_b.push_back(static_cast<uint32_t>(ib++));
    }
  }
  return false;
}

// Calls f(i, j) for the pairs of segments i < j of one run with j >= i + gap (gap >= 1) whose
// boxes come within t of each other; stops as soon as f returns true and then returns true.
template <class F>
bool any_segment_pair_within(const Span& a, uint32_t gap, double t, F&& f) {
  if (a.n < 2) return false;
  const uint32_t segments = a.n - 1;
  if (uint64_t{segments} * segments <= 2 * detail::kSweepPairs) {
    for (uint32_t i = 0; i + gap < segments; ++i) {
      const _xgWKB_BOX sa = segment_box(a.p[i], a.p[i + 1]);
      for (uint32_t j = i + gap; j < segments; ++j) {
        if (!boxes_meet(sa, segment_box(a.p[j], a.p[j + 1]), t)) continue;
        if (f(i, j)) return true;
      }
    }
    return false;
  }
  detail::SegmentKeys keys;
  detail::sorted_segment_keys(a, keys);
  SmallVec<uint32_t, 32> active;
  for (std::size_t n = 0; n < keys.size(); ++n) {
    const detail::SegmentKey& k = keys[n];
    auto offer = [&](const detail::SegmentKey& o) {
      const uint32_t i = std::min(k.index, o.index);
      const uint32_t j = std::max(k.index, o.index);
      return j - i >= gap && f(i, j);
    };
    if (detail::sweep_step(k, keys, active, t, offer)) return true;
    active.push_back(static_cast<uint32_t>(n));
  }
  return false;
}

}  // namespace xg

#endif  // XGGEO_RELATE_SEGMENT_PAIRS_H
