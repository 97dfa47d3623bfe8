// segment_pairs.h - the one place that pairs every segment of a run with every segment of
// another (or of itself).
//
// Every all-pairs walk of the relation layer goes through the functions at the end of this file
// (two runs, shapes of many runs, one run with itself).  They offer exactly the pairs a plain
// double loop offers: those whose segment boxes come within t of each other (boxes_meet with the
// first run's segment first), each once; callers must not depend on the order.  Small inputs
// are paired by that double loop.  Larger runs are cut into monotone chains (stretches along
// which neither x nor y turns back); the chains' boxes are sorted and swept, and inside two
// chains whose boxes meet, the segments of one that meet a segment of the other form one
// contiguous stretch (their boxes are ordered along both axes), found by binary search.
// Between two runs only the chains near the other run's box take part.  A run holding a NaN
// coordinate has no order to search, and is swept segment by segment.
#ifndef XGGEO_RELATE_SEGMENT_PAIRS_H
#define XGGEO_RELATE_SEGMENT_PAIRS_H

#include <algorithm>
#include <cstdint>
#include <limits>
#include <vector>

#include "relate/point_runs.h"

namespace xg {

namespace detail {

// Below this many candidate pairs the double loop beats sorting.
constexpr uint64_t kSweepPairs = 1024;

// A segment, or a monotone chain of segments (see for_each_chain), with its box.
struct SegmentKey {
  _xgWKB_BOX box;
  uint32_t index;  // the segment's number in its run, or the chain's first segment
  uint32_t last;   // a chain: one past its last segment
  uint32_t run;    // a chain: its run's number in its shape (0 for a lone run)
  bool x_down, y_down;  // a chain: x (y) never increases along it, else it never decreases
};

using SegmentKeys = SmallVec<SegmentKey, 64>;

// Below this many keys std::sort sorts them.
constexpr std::size_t kBucketSortKeys = 4096;

// Sorts keys by their left edge.  Many keys are spread into as many buckets by the value of the
// left edge (a counting sort of the bucket numbers, the keys then moved once into place), and
// each bucket is sorted on its own: linear time for edges spread across the range, and immune
// to the orders that degrade quicksort's pivots to its heap sort (the chains of a smooth ring
// come rising and falling in x, with jitter).  Edges crowded into a few buckets are sorted
// there by std::sort, as they would be without the buckets.
inline void sort_segment_keys(SegmentKeys& keys) {
  // A NaN left edge (a segment of a run holding NaN) sorts as +infinity: std::sort needs a
  // strict weak order, or it may run past the ends of the range.
  auto left = [](const SegmentKey& k) {
    return k.box.minx == k.box.minx ? k.box.minx : std::numeric_limits<double>::infinity();
  };
  auto by_minx = [&](const SegmentKey& l, const SegmentKey& r) { return left(l) < left(r); };
  const std::size_t n = keys.size();
  double lo = std::numeric_limits<double>::infinity(), hi = -lo;
  for (const SegmentKey& k : keys) {
    lo = k.box.minx < lo ? k.box.minx : lo;
    hi = k.box.minx > hi ? k.box.minx : hi;
  }
  const double scale = static_cast<double>(n) / (hi - lo);
  if (n < kBucketSortKeys || n > UINT32_MAX || !(scale > 0 && scale < 1e300)) {
    std::sort(keys.begin(), keys.end(), by_minx);
    return;
  }
  // The bucket of each key, then (once counted) the place it goes to.
  std::vector<uint32_t> place(n);
  std::vector<uint32_t> end(n, 0);  // end[b]: one past bucket b, once the keys are placed
  for (std::size_t i = 0; i < n; ++i) {
    const double f = (keys[i].box.minx - lo) * scale;  // rounds monotonely: scale > 0
    if (!(f >= 0)) {  // a NaN edge: no order to bucket by
      std::sort(keys.begin(), keys.end(), by_minx);
      return;
    }
    place[i] = f < static_cast<double>(n - 1) ? static_cast<uint32_t>(f) : static_cast<uint32_t>(n - 1);
    ++end[place[i]];
  }
  uint32_t sum = 0;
  for (uint32_t& e : end) {
    const uint32_t count = e;
    e = sum;  // the bucket's start, moved on to its end as keys are placed
    sum += count;
  }
  for (std::size_t i = 0; i < n; ++i) place[i] = end[place[i]]++;
  // Moved by following the permutation's cycles: each key is written once where it belongs.
  for (std::size_t i = 0; i < n; ++i) {
    while (place[i] != i) {
      const uint32_t to = place[i];
      std::swap(keys[i], keys[to]);
      std::swap(place[i], place[to]);
    }
  }
  for (std::size_t b = 0, from = 0; b < n; from = end[b++]) {
    if (end[b] - from > 1) std::sort(keys.begin() + from, keys.begin() + end[b], by_minx);
  }
}

// The boxes of a run's segments, sorted by their left edge.
inline void sorted_segment_keys(const Span& s, SegmentKeys& keys) {
  keys.reserve(s.segments());
  for (uint32_t i = 0; i + 1 < s.n; ++i) keys.push_back(SegmentKey{segment_box(s.p[i], s.p[i + 1]), i, 0, 0, false, false});
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
    if (boxes_meet(box, window, t)) keys.push_back(SegmentKey{box, i, 0, 0, false, false});
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

// The sweep of sweep_keys along another direction than x (f receives the two keys, the one of
// ka first): keys sorted by their low end
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
      if (step(k, kb, active_b, [&](const SegmentKey& o) { return f(k, o); })) return true;
      active_a.push_back(static_cast<uint32_t>(ia++));
    } else {
      const SegmentKey& k = kb[ib];
      if (step(k, ka, active_a, [&](const SegmentKey& o) { return f(o, k); })) return true;
      active_b.push_back(static_cast<uint32_t>(ib++));
    }
  }
  return false;
}

