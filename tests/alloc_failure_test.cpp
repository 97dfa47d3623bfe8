// Every allocating export under a failing allocator: for k = 0, 1, 2, ... the k-th allocation of
// the call fails, until a run passes without a failure.  Each failed run must answer the
// out-of-memory status (or the export's documented fallback value), leave the out-pointer alone,
// leak nothing and let no exception escape.
//
// The program is linked with -Wl,--wrap=malloc and the like for calloc, realloc and free (see
// tests/CMakeLists.txt): the library's allocator calls from the static archive come here first.
// operator new and delete are replaced below.  Both count live blocks, so leaks show in every
// build, and ASan's leak checker sees the same blocks in the sanitizer build.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <new>
#include <string>

#include "core/boundary.h"
#include "support/blob_builder.h"

extern "C" {
void* __real_malloc(std::size_t size);
void* __real_calloc(std::size_t count, std::size_t size);
void* __real_realloc(void* p, std::size_t size);
void __real_free(void* p);
}

namespace {

// The failing allocator.  While armed, allocation number fail_at (0-based, counted from arming)
// fails; later ones succeed again.  Test-only state: the program runs single-threaded.
struct Allocator {
  bool armed = false;
  long next = 0;
  long fail_at = -1;
  bool failed = false;
  long live = 0;  // blocks allocated and not yet freed
};
Allocator g_alloc;

bool fail_now() {
  if (!g_alloc.armed || g_alloc.next++ != g_alloc.fail_at) return false;
  g_alloc.failed = true;
  return true;
}

void* counted_malloc(std::size_t size) {
  void* p = __real_malloc(size == 0 ? 1 : size);
  if (p != nullptr) ++g_alloc.live;
  return p;
}

void counted_free(void* p) {
  if (p == nullptr) return;
  --g_alloc.live;
  __real_free(p);
}

void* new_block(std::size_t size) {
  void* p = fail_now() ? nullptr : counted_malloc(size);
  if (p == nullptr) throw std::bad_alloc();
  return p;
}

}  // namespace

extern "C" {
void* __wrap_malloc(std::size_t size) { return fail_now() ? nullptr : counted_malloc(size); }
void __wrap_free(void* p) { counted_free(p); }
// The compiler may turn malloc plus memset into calloc.
void* __wrap_calloc(std::size_t count, std::size_t size) {
  if (fail_now()) return nullptr;
  void* p = __real_calloc(count == 0 ? 1 : count, size == 0 ? 1 : size);
  if (p != nullptr) ++g_alloc.live;
  return p;
}
void* __wrap_realloc(void* p, std::size_t size) {
  if (fail_now()) return nullptr;
  void* q = __real_realloc(p, size == 0 ? 1 : size);
  if (q != nullptr && p == nullptr) ++g_alloc.live;
  return q;
}
}

// The clipping engine (a shared library of its own) is left out of the failing: its own code does
// not survive running out of memory (it loses list nodes, and frees one twice), which nothing on
// our side of its interface can mend.  Our calls into it and everything around them still fail.
bool from_engine(void* return_address) {
  Dl_info info;
  return dladdr(return_address, &info) != 0 && info.dli_fname != nullptr &&
         std::strstr(info.dli_fname, "polyclipping") != nullptr;
}

void* operator new(std::size_t size) {
  if (from_engine(__builtin_return_address(0))) return counted_malloc(size);
  return new_block(size);
}
void* operator new[](std::size_t size) {
  if (from_engine(__builtin_return_address(0))) return counted_malloc(size);
  return new_block(size);
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return fail_now() ? nullptr : counted_malloc(size);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
  return fail_now() ? nullptr : counted_malloc(size);
}
void operator delete(void* p) noexcept { counted_free(p); }
void operator delete[](void* p) noexcept { counted_free(p); }
void operator delete(void* p, std::size_t) noexcept { counted_free(p); }
void operator delete[](void* p, std::size_t) noexcept { counted_free(p); }

