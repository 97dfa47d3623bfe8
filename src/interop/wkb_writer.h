// wkb_writer.h - standard WKB from a shape.
#ifndef XGGEO_INTEROP_WKB_WRITER_H
#define XGGEO_INTEROP_WKB_WRITER_H

#include <cstdint>

#include "core/blob.h"

namespace xg {

// Writes a geometry blob (type 1-6) as standard 2D WKB in the byte order asked for, each member
// with its own correct byte-order byte, into a fresh malloc'd buffer of *size bytes.  Returns 0,
// -134 for a blob whose size cannot be computed, or -1 when memory runs out.
int32_t write_wkb(const byte* shape, bool big_endian, byte** out, uint32_t* size);

}  // namespace xg

#endif  // XGGEO_INTEROP_WKB_WRITER_H
