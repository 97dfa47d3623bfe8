// wkt_estimate.cpp - the size estimators and the two exports that inspect a text.
#include "wkt/wkt_estimate.h"

#include "core/blob.h"
#include "wkt/wkt_keywords.h"

namespace xg {
namespace {

constexpr int64_t kGiveUp = -1;

// Counts of a scanned text.
struct Counts {
  int64_t points = 0;
  int64_t runs = 1;
  int64_t polygons = 1;
};

// Scans from p (after the opening parentheses) to the end of the text; `depth` is the number of
// opening parentheses of the type (1 flat, 2 lines or rings, 3 polygons).
bool scan(const char* p, int depth, Counts& c) {
  for (;;) {
    const char ch = *p++;
    if (ch == '\0' || ch == ' ') return false;
    if (ch == ',') {
      ++c.points;
      continue;
    }
    if (ch != ')') continue;
    ++c.points;
    if (depth == 1) return *p == '\0';
    if (p[0] == ',' && p[1] == '(') {
      ++c.runs;
      p += 2;
    } else if (depth == 3 && p[0] == ')' && p[1] == ',' && p[2] == '(' && p[3] == '(') {
      ++c.runs;
      ++c.polygons;
      p += 4;
    } else if (depth == 2) {
      return p[0] == ')' && p[1] == '\0';
    } else {
      return p[0] == ')' && p[1] == ')' && p[2] == '\0';
    }
  }
}

}  // namespace

int64_t estimate_wkt_blob_size(const char* text, uint32_t type) {
  int depth = 0;
  switch (type) {
    case XGWKB_TYPE_LINESTRING:
    case XGWKB_TYPE_MULTIPOINT:
      depth = 1;
      break;
    case XGWKB_TYPE_POLYGON:
    case XGWKB_TYPE_MULTILINESTRING:
      depth = 2;
      break;
    case XGWKB_TYPE_MULTIPOLYGON:
      depth = 3;
      break;
    default:
      return kGiveUp;
  }
  const char* p = skip_opening_parens(text, depth - 1);
  if (p == nullptr) return kGiveUp;
  Counts c;
  if (!scan(p, depth, c)) return kGiveUp;
  const uint64_t size = geometry_size_for(type, c.points, c.runs, c.polygons);
  return size > INT32_MAX ? kGiveUp : static_cast<int64_t>(size);
}

}  // namespace xg

using namespace xg;

extern "C" {

int32_t xgWKB_shape_get_WKT_type(const char* wkt, int32_t* type) noexcept {
  if (wkt == nullptr || type == nullptr) return XGWKB_E_NULL_POINTER;
  *type = static_cast<int32_t>(wkt_keyword_code(wkt));
  return XGWKB_OK;
}

int32_t xgWKB_shape_get_WKT_size(const char* wkt, int32_t* size) noexcept {
  if (wkt == nullptr || size == nullptr) return XGWKB_E_NULL_POINTER;
  if (is_wkt_empty_text(wkt)) {
    *size = static_cast<int32_t>(kHeaderSize);
    return XGWKB_OK;
  }
  const uint32_t type = wkt_keyword_code(wkt);
  if (type == XGWKB_TYPE_POINT) {
    *size = static_cast<int32_t>(kPointBlobSize);
    return XGWKB_OK;
  }
  if (is_geometry_type(type)) {
    // Intended: the estimators give up at the first blank, so any readable text leaves the size
    // as the caller set it; the status is 0 either way.
    const int64_t estimate = estimate_wkt_blob_size(wkt, type);
    if (estimate >= 0) *size = static_cast<int32_t>(estimate);
    return XGWKB_OK;
  }
  *size = 0;
  return XGWKB_E_INVALID_ENTITY;
}

}  // extern "C"
