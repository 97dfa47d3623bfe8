// validate.cpp - judging whether a blob is a well-formed geometry of its type.
//
// Lines must not double back on themselves, rings must be closed and simple, holes must lie inside
// their shell without overlapping each other, touching rings must not cut the interior apart, and
// the members of a multipolygon must not overlap.  The first rule broken names the status.  Every
// geometric test uses the fixed tolerance.
#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

#include "core/blob.h"
#include "core/boundary.h"
#include "core/construct.h"
#include "relate/ring_index.h"
#include "relate/segment_pairs.h"
#include "relate/segment_tests.h"

using namespace xg;

namespace {

constexpr double kTol = kFixedTolerance;

// Outcome of one check: valid, or the status code it names.  `combine` marks the codes that are
// ORed into the caller's status word instead of being assigned.
struct Verdict {
  int32_t code;
  bool combine;
  bool ok() const { return code == XGWKB_OK; }
};

constexpr Verdict kValid{XGWKB_OK, false};
Verdict fail(int32_t code) { return {code, false}; }
Verdict fail_or(int32_t code) { return {code, true}; }

// True when c lies so far from the line through a and b that segment_meet(a, b, b, c) cannot
// find a shared stretch (answer 2): that needs c within kTol of the line in the frame of (a, b).
// The distance is judged without a square root, |cross| against (kTol + slack) times |dx| + |dy|
// (at least the length), where the slacks exceed the rounding of segment_meet's frame (some 9
// units of roundoff of |c - a|) and of the cross product here.  Non-finite numbers fail the
// comparison and go to segment_meet.
inline bool surely_turns(const _xgWKB_POINT& a, const _xgWKB_POINT& b, const _xgWKB_POINT& c) {
  const double dx = b.x - a.x;
  const double dy = b.y - a.y;
  const double rx = c.x - a.x;
  const double ry = c.y - a.y;
  const double cross = std::fabs(dx * ry - dy * rx);
  const double reach = kTol + 1e-14 * (std::fabs(rx) + std::fabs(ry));
  const double bound = reach * (std::fabs(dx) + std::fabs(dy)) +
                       1e-14 * (std::fabs(dx * ry) + std::fabs(dy * rx));
  return cross > bound * (1 + 1e-12) + 1e-300;
}

// A line must not run back over itself: only consecutive segments are compared.  (General
// self-crossing of an open line is accepted; rings are tested for it separately.)  point(i)
// gives vertex i of a run of n points.
template <class Point>
Verdict check_segment_run(uint32_t n, Point&& point) {
  if (n < 2) return fail(XGWKB_E_TOO_FEW_POINTS);
  _xgWKB_POINT a = point(0);
  _xgWKB_POINT b = n > 1 ? point(1) : a;
  for (uint32_t i = 0; i + 2 < n; ++i) {
    const _xgWKB_POINT c = point(i + 2);
    if (!surely_turns(a, b, c) && segment_meet(a, b, b, c, kTol, nullptr) == 2)
      return fail(XGWKB_E_OVERLAPPING_POLYGONS);
    a = b;
    b = c;
  }
  return kValid;
}

Verdict check_line(const byte* line) {
  const PointRun run = line_run(line);
  if (wkb_line_is_closed_tol(line, kTol) && run.size() < 4) return fail(XGWKB_E_TOO_FEW_POINTS);
  return check_segment_run(run.size(), [&](uint32_t i) { return run.point(i); });
}

// A ring, unpacked: closed, simple, not doubling back.
Verdict check_ring(const Span& ring) {
  if (ring.n < 2 || !wkb_point_equal_tol(ring.p[0], ring.p[ring.n - 1], kTol)) {
    return fail(XGWKB_E_NOT_CLOSED);
  }
  if (!run_is_simple(ring, kTol)) return fail(XGWKB_E_SELF_INTERSECTION);
  return check_segment_run(ring.n, [&](uint32_t i) { return ring.p[i]; });
}

bool has_nan(const Span& run) {
  for (uint32_t i = 0; i < run.n; ++i) {
    if (run.p[i].x != run.p[i].x || run.p[i].y != run.p[i].y) return true;
  }
  return false;
}

bool box_has_nan(const _xgWKB_BOX& b) {
  return b.minx != b.minx || b.miny != b.miny || b.maxx != b.maxx || b.maxy != b.maxy;
}

// Calls f(i, j), i < j, for the pairs of boxes that overlap (closed ranges) along both x and y,
// each once and in no particular order, until f returns true; true when it did.  The boxes are
// swept (by the segment pairing's sweep) along the axis on which they overlap less; they must
// hold no NaN.  Callers pass boxes grown so that a pair strictly apart along x or y is one their
// own test would pass over.
template <class F>
bool any_box_pair(const std::vector<_xgWKB_BOX>& boxes, F&& f) {
  const std::size_t n = boxes.size();
  if (n < 2) return false;
  // Along each axis, the summed extents of the boxes against the extent of them all: the
  // average number of boxes a point of the axis lies in.
  _xgWKB_BOX all = boxes[0];
  double width = 0;
  double height = 0;
  for (const _xgWKB_BOX& b : boxes) {
    all = _xgWKB_BOX{std::fmin(all.minx, b.minx), std::fmin(all.miny, b.miny),
                     std::fmax(all.maxx, b.maxx), std::fmax(all.maxy, b.maxy)};
    width += b.maxx - b.minx;
    height += b.maxy - b.miny;
  }
  const bool along_y = width * (all.maxy - all.miny) > height * (all.maxx - all.minx);
  // Swept along y as along x with the boxes transposed (overlap does not care).
  detail::SegmentKeys keys;
  keys.reserve(n);
  for (std::size_t i = 0; i < n; ++i) {
    const _xgWKB_BOX& b = boxes[i];
    const _xgWKB_BOX box = along_y ? _xgWKB_BOX{b.miny, b.minx, b.maxy, b.maxx} : b;
    keys.push_back(detail::SegmentKey{box, static_cast<uint32_t>(i), 0, 0, false, false});
  }
  detail::sort_segment_keys(keys);
  return detail::sweep_keys_within(keys, 0, [&](const detail::SegmentKey& k, const detail::SegmentKey& o) {
    return f(std::min(k.index, o.index), std::max(k.index, o.index));
  });
}

// Rings that touch each other, one node per ring.  A cycle of touching rings encloses a piece of
// the interior and cuts it off from the rest.  Each pair of rings is linked at most once, so a
// link between two rings already joined through others closes a cycle: the groups of joined
// rings are kept as a union-find forest (no recursion, however long the chains).
class TouchGraph {
 public:
  explicit TouchGraph(std::size_t rings) : parent_(rings) {
    for (std::size_t i = 0; i < rings; ++i) parent_[i] = static_cast<uint32_t>(i);
  }

