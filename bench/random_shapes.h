// random_shapes.h - seeded random inputs shared by the benchmark programs.
//
// Polygons are star-shaped around a centre: n random radii at sorted random angles (one angle
// drawn inside each of n equal sectors, so they are distinct and ordered).  Every ray from the
// centre meets such a ring once, so the ring is simple by construction and the disk of the
// smallest radius lies inside it.  Holes are smaller stars placed inside that disk, far enough
// apart not to meet.  Each generator takes its seed from the caller, so a given size always gets
// the same shape.
#ifndef XGGEO_BENCH_RANDOM_SHAPES_H
#define XGGEO_BENCH_RANDOM_SHAPES_H

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <random>
#include <vector>

#include "support/blob_builder.h"
#include "xggeokit.h"

namespace xgbench {

using xgtest::Bytes;
using xgtest::Ring;

// A projected-looking centre (metres) and the outer radius of the shapes around it.
constexpr double kCx = 512345.678;
constexpr double kCy = 4012345.678;
constexpr double kRadius = 1000.0;

// One generator per (input kind, size): the same size always sees the same numbers.
inline std::mt19937_64 seeded(uint64_t kind, std::size_t size) {
  return std::mt19937_64(0x9E3779B97F4A7C15ULL * (kind + 1) + size);
}

// A closed counter-clockwise star ring of n distinct vertices (n + 1 points) around (cx, cy)
// with radii in [rmin, rmax].  n is raised to 3 when smaller.
inline Ring star_ring(std::mt19937_64& rng, double cx, double cy, double rmin, double rmax,
                      std::size_t n) {
  if (n < 3) n = 3;
  std::uniform_real_distribution<double> within_sector(0.05, 0.95);
  std::uniform_real_distribution<double> radius(rmin, rmax);
  const double sector = 2 * M_PI / static_cast<double>(n);
  Ring ring;
  ring.reserve(n + 1);
  for (std::size_t i = 0; i < n; ++i) {
    const double a = (static_cast<double>(i) + within_sector(rng)) * sector;
    const double r = radius(rng);
    ring.push_back({cx + r * std::cos(a), cy + r * std::sin(a)});
  }
  ring.push_back(ring.front());
  return ring;
}

inline Bytes star_polygon(std::mt19937_64& rng, double cx, double cy, double rmin, double rmax,
                          std::size_t n) {
  return xgtest::polygon({star_ring(rng, cx, cy, rmin, rmax, n)});
}

// A star polygon of radius in [0.8R, R] around (cx, cy) with four star holes of n/4 vertices
// each (at least 3), centred at half the inner radius on the four axes: every hole lies in the
// disk the shell is sure to contain, and the holes stay apart.
inline Bytes star_with_holes(std::mt19937_64& rng, double cx, double cy, std::size_t n) {
  const double inner = 0.8 * kRadius;
  std::vector<Ring> rings{star_ring(rng, cx, cy, inner, kRadius, n)};
  const double d = 0.5 * inner;
  const double offsets[4][2] = {{d, 0}, {0, d}, {-d, 0}, {0, -d}};
  for (const auto& o : offsets) {
    rings.push_back(star_ring(rng, cx + o[0], cy + o[1], 0.1 * inner, 0.3 * inner, n / 4));
  }
  return xgtest::polygon(rings);
}

// An open line of n points from (x0, y) to (x1, y), like a road: x strictly increasing in random
// steps, y a random walk of steps up to twice the mean x step, held within +-dy of y.
inline Bytes wavy_line(std::mt19937_64& rng, double x0, double x1, double y, double dy,
                       std::size_t n) {
  if (n < 2) n = 2;
  std::uniform_real_distribution<double> step(0.5, 1.5);
  std::uniform_real_distribution<double> turn(-2.0, 2.0);
  std::vector<double> xs(n);
  double x = 0;
  for (double& v : xs) v = (x += step(rng));
  const double scale = (x1 - x0) / (xs[n - 1] - xs[0]);
  Ring pts;
  pts.reserve(n);
  double offset = 0;
  for (std::size_t i = 0; i < n; ++i) {
    pts.push_back({x0 + scale * (xs[i] - xs[0]), y + offset});
    offset = std::fmin(dy, std::fmax(-dy, offset + scale * turn(rng)));
  }
  return xgtest::linestring(pts);
}

// Number of vertices of a shape (every ring and member, closing points included).
inline uint32_t vertex_count(const Bytes& shape) {
  uint32_t n = 0;
  xgWKB_shape_get_num_points(shape.data(), 0, 0, &n);
  return n;
}

}  // namespace xgbench

#endif  // XGGEO_BENCH_RANDOM_SHAPES_H