namespace {

using namespace xgtest;

// What an export hands back through its out-pointer.
enum class Result { kBlob, kText, kNone };

// One allocating export: the call, its answer without failure, its answer when an allocation
// fails, and what it hands out.
struct Row {
  const char* name;
  std::function<int32_t(unsigned char** out)> call;
  int32_t ok = XGWKB_OK;
  int32_t oom = xg::kOutOfMemory;
  Result result = Result::kBlob;
};

struct Run {
  bool escaped = false;
  bool failed = false;  // an allocation was refused
  int32_t answer = 0;
  bool handed_out = false;
  Bytes bytes;      // what was handed out (then freed)
  long leaked = 0;  // blocks left allocated
};

Bytes result_bytes(Result kind, const unsigned char* p) {
  uint32_t size = 5;  // nil
  if (kind == Result::kText) {
    size = static_cast<uint32_t>(std::strlen(reinterpret_cast<const char*>(p)) + 1);
  } else if (xgWKB_shape_get_WKB_size(p, &size) != XGWKB_OK && p[1] == XGWKB_TYPE_ENVELOPE) {
    size = 37;
  }
  return Bytes(p, p + size);
}

// Runs the call with allocation fail_at refused (-1: none).
Run run(const Row& row, long fail_at) {
  static unsigned char sentinel_byte;
  unsigned char* out = &sentinel_byte;
  Run r;
  r.bytes.reserve(1 << 20);  // copying the result below must not allocate
  const long live = g_alloc.live;
  g_alloc = Allocator{true, 0, fail_at, false, live};
  try {
    r.answer = row.call(&out);
  } catch (...) {
    r.escaped = true;
  }
  g_alloc.armed = false;
  r.failed = g_alloc.failed;
  r.handed_out = out != &sentinel_byte;
  if (r.handed_out) {
    const Bytes got = result_bytes(row.result, out);
    r.bytes.assign(got.begin(), got.end());
    std::free(out);
  }
  r.leaked = g_alloc.live - live;
  return r;
}

// Walks k = 0, 1, 2, ... until a run passes without a refused allocation.  A refused allocation
// gives the out-of-memory answer with out untouched, or - where internal code falls back to a
// path without the allocation - exactly the answer and result of an undisturbed run.
void walk(const Row& row) {
  const Run clean = run(row, -1);
  ASSERT_FALSE(clean.escaped) << row.name;
  EXPECT_EQ(clean.answer, row.ok) << row.name;
  EXPECT_EQ(clean.handed_out, row.result != Result::kNone) << row.name;
  EXPECT_EQ(clean.leaked, 0) << row.name << ": the undisturbed call leaks";
  for (long k = 0;; ++k) {
    const Run r = run(row, k);
    ASSERT_FALSE(r.escaped) << row.name << ": an exception escaped when allocation " << k
                            << " failed";
    EXPECT_EQ(r.leaked, 0) << row.name << ": leaks when allocation " << k << " fails";
    if (!r.failed) {
      EXPECT_GT(k, 0) << row.name << ": the input does not make the call allocate";
      return;
    }
    const bool reported = r.answer == row.oom && !r.handed_out;
    const bool recovered =
        r.answer == clean.answer && r.handed_out == clean.handed_out && r.bytes == clean.bytes;
    EXPECT_TRUE(reported || recovered)
        << row.name << ", allocation " << k << " refused: answer " << r.answer
        << (r.handed_out ? ", out written" : ", out untouched");
    if (::testing::Test::HasFailure()) return;  // one report per export is enough
  }
}

// Inputs large enough that every internal buffer leaves its inline storage.
std::mt19937 g_rng(7);
const Ring kOuter = star_ring(g_rng, {0, 0}, 90, 100, 300);
const Ring kHole = star_ring(g_rng, {0, 0}, 20, 30, 150, true);
const Ring kNewRing = star_ring(g_rng, {50, 0}, 5, 10, 150, true);
const Ring kFarRing = star_ring(g_rng, {400, 0}, 90, 100, 300);
const Ring kShifted = star_ring(g_rng, {60, 0}, 90, 100, 300);
const Ring kLongLine = [] {
  Ring line;
  for (int i = 0; i < 300; ++i) line.push_back({i * 1.0, (i % 2) * 5.0});
  return line;
}();
const Ring kCrossLine = {{-10, -10}, {310, 20}};

const Bytes kPolygon = polygon({kOuter, kHole});
const Bytes kMultiPolygon = multi(XGWKB_TYPE_MULTIPOLYGON, {kPolygon, polygon({kFarRing})});
const Bytes kLine = linestring(kLongLine);
const Bytes kMultiLine = multiline({kLongLine, kCrossLine});
const Bytes kRings = multiline({kOuter, kHole});
const Bytes kNewPart = linestring(kNewRing);
const Bytes kSmall = polygon({kNewRing});
const Bytes kOverlapping = polygon({kShifted});
const Bytes kMultiPoint = [] {
  std::vector<Bytes> points;
  for (const _xgWKB_POINT& p : kOuter) points.push_back(point(p.x, p.y));
  return multi(XGWKB_TYPE_MULTIPOINT, points);
}();
const std::string kWkt = [] {
  std::string text = "polygon ((";
  char buf[64];
  for (const _xgWKB_POINT& p : kOuter) {
    std::snprintf(buf, sizeof buf, "%s%.6f %.6f", text.size() > 10 ? "," : "", p.x, p.y);
    text += buf;
  }
  return text + "))";
}();
const Ring kOuterAndHole = [] {
  Ring all = kOuter;
  all.insert(all.end(), kHole.begin(), kHole.end());
  return all;
}();
const int32_t kRingCounts[] = {static_cast<int32_t>(kOuter.size()),
                               static_cast<int32_t>(kHole.size())};
const int32_t kLineCounts[] = {static_cast<int32_t>(kLongLine.size()), 2};
const Ring kLinePoints = [] {
  Ring all = kLongLine;
  all.insert(all.end(), kCrossLine.begin(), kCrossLine.end());
  return all;
}();
// Inputs of buffer and clipping.
const Bytes kPoint = point(1, 2);
const Bytes kSmallSquare = polygon({square(0, 0, 10)});
const Bytes kCrossing = linestring({{-5, 5}, {15, 5}, {15, 8}, {5, 8}});
const Bytes kClipBox = [] {
  Bytes b = header(XGWKB_TYPE_ENVELOPE);
  for (double v : {-50.0, -50.0, 50.0, 50.0}) put_f64(b, v);
  return b;
}();
const unsigned char* const kCombined[] = {kPolygon.data(), kMultiPolygon.data()};
const _xgWKB_POINT kAt{1, 2}, kAxisA{0, 0}, kAxisB{1, 1};
const _xgWKB_BOX kBox{0, 0, 10, 10};

char** as_c(unsigned char** p) { return reinterpret_cast<char**>(p); }

// A predicate allocates only internally; an allocation failure makes it answer 0.
Row predicate(const char* name, int32_t (*pred)(const unsigned char*, const unsigned char*, double),
              const Bytes& a, const Bytes& b, int32_t ok) {
  return Row{name, [pred, &a, &b](unsigned char**) { return pred(a.data(), b.data(), 1e-9); }, ok,
             0, Result::kNone};
}

}  // namespace