  void link(std::size_t a, std::size_t b) {
    const uint32_t ra = root(static_cast<uint32_t>(a));
    const uint32_t rb = root(static_cast<uint32_t>(b));
    if (ra == rb) {
      cycle_ = true;
    } else {
      parent_[ra] = rb;
    }
  }

  bool has_cycle() const { return cycle_; }

 private:
  uint32_t root(uint32_t i) {
    while (parent_[i] != i) {
      parent_[i] = parent_[parent_[i]];  // halves the path
      i = parent_[i];
    }
    return i;
  }

  std::vector<uint32_t> parent_;
  bool cycle_ = false;
};

// Two rings through the same points (in any order or direction): each lies inside the other,
// and so their boxes agree within the tolerance.  Such a pair is nested like a hole inside a hole.
bool same_ring(const Span& a, const Span& b) {
  const double slack = 2 * kTol;
  if (!(std::fabs(a.box.minx - b.box.minx) <= slack && std::fabs(a.box.miny - b.box.miny) <= slack &&
        std::fabs(a.box.maxx - b.box.maxx) <= slack && std::fabs(a.box.maxy - b.box.maxy) <= slack)) {
    return false;
  }
  return ring_inside_ring(a, b, kTol) && ring_inside_ring(b, a, kTol);
}

// Holes j and k against each other: overlapping or equal holes are an error; touching ones are
// linked in the graph.
Verdict check_hole_pair(const Span& hole_j, const Span& hole_k, bool no_nan, TouchGraph& graph,
                        uint32_t j, uint32_t k) {
  if (ring_overlaps_ring(hole_j, hole_k, kTol) || ring_overlaps_ring(hole_k, hole_j, kTol))
    return fail(XGWKB_E_RINGS_OVERLAP);
  // Holes whose boxes are far apart cannot touch; the box test needs rings free of NaN.
  if (no_nan && lines_out_of_reach(hole_j, hole_k, kTol)) return kValid;
  if (same_ring(hole_j, hole_k)) return fail(XGWKB_E_RINGS_OVERLAP);  // not partly inside: wholly
  if (lines_touch(hole_j, hole_k, kTol)) graph.link(j, k);
  return kValid;
}

Verdict check_polygon(const byte* polygon) {
  const uint32_t count = shape_count(polygon);
  if (count < 1) return fail_or(XGWKB_E_INTEGRITY);

  // The rings unpacked once for all the tests; the large ones get edge indexes that every pass
  // below shares.  (A polygon always unpacks into one run per ring.)
  ShapeRuns runs;
  if (!runs.load(polygon, false) || runs.run_count() != count) return fail_or(XGWKB_E_INTEGRITY);
  for (uint32_t k = 0; k < count; ++k) {
    const Verdict verdict = check_ring(runs.run(k));
    if (!verdict.ok()) return verdict;
  }
  const IndexedPolygon indexed(runs.polygon(0), kTol);
  const Span* rings = indexed.spans().rings;
  const Span& outer = rings[0];

  TouchGraph graph(count);
  for (uint32_t k = 1; k < count; ++k) {
    if (!ring_inside_ring(rings[k], outer, kTol)) return fail(XGWKB_E_HOLE_OUTSIDE);
    // The shell's index, built by the containment test just made, answers whether the two
    // rings share a point.
    if (run_disjoint_from_ring(rings[k], outer, kTol)) continue;
    if (same_ring(rings[k], outer)) return fail(XGWKB_E_RINGS_OVERLAP);  // the hole fills the shell
    if (!lines_touch(rings[k], outer, kTol)) return fail_or(XGWKB_E_INTEGRITY);
    graph.link(0, k);
  }
  if (count < 3) return kValid;  // one hole: no pair of holes, and a cycle needs two links

  // Every failing pair of holes names the same status and the touch graph does not depend on
  // the order of its links, so the pairs may be taken in any order.  Without NaN, a pair whose
  // reach boxes (see lines_out_of_reach) are apart along x or y is passed over: their boxes are
  // apart by more than the tolerance, so neither ring overlaps the other, and the reach test
  // would let the pair go.
  std::vector<char> no_nan(count);
  std::vector<_xgWKB_BOX> reach(count - 1);
  bool sweep = true;
  for (uint32_t k = 1; k < count; ++k) {
    no_nan[k] = !has_nan(rings[k]);
    reach[k - 1] = ring_reach_box(rings[k], kTol);
    sweep = sweep && no_nan[k] && !box_has_nan(reach[k - 1]);
  }
  Verdict verdict = kValid;
  auto pair = [&](uint32_t j, uint32_t k) {
    verdict = check_hole_pair(rings[j], rings[k], no_nan[j] && no_nan[k], graph, j, k);
    return !verdict.ok();
  };
  if (sweep) {
    any_box_pair(reach, [&](uint32_t j, uint32_t k) { return pair(j + 1, k + 1); });
  } else {
    for (uint32_t j = 1; j < count && verdict.ok(); ++j) {
      for (uint32_t k = j + 1; k < count && !pair(j, k); ++k) {
      }
    }
  }
  if (!verdict.ok()) return verdict;
  if (graph.has_cycle()) return fail(XGWKB_E_INTEGRITY);
  return kValid;
}

// The boxes of the members of a validated multipolygon, each grown by the tolerance; false
// when a coordinate is NaN.
bool member_boxes(const byte* multi, std::vector<_xgWKB_BOX>& boxes) {
  ShapeRuns runs;
  if (!runs.load(multi, false)) return false;
  boxes.assign(runs.part_count(), empty_box());
  for (uint32_t m = 0; m < runs.part_count(); ++m) {
    const PolySpans polygon = runs.polygon(m);
    _xgWKB_BOX& box = boxes[m];
    for (uint32_t r = 0; r < polygon.count; ++r) {
      if (has_nan(polygon.rings[r])) return false;
      const _xgWKB_BOX& b = polygon.rings[r].box;
      box = _xgWKB_BOX{std::fmin(box.minx, b.minx), std::fmin(box.miny, b.miny),
                       std::fmax(box.maxx, b.maxx), std::fmax(box.maxy, b.maxy)};
    }
    box = _xgWKB_BOX{box.minx - kTol, box.miny - kTol, box.maxx + kTol, box.maxy + kTol};
    if (box_has_nan(box)) return false;
  }
  return true;
}

Verdict check_multipolygon(const byte* multi) {
  const uint32_t count = shape_count(multi);
  if (count < 1) return fail_or(XGWKB_E_INTEGRITY);
  std::vector<const byte*> polygons;
  polygons.reserve(count);
  Verdict verdict = kValid;
  const bool walked = for_each_member(multi, [&](const byte* polygon, uint32_t) {
    polygons.push_back(polygon);
    if (verdict.ok()) verdict = check_polygon(polygon);
  });
  if (!walked) return fail(XGWKB_E_INVALID_SHAPE);  // a member that is not a polygon
  if (!verdict.ok()) return verdict;

  // The rings of each member as one multilinestring, for the line-crossing test.
  std::vector<OwnedBlob> lines;
  lines.reserve(count);
  for (const byte* polygon : polygons) {
    byte* line = nullptr;
    const int32_t status = shape_as_line(polygon, &line);
    if (status != XGWKB_OK) return fail(status);
    lines.emplace_back(line);
  }
  auto pair = [&](uint32_t i, uint32_t j) {
    if (polygons_overlap(polygons[i], polygons[j], kTol)) return fail_or(XGWKB_E_RINGS_OVERLAP);
    if (multilines_cross(lines[i].get(), lines[j].get(), kTol))
      return fail_or(XGWKB_E_OVERLAPPING_POLYGONS);
    return kValid;
  };
  // Only members whose boxes, grown by the tolerance, overlap are tested.  Members apart by more
  // than that answer no to both tests: every ring of one is then apart from the other's outer
  // ring by more than the tolerance (so no ring reaches the other polygon), the first vertex of
  // each lies outside the other's box grown by the tolerance (so some vertex lies outside), and
  // no pair of segments has boxes within the tolerance (so none cross).  The pairs are taken in
  // the order of the plain double loop, so that its first failure names the status.
  std::vector<_xgWKB_BOX> boxes;
  if (count > 2 && member_boxes(multi, boxes)) {
    std::vector<std::pair<uint32_t, uint32_t>> pairs;
    any_box_pair(boxes, [&](uint32_t i, uint32_t j) {
      pairs.emplace_back(i, j);
      return false;
    });
    std::sort(pairs.begin(), pairs.end());
    for (const auto& ij : pairs) {
      verdict = pair(ij.first, ij.second);
      if (!verdict.ok()) return verdict;
    }
    return kValid;
  }
  for (uint32_t i = 0; i < count; ++i) {
    for (uint32_t j = i + 1; j < count; ++j) {
      verdict = pair(i, j);
      if (!verdict.ok()) return verdict;
    }
  }
  return kValid;
}

Verdict check_multiline(const byte* multi) {
  if (shape_count(multi) < 1) return fail(XGWKB_E_INTEGRITY);
  Verdict verdict = kValid;
  const bool walked = for_each_member(multi, [&](const byte* line, uint32_t) {
    if (verdict.ok()) verdict = check_line(line);
  });
  if (!walked) return fail(XGWKB_E_INVALID_SHAPE);  // a member that is not a linestring
  return verdict;
}

}  // namespace

