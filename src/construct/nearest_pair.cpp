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
    for (uint32_t i = leaf.begin; i < leaf.end; ++i) {  // NaN sides drop out
      box_add(&leaf.box, items_[i].a);
      box_add(&leaf.box, items_[i].b);
    }
  }
  // Levels above: neighbours paired, an odd one out passed up as it is.
  nodes_.reserve(2 * nodes_.size());
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

// Points go into leaves in the order of a grid of about kLeafItems points per cell, its rows
// walked alternately left and right (a counting sort: one pass).
void SegmentTree::add_points(const std::vector<_xgWKB_POINT>& points) {
  const std::size_t m = points.size();
  if (m == 0) return;
  _xgWKB_BOX box = empty_box();
  for (const _xgWKB_POINT& p : points) box_add(&box, p);
  const uint32_t side = static_cast<uint32_t>(std::sqrt(static_cast<double>(m) / kLeafItems)) + 1;
  auto cell = [&](double v, double lo, double hi) -> uint32_t {
    const double f = (v - lo) / (hi - lo) * side;
    if (!(f > 0)) return 0;  // also NaN, and a box of no width
    return f >= side ? side - 1 : static_cast<uint32_t>(f);
  };
  std::vector<uint32_t> key(m);
  std::vector<uint32_t> start(static_cast<std::size_t>(side) * side + 1, 0);
  for (std::size_t i = 0; i < m; ++i) {
    const uint32_t cx = cell(points[i].x, box.minx, box.maxx);
    const uint32_t cy = cell(points[i].y, box.miny, box.maxy);
    key[i] = cy * side + (cy % 2 ? side - 1 - cx : cx);
    ++start[key[i] + 1];
  }
  for (std::size_t k = 1; k < start.size(); ++k) start[k] += start[k - 1];
  const uint32_t first = static_cast<uint32_t>(items_.size());
  items_.resize(first + m);
  for (std::size_t i = 0; i < m; ++i) {
    items_[first + start[key[i]]++] = make_segment_item(points[i], points[i]);
  }
  for (uint32_t i = first; i < first + m; i += kLeafItems) {
    nodes_.push_back(Node{empty_box(), i, std::min<uint32_t>(i + kLeafItems, first + static_cast<uint32_t>(m)), -1, -1});
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
