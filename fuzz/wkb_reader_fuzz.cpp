// libFuzzer target: the bounded WKB reader on arbitrary bytes, with and without the flags that
// refuse extra ordinates.  Whatever it accepts must be a blob the structural check accepts.
#include <cstdlib>
#include <initializer_list>

#include "xggeokit.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  for (uint32_t flags : {0u, unsigned{XGWKB_REFUSE_Z | XGWKB_REFUSE_M}}) {
    unsigned char* out = nullptr;
    if (xgWKB_shape_from_wkb_ex(data, size, flags, &out, nullptr) != XGWKB_OK) continue;
    uint32_t blob_size = 5;
    if (out[1] != XGWKB_TYPE_NIL && xgWKB_shape_get_WKB_size(out, &blob_size) != XGWKB_OK) std::abort();
    if (xgWKB_shape_check_blob(out, blob_size) != XGWKB_OK) std::abort();
    xgWKB_shape_free(out);
  }
  return 0;
}
