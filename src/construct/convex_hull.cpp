// convex_hull.cpp - the convex hull of a shape's vertices by gift wrapping.
//
// The point set: a linestring's points, a polygon's first ring, a multipoint's members, the
// points of every member of a multilinestring, and the first ring of every member polygon of a
// multipolygon, all in storage order.  One point gives a point and two points a linestring of
// the two in input order; three or more are walked (gift_wrap) counter-clockwise from the first
// point of smallest x, and the walk's list (closed by the repeated start) is written as a point
// (list of 2), a linestring of its second and third points (list of 3) or a one-ring polygon.
//
// The walk is quadratic per hull point, so the points that cannot change its list are dropped
// first (hull_candidates, with the argument below), and large sets are walked with a point
// index (hull_walk_index.cpp); both give the plain walk's list.
#include "construct/convex_hull.h"

#include "construct/hull_walk.h"

#include <cmath>

#include "core/boundary.h"

namespace xg {

namespace {

using Pt = _xgWKB_POINT;

inline double cross_at(const Pt& o, const Pt& a, const Pt& b) { return hull_cross(o, a, b); }

}  // namespace

std::size_t gift_wrap_step(const Pt* pts, std::size_t n, std::size_t h, double t2, std::size_t* hint) {
  const Pt hp = pts[h];
  for (std::size_t c = 0; c < n; ++c) {
    if (c == h || hull_coincide(pts[c], hp)) continue;
    // A candidate falls if any point rejects it, so the order of asking does not matter: the
    // point that rejected the last candidate is asked first, as it often rejects this one too.
    bool accepted = !(*hint < n && hull_rejects(pts, h, c, *hint, t2));
    for (std::size_t p = 0; p < n && accepted; ++p) {
      if (hull_rejects(pts, h, c, p, t2)) {
        accepted = false;
        *hint = p;
      }
    }
    if (accepted) return c;
  }
  return n;
}

std::vector<Pt> gift_wrap(const Pt* pts, std::size_t n, double t) {
  const double t2 = t * t;
  std::size_t hint = n;
  return hull_walk(pts, n, [&](std::size_t h) { return gift_wrap_step(pts, n, h, t2, &hint); });
}

// Why dropping deep points cannot change the walk's list.
//
// Let Q be a polygon whose vertices are points of the set, and call p deep when the open disc
// of radius r around p lies strictly left of every edge of Q of non-zero length (Q having at
// least three distinct vertices).  Every point z of that disc then sees each edge turn
// counter-clockwise about it, so the edges wind about z a positive number of times and z lies
// in the convex hull of Q's vertices: the disc lies inside conv(Q).  Take
//   r = 2e-4 + 2e4 t^2 + 1e-10 W^2,   W the larger side of the set's box.
// Fix a step of the walk with current point h and candidate c (c not coinciding with h, so
// |c - h| >= 1e-4), and let f(x) = cross(h, c, x), affine in x with gradient of length |c - h|.
// The minimum of f over conv(Q) is taken at a vertex q of Q, and for a deep point p it is at
// most f(p) - r |c - h|.  A point coinciding with h or c (within 0.0001 on both axes) has
// |f| < 1.42e-4 |c - h|.  Computed cross products differ from f by at most e = 8 eps W^2.
//  1. A deep c is never accepted: with p = c, f(q) <= -r |c - h| < -t^2 - 2e and
//     f(q) < -1.42e-4 |c - h|, so q is neither h, c nor a point coinciding with them, and it
//     rejects c (computed cross below -t^2).
//  2. A deep p never decides a verdict alone: p rejects only with f(p) < t^2 (computed, so
//     exactly below t^2 + e).  Then f(q) < t^2 + e - r |c - h| <= -t^2 - e and
//     f(q) < -1.42e-4 |c - h|, since r |c - h| >= 2 t^2 + 1.42e-4 |c - h| + 2e; so q, which is
//     not dropped, rejects c as well.
// The start (smallest x) is no deep point, every point the walk takes is kept (1), and each
// verdict on a kept candidate is the same with or without the deep points (2): the walk takes
// the same points in the same order.  The tests below add margins for the rounding of the depth
// test itself (1e-12 relative, and 1e-14 W^2 on cross products).
std::vector<Pt> hull_candidates(const Pt* pts, std::size_t n, double t) {
  std::vector<Pt> kept(pts, pts + n);
  if (n < 16) return kept;
  _xgWKB_BOX box{pts[0].x, pts[0].y, pts[0].x, pts[0].y};
  for (std::size_t i = 1; i < n; ++i) box_merge(&box, _xgWKB_BOX{pts[i].x, pts[i].y, pts[i].x, pts[i].y});
  const double w = std::fmax(box.maxx - box.minx, box.maxy - box.miny);
  const double r = 2e-4 + 2e4 * t * t + 1e-10 * w * w;
  if (!std::isfinite(w) || !(w > 0) || !std::isfinite(r)) return kept;  // NaN and infinities too
  for (std::size_t i = 0; i < n; ++i) {
    if (!std::isfinite(pts[i].x) || !std::isfinite(pts[i].y)) return kept;
  }

  // Q: the extreme points in 16 directions, counter-clockwise.
  constexpr int kDirections = 16;
  double ux[kDirections];
  double uy[kDirections];
  std::size_t extreme[kDirections];
  double best[kDirections];
  for (int k = 0; k < kDirections; ++k) {
    const double a = 2 * M_PI * k / kDirections;
    ux[k] = std::cos(a);
    uy[k] = std::sin(a);
    extreme[k] = 0;
    best[k] = ux[k] * pts[0].x + uy[k] * pts[0].y;
  }
  for (std::size_t i = 1; i < n; ++i) {
    for (int k = 0; k < kDirections; ++k) {
      const double v = ux[k] * pts[i].x + uy[k] * pts[i].y;
      if (v > best[k]) {
        best[k] = v;
        extreme[k] = i;
      }
    }
  }
  Pt vertex[kDirections];
  int m = 0;
  for (int k = 0; k < kDirections; ++k) {
    const Pt& p = pts[extreme[k]];
    if (m > 0 && vertex[m - 1].x == p.x && vertex[m - 1].y == p.y) continue;
    vertex[m++] = p;
  }
  while (m > 1 && vertex[m - 1].x == vertex[0].x && vertex[m - 1].y == vertex[0].y) --m;
  if (m < 3) return kept;

  struct Edge {
    Pt a, b;
    double len;
    double need;  // the cross product a point must exceed to be r inside this edge
  };
  Edge edges[kDirections];
  int e = 0;
  const double slack = 1e-14 * w * w;
  Pt o{0, 0};
  for (int i = 0; i < m; ++i) {
    o.x += vertex[i].x / m;
    o.y += vertex[i].y / m;
    const Pt& a = vertex[i];
    const Pt& b = vertex[(i + 1) % m];
    const double len = std::hypot(b.x - a.x, b.y - a.y);
    if (len > 0) edges[e++] = Edge{a, b, len, r * len * (1 + 1e-12) + slack};
  }
  // A disc about o inside every edge by rho: points nearer o than rho - r are deep at once.
  double rho = INFINITY;
  for (int i = 0; i < e; ++i) {
    rho = std::fmin(rho, (cross_at(edges[i].a, edges[i].b, o) - slack) / edges[i].len * (1 - 1e-12));
  }
  const double reach = rho - r * (1 + 1e-12);
  const double reach2 = reach > 0 ? reach * reach * (1 - 1e-11) : -1;

  std::size_t out = 0;
  for (std::size_t i = 0; i < n; ++i) {
    const Pt p = pts[i];
    const double dx = p.x - o.x;
    const double dy = p.y - o.y;
    bool deep = dx * dx + dy * dy < reach2;
    if (!deep) {
      deep = true;
      for (int k = 0; k < e && deep; ++k) deep = cross_at(edges[k].a, edges[k].b, p) > edges[k].need;
    }
    if (!deep) kept[out++] = p;
  }
  kept.resize(out);
  return kept;
}

std::vector<Pt> convex_hull_list(const Pt* pts, std::size_t n, double t) {
  const std::vector<Pt> kept = hull_candidates(pts, n, t);
  return gift_wrap_indexed(kept.data(), kept.size(), t);
}

namespace {

// The hull's point set in storage order; false for a multi-type member of a foreign type.
bool gather_points(const byte* shape, std::vector<Pt>& pts) {
  auto run = [&pts](const PointRun& r) {
    const uint32_t n = r.size();
    for (uint32_t i = 0; i < n; ++i) pts.push_back(r.point(i));
  };
  auto first_ring = [&run](const byte* polygon) {
    if (shape_count(polygon) > 0) run(PointRun{polygon + kCountedHeaderSize});
  };
  const uint32_t type = shape_type(shape);
  switch (type) {
    case XGWKB_TYPE_POINT:
      pts.push_back(load_point(shape + kHeaderSize));
      return true;
    case XGWKB_TYPE_LINESTRING:
      run(line_run(shape));
      return true;
    case XGWKB_TYPE_POLYGON:
      first_ring(shape);
      return true;
    default:
      break;
  }
  const uint32_t want = type - (XGWKB_TYPE_MULTIPOINT - XGWKB_TYPE_POINT);
  const uint32_t members = shape_count(shape);
  const byte* at = shape + kCountedHeaderSize;
  for (uint32_t i = 0; i < members; ++i) {
    if (shape_type(at) != want) return false;
    if (want == XGWKB_TYPE_POINT) {
      pts.push_back(load_point(at + kHeaderSize));
    } else if (want == XGWKB_TYPE_LINESTRING) {
      run(line_run(at));
    } else {
      first_ring(at);
    }
    at += member_size(at);
  }
  return true;
}

byte* point_blob(const Pt& p) {
  byte* blob = blob_alloc(kPointBlobSize);
  if (blob) BlobWriter(blob).point_blob(p);
  return blob;
}

byte* line_blob(const Pt& a, const Pt& b) {
  byte* blob = blob_alloc(kCountedHeaderSize + 2 * kCoordSize);
  if (blob) BlobWriter(blob).header(XGWKB_TYPE_LINESTRING).u32(2).point(a).point(b);
  return blob;
}

byte* ring_polygon_blob(const std::vector<Pt>& ring) {
  byte* blob = blob_alloc(kCountedHeaderSize + 4 + kCoordSize * ring.size());
  if (blob) {
    BlobWriter(blob)
        .header(XGWKB_TYPE_POLYGON)
        .u32(1)
        .u32(static_cast<uint32_t>(ring.size()))
        .points(ring.data(), ring.size());
  }
  return blob;
}

int32_t convex_hull(const byte* shape, byte** out, double t) {
  if (shape_type(shape) == XGWKB_TYPE_POINT) {
    *out = point_blob(load_point(shape + kHeaderSize));  // no hull, and no use of t
    return *out ? XGWKB_OK : XGWKB_E_FAILED;
  }
  std::vector<Pt> pts;
  if (!gather_points(shape, pts)) return XGWKB_E_INVALID_ENTITY;
  byte* result = nullptr;
  if (pts.empty()) return XGWKB_E_TOO_FEW_POINTS;
  if (pts.size() == 1) {
    result = point_blob(pts[0]);
  } else if (pts.size() == 2) {
    result = line_blob(pts[0], pts[1]);  // in input order, even when they coincide
  } else {
    const std::vector<Pt> list = convex_hull_list(pts.data(), pts.size(), t);
    if (list.size() == 2) {
      result = point_blob(list[1]);
    } else if (list.size() == 3) {
      result = line_blob(list[1], list[2]);
    } else {
      result = ring_polygon_blob(list);  // also the one-point ring of coinciding points
    }
  }
  if (result == nullptr) return XGWKB_E_FAILED;
  *out = result;
  return XGWKB_OK;
}

}  // namespace

}  // namespace xg

extern "C" int32_t xgWKB_shape_generate_convex_hull(const unsigned char* shape, unsigned char** out,
                                                    double t) noexcept {
  return xg::guarded([&]() -> int32_t {
    if (shape == nullptr) return XGWKB_E_NULL_POINTER;
    if (!xg::is_geometry_type(xg::shape_type(shape))) return XGWKB_E_INVALID_ENTITY;
    if (out == nullptr) return XGWKB_E_NULL_POINTER;
    return xg::convex_hull(shape, out, t);
  });
}