// ---- monotone chains ----------------------------------------------------------------------

inline bool has_nan(const Span& s) {
  for (uint32_t i = 0; i < s.n; ++i) {
    if (s.p[i].x != s.p[i].x || s.p[i].y != s.p[i].y) return true;
  }
  return false;
}

// Calls f(first, last, box, x_down, y_down) for each monotone chain of run s (free of NaN), in
// order: segments [first, last) along which neither x nor y turns back.
template <class F>
void for_each_chain(const Span& s, F&& f) {
  uint32_t i = 0;
  while (i + 1 < s.n) {
    const uint32_t first = i;
    _xgWKB_BOX box = segment_box(s.p[i], s.p[i + 1]);
    int sx = 0, sy = 0;  // -1, 0 (not yet known) or 1
    for (; i + 1 < s.n; ++i) {
      const double dx = s.p[i + 1].x - s.p[i].x;
      const double dy = s.p[i + 1].y - s.p[i].y;
      const int ex = (dx > 0) - (dx < 0);
      const int ey = (dy > 0) - (dy < 0);
      if ((ex != 0 && sx != 0 && ex != sx) || (ey != 0 && sy != 0 && ey != sy)) break;
      if (sx == 0) sx = ex;
      if (sy == 0) sy = ey;
      box_add(&box, s.p[i + 1]);
    }
    f(first, i, box, sx < 0, sy < 0);
  }
}

// Adds the chains of run s (free of NaN; number `run` of its shape) whose box meets `window`
// within `slack` to out, unsorted.  When the window holds the whole run, room for a chain per
// segment is reserved at once: the keys grow without being moved, and the pages of the room
// they do not fill are never touched.
inline void add_chains(const Span& s, uint32_t run, const _xgWKB_BOX& window, double slack,
                       SegmentKeys& out) {
  if (window.minx <= s.box.minx && window.miny <= s.box.miny && window.maxx >= s.box.maxx &&
      window.maxy >= s.box.maxy) {
    out.reserve(out.size() + s.segments());
  }
  for_each_chain(s, [&](uint32_t first, uint32_t last, const _xgWKB_BOX& box, bool x_down,
                        bool y_down) {
    if (!boxes_meet(box, window, slack)) return;
    out.push_back(SegmentKey{box, first, last, run, x_down, y_down});
  });
}

// The chains of run s near `window`, sorted by their left edge.
inline void chains_in(const Span& s, const _xgWKB_BOX& window, double slack, SegmentKeys& out) {
  add_chains(s, 0, window, slack, out);
  sort_segment_keys(out);
}

// One axis of a chain: the low and high ends of segment j's box along it, both monotone in j
// (non-decreasing, or non-increasing when down).
struct ChainAxis {
  const _xgWKB_POINT* p;
  bool on_y;
  bool down;
  double lo(uint32_t j) const {
    const uint32_t k = down ? j + 1 : j;
    return on_y ? p[k].y : p[k].x;
  }
  double hi(uint32_t j) const {
    const uint32_t k = down ? j : j + 1;
    return on_y ? p[k].y : p[k].x;
  }
};

