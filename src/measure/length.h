// length.h - the length of a shape or of one of its parts, for internal callers.
#ifndef XGGEO_MEASURE_LENGTH_H
#define XGGEO_MEASURE_LENGTH_H

#include <cstdint>

#include "core/blob.h"

namespace xg {

// The length behind xgWKB_shape_get_length: of the whole shape (part 0) or of one ring or
// member.  Sets *length (0 on failure) and returns 0, -65 (null shape), -27 (point types),
// -135 (part out of range) or -134 (not a line or polygon type).
int32_t shape_length(const byte* shape, int32_t part, double* length);

}  // namespace xg

#endif  // XGGEO_MEASURE_LENGTH_H
