// The overlay operations on fixed cases: statuses per operation, empty operands, the point
// kernels' comparisons, the line kernels, and the shape of polygon results.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>

#include "core/blob.h"
#include "support/edit_result.h"

using namespace xgtest;

namespace {

using BinaryOp = int32_t (*)(const unsigned char*, const unsigned char*, unsigned char**, double);

unsigned char* const kUntouched = reinterpret_cast<unsigned char*>(0x5a5a);

// The polygons of a multipolygon result, each as its rings' point lists.
std::vector<std::vector<Ring>> polygons_of(const unsigned char* mp) {
  std::vector<std::vector<Ring>> out;
  EXPECT_EQ(xg::shape_type(mp), uint32_t{XGWKB_TYPE_MULTIPOLYGON});
  xg::for_each_member(mp, [&](const unsigned char* poly, uint32_t) {
    out.emplace_back();
    xg::for_each_ring(poly, [&](const xg::PointRun& r, uint32_t) {
      Ring ring(r.size());
      r.copy_to(ring.data());
      out.back().push_back(ring);
    });
  });
  return out;
}

double area(const Ring& r) {
  double s = 0;
  for (std::size_t i = 1; i < r.size(); ++i) s += r[i - 1].x * r[i].y - r[i].x * r[i - 1].y;
  return std::fabs(s) / 2;
}

// A call of a binary operation on copies of a and b placed at odd addresses.
Call op(BinaryOp f, const Bytes& a, const Bytes& b, double t) {
  return [=](unsigned char** out) { return f(Misaligned(a).data(), Misaligned(b).data(), out, t); };
}

const Bytes kPt = point(1, 2), kLn = linestring({{0, 0}, {10, 0}}), kPg = polygon({square(0, 0, 10)});
const Bytes kMpt = multi(XGWKB_TYPE_MULTIPOINT, {point(1, 2)}), kMln = multiline({{{0, 0}, {1, 1}}});
const Bytes kMpg = mp({kPg}), kText = header(XGWKB_TYPE_SINGLETEXT);

}  // namespace

TEST(Overlay, StatusesForForeignTypesRefusedPairsAndBadPointers) {
  const struct {
    const char* name;
    BinaryOp op;
    const Bytes &a, &b;
    int32_t status;
  } cases[] = {
      {"diff text first", xgWKB_shape_difference, kText, kPg, -134},
      {"diff text second", xgWKB_shape_difference, kPg, kText, -134},
      {"diff polygon - point", xgWKB_shape_difference, kPg, kPt, -27},
      {"diff line - multipoint", xgWKB_shape_difference, kLn, kMpt, -27},
      {"int text first", xgWKB_shape_intersection, kText, kPg, -134},
      {"int point, text", xgWKB_shape_intersection, kPt, kText, -134},
      {"int polygon, text", xgWKB_shape_intersection, kPg, kText, 0},
      {"int multipolygon, text", xgWKB_shape_intersection, kMpg, kText, -134},
      {"union text first", xgWKB_shape_union, kText, kPt, -27},
      {"union point, text", xgWKB_shape_union, kPt, kText, -27},
      {"union multipoint, text", xgWKB_shape_union, kMpt, kText, -134},
      {"union line, polygon", xgWKB_shape_union, kLn, kPg, -134},
      {"union point, multiline", xgWKB_shape_union, kPt, kMln, -134},
      {"xor text first", xgWKB_shape_symmetric_difference, kText, kPt, -27},
      {"xor multipoint, text", xgWKB_shape_symmetric_difference, kMpt, kText, -27},
      {"xor polygon, line", xgWKB_shape_symmetric_difference, kPg, kLn, -134},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    unsigned char* out = kUntouched;
    EXPECT_EQ(c.op(c.a.data(), c.b.data(), &out, 0.001), c.status);
    EXPECT_EQ(out, kUntouched);
  }
  const Bytes nan_pg = polygon({{{0, 0}, {1, 0}, {std::nan(""), 1}, {0, 0}}});
  const Bytes inf_pt = point(std::numeric_limits<double>::infinity(), 0);
  for (BinaryOp op : {xgWKB_shape_difference, xgWKB_shape_intersection, xgWKB_shape_union,
                      xgWKB_shape_symmetric_difference}) {
    unsigned char* out = kUntouched;
    EXPECT_EQ(op(nullptr, kPg.data(), &out, 0), -65);
    EXPECT_EQ(op(kPg.data(), nullptr, &out, 0), -65);
    EXPECT_EQ(op(kPg.data(), kPg.data(), nullptr, 0), -65);
    EXPECT_EQ(op(kPg.data(), nan_pg.data(), &out, 0), -66);
    EXPECT_EQ(op(inf_pt.data(), kPt.data(), &out, 0), -66);
    EXPECT_EQ(op(kLn.data(), kLn.data(), &out, std::nan("")), -66);
    EXPECT_EQ(out, kUntouched);
  }
}

