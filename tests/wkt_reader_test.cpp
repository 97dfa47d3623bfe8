// The WKT reader: which texts it accepts and what it builds, the type and size inspections, and
// the conversion of number fields.  Round trips through the writer are in wkt_writer_test.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <random>
#include <string>

#include "support/edit_result.h"
#include "wkt/number_format.h"

using namespace xgtest;

namespace {

// Reads text from an exactly sized heap copy: its status and the shape's bytes, none when the
// out-pointer was left alone.
std::pair<int32_t, Bytes> read(const std::string& text) {
  const std::unique_ptr<char[]> copy(new char[text.size() + 1]);
  std::memcpy(copy.get(), text.c_str(), text.size() + 1);
  unsigned char untouched = 0, *shape = &untouched;
  const int32_t status = xgWKB_shape_generate_from_WKT(copy.get(), &shape);
  if (shape == &untouched) return {status, {}};
  Out owned;
  owned.p = shape;
  return {status, shape == nullptr ? Bytes{0xFF} : owned.bytes()};  // 0xFF: set to null
}

}  // namespace

TEST(WktReader, BuildsTheShapeOfWellFormedTexts) {
  const std::pair<const char*, Bytes> cases[] = {
      {"point (1.5 -2)", point(1.5, -2)},
      {"point(1.5 -2)", point(1.5, -2)},
      {"point (1 2,3 4)", point(3, 4)},                         // the point reader keeps the last pair
      {"linestring  (1 2,3 4)", linestring({{1, 2}, {3, 4}})},  // before "(" anything goes
      {"linestring (1  2,3 4)", linestring({{1, 2}, {3, 4}})},  // y's field may start blank
      {"linestring (1e3 -.5,0x10 +7)", linestring({{1000, -0.5}, {16, 7}})},
      {"linestring (1.5x 2y,a b)", linestring({{1.5, 2}, {0, 0}})},  // longest prefix, else 0
      {"point (\t 5)", point(0, 5)},                                 // x's field is the tab alone
      // The other types' well-formed texts: the round trips in wkt_writer_test.
      {"point empty", nil()},           {"linestring empty", nil()},      {"polygon empty", nil()},
      {"multipoint empty", nil()},      {"multilinestring empty", nil()}, {"multipolygon empty", nil()},
  };
  for (const auto& c : cases) EXPECT_EQ(read(c.first), std::make_pair(XGWKB_OK + 0, c.second)) << c.first;
}

TEST(WktReader, MakesNoShapeForTextsOffTheDialectAndRefusesOtherKeywords) {
  // Texts of the six types that the reader turns down make no shape but report success; the
  // reporting reader gives -204 and the offset where reading stopped (0 for a keyword refused).
  const struct { const char* text; int32_t status; std::size_t offset; } cases[] = {
      {"linestring (1 2, 3 4)", -204, 16},  // a pair may not start with a blank
      {"linestring ( 1 2,3 4)", -204, 12}, {"linestring (1 2,3 4) ", -204, 20}, {"linestring (1 2,3 4))", -204, 20},
      {"linestring 1 2,3 4", -204, 18}, {"point", -204, 5}, {"polygon  empty", -204, 14}, {"point empty ", -204, 12},
      {"linestring (1 2,3", -204, 17}, {"linestring (1 2,3 4", -204, 19}, {"linestring (", -204, 12},
      {"linestring ()", -204, 13}, {"polygon (0 0,1 1,0 0)", -204, 9}, {"polygon ((0 0,1 1),(2 2,3 3)", -204, 28},
      {"polygon ((0 0,1 1), (2 2,3 3))", -204, 19}, {"polygon ((0 0,1 1)),((2 2,3 3))", -204, 19},
      {"multilinestring ((0 0,1 1)))", -204, 27}, {"multipolygon (((0 0,1 1)),(2 2,3 3)))", -204, 27},
      {"multipolygon (((0 0,1 1)))x", -204, 26}, {"multipolygon (((0 0,1 1)),((", -204, 28},
      {"POINT (1 2)", -27, 0}, {" point (1 2)", -27, 0}, {"SingleText (1 2)", -27, 0}, {"HoriDim 1 2", -27, 0},
      {"AlignedDim (1 2)", -27, 0}, {"points (1 2)", -27, 0}, {"", -27, 0}, {"(1 2)", -27, 0}, {"Point empty", -27, 0}};
  for (const auto& c : cases) {
    EXPECT_EQ(read(c.text), std::make_pair(c.status == -204 ? 0 : c.status, Bytes())) << c.text;
    unsigned char untouched = 0, *shape = &untouched;
    std::size_t offset = 999;
    EXPECT_EQ(xgWKB_shape_from_WKT_ex(c.text, &shape, &offset), c.status) << c.text;
    EXPECT_EQ(offset, c.offset) << c.text;
    EXPECT_EQ(shape, &untouched) << c.text;
  }
  unsigned char* shape = nullptr;
  EXPECT_EQ(xgWKB_shape_generate_from_WKT(nullptr, &shape), XGWKB_E_NULL_POINTER);
  EXPECT_EQ(xgWKB_shape_from_WKT_ex(nullptr, &shape, nullptr), XGWKB_E_NULL_POINTER);
  EXPECT_EQ(xgWKB_shape_from_WKT_ex("point (1 2)", nullptr, nullptr), XGWKB_E_NULL_POINTER);
}

