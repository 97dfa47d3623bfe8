// length_area.cpp - length and area of shapes and of their parts.
//
// Lengths follow the stored points (a ring's closing point supplies its closing segment); areas
// are shoelace sums over the stored points taken absolute, so orientation never matters.
#include <cmath>

#include "core/blob.h"
#include "core/point_primitives.h"
#include "measure/length.h"

using namespace xg;

namespace {

// Sum of term(prev, cur) over the consecutive stored points of a run.
template <class Term>
double sum_over_segments(PointRun run, Term term) {
  const uint32_t n = run.size();
  double sum = 0;
  if (n == 0) return sum;
  _xgWKB_POINT prev = run.point(0);
  for (uint32_t i = 1; i < n; ++i) {
    const _xgWKB_POINT cur = run.point(i);
    sum += term(prev, cur);
    prev = cur;
  }
  return sum;
}

double run_length(PointRun run) { return sum_over_segments(run, point_distance); }

double polygon_length(const byte* polygon) {
  double sum = 0;
  for_each_ring(polygon, [&](PointRun ring, uint32_t) { sum += run_length(ring); });
  return sum;
}

double member_length(const byte* member) {
  return shape_type(member) == XGWKB_TYPE_POLYGON ? polygon_length(member)
                                                  : run_length(line_run(member));
}

// Area of a stored ring: half the absolute shoelace sum over consecutive stored points, with no
// term from the last point back to the first (an unclosed ring is measured as stored).
double ring_area(PointRun run) {
  const double s = sum_over_segments(run, [](const _xgWKB_POINT& prev, const _xgWKB_POINT& cur) {
    return prev.x * cur.y - prev.y * cur.x;
  });
  return std::fabs(s) / 2;
}

// Outer ring minus the holes, the holes subtracted as magnitudes.
double polygon_area(const byte* polygon) {
  double area = 0;
  for_each_ring(polygon, [&](PointRun ring, uint32_t i) {
    area += i == 0 ? ring_area(ring) : -ring_area(ring);
  });
  return area;
}

// Polygon area by part index.  Intended: 1 is the outer ring alone; beyond that the walk counts
// from 1 at ring 2 and answers the ring where the counter equals the index, so index j in
// 2..r-1 gives ring j+1, ring 2 alone cannot be asked for, and 0 or r give the whole polygon.
// Long-standing behaviour callers rely on (the same counting as the multi-type extent).
double polygon_area_by_index(const byte* polygon, int32_t index) {
  const uint32_t rings = shape_count(polygon);
  if (rings == 0) return 0;
  PointRun ring = first_ring(polygon);
  double area = ring_area(ring);
  if (index == 1) return area;
  for (uint32_t counter = 1; counter < rings; ++counter) {
    ring = next_ring(ring);
    const double hole = ring_area(ring);
    if (static_cast<int32_t>(counter) == index) return hole;
    area -= hole;
  }
  return area;
}

// The measure of member `part` (1-based) of a multi-type, or the sum over all members (part 0).
template <class Measure>
double member_measure(const byte* multi, int32_t part, Measure measure) {
  if (part > 0) return measure(member_at(multi, static_cast<uint32_t>(part - 1)));
  double sum = 0;
  for_each_member(multi, [&](const byte* member, uint32_t) { sum += measure(member); });
  return sum;
}

bool index_in_range(int32_t index, uint32_t count) {
  return index >= 0 && static_cast<uint32_t>(index) <= count;
}

int32_t failed(double* out, int32_t status) {
  *out = 0;
  return status;
}

}  // namespace

namespace xg {

int32_t shape_length(const byte* shape, int32_t part, double* length) {
  if (shape == nullptr) return failed(length, XGWKB_E_NULL_POINTER);
  if (!members_well_typed(shape)) return failed(length, XGWKB_E_INVALID_SHAPE);
  const uint32_t type = shape_type(shape);
  switch (type) {
    case XGWKB_TYPE_POINT:
    case XGWKB_TYPE_MULTIPOINT:
      return failed(length, XGWKB_E_INVALID_ENTITY);
    case XGWKB_TYPE_LINESTRING:
      *length = run_length(line_run(shape));
      return XGWKB_OK;
    case XGWKB_TYPE_POLYGON:
      if (!index_in_range(part, shape_count(shape))) return failed(length, XGWKB_E_NO_PART);
      *length = part == 0 ? polygon_length(shape)
                          : run_length(PointRun{ring_at(shape, static_cast<uint32_t>(part - 1))});
      return XGWKB_OK;
    case XGWKB_TYPE_MULTILINESTRING:
    case XGWKB_TYPE_MULTIPOLYGON: {
      if (!index_in_range(part, shape_count(shape))) return failed(length, XGWKB_E_NO_PART);
      *length = member_measure(shape, part, member_length);
      return XGWKB_OK;
    }
    default:
      return failed(length, XGWKB_E_INVALID_SHAPE);
  }
}

}  // namespace xg

extern "C" {

int32_t xgWKB_shape_get_length(const unsigned char* shape, int32_t part, double* length) noexcept {
  if (length == nullptr) return XGWKB_E_NULL_POINTER;
  return shape_length(shape, part, length);
}

int32_t xgWKB_shape_get_area(const unsigned char* shape, int32_t part, double* area) noexcept {
  if (area == nullptr) return XGWKB_E_NULL_POINTER;
  if (shape == nullptr) return failed(area, XGWKB_E_NULL_POINTER);
  if (!members_well_typed(shape)) return failed(area, XGWKB_E_INVALID_SHAPE);
  switch (shape_type(shape)) {
    case XGWKB_TYPE_POLYGON:
      if (!index_in_range(part, shape_count(shape))) return failed(area, XGWKB_E_NO_PART);
      *area = polygon_area_by_index(shape, part);
      return XGWKB_OK;
    case XGWKB_TYPE_MULTIPOLYGON: {
      if (!index_in_range(part, shape_count(shape))) return failed(area, XGWKB_E_NO_PART);
      *area = member_measure(shape, part, polygon_area);
      return XGWKB_OK;
    }
    default:
      return failed(area, XGWKB_E_INVALID_SHAPE);
  }
}

}  // extern "C"
