// nearest_pair.cpp - branch and bound over two box trees of segments.
#include "construct/nearest_pair.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <queue>

#include "relate/planar.h"
#include "relate/point_runs.h"
#include "relate/segment_tests.h"

namespace xg {

namespace {

// Squared distance between two boxes (0 when they meet).  A gap that comes out NaN (boxes with
// infinite sides) counts as 0, so that the queue never holds a NaN key.
double box_distance2(const _xgWKB_BOX& a, const _xgWKB_BOX& b) {
  double gx = std::fmax(a.minx - b.maxx, b.minx - a.maxx);
  double gy = std::fmax(a.miny - b.maxy, b.miny - a.maxy);
  if (!(gx > 0)) gx = 0;
  if (!(gy > 0)) gy = 0;
  return gx * gx + gy * gy;
}

double extent(const _xgWKB_BOX& b) {
  const double e = (b.maxx - b.minx) + (b.maxy - b.miny);
  return e > 0 ? e : 0;
}

bool degenerate(const SegmentItem& s) { return s.a.x == s.b.x && s.a.y == s.b.y; }

_xgWKB_BOX item_box(const SegmentItem& s) { return segment_box(s.a, s.b); }

// box_add without branches; a NaN coordinate leaves the box as it is.
inline void grow(_xgWKB_BOX* box, const _xgWKB_POINT& p) {
  box->minx = p.x < box->minx ? p.x : box->minx;
  box->miny = p.y < box->miny ? p.y : box->miny;
  box->maxx = p.x > box->maxx ? p.x : box->maxx;
  box->maxy = p.y > box->maxy ? p.y : box->maxy;
}

double segment_distance2(const SegmentItem& s, const SegmentItem& u) {
  double d = segment_dist2(s.a, u.a, u.b);
  d = std::fmin(d, segment_dist2(s.b, u.a, u.b));
  d = std::fmin(d, segment_dist2(u.a, s.a, s.b));
  d = std::fmin(d, segment_dist2(u.b, s.a, s.b));
  if (d > 0 && !degenerate(s) && !degenerate(u) && box_distance2(item_box(s), item_box(u)) == 0 &&
      segment_meet(s.a, s.b, u.a, u.b, 0, nullptr) != 0) {
    return 0;  // the segments cross
  }
  return d;
}

// A permutation of pts in the order of a grid of about per_cell points to a cell, its rows
// walked alternately left and right: neighbours in the order are mostly near each other.  One
// counting-sort pass; NaN coordinates go to the first column or row.
std::vector<uint32_t> grid_order(const std::vector<_xgWKB_POINT>& pts, uint32_t per_cell) {
  const std::size_t m = pts.size();
  _xgWKB_BOX box = empty_box();
  for (const _xgWKB_POINT& p : pts) box_add(&box, p);
  const uint32_t side = static_cast<uint32_t>(std::sqrt(static_cast<double>(m) / per_cell)) + 1;
  auto cell = [side](double v, double lo, double hi) -> uint32_t {
    const double f = (v - lo) / (hi - lo) * side;
    if (!(f > 0)) return 0;  // also NaN, and a box of no width
    return f >= side ? side - 1 : static_cast<uint32_t>(f);
  };
  std::vector<uint32_t> key(m);
  std::vector<uint32_t> start(static_cast<std::size_t>(side) * side + 1, 0);
  for (std::size_t i = 0; i < m; ++i) {
    const uint32_t cx = cell(pts[i].x, box.minx, box.maxx);
    const uint32_t cy = cell(pts[i].y, box.miny, box.maxy);
    key[i] = cy * side + (cy % 2 ? side - 1 - cx : cx);
    ++start[key[i] + 1];
  }
  for (std::size_t k = 1; k < start.size(); ++k) start[k] += start[k - 1];
  std::vector<uint32_t> order(m);
  for (std::size_t i = 0; i < m; ++i) order[start[key[i]]++] = static_cast<uint32_t>(i);
  return order;
}

}  // namespace

SegmentItem make_segment_item(const _xgWKB_POINT& a, const _xgWKB_POINT& b) {
  return SegmentItem{a, b};
}

double segment_distance(const SegmentItem& s, const SegmentItem& u) {
  return std::sqrt(segment_distance2(s, u));
}

SegmentTree::SegmentTree(std::vector<SegmentItem> segments, const std::vector<_xgWKB_POINT>& points)
    : items_(std::move(segments)) {
  // Leaves of consecutive segments along one line.
  const uint32_t n = static_cast<uint32_t>(items_.size());
  for (uint32_t i = 0; i < n;) {
    uint32_t end = i + 1;
    while (end < n && end - i < kLeafItems && items_[end].a.x == items_[end - 1].b.x &&
           items_[end].a.y == items_[end - 1].b.y) {
      ++end;
    }
    nodes_.push_back(Node{empty_box(), i, end, -1, -1});
    i = end;
  }
  add_points(points);
  if (nodes_.empty()) return;
  for (Node& leaf : nodes_) {
    // A leaf's segments follow each other: their first points and the last one's end.
    for (uint32_t i = leaf.begin; i < leaf.end; ++i) grow(&leaf.box, items_[i].a);
    grow(&leaf.box, items_[leaf.end - 1].b);
  }
  // Leaves in grid order of their centres (lines given member by member in no particular
  // order would otherwise pair far-apart leaves), then levels above pairing neighbours, an odd
  // one out passed up as it is.
  {
    std::vector<_xgWKB_POINT> centres(nodes_.size());
    for (std::size_t i = 0; i < nodes_.size(); ++i) {
      const _xgWKB_BOX& b = nodes_[i].box;
      centres[i] = {0.5 * b.minx + 0.5 * b.maxx, 0.5 * b.miny + 0.5 * b.maxy};
    }
    std::vector<Node> ordered;
    ordered.reserve(2 * nodes_.size());
    for (uint32_t i : grid_order(centres, 2)) ordered.push_back(nodes_[i]);
    nodes_.swap(ordered);
  }
  std::size_t lo = 0;
  std::size_t hi = nodes_.size();
  while (hi - lo > 1) {
    for (std::size_t i = lo; i < hi; i += 2) {
      if (i + 1 == hi) {
        nodes_.push_back(nodes_[i]);
        continue;
      }
      _xgWKB_BOX box = nodes_[i].box;
      box_merge(&box, nodes_[i + 1].box);
      nodes_.push_back(Node{box, 0, 0, static_cast<int32_t>(i), static_cast<int32_t>(i + 1)});
    }
    lo = hi;
    hi = nodes_.size();
  }
  root_ = static_cast<int32_t>(lo);
}

// Points go into leaves of kLeafItems in grid order.
void SegmentTree::add_points(const std::vector<_xgWKB_POINT>& points) {
  const uint32_t m = static_cast<uint32_t>(points.size());
  if (m == 0) return;
  const std::vector<uint32_t> order = grid_order(points, kLeafItems);
  const uint32_t first = static_cast<uint32_t>(items_.size());
  items_.reserve(first + m);
  for (uint32_t i : order) items_.push_back(make_segment_item(points[i], points[i]));
  for (uint32_t i = first; i < first + m; i += kLeafItems) {
    nodes_.push_back(Node{empty_box(), i, std::min(i + kLeafItems, first + m), -1, -1});
  }
}

double nearest_distance(const SegmentTree& ta, const SegmentTree& tb, double stop) {
  const double inf = std::numeric_limits<double>::infinity();
  if (ta.empty() || tb.empty()) return inf;
  const double stop2 = stop > 0 ? stop * stop : 0;
  struct Pair {
    double d2;
    int32_t a;
    int32_t b;
    bool operator>(const Pair& o) const { return d2 > o.d2; }
  };
  std::priority_queue<Pair, std::vector<Pair>, std::greater<Pair>> queue;
  double best2 = inf;
  queue.push(Pair{box_distance2(ta.nodes_[ta.root_].box, tb.nodes_[tb.root_].box), ta.root_, tb.root_});
  while (!queue.empty()) {
    const Pair top = queue.top();
    queue.pop();
    if (!(top.d2 < best2)) break;  // nothing waiting can come nearer
    const SegmentTree::Node& na = ta.nodes_[top.a];
    const SegmentTree::Node& nb = tb.nodes_[top.b];
    const bool leaf_a = na.left < 0;
    const bool leaf_b = nb.left < 0;
    if (leaf_a && leaf_b) {
      for (uint32_t i = na.begin; i < na.end; ++i) {
        const SegmentItem& s = ta.items_[i];
        for (uint32_t j = nb.begin; j < nb.end; ++j) {
          const SegmentItem& u = tb.items_[j];
          if (!(box_distance2(item_box(s), item_box(u)) < best2)) continue;
          const double d2 = segment_distance2(s, u);
          if (d2 < best2) best2 = d2;
        }
      }
      if (best2 < stop2 || best2 == 0) break;
      continue;
    }
    auto offer = [&](int32_t a, int32_t b) {
      const double d2 = box_distance2(ta.nodes_[a].box, tb.nodes_[b].box);
      if (d2 < best2) queue.push(Pair{d2, a, b});
    };
    if (!leaf_a && (leaf_b || extent(na.box) >= extent(nb.box))) {
      offer(na.left, top.b);
      offer(na.right, top.b);
    } else {
      offer(top.a, nb.left);
      offer(top.a, nb.right);
    }
  }
  return std::sqrt(best2);
}

}  // namespace xg
