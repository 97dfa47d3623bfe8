// buffer.cpp - buffers: the circle block of a point, and the union of circles and rectangles for
// every other type.
//
// The region of a line buffer is the union of a circle around every vertex and a rectangle
// around every segment.  Uniting them one at a time would cost a sweep over the growing result per
// piece (quadratic in the vertices), so the pieces go through the adapter's winding union instead:
// every piece is turned counter-clockwise, so a point lies in the union exactly when its winding
// sum is positive.  Consecutive pieces are united in small groups and the group results again
// in groups (a balanced tree): neighbouring pieces overlap the most, and a group's union is
// much smaller than its pieces when the radius is large against the segments.
#include "construct/buffer.h"

#include <cmath>
#include <vector>

#include "construct/overlay_convert.h"
#include "core/angles.h"
#include "core/boundary.h"
#include "core/construct.h"

namespace xg {
namespace {

// Pieces united in one engine call at the leaves of the tree, and group results per call above.
constexpr std::size_t kLeafPieces = 64;
constexpr std::size_t kFanIn = 16;

using Contour = std::vector<gpc_vertex>;

// The rectangle around segment p-q reaching h (> 0) to either side, counter-clockwise.  Its
// corners lie on the perpendiculars through p and q; the circles cover the ends and the joints.
// A segment of no length has none.
void add_rectangle(const _xgWKB_POINT& p, const _xgWKB_POINT& q, double h, std::vector<Contour>& pieces) {
  const double dx = q.x - p.x, dy = q.y - p.y;
  const double len = std::hypot(dx, dy);
  if (!(len > 0)) return;
  const double nx = -dy / len * h, ny = dx / len * h;  // the left normal, h long
  pieces.push_back(Contour{{p.x - nx, p.y - ny}, {q.x - nx, q.y - ny}, {q.x + nx, q.y + ny}, {p.x + nx, p.y + ny}});
}

void add_circle(const _xgWKB_POINT& c, double d, std::vector<Contour>& pieces) {
  Contour v(kCircleSides);
  circle_vertices(c, d, v.data());
  pieces.push_back(std::move(v));
}

// The part of the circle around p (radius h > 0) that the rectangles of its segments leave
// uncovered.  A rectangle of length at least the circle's reach along it covers the half of the
// circle on its side, so only the vertices outside every such half-plane are needed, with the
// vertices on either side of them (the edges leaving that arc): the fan from p over those
// vertices.  The union stays the same point set, with far fewer vertices where the line runs on
// (only the outer side of each turn is left).  `dirs` holds the unit directions to the neighbours
// and the segments' lengths; a circle no rectangle covers goes in whole.
struct Neighbour {
  double ux, uy, len;
};

void add_vertex_piece(const _xgWKB_POINT& p, double h, const Neighbour* dirs, int n_dirs,
                      std::vector<Contour>& pieces) {
  gpc_vertex v[kCircleSides];
  circle_vertices(p, h, v);
  Neighbour covering[2];
  int n_cover = 0;
  for (int k = 0; k < n_dirs; ++k) {
    double reach = 0;
    for (const gpc_vertex& q : v) reach = std::fmax(reach, (q.x - p.x) * dirs[k].ux + (q.y - p.y) * dirs[k].uy);
    if (dirs[k].len >= reach) covering[n_cover++] = dirs[k];
  }
  const auto needed = [&](int k) {
    const gpc_vertex& q = v[(k % kCircleSides + kCircleSides) % kCircleSides];
    for (int c = 0; c < n_cover; ++c) {
      if ((q.x - p.x) * covering[c].ux + (q.y - p.y) * covering[c].uy >= 0) return false;
    }
    return true;
  };
  int first = -1, last = -1;
  if (n_cover > 0) {
    // A vertex that is not needed: every covering half-plane holds about half of them.  The
    // needed ones follow it as one run, since the uncovered directions form one arc.
    int start = 0;
    while (start < kCircleSides && needed(start)) ++start;
    for (int k = start + 1; k < start + kCircleSides; ++k) {
      if (!needed(k)) continue;
      if (first < 0) first = k;
      last = k;
    }
    if (first < 0 && n_cover == 2) {
      // No vertex in the uncovered arc: it is narrower than a side and centred opposite the
      // sum of the two directions (none when the line runs straight on).
      const double cx = -(covering[0].ux + covering[1].ux), cy = -(covering[0].uy + covering[1].uy);
      if (cx == 0 && cy == 0) return;
      double best = -INFINITY;
      for (int k = 0; k < kCircleSides; ++k) {
        const double dot = (v[k].x - p.x) * cx + (v[k].y - p.y) * cy;
        if (dot > best) {
          best = dot;
          first = last = k;
        }
      }
    }
  }
  // Two vertices of margin on each side absorb the rounding of the tests.
  if (first < 0 || last - first + 5 >= kCircleSides) {
    pieces.emplace_back(v, v + kCircleSides);
    return;
  }
  Contour fan{p};
  for (int k = first - 2; k <= last + 2; ++k) fan.push_back(v[(k + kCircleSides) % kCircleSides]);
  pieces.push_back(std::move(fan));
}

// The circles and rectangles of one run of points (a line or a ring), in order along it.  A
// vertex repeating its predecessor adds nothing.
void add_run_pieces(const PointRun& run, double d, std::vector<Contour>& pieces) {
  const double h = std::fabs(d);
  std::vector<_xgWKB_POINT> pts;
  pts.reserve(run.size());
  for (uint32_t i = 0; i < run.size(); ++i) {
    const _xgWKB_POINT p = run.point(i);
    if (pts.empty() || p.x != pts.back().x || p.y != pts.back().y) pts.push_back(p);
  }
  const auto toward = [](const _xgWKB_POINT& from, const _xgWKB_POINT& to) {
    const double dx = to.x - from.x, dy = to.y - from.y, len = std::hypot(dx, dy);
    return Neighbour{dx / len, dy / len, len};
  };
  for (std::size_t i = 0; i < pts.size(); ++i) {
    if (i > 0) add_rectangle(pts[i - 1], pts[i], h, pieces);
    Neighbour dirs[2];
    int n = 0;
    if (i > 0) dirs[n++] = toward(pts[i], pts[i - 1]);
    if (i + 1 < pts.size()) dirs[n++] = toward(pts[i], pts[i + 1]);
    if (h > 0) {
      add_vertex_piece(pts[i], h, dirs, n, pieces);
    } else {
      add_circle(pts[i], d, pieces);
    }
  }
}

// The pieces of every line of a linestring, multilinestring, polygon or multipolygon (rings).
void add_line_pieces(const byte* shape, double d, std::vector<Contour>& pieces) {
  const auto polygon = [&](const byte* poly) {
    for_each_ring(poly, [&](const PointRun& ring, uint32_t) { add_run_pieces(ring, d, pieces); });
  };
  switch (shape_type(shape)) {
    case XGWKB_TYPE_LINESTRING:
      add_run_pieces(line_run(shape), d, pieces);
      return;
    case XGWKB_TYPE_MULTILINESTRING:
      for_each_member(shape, [&](const byte* line, uint32_t) { add_run_pieces(line_run(line), d, pieces); });
      return;
    case XGWKB_TYPE_POLYGON:
      polygon(shape);
      return;
    case XGWKB_TYPE_MULTIPOLYGON:
      for_each_member(shape, [&](const byte* poly, uint32_t) { polygon(poly); });
      return;
    default:
      return;
  }
}

// The union of pieces [lo, hi) as a balanced tree of winding unions.
int32_t union_range(const std::vector<Contour>& pieces, std::size_t lo, std::size_t hi, gpc_polygon* out) {
  gpc_polygon group;
  if (hi - lo <= kLeafPieces) {
    for (std::size_t i = lo; i < hi; ++i) group.add_contour(pieces[i], 0);
    return gpc_union_winding(group, out);
  }
  const std::size_t step = (hi - lo + kFanIn - 1) / kFanIn;
  for (std::size_t a = lo; a < hi; a += step) {
    gpc_polygon part;
    const int32_t status = union_range(pieces, a, a + step < hi ? a + step : hi, &part);
    if (status != XGWKB_OK) return status;
    for (std::size_t k = 0; k < part.contour.size(); ++k) group.add_contour(std::move(part.contour[k].vertex), part.hole[k]);
  }
  return gpc_union_winding(group, out);
}

int32_t union_pieces(const std::vector<Contour>& pieces, gpc_polygon* out) {
  gpc_free_polygon(out);
  if (pieces.empty()) return XGWKB_OK;
  return union_range(pieces, 0, pieces.size(), out);
}

// The cleaned region as a multipolygon (nil when empty).
int32_t write_region(gpc_polygon* region, byte** out) {
  clean_clip_result(region);
  return contours_to_shape(*region, out);
}

int32_t point_buffer(const byte* point, double d, double m, byte** out) {
  // Below the minimum radius a point stores null while the other types write nothing: intended.
  if (d < m) {
    *out = nullptr;
    return XGWKB_OK;
  }
  byte* blob = blob_alloc(kCircleBlockSize);
  if (blob == nullptr) return XGWKB_E_FAILED;
  gpc_vertex v[kCircleSides];
  circle_vertices(point_of(point), d, v);
  BlobWriter(blob)
      .header(XGWKB_TYPE_MULTIPOLYGON)
      .u32(1)
      .header(XGWKB_TYPE_POLYGON)
      .u32(1)
      .u32(kCircleSides + 1)
      .points(v, kCircleSides)
      .point(v[0]);
  *out = blob;
  return XGWKB_OK;
}

// Polygons and multipolygons: the buffer of all rings with radius |d|, added to the shape for
// d >= 0 and taken from it for d < 0.
int32_t polygon_buffer(const byte* shape, double d, double m, byte** out) {
  const double r = std::fabs(d);
  if (r < m || shape_count(shape) == 0) return XGWKB_OK;  // no boundary buffer: nothing written
  std::vector<Contour> pieces;
  add_line_pieces(shape, r, pieces);
  gpc_polygon boundary;
  int32_t status = union_pieces(pieces, &boundary);
  if (status != XGWKB_OK) return status;
  if (boundary.contour.empty()) {
    uint32_t size = 0;
    status = geometry_size(shape, &size);
    return status == XGWKB_OK ? blob_copy(shape, size, out) : status;
  }
  gpc_polygon subject, result;
  append_polygon_contours(shape, &subject);
  status = gpc_polygon_clip(d >= 0 ? GPC_UNION : GPC_DIFF, subject, boundary, &result);
  if (status != XGWKB_OK) return status;
  return write_region(&result, out);
}

}  // namespace

void circle_vertices(const _xgWKB_POINT& c, double d, gpc_vertex* out) {
  out[0] = {c.x + d, c.y};
  for (int i = 1; i < kCircleSides; ++i) {
    // 2pi and 40 as single-precision constants, the product and quotient in double: intended.
    const double angle = static_cast<double>(i) * kTwoPiF / static_cast<double>(static_cast<float>(kCircleSides));
    out[i] = {c.x + d * std::cos(angle), c.y + d * std::sin(angle)};
  }
}

int32_t buffer_shape(const byte* shape, double d, double m, byte** out) {
  const uint32_t type = shape_type(shape);
  if (type == XGWKB_TYPE_POINT) return point_buffer(shape, d, m, out);
  if (type == XGWKB_TYPE_POLYGON || type == XGWKB_TYPE_MULTIPOLYGON) return polygon_buffer(shape, d, m, out);
  if (d < m) return XGWKB_OK;  // no buffer: nothing written
  std::vector<Contour> pieces;
  if (type == XGWKB_TYPE_MULTIPOINT) {
    for_each_member(shape, [&](const byte* p, uint32_t) { add_circle(point_of(p), d, pieces); });
  } else {
    add_line_pieces(shape, d, pieces);
  }
  gpc_polygon region;
  const int32_t status = union_pieces(pieces, &region);
  if (status != XGWKB_OK) return status;
  return write_region(&region, out);
}

}  // namespace xg

extern "C" {

int32_t xgWKB_shape_generate_buffer(const unsigned char* shape, double distance, unsigned char** out,
                                    double min_radius) noexcept {
  return xg::guarded([&]() -> int32_t {
    if (shape == nullptr || out == nullptr) return XGWKB_E_NULL_POINTER;
    const uint32_t type = xg::shape_type(shape);
    if (!xg::is_geometry_type(type)) return XGWKB_E_INVALID_ENTITY;
    if (xg::is_multi_type(type) && !xg::for_each_member(shape, [](const xg::byte*, uint32_t) {})) {
      return XGWKB_E_INVALID_ENTITY;
    }
    if (!std::isfinite(distance) || !xg::shape_coords_finite(shape)) return XGWKB_E_INVALID_ARGUMENT;
    return xg::buffer_shape(shape, distance, min_radius, out);
  });
}

}  // extern "C"
