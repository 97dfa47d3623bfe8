// gpc_adapter.cpp - gpc_polygon operations on the integer clipping engine.
//
// Per call: find the extent of both operands, fit one grid axis to each of its sides, convert
// the contours to integer paths once, let the engine run the operation(s) with even-odd fill,
// and convert the resulting paths back with their hole flags (the engine turns outer paths
// counter-clockwise and holes clockwise, so the sign of a path's area is its flag).
#include "construct/gpc_adapter.h"

#include <polyclipping/clipper.hpp>

#include <algorithm>
#include <cmath>
#include <limits>
#include <cstring>

#include "xggeokit.h"

namespace xg {

namespace cl = ClipperLib;

// ---- grid -----------------------------------------------------------------------------------

namespace {

// Largest grid index magnitude: the engine takes |i| up to 2^62 - 1 with its wide arithmetic.
constexpr int kGridBits = 62;

// s + e = a + b exactly (|a| >= |b| not required).
inline void two_sum(double a, double b, double* s, double* e) {
  *s = a + b;
  const double bv = *s - a;
  const double av = *s - bv;
  *e = (a - av) + (b - bv);
}

}  // namespace

bool GridAxis::fit(double lo, double hi) {
  const double extent = hi - lo;
  if (!std::isfinite(extent)) return false;
  origin = lo;
  int e = 0;
  std::frexp(extent, &e);  // extent < 2^e (e = 0 for an extent of 0)
  shift = kGridBits - e;
  return true;
}

int64_t GridAxis::to_int(double v) const {
  // (v - origin) * 2^shift rounded to the nearest integer, without losing the bits of v - origin
  // that a double cannot hold: d + r is the exact difference, D + R the exact scaled value.
  double d = 0, r = 0;
  two_sum(v, -origin, &d, &r);
  const double D = std::ldexp(d, shift);
  const double R = std::ldexp(r, shift);
  if (std::fabs(D) >= 0x1p52) return static_cast<int64_t>(D) + static_cast<int64_t>(std::llround(R));
  // Below 2^52, D may have a fraction f; R is smaller than half a unit of D's last place, so it
  // can only decide the rounding when f is exactly one half.
  const double whole = std::floor(D);
  const double f = D - whole;
  int64_t i = static_cast<int64_t>(whole);
  if (f > 0.5 || (f == 0.5 && R >= 0)) ++i;
  return i;
}

double GridAxis::to_double(int64_t i) const {
  constexpr int64_t kExact = int64_t{1} << 53;
  if (i > -kExact && i < kExact) return origin + std::ldexp(static_cast<double>(i), -shift);
  // Split i into a part of at most 53 significant bits and a small rest, both exact as doubles,
  // and add them to the origin with one final rounding (exact when the sum is a double).
  const int64_t low = i & 1023;
  const double high = std::ldexp(static_cast<double>(i - low), -shift);
  double s = 0, e = 0;
  two_sum(origin, high, &s, &e);
  return s + (e + std::ldexp(static_cast<double>(low), -shift));
}

// ---- conversion -----------------------------------------------------------------------------

namespace {

struct Grid {
  GridAxis x, y;

  cl::IntPoint to_int(const gpc_vertex& v) const { return cl::IntPoint(x.to_int(v.x), y.to_int(v.y)); }
  gpc_vertex to_double(const cl::IntPoint& p) const { return gpc_vertex{x.to_double(p.X), y.to_double(p.Y)}; }
};

struct Extent {
  double minx = INFINITY, miny = INFINITY, maxx = -INFINITY, maxy = -INFINITY;
  bool finite = true;