extern "C" uint32_t xgWKB_shape_check_WKBdata(const unsigned char* shape,
                                              int32_t* status) noexcept {
  // Intended: some codes are ORed into the caller's status word rather than assigned, so callers
  // preset it to 0.
  if (shape == nullptr) {
    *status |= XGWKB_E_NULL_POINTER;
    return 0;
  }
  Verdict verdict = kValid;
  const int32_t failed = guarded([&]() -> int32_t {
    switch (shape_type(shape)) {
      case XGWKB_TYPE_POINT:
      case XGWKB_TYPE_MULTIPOINT:
        verdict = kValid;
        return 1;
      case XGWKB_TYPE_LINESTRING:
        verdict = check_line(shape);
        return 1;
      case XGWKB_TYPE_POLYGON:
        verdict = check_polygon(shape);
        return 1;
      case XGWKB_TYPE_MULTILINESTRING:
        verdict = check_multiline(shape);
        return 1;
      case XGWKB_TYPE_MULTIPOLYGON:
        verdict = check_multipolygon(shape);
        return 1;
      default:
        return 0;  // not a geometry: no verdict, status untouched
    }
  });
  if (failed != 1) {
    if (failed == XGWKB_E_FAILED) *status = XGWKB_E_FAILED;  // ran out of memory
    return 0;
  }
  if (verdict.combine) {
    *status |= verdict.code;
  } else {
    *status = verdict.code;
  }
  return verdict.ok() ? 1 : 0;
}
