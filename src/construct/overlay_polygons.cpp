// overlay_polygons.cpp - the polygon kernels: empty operands, clipping, cleaning, writing.
#include "construct/overlay_convert.h"
#include "construct/overlay_kernels.h"
#include "core/construct.h"

namespace xg {
namespace {

int32_t copy_shape(const byte* shape, byte** out) {
  uint32_t size = 0;
  const int32_t status = geometry_size(shape, &size);
  if (status != XGWKB_OK) return status;
  return blob_copy(shape, size, out);
}

// Cleans a clip result and writes it into *out.
int32_t finish(gpc_polygon* result, byte** out) {
  clean_clip_result(result);
  return contours_to_shape(*result, out);
}

}  // namespace

int32_t polygon_kernel(gpc_op op, const byte* a, const byte* b, byte** out) {
  // Rings of a polygon, members of a multipolygon.
  const bool a_empty = shape_count(a) == 0;
  const bool b_empty = shape_count(b) == 0;
  if (a_empty && b_empty) {
    *out = nullptr;
    return XGWKB_OK;
  }
  if (a_empty || b_empty) {
    switch (op) {
      case GPC_DIFF:
        return a_empty ? nil_into(out) : copy_shape(a, out);
      case GPC_INT:
        return nil_into(out);
      case GPC_XOR:
      case GPC_UNION:
      default:
        return copy_shape(a_empty ? b : a, out);
    }
  }
  gpc_polygon subject, clip, result;
  append_polygon_contours(a, &subject);
  append_polygon_contours(b, &clip);
  const int32_t status = gpc_polygon_clip(op, subject, clip, &result);
  if (status != XGWKB_OK) return status;
  return finish(&result, out);
}

int32_t overlay_polygons(const byte* a, const byte* b, byte** only_a, byte** only_b, byte** common) {
  gpc_polygon subject, clip, both, a_part, b_part;
  append_polygon_contours(a, &subject);
  append_polygon_contours(b, &clip);
  const int32_t status = three_way_polygon_clip(subject, clip, &both, &a_part, &b_part);
  if (status != XGWKB_OK) return status;
  // All three are built before any is handed out, so a failure leaves the outputs untouched.
  byte* c = nullptr;
  byte* oa = nullptr;
  byte* ob = nullptr;
  int32_t s = finish(&both, &c);
  OwnedBlob keep_c(c);
  if (s == XGWKB_OK) s = finish(&a_part, &oa);
  OwnedBlob keep_a(oa);
  if (s == XGWKB_OK) s = finish(&b_part, &ob);
  OwnedBlob keep_b(ob);
  if (s != XGWKB_OK) return s;
  *common = keep_c.release();
  *only_a = keep_a.release();
  *only_b = keep_b.release();
  return XGWKB_OK;
}

}  // namespace xg