TEST(Overlay, OverlayStatusesLeaveEveryOutputAlone) {
  const struct {
    const Bytes &a, &b;
    int32_t status;
  } cases[] = {{kText, kPt, -27}, {kPt, kText, -27}, {kLn, kText, -134}, {kMln, kText, -134},
               {kPg, kText, -27}, {kLn, kLn, -134}, {kPt, kPg, -134},  {kMpg, kMln, -134}};
  for (const auto& c : cases) {
    unsigned char *a = kUntouched, *b = kUntouched, *common = kUntouched;
    EXPECT_EQ(xgWKB_shape_overlay(c.a.data(), c.b.data(), &a, &b, &common, 0), c.status);
    EXPECT_TRUE(a == kUntouched && b == kUntouched && common == kUntouched);
  }
  unsigned char* o = nullptr;
  EXPECT_EQ(xgWKB_shape_overlay(kPg.data(), kPg.data(), &o, &o, nullptr, 0), -65);
  EXPECT_EQ(xgWKB_shape_overlay(nullptr, kPg.data(), &o, &o, &o, 0), -65);
}

TEST(Overlay, EmptyPolygonOperands) {
  const Bytes empty_pg = polygon({}), empty_mpg = mp({});
  const Bytes sq = polygon({square(0, 0, 2)});
  const std::vector<EditCase> cases = {
      {"both empty: null", op(xgWKB_shape_union, empty_pg, empty_mpg, 0), 0},
      {"union copies", op(xgWKB_shape_union, sq, empty_mpg, 0), 0, sq},
      {"union copies the second", op(xgWKB_shape_union, empty_mpg, sq, 0), 0, sq},
      {"xor copies", op(xgWKB_shape_symmetric_difference, empty_pg, sq, 0), 0, sq},
      {"diff empty first: nil", op(xgWKB_shape_difference, empty_pg, sq, 0), 0, nil()},
      {"diff empty second: copy", op(xgWKB_shape_difference, sq, empty_pg, 0), 0, sq},
      {"int: nil", op(xgWKB_shape_intersection, sq, empty_pg, 0), 0, nil()},
  };
  for (const EditCase& c : cases) check_edit(c);
}

