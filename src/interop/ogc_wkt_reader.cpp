// ogc_wkt_reader.cpp - OGC simple-features WKT into shapes (see ogc_wkt_reader.h).
//
// The parser gathers the points and the run, ring and member counts first; the blob is sized
// from them and written in one go once the whole text has been accepted.
#include "interop/ogc_wkt_reader.h"

#include <charconv>
#include <cstring>
#include <vector>

namespace xg {
namespace {

constexpr uint32_t kCollection = 7;

struct Keyword {
  const char* name;
  uint32_t type;
};

const Keyword kKeywords[] = {
    {"POINT", XGWKB_TYPE_POINT},           {"LINESTRING", XGWKB_TYPE_LINESTRING},
    {"POLYGON", XGWKB_TYPE_POLYGON},       {"MULTIPOINT", XGWKB_TYPE_MULTIPOINT},
    {"MULTILINESTRING", XGWKB_TYPE_MULTILINESTRING}, {"MULTIPOLYGON", XGWKB_TYPE_MULTIPOLYGON},
    {"GEOMETRYCOLLECTION", kCollection},
};

bool is_blank(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }
bool is_letter(char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); }
bool is_digit(char c) { return c >= '0' && c <= '9'; }
char upper(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; }

// Case-insensitive comparison of text[0, n) with an upper-case word.
bool same_word(const char* text, std::size_t n, const char* word) {
  if (std::strlen(word) != n) return false;
  for (std::size_t i = 0; i < n; ++i)
    if (upper(text[i]) != word[i]) return false;
  return true;
}

// What the parser gathers: the points in storage order, the point count of every run (line or
// ring) and the ring count of every polygon of a multipolygon.
struct Gathered {
  uint32_t type = 0;
  std::vector<_xgWKB_POINT> points;
  std::vector<uint32_t> runs;
  std::vector<uint32_t> polygons;
};

class OgcParser {
 public:
  OgcParser(const char* text, uint32_t flags) : t_(text), flags_(flags) {}

  std::size_t fault() const { return fault_; }

  int32_t parse(Gathered& g) {
    blanks();
    srid_prefix();
    const std::size_t word_at = at_;
    std::size_t n = word();
    if (n == 0) return fail(XGWKB_E_TEXT_SYNTAX, word_at);
    // The dimension tag may be joined to the keyword (POINTZ, POINTZM).
    uint32_t type = lookup(t_ + word_at, n);
    if (type == 0 && n > 2 && same_word(t_ + word_at + n - 2, 2, "ZM")) {
      type = lookup(t_ + word_at, n - 2);
      if (type != 0) tag(word_at + n - 2, 2);
    }
    if (type == 0 && n > 1 && (upper(t_[word_at + n - 1]) == 'Z' || upper(t_[word_at + n - 1]) == 'M')) {
      type = lookup(t_ + word_at, n - 1);
      if (type != 0) tag(word_at + n - 1, 1);
    }
    if (type == kCollection) return fail(XGWKB_E_WKB_COLLECTION, word_at);
    if (type == 0) return fail(XGWKB_E_INVALID_GEOMETRY_TYPE, word_at);
    g.type = type;
    blanks();
    if (tag_dims_ == 0) {  // a tag written apart: Z, M or ZM
      const std::size_t tag_at = at_;
      const std::size_t m = word();
      if (m != 0 && !same_word(t_ + tag_at, m, "EMPTY")) {
        if (!tag(tag_at, m)) return fail(XGWKB_E_TEXT_SYNTAX, tag_at);
        blanks();
      } else {
        at_ = tag_at;
      }
    }
    if (tag_dims_ != 0 && refused(tag_z_, tag_m_)) return fail(XGWKB_E_EXTRA_ORDINATES, tag_at_);
    int32_t s = XGWKB_OK;
    if (empty()) {
      if (type == XGWKB_TYPE_POINT) g.type = XGWKB_TYPE_NIL;  // the library's empty shape
    } else {
      switch (type) {
        case XGWKB_TYPE_POINT:
          if ((s = open())) return s;
          if ((s = point(g))) return s;
          s = close();
          break;
        case XGWKB_TYPE_LINESTRING:
          s = run(g);
          break;
        case XGWKB_TYPE_POLYGON:
          s = polygon(g);
          break;
        case XGWKB_TYPE_MULTIPOINT:
          s = multipoint(g);
          break;
        case XGWKB_TYPE_MULTILINESTRING:
          s = list([&]() -> int32_t {
            if (!empty()) return run(g);
            g.runs.push_back(0);
            return XGWKB_OK;
          });
          break;
        default:
          s = list([&]() -> int32_t {
            if (empty()) {
              g.polygons.push_back(0);
              return XGWKB_OK;
            }
            const std::size_t before = g.runs.size();
            const int32_t r = polygon(g);
            g.polygons.push_back(static_cast<uint32_t>(g.runs.size() - before));
            return r;
          });
      }
    }
    if (s != XGWKB_OK) return s;
    blanks();
    return t_[at_] == '\0' ? int32_t{XGWKB_OK} : fail(XGWKB_E_TEXT_SYNTAX, at_);
  }

