// Shape blobs: sizes, walking, type queries, life cycle, extent and the error table.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "core/blob.h"
#include "support/blob_builder.h"

using namespace xgtest;

namespace {

Bytes sample_multiline() {
  return multi(XGWKB_TYPE_MULTILINESTRING, {linestring({{0, 0}, {1, 1}}),
                                            linestring({{10, -5}, {12, -4}, {11, -3}}),
                                            linestring({{-7, 20}, {-6, 21}})});
}

Bytes sample_multipolygon() {
  return multi(XGWKB_TYPE_MULTIPOLYGON, {polygon({square(0, 0, 1)}),
                                         polygon({square(10, 10, 5), square(11, 11, 1)}),
                                         polygon({square(-30, 2, 3)})});
}

}  // namespace

TEST(BlobSize, EveryGeometryTypeAtOddOffsets) {
  struct Case {
    Bytes blob;
    uint32_t size;
  };
  const Case cases[] = {
      {point(1, 2), 21},
      {linestring({{0, 0}, {1, 1}, {2, 2}}), 9 + 48},
      {linestring({}), 9},
      {polygon({square(0, 0, 1), {{0.2, 0.2}, {0.3, 0.2}, {0.3, 0.3}, {0.2, 0.2}}}), 9 + 84 + 68},
      {multi(XGWKB_TYPE_MULTIPOINT, {point(0, 0), point(1, 1), point(2, 2)}), 9 + 63},
      {multi(XGWKB_TYPE_MULTIPOINT, {}), 9},
      {sample_multiline(), 9 + 41 + 57 + 41},
      {sample_multipolygon(), 9 + 93 + 177 + 93},
  };
  for (const Case& c : cases) {
    ASSERT_EQ(c.blob.size(), c.size);  // the builder agrees with the layout table
    Misaligned m(c.blob);
    uint32_t size = 0;
    EXPECT_EQ(xgWKB_shape_get_WKB_size(m.data(), &size), 0);
    EXPECT_EQ(size, c.size);
  }
}

TEST(BlobSize, NilAndForeignTypesHaveNoSizeAndLeaveTheOutValue) {
  for (uint32_t type : {0u, 9u, 10u, 11u, 12u, 13u, 21u, 7u, 0xFFFFFFFFu}) {
    Bytes b;
    put_header(b, type);
    b.resize(64, 0);
    uint32_t size = 1234;
    EXPECT_EQ(xgWKB_shape_get_WKB_size(b.data(), &size), XGWKB_E_INVALID_SHAPE) << type;
    EXPECT_EQ(size, 1234u);
  }
  uint32_t size = 99;
  EXPECT_EQ(xgWKB_shape_get_WKB_size(nullptr, &size), XGWKB_E_NULL_POINTER);
  EXPECT_EQ(size, 0u);
}

TEST(BlobSize, MemberWithForeignTypeMakesTheMultiTypeUnsized) {
  Bytes b = multi(XGWKB_TYPE_MULTILINESTRING, {linestring({{0, 0}, {1, 1}}), point(3, 3)});
  uint32_t size = 0;
  EXPECT_EQ(xgWKB_shape_get_WKB_size(b.data(), &size), XGWKB_E_INVALID_SHAPE);
}

TEST(BlobWalk, CoordinatesAreVisitedInStorageOrder) {
  const Bytes mp = sample_multipolygon();
  Misaligned m(mp);
  std::vector<_xgWKB_POINT> seen;
  xg::for_each_coord(m.data(), [&](const unsigned char* at) { seen.push_back(xg::load_point(at)); });
  ASSERT_EQ(seen.size(), 20u);
  EXPECT_EQ(seen[5].x, 10);
  EXPECT_EQ(seen[10].x, 11);
  EXPECT_EQ(seen[15].x, -30);
  EXPECT_EQ(xg::member_at(m.data(), 2) - m.data(), 9 + 93 + 177);
  EXPECT_EQ(xg::ring_at(xg::member_at(m.data(), 1), 1) - xg::member_at(m.data(), 1), 9 + 84);
}

TEST(BlobWriter, WritesLittleEndianWithByteOrderZero) {
  unsigned char buf[9 + 32 + 1];
  buf[41] = 0xAB;
  const _xgWKB_POINT pts[2] = {{1.0, -2.0}, {0.5, 3.0}};
  xg::BlobWriter w(buf);
  w.header(XGWKB_TYPE_LINESTRING).u32(2).points(pts, 2);
  EXPECT_EQ(w.position(), buf + 41);
  EXPECT_EQ(buf[41], 0xAB);
  EXPECT_EQ(Bytes(buf, buf + 41), linestring({pts[0], pts[1]}));
}

