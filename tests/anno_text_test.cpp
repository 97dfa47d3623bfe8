// Descriptor records and SingleText shapes: exact byte layouts, every field read and written on
// misaligned copies, the deliberate irregularities of the text and symbol setters, null pointers.
#include <gtest/gtest.h>

#include <functional>

#include "support/anno_blobs.h"

using namespace xgtest;

namespace {

// The leader argument that gives d its leader, or none (a point within 0.0001 of the text point).
_xgWKB_POINT leader_arg(const Desc& d) {
  return d.leader ? *d.leader : _xgWKB_POINT{d.at.x + 0.00005, d.at.y - 0.00009};
}

Bytes created_desc(const Desc& d) {
  const _xgWKB_POINT leader = leader_arg(d);
  const int32_t size = xgWKB_desc_get_size(d.at, leader, d.box, d.angle, d.text.c_str());
  Bytes out(static_cast<std::size_t>(size), 0xEE);
  EXPECT_EQ(xgWKB_desc_create(d.at, leader, d.box, d.angle, d.text.c_str(), size, out.data()), 0);
  return out;
}

Bytes created_single(const Desc& d, const Bytes& symbol = {}) {
  const _xgWKB_POINT leader = leader_arg(d);
  Block b;
  EXPECT_EQ(xgWKB_anno_create(&d.at, &leader, &d.box, d.angle, d.text.c_str(),
                              symbol.empty() ? nullptr : symbol.data(), b.out()), 0);
  return b.anno();
}

bool same(const _xgWKB_POINT& a, const _xgWKB_POINT& b) { return a.x == b.x && a.y == b.y; }
bool same(const _xgWKB_BOX& a, const _xgWKB_BOX& b) {
  return a.minx == b.minx && a.miny == b.miny && a.maxx == b.maxx && a.maxy == b.maxy;
}

}  // namespace

TEST(AnnoText, RecordsAndSingleTextsHaveTheExactLayout) {
  EXPECT_EQ(created_desc(kPlain), desc_bytes(kPlain));  // 67 bytes, no leader
  EXPECT_EQ(created_desc(kLed), desc_bytes(kLed));      // 84 bytes, leader
  EXPECT_EQ(xgWKB_desc_get_size(kLed.at, *kLed.leader, kLed.box, 0, "xyz"), 84);
  // "ab" with a distinct leader and no symbol: 65 + 2 + 16 + 10 bytes.
  Desc ab = kPlain;
  ab.leader = _xgWKB_POINT{5, 5};
  EXPECT_EQ(created_single(ab).size(), 93u);
  EXPECT_EQ(created_single(ab), single_text_bytes(ab));
  EXPECT_EQ(created_single(kPlain, symbol_bytes(12)), single_text_bytes(kPlain, symbol_bytes(12)));
}

TEST(AnnoText, GettersReadEveryFieldOfMisalignedCopies) {
  for (const Bytes& sym : {Bytes{}, symbol_bytes(9)}) {
    for (const Desc& d : {kPlain, kLed}) {
      Misaligned shape(single_text_bytes(d, sym));
      const unsigned char* rec = shape.data() + 9;
      _xgWKB_POINT p{}, q{};
      _xgWKB_BOX box{}, box2{};
      double a = 0, a2 = 0;
      Block text, text2, symbol, symbol2;
      EXPECT_EQ(xgWKB_anno_get_text_point(shape.data(), &p), 0);
      EXPECT_EQ(xgWKB_get_desc_text_point(rec, &q), 0);
      EXPECT_TRUE(same(p, d.at) && same(q, d.at));
      EXPECT_EQ(xgWKB_anno_get_angle(shape.data(), &a), 0);
      EXPECT_EQ(xgWKB_get_desc_angle(rec, &a2), 0);
      EXPECT_TRUE(a == d.angle && a2 == d.angle);
      EXPECT_EQ(xgWKB_anno_get_extent(shape.data(), &box), 0);
      EXPECT_EQ(xgWKB_desc_get_extent(rec, &box2), 0);
      EXPECT_TRUE(same(box, d.box) && same(box2, d.box));
      const int32_t leader_status = d.leader ? 0 : -1;
      EXPECT_EQ(xgWKB_anno_get_leader_point(shape.data(), &p), leader_status);
      EXPECT_EQ(xgWKB_get_desc_leader_point(rec, &q), leader_status);
      if (d.leader) {
        EXPECT_TRUE(same(p, *d.leader) && same(q, *d.leader));
      }
      ASSERT_EQ(xgWKB_anno_get_text(shape.data(), reinterpret_cast<char**>(text.out())), 0);
      ASSERT_EQ(xgWKB_get_desc_text(rec, reinterpret_cast<char**>(text2.out())), 0);
      EXPECT_EQ(text.bytes(d.text.size()), Bytes(d.text.begin(), d.text.end()));
      EXPECT_EQ(text2.bytes(d.text.size()), Bytes(d.text.begin(), d.text.end()));
      const int32_t symbol_status = sym.empty() ? -1 : 0;
      EXPECT_EQ(xgWKB_anno_get_symbol(shape.data(), symbol.out()), symbol_status);
      EXPECT_EQ(xgWKB_get_desc_symbol(rec, symbol2.out()), symbol_status);
      if (!sym.empty()) {
        EXPECT_TRUE(symbol.bytes(sym.size()) == sym && symbol2.bytes(sym.size()) == sym);
      }
      int32_t type = 0;
      EXPECT_EQ(xgWKB_anno_get_type(shape.data(), &type), 0);
      EXPECT_EQ(type, XGWKB_TYPE_SINGLETEXT);
    }
  }
}

