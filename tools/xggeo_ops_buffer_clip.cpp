// xggeo_ops_buffer_clip.cpp - the buffer and clipping operations of the xggeo tool.
#include "xggeo_ops.h"

#include "xggeokit.h"

namespace xggeo {

// The buffer of each shape; "none" where no buffer is made (distance below the minimum radius).
int32_t op_buffer(const Operands& in, const Args& args, Output& out) {
  unsigned char* result = nullptr;
  const int32_t status = xgWKB_shape_generate_buffer(in.a, args.real(0), &result, args.real_or(1, 0));
  if (status != XGWKB_OK) return status;
  if (result == nullptr) {
    out.text("none");
    return status;
  }
  return out.shape(result);
}

// The part of each shape inside the box MINX MINY MAXX MAXY (lines re-joined within 0.0001).
int32_t op_clip(const Operands& in, const Args& args, Output& out) {
  // The envelope blob: header, then the four doubles.
  _xgWKB_BOX box{args.real(0), args.real(1), args.real(2), args.real(3)};
  unsigned char* envelope = nullptr;
  int32_t status = xgWKB_shape_generate_envelope(&box, &envelope);
  if (status != XGWKB_OK) return status;
  unsigned char* result = nullptr;
  status = xgWKB_shape_clip(in.a, envelope, &result, kDefaultTolerance);
  xgWKB_shape_free(envelope);
  if (status != XGWKB_OK) return status;
  return out.shape(result);
}

// Two lines: the pieces of -a inside -b (boundary included), then the pieces outside.
int32_t op_cutline(const Operands& in, const Args& args, Output& out) {
  _xgWKB_LINE_PIECES pieces{nullptr, nullptr};
  if (xgWKB_shape_ClipLinestringPolygon(in.a, in.b, &pieces, args.real_or(0, kDefaultTolerance)) != 1) {
    return XGWKB_E_FAILED;
  }
  Output inside, outside;
  const int32_t s1 = inside.shape(pieces.inside);  // releases the pieces
  const int32_t s2 = outside.shape(pieces.outside);
  if (s1 != XGWKB_OK) return s1;
  if (s2 != XGWKB_OK) return s2;
  out.text(inside.line() + "\n" + outside.line());
  return XGWKB_OK;
}

}  // namespace xggeo