TEST(Overlay, PolygonResultsAreMultipolygonsInAreaOrder) {
  Out u, d, eq, line;
  // Disjoint squares: two polygons, the smaller first.
  const Bytes big = polygon({square(10, 0, 3)}), small = polygon({square(0, 0, 1)});
  ASSERT_EQ(xgWKB_shape_union(big.data(), small.data(), &u.p, 0), 0);
  auto polys = polygons_of(u.p);
  ASSERT_EQ(polys.size(), 2u);
  EXPECT_DOUBLE_EQ(area(polys[0][0]), 1);
  EXPECT_DOUBLE_EQ(area(polys[1][0]), 9);
  // A square minus a square inside it: one polygon with a closed hole.
  const Bytes inner = polygon({square(2, 2, 1)});
  ASSERT_EQ(xgWKB_shape_difference(kPg.data(), inner.data(), &d.p, 0), 0);
  polys = polygons_of(d.p);
  ASSERT_EQ(polys.size(), 1u);
  ASSERT_EQ(polys[0].size(), 2u);
  EXPECT_DOUBLE_EQ(area(polys[0][0]) - area(polys[0][1]), 99);
  for (const Ring& r : polys[0]) EXPECT_TRUE(r.front().x == r.back().x && r.front().y == r.back().y);
  // Equal squares: nothing left, the 5-byte nil shape.
  ASSERT_EQ(xgWKB_shape_difference(kPg.data(), kPg.data(), &eq.p, 0), 0);
  EXPECT_EQ(eq.bytes(), nil());
  // A vertex within 0.0001 of the line through its neighbours is cleaned away.
  const Bytes bent = polygon({{{0, 0}, {5, 0.00005}, {10, 0}, {10, 10}, {0, 10}, {0, 0}}});
  ASSERT_EQ(xgWKB_shape_intersection(bent.data(), bent.data(), &line.p, 0), 0);
  polys = polygons_of(line.p);
  ASSERT_EQ(polys.size(), 1u);
  EXPECT_EQ(polys[0][0].size(), 5u);
}

TEST(Overlay, HolesGoToTheSmallestOuterRingHoldingThemOrAreDropped) {
  // Union of a frame (square with a hole) and an island inside the hole with a hole of its own.
  const Bytes frame = polygon({square(0, 0, 10), square(2, 2, 6)});
  const Bytes island = polygon({square(3, 3, 4), square(4, 4, 1)});
  Out u;
  ASSERT_EQ(xgWKB_shape_union(frame.data(), island.data(), &u.p, 0), 0);
  const auto polys = polygons_of(u.p);
  ASSERT_EQ(polys.size(), 2u);
  EXPECT_DOUBLE_EQ(area(polys[0][0]), 16);  // the island first, with its hole
  ASSERT_EQ(polys[0].size(), 2u);
  EXPECT_DOUBLE_EQ(area(polys[0][1]), 1);
  ASSERT_EQ(polys[1].size(), 2u);
  EXPECT_DOUBLE_EQ(area(polys[1][1]), 36);
}

