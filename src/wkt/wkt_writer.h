// wkt_writer.h - shapes as text in the library's WKT dialect.
//
// The dialect: lower-case keywords, one blank between the keyword and the first parenthesis,
// coordinates as printf("%lf") prints them, one blank between x and y, no blank after a comma.
// The text is built one point at a time, and the piece each point contributes depends only on
// its place (first point of a part, last point of a ring, ...).  Parts without points contribute
// nothing, and a part with a single point opens its parentheses without closing them.
#ifndef XGGEO_WKT_WKT_WRITER_H
#define XGGEO_WKT_WKT_WRITER_H

#include <string>

#include "core/blob.h"

namespace xg {

// Per-type writers: each appends the text of a blob of its type.  Handed no shape, each appends
// its type's empty text ("point empty", ...).  The multi-type writers return false when they
// meet a member of a foreign type (the text is then incomplete), else true.
void append_point_wkt(const byte* shape, std::string& out);
void append_linestring_wkt(const byte* shape, std::string& out);
void append_polygon_wkt(const byte* shape, std::string& out);
bool append_multipoint_wkt(const byte* shape, std::string& out);
bool append_multilinestring_wkt(const byte* shape, std::string& out);
bool append_multipolygon_wkt(const byte* shape, std::string& out);

// Appends the text of a shape of type 1-6 and returns true; any other type, or a multi-type with
// a member of a foreign type, returns false.
bool append_wkt(const byte* shape, std::string& out);

}  // namespace xg

#endif  // XGGEO_WKT_WKT_WRITER_H
