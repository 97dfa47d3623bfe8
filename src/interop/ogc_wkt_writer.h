// ogc_wkt_writer.h - OGC simple-features WKT from a shape.
#ifndef XGGEO_INTEROP_OGC_WKT_WRITER_H
#define XGGEO_INTEROP_OGC_WKT_WRITER_H

#include <cstddef>
#include <cstdint>

#include "core/blob.h"

namespace xg {

// Largest number of fixed digits the writer takes.
constexpr int32_t kMaxOgcPrecision = 17;

// The OGC WKT of a geometry blob of blob_size bytes (type 1-6, or nil, written as POINT EMPTY)
// as a new zero-terminated text (malloc'ed; the caller frees it), or nullptr when memory runs
// out: upper-case keywords, ", " between points, multipoints as MULTIPOINT ((x y), ...), empty
// parts as EMPTY.  precision -1 writes each coordinate with the shortest digits that read back
// to the same double (as std::to_chars does); 0..kMaxOgcPrecision writes that many fixed
// decimals.  blob_size only sizes the first allocation.
char* write_ogc_wkt(const byte* shape, std::size_t blob_size, int32_t precision);

}  // namespace xg

#endif  // XGGEO_INTEROP_OGC_WKT_WRITER_H
