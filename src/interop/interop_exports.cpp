// interop_exports.cpp - the exports of the standard interchange: argument checks, then the
// internal readers and writers of this folder inside the common guard.
#include <cstdlib>
#include <cstring>
#include <string>

#include "core/boundary.h"
#include "interop/blob_check.h"
#include "interop/ogc_wkt_reader.h"
#include "interop/ogc_wkt_writer.h"
#include "interop/wkb_reader.h"
#include "interop/wkb_writer.h"

using namespace xg;

namespace {

int32_t from_wkb(const unsigned char* data, size_t len, uint32_t flags, unsigned char** out, size_t* error_offset) {
  if (data == nullptr || out == nullptr) return XGWKB_E_NULL_POINTER;
  return guarded([&] {
    std::size_t fault = 0;
    const int32_t s = read_wkb(data, len, flags, out, &fault);
    if (s != XGWKB_OK && error_offset != nullptr) *error_offset = fault;
    return s;
  });
}

int32_t from_ogc_wkt(const char* text, uint32_t flags, unsigned char** out, size_t* error_offset) {
  if (text == nullptr || out == nullptr) return XGWKB_E_NULL_POINTER;
  return guarded([&] {
    std::size_t fault = 0;
    const int32_t s = read_ogc_wkt(text, flags, out, &fault);
    if (s != XGWKB_OK && error_offset != nullptr) *error_offset = fault;
    return s;
  });
}

}  // namespace

extern "C" {

int32_t xgWKB_shape_from_wkb_ex(const unsigned char* data, size_t len, uint32_t flags, unsigned char** out,
                                size_t* error_offset) noexcept {
  return from_wkb(data, len, flags, out, error_offset);
}

int32_t xgWKB_shape_from_wkb(const unsigned char* data, size_t len, unsigned char** out) noexcept {
  return from_wkb(data, len, 0, out, nullptr);
}

int32_t xgWKB_shape_to_wkb(const unsigned char* shape, int32_t big_endian, unsigned char** out,
                           uint32_t* size) noexcept {
  if (shape == nullptr || out == nullptr || size == nullptr) return XGWKB_E_NULL_POINTER;
  if (shape_type(shape) == XGWKB_TYPE_NIL) return XGWKB_E_NIL_AS_WKB;
  return guarded([&] { return write_wkb(shape, big_endian != 0, out, size); });
}

int32_t xgWKB_shape_check_blob(const unsigned char* shape, size_t len) noexcept {
  if (shape == nullptr) return XGWKB_E_NULL_POINTER;
  return guarded([&] { return check_blob(shape, len); });
}

int32_t xgWKB_shape_from_ogc_wkt_ex(const char* text, uint32_t flags, unsigned char** out,
                                    size_t* error_offset) noexcept {
  return from_ogc_wkt(text, flags, out, error_offset);
}

int32_t xgWKB_shape_from_ogc_wkt(const char* text, uint32_t flags, unsigned char** out) noexcept {
  return from_ogc_wkt(text, flags, out, nullptr);
}

int32_t xgWKB_shape_to_ogc_wkt(const unsigned char* shape, int32_t precision, char** out) noexcept {
  if (shape == nullptr || out == nullptr) return XGWKB_E_NULL_POINTER;
  if (precision < -1 || precision > kMaxOgcPrecision) return XGWKB_E_INVALID_ARGUMENT;
  uint32_t size = 0;
  if (shape_type(shape) != XGWKB_TYPE_NIL && geometry_size(shape, &size) != XGWKB_OK) return XGWKB_E_INVALID_SHAPE;
  return guarded([&] {
    char* text = write_ogc_wkt(shape, shape_type(shape) == XGWKB_TYPE_NIL ? kHeaderSize : size, precision);
    if (text == nullptr) return XGWKB_E_FAILED;
    *out = text;
    return XGWKB_OK;
  });
}

}  // extern "C"
