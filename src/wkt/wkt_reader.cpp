// wkt_reader.cpp - the WKT reader and its export.
#include "wkt/wkt_reader.h"

#include <algorithm>
#include <cassert>
#include <cstdlib>
#include <cstring>
#include <new>
#include <vector>

#include "core/boundary.h"
#include "wkt/number_format.h"
#include "wkt/wkt_keywords.h"

namespace xg {
namespace {

// What a text holds, gathered before the blob is sized: all points in order, the number of
// points of each line or ring, and the number of rings of each polygon; when the text does not
// follow the dialect, the character where reading stopped.
struct Gathered {
  std::vector<_xgWKB_POINT> points;
  std::vector<uint32_t> run_points;
  std::vector<uint32_t> polygon_rings;
  const char* stop = nullptr;

  bool fail(const char* at) {
    stop = at;
    return false;
  }
};

// Reads the pair "x y" at p and moves p past its terminating "," or ")", which is returned;
// returns 0 (p unchanged, *fault at the offending character) when the pair starts with a blank
// or the text ends inside it.
char read_pair(const char*& p, _xgWKB_POINT& pt, const char** fault) {
  const char* const start = p;
  *fault = start;
  if (*start == ' ') return 0;
  const char* blank = start;
  while (*blank != '\0' && *blank != ' ') ++blank;
  *fault = blank;
  if (*blank == '\0') return 0;
  const char* stop = blank;
  while (*stop != '\0' && *stop != ',' && *stop != ')') ++stop;
  *fault = stop;
  if (*stop == '\0') return 0;
  pt.x = parse_number_field(start, blank);
  pt.y = parse_number_field(blank, stop);  // the blank is part of y's field and skipped by strtod
  p = stop + 1;
  return *stop;
}

// The first character after p that fits none of the texts that may follow a part: p plus the
// longest prefix any of them shares with the text (",(" is always allowed; the end of the text
// is expected after a complete `end`).
const char* first_mismatch(const char* p, const char* other, const char* end) {
  std::size_t longest = 0;
  for (const char* sep : {",(", other, end}) {
    std::size_t k = 0;
    while (sep[k] != '\0' && p[k] == sep[k]) ++k;
    longest = std::max(longest, k);
  }
  return p + longest;
}

// A sequence of pairs closed by ")" at the end of the text (point, linestring, multipoint).
bool gather_flat(const char* p, Gathered& g) {
  for (;;) {
    _xgWKB_POINT pt;
    const char end = read_pair(p, pt, &g.stop);
    if (end == 0) return false;
    g.points.push_back(pt);
    if (end == ')') return *p == '\0' || g.fail(p);
  }
}

// Runs separated by "),(" and closed by "))" at the end of the text (polygon rings, lines of a
// multilinestring); with polygons, polygons are separated by ")),((" and the whole is closed by
// ")))" instead.
bool gather_runs(const char* p, bool polygons, Gathered& g) {
  uint32_t n = 0;
  uint32_t rings = 0;
  for (;;) {
    _xgWKB_POINT pt;
    const char end = read_pair(p, pt, &g.stop);
    if (end == 0) return false;
    g.points.push_back(pt);
    ++n;
    if (end == ',') continue;
    g.run_points.push_back(n);
    n = 0;
    ++rings;
    if (p[0] == ',' && p[1] == '(') {
      p += 2;
    } else if (!polygons) {
      return (p[0] == ')' && p[1] == '\0') || g.fail(first_mismatch(p, ",(", ")"));
    } else if (p[0] == ')' && p[1] == ',' && p[2] == '(' && p[3] == '(') {
      g.polygon_rings.push_back(rings);
      rings = 0;
      p += 4;
    } else if (p[0] == ')' && p[1] == ')' && p[2] == '\0') {
      g.polygon_rings.push_back(rings);
      return true;
    } else {
      return g.fail(first_mismatch(p, "),((", "))"));
    }
  }
}

// Further "(" after the first one, by type.
int extra_parens(uint32_t type) {
  switch (type) {
    case XGWKB_TYPE_POLYGON:
    case XGWKB_TYPE_MULTILINESTRING:
      return 1;
    case XGWKB_TYPE_MULTIPOLYGON:
      return 2;
    default:
      return 0;
  }
}

bool gather(const char* text, uint32_t type, Gathered& g) {
  const char* p = skip_opening_parens(text, extra_parens(type));
  if (p == nullptr) {
    // Stopped at the end of the text (no "(") or where the run of parentheses falls short.
    const char* q = std::strchr(text, '(');
    if (q == nullptr) return g.fail(text + std::strlen(text));
    while (*++q == '(') {
    }
    return g.fail(q);
  }
  switch (type) {
    case XGWKB_TYPE_POLYGON:
    case XGWKB_TYPE_MULTILINESTRING:
      return gather_runs(p, false, g);
    case XGWKB_TYPE_MULTIPOLYGON:
      return gather_runs(p, true, g);
    default:
      return gather_flat(p, g);
  }
}

// Writes the points of each run, each run preceded by a line header when line_headers is set.
const _xgWKB_POINT* write_runs(BlobWriter& w, const _xgWKB_POINT* pts, const uint32_t* runs,
                               std::size_t count, bool line_headers) {
  for (std::size_t i = 0; i < count; ++i) {
    if (line_headers) w.header(XGWKB_TYPE_LINESTRING);
    w.u32(runs[i]).points(pts, runs[i]);
    pts += runs[i];
  }
  return pts;
}

// Allocates and fills the blob of the gathered content; nullptr when out of memory.
byte* build_blob(uint32_t type, const Gathered& g) {
  const std::size_t points = g.points.size();
  const std::size_t runs = g.run_points.size();
  const std::size_t polygons = g.polygon_rings.size();
  if (!is_geometry_type(type)) return nullptr;
  const std::size_t filled = static_cast<std::size_t>(geometry_size_for(type, points, runs, polygons));
  // Intended: a linestring gets 21 bytes per point, as a multipoint would; only 16 per point
  // are filled and the rest is zeroed.
  const std::size_t size = type == XGWKB_TYPE_LINESTRING ? kPointBlobSize * points + kCountedHeaderSize : filled;
  byte* blob = blob_alloc(size);
  if (blob == nullptr) return nullptr;
  BlobWriter w(blob);
  w.header(type);
  const _xgWKB_POINT* pts = g.points.data();
  switch (type) {
    case XGWKB_TYPE_POINT:
      w.point(g.points.back());  // the last pair read, should the text hold several
      break;
    case XGWKB_TYPE_LINESTRING:
      w.u32(static_cast<uint32_t>(points)).points(pts, points);
      break;
    case XGWKB_TYPE_MULTIPOINT:
      w.u32(static_cast<uint32_t>(points));
      for (std::size_t i = 0; i < points; ++i) w.point_blob(pts[i]);
      break;
    case XGWKB_TYPE_MULTILINESTRING:
      w.u32(static_cast<uint32_t>(runs));
      write_runs(w, pts, g.run_points.data(), runs, true);
      break;
    case XGWKB_TYPE_POLYGON:
      w.u32(static_cast<uint32_t>(runs));
      write_runs(w, pts, g.run_points.data(), runs, false);
      break;
    case XGWKB_TYPE_MULTIPOLYGON: {
      w.u32(static_cast<uint32_t>(polygons));
      const uint32_t* ring_points = g.run_points.data();
      for (uint32_t rings : g.polygon_rings) {
        w.header(XGWKB_TYPE_POLYGON).u32(rings);
        pts = write_runs(w, pts, ring_points, rings, false);
        ring_points += rings;
      }
      break;
    }
  }
  // The sizes above follow from the same counts that drove the writes; zero the slack.
  const std::size_t written = static_cast<std::size_t>(w.position() - blob);
  assert(written == filled && filled <= size);
  (void)filled;
  std::memset(blob + written, 0, size - written);
  return blob;
}

}  // namespace

byte* read_wkt_geometry(const char* text, uint32_t type, std::size_t* stop) {
  if (!is_geometry_type(type)) return nullptr;
  Gathered g;
  if (!gather(text, type, g) || g.points.empty()) {
    if (stop != nullptr) *stop = static_cast<std::size_t>((g.stop != nullptr ? g.stop : text) - text);
    return nullptr;
  }
  // Counts are stored as u32.
  if (g.points.size() > UINT32_MAX) {
    if (stop != nullptr) *stop = std::strlen(text);
    return nullptr;
  }
  byte* blob = build_blob(type, g);
  // Running out of memory is no flaw of the text: it is reported as such, not as a text without
  // a shape.
  if (blob == nullptr) throw std::bad_alloc();
  return blob;
}

}  // namespace xg

