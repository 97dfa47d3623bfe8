// Part and ring editing: each status code on a minimal case and in its order, byte-exact
// results, the deliberate copies of the outer ring when an island is deleted, and the blocks
// handed out before a failure.
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "support/blob_builder.h"

using namespace xgtest;

namespace {

struct Out {
  unsigned char* p = nullptr;
  ~Out() { xgWKB_shape_free(p); }
  Bytes bytes() const {
    uint32_t size = 0;
    EXPECT_EQ(xgWKB_shape_get_WKB_size(p, &size), 0);
    return Bytes(p, p + size);
  }
};

const Ring kOuter = square(0, 0, 10);
const Ring kIsland = square(2, 2, 1);
const Ring kIsland2 = square(5, 5, 2);
const Ring kFar = square(20, 20, 1);  // outside kOuter

const Bytes kPolygon = polygon({kOuter, kIsland});
const Bytes kMultiPoint = multi(XGWKB_TYPE_MULTIPOINT, {point(0, 0), point(1, 1)});
const Bytes kMultiLine = multi(XGWKB_TYPE_MULTILINESTRING, {linestring({{0, 0}, {1, 1}}), linestring({{5, 5}, {6, 6}})});
const Bytes kMultiPolygon = multi(XGWKB_TYPE_MULTIPOLYGON, {polygon({kFar}), kPolygon});

Bytes with_byte_order_one(Bytes b) {
  b[0] = 1;
  return b;
}

}  // namespace

// ---- status codes with nothing allocated ----------------------------------------------------

struct StatusCase {
  const char* what;
  std::function<int32_t(unsigned char**)> call;
  int32_t expected;
};

class PartEditStatus : public ::testing::TestWithParam<StatusCase> {};

TEST_P(PartEditStatus, ReturnsTheCodeAndAllocatesNothing) {
  Out out;
  EXPECT_EQ(GetParam().call(&out.p), GetParam().expected);
  EXPECT_EQ(out.p, nullptr);
}

