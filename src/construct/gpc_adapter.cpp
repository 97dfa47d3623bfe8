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
#include <unordered_map>

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

// ---- pinched holes ---------------------------------------------------------------------------

struct PointHash {
  std::size_t operator()(const cl::IntPoint& p) const {
    return std::hash<cl::cInt>()(p.X) * 0x9E3779B97F4A7C15ull ^ std::hash<cl::cInt>()(p.Y);
  }
};

// Splits a closed ring at every vertex it visits twice into loops that visit each vertex once;
// loops of fewer than three vertices are dropped.
void split_at_repeats(const cl::Path& ring, cl::Paths& loops) {
  cl::Path stack;
  std::unordered_map<cl::IntPoint, std::size_t, PointHash> at;  // vertex -> its place in stack
  for (const cl::IntPoint& p : ring) {
    const auto seen = at.find(p);
    if (seen == at.end()) {
      at.emplace(p, stack.size());
      stack.push_back(p);
      continue;
    }
    // The vertices since p's first visit close a loop.
    cl::Path loop(stack.begin() + static_cast<std::ptrdiff_t>(seen->second), stack.end());
    for (std::size_t k = seen->second + 1; k < stack.size(); ++k) at.erase(stack[k]);
    stack.resize(seen->second + 1);
    if (loop.size() >= 3) loops.push_back(std::move(loop));
  }
  if (stack.size() >= 3) loops.push_back(std::move(stack));
}

// A ring that passes through one vertex twice (the engine leaves such rings where a region
// touches itself at a point) is split there into simple rings: pieces turning the ring's way and
// holes turning the other way.  (The engine's own option for this walks every pair of vertices
// of a ring, which is quadratic.)
void split_self_touching(cl::Paths& paths) {
  std::vector<cl::IntPoint> sorted;
  const std::size_t count = paths.size();
  for (std::size_t i = 0; i < count; ++i) {
    sorted.assign(paths[i].begin(), paths[i].end());
    std::sort(sorted.begin(), sorted.end(), [](const cl::IntPoint& l, const cl::IntPoint& r) {
      return l.X != r.X ? l.X < r.X : l.Y < r.Y;
    });
    if (std::adjacent_find(sorted.begin(), sorted.end()) == sorted.end()) continue;
    cl::Paths loops;
    split_at_repeats(paths[i], loops);
    paths[i].clear();
    for (cl::Path& l : loops) paths.push_back(std::move(l));
  }
}

// The engine draws a region pinched at points (where the operands' boundaries cross, in a
// symmetric difference above all) as an outer ring with a hole touching it at those points.
// Such a hole is spliced into its outer ring at one shared vertex and the ring is split at every
// shared vertex, which leaves the pieces between the points as separate rings.  A hole touching
// its outer ring at a single point stays as it is.
void split_pinched_holes(cl::Paths& paths) {
  // Each pass splits every hole pinched against an outer ring not yet split in that pass; a few
  // passes settle the rings that one split leaves pinched against another hole.
  for (int pass = 0; pass < 4; ++pass) {
    std::vector<std::size_t> holes;
    std::unordered_map<cl::IntPoint, std::pair<std::size_t, std::size_t>, PointHash> outer_vertex;
    for (std::size_t i = 0; i < paths.size(); ++i) {
      if (paths[i].size() < 3) continue;
      if (twice_area(paths[i]) < 0) {
        holes.push_back(i);
      } else {
        for (std::size_t v = 0; v < paths[i].size(); ++v) outer_vertex.emplace(paths[i][v], std::make_pair(i, v));
      }
    }
    if (holes.empty()) return;
    std::vector<bool> split(paths.size(), false);
    cl::Paths added;
    for (std::size_t h : holes) {
      // The touching vertex latest along the outer ring is the splice point, so that the walk
      // around the hole meets every other touching vertex already on the stack.
      std::size_t outer = 0, at_outer = 0, at_hole = 0, touches = 0, free_vertex = 0;
      bool has_free = false;
      for (std::size_t v = 0; v < paths[h].size(); ++v) {
        const auto it = outer_vertex.find(paths[h][v]);
        if (it == outer_vertex.end()) {
          if (!has_free) free_vertex = v;
          has_free = true;
          continue;
        }
        if (touches == 0) outer = it->second.first;
        if (it->second.first != outer) continue;
        if (touches == 0 || it->second.second > at_outer) {
          at_outer = it->second.second;
          at_hole = v;
        }
        ++touches;
      }
      if (touches < 2 || !has_free || split[outer]) continue;
      // Only a hole inside that outer ring (not one around an island touching it).
      if (cl::PointInPolygon(paths[h][free_vertex], paths[outer]) != 1) continue;
      const cl::Path& o = paths[outer];
      const cl::Path& hv = paths[h];
      cl::Path spliced(o.begin(), o.begin() + static_cast<std::ptrdiff_t>(at_outer) + 1);
      for (std::size_t k = 1; k <= hv.size(); ++k) spliced.push_back(hv[(at_hole + k) % hv.size()]);
      spliced.insert(spliced.end(), o.begin() + static_cast<std::ptrdiff_t>(at_outer) + 1, o.end());
      cl::Paths loops;
      split_at_repeats(spliced, loops);
      // Every piece of a pinched region turns like an outer ring; a loop turning the other way
      // means the walk did not come apart as expected, and the rings are left as they were.
      const auto turns_back = [](const cl::Path& l) { return twice_area(l) < 0; };
      if (std::any_of(loops.begin(), loops.end(), turns_back)) continue;
      split[outer] = true;
      paths[outer].clear();
      paths[h].clear();
      for (cl::Path& l : loops) added.push_back(std::move(l));
    }
    if (added.empty()) return;
    for (cl::Path& l : added) paths.push_back(std::move(l));
  }
}

