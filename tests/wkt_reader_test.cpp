// The WKT reader: which texts it accepts and what it builds, the type and size inspections,
// round trips through the writer, and the conversion of number fields.
#include <gtest/gtest.h>
#include <malloc.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>
#include <string>

#include "support/blob_builder.h"
#include "wkt/number_format.h"
#include "xggeokit.h"

using namespace xgtest;

namespace {

struct ReadResult {
  int32_t status;
  bool made;
  Bytes blob;  // as many bytes as xgWKB_shape_get_WKB_size says (nil: 5)
  std::size_t allocated;
};

// Reads text from an exactly sized heap copy; the shape, if any, is copied out and released.
ReadResult read(const std::string& text) {
  std::unique_ptr<char[]> copy(new char[text.size() + 1]);
  std::memcpy(copy.get(), text.c_str(), text.size() + 1);
  unsigned char* shape = nullptr;
  ReadResult r{xgWKB_shape_generate_from_WKT(copy.get(), &shape), shape != nullptr, {}, 0};
  if (shape != nullptr) {
    uint32_t size = 5;
    if (!xgWKB_shape_is_nil(shape)) {
      EXPECT_EQ(xgWKB_shape_get_WKB_size(shape, &size), XGWKB_OK) << text;
    }
    r.blob.assign(shape, shape + size);
    r.allocated = malloc_usable_size(shape);
    xgWKB_shape_free(shape);
  }
  return r;
}

std::string write(const Bytes& blob) {
  char* text = nullptr;
  EXPECT_EQ(xgWKB_shape_generate_to_WKT(blob.data(), &text), XGWKB_OK);
  std::string s = text != nullptr ? text : "";
  xgWKB_shape_free_WKT(text);
  return s;
}

}  // namespace

TEST(WktReader, BuildsTheShapeOfWellFormedTexts) {
  const std::pair<const char*, Bytes> cases[] = {
      {"point (1.5 -2)", point(1.5, -2)},
      {"point(1.5 -2)", point(1.5, -2)},
      {"point (1 2,3 4)", point(3, 4)},  // the point reader keeps the last pair
      {"linestring  (1 2,3 4)", linestring({{1, 2}, {3, 4}})},  // before "(" anything goes
      {"linestring (1  2,3 4)", linestring({{1, 2}, {3, 4}})},  // y's field may start blank
      {"linestring (1e3 -.5,0x10 +7)", linestring({{1000, -0.5}, {16, 7}})},
      {"linestring (1.5x 2y,a b)", linestring({{1.5, 2}, {0, 0}})},  // longest prefix, else 0
      {"point (\t 5)", point(0, 5)},                                 // x's field is the tab alone
      {"multipoint (1 2)", multi(XGWKB_TYPE_MULTIPOINT, {point(1, 2)})},
      {"multilinestring ((0 0,1 1),(2 2,3 3))",
       multi(XGWKB_TYPE_MULTILINESTRING,
             {linestring({{0, 0}, {1, 1}}), linestring({{2, 2}, {3, 3}})})},
      {"polygon ((0 0,1 0,0 0),(5 5,6 5))", polygon({{{0, 0}, {1, 0}, {0, 0}}, {{5, 5}, {6, 5}}})},
      {"multipolygon (((0 0,1 0),(2 2,3 3)),((9 9,8 8)))",
       multi(XGWKB_TYPE_MULTIPOLYGON,
             {polygon({{{0, 0}, {1, 0}}, {{2, 2}, {3, 3}}}), polygon({{{9, 9}, {8, 8}}})})},
  };
  for (const auto& c : cases) {
    const ReadResult r = read(c.first);
    EXPECT_EQ(r.status, XGWKB_OK) << c.first;
    EXPECT_EQ(r.blob, c.second) << c.first;
  }
}

