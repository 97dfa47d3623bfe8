// relation_predicates.cpp - the eight predicates between two shapes and their dispatch.
//
// Each predicate reads the two type codes and looks up one cell of its table: the kernel for
// that pair of types and whether the kernel takes the shapes in exchanged order.  Symmetric
// predicates (disjoint, touching, crossing, overlapping) store, for a pair (B, A), the kernel
// of (A, B) with the arguments exchanged; a kernel always receives the shape of lower dimension
// (or, at equal dimension, of lower type code) first.  Cells a predicate does not define hold
// no kernel and answer 0.
#include <array>

#include "core/boundary.h"
#include "relate/point_kernels.h"
#include "relate/relation_facts.h"
#include "relate/segment_tests.h"

using namespace xg;

namespace {

using Kernel = int32_t (*)(const byte*, const byte*, double);

enum class Pred { kDisjoint, kWithin, kTouching, kCrossing, kOverlapping };

// ---- kernels between lines and polygons --------------------------------------------------

// The boxes of every point of a and b, read from the blobs without unpacking them, are apart by
// more than t: nothing of the one comes near the other.  False when either blob is malformed
// (the kernels then give their usual answer for it).
bool extents_apart(const byte* a, const byte* b, double t) {
  _xgWKB_BOX ba;
  _xgWKB_BOX bb;
  return shape_points_box(a, &ba) && shape_points_box(b, &bb) && wkb_boxes_disjoint_tol(ba, bb, t);
}

// Lines against lines: no two members meet (the disjoint-lines test on every pair).
int32_t lines_disjoint(const byte* a, const byte* b, double t) {
  if (extents_apart(a, b, t)) return 1;
  ShapeRuns ra;
  ShapeRuns rb;
  if (!ra.load(a, false) || !rb.load(b, false)) return 0;
  for (uint32_t i = 0; i < ra.run_count(); ++i) {
    for (uint32_t j = 0; j < rb.run_count(); ++j) {
      if (!runs_disjoint(ra.run(i), rb.run(j), t)) return 0;
    }
  }
  return 1;
}

// Polygons against polygons: every pair of members passes the polygon disjointness test.
int32_t polygons_disjoint_kernel(const byte* a, const byte* b, double t) {
  if (extents_apart(a, b, t)) return 1;
  ShapeRuns ra;
  ShapeRuns rb;
  if (!ra.load(a, false) || !rb.load(b, false)) return 0;
  for (uint32_t i = 0; i < ra.part_count(); ++i) {
    for (uint32_t j = 0; j < rb.part_count(); ++j) {
      if (!polygons_disjoint(ra.polygon(i), rb.polygon(j), t)) return 0;
    }
  }
  return 1;
}

constexpr FactBits kII = fact(kIn, kIn);
constexpr FactBits kIE = fact(kIn, kOut);
constexpr FactBits kBE = fact(kOn, kOut);
constexpr FactBits kEI = fact(kOut, kIn);
constexpr FactBits kBoundaryContact = fact(kIn, kOn) | fact(kOn, kIn) | fact(kOn, kOn);

// What each predicate needs to know, and its definition from the facts (lower dimension first).
FactQuery query_for(Pred p, int da, int db) {
  switch (p) {
    case Pred::kDisjoint:
      return {kFirstMeetsSecond, 0};
    case Pred::kWithin:
      return {kIE | kBE, 0};
    case Pred::kTouching:
      return {kII, 0};
    case Pred::kCrossing:
      return da == db ? FactQuery{kSharedStretch, 0} : FactQuery{0, kII | kIE};
    case Pred::kOverlapping:
      return {0, (da == 1 ? kSharedStretch : kII) | kIE | kEI};
  }
  return {0, 0};
}

bool holds(Pred p, FactBits f, int da, int db) {
  switch (p) {
    case Pred::kDisjoint:
      return (f & kFirstMeetsSecond) == 0;
    case Pred::kWithin:
      return (f & kII) && !(f & (kIE | kBE));
    case Pred::kTouching:
      return !(f & kII) && (f & kBoundaryContact);
    case Pred::kCrossing:
      // Lines cross where their interiors meet in points only; a line crosses a polygon when
      // its interior runs both inside and outside.
      return da == db ? (f & kII) && !(f & kSharedStretch) : (f & kII) && (f & kIE);
    case Pred::kOverlapping:
      return ((da == 1 ? (f & kSharedStretch) : (f & kII)) != 0) && (f & kIE) && (f & kEI);
  }
  return false;
}

template <Pred P>
int32_t facts_kernel(const byte* a, const byte* b, double t) {
  // Shapes whose extents are apart decide every predicate without unpacking either one.
  if (extents_apart(a, b, t)) return P == Pred::kDisjoint ? 1 : 0;
  RelateOperand x;
  RelateOperand y;
  if (!x.load(a, t) || !y.load(b, t)) return 0;
  // Boxes settle the answer before any walk: apart, nothing meets; a shape sticking out of the
  // other's box is not within it.
  const _xgWKB_BOX bx = x.runs().box();
  const _xgWKB_BOX by = y.runs().box();
  if (wkb_boxes_disjoint_tol(bx, by, t)) return P == Pred::kDisjoint ? 1 : 0;
  if (P == Pred::kWithin && (bx.minx < by.minx - t || bx.miny < by.miny - t ||
                             bx.maxx > by.maxx + t || bx.maxy > by.maxy + t)) {
    return 0;
  }
  const FactBits f = relate_facts(x, y, t, query_for(P, x.dim(), y.dim()));
  return holds(P, f, x.dim(), y.dim()) ? 1 : 0;
}

// ---- dispatch tables ---------------------------------------------------------------------

struct Cell {
  Kernel kernel;
  bool exchange;
};
using Table = std::array<std::array<Cell, 6>, 6>;

// Cells each predicate defines; rows are the first shape, columns the second, both in the
// order point, linestring, polygon, multipoint, multilinestring, multipolygon.  Intended gaps:
// a point within a point is not defined although a point within a multipoint is, and a
// multipoint within a linestring is defined although a linestring within a multipoint is not.
constexpr const char* kAllCells[6] = {"yyyyyy", "yyyyyy", "yyyyyy", "yyyyyy", "yyyyyy", "yyyyyy"};
constexpr const char* kWithinCells[6] = {"-yyyyy", "-yy-yy", "--y--y",
                                         "-yyyyy", "-yy-yy", "--y--y"};
constexpr const char* kTouchingCells[6] = {"-yy-yy", "yyyyyy", "yyyyyy",
                                           "-yy-yy", "yyyyyy", "yyyyyy"};
constexpr const char* kCrossingCells[6] = {"------", "-yyyyy", "-y-yy-",
                                           "-yy-yy", "-yyyyy", "-y-yy-"};
constexpr const char* kOverlappingCells[6] = {"------", "-y--y-", "--y--y",
                                              "---y--", "-y--y-", "--y--y"};

constexpr int dim_of(uint32_t type) { return static_cast<int>((type - 1) % 3); }

// The kernel of a pair in kernel order (type a's dimension not above b's).
constexpr Kernel pick(Pred p, uint32_t a, uint32_t b) {
  const int da = dim_of(a);
  const int db = dim_of(b);
  if (a == XGWKB_TYPE_POINT) {
    // The single-point kernels against a linestring or a polygon are the primitive ones.
    if (p == Pred::kDisjoint && b == XGWKB_TYPE_POINT) return pt_pt_disjoint;
    if (b == XGWKB_TYPE_LINESTRING) {
      if (p == Pred::kDisjoint) return pt_ln_disjoint;
      if (p == Pred::kWithin) return pt_ln_within;
      if (p == Pred::kTouching) return pt_ln_touching;
    }
    if (b == XGWKB_TYPE_POLYGON) {
      if (p == Pred::kDisjoint) return pt_pg_disjoint;
      if (p == Pred::kWithin) return pt_pg_within;
      if (p == Pred::kTouching) return pt_pg_touching;
    }
  }
  if (da == 0) {
    switch (p) {
      case Pred::kDisjoint: return points_disjoint;
      case Pred::kWithin: return points_within;
      case Pred::kTouching: return points_touching;
      case Pred::kCrossing: return points_crossing;
      case Pred::kOverlapping: return multipoints_overlapping;
    }
  }
  if (p == Pred::kDisjoint && da == db) return da == 1 ? lines_disjoint : polygons_disjoint_kernel;
  switch (p) {
    case Pred::kDisjoint: return facts_kernel<Pred::kDisjoint>;
    case Pred::kWithin: return facts_kernel<Pred::kWithin>;
    case Pred::kTouching: return facts_kernel<Pred::kTouching>;
    case Pred::kCrossing: return facts_kernel<Pred::kCrossing>;
    case Pred::kOverlapping: return facts_kernel<Pred::kOverlapping>;
  }
  return nullptr;
}

constexpr Table make_table(Pred p, const char* const cells[6], bool symmetric) {
  Table table{};
  for (uint32_t a = 1; a <= 6; ++a) {
    for (uint32_t b = 1; b <= 6; ++b) {
      if (cells[a - 1][b - 1] != 'y') continue;
      const bool in_order =
          !symmetric || dim_of(a) < dim_of(b) || (dim_of(a) == dim_of(b) && a <= b);
      table[a - 1][b - 1] = in_order ? Cell{pick(p, a, b), false} : Cell{pick(p, b, a), true};
    }
  }
  return table;
}

constexpr Table kDisjoint = make_table(Pred::kDisjoint, kAllCells, true);
constexpr Table kWithin = make_table(Pred::kWithin, kWithinCells, false);
constexpr Table kTouching = make_table(Pred::kTouching, kTouchingCells, true);
constexpr Table kCrossing = make_table(Pred::kCrossing, kCrossingCells, true);
constexpr Table kOverlapping = make_table(Pred::kOverlapping, kOverlappingCells, true);

// The kernel's answer for the pair, 0 for a cell without kernel or a type outside 1-6, and -1
// when the kernel failed (out of memory).
int32_t run_cell(const Table& table, const byte* a, const byte* b, double t) {
  const uint32_t ta = shape_type(a);
  const uint32_t tb = shape_type(b);
  if (!is_geometry_type(ta) || !is_geometry_type(tb)) return 0;
  const Cell& cell = table[ta - 1][tb - 1];
  if (cell.kernel == nullptr) return 0;
  return guarded_value<int32_t>(-1, [&] {
    return cell.exchange ? cell.kernel(b, a, t) : cell.kernel(a, b, t);
  });
}

int32_t as_predicate(int32_t answer) { return answer == 1 ? 1 : 0; }

}  // namespace

