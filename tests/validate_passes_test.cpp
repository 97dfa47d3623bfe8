// Validation's shortcuts (shared edge indexes, chunks clear of the shell, box sweeps over holes
// and members, the turn test before the doubling-back check) against a plain run of the same
// rules: every pair, every segment, no index.
#include <gtest/gtest.h>

#include <numeric>
#include <random>
#include <vector>

#include "core/point_primitives.h"
#include "relate/segment_tests.h"
#include "support/blob_builder.h"

using namespace xgtest;

namespace {

constexpr double kT = xg::kFixedTolerance;
using Rng = std::mt19937_64;
using Polygon = std::vector<Ring>;

int32_t status_of(const Bytes& blob) {
  Misaligned m(blob);
  int32_t status = 0;
  const uint32_t valid = xgWKB_shape_check_WKBdata(m.data(), &status);
  EXPECT_EQ(valid == 1, status == XGWKB_OK);
  return status;
}

// ---- the plain rules -----------------------------------------------------------------------

xg::Span plain(const Ring& r) { return xg::make_span(r.data(), static_cast<uint32_t>(r.size())); }

bool inside(const Ring& a, const Ring& b) {
  for (std::size_t i = 0; i + 1 < a.size(); ++i) {
    if (xg::segment_leaves_ring(a[i], a[i + 1], plain(b), kT)) return false;
  }
  return true;
}

bool same_ring(const Ring& a, const Ring& b) {
  const _xgWKB_BOX p = plain(a).box, q = plain(b).box;
  const bool boxes = std::fabs(p.minx - q.minx) <= 2 * kT && std::fabs(p.miny - q.miny) <= 2 * kT &&
                     std::fabs(p.maxx - q.maxx) <= 2 * kT && std::fabs(p.maxy - q.maxy) <= 2 * kT;
  return boxes && inside(a, b) && inside(b, a);
}

// Exactly one point in common, judged at the vertices (those of a first).
bool touch(const Ring& a, const Ring& b) {
  auto on = [](const _xgWKB_POINT& p, const Ring& r) { return xg::locate_on_run(p, r.data(), static_cast<uint32_t>(r.size()), kT) != 0; };
  if (!xg::wkb_point_equal_tol(a.front(), a.back(), kT) || !xg::wkb_point_equal_tol(b.front(), b.back(), kT)) return false;
  std::vector<_xgWKB_POINT> found;
  for (std::size_t i = 0; i + 1 < a.size(); ++i) if (on(a[i], b)) found.push_back(a[i]);
  for (std::size_t i = 0; i + 1 < b.size(); ++i) {
    if (on(b[i], a) && (found.empty() || !xg::wkb_point_equal_tol(b[i], found[0], kT))) found.push_back(b[i]);
  }
  return found.size() == 1;
}

int32_t plain_polygon(const Polygon& rings) {
  for (const Ring& r : rings) {
    if (r.size() < 2 || !xg::wkb_point_equal_tol(r.front(), r.back(), kT)) return XGWKB_E_NOT_CLOSED;
    if (!xg::run_is_simple(plain(r), kT)) return XGWKB_E_SELF_INTERSECTION;
    for (std::size_t i = 0; i + 2 < r.size(); ++i) {
      if (xg::segment_intersection(r[i], r[i + 1], r[i + 1], r[i + 2], nullptr, kT) == 2)
        return XGWKB_E_OVERLAPPING_POLYGONS;
    }
  }
  // Touching rings as a graph; a link between rings already connected closes a cycle.
  std::vector<std::size_t> root(rings.size());
  std::iota(root.begin(), root.end(), 0);
  auto find = [&](std::size_t i) {
    while (root[i] != i) i = root[i];
    return i;
  };
  bool cycle = false;
  auto link = [&](std::size_t i, std::size_t j) {
    cycle = cycle || find(i) == find(j);
    root[find(i)] = find(j);
  };
  for (std::size_t k = 1; k < rings.size(); ++k) {
    if (!inside(rings[k], rings[0])) return XGWKB_E_HOLE_OUTSIDE;
    if (xg::runs_disjoint(plain(rings[k]), plain(rings[0]), kT)) continue;
    if (same_ring(rings[k], rings[0])) return XGWKB_E_RINGS_OVERLAP;
    if (!touch(rings[k], rings[0])) return XGWKB_E_INTEGRITY;
    link(0, k);
  }
  for (std::size_t j = 1; j < rings.size(); ++j) {
    for (std::size_t k = j + 1; k < rings.size(); ++k) {
      if (xg::ring_overlaps_ring(plain(rings[j]), plain(rings[k]), kT) ||
          xg::ring_overlaps_ring(plain(rings[k]), plain(rings[j]), kT))
        return XGWKB_E_RINGS_OVERLAP;
      if (xg::lines_out_of_reach(plain(rings[j]), plain(rings[k]), kT)) continue;
      if (same_ring(rings[j], rings[k])) return XGWKB_E_RINGS_OVERLAP;
      if (touch(rings[j], rings[k])) link(j, k);
    }
  }
  return cycle ? XGWKB_E_INTEGRITY : XGWKB_OK;
}

Bytes multipolygon(const std::vector<Polygon>& members) {
  std::vector<Bytes> blobs;
  for (const Polygon& p : members) blobs.push_back(polygon(p));
  return multi(XGWKB_TYPE_MULTIPOLYGON, blobs);
}

// ---- shapes --------------------------------------------------------------------------------

double uniform(Rng& rng, double lo, double hi) { return std::uniform_real_distribution<double>(lo, hi)(rng); }
int between(Rng& rng, int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(rng); }

// Far from the origin, as projected data is.
constexpr double kX0 = 512345.678, kY0 = 4012345.678;

// A shell of 33 to 150 vertices (large enough for edge indexes), smooth or ragged, and up to
// five holes of 33 to 80 vertices; some holes are moved to touch the shell or another hole at
// a vertex or mid-edge, some repeat another, and some shells close only within the tolerance.
Polygon random_polygon(Rng& rng) {
  const bool smooth = rng() % 2;
  Polygon rings{star_ring(rng, {kX0, kY0}, smooth ? 97 : 60, 100, between(rng, 33, 150))};
  if (rng() % 6 == 0) rings[0].back().y += 0.3 * kT;  // closed within the tolerance only
  const int holes = between(rng, 0, 5);
  for (int h = 0; h < holes; ++h) {
    const double r = uniform(rng, 3, 20);
    _xgWKB_POINT c{kX0 + uniform(rng, -45, 45), kY0 + uniform(rng, -45, 45)};
    // Half the holes are placed to reach a vertex of the shell or of the hole before, which
    // their nearest vertex is then moved onto (or onto the middle of the edge after it).
    const bool reach = rng() % 2;
    const std::size_t target = rings.size() > 1 && rng() % 2 ? rings.size() - 1 : 0;
    const Ring& other = rings[target];
    const std::size_t v = rng() % (other.size() - 1);
    const _xgWKB_POINT at = rng() % 3 ? other[v] : _xgWKB_POINT{0.5 * (other[v].x + other[v + 1].x),
                                                                0.5 * (other[v].y + other[v + 1].y)};
    if (reach) {
      // Toward the middle of the shell, away from the middle of a hole.
      const _xgWKB_POINT from = target == 0 ? _xgWKB_POINT{kX0, kY0} : rings[target][0];
      const double dx = from.x - at.x, dy = from.y - at.y, d = std::hypot(dx, dy);
      const double s = (target == 0 ? r : -r - 25) / d;
      c = {at.x + s * dx, at.y + s * dy};
    }
    Ring hole = rng() % 8 == 0 && rings.size() > 1 ? rings.back()  // repeats one
                                                   : star_ring(rng, c, 0.7 * r, r, between(rng, 33, 80), true);
    if (reach) {
      std::size_t k = 0;
      for (std::size_t i = 1; i + 1 < hole.size(); ++i) {
        if (std::hypot(hole[i].x - at.x, hole[i].y - at.y) < std::hypot(hole[k].x - at.x, hole[k].y - at.y)) k = i;
      }
      hole[k] = at;
      if (k == 0) hole.back() = at;
      // Now and then along a whole edge of the shell.
      if (target == 0 && at.x == other[v].x && at.y == other[v].y && rng() % 3 == 0) {
        const std::size_t next = k == 0 ? hole.size() - 2 : k - 1;  // the hole runs clockwise
        hole[next] = other[v + 1];
        if (next == 0) hole.back() = hole[0];
      }
    }
    rings.push_back(hole);
  }
  return rings;
}

}  // namespace

