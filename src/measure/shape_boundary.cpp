// shape_boundary.cpp - whether lines are closed, and the boundary of a shape.
//
// Boundaries use the fixed tolerance: a line's boundary is its two end points unless it is
// closed, an area's boundary its rings as lines, and a multilinestring's boundary the end points
// shared by an odd number of its open members (the mod-2 rule).
#include <vector>

#include "core/boundary.h"
#include "core/construct.h"

using namespace xg;

namespace {

int32_t deliver(byte* blob, byte** out, int32_t status) {
  if (blob == nullptr) return kOutOfMemory;
  *out = blob;
  return status;
}

byte* multipoint_of(const _xgWKB_POINT* pts, std::size_t n) {
  byte* blob = blob_alloc(kCountedHeaderSize + kPointBlobSize * n);
  if (blob == nullptr) return nullptr;
  BlobWriter w(blob);
  w.header(XGWKB_TYPE_MULTIPOINT).u32(static_cast<uint32_t>(n));
  for (std::size_t i = 0; i < n; ++i) w.point_blob(pts[i]);
  return blob;
}

struct EndPoint {
  _xgWKB_POINT at;
  bool odd;
};

// The mod-2 rule over the end points of the open members, in the order they were first met.
// The first end point toggles the first entry equal to it; the last end point toggles every
// equal entry the scan reaches before both ends have matched.  Unmatched ends are appended,
// first before last, each with odd parity.  False when a member is not a linestring.
bool odd_end_points(const byte* multiline, std::vector<_xgWKB_POINT>* odd) {
  std::vector<EndPoint> entries;
  const bool walked = for_each_member(multiline, [&](const byte* member, uint32_t) {
    const PointRun run = line_run(member);
    if (run.size() == 0 || wkb_line_is_closed_tol(member, kFixedTolerance)) return;
    const _xgWKB_POINT first = run.front();
    const _xgWKB_POINT last = run.back();
    bool first_matched = false;
    bool last_matched = false;
    for (EndPoint& e : entries) {
      if (first_matched && last_matched) break;
      if (!first_matched && wkb_point_equal_tol(e.at, first, kFixedTolerance)) {
        e.odd = !e.odd;
        first_matched = true;
      }
      if (wkb_point_equal_tol(e.at, last, kFixedTolerance)) {
        e.odd = !e.odd;
        last_matched = true;
      }
    }
    if (!first_matched) entries.push_back({first, true});
    if (!last_matched) entries.push_back({last, true});
  });
  for (const EndPoint& e : entries) {
    if (e.odd) odd->push_back(e.at);
  }
  return walked;
}

int32_t multiline_boundary(const byte* multiline, byte** out) {
  std::vector<_xgWKB_POINT> odd;
  if (!odd_end_points(multiline, &odd)) return XGWKB_E_INVALID_SHAPE;
  // Where every end point cancels, the boundary is empty: the nil shape, with success.
  if (odd.empty()) return deliver(alloc_nil(), out, XGWKB_OK);
  return deliver(multipoint_of(odd.data(), odd.size()), out, XGWKB_OK);
}

int32_t line_boundary(const byte* line, byte** out) {
  const PointRun run = line_run(line);
  if (run.size() == 0 || wkb_line_is_closed_tol(line, kFixedTolerance)) {
    return deliver(alloc_nil(), out, XGWKB_OK);
  }
  const _xgWKB_POINT ends[2] = {run.front(), run.back()};
  return deliver(multipoint_of(ends, 2), out, XGWKB_OK);
}

int32_t area_boundary(const byte* shape, byte** out) {
  // Success whatever else the conversion reports; an area without rings has the empty boundary.
  // Running out of memory and a multipolygon with a member of another type are passed on.
  const int32_t status = shape_as_line(shape, out);
  if (status == XGWKB_OK || status == XGWKB_E_INVALID_SHAPE || status == kOutOfMemory) return status;
  return deliver(alloc_nil(), out, XGWKB_OK);
}

}  // namespace

extern "C" {

int32_t xgWKB_shape_is_close(const unsigned char* shape, double tol) noexcept {
  if (shape == nullptr) return XGWKB_E_NULL_POINTER;
  if (!members_well_typed(shape)) return XGWKB_E_INVALID_SHAPE;
  switch (shape_type(shape)) {
    case XGWKB_TYPE_LINESTRING:
      return wkb_line_is_closed_tol(shape, tol);
    case XGWKB_TYPE_MULTILINESTRING:
      return wkb_multiline_is_closed_tol(shape, tol);
    default:
      return XGWKB_E_INVALID_ENTITY;
  }
}

int32_t xgWKB_shape_get_boundary(const unsigned char* shape, unsigned char** out) noexcept {
  if (shape == nullptr || out == nullptr) return XGWKB_E_NULL_POINTER;
  return guarded([&]() -> int32_t {
    switch (shape_type(shape)) {
      case XGWKB_TYPE_POINT:
      case XGWKB_TYPE_MULTIPOINT:
        // A point has no boundary: a nil shape that the caller frees, and -208.
        return deliver(alloc_nil(), out, XGWKB_E_NIL_AS_WKB);
      case XGWKB_TYPE_LINESTRING:
        return line_boundary(shape, out);
      case XGWKB_TYPE_POLYGON:
      case XGWKB_TYPE_MULTIPOLYGON:
        return area_boundary(shape, out);
      case XGWKB_TYPE_MULTILINESTRING:
        return multiline_boundary(shape, out);
      default:
        return XGWKB_E_INVALID_SHAPE;
    }
  });
}

}  // extern "C"