extern "C" {

int32_t xgWKB_shape_is_disjoint(const unsigned char* a, const unsigned char* b, double t) noexcept {
  return as_predicate(run_cell(kDisjoint, a, b, t));
}

int32_t xgWKB_shape_is_intersecting(const unsigned char* a, const unsigned char* b,
                                    double t) noexcept {
  const uint32_t ta = shape_type(a);
  const uint32_t tb = shape_type(b);
  if (!is_geometry_type(ta) || !is_geometry_type(tb)) return 0;
  return run_cell(kDisjoint, a, b, t) == 0 ? 1 : 0;
}

int32_t xgWKB_shape_is_within(const unsigned char* a, const unsigned char* b, double t) noexcept {
  return as_predicate(run_cell(kWithin, a, b, t));
}

int32_t xgWKB_shape_is_containing(const unsigned char* a, const unsigned char* b,
                                  double t) noexcept {
  return as_predicate(run_cell(kWithin, b, a, t));
}

int32_t xgWKB_shape_is_crossing(const unsigned char* a, const unsigned char* b, double t) noexcept {
  return as_predicate(run_cell(kCrossing, a, b, t));
}

int32_t xgWKB_shape_is_overlapping(const unsigned char* a, const unsigned char* b,
                                   double t) noexcept {
  return as_predicate(run_cell(kOverlapping, a, b, t));
}

int32_t xgWKB_shape_is_touching(const unsigned char* a, const unsigned char* b, double t) noexcept {
  return as_predicate(run_cell(kTouching, a, b, t));
}

int32_t xgWKB_shape_find_relation(void) noexcept {
  return 0;  // reserved entry point
}

}  // extern "C"