 private:
  int32_t fail(int32_t status, std::size_t offset) {
    fault_ = offset;
    return status;
  }

  void blanks() {
    while (is_blank(t_[at_])) ++at_;
  }

  std::size_t word() {
    const std::size_t start = at_;
    while (is_letter(t_[at_])) ++at_;
    return at_ - start;
  }

  static uint32_t lookup(const char* w, std::size_t n) {
    for (const Keyword& k : kKeywords)
      if (same_word(w, n, k.name)) return k.type;
    return 0;
  }

  // "SRID=digits;" before the keyword: skipped, the identifier is not kept.  The comparison
  // stops at the first difference, so it never passes the end of the text.
  void srid_prefix() {
    static const char kSrid[] = "SRID=";
    for (std::size_t k = 0; k < 5; ++k)
      if (upper(t_[at_ + k]) != kSrid[k]) return;
    std::size_t p = at_ + 5;
    if (t_[p] == '-') ++p;
    while (is_digit(t_[p])) ++p;
    if (t_[p] != ';') return;
    at_ = p + 1;
    blanks();
  }

  // Records the dimension tag at text[at, at + n); false when it is not Z, M or ZM.
  bool tag(std::size_t at, std::size_t n) {
    tag_z_ = same_word(t_ + at, n, "Z") || same_word(t_ + at, n, "ZM");
    tag_m_ = same_word(t_ + at, n, "M") || same_word(t_ + at, n, "ZM");
    if (!tag_z_ && !tag_m_) return false;
    tag_dims_ = 2 + (tag_z_ ? 1 : 0) + (tag_m_ ? 1 : 0);
    tag_at_ = at;
    return true;
  }

  bool refused(bool z, bool m) const {
    return (z && (flags_ & XGWKB_REFUSE_Z)) || (m && (flags_ & XGWKB_REFUSE_M));
  }

  // Consumes the word EMPTY (and the blanks after it) when it comes next.
  bool empty() {
    blanks();
    const std::size_t start = at_;
    const std::size_t n = word();
    if (n != 0 && same_word(t_ + start, n, "EMPTY")) {
      blanks();
      return true;
    }
    at_ = start;
    return false;
  }

  int32_t expect(char c) {
    blanks();
    if (t_[at_] != c) return fail(XGWKB_E_TEXT_SYNTAX, at_);
    ++at_;
    return XGWKB_OK;
  }
  int32_t open() { return expect('('); }
  int32_t close() { return expect(')'); }

  // One number: optional sign, then a digit or a point (no words such as nan or inf), ending at
  // a blank, a comma, a parenthesis or the end of the text.
  int32_t number(double* v) {
    blanks();
    const std::size_t start = at_;
    std::size_t from = at_;
    if (t_[from] == '+') ++from;  // from_chars takes a minus but not a plus
    const std::size_t p = t_[from] == '-' ? from + 1 : from;
    if (!is_digit(t_[p]) && t_[p] != '.') return fail(XGWKB_E_TEXT_SYNTAX, start);
    const char* end = t_ + p;
    while (*end != '\0' && !is_blank(*end) && *end != ',' && *end != ')' && *end != '(') ++end;
    const std::from_chars_result r = std::from_chars(t_ + from, end, *v);
    if (r.ec != std::errc() || r.ptr != end) return fail(XGWKB_E_TEXT_SYNTAX, start);
    at_ = static_cast<std::size_t>(end - t_);
    return XGWKB_OK;
  }

  static bool starts_number(char c) { return is_digit(c) || c == '-' || c == '+' || c == '.'; }

  // x y and up to two more ordinates, which are dropped.
  int32_t point(Gathered& g) {
    blanks();
    const std::size_t start = at_;
    _xgWKB_POINT p;
    if (int32_t s = number(&p.x)) return s;
    if (int32_t s = number(&p.y)) return s;
    uint32_t dims = 2;
    for (double extra; dims < 4; ++dims) {
      blanks();
      if (!starts_number(t_[at_])) break;
      if (int32_t s = number(&extra)) return s;
    }
    // Every point has the ordinates of the tag, or without one those of the first point (so
    // that a missing comma between two points is caught rather than read as Z and M).
    if (dims_ == 0) dims_ = tag_dims_ != 0 ? tag_dims_ : dims;
    if (dims != dims_) return fail(XGWKB_E_TEXT_SYNTAX, start);
    if (tag_dims_ == 0 && refused(dims >= 3, dims == 4)) return fail(XGWKB_E_EXTRA_ORDINATES, start);
    g.points.push_back(p);
    return XGWKB_OK;
  }

