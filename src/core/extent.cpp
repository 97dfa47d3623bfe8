// extent.cpp - envelopes of shapes and of their parts.
#include "core/blob.h"

using namespace xg;

namespace {

const _xgWKB_BOX kZeroBox{0, 0, 0, 0};

// Envelope of a polygon's outer ring, which covers the whole polygon; no rings: the zero box.
_xgWKB_BOX polygon_outer_extent(const byte* polygon) {
  _xgWKB_BOX box = kZeroBox;
  if (shape_count(polygon) > 0) wkb_points_extent(first_ring(polygon).at, &box);
  return box;
}

_xgWKB_BOX member_extent(const byte* member) {
  _xgWKB_BOX box = kZeroBox;
  if (shape_type(member) == XGWKB_TYPE_POLYGON) return polygon_outer_extent(member);
  wkb_points_extent(line_run(member).at, &box);
  return box;
}

// Multilinestrings and multipolygons.  Intended: the result starts as member 1's box and the
// walk over members 2..k counts from 1, so part j (1 <= j < k) answers member j+1 alone, while
// parts 0 and k give the union; member 1 alone cannot be asked for.  Callers rely on this.
int32_t multi_extent(const byte* multi, int32_t part, _xgWKB_BOX* box) {
  const uint32_t members = shape_count(multi);
  if (part < 0 || static_cast<uint32_t>(part) > members) return XGWKB_E_NO_PART;
  if (members == 0) {
    *box = kZeroBox;
    return XGWKB_OK;
  }
  _xgWKB_BOX result{};
  bool answered = false;
  for_each_member(multi, [&](const byte* member, uint32_t i) {
    if (answered) return;
    const _xgWKB_BOX mbox = member_extent(member);
    if (i == 0) {
      result = mbox;
    } else if (static_cast<int32_t>(i) == part) {
      result = mbox;
      answered = true;
    } else {
      box_merge(&result, mbox);
    }
  });
  *box = result;
  return XGWKB_OK;
}

}  // namespace

extern "C" int32_t xgWKB_shape_get_extent(const unsigned char* shape, int32_t part,
                                          _xgWKB_BOX* box) noexcept {
  if (shape == nullptr) return XGWKB_E_NULL_POINTER;
  if (!members_well_typed(shape)) return XGWKB_E_INVALID_SHAPE;
  switch (shape_type(shape)) {
    case XGWKB_TYPE_POINT: {
      const _xgWKB_POINT p = point_of(shape);
      *box = _xgWKB_BOX{p.x, p.y, p.x, p.y};
      return XGWKB_OK;
    }
    case XGWKB_TYPE_LINESTRING:
      return wkb_points_extent(line_run(shape).at, box);
    case XGWKB_TYPE_POLYGON: {
      const uint32_t rings = shape_count(shape);
      if (part < 0 || static_cast<uint32_t>(part) > rings) return XGWKB_E_NO_PART;
      if (part <= 1) {
        *box = polygon_outer_extent(shape);
        return XGWKB_OK;
      }
      return wkb_points_extent(ring_at(shape, static_cast<uint32_t>(part - 1)), box);
    }
    case XGWKB_TYPE_MULTIPOINT: {
      if (shape_count(shape) == 0) {
        *box = kZeroBox;
        return XGWKB_OK;
      }
      for_each_member(shape, [&](const byte* member, uint32_t i) {
        const _xgWKB_POINT p = point_of(member);
        const _xgWKB_BOX pbox{p.x, p.y, p.x, p.y};
        if (i == 0) {
          *box = pbox;
        } else {
          box_merge(box, pbox);
        }
      });
      return XGWKB_OK;
    }
    case XGWKB_TYPE_MULTILINESTRING:
    case XGWKB_TYPE_MULTIPOLYGON:
      return multi_extent(shape, part, box);
    default:
      return XGWKB_E_INVALID_SHAPE;
  }
}
