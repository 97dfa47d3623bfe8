// ring_index.h - an edge index over a large ring, so that the point and segment tests against
// it look at the few edges near the query instead of all of them.
//
// Edge j joins p[j] and p[j+1].  Its y-range, grown on both sides by touch_margin (the very
// margin of the point-on-segment box test), is filed into horizontal bands of equal height;
// within a band the edges come in the order of the column (vertical strip of equal width)
// holding their left end.  A point query visits the edges whose grown y-range holds the
// point's y: every edge that can hold the point or flip the crossing parity at it.  A segment
// query visits the edges whose box comes within a margin of the segment's box.  Band and column
// are monotone functions of y and x, and an edge is only ever passed over on comparisons that
// follow from that order, so the indexed tests give the answers of the plain loops, bit for bit.
//
// The index is attached to a Span (Span::index) by the callers that test one ring many times;
// the tests in point_runs.h and segment_tests.h use it when present.  It is built on demand: a
// ring asked only a few times is answered by the plain loops and never pays for the build.
// Rings of up to kPlainRingPoints points are never indexed.  Whether a box lies clear of the
// ring (box_clear) is answered before any build by a scan, so that a ring only asked that about
// far boxes is never indexed.
#ifndef XGGEO_RELATE_RING_INDEX_H
#define XGGEO_RELATE_RING_INDEX_H

#include <cstdint>
#include <vector>

#include "relate/point_runs.h"

namespace xg {

// Rings this small are scanned faster than an index is built.
constexpr uint32_t kPlainRingPoints = 32;

// Coordinates and tolerances the index takes: finite and below 1e150 in size, so that no sum
// or product of two coordinate differences overflows.  Other queries go to the plain loops.
constexpr double kIndexedRange = 1e150;

inline bool indexable(const _xgWKB_POINT& p) {
  return p.x > -kIndexedRange && p.x < kIndexedRange && p.y > -kIndexedRange && p.y < kIndexedRange;
}

class RingIndex {
 public:
  RingIndex() = default;
  RingIndex(const RingIndex&) = delete;
  RingIndex& operator=(const RingIndex&) = delete;

  // Prepares an index over ring's edges for tolerance t.  Nothing is built yet; false when the
  // ring is too small to repay an index, which then stays unused.
  bool prepare(const Span& ring, double t);

  // True when the index answers queries made with tolerance t.  Until then each call counts a
  // query, and the index is built once enough have been counted.  A ring whose coordinates or
  // tolerance the index cannot take (see indexable), or whose index cannot be allocated, stays
  // unindexed.
  bool ready(double t) const;

  // Tells the index that at least `queries` queries are coming, so that it is built at the
  // first rather than after answering the first few by the plain loops.
  void expect_queries(uint32_t queries) const;

  // Calls f(j) for every edge j whose grown y-range holds y (and possibly a few others), until
  // f returns true; true when it did.
  template <class F>
  bool edges_at(double y, F&& f) const;

  // Calls f(j), until f returns true, for the edges of y's band (those edges_at(y, f) would
  // visit) except some that lie wholly beyond `reach` of x on one side: on the left when
  // *skipped_right comes back false, on the right when true.  The side is the one that skips
  // more.  reach must be at least reach_for(x) (see there) for the callers' arguments to hold.
  template <class F>
  bool edges_at_side(double y, double x, double reach, bool* skipped_right, F&& f) const;

  // A distance beyond which an edge lying wholly left or right of x can neither hold a point
  // at x within t (the box tests grow edges by touch_margin at most) nor have the side of its
  // crossing with the horizontal misjudged by rounding (the products and quotients of the
  // crossing tests err by far less than 1e-12 of the coordinates' size).
  double reach_for(double x) const {
    return tables_.max_margin + 1e-12 * (reach_ + (x < 0 ? -x : x));
  }

  // The margin to pass to edges_near for segment (a, b) under tolerance t, when the numbers
  // allow box rejection of edges for the segment tests; false when they do not.  (The margin
  // bounds the rounding of those tests; see ring_index.cpp.)
  bool segment_margin(const _xgWKB_POINT& a, const _xgWKB_POINT& b, double t, double* margin) const;

  // Calls f(j) once for every edge j whose box comes within margin of box (and possibly a few
  // others), until f returns true; true when it did.
  template <class F>
  bool edges_near(const _xgWKB_BOX& box, double margin, F&& f) const;