std::vector<StatusCase> status_cases() {
  static const Bytes line = linestring({{0, 0}, {1, 1}});
  static const Bytes island = linestring(kIsland), far = linestring(kFar);
  static const Bytes onering = polygon({kOuter});
  static const Bytes three = polygon({kOuter, kIsland, kIsland2});
  static const Ring &in = kIsland2, &out = kFar;
  static const Bytes &poly = kPolygon, &mpt = kMultiPoint, &ml = kMultiLine, &mp = kMultiPolygon;
  static const _xgWKB_POINT at_island{3, 3}, nowhere{7, 1}, on_outer{10, 10};
  return {
      {"add null shape", [](auto o) { return xgWKB_shape_add_part(nullptr, line.data(), o); }, -65},
      {"add null part", [](auto o) { return xgWKB_shape_add_part(poly.data(), nullptr, o); }, -65},
      {"add to linestring", [](auto o) { return xgWKB_shape_add_part(line.data(), line.data(), o); }, -134},
      {"add line to multipoint", [](auto o) { return xgWKB_shape_add_part(mpt.data(), line.data(), o); }, -134},
      {"add polygon to multiline", [](auto o) { return xgWKB_shape_add_part(ml.data(), poly.data(), o); }, -134},
      {"add ring outside", [](auto o) { return xgWKB_shape_add_part(poly.data(), far.data(), o); }, -82},

      {"insert null part", [](auto o) { return xgWKB_shape_insert_part(poly.data(), nullptr, 1, o); }, -65},
      {"insert into linestring", [](auto o) { return xgWKB_shape_insert_part(line.data(), line.data(), 1, o); }, -134},
      {"insert line into multipoint", [](auto o) { return xgWKB_shape_insert_part(mpt.data(), line.data(), 9, o); }, -136},
      {"insert ring outside", [](auto o) { return xgWKB_shape_insert_part(poly.data(), far.data(), 9, o); }, -82},
      {"insert at count+1", [](auto o) { return xgWKB_shape_insert_part(ml.data(), line.data(), 3, o); }, -135},
      {"insert ring at 0", [](auto o) { return xgWKB_shape_insert_part(poly.data(), island.data(), 0, o); }, -135},

      {"replace null", [](auto o) { return xgWKB_shape_replace_part(nullptr, line.data(), 1, o); }, -65},
      {"replace in linestring", [](auto o) { return xgWKB_shape_replace_part(line.data(), line.data(), 1, o); }, -27},
      {"replace wrong member first", [](auto o) { return xgWKB_shape_replace_part(mp.data(), line.data(), 9, o); }, -136},
      {"replace inner ring outside", [](auto o) { return xgWKB_shape_replace_part(poly.data(), far.data(), 2, o); }, -6},
      {"replace index 3", [](auto o) { return xgWKB_shape_replace_part(poly.data(), island.data(), 3, o); }, -135},

      {"delete outer ring", [](auto o) { return xgWKB_shape_delete_part(three.data(), 1, o); }, -6},
      {"delete from one ring", [](auto o) { return xgWKB_shape_delete_part(onering.data(), 2, o); }, -6},
      {"delete ring 4", [](auto o) { return xgWKB_shape_delete_part(three.data(), 4, o); }, -135},
      {"delete member 3", [](auto o) { return xgWKB_shape_delete_part(ml.data(), 3, o); }, -135},
      {"delete from linestring", [](auto o) { return xgWKB_shape_delete_part(line.data(), 1, o); }, -134},

      {"island on multipolygon", [](auto o) { return xgWKB_shape_add_island(mp.data(), in.data(), 5, o); }, -136},
      {"island negative count", [](auto o) { return xgWKB_shape_add_island(poly.data(), in.data(), -1, o); }, -66},
      {"island outside", [](auto o) { return xgWKB_shape_add_island(poly.data(), out.data(), 5, o); }, -82},
      {"delete island null", [](auto o) { return xgWKB_shape_delete_island(nullptr, &at_island, o); }, -65},
      {"delete island of line", [](auto o) { return xgWKB_shape_delete_island(line.data(), &at_island, o); }, -136},
      {"no island at point", [](auto o) { return xgWKB_shape_delete_island(poly.data(), &nowhere, o); }, -6},
      {"outer ring is no island", [](auto o) { return xgWKB_shape_delete_island(poly.data(), &on_outer, o); }, -6},

      {"add mp ring part 3", [](auto o) { return xgWKB_shape_add_multipolygon_ring(mp.data(), 3, 1, in.data(), 5, o); }, -135},
      {"add mp ring to polygon", [](auto o) { return xgWKB_shape_add_multipolygon_ring(poly.data(), 1, 1, in.data(), 5, o); }, -134},
      {"replace mp ring 3", [](auto o) { return xgWKB_shape_replace_multipolygon_ring(mp.data(), 2, 3, in.data(), 5, o); }, -135},
      {"replace mp part 0", [](auto o) { return xgWKB_shape_replace_multipolygon_ring(mp.data(), 0, 1, in.data(), 5, o); }, -135},
      {"delete mp outer ring", [](auto o) { return xgWKB_shape_delete_multipolygon_ring(mp.data(), 2, 1, o); }, -135},
      {"delete mp ring 3", [](auto o) { return xgWKB_shape_delete_multipolygon_ring(mp.data(), 2, 3, o); }, -135},
      {"delete mp part 3", [](auto o) { return xgWKB_shape_delete_multipolygon_ring(mp.data(), 3, 2, o); }, -135},
  };
}

INSTANTIATE_TEST_SUITE_P(AllOperations, PartEditStatus, ::testing::ValuesIn(status_cases()),
                         [](const auto& info) {
                           std::string name = info.param.what;
                           for (char& c : name) if (!isalnum(static_cast<unsigned char>(c))) c = '_';
                           return name;
                         });

TEST(ReservedEntryPoints, ReturnZeroAndDoNothing) {
  EXPECT_EQ(xgWKB_shape_change_path(), 0);
  EXPECT_EQ(xgWKB_shape_delete_path(), 0);
  EXPECT_EQ(xgWKB_shape_replace_path_with_arc(), 0);
  EXPECT_EQ(xgWKB_shape_delete_point(), 0);
  EXPECT_EQ(xgWKB_shape_move_point(), 0);
  EXPECT_EQ(xgWKB_shape_extend_line(), 0);
}

// ---- add ------------------------------------------------------------------------------------