// ---- shared edges ----------------------------------------------------------------------------

// Edges grouped by the line they lie on (reduced direction and offset, exact in 128 bits), with
// their extents along it, so that edges running along each other for some length can be found
// by sorting instead of comparing all pairs.
struct LinePiece {
  __int128 dx, dy, offset;  // the line: reduced direction, cross(direction, point)
  __int128 lo, hi;          // extent along the direction
  std::size_t group;
};

void add_line_pieces(const cl::Path& path, std::size_t group, std::vector<LinePiece>& pieces) {
  for (std::size_t i = 0, n = path.size(); i < n; ++i) {
    const cl::IntPoint& p = path[i];
    const cl::IntPoint& q = path[(i + 1) % n];
    __int128 dx = static_cast<__int128>(q.X) - p.X, dy = static_cast<__int128>(q.Y) - p.Y;
    if (dx == 0 && dy == 0) continue;
    __int128 g = dx < 0 ? -dx : dx, h = dy < 0 ? -dy : dy;
    while (h != 0) {
      const __int128 r = g % h;
      g = h;
      h = r;
    }
    dx /= g;
    dy /= g;
    if (dx < 0 || (dx == 0 && dy < 0)) {
      dx = -dx;
      dy = -dy;
    }
    const __int128 tp = dx * p.X + dy * p.Y, tq = dx * q.X + dy * q.Y;
    pieces.push_back({dx, dy, dx * p.Y - dy * p.X, tp < tq ? tp : tq, tp < tq ? tq : tp, group});
  }
}

// True when two pieces of different groups overlap for some length.
bool groups_overlap(std::vector<LinePiece>& pieces) {
  std::sort(pieces.begin(), pieces.end(), [](const LinePiece& l, const LinePiece& r) {
    if (l.dx != r.dx) return l.dx < r.dx;
    if (l.dy != r.dy) return l.dy < r.dy;
    if (l.offset != r.offset) return l.offset < r.offset;
    return l.lo < r.lo;
  });
  // Along one line, sorted by start: a piece overlaps an earlier one of another group when it
  // starts before the farthest end reached so far by a group other than its own (the two
  // farthest ends of distinct groups are kept).
  for (std::size_t i = 0; i < pieces.size();) {
    std::size_t j = i;
    bool have1 = false, have2 = false;
    __int128 reach1 = 0, reach2 = 0;
    std::size_t group1 = 0;
    for (; j < pieces.size() && pieces[j].dx == pieces[i].dx && pieces[j].dy == pieces[i].dy &&
           pieces[j].offset == pieces[i].offset;
         ++j) {
      const LinePiece& pc = pieces[j];
      if (have1 && group1 != pc.group && pc.lo < reach1) return true;
      if (have2 && group1 == pc.group && pc.lo < reach2) return true;
      if (!have1 || pc.hi > reach1) {
        if (have1 && group1 != pc.group) {
          reach2 = reach1;
          have2 = true;
        }
        reach1 = pc.hi;
        group1 = pc.group;
        have1 = true;
      } else if (group1 != pc.group && (!have2 || pc.hi > reach2)) {
        reach2 = pc.hi;
        have2 = true;
      }
    }
    i = j;
  }
  return false;
}

