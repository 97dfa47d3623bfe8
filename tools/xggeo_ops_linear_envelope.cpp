// xggeo_ops_linear_envelope.cpp - xggeo operations: the point at a fraction of a line, snapping
// a point onto a shape, and the relations between a shape and a rectangle.
#include <cstring>
#include <string>

#include "xggeo_ops.h"
#include "xggeokit.h"

namespace xggeo {

int32_t op_along(const Operands& in, const Args& args, Output& out) {
  _xgWKB_POINT p{};
  const int32_t status = xgWKB_shape_find_along(in.a, args.real(0), &p);
  if (status != XGWKB_OK) return status;
  out.real(p.x);
  out.real(p.y);
  return status;
}

int32_t op_snap(const Operands& in, const Args& args, Output& out) {
  const _xgWKB_POINT p{args.real(0), args.real(1)};
  _xgWKB_POINT snapped{};
  const int32_t status = xgWKB_shape_snap_point(in.a, &p, args.real(2), args.integer(3), &snapped);
  if (status != XGWKB_OK) return status;
  out.real(snapped.x);
  out.real(snapped.y);
  return status;
}

namespace {

using EnvelopePredicate = uint32_t (*)(const unsigned char*, const unsigned char*, double);

// The predicates by the names the two-shape relations use.
const struct {
  const char* name;
  EnvelopePredicate predicate;
} kEnvelopePredicates[] = {
    {"disjoint", xgWKB_shape_envelope_is_disjoint}, {"intersects", xgWKB_shape_envelope_is_intersecting},
    {"within", xgWKB_shape_envelope_is_within},     {"contains", xgWKB_shape_envelope_is_containing},
    {"crosses", xgWKB_shape_envelope_is_crossing},  {"overlaps", xgWKB_shape_envelope_is_overlapping},
    {"touches", xgWKB_shape_envelope_is_touching},
};

}  // namespace

int32_t op_envelope(const Operands& in, const Args& args, Output& out) {
  EnvelopePredicate predicate = nullptr;
  for (const auto& p : kEnvelopePredicates) {
    if (args.text(0) == p.name) predicate = p.predicate;
  }
  if (predicate == nullptr) {
    throw UsageError("unknown relation '" + args.text(0) +
                     "' (disjoint, intersects, within, contains, crosses, overlaps, touches)");
  }
  const _xgWKB_BOX box{args.real(1), args.real(2), args.real(3), args.real(4)};
  unsigned char* envelope = nullptr;
  const int32_t status = xgWKB_shape_generate_envelope(&box, &envelope);
  if (status != XGWKB_OK) return status;
  const uint32_t answer = predicate(in.a, envelope, args.real_or(5, kDefaultTolerance));
  xgWKB_shape_free(envelope);
  out.boolean(answer == 1);
  return XGWKB_OK;
}

}  // namespace xggeo
