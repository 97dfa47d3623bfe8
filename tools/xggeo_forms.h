// xggeo_forms.h - the four text forms a geometry line may take, recognised per line.
#ifndef XGGEO_TOOLS_XGGEO_FORMS_H
#define XGGEO_TOOLS_XGGEO_FORMS_H

#include <cstddef>
#include <cstdint>
#include <string>

namespace xggeo {

enum class Form { kDialect, kWkt, kWkb, kGeoJson };

// The rule, as --help states it.
extern const char* const kFormRule;

// The form named by --of (dialect, wkt, wkb, geojson); false for any other name.
bool parse_form(const std::string& name, Form* form);

// The form of a line by its first characters: "{" GeoJSON; hex digits only (even count, at least
// ten) WKB; an OGC keyword in any case but the dialect's lower case, or SRID=, OGC WKT; anything
// else the library's dialect.
Form detect_form(const std::string& line);

// Reads a line in the given form into a new shape.  Returns the library's status; for the
// dialect a text the reader turns down (-204 from xgWKB_shape_from_WKT_ex) gives kUnreadableText.  *offset is set, and *has_offset
// true, when the reader names where the text went wrong.
int32_t read_shape(const std::string& text, Form form, unsigned char** shape, std::size_t* offset, bool* has_offset);

// Appends a shape (not null) in the given form; returns the writer's status.
int32_t write_shape(const unsigned char* shape, Form form, std::string& out);

}  // namespace xggeo

#endif  // XGGEO_TOOLS_XGGEO_FORMS_H
