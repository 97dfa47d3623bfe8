// xggeo_ops.cpp - the operation table of the xggeo tool.
//
// One entry per operation: name, what it works on, its argument count (min, max), the argument
// synopsis, a one-line summary and the function.  Each subsystem of the library adds its
// operations in its own section below; an operation with more than a few lines of its own may
// live in a file of its own (tools/xggeo_ops_<subsystem>.cpp, declared here).
#include "xggeo_ops.h"

#include "xggeokit.h"

namespace xggeo {
namespace {

// ---- Well-Known Text -------------------------------------------------------------------------

int32_t op_wkt(const Operands& in, const Args&, Output& out) {
  unsigned char* shape = nullptr;
  const int32_t status = xgWKB_shape_generate_from_WKT(in.text, &shape);
  if (status != XGWKB_OK) return status;
  if (shape == nullptr) return kUnreadableText;
  return out.shape(shape);
}

int32_t op_wkttype(const Operands& in, const Args&, Output& out) {
  int32_t type = 0;
  const int32_t status = xgWKB_shape_get_WKT_type(in.text, &type);
  if (status == XGWKB_OK) out.integer(type);
  return status;
}

int32_t op_wktsize(const Operands& in, const Args&, Output& out) {
  constexpr int32_t kUnset = -1;
  int32_t size = kUnset;
  const int32_t status = xgWKB_shape_get_WKT_size(in.text, &size);
  if (status != XGWKB_OK) return status;
  if (size == kUnset) {
    out.text("none");
  } else {
    out.integer(size);
  }
  return status;
}

// ---- Life cycle, size and type ---------------------------------------------------------------

int32_t op_type(const Operands& in, const Args&, Output& out) {
  uint32_t type = 0;
  const int32_t status = xgWKB_shape_get_type(in.a, &type);
  if (status == XGWKB_OK) out.integer(type);
  return status;
}

int32_t op_size(const Operands& in, const Args&, Output& out) {
  uint32_t size = 0;
  const int32_t status = xgWKB_shape_get_WKB_size(in.a, &size);
  if (status == XGWKB_OK) out.integer(size);
  return status;
}

int32_t op_extent(const Operands& in, const Args& args, Output& out) {
  _xgWKB_BOX box{};
  const int32_t status = xgWKB_shape_get_extent(in.a, args.integer_or(0, 0), &box);
  if (status != XGWKB_OK) return status;
  out.real(box.minx);
  out.real(box.miny);
  out.real(box.maxx);
  out.real(box.maxy);
  return status;
}

// ---- Part and point access -------------------------------------------------------------------

int32_t op_parts(const Operands& in, const Args&, Output& out) {
  uint32_t count = 0;
  const int32_t status = xgWKB_shape_get_num_parts(in.a, &count);
  if (status == XGWKB_OK) out.integer(count);
  return status;
}

int32_t op_points(const Operands& in, const Args& args, Output& out) {
  uint32_t count = 0;
  const int32_t status =
      xgWKB_shape_get_num_points(in.a, args.integer_or(0, 0), args.integer_or(1, 0), &count);
  if (status == XGWKB_OK) out.integer(count);
  return status;
}

}  // namespace

const Op kOperations[] = {
    // Well-Known Text
    {"wkt", Inputs::kText, 0, 0, "", "read each text and write the shape back as text", op_wkt},
    {"wkttype", Inputs::kText, 0, 0, "", "type code named by the text's first word", op_wkttype},
    {"wktsize", Inputs::kText, 0, 0, "", "blob size estimated from the text alone, or none",
     op_wktsize},
    // Life cycle, size and type
    {"type", Inputs::kShape, 0, 0, "", "type code of the shape", op_type},
    {"size", Inputs::kShape, 0, 0, "", "size of the shape's blob in bytes", op_size},
    {"extent", Inputs::kShape, 0, 1, "[PART]",
     "minx miny maxx maxy of the shape (PART 0) or of one part", op_extent},
    // Part and point access
    {"parts", Inputs::kShape, 0, 0, "", "number of rings or members", op_parts},
    {"points", Inputs::kShape, 0, 2, "[PART [SUBPART]]",
     "points of the shape, of part PART, or of ring SUBPART of member PART", op_points},
};

const std::size_t kOperationCount = sizeof kOperations / sizeof kOperations[0];

}  // namespace xggeo
