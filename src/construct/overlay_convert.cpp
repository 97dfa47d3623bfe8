// overlay_convert.cpp - polygons into contours, clip results cleaned and written back as shapes.
#include "construct/overlay_convert.h"

#include <algorithm>
#include <cmath>
#include <numeric>

#include "core/construct.h"
#include "relate/point_runs.h"
#include "relate/ring_index.h"

namespace xg {

bool shape_coords_finite(const byte* shape) {
  bool finite = true;
  for_each_coord(shape, [&finite](const byte* at) {
    if (!std::isfinite(load_f64(at)) || !std::isfinite(load_f64(at + 8))) finite = false;
  });
  return finite;
}

namespace {

void append_polygon(const byte* polygon, gpc_polygon* out) {
  for_each_ring(polygon, [out](const PointRun& ring, uint32_t index) {
    const uint32_t n = ring.size();
    std::vector<gpc_vertex> v(n > 0 ? n - 1 : 0);  // the closing point is left out
    for (uint32_t i = 0; i + 1 < n; ++i) v[i] = ring.point(i);
    out->add_contour(std::move(v), index == 0 ? 0 : 1);
  });
}

// Twice the distance test of the cleaning: the nearer neighbour of cur lies within the tolerance
// of the line through cur and its farther neighbour.  (The distance is the ordinate of the nearer
// neighbour in the frame of that line; a line of zero length has the direction angle 0.)
bool collinear_vertex(const gpc_vertex& prev, const gpc_vertex& cur, const gpc_vertex& next) {
  const double dx_p = prev.x - cur.x, dy_p = prev.y - cur.y;
  const double dx_n = next.x - cur.x, dy_n = next.y - cur.y;
  const bool next_nearer = dx_n * dx_n + dy_n * dy_n <= dx_p * dx_p + dy_p * dy_p;
  const double nx = next_nearer ? dx_n : dx_p, ny = next_nearer ? dy_n : dy_p;
  const double fx = next_nearer ? dx_p : dx_n, fy = next_nearer ? dy_p : dy_n;
  const double len2 = fx * fx + fy * fy;
  if (len2 == 0) return std::fabs(ny) < kCleanTolerance;
  const double cross = fx * ny - fy * nx;
  return cross * cross < kCleanTolerance * kCleanTolerance * len2;
}

// The cleaning walk over one contour: vertex i is examined with its current neighbours (wrapping
// at both ends); a removed vertex's successor takes its index and is examined next.  `kept` holds
// the examined vertices that stay, v[r..] the ones not examined yet.  Returns the new vertex count.
std::size_t clean_contour(std::vector<gpc_vertex>& v) {
  const std::size_t n = v.size();
  std::size_t kept = 0;  // v[0..kept) are the kept vertices, compacted in place
  std::size_t r = 0;
  const gpc_vertex last = v[n - 1];  // v[n-1] is overwritten only once it is examined
  while (r < n && kept + (n - r) > 2) {
    const gpc_vertex prev = kept > 0 ? v[kept - 1] : last;
    const gpc_vertex next = r + 1 < n ? v[r + 1] : v[0];
    const gpc_vertex cur = v[r];
    ++r;
    if (!collinear_vertex(prev, cur, next)) v[kept++] = cur;
  }
  while (r < n) v[kept++] = v[r++];
  v.resize(kept);
  return kept;
}

double contour_area(const std::vector<gpc_vertex>& v) {
  double s = 0;
  const std::size_t n = v.size();
  for (std::size_t i = 0, j = n - 1; i < n; j = i++) s += v[j].x * v[i].y - v[i].x * v[j].y;
  return std::fabs(s) / 2;
}

std::size_t ring_bytes(std::size_t vertices) { return 4 + kCoordSize * (vertices + 1); }

void write_ring(BlobWriter& w, const gpc_vertex* v, std::size_t n) {
  w.u32(static_cast<uint32_t>(n + 1)).points(v, n).point(v[0]);
}

// Removes vertex i while its successor (the first vertex for the last) lies within the tolerance
// on both axes, re-examining the same index.
std::vector<gpc_vertex> without_near_duplicates(const std::vector<gpc_vertex>& v) {
  std::vector<gpc_vertex> out;
  out.reserve(v.size());
  const std::size_t n = v.size();
  std::size_t r = 0;
  // Stops at one vertex: an empty ring has no first vertex to close it with.
  while (r < n && out.size() + (n - r) > 1) {
    const gpc_vertex& cur = v[r];
    const gpc_vertex& next = r + 1 < n ? v[r + 1] : (out.empty() ? v[r] : out.front());
    ++r;
    if (!(std::fabs(next.x - cur.x) < kCleanTolerance && std::fabs(next.y - cur.y) < kCleanTolerance)) {
      out.push_back(cur);
    }
  }
  while (r < n) out.push_back(v[r++]);
  return out;
}

int32_t write_single(const gpc_polygon& p, std::size_t outer, byte** out) {
  std::size_t size = 2 * kCountedHeaderSize;
  for (const gpc_vertex_list& c : p.contour) size += ring_bytes(c.vertex.size());
  byte* blob = blob_alloc(size);
  if (blob == nullptr) return XGWKB_E_FAILED;
  OwnedBlob guard(blob);
  BlobWriter w(blob);
  w.header(XGWKB_TYPE_MULTIPOLYGON).u32(1).header(XGWKB_TYPE_POLYGON).u32(static_cast<uint32_t>(p.contour.size()));
  const std::vector<gpc_vertex>& o = p.contour[outer].vertex;
  write_ring(w, o.data(), o.size());
  for (std::size_t i = 0; i < p.contour.size(); ++i) {
    if (i == outer) continue;
    const std::vector<gpc_vertex> hole = without_near_duplicates(p.contour[i].vertex);
    write_ring(w, hole.data(), hole.size());
  }
  // The block keeps the size computed before the near-duplicates went: intended, the blob may
  // be longer than its content.  The rest is zeroed.
  std::memset(w.position(), 0, static_cast<std::size_t>(blob + size - w.position()));
  *out = guard.release();
  return XGWKB_OK;
}

bool box_holds(const _xgWKB_BOX& outer, const _xgWKB_BOX& inner) {
  return inner.minx >= outer.minx && inner.maxx <= outer.maxx && inner.miny >= outer.miny &&
         inner.maxy <= outer.maxy;
}

int32_t write_several(const gpc_polygon& p, byte** out) {
  const std::size_t n = p.contour.size();
  std::vector<double> area(n);
  for (std::size_t i = 0; i < n; ++i) area[i] = contour_area(p.contour[i].vertex);
  // Ascending by area; a contour whose area equals an earlier one's goes before it.
  std::vector<std::size_t> order(n);
  std::iota(order.rbegin(), order.rend(), std::size_t{0});
  std::stable_sort(order.begin(), order.end(), [&area](std::size_t l, std::size_t r) { return area[l] < area[r]; });

  std::vector<std::size_t> outers, holes;
  for (std::size_t i : order) (p.hole[i] ? holes : outers).push_back(i);

  // Closed copies of the outer rings, for the point-in-ring test.
  struct Candidate {
    std::size_t contour;
    _xgWKB_BOX box;
  };
  std::vector<Candidate> hole_list;
  hole_list.reserve(holes.size());
  for (std::size_t h : holes) {
    const std::vector<gpc_vertex>& v = p.contour[h].vertex;
    hole_list.push_back({h, make_span(v.data(), static_cast<uint32_t>(v.size())).box});
  }
  std::vector<bool> used(holes.size(), false);
  std::vector<std::vector<std::size_t>> given(outers.size());
  std::size_t size = kCountedHeaderSize;
  std::vector<gpc_vertex> ring;
  for (std::size_t k = 0; k < outers.size(); ++k) {
    const std::vector<gpc_vertex>& o = p.contour[outers[k]].vertex;
    size += kCountedHeaderSize + ring_bytes(o.size());
    if (hole_list.empty()) continue;
    ring.assign(o.begin(), o.end());
    ring.push_back(o.front());
    IndexedSpan outer(make_span(ring.data(), static_cast<uint32_t>(ring.size())), kCleanTolerance);
    _xgWKB_BOX reach = outer.span().box;
    reach.minx -= kCleanTolerance;
    reach.miny -= kCleanTolerance;
    reach.maxx += kCleanTolerance;
    reach.maxy += kCleanTolerance;
    for (std::size_t h = 0; h < hole_list.size(); ++h) {
      if (used[h] || !box_holds(reach, hole_list[h].box)) continue;
      const std::vector<gpc_vertex>& hv = p.contour[hole_list[h].contour].vertex;
      // Every vertex inside the outer ring; a hole may touch the ring at a vertex (the clipper
      // keeps such a hole apart from its outer ring), so a vertex on the ring is let pass as long
      // as some other vertex lies strictly inside.
      bool inside = false, outside = false;
      for (const gpc_vertex& q : hv) {
        const int32_t r = ring_relation(q, outer.span(), kCleanTolerance);
        if (r == 0) {
          outside = true;
          break;
        }
        if (r == 1) inside = true;
      }
      if (outside || !inside) continue;
      used[h] = true;
      given[k].push_back(hole_list[h].contour);
      size += ring_bytes(hv.size());
    }
  }

  byte* blob = blob_alloc(size);
  if (blob == nullptr) return XGWKB_E_FAILED;
  BlobWriter w(blob);
  w.header(XGWKB_TYPE_MULTIPOLYGON).u32(static_cast<uint32_t>(outers.size()));
  for (std::size_t k = 0; k < outers.size(); ++k) {
    const std::vector<gpc_vertex>& o = p.contour[outers[k]].vertex;
    w.header(XGWKB_TYPE_POLYGON).u32(static_cast<uint32_t>(1 + given[k].size()));
    write_ring(w, o.data(), o.size());
    for (std::size_t h : given[k]) write_ring(w, p.contour[h].vertex.data(), p.contour[h].vertex.size());
  }
  *out = blob;
  return XGWKB_OK;
}

}  // namespace

void append_polygon_contours(const byte* shape, gpc_polygon* out) {
  switch (shape_type(shape)) {
    case XGWKB_TYPE_POLYGON:
      append_polygon(shape, out);
      return;
    case XGWKB_TYPE_MULTIPOLYGON:
      for_each_member(shape, [out](const byte* member, uint32_t) {
        if (shape_type(member) == XGWKB_TYPE_POLYGON) append_polygon(member, out);
      });
      return;
    default:
      return;
  }
}

void clean_clip_result(gpc_polygon* p) {
  std::size_t kept = 0;
  for (std::size_t i = 0; i < p->contour.size(); ++i) {
    std::vector<gpc_vertex>& v = p->contour[i].vertex;
    if (v.size() <= 2 || clean_contour(v) <= 2) continue;
    if (kept != i) {
      p->contour[kept] = std::move(p->contour[i]);
      p->hole[kept] = p->hole[i];
    }
    ++kept;
  }
  p->contour.resize(kept);
  p->hole.resize(kept);
}

int32_t contours_to_shape(const gpc_polygon& p, byte** out) {
  if (p.contour.empty()) return nil_into(out);
  std::size_t outers = 0, first_outer = 0;
  for (std::size_t i = 0; i < p.contour.size(); ++i) {
    if (p.hole[i] == 0 && outers++ == 0) first_outer = i;
  }
  if (outers == 1) return write_single(p, first_outer, out);
  if (outers == 0) {
    byte* empty = blob_alloc(kCountedHeaderSize);
    if (empty == nullptr) return XGWKB_E_FAILED;
    BlobWriter(empty).header(XGWKB_TYPE_MULTIPOLYGON).u32(0);
    *out = empty;
    return XGWKB_OK;
  }
  return write_several(p, out);
}

}  // namespace xg
