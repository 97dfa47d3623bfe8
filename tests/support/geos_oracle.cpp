#include "support/geos_oracle.h"

#include <cmath>
#include <cstdint>
#include <stdexcept>

#include "core/blob.h"

namespace xgtest {
namespace {

// Sets the byte-order byte of the blob and of every member blob to value.
void set_byte_order(unsigned char* blob, unsigned char value) {
  blob[0] = value;
  if (!xg::is_multi_type(xg::shape_type(blob))) return;
  const uint32_t members = xg::shape_count(blob);
  unsigned char* at = blob + xg::kCountedHeaderSize;
  for (uint32_t i = 0; i < members; ++i) {
    at[0] = value;
    at += xg::member_size(at);
  }
}

}  // namespace

GeosOracle::GeosOracle() {
  ctx_ = GEOS_init_r();
  reader_ = GEOSWKBReader_create_r(ctx_);
  writer_ = GEOSWKBWriter_create_r(ctx_);
  GEOSWKBWriter_setByteOrder_r(ctx_, writer_, GEOS_WKB_NDR);
  wkt_reader_ = GEOSWKTReader_create_r(ctx_);
  wkt_writer_ = GEOSWKTWriter_create_r(ctx_);
  GEOSWKTWriter_setTrim_r(ctx_, wkt_writer_, 1);
}

GeosOracle::~GeosOracle() {
  GEOSWKTWriter_destroy_r(ctx_, wkt_writer_);
  GEOSWKTReader_destroy_r(ctx_, wkt_reader_);
  GEOSWKBWriter_destroy_r(ctx_, writer_);
  GEOSWKBReader_destroy_r(ctx_, reader_);
  GEOS_finish_r(ctx_);
}

GEOSGeometry* GeosOracle::to_geos(const unsigned char* blob) const {
  uint32_t size = 0;
  if (xg::geometry_size(blob, &size) != XGWKB_OK) throw std::invalid_argument("not a geometry blob");
  std::vector<unsigned char> copy(blob, blob + size);
  set_byte_order(copy.data(), 1);
  GEOSGeometry* g = GEOSWKBReader_read_r(ctx_, reader_, copy.data(), copy.size());
  if (g == nullptr) throw std::runtime_error("GEOS could not read the blob");
  return g;
}

GEOSGeometry* GeosOracle::to_geos_or_empty(const unsigned char* blob) const {
  if (blob[1] == XGWKB_TYPE_NIL) return GEOSGeom_createEmptyPolygon_r(ctx_);
  return to_geos(blob);
}

double GeosOracle::area(const GEOSGeometry* g) const {
  double a = 0;
  return GEOSArea_r(ctx_, g, &a) == 1 ? a : std::nan("");
}

double GeosOracle::length(const GEOSGeometry* g) const {
  double l = 0;
  return GEOSLength_r(ctx_, g, &l) == 1 ? l : std::nan("");
}

std::vector<unsigned char> GeosOracle::from_geos(const GEOSGeometry* g) const {
  size_t size = 0;
  unsigned char* wkb = GEOSWKBWriter_write_r(ctx_, writer_, g, &size);
  if (wkb == nullptr) throw std::runtime_error("GEOS could not write the geometry");
  std::vector<unsigned char> blob(wkb, wkb + size);
  GEOSFree_r(ctx_, wkb);
  set_byte_order(blob.data(), 0);
  return blob;
}

GEOSGeometry* GeosOracle::from_wkt(const std::string& wkt) const {
  GEOSGeometry* g = GEOSWKTReader_read_r(ctx_, wkt_reader_, wkt.c_str());
  if (g == nullptr) throw std::runtime_error("GEOS could not read " + wkt);
  return g;
}

std::string GeosOracle::to_wkt(const GEOSGeometry* g) const {
  char* text = GEOSWKTWriter_write_r(ctx_, wkt_writer_, g);
  std::string s(text);
  GEOSFree_r(ctx_, text);
  return s;
}

void GeosOracle::destroy(GEOSGeometry* g) const {
  if (g != nullptr) GEOSGeom_destroy_r(ctx_, g);
}

}  // namespace xgtest
