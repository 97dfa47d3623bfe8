// Part and ring editing: each status code in its order, byte-exact results, the deliberate
// copies of the outer ring when an island is deleted, and the blocks handed out before a failure.
#include <gtest/gtest.h>

#include <vector>

#include "support/blob_builder.h"
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
const Bytes kMultiPolygon = multi(XGWKB_TYPE_MULTIPOLYGON, {polygon({kFar}), kPolygon});

// The blob with byte-order byte 1: a copied outer header keeps it, a fresh one writes 0.
Bytes one(Bytes b) {
  b[0] = 1;
  return b;
}

Bytes mp(std::initializer_list<Bytes> members) { return multi(XGWKB_TYPE_MULTIPOLYGON, members); }

using Part = int32_t (*)(const unsigned char*, const unsigned char*, int32_t, unsigned char**);
using Ring3 = int32_t (*)(const unsigned char*, int32_t, int32_t, const _xgWKB_POINT*, int32_t, unsigned char**);
const Part kInsert = xgWKB_shape_insert_part, kReplace = xgWKB_shape_replace_part;
const Ring3 kAddRing = xgWKB_shape_add_multipolygon_ring;
const Ring3 kReplaceRing = xgWKB_shape_replace_multipolygon_ring;

// Calls on a marked copy of the shape.
Call call(Part f, const Bytes& shape, const Bytes& part, int32_t i) {
  return [=](auto o) { return f(one(shape).data(), part.data(), i, o); };
}
Call add(const Bytes& shape, const Bytes& part) {
  return [=](auto o) { return xgWKB_shape_add_part(one(shape).data(), part.data(), o); };
}
Call del(const Bytes& shape, int32_t i) {
  return [=](auto o) { return xgWKB_shape_delete_part(one(shape).data(), i, o); };
}
Call ring_op(Ring3 f, int32_t part, int32_t ring, const Ring& pts) {
  const int32_t n = static_cast<int32_t>(pts.size());
  return [=](auto o) { return f(one(kMultiPolygon).data(), part, ring, pts.data(), n, o); };
}
Call island(const Bytes& shape, const _xgWKB_POINT* pts, int32_t n) {
  return [=](auto o) { return xgWKB_shape_add_island(shape.data(), pts, n, o); };
}
Call del_island(const Bytes& shape, _xgWKB_POINT at) {
  return [=](auto o) { return xgWKB_shape_delete_island(shape.data(), &at, o); };
}

