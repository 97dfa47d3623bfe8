// ring_edit.cpp - islands of polygons and rings of multipolygon members.
//
// A new ring arrives as a caller point array, becomes a counted run and is spliced into the
// input; it must lie inside the first ring of the polygon it joins.
#include <cstdlib>
#include <vector>

#include "core/blob.h"
#include "core/boundary.h"
#include "edit/edit_checks.h"
#include "edit/splice.h"

using namespace xg;
using namespace xg::edit;

namespace xg {
namespace {

int32_t add_island(const byte* shape, std::size_t size, const _xgWKB_POINT* points, uint32_t n,
                   byte** out) {
  // The points are taken as they come: no closing point is added.
  const std::vector<byte> run = make_run(points, n);
  if (!inside_first_ring(run.data(), shape)) return XGWKB_E_INTEGRITY;
  Splice edit(shape, size);
  edit.append(whole(run)).set_count(shape, shape_count(shape) + 1);
  return edit.build(out);
}

// 0-based index of the first inner ring with a vertex within 0.0001 of p, or 0 when none has.
uint32_t island_at(const byte* polygon, const _xgWKB_POINT& p) {
  uint32_t found = 0;
  for_each_ring(polygon, [&](PointRun ring, uint32_t i) {
    if (i == 0 || found != 0) return;
    for (uint32_t k = 0; k < ring.size(); ++k) {
      const _xgWKB_POINT v = ring.point(k);
      if (wkb_point_equal_tol(v, p, kFixedTolerance)) {
        found = i;
        return;
      }
    }
  });
  return found;
}

int32_t delete_island(const byte* shape, const _xgWKB_POINT& p, byte** out) {
  if (island_at(shape, p) == 0) return XGWKB_E_UNCHANGED;
  const uint32_t rings = shape_count(shape) - 1;
  const ByteRange outer = ring_span(shape, 0);
  // Intended: every remaining ring position receives a copy of the outer ring; callers rely on
  // this long-standing result.  The block is sized for what is written.
  byte* result = blob_alloc(kCountedHeaderSize + outer.size() * rings);
  if (result == nullptr) return XGWKB_E_FAILED;
  BlobWriter w(result);
  w.header(XGWKB_TYPE_POLYGON).u32(rings);
  for (uint32_t i = 0; i < rings; ++i) w.bytes(outer.from, outer.size());
  *out = result;
  return XGWKB_OK;
}

// The checks every multipolygon ring operation starts with.
int32_t check_multipolygon(const byte* shape, int32_t part, std::size_t* size) {
  if (!sized_as(shape, XGWKB_TYPE_MULTIPOLYGON, size)) return XGWKB_E_INVALID_SHAPE;
  if (!in_range(part, shape_count(shape))) return XGWKB_E_NO_PART;
  return XGWKB_OK;
}

int32_t add_multipolygon_ring(const byte* shape, std::size_t size, const byte* polygon,
                              int32_t ring_index, const std::vector<byte>& run, byte** out) {
  // Intended: the block is the caller's from here on, also when a test below fails.
  byte* block = hand_out_block(size + run.size(), out);
  if (block == nullptr) return XGWKB_E_FAILED;
  // The run is tested against the member's first ring.
  if (!inside_first_ring(run.data(), polygon)) return XGWKB_E_INTEGRITY;
  const uint32_t rings = shape_count(polygon);
  if (!in_range(ring_index, rings)) return XGWKB_E_NO_PART;
  Splice edit(shape, size);
  edit.insert(ring_at(polygon, slot(ring_index)), whole(run)).set_count(polygon, rings + 1);
  edit.write(block);
  return XGWKB_OK;
}

int32_t replace_multipolygon_ring(const byte* shape, std::size_t size, const byte* polygon,
                                  int32_t ring_index, const std::vector<byte>& run, byte** out) {
  if (!in_range(ring_index, shape_count(polygon))) return XGWKB_E_NO_PART;
  const ByteRange old = ring_span(polygon, slot(ring_index));
  // Intended: the block is the caller's from here on, also when the test below fails.
  byte* block = hand_out_block(size + run.size() - old.size(), out);
  if (block == nullptr) return XGWKB_E_FAILED;
  // Tested against the member's first ring, even when that is the ring being replaced.
  if (!inside_first_ring(run.data(), polygon)) return XGWKB_E_INTEGRITY;
  Splice edit(shape, size);
  edit.replace(old, whole(run));
  edit.write(block);
  return XGWKB_OK;
}

int32_t delete_multipolygon_ring(const byte* shape, std::size_t size, const byte* polygon,
                                 int32_t ring_index, byte** out) {
  const uint32_t rings = shape_count(polygon);
  // The outer ring cannot be deleted this way; a member left with one ring stays a polygon.
  if (ring_index < 2 || !in_range(ring_index, rings)) return XGWKB_E_NO_PART;
  Splice edit(shape, size);
  edit.erase(ring_span(polygon, slot(ring_index))).set_count(polygon, rings - 1);
  return edit.build(out);
}

// A caller point array of count points; null only allowed when empty.
bool points_ok(const _xgWKB_POINT* points, int32_t count) {
  return points != nullptr || count == 0;
}

}  // namespace
// The argument checks of the operations that put a caller's ring into member part of a
// multipolygon, then edit(size, polygon, run) with the ring as a counted run.
template <class Edit>
int32_t with_new_ring(const byte* shape, int32_t part, const _xgWKB_POINT* points, int32_t count,
                      byte** out, Edit&& edit) {
  if (shape == nullptr || !points_ok(points, count) || out == nullptr) return XGWKB_E_NULL_POINTER;
  std::size_t size = 0;
  const int32_t status = check_multipolygon(shape, part, &size);
  if (status != XGWKB_OK) return status;
  if (count < 0) return XGWKB_E_INVALID_ARGUMENT;
  byte* const before = *out;
  const int32_t result = guarded([&] {
    const std::vector<byte> run = make_run(points, static_cast<uint32_t>(count));
    return edit(size, member_of(shape, part), run);
  });
  // The result block is handed out before the ring test, which may run out of memory; the block
  // is taken back then, so that out of memory leaves *out as it was.
  if (result == kOutOfMemory && *out != before) {
    std::free(*out);
    *out = before;
  }
  return result;
}

}  // namespace xg

