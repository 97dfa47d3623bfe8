// point_runs.cpp - unpacking shapes into aligned runs, and the point locators.
#include "relate/point_runs.h"

#include <cstring>

namespace xg {

namespace {

bool same_bits(const _xgWKB_POINT& a, const _xgWKB_POINT& b) {
  return std::memcmp(&a, &b, sizeof a) == 0;
}

}  // namespace

Span make_span(const _xgWKB_POINT* p, uint32_t n) {
  Span s{p, n, empty_box()};
  for (uint32_t i = 0; i < n; ++i) box_add(&s.box, p[i]);
  return s;
}

Span load_run(const byte* run, PointBuffer& buf) {
  const PointRun pts{run};
  const uint32_t n = pts.size();
  buf.clear();
  buf.reserve(n);
  for (uint32_t i = 0; i < n; ++i) buf.push_back(pts.point(i));
  return make_span(buf.data(), n);
}

namespace {

// Counts the points a shape unpacks into (closing points included) so that the buffer is sized
// once; false for a type the loader does not take.
bool count_points(const byte* shape, bool close_rings, std::size_t* points, std::size_t* runs) {
  auto ring_points = [close_rings](const PointRun& r) {
    const uint32_t n = r.size();
    const bool open = n > 1 && (r.front().x != r.back().x || r.front().y != r.back().y);
    return static_cast<std::size_t>(n) + (close_rings && open ? 1 : 0);
  };
  switch (shape_type(shape)) {
    case XGWKB_TYPE_POINT:
      *points += 1;
      *runs += 1;
      return true;
    case XGWKB_TYPE_LINESTRING:
      *points += line_run(shape).size();
      *runs += 1;
      return true;
    case XGWKB_TYPE_POLYGON:
      for_each_ring(shape, [&](PointRun r, uint32_t) {
        *points += ring_points(r);
        *runs += 1;
      });
      return true;
    default:
      return false;
  }
}

}  // namespace

bool ShapeRuns::load(const byte* shape, bool close_rings, bool collapse) {
  type_ = shape_type(shape);
  pts_.clear();
  spans_.clear();
  offsets_.clear();
  parts_.clear();
  box_ = empty_box();

  // Gather the members (a single shape is its own only member) and size the buffers.
  SmallVec<const byte*, 8> members;
  if (is_multi_type(type_)) {
    if (!for_each_member(shape, [&](const byte* m, uint32_t) { members.push_back(m); })) return false;
  } else if (is_geometry_type(type_)) {
    members.push_back(shape);
  } else {
    return false;
  }
  std::size_t points = 0;
  std::size_t runs = 0;
  for (const byte* m : members) count_points(m, close_rings, &points, &runs);
  pts_.reserve(points);
  offsets_.reserve(runs);

  // Copy the runs; spans are made once the buffer is complete.
  SmallVec<uint32_t, 8> counts;
  auto copy_run = [&](const PointRun& r, bool ring) {
    offsets_.push_back(static_cast<uint32_t>(pts_.size()));
    const std::size_t start = pts_.size();
    const uint32_t n = r.size();
    for (uint32_t i = 0; i < n; ++i) {
      const _xgWKB_POINT p = r.point(i);
      // Dropped when the two points stored last in this run are both copies of it.
      const std::size_t at = pts_.size();
      if (collapse && at >= start + 2 && same_bits(p, pts_[at - 1]) && same_bits(p, pts_[at - 2])) {
        continue;
      }
      pts_.push_back(p);
    }
    uint32_t stored = static_cast<uint32_t>(pts_.size() - start);
    if (ring && close_rings && stored > 1) {
      const _xgWKB_POINT first = pts_[start];
      const _xgWKB_POINT last = pts_.back();
      if (first.x != last.x || first.y != last.y) {
        pts_.push_back(first);
        ++stored;
      }
    }
    counts.push_back(stored);
  };
  for (const byte* m : members) {
    const uint32_t first_run = static_cast<uint32_t>(offsets_.size());
    switch (shape_type(m)) {
      case XGWKB_TYPE_POINT:
        offsets_.push_back(static_cast<uint32_t>(pts_.size()));
        pts_.push_back(point_of(m));
        counts.push_back(1);
        break;
      case XGWKB_TYPE_LINESTRING:
        copy_run(line_run(m), false);
        break;
      default:
        for_each_ring(m, [&](PointRun r, uint32_t) { copy_run(r, true); });
        break;
    }
    parts_.push_back(Part{first_run, static_cast<uint32_t>(offsets_.size()) - first_run});
  }
  spans_.reserve(offsets_.size());
  for (std::size_t i = 0; i < offsets_.size(); ++i) {
    spans_.push_back(make_span(pts_.data() + offsets_[i], counts[i]));
    box_merge(&box_, spans_.back().box);
  }
  return true;
}

}  // namespace xg