// Narrows [*from, *to) within chain c of run s to the segments whose boxes meet box w within t:
// boxes_meet(w, segment box, t), or boxes_meet(segment box, w, t) with seg_first (the two round
// differently, and each caller keeps the order of the plain double loop).  The result is one
// stretch: along a chain the segments' boxes are ordered on both axes, so each of the four
// comparisons of the box test holds on a prefix or on a suffix of the chain.
inline void narrow(const Span& s, const SegmentKey& c, const _xgWKB_BOX& w, double t,
                   bool seg_first, uint32_t* from, uint32_t* to) {
  for (int axis = 0; axis < 2 && *from < *to; ++axis) {
    const ChainAxis ax{s.p, axis == 1, axis == 1 ? c.y_down : c.x_down};
    const double wlo = axis == 1 ? w.miny : w.minx;
    const double whi = axis == 1 ? w.maxy : w.maxx;
    // Segment j's box ends below w, or begins above it (wkb_boxes_disjoint_tol's comparisons).
    auto below = [&](uint32_t j) { return seg_first ? ax.hi(j) + t < wlo : wlo - t > ax.hi(j); };
    auto above = [&](uint32_t j) { return seg_first ? ax.lo(j) - t > whi : whi + t < ax.lo(j); };
    // The first j of [*from, *to) where holds(j) stops being true (holds is true on a prefix).
    auto end_of = [&](auto&& holds) {
      uint32_t lo = *from, hi = *to;
      while (lo < hi) {
        const uint32_t m = lo + (hi - lo) / 2;
        if (holds(m)) lo = m + 1; else hi = m;
      }
      return lo;
    };
    uint32_t lo, hi;
    if (!ax.down) {  // `below` on a prefix, `above` on a suffix
      lo = end_of(below);
      hi = end_of([&](uint32_t j) { return !above(j); });
    } else {
      lo = end_of(above);
      hi = end_of([&](uint32_t j) { return !below(j); });
    }
    *from = lo;
    *to = hi < lo ? lo : hi;
  }
}

// Below this many pairs of segments two chains are paired by a double loop.
constexpr uint64_t kPlainChainPairs = 16;

// Calls f(i, j) for segment i of chain ca of run a and segment j of chain cb of run b whose
// boxes meet within t (segment i's box first, as in the double loop), restricted to
// j >= i + gap when gap > 0 (a and b the same run, ca not after cb).  Stops when f returns true.
template <class F>
bool chain_pairs(const Span& a, const SegmentKey& ca, const Span& b, const SegmentKey& cb,
                 double t, uint32_t gap, F&& f) {
  if (uint64_t{ca.last - ca.index} * (cb.last - cb.index) <= kPlainChainPairs) {
    // Short chains (spiky outlines are cut into chains of one or two segments): the box tests
    // cost less than the searches.
    for (uint32_t i = ca.index; i < ca.last; ++i) {
      const _xgWKB_BOX sa = segment_box(a.p[i], a.p[i + 1]);
      if (!boxes_meet(sa, cb.box, t)) continue;
      for (uint32_t j = gap > 0 && cb.index < i + gap ? i + gap : cb.index; j < cb.last; ++j) {
        if (boxes_meet(sa, segment_box(b.p[j], b.p[j + 1]), t) && f(i, j)) return true;
      }
    }
    return false;
  }
  // Only segments of ca that meet cb's box can meet one of its segments.
  uint32_t from = ca.index, to = ca.last;
  narrow(a, ca, cb.box, t, true, &from, &to);
  for (uint32_t i = from; i < to; ++i) {
    const _xgWKB_BOX sa = segment_box(a.p[i], a.p[i + 1]);
    uint32_t jf = cb.index, jt = cb.last;
    if (gap > 0 && jf < i + gap) jf = i + gap;
    if (jf >= jt) continue;
    narrow(b, cb, sa, t, false, &jf, &jt);
    for (uint32_t j = jf; j < jt; ++j) {
      if (f(i, j)) return true;
    }
  }
  return false;
}

