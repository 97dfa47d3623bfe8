// Shape blobs: sizes, walking, type queries, life cycle, extent and the error table.
#include <gtest/gtest.h>

#include <iconv.h>

#include <set>
#include <string>

#include "core/blob.h"
#include "core/error_table.h"
#include "support/blob_builder.h"

using namespace xgtest;

namespace {

const Bytes kMultiline = multiline({{{0, 0}, {1, 1}}, {{10, -5}, {12, -4}, {11, -3}}, {{-7, 20}, {-6, 21}}});
const Bytes kMultipolygon = multi(XGWKB_TYPE_MULTIPOLYGON, {polygon({square(0, 0, 1)}),
                                                            polygon({square(10, 10, 5), square(11, 11, 1)}),
                                                            polygon({square(-30, 2, 3)})});

Bytes header_only(uint32_t type) {
  Bytes b = header(type);
  b.resize(64, 0);
  return b;
}

std::string describe(int32_t code, bool utf8 = false) {
  char* msg = reinterpret_cast<char*>(0x1);
  const uint32_t found = utf8 ? xgWKB_shape_get_error_description_utf8(code, &msg)
                              : xgWKB_shape_get_error_description(code, &msg);
  if (!found) return msg == reinterpret_cast<char*>(0x1) ? "<none>" : "<touched>";
  std::string s(msg);
  xgWKB_shape_free(msg);  // a fresh copy per call, or the sanitizers object
  return s;
}

// GBK text converted to UTF-8 by the C library, or "<iconv failed>".
std::string gbk_to_utf8(const char* gbk) {
  iconv_t cd = iconv_open("UTF-8", "GBK");
  if (cd == reinterpret_cast<iconv_t>(-1)) return "<iconv failed>";
  std::string in(gbk), out(4 * in.size() + 4, '\0');
  char* src = in.data();
  char* dst = out.data();
  std::size_t left = in.size(), room = out.size();
  const bool ok = iconv(cd, &src, &left, &dst, &room) != static_cast<std::size_t>(-1) && left == 0;
  iconv_close(cd);
  return ok ? out.substr(0, out.size() - room) : "<iconv failed>";
}

}  // namespace

TEST(BlobSize, EveryGeometryTypeAtOddOffsetsIsSizedAndWalked) {
  const struct { Bytes blob; uint32_t size, coords; } cases[] = {
      {point(1, 2), 21, 1},
      {linestring({{0, 0}, {1, 1}, {2, 2}}), 9 + 48, 3},
      {linestring({}), 9, 0},
      {polygon({square(0, 0, 1), {{0.2, 0.2}, {0.3, 0.2}, {0.3, 0.3}, {0.2, 0.2}}}), 9 + 84 + 68, 9},
      {multi(XGWKB_TYPE_MULTIPOINT, {point(0, 0), point(1, 1), point(2, 2)}), 9 + 63, 3},
      {multi(XGWKB_TYPE_MULTIPOINT, {}), 9, 0},
      {kMultiline, 9 + 41 + 57 + 41, 7},
      {kMultipolygon, 9 + 93 + 177 + 93, 20},
  };
  for (const auto& c : cases) {
    ASSERT_EQ(c.blob.size(), c.size);  // the builder agrees with the layout table
    Misaligned m(c.blob);
    uint32_t size = 0, coords = 0;
    EXPECT_EQ(xgWKB_shape_get_WKB_size(m.data(), &size), 0);
    EXPECT_EQ(size, c.size);
    xg::for_each_coord(m.data(), [&](const unsigned char*) { ++coords; });
    EXPECT_EQ(coords, c.coords) << c.size;
  }
  std::vector<double> xs;  // storage order, across members and rings
  xg::for_each_coord(Misaligned(kMultipolygon).data(), [&](const unsigned char* p) { xs.push_back(xg::load_f64(p)); });
  EXPECT_EQ(std::vector<double>({xs[5], xs[10], xs[15]}), std::vector<double>({10, 11, -30}));
}

