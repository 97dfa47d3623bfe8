// Vertex editing: status codes and their order, byte-exact results, the ring-closure rules and
// the result blocks handed out before a failure.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
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
const Bytes kMultiPolygon = mp({polygon({kUnit}), kPolygon});

Ring with(Ring r, std::size_t at, _xgWKB_POINT p) {
  r.insert(r.begin() + static_cast<long>(at), p);
  return r;
}

Ring without(Ring r, std::size_t at) {
  r.erase(r.begin() + static_cast<long>(at));
  return r;
}

// The multi-shapes with this second member.
Bytes ml2(const Bytes& second) { return multi(XGWKB_TYPE_MULTILINESTRING, {kTwo, second}); }
Bytes mp2(const Bytes& second) { return mp({polygon({kUnit}), second}); }

const auto kAddLine = xgWKB_shape_add_lineString_point;
const auto kDelLine = xgWKB_shape_delete_lineString_point;
const auto kAddMl = xgWKB_shape_add_MultiLineString_point;
const auto kDelMl = xgWKB_shape_delete_MultiLineString_point;
const auto kAddPoly = xgWKB_shape_add_polygon_point;
const auto kDelPoly = xgWKB_shape_delete_polygon_point;
const auto kAddMp = xgWKB_shape_add_multipolygon_point;
const auto kDelMp = xgWKB_shape_delete_multipolygon_point;

}  // namespace

TEST(VertexEdit, EachCallGivesItsStatusAndExactBlob) {
  const Bytes line = marked(kLine), lines = marked(kMultiLine, {0, 9, 50});
  const Ring restarted = {{10, 0}, {10, 10}, {0, 10}, {10, 0}};
  const EditCase cases[] = {
      {"null out", [](auto) { return kDelMp(kMultiPolygon.data(), 1, 1, 1, nullptr); }, -65},
      {"add line to polygon", on(kAddLine, kPolygon, 1, kP), -134},
      {"delete ml from line", on(kDelMl, kLine, 1, 1), -134},
      // add inserts before the index: appending after the last vertex is not possible.
      {"add line at 4", on(kAddLine, kLine, 4, kP), -135},
      {"add ml part 3", on(kAddMl, kMultiLine, 3, 1, kP), -135},
      {"add ml point 4", on(kAddMl, kMultiLine, 2, 4, kP), -135},
      {"add poly point 6", on(kAddPoly, kPolygon, 1, 6, kP), -135},
      {"add mp ring 3", on(kAddMp, kMultiPolygon, 2, 3, 1, kP), -135},
      {"add line at 1", on(kAddLine, line, 1, kP), 0, linestring(with(kLinePts, 0, kNew))},
      {"add line at 3", on(kAddLine, line, 3, kP), 0, linestring(with(kLinePts, 2, kNew))},
      {"add ml renews part header", on(kAddMl, lines, 2, 3, kP), 0,
       marked(ml2(linestring({{5, 5}, {6, 6}, kNew, {7, 5}})), {0, 9})},
      {"add at 1 opens ring", on(kAddPoly, kPolygon, 2, 1, kP), 0, polygon({kSquare, with(kTriangle, 0, kNew)})},
      {"add mp", on(kAddMp, kMultiPolygon, 2, 1, 5, kP), 0, mp2(polygon({with(kSquare, 4, kNew), kTriangle}))},
      // delete: a linestring tests its index before its length.
      {"delete line at 0", on(kDelLine, kLine, 0), -135},
      {"delete 2-vertex line", on(kDelLine, kTwo, 1), -6},
      {"delete 2-vertex line at 3", on(kDelLine, kTwo, 3), -135},
      {"delete poly ring 3", on(kDelPoly, kPolygon, 3, 1), -135},
      {"delete mp part 3", on(kDelMp, kMultiPolygon, 3, 1, 1), -135},
      {"delete line", on(kDelLine, line, 2), 0, linestring({{0, 0}, {2, 0}})},
      {"delete ml", on(kDelMl, lines, 2, 1), 0, marked(ml2(linestring({{6, 6}, {7, 5}})), {0, 9})},
      {"delete ring start", on(kDelPoly, kPolygon, 1, 1), 0, polygon({restarted, kTriangle})},
      {"delete ring end", on(kDelPoly, kPolygon, 1, 5), 0, polygon({restarted, kTriangle})},
      {"delete ring middle", on(kDelPoly, kPolygon, 1, 3), 0, polygon({without(kSquare, 2), kTriangle})},
      {"delete mp", on(kDelMp, kMultiPolygon, 2, 1, 2), 0, mp2(polygon({without(kSquare, 1), kTriangle}))},
      // Blocks handed out before a failure stay with the caller...
      {"delete short ml part", on(kDelMl, kMultiLine, 1, 1), -6, {}, true},
      {"delete short ring", on(kDelPoly, kPolygon, 2, 1), -6, {}, true},
      {"delete poly point 6", on(kDelPoly, kPolygon, 1, 6), -135, {}, true},
      {"delete mp ring 3", on(kDelMp, kMultiPolygon, 2, 3, 1), -135, {}, true},
      // ...except where the multipolygon takes its block back.
      {"delete mp short ring", on(kDelMp, kMultiPolygon, 2, 2, 1), -6},
      {"delete mp point 6", on(kDelMp, kMultiPolygon, 2, 1, 6), -135},
  };
  for (const EditCase& c : cases) check_edit(c);
}

