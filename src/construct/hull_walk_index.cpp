// hull_walk_index.cpp - the gift-wrapping walk with a point index, for large point sets.
//
// The plain step asks every candidate and, for the one accepted, every point: n^2 per step when
// every point is a hull vertex.  This step gives the same answer from a few candidates:
//  - a point b that is neither h nor coincides with it rejects every candidate c with
//    cross(h, c, b) < -t2 that does not coincide with b, so the first accepted candidate in
//    input order is among the others: those b does not reject, found with the index.  b is
//    taken from a hull sorted by x (Andrew's monotone chain), just after h, where that set is
//    smallest; a poor b only makes the set larger (past kMaxCandidates the plain step runs).
//  - a candidate c can only be rejected by points p with cross(h, c, p) < t2, also found with
//    the index, and each is judged by the walk's own rule.
// The index is a tree of boxes over the points.  cross(h, c, p) is affine in c and in p, so over
// a box it is least and greatest at corners; computed values are within e = 1e-14 W^2 of the
// exact ones (W the larger side of the set's box), so a box whose corners all give more than
// limit + 2e holds no point whose computed value is at or below limit (and likewise upwards).
// Points on a strongly curved hull still leave a band of about sqrt(n) points per query (box
// corners stick out of the curve), so n points all on a circle cost some n^1.5.
#include <algorithm>
#include <cmath>

#include "construct/convex_hull.h"
#include "construct/hull_walk.h"
#include "relate/point_runs.h"

namespace xg {

namespace {

using Pt = _xgWKB_POINT;

// Sets smaller than this take the plain steps.
constexpr std::size_t kIndexedWalkMin = 64;
// A step tries this many rejectors b, and gives up on one leaving more candidates than this.
constexpr std::size_t kRejectorTries = 3;
constexpr std::size_t kMaxCandidates = 256;

class PointTree {
 public:
  PointTree(const Pt* pts, std::size_t n) : pts_(pts), idx_(n) {
    for (std::size_t i = 0; i < n; ++i) idx_[i] = static_cast<uint32_t>(i);
    nodes_.reserve(2 * (n / kLeaf + 1));
    build(0, static_cast<uint32_t>(n));
  }

  // Calls f(i) for every point i at which the computed value(p_i) may be at least lo and at most
  // hi (and some others), until f returns true; true when it did.  value must be an affine
  // function computed to within slack / 2 of its exact value over the set's box.
  template <class Value, class F>
  bool between(Value&& value, double lo, double hi, double slack, F&& f) const {
    return visit([&](const _xgWKB_BOX& b) {
      const double c1 = value(Pt{b.minx, b.miny});
      const double c2 = value(Pt{b.maxx, b.miny});
      const double c3 = value(Pt{b.minx, b.maxy});
      const double c4 = value(Pt{b.maxx, b.maxy});
      const double least = std::min(std::min(c1, c2), std::min(c3, c4));
      const double most = std::max(std::max(c1, c2), std::max(c3, c4));
      return least - slack <= hi && most + slack >= lo;
    }, f);
  }

  // Calls f(i) for every point i in the box, until f returns true; true when it did.
  template <class F>
  bool inside(const _xgWKB_BOX& box, F&& f) const {
    return visit([&](const _xgWKB_BOX& b) { return boxes_meet(b, box, 0); }, f);
  }

 private:
  static constexpr uint32_t kLeaf = 8;
  struct Node {
    _xgWKB_BOX box;
    uint32_t begin;
    uint32_t end;
    int32_t left;  // -1 for a leaf; the right child follows the left subtree
    int32_t right;
  };

  int32_t build(uint32_t begin, uint32_t end) {
    const int32_t at = static_cast<int32_t>(nodes_.size());
    _xgWKB_BOX box = empty_box();
    for (uint32_t i = begin; i < end; ++i) box_add(&box, pts_[idx_[i]]);
    nodes_.push_back(Node{box, begin, end, -1, -1});
    if (end - begin <= kLeaf) return at;
    const bool by_x = box.maxx - box.minx >= box.maxy - box.miny;
    const uint32_t mid = begin + (end - begin) / 2;
    std::nth_element(idx_.begin() + begin, idx_.begin() + mid, idx_.begin() + end, [&](uint32_t l, uint32_t r) {
      return by_x ? pts_[l].x < pts_[r].x : pts_[l].y < pts_[r].y;  // coordinates are finite here
    });
    const int32_t left = build(begin, mid);
    const int32_t right = build(mid, end);
    nodes_[at].left = left;
    nodes_[at].right = right;
    return at;
  }

  template <class Keep, class F>
  bool visit(Keep&& keep, F&& f) const {
    int32_t stack[64];
    int top = 0;
    stack[top++] = 0;
    while (top > 0) {
      const Node& node = nodes_[stack[--top]];
      if (!keep(node.box)) continue;
      if (node.left < 0) {
        for (uint32_t i = node.begin; i < node.end; ++i) {
          if (f(idx_[i])) return true;
        }
      } else {
        stack[top++] = node.right;
        stack[top++] = node.left;
      }
    }
    return false;
  }

