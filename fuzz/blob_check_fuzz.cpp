// libFuzzer target: the structural blob check on arbitrary bytes; a blob it passes must be
// walkable by the unbounded functions (size, WKB and OGC WKT writers) without reading past it.
#include <cstdlib>

#include "xggeokit.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (xgWKB_shape_check_blob(data, size) != XGWKB_OK) return 0;
  uint32_t type = 0;
  xgWKB_shape_get_type(data, &type);
  if (type < XGWKB_TYPE_POINT || type > XGWKB_TYPE_MULTIPOLYGON) return 0;
  uint32_t blob_size = 0;
  if (xgWKB_shape_get_WKB_size(data, &blob_size) != XGWKB_OK || blob_size != size) std::abort();
  unsigned char* wkb = nullptr;
  uint32_t wkb_size = 0;
  if (xgWKB_shape_to_wkb(data, 1, &wkb, &wkb_size) != XGWKB_OK) std::abort();
  xgWKB_shape_free(wkb);
  char* text = nullptr;
  if (xgWKB_shape_to_ogc_wkt(data, -1, &text) != XGWKB_OK) std::abort();
  xgWKB_shape_free_WKT(text);
  return 0;
}
