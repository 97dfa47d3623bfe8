// xggeo_geojson.h - GeoJSON geometries, Features and FeatureCollections in and out of the tool.
#ifndef XGGEO_TOOLS_XGGEO_GEOJSON_H
#define XGGEO_TOOLS_XGGEO_GEOJSON_H

#include <cstdint>
#include <string>
#include <vector>

namespace xggeo {

// The geometries of a GeoJSON text, each as its own minified JSON text: the text itself for a
// geometry or a Feature, one per feature for a FeatureCollection.  Returns 0, or -204 when the
// text is not JSON or holds no object with a "type".
int32_t geojson_split(const std::string& text, std::vector<std::string>* geometries);

// A new shape from a GeoJSON Point ... MultiPolygon, or a Feature holding one.  Returns 0,
// -204 malformed (no coordinates, a position of fewer than two numbers), -207 a
// GeometryCollection, -199 any other type, or the library reader's status.
int32_t geojson_to_shape(const std::string& text, unsigned char** shape);

// The GeoJSON geometry of a shape (the nil shape: null); returns 0 or -134 for other types.
int32_t shape_to_geojson(const unsigned char* shape, std::string& out);

}  // namespace xggeo

#endif  // XGGEO_TOOLS_XGGEO_GEOJSON_H