// True when an edge of a path in a and an edge of a path in b run along each other for some
// length.
bool share_an_edge(const cl::Paths& a, const cl::Paths& b) {
  std::vector<LinePiece> pieces;
  for (const cl::Path& p : a) add_line_pieces(p, 0, pieces);
  for (const cl::Path& p : b) add_line_pieces(p, 1, pieces);
  return groups_overlap(pieces);
}

// True when two of the paths run along each other for some length.
bool paths_share_an_edge(const cl::Paths& paths) {
  if (paths.size() < 2) return false;
  std::vector<LinePiece> pieces;
  for (std::size_t i = 0; i < paths.size(); ++i) add_line_pieces(paths[i], i, pieces);
  return groups_overlap(pieces);
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

// True when a hole runs along part of an outer ring's edge.  The engine can leave such a hole
// (where the operands' edges coincide) instead of cutting a notch into the outer ring; such
// results need a second pass.  Results without holes cost one orientation test per path.
bool hole_along_outer(const cl::Paths& paths) {
  cl::Paths outers, holes;
  for (const cl::Path& p : paths) {
    if (p.size() >= 3) (twice_area(p) < 0 ? holes : outers).push_back(p);
  }
  return !holes.empty() && share_an_edge(holes, outers);
}

// The engine's result for one operation, with its rings repaired (see above).
cl::Paths solve(Engine& engine, cl::ClipType type, cl::PolyFillType fill = cl::pftEvenOdd) {
  cl::Paths solution;
  engine.run(type, &solution, fill);
  if (hole_along_outer(solution)) {
    // The same region once more through the engine, which then joins such holes to their outer.
    Engine again;
    again.add(solution, cl::ptSubject);
    again.run(cl::ctUnion, &solution);
  }
  split_self_touching(solution);
  split_pinched_holes(solution);
  return solution;
}

void run(Engine& engine, cl::ClipType type, const Grid& grid, gpc_polygon* out) {
  from_paths(solve(engine, type), grid, out);
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
  // piece of one side shares an edge with a piece of the other (operands with common edges), the
  // engine's own result joins them, and its pinched holes are split apart instead.
  cl::Paths one_side, other_side;
  engine.run(cl::ctDifference, &one_side);
  Engine swapped;
  swapped.add(c, cl::ptSubject);
  swapped.add(s, cl::ptClip);
  swapped.run(cl::ctDifference, &other_side);
  if (share_an_edge(one_side, other_side)) {
    cl::Paths x = solve(engine, cl::ctXor);
    if (paths_share_an_edge(x)) {
      // The engine's symmetric difference can still leave two rings along one edge; once more
      // through the engine joins them.
      Engine again;
      again.add(x, cl::ptSubject);
      x = solve(again, cl::ctUnion);
    }
    from_paths(x, grid, result);
    return XGWKB_OK;
  }
  one_side.insert(one_side.end(), std::make_move_iterator(other_side.begin()), std::make_move_iterator(other_side.end()));
  split_pinched_holes(one_side);
  from_paths(one_side, grid, result);
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
  // The engine keeps its edges between runs, so one instance serves the common part and the
  // subject's own part.  It only ever subtracts the clip from the subject, so the clip's own part
  // needs a second instance with the roles swapped (same integer paths, same grid).
  Engine engine;
  engine.add(s, cl::ptSubject);
  engine.add(c, cl::ptClip);
  run(engine, cl::ctIntersection, grid, common);
  run(engine, cl::ctDifference, grid, subject_only);
  Engine swapped;
  swapped.add(c, cl::ptSubject);
  swapped.add(s, cl::ptClip);
  run(swapped, cl::ctDifference, grid, clip_only);
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