  void add(const gpc_polygon& p) {
    for (const gpc_vertex_list& c : p.contour) {
      for (const gpc_vertex& v : c.vertex) {
        if (!std::isfinite(v.x) || !std::isfinite(v.y)) finite = false;
        if (v.x < minx) minx = v.x;
        if (v.x > maxx) maxx = v.x;
        if (v.y < miny) miny = v.y;
        if (v.y > maxy) maxy = v.y;
      }
    }
  }
};

// The grid for a call on a and b; false for non-finite coordinates or an unscalable extent.
bool fit_grid(const gpc_polygon& a, const gpc_polygon& b, Grid* grid) {
  Extent ext;
  ext.add(a);
  ext.add(b);
  if (!ext.finite) return false;
  if (ext.minx > ext.maxx) return true;  // no vertex at all: any grid will do
  return grid->x.fit(ext.minx, ext.maxx) && grid->y.fit(ext.miny, ext.maxy);
}

// Contours of three or more vertices as integer paths; duplicate consecutive grid points are
// merged (the engine drops them too, but only after allocating their edges).
cl::Paths to_paths(const gpc_polygon& p, const Grid& grid) {
  cl::Paths paths;
  paths.reserve(p.contour.size());
  for (const gpc_vertex_list& c : p.contour) {
    if (c.vertex.size() < 3) continue;
    cl::Path path;
    path.reserve(c.vertex.size());
    for (const gpc_vertex& v : c.vertex) {
      const cl::IntPoint ip = grid.to_int(v);
      if (path.empty() || !(path.back() == ip)) path.push_back(ip);
    }
    while (path.size() > 1 && path.back() == path.front()) path.pop_back();
    if (path.size() >= 3) paths.push_back(std::move(path));
  }
  return paths;
}

// Twice the signed area of a path, in doubles (only its sign is used).
double twice_area(const cl::Path& path) {
  double s = 0;
  const std::size_t n = path.size();
  for (std::size_t i = 0, j = n - 1; i < n; j = i++) {
    s += (static_cast<double>(path[j].X) + static_cast<double>(path[i].X)) *
         (static_cast<double>(path[j].Y) - static_cast<double>(path[i].Y));
  }
  return -s;
}

void from_paths(const cl::Paths& paths, const Grid& grid, gpc_polygon* out) {
  gpc_free_polygon(out);
  out->contour.reserve(paths.size());
  out->hole.reserve(paths.size());
  for (const cl::Path& path : paths) {
    if (path.size() < 3) continue;
    std::vector<gpc_vertex> v;
    v.reserve(path.size());
    for (const cl::IntPoint& p : path) v.push_back(grid.to_double(p));
    out->add_contour(std::move(v), twice_area(path) < 0 ? 1 : 0);
  }
}

// A value per grid point (open addressing; sized for n points before any goes in).
template <class T>
class PointTable {
 public:
  explicit PointTable(std::size_t n) {
    std::size_t capacity = 16;
    while (capacity < 2 * n) capacity *= 2;
    slots_.resize(capacity);
    mask_ = capacity - 1;
  }
  // p's value, made (value-initialised) when p is new.
  T& at(const cl::IntPoint& p) {
    for (std::size_t i = hash(p) & mask_;; i = (i + 1) & mask_) {
      Slot& slot = slots_[i];
      if (!slot.used) {
        slot.p = p;
        slot.used = true;
        return slot.value;
      }
      if (slot.p == p) return slot.value;
    }
  }
  // p's value, or nullptr.
  const T* find(const cl::IntPoint& p) const {
    for (std::size_t i = hash(p) & mask_;; i = (i + 1) & mask_) {
      const Slot& slot = slots_[i];
      if (!slot.used) return nullptr;
      if (slot.p == p) return &slot.value;
    }
  }

