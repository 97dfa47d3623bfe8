// Vertex editing: status codes and their order, byte-exact results, the ring-closure rules and
// the result blocks that are handed out before a failure.
#include <gtest/gtest.h>

#include <functional>
#include <vector>

#include "support/blob_builder.h"

using namespace xgtest;

namespace {

// Owns whatever an operation stored in its out-parameter.
struct Out {
  unsigned char* p = nullptr;
  ~Out() { xgWKB_shape_free(p); }
  Bytes bytes() const {
    uint32_t size = 0;
    EXPECT_EQ(xgWKB_shape_get_WKB_size(p, &size), 0);
    return Bytes(p, p + size);
  }
};

const _xgWKB_POINT kNew{9, 9};

const Bytes kLine = linestring({{0, 0}, {1, 0}, {2, 0}});
// Ring 1 is a square (5 vertices), ring 2 a triangle (4 vertices).
const Ring kSquare = square(0, 0, 10);
const Ring kTriangle = {{1, 1}, {2, 1}, {1, 2}, {1, 1}};
const Bytes kPolygon = polygon({kSquare, kTriangle});
const Bytes kMultiLine =
    multi(XGWKB_TYPE_MULTILINESTRING, {linestring({{0, 0}, {1, 1}}), linestring({{5, 5}, {6, 6}, {7, 5}})});
const Bytes kMultiPolygon = multi(XGWKB_TYPE_MULTIPOLYGON, {polygon({square(20, 20, 1)}), kPolygon});

// A copy with byte-order bytes 1, to tell copied headers from ones written afresh.
Bytes marked(Bytes b, std::initializer_list<std::size_t> header_offsets) {
  for (std::size_t at : header_offsets) b[at] = 1;
  return b;
}

Ring with(Ring r, std::size_t at, _xgWKB_POINT p) {
  r.insert(r.begin() + static_cast<long>(at), p);
  return r;
}

Ring without(Ring r, std::size_t at) {
  r.erase(r.begin() + static_cast<long>(at));
  return r;
}

}  // namespace

// ---- status codes --------------------------------------------------------------------------

struct StatusCase {
  const char* what;
  std::function<int32_t(Out&)> call;
  int32_t expected;
};

class VertexEditStatus : public ::testing::TestWithParam<StatusCase> {};

TEST_P(VertexEditStatus, ReturnsTheCodeAndAllocatesNothing) {
  Out out;
  EXPECT_EQ(GetParam().call(out), GetParam().expected);
  EXPECT_EQ(out.p, nullptr);
}

