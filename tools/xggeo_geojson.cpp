// xggeo_geojson.cpp - GeoJSON through simdjson (see xggeo_geojson.h).
#include "xggeo_geojson.h"

#include <simdjson.h>

#include <charconv>
#include <string_view>

#include "xggeo_geom.h"
#include "xggeo_json_scan.h"
#include "xggeokit.h"

namespace xggeo {
namespace {

using simdjson::dom::array;
using simdjson::dom::element;

constexpr int32_t kMalformed = XGWKB_E_TEXT_SYNTAX;

const char* const kTypeNames[] = {"", "Point", "LineString", "Polygon", "MultiPoint", "MultiLineString", "MultiPolygon"};

bool position(element e, Pt* p) {
  array a;
  if (e.get_array().get(a) || a.size() < 2) return false;
  return !a.at(0).get_double().get(p->x) && !a.at(1).get_double().get(p->y);
}

bool path(element e, Path* out) {
  array a;
  if (e.get_array().get(a)) return false;
  for (element pos : a) {
    Pt p;
    if (!position(pos, &p)) return false;
    out->push_back(p);
  }
  return true;
}

// Coordinates of a single type (1 point, 2 line, 3 polygon) into part.
bool single(uint32_t type, element e, Part* part) {
  if (type == XGWKB_TYPE_POINT) {
    Pt p;
    if (!position(e, &p)) return false;
    part->push_back({p});
    return true;
  }
  if (type == XGWKB_TYPE_LINESTRING) {
    part->emplace_back();
    return path(e, &part->back());
  }
  array rings;
  if (e.get_array().get(rings)) return false;
  for (element ring : rings) {
    part->emplace_back();
    if (!path(ring, &part->back())) return false;
  }
  return true;
}

void number(std::string& out, double v) {
  char buf[64];
  const auto r = std::to_chars(buf, buf + sizeof buf, v);
  out.append(buf, r.ptr);
}

void write_path(std::string& out, const Path& p) {
  out += '[';
  for (std::size_t i = 0; i < p.size(); ++i) {
    if (i != 0) out += ',';
    out += '[';
    number(out, p[i].x);
    out += ',';
    number(out, p[i].y);
    out += ']';
  }
  out += ']';
}

void write_single(std::string& out, uint32_t type, const Part& part) {
  if (type == XGWKB_TYPE_POINT) {
    out += '[';
    number(out, part[0][0].x);
    out += ',';
    number(out, part[0][0].y);
    out += ']';
  } else if (type == XGWKB_TYPE_LINESTRING) {
    write_path(out, part[0]);
  } else {
    out += '[';
    for (std::size_t i = 0; i < part.size(); ++i) {
      if (i != 0) out += ',';
      write_path(out, part[i]);
    }
    out += ']';
  }
}

}  // namespace

int32_t geojson_split(const std::string& text, std::vector<GeoJsonPiece>* geometries) {
  const JsonScan scan = scan_json(text);
  simdjson::dom::parser parser;
  element doc;
  std::string_view type;
  if (scan.error != kNoOffset || parser.parse(text).get(doc) || doc["type"].get_string().get(type)) return kMalformed;
  if (type != "FeatureCollection") {
    geometries->push_back({text, 0});
    return XGWKB_OK;
  }
  array features;
  if (doc["features"].get_array().get(features)) return kMalformed;
  // Each feature keeps its own text and its place in the line, so that its faults are told by
  // their offset in the line.
  for (const auto& [begin, end] : scan.feature_spans) geometries->push_back({text.substr(begin, end - begin), begin});
  return XGWKB_OK;
}

int32_t geojson_to_shape(const std::string& text, unsigned char** shape, std::size_t* offset) {
  const JsonScan scan = scan_json(text);
  // The offset of a fault: the member's value when it is there, else the closing brace of the
  // object that lacks it, else the start.
  auto fail = [&](int32_t status, std::size_t member, std::size_t end) {
    *offset = member != kNoOffset ? member : end != kNoOffset ? end : 0;
    return status;
  };
  if (scan.error != kNoOffset) return fail(kMalformed, scan.error, 0);
  simdjson::dom::parser parser;
  element doc;
  std::string_view type;
  // The scan does not check UTF-8; text the parser still refuses is reported at its start.
  if (parser.parse(text).get(doc)) return fail(kMalformed, 0, 0);
  const JsonObjectPlaces* places = &scan.top;
  if (doc["type"].get_string().get(type)) return fail(kMalformed, places->type, places->end);
  if (type == "Feature") {
    if (doc["geometry"].get(doc)) return fail(kMalformed, kNoOffset, places->end);
    const std::size_t geometry_at = places->geometry;
    places = &scan.geometry;
    if (doc["type"].get_string().get(type)) return fail(kMalformed, places->type, places->end == kNoOffset ? geometry_at : places->end);
  }
  if (type == "GeometryCollection") return fail(XGWKB_E_WKB_COLLECTION, places->type, 0);
  Geom g;
  for (uint32_t t = XGWKB_TYPE_POINT; t <= XGWKB_TYPE_MULTIPOLYGON; ++t)
    if (type == kTypeNames[t]) g.type = t;
  if (g.type == 0) return fail(XGWKB_E_INVALID_GEOMETRY_TYPE, places->type, 0);
  element coords;
  if (doc["coordinates"].get(coords)) return fail(kMalformed, kNoOffset, places->end);
  if (g.type <= XGWKB_TYPE_POLYGON) {
    g.parts.emplace_back();
    if (!single(g.type, coords, &g.parts.back())) return fail(kMalformed, places->coordinates, 0);
  } else {
    array members;
    if (coords.get_array().get(members)) return fail(kMalformed, places->coordinates, 0);
    for (element m : members) {
      g.parts.emplace_back();
      if (!single(g.type - 3, m, &g.parts.back())) return fail(kMalformed, places->coordinates, 0);
    }
  }
  const int32_t status = encode_shape(g, shape);
  return status == XGWKB_OK ? status : fail(status, places->coordinates, 0);
}

int32_t shape_to_geojson(const unsigned char* shape, std::string& out) {
  Geom g;
  if (!decode_shape(shape, &g)) return XGWKB_E_INVALID_SHAPE;
  if (g.type == XGWKB_TYPE_NIL) {
    out += "null";
    return XGWKB_OK;
  }
  out += "{\"type\":\"";
  out += kTypeNames[g.type];
  out += "\",\"coordinates\":";
  if (g.type <= XGWKB_TYPE_POLYGON) {
    write_single(out, g.type, g.parts[0]);
  } else {
    out += '[';
    for (std::size_t i = 0; i < g.parts.size(); ++i) {
      if (i != 0) out += ',';
      write_single(out, g.type - 3, g.parts[i]);
    }
    out += ']';
  }
  out += '}';
  return XGWKB_OK;
}

}  // namespace xggeo