TEST(BlobSize, NilForeignTypesAndForeignMembersHaveNoSize) {
  Bytes bad_member = multi(XGWKB_TYPE_MULTILINESTRING, {linestring({{0, 0}, {1, 1}}), point(3, 3)});
  bad_member.resize(80);
  for (uint32_t type : {0u, 9u, 10u, 13u, 21u, 7u, 0xFFFFFFFFu, 100u}) {
    const Bytes b = type == 100 ? bad_member : header_only(type);
    uint32_t size = 1234;
    EXPECT_EQ(xgWKB_shape_get_WKB_size(b.data(), &size), XGWKB_E_INVALID_SHAPE) << type;
    EXPECT_EQ(size, 1234u);
  }
  uint32_t size = 99;
  EXPECT_EQ((std::pair{xgWKB_shape_get_WKB_size(nullptr, &size), size}), (std::pair{XGWKB_E_NULL_POINTER + 0, 0u}));
}

TEST(TypeQueries, AnswerForNullAndEveryTypeCode) {
  using Query = uint32_t (*)(const unsigned char*);
  const Query queries[] = {xgWKB_shape_is_nil, xgWKB_shape_is_point, xgWKB_shape_is_line,
                           xgWKB_shape_is_polygon, xgWKB_shape_is_multipart};
  const std::pair<uint32_t, const char*> rows[] = {
      {0, "10000"}, {1, "01000"},  {2, "00100"},  {3, "00010"},  {4, "01001"},  {5, "00101"},
      {6, "00011"}, {9, "00000"}, {10, "00000"}, {11, "00000"}, {13, "00000"}, {21, "00000"}};
  for (const auto& r : rows) {
    const Bytes b = header_only(r.first);
    for (int q = 0; q < 5; ++q)
      EXPECT_EQ(queries[q](b.data()), static_cast<uint32_t>(r.second[q] - '0')) << r.first << " " << q;
    uint32_t type = 77;
    EXPECT_EQ((std::pair{xgWKB_shape_get_type(b.data(), &type), type}), (std::pair{0, r.first}));
  }
  for (Query q : queries) EXPECT_EQ(q(nullptr), 0u);
  uint32_t type = 77;
  EXPECT_EQ((std::pair{xgWKB_shape_get_type(nullptr, &type), type}), (std::pair{XGWKB_E_NULL_POINTER + 0, 0u}));
}

TEST(LifeCycle, MakeNilDuplicateAndFree) {
  unsigned char *nil = nullptr, *copies[2] = {nullptr, nullptr};
  EXPECT_EQ(xgWKB_shape_make_nil(0, &nil), XGWKB_E_NULL_POINTER);
  EXPECT_EQ(nil, nullptr);
  ASSERT_EQ(xgWKB_shape_make_nil(42, &nil), 0);
  ASSERT_EQ(xgWKB_shape_duplicate(nil, &copies[0]), 0);  // the nil shape copies its 5 bytes
  ASSERT_EQ(xgWKB_shape_duplicate(Misaligned(kMultipolygon).data(), &copies[1]), 0);
  EXPECT_EQ(Bytes(nil, nil + 5), xgtest::nil());
  EXPECT_EQ(Bytes(copies[0], copies[0] + 5), xgtest::nil());
  EXPECT_EQ(Bytes(copies[1], copies[1] + kMultipolygon.size()), kMultipolygon);
  EXPECT_EQ(xgWKB_shape_duplicate(nullptr, &nil), XGWKB_E_INVALID_SHAPE);
  xgWKB_shape_free_array(2, copies);
  xgWKB_shape_free(nil);
  xgWKB_shape_free(nullptr);
}

