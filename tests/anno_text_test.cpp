// Descriptor records and SingleText shapes: exact byte layouts, every field read and written on
// misaligned copies, the deliberate irregularities of the text, leader and symbol setters, and
// null pointers across the annotation and dimension exports.
#include <gtest/gtest.h>

#include <functional>

#include "support/anno_blobs.h"

using namespace xgtest;

namespace {

// The leader argument that gives d its leader, or none (a point within 0.0001 of the text point).
_xgWKB_POINT leader_arg(const Desc& d) { return d.leader ? *d.leader : _xgWKB_POINT{d.at.x + 0.00005, d.at.y - 0.00009}; }

Bytes created_desc(const Desc& d) {
  const int32_t size = xgWKB_desc_get_size(d.at, leader_arg(d), d.box, d.angle, d.text.c_str());
  Bytes out(static_cast<std::size_t>(size), 0xEE);
  EXPECT_EQ(xgWKB_desc_create(d.at, leader_arg(d), d.box, d.angle, d.text.c_str(), size, out.data()), 0);
  return out;
}

Bytes created_single(const Desc& d, const Bytes& symbol = {}) {
  const _xgWKB_POINT leader = leader_arg(d);
  Block b;
  EXPECT_EQ(xgWKB_anno_create(&d.at, &leader, &d.box, d.angle, d.text.c_str(), symbol.empty() ? nullptr : symbol.data(), b.out()), 0);
  return b.anno();
}

// The fields of a record read back through the descriptor getters.
Desc read_record(const unsigned char* rec, const Desc& like) {
  Desc d{};
  _xgWKB_POINT leader{};
  Block text;
  EXPECT_EQ(xgWKB_get_desc_text_point(rec, &d.at) | xgWKB_get_desc_angle(rec, &d.angle) | xgWKB_desc_get_extent(rec, &d.box) |
                xgWKB_get_desc_text(rec, reinterpret_cast<char**>(text.out())), 0);
  if (xgWKB_get_desc_leader_point(rec, &leader) == 0) d.leader = leader;
  d.text.assign(reinterpret_cast<const char*>(text.p), like.text.size());
  return d;
}

}  // namespace

TEST(AnnoText, RecordsAndSingleTextsHaveTheExactLayout) {
  EXPECT_EQ(created_desc(kPlain), desc_bytes(kPlain));  // 67 bytes, no leader
  EXPECT_EQ(created_desc(kLed), desc_bytes(kLed));      // 84 bytes, leader
  Desc ab = kPlain;  // "ab" with a distinct leader and no symbol: 65 + 2 + 16 + 10 bytes
  ab.leader = _xgWKB_POINT{5, 5};
  EXPECT_EQ(created_single(ab).size(), 93u);
  EXPECT_EQ(created_single(ab), single_text_bytes(ab));
  EXPECT_EQ(created_single(kPlain, symbol_bytes(12)), single_text_bytes(kPlain, symbol_bytes(12)));
}

TEST(AnnoText, GettersAndSettersWorkOnMisalignedCopies) {
  const _xgWKB_POINT p{-7.5, 11};
  const _xgWKB_BOX box{-1, -1, 20, 30};
  for (const Bytes& sym : {Bytes{}, symbol_bytes(9)}) {
    for (const Desc& d : {kPlain, kLed}) {
      Misaligned shape(single_text_bytes(d, sym));
      EXPECT_EQ(read_desc(shape.data(), 0, d), d);
      EXPECT_EQ(read_record(shape.data() + 9, d), d);
      Block a, b;
      const int32_t want = sym.empty() ? -1 : 0;  // no symbol: -1
      ASSERT_EQ(xgWKB_anno_get_symbol(shape.data(), a.out()), want);
      ASSERT_EQ(xgWKB_get_desc_symbol(shape.data() + 9, b.out()), want);
      if (!sym.empty()) {
        EXPECT_TRUE(a.bytes(9) == sym && b.bytes(9) == sym);
      }
    }
  }
  for (bool record : {false, true}) {  // every setter, through the shape and through its record
    Misaligned shape(single_text_bytes(kLed));
    unsigned char *s = shape.data(), *rec = s + 9;
    EXPECT_EQ(record ? xgWKB_set_desc_text_point(rec, p) : xgWKB_anno_set_text_point(s, &p), 0);
    EXPECT_EQ(record ? xgWKB_set_desc_angle(rec, 3.25) : xgWKB_anno_set_angle(s, 3.25), 0);
    EXPECT_EQ(record ? xgWKB_set_desc_extent(rec, box) : xgWKB_anno_set_extent(s, &box), 0);
    EXPECT_EQ(record ? xgWKB_set_desc_leader_point(rec, p) : xgWKB_anno_set_leader_point(s, &p), 0);
    const Bytes want = single_text_bytes(Desc{kLed.text, p, 3.25, p, box});
    EXPECT_EQ(Bytes(s, s + want.size()), want) << record;
  }
  int32_t type = 0;
  EXPECT_EQ(xgWKB_anno_get_type(Misaligned(single_text_bytes(kPlain)).data(), &type), 0);
  EXPECT_EQ(type, XGWKB_TYPE_SINGLETEXT);
  const Bytes blob = single_text_bytes(kLed, symbol_bytes(7));  // copies go by the total-size field
  Block a, b;
  EXPECT_EQ(xgWKB_anno_duplicate(Misaligned(blob).data(), a.out()) | xgWKB_shape_duplicate(blob.data(), b.out()), 0);
  EXPECT_TRUE(a.anno() == blob && b.anno() == blob);
}

