// The point at a fraction of a line's length, and snapping points onto shapes.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

#include "support/blob_builder.h"

using namespace xgtest;

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

struct Found {
  int32_t status;
  _xgWKB_POINT p;
};

Found along(const Bytes& line, double f) {
  Found r{0, {-777, -777}};
  r.status = xgWKB_shape_find_along(Misaligned(line).data(), f, &r.p);
  return r;
}

Found snap(const Bytes& shape, _xgWKB_POINT p, double t, int32_t modes) {
  Found r{0, {-777, -777}};
  r.status = xgWKB_shape_snap_point(Misaligned(shape).data(), &p, t, modes, &r.p);
  return r;
}

void expect_found(const Found& got, int32_t status, _xgWKB_POINT p, const std::string& what) {
  EXPECT_EQ(got.status, status) << what;
  if (status != XGWKB_OK) return;
  EXPECT_NEAR(got.p.x, p.x, 1e-12) << what;
  EXPECT_NEAR(got.p.y, p.y, 1e-12) << what;
}

}  // namespace

TEST(FindAlong, WalksForwardUpToOneHalfAndBackwardWithItsOwnSegmentPairingAbove) {
  const Bytes bent = linestring({{0, 0}, {1, 0}, {3, 0}});  // length 3
  const Bytes even = linestring({{0, 0}, {1, 0}, {2, 0}});
  const Bytes growing = linestring({{0, 0}, {1, 0}, {3, 0}, {6, 0}, {10, 0}});  // length 10
  const Bytes long_last = linestring({{0, 0}, {1, 0}, {2, 0}, {10, 0}});        // length 10
  const struct {
    const Bytes& line;
    double f;
    int32_t status;
    _xgWKB_POINT p;
  } cases[] = {
      {bent, 0, XGWKB_OK, {0, 0}},
      {bent, 1, XGWKB_OK, {3, 0}},
      {bent, 1.0000001, XGWKB_E_INVALID_ARGUMENT, {}},
      {bent, 0.25, XGWKB_OK, {0.75, 0}},  // forward: 0.75 into segment (0, 1)
      {bent, 0.5, XGWKB_OK, {1.5, 0}},    // forward still: 0.5 into segment (1, 2)
      // Backward: 0.75 from the end is measured on segment (0, 1) and placed on (1, 2).
      {bent, 0.75, XGWKB_OK, {1.5, 0}},
      {bent, 0.9, XGWKB_OK, {2.4, 0}},                 // not 2.7: the pairing is kept
      {bent, 0.6, XGWKB_E_FAILED, {}},                 // 1.2 from the end: the walk runs out at k = 0
      {even, 0.5, XGWKB_E_FAILED, {}},                 // on the middle vertex: no strict match
      {growing, 0.8, XGWKB_OK, {10 - 4 * 2.0 / 3, 0}},  // 2 from the end: 2/3 into (2, 3), placed on (3, 4)
      {long_last, 0.75, XGWKB_E_FAILED, {}},            // 2.5 from the end lies in the last segment, never visited
      {linestring({{0, 0}, {4, 0}}), 0.75, XGWKB_E_FAILED, {}},  // two points: nothing to walk back over
      {bent, -0.5, XGWKB_E_FAILED, {}},
      {bent, kNaN, XGWKB_E_FAILED, {}},
      {linestring({}), 0, XGWKB_E_FAILED, {}},
      {linestring({{2, 2}}), 0.3, XGWKB_E_FAILED, {}},
      {linestring({{2, 2}, {kNaN, 1}, {3, 3}}), 0.3, XGWKB_E_FAILED, {}},
  };
  for (const auto& c : cases) expect_found(along(c.line, c.f), c.status, c.p, "f " + std::to_string(c.f));
}

TEST(FindAlong, RefusesNullAndReadsOtherTypesNoFurtherThanTheirBytes) {
  _xgWKB_POINT out{};
  const _xgWKB_POINT p{0, 0};
  const Bytes line = linestring({{0, 0}, {1, 0}});
  EXPECT_EQ(xgWKB_shape_find_along(nullptr, 0.5, &out), XGWKB_E_NULL_POINTER);
  EXPECT_EQ(xgWKB_shape_find_along(line.data(), 0.5, nullptr), XGWKB_E_NULL_POINTER);
  EXPECT_EQ(xgWKB_shape_snap_point(nullptr, &p, 1, 7, &out), XGWKB_E_NULL_POINTER);
  EXPECT_EQ(xgWKB_shape_snap_point(line.data(), nullptr, 1, 7, &out), XGWKB_E_NULL_POINTER);
  EXPECT_EQ(xgWKB_shape_snap_point(line.data(), &p, 1, 7, nullptr), XGWKB_E_NULL_POINTER);
  // Read as linestrings; the sanitizer build catches a read past the blob.
  for (const Bytes& other : {point(1e300, 2), nil(), header(XGWKB_TYPE_ENVELOPE), multi(XGWKB_TYPE_MULTIPOINT, {}),
                             polygon({square(0, 0, 1)})}) {
    for (double f : {0.0, 0.3, 0.7, 1.0}) {
      const int32_t status = along(other, f).status;
      EXPECT_TRUE(status == XGWKB_OK || status == XGWKB_E_FAILED) << status;
    }
  }
  EXPECT_EQ(along(point(1, 2), 0).status, XGWKB_E_FAILED);
}