TEST(Overlay, PointKernelsCompareBlobStartsAndMemberZeroOnly) {
  // The comparison reads bytes 0-15 as two doubles: the header with x's three low bytes, then
  // x's five high bytes below y's three low bytes.  Round numbers make both tiny, so (1, 2),
  // (1, 1000) and (7, 7) all compare equal at 1e-9; a y of 1/3 or 4/3 (low bytes 0x55) sets a
  // large exponent and tells the points apart.
  const Bytes p = point(1, 2), far_y = point(7, 1000), other = point(1, 1.0 / 3), q = point(7, 4.0 / 3);
  const Bytes mpq = multi(XGWKB_TYPE_MULTIPOINT, {p, q}), mqp = multi(XGWKB_TYPE_MULTIPOINT, {q, p});
  const auto mpt = [](std::vector<Bytes> m) { return multi(XGWKB_TYPE_MULTIPOINT, m); };
  const std::vector<EditCase> cases = {
      {"union equal", op(xgWKB_shape_union, p, far_y, 1e-9), 0, mpt({p})},
      {"union differ", op(xgWKB_shape_union, p, other, 1e-9), 0, mpt({p, other})},
      {"diff equal", op(xgWKB_shape_difference, p, far_y, 1e-9), 0, nil()},
      {"xor differ", op(xgWKB_shape_symmetric_difference, p, other, 1e-9), 0, mpt({p, other})},
      {"int equal", op(xgWKB_shape_intersection, p, far_y, 1e-9), 0, mpt({p})},
      // Point and multipoint: member 0 only; a match in intersection falls through to the
      // symmetric difference.
      {"int match", op(xgWKB_shape_intersection, p, mpq, 1e-9), 0, mpt({q})},
      {"int match at member 1 is none", op(xgWKB_shape_intersection, p, mqp, 1e-9), 0, nil()},
      {"diff match at member 1 is none", op(xgWKB_shape_difference, p, mqp, 1e-9), 0, mpt({p})},
      {"xor no match", op(xgWKB_shape_symmetric_difference, p, mqp, 1e-9), 0, mpt({p, q, p})},
      {"union match copies", op(xgWKB_shape_union, p, mpq, 1e-9), 0, mpq},
      // Multipoint kernels compare every member.
      {"mp minus point", op(xgWKB_shape_difference, mqp, p, 1e-9), 0, mpt({q})},
      {"mp xor mp", op(xgWKB_shape_symmetric_difference, mqp, mpt({p, other}), 1e-9), 0, mpt({q, other})},
      {"mp union mp", op(xgWKB_shape_union, mqp, mpt({other, p}), 1e-9), 0, mpt({q, p, other})},
      // Points against lines and polygons; a copied member keeps its byte-order byte.
      {"int on line", op(xgWKB_shape_intersection, marked(point(5, 0)), kLn, 1e-9), 0, mpt({marked(point(5, 0))})},
      {"line int point", op(xgWKB_shape_intersection, kLn, mpt({point(5, 0), q}), 1e-9), 0, mpt({point(5, 0)})},
      {"int in polygon", op(xgWKB_shape_intersection, mpt({q, point(20, 1), point(10, 3)}), kMpg, 1e-5), 0,
       mpt({q, point(10, 3)})},
      {"equal points are not special", op(xgWKB_shape_difference, p, point(7, 7), 1e-9), 0, nil()},
      {"polygon minus nothing", op(xgWKB_shape_difference, point(20, 1), kPg, 1e-9), 0, mpt({point(20, 1)})},
      // Minus a line the coordinates are read five bytes late: a point on the line stays.
      {"diff reads late", op(xgWKB_shape_difference, point(5, 1), linestring({{0, 1}, {10, 1}}), 1e-9), 0,
       mpt({point(5, 1)})},
  };
  for (const EditCase& c : cases) check_edit(c);
}

TEST(Overlay, OverlayOfPointsWritesOnlyTheOutputsThatHold) {
  const Bytes p = marked(point(1, 2)), q = point(7, 4.0 / 3);
  const Bytes mpq = multi(XGWKB_TYPE_MULTIPOINT, {point(1, 2), q});
  // The common point's coordinates are the first 16 bytes of the first blob.
  Bytes header_copy = header(XGWKB_TYPE_POINT);
  header_copy.insert(header_copy.end(), p.begin(), p.begin() + 16);
  {
    unsigned char *a = kUntouched, *b = kUntouched, *c = nullptr;
    ASSERT_EQ(xgWKB_shape_overlay(p.data(), point(1, 2).data(), &a, &b, &c, 1e-9), 0);
    EXPECT_TRUE(a == kUntouched && b == kUntouched);
    EXPECT_EQ(bytes_of(c), header_copy);
    xgWKB_shape_free(c);
  }
  {
    Out a, b;
    unsigned char* c = kUntouched;
    ASSERT_EQ(xgWKB_shape_overlay(p.data(), q.data(), &a.p, &b.p, &c, 1e-9), 0);
    EXPECT_EQ(a.bytes(), p);
    EXPECT_EQ(b.bytes(), q);
    EXPECT_EQ(c, kUntouched);
  }
  {
    // Multipoint first: served with the outputs swapped.
    Out b, c;
    unsigned char* a = kUntouched;
    ASSERT_EQ(xgWKB_shape_overlay(mpq.data(), p.data(), &b.p, &a, &c.p, 1e-9), 0);
    EXPECT_EQ(a, kUntouched);
    EXPECT_EQ(b.bytes(), multi(XGWKB_TYPE_MULTIPOINT, {q}));
    EXPECT_EQ(c.bytes(), header_copy);
  }
}