std::vector<StatusCase> status_cases() {
  static Bytes line = kLine, poly = kPolygon, ml = kMultiLine, mp = kMultiPolygon;
  const _xgWKB_POINT* p = &kNew;
  return {
      {"add line null", [=](Out& o) { return xgWKB_shape_add_lineString_point(nullptr, 1, p, &o.p); }, -65},
      {"delete line null", [](Out& o) { return xgWKB_shape_delete_lineString_point(nullptr, 1, &o.p); }, -65},
      {"change line null", [=](Out&) { return xgWKB_shape_change_linestring_point(nullptr, 1, p); }, -65},
      {"add ml null", [=](Out& o) { return xgWKB_shape_add_MultiLineString_point(nullptr, 1, 1, p, &o.p); }, -65},
      {"delete ml null", [](Out& o) { return xgWKB_shape_delete_MultiLineString_point(nullptr, 1, 1, &o.p); }, -65},
      {"change ml null", [=](Out&) { return xgWKB_shape_chage_MultiLineString_point(nullptr, 1, 1, p); }, -65},
      {"add poly null", [=](Out& o) { return xgWKB_shape_add_polygon_point(nullptr, 1, 1, p, &o.p); }, -65},
      {"delete poly null", [](Out& o) { return xgWKB_shape_delete_polygon_point(nullptr, 1, 1, &o.p); }, -65},
      {"change poly null", [=](Out&) { return xgWKB_shape_change_polygon_point(nullptr, 1, 1, p); }, -65},
      {"add mp null", [=](Out& o) { return xgWKB_shape_add_multipolygon_point(nullptr, 1, 1, 1, p, &o.p); }, -65},
      {"delete mp null", [](Out& o) { return xgWKB_shape_delete_multipolygon_point(nullptr, 1, 1, 1, &o.p); }, -65},
      {"change mp null", [=](Out&) { return xgWKB_shape_change_multipolygon_point(nullptr, 1, 1, 1, p); }, -65},
      // The shape must be of the type the operation names.
      {"add line to polygon", [=](Out& o) { return xgWKB_shape_add_lineString_point(poly.data(), 1, p, &o.p); }, -134},
      {"delete ml from line", [](Out& o) { return xgWKB_shape_delete_MultiLineString_point(line.data(), 1, 1, &o.p); }, -134},
      {"change mp of polygon", [=](Out&) { return xgWKB_shape_change_multipolygon_point(poly.data(), 1, 1, 1, p); }, -134},
      // Outer indices.
      {"add line at count+1", [=](Out& o) { return xgWKB_shape_add_lineString_point(line.data(), 4, p, &o.p); }, -135},
      {"add line at 0", [=](Out& o) { return xgWKB_shape_add_lineString_point(line.data(), 0, p, &o.p); }, -135},
      {"delete line at 4", [](Out& o) { return xgWKB_shape_delete_lineString_point(line.data(), 4, &o.p); }, -135},
      {"change line at 4", [=](Out&) { return xgWKB_shape_change_linestring_point(line.data(), 4, p); }, -135},
      {"add ml part 3", [=](Out& o) { return xgWKB_shape_add_MultiLineString_point(ml.data(), 3, 1, p, &o.p); }, -135},
      {"delete ml part 0", [](Out& o) { return xgWKB_shape_delete_MultiLineString_point(ml.data(), 0, 1, &o.p); }, -135},
      {"change ml part 3", [=](Out&) { return xgWKB_shape_chage_MultiLineString_point(ml.data(), 3, 1, p); }, -135},
      {"add poly ring 3", [=](Out& o) { return xgWKB_shape_add_polygon_point(poly.data(), 3, 1, p, &o.p); }, -135},
      {"delete poly ring 3", [](Out& o) { return xgWKB_shape_delete_polygon_point(poly.data(), 3, 1, &o.p); }, -135},
      {"change poly ring -1", [=](Out&) { return xgWKB_shape_change_polygon_point(poly.data(), -1, 1, p); }, -135},
      {"add mp part 3", [=](Out& o) { return xgWKB_shape_add_multipolygon_point(mp.data(), 3, 1, 1, p, &o.p); }, -135},
      {"delete mp part 3", [](Out& o) { return xgWKB_shape_delete_multipolygon_point(mp.data(), 3, 1, 1, &o.p); }, -135},
      {"change mp part 3", [=](Out&) { return xgWKB_shape_change_multipolygon_point(mp.data(), 3, 1, 1, p); }, -135},
      // Inner indices that would reach outside the blob are refused as well.
      {"add ml point 4", [=](Out& o) { return xgWKB_shape_add_MultiLineString_point(ml.data(), 2, 4, p, &o.p); }, -135},
      {"add poly point 6", [=](Out& o) { return xgWKB_shape_add_polygon_point(poly.data(), 1, 6, p, &o.p); }, -135},
      {"add mp ring 3", [=](Out& o) { return xgWKB_shape_add_multipolygon_point(mp.data(), 2, 3, 1, p, &o.p); }, -135},
      {"add mp point 0", [=](Out& o) { return xgWKB_shape_add_multipolygon_point(mp.data(), 2, 1, 0, p, &o.p); }, -135},
      {"change poly point 6", [=](Out&) { return xgWKB_shape_change_polygon_point(poly.data(), 1, 6, p); }, -135},
      {"change mp ring 3", [=](Out&) { return xgWKB_shape_change_multipolygon_point(mp.data(), 2, 3, 1, p); }, -135},
      {"change mp point 6", [=](Out&) { return xgWKB_shape_change_multipolygon_point(mp.data(), 2, 1, 6, p); }, -135},
      // Minimum sizes: the index test comes first for a linestring.
      {"delete from 2-vertex line", [](Out& o) {
         const Bytes two = linestring({{0, 0}, {1, 1}});
         return xgWKB_shape_delete_lineString_point(two.data(), 1, &o.p);
       }, -6},
      {"delete from 2-vertex line, index 3", [](Out& o) {
         const Bytes two = linestring({{0, 0}, {1, 1}});
         return xgWKB_shape_delete_lineString_point(two.data(), 3, &o.p);
       }, -135},
  };
}

