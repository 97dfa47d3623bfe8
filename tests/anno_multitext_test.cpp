// MultiText shapes: exact layout, indexed access on misaligned copies, record add / insert /
// delete round trips, and the deliberate irregularities of the indexed setters.
#include <gtest/gtest.h>

#include <functional>

#include "support/anno_blobs.h"

using namespace xgtest;

namespace {

const std::vector<Desc> kThree = {kPlain, kLed, kLong};

// Concatenation of byte strings.
Bytes cat(std::initializer_list<Bytes> parts) {
  Bytes b;
  for (const Bytes& p : parts) b.insert(b.end(), p.begin(), p.end());
  return b;
}

Bytes created_multi(const std::vector<Desc>& ds, const Bytes& symbol) {
  std::vector<_xgWKB_POINT> at, leader;
  std::vector<_xgWKB_BOX> box;
  std::vector<double> angle;
  std::vector<const char*> text;
  for (const Desc& d : ds) {
    at.push_back(d.at);
    leader.push_back(d.leader ? *d.leader : d.at);
    box.push_back(d.box);
    angle.push_back(d.angle);
    text.push_back(d.text.c_str());
  }
  Block b;
  EXPECT_EQ(xgWKB_anno_create_multitext(at.data(), leader.data(), box.data(), angle.data(), text.data(),
                                        static_cast<int32_t>(ds.size()), symbol.empty() ? nullptr : symbol.data(),
                                        b.out()),
            0);
  return b.anno();
}

// The bytes of the shape a two-argument builder hands back.
Bytes built(const std::function<int32_t(unsigned char**)>& f, int32_t want_status = 0) {
  Block b;
  EXPECT_EQ(f(b.out()), want_status);
  return b.p != nullptr ? b.anno() : Bytes{};
}

}  // namespace

TEST(AnnoMultiText, ThreeRecordsHaveTheExactLayout) {
  for (const Bytes& sym : {Bytes{}, symbol_bytes(10)}) {
    const Bytes want = multi_text_bytes(kThree, sym);
    EXPECT_EQ(want.size(), 14 + 67 + 84 + 86 + sym.size());
    EXPECT_EQ(created_multi(kThree, sym), want);
  }
  // No records: the arrays are not read.
  const _xgWKB_POINT p{};
  const _xgWKB_BOX box{};
  const double angle = 0;
  const char* text = "unread";
  Block empty;
  ASSERT_EQ(xgWKB_anno_create_multitext(&p, &p, &box, &angle, &text, 0, nullptr, empty.out()), 0);
  EXPECT_EQ(empty.anno(), multi_text_bytes({}));
}

TEST(AnnoMultiText, IndexedGettersWalkTheRecordsOfMisalignedCopies) {
  Misaligned shape(multi_text_bytes(kThree, symbol_bytes(8)));
  int32_t n = 0;
  ASSERT_EQ(xgWKB_anno_get_desc_num(shape.data(), &n), 0);
  ASSERT_EQ(n, 3);
  for (int32_t i = 1; i <= n; ++i) {
    const Desc& d = kThree[i - 1];
    _xgWKB_POINT p{};
    _xgWKB_BOX box{};
    double a = 0;
    Block text;
    EXPECT_EQ(xgWKB_anno_get_multitext_text_point(shape.data(), i, &p), 0);
    EXPECT_TRUE(p.x == d.at.x && p.y == d.at.y);
    EXPECT_EQ(xgWKB_anno_get_multitext_angle(shape.data(), i, &a), 0);
    EXPECT_EQ(a, d.angle);
    EXPECT_EQ(xgWKB_anno_get_multitext_extent(shape.data(), i, &box), 0);
    EXPECT_TRUE(box.minx == d.box.minx && box.maxy == d.box.maxy);
    EXPECT_EQ(xgWKB_anno_get_multitext_leader_point(shape.data(), i, &p), d.leader ? 0 : -1);
    if (d.leader) {
      EXPECT_TRUE(p.x == d.leader->x && p.y == d.leader->y);
    }
    ASSERT_EQ(xgWKB_anno_get_multitext_text(shape.data(), i, reinterpret_cast<char**>(text.out())), 0);
    EXPECT_EQ(text.bytes(d.text.size()), Bytes(d.text.begin(), d.text.end()));
  }
  Block symbol;
  ASSERT_EQ(xgWKB_anno_get_multitext_symbol(shape.data(), symbol.out()), 0);
  EXPECT_EQ(symbol.bytes(8), symbol_bytes(8));
  EXPECT_EQ(xgWKB_anno_get_multitext_symbol(multi_text_bytes(kThree).data(), symbol.out()), -1);
  EXPECT_EQ(xgWKB_anno_get_desc_num(single_text_bytes(kPlain).data(), &n), -1);
  for (int32_t bad : {0, 4, -1}) {
    _xgWKB_POINT p{};
    double a = 0;
    EXPECT_EQ(xgWKB_anno_get_multitext_text_point(shape.data(), bad, &p), XGWKB_E_INVALID_INDEX);
    EXPECT_EQ(xgWKB_anno_get_multitext_angle(shape.data(), bad, &a), XGWKB_E_INVALID_INDEX);
    EXPECT_EQ(xgWKB_anno_set_multitext_angle(shape.data(), bad, 1), XGWKB_E_INVALID_INDEX);
  }
}

