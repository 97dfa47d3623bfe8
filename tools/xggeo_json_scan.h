// xggeo_json_scan.h - a validating pass over a JSON text that knows where things are.
//
// The DOM parser says whether a text is JSON but not where it went wrong, and its elements carry
// no place in the text.  This scanner checks the JSON grammar (RFC 8259, without checking UTF-8)
// in one bounded pass and records the offset of the first fault, and, for the GeoJSON reader,
// where the members it looks at begin: the values of "type", "coordinates", "geometry" and
// "features" of the top-level object and of the object under its "geometry", and the elements
// of its "features" array.  Keys are compared as written (escapes are not decoded); the first of
// repeated keys counts.
// It allocates nothing beyond the list of feature spans.
#ifndef XGGEO_TOOLS_XGGEO_JSON_SCAN_H
#define XGGEO_TOOLS_XGGEO_JSON_SCAN_H

#include <cstddef>
#include <string_view>
#include <utility>
#include <vector>

namespace xggeo {

constexpr std::size_t kNoOffset = static_cast<std::size_t>(-1);

// Where the members of one object begin (kNoOffset when absent), and its closing brace.
struct JsonObjectPlaces {
  std::size_t type = kNoOffset;
  std::size_t coordinates = kNoOffset;
  std::size_t geometry = kNoOffset;
  std::size_t features = kNoOffset;
  std::size_t end = kNoOffset;
};

struct JsonScan {
  std::size_t error = kNoOffset;  // offset of the first syntax fault; kNoOffset when the text is JSON
  JsonObjectPlaces top;           // the top-level value, when it is an object
  JsonObjectPlaces geometry;      // the object under the top-level "geometry"
  std::vector<std::pair<std::size_t, std::size_t>> feature_spans;  // [begin, end) of each element of "features"
};

// Scans text.  Nesting deeper than 512 arrays and objects counts as a fault at the 513th.
JsonScan scan_json(std::string_view text);

}  // namespace xggeo

#endif  // XGGEO_TOOLS_XGGEO_JSON_SCAN_H