INSTANTIATE_TEST_SUITE_P(AllOperations, VertexEditStatus, ::testing::ValuesIn(status_cases()),
                         [](const auto& info) {
                           std::string name = info.param.what;
                           for (char& c : name) if (!isalnum(static_cast<unsigned char>(c))) c = '_';
                           return name;
                         });

// ---- add ------------------------------------------------------------------------------------

TEST(VertexAdd, InsertsBeforeThePointIndexUnderAFreshLinestringHeader) {
  const Bytes input = marked(kLine, {0});
  for (int32_t index : {1, 2, 3}) {
    Out out;
    ASSERT_EQ(xgWKB_shape_add_lineString_point(input.data(), index, &kNew, &out.p), 0);
    EXPECT_EQ(out.bytes(), linestring(with({{0, 0}, {1, 0}, {2, 0}}, index - 1, kNew))) << index;
  }
}

TEST(VertexAdd, MultiLineStringCopiesTheOuterHeaderAndRenewsThePartHeader) {
  const Bytes input = marked(kMultiLine, {0, 9, 50});
  Out out;
  ASSERT_EQ(xgWKB_shape_add_MultiLineString_point(input.data(), 2, 3, &kNew, &out.p), 0);
  const Bytes expected = marked(
      multi(XGWKB_TYPE_MULTILINESTRING,
            {linestring({{0, 0}, {1, 1}}), linestring({{5, 5}, {6, 6}, kNew, {7, 5}})}),
      {0, 9});
  EXPECT_EQ(out.bytes(), expected);
  EXPECT_EQ(out.bytes().size(), kMultiLine.size() + 16);
}

TEST(VertexAdd, AtPointOneLeavesTheRingOpen) {
  Out out;
  ASSERT_EQ(xgWKB_shape_add_polygon_point(kPolygon.data(), 2, 1, &kNew, &out.p), 0);
  EXPECT_EQ(out.bytes(), polygon({kSquare, with(kTriangle, 0, kNew)}));
}

TEST(VertexAdd, MultipolygonTouchesOnlyTheIndexedRing) {
  Out out;
  ASSERT_EQ(xgWKB_shape_add_multipolygon_point(kMultiPolygon.data(), 2, 1, 5, &kNew, &out.p), 0);
  EXPECT_EQ(out.bytes(), multi(XGWKB_TYPE_MULTIPOLYGON,
                               {polygon({square(20, 20, 1)}), polygon({with(kSquare, 4, kNew), kTriangle})}));
}

// ---- delete ---------------------------------------------------------------------------------

TEST(VertexDelete, LinestringKeepsTwoVertices) {
  Out out;
  ASSERT_EQ(xgWKB_shape_delete_lineString_point(marked(kLine, {0}).data(), 2, &out.p), 0);
  EXPECT_EQ(out.bytes(), linestring({{0, 0}, {2, 0}}));
}

TEST(VertexDelete, RingFirstOrClosingVertexRestartsTheRingAtItsSecondVertex) {
  const Ring restarted = {{10, 0}, {10, 10}, {0, 10}, {10, 0}};
  for (int32_t index : {1, 5}) {
    Out out;
    ASSERT_EQ(xgWKB_shape_delete_polygon_point(kPolygon.data(), 1, index, &out.p), 0);
    EXPECT_EQ(out.bytes(), polygon({restarted, kTriangle})) << index;
  }
  Out out;
  ASSERT_EQ(xgWKB_shape_delete_polygon_point(kPolygon.data(), 1, 3, &out.p), 0);
  EXPECT_EQ(out.bytes(), polygon({without(kSquare, 2), kTriangle}));
}

TEST(VertexDelete, MultiLineStringAndMultipolygonEditOnlyTheIndexedPart) {
  Out ml;
  ASSERT_EQ(xgWKB_shape_delete_MultiLineString_point(marked(kMultiLine, {0, 9, 50}).data(), 2, 1, &ml.p), 0);
  EXPECT_EQ(ml.bytes(), marked(multi(XGWKB_TYPE_MULTILINESTRING,
                                     {linestring({{0, 0}, {1, 1}}), linestring({{6, 6}, {7, 5}})}),
                               {0, 9}));
  Out mp;
  ASSERT_EQ(xgWKB_shape_delete_multipolygon_point(kMultiPolygon.data(), 2, 1, 2, &mp.p), 0);
  EXPECT_EQ(mp.bytes(), multi(XGWKB_TYPE_MULTIPOLYGON,
                              {polygon({square(20, 20, 1)}), polygon({without(kSquare, 1), kTriangle})}));
}

