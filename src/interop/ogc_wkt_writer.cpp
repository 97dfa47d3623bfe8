// ogc_wkt_writer.cpp - OGC simple-features WKT from a shape (see ogc_wkt_writer.h).
//
// A large linestring gives tens of megabytes of text, so the text is written straight into one
// malloc'ed buffer that is handed to the caller: sized ahead from the blob (untouched pages cost
// nothing), grown by realloc in the rare case a part needs more, never zero-filled, and never
// copied at the end.
#include "interop/ogc_wkt_writer.h"

#include "interop/shortest_number.h"

#include <charconv>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#if defined(__linux__)
#endif

namespace xg {
namespace {

// Fixed digits of a huge value take up to 309 integer digits, a sign, a point and the decimals;
// a pair adds the separators.
constexpr std::size_t kMaxNumber = 330;
constexpr std::size_t kMaxPair = 2 * kMaxNumber + 4;
static_assert(kMaxNumber >= kShortestRoom, "a number may use all the room write_shortest needs");
// Room for the keywords, parentheses and "EMPTY" that may follow a member header of 5 bytes.
constexpr std::size_t kMaxWords = 32;

class OgcWriter {
 public:
  explicit OgcWriter(int32_t precision) : precision_(precision) {}
  ~OgcWriter() { std::free(text_); }
  OgcWriter(const OgcWriter&) = delete;
  OgcWriter& operator=(const OgcWriter&) = delete;

  // The whole text, or nullptr when memory runs out.
  char* write(const byte* s, std::size_t blob_size) {
    // Shortest numbers take at most 24 characters, so a point of 16 bytes gives at most 51 and
    // 4 characters per blob byte are always enough; fixed decimals may need more.
    if (!reserve(blob_size * 4 + kMaxWords)) return nullptr;
    if (!shape(s)) return nullptr;
    text_[used_] = '\0';
    char* out = static_cast<char*>(std::realloc(text_, used_ + 1));  // shrinking in place or by remapping
    if (out == nullptr) out = text_;
    text_ = nullptr;
    return out;
  }

 private:
  bool shape(const byte* s) {
    const uint32_t type = shape_type(s);
    if (type == XGWKB_TYPE_NIL) return put("POINT EMPTY");
    static const char* const kKeywords[] = {"POINT ", "LINESTRING ", "POLYGON ", "MULTIPOINT ", "MULTILINESTRING ",
                                            "MULTIPOLYGON "};
    return put(kKeywords[type - 1]) && body(s);
  }

  bool body(const byte* s) {
    switch (shape_type(s)) {
      case XGWKB_TYPE_POINT: {
        if (!room(kMaxPair)) return false;
        text_[used_++] = '(';
        pair(load_point(s + kHeaderSize));
        text_[used_++] = ')';
        return true;
      }
      case XGWKB_TYPE_LINESTRING:
        return run(line_run(s));
      case XGWKB_TYPE_POLYGON: {
        if (shape_count(s) == 0) return put("EMPTY");
        bool ok = put("(");
        for_each_ring(s, [&](PointRun ring, uint32_t i) { ok = ok && (i == 0 || put(", ")) && run(ring); });
        return ok && put(")");
      }
      default: {
        if (shape_count(s) == 0) return put("EMPTY");
        bool ok = put("(");
        for_each_member(s, [&](const byte* member, uint32_t i) { ok = ok && (i == 0 || put(", ")) && body(member); });
        return ok && put(")");
      }
    }
  }

  // Long runs are the bulk of the work: one test for room per pair, numbers written in place
  // through a local pointer (stores through char* could otherwise alias the members and force
  // them to be reloaded after every character).
  bool run(PointRun r) {
    const uint32_t n = r.size();
    if (n == 0) return put("EMPTY");
    char* at = text_ + used_;
    // Below limit there is room for a pair and the terminating zero, as room(kMaxPair) asks.
    std::size_t limit = capacity_ > kMaxPair ? capacity_ - kMaxPair : 0;
    for (uint32_t i = 0; i < n; ++i) {
      if (static_cast<std::size_t>(at - text_) >= limit) {
        used_ = static_cast<std::size_t>(at - text_);
        if (!room(kMaxPair)) return false;
        at = text_ + used_;
        limit = capacity_ - kMaxPair;
      }
      *at = i == 0 ? '(' : ',';
      at[1] = ' ';
      at += i == 0 ? 1 : 2;
      const _xgWKB_POINT p = r.point(i);
      at = number(at, p.x);
      *at++ = ' ';
      at = number(at, p.y);
    }
    used_ = static_cast<std::size_t>(at - text_);
    return put(")");
  }

  void pair(const _xgWKB_POINT& p) {
    char* at = number(text_ + used_, p.x);
    *at++ = ' ';
    at = number(at, p.y);
    used_ = static_cast<std::size_t>(at - text_);
  }

  char* number(char* at, double v) const {
    if (precision_ < 0) return write_shortest(at, v);
    return std::to_chars(at, at + kMaxNumber, v, std::chars_format::fixed, precision_).ptr;
  }

  bool put(const char* word) {
    const std::size_t n = std::strlen(word);
    if (!room(n)) return false;
    std::memcpy(text_ + used_, word, n);
    used_ += n;
    return true;
  }

  // Room for n more characters and the terminating zero.
  bool room(std::size_t n) { return capacity_ - used_ > n || reserve(2 * capacity_ + n + 1); }

  bool reserve(std::size_t capacity) {
    char* grown = static_cast<char*>(std::realloc(text_, capacity));
    if (grown == nullptr) return false;
    text_ = grown;
    capacity_ = capacity;
    return true;
  }

  int32_t precision_;
  char* text_ = nullptr;
  std::size_t used_ = 0;
  std::size_t capacity_ = 0;
};

}  // namespace

char* write_ogc_wkt(const byte* shape, std::size_t blob_size, int32_t precision) {
  return OgcWriter(precision).write(shape, blob_size);
}

}  // namespace xg
