// gpc_rings.cpp - edges along each other and rings touching at vertices, on integer paths.
#include "construct/gpc_rings.h"

#include <algorithm>
#include <cstring>
#include <limits>

namespace xg {

namespace cl = ClipperLib;

namespace {

// Edges sorted by the line they lie on, with their extents along it, so that edges running along
// each other for some length can be found by sorting instead of comparing all pairs.  Directions
// are not reduced: two parallel edges are compared through the direction of either one, which
// orders offsets and extents alike for every direction of the class (all products exact in 128
// bits: grid indices stay below 2^62).
struct LinePiece {
  __int128 dx, dy;  // direction, turned into the upper half plane
  cl::IntPoint p, q;
};

int upper_half(__int128 dx, __int128 dy) { return (dy > 0 || (dy == 0 && dx > 0)) ? 0 : 1; }

__int128 cross(const LinePiece& d, const cl::IntPoint& p) { return d.dx * p.Y - d.dy * p.X; }
__int128 along(const LinePiece& d, const cl::IntPoint& p) { return d.dx * p.X + d.dy * p.Y; }
__int128 start_along(const LinePiece& d, const LinePiece& e) {
  const __int128 p = along(d, e.p), q = along(d, e.q);
  return p < q ? p : q;
}
__int128 end_along(const LinePiece& d, const LinePiece& e) {
  const __int128 p = along(d, e.p), q = along(d, e.q);
  return p < q ? q : p;
}
bool parallel(const LinePiece& l, const LinePiece& r) { return l.dx * r.dy - l.dy * r.dx == 0; }
bool same_line(const LinePiece& l, const LinePiece& r) { return parallel(l, r) && cross(l, l.p) == cross(l, r.p); }

// The slope of a direction as a key that parallel directions share: with 64 significant bits,
// dy and dx (below 2^63 in size) convert exactly and their quotient is rounded once, so it
// depends only on the ratio.  Packed into a grid point to go into a PointTable.
constexpr bool kExactSlopes = std::numeric_limits<long double>::digits == 64 && sizeof(long double) >= 10;

cl::IntPoint slope_key(const LinePiece& d) {
  if (d.dx == 0) return cl::IntPoint(-1, -1);  // vertical, apart from every quotient's key
  const long double q = static_cast<long double>(d.dy) / static_cast<long double>(d.dx);
  // The bits of the quotient (no padding bits taken: the significand and the sign and exponent
  // of the 80-bit format lie in its first ten bytes).
  unsigned char bytes[16] = {};
  std::memcpy(bytes, &q, 10);
  cl::IntPoint key(0, 0);
  std::memcpy(&key.X, bytes, 8);
  std::memcpy(&key.Y, bytes + 8, 8);
  return key;
}

}  // namespace

// ---- edges along each other ------------------------------------------------------------------

bool edges_along_each_other(const cl::Paths& paths) {
  std::vector<LinePiece> pieces;
  std::size_t count = 0;
  for (const cl::Path& path : paths) count += path.size();
  pieces.reserve(count);
  for (const cl::Path& path : paths) {
    for (std::size_t i = 0, n = path.size(); i < n; ++i) {
      const cl::IntPoint& p = path[i];
      const cl::IntPoint& q = path[(i + 1) % n];
      __int128 dx = static_cast<__int128>(q.X) - p.X, dy = static_cast<__int128>(q.Y) - p.Y;
      if (dx == 0 && dy == 0) continue;
      if (upper_half(dx, dy) != 0) {
        dx = -dx;
        dy = -dy;
      }
      pieces.push_back({dx, dy, p, q});
    }
  }
  if (kExactSlopes) {
    // Only edges whose slope another edge shares can run along one: counted through a table,
    // the rest dropped before the sort.
    PointTable<uint32_t> slopes(pieces.size());
    std::vector<uint32_t*> seen(pieces.size());
    for (std::size_t i = 0; i < pieces.size(); ++i) ++*(seen[i] = &slopes.at(slope_key(pieces[i])));
    std::size_t kept = 0;
    for (std::size_t i = 0; i < pieces.size(); ++i) {
      if (*seen[i] > 1) pieces[kept++] = pieces[i];
    }
    pieces.resize(kept);
  }
  std::sort(pieces.begin(), pieces.end(), [](const LinePiece& l, const LinePiece& r) {
    const __int128 turn = l.dx * r.dy - l.dy * r.dx;
    if (turn != 0) return turn > 0;  // by angle within the upper half plane
    const __int128 ol = cross(l, l.p), orr = cross(l, r.p);
    if (ol != orr) return ol < orr;
    return start_along(l, l) < start_along(l, r);
  });
  // Along one line, sorted by start: an edge runs along an earlier one when it starts before the
  // farthest end reached so far.
  for (std::size_t i = 0; i < pieces.size();) {
    const LinePiece& first = pieces[i];
    __int128 reach = end_along(first, first);
    std::size_t j = i + 1;
    for (; j < pieces.size() && same_line(first, pieces[j]); ++j) {
      if (start_along(first, pieces[j]) < reach) return true;
      reach = std::max(reach, end_along(first, pieces[j]));
    }
    i = j;
  }
  return false;
}

// ---- rings that touch ----------------------------------------------------------------------

namespace {

struct VertexUse {
  cl::IntPoint p;
  std::size_t edge;  // the edge leaving p; the edge before it in its ring arrives at p
};

// Direction of an edge seen from the shared vertex, in exact wide arithmetic.
struct Ray {
  __int128 dx, dy;
  std::size_t edge;
  bool incoming;
};

int half(const Ray& r) { return (r.dy > 0 || (r.dy == 0 && r.dx > 0)) ? 0 : 1; }

// Counter-clockwise order of angle from the positive x axis.
bool ccw_before(const Ray& a, const Ray& b) {
  const int ha = half(a), hb = half(b);
  if (ha != hb) return ha < hb;
  return a.dx * b.dy - a.dy * b.dx > 0;
}

bool same_direction(const Ray& a, const Ray& b) {
  return half(a) == half(b) && a.dx * b.dy - a.dy * b.dx == 0;
}

}  // namespace

void rebuild_touching_rings(cl::Paths& paths) {
  std::vector<std::size_t> base(paths.size() + 1, 0);
  for (std::size_t i = 0; i < paths.size(); ++i) base[i + 1] = base[i] + paths[i].size();
  const std::size_t edges = base.back();
  {
    // Most results pass no vertex twice: a table finds out before anything is sorted.
    PointTable<uint8_t> visits(edges);
    bool repeated = false;
    for (const cl::Path& path : paths) {
      for (const cl::IntPoint& p : path) {
        uint8_t& v = visits.at(p);
        repeated = repeated || v != 0;
        v = 1;
      }
    }
    if (!repeated) return;
  }
  std::vector<VertexUse> uses;
  uses.reserve(edges);
  std::vector<std::size_t> ring_of(edges);
  for (std::size_t i = 0; i < paths.size(); ++i) {
    for (std::size_t k = 0; k < paths[i].size(); ++k) {
      uses.push_back({paths[i][k], base[i] + k});
      ring_of[base[i] + k] = i;
    }
  }
  const auto point_less = [](const VertexUse& l, const VertexUse& r) {
    return l.p.X != r.p.X ? l.p.X < r.p.X : l.p.Y < r.p.Y;
  };
  std::sort(uses.begin(), uses.end(), point_less);
  const auto same_point = [](const VertexUse& l, const VertexUse& r) { return l.p == r.p; };
  if (std::adjacent_find(uses.begin(), uses.end(), same_point) == uses.end()) return;

  const auto start_of = [&](std::size_t e) -> const cl::IntPoint& { return paths[ring_of[e]][e - base[ring_of[e]]]; };
  const auto next_in_ring = [&](std::size_t e) {
    const std::size_t r = ring_of[e];
    return e + 1 == base[r + 1] ? base[r] : e + 1;
  };
  const auto prev_in_ring = [&](std::size_t e) {
    const std::size_t r = ring_of[e];
    return e == base[r] ? base[r + 1] - 1 : e - 1;
  };

  // The rays at every vertex met more than once, in counter-clockwise order, one group per vertex.
  std::vector<Ray> rays;
  std::vector<std::size_t> group_start;
  for (std::size_t i = 0; i < uses.size();) {
    std::size_t j = i + 1;
    while (j < uses.size() && uses[j].p == uses[i].p) ++j;
    if (j - i > 1) {
      group_start.push_back(rays.size());
      const cl::IntPoint& v = uses[i].p;
      for (std::size_t u = i; u < j; ++u) {
        const std::size_t out = uses[u].edge, in = prev_in_ring(out);
        const cl::IntPoint& to = start_of(next_in_ring(out));
        const cl::IntPoint& from = start_of(in);
        rays.push_back({static_cast<__int128>(to.X) - v.X, static_cast<__int128>(to.Y) - v.Y, out, false});
        rays.push_back({static_cast<__int128>(from.X) - v.X, static_cast<__int128>(from.Y) - v.Y, in, true});
      }
      std::sort(rays.begin() + static_cast<std::ptrdiff_t>(group_start.back()), rays.end(), ccw_before);
    }
    i = j;
  }
  group_start.push_back(rays.size());

  // Pass 1: across the region sector.  Edges must alternate in and out, and no two may leave the
  // vertex the same way (rings along each other); otherwise the rings are left as they are.
  std::vector<std::size_t> next(edges);
  for (std::size_t e = 0; e < edges; ++e) next[e] = next_in_ring(e);
  for (std::size_t g = 0; g + 1 < group_start.size(); ++g) {
    const std::size_t lo = group_start[g], n = group_start[g + 1] - lo;
    for (std::size_t k = 0; k < n; ++k) {
      const Ray& r = rays[lo + k];
      const Ray& cw = rays[lo + (k + n - 1) % n];
      if (same_direction(r, rays[lo + (k + 1) % n])) return;
      if (!r.incoming) continue;
      if (cw.incoming) return;
      next[r.edge] = cw.edge;
    }
  }
  std::vector<std::size_t> walk(edges, SIZE_MAX);
  std::size_t walks = 0;
  for (std::size_t e = 0; e < edges; ++e) {
    if (walk[e] != SIZE_MAX) continue;
    for (std::size_t f = e; walk[f] == SIZE_MAX; f = next[f]) walk[f] = walks;
    ++walks;
  }

  // Pass 2: across the gap, to the next edge of the same walk counter-clockwise.
  for (std::size_t g = 0; g + 1 < group_start.size(); ++g) {
    const std::size_t lo = group_start[g], n = group_start[g + 1] - lo;
    for (std::size_t k = 0; k < n; ++k) {
      const Ray& r = rays[lo + k];
      if (!r.incoming) continue;
      std::size_t m = 1;
      while (m < n && walk[rays[lo + (k + m) % n].edge] != walk[r.edge]) ++m;
      const Ray& ccw = rays[lo + (k + m) % n];
      if (m == n || ccw.incoming) return;
      next[r.edge] = ccw.edge;
    }
  }

  cl::Paths rings;
  std::vector<bool> done(edges, false);
  for (std::size_t e = 0; e < edges; ++e) {
    if (done[e]) continue;
    cl::Path ring;
    for (std::size_t f = e; !done[f]; f = next[f]) {
      done[f] = true;
      ring.push_back(start_of(f));
    }
    if (ring.size() >= 3) rings.push_back(std::move(ring));
  }
  paths.swap(rings);
}


}  // namespace xg