 private:
  struct Slot {
    cl::IntPoint p;
    T value{};
    bool used = false;
  };
  static std::size_t hash(const cl::IntPoint& p) {
    uint64_t h = static_cast<uint64_t>(p.X) * 0x9E3779B97F4A7C15ull ^ static_cast<uint64_t>(p.Y);
    h ^= h >> 31;
    h *= 0xBF58476D1CE4E5B9ull;
    h ^= h >> 29;
    return static_cast<std::size_t>(h);
  }
  std::vector<Slot> slots_;
  std::size_t mask_ = 0;
};

// ---- rings that touch ----------------------------------------------------------------------

// The engine's rings do not cross, but they may meet at vertices: a ring may pass through one
// vertex twice, a hole may touch its outer ring or other holes, and a chain of holes touching
// each other can run from the outer ring back to it, cutting the region in two while the engine
// still draws it as one outer ring with holes.  rebuild_touching_rings redraws the rings at every
// vertex met more than once so that each ring is simple and each region piece gets its own
// outer ring.
//
// Every ring has the region on its left (outer rings turn counter-clockwise, holes clockwise).
// Around a vertex met k times the edges alternate: an edge coming in, with the region in the
// sector clockwise from it, and an edge going out, with the region in the sector counter-clockwise
// from it.  Two passes decide which edge follows which:
//  1. Each incoming edge is followed by the outgoing edge across the region sector (the next
//     edge clockwise).  The closed walks so traced each border one connected piece of the
//     region: consecutive edges share a sector, so all edges of a walk border the same piece, and
//     two sectors of different pieces never end up in one walk.
//  2. A walk may still pass a vertex several times (a hole touching its outer ring at a point:
//     pass 1 joins both into one walk).  All sectors of one walk at a vertex belong to one
//     connected piece, so the gaps between them belong to different parts of its complement: a
//     closed path through the piece separates each gap from the others.  Each incoming edge is
//     therefore followed by the walk's next edge counter-clockwise, across the gap; the rings so
//     traced border one piece and one part of its complement each, and pass through a vertex
//     once.  A ring turning counter-clockwise is then the outer ring of its piece, one turning
//     clockwise a hole in it.
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

// ---- shared edges ----------------------------------------------------------------------------

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

// True when two edges of the paths (of one path or of two) run along each other for some length.
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

cl::ClipType clip_type(gpc_op op) {
  switch (op) {
    case GPC_DIFF:
      return cl::ctDifference;
    case GPC_INT:
      return cl::ctIntersection;
    case GPC_XOR:
      return cl::ctXor;
    case GPC_UNION:
    default:
      return cl::ctUnion;
  }
}

// The clipping engine with its edge lists reserved before paths go in.  The engine allocates each
// path's edge block and then records it in a list; were the list to grow at that moment and
// memory run out, the block would be lost.  With the room reserved first, running out of memory
// while paths are added leaves nothing behind.
class Engine : public cl::Clipper {
 public:
  void add(const cl::Paths& paths, cl::PolyType type) {
    m_edges.reserve(m_edges.size() + paths.size());
    AddPaths(paths, type, true);
  }

