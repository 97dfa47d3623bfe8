// xggeo_ops_overlay.cpp - the overlay operations of the xggeo tool.
#include "xggeo_ops.h"

#include "xggeokit.h"

namespace xggeo {
namespace {

using BinaryOp = int32_t (*)(const unsigned char*, const unsigned char*, unsigned char**, double);

template <BinaryOp op>
int32_t binary(const Operands& in, const Args& args, Output& out) {
  unsigned char* result = nullptr;
  const int32_t status = op(in.a, in.b, &result, args.real_or(0, 0.0001));
  if (status != XGWKB_OK) {
    xgWKB_shape_free(result);
    return status;
  }
  if (result == nullptr) {
    out.text("none");  // nothing produced (both operands empty, or lines without a common point)
    return status;
  }
  return out.shape(result);
}

}  // namespace

int32_t op_intersection(const Operands& in, const Args& args, Output& out) {
  return binary<xgWKB_shape_intersection>(in, args, out);
}
int32_t op_union(const Operands& in, const Args& args, Output& out) { return binary<xgWKB_shape_union>(in, args, out); }
int32_t op_difference(const Operands& in, const Args& args, Output& out) {
  return binary<xgWKB_shape_difference>(in, args, out);
}
int32_t op_symdifference(const Operands& in, const Args& args, Output& out) {
  return binary<xgWKB_shape_symmetric_difference>(in, args, out);
}

// Three lines: only in -a, only in -b, common; "none" for an output the library left unwritten.
int32_t op_overlay(const Operands& in, const Args& args, Output& out) {
  unsigned char* parts[3] = {nullptr, nullptr, nullptr};
  const int32_t status = xgWKB_shape_overlay(in.a, in.b, &parts[0], &parts[1], &parts[2], args.real_or(0, 0.0001));
  std::string text;
  int32_t written = status;
  for (int i = 0; i < 3; ++i) {
    Output line;
    if (status == XGWKB_OK && parts[i] == nullptr) line.text("none");
    const int32_t s = line.shape(parts[i]);  // releases the part
    if (written == XGWKB_OK) written = s;
    text += (i > 0 ? "\n" : "") + line.line();
  }
  if (written == XGWKB_OK) out.text(text);
  return written;
}

}  // namespace xggeo
