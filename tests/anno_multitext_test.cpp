// MultiText shapes: exact layout, indexed access on misaligned copies, record add / insert /
// delete round trips, and the deliberate irregularities of the indexed operations.
#include <gtest/gtest.h>

#include <functional>

#include "support/anno_blobs.h"

using namespace xgtest;

namespace {

const std::vector<Desc> kThree = {kPlain, kLed, kLong};

// The shape a builder hands back, by its total-size field.
Bytes built(const std::function<int32_t(unsigned char**)>& f) {
  Block b;
  EXPECT_EQ(f(b.out()), 0);
  return b.p != nullptr ? b.anno() : Bytes{};
}

}  // namespace

TEST(AnnoMultiText, ThreeRecordsHaveTheExactLayout) {
  const _xgWKB_POINT at[3] = {kPlain.at, kLed.at, kLong.at};
  const _xgWKB_POINT leader[3] = {kPlain.at, *kLed.leader, *kLong.leader};
  const _xgWKB_BOX box[3] = {kPlain.box, kLed.box, kLong.box};
  const double angle[3] = {kPlain.angle, kLed.angle, kLong.angle};
  const char* text[3] = {"ab", "xyz", "label"};
  for (const Bytes& sym : {Bytes{}, symbol_bytes(10)}) {
    const Bytes got = built([&](unsigned char** o) {
      return xgWKB_anno_create_multitext(at, leader, box, angle, text, 3, sym.empty() ? nullptr : sym.data(), o);
    });
    EXPECT_EQ(got.size(), 14 + 67 + 84 + 86 + sym.size());
    EXPECT_EQ(got, multi_text_bytes(kThree, sym));
  }
  // No records: the arrays are not read.
  EXPECT_EQ(built([&](unsigned char** o) { return xgWKB_anno_create_multitext(at, at, box, angle, text, 0, nullptr, o); }),
            multi_text_bytes({}));
}

TEST(AnnoMultiText, IndexedGettersAndSettersWalkTheRecordsOfMisalignedCopies) {
  Misaligned shape(multi_text_bytes(kThree, symbol_bytes(8)));
  int32_t n = 0;
  ASSERT_EQ(xgWKB_anno_get_desc_num(shape.data(), &n), 0);
  ASSERT_EQ(n, 3);
  for (int32_t i = 1; i <= n; ++i) EXPECT_EQ(read_desc(shape.data(), i, kThree[i - 1]), kThree[i - 1]) << i;
  Block symbol;
  ASSERT_EQ(xgWKB_anno_get_multitext_symbol(shape.data(), symbol.out()), 0);
  EXPECT_EQ(symbol.bytes(8), symbol_bytes(8));
  EXPECT_EQ(xgWKB_anno_get_multitext_symbol(multi_text_bytes(kThree).data(), symbol.out()), -1);
  EXPECT_EQ(xgWKB_anno_get_desc_num(single_text_bytes(kPlain).data(), &n), -1);
  _xgWKB_POINT p{};
  double a = 0;
  for (int32_t bad : {0, 4, -1}) {
    EXPECT_EQ(xgWKB_anno_get_multitext_text_point(shape.data(), bad, &p), XGWKB_E_INVALID_INDEX);
    EXPECT_EQ(xgWKB_anno_get_multitext_angle(shape.data(), bad, &a), XGWKB_E_INVALID_INDEX);
    EXPECT_EQ(xgWKB_anno_set_multitext_angle(shape.data(), bad, 1), XGWKB_E_INVALID_INDEX);
  }
  p = {100, -100};
  const _xgWKB_BOX box{-9, -9, 9, 9};
  EXPECT_EQ(xgWKB_anno_set_multitext_text_point(shape.data(), 3, &p), 0);
  EXPECT_EQ(xgWKB_anno_set_multitext_angle(shape.data(), 2, 0.125), 0);
  EXPECT_EQ(xgWKB_anno_set_multitext_extent(shape.data(), 3, &box), 0);
  EXPECT_EQ(xgWKB_anno_set_multitext_leader_point(shape.data(), 2, &p), 0);
  std::vector<Desc> want = kThree;
  want[2].at = p, want[1].angle = 0.125, want[2].box = box, want[1].leader = p;
  const Bytes expected = multi_text_bytes(want, symbol_bytes(8));
  EXPECT_EQ(Bytes(shape.data(), shape.data() + expected.size()), expected);
}

