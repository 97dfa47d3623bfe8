// simple_line.cpp - lines made simple: a multilinestring whose members are split wherever they
// meet each other.
#include "construct/noding.h"
#include "core/boundary.h"
#include "core/construct.h"

using namespace xg;

namespace {

// Nodes a multilinestring into *out; the input stays the caller's.  Any failure leaves *out as
// it was.
void node_into(const byte* multiline, byte** out) {
  guarded([&] { return node_multiline(multiline, kFixedTolerance, out); });
}

}  // namespace

extern "C" {

int32_t xgWKB_shape_generate_simple_line(int32_t total, int32_t parts, const int32_t* counts,
                                         const _xgWKB_POINT* points, unsigned char** out) noexcept {
  (void)total;  // the point total is implied by counts and is not used
  // Intended: the status of building the multilinestring is not passed on and this export
  // always reports success; callers preset out and test it afterwards.
  byte* multiline = nullptr;
  if (make_multiline(parts, counts, points, &multiline) != XGWKB_OK) return XGWKB_OK;
  const OwnedBlob intermediate(multiline);
  node_into(multiline, out);
  return XGWKB_OK;
}

int32_t xgWKB_shape_as_simple_line(const unsigned char* shape, unsigned char** out) noexcept {
  if (shape == nullptr || out == nullptr) return XGWKB_E_NULL_POINTER;
  // A multilinestring is its own line form: it is noded as it stands, without a copy.  The
  // size walk checks its members as the copy would (a foreign member: nothing stored).
  if (shape_type(shape) == XGWKB_TYPE_MULTILINESTRING) {
    uint32_t size = 0;
    if (geometry_size(shape, &size) == XGWKB_OK) node_into(shape, out);
    return XGWKB_OK;
  }
  // Intended: success whatever the conversion to lines reports; nothing is stored on failure.
  byte* line = nullptr;
  if (shape_as_line(shape, &line) != XGWKB_OK) return XGWKB_OK;
  if (shape_type(line) != XGWKB_TYPE_MULTILINESTRING) {
    *out = line;
    return XGWKB_OK;
  }
  const OwnedBlob intermediate(line);
  node_into(line, out);
  return XGWKB_OK;
}

}  // extern "C"