TEST(WktType, NamesTheCodeOfTheFirstWord) {
  const std::string long_word(200, 'p');
  const std::pair<const char*, int32_t> cases[] = {
      {"point empty", 1},  {"linestring(", 2},   {"polygon x", 3},     {"multipoint ()", 4},
      {"multilinestring", 5}, {"multipolygon", 6}, {"SingleText (", 9},  {"MultiText (", 10},
      {"HoriDim (", 11},   {"VertDim (", 12},    {"AlignedDim (", 13}, {"POINT (1 2)", 0},
      {" point (1 2)", 0}, {"", 0},              {"polygon_x (", 0},   {long_word.c_str(), 0}};
  for (const auto& [text, code] : cases) {
    int32_t type = -1;
    EXPECT_EQ((std::pair{xgWKB_shape_get_WKT_type(text, &type), type}), (std::pair{0, code})) << text;
  }
  int32_t type = -1;
  EXPECT_EQ(xgWKB_shape_get_WKT_type(nullptr, &type), XGWKB_E_NULL_POINTER);
}

TEST(WktSize, EstimatesOnlyTextsWithoutBlanksAfterTheParentheses) {
  constexpr int32_t kUntouched = -7;
  const struct { const char* text; int32_t status, size; } cases[] = {
      {"polygon empty", XGWKB_OK, 5},  {"point (1 2)", XGWKB_OK, 21},
      {"multipoint (1 2,3 4)", XGWKB_OK, kUntouched},  // every readable text has a blank
      {"multipoint (1,2)", XGWKB_OK, 51}, {"linestring (1,2,3)", XGWKB_OK, 16 * 3 + 9},
      {"multilinestring ((1,2),(3,4,5))", XGWKB_OK, 16 * 5 + 9 * 2 + 9},
      {"polygon ((1,2),(3,4))", XGWKB_OK, 16 * 4 + 4 * 2 + 9},
      {"multipolygon (((1,2)),((3,4),(5,6)))", XGWKB_OK, 16 * 6 + 4 * 3 + 9 * 2 + 9},
      {"multipoint (1,2", XGWKB_OK, kUntouched},    // ends inside the sequence
      {"polygon ((1,2),3)", XGWKB_OK, kUntouched},  // a separator out of place
      {"polygon (1,2)", XGWKB_OK, kUntouched},      // one "(" short
      {"HoriDim (1,2)", XGWKB_E_INVALID_ENTITY, 0}, {nullptr, XGWKB_E_NULL_POINTER, kUntouched},
  };
  for (const auto& c : cases) {
    int32_t size = kUntouched;
    EXPECT_EQ((std::pair{xgWKB_shape_get_WKT_size(c.text, &size), size}), (std::pair{c.status, c.size})) << c.text;
  }
}

// parse_number_field on a field (followed in the text by tail) and strtod on the field alone
// give the same bits, for chosen fields and for random ones.
TEST(NumberField, ConvertsEveryFieldAsStrtodConvertsItAlone) {
  auto check = [](const std::string& field, const std::string& tail) {
    const std::string text = field + tail;
    const double fast = xg::parse_number_field(text.c_str(), text.c_str() + field.size());
    const double slow = std::strtod(field.c_str(), nullptr);
    ASSERT_EQ(std::memcmp(&fast, &slow, sizeof fast), 0) << "field '" << field << "' before '" << tail << "'";
  };
  for (const char* field : {"1", "-1", "+1", " 2", "  -2.5", "\t3", " ", "", ".", "-.", ".5", "1e", "1e+", "1e-400",
                            "-1e400", "4.9e-324", "2.2250738585072011e-308", "0x10", "-0x1p3", "0X1P-2", "00x1",
                            "inf", "-infinity", "nan", "nan(12)", "nan(12", "1.5x", "9999999999999999999999999"}) {
    for (const char* tail : {"", ")", " 7", "3", "e5", "x1"}) check(field, tail);
  }
  std::mt19937_64 rng(31);
  const char alphabet[] = "0123456789.-+eExXpPinfaN() \t";
  char buf[64];
  for (int i = 0; i < 100000; ++i) {
    const uint64_t bits = rng();
    double v;
    std::memcpy(&v, &bits, sizeof v);
    std::string field;
    if (i % 2 == 0) {  // characters that numbers are made of
      for (uint64_t n = bits % 15, r = rng(); n > 0; --n, r /= 29) field += alphabet[r % 29];
    } else {  // round-trip decimals of any double, or many digits that are hard to round
      std::snprintf(buf, sizeof buf, i % 4 == 1 ? "%.17g" : " %.25e",
                    i % 4 == 1 ? v : std::ldexp(static_cast<double>(bits >> 11), -30));
      field = buf;
    }
    check(field, ",1");
  }
}