// Each row is one deliberate irregularity: the bytes the library gives and the bytes wanted.
TEST(AnnoText, IrregularitiesOfTheTextLeaderAndSymbolSetters) {
  const Bytes sym5 = symbol_bytes(5), sym9 = symbol_bytes(9);
  const auto rebuilt = [](const Bytes& shape, const unsigned char* symbol) {
    Block out;
    EXPECT_EQ(xgWKB_anno_set_symbol(Misaligned(shape).data(), symbol, out.out()), 0);
    return out.bytes(67 + 10 + (symbol ? 9 : 0));
  };
  Bytes sym_dropped = single_text_bytes(kPlain);
  sym_dropped[5] += 9;  // the total still counts the old symbol
  Bytes leader_over_box = desc_bytes(Desc{"ab", kPlain.at, kPlain.angle, _xgWKB_POINT{9, 9}, kPlain.box});
  leader_over_box.resize(51);  // flag and leader written, the record keeps its size, D and the
  leader_over_box[0] = 67;     // last 16 bytes of its box
  const Bytes plain = desc_bytes(kPlain);
  leader_over_box.insert(leader_over_box.end(), plain.begin() + 51, plain.end());
  const struct {
    const char* what;
    std::function<Bytes()> actual;
    Bytes expected;
  } rows[] = {
      {"a created record's text comes back without a terminator",
       [] {
         Block t;
         EXPECT_EQ(xgWKB_get_desc_text(created_desc(kPlain).data(), reinterpret_cast<char**>(t.out())), 0);
         return t.bytes(2);
       },
       Bytes{'a', 'b'}},
      {"anno_set_text stores and counts the terminator",
       [] {
         Block out;
         EXPECT_EQ(xgWKB_anno_set_text(Misaligned(single_text_bytes(kLed, symbol_bytes(6))).data(), "cd", out.out()), 0);
         return out.anno();
       },
       single_text_bytes(Desc{std::string("cd\0", 3), kLed.at, kLed.angle, kLed.leader, kLed.box}, symbol_bytes(6))},
      {"a leader set on a record without one covers the first 16 bytes of the box",
       [] {
         Bytes rec = desc_bytes(kPlain);
         EXPECT_EQ(xgWKB_set_desc_leader_point(rec.data(), _xgWKB_POINT{9, 9}), 0);
         return rec;
       },
       leader_over_box},
      {"set_desc_text frees the caller's block and stores a new one",
       [] {
         const Bytes rec = desc_bytes(kLed);
         auto* block = static_cast<unsigned char*>(std::malloc(rec.size()));
         std::memcpy(block, rec.data(), rec.size());
         EXPECT_EQ(xgWKB_set_desc_text(&block, "longer text"), 0);
         const Bytes got(block, block + 65 + 16 + 11);
         std::free(block);
         return got;
       },
       desc_bytes(Desc{"longer text", kLed.at, kLed.angle, kLed.leader, kLed.box})},
      {"set_symbol over a symbol: total patched by the size difference",
       [&] { return rebuilt(single_text_bytes(kPlain, sym5), sym9.data()); }, single_text_bytes(kPlain, sym9)},
      {"set_symbol without an old symbol", [&] { return rebuilt(single_text_bytes(kPlain), sym9.data()); },
       single_text_bytes(kPlain, sym9)},
      {"set_symbol removing the symbol keeps the old total", [&] { return rebuilt(single_text_bytes(kPlain, sym9), nullptr); },
       sym_dropped},
  };
  for (const auto& row : rows) EXPECT_EQ(row.actual(), row.expected) << row.what;
}

TEST(AnnoText, NullPointersAreRefusedWithoutSideEffects) {
  Bytes shape = single_text_bytes(kLed);
  const Bytes multi = multi_text_bytes({kLed});
  unsigned char* rec = shape.data() + 9;
  const _xgWKB_POINT p{0, 0};
  const _xgWKB_BOX box{0, 0, 1, 1};
  unsigned char* blob = nullptr;
  const char* no_text[1] = {nullptr};
  double a = 0;
  const std::function<int32_t()> calls[] = {
      [&] { return xgWKB_desc_get_size(p, p, box, 0, nullptr); },
      [&] { return xgWKB_get_desc_text(rec, nullptr); },
      [&] { return xgWKB_set_desc_text(&blob, "a"); },  // *desc null
      [&] { return xgWKB_anno_create(&p, &p, &box, 0, nullptr, nullptr, &blob); },
      [&] { return xgWKB_anno_set_text(shape.data(), nullptr, &blob); },
      [&] { return xgWKB_anno_create_multitext(&p, &p, &box, &a, no_text, 1, nullptr, &blob); },
      [&] { return xgWKB_anno_set_multitext_leader_point(nullptr, 1, &p); },
      [&] { return xgWKB_anno_insert_desc(multi.data(), 1, nullptr, &blob); },
      [&] { return xgWKB_anno_mirror_multitext(multi.data(), &p, &p, nullptr, 0); },
      [&] { return xgWKB_anno_get_outline(nullptr, &blob); },
      [&] { return xgWKB_dim_mirror(nullptr, &p, &p, &blob, 0); },
  };
  for (std::size_t i = 0; i < std::size(calls); ++i) EXPECT_EQ(calls[i](), XGWKB_E_NULL_POINTER) << i;
  EXPECT_EQ(xgWKB_anno_create_multitext(&p, &p, &box, &a, no_text, -1, nullptr, &blob), XGWKB_E_INVALID_ARGUMENT);
  EXPECT_EQ(blob, nullptr);
  EXPECT_EQ(shape, single_text_bytes(kLed));
  xgWKB_anno_free(nullptr);
}