TEST(TypeQueries, AnswerForNullAndEveryTypeCode) {
  // Columns: is_nil, is_point, is_line, is_polygon, is_multipart.
  struct Row {
    uint32_t type;
    uint32_t nil, pt, ln, pg, multi;
  };
  const Row rows[] = {{0, 1, 0, 0, 0, 0},  {1, 0, 1, 0, 0, 0},  {2, 0, 0, 1, 0, 0},
                      {3, 0, 0, 0, 1, 0},  {4, 0, 1, 0, 0, 1},  {5, 0, 0, 1, 0, 1},
                      {6, 0, 0, 0, 1, 1},  {9, 0, 0, 0, 0, 0},  {10, 0, 0, 0, 0, 0},
                      {11, 0, 0, 0, 0, 0}, {13, 0, 0, 0, 0, 0}, {21, 0, 0, 0, 0, 0}};
  for (const Row& r : rows) {
    Bytes b;
    put_header(b, r.type);
    EXPECT_EQ(xgWKB_shape_is_nil(b.data()), r.nil) << r.type;
    EXPECT_EQ(xgWKB_shape_is_point(b.data()), r.pt) << r.type;
    EXPECT_EQ(xgWKB_shape_is_line(b.data()), r.ln) << r.type;
    EXPECT_EQ(xgWKB_shape_is_polygon(b.data()), r.pg) << r.type;
    EXPECT_EQ(xgWKB_shape_is_multipart(b.data()), r.multi) << r.type;
    uint32_t type = 77;
    EXPECT_EQ(xgWKB_shape_get_type(b.data(), &type), 0);
    EXPECT_EQ(type, r.type);
  }
  EXPECT_EQ(xgWKB_shape_is_nil(nullptr) | xgWKB_shape_is_point(nullptr) | xgWKB_shape_is_line(nullptr) |
                xgWKB_shape_is_polygon(nullptr) | xgWKB_shape_is_multipart(nullptr),
            0u);
  uint32_t type = 77;
  EXPECT_EQ(xgWKB_shape_get_type(nullptr, &type), XGWKB_E_NULL_POINTER);
  EXPECT_EQ(type, 0u);
}

TEST(LifeCycle, MakeNilDuplicateAndFree) {
  unsigned char* nil = nullptr;
  EXPECT_EQ(xgWKB_shape_make_nil(0, &nil), XGWKB_E_NULL_POINTER);
  EXPECT_EQ(nil, nullptr);
  ASSERT_EQ(xgWKB_shape_make_nil(42, &nil), 0);
  EXPECT_EQ(Bytes(nil, nil + 5), xgtest::nil());

  unsigned char* copy = nullptr;
  ASSERT_EQ(xgWKB_shape_duplicate(nil, &copy), 0);  // the nil shape copies its 5 bytes
  EXPECT_EQ(Bytes(copy, copy + 5), xgtest::nil());

  const Bytes mp = sample_multipolygon();
  Misaligned m(mp);
  unsigned char* copies[2] = {copy, nullptr};
  ASSERT_EQ(xgWKB_shape_duplicate(m.data(), &copies[1]), 0);
  EXPECT_EQ(Bytes(copies[1], copies[1] + mp.size()), mp);
  EXPECT_EQ(xgWKB_shape_duplicate(nullptr, &copy), XGWKB_E_INVALID_SHAPE);

  xgWKB_shape_free_array(2, copies);
  xgWKB_shape_free(nil);
  xgWKB_shape_free(nullptr);
}

