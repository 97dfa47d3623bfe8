// anno_transforms.cpp - move, rotate, stretch and mirror SingleText and MultiText shapes, and
// the outline polygons of placed texts.
//
// A transform maps the geometric fields of each record - text point, leader when present, the
// two box corners - by the point rules the shape transforms use; text and symbol are never
// touched.  Move, rotate and stretch work in place, the mirrors on a copy.
#include <cmath>
#include <vector>

#include "anno/anno_layout.h"
#include "anno/anno_transforms.h"
#include "core/angles.h"
#include "core/boundary.h"
#include "core/construct.h"
#include "core/point_primitives.h"
#include "edit/transforms.h"

using namespace xg;
using namespace xg::anno;
using xg::edit::MirrorLine;
using xg::edit::MoveBy;
using xg::edit::RotateAbout;
using xg::edit::StretchAbout;

namespace {

constexpr double kOutlineAngle = 0.0001;  // below this in magnitude a text counts as unrotated

void rotate_desc(byte* d, const RotateAbout& turn, double angle) {
  const _xgWKB_POINT old_at = desc_text_point(d);
  const _xgWKB_POINT at = turn(old_at);
  set_desc_text_point(d, at);
  set_desc_angle(d, desc_angle(d) - angle);  // no normalisation into [0, 2pi)
  if (desc_has_leader(d)) set_desc_leader(d, turn(desc_leader(d)));
  // The box is not turned: it moves with the text point and keeps its size.
  const double dx = at.x - old_at.x, dy = at.y - old_at.y;
  const _xgWKB_BOX b = desc_extent(d);
  set_desc_extent(d, _xgWKB_BOX{b.minx + dx, b.miny + dy, b.maxx + dx, b.maxy + dy});
}

// A copy of an annotation blob, changed by walk(copy).
template <class Walk>
int32_t mirrored_copy(const byte* s, Walk&& walk, byte** out) {
  const std::size_t size = anno_bytes(s);
  byte* copy = blob_alloc(size);
  if (copy == nullptr) return XGWKB_E_FAILED;
  std::memcpy(copy, s, size);
  walk(copy);
  *out = copy;
  return XGWKB_OK;
}

// The outline polygon of one record.
int32_t desc_outline(const byte* d, byte** out) {
  const _xgWKB_POINT at = desc_text_point(d);
  const _xgWKB_BOX b = desc_extent(d);
  const double angle = desc_angle(d);
  byte* polygon = nullptr;
  // Intended: texts turned by less than 0.0001 get the box's own rectangle (lower left first);
  // turned ones start at the upper left - callers know both orders.
  if (std::fabs(angle) >= kOutlineAngle) {
    // The corners turned counter-clockwise by the angle about the text point, from the upper
    // left clockwise round, closed.
    const double c = std::cos(angle), s = std::sin(angle);
    const _xgWKB_POINT corners[4] = {{b.minx, b.maxy}, {b.maxx, b.maxy}, {b.maxx, b.miny}, {b.minx, b.miny}};
    _xgWKB_POINT ring[5];
    for (int i = 0; i < 4; ++i) {
      const _xgWKB_POINT r = rotate_cs(_xgWKB_POINT{corners[i].x - at.x, corners[i].y - at.y}, c, -s);
      ring[i] = _xgWKB_POINT{at.x + r.x, at.y + r.y};
    }
    ring[4] = ring[0];
    polygon = blob_alloc(geometry_size_for(XGWKB_TYPE_POLYGON, 5, 1, 1));
    if (polygon != nullptr) BlobWriter(polygon).header(XGWKB_TYPE_POLYGON).u32(1).u32(5).points(ring, 5);
  } else {
    polygon = polygon_of_box(b);
  }
  if (polygon == nullptr) return XGWKB_E_FAILED;
  *out = polygon;
  return XGWKB_OK;
}

int32_t multi_outline(const byte* s, int32_t index, byte** out) {
  if (index != 0) return desc_outline(multi_desc(s, static_cast<uint32_t>(index)), out);
  std::vector<OwnedBlob> outlines;
  std::vector<const byte*> shapes;
  int32_t status = XGWKB_OK;
  for_each_desc(s, [&](const byte* d, uint32_t) {
    byte* polygon = nullptr;
    if (status == XGWKB_OK) status = desc_outline(d, &polygon);
    outlines.emplace_back(polygon);
    shapes.push_back(polygon);
  });
  if (status != XGWKB_OK) return status;
  return combine_shapes(shapes.data(), static_cast<int32_t>(shapes.size()), out);
}

}  // namespace

