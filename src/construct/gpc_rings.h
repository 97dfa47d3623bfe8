// gpc_rings.h - ring repairs of the clipper adapter on the engine's integer paths: finding
// edges that run along each other, redrawing rings that touch at vertices, and a small hash
// table keyed by grid points.  Part of the adapter (src/construct/gpc_adapter.cpp); nothing
// else includes it.
#ifndef XGGEO_CONSTRUCT_GPC_RINGS_H
#define XGGEO_CONSTRUCT_GPC_RINGS_H

#include <polyclipping/clipper.hpp>

#include <cstddef>
#include <cstdint>
#include <vector>

namespace xg {

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
  T& at(const ClipperLib::IntPoint& p) {
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
  const T* find(const ClipperLib::IntPoint& p) const {
    for (std::size_t i = hash(p) & mask_;; i = (i + 1) & mask_) {
      const Slot& slot = slots_[i];
      if (!slot.used) return nullptr;
      if (slot.p == p) return &slot.value;
    }
  }

 private:
  struct Slot {
    ClipperLib::IntPoint p;
    T value{};
    bool used = false;
  };
  static std::size_t hash(const ClipperLib::IntPoint& p) {
    uint64_t h = static_cast<uint64_t>(p.X) * 0x9E3779B97F4A7C15ull ^ static_cast<uint64_t>(p.Y);
    h ^= h >> 31;
    h *= 0xBF58476D1CE4E5B9ull;
    h ^= h >> 29;
    return static_cast<std::size_t>(h);
  }
  std::vector<Slot> slots_;
  std::size_t mask_ = 0;
};

// True when two edges of the paths (of one path or of two) run along each other for some length.
bool edges_along_each_other(const ClipperLib::Paths& paths);

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
void rebuild_touching_rings(ClipperLib::Paths& paths);

}  // namespace xg

#endif  // XGGEO_CONSTRUCT_GPC_RINGS_H