std::vector<EditCase> cases() {
  const Bytes island2 = linestring(kIsland2), far = linestring(kFar);
  const Bytes three_points = multi(XGWKB_TYPE_MULTIPOINT, {point(2, 2), point(3, 3), point(4, 4)});
  return {
      // add: the input copied whole, its count patched.
      {"add null part", [](auto o) { return xgWKB_shape_add_part(kPolygon.data(), nullptr, o); }, -65, {}},
      {"add to linestring", add(kLine, kLine), -134, {}},
      {"add line to multipoint", add(kMultiPoint, kLine), -134, {}},
      {"add polygon ring outside", add(kPolygon, far), -82, {}},
      {"add polygon ring", add(kPolygon, island2), 0, one(kThreeRings)},
      {"add point", add(kMultiPoint, point(2, 2)), 0,
       one(multi(XGWKB_TYPE_MULTIPOINT, {point(0, 0), point(1, 1), point(2, 2)}))},
      {"add 3 points at once", add(kMultiPoint, three_points), 0,
       one(multi(XGWKB_TYPE_MULTIPOINT, {point(0, 0), point(1, 1), point(2, 2), point(3, 3), point(4, 4)}))},
      {"add multipolygon", add(kMultiPolygon, mp({polygon({kIsland})})), 0,
       one(mp({polygon({kFar}), kPolygon, polygon({kIsland})}))},
      // insert: a fresh header, the piece before the index.
      {"insert into linestring", call(kInsert, kLine, kLine, 1), -134, {}},
      {"insert wrong member type", call(kInsert, kMultiPoint, kLine, 9), -136, {}},
      {"insert ring outside", call(kInsert, kPolygon, far, 9), -82, {}},
      {"insert at count+1", call(kInsert, kMultiLine, kLine, 3), -135, {}},
      {"insert multipoint at count+1", call(kInsert, kMultiPoint, point(5, 5), 3), -135, {}, true},
      {"insert point", call(kInsert, kMultiPoint, point(7, 7), 2), 0,
       multi(XGWKB_TYPE_MULTIPOINT, {point(0, 0), point(7, 7), point(1, 1)})},
      {"insert ring before outer", call(kInsert, kPolygon, island2, 1), 0, polygon({kIsland2, kOuter, kIsland})},
      // replace: the header copied.
      {"replace in linestring", call(kReplace, kLine, kLine, 1), -27, {}},
      {"replace wrong member type", call(kReplace, kMultiPolygon, kLine, 9), -136, {}},
      {"replace inner ring outside", call(kReplace, kPolygon, far, 2), -6, {}},
      {"replace index 3", call(kReplace, kPolygon, island2, 3), -135, {}},
      {"replace inner ring", call(kReplace, kPolygon, island2, 2), 0, one(polygon({kOuter, kIsland2}))},
      {"replace outer ring untested", call(kReplace, kPolygon, far, 1), 0, one(polygon({kFar, kIsland}))},
      {"replace member", call(kReplace, kMultiPolygon, polygon({kOuter}), 1), 0,
       one(mp({polygon({kOuter}), kPolygon}))},
      // delete: a fresh header; the outer ring stays; the only member leaves the nil shape.
      {"delete outer ring", del(kThreeRings, 1), -6, {}},
      {"delete from one ring", del(polygon({kOuter}), 2), -6, {}},
      {"delete ring 4", del(kThreeRings, 4), -135, {}},
      {"delete from linestring", del(kLine, 1), -134, {}},
      {"delete ring", del(kThreeRings, 2), 0, polygon({kOuter, kIsland2})},
      {"delete member", del(kMultiLine, 1), 0, multiline({{{5, 5}, {6, 6}}})},
      {"delete only member", del(multi(XGWKB_TYPE_MULTIPOINT, {point(1, 1)}), 1), 0, nil()},
      // islands
      {"island on multipolygon", island(kMultiPolygon, kIsland2.data(), 5), -136, {}},
      {"island null points", island(kPolygon, nullptr, 5), -65, {}},
      {"island outside", island(kPolygon, kFar.data(), 5), -82, {}},
      {"island open", island(kPolygon, kIsland2.data(), 4), 0,
       polygon({kOuter, kIsland, Ring(kIsland2.begin(), kIsland2.end() - 1)})},
      // Deleting an island leaves copies of the outer ring in place of every remaining ring, even
      // where the outer ring is larger than the ring it stands in for.
      {"delete island", del_island(kThreeRings, {3, 3}), 0, polygon({kOuter, kOuter})},
      {"delete island near a vertex", del_island(kThreeRings, {7.00005, 5}), 0, polygon({kOuter, kOuter})},
      {"delete island, larger outer", del_island(polygon({kBig, kTriangle, kIsland2}), {1, 2}), 0,
       polygon({kBig, kBig})},
      {"delete island on outer ring", del_island(kThreeRings, {10, 10}), -6, {}},
      {"delete island nowhere", del_island(kThreeRings, {7, 1}), -6, {}},
      {"delete island of line", del_island(kLine, {0, 0}), -136, {}},
      // multipolygon rings; add and replace hand their block out before the ring tests.
      {"add mp ring part 3", ring_op(kAddRing, 3, 1, kIsland2), -135, {}},
      {"add mp ring outside", ring_op(kAddRing, 2, 1, kFar), -82, {}, true},
      {"add mp ring index 3", ring_op(kAddRing, 2, 3, kIsland2), -135, {}, true},
      {"add mp ring 2", ring_op(kAddRing, 2, 2, kIsland2), 0,
       one(mp({polygon({kFar}), polygon({kOuter, kIsland2, kIsland})}))},
      {"replace ring 3", ring_op(kReplaceRing, 2, 3, kIsland2), -135, {}},
      {"replace ring outside", ring_op(kReplaceRing, 2, 2, kFar), -82, {}, true},
      {"replace ring 2", ring_op(kReplaceRing, 2, 2, kIsland2), 0,
       one(mp({polygon({kFar}), polygon({kOuter, kIsland2})}))},
      {"delete outer ring of member",
       [](auto o) { return xgWKB_shape_delete_multipolygon_ring(kMultiPolygon.data(), 2, 1, o); }, -135, {}},
      {"delete ring of member",
       [](auto o) { return xgWKB_shape_delete_multipolygon_ring(one(kMultiPolygon).data(), 2, 2, o); }, 0,
       one(mp({polygon({kFar}), polygon({kOuter})}))},
  };
}

class PartEdit : public ::testing::TestWithParam<EditCase> {};

TEST_P(PartEdit, GivesTheStatusAndTheExactBlob) { check_edit(GetParam()); }

INSTANTIATE_TEST_SUITE_P(Cases, PartEdit, ::testing::ValuesIn(cases()),
                         [](const auto& info) { return case_name(info.param.name); });

}  // namespace
