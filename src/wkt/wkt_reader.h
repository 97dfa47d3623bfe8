// wkt_reader.h - shapes from text in the library's WKT dialect.
//
// The reader is rigid on purpose: it takes the layout the writer produces and nothing looser.
// Everything before the first "(" is ignored; a pair is "x y" with exactly the one blank after x
// (no blank may start a pair) and ends at the next "," or ")"; after a part's ")" only the
// writer's separators may follow ("),(" between rings or lines, ")),((" between polygons) and the
// closing parentheses must end the text.  Numbers are converted like strtod converts the field
// alone.  No input makes the reader look past the terminating zero.
#ifndef XGGEO_WKT_WKT_READER_H
#define XGGEO_WKT_WKT_READER_H

#include <cstddef>

#include "core/blob.h"

namespace xg {

// Reads a text whose keyword names geometry type `type` (1-6) into a new blob (malloc'ed), or
// returns nullptr when the text does not follow the dialect, with *stop (when not null) set to the
// offset of the character where reading stopped.  Throws std::bad_alloc when memory runs out.
byte* read_wkt_geometry(const char* text, uint32_t type, std::size_t* stop = nullptr);

}  // namespace xg

#endif  // XGGEO_WKT_WKT_READER_H
