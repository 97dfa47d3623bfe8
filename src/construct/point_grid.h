// point_grid.h - finding the points equal to a given one within a tolerance t (both coordinate
// differences strictly below t) among many, without comparing every pair.
//
// Points are filed in square cells of side t.  Two equal points (b.x - t < a.x < b.x + t, the
// library's test, whose sums round by half a unit in the last place) have x / t (and y / t)
// less than 1 + 0.11 apart while the quotients stay under 1e15 in size, and the quotients are
// computed with an error below 0.11 each; so the cells of equal points are at most two apart on
// each axis, and a query looks at the 5 x 5 cells around its own.  Points whose quotients are
// larger share one list, which every query scans while it is not empty; a query whose quotients
// lie just past the limit looks at the cells as well, for the points filed just before it.
// With t <= 0 (or NaN) no two points are equal, and neither are points with a NaN or infinite
// coordinate: those are not filed and find nothing.
#ifndef XGGEO_CONSTRUCT_POINT_GRID_H
#define XGGEO_CONSTRUCT_POINT_GRID_H

#include <cmath>
#include <cstdint>
#include <unordered_map>
#include <vector>

#include "core/blob.h"

namespace xg {

class PointGrid {
 public:
  explicit PointGrid(double t) : t_(t), active_(t > 0 && std::isfinite(t)) {}

  void insert(const _xgWKB_POINT& p, uint32_t id) {
    Cell c;
    const int where = locate(p, kGridLimit, &c);
    if (where == kNone) return;
    (where == kGrid ? cells_[c] : overflow_).push_back(Entry{p, id});
  }

  // Calls visit(id) for every filed point equal to p within t.  visit returns kKeep to go on,
  // kStop to end the search (find then returns true) or kDrop to remove the entry and go on.
  enum Visit { kKeep, kStop, kDrop };
  template <class F>
  bool find(const _xgWKB_POINT& p, F&& visit) {
    Cell c;
    const int where = locate(p, kGridLimit + 3, &c);
    if (where == kNone) return false;
    if (!overflow_.empty() && scan(overflow_, p, visit)) return true;
    if (where != kGrid) return false;
    for (int64_t dx = -2; dx <= 2; ++dx) {
      for (int64_t dy = -2; dy <= 2; ++dy) {
        auto it = cells_.find(Cell{c.x + dx, c.y + dy});
        if (it != cells_.end() && scan(it->second, p, visit)) return true;
      }
    }
    return false;
  }

  bool equal(const _xgWKB_POINT& a, const _xgWKB_POINT& b) const {
    return wkb_point_equal_tol(a, b, t_) == 1;
  }

 private:
  static constexpr int kNone = 0;
  static constexpr int kGrid = 1;
  static constexpr int kOverflow = 2;
  static constexpr double kGridLimit = 1e15;

  struct Cell {
    int64_t x;
    int64_t y;
    bool operator==(const Cell& o) const { return x == o.x && y == o.y; }
  };
  struct CellHash {
    std::size_t operator()(const Cell& c) const {
      return std::hash<uint64_t>()(static_cast<uint64_t>(c.x) * 0x9E3779B97F4A7C15ull ^ static_cast<uint64_t>(c.y));
    }
  };
  struct Entry {
    _xgWKB_POINT p;
    uint32_t id;
  };

  int locate(const _xgWKB_POINT& p, double limit, Cell* c) const {
    if (!active_ || !std::isfinite(p.x) || !std::isfinite(p.y)) return kNone;
    const double qx = std::floor(p.x / t_);
    const double qy = std::floor(p.y / t_);
    if (!(std::fabs(qx) < limit && std::fabs(qy) < limit)) return kOverflow;
    *c = Cell{static_cast<int64_t>(qx), static_cast<int64_t>(qy)};
    return kGrid;
  }

  template <class F>
  bool scan(std::vector<Entry>& list, const _xgWKB_POINT& p, F& visit) {
    for (std::size_t i = 0; i < list.size();) {
      if (!equal(list[i].p, p)) {
        ++i;
        continue;
      }
      const Visit v = visit(list[i].id);
      if (v == kStop) return true;
      if (v == kDrop) {
        list[i] = list.back();
        list.pop_back();
      } else {
        ++i;
      }
    }
    return false;
  }

  double t_;
  bool active_;
  std::unordered_map<Cell, std::vector<Entry>, CellHash> cells_;
  std::vector<Entry> overflow_;
};

}  // namespace xg

#endif  // XGGEO_CONSTRUCT_POINT_GRID_H
