// convert_polygon.cpp - closed lines turned into polygons.
//
// The rings must be closed and simple (tolerance 0.0001).  A ring inside another is a hole, every
// other ring an outer ring, and each outer ring becomes one polygon of a multipolygon together
// with the holes that lie inside it.
#include <vector>

#include "core/boundary.h"
#include "core/construct.h"
#include "relate/ring_index.h"
#include "relate/segment_tests.h"

using namespace xg;

namespace {

int32_t line_as_polygon(const byte* line, byte** out) {
  // The closing point may meet the first segment: the simplicity test allows that.
  if (!wkb_line_is_closed_tol(line, kFixedTolerance) ||
      !line_is_simple(line, kFixedTolerance, nullptr)) {
    return XGWKB_E_INVALID_ENTITY;
  }
  const PointRun ring = line_run(line);
  byte* blob = blob_alloc(2 * kCountedHeaderSize + ring.bytes());
  if (blob == nullptr) return XGWKB_E_FAILED;
  BlobWriter(blob)
      .header(XGWKB_TYPE_MULTIPOLYGON)
      .u32(1)
      .header(XGWKB_TYPE_POLYGON)
      .u32(1)
      .bytes(ring.at, ring.bytes());
  *out = blob;
  return XGWKB_OK;
}

enum class RingClass : unsigned char { kNone, kOuter, kHole };

struct Polygon {
  uint32_t outer;
  std::size_t first_hole;  // into the hole list
  std::size_t holes;
};

int32_t rings_as_polygons(const byte* multiline, byte** out) {
  if (!wkb_multiline_is_closed_tol(multiline, kFixedTolerance) ||
      !multiline_is_simple(multiline, kFixedTolerance)) {
    return XGWKB_E_INVALID_ENTITY;
  }
  // The rings are unpacked once for the many ring-inside-ring tests; the blob runs are kept for
  // copying.
  ShapeRuns runs;
  if (!runs.load(multiline, false)) return XGWKB_E_INVALID_ENTITY;
  std::vector<const byte*> rings;
  rings.reserve(runs.run_count());
  for_each_member(multiline, [&](const byte* member, uint32_t) {
    rings.push_back(line_run(member).at);
  });
  const uint32_t k = static_cast<uint32_t>(rings.size());
  if (k != runs.run_count()) return XGWKB_E_INVALID_ENTITY;
  // Every ring is tested against every other: the large ones get edge indexes.
  const IndexedPolygon indexed(PolySpans{k > 0 ? &runs.run(0) : nullptr, k}, kFixedTolerance);
  auto inside = [&](uint32_t a, uint32_t b) {
    return ring_inside_ring(indexed.spans().rings[a], indexed.spans().rings[b], kFixedTolerance) != 0;
  };

  // A ring keeps the first class it is given.  Outer rings are listed in the order classed.
  std::vector<RingClass> cls(k, RingClass::kNone);
  std::vector<uint32_t> outers;
  auto classify = [&](uint32_t i, RingClass c) {
    if (cls[i] != RingClass::kNone) return;
    cls[i] = c;
    if (c == RingClass::kOuter) outers.push_back(i);
  };
  for (uint32_t i = 0; i < k; ++i) {
    for (uint32_t j = i + 1; j < k; ++j) {
      if (inside(i, j)) {
        classify(j, RingClass::kOuter);
        classify(i, RingClass::kHole);
      }
      if (inside(j, i)) {
        classify(i, RingClass::kOuter);
        classify(j, RingClass::kHole);
      }
    }
  }
  for (uint32_t i = 0; i < k; ++i) classify(i, RingClass::kOuter);

  // Each outer ring takes every hole inside it.  A hole can lie inside more than one outer ring
  // (rings nested three deep and listed innermost first); it is then written into each, so the
  // size is summed from what is actually written.
  std::vector<Polygon> polygons;
  std::vector<uint32_t> hole_list;
  std::size_t size = kCountedHeaderSize;
  for (uint32_t o : outers) {
    Polygon p{o, hole_list.size(), 0};
    size += kCountedHeaderSize + wkb_ring_size(rings[o]);
    for (uint32_t h = 0; h < k; ++h) {
      if (cls[h] != RingClass::kHole || !inside(h, o)) continue;
      hole_list.push_back(h);
      ++p.holes;
      size += wkb_ring_size(rings[h]);
    }
    polygons.push_back(p);
  }

  byte* blob = blob_alloc(size);
  if (blob == nullptr) return XGWKB_E_FAILED;
  BlobWriter w(blob);
  w.header(XGWKB_TYPE_MULTIPOLYGON).u32(static_cast<uint32_t>(polygons.size()));
  for (const Polygon& p : polygons) {
    w.header(XGWKB_TYPE_POLYGON).u32(static_cast<uint32_t>(1 + p.holes));
    w.bytes(rings[p.outer], wkb_ring_size(rings[p.outer]));
    for (std::size_t i = 0; i < p.holes; ++i) {
      const byte* hole = rings[hole_list[p.first_hole + i]];
      w.bytes(hole, wkb_ring_size(hole));
    }
  }
  *out = blob;
  return XGWKB_OK;
}

}  // namespace

extern "C" {

int32_t xgWKB_shape_as_polygon(const unsigned char* shape, unsigned char** out) noexcept {
  if (shape == nullptr) return XGWKB_E_NULL_POINTER;
  const uint32_t type = shape_type(shape);
  if (type != XGWKB_TYPE_LINESTRING && type != XGWKB_TYPE_MULTILINESTRING) {
    return XGWKB_E_INVALID_ENTITY;
  }
  if (out == nullptr) return XGWKB_E_NULL_POINTER;
  return guarded([&] {
    return type == XGWKB_TYPE_LINESTRING ? line_as_polygon(shape, out)
                                         : rings_as_polygons(shape, out);
  });
}

}  // extern "C"
