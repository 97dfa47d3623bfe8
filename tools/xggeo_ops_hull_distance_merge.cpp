// xggeo_ops_hull_distance_merge.cpp - the tool's operations for convex hulls, distances and
// merging.
#include "xggeo_ops.h"
#include "xggeokit.h"

namespace xggeo {

namespace {

// Prints the new shape, or releases whatever the call handed out before failing.
int32_t print_new_shape(int32_t status, unsigned char* result, Output& out) {
  if (status != XGWKB_OK) {
    xgWKB_shape_free(result);
    return status;
  }
  return out.shape(result);
}

}  // namespace

int32_t op_hull(const Operands& in, const Args& args, Output& out) {
  unsigned char* result = nullptr;
  const int32_t status = xgWKB_shape_generate_convex_hull(in.a, &result, args.real_or(0, kDefaultTolerance));
  return print_new_shape(status, result, out);
}

int32_t op_distance(const Operands& in, const Args& args, Output& out) {
  double d = 0;
  const int32_t status = xgWKB_shape_calculate_distance(in.a, in.b, &d, args.real_or(0, kDefaultTolerance));
  if (status == XGWKB_OK) out.real(d);
  return status;
}

int32_t op_merge(const Operands& in, const Args& args, Output& out) {
  unsigned char* result = nullptr;
  const int32_t status = xgWKB_shape_merge(in.a, in.b, &result, args.real_or(0, kDefaultTolerance));
  return print_new_shape(status, result, out);
}

}  // namespace xggeo
