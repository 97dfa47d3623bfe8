// ogc_wkt_writer.h - OGC simple-features WKT from a shape.
#ifndef XGGEO_INTEROP_OGC_WKT_WRITER_H
#define XGGEO_INTEROP_OGC_WKT_WRITER_H

#include <cstdint>
#include <string>

#include "core/blob.h"

namespace xg {

// Largest number of fixed digits the writer takes.
constexpr int32_t kMaxOgcPrecision = 17;

// Appends the OGC WKT of a geometry blob (type 1-6, or nil, written as POINT EMPTY) to text:
// upper-case keywords, ", " between points, multipoints as MULTIPOINT ((x y), ...), empty
// parts as EMPTY.  precision -1 writes each coordinate with the shortest digits that read back
// to the same double; 0..kMaxOgcPrecision writes that many fixed decimals.
void append_ogc_wkt(const byte* shape, int32_t precision, std::string& text);

}  // namespace xg

#endif  // XGGEO_INTEROP_OGC_WKT_WRITER_H