TEST(AnnoMultiText, IndexedSettersChangeOnlyTheirRecord) {
  const Bytes sym = symbol_bytes(6);
  Misaligned shape(multi_text_bytes(kThree, sym));
  const _xgWKB_POINT p{100, -100};
  const _xgWKB_BOX box{-9, -9, 9, 9};
  EXPECT_EQ(xgWKB_anno_set_multitext_text_point(shape.data(), 3, &p), 0);
  EXPECT_EQ(xgWKB_anno_set_multitext_angle(shape.data(), 2, 0.125), 0);
  EXPECT_EQ(xgWKB_anno_set_multitext_extent(shape.data(), 3, &box), 0);
  EXPECT_EQ(xgWKB_anno_set_multitext_leader_point(shape.data(), 2, &p), 0);
  std::vector<Desc> want = kThree;
  want[2].at = p, want[1].angle = 0.125, want[2].box = box, want[1].leader = p;
  const Bytes expected = multi_text_bytes(want, sym);
  EXPECT_EQ(Bytes(shape.data(), shape.data() + expected.size()), expected);
}

TEST(AnnoMultiText, AddInsertAndDeleteRoundTrip) {
  const Bytes sym = symbol_bytes(7);
  const Bytes two = multi_text_bytes({kPlain, kLong}, sym);
  const Bytes led = desc_bytes(kLed);
  const Bytes added = built([&](unsigned char** o) { return xgWKB_anno_add_desc(Misaligned(two).data(), led.data(), o); });
  EXPECT_EQ(added, multi_text_bytes({kPlain, kLong, kLed}, sym));
  const Bytes inserted =
      built([&](unsigned char** o) { return xgWKB_anno_insert_desc(Misaligned(two).data(), 1, led.data(), o); });
  EXPECT_EQ(inserted, multi_text_bytes(kThree, sym));
  EXPECT_EQ(built([&](unsigned char** o) { return xgWKB_anno_delete_desc(Misaligned(inserted).data(), 2, o); }), two);
  EXPECT_EQ(built([&](unsigned char** o) { return xgWKB_anno_delete_desc(Misaligned(added).data(), 3, o); }), two);
  EXPECT_EQ(built([&](unsigned char** o) { return xgWKB_anno_delete_desc(Misaligned(two).data(), 1, o); }),
            multi_text_bytes({kLong}, sym));
  EXPECT_EQ(built([&](unsigned char** o) { return xgWKB_anno_add_desc(multi_text_bytes({}).data(), led.data(), o); }),
            multi_text_bytes({kLed}));
  // Symbols replaced, added and removed: the total follows.
  for (const Bytes& from : {Bytes{}, sym}) {
    for (const Bytes& to : {Bytes{}, symbol_bytes(12)}) {
      EXPECT_EQ(built([&](unsigned char** o) {
                  return xgWKB_anno_set_multitext_symbol(multi_text_bytes(kThree, from).data(),
                                                         to.empty() ? nullptr : to.data(), o);
                }),
                multi_text_bytes(kThree, to));
    }
  }
}

