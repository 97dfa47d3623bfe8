// libFuzzer target: the OGC WKT reader on arbitrary text (made zero-terminated); whatever it
// accepts must be a sound blob that writes back as text.
#include <cstdlib>
#include <cstring>
#include <string>

#include "xggeokit.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  unsigned char* out = nullptr;
  if (xgWKB_shape_from_ogc_wkt_ex(text.c_str(), 0, &out, nullptr) != XGWKB_OK) return 0;
  uint32_t blob_size = 5;
  if (out[1] != XGWKB_TYPE_NIL && xgWKB_shape_get_WKB_size(out, &blob_size) != XGWKB_OK) std::abort();
  if (xgWKB_shape_check_blob(out, blob_size) != XGWKB_OK) std::abort();
  char* back = nullptr;
  if (xgWKB_shape_to_ogc_wkt(out, -1, &back) != XGWKB_OK) std::abort();
  xgWKB_shape_free_WKT(back);
  xgWKB_shape_free(out);
  return 0;
}