TEST(Overlay, LineKernels) {
  const double t = 1e-4;
  const auto ml = [](std::vector<Ring> r) { return multiline(r); };
  const Bytes a = kLn, cross = linestring({{5, -5}, {5, 5}}), along = linestring({{5, 0}, {15, 0}});
  const Bytes touch = linestring({{10, 0}, {10, 5}}), apart = linestring({{0, 3}, {10, 3}});
  // B ends within the tolerance of A's middle vertex: the cut snaps to that vertex.
  const Bytes bent = linestring({{0, 0}, {5, 0}, {10, 0}}), near = linestring({{5.00005, 0}, {20, 0}});
  const Bytes sq = polygon({square(2, -2, 4)}), inside = linestring({{3, -1}, {4, 1}});
  const std::vector<EditCase> cases = {
      {"crossing: int has no stretch", op(xgWKB_shape_intersection, a, cross, t), 0, nil()},
      {"crossing: diff keeps the whole line", op(xgWKB_shape_difference, a, cross, t), 0, ml({{{0, 0}, {10, 0}}})},
      {"crossing: union", op(xgWKB_shape_union, a, cross, t), 0, ml({{{0, 0}, {10, 0}}, {{5, -5}, {5, 5}}})},
      {"overlap: int", op(xgWKB_shape_intersection, a, along, t), 0, ml({{{5, 0}, {10, 0}}})},
      {"overlap: diff", op(xgWKB_shape_difference, a, along, t), 0, ml({{{0, 0}, {5, 0}}})},
      {"overlap: xor", op(xgWKB_shape_symmetric_difference, a, along, t), 0,
       ml({{{0, 0}, {5, 0}}, {{10, 0}, {15, 0}}})},
      {"overlap: union", op(xgWKB_shape_union, a, along, t), 0, ml({{{0, 0}, {10, 0}}, {{10, 0}, {15, 0}}})},
      {"touching ends: int", op(xgWKB_shape_intersection, a, touch, t), 0, nil()},
      {"no common point: null", op(xgWKB_shape_intersection, a, apart, t), 0},
      {"near node: int", op(xgWKB_shape_intersection, bent, near, t), 0, ml({{{5, 0}, {10, 0}}})},
      {"near node: diff", op(xgWKB_shape_difference, bent, near, t), 0, ml({{{0, 0}, {5, 0}}})},
      {"line in polygon", op(xgWKB_shape_intersection, a, sq, t), 0, ml({{{2, 0}, {6, 0}}})},
      {"polygon and line", op(xgWKB_shape_intersection, sq, a, t), 0, ml({{{2, 0}, {6, 0}}})},
      {"line minus polygon", op(xgWKB_shape_difference, a, sq, t), 0, ml({{{0, 0}, {2, 0}}, {{6, 0}, {10, 0}}})},
      {"wholly inside", op(xgWKB_shape_intersection, inside, mp({sq}), t), 0, ml({{{3, -1}, {4, 1}}})},
  };
  for (const EditCase& c : cases) check_edit(c);
}

TEST(Overlay, DegenerateRingsContributeNothing) {
  const Ring sq = square(0, 0, 2);
  const std::vector<Ring> junk = {{{5, 5}, {6, 6}},              // two points
                                  {{7, 7}, {7, 7}, {7, 7}, {7, 7}},  // one point repeated
                                  {{0, 5}, {1, 5}, {2, 5}, {0, 5}},  // collinear
                                  {}};                               // no points at all
  for (const Ring& r : junk) {
    const Bytes with_junk = mp({polygon({sq}), polygon({r}), polygon({r, r})});
    for (BinaryOp f : {xgWKB_shape_union, xgWKB_shape_intersection, xgWKB_shape_symmetric_difference}) {
      Out out;
      ASSERT_EQ(f(with_junk.data(), polygon({sq}).data(), &out.p, 0), 0);
      const double expected = f == xgWKB_shape_symmetric_difference ? 0 : 4;
      double total = 0;
      if (!xgWKB_shape_is_nil(out.p)) {
        for (const auto& poly : polygons_of(out.p)) total += area(poly[0]);
      }
      EXPECT_DOUBLE_EQ(total, expected);
    }
  }
}
