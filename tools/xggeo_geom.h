// xggeo_geom.h - a shape's coordinates as plain vectors, for the tool's GeoJSON and SVG forms.
//
// The tool sees shapes only through the public interface; the blob layout is part of it (see
// xggeokit.h), so the tool decodes blobs of types 1-6 here and builds shapes from standard WKB.
#ifndef XGGEO_TOOLS_XGGEO_GEOM_H
#define XGGEO_TOOLS_XGGEO_GEOM_H

#include <cstdint>
#include <string>
#include <vector>

namespace xggeo {

struct Pt {
  double x, y;
};
using Path = std::vector<Pt>;          // a linestring or a ring
using Part = std::vector<Path>;        // a point (one path of one point), a line, or a polygon's rings
struct Geom {
  uint32_t type = 0;                   // 0 nil, 1-6
  std::vector<Part> parts;             // one for the single types, one per member for the multi-types
};

// The geometry of a blob of type 0-6; false for any other type.
bool decode_shape(const unsigned char* blob, Geom* g);

// A new shape (xgWKB_shape_free) from g via the library's WKB reader; returns its status.
int32_t encode_shape(const Geom& g, unsigned char** shape);

}  // namespace xggeo

#endif  // XGGEO_TOOLS_XGGEO_GEOM_H