// Calls g(ka[x], kb[y]) for every key of ka and key of kb whose boxes meet within t, sweeping
// along x, or along y or a diagonal where a sample of the pairs shows that direction to separate
// the two sides better.  Expects both sorted by their left edge.  Stops when g returns true.
template <class G>
bool sweep_keys(SegmentKeys& ka, SegmentKeys& kb, double t, double reach, G&& g) {
  if (uint64_t{ka.size()} * kb.size() > kChooseAxisPairs && reach < 1e300 && t >= 0 &&
      t < 1e300 && all_finite(ka) && all_finite(kb)) {
    const Axis d = sweep_axis(ka, kb, t);
    if (d != Axis::kX) {
      return sweep_along(d, ka, kb, t, reach, g);
    }
  }
  SmallVec<uint32_t, 32> active_a, active_b;
  std::size_t ia = 0, ib = 0;
  while (ia < ka.size() || ib < kb.size()) {
    if (ib == kb.size() || (ia < ka.size() && ka[ia].box.minx <= kb[ib].box.minx)) {
      const SegmentKey& k = ka[ia];
      if (sweep_step(k, kb, active_b, t, [&](const SegmentKey& o) { return g(k, o); })) return true;
      active_a.push_back(static_cast<uint32_t>(ia++));
    } else {
      const SegmentKey& k = kb[ib];
      if (sweep_step(k, ka, active_a, t, [&](const SegmentKey& o) { return g(o, k); })) return true;
      active_b.push_back(static_cast<uint32_t>(ib++));
    }
  }
  return false;
}

// Calls g(k, o) for every two keys of one sorted list whose boxes meet within t, each pair once.
template <class G>
bool sweep_keys_within(const SegmentKeys& keys, double t, G&& g) {
  SmallVec<uint32_t, 32> active;
  for (std::size_t n = 0; n < keys.size(); ++n) {
    const SegmentKey& k = keys[n];
    if (sweep_step(k, keys, active, t, [&](const SegmentKey& o) { return g(k, o); })) return true;
    active.push_back(static_cast<uint32_t>(n));
  }
  return false;
}

// The chains' boxes are compared with t grown by more than the rounding of the comparisons
// (which differ with the order of the two boxes): every pair of segments whose boxes meet within
// t lies in two chains whose boxes meet within this.  The segments are then tested with t.
inline double chain_slack(double t, double reach) {
  return t + 1e-12 * (reach + (t < 0 ? -t : t));
}

}  // namespace detail

// Calls f(i, j) for segment i of a and segment j of b (segment i is (p[i], p[i+1])) whose boxes
// come within t of each other.  Stops as soon as f returns true and then returns true.
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
  const double reach = detail::boxes_reach(a.box, b.box);
  if (!detail::has_nan(a) && !detail::has_nan(b)) {
    const double slack = detail::chain_slack(t, reach);
    detail::SegmentKeys ca, cb;
    detail::chains_in(a, b.box, slack, ca);
    detail::chains_in(b, a.box, slack, cb);
    return detail::sweep_keys(ca, cb, slack, reach,
                              [&](const detail::SegmentKey& x, const detail::SegmentKey& y) {
                                return detail::chain_pairs(a, x, b, y, t, 0, f);
                              });
  }
  detail::SegmentKeys ka, kb;
  detail::sorted_segment_keys_in(a, b.box, t, ka);
  detail::sorted_segment_keys_in(b, a.box, t, kb);
  return detail::sweep_keys(ka, kb, t, reach,
                            [&](const detail::SegmentKey& x, const detail::SegmentKey& y) {
                              return f(x.index, y.index);
                            });
}

// Calls f(rx, i, ry, j) for segment i of run rx of xs and segment j of run ry of ys whose boxes
// come within t of each other: the pairs any_segment_pair offers for every pair of runs, found
// in one sweep over the chains of all runs, so that shapes of many rings are paired at the cost
// of one ring of their size rather than of every pair of rings.  Stops as soon as f returns
// true and then returns true.
template <class F>
bool any_run_segment_pair(const ShapeRuns& xs, const ShapeRuns& ys, double t, F&& f) {
  bool nan = false;
  for (uint32_t r = 0; r < xs.run_count() && !nan; ++r) nan = detail::has_nan(xs.run(r));
  for (uint32_t r = 0; r < ys.run_count() && !nan; ++r) nan = detail::has_nan(ys.run(r));
  if (nan || uint64_t{xs.run_count()} * ys.run_count() <= 4) {
    for (uint32_t rx = 0; rx < xs.run_count(); ++rx) {
      for (uint32_t ry = 0; ry < ys.run_count(); ++ry) {
        const bool done = any_segment_pair(xs.run(rx), ys.run(ry), t, [&](uint32_t i, uint32_t j) {
          return f(rx, i, ry, j);
        });
        if (done) return true;
      }
    }
    return false;
  }
  const _xgWKB_BOX xbox = xs.box(), ybox = ys.box();
  if (!boxes_meet(xbox, ybox, t)) return false;
  const double reach = detail::boxes_reach(xbox, ybox);
  const double slack = detail::chain_slack(t, reach);
  detail::SegmentKeys cx, cy;
  for (uint32_t r = 0; r < xs.run_count(); ++r) detail::add_chains(xs.run(r), r, ybox, slack, cx);
  for (uint32_t r = 0; r < ys.run_count(); ++r) detail::add_chains(ys.run(r), r, xbox, slack, cy);
  detail::sort_segment_keys(cx);
  detail::sort_segment_keys(cy);
  return detail::sweep_keys(cx, cy, slack, reach,
                            [&](const detail::SegmentKey& a, const detail::SegmentKey& b) {
                              return detail::chain_pairs(
                                  xs.run(a.run), a, ys.run(b.run), b, t, 0,
                                  [&](uint32_t i, uint32_t j) { return f(a.run, i, b.run, j); });
                            });
}

