// gpc_adapter.cpp - gpc_polygon operations on the integer clipping engine.
//
// Per call: find the extent of both operands, fit one grid axis to each of its sides, convert
// the contours to integer paths once, let the engine run the operation(s) with even-odd fill,
// and convert the resulting paths back with their hole flags (the engine turns outer paths
// counter-clockwise and holes clockwise, so the sign of a path's area is its flag).
#include "construct/gpc_adapter.h"

#include <polyclipping/clipper.hpp>

#include <cmath>

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

void run(cl::Clipper& engine, cl::ClipType type, const Grid& grid, gpc_polygon* out) {
  cl::Paths solution;
  engine.Execute(type, solution, cl::pftEvenOdd, cl::pftEvenOdd);
  from_paths(solution, grid, out);
}

}  // namespace

int32_t gpc_polygon_clip(gpc_op op, const gpc_polygon& subject, const gpc_polygon& clip, gpc_polygon* result) {
  gpc_free_polygon(result);
  Grid grid;
  if (!fit_grid(subject, clip, &grid)) return XGWKB_E_INVALID_ARGUMENT;
  const cl::Paths s = to_paths(subject, grid);
  const cl::Paths c = to_paths(clip, grid);
  cl::Clipper engine;
  engine.AddPaths(s, cl::ptSubject, true);
  engine.AddPaths(c, cl::ptClip, true);
  if (op != GPC_XOR) {
    run(engine, clip_type(op), grid, result);
    return XGWKB_OK;
  }
  // The engine's own symmetric difference draws the common part as a hole touching the outer
  // ring where the boundaries cross; the two one-sided parts side by side give the same region
  // as separate rings, each hole strictly inside its own outer ring.
  gpc_polygon other;
  run(engine, cl::ctDifference, grid, result);
  cl::Clipper swapped;
  swapped.AddPaths(c, cl::ptSubject, true);
  swapped.AddPaths(s, cl::ptClip, true);
  run(swapped, cl::ctDifference, grid, &other);
  for (int i = 0; i < other.num_contours(); ++i) result->add_contour(std::move(other.contour[i].vertex), other.hole[i]);
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
  cl::Clipper engine;
  engine.AddPaths(s, cl::ptSubject, true);
  engine.AddPaths(c, cl::ptClip, true);
  run(engine, cl::ctIntersection, grid, common);
  run(engine, cl::ctDifference, grid, subject_only);
  cl::Clipper swapped;
  swapped.AddPaths(c, cl::ptSubject, true);
  swapped.AddPaths(s, cl::ptClip, true);
  run(swapped, cl::ctDifference, grid, clip_only);
  return XGWKB_OK;
}

void gpc_free_polygon(gpc_polygon* p) {
  if (p == nullptr) return;
  p->contour.clear();
  p->hole.clear();
}

}  // namespace xg
