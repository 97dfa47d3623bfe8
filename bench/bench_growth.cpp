// bench_growth.cpp - how the relation, validity and noding calls grow with the input.
//
// A plain program (not a Google Benchmark table): for every case and every size it times the
// library, GEOS and, for the relations, GEOS prepared with the preparation counted in the time.
// Each measurement runs in a forked child so that a call that takes too long can be stopped (it
// is reported as "over 10 s") and so that the child's peak memory is its own: the child reads
// its high-water mark before and after the timed calls, and the difference divided by the input
// vertex count is the "B/vertex" column (bytes the call needed at its peak, per vertex).
// Once a case takes more than a second at one size, the next size (ten times larger) would take
// over 10 s at anything but sublinear growth, and is reported so without running it.
//
// Usage: bench_growth [max_size]   (default 1000000; sizes are 1k, 10k, 100k, 1M up to it)
// Times are per call: the mean of as many calls as fit in about 0.2 s (at least one).  The machine
// is shared, so absolute times are noisy; ratios between columns of one run are the figures to
// read.
#include <geos_c.h>
#include <malloc.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include "random_shapes.h"
#include "support/geos_oracle.h"
#include "xggeokit.h"

namespace {

using xgbench::Bytes;
using xgbench::kCx;
using xgbench::kCy;
using xgbench::kRadius;
using xgbench::Ring;

constexpr double kTol = 1e-6;
constexpr double kCapSeconds = 10.0;

long high_water_kb() {
  FILE* f = std::fopen("/proc/self/status", "r");
  if (!f) return 0;
  char line[256];
  long kb = 0;
  while (std::fgets(line, sizeof line, f)) {
    if (std::strncmp(line, "VmHWM:", 6) == 0) kb = std::atol(line + 6);
  }
  std::fclose(f);
  return kb;
}

struct Result {
  double seconds = -1;  // per call; -1 when stopped at the cap, -2 when not applicable
  double bytes_per_vertex = 0;
  int answer = -1;
};

// Times f (returning the answer) in a child process, stopping it at the cap.
Result measure(const std::function<int()>& f, std::size_t vertices) {
  int fds[2];
  if (pipe(fds) != 0) return {};
  const pid_t pid = fork();
  if (pid == 0) {
    close(fds[0]);
    // Free heap pages go back to the system and the high-water mark restarts from the memory in
    // use, so that the call's peak is not hidden in pages an earlier, larger case left resident.
    malloc_trim(0);
    if (FILE* f = std::fopen("/proc/self/clear_refs", "w")) {
      std::fputs("5", f);
      std::fclose(f);
    }
    const long before = high_water_kb();
    int answer = 0;
    int calls = 0;
    const auto start = std::chrono::steady_clock::now();
    double elapsed = 0;
    do {
      answer = f();
      ++calls;
      elapsed = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    } while (elapsed < 0.2);
    Result r;
    r.seconds = elapsed / calls;
    r.bytes_per_vertex = 1024.0 * static_cast<double>(high_water_kb() - before) /
                         static_cast<double>(vertices);
    r.answer = answer;
    if (write(fds[1], &r, sizeof r) != static_cast<ssize_t>(sizeof r)) _exit(1);
    _exit(0);
  }
  close(fds[1]);
  const auto start = std::chrono::steady_clock::now();
  Result r;
  for (;;) {
    int status = 0;
    if (waitpid(pid, &status, WNOHANG) == pid) {
      if (read(fds[0], &r, sizeof r) != static_cast<ssize_t>(sizeof r)) r = Result{};
      break;
    }
    if (std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count() >
        kCapSeconds) {
      kill(pid, SIGKILL);
      waitpid(pid, &status, 0);
      r = Result{};
      break;
    }
    usleep(2000);
  }
  close(fds[0]);
  return r;
}

// ---- inputs ------------------------------------------------------------------------------

Ring grid_ring(std::size_t n, uint64_t kind) {
  auto rng = xgbench::seeded(kind, n);
  std::uniform_int_distribution<int> cell(0, 1000);
  Ring ring;
  for (std::size_t i = 0; i < n; ++i) {
    ring.push_back({kCx + cell(rng), kCy + cell(rng)});
  }
  ring.push_back(ring.front());
  return ring;
}

Ring copies_ring(std::size_t n) { return Ring(n < 4 ? 4 : n, _xgWKB_POINT{kCx, kCy}); }

Ring smooth_ring(uint64_t kind, double cx, double cy, double r, std::size_t n) {
  auto rng = xgbench::seeded(kind, n);
  const double rmin = r * (1 - 2 * M_PI / static_cast<double>(n));
  return xgbench::star_ring(rng, cx, cy, rmin, r, n);
}

// A smooth shell with four smooth holes of n/8 vertices each (half the vertices in the shell).
Bytes smooth_with_holes(std::size_t n) {
  std::vector<Ring> rings{smooth_ring(10, kCx, kCy, kRadius, n / 2)};
  const double d = 0.5 * kRadius;
  const double offsets[4][2] = {{d, 0}, {0, d}, {-d, 0}, {0, -d}};
  uint64_t kind = 11;
  for (const auto& o : offsets) {
    rings.push_back(smooth_ring(kind++, kCx + o[0], kCy + o[1], 0.3 * kRadius, n / 8));
  }
  // Holes run clockwise.
  for (std::size_t k = 1; k < rings.size(); ++k) rings[k] = Ring(rings[k].rbegin(), rings[k].rend());
  return xgtest::polygon(rings);
}

// ---- cases -------------------------------------------------------------------------------

enum class Kind { kIntersects, kDisjoint, kTouches, kWithin, kValid, kNode };

struct Inputs {
  Bytes a, b;
};

struct Case {
  const char* name;
  Kind kind;
  std::function<Inputs(std::size_t)> make;
};

Bytes boundary_of(const Ring& r) { return xgtest::linestring(r); }

std::vector<Case> cases() {
  return {
      {"intersecting(self-crossing grid ring, its boundary)", Kind::kIntersects,
       [](std::size_t n) {
         const Ring r = grid_ring(n, 20);
         return Inputs{xgtest::polygon({r}), boundary_of(r)};
       }},
      {"intersecting(ring of n copies of a point, its boundary)", Kind::kIntersects,
       [](std::size_t n) {
         const Ring r = copies_ring(n);
         return Inputs{xgtest::polygon({r}), boundary_of(r)};
       }},
      {"as_simple_line(2 members of n copies of a point)", Kind::kNode,
       [](std::size_t n) {
         const Ring r = copies_ring(n / 2);
         return Inputs{xgtest::multiline({r, r}), {}};
       }},
      {"disjoint(spiky stars apart, boxes overlap)", Kind::kDisjoint,
       [](std::size_t n) {
         auto rng = xgbench::seeded(2, n);
         Inputs in;
         in.a = xgbench::star_polygon(rng, kCx, kCy, 0.8 * kRadius, kRadius, n);
         in.b = xgbench::star_polygon(rng, kCx + 1.45 * kRadius, kCy + 1.45 * kRadius,
                                      0.8 * kRadius, kRadius, n);
         return in;
       }},
      {"touching(overlapping spiky stars)", Kind::kTouches,
       [](std::size_t n) {
         auto rng = xgbench::seeded(1, n);
         Inputs in;
         in.a = xgbench::star_polygon(rng, kCx, kCy, 0.8 * kRadius, kRadius, n);
         in.b = xgbench::star_polygon(rng, kCx + 0.8 * kRadius, kCy + 0.3 * kRadius,
                                      0.8 * kRadius, kRadius, n);
         return in;
       }},
      {"validity(spiky star shell)", Kind::kValid,
       [](std::size_t n) {
         auto rng = xgbench::seeded(5, n);
         return Inputs{xgbench::star_polygon(rng, kCx, kCy, 0.8 * kRadius, kRadius, n), {}};
       }},
      {"within(P, copy of P), t=1e-6", Kind::kWithin,
       [](std::size_t n) {
         auto rng = xgbench::seeded(6, n);
         Bytes p = xgbench::star_polygon(rng, kCx, kCy, 0.8 * kRadius, kRadius, n);
         return Inputs{p, p};
       }},
      {"validity(smooth shell, 4 holes)", Kind::kValid,
       [](std::size_t n) { return Inputs{smooth_with_holes(n), {}}; }},
      {"within(boxes apart)", Kind::kWithin,
       [](std::size_t n) {
         auto rng = xgbench::seeded(7, n);
         Inputs in;
         in.a = xgbench::star_polygon(rng, kCx, kCy, 0.8 * kRadius, kRadius, n);
         in.b = xgbench::star_polygon(rng, kCx + 3 * kRadius, kCy, 0.8 * kRadius, kRadius, n);
         return in;
       }},
  };
}

int ours(Kind k, const Inputs& in) {
  const unsigned char* a = in.a.data();
  const unsigned char* b = in.b.data();
  switch (k) {
    case Kind::kIntersects: return xgWKB_shape_is_intersecting(a, b, kTol);
    case Kind::kDisjoint: return xgWKB_shape_is_disjoint(a, b, kTol);
    case Kind::kTouches: return xgWKB_shape_is_touching(a, b, kTol);
    case Kind::kWithin: return xgWKB_shape_is_within(a, b, kTol);
    case Kind::kValid: {
      int32_t status = 0;
      return static_cast<int>(xgWKB_shape_check_WKBdata(a, &status));
    }
    case Kind::kNode: {
      unsigned char* out = nullptr;
      xgWKB_shape_as_simple_line(a, &out);
      const int parts = out ? static_cast<int>(out[5] | out[6] << 8 | out[7] << 16) : -1;
      std::free(out);
      return parts;
    }
  }
  return -1;
}

int geos_plain(Kind k, GEOSContextHandle_t ctx, const GEOSGeometry* a, const GEOSGeometry* b) {
  switch (k) {
    case Kind::kIntersects: return GEOSIntersects_r(ctx, a, b);
    case Kind::kDisjoint: return GEOSDisjoint_r(ctx, a, b);
    case Kind::kTouches: return GEOSTouches_r(ctx, a, b);
    case Kind::kWithin: return GEOSWithin_r(ctx, a, b);
    case Kind::kValid: return GEOSisValid_r(ctx, a);
    case Kind::kNode: {
      GEOSGeometry* g = GEOSNode_r(ctx, a);
      const int parts = g ? GEOSGetNumGeometries_r(ctx, g) : -1;
      if (g) GEOSGeom_destroy_r(ctx, g);
      return parts;
    }
  }
  return -1;
}

// Prepared on the second operand (the first for within, which asks b.contains(a)).
int geos_prepared(Kind k, GEOSContextHandle_t ctx, const GEOSGeometry* a, const GEOSGeometry* b) {
  const GEOSPreparedGeometry* p = GEOSPrepare_r(ctx, b);
  int r = -1;
  switch (k) {
    case Kind::kIntersects: r = GEOSPreparedIntersects_r(ctx, p, a); break;
    case Kind::kDisjoint: r = GEOSPreparedDisjoint_r(ctx, p, a); break;
    case Kind::kTouches: r = GEOSPreparedTouches_r(ctx, p, a); break;
    case Kind::kWithin: r = GEOSPreparedContains_r(ctx, p, a); break;
    default: break;
  }
  GEOSPreparedGeom_destroy_r(ctx, p);
  return r;
}

std::string cell(const Result& r) {
  char text[64];
  if (r.seconds == -2) return "-";
  if (r.seconds < 0) return "over 10 s";
  if (r.seconds < 1e-3) {
    std::snprintf(text, sizeof text, "%.1f us [%d] %.0fB", r.seconds * 1e6, r.answer,
                  r.bytes_per_vertex);
  } else {
    std::snprintf(text, sizeof text, "%.2f ms [%d] %.0fB", r.seconds * 1e3, r.answer,
                  r.bytes_per_vertex);
  }
  return text;
}

}  // namespace

