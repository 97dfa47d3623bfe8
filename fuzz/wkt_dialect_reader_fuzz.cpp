// libFuzzer target: the reporting reader of the library's own WKT dialect on arbitrary text (made
// zero-terminated).  It must agree with the original reader (a shape from both or neither, with
// the same bytes), stop inside the text, and make only sound blobs.
#include <cstdlib>
#include <cstring>
#include <string>

#include "xggeokit.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  unsigned char *out = nullptr, *old = nullptr;
  size_t offset = 0;
  const int32_t status = xgWKB_shape_from_WKT_ex(text.c_str(), &out, &offset);
  const int32_t old_status = xgWKB_shape_generate_from_WKT(text.c_str(), &old);
  if (status != XGWKB_OK) {
    if (out != nullptr || old != nullptr || offset > std::strlen(text.c_str())) std::abort();
    if (old_status != (status == XGWKB_E_TEXT_SYNTAX ? XGWKB_OK : status)) std::abort();
    return 0;
  }
  if (old_status != XGWKB_OK || old == nullptr) std::abort();
  uint32_t blob_size = 5;
  if (out[1] != XGWKB_TYPE_NIL && xgWKB_shape_get_WKB_size(out, &blob_size) != XGWKB_OK) std::abort();
  if (std::memcmp(out, old, blob_size) != 0) std::abort();
  if (xgWKB_shape_check_blob(out, blob_size) != XGWKB_OK) std::abort();
  xgWKB_shape_free(old);
  xgWKB_shape_free(out);
  return 0;
}