TEST(SnapPoint, TriesEndPointsThenVerticesThenEdges) {
  const Bytes open = linestring({{0, 0}, {10, 0}, {10, 10}});
  const Bytes closed = linestring({{0, 0}, {10, 0}, {10, 10}, {0, 0}});
  const Bytes lines = multiline({{{0, 0}, {4, 0}, {0, 4}, {0, 0}}, {{20, 0}, {30, 0}}});
  const Bytes holed = polygon({square(0, 0, 10), square(4, 4, 2)});
  const Bytes points = multi(XGWKB_TYPE_MULTIPOINT, {point(0, 0), point(5, 5)});
  constexpr int32_t kAll = XGWKB_SNAP_END | XGWKB_SNAP_VERTEX | XGWKB_SNAP_EDGE;
  const struct {
    const char* what;
    const Bytes& shape;
    _xgWKB_POINT p;
    double t;
    int32_t modes;
    int32_t status;
    _xgWKB_POINT out;
  } cases[] = {
      {"end point wins over the edge", open, {0.05, 0.01}, 0.1, kAll, XGWKB_OK, {0, 0}},
      {"edge alone gives the foot", open, {0.05, 0.01}, 0.1, XGWKB_SNAP_EDGE, XGWKB_OK, {0.05, 0}},
      {"last end", open, {10.05, 10}, 0.1, XGWKB_SNAP_END, XGWKB_OK, {10, 10}},
      {"ends are measured by distance", open, {0.08, 0.08}, 0.1, XGWKB_SNAP_END, XGWKB_E_FAILED, {}},
      {"vertices within t on both axes", open, {0.08, 0.08}, 0.1, XGWKB_SNAP_END | XGWKB_SNAP_VERTEX, XGWKB_OK,
       {0, 0}},
      {"closed line: no ends", closed, {0.05, 0.01}, 0.1, XGWKB_SNAP_END, XGWKB_E_FAILED, {}},
      {"closed line: vertex", closed, {0.05, 0.01}, 0.1, XGWKB_SNAP_END | XGWKB_SNAP_VERTEX, XGWKB_OK, {0, 0}},
      {"interior vertex", open, {10.05, 0.05}, 0.1, XGWKB_SNAP_VERTEX, XGWKB_OK, {10, 0}},
      {"vertex via edges: foot on the segment after it", open, {10.05, 0.05}, 0.1, XGWKB_SNAP_EDGE, XGWKB_OK,
       {10, 0.05}},
      {"last vertex via edges: the last segment", open, {9.95, 10.05}, 0.1, XGWKB_SNAP_EDGE, XGWKB_OK,
       {10, 10.05}},
      {"segment, not a vertex", open, {5, -0.05}, 0.1, XGWKB_SNAP_END | XGWKB_SNAP_VERTEX, XGWKB_E_FAILED, {}},
      {"nothing within t", open, {5, 1}, 0.1, kAll, XGWKB_E_FAILED, {}},
      {"no mode", open, {0, 0}, 0.1, 0, XGWKB_E_FAILED, {}},
      {"second line's end", lines, {29.95, 0}, 0.1, XGWKB_SNAP_END, XGWKB_OK, {30, 0}},
      {"first line closed", lines, {0, 0.01}, 0.1, XGWKB_SNAP_END, XGWKB_E_FAILED, {}},
      {"hole's edge", holed, {5, 3.95}, 0.1, XGWKB_SNAP_EDGE, XGWKB_OK, {5, 4}},
      {"polygons have no ends", holed, {0, 0}, 0.1, XGWKB_SNAP_END, XGWKB_E_FAILED, {}},
      {"second point", points, {5.05, 4.95}, 0.1, kAll, XGWKB_OK, {5, 5}},
      {"points have no edges", points, {5.05, 4.95}, 0.1, XGWKB_SNAP_EDGE, XGWKB_E_FAILED, {}},
      {"a point", point(3, 3), {3, 3.05}, 0.1, XGWKB_SNAP_VERTEX, XGWKB_OK, {3, 3}},
      {"tolerance 0 never snaps", open, {0, 0}, 0, kAll, XGWKB_E_FAILED, {}},
      {"NaN tolerance", open, {0, 0}, kNaN, kAll, XGWKB_E_FAILED, {}},
      {"NaN point", open, {kNaN, 0}, 0.1, kAll, XGWKB_E_FAILED, {}},
      {"one-point line", linestring({{1, 1}}), {1, 1.05}, 0.1, XGWKB_SNAP_EDGE, XGWKB_OK, {1, 1}},
      {"empty parts", multiline({{}, {}}), {0, 0}, 0.1, kAll, XGWKB_E_FAILED, {}},
      {"nil", nil(), {0, 0}, 0.1, kAll, XGWKB_E_FAILED, {}},
  };
  for (const auto& c : cases) expect_found(snap(c.shape, c.p, c.t, c.modes), c.status, c.out, c.what);
}
