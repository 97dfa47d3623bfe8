// validate.cpp - judging whether a blob is a well-formed geometry of its type.
//
// Lines must not double back on themselves, rings must be closed and simple, holes must lie inside
// their shell without overlapping each other, touching rings must not cut the interior apart, and
// the members of a multipolygon must not overlap.  The first rule broken names the status.  Every
// geometric test uses the fixed tolerance.
#include <cmath>
#include <vector>

#include "core/blob.h"
#include "core/boundary.h"
#include "core/construct.h"
#include "relate/ring_index.h"
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

// A line must not run back over itself: only consecutive segments are compared.  (General
// self-crossing of an open line is accepted; rings are tested for it separately.)
Verdict check_segment_run(PointRun run) {
  const uint32_t n = run.size();
  if (n < 2) return fail(XGWKB_E_TOO_FEW_POINTS);
  for (uint32_t i = 0; i + 2 < n; ++i) {
    if (segment_intersection(run.point(i), run.point(i + 1), run.point(i + 1), run.point(i + 2), nullptr,
                             kTol) == 2)
      return fail(XGWKB_E_OVERLAPPING_POLYGONS);
  }
  return kValid;
}

Verdict check_line(const byte* line) {
  const PointRun run = line_run(line);
  if (wkb_line_is_closed_tol(line, kTol) && run.size() < 4) return fail(XGWKB_E_TOO_FEW_POINTS);
  return check_segment_run(run);
}

// A ring, given as stored and as its unpacked points: closed, simple, not doubling back.
Verdict check_ring(PointRun ring, const Span& points) {
  if (ring.size() < 2 || !wkb_point_equal_tol(ring.front(), ring.back(), kTol)) {
    return fail(XGWKB_E_NOT_CLOSED);
  }
  if (!run_is_simple(points, kTol)) return fail(XGWKB_E_SELF_INTERSECTION);
  return check_segment_run(ring);
}

bool has_nan(const Span& run) {
  for (uint32_t i = 0; i < run.n; ++i) {
    if (run.p[i].x != run.p[i].x || run.p[i].y != run.p[i].y) return true;
  }
  return false;
}

// Rings that touch each other, one node per ring.  A cycle of touching rings encloses a piece of
// the interior and cuts it off from the rest.
class TouchGraph {
 public:
  explicit TouchGraph(std::size_t rings) : neighbours_(rings) {}

  void link(std::size_t a, std::size_t b) {
    neighbours_[a].push_back(b);
    neighbours_[b].push_back(a);
  }

  bool has_cycle() const {
    std::vector<int> state(neighbours_.size(), 0);  // 0 unseen, 1 on the current path, -1 done
    for (std::size_t start = 0; start < neighbours_.size(); ++start) {
      if (state[start] == 0 && cycle_from(start, neighbours_.size(), state)) return true;
    }
    return false;
  }

 private:
  // Depth-first walk; reaching a node on the current path other than the one just left is a cycle.
  bool cycle_from(std::size_t node, std::size_t parent, std::vector<int>& state) const {
    state[node] = 1;
    for (std::size_t next : neighbours_[node]) {
      if (next == parent) continue;
      if (state[next] == 1) return true;
      if (state[next] == 0 && cycle_from(next, node, state)) return true;
    }
    state[node] = -1;
    return false;
  }

  std::vector<std::vector<std::size_t>> neighbours_;
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

Verdict check_polygon(const byte* polygon) {
  const uint32_t count = shape_count(polygon);
  if (count < 1) return fail_or(XGWKB_E_INTEGRITY);

  // The rings unpacked once for all the tests; the large ones get edge indexes further down.
  // (A polygon always unpacks into one run per ring.)
  ShapeRuns runs;
  if (!runs.load(polygon, false) || runs.run_count() != count) return fail_or(XGWKB_E_INTEGRITY);
  Verdict verdict = kValid;
  for_each_ring(polygon, [&](PointRun ring, uint32_t k) {
    if (verdict.ok()) verdict = check_ring(ring, runs.run(k));
  });
  if (!verdict.ok()) return verdict;
  const IndexedPolygon indexed(runs.polygon(0), kTol);
  const Span* rings = indexed.spans().rings;
  const Span& outer = rings[0];

  TouchGraph graph(count);
  for (uint32_t k = 1; k < count; ++k) {
    if (!ring_inside_ring(rings[k], outer, kTol)) return fail(XGWKB_E_HOLE_OUTSIDE);
    if (runs_disjoint(rings[k], outer, kTol)) continue;
    if (same_ring(rings[k], outer)) return fail(XGWKB_E_RINGS_OVERLAP);  // the hole fills the shell
    if (!lines_touch(rings[k], outer, kTol)) return fail_or(XGWKB_E_INTEGRITY);
    graph.link(0, k);
  }
  // Holes whose boxes are far apart cannot touch; the box test needs rings free of NaN.
  std::vector<char> no_nan(count);
  for (uint32_t k = 0; k < count; ++k) no_nan[k] = !has_nan(rings[k]);
  for (uint32_t j = 1; j < count; ++j) {
    for (uint32_t k = j + 1; k < count; ++k) {
      if (ring_overlaps_ring(rings[j], rings[k], kTol) || ring_overlaps_ring(rings[k], rings[j], kTol))
        return fail(XGWKB_E_RINGS_OVERLAP);
      if (no_nan[j] && no_nan[k] && lines_out_of_reach(rings[j], rings[k], kTol)) continue;
      if (same_ring(rings[j], rings[k])) return fail(XGWKB_E_RINGS_OVERLAP);  // not partly inside: wholly
      if (lines_touch(rings[j], rings[k], kTol)) graph.link(j, k);
    }
  }
  if (graph.has_cycle()) return fail(XGWKB_E_INTEGRITY);
  return kValid;
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
  for (uint32_t i = 0; i < count; ++i) {
    for (uint32_t j = i + 1; j < count; ++j) {
      if (polygons_overlap(polygons[i], polygons[j], kTol)) return fail_or(XGWKB_E_RINGS_OVERLAP);
      if (multilines_cross(lines[i].get(), lines[j].get(), kTol))
        return fail_or(XGWKB_E_OVERLAPPING_POLYGONS);
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