TEST(Extent, SimpleTypesAndPolygonRings) {
  _xgWKB_BOX box{};
  Misaligned pt(point(3, -4));
  ASSERT_EQ(xgWKB_shape_get_extent(pt.data(), 99, &box), 0);  // index ignored
  EXPECT_EQ(box.minx, 3);
  EXPECT_EQ(box.maxy, -4);

  Misaligned ln(linestring({{5, 1}, {-2, 7}, {3, -9}}));
  ASSERT_EQ(xgWKB_shape_get_extent(ln.data(), 0, &box), 0);
  EXPECT_EQ(box.minx, -2);
  EXPECT_EQ(box.miny, -9);
  EXPECT_EQ(box.maxx, 5);
  EXPECT_EQ(box.maxy, 7);

  Misaligned pg(polygon({square(0, 0, 10), square(2, 3, 1)}));
  for (int32_t part : {0, 1}) {
    ASSERT_EQ(xgWKB_shape_get_extent(pg.data(), part, &box), 0);
    EXPECT_EQ(box.maxx, 10);
  }
  ASSERT_EQ(xgWKB_shape_get_extent(pg.data(), 2, &box), 0);
  EXPECT_EQ(box.minx, 2);
  EXPECT_EQ(box.maxy, 4);
  EXPECT_EQ(xgWKB_shape_get_extent(pg.data(), 3, &box), XGWKB_E_NO_PART);
  EXPECT_EQ(xgWKB_shape_get_extent(pg.data(), -1, &box), XGWKB_E_NO_PART);

  Misaligned mpt(multi(XGWKB_TYPE_MULTIPOINT, {point(1, 1), point(-1, 5)}));
  ASSERT_EQ(xgWKB_shape_get_extent(mpt.data(), 0, &box), 0);
  EXPECT_EQ(box.minx, -1);
  EXPECT_EQ(box.maxy, 5);
}

TEST(Extent, MultiTypesCountPartsFromTheSecondMember) {
  // Part j in 1..k-1 answers member j+1 alone; parts 0 and k answer the union.
  struct Case {
    Bytes blob;
    int32_t part;
    _xgWKB_BOX want;
  };
  const _xgWKB_BOX all_lines{-7, -5, 12, 21};
  const _xgWKB_BOX all_polys{-30, 0, 15, 15};
  const Case cases[] = {
      {sample_multiline(), 0, all_lines},
      {sample_multiline(), 3, all_lines},
      {sample_multiline(), 1, {10, -5, 12, -3}},
      {sample_multiline(), 2, {-7, 20, -6, 21}},
      {sample_multipolygon(), 0, all_polys},
      {sample_multipolygon(), 1, {10, 10, 15, 15}},
      {sample_multipolygon(), 2, {-30, 2, -27, 5}},
      {sample_multipolygon(), 3, all_polys},
  };
  for (const Case& c : cases) {
    Misaligned m(c.blob);
    _xgWKB_BOX box{};
    ASSERT_EQ(xgWKB_shape_get_extent(m.data(), c.part, &box), 0);
    EXPECT_EQ(box.minx, c.want.minx) << c.part;
    EXPECT_EQ(box.miny, c.want.miny) << c.part;
    EXPECT_EQ(box.maxx, c.want.maxx) << c.part;
    EXPECT_EQ(box.maxy, c.want.maxy) << c.part;
  }
  _xgWKB_BOX box{};
  EXPECT_EQ(xgWKB_shape_get_extent(sample_multiline().data(), 4, &box), XGWKB_E_NO_PART);
  EXPECT_EQ(xgWKB_shape_get_extent(nil().data(), 0, &box), XGWKB_E_INVALID_SHAPE);
  EXPECT_EQ(xgWKB_shape_get_extent(nullptr, 0, &box), XGWKB_E_NULL_POINTER);
}

TEST(SharedOperations, ToleranceTestsAreStrict) {
  const _xgWKB_POINT a{1.0, 1.0}, b{1.5, 1.0};
  EXPECT_EQ(xg::wkb_point_equal_tol(a, b, 0.5), 0);  // exactly t apart: not equal
  EXPECT_EQ(xg::wkb_point_equal_tol(a, b, 0.5000001), 1);
  EXPECT_EQ(xg::wkb_point_equal_tol(a, a, 0.0), 0);

  const _xgWKB_BOX left{0, 0, 1, 1}, right{2, 0, 3, 1};
  EXPECT_EQ(xg::wkb_boxes_disjoint_tol(left, right, 0.5), 1);
  EXPECT_EQ(xg::wkb_boxes_disjoint_tol(left, right, 1.0), 0);  // touching within t
  EXPECT_EQ(xg::wkb_boxes_disjoint_tol(right, left, 0.99), 1);

  _xgWKB_BOX box{};
  xg::wkb_box_of_two_points({3, -1}, {-2, 4}, &box);
  EXPECT_EQ(box.minx, -2);
  EXPECT_EQ(box.miny, -1);
  EXPECT_EQ(box.maxx, 3);
  EXPECT_EQ(box.maxy, 4);
}