TEST(PartAdd, AppendsAMemberOrAllMembersOfTheSameMultiTypeUnderTheCopiedHeader) {
  const Bytes three = multi(XGWKB_TYPE_MULTIPOINT, {point(2, 2), point(3, 3), point(4, 4)});
  const Bytes lines = multi(XGWKB_TYPE_MULTILINESTRING, {linestring({{7, 7}, {8, 8}})});
  struct Case {
    Bytes shape, part, expected;
  } cases[] = {
      {kMultiPoint, point(2, 2), multi(XGWKB_TYPE_MULTIPOINT, {point(0, 0), point(1, 1), point(2, 2)})},
      {kMultiPoint, three,
       multi(XGWKB_TYPE_MULTIPOINT, {point(0, 0), point(1, 1), point(2, 2), point(3, 3), point(4, 4)})},
      {kMultiLine, lines,
       multi(XGWKB_TYPE_MULTILINESTRING,
             {linestring({{0, 0}, {1, 1}}), linestring({{5, 5}, {6, 6}}), linestring({{7, 7}, {8, 8}})})},
      {kMultiPolygon, polygon({kIsland}),
       multi(XGWKB_TYPE_MULTIPOLYGON, {polygon({kFar}), kPolygon, polygon({kIsland})})},
      {kPolygon, linestring(kIsland2), polygon({kOuter, kIsland, kIsland2})},
  };
  for (const Case& c : cases) {
    Out out;
    ASSERT_EQ(xgWKB_shape_add_part(with_byte_order_one(c.shape).data(), c.part.data(), &out.p), 0);
    EXPECT_EQ(out.bytes(), with_byte_order_one(c.expected));
  }
}

TEST(PartAdd, IslandIsAppendedAsGivenWithoutClosingPoint) {
  const Ring open = {{5, 5}, {7, 5}, {7, 7}};
  Out out;
  ASSERT_EQ(xgWKB_shape_add_island(kPolygon.data(), open.data(), 3, &out.p), 0);
  EXPECT_EQ(out.bytes(), polygon({kOuter, kIsland, open}));
}

// ---- insert and replace ---------------------------------------------------------------------

TEST(PartInsert, PutsThePieceBeforeTheIndexUnderAFreshHeader) {
  struct Case {
    Bytes shape, part;
    int32_t index;
    Bytes expected;
  } cases[] = {
      {kMultiPoint, point(7, 7), 2, multi(XGWKB_TYPE_MULTIPOINT, {point(0, 0), point(7, 7), point(1, 1)})},
      {kMultiLine, linestring({{3, 3}, {4, 4}}), 1,
       multi(XGWKB_TYPE_MULTILINESTRING,
             {linestring({{3, 3}, {4, 4}}), linestring({{0, 0}, {1, 1}}), linestring({{5, 5}, {6, 6}})})},
      // Index 1 of a polygon puts the new ring before the outer ring.
      {kPolygon, linestring(kIsland2), 1, polygon({kIsland2, kOuter, kIsland})},
  };
  for (const Case& c : cases) {
    Out out;
    ASSERT_EQ(xgWKB_shape_insert_part(with_byte_order_one(c.shape).data(), c.part.data(), c.index, &out.p), 0);
    EXPECT_EQ(out.bytes(), c.expected);
  }
}

TEST(PartInsert, MultipointHandsOutItsBlockBeforeTheIndexTest) {
  Out out;
  EXPECT_EQ(xgWKB_shape_insert_part(kMultiPoint.data(), point(5, 5).data(), 3, &out.p), -135);
  EXPECT_NE(out.p, nullptr);  // freed by Out, as the caller must
}

TEST(PartReplace, SwapsThePieceAndKeepsTheCopiedHeader) {
  Out member;
  ASSERT_EQ(xgWKB_shape_replace_part(with_byte_order_one(kMultiPolygon).data(), polygon({kOuter}).data(), 1, &member.p), 0);
  EXPECT_EQ(member.bytes(), with_byte_order_one(multi(XGWKB_TYPE_MULTIPOLYGON, {polygon({kOuter}), kPolygon})));
  Out inner;
  ASSERT_EQ(xgWKB_shape_replace_part(kPolygon.data(), linestring(kIsland2).data(), 2, &inner.p), 0);
  EXPECT_EQ(inner.bytes(), polygon({kOuter, kIsland2}));
  // The outer ring is replaced without any test.
  Out outer;
  ASSERT_EQ(xgWKB_shape_replace_part(kPolygon.data(), linestring(kFar).data(), 1, &outer.p), 0);
  EXPECT_EQ(outer.bytes(), polygon({kFar, kIsland}));
}

// ---- delete ---------------------------------------------------------------------------------