  // "(" item {"," item} ")"
  template <class Item>
  int32_t list(Item&& item) {
    if (int32_t s = open()) return s;
    for (;;) {
      if (int32_t s = item()) return s;
      blanks();
      if (t_[at_] == ',') {
        ++at_;
        continue;
      }
      return close();
    }
  }

  int32_t run(Gathered& g) {
    const std::size_t before = g.points.size();
    const int32_t s = list([&] { return point(g); });
    g.runs.push_back(static_cast<uint32_t>(g.points.size() - before));
    return s;
  }

  int32_t polygon(Gathered& g) { return list([&] { return run(g); }); }

  // MULTIPOINT (x y, ...) or MULTIPOINT ((x y), ...), mixed freely.
  int32_t multipoint(Gathered& g) {
    return list([&]() -> int32_t {
      blanks();
      if (t_[at_] != '(') return point(g);
      ++at_;
      if (int32_t s = point(g)) return s;
      return close();
    });
  }

  const char* t_;
  uint32_t flags_;
  std::size_t at_ = 0;
  std::size_t fault_ = 0;
  uint32_t tag_dims_ = 0;
  uint32_t dims_ = 0;  // ordinates every point must have, once known
  bool tag_z_ = false, tag_m_ = false;
  std::size_t tag_at_ = 0;
};

byte* write_gathered(const Gathered& g, std::size_t size) {
  byte* blob = blob_alloc(size);
  if (blob == nullptr) return nullptr;
  BlobWriter w(blob);
  const _xgWKB_POINT* pts = g.points.data();
  auto run = [&](uint32_t n) {
    w.u32(n).points(pts, n);
    pts += n;
  };
  const uint32_t* runs = g.runs.data();
  auto polygon = [&](uint32_t rings) {
    w.header(XGWKB_TYPE_POLYGON).u32(rings);
    for (uint32_t i = 0; i < rings; ++i) run(*runs++);
  };
  switch (g.type) {
    case XGWKB_TYPE_NIL:
      w.header(XGWKB_TYPE_NIL);
      break;
    case XGWKB_TYPE_POINT:
      w.point_blob(pts[0]);
      break;
    case XGWKB_TYPE_LINESTRING:
      w.header(XGWKB_TYPE_LINESTRING);
      run(g.runs.empty() ? 0 : g.runs[0]);  // LINESTRING EMPTY gathers no run
      break;
    case XGWKB_TYPE_POLYGON:
      polygon(static_cast<uint32_t>(g.runs.size()));
      break;
    case XGWKB_TYPE_MULTIPOINT:
      w.header(XGWKB_TYPE_MULTIPOINT).u32(static_cast<uint32_t>(g.points.size()));
      for (const _xgWKB_POINT& p : g.points) w.point_blob(p);
      break;
    case XGWKB_TYPE_MULTILINESTRING:
      w.header(XGWKB_TYPE_MULTILINESTRING).u32(static_cast<uint32_t>(g.runs.size()));
      for (uint32_t n : g.runs) w.header(XGWKB_TYPE_LINESTRING), run(n);
      break;
    default:
      w.header(XGWKB_TYPE_MULTIPOLYGON).u32(static_cast<uint32_t>(g.polygons.size()));
      for (uint32_t rings : g.polygons) polygon(rings);
  }
  return blob;
}

}  // namespace

int32_t read_ogc_wkt(const char* text, uint32_t flags, byte** out, std::size_t* fault_offset) {
  Gathered g;
  OgcParser parser(text, flags);
  if (int32_t s = parser.parse(g)) {
    *fault_offset = parser.fault();
    return s;
  }
  const uint64_t size = g.type == XGWKB_TYPE_NIL ? kHeaderSize
                                                 : geometry_size_for(g.type, g.points.size(), g.runs.size(), g.polygons.size());
  if (size > UINT32_MAX) {
    *fault_offset = 0;
    return XGWKB_E_BUFFER_SIZE;
  }
  byte* blob = write_gathered(g, static_cast<std::size_t>(size));
  if (blob == nullptr) return XGWKB_E_FAILED;
  *out = blob;
  return XGWKB_OK;
}

}  // namespace xg
