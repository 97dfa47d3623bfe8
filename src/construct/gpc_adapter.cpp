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
#include <new>

#include "construct/gpc_rings.h"
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

  // Runs one operation with the given fill on both operands (even-odd, as the overlay uses).  The
  // engine catches every exception of its own run, running out of memory among them, and answers
  // false with an empty solution; on closed paths inside the grid that can only be memory running
  // out, so it becomes std::bad_alloc again here rather than being taken for an empty result.
  void run(cl::ClipType type, cl::Paths* solution, cl::PolyFillType fill = cl::pftEvenOdd) {
    if (!Execute(type, *solution, fill, fill)) throw std::bad_alloc();
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
cl::Paths solve(Engine& engine, cl::ClipType type, cl::PolyFillType fill = cl::pftEvenOdd) {
  cl::Paths solution;
  engine.run(type, &solution, fill);
  settle(solution);
  return solution;
}

void run(Engine& engine, cl::ClipType type, const Grid& grid, gpc_polygon* out) {
  from_paths(solve(engine, type), grid, out);
}

// ---- the three parts of an overlay from two sweeps ------------------------------------------

enum : uint8_t { kOfSubject = 1, kOfClip = 2, kOfCommon = 4 };

using PointFlags = PointTable<uint8_t>;

// Rings longer than this make the symmetric difference dearer than two differences (see
// three_way_polygon_clip).
constexpr std::size_t kLongRing = 4096;

std::size_t longest_path(const cl::Paths& paths) {
  std::size_t n = 0;
  for (const cl::Path& p : paths) n = std::max(n, p.size());
  return n;
}

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

// What the clip has and the subject has not: a second engine with the roles swapped, since one
// engine only ever subtracts its clip paths from its subject paths.
cl::Paths clip_minus_subject(const cl::Paths& s, const cl::Paths& c) {
  Engine swapped;
  swapped.add(c, cl::ptSubject);
  swapped.add(s, cl::ptClip);
  cl::Paths out;
  swapped.run(cl::ctDifference, &out);
  return out;
}

// The operands of one clip on their common grid, and an engine holding both.
struct Prepared {
  Grid grid;
  cl::Paths s, c;
  Engine engine;
};

// False when the coordinates cannot be put on a grid (non-finite or too large).
bool prepare(const gpc_polygon& subject, const gpc_polygon& clip, Prepared* p) {
  if (!fit_grid(subject, clip, &p->grid)) return false;
  p->s = to_paths(subject, p->grid);
  p->c = to_paths(clip, p->grid);
  p->engine.add(p->s, cl::ptSubject);
  p->engine.add(p->c, cl::ptClip);
  return true;
}

}  // namespace

int32_t gpc_polygon_clip(gpc_op op, const gpc_polygon& subject, const gpc_polygon& clip, gpc_polygon* result) {
  gpc_free_polygon(result);
  Prepared p;
  if (!prepare(subject, clip, &p)) return XGWKB_E_INVALID_ARGUMENT;
  const Grid& grid = p.grid;
  Engine& engine = p.engine;
  if (op != GPC_XOR) {
    run(engine, clip_type(op), grid, result);
    return XGWKB_OK;
  }
  // The symmetric difference as its two one-sided parts side by side: the engine's own draws the
  // common part as holes pinched against the outer ring wherever the boundaries cross.  Where a
  // piece of one side shares an edge with a piece of the other (operands with common edges), or a
  // ring runs along another or itself, the pieces go once more through the engine, whose union joins
  // them (their insides are disjoint, so even-odd fill of both sides is their union).
  cl::Paths both, other_side = clip_minus_subject(p.s, p.c);
  engine.run(cl::ctDifference, &both);
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
  Prepared p;
  if (!prepare(subject, clip, &p)) return XGWKB_E_INVALID_ARGUMENT;
  const cl::Paths& s = p.s;
  const cl::Paths& c = p.c;
  Engine& engine = p.engine;
  // One engine holds the edges of both operands for every run.  The common part and the
  // symmetric difference take two sweeps; the symmetric difference's rings are then told apart
  // by the common part's vertices (see split_by_side).  Where that does not work out (operands
  // sharing vertices or edges), the two one-sided parts are made directly, the clip's from a
  // second engine with the roles swapped (same integer paths, same grid).
  //
  // Operands with a ring of many vertices go the direct way from the start: when the engine
  // joins two partial rings of its result it walks the joined ring to find its lowest point, so
  // a result whose boundary wavers up and down along a long ring costs time growing with the
  // square of that ring's length.  The symmetric difference draws both one-sided parts as one
  // ring pinched at the crossings, twice as long as either part's, so there two separate
  // differences are cheaper than one symmetric difference.
  cl::Paths both;
  engine.run(cl::ctIntersection, &both);
  cl::Paths mine, theirs;
  if (longest_path(s) > kLongRing || longest_path(c) > kLongRing ||
      !one_sided_parts(engine, s, c, both, &mine, &theirs)) {
    mine.clear();
    theirs.clear();
    engine.run(cl::ctDifference, &mine);
    settle(mine);
    theirs = clip_minus_subject(s, c);
    settle(theirs);
  }
  settle(both);
  from_paths(both, p.grid, common);
  from_paths(mine, p.grid, subject_only);
  from_paths(theirs, p.grid, clip_only);
  return XGWKB_OK;
}

int32_t gpc_union_winding(const gpc_polygon& contours, gpc_polygon* result) {
  gpc_free_polygon(result);
  Grid grid;
  const gpc_polygon none;
  if (!fit_grid(contours, none, &grid)) return XGWKB_E_INVALID_ARGUMENT;
  const cl::Paths paths = to_paths(contours, grid);
  Engine engine;
  engine.add(paths, cl::ptSubject);
  from_paths(solve(engine, cl::ctUnion, cl::pftPositive), grid, result);
  return XGWKB_OK;
}

void gpc_free_polygon(gpc_polygon* p) {
  if (p == nullptr) return;
  p->contour.clear();
  p->hole.clear();
}

}  // namespace xg