TEST(VertexDelete, MultipolygonSetsTheOutPointerToNullWhenItTakesItsBlockBack) {
  unsigned char stale = 0, *out = &stale;
  EXPECT_EQ(xgWKB_shape_delete_multipolygon_point(kMultiPolygon.data(), 2, 2, 1, &out), -6);
  EXPECT_EQ(out, nullptr);
  if (out != &stale) xgWKB_shape_free(out);
}

TEST(VertexChange, RingEndsMoveTogetherALinestringEndAloneAndBadIndicesWriteNothing) {
  Ring moved = kTriangle, middle = kTriangle;
  moved.front() = moved.back() = middle[1] = kNew;
  const auto poly = xgWKB_shape_change_polygon_point;
  const auto mpoly = xgWKB_shape_change_multipolygon_point;
  const auto line = xgWKB_shape_change_linestring_point;
  const auto mline = xgWKB_shape_chage_MultiLineString_point;
  // Each change is made on an exactly sized heap copy, handed back as the result.
  auto changed = [](const Bytes& shape, auto f, auto... a) -> Call {
    return [=](unsigned char** out) {
      *out = static_cast<unsigned char*>(std::malloc(shape.size()));
      std::copy(shape.begin(), shape.end(), *out);
      return f(*out, a...);
    };
  };
  const EditCase cases[] = {
      {"ring start", changed(kPolygon, poly, 2, 1, kP), 0, polygon({kSquare, moved})},
      {"ring end", changed(kPolygon, poly, 2, 4, kP), 0, polygon({kSquare, moved})},
      {"ring middle", changed(kPolygon, poly, 2, 2, kP), 0, polygon({kSquare, middle})},
      {"member ring start", changed(kMultiPolygon, mpoly, 2, 2, 1, kP), 0, mp2(polygon({kSquare, moved}))},
      {"member ring end", changed(kMultiPolygon, mpoly, 2, 2, 4, kP), 0, mp2(polygon({kSquare, moved}))},
      {"line start", changed(kLine, line, 1, kP), 0, linestring({kNew, {1, 0}, {2, 0}})},
      {"member line end", changed(kMultiLine, mline, 2, 3, kP), 0, ml2(linestring({{5, 5}, {6, 6}, kNew}))},
      {"past the member line succeeds", changed(kMultiLine, mline, 1, 3, kP), 0, kMultiLine},
      {"line point 4", changed(kLine, line, 4, kP), -135, kLine},
      {"ring point 6", changed(kPolygon, poly, 1, 6, kP), -135, kPolygon},
      {"member ring 3", changed(kMultiPolygon, mpoly, 2, 3, 1, kP), -135, kMultiPolygon},
      {"member ring point 0", changed(kMultiPolygon, mpoly, 2, 1, 0, kP), -135, kMultiPolygon},
      {"polygon as multipolygon", changed(kPolygon, mpoly, 1, 1, 1, kP), -134, kPolygon},
  };
  for (const EditCase& c : cases) check_edit(c);
}
