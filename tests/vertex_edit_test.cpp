// Vertex editing: status codes and their order, byte-exact results, the ring-closure rules and
// the result blocks handed out before a failure.
#include <gtest/gtest.h>

#include <vector>

#include "support/blob_builder.h"
#include "support/edit_result.h"

using namespace xgtest;

namespace {

const _xgWKB_POINT kNew{9, 9};
const _xgWKB_POINT* const kP = &kNew;

const Ring kLinePts = {{0, 0}, {1, 0}, {2, 0}};
const Ring kSquare = square(0, 0, 10);                    // 5 vertices
const Ring kTriangle = {{1, 1}, {2, 1}, {1, 2}, {1, 1}};  // 4 vertices: too short to delete from
const Ring kUnit = square(20, 20, 1);
const Bytes kLine = linestring(kLinePts);
const Bytes kTwo = linestring({{0, 0}, {1, 1}});
const Bytes kPolygon = polygon({kSquare, kTriangle});
const Bytes kMultiLine = multiline({{{0, 0}, {1, 1}}, {{5, 5}, {6, 6}, {7, 5}}});
const Bytes kMultiPolygon = multi(XGWKB_TYPE_MULTIPOLYGON, {polygon({kUnit}), kPolygon});

Ring with(Ring r, std::size_t at, _xgWKB_POINT p) {
  r.insert(r.begin() + static_cast<long>(at), p);
  return r;
}

Ring without(Ring r, std::size_t at) {
  r.erase(r.begin() + static_cast<long>(at));
  return r;
}

// The blob with byte-order bytes 1 at the given header offsets: copied headers keep them.
Bytes marked(Bytes b, std::initializer_list<std::size_t> headers) {
  for (std::size_t at : headers) b[at] = 1;
  return b;
}

Bytes ml(const Bytes& second) { return multi(XGWKB_TYPE_MULTILINESTRING, {kTwo, second}); }
Bytes mp(const Bytes& second) { return multi(XGWKB_TYPE_MULTIPOLYGON, {polygon({kUnit}), second}); }

Call add_line(const Bytes& s, int32_t i) {
  return [&s, i](auto o) { return xgWKB_shape_add_lineString_point(s.data(), i, kP, o); };
}
Call del_line(const Bytes& s, int32_t i) {
  return [&s, i](auto o) { return xgWKB_shape_delete_lineString_point(s.data(), i, o); };
}
Call add_ml(const Bytes& s, int32_t part, int32_t i) {
  return [=, &s](auto o) { return xgWKB_shape_add_MultiLineString_point(s.data(), part, i, kP, o); };
}
Call del_ml(const Bytes& s, int32_t part, int32_t i) {
  return [=, &s](auto o) { return xgWKB_shape_delete_MultiLineString_point(s.data(), part, i, o); };
}
Call add_poly(int32_t ring, int32_t i) {
  return [=](auto o) { return xgWKB_shape_add_polygon_point(kPolygon.data(), ring, i, kP, o); };
}
Call del_poly(int32_t ring, int32_t i) {
  return [=](auto o) { return xgWKB_shape_delete_polygon_point(kPolygon.data(), ring, i, o); };
}
Call add_mp(int32_t part, int32_t ring, int32_t i) {
  return [=](auto o) { return xgWKB_shape_add_multipolygon_point(kMultiPolygon.data(), part, ring, i, kP, o); };
}
Call del_mp(int32_t part, int32_t ring, int32_t i) {
  return [=](auto o) { return xgWKB_shape_delete_multipolygon_point(kMultiPolygon.data(), part, ring, i, o); };
}

std::vector<EditCase> cases() {
  static const Bytes line = marked(kLine, {0}), multiline = marked(kMultiLine, {0, 9, 50});
  const Ring restarted = {{10, 0}, {10, 10}, {0, 10}, {10, 0}};
  return {
      {"null out", [](auto) { return xgWKB_shape_delete_multipolygon_point(kMultiPolygon.data(), 1, 1, 1, nullptr); },
       -65, {}},
      {"add line to polygon", add_line(kPolygon, 1), -134, {}},
      {"delete ml from line", del_ml(kLine, 1, 1), -134, {}},
      // add inserts before the index: appending after the last vertex is not possible.
      {"add line at 4", add_line(kLine, 4), -135, {}},
      {"add ml part 3", add_ml(kMultiLine, 3, 1), -135, {}},
      {"add ml point 4", add_ml(kMultiLine, 2, 4), -135, {}},
      {"add poly point 6", add_poly(1, 6), -135, {}},
      {"add mp ring 3", add_mp(2, 3, 1), -135, {}},
      {"add line at 1", add_line(line, 1), 0, linestring(with(kLinePts, 0, kNew))},
      {"add line at 3", add_line(line, 3), 0, linestring(with(kLinePts, 2, kNew))},
      {"add ml renews part header", add_ml(multiline, 2, 3), 0,
       marked(ml(linestring({{5, 5}, {6, 6}, kNew, {7, 5}})), {0, 9})},
      {"add at 1 opens ring", add_poly(2, 1), 0, polygon({kSquare, with(kTriangle, 0, kNew)})},
      {"add mp", add_mp(2, 1, 5), 0, mp(polygon({with(kSquare, 4, kNew), kTriangle}))},
      // delete: a linestring tests its index before its length.
      {"delete line at 0", del_line(kLine, 0), -135, {}},
      {"delete 2-vertex line", del_line(kTwo, 1), -6, {}},
      {"delete 2-vertex line at 3", del_line(kTwo, 3), -135, {}},
      {"delete poly ring 3", del_poly(3, 1), -135, {}},
      {"delete mp part 3", del_mp(3, 1, 1), -135, {}},
      {"delete line", del_line(line, 2), 0, linestring({{0, 0}, {2, 0}})},
      {"delete ml", del_ml(multiline, 2, 1), 0, marked(ml(linestring({{6, 6}, {7, 5}})), {0, 9})},
      {"delete ring start", del_poly(1, 1), 0, polygon({restarted, kTriangle})},
      {"delete ring end", del_poly(1, 5), 0, polygon({restarted, kTriangle})},
      {"delete ring middle", del_poly(1, 3), 0, polygon({without(kSquare, 2), kTriangle})},
      {"delete mp", del_mp(2, 1, 2), 0, mp(polygon({without(kSquare, 1), kTriangle}))},
      // Blocks handed out before a failure stay with the caller...
      {"delete short ml part", del_ml(kMultiLine, 1, 1), -6, {}, true},
      {"delete short ring", del_poly(2, 1), -6, {}, true},
      {"delete poly point 6", del_poly(1, 6), -135, {}, true},
      {"delete mp ring 3", del_mp(2, 3, 1), -135, {}, true},
      // ...except where the multipolygon takes its block back.
      {"delete mp short ring", del_mp(2, 2, 1), -6, {}},
      {"delete mp point 6", del_mp(2, 1, 6), -135, {}},
  };
}

class VertexEdit : public ::testing::TestWithParam<EditCase> {};

TEST_P(VertexEdit, GivesTheStatusAndTheExactBlob) { check_edit(GetParam()); }

INSTANTIATE_TEST_SUITE_P(Cases, VertexEdit, ::testing::ValuesIn(cases()),
                         [](const auto& info) { return case_name(info.param.name); });

}  // namespace