  // Runs one operation with even-odd fill on both operands.  The engine catches every exception
  // of its own run, running out of memory among them, and answers false; that becomes
  // std::bad_alloc again here, so that the export reports it rather than a partial result.
  void run(cl::ClipType type, cl::Paths* solution) {
    if (!Execute(type, *solution, cl::pftEvenOdd, cl::pftEvenOdd)) throw std::bad_alloc();
  }
};

// Rings along each other joined by one more pass through the engine (where the operands' edges
// coincide, the engine can leave a hole along an outer ring instead of a notch in it, or a ring
// that runs back along itself, a bridge of no width), then the touching rings redrawn.
void settle(cl::Paths& paths) {
  if (edges_along_each_other(paths)) {
    Engine again;
    again.add(paths, cl::ptSubject);
    again.run(cl::ctUnion, &paths);
  }
  rebuild_touching_rings(paths);
}

// The engine's result for one operation, with its rings repaired (see above).
cl::Paths solve(Engine& engine, cl::ClipType type) {
  cl::Paths solution;
  engine.run(type, &solution);
  settle(solution);
  return solution;
}

void run(Engine& engine, cl::ClipType type, const Grid& grid, gpc_polygon* out) {
  from_paths(solve(engine, type), grid, out);
}

// ---- the three parts of an overlay from two sweeps ------------------------------------------

enum : uint8_t { kOfSubject = 1, kOfClip = 2, kOfCommon = 4 };

using PointFlags = PointTable<uint8_t>;

std::size_t vertex_count(const cl::Paths& paths) {
  std::size_t n = 0;
  for (const cl::Path& p : paths) n += p.size();
  return n;
}

// Splits the rings of the symmetric difference x of subject s and clip c into the subject's own
// part and the clip's own part, knowing the common part's rings; false when some ring cannot be
// told (the caller then makes both parts the long way).
//
// Why a ring can be told by its vertices: the symmetric difference and the common part come from
// one engine holding the same edges, so they share every crossing point, rounded alike, and
// every vertex of an operand that lies on their boundaries.  Take a vertex v of a ring of x that
// is a vertex of the subject and not of the clip, with the operands in general position at v
// (v off the clip's boundary).  Near v the subject's boundary separates the subject from the
// rest.  If v lies outside the clip, the subject's side near v belongs to the subject's own part
// and nothing near v is common, so v is no vertex of the common part, and the ring through v in
// x bounds the subject's own part.  If v lies inside the clip, the subject's side near v is
// common and the other side is the clip's own part; the common part's ring passes v with the
// same neighbours along the subject's boundary as x's ring, so the engine keeps (or drops) v in
// both alike, and the ring through v in x bounds the clip's own part.  The same holds with the
// roles swapped.  Rings made only of crossing points get their side from their neighbours (see
// below).  After rebuild_touching_rings each ring of x borders one piece of x, and a piece
// lies wholly in one part unless the two parts share an edge, which needs operand edges along
// each other (the caller checks for rings of x along each other, and vertices shared by both
// operands).  Every telling vertex of a ring must agree; a ring left untold or a disagreement
// sends the caller the long way, so a degenerate case
// missed by those checks costs time, not correctness, as long as some vertex disagrees.
bool split_by_side(cl::Paths& x, const PointFlags& flags, cl::Paths* subject_only, cl::Paths* clip_only) {
  std::vector<uint8_t> side(x.size(), 0);
  std::size_t crossings = 0;
  for (std::size_t r = 0; r < x.size(); ++r) {
    for (const cl::IntPoint& p : x[r]) {
      const uint8_t* f = flags.find(p);
      const bool of_subject = f != nullptr && (*f & kOfSubject) != 0;
      const bool of_clip = f != nullptr && (*f & kOfClip) != 0;
      if (of_subject == of_clip) {
        ++crossings;
        continue;
      }
      // A subject vertex off the common part, or a clip vertex on it: the subject's own part.
      const uint8_t here = of_subject != ((*f & kOfCommon) != 0) ? 1 : 2;
      if (side[r] != 0 && side[r] != here) return false;
      side[r] = here;
    }
  }
  if (std::find(side.begin(), side.end(), 0) != side.end()) {
    // Rings made of crossing points only (where the operands' edges cross in a lattice).  At a
    // crossing point the four corners around it are common, subject only, neither and clip
    // only, so the two rings of x through it lie on opposite sides: the side spreads from told
    // rings to their neighbours at crossing points.  A point with other than two rings through
    // it passes nothing on.
    struct Through {
      std::size_t ring[2];
      std::size_t count;
    };
    PointTable<Through> through(crossings);
    for (std::size_t r = 0; r < x.size(); ++r) {
      for (const cl::IntPoint& p : x[r]) {
        const uint8_t* f = flags.find(p);
        if (f != nullptr && ((*f & kOfSubject) != 0) != ((*f & kOfClip) != 0)) continue;
        Through& t = through.at(p);
        if (t.count < 2) t.ring[t.count] = r;
        ++t.count;
      }
    }
    std::vector<std::size_t> queue;
    for (std::size_t r = 0; r < x.size(); ++r) {
      if (side[r] != 0) queue.push_back(r);
    }
    while (!queue.empty()) {
      const std::size_t r = queue.back();
      queue.pop_back();
      for (const cl::IntPoint& p : x[r]) {
        const Through* t = through.find(p);
        if (t == nullptr || t->count != 2) continue;
        const std::size_t other = t->ring[0] == r ? t->ring[1] : t->ring[0];
        if (other == r) continue;
        const uint8_t opposite = side[r] == 1 ? 2 : 1;
        if (side[other] == 0) {
          side[other] = opposite;
          queue.push_back(other);
        } else if (side[other] != opposite) {
          return false;
        }
      }
    }
    if (std::find(side.begin(), side.end(), 0) != side.end()) return false;
  }
  for (std::size_t r = 0; r < x.size(); ++r) (side[r] == 1 ? subject_only : clip_only)->push_back(std::move(x[r]));
  return true;
}

// The two one-sided parts from the engine's symmetric difference, classified by the common
// part's vertices; false when that does not work out (see split_by_side).
bool one_sided_parts(Engine& engine, const cl::Paths& s, const cl::Paths& c, const cl::Paths& common,
                     cl::Paths* subject_only, cl::Paths* clip_only) {
  PointFlags flags(vertex_count(s) + vertex_count(c) + vertex_count(common));
  for (const cl::Path& p : s) {
    for (const cl::IntPoint& v : p) flags.at(v) |= kOfSubject;
  }
  for (const cl::Path& p : c) {
    for (const cl::IntPoint& v : p) {
      uint8_t& f = flags.at(v);
      if (f & kOfSubject) return false;  // a vertex of both operands
      f |= kOfClip;
    }
  }
  for (const cl::Path& p : common) {
    for (const cl::IntPoint& v : p) flags.at(v) |= kOfCommon;
  }
  cl::Paths x;
  engine.run(cl::ctXor, &x);
  if (edges_along_each_other(x)) return false;
  rebuild_touching_rings(x);
  return split_by_side(x, flags, subject_only, clip_only);
}

}  // namespace

int32_t gpc_polygon_clip(gpc_op op, const gpc_polygon& subject, const gpc_polygon& clip, gpc_polygon* result) {
  gpc_free_polygon(result);
  Grid grid;
  if (!fit_grid(subject, clip, &grid)) return XGWKB_E_INVALID_ARGUMENT;
  const cl::Paths s = to_paths(subject, grid);
  const cl::Paths c = to_paths(clip, grid);
  Engine engine;
  engine.add(s, cl::ptSubject);
  engine.add(c, cl::ptClip);
  if (op != GPC_XOR) {
    run(engine, clip_type(op), grid, result);
    return XGWKB_OK;
  }
  // The symmetric difference as its two one-sided parts side by side: the engine's own draws the
  // common part as holes pinched against the outer ring wherever the boundaries cross.  Where a
  // piece of one side shares an edge with a piece of the other (operands with common edges), or a
  // ring runs along another or itself, the pieces go once more through the engine, whose union joins
  // them (their insides are disjoint, so even-odd fill of both sides is their union).
  cl::Paths both, other_side;
  engine.run(cl::ctDifference, &both);
  Engine swapped;
  swapped.add(c, cl::ptSubject);
  swapped.add(s, cl::ptClip);
  swapped.run(cl::ctDifference, &other_side);
  both.insert(both.end(), std::make_move_iterator(other_side.begin()), std::make_move_iterator(other_side.end()));
  for (int pass = 0; pass < 2 && edges_along_each_other(both); ++pass) {
    Engine again;
    again.add(both, cl::ptSubject);
    again.run(cl::ctUnion, &both);
  }
  rebuild_touching_rings(both);
  from_paths(both, grid, result);
  return XGWKB_OK;
}

int32_t three_way_polygon_clip(const gpc_polygon& subject, const gpc_polygon& clip, gpc_polygon* common,
                               gpc_polygon* subject_only, gpc_polygon* clip_only) {
  gpc_free_polygon(common);
  gpc_free_polygon(subject_only);
  gpc_free_polygon(clip_only);
  Grid grid;
  if (!fit_grid(subject, clip, &grid)) return XGWKB_E_INVALID_ARGUMENT;
  const cl::Paths s = to_paths(subject, grid);
  const cl::Paths c = to_paths(clip, grid);
  // One engine holds the edges of both operands for every run.  The common part and the
  // symmetric difference take two sweeps; the symmetric difference's rings are then told apart
  // by the common part's vertices (see split_by_side).  Where that does not work out (operands
  // sharing vertices or edges), the two one-sided parts are made directly, the clip's from a
  // second engine with the roles swapped (same integer paths, same grid).
  Engine engine;
  engine.add(s, cl::ptSubject);
  engine.add(c, cl::ptClip);
  cl::Paths both;
  engine.run(cl::ctIntersection, &both);
  cl::Paths mine, theirs;
  if (!one_sided_parts(engine, s, c, both, &mine, &theirs)) {
    mine.clear();
    theirs.clear();
    engine.run(cl::ctDifference, &mine);
    settle(mine);
    Engine swapped;
    swapped.add(c, cl::ptSubject);
    swapped.add(s, cl::ptClip);
    swapped.run(cl::ctDifference, &theirs);
    settle(theirs);
  }
  settle(both);
  from_paths(both, grid, common);
  from_paths(mine, grid, subject_only);
  from_paths(theirs, grid, clip_only);
  return XGWKB_OK;
}

void gpc_free_polygon(gpc_polygon* p) {
  if (p == nullptr) return;
  p->contour.clear();
  p->hole.clear();
}

}  // namespace xg
