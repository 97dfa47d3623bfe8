// nearest_pair.h - the smallest distance between two sets of segments, by branch and bound over
// two box trees.
//
// Each set is packed into a binary tree of boxes.  Its leaves hold up to kLeafItems segments
// that follow each other along a line or ring (so that a leaf's box stays small, and making the
// leaves costs one pass), or up to kLeafItems isolated points taken in the order of a coarse
// grid over them.  The leaves are put in the order of a coarse grid over their centres, and
// the levels above pair neighbours in that order (one pass each, no sorting).  Pairs of nodes
// wait in a queue ordered by the distance between their boxes; the nearest pair is opened
// first, and the search ends when the nearest waiting pair is no nearer than the best segment
// distance found.  The answer is the exact minimum over
// all pairs of segments, found after looking at the few pairs near it instead of all of them.
#ifndef XGGEO_CONSTRUCT_NEAREST_PAIR_H
#define XGGEO_CONSTRUCT_NEAREST_PAIR_H

#include <cstdint>
#include <vector>

#include "core/blob.h"

namespace xg {

// A segment (a, b); a point is the segment from itself to itself.
struct SegmentItem {
  _xgWKB_POINT a;
  _xgWKB_POINT b;
};

SegmentItem make_segment_item(const _xgWKB_POINT& a, const _xgWKB_POINT& b);

// Distance between two segments: 0 where they meet (the relation layer's segment meeting at
// tolerance 0), else the least of the four end-to-segment distances.  A zero-length segment is
// a point.
double segment_distance(const SegmentItem& s, const SegmentItem& u);

class SegmentTree {
 public:
  // segments in the order of the lines they come from (a segment starting where the one before
  // it ended continues that line), and isolated points.
  explicit SegmentTree(std::vector<SegmentItem> segments, const std::vector<_xgWKB_POINT>& points = {});

  bool empty() const { return items_.empty(); }

  // The smallest distance between a segment of a and one of b; +infinity when either is empty
  // (or every distance is NaN).  Returns as soon as the best so far is below stop, or is 0.
  friend double nearest_distance(const SegmentTree& a, const SegmentTree& b, double stop);

 private:
  static constexpr uint32_t kLeafItems = 8;
  struct Node {
    _xgWKB_BOX box;
    uint32_t begin;  // items [begin, end)
    uint32_t end;
    int32_t left;  // children, -1 for a leaf
    int32_t right;
  };

  void add_points(const std::vector<_xgWKB_POINT>& points);

  std::vector<SegmentItem> items_;
  std::vector<Node> nodes_;
  int32_t root_ = -1;
};

double nearest_distance(const SegmentTree& a, const SegmentTree& b, double stop);

}  // namespace xg

#endif  // XGGEO_CONSTRUCT_NEAREST_PAIR_H
