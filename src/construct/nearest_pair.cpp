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

double segment_distance2(const SegmentItem& s, const SegmentItem& u) {
  double d = segment_dist2(s.a, u.a, u.b);
  d = std::fmin(d, segment_dist2(s.b, u.a, u.b));
  d = std::fmin(d, segment_dist2(u.a, s.a, s.b));
  d = std::fmin(d, segment_dist2(u.b, s.a, s.b));
  if (d > 0 && !degenerate(s) && !degenerate(u) && box_distance2(s.box, u.box) == 0 &&
      segment_meet(s.a, s.b, u.a, u.b, 0, nullptr) != 0) {
    return 0;  // the segments cross
  }
  return d;
}

}  // namespace

SegmentItem make_segment_item(const _xgWKB_POINT& a, const _xgWKB_POINT& b) {
  SegmentItem s{a, b, empty_box()};
  box_add(&s.box, a);
  box_add(&s.box, b);
  return s;
}

double segment_distance(const SegmentItem& s, const SegmentItem& u) {
  return std::sqrt(segment_distance2(s, u));
}

SegmentTree::SegmentTree(std::vector<SegmentItem> items) : items_(std::move(items)) {
  if (items_.empty()) return;
  nodes_.reserve(2 * (items_.size() / kLeafItems + 1));
  build(0, static_cast<uint32_t>(items_.size()));
}

int32_t SegmentTree::build(uint32_t begin, uint32_t end) {
  const int32_t at = static_cast<int32_t>(nodes_.size());
  _xgWKB_BOX box = empty_box();
  for (uint32_t i = begin; i < end; ++i) box_merge(&box, items_[i].box);  // NaN sides drop out
  nodes_.push_back(Node{box, begin, end, -1, -1});
  if (end - begin <= kLeafItems) return at;
  const bool by_x = box.maxx - box.minx >= box.maxy - box.miny;
  // Sort keys with NaN mapped to -infinity, so that the order stays a strict weak order.
  auto key = [by_x](const SegmentItem& s) {
    const double k = by_x ? s.a.x + s.b.x : s.a.y + s.b.y;
    return std::isnan(k) ? -std::numeric_limits<double>::infinity() : k;
  };
  const uint32_t mid = begin + (end - begin) / 2;
  std::nth_element(items_.begin() + begin, items_.begin() + mid, items_.begin() + end,
                   [&key](const SegmentItem& l, const SegmentItem& r) { return key(l) < key(r); });
  const int32_t left = build(begin, mid);
  const int32_t right = build(mid, end);
  nodes_[at].left = left;
  nodes_[at].right = right;
  return at;
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
  queue.push(Pair{box_distance2(ta.nodes_[0].box, tb.nodes_[0].box), 0, 0});
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
          if (!(box_distance2(s.box, u.box) < best2)) continue;
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