TEST(AnnoMultiText, AddInsertDeleteAndSymbolsRoundTrip) {
  const Bytes sym = symbol_bytes(7);
  const Bytes two = multi_text_bytes({kPlain, kLong}, sym), led = desc_bytes(kLed);
  const Bytes added = built([&](unsigned char** o) { return xgWKB_anno_add_desc(Misaligned(two).data(), led.data(), o); });
  const Bytes inserted = built([&](unsigned char** o) { return xgWKB_anno_insert_desc(Misaligned(two).data(), 1, led.data(), o); });
  EXPECT_EQ(added, multi_text_bytes({kPlain, kLong, kLed}, sym));
  EXPECT_EQ(inserted, multi_text_bytes(kThree, sym));
  EXPECT_EQ(built([&](unsigned char** o) { return xgWKB_anno_delete_desc(Misaligned(inserted).data(), 2, o); }), two);
  EXPECT_EQ(built([&](unsigned char** o) { return xgWKB_anno_delete_desc(added.data(), 3, o); }), two);
  EXPECT_EQ(built([&](unsigned char** o) { return xgWKB_anno_delete_desc(two.data(), 1, o); }), multi_text_bytes({kLong}, sym));
  EXPECT_EQ(built([&](unsigned char** o) { return xgWKB_anno_add_desc(multi_text_bytes({}).data(), led.data(), o); }),
            multi_text_bytes({kLed}));
  for (const Bytes& from : {Bytes{}, sym}) {  // symbols replaced, added and removed: the total follows
    for (const Bytes& to : {Bytes{}, symbol_bytes(12)}) {
      EXPECT_EQ(built([&](unsigned char** o) {
                  return xgWKB_anno_set_multitext_symbol(multi_text_bytes(kThree, from).data(), to.empty() ? nullptr : to.data(), o);
                }),
                multi_text_bytes(kThree, to));
    }
  }
}

// Each row is one deliberate irregularity of the indexed operations.
TEST(AnnoMultiText, IrregularitiesOfTheIndexedOperations) {
  const Bytes three = multi_text_bytes(kThree), led = desc_bytes(kLed), long_rec = desc_bytes(kLong);
  const _xgWKB_POINT p{1, 1};
  // Record 3 renamed with the first record's text length (2) standing for its own (5).
  Bytes renamed3(three.begin(), three.begin() + 13 + 67 + 84);
  put_u32(renamed3, static_cast<uint32_t>(long_rec.size() + 4 - 2));
  put_u32(renamed3, 4);
  renamed3.insert(renamed3.end(), {'w', 'x', 'y', 'z'});
  renamed3.insert(renamed3.end(), long_rec.begin() + 8 + 2, long_rec.end());
  renamed3.push_back(0);
  Bytes renamed1 = multi_text_bytes({Desc{"wxyz", kPlain.at, kPlain.angle, {}, kPlain.box}, kLed, kLong});
  std::copy(three.begin() + 5, three.begin() + 9, renamed1.begin() + 5);  // total-size field copied unchanged
  Bytes unplaced = header(XGWKB_TYPE_MULTITEXT);
  put_u32(unplaced, static_cast<uint32_t>(three.size() + led.size()));
  put_u32(unplaced, 4);
  unplaced.insert(unplaced.end(), three.begin() + 13, three.end());
  unplaced.resize(unplaced.size() + led.size(), 0);
  const auto renamed = [&](int32_t index, std::size_t n) {
    Block b;
    EXPECT_EQ(xgWKB_anno_set_multitext_text(Misaligned(three).data(), index, "wxyz", b.out()), 0);
    return b.bytes(n);
  };
  const struct {
    const char* what;
    std::function<Bytes()> actual;
    Bytes expected;
  } rows[] = {
      {"text point: index bounded by the first record's size (67), above N changes nothing",
       [&] {
         Bytes s = three;
         EXPECT_EQ(xgWKB_anno_set_multitext_text_point(s.data(), 67, &p), 0);
         EXPECT_EQ(xgWKB_anno_set_multitext_text_point(s.data(), 68, &p), XGWKB_E_INVALID_INDEX);
         EXPECT_EQ(xgWKB_anno_set_multitext_text_point(s.data(), 0, &p), XGWKB_E_INVALID_INDEX);
         return s;
       },
       three},
      {"leader point: an index outside 1..N is -66",
       [&] {
         Bytes s = three;
         EXPECT_EQ(xgWKB_anno_set_multitext_leader_point(s.data(), 4, &p), XGWKB_E_INVALID_ARGUMENT);
         EXPECT_EQ(xgWKB_anno_set_multitext_leader_point(s.data(), 0, &p), XGWKB_E_INVALID_ARGUMENT);
         return s;
       },
       three},
      {"text of record 1: the total-size field is not updated", [&] { return renamed(1, renamed1.size()); }, renamed1},
      {"text of record 3: the first record's text length is used", [&] { return renamed(3, renamed3.size()); }, renamed3},
      {"insert after 0 or N+1: counted and sized, not written",
       [&] {
         const Bytes at4 = built([&](unsigned char** o) { return xgWKB_anno_insert_desc(three.data(), 4, led.data(), o); });
         EXPECT_EQ(at4, built([&](unsigned char** o) { return xgWKB_anno_insert_desc(three.data(), 0, led.data(), o); }));
         return at4;
       },
       unplaced},
      {"delete: the last record stays (-1), an index outside 1..N is -66",
       [&] {
         Block b;
         EXPECT_EQ(xgWKB_anno_delete_desc(multi_text_bytes({kLed}).data(), 1, b.out()), XGWKB_E_FAILED);
         EXPECT_EQ(xgWKB_anno_delete_desc(three.data(), 4, b.out()), XGWKB_E_INVALID_ARGUMENT);
         EXPECT_EQ(xgWKB_anno_delete_desc(three.data(), 0, b.out()), XGWKB_E_INVALID_ARGUMENT);
         return b.p == nullptr ? three : Bytes{};
       },
       three},
  };
  for (const auto& row : rows) EXPECT_EQ(row.actual(), row.expected) << row.what;
}