TEST(PartDelete, LeavesOutThePartUnderAFreshHeader) {
  Out ring;
  ASSERT_EQ(xgWKB_shape_delete_part(with_byte_order_one(polygon({kOuter, kIsland, kIsland2})).data(), 2, &ring.p), 0);
  EXPECT_EQ(ring.bytes(), polygon({kOuter, kIsland2}));
  Out member;
  ASSERT_EQ(xgWKB_shape_delete_part(with_byte_order_one(kMultiLine).data(), 1, &member.p), 0);
  EXPECT_EQ(member.bytes(), multi(XGWKB_TYPE_MULTILINESTRING, {linestring({{5, 5}, {6, 6}})}));
}

TEST(PartDelete, OnlyMemberLeavesTheNilShape) {
  Out out;
  ASSERT_EQ(xgWKB_shape_delete_part(multi(XGWKB_TYPE_MULTIPOINT, {point(1, 1)}).data(), 1, &out.p), 0);
  EXPECT_EQ(Bytes(out.p, out.p + 5), nil());
  EXPECT_EQ(xgWKB_shape_is_nil(out.p), 1u);
}

TEST(IslandDelete, EveryRemainingRingIsACopyOfTheOuterRing) {
  const Bytes three = polygon({kOuter, kIsland, kIsland2});
  const Bytes expected = polygon({kOuter, kOuter});
  for (const _xgWKB_POINT at : {_xgWKB_POINT{3, 3}, _xgWKB_POINT{7.00005, 5}}) {
    Out out;
    ASSERT_EQ(xgWKB_shape_delete_island(three.data(), &at, &out.p), 0);
    EXPECT_EQ(out.bytes(), expected);
  }
  // With a large outer ring standing in for a small island the block grows to fit.
  const Ring big = {{0, 0}, {10, 0}, {10, 10}, {5, 12}, {0, 10}, {0, 0}};
  const Bytes small = polygon({big, {{1, 1}, {2, 1}, {1, 2}, {1, 1}}, kIsland2});
  const _xgWKB_POINT corner{1, 2};
  Out out;
  ASSERT_EQ(xgWKB_shape_delete_island(small.data(), &corner, &out.p), 0);
  EXPECT_EQ(out.bytes(), polygon({big, big}));
}

// ---- multipolygon rings ---------------------------------------------------------------------

TEST(MultipolygonRing, AddInsertsBeforeTheRingIndexOfTheMember) {
  const Ring& ring = kIsland2;
  Out out;
  ASSERT_EQ(xgWKB_shape_add_multipolygon_ring(with_byte_order_one(kMultiPolygon).data(), 2, 2, ring.data(), 5, &out.p), 0);
  EXPECT_EQ(out.bytes(),
            with_byte_order_one(multi(XGWKB_TYPE_MULTIPOLYGON, {polygon({kFar}), polygon({kOuter, kIsland2, kIsland})})));
}

TEST(MultipolygonRing, AddHandsOutItsBlockBeforeTheRingTests) {
  const Ring &far = kFar, &inside = kIsland2;
  Out outside;
  EXPECT_EQ(xgWKB_shape_add_multipolygon_ring(kMultiPolygon.data(), 2, 1, far.data(), 5, &outside.p), -82);
  EXPECT_NE(outside.p, nullptr);
  Out bad_index;
  EXPECT_EQ(xgWKB_shape_add_multipolygon_ring(kMultiPolygon.data(), 2, 3, inside.data(), 5, &bad_index.p), -135);
  EXPECT_NE(bad_index.p, nullptr);
}

TEST(MultipolygonRing, ReplaceSwapsTheRingOrHandsOutTheBlockWhenOutside) {
  const Ring &inside = kIsland2, &far = kFar;
  Out out;
  ASSERT_EQ(xgWKB_shape_replace_multipolygon_ring(kMultiPolygon.data(), 2, 2, inside.data(), 5, &out.p), 0);
  EXPECT_EQ(out.bytes(), multi(XGWKB_TYPE_MULTIPOLYGON, {polygon({kFar}), polygon({kOuter, kIsland2})}));
  Out outside;
  EXPECT_EQ(xgWKB_shape_replace_multipolygon_ring(kMultiPolygon.data(), 2, 2, far.data(), 5, &outside.p), -82);
  EXPECT_NE(outside.p, nullptr);
}

TEST(MultipolygonRing, DeleteLeavesAOneRingMemberAsAPolygon) {
  Out out;
  ASSERT_EQ(xgWKB_shape_delete_multipolygon_ring(with_byte_order_one(kMultiPolygon).data(), 2, 2, &out.p), 0);
  EXPECT_EQ(out.bytes(), with_byte_order_one(multi(XGWKB_TYPE_MULTIPOLYGON, {polygon({kFar}), polygon({kOuter})})));
}
