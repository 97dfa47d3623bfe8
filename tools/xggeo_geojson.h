// xggeo_geojson.h - GeoJSON geometries, Features and FeatureCollections in and out of the tool.
#ifndef XGGEO_TOOLS_XGGEO_GEOJSON_H
#define XGGEO_TOOLS_XGGEO_GEOJSON_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace xggeo {

// One geometry of a GeoJSON text and the offset in that text where it begins.
struct GeoJsonPiece {
  std::string text;
  std::size_t begin;
};

// The geometries of a GeoJSON text: the text itself for a geometry or a Feature, one per feature
// (its text as written) for a FeatureCollection.  Returns 0, or -204 when the text is not JSON or
// holds no object with a "type".
int32_t geojson_split(const std::string& text, std::vector<GeoJsonPiece>* geometries);

// A new shape from a GeoJSON Point ... MultiPolygon, or a Feature holding one.  Returns 0,
// -204 malformed (not JSON, no coordinates, a position of fewer than two numbers), -207 a
// GeometryCollection, -199 any other type, or the library reader's status.  On failure *offset
// is where the fault lies: the first character that breaks the JSON grammar, else the value of
// the member that is wrong (the "type" or the "coordinates"), else the closing brace of the
// object that lacks one.
int32_t geojson_to_shape(const std::string& text, unsigned char** shape, std::size_t* offset);

// The GeoJSON geometry of a shape (the nil shape: null); returns 0 or -134 for other types.
int32_t shape_to_geojson(const unsigned char* shape, std::string& out);

}  // namespace xggeo

#endif  // XGGEO_TOOLS_XGGEO_GEOJSON_H