  // True when no edge comes near box (whose corners must be indexable) under tolerance t > 0:
  // edges_near offers no edge within t of it, nor within the margin segment_margin gives any
  // segment inside it, nor (with_points) within reach_for of any point inside it.  Every query
  // of those kinds inside box is then offered no edge.  Answered by one query once the index is
  // built; before that by a scan of the edges, with the build's own numbers, that counts as no
  // query: a ring asked only a few times about far boxes is never indexed (a bounded number of
  // scans builds it).  False when the index cannot take the ring or t, or the numbers refuse
  // segment queries.
  bool box_clear(const _xgWKB_BOX& box, double t, bool with_points) const;

  // ring_relation(p, ring, t) for the index's tolerance, by a walk over the edges that passes
  // over those whose y-range is far from p's; after a number of such scans, through the index
  // (built then).
  int32_t locate_by_scan(const _xgWKB_POINT& p) const;

 private:
  // The grown y-range of an edge; its x-range (not grown) is read from the ring's points.
  struct Edge {
    double lo;
    double hi;
  };

  double minx_of(uint32_t j) const { return p_[j].x < p_[j + 1].x ? p_[j].x : p_[j + 1].x; }
  double maxx_of(uint32_t j) const { return p_[j].x < p_[j + 1].x ? p_[j + 1].x : p_[j].x; }

  // A monotone split of [origin, origin + count / per_unit) into count equal slots; values
  // beyond either end go to the end slots.
  struct Slots {
    double origin = 0;
    double per_unit = 0;
    uint32_t count = 1;

    void fit(double lo, double hi, uint32_t n);
    uint32_t at(double v) const {
      const double f = (v - origin) * per_unit;  // rounds monotonely: per_unit >= 0
      if (!(f > 0)) return 0;
      if (f >= static_cast<double>(count)) return count - 1;
      return static_cast<uint32_t>(f);
    }
  };

  // What build() makes: the edges' ranges, and per band the edge numbers in column order
  // (entries[starts[b] .. starts[b+1])) with the widest column span of its edges.
  struct Tables {
    bool segments_ok = false;  // the ring's numbers allow segment queries
    double max_margin = 0;     // the largest touch_margin of an edge
    std::vector<Edge> edges;
    Slots bands;
    Slots columns;
    std::vector<uint32_t> starts;
    std::vector<uint32_t> widths;
    std::vector<uint32_t> entries;
  };

  bool build() const;

  // True when a scan may answer in place of the index: not built yet, and not too many scans
  // made; the scan that is one too many builds the index instead (false then).
  bool may_scan() const;

  // The build's segments_ok and max_margin, found by a scan of the edges (once); false for a
  // ring the index cannot take.
  bool scan_margins(bool* segments_ok, double* max_margin) const;

  // No edge, its y-range grown by max_margin, comes within margin of box: a scan of them all.
  bool scan_clear(const _xgWKB_BOX& box, double margin, double max_margin) const;

  // segment_margin with the given segments_ok.
  bool margin_for(bool segments_ok, const _xgWKB_POINT& a, const _xgWKB_POINT& b, double t,
                  double* margin) const;

  const _xgWKB_POINT* p_ = nullptr;
  uint32_t n_ = 0;
  double t_ = 0;
  _xgWKB_BOX box_{};
  double reach_ = 0;  // largest absolute coordinate of the ring
  // Built on demand by the const queries; the index belongs to one call, so nothing is shared
  // between threads.  state_: 0 counting queries, 1 built, -1 refused.
  mutable int state_ = -1;
  mutable uint32_t queries_ = 0;
  mutable Tables tables_;
  mutable uint32_t scans_ = 0;  // scans made by box_clear and locate_by_scan before a build
  // What scan_margins found for box_clear before a build: 0 not scanned, 1 scanned, -1 refused.
  mutable int scanned_ = 0;
  mutable bool scanned_segments_ok_ = false;
  mutable double scanned_max_margin_ = 0;
  // The last box box_clear found clear, and its margin: asked again with no larger a margin (a
  // run tested first with points, then without), it answers at once.
  mutable _xgWKB_BOX clear_box_{};
  mutable double clear_margin_ = -1;
};

// A list of runs (the rings of a polygon, or all the runs of a shape) with a RingIndex attached
// to each large one (runs that already carry an index keep it).  Holds the spans and indexes;
// not copyable.
class IndexedPolygon {
 public:
  IndexedPolygon(const PolySpans& polygon, double t);
  IndexedPolygon(const IndexedPolygon&) = delete;
  IndexedPolygon& operator=(const IndexedPolygon&) = delete;

  const PolySpans& spans() const { return spans_; }