// Each row is one deliberate irregularity of the indexed operations.
TEST(AnnoMultiText, IrregularitiesOfTheIndexedOperations) {
  const Bytes three = multi_text_bytes(kThree);
  const Bytes led = desc_bytes(kLed);
  const _xgWKB_POINT p{1, 1};
  // Record 3 renamed with the first record's text length (2) taken as its old length (5).
  const Bytes long_rec = desc_bytes(kLong);
  Bytes renamed3 = cat({Bytes(three.begin(), three.begin() + 13), desc_bytes(kPlain), desc_bytes(kLed)});
  put_u32(renamed3, static_cast<uint32_t>(long_rec.size() + 4 - 2));
  put_u32(renamed3, 4);
  renamed3.insert(renamed3.end(), {'w', 'x', 'y', 'z'});
  renamed3.insert(renamed3.end(), long_rec.begin() + 8 + 2, long_rec.end());
  renamed3.push_back(0);
  Desc plain4 = kPlain;
  plain4.text = "wxyz";
  Bytes renamed1 = multi_text_bytes({plain4, kLed, kLong});
  renamed1[5] = three[5];  // the total-size field is copied unchanged
  Bytes unplaced = three;
  Bytes head = header(XGWKB_TYPE_MULTITEXT);
  put_u32(head, static_cast<uint32_t>(three.size() + led.size()));
  put_u32(head, 4);
  std::copy(head.begin(), head.end(), unplaced.begin());
  unplaced.resize(unplaced.size() + led.size(), 0);
  const struct {
    const char* what;
    std::function<Bytes()> actual;
    Bytes expected;
  } rows[] = {
      {"text point: an index above N but within the first record's size changes nothing",
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
      {"text of record 1: total-size field copied unchanged",
       [&] {
         Block b;
         EXPECT_EQ(xgWKB_anno_set_multitext_text(three.data(), 1, "wxyz", b.out()), 0);
         return b.bytes(renamed1.size());
       },
       renamed1},
      {"text of record 3: the first record's text length stands for the old one",
       [&] {
         Block b;
         EXPECT_EQ(xgWKB_anno_set_multitext_text(Misaligned(three).data(), 3, "wxyz", b.out()), 0);
         return b.bytes(renamed3.size());
       },
       renamed3},
      {"insert after index 0 or N+1: counted and sized, not written",
       [&] {
         const Bytes at4 = built([&](unsigned char** o) { return xgWKB_anno_insert_desc(three.data(), 4, led.data(), o); });
         EXPECT_EQ(at4, built([&](unsigned char** o) { return xgWKB_anno_insert_desc(three.data(), 0, led.data(), o); }));
         return at4;
       },
       unplaced},
      {"delete: the last record cannot go (-1), an index outside 1..N is -66",
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

TEST(AnnoMultiText, NullPointersAndBadCountsAreRefused) {
  const Bytes three = multi_text_bytes(kThree);
  const _xgWKB_POINT pts[2] = {{0, 0}, {1, 1}};
  const _xgWKB_BOX boxes[2] = {{0, 0, 1, 1}, {0, 0, 1, 1}};
  const double angles[2] = {0, 0};
  const char* texts[2] = {"a", nullptr};
  unsigned char* blob = nullptr;
  int32_t n = 0;
  const std::function<int32_t()> calls[] = {
      [&] { return xgWKB_anno_create_multitext(pts, pts, boxes, nullptr, texts, 1, nullptr, &blob); },
      [&] { return xgWKB_anno_create_multitext(pts, pts, boxes, angles, texts, 2, nullptr, &blob); },
      [&] { return xgWKB_anno_create_multitext(pts, pts, boxes, angles, texts, 1, nullptr, nullptr); },
      [&] { return xgWKB_anno_get_desc_num(nullptr, &n); },
      [&] { return xgWKB_anno_get_multitext_text(three.data(), 1, nullptr); },
      [&] { return xgWKB_anno_get_multitext_symbol(nullptr, &blob); },
      [&] { return xgWKB_anno_set_multitext_leader_point(nullptr, 1, pts); },
      [&] { return xgWKB_anno_set_multitext_text(three.data(), 1, nullptr, &blob); },
      [&] { return xgWKB_anno_add_desc(three.data(), nullptr, &blob); },
      [&] { return xgWKB_anno_insert_desc(nullptr, 1, three.data(), &blob); },
      [&] { return xgWKB_anno_delete_desc(nullptr, 1, &blob); },
  };
  for (std::size_t i = 0; i < std::size(calls); ++i) EXPECT_EQ(calls[i](), XGWKB_E_NULL_POINTER) << i;
  EXPECT_EQ(xgWKB_anno_create_multitext(pts, pts, boxes, angles, texts, -1, nullptr, &blob),
            XGWKB_E_INVALID_ARGUMENT);
  EXPECT_EQ(blob, nullptr);
}