int main(int argc, char** argv) {
  const std::size_t max_size = argc > 1 ? std::strtoul(argv[1], nullptr, 10) : 1000000;
  const char* only = argc > 2 ? argv[2] : nullptr;  // a substring of the case names to run
  xgtest::GeosOracle oracle;
  GEOSContextHandle_t ctx = oracle.handle();
  std::printf("per call: time [answer] peak bytes per input vertex; ours | GEOS | GEOS prepared\n");
  for (const Case& c : cases()) {
    if (only && std::strstr(c.name, only) == nullptr) continue;
    std::printf("\n%s\n", c.name);
    double last[3] = {0, 0, 0};
    double prev[3] = {-1, -1, -1};
    for (std::size_t n = 1000; n <= max_size; n *= 10) {
      const Inputs in = c.make(n);
      GEOSGeometry* ga = oracle.to_geos(in.a.data());
      GEOSGeometry* gb = in.b.empty() ? nullptr : oracle.to_geos(in.b.data());
      const std::size_t vertices = xgbench::vertex_count(in.a) +
                                   (in.b.empty() ? 0 : xgbench::vertex_count(in.b));
      Result r[3];
      const bool prepared_ok = c.kind != Kind::kValid && c.kind != Kind::kNode;
      for (int i = 0; i < 3; ++i) {
        if (i == 2 && !prepared_ok) {
          r[i].seconds = -2;
          continue;
        }
        if (last[i] < 0 || last[i] > 1.0) continue;  // stays "over 10 s"
        if (i == 0) r[i] = measure([&] { return ours(c.kind, in); }, vertices);
        if (i == 1) r[i] = measure([&] { return geos_plain(c.kind, ctx, ga, gb); }, vertices);
        if (i == 2) r[i] = measure([&] { return geos_prepared(c.kind, ctx, ga, gb); }, vertices);
      }
      std::printf("  %8zu  %-26s | %-26s | %-26s", n, cell(r[0]).c_str(), cell(r[1]).c_str(),
                  cell(r[2]).c_str());
      if (r[0].seconds > 0 && r[2].seconds > 0)
        std::printf("  ours/prep %.2f", r[0].seconds / r[2].seconds);
      else if (r[0].seconds > 0 && r[1].seconds > 0)
        std::printf("  ours/geos %.2f", r[0].seconds / r[1].seconds);
      for (int i = 0; i < 3; ++i) {
        if (n == max_size && prev[i] > 0 && r[i].seconds > 0)
          std::printf("  exp%d %.2f", i, std::log10(r[i].seconds / prev[i]));
        prev[i] = r[i].seconds;
        last[i] = r[i].seconds;
      }
      std::printf("\n");
      std::fflush(stdout);
      oracle.destroy(ga);
      if (gb) oracle.destroy(gb);
    }
  }
  return 0;
}
