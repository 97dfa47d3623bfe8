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

// One flat sequence: linestring points or multipoint members.  Point j of n.
// Intended: j == 0 is tested first, so a one-point sequence gets no closing parenthesis.
void put_sequence_point(std::string& out, std::string_view opening, uint32_t j, uint32_t n,
                        const _xgWKB_POINT& pt) {
  if (j == 0) {
    put_piece(out, opening, pt, "");
  } else if (j < n - 1) {
    put_piece(out, ",", pt, "");
  } else {
    put_piece(out, ",", pt, ")");
  }
}

}  // namespace

void append_point_wkt(const byte* shape, std::string& out) {
  if (shape == nullptr) {
    out += "point empty";
    return;
  }
  put_piece(out, "point (", load_point(shape + kHeaderSize), ")");
}

void append_linestring_wkt(const byte* shape, std::string& out) {
  if (shape == nullptr) {
    out += "linestring empty";
    return;
  }
  const PointRun run = line_run(shape);
  const uint32_t n = run.size();
  for (uint32_t j = 0; j < n; ++j) put_sequence_point(out, "linestring (", j, n, run.point(j));
}

void append_multipoint_wkt(const byte* shape, std::string& out) {
  if (shape == nullptr) {
    out += "multipoint empty";
    return;
  }
  const uint32_t n = shape_count(shape);
  const byte* member = shape + kCountedHeaderSize;
  for (uint32_t j = 0; j < n; ++j, member += kPointBlobSize) {
    put_sequence_point(out, "multipoint (", j, n, load_point(member + kHeaderSize));
  }
}

void append_multilinestring_wkt(const byte* shape, std::string& out) {
  if (shape == nullptr) {
    out += "multilinestring empty";
    return;
  }
  const uint32_t m = shape_count(shape);
  const byte* member = shape + kCountedHeaderSize;
  for (uint32_t i = 0; i < m; ++i) {
    const PointRun run = line_run(member);  // the member's type code is stepped over, not read
    const uint32_t n = run.size();
    for (uint32_t j = 0; j < n; ++j) {
      const _xgWKB_POINT pt = run.point(j);
      if (j == 0) {
        put_piece(out, i == 0 ? "multilinestring ((" : ",(", pt, "");
      } else if (j < n - 1) {
        put_piece(out, ",", pt, "");
      } else {
        put_piece(out, ",", pt, i < m - 1 ? ")" : "))");
      }
    }
    member = run.end();
  }
}

void append_polygon_wkt(const byte* shape, std::string& out) {
  if (shape == nullptr) {
    out += "polygon empty";
    return;
  }
  const uint32_t m = shape_count(shape);
  for_each_ring(shape, [&](PointRun ring, uint32_t i) {
    const uint32_t n = ring.size();
    for (uint32_t j = 0; j < n; ++j) {
      const _xgWKB_POINT pt = ring.point(j);
      if (j == 0) {
        put_piece(out, i == 0 ? "polygon ((" : ",(", pt, "");
      } else if (j < n - 1) {
        put_piece(out, ",", pt, "");
      } else {
        put_piece(out, ",", pt, i == m - 1 ? "))" : ")");
      }
    }
  });
}

void append_multipolygon_wkt(const byte* shape, std::string& out) {
  if (shape == nullptr) {
    out += "multipolygon empty";
    return;
  }
  const uint32_t p = shape_count(shape);
  const byte* member = shape + kCountedHeaderSize;
  for (uint32_t k = 0; k < p; ++k) {
    const uint32_t m = shape_count(member);  // the member's type code is stepped over, not read
    member = for_each_ring(member, [&](PointRun ring, uint32_t i) {
      const uint32_t n = ring.size();
      for (uint32_t j = 0; j < n; ++j) {
        const _xgWKB_POINT pt = ring.point(j);
        if (j == 0 && i > 0) {
          put_piece(out, ",(", pt, "");
        } else if (j == 0) {
          put_piece(out, k > 0 ? ",((" : "multipolygon (((", pt, "");
        } else if (j < n - 1) {
          put_piece(out, ",", pt, "");
        } else if (i != m - 1) {
          put_piece(out, ",", pt, ")");
        } else {
          put_piece(out, ",", pt, k == p - 1 ? ")))" : "))");
        }
      }
    });
  }
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
      append_multipoint_wkt(shape, out);
      return true;
    case XGWKB_TYPE_MULTILINESTRING:
      append_multilinestring_wkt(shape, out);
      return true;
    case XGWKB_TYPE_MULTIPOLYGON:
      append_multipolygon_wkt(shape, out);
      return true;
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
    append_wkt(shape, text);
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
