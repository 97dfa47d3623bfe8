// wkt_estimate.h - the blob size a WKT text will need, found without reading its numbers.
#ifndef XGGEO_WKT_WKT_ESTIMATE_H
#define XGGEO_WKT_WKT_ESTIMATE_H

#include <cstdint>

namespace xg {

// The size estimator of geometry type `type` (2-6): scans the text after its opening
// parentheses, counting a point for every "," and ")" and parts and polygons by the writer's
// separators, and returns the blob size of what it counted.  Returns a negative value when it
// gives up: at the first blank after the opening parentheses (so every readable text, whose
// pairs hold a blank, gives up), at a separator out of place, at a text that does not end right
// after the closing parentheses, or at a size beyond the i32 range.
int64_t estimate_wkt_blob_size(const char* text, uint32_t type);

}  // namespace xg

#endif  // XGGEO_WKT_WKT_ESTIMATE_H
