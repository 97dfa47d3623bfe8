// Part and ring editing: each status code in its order, byte-exact results, the deliberate
// copies of the outer ring when an island is deleted, and the blocks handed out before a failure.
#include <gtest/gtest.h>

#include "support/edit_result.h"

using namespace xgtest;

namespace {

const Ring kOuter = square(0, 0, 10);
const Ring kIsland = square(2, 2, 1);
const Ring kIsland2 = square(5, 5, 2);
const Ring kFar = square(20, 20, 1);  // outside kOuter
const Ring kBig = {{0, 0}, {10, 0}, {10, 10}, {5, 12}, {0, 10}, {0, 0}};
const Ring kTriangle = {{1, 1}, {2, 1}, {1, 2}, {1, 1}};

const Bytes kLine = linestring({{0, 0}, {1, 1}});
const Bytes kPolygon = polygon({kOuter, kIsland});
const Bytes kThreeRings = polygon({kOuter, kIsland, kIsland2});
const Bytes kMultiPoint = multi(XGWKB_TYPE_MULTIPOINT, {point(0, 0), point(1, 1)});
const Bytes kMultiLine = multiline({{{0, 0}, {1, 1}}, {{5, 5}, {6, 6}}});
const Bytes kMultiPolygon = mp({polygon({kFar}), kPolygon});

const auto kAdd = xgWKB_shape_add_part;
const auto kInsert = xgWKB_shape_insert_part;
const auto kReplace = xgWKB_shape_replace_part;
const auto kDelete = xgWKB_shape_delete_part;
const auto kAddRing = xgWKB_shape_add_multipolygon_ring;
const auto kReplaceRing = xgWKB_shape_replace_multipolygon_ring;

Call del_island(const Bytes& shape, _xgWKB_POINT at) {
  return [=](auto o) { return xgWKB_shape_delete_island(shape.data(), &at, o); };
}

}  // namespace

