#include "support/edit_result.h"

#include <gtest/gtest.h>

namespace xgtest {

Bytes Out::bytes() const {
  uint32_t size = 5;
  if (!xgWKB_shape_is_nil(p)) {
    EXPECT_EQ(xgWKB_shape_get_WKB_size(p, &size), 0);
  }
  return Bytes(p, p + size);
}

void check_edit(const EditCase& c) {
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