TEST(AnnoText, SettersRewriteOneFieldInPlace) {
  const _xgWKB_POINT p{-7.5, 11};
  const _xgWKB_BOX box{-1, -1, 20, 30};
  for (bool record : {false, true}) {
    Desc want = kLed;
    Misaligned shape(single_text_bytes(want));
    unsigned char* rec = shape.data() + 9;
    const std::size_t n = single_text_bytes(want).size();
    EXPECT_EQ(record ? xgWKB_set_desc_text_point(rec, p) : xgWKB_anno_set_text_point(shape.data(), &p), 0);
    EXPECT_EQ(record ? xgWKB_set_desc_angle(rec, 3.25) : xgWKB_anno_set_angle(shape.data(), 3.25), 0);
    EXPECT_EQ(record ? xgWKB_set_desc_extent(rec, box) : xgWKB_anno_set_extent(shape.data(), &box), 0);
    EXPECT_EQ(record ? xgWKB_set_desc_leader_point(rec, p) : xgWKB_anno_set_leader_point(shape.data(), &p), 0);
    want.at = p, want.angle = 3.25, want.box = box, want.leader = p;
    EXPECT_EQ(Bytes(shape.data(), shape.data() + n), single_text_bytes(want)) << record;
  }
}

// Each row is one deliberate irregularity: the bytes the library gives and the bytes wanted.
TEST(AnnoText, IrregularitiesOfTheTextLeaderAndSymbolSetters) {
  const Bytes sym5 = symbol_bytes(5), sym9 = symbol_bytes(9);
  Desc cd0 = kLed;
  cd0.text = std::string("cd\0", 3);
  Desc renamed = kLed;
  renamed.text = "longer text";
  const struct {
    const char* what;
    std::function<Bytes()> actual;
    Bytes expected;
  } rows[] = {
      {"a created record's text comes back without a terminator",
       [] {
         const Bytes rec = created_desc(kPlain);
         Block t;
         EXPECT_EQ(xgWKB_get_desc_text(rec.data(), reinterpret_cast<char**>(t.out())), 0);
         return t.bytes(2);
       },
       Bytes{'a', 'b'}},
      {"anno_set_text stores and counts the terminator",
       [] {
         Block out;
         EXPECT_EQ(xgWKB_anno_set_text(Misaligned(single_text_bytes(kLed, symbol_bytes(6))).data(), "cd", out.out()), 0);
         return out.anno();
       },
       single_text_bytes(cd0, symbol_bytes(6))},
      {"a leader set on a record without one covers the first 16 bytes of the box",
       [] {
         Bytes rec = desc_bytes(kPlain);
         EXPECT_EQ(xgWKB_set_desc_leader_point(rec.data(), _xgWKB_POINT{9, 9}), 0);
         return rec;
       },
       [] {
         Desc d = kPlain;
         d.leader = _xgWKB_POINT{9, 9};
         Bytes b = desc_bytes(d), old = desc_bytes(kPlain);
         b.resize(51);  // flag and leader written; the record keeps its size and its D
         b[0] = 67;
         b.insert(b.end(), old.begin() + 51, old.end());  // the box's last 16 bytes stay
         return b;
       }()},
      {"set_desc_text replaces the caller's block with a new one",
       [] {
         Bytes rec = desc_bytes(kLed);
         unsigned char* block = static_cast<unsigned char*>(std::malloc(rec.size()));
         std::memcpy(block, rec.data(), rec.size());
         EXPECT_EQ(xgWKB_set_desc_text(&block, "longer text"), 0);  // frees the old block
         Bytes got(block, block + 65 + 16 + 11);
         std::free(block);
         return got;
       },
       desc_bytes(renamed)},
      {"set_symbol on a shape with a symbol: total patched by the size difference",
       [&] {
         Block out;
         EXPECT_EQ(xgWKB_anno_set_symbol(Misaligned(single_text_bytes(kPlain, sym5)).data(), sym9.data(), out.out()), 0);
         return out.anno();
       },
       single_text_bytes(kPlain, sym9)},
      {"set_symbol on a shape without one: total grows by the new size",
       [&] {
         Block out;
         EXPECT_EQ(xgWKB_anno_set_symbol(Misaligned(single_text_bytes(kPlain)).data(), sym9.data(), out.out()), 0);
         return out.anno();
       },
       single_text_bytes(kPlain, sym9)},
      {"set_symbol removing a symbol keeps the old total-size field",
       [&] {
         Block out;
         EXPECT_EQ(xgWKB_anno_set_symbol(Misaligned(single_text_bytes(kPlain, sym9)).data(), nullptr, out.out()), 0);
         return out.bytes(67 + 10);
       },
       [&] {
         Bytes b = single_text_bytes(kPlain);
         b[5] = static_cast<unsigned char>(b[5] + 9);  // the total still counts the old symbol
         return b;
       }()},
  };
  for (const auto& row : rows) EXPECT_EQ(row.actual(), row.expected) << row.what;
}