// The caller owns a block handed out before the failure and frees it (checked under ASan).
TEST(VertexDelete, TooShortPartOrRingHandsOutTheResultBlock) {
  Out ml;
  EXPECT_EQ(xgWKB_shape_delete_MultiLineString_point(kMultiLine.data(), 1, 1, &ml.p), -6);
  EXPECT_NE(ml.p, nullptr);
  Out poly;
  EXPECT_EQ(xgWKB_shape_delete_polygon_point(kPolygon.data(), 2, 1, &poly.p), -6);
  EXPECT_NE(poly.p, nullptr);
  Out index;
  EXPECT_EQ(xgWKB_shape_delete_polygon_point(kPolygon.data(), 1, 6, &index.p), -135);
  EXPECT_NE(index.p, nullptr);
}

TEST(VertexDelete, MultipolygonKeepsTheBlockOutOnlyForABadRingIndex) {
  Out ring;
  EXPECT_EQ(xgWKB_shape_delete_multipolygon_point(kMultiPolygon.data(), 2, 3, 1, &ring.p), -135);
  EXPECT_NE(ring.p, nullptr);
  unsigned char stale = 0;
  unsigned char* triangle = &stale;  // the operation must overwrite it with null
  EXPECT_EQ(xgWKB_shape_delete_multipolygon_point(kMultiPolygon.data(), 2, 2, 1, &triangle), -6);
  EXPECT_EQ(triangle, nullptr);
  if (triangle != &stale) xgWKB_shape_free(triangle);
  Out point;
  EXPECT_EQ(xgWKB_shape_delete_multipolygon_point(kMultiPolygon.data(), 2, 1, 6, &point.p), -135);
  EXPECT_EQ(point.p, nullptr);
}

// ---- change ---------------------------------------------------------------------------------

TEST(VertexChange, LinestringMovesOnlyTheIndexedVertex) {
  Misaligned line(kLine);
  ASSERT_EQ(xgWKB_shape_change_linestring_point(line.data(), 1, &kNew), 0);
  EXPECT_EQ(Bytes(line.data(), line.data() + kLine.size()), linestring({kNew, {1, 0}, {2, 0}}));
}

TEST(VertexChange, RingFirstOrLastVertexMovesBothEnds) {
  Ring moved = kTriangle;
  moved.front() = moved.back() = kNew;
  for (int32_t index : {1, 4}) {
    Bytes poly = kPolygon;
    ASSERT_EQ(xgWKB_shape_change_polygon_point(poly.data(), 2, index, &kNew), 0);
    EXPECT_EQ(poly, polygon({kSquare, moved})) << index;
    Bytes mp = kMultiPolygon;
    ASSERT_EQ(xgWKB_shape_change_multipolygon_point(mp.data(), 2, 2, index, &kNew), 0);
    EXPECT_EQ(mp, multi(XGWKB_TYPE_MULTIPOLYGON, {polygon({square(20, 20, 1)}), polygon({kSquare, moved})}));
  }
  Bytes poly = kPolygon;
  ASSERT_EQ(xgWKB_shape_change_polygon_point(poly.data(), 2, 2, &kNew), 0);
  Ring middle = kTriangle;
  middle[1] = kNew;
  EXPECT_EQ(poly, polygon({kSquare, middle}));
}

TEST(VertexChange, MultiLineStringPointPastThePartChangesNothingAndSucceeds) {
  Bytes ml = kMultiLine;
  EXPECT_EQ(xgWKB_shape_chage_MultiLineString_point(ml.data(), 1, 3, &kNew), 0);
  EXPECT_EQ(ml, kMultiLine);
  EXPECT_EQ(xgWKB_shape_chage_MultiLineString_point(ml.data(), 2, 3, &kNew), 0);
  EXPECT_EQ(ml, multi(XGWKB_TYPE_MULTILINESTRING, {linestring({{0, 0}, {1, 1}}), linestring({{5, 5}, {6, 6}, kNew})}));
}
