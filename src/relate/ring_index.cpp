// ring_index.cpp - building the edge index of a ring, and the point locators that use it.
#include "relate/ring_index.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <new>

#include "relate/planar.h"

namespace xg {

namespace {

// Queries answered by the plain loops before the index is built: a build costs about as much
// as a few scans of the ring.
constexpr uint32_t kQueriesBeforeBuild = 4;

// Scans for box_clear and locate_by_scan before the index is built instead: a scan costs a
// small part of a build, so a ring asked many times is indexed after a bounded waste.
constexpr uint32_t kScansBeforeBuild = 12;

// Band filing repeats an edge in every band its range spans; past this many entries per edge
// on the whole the bands are made coarser.
constexpr std::size_t kEntriesPerEdge = 8;

}  // namespace

bool RingIndex::prepare(const Span& ring, double t) {
  p_ = ring.p;
  n_ = ring.n;
  t_ = t;
  box_ = ring.box;
  reach_ = std::fmax(std::fmax(std::fabs(box_.minx), std::fabs(box_.maxx)),
                     std::fmax(std::fabs(box_.miny), std::fabs(box_.maxy)));
  queries_ = 0;
  state_ = n_ > kPlainRingPoints && std::fabs(t) < kIndexedRange ? 0 : -1;
  return state_ == 0;
}

bool RingIndex::ready(double t) const {
  if (state_ == 1) return t == t_;
  if (state_ < 0 || t != t_) return false;
  if (++queries_ < kQueriesBeforeBuild) return false;
  state_ = build() ? 1 : -1;
  if (state_ < 0) tables_ = Tables();
  return state_ == 1;
}

void RingIndex::expect_queries(uint32_t queries) const {
  if (state_ == 0 && queries >= kQueriesBeforeBuild && queries_ + 1 < kQueriesBeforeBuild) {
    queries_ = kQueriesBeforeBuild - 1;
  }
}

void RingIndex::Slots::fit(double lo, double hi, uint32_t n) {
  origin = lo;
  count = n > 0 ? n : 1;
  per_unit = static_cast<double>(count) / (hi - lo);
  if (!(per_unit > 0 && per_unit < std::numeric_limits<double>::infinity())) {
    count = 1;  // nothing to split: one slot
    per_unit = 0;
  }
}

bool RingIndex::build() const {
  const uint32_t edges = n_ - 1;
  Tables& tb = tables_;
  try {
    // The edges' ranges, the y-range grown exactly as the point-on-segment box test grows it.
    // Each edge must have length 0 or one far above the underflow range, so that the side
    // distances computed against it keep their relative accuracy (see segment_margin).
    tb.segments_ok = true;
    tb.edges.resize(edges);
    const double inf = std::numeric_limits<double>::infinity();
    _xgWKB_BOX all{inf, inf, -inf, -inf};
    double height = 0;  // of all the grown ranges together
    for (uint32_t j = 0; j < edges; ++j) {
      const _xgWKB_POINT& a = p_[j];
      const _xgWKB_POINT& b = p_[j + 1];
      if (!indexable(a) || !indexable(b)) return false;
      const double d2 = dist2(a, b);
      if (d2 != 0 && d2 < 1e-200) tb.segments_ok = false;
      const double g = touch_margin(a, b, t_);
      if (g > tb.max_margin) tb.max_margin = g;
      const double miny = a.y < b.y ? a.y : b.y;
      const double maxy = a.y < b.y ? b.y : a.y;
      Edge& e = tb.edges[j];
      e = Edge{miny - g, maxy + g};
      // Plain comparisons: the points are finite (indexable), so no NaN reaches them.
      if (minx_of(j) < all.minx) all.minx = minx_of(j);
      if (e.lo < all.miny) all.miny = e.lo;
      if (maxx_of(j) > all.maxx) all.maxx = maxx_of(j);
      if (e.hi > all.maxy) all.maxy = e.hi;
      height += e.hi - e.lo;
    }
    // Bands tall enough that an edge spans about three on the whole (at most one per two
    // edges), coarser while the filing would repeat edges too often.
    const double span = all.maxy - all.miny;
    const double wanted = height > 0 ? 3.0 * edges * span / height : 1.0;
    uint32_t bands = wanted < 1 ? 1 : (wanted < edges / 2 ? static_cast<uint32_t>(wanted) : edges / 2);
    std::size_t total = 0;
    for (;;) {
      tb.bands.fit(all.miny, all.maxy, bands);
      total = 0;
      for (const Edge& e : tb.edges) total += tb.bands.at(e.hi) - tb.bands.at(e.lo) + 1;
      if (tb.bands.count == 1 || total <= kEntriesPerEdge * edges) break;
      bands = tb.bands.count / 2;
    }
    // The edges in column order of their left ends (a counting sort), then filed band by band.
    tb.columns.fit(all.minx, all.maxx, edges / 2);
    std::vector<uint32_t> column(edges);  // of each edge's left end
    std::vector<uint32_t> order(edges);
    {
      std::vector<uint32_t> at(tb.columns.count + 1, 0);
      for (uint32_t j = 0; j < edges; ++j) {
        column[j] = tb.columns.at(minx_of(j));
        ++at[column[j] + 1];
      }
      for (uint32_t c = 0; c < tb.columns.count; ++c) at[c + 1] += at[c];
      for (uint32_t j = 0; j < edges; ++j) order[at[column[j]]++] = j;
    }
    const uint32_t count = tb.bands.count;
    tb.starts.assign(count + 1, 0);
    tb.widths.assign(count, 0);
    for (uint32_t j = 0; j < edges; ++j) {
      const Edge& e = tb.edges[j];
      const uint32_t width = tb.columns.at(maxx_of(j)) - column[j];
      for (uint32_t b = tb.bands.at(e.lo), last = tb.bands.at(e.hi); b <= last; ++b) {
        ++tb.starts[b + 1];
        if (width > tb.widths[b]) tb.widths[b] = width;
      }
    }
    std::vector<uint32_t>().swap(column);  // freed before the entries are allocated
    for (uint32_t b = 0; b < count; ++b) tb.starts[b + 1] += tb.starts[b];
    tb.entries.resize(total);
    std::vector<uint32_t> next(tb.starts.begin(), tb.starts.end() - 1);
    for (uint32_t j : order) {
      const Edge& e = tb.edges[j];
      for (uint32_t b = tb.bands.at(e.lo), last = tb.bands.at(e.hi); b <= last; ++b) {
        tb.entries[next[b]++] = j;
      }
    }
  } catch (const std::bad_alloc&) {
    return false;  // the plain loops answer the same
  }
  return true;
}

// Box rejection in the segment tests (ring_tests.cpp) drops an edge only when it cannot matter:
//  - an edge crossing the segment has both its ends strictly on either side of the segment's
//    line, beyond t, and the segment's ends likewise about the edge's line.  A side distance
//    computed by side_distance is off by at most 8u|q - a| (u the unit roundoff, q the point, a
//    the line's first point), below 1e-14 D for D the size of the box around ring and segment.
//    With t above that, each computed side is the true one, so the two truly cross and their
//    boxes meet.
//  - a vertex found within t of the segment by near_segment lies within t(1 + 3u) of a point
//    computed within 2uD + u|coordinates| of the segment's box.
// Both are covered by growing the segment's box by 2t + 1e-12 (reach + D).  Tolerances below
// 1e-150 are refused, so that t * t does not underflow.
bool RingIndex::segment_margin(const _xgWKB_POINT& a, const _xgWKB_POINT& b, double t,
                               double* margin) const {
  return margin_for(tables_.segments_ok, a, b, t, margin);
}

bool RingIndex::margin_for(bool segments_ok, const _xgWKB_POINT& a, const _xgWKB_POINT& b,
                           double t, double* margin) const {
  if (!segments_ok || !(t >= 1e-150) || !indexable(a) || !indexable(b)) return false;
  _xgWKB_BOX all = box_;
  box_add(&all, a);
  box_add(&all, b);
  const double size = (all.maxx - all.minx) + (all.maxy - all.miny);
  if (!(t > 1e-14 * size)) return false;
  const double reach = std::fmax(reach_, std::fmax(std::fmax(std::fabs(a.x), std::fabs(a.y)),
                                                   std::fmax(std::fabs(b.x), std::fabs(b.y))));
  *margin = 2 * t + 1e-12 * (reach + size);
  return true;
}

bool RingIndex::scan_margins(bool* segments_ok, double* max_margin) const {
  if (scanned_ == 0) {
    // The margin of the ring's box bounds every edge's (it grows with the size, and rounds
    // monotonely), and a larger margin only widens what the scans look at.
    scanned_max_margin_ = touch_margin(_xgWKB_POINT{box_.minx, box_.miny},
                                       _xgWKB_POINT{box_.maxx, box_.maxy}, t_);
    scanned_segments_ok_ = true;
    scanned_ = 1;
    for (uint32_t j = 0; j < n_; ++j) {
      if (!indexable(p_[j])) {
        scanned_ = -1;
        break;
      }
      if (j + 1 < n_) {
        const double d2 = dist2(p_[j], p_[j + 1]);
        scanned_segments_ok_ = scanned_segments_ok_ && !(d2 != 0 && d2 < 1e-200);
      }
    }
  }
  *segments_ok = scanned_segments_ok_;
  *max_margin = scanned_max_margin_;
  return scanned_ > 0;
}

bool RingIndex::may_scan() const {
  if (state_ != 0) return false;
  if (++scans_ <= kScansBeforeBuild) return true;
  state_ = build() ? 1 : -1;
  if (state_ < 0) tables_ = Tables();
  return false;
}

int32_t RingIndex::locate_by_scan(const _xgWKB_POINT& p) const {
  if (!may_scan() && state_ == 1) return indexed_ring_relation(p, Span{p_, n_, box_, this}, t_);
  bool segments_ok = false;
  double g = 0;
  if (state_ != 0 || !scan_margins(&segments_ok, &g) || !indexable(p)) return ring_relation(p, p_, n_, t_);
  // ring_relation's walk, passing over the edges whose y-range grown by g (at least their own
  // touch_margin) misses p.y: they neither hold p nor flip the parity.
  int32_t inside = 0;
  for (uint32_t i = 1; i < n_; ++i) {
    const double y0 = p_[i - 1].y;
    const double y1 = p_[i].y;
    if (p.y < (y0 < y1 ? y0 : y1) - g || p.y > (y0 < y1 ? y1 : y0) + g) continue;
    if (ring_edge_step(p, p_[i - 1], p_[i], t_, &inside)) return 2;
  }
  return inside;
}

bool RingIndex::box_clear(const _xgWKB_BOX& box, double t, bool with_points) const {
  if (state_ < 0 || t != t_ || !(t > 0)) return false;
  bool segments_ok = tables_.segments_ok;
  double max_margin = tables_.max_margin;
  if (state_ == 0 && !scan_margins(&segments_ok, &max_margin)) return false;
  double margin = t;
  if (with_points) {
    // The margin for the box's corners bounds that of every segment inside the box (the box
    // around ring and segment, and the largest coordinate, only grow), and reach_for grows with
    // the distance of x from 0.
    double segments = 0;
    if (!margin_for(segments_ok, _xgWKB_POINT{box.minx, box.miny}, _xgWKB_POINT{box.maxx, box.maxy}, t,
                    &segments)) {
      return false;
    }
    const double x = std::fmax(std::fabs(box.minx), std::fabs(box.maxx));
    margin = std::fmax(margin, std::fmax(segments, max_margin + 1e-12 * (reach_ + x)));
  }
  if (margin <= clear_margin_ && box.minx == clear_box_.minx && box.miny == clear_box_.miny &&
      box.maxx == clear_box_.maxx && box.maxy == clear_box_.maxy) {
    return true;
  }
  // Past a number of scans the index is built and asked instead (the margins found by the scan
  // bound the built ones).
  if (!may_scan() && state_ != 1) return false;
  const bool clear = state_ == 1 ? !edges_near(box, margin, [](uint32_t) { return true; })
                                 : scan_clear(box, margin, max_margin);
  if (clear) {
    clear_box_ = box;
    clear_margin_ = margin;
  }
  return clear;
}

bool RingIndex::scan_clear(const _xgWKB_BOX& box, double margin, double max_margin) const {
  // The test edges_near makes of each edge, on every edge, with each y-range grown by the
  // largest margin rather than its own (an edge apart from the box so is apart with its own).
  // An edge is apart when both its ends lie left of the grown box, or both right, below or
  // above: each vertex gets one bit per side, and an edge is apart when its ends share one.
  const double minx = box.minx - margin;
  const double maxx = box.maxx + margin;
  const double miny = box.miny - margin;
  const double maxy = box.maxy + margin;
  auto sides = [&](const _xgWKB_POINT& q) {
    return (q.x < minx ? 1u : 0u) | (q.x > maxx ? 2u : 0u) | (q.y + max_margin < miny ? 4u : 0u) |
           (q.y - max_margin > maxy ? 8u : 0u);
  };
  if (n_ < 2) return true;
  unsigned last = sides(p_[0]);
  for (uint32_t first = 1; first < n_; first += 64) {
    const uint32_t end = std::min(first + 64, n_);
    bool near = false;
    for (uint32_t j = first; j < end; ++j) {
      const unsigned here = sides(p_[j]);
      near |= (here & last) == 0;
      last = here;
    }
    if (near) return false;
  }
  return true;
}

IndexedPolygon::IndexedPolygon(const PolySpans& polygon, double t) : spans_(polygon) {
  bool any = false;
  for (uint32_t r = 0; r < polygon.count; ++r) {
    any = any || (polygon.rings[r].index == nullptr && polygon.rings[r].n > kPlainRingPoints);
  }
  if (!any) return;
  indexes_ = std::vector<RingIndex>(polygon.count);
  rings_.assign(polygon.rings, polygon.rings + polygon.count);
  for (uint32_t r = 0; r < polygon.count; ++r) {
    if (rings_[r].index == nullptr && indexes_[r].prepare(rings_[r], t)) rings_[r].index = &indexes_[r];
  }
  spans_ = PolySpans{rings_.data(), polygon.count};
}

// ---- the point locators --------------------------------------------------------------------

int32_t indexed_ring_relation(const _xgWKB_POINT& p, const Span& ring, double t) {
  if (!ring.index->ready(t) || !indexable(p)) return ring_relation(p, ring.p, ring.n, t);
  // Edges outside p's band neither hold p nor flip the parity, and the parity does not depend
  // on the order the edges are visited in.
  // Edges wholly beyond reach of p on one side are passed over: they do not hold p, and each
  // crosses the horizontal through p, if at all, on that side.  Passing over the left ones
  // leaves the parity of the crossings right of p as it is.  Passing over the right ones, the
  // parity of the crossings right of p is that of all crossings (even for a closed ring: the
  // walk returns to the side it started on; for an open one, odd when its ends lie on opposite
  // sides of the horizontal) minus those seen not right of p.
  int32_t inside = 0;
  int32_t crossings = 0;
  bool skipped_right = false;
  const bool on = ring.index->edges_at_side(p.y, p.x, ring.index->reach_for(p.x), &skipped_right,
                                            [&](uint32_t j) {
    const _xgWKB_POINT& prev = ring.p[j];
    const _xgWKB_POINT& cur = ring.p[j + 1];
    if (ring_edge_step(p, prev, cur, t, &inside)) return true;
    crossings ^= ((cur.y <= p.y && p.y < prev.y) || (prev.y <= p.y && p.y < cur.y)) ? 1 : 0;
    return false;
  });
  if (on) return 2;
  if (!skipped_right) return inside;
  const int32_t all = (ring.p[0].y > p.y) != (ring.p[ring.n - 1].y > p.y) ? 1 : 0;
  return all ^ crossings ^ inside;
}

int32_t indexed_locate_on_run(const _xgWKB_POINT& p, const Span& run, double t) {
  if (!run.index->ready(t) || !indexable(p)) return locate_on_run(p, run.p, run.n, t);
  // The plain walk answers with its first hit.  Ranked in its order (vertex i as 2i, the
  // segment ending at vertex i as 2i + 1), the answer is the lowest-ranked hit.  A vertex equal
  // to p within t is offered with its edges: their y-ranges are grown by more than t.
  // Only edges within reach of p can hold it (reach_for covers every edge's touch margin, which
  // exceeds t), so the query is the box of p grown by that reach rather than p's whole band.
  uint64_t best = std::numeric_limits<uint64_t>::max();
  const _xgWKB_BOX at{p.x, p.y, p.x, p.y};
  run.index->edges_near(at, run.index->reach_for(p.x), [&](uint32_t j) {
    const uint64_t rank = 2 * uint64_t{j};
    if (rank < best && wkb_point_equal_tol(p, run.p[j], t)) best = rank;
    if (rank + 2 < best && wkb_point_equal_tol(p, run.p[j + 1], t)) best = rank + 2;
    if (rank + 3 < best && segment_relation(p, run.p[j], run.p[j + 1], t) == 1) best = rank + 3;
    return false;
  });
  if (best == std::numeric_limits<uint64_t>::max()) return 0;
  const int32_t i = static_cast<int32_t>(best / 2);
  return best % 2 == 0 ? -(i + 1) : i;
}

}  // namespace xg
