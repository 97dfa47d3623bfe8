// wkt_writer.cpp - the WKT writer and its two exports.
#include "wkt/wkt_writer.h"

#include <cstdlib>
#include <cstring>
#include <string_view>

#include "core/boundary.h"
#include "wkt/number_format.h"

namespace xg {
namespace {

// Appends one piece: prefix, "x y", suffix.
void put_piece(std::string& out, std::string_view prefix, const _xgWKB_POINT& pt,
               std::string_view suffix) {
  char piece[32 + 2 * kMaxFixed6Length];  // longest prefix and suffix are far below 32
  char* p = piece;
  std::memcpy(p, prefix.data(), prefix.size());
  p += prefix.size();
  p += format_fixed6(pt.x, p);
  *p++ = ' ';
  p += format_fixed6(pt.y, p);
  std::memcpy(p, suffix.data(), suffix.size());
  p += suffix.size();
  out.append(piece, static_cast<std::size_t>(p - piece));
}

// Point j of a run of n: the first after `opening`, the others after a comma, the last followed
// by `closing`.  Intended: j == 0 is tested first, so a one-point run gets no closing parenthesis.
void put_run_point(std::string& out, uint32_t j, uint32_t n, const _xgWKB_POINT& pt,
                   std::string_view opening, std::string_view closing) {
  if (j == 0) {
    put_piece(out, opening, pt, "");
  } else if (j < n - 1) {
    put_piece(out, ",", pt, "");
  } else {
    put_piece(out, ",", pt, closing);
  }
}

// A counted run (linestring body or ring); an empty run contributes nothing.
void put_run(std::string& out, PointRun run, std::string_view opening, std::string_view closing) {
  const uint32_t n = run.size();
  for (uint32_t j = 0; j < n; ++j) put_run_point(out, j, n, run.point(j), opening, closing);
}

// Handed no shape, a writer appends its type's empty text ("point empty", ...) and is done.
bool put_empty(const byte* shape, std::string_view type, std::string& out) {
  if (shape != nullptr) return false;
  out.append(type).append(" empty");
  return true;
}

}  // namespace

void append_point_wkt(const byte* shape, std::string& out) {
  if (put_empty(shape, "point", out)) return;
  put_piece(out, "point (", point_of(shape), ")");
}

void append_linestring_wkt(const byte* shape, std::string& out) {
  if (put_empty(shape, "linestring", out)) return;
  put_run(out, line_run(shape), "linestring (", ")");
}

bool append_multipoint_wkt(const byte* shape, std::string& out) {
  if (put_empty(shape, "multipoint", out)) return true;
  // The members form one flat run of points.
  const uint32_t n = shape_count(shape);
  return for_each_member(shape, [&](const byte* member, uint32_t j) {
    put_run_point(out, j, n, point_of(member), "multipoint (", ")");
  });
}

bool append_multilinestring_wkt(const byte* shape, std::string& out) {
  if (put_empty(shape, "multilinestring", out)) return true;
  const uint32_t m = shape_count(shape);
  return for_each_member(shape, [&](const byte* line, uint32_t i) {
    put_run(out, line_run(line), i == 0 ? "multilinestring ((" : ",(", i < m - 1 ? ")" : "))");
  });
}

void append_polygon_wkt(const byte* shape, std::string& out) {
  if (put_empty(shape, "polygon", out)) return;
  const uint32_t m = shape_count(shape);
  for_each_ring(shape, [&](PointRun ring, uint32_t i) {
    put_run(out, ring, i == 0 ? "polygon ((" : ",(", i == m - 1 ? "))" : ")");
  });
}

bool append_multipolygon_wkt(const byte* shape, std::string& out) {
  if (put_empty(shape, "multipolygon", out)) return true;
  const uint32_t p = shape_count(shape);
  return for_each_member(shape, [&](const byte* polygon, uint32_t k) {
    const uint32_t m = shape_count(polygon);
    for_each_ring(polygon, [&](PointRun ring, uint32_t i) {
      const std::string_view opening = i > 0 ? ",(" : k > 0 ? ",((" : "multipolygon (((";
      const std::string_view closing = i != m - 1 ? ")" : k == p - 1 ? ")))" : "))";
      put_run(out, ring, opening, closing);
    });
  });
}

bool append_wkt(const byte* shape, std::string& out) {
  switch (shape_type(shape)) {
    case XGWKB_TYPE_POINT:
      append_point_wkt(shape, out);
      return true;
    case XGWKB_TYPE_LINESTRING:
      append_linestring_wkt(shape, out);
      return true;
    case XGWKB_TYPE_POLYGON:
      append_polygon_wkt(shape, out);
      return true;
    case XGWKB_TYPE_MULTIPOINT:
      return append_multipoint_wkt(shape, out);
    case XGWKB_TYPE_MULTILINESTRING:
      return append_multilinestring_wkt(shape, out);
    case XGWKB_TYPE_MULTIPOLYGON:
      return append_multipolygon_wkt(shape, out);
    default:
      return false;
  }
}

}  // namespace xg

using namespace xg;

extern "C" {

int32_t xgWKB_shape_generate_to_WKT(const unsigned char* shape, char** wkt) noexcept {
  if (shape == nullptr || wkt == nullptr) return XGWKB_E_NULL_POINTER;
  if (!is_geometry_type(shape_type(shape))) return XGWKB_E_INVALID_ENTITY;
  return guarded([&] {
    std::string text;
    if (!append_wkt(shape, text)) return XGWKB_E_INVALID_SHAPE;  // a member of a foreign type
    // The caller's copy is exactly the text plus its terminating zero.
    char* copy = static_cast<char*>(std::malloc(text.size() + 1));
    if (copy == nullptr) return XGWKB_E_FAILED;
    std::memcpy(copy, text.c_str(), text.size() + 1);
    *wkt = copy;
    return XGWKB_OK;
  });
}

void xgWKB_shape_free_WKT(char* wkt) noexcept { std::free(wkt); }

}  // extern "C"
