// ogc_wkt_writer.cpp - OGC simple-features WKT from a shape (see ogc_wkt_writer.h).
#include "interop/ogc_wkt_writer.h"

#include <charconv>

namespace xg {
namespace {

class OgcWriter {
 public:
  OgcWriter(int32_t precision, std::string& text) : precision_(precision), text_(text) {}

  void shape(const byte* s) {
    const uint32_t type = shape_type(s);
    if (type == XGWKB_TYPE_NIL) {
      text_ += "POINT EMPTY";
      return;
    }
    static const char* const kKeywords[] = {"POINT", "LINESTRING", "POLYGON", "MULTIPOINT", "MULTILINESTRING",
                                            "MULTIPOLYGON"};
    text_ += kKeywords[type - 1];
    text_ += ' ';
    body(s);
  }

 private:
  void body(const byte* s) {
    switch (shape_type(s)) {
      case XGWKB_TYPE_POINT:
        text_ += '(';
        coord(load_point(s + kHeaderSize));
        text_ += ')';
        return;
      case XGWKB_TYPE_LINESTRING:
        run(line_run(s));
        return;
      case XGWKB_TYPE_POLYGON:
        if (shape_count(s) == 0) {
          text_ += "EMPTY";
          return;
        }
        text_ += '(';
        for_each_ring(s, [&](PointRun ring, uint32_t i) {
          if (i != 0) text_ += ", ";
          run(ring);
        });
        text_ += ')';
        return;
      default:
        if (shape_count(s) == 0) {
          text_ += "EMPTY";
          return;
        }
        text_ += '(';
        for_each_member(s, [&](const byte* member, uint32_t i) {
          if (i != 0) text_ += ", ";
          body(member);
        });
        text_ += ')';
        return;
    }
  }

  void run(PointRun r) {
    const uint32_t n = r.size();
    if (n == 0) {
      text_ += "EMPTY";
      return;
    }
    text_ += '(';
    for (uint32_t i = 0; i < n; ++i) {
      if (i != 0) text_ += ", ";
      coord(r.point(i));
    }
    text_ += ')';
  }

  void coord(const _xgWKB_POINT& p) {
    number(p.x);
    text_ += ' ';
    number(p.y);
  }

  void number(double v) {
    // Fixed digits of a huge value need up to 309 integer digits plus the decimals.
    char buf[352];
    const std::to_chars_result r = precision_ < 0 ? std::to_chars(buf, buf + sizeof buf, v)
                                                  : std::to_chars(buf, buf + sizeof buf, v, std::chars_format::fixed, precision_);
    text_.append(buf, r.ptr);
  }

  int32_t precision_;
  std::string& text_;
};

}  // namespace

void append_ogc_wkt(const byte* shape, int32_t precision, std::string& text) {
  OgcWriter(precision, text).shape(shape);
}

}  // namespace xg
