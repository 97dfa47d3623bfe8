// xggeo_forms.cpp - recognising, reading and writing the four forms (see xggeo_forms.h).
#include "xggeo_forms.h"

#include <cctype>
#include <vector>

#include "xggeo_geojson.h"
#include "xggeo_ops.h"
#include "xggeokit.h"

namespace xggeo {

const char* const kFormRule =
    "Each geometry line is recognised by its first characters: \"{\" starts GeoJSON (a geometry,\n"
    "a Feature, or a FeatureCollection standing for its features' geometries); a line of hex\n"
    "digits only is WKB; an OGC keyword in upper or mixed case (POINT, LineString, ...) or SRID=\n"
    "starts OGC WKT; anything else is the library's own dialect (lower-case keywords, no blank\n"
    "after a comma).  Results are written in the form of the -a geometry unless --of says\n"
    "otherwise.\n";

namespace {

bool ogc_keyword(const std::string& word) {
  static const char* const kWords[] = {"POINT", "LINESTRING", "POLYGON", "MULTIPOINT", "MULTILINESTRING",
                                       "MULTIPOLYGON", "GEOMETRYCOLLECTION"};
  std::string upper;
  for (char c : word) upper += static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  for (const char* w : kWords) {
    const std::string k = w;
    // POINTZ, POINTM and POINTZM are OGC spellings as well.
    if (upper == k || upper == k + "Z" || upper == k + "M" || upper == k + "ZM") return true;
  }
  return false;
}

int hex_digit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

}  // namespace

bool parse_form(const std::string& name, Form* form) {
  if (name == "dialect") *form = Form::kDialect;
  else if (name == "wkt") *form = Form::kWkt;
  else if (name == "wkb") *form = Form::kWkb;
  else if (name == "geojson") *form = Form::kGeoJson;
  else return false;
  return true;
}

Form detect_form(const std::string& line) {
  std::size_t at = 0;
  while (at < line.size() && std::isspace(static_cast<unsigned char>(line[at]))) ++at;
  if (at < line.size() && line[at] == '{') return Form::kGeoJson;
  std::size_t end = line.size();
  while (end > at && std::isspace(static_cast<unsigned char>(line[end - 1]))) --end;
  bool hex = end - at >= 10 && (end - at) % 2 == 0;
  for (std::size_t i = at; hex && i < end; ++i) hex = hex_digit(line[i]) >= 0;
  if (hex) return Form::kWkb;
  if (line.compare(at, 5, "SRID=") == 0 || line.compare(at, 5, "srid=") == 0) return Form::kWkt;
  std::size_t w = at;
  while (w < line.size() && std::isalpha(static_cast<unsigned char>(line[w]))) ++w;
  const std::string word = line.substr(at, w - at);
  bool lower = true;
  for (char c : word) lower = lower && std::islower(static_cast<unsigned char>(c));
  return !lower && ogc_keyword(word) ? Form::kWkt : Form::kDialect;
}

int32_t read_shape(const std::string& text, Form form, unsigned char** shape, std::size_t* offset, bool* has_offset) {
  *has_offset = false;
  switch (form) {
    case Form::kDialect: {
      const int32_t status = xgWKB_shape_from_WKT_ex(text.c_str(), shape, offset);
      if (status != XGWKB_E_TEXT_SYNTAX) return status;
      *has_offset = true;
      return kUnreadableText;
    }
    case Form::kWkt: {
      const int32_t status = xgWKB_shape_from_ogc_wkt_ex(text.c_str(), 0, shape, offset);
      *has_offset = status != XGWKB_OK;
      return status;
    }
    case Form::kWkb: {
      std::size_t at = 0;
      while (at < text.size() && std::isspace(static_cast<unsigned char>(text[at]))) ++at;
      std::vector<unsigned char> bytes;
      for (std::size_t i = at; i + 1 < text.size() && hex_digit(text[i]) >= 0; i += 2)
        bytes.push_back(static_cast<unsigned char>(hex_digit(text[i]) * 16 + hex_digit(text[i + 1])));
      const int32_t status = xgWKB_shape_from_wkb_ex(bytes.data(), bytes.size(), 0, shape, offset);
      if (status != XGWKB_OK) {
        *offset = at + 2 * *offset;  // the byte offset as a place in the hex text
        *has_offset = true;
      }
      return status;
    }
    case Form::kGeoJson: {
      const int32_t status = geojson_to_shape(text, shape, offset);
      *has_offset = status != XGWKB_OK;
      return status;
    }
  }
  return XGWKB_E_FAILED;
}

int32_t write_shape(const unsigned char* shape, Form form, std::string& out) {
  switch (form) {
    case Form::kDialect: {
      if (xgWKB_shape_is_nil(shape)) {
        out += "nil";
        return XGWKB_OK;
      }
      char* wkt = nullptr;
      const int32_t status = xgWKB_shape_generate_to_WKT(shape, &wkt);
      if (status == XGWKB_OK) out += wkt;
      xgWKB_shape_free_WKT(wkt);
      return status;
    }
    case Form::kWkt: {
      char* wkt = nullptr;
      const int32_t status = xgWKB_shape_to_ogc_wkt(shape, -1, &wkt);
      if (status == XGWKB_OK) out += wkt;
      xgWKB_shape_free_WKT(wkt);
      return status;
    }
    case Form::kWkb: {
      unsigned char* wkb = nullptr;
      uint32_t size = 0;
      const int32_t status = xgWKB_shape_to_wkb(shape, 0, &wkb, &size);
      static const char kHex[] = "0123456789ABCDEF";
      for (uint32_t i = 0; status == XGWKB_OK && i < size; ++i) {
        out += kHex[wkb[i] >> 4];
        out += kHex[wkb[i] & 15];
      }
      xgWKB_shape_free(wkb);
      return status;
    }
    case Form::kGeoJson:
      return shape_to_geojson(shape, out);
  }
  return XGWKB_E_FAILED;
}

}  // namespace xggeo
