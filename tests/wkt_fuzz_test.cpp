// Seeded random mutations of valid texts through the reader and the text inspections.  Every
// input sits in its own exactly sized heap buffer, so the sanitizer build catches any read past
// the terminating zero.
#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "xggeokit.h"

namespace {

const char* const kSeeds[] = {
    "point (1.5 -2)", "linestring (1 2,3 4,5 6)", "polygon ((0 0,10 0,10 10,0 0),(1 1,2 1,1 1))",
    "multipoint (1 2,3 4)", "multilinestring ((0 0,1 1),(2 2,3 3,4 4))",
    "multipolygon (((0 0,1 0,0 0),(2 2,3 3)),((9 9,8 8,7 7)),((1e3 -2.5e-3,4 4)))",
    "multipolygon (((1,2)),((3,4),(5,6)))", "polygon ((1,2),(3,4))", "multipoint (1,2)", "polygon empty",
    "HoriDim (1 2)"};

// Characters that matter to the reader, and a few that do not.
const char kAlphabet[] = "(),. -+0123456789eEinfaxp\t";

std::string mutate(std::string s, std::mt19937& rng) {
  auto pick = [&](std::size_t n) { return std::uniform_int_distribution<std::size_t>(0, n)(rng); };
  for (std::size_t edits = 1 + pick(2); edits > 0; --edits) {
    const std::size_t at = pick(s.size());
    const char meaningful = kAlphabet[pick(sizeof kAlphabet - 2)];
    const int kind = static_cast<int>(pick(4));
    if (kind == 0) {
      s.resize(at);  // truncate
    } else if (kind == 1 && at < s.size()) {  // replace a byte with any non-zero byte or a meaningful one
      s[at] = pick(1) ? static_cast<char>(1 + pick(254)) : meaningful;
    } else if (kind == 2) {
      s.insert(at, 1, meaningful);
    } else if (kind == 3 && at < s.size()) {
      s.erase(at, 1);
    } else if (kind == 4) {  // duplicate a stretch
      s.insert(at, s.substr(pick(s.size()), pick(12)));
    }
  }
  return s;
}

}  // namespace

TEST(WktFuzz, MutatedTextsNeitherCrashNorOverreadNorMakeBrokenShapes) {
  std::mt19937 rng(4242);
  int made = 0;
  for (int i = 0; i < 40000; ++i) {
    const std::string text = mutate(kSeeds[i % (sizeof kSeeds / sizeof *kSeeds)], rng);
    std::unique_ptr<char[]> buffer(new char[text.size() + 1]);
    std::memcpy(buffer.get(), text.c_str(), text.size() + 1);
    int32_t type = -1, size = -1;
    ASSERT_EQ(xgWKB_shape_get_WKT_type(buffer.get(), &type), XGWKB_OK);
    const int32_t size_status = xgWKB_shape_get_WKT_size(buffer.get(), &size);
    unsigned char* shape = nullptr;
    const int32_t status = xgWKB_shape_generate_from_WKT(buffer.get(), &shape);
    ASSERT_TRUE(status == XGWKB_OK || status == XGWKB_E_INVALID_ENTITY) << text;
    EXPECT_EQ(size_status, status) << text;
    if (shape == nullptr) continue;

    ++made;
    if (xgWKB_shape_is_nil(shape)) {
      EXPECT_EQ(size, 5) << text;
    } else {
      uint32_t blob_size = 0, blob_type = 0;
      EXPECT_EQ(xgWKB_shape_get_WKB_size(shape, &blob_size), XGWKB_OK) << text;
      xgWKB_shape_get_type(shape, &blob_type);
      EXPECT_EQ(static_cast<int32_t>(blob_type), type) << text;
      // Whatever the reader accepts, the estimators of types 2-6 never size; a point is 21 bytes.
      EXPECT_EQ(size, type >= 2 ? -1 : 21) << text;
      char* back = nullptr;
      EXPECT_EQ(xgWKB_shape_generate_to_WKT(shape, &back), XGWKB_OK) << text;
      xgWKB_shape_free_WKT(back);
    }
    xgWKB_shape_free(shape);
  }
  EXPECT_GT(made, 1000);  // the mutations leave plenty of readable texts
}