TEST(WktReader, MakesNoShapeButReportsSuccessForTextsOffTheDialect) {
  for (const char* text :
       {"linestring (1 2, 3 4)",  // blank after a comma
        "linestring ( 1 2,3 4)", "linestring (1 2,3 4) ", "linestring (1 2,3 4))",
        "linestring 1 2,3 4", "point", "polygon  empty",  // no "(" at all
        "linestring (1 2,3", "linestring (1 2,3 4", "linestring (", "linestring ()",
        "polygon (0 0,1 1,0 0)",  // one "(" short
        "polygon ((0 0,1 1),(2 2,3 3)", "polygon ((0 0,1 1), (2 2,3 3))",
        "polygon ((0 0,1 1)),((2 2,3 3))", "multilinestring ((0 0,1 1)))",
        "multipolygon (((0 0,1 1)),(2 2,3 3)))", "multipolygon (((0 0,1 1)))x",
        "multipolygon (((0 0,1 1)),(("}) {
    const ReadResult r = read(text);
    EXPECT_EQ(r.status, XGWKB_OK) << text;
    EXPECT_FALSE(r.made) << text;
  }
}

TEST(WktReader, RejectsKeywordsOtherThanTheSixGeometries) {
  for (const char* text : {"POINT (1 2)", " point (1 2)", "SingleText (1 2)", "HoriDim 1 2",
                           "AlignedDim (1 2)", "points (1 2)", "", "(1 2)", "Point empty"}) {
    unsigned char untouched = 0;
    unsigned char* shape = &untouched;
    EXPECT_EQ(xgWKB_shape_generate_from_WKT(text, &shape), XGWKB_E_INVALID_ENTITY) << text;
    EXPECT_EQ(shape, &untouched);
  }
  unsigned char* shape = nullptr;
  EXPECT_EQ(xgWKB_shape_generate_from_WKT(nullptr, &shape), XGWKB_E_NULL_POINTER);
}

TEST(WktReader, ReadsTheSixEmptyTextsAsTheNilShape) {
  for (const char* text : {"point empty", "linestring empty", "polygon empty", "multipoint empty",
                           "multilinestring empty", "multipolygon empty"}) {
    EXPECT_EQ(read(text).blob, nil()) << text;
  }
  EXPECT_FALSE(read("point empty ").made);
}

TEST(WktReader, GivesLinestringsTheGenerousAllocation) {
  const ReadResult line = read("linestring (1 2,3 4)");
  EXPECT_EQ(line.blob.size(), 41u);
#if defined(__SANITIZE_ADDRESS__)
  EXPECT_EQ(line.allocated, 51u);  // the sanitizer's allocator reports the request
#else
  EXPECT_GE(line.allocated, 51u);
#endif
}

TEST(WktReader, RoundTripsEveryTypeThroughTheWriter) {
  std::mt19937 rng(99);
  std::uniform_int_distribution<int> coord(-1000000, 1000000);
  auto value = [&] { return coord(rng) / 64.0; };  // exact in six decimals
  auto run = [&](std::size_t n) {
    Ring r;
    for (std::size_t i = 0; i < n; ++i) r.push_back({value(), value()});
    return r;
  };
  for (int iter = 0; iter < 300; ++iter) {
    const std::size_t n = 2 + iter % 7;
    for (const Bytes& b :
         {point(value(), value()), linestring(run(n)), polygon({run(n), run(3), run(2)}),
          multi(XGWKB_TYPE_MULTIPOINT, {point(value(), value()), point(value(), value())}),
          multi(XGWKB_TYPE_MULTILINESTRING, {linestring(run(2)), linestring(run(n))}),
          multi(XGWKB_TYPE_MULTIPOLYGON, {polygon({run(n)}), polygon({run(3), run(2)})})}) {
      EXPECT_EQ(read(write(b)).blob, b) << write(b);
    }
  }
}

