// ogc_wkt_reader.h - shapes from OGC simple-features WKT.
//
// Accepts keywords in any case, any blanks (space, tab, CR, LF) between tokens, an optional
// "SRID=n;" prefix, Z/M/ZM tags written apart or joined to the keyword, 3 or 4 ordinates without
// a tag (taken as Z and ZM; every point of a text has as many), EMPTY, both multipoint spellings, signs and exponents.  Extra
// ordinates are dropped, or refused when the flags ask.  The text is read up to its terminating
// zero and no further.
#ifndef XGGEO_INTEROP_OGC_WKT_READER_H
#define XGGEO_INTEROP_OGC_WKT_READER_H

#include <cstddef>
#include <cstdint>

#include "core/blob.h"

namespace xg {

// Reads text into a fresh malloc'd blob.  POINT EMPTY gives the nil shape; other EMPTY texts
// give a shape with no points.  On failure returns the status (-204 syntax, -199 a type the
// library has no shape for, -207 a geometry collection, -209 refused ordinates, -57 too large),
// sets *fault_offset to the byte offset in the text where reading stopped and allocates nothing.
int32_t read_ogc_wkt(const char* text, uint32_t flags, byte** out, std::size_t* fault_offset);

}  // namespace xg

#endif  // XGGEO_INTEROP_OGC_WKT_READER_H