TEST(ValidationPasses, PolygonsAgreeWithThePlainRules) {
  Rng rng(20261124);
  std::vector<int> seen(200, 0);
  for (int i = 0; i < 600; ++i) {
    const Polygon rings = random_polygon(rng);
    const int32_t expected = plain_polygon(rings);
    ASSERT_EQ(status_of(polygon(rings)), expected) << "case " << i;
    ++seen[-expected];
  }
  // Pairs of holes close to each other in a large shell: apart, touching, overlapping.
  for (int i = 0; i < 300; ++i) {
    const double r = uniform(rng, 5, 20), a = uniform(rng, 0, 2 * M_PI), d = 2 * r + uniform(rng, -4, 2);
    Polygon rings{square(kX0 - 100, kY0 - 100, 200), star_ring(rng, {kX0, kY0}, 0.9 * r, r, 60, true),
                  star_ring(rng, {kX0 + d * std::cos(a), kY0 + d * std::sin(a)}, 0.9 * r, r, 60, true)};
    if (i % 3 == 0) rings[2][between(rng, 1, 58)] = rings[1][between(rng, 0, 59)];
    const int32_t expected = plain_polygon(rings);
    ASSERT_EQ(status_of(polygon(rings)), expected) << "pair " << i;
    ++seen[-expected];
  }
  // Every verdict of the hole tests occurs.
  for (int32_t s : {XGWKB_OK, XGWKB_E_HOLE_OUTSIDE, XGWKB_E_RINGS_OVERLAP, XGWKB_E_INTEGRITY})
    EXPECT_GT(seen[-s], 10) << s;
}