TEST(VertexDelete, MultipolygonSetsTheOutPointerToNullWhenItTakesItsBlockBack) {
  unsigned char stale = 0;
  unsigned char* out = &stale;
  EXPECT_EQ(xgWKB_shape_delete_multipolygon_point(kMultiPolygon.data(), 2, 2, 1, &out), -6);
  EXPECT_EQ(out, nullptr);
  if (out != &stale) xgWKB_shape_free(out);
}

TEST(VertexChange, RingEndsMoveTogetherALinestringEndAlone) {
  Ring moved = kTriangle, middle = kTriangle;
  moved.front() = moved.back() = middle[1] = kNew;
  for (int32_t index : {1, 4}) {
    Bytes poly = kPolygon, multipoly = kMultiPolygon;
    ASSERT_EQ(xgWKB_shape_change_polygon_point(poly.data(), 2, index, &kNew), 0);
    EXPECT_EQ(poly, polygon({kSquare, moved}));
    ASSERT_EQ(xgWKB_shape_change_multipolygon_point(multipoly.data(), 2, 2, index, &kNew), 0);
    EXPECT_EQ(multipoly, mp(polygon({kSquare, moved})));
  }
  Bytes poly = kPolygon;
  ASSERT_EQ(xgWKB_shape_change_polygon_point(poly.data(), 2, 2, &kNew), 0);
  EXPECT_EQ(poly, polygon({kSquare, middle}));
  Misaligned line(kLine);
  ASSERT_EQ(xgWKB_shape_change_linestring_point(line.data(), 1, &kNew), 0);
  EXPECT_EQ(Bytes(line.data(), line.data() + kLine.size()), linestring({kNew, {1, 0}, {2, 0}}));
}

TEST(VertexChange, RefusesBadIndicesWithoutWriting) {
  Bytes line = kLine, poly = kPolygon, multipoly = kMultiPolygon;
  EXPECT_EQ(xgWKB_shape_change_linestring_point(line.data(), 4, &kNew), -135);
  EXPECT_EQ(xgWKB_shape_change_polygon_point(poly.data(), 1, 6, &kNew), -135);
  EXPECT_EQ(xgWKB_shape_change_multipolygon_point(multipoly.data(), 2, 3, 1, &kNew), -135);
  EXPECT_EQ(xgWKB_shape_change_multipolygon_point(multipoly.data(), 2, 1, 0, &kNew), -135);
  EXPECT_EQ(xgWKB_shape_change_multipolygon_point(poly.data(), 1, 1, 1, &kNew), -134);
  EXPECT_EQ(line, kLine);
  EXPECT_EQ(poly, kPolygon);
  EXPECT_EQ(multipoly, kMultiPolygon);
}

TEST(VertexChange, MultiLineStringPointPastThePartChangesNothingAndSucceeds) {
  Bytes lines = kMultiLine;
  EXPECT_EQ(xgWKB_shape_chage_MultiLineString_point(lines.data(), 1, 3, &kNew), 0);
  EXPECT_EQ(lines, kMultiLine);
  EXPECT_EQ(xgWKB_shape_chage_MultiLineString_point(lines.data(), 2, 3, &kNew), 0);
  EXPECT_EQ(lines, ml(linestring({{5, 5}, {6, 6}, kNew})));
}
