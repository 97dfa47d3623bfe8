// ogc_wkt_writer.cpp - OGC simple-features WKT from a shape (see ogc_wkt_writer.h).
#include "interop/ogc_wkt_writer.h"

#include <algorithm>
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

  // Long runs are the bulk of the work: their numbers go straight into the string's storage,
  // which is grown ahead by the longest a pair can take.
  void run(PointRun r) {
    const uint32_t n = r.size();
    if (n == 0) {
      text_ += "EMPTY";
      return;
    }
    std::size_t used = text_.size();
    for (uint32_t i = 0; i < n; ++i) {
      if (text_.size() - used < kMaxPair) text_.resize(std::max(2 * text_.size(), used + kMaxPair));
      char* at = text_.data() + used;
      *at++ = i == 0 ? '(' : ',';
      if (i != 0) *at++ = ' ';
      const _xgWKB_POINT p = r.point(i);
      at = number(at, p.x);
      *at++ = ' ';
      at = number(at, p.y);
      used = static_cast<std::size_t>(at - text_.data());
    }
    text_.resize(used);
    text_ += ')';
  }

  void coord(const _xgWKB_POINT& p) {
    text_.resize(text_.size() + kMaxPair);
    char* start = text_.data() + text_.size() - kMaxPair;
    char* at = number(start, p.x);
    *at++ = ' ';
    at = number(at, p.y);
    text_.resize(text_.size() - kMaxPair + static_cast<std::size_t>(at - start));
  }

  // Writes v at `at` (room for kMaxNumber characters); returns the end.
  char* number(char* at, double v) const {
    const std::to_chars_result r = precision_ < 0 ? std::to_chars(at, at + kMaxNumber, v)
                                                  : std::to_chars(at, at + kMaxNumber, v, std::chars_format::fixed, precision_);
    return r.ptr;
  }

  // Fixed digits of a huge value take up to 309 integer digits, a sign, a point and the
  // decimals; a pair adds the separators.
  static constexpr std::size_t kMaxNumber = 330;
  static constexpr std::size_t kMaxPair = 2 * kMaxNumber + 4;

  int32_t precision_;
  std::string& text_;
};

}  // namespace

void append_ogc_wkt(const byte* shape, int32_t precision, std::string& text) {
  OgcWriter(precision, text).shape(shape);
}

}  // namespace xg