TEST(AllocFailure, EveryAllocatingExportAnswersOutOfMemoryAndLeaksNothing) {
  const unsigned char *poly = kPolygon.data(), *mpoly = kMultiPolygon.data(), *line = kLine.data(),
                      *mline = kMultiLine.data(), *part = kNewPart.data();
  const _xgWKB_POINT *ring = kNewRing.data(), *pts = kLinePoints.data();
  const int32_t n_ring = int32_t(kNewRing.size()), n_line = int32_t(kLongLine.size());
  const Row rows[] = {
      {"make_nil", [&](auto o) { return xgWKB_shape_make_nil(1, o); }},
      {"duplicate", [&](auto o) { return xgWKB_shape_duplicate(poly, o); }},
      {"generate_point", [&](auto o) { return xgWKB_shape_generate_point(&kAt, o); }},
      {"generate_multipoint",
       [&](auto o) { return xgWKB_shape_generate_multipoint(n_line, pts, o); }},
      {"generate_line", [&](auto o) { return xgWKB_shape_generate_line(n_line, pts, o); }},
      {"generate_multiline",
       [&](auto o) { return xgWKB_shape_generate_multiline(0, 2, kLineCounts, pts, o); }},
      {"generate_simple_line",
       [&](auto o) { return xgWKB_shape_generate_simple_line(0, 2, kLineCounts, pts, o); }, 0, 0},
      {"generate_polygon",
       [&](auto o) {
         return xgWKB_shape_generate_polygon(1000, 2, kRingCounts, kOuterAndHole.data(), o);
       }},
      {"generate_envelope", [&](auto o) { return xgWKB_shape_generate_envelope(&kBox, o); }},
      {"generate_polygon_from_rectangle",
       [&](auto o) { return xgWKB_shape_generate_polygon_from_rectangle(&kBox, o); }},
      {"generate_polygon_from_circle",
       [&](auto o) { return xgWKB_shape_generate_polygon_from_circle(&kAt, 5, 100, o); }},
      {"generate_from_ellipse",
       [&](auto o) { return xgWKB_shape_generate_from_ellipse(&kAt, 5, 3, 0, 100, o); }},
      {"generate_from_part", [&](auto o) { return xgWKB_shape_generate_from_part(mpoly, 1, o); }},
      {"combine", [&](auto o) { return xgWKB_shape_combine(kCombined, 2, o); }},
      {"as_point", [&](auto o) { return xgWKB_shape_as_point(poly, o); }},
      {"as_line", [&](auto o) { return xgWKB_shape_as_line(poly, o); }},
      {"as_simple_line", [&](auto o) { return xgWKB_shape_as_simple_line(mline, o); }, 0, 0},
      {"as_polygon", [&](auto o) { return xgWKB_shape_as_polygon(kRings.data(), o); }},
      {"get_boundary", [&](auto o) { return xgWKB_shape_get_boundary(poly, o); }},
      {"get_error_description",
       [&](auto o) { return int32_t(xgWKB_shape_get_error_description(-1, as_c(o))); }, 1, 0,
       Result::kText},
      {"get_error_description_utf8",
       [&](auto o) { return int32_t(xgWKB_shape_get_error_description_utf8(-1, as_c(o))); }, 1, 0,
       Result::kText},
      {"generate_to_WKT", [&](auto o) { return xgWKB_shape_generate_to_WKT(poly, as_c(o)); }, 0,
       xg::kOutOfMemory, Result::kText},
      {"generate_from_WKT", [&](auto o) { return xgWKB_shape_generate_from_WKT(kWkt.c_str(), o); }},
      {"mirror", [&](auto o) { return xgWKB_shape_mirror(poly, &kAxisA, &kAxisB, o, 1e-9); }},
      {"add_part polygon", [&](auto o) { return xgWKB_shape_add_part(poly, part, o); }},
      {"add_part multipolygon",
       [&](auto o) { return xgWKB_shape_add_part(mpoly, kSmall.data(), o); }},
      {"insert_part", [&](auto o) { return xgWKB_shape_insert_part(poly, part, 2, o); }},
      {"replace_part", [&](auto o) { return xgWKB_shape_replace_part(poly, part, 2, o); }},
      {"delete_part", [&](auto o) { return xgWKB_shape_delete_part(poly, 2, o); }},
      {"add_island", [&](auto o) { return xgWKB_shape_add_island(poly, ring, n_ring, o); }},
      {"delete_island", [&](auto o) { return xgWKB_shape_delete_island(poly, &kHole[3], o); }},
      {"add_multipolygon_ring",
       [&](auto o) { return xgWKB_shape_add_multipolygon_ring(mpoly, 1, 2, ring, n_ring, o); }},
      {"replace_multipolygon_ring",
       [&](auto o) { return xgWKB_shape_replace_multipolygon_ring(mpoly, 1, 2, ring, n_ring, o); }},
      {"delete_multipolygon_ring",
       [&](auto o) { return xgWKB_shape_delete_multipolygon_ring(mpoly, 1, 2, o); }},
      {"add_lineString_point",
       [&](auto o) { return xgWKB_shape_add_lineString_point(line, 2, &kAt, o); }},
      {"delete_lineString_point",
       [&](auto o) { return xgWKB_shape_delete_lineString_point(line, 2, o); }},
      {"add_MultiLineString_point",
       [&](auto o) { return xgWKB_shape_add_MultiLineString_point(mline, 1, 2, &kAt, o); }},
      {"delete_MultiLineString_point",
       [&](auto o) { return xgWKB_shape_delete_MultiLineString_point(mline, 1, 2, o); }},
      {"add_polygon_point",
       [&](auto o) { return xgWKB_shape_add_polygon_point(poly, 2, 2, &kAt, o); }},
      {"delete_polygon_point",
       [&](auto o) { return xgWKB_shape_delete_polygon_point(poly, 2, 2, o); }},
      {"add_multipolygon_point",
       [&](auto o) { return xgWKB_shape_add_multipolygon_point(mpoly, 1, 2, 2, &kAt, o); }},
      {"delete_multipolygon_point",
       [&](auto o) { return xgWKB_shape_delete_multipolygon_point(mpoly, 1, 2, 2, o); }},
      // The validity flag and status word folded into one answer: 0 valid, below -1000 refused.
      {"check_WKBdata",
       [&](auto) {
         int32_t status = 0;
         return xgWKB_shape_check_WKBdata(poly, &status) == 1 ? status : status - 1000;
       },
       0, xg::kOutOfMemory - 1000, Result::kNone},
      {"generate_buffer point", [&](auto o) { return xgWKB_shape_generate_buffer(kPoint.data(), 2, o, 0); }},
      {"generate_buffer line", [&](auto o) { return xgWKB_shape_generate_buffer(kCrossing.data(), 1, o, 0); }},
      {"generate_buffer polygon", [&](auto o) { return xgWKB_shape_generate_buffer(kSmallSquare.data(), -1, o, 0); }},
      {"clip polygon", [&](auto o) { return xgWKB_shape_clip(poly, kClipBox.data(), o, 1e-9); }},
      {"clip line", [&](auto o) { return xgWKB_shape_clip(kLine.data(), kClipBox.data(), o, 1e-9); }},
      {"clip multipoint", [&](auto o) { return xgWKB_shape_clip(kMultiPoint.data(), kClipBox.data(), o, 1e-9); }},
      // Both pieces handed out as one answer: 0 with *o the inside pieces (the outside freed),
      // the out-of-memory status when the call failed with the pieces untouched.
      {"ClipLinestringPolygon",
       [&](auto o) {
         _xgWKB_LINE_PIECES p{nullptr, nullptr};
         if (xgWKB_shape_ClipLinestringPolygon(kCrossing.data(), kSmallSquare.data(), &p, 1e-9) != 1) {
           return p.inside == nullptr && p.outside == nullptr ? xg::kOutOfMemory : int32_t{-999};
         }
         std::free(p.outside);
         *o = p.inside;
         return int32_t{XGWKB_OK};
       }},
      predicate("is_disjoint", xgWKB_shape_is_disjoint, kPolygon, kOverlapping, 0),
      predicate("is_intersecting", xgWKB_shape_is_intersecting, kPolygon, kOverlapping, 1),
      predicate("is_within", xgWKB_shape_is_within, kSmall, kPolygon, 1),
      predicate("is_containing", xgWKB_shape_is_containing, kPolygon, kSmall, 1),
      predicate("is_crossing", xgWKB_shape_is_crossing, kMultiLine, kPolygon, 1),
      predicate("is_overlapping", xgWKB_shape_is_overlapping, kPolygon, kOverlapping, 1),
      predicate("is_touching", xgWKB_shape_is_touching, kPolygon, kMultiPoint, 1),
      {"intersection", [&](auto o) { return xgWKB_shape_intersection(poly, kOverlapping.data(), o, 1e-9); }},
      {"union", [&](auto o) { return xgWKB_shape_union(mpoly, kOverlapping.data(), o, 1e-9); }},
      {"difference", [&](auto o) { return xgWKB_shape_difference(poly, kOverlapping.data(), o, 1e-9); }},
      {"symmetric_difference",
       [&](auto o) { return xgWKB_shape_symmetric_difference(poly, kOverlapping.data(), o, 1e-9); }},
      {"line intersection", [&](auto o) { return xgWKB_shape_intersection(mline, poly, o, 1e-9); }},
      // The two other outputs are released here; the walk watches the first.
      {"overlay",
       [&](auto o) {
         unsigned char *only_b = nullptr, *common = nullptr;
         const int32_t status = xgWKB_shape_overlay(poly, kOverlapping.data(), o, &only_b, &common, 1e-9);
         xgWKB_shape_free(only_b);
         xgWKB_shape_free(common);
         return status;
       }},
      {"generate_convex_hull", [&](auto o) { return xgWKB_shape_generate_convex_hull(mline, o, 1e-9); }},
      {"merge lines", [&](auto o) { return xgWKB_shape_merge(mline, line, o, 1e-9); }},
      {"merge polygons", [&](auto o) { return xgWKB_shape_merge(poly, kOverlapping.data(), o, 1e-9); }},
      {"calculate_distance",
       [&](auto) {
         double d = 0;
         return xgWKB_shape_calculate_distance(kMultiPoint.data(), mline, &d, 1e-9);
       },
       0, xg::kOutOfMemory, Result::kNone},
      {"anno_create",
       [&](auto o) { return xgWKB_anno_create(&kAt, &kAxisB, &kBox, 0.5, "label", nullptr, o); }},
      {"from_wkb",
       [&](auto o) {
         unsigned char* wkb = nullptr;
         uint32_t size = 0;
         g_alloc.armed = false;  // the input is made outside the walk
         const int32_t made = xgWKB_shape_to_wkb(poly, 1, &wkb, &size);
         g_alloc.armed = true;
         const int32_t status = made == 0 ? xgWKB_shape_from_wkb(wkb, size, o) : made;
         g_alloc.armed = false;
         std::free(wkb);
         g_alloc.armed = true;
         return status;
       }},
      {"to_ogc_wkt", [&](auto o) { return xgWKB_shape_to_ogc_wkt(mpoly, -1, as_c(o)); }, 0, xg::kOutOfMemory,
       Result::kText},
      {"from_ogc_wkt", [&](auto o) { return xgWKB_shape_from_ogc_wkt("POLYGON ((0 0, 4 0, 4 4, 0 0))", 0, o); }},
  };
  for (const Row& row : rows) walk(row);
}