TEST(Extent, IndexRulesOfEachType) {
  // Multi-types count parts from the second member: part j in 1..k-1 answers member j+1 alone,
  // parts 0 and k the union.
  const _xgWKB_BOX lines{-7, -5, 12, 21}, polys{-30, 0, 15, 15}, outer{0, 0, 10, 10}, none{};
  const Bytes poly = polygon({square(0, 0, 10), square(2, 3, 1)});
  constexpr int32_t kNoPart = XGWKB_E_NO_PART;
  const struct { Bytes blob; int32_t part, status; _xgWKB_BOX want; } cases[] = {
      {point(3, -4), 99, 0, {3, -4, 3, -4}},  // index ignored
      {linestring({{5, 1}, {-2, 7}, {3, -9}}), 7, 0, {-2, -9, 5, 7}},
      {multi(XGWKB_TYPE_MULTIPOINT, {point(1, 1), point(-1, 5)}), 3, 0, {-1, 1, 1, 5}},
      {poly, 0, 0, outer},         {poly, 1, 0, outer},         {poly, 2, 0, {2, 3, 3, 4}},
      {poly, 3, kNoPart, none},    {poly, -1, kNoPart, none},   {nil(), 0, XGWKB_E_INVALID_SHAPE, none},
      {kMultiline, 0, 0, lines},   {kMultiline, 1, 0, {10, -5, 12, -3}}, {kMultiline, 2, 0, {-7, 20, -6, 21}},
      {kMultiline, 3, 0, lines},   {kMultiline, 4, kNoPart, none},
      {kMultipolygon, 0, 0, polys}, {kMultipolygon, 1, 0, {10, 10, 15, 15}}, {kMultipolygon, 2, 0, {-30, 2, -27, 5}},
      {kMultipolygon, 3, 0, polys},
  };
  for (const auto& c : cases) {
    Misaligned m(c.blob);
    _xgWKB_BOX box{};
    EXPECT_EQ(xgWKB_shape_get_extent(m.data(), c.part, &box), c.status) << c.blob[1] << "/" << c.part;
    if (c.status != 0) continue;
    EXPECT_EQ(std::vector<double>({box.minx, box.miny, box.maxx, box.maxy}),
              std::vector<double>({c.want.minx, c.want.miny, c.want.maxx, c.want.maxy}))
        << c.blob[1] << "/" << c.part;
  }
  _xgWKB_BOX box{};
  EXPECT_EQ(xgWKB_shape_get_extent(nullptr, 0, &box), XGWKB_E_NULL_POINTER);
}

TEST(ErrorTable, MessagesAreTheStoredBytesAndTheFirstMatchWins) {
  EXPECT_EQ(describe(-65), "\xB8\xF8\xB6\xA8\xB5\xC4\xD6\xB8\xD5\xEB\xCE\xAA\xBF\xD5\xBB\xF2\xCE\xDE\xD0\xA7");
  // The later -36 and 0 entries are shadowed.
  EXPECT_EQ(describe(-36), "\xB3\xAC\xB9\xFD\xD6\xB8\xB6\xA8\xB5\xC4\xD7\xEE\xB4\xF3\xB5\xE3\xCA\xFD");
  EXPECT_EQ(describe(0), "\xB3\xC9\xB9\xA6");
  EXPECT_EQ(describe(-36, true), "超过指定的最大点数");
  EXPECT_EQ(describe(-135, true), "给定的shape part索引号不存在");
  for (int32_t code : {-500, 1, -2, 6, -100000}) {
    EXPECT_EQ(describe(code), "<none>") << code;
    EXPECT_EQ(describe(code, true), "<none>") << code;
  }
}

TEST(ErrorTable, EveryGbkMessageIsItsUtf8TwinAndEveryFirstEntryIsFound) {
  std::size_t count = 0;
  const xg::ErrorEntry* table = xg::error_table(&count);
  ASSERT_EQ(count, 66u);  // the 62 long-standing entries and the four interchange statuses
  std::set<int32_t> seen;
  for (std::size_t i = 0; i < count; ++i) {
    const xg::ErrorEntry& e = table[i];
    EXPECT_EQ(gbk_to_utf8(e.gbk), e.utf8) << "entry " << i + 1 << ", code " << e.code;
    if (!seen.insert(e.code).second) continue;  // shadowed by an earlier entry
    EXPECT_EQ(describe(e.code), e.gbk) << e.code;
    EXPECT_EQ(describe(e.code, true), e.utf8) << e.code;
  }
  EXPECT_EQ(seen.size(), 64u);  // two codes appear twice
}
