// edit_result.h - owning results and table rows for operations that hand a new blob back through
// an out-pointer.
#ifndef XGGEO_TESTS_EDIT_RESULT_H
#define XGGEO_TESTS_EDIT_RESULT_H

#include <gtest/gtest.h>

#include <functional>
#include <initializer_list>
#include <string>
#include <vector>

#include "support/blob_builder.h"

namespace xgtest {

// The blob's bytes, sized by xgWKB_shape_get_WKB_size (which must accept it); nil: 5 bytes.
inline Bytes bytes_of(const unsigned char* p) {
  uint32_t size = 5;
  EXPECT_TRUE(xgWKB_shape_is_nil(p) || xgWKB_shape_get_WKB_size(p, &size) == 0);
  return Bytes(p, p + size);
}

// The blob with byte-order byte 1 at the given header offsets: a copied header keeps it, a fresh
// one writes 0.
inline Bytes marked(Bytes b, std::initializer_list<std::size_t> headers = {0}) {
  for (std::size_t at : headers) b[at] = 1;
  return b;
}

inline Bytes mp(const std::vector<Bytes>& members) { return multi(XGWKB_TYPE_MULTIPOLYGON, members); }

// Owns whatever an operation stored in its out-pointer; frees it like a caller must.
struct Out {
  unsigned char* p = nullptr;
  Out() = default;
  Out(const Out&) = delete;
  ~Out() { xgWKB_shape_free(p); }
  Bytes bytes() const { return bytes_of(p); }
};

// A call of an operation, given the out-pointer to fill.
using Call = std::function<int32_t(unsigned char**)>;

// A call of f with the given leading arguments, then the out-pointer; blobs are held by the call
// and passed as pointers to their bytes.
inline const unsigned char* raw(const Bytes& b) { return b.data(); }
inline const unsigned char* raw(const Misaligned& m) { return m.data(); }
template <class T>
T raw(T v) { return v; }
template <class F, class... A>
Call on(F f, A... a) {
  return [=](unsigned char** out) { return f(raw(a)..., out); };
}

// One call of an operation with the status and the blob it must give.
struct EditCase {
  std::string name;
  Call call;
  int32_t status;
  Bytes expected = {};           // empty: no blob handed out
  bool hands_out_block = false;  // on failure the out-pointer holds a block for the caller
};

// Runs the case: status, then the result's bytes and size, or nothing handed out, or (on a
// failure) a block that the caller frees (leaks and double frees show under the sanitizers).
inline void check_edit(const EditCase& c) {
  SCOPED_TRACE(c.name);
  Out out;
  ASSERT_EQ(c.call(&out.p), c.status);
  if (!c.expected.empty()) {
    EXPECT_EQ(out.bytes(), c.expected);
  } else if (c.hands_out_block) {
    EXPECT_NE(out.p, nullptr);
  } else {
    EXPECT_EQ(out.p, nullptr);
  }
}

}  // namespace xgtest

#endif  // XGGEO_TESTS_EDIT_RESULT_H