TEST(SharedOperations, ClosednessOfLinesAndOtherTypes) {
  const Bytes closed = linestring({{0, 0}, {1, 0}, {0.00005, 0.00005}});
  const Bytes open = linestring({{0, 0}, {1, 0}, {0, 1}});
  EXPECT_EQ(xg::wkb_line_is_closed_tol(closed.data(), 0.0001), 1);
  EXPECT_EQ(xg::wkb_line_is_closed_tol(open.data(), 0.0001), 0);
  EXPECT_EQ(xg::wkb_line_is_closed_tol(linestring({{0, 0}}).data(), 0.0001), 0);
  // Not a linestring: every non-nil type counts as closed, the nil shape as open.
  EXPECT_EQ(xg::wkb_line_is_closed_tol(point(0, 0).data(), 0.0001), 1);
  EXPECT_EQ(xg::wkb_line_is_closed_tol(nil().data(), 0.0001), 0);

  EXPECT_EQ(xg::wkb_multiline_is_closed_tol(multi(XGWKB_TYPE_MULTILINESTRING, {}).data(), 0.0001), 1);
  EXPECT_EQ(xg::wkb_multiline_is_closed_tol(multi(XGWKB_TYPE_MULTILINESTRING, {closed, closed}).data(), 0.0001), 1);
  EXPECT_EQ(xg::wkb_multiline_is_closed_tol(multi(XGWKB_TYPE_MULTILINESTRING, {closed, open}).data(), 0.0001), 0);
}

namespace {

std::string describe(int32_t code, bool utf8) {
  char* msg = nullptr;
  const uint32_t found = utf8 ? xgWKB_shape_get_error_description_utf8(code, &msg)
                              : xgWKB_shape_get_error_description(code, &msg);
  if (!found) return "<none>";
  std::string s(msg);
  xgWKB_shape_free(msg);
  return s;
}

}  // namespace

TEST(ErrorTable, MessagesAreTheStoredGbkBytes) {
  EXPECT_EQ(describe(-65, false), "\xB8\xF8\xB6\xA8\xB5\xC4\xD6\xB8\xD5\xEB\xCE\xAA\xBF\xD5\xBB\xF2\xCE\xDE\xD0\xA7");
  EXPECT_EQ(describe(-134, false),
            "\xB8\xF8\xB6\xA8\xB5\xC4shape\xB6\xD4\xCF\xF3\xBE\xE4\xB1\xFA\xCE\xDE\xD0\xA7");
  // First match wins: the later -36 and 0 entries are shadowed.
  EXPECT_EQ(describe(-36, false), "\xB3\xAC\xB9\xFD\xD6\xB8\xB6\xA8\xB5\xC4\xD7\xEE\xB4\xF3\xB5\xE3\xCA\xFD");
  EXPECT_EQ(describe(0, false), "\xB3\xC9\xB9\xA6");
  EXPECT_EQ(describe(5, false), "\xC4\xDA\xB4\xE6\xB7\xD6\xC5\xE4\xB4\xED\xCE\xF3\xB2\xA2\xCD\xCB\xB3\xF6");
  EXPECT_EQ(describe(-58, false).substr(0, 8), "envelope");
}

TEST(ErrorTable, Utf8MessagesMatchTheGbkEntries) {
  EXPECT_EQ(describe(0, true), "成功");
  EXPECT_EQ(describe(-36, true), "超过指定的最大点数");
  EXPECT_EQ(describe(-135, true), "给定的shape part索引号不存在");
  EXPECT_EQ(describe(5, true), "内存分配错误并退出");
}

TEST(ErrorTable, UnknownCodesAllocateNothing) {
  for (int32_t code : {-500, -501, 1, -2, -4, 6, -100000}) {
    char* msg = reinterpret_cast<char*>(0x1);
    EXPECT_EQ(xgWKB_shape_get_error_description(code, &msg), 0u) << code;
    EXPECT_EQ(msg, reinterpret_cast<char*>(0x1));
  }
}

TEST(ErrorTable, EachCallReturnsAFreshCopy) {
  char* a = nullptr;
  char* b = nullptr;
  ASSERT_EQ(xgWKB_shape_get_error_description(-1, &a), 1u);
  ASSERT_EQ(xgWKB_shape_get_error_description(-1, &b), 1u);
  EXPECT_NE(a, b);
  EXPECT_STREQ(a, b);
  xgWKB_shape_free(a);
  xgWKB_shape_free(b);
}