// Calls f(ra, i, rb, j) for segment i of runs[ra] and segment j of runs[rb], ra < rb, whose
// boxes come within t of each other (segment i's box first): the pairs any_segment_pair offers
// for every two runs of the list, found in one sweep over the chains of all of them.  Stops as
// soon as f returns true and then returns true.
template <class F>
bool any_segment_pair_between(const Span* runs, uint32_t count, double t, F&& f) {
  bool nan = false;
  uint64_t segments = 0;
  _xgWKB_BOX all = empty_box();
  for (uint32_t r = 0; r < count; ++r) {
    nan = nan || detail::has_nan(runs[r]);
    segments += runs[r].segments();
    box_merge(&all, runs[r].box);
  }
  if (nan || segments * segments <= 2 * detail::kSweepPairs) {
    for (uint32_t a = 0; a < count; ++a) {
      for (uint32_t b = a + 1; b < count; ++b) {
        const bool done = any_segment_pair(runs[a], runs[b], t, [&](uint32_t i, uint32_t j) {
          return f(a, i, b, j);
        });
        if (done) return true;
      }
    }
    return false;
  }
  const double slack = detail::chain_slack(t, detail::boxes_reach(all, all));
  const double inf = std::numeric_limits<double>::infinity();
  detail::SegmentKeys keys;
  for (uint32_t r = 0; r < count; ++r) {
    detail::add_chains(runs[r], r, _xgWKB_BOX{-inf, -inf, inf, inf}, 0, keys);
  }
  detail::sort_segment_keys(keys);
  return detail::sweep_keys_within(
      keys, slack, [&](const detail::SegmentKey& k, const detail::SegmentKey& o) {
        if (k.run == o.run) return false;
        const detail::SegmentKey& x = k.run < o.run ? k : o;
        const detail::SegmentKey& y = k.run < o.run ? o : k;
        return detail::chain_pairs(runs[x.run], x, runs[y.run], y, t, 0,
                                   [&](uint32_t i, uint32_t j) { return f(x.run, i, y.run, j); });
      });
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
  if (!detail::has_nan(a)) {
    const double slack = detail::chain_slack(t, detail::boxes_reach(a.box, a.box));
    const double inf = std::numeric_limits<double>::infinity();
    detail::SegmentKeys c;
    detail::chains_in(a, _xgWKB_BOX{-inf, -inf, inf, inf}, 0, c);
    for (const detail::SegmentKey& k : c) {
      if (detail::chain_pairs(a, k, a, k, t, gap, f)) return true;
    }
    return detail::sweep_keys_within(
        c, slack, [&](const detail::SegmentKey& k, const detail::SegmentKey& o) {
          // The chain earlier in the run goes first, as segment i < j in the double loop.
          return k.index < o.index ? detail::chain_pairs(a, k, a, o, t, gap, f)
                                   : detail::chain_pairs(a, o, a, k, t, gap, f);
        });
  }
  detail::SegmentKeys keys;
  detail::sorted_segment_keys(a, keys);
  return detail::sweep_keys_within(keys, t, [&](const detail::SegmentKey& k,
                                                const detail::SegmentKey& o) {
    const uint32_t i = std::min(k.index, o.index);
    const uint32_t j = std::max(k.index, o.index);
    return j - i >= gap && f(i, j);
  });
}

}  // namespace xg

#endif  // XGGEO_RELATE_SEGMENT_PAIRS_H