TEST(PartEdit, EachCallGivesItsStatusAndExactBlob) {
  const Bytes island2 = linestring(kIsland2), far = linestring(kFar);
  const Bytes three_points = multi(XGWKB_TYPE_MULTIPOINT, {point(2, 2), point(3, 3), point(4, 4)});
  const EditCase cases[] = {
      // add: the input copied whole, its count patched.
      {"add null part", [](auto o) { return xgWKB_shape_add_part(kPolygon.data(), nullptr, o); }, -65},
      {"add to linestring", on(kAdd, marked(kLine), kLine), -134},
      {"add line to multipoint", on(kAdd, marked(kMultiPoint), kLine), -134},
      {"add polygon ring outside", on(kAdd, marked(kPolygon), far), -82},
      {"add polygon ring", on(kAdd, marked(kPolygon), island2), 0, marked(kThreeRings)},
      {"add point", on(kAdd, marked(kMultiPoint), point(2, 2)), 0,
       marked(multi(XGWKB_TYPE_MULTIPOINT, {point(0, 0), point(1, 1), point(2, 2)}))},
      {"add 3 points at once", on(kAdd, marked(kMultiPoint), three_points), 0,
       marked(multi(XGWKB_TYPE_MULTIPOINT, {point(0, 0), point(1, 1), point(2, 2), point(3, 3), point(4, 4)}))},
      {"add multipolygon", on(kAdd, marked(kMultiPolygon), mp({polygon({kIsland})})), 0,
       marked(mp({polygon({kFar}), kPolygon, polygon({kIsland})}))},
      // insert: a fresh header, the piece before the index.
      {"insert into linestring", on(kInsert, marked(kLine), kLine, 1), -134},
      {"insert wrong member type", on(kInsert, marked(kMultiPoint), kLine, 9), -136},
      {"insert ring outside", on(kInsert, marked(kPolygon), far, 9), -82},
      {"insert at count+1", on(kInsert, marked(kMultiLine), kLine, 3), -135},
      {"insert multipoint at count+1", on(kInsert, marked(kMultiPoint), point(5, 5), 3), -135, {}, true},
      {"insert point", on(kInsert, marked(kMultiPoint), point(7, 7), 2), 0,
       multi(XGWKB_TYPE_MULTIPOINT, {point(0, 0), point(7, 7), point(1, 1)})},
      {"insert ring before outer", on(kInsert, marked(kPolygon), island2, 1), 0, polygon({kIsland2, kOuter, kIsland})},
      // replace: the header copied.
      {"replace in linestring", on(kReplace, marked(kLine), kLine, 1), -27},
      {"replace wrong member type", on(kReplace, marked(kMultiPolygon), kLine, 9), -136},
      {"replace inner ring outside", on(kReplace, marked(kPolygon), far, 2), -6},
      {"replace index 3", on(kReplace, marked(kPolygon), island2, 3), -135},
      {"replace inner ring", on(kReplace, marked(kPolygon), island2, 2), 0, marked(polygon({kOuter, kIsland2}))},
      {"replace outer ring untested", on(kReplace, marked(kPolygon), far, 1), 0, marked(polygon({kFar, kIsland}))},
      {"replace member", on(kReplace, marked(kMultiPolygon), polygon({kOuter}), 1), 0,
       marked(mp({polygon({kOuter}), kPolygon}))},
      // delete: a fresh header; the outer ring stays; the only member leaves the nil shape.
      {"delete outer ring", on(kDelete, marked(kThreeRings), 1), -6},
      {"delete from one ring", on(kDelete, marked(polygon({kOuter})), 2), -6},
      {"delete ring 4", on(kDelete, marked(kThreeRings), 4), -135},
      {"delete from linestring", on(kDelete, marked(kLine), 1), -134},
      {"delete ring", on(kDelete, marked(kThreeRings), 2), 0, polygon({kOuter, kIsland2})},
      {"delete member", on(kDelete, marked(kMultiLine), 1), 0, multiline({{{5, 5}, {6, 6}}})},
      {"delete only member", on(kDelete, marked(multi(XGWKB_TYPE_MULTIPOINT, {point(1, 1)})), 1), 0, nil()},
      // islands
      {"island on multipolygon", on(xgWKB_shape_add_island, kMultiPolygon, kIsland2.data(), 5), -136},
      {"island null points", on(xgWKB_shape_add_island, kPolygon, nullptr, 5), -65},
      {"island outside", on(xgWKB_shape_add_island, kPolygon, kFar.data(), 5), -82},
      {"island open", on(xgWKB_shape_add_island, kPolygon, kIsland2.data(), 4), 0,
       polygon({kOuter, kIsland, Ring(kIsland2.begin(), kIsland2.end() - 1)})},
      // Deleting an island leaves copies of the outer ring in place of every remaining ring, even
      // where the outer ring is larger than the ring it stands in for.
      {"delete island", del_island(kThreeRings, {3, 3}), 0, polygon({kOuter, kOuter})},
      {"delete island near a vertex", del_island(kThreeRings, {7.00005, 5}), 0, polygon({kOuter, kOuter})},
      {"delete island, larger outer", del_island(polygon({kBig, kTriangle, kIsland2}), {1, 2}), 0,
       polygon({kBig, kBig})},
      {"delete island on outer ring", del_island(kThreeRings, {10, 10}), -6},
      {"delete island nowhere", del_island(kThreeRings, {7, 1}), -6},
      {"delete island of line", del_island(kLine, {0, 0}), -136},
      // multipolygon rings; add and replace hand their block out before the ring tests.
      {"add mp ring part 3", on(kAddRing, marked(kMultiPolygon), 3, 1, kIsland2.data(), 5), -135},
      {"add mp ring outside", on(kAddRing, marked(kMultiPolygon), 2, 1, kFar.data(), 5), -82, {}, true},
      {"add mp ring index 3", on(kAddRing, marked(kMultiPolygon), 2, 3, kIsland2.data(), 5), -135, {}, true},
      {"add mp ring 2", on(kAddRing, marked(kMultiPolygon), 2, 2, kIsland2.data(), 5), 0,
       marked(mp({polygon({kFar}), polygon({kOuter, kIsland2, kIsland})}))},
      {"replace ring 3", on(kReplaceRing, marked(kMultiPolygon), 2, 3, kIsland2.data(), 5), -135},
      {"replace ring outside", on(kReplaceRing, marked(kMultiPolygon), 2, 2, kFar.data(), 5), -82, {}, true},
      {"replace ring 2", on(kReplaceRing, marked(kMultiPolygon), 2, 2, kIsland2.data(), 5), 0,
       marked(mp({polygon({kFar}), polygon({kOuter, kIsland2})}))},
      {"delete outer ring of member",
       [](auto o) { return xgWKB_shape_delete_multipolygon_ring(kMultiPolygon.data(), 2, 1, o); }, -135},
      {"delete ring of member",
       [](auto o) { return xgWKB_shape_delete_multipolygon_ring(marked(kMultiPolygon).data(), 2, 2, o); }, 0,
       marked(mp({polygon({kFar}), polygon({kOuter})}))},
  };
  for (const EditCase& c : cases) check_edit(c);
}
