// clip.cpp - shapes cut to an axis-aligned box, and lines cut by polygons.
//
// Points are kept by an inclusive box test; lines are clipped segment by segment (Cohen-
// Sutherland, with a small margin around the box) and the visible pieces re-joined where one
// starts at the end of the part before it; polygons are intersected with the box polygon through
// the clipper adapter.
#include <cmath>
#include <vector>

#include "construct/gpc_adapter.h"
#include "construct/overlay_convert.h"
#include "construct/overlay_kernels.h"
#include "core/boundary.h"
#include "core/construct.h"
#include "relate/envelope_tests.h"

namespace xg {
namespace {

using Points = std::vector<_xgWKB_POINT>;

bool point_in_box(const _xgWKB_POINT& p, const _xgWKB_BOX& b) {
  return b.minx <= p.x && p.x <= b.maxx && b.miny <= p.y && p.y <= b.maxy;
}

// The visible parts of one run appended to parts: a piece starting within t of the current part's
// last point extends that part, any other starts a new one, an invisible segment ends it.
void clip_run(const PointRun& run, const _xgWKB_BOX& b, double t, std::vector<Points>& parts) {
  bool open = false;
  const uint32_t n = run.size();
  for (uint32_t i = 0; i + 1 < n; ++i) {
    _xgWKB_POINT p = run.point(i), q = run.point(i + 1);
    if (!env_clip_segment(p, q, b)) {
      open = false;
      continue;
    }
    if (open && wkb_point_equal_tol(p, parts.back().back(), t)) {
      parts.back().push_back(q);
    } else {
      parts.push_back(Points{p, q});
      open = true;
    }
  }
}

int32_t write_nil(byte** out) {
  byte* nil = alloc_nil();
  if (nil == nullptr) return XGWKB_E_FAILED;
  *out = nil;
  return XGWKB_OK;
}

int32_t write_parts(const std::vector<Points>& parts, byte** out) {
  if (parts.empty()) return write_nil(out);
  std::size_t size = kCountedHeaderSize;
  for (const Points& l : parts) size += kCountedHeaderSize + kCoordSize * l.size();
  byte* blob = blob_alloc(size);
  if (blob == nullptr) return XGWKB_E_FAILED;
  BlobWriter w(blob);
  w.header(XGWKB_TYPE_MULTILINESTRING).u32(static_cast<uint32_t>(parts.size()));
  for (const Points& l : parts) w.header(XGWKB_TYPE_LINESTRING).u32(static_cast<uint32_t>(l.size())).points(l.data(), l.size());
  *out = blob;
  return XGWKB_OK;
}

int32_t clip_multipoint(const byte* shape, const _xgWKB_BOX& b, byte** out) {
  std::vector<const byte*> kept;
  for_each_member(shape, [&](const byte* m, uint32_t) {
    if (point_in_box(point_of(m), b)) kept.push_back(m);
  });
  if (kept.empty()) return write_nil(out);
  byte* blob = blob_alloc(kCountedHeaderSize + kPointBlobSize * kept.size());
  if (blob == nullptr) return XGWKB_E_FAILED;
  BlobWriter w(blob);
  w.header(XGWKB_TYPE_MULTIPOINT).u32(static_cast<uint32_t>(kept.size()));
  for (const byte* m : kept) w.bytes(m, kPointBlobSize);
  *out = blob;
  return XGWKB_OK;
}

int32_t clip_polygons(const byte* shape, const _xgWKB_BOX& b, byte** out) {
  gpc_polygon subject, box, result;
  append_polygon_contours(shape, &subject);
  box.add_contour({{b.minx, b.maxy}, {b.minx, b.miny}, {b.maxx, b.miny}, {b.maxx, b.maxy}}, 0);
  const int32_t status = gpc_polygon_clip(GPC_INT, subject, box, &result);
  if (status != XGWKB_OK) return status;
  // Only a multipolygon's result is cleaned, a polygon's is written as the clipper gives it:
  // intended, callers see the difference.
  if (shape_type(shape) == XGWKB_TYPE_MULTIPOLYGON) clean_clip_result(&result);
  return contours_to_shape(result, out);
}

int32_t clip_shape(const byte* shape, const byte* box_blob, byte** out, double t) {
  if (shape == nullptr || box_blob == nullptr || out == nullptr) return XGWKB_E_NULL_POINTER;
  const uint32_t type = shape_type(shape);
  if (type > XGWKB_TYPE_MULTIPOLYGON) return XGWKB_E_INVALID_ENTITY;
  if (is_multi_type(type) && !for_each_member(shape, [](const byte*, uint32_t) {})) return XGWKB_E_INVALID_ENTITY;
  // A box whose minimum lies above its maximum is taken as it stands: intended.
  const _xgWKB_BOX b = load_envelope(box_blob);
  std::vector<Points> parts;
  switch (type) {
    case XGWKB_TYPE_NIL:
      return write_nil(out);
    case XGWKB_TYPE_POINT:
      return point_in_box(point_of(shape), b) ? blob_copy(shape, kPointBlobSize, out) : write_nil(out);
    case XGWKB_TYPE_MULTIPOINT:
      return clip_multipoint(shape, b, out);
    case XGWKB_TYPE_LINESTRING:
      clip_run(line_run(shape), b, t, parts);
      return write_parts(parts, out);
    case XGWKB_TYPE_MULTILINESTRING:
      for_each_member(shape, [&](const byte* line, uint32_t) { clip_run(line_run(line), b, t, parts); });
      return write_parts(parts, out);
    default:
      return clip_polygons(shape, b, out);
  }
}

bool is_line_type(uint32_t type) { return type == XGWKB_TYPE_LINESTRING || type == XGWKB_TYPE_MULTILINESTRING; }
bool is_polygon_type(uint32_t type) { return type == XGWKB_TYPE_POLYGON || type == XGWKB_TYPE_MULTIPOLYGON; }

// 1 with both pieces stored, -1 with pieces untouched.
int32_t cut_line(const byte* line, const byte* polygon, _xgWKB_LINE_PIECES* pieces, double t) {
  if (line == nullptr || polygon == nullptr || pieces == nullptr) return -1;
  if (!is_line_type(shape_type(line)) || !is_polygon_type(shape_type(polygon))) return -1;
  for (const byte* s : {line, polygon}) {
    if (is_multi_type(shape_type(s)) && !for_each_member(s, [](const byte*, uint32_t) {})) return -1;
  }
  if (!std::isfinite(t) || !shape_coords_finite(line) || !shape_coords_finite(polygon)) return -1;
  byte* inside = nullptr;
  if (line_polygon_kernel(line, polygon, true, t, &inside) != XGWKB_OK) return -1;
  OwnedBlob keep_inside(inside);
  byte* outside = nullptr;
  if (line_polygon_kernel(line, polygon, false, t, &outside) != XGWKB_OK) return -1;
  pieces->inside = keep_inside.release();
  pieces->outside = outside;
  return 1;
}

}  // namespace
}  // namespace xg

extern "C" {

int32_t xgWKB_shape_clip(const unsigned char* shape, const unsigned char* box, unsigned char** out,
                         double t) noexcept {
  return xg::guarded([&] { return xg::clip_shape(shape, box, out, t); });
}

int32_t xgWKB_shape_ClipLinestringPolygon(const unsigned char* line, const unsigned char* polygon,
                                          _xgWKB_LINE_PIECES* pieces, double t) noexcept {
  // Out of memory is a failure like any other here: the contract has only 1 and -1.
  const int32_t status = xg::guarded([&] { return xg::cut_line(line, polygon, pieces, t); });
  return status == 1 ? 1 : -1;
}

}  // extern "C"