TEST(ValidationPasses, ShortcutsKeepTheVerdicts) {
  // Many members or holes in a row; only the first and last overlap, or touch each other in a
  // chain, or enclose a piece of the interior.
  std::vector<Polygon> row;
  Polygon holes{square(0, 0, 200)};
  for (int k = 0; k < 60; ++k) {
    row.push_back({square(3.0 * k, 0, 2)});
    holes.push_back(square(1 + 3.0 * k, 10, 2));
  }
  std::vector<Polygon> far_pair = row, chain = row;
  far_pair.back() = {square(1, 1, 2)};
  for (int k = 0; k < 60; ++k) chain[k] = {square(2.0 * k, 2.0 * k, 2)};  // corners on corners
  Polygon far_holes = holes, hole_chain = holes;
  far_holes.back() = square(2, 11, 2);
  for (int k = 1; k <= 60; ++k) hole_chain[k] = square(1 + 2.0 * k, 10 + 2.0 * k, 2);
  // A smooth shell (indexed, holes clear of it) with a hole touching it at one vertex; and a
  // second hole touching the shell and the first: the three rings enclose a piece.
  Rng rng(7);
  const Ring shell = star_ring(rng, {0, 0}, 99, 100, 200);
  const _xgWKB_POINT s0 = shell[0], s10 = shell[10], b{s0.x - 20, s0.y + 5};
  const Ring touching{s0, {s0.x - 20, s0.y - 5}, b, s0};
  const Ring bridge{s10, {s10.x - 25, s10.y - 6}, b, s10};
  // Nearly straight runs far from the origin: a turn back within the tolerance, and beyond it.
  const double x = 4e6, y = -3e5;
  const struct { const char* what; Bytes blob; int32_t status; } cases[] = {
      {"members apart", multipolygon(row), XGWKB_OK},
      {"first and last member overlap", multipolygon(far_pair), XGWKB_E_RINGS_OVERLAP},
      {"members touching in a chain", multipolygon(chain), XGWKB_OK},
      {"holes apart", polygon(holes), XGWKB_OK},
      {"first and last hole overlap", polygon(far_holes), XGWKB_E_RINGS_OVERLAP},
      {"holes touching in a chain", polygon(hole_chain), XGWKB_OK},
      {"hole touching a smooth shell", polygon({shell, touching}), XGWKB_OK},
      {"two holes and the shell enclose a piece", polygon({shell, touching, bridge}), XGWKB_E_INTEGRITY},
      {"line turning back within the tolerance",
       linestring({{x, y}, {x + 10, y + 10}, {x + 5, y + 5 + 0.5 * kT}}), XGWKB_E_OVERLAPPING_POLYGONS},
      {"line turning back beyond the tolerance",
       linestring({{x, y}, {x + 10, y + 10}, {x + 5, y + 5 + 3 * kT}}), XGWKB_OK},
  };
  for (const auto& c : cases) EXPECT_EQ(status_of(c.blob), c.status) << c.what;
}

TEST(ValidationPasses, LongChainsOfTouchingHoles) {
  // 60000 holes corner to corner along the diagonal of the shell, tied to its corners by two
  // small triangles: with one the chain is fine, with both it closes a cycle through the shell.
  const int k = 60000;
  const double size = 2.0 * k + 2;
  Polygon rings{square(0, 0, size), {{0, 0}, {1, 1}, {0.5, 0.2}, {0, 0}}};
  for (int i = 0; i < k; ++i) rings.push_back(square(1 + 2.0 * i, 1 + 2.0 * i, 2));
  EXPECT_EQ(status_of(polygon(rings)), XGWKB_OK);
  rings.push_back({{size - 1, size - 1}, {size, size}, {size - 0.5, size - 0.2}, {size - 1, size - 1}});
  EXPECT_EQ(status_of(polygon(rings)), XGWKB_E_INTEGRITY);
}