using namespace xg;

namespace {

// The reading both exports share: the nil shape for the empty texts, -27 for a keyword that
// names no geometry type, -204 with *stop set when the text does not follow the dialect.
int32_t read_dialect(const char* wkt, unsigned char** shape, std::size_t* stop) {
  if (is_wkt_empty_text(wkt)) {
    byte* nil = blob_alloc(kHeaderSize);
    if (nil == nullptr) return kOutOfMemory;
    write_header(nil, XGWKB_TYPE_NIL);
    *shape = nil;
    return XGWKB_OK;
  }
  const uint32_t type = wkt_keyword_code(wkt);
  if (!is_geometry_type(type)) {
    *stop = 0;
    return XGWKB_E_INVALID_ENTITY;
  }
  byte* blob = read_wkt_geometry(wkt, type, stop);
  if (blob == nullptr) return XGWKB_E_TEXT_SYNTAX;
  *shape = blob;
  return XGWKB_OK;
}

}  // namespace

extern "C" {

int32_t xgWKB_shape_generate_from_WKT(const char* wkt, unsigned char** shape) noexcept {
  if (wkt == nullptr || shape == nullptr) return XGWKB_E_NULL_POINTER;
  return guarded([&]() -> int32_t {
    std::size_t stop = 0;
    const int32_t status = read_dialect(wkt, shape, &stop);
    // Intended: a geometry text that does not follow the dialect makes no shape and is not
    // reported; the status stays 0 and callers test the out-pointer.
    return status == XGWKB_E_TEXT_SYNTAX ? int32_t{XGWKB_OK} : status;
  });
}

int32_t xgWKB_shape_from_WKT_ex(const char* text, unsigned char** out, size_t* error_offset) noexcept {
  if (text == nullptr || out == nullptr) return XGWKB_E_NULL_POINTER;
  return guarded([&]() -> int32_t {
    std::size_t stop = 0;
    const int32_t status = read_dialect(text, out, &stop);
    if ((status == XGWKB_E_TEXT_SYNTAX || status == XGWKB_E_INVALID_ENTITY) && error_offset != nullptr)
      *error_offset = stop;
    return status;
  });
}

int32_t xgWKB_shape_check_WKTdata(const char*) noexcept {
  // Intended: an entry point that always succeeds; callers use it as a no-op check.
  return XGWKB_OK;
}

}  // extern "C"