namespace xg::anno {

void single_move(byte* s, double dx, double dy) { map_desc_points(single_desc(s), MoveBy{dx, dy}); }

void single_stretch(byte* s, const _xgWKB_POINT& base, double sx, double sy) {
  map_desc_points(single_desc(s), StretchAbout{base, sx, sy});
}

void single_rotate(byte* s, double angle, double cx, double cy) {
  rotate_desc(single_desc(s), RotateAbout(angle, cx, cy), angle);
}

int32_t single_mirror(const byte* s, const _xgWKB_POINT& a, const _xgWKB_POINT& b, double tol, byte** out) {
  const MirrorLine mirror(a, b, tol);
  const double alpha = point_angle(a, b);
  return mirrored_copy(
      s,
      [&](byte* copy) {
        byte* d = single_desc(copy);
        map_desc_points(d, mirror);
        // Intended: the old angle counts three times in the new one.
        const double theta = desc_angle(d);
        set_desc_angle(d, 2 * (alpha - theta) - theta + kPiF);
      },
      out);
}

}  // namespace xg::anno

extern "C" {

int32_t xgWKB_anno_move(unsigned char* shape, double dx, double dy) noexcept {
  if (shape == nullptr) return XGWKB_E_NULL_POINTER;
  single_move(shape, dx, dy);
  return XGWKB_OK;
}

int32_t xgWKB_anno_move_multitext(unsigned char* shape, double dx, double dy) noexcept {
  if (shape == nullptr) return XGWKB_E_NULL_POINTER;
  for_each_desc(shape, [=](byte* d, uint32_t) { map_desc_points(d, MoveBy{dx, dy}); });
  return XGWKB_OK;
}

int32_t xgWKB_anno_rotate(unsigned char* shape, double angle, double cx, double cy) noexcept {
  if (shape == nullptr) return XGWKB_E_NULL_POINTER;
  single_rotate(shape, angle, cx, cy);
  return XGWKB_OK;
}

int32_t xgWKB_anno_rotate_multitext(unsigned char* shape, double angle, double cx, double cy) noexcept {
  if (shape == nullptr) return XGWKB_E_NULL_POINTER;
  const RotateAbout turn(angle, cx, cy);  // cosine and sine once for all records
  for_each_desc(shape, [&](byte* d, uint32_t) { rotate_desc(d, turn, angle); });
  return XGWKB_OK;
}

int32_t xgWKB_anno_stretch(unsigned char* shape, const _xgWKB_POINT* base, double sx, double sy) noexcept {
  if (shape == nullptr || base == nullptr) return XGWKB_E_NULL_POINTER;
  single_stretch(shape, *base, sx, sy);
  return XGWKB_OK;
}

int32_t xgWKB_anno_stretch_multitext(unsigned char* shape, const _xgWKB_POINT* base, double sx, double sy) noexcept {
  if (shape == nullptr || base == nullptr) return XGWKB_E_NULL_POINTER;
  const StretchAbout stretch{*base, sx, sy};
  for_each_desc(shape, [&](byte* d, uint32_t) { map_desc_points(d, stretch); });
  return XGWKB_OK;
}

int32_t xgWKB_anno_mirror(const unsigned char* shape, const _xgWKB_POINT* a, const _xgWKB_POINT* b,
                          unsigned char** out, double t) noexcept {
  if (shape == nullptr || a == nullptr || b == nullptr || out == nullptr) return XGWKB_E_NULL_POINTER;
  return guarded([&] { return single_mirror(shape, *a, *b, t, out); });
}

int32_t xgWKB_anno_mirror_multitext(const unsigned char* shape, const _xgWKB_POINT* a,
                                    const _xgWKB_POINT* b, unsigned char** out, double t) noexcept {
  if (shape == nullptr || a == nullptr || b == nullptr || out == nullptr) return XGWKB_E_NULL_POINTER;
  const MirrorLine mirror(*a, *b, t);
  // The copy is sized by the blob itself (its total-size field, or its records and symbol when
  // they need more) and carries the symbol block along, so the result is a whole MultiText.
  return guarded([&] {
    return mirrored_copy(
        shape,
        [&](byte* copy) {
          // Intended: unlike the SingleText mirror, the angles are kept.
          for_each_desc(copy, [&](byte* d, uint32_t) { map_desc_points(d, mirror); });
        },
        out);
  });
}

int32_t xgWKB_anno_get_outline(const unsigned char* shape, unsigned char** out) noexcept {
  // Null pointers are refused rather than read.
  if (shape == nullptr || out == nullptr) return XGWKB_E_NULL_POINTER;
  return guarded([&] { return desc_outline(single_desc(shape), out); });
}

int32_t xgWKB_anno_get_multitext_outline(const unsigned char* shape, int32_t index, unsigned char** out) noexcept {
  if (shape == nullptr || out == nullptr) return XGWKB_E_NULL_POINTER;
  // An index above N has no record to outline: refused like any other bad index.
  if (index < 0 || static_cast<uint32_t>(index) > multi_count(shape)) return XGWKB_E_INVALID_INDEX;
  if (index == 0 && multi_count(shape) == 0) return XGWKB_E_INVALID_ARGUMENT;  // nothing to combine
  return guarded([&] { return multi_outline(shape, index, out); });
}

}  // extern "C"