TEST(WktType, NamesTheCodeOfTheFirstWord) {
  const std::string long_word(200, 'p');
  const std::pair<const char*, int32_t> cases[] = {{"point empty", 1},     {"linestring(", 2},
                                                   {"polygon x", 3},       {"multipoint ()", 4},
                                                   {"multilinestring", 5}, {"multipolygon", 6},
                                                   {"SingleText (", 9},    {"MultiText (", 10},
                                                   {"HoriDim (", 11},      {"VertDim (", 12},
                                                   {"AlignedDim (", 13},   {"POINT (1 2)", 0},
                                                   {" point (1 2)", 0},    {"", 0},
                                                   {"polygon_x (", 0},     {long_word.c_str(), 0}};
  for (const auto& c : cases) {
    int32_t type = -1;
    EXPECT_EQ(xgWKB_shape_get_WKT_type(c.first, &type), XGWKB_OK) << c.first;
    EXPECT_EQ(type, c.second) << c.first;
  }
  int32_t type = -1;
  EXPECT_EQ(xgWKB_shape_get_WKT_type(nullptr, &type), XGWKB_E_NULL_POINTER);
}

TEST(WktSize, EstimatesOnlyTextsWithoutBlanksAfterTheParentheses) {
  constexpr int32_t kUntouched = -7;
  const struct {
    const char* text;
    int32_t status;
    int32_t size;
  } cases[] = {
      {"polygon empty", XGWKB_OK, 5},
      {"point (1 2)", XGWKB_OK, 21},
      {"multipoint (1 2,3 4)", XGWKB_OK, kUntouched},  // every readable text has a blank
      {"multipoint (1,2)", XGWKB_OK, 51},
      {"linestring (1,2,3)", XGWKB_OK, 16 * 3 + 9},
      {"multilinestring ((1,2),(3,4,5))", XGWKB_OK, 16 * 5 + 9 * 2 + 9},
      {"polygon ((1,2),(3,4))", XGWKB_OK, 16 * 4 + 4 * 2 + 9},
      {"multipolygon (((1,2)),((3,4),(5,6)))", XGWKB_OK, 16 * 6 + 4 * 3 + 9 * 2 + 9},
      {"multipoint (1,2", XGWKB_OK, kUntouched},    // ends inside the sequence
      {"polygon ((1,2),3)", XGWKB_OK, kUntouched},  // a separator out of place
      {"polygon (1,2)", XGWKB_OK, kUntouched},      // one "(" short
      {"HoriDim (1,2)", XGWKB_E_INVALID_ENTITY, 0},
      {nullptr, XGWKB_E_NULL_POINTER, kUntouched},
  };
  for (const auto& c : cases) {
    int32_t size = kUntouched;
    EXPECT_EQ(xgWKB_shape_get_WKT_size(c.text, &size), c.status) << c.text;
    EXPECT_EQ(size, c.size) << c.text;
  }
}

// ---- number fields -------------------------------------------------------------------------

namespace {

// parse_number_field on field (followed in the text by tail) and strtod on the field alone must
// give the same bits.
void expect_strtod_result(const std::string& field, const std::string& tail) {
  const std::string text = field + tail;
  const double fast = xg::parse_number_field(text.c_str(), text.c_str() + field.size());
  const double slow = std::strtod(field.c_str(), nullptr);
  uint64_t a, b;
  std::memcpy(&a, &fast, sizeof a);
  std::memcpy(&b, &slow, sizeof b);
  ASSERT_EQ(a, b) << "field '" << field << "' before '" << tail << "'";
}

}  // namespace

TEST(NumberField, ConvertsEveryFieldAsStrtodConvertsItAlone) {
  for (const char* field : {"1",
                            "-1",
                            "+1",
                            " 2",
                            "  -2.5",
                            "\t3",
                            " ",
                            "",
                            ".",
                            "-.",
                            ".5",
                            "1e",
                            "1e+",
                            "1e-400",
                            "-1e400",
                            "4.9e-324",
                            "2.2250738585072011e-308",
                            "0x10",
                            "-0x1p3",
                            "0X1P-2",
                            "00x1",
                            "inf",
                            "-infinity",
                            "nan",
                            "nan(12)",
                            "nan(12",
                            "1.5x",
                            "9999999999999999999999999"}) {
    for (const char* tail : {"", ")", " 7", "3", "e5", "x1"}) expect_strtod_result(field, tail);
  }
}

TEST(NumberField, MatchesStrtodOnRandomFields) {
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
    expect_strtod_result(field, ",1");
  }
}
