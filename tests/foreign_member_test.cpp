// Multi-type shapes holding a member of another type (a multipoint with a linestring inside):
// every export that walks the members refuses them with -134 instead of reading or writing past
// what the counts promise.  The blobs sit at the end of their heap buffers, so the sanitizer
// build reports any read beyond them.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "core/blob.h"
#include "support/blob_builder.h"

using namespace xgtest;

namespace {

// A long line, so that treating it as a point or a polygon runs far past the buffer.
Ring long_line() {
  Ring r;
  for (int i = 0; i < 40; ++i) r.push_back({double(i), double(i % 3)});
  return r;
}

struct ForeignCase {
  const char* name;
  Bytes blob;
};

std::vector<ForeignCase> foreign_cases() {
  const Bytes line = linestring(long_line());
  const Bytes poly = polygon({square(0, 0, 4), square(1, 1, 1)});
  return {
      {"multipoint holding a linestring", multi(XGWKB_TYPE_MULTIPOINT, {point(1, 2), line})},
      {"multipoint holding a polygon", multi(XGWKB_TYPE_MULTIPOINT, {poly, point(1, 2)})},
      {"multilinestring holding a point", multi(XGWKB_TYPE_MULTILINESTRING, {line, point(3, 4), line})},
      {"multilinestring holding a polygon", multi(XGWKB_TYPE_MULTILINESTRING, {poly})},
      {"multipolygon holding a linestring", multi(XGWKB_TYPE_MULTIPOLYGON, {poly, line})},
      {"multipolygon holding a multipoint",
       multi(XGWKB_TYPE_MULTIPOLYGON, {multi(XGWKB_TYPE_MULTIPOINT, {point(0, 0), point(1, 1)})})},
  };
}

unsigned char* const kUntouched = reinterpret_cast<unsigned char*>(0x1);

}  // namespace

TEST(ForeignMember, ConversionsRefuseAndStoreNothing) {
  for (const ForeignCase& c : foreign_cases()) {
    SCOPED_TRACE(c.name);
    const Misaligned shape(c.blob);
    unsigned char* out = kUntouched;
    EXPECT_EQ(xgWKB_shape_as_line(shape.data(), &out), XGWKB_E_INVALID_SHAPE);
    EXPECT_EQ(out, kUntouched);
    if (c.blob[1] != XGWKB_TYPE_MULTIPOINT) {  // a multipoint's boundary is nil without a walk
      out = kUntouched;
      EXPECT_EQ(xgWKB_shape_get_boundary(shape.data(), &out), XGWKB_E_INVALID_SHAPE);
      EXPECT_EQ(out, kUntouched);
    }
    out = kUntouched;
    EXPECT_EQ(xgWKB_shape_as_point(shape.data(), &out), XGWKB_E_INVALID_SHAPE);
    EXPECT_EQ(out, kUntouched);
    char* wkt = reinterpret_cast<char*>(kUntouched);
    EXPECT_EQ(xgWKB_shape_generate_to_WKT(shape.data(), &wkt), XGWKB_E_INVALID_SHAPE);
    EXPECT_EQ(wkt, reinterpret_cast<char*>(kUntouched));
  }
}

TEST(ForeignMember, PointCopiesStayInsideArraysSizedFromTheCounts) {
  for (const ForeignCase& c : foreign_cases()) {
    SCOPED_TRACE(c.name);
    const Misaligned shape(c.blob);
    // Arrays sized as a caller sizes them: one slot per member (a multipoint's point count is its
    // member count) and never fewer than the exports report.
    uint32_t points = 0, parts = 0;
    ASSERT_EQ(xgWKB_shape_get_num_parts(shape.data(), &parts), XGWKB_OK);
    xgWKB_shape_get_num_points(shape.data(), 0, 0, &points);
    std::vector<_xgWKB_POINT> pts(points < parts ? parts : points);
    std::vector<int32_t> part_offsets(parts + 1), subpart_offsets(parts + 1);
    EXPECT_EQ(xgWKB_shape_get_all_points(shape.data(), part_offsets.data(), subpart_offsets.data(),
                                         pts.data()),
              XGWKB_E_INVALID_SHAPE);
  }
}

TEST(ForeignMember, ValidationRefusesMultisWithForeignMembers) {
  for (const ForeignCase& c : foreign_cases()) {
    if (c.blob[1] == XGWKB_TYPE_MULTIPOINT) continue;  // multipoints are valid without a look inside
    SCOPED_TRACE(c.name);
    const Misaligned shape(c.blob);
    int32_t status = 0;
    EXPECT_EQ(xgWKB_shape_check_WKBdata(shape.data(), &status), 0u);
    EXPECT_EQ(status, XGWKB_E_INVALID_SHAPE);
  }
}

TEST(ForeignMember, MemberWalkStopsBeforeTheForeignMember) {
  const Bytes blob = multi(XGWKB_TYPE_MULTILINESTRING,
                           {linestring({{0, 0}, {1, 1}}), point(5, 5), linestring({{2, 2}, {3, 3}})});
  const Misaligned shape(blob);
  std::vector<uint32_t> seen;
  EXPECT_FALSE(
      xg::for_each_member(shape.data(), [&](const unsigned char*, uint32_t i) { seen.push_back(i); }));
  EXPECT_EQ(seen, std::vector<uint32_t>{0});
  uint32_t coords = 0;
  EXPECT_FALSE(xg::for_each_coord(shape.data(), [&](const unsigned char*) { ++coords; }));
  EXPECT_EQ(coords, 2u);
}

TEST(ForeignMember, MeasuresAndIndexedAccessRefuse) {
  for (const ForeignCase& c : foreign_cases()) {
    SCOPED_TRACE(c.name);
    const Misaligned shape(c.blob);
    const unsigned char* s = shape.data();
    double value = -1;
    uint32_t count = 0;
    _xgWKB_BOX box{};
    std::vector<_xgWKB_POINT> pts(64);
    unsigned char* out = kUntouched;
    EXPECT_EQ(xgWKB_shape_get_length(s, 2, &value), XGWKB_E_INVALID_SHAPE);
    EXPECT_EQ(xgWKB_shape_get_area(s, 2, &value), XGWKB_E_INVALID_SHAPE);
    EXPECT_EQ(xgWKB_shape_get_extent(s, 1, &box), XGWKB_E_INVALID_SHAPE);
    EXPECT_EQ(xgWKB_shape_get_num_points(s, 2, 0, &count), XGWKB_E_INVALID_SHAPE);
    EXPECT_EQ(xgWKB_shape_get_num_subparts(s, 1, &count), XGWKB_E_INVALID_SHAPE);
    EXPECT_EQ(xgWKB_shape_get_points(s, 2, pts.data()), XGWKB_E_INVALID_SHAPE);
    EXPECT_EQ(xgWKB_shape_is_close(s, 0.0001), XGWKB_E_INVALID_SHAPE);
    EXPECT_EQ(xgWKB_shape_generate_from_part(s, 2, &out), XGWKB_E_INVALID_SHAPE);
    EXPECT_EQ(out, kUntouched);
  }
}
