// wkt_keywords.h - the words of the WKT dialect: the keyword table and the empty texts.
#ifndef XGGEO_WKT_WKT_KEYWORDS_H
#define XGGEO_WKT_WKT_KEYWORDS_H

#include <cstdint>

namespace xg {

// The type code named by the first word of a text: the characters from the start up to the
// first blank or "(" (or the end of the text), compared case-sensitively with the keyword table.
// A word of 128 characters or more, an empty word (leading blank) and any unknown word give 0.
uint32_t wkt_keyword_code(const char* text);

// True when the whole text is one of "point empty", "linestring empty", "polygon empty",
// "multipoint empty", "multilinestring empty", "multipolygon empty".
bool is_wkt_empty_text(const char* text);

// The character after the first "(" of the text followed by `more` further "(" in a row, or
// nullptr when the text has no such run of parentheses (everything before the first "(" is
// ignored).  Never reads past the terminating zero.
const char* skip_opening_parens(const char* text, int more);

}  // namespace xg

#endif  // XGGEO_WKT_WKT_KEYWORDS_H