extern "C" {

int32_t xgWKB_shape_add_island(const unsigned char* shape, const _xgWKB_POINT* points,
                               int32_t count, unsigned char** out) noexcept {
  if (shape == nullptr || !points_ok(points, count) || out == nullptr) return XGWKB_E_NULL_POINTER;
  std::size_t size = 0;
  if (!sized_as(shape, XGWKB_TYPE_POLYGON, &size)) return XGWKB_E_INCOMPATIBLE;
  if (count < 0) return XGWKB_E_INVALID_ARGUMENT;
  return guarded(
      [&] { return add_island(shape, size, points, static_cast<uint32_t>(count), out); });
}

int32_t xgWKB_shape_delete_island(const unsigned char* shape, const _xgWKB_POINT* point,
                                  unsigned char** out) noexcept {
  if (shape == nullptr || point == nullptr || out == nullptr) return XGWKB_E_NULL_POINTER;
  if (shape_type(shape) != XGWKB_TYPE_POLYGON) return XGWKB_E_INCOMPATIBLE;
  return guarded([&] { return delete_island(shape, *point, out); });
}

int32_t xgWKB_shape_add_multipolygon_ring(const unsigned char* shape, int32_t part,
                                          int32_t ring_index, const _xgWKB_POINT* points,
                                          int32_t count, unsigned char** out) noexcept {
  return with_new_ring(shape, part, points, count, out, [&](std::size_t size, const byte* polygon,
                                                            const std::vector<byte>& run) {
    return add_multipolygon_ring(shape, size, polygon, ring_index, run, out);
  });
}

int32_t xgWKB_shape_replace_multipolygon_ring(const unsigned char* shape, int32_t part,
                                              int32_t ring_index, const _xgWKB_POINT* points,
                                              int32_t count, unsigned char** out) noexcept {
  return with_new_ring(shape, part, points, count, out, [&](std::size_t size, const byte* polygon,
                                                            const std::vector<byte>& run) {
    return replace_multipolygon_ring(shape, size, polygon, ring_index, run, out);
  });
}

int32_t xgWKB_shape_delete_multipolygon_ring(const unsigned char* shape, int32_t part,
                                             int32_t ring_index, unsigned char** out) noexcept {
  if (shape == nullptr || out == nullptr) return XGWKB_E_NULL_POINTER;
  std::size_t size = 0;
  const int32_t status = check_multipolygon(shape, part, &size);
  if (status != XGWKB_OK) return status;
  return guarded([&] {
    return delete_multipolygon_ring(shape, size, member_of(shape, part), ring_index, out);
  });
}

}  // extern "C"