TEST(AnnoText, CopiesGoByTheTotalSizeField) {
  const Bytes blob = single_text_bytes(kLed, symbol_bytes(7));
  Block a, b;
  EXPECT_EQ(xgWKB_anno_duplicate(Misaligned(blob).data(), a.out()), 0);
  EXPECT_EQ(xgWKB_shape_duplicate(Misaligned(blob).data(), b.out()), 0);
  EXPECT_EQ(a.anno(), blob);
  EXPECT_EQ(b.anno(), blob);
  uint32_t size = 1;
  EXPECT_EQ(xgWKB_shape_get_WKB_size(blob.data(), &size), XGWKB_E_INVALID_SHAPE);
  EXPECT_EQ(size, 1u);
  xgWKB_anno_free(nullptr);
}

TEST(AnnoText, NullPointersAreRefused) {
  Bytes shape = single_text_bytes(kLed);
  unsigned char* rec = shape.data() + 9;
  const _xgWKB_POINT p{0, 0};
  const _xgWKB_BOX box{0, 0, 1, 1};
  unsigned char* blob = nullptr;
  unsigned char** no_block = nullptr;
  char* text = nullptr;
  double a = 0;
  const std::function<int32_t()> calls[] = {
      [&] { return xgWKB_desc_get_size(p, p, box, 0, nullptr); },
      [&] { return xgWKB_desc_create(p, p, box, 0, nullptr, 65, rec); },
      [&] { return xgWKB_desc_create(p, p, box, 0, "a", 66, nullptr); },
      [&] { return xgWKB_get_desc_text_point(nullptr, nullptr); },
      [&] { return xgWKB_get_desc_angle(nullptr, &a); },
      [&] { return xgWKB_get_desc_text(rec, nullptr); },
      [&] { return xgWKB_get_desc_symbol(nullptr, &blob); },
      [&] { return xgWKB_set_desc_leader_point(nullptr, p); },
      [&] { return xgWKB_set_desc_text(no_block, "a"); },
      [&] { return xgWKB_set_desc_text(&blob, "a"); },  // *desc null
      [&] { return xgWKB_anno_create(&p, &p, &box, 0, nullptr, nullptr, &blob); },
      [&] { return xgWKB_anno_create(&p, nullptr, &box, 0, "a", nullptr, &blob); },
      [&] { return xgWKB_anno_get_text(nullptr, &text); },
      [&] { return xgWKB_anno_set_extent(shape.data(), nullptr); },
      [&] { return xgWKB_anno_set_angle(nullptr, 1); },
      [&] { return xgWKB_anno_set_text(shape.data(), nullptr, &blob); },
      [&] { return xgWKB_anno_set_symbol(nullptr, nullptr, &blob); },
      [&] { return xgWKB_anno_duplicate(shape.data(), nullptr); },
      [&] { return xgWKB_anno_get_type(nullptr, nullptr); },
  };
  for (std::size_t i = 0; i < std::size(calls); ++i) EXPECT_EQ(calls[i](), XGWKB_E_NULL_POINTER) << i;
  EXPECT_EQ(blob, nullptr);
  EXPECT_EQ(shape, single_text_bytes(kLed));
}