  const Pt* pts_;
  std::vector<uint32_t> idx_;
  std::vector<Node> nodes_;
};

// Position of each point on the counter-clockwise hull by Andrew's monotone chain (-1 off it).
std::vector<uint32_t> sorted_hull(const Pt* pts, std::size_t n) {
  std::vector<uint32_t> order(n);
  for (std::size_t i = 0; i < n; ++i) order[i] = static_cast<uint32_t>(i);
  std::sort(order.begin(), order.end(), [pts](uint32_t l, uint32_t r) {
    return pts[l].x < pts[r].x || (pts[l].x == pts[r].x && pts[l].y < pts[r].y);
  });
  std::vector<uint32_t> hull(2 * n);
  std::size_t k = 0;
  auto push = [&](uint32_t i, std::size_t floor) {
    while (k >= floor + 2 && hull_cross(pts[hull[k - 2]], pts[hull[k - 1]], pts[i]) <= 0) --k;
    hull[k++] = i;
  };
  for (std::size_t i = 0; i < n; ++i) push(order[i], 0);
  const std::size_t lower = k - 1;
  for (std::size_t i = n - 1; i-- > 0;) push(order[i], lower);
  hull.resize(k > 1 ? k - 1 : k);  // the last repeats the first
  return hull;
}

}  // namespace

std::vector<Pt> gift_wrap_indexed(const Pt* pts, std::size_t n, double t) {
  const double t2 = t * t;
  std::size_t hint = n;
  auto plain = [&](std::size_t h) { return gift_wrap_step(pts, n, h, t2, &hint); };
  if (n < kIndexedWalkMin || !std::isfinite(t2)) return hull_walk(pts, n, plain);
  _xgWKB_BOX box = empty_box();
  for (std::size_t i = 0; i < n; ++i) {
    if (!std::isfinite(pts[i].x) || !std::isfinite(pts[i].y)) return hull_walk(pts, n, plain);
    box_add(&box, pts[i]);
  }
  const double w = std::max(box.maxx - box.minx, box.maxy - box.miny);
  const double reach = std::max(std::max(std::fabs(box.minx), std::fabs(box.maxx)),
                                std::max(std::fabs(box.miny), std::fabs(box.maxy)));
  const double slack = 2e-14 * w * w;
  if (!(w > 0) || !std::isfinite(slack)) return hull_walk(pts, n, plain);
  // Points coinciding with b lie within 0.0001 of it, give or take the rounding of the
  // differences.
  const double near = 2 * kFixedTolerance + 1e-14 * reach;

  const PointTree tree(pts, n);
  const std::vector<uint32_t> hull = sorted_hull(pts, n);
  std::vector<int32_t> position(n, -1);
  for (std::size_t k = 0; k < hull.size(); ++k) position[hull[k]] = static_cast<int32_t>(k);

  std::vector<uint32_t> candidates;
  // The hull position to look after when h is not on the sorted hull: just before the b of the
  // last step, as the walk taking a point off the sorted hull is still on its way to that b.
  std::size_t resume = 0;
  const double inf = HUGE_VAL;
  auto step = [&](std::size_t h) -> std::size_t {
    const Pt hp = pts[h];
    const std::size_t from = position[h] >= 0 ? static_cast<std::size_t>(position[h]) : resume;
    // b: one of the first vertices after `from` on the sorted hull that are neither h nor
    // coincide with it, the first whose candidates are few (a b behind h would leave half the
    // points as candidates; then the plain step is cheaper).
    std::size_t tried = 0;
    for (std::size_t k = 1; k < hull.size() && tried < kRejectorTries; ++k) {
      const std::size_t at = (from + k) % hull.size();
      const uint32_t b = hull[at];
      if (b == h || hull_coincide(pts[b], hp)) continue;
      ++tried;
      candidates.clear();
      auto collect = [&](uint32_t i) {
        if (hull_rejects(pts, h, i, b, t2)) return false;  // b settles this one
        candidates.push_back(i);
        return candidates.size() > kMaxCandidates;
      };
      const Pt bp = pts[b];
      // The candidates b may not reject: computed cross(h, c, b), the walk's own expression, at
      // least -t2; and those coinciding with b.
      if (tree.between([&](const Pt& c) { return hull_cross(hp, c, bp); }, -t2, inf, slack, collect) ||
          tree.inside(_xgWKB_BOX{bp.x - near, bp.y - near, bp.x + near, bp.y + near}, collect)) {
        continue;  // too many
      }
      resume = at == 0 ? hull.size() - 1 : at - 1;
      std::sort(candidates.begin(), candidates.end());
      candidates.erase(std::unique(candidates.begin(), candidates.end()), candidates.end());
      for (uint32_t c : candidates) {
        if (c == h || hull_coincide(pts[c], hp) || hull_rejects(pts, h, c, b, t2)) continue;
        // The points that may reject c: computed cross(h, c, p) below t2.
        const Pt cp = pts[c];
        const bool rejected = tree.between([&](const Pt& p) { return hull_cross(hp, cp, p); }, -inf, t2, slack,
                                           [&](uint32_t p) { return hull_rejects(pts, h, c, p, t2); });
        if (!rejected) return c;
      }
      return n;  // every candidate left out is rejected by b
    }
    return plain(h);
  };
  return hull_walk(pts, n, step);
}

}  // namespace xg