 private:
  std::vector<RingIndex> indexes_;
  std::vector<Span> rings_;
  PolySpans spans_;
};

// A single span with a RingIndex attached when it is large and carries none yet.
class IndexedSpan {
 public:
  IndexedSpan(const Span& span, double t) : span_(span) {
    if (span.index == nullptr && index_.prepare(span, t)) span_.index = &index_;
  }
  IndexedSpan(const IndexedSpan&) = delete;
  IndexedSpan& operator=(const IndexedSpan&) = delete;

  const Span& span() const { return span_; }

 private:
  RingIndex index_;
  Span span_;
};

// ---- queries -------------------------------------------------------------------------------

template <class F>
bool RingIndex::edges_at(double y, F&& f) const {
  const Tables& tb = tables_;
  const uint32_t b = tb.bands.at(y);
  for (uint32_t k = tb.starts[b]; k < tb.starts[b + 1]; ++k) {
    const uint32_t j = tb.entries[k];
    if (tb.edges[j].lo <= y && y <= tb.edges[j].hi && f(j)) return true;
  }
  return false;
}

template <class F>
bool RingIndex::edges_at_side(double y, double x, double reach, bool* skipped_right, F&& f) const {
  const Tables& tb = tables_;
  const uint32_t b = tb.bands.at(y);
  const uint32_t begin = tb.starts[b];
  const uint32_t end = tb.starts[b + 1];
  // Entries run in column order of the edges' left ends.  Those from `right` on start right of
  // x + reach; those before `left` end left of x - reach (their right end lies at most the
  // band's widest span of columns after their left end).
  const uint32_t c_hi = tb.columns.at(x + reach);
  const uint32_t c_lo = tb.columns.at(x - reach);
  const uint32_t from = c_lo > tb.widths[b] ? c_lo - tb.widths[b] : 0;
  auto first_at_or_after = [&](uint32_t column) {
    uint32_t lo = begin, hi = end;
    while (lo < hi) {
      const uint32_t mid = lo + (hi - lo) / 2;
      if (tb.columns.at(minx_of(tb.entries[mid])) < column) {
        lo = mid + 1;
      } else {
        hi = mid;
      }
    }
    return lo;
  };
  const uint32_t left = from > 0 ? first_at_or_after(from) : begin;
  const uint32_t right = c_hi + 1 < tb.columns.count ? first_at_or_after(c_hi + 1) : end;
  *skipped_right = end - right >= left - begin;
  const uint32_t k0 = *skipped_right ? begin : left;
  const uint32_t k1 = *skipped_right ? right : end;
  for (uint32_t k = k0; k < k1; ++k) {
    const uint32_t j = tb.entries[k];
    if (tb.edges[j].lo <= y && y <= tb.edges[j].hi && f(j)) return true;
  }
  return false;
}

template <class F>
bool RingIndex::edges_near(const _xgWKB_BOX& box, double margin, F&& f) const {
  const Tables& tb = tables_;
  const double minx = box.minx - margin;
  const double maxx = box.maxx + margin;
  const double miny = box.miny - margin;
  const double maxy = box.maxy + margin;
  const uint32_t b0 = tb.bands.at(miny);
  const uint32_t b1 = tb.bands.at(maxy);
  const uint32_t c0 = tb.columns.at(minx);
  const uint32_t c1 = tb.columns.at(maxx);
  for (uint32_t b = b0; b <= b1; ++b) {
    // An edge whose left end lies more than the band's widest span left of column c0 ends left
    // of it: skip those by binary search.
    const uint32_t from = c0 > tb.widths[b] ? c0 - tb.widths[b] : 0;
    uint32_t lo = tb.starts[b];
    uint32_t hi = tb.starts[b + 1];
    while (lo < hi) {
      const uint32_t mid = lo + (hi - lo) / 2;
      if (tb.columns.at(minx_of(tb.entries[mid])) < from) {
        lo = mid + 1;
      } else {
        hi = mid;
      }
    }
    for (uint32_t k = lo; k < tb.starts[b + 1]; ++k) {
      const uint32_t j = tb.entries[k];
      const Edge& e = tb.edges[j];
      const double e_minx = minx_of(j);
      if (tb.columns.at(e_minx) > c1) break;  // this edge and all after it start right of the box
      if (maxx_of(j) < minx || e_minx > maxx || e.hi < miny || e.lo > maxy) continue;
      // An edge filed in several bands is offered from the first one the query shares.
      if (b != b0 && tb.bands.at(e.lo) != b) continue;
      if (f(j)) return true;
    }
  }
  return false;
}

}  // namespace xg

#endif  // XGGEO_RELATE_RING_INDEX_H
