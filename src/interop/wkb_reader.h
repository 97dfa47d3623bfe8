// wkb_reader.h - shapes from standard WKB received from outside.
//
// Reads either byte order, the six simple types, ISO (1000/2000/3000) and extended (high-bit Z,
// M and SRID flags) variants; extra ordinates are dropped, or refused when the flags ask.
// Geometry collections are refused with their own status.  Every read is bounded by the length
// given, and every count is checked against the bytes left before anything is sized from it.
#ifndef XGGEO_INTEROP_WKB_READER_H
#define XGGEO_INTEROP_WKB_READER_H

#include <cstddef>
#include <cstdint>

#include "core/blob.h"

namespace xg {

// Reads one geometry from data[0, len) into a fresh malloc'd little-endian blob.  On failure
// returns the status, sets *fault_offset to the byte offset where the fault was found and
// allocates nothing.  A top-level point whose coordinates are both NaN (the usual encoding of
// POINT EMPTY) becomes the nil shape.
int32_t read_wkb(const byte* data, std::size_t len, uint32_t flags, byte** out,
                 std::size_t* fault_offset);

}  // namespace xg

#endif  // XGGEO_INTEROP_WKB_READER_H
