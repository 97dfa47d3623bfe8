// anno_blobs.h - hand-built annotation records and blobs for tests, independent of the library's
// writers, and an owner for blocks the library hands out.
#ifndef XGGEO_TESTS_ANNO_BLOBS_H
#define XGGEO_TESTS_ANNO_BLOBS_H

#include <cstdlib>
#include <cstring>
#include <optional>
#include <string>
#include <vector>

#include "support/blob_builder.h"

// Exact equality of points (found by argument lookup, so std::optional's comparison uses it).
inline bool operator==(const _xgWKB_POINT& a, const _xgWKB_POINT& b) { return a.x == b.x && a.y == b.y; }

namespace xgtest {

struct Desc {
  std::string text;  // stored bytes (a terminator, when wanted, included)
  _xgWKB_POINT at;
  double angle;
  std::optional<_xgWKB_POINT> leader;
  _xgWKB_BOX box;
};

inline Bytes desc_bytes(const Desc& d) {
  Bytes b;
  const uint32_t size = static_cast<uint32_t>(65 + d.text.size() + (d.leader ? 16 : 0));
  put_u32(b, size);
  put_u32(b, static_cast<uint32_t>(d.text.size()));
  b.insert(b.end(), d.text.begin(), d.text.end());
  put_f64(b, d.at.x);
  put_f64(b, d.at.y);
  put_f64(b, d.angle);
  b.push_back(d.leader ? 1 : 0);
  if (d.leader) {
    put_f64(b, d.leader->x);
    put_f64(b, d.leader->y);
  }
  for (double v : {d.box.minx, d.box.miny, d.box.maxx, d.box.maxy}) put_f64(b, v);
  return b;
}

// A symbol block of size bytes: its size, then filler.
inline Bytes symbol_bytes(uint32_t size) {
  Bytes b;
  put_u32(b, size);
  for (uint32_t i = 4; i < size; ++i) b.push_back(static_cast<unsigned char>(0xA0 + i));
  return b;
}

inline void put_symbol(Bytes& b, const Bytes& symbol) {
  b.push_back(symbol.empty() ? 0 : 1);
  b.insert(b.end(), symbol.begin(), symbol.end());
}

inline Bytes single_text_bytes(const Desc& d, const Bytes& symbol = {}) {
  const Bytes rec = desc_bytes(d);
  Bytes b = header(XGWKB_TYPE_SINGLETEXT);
  put_u32(b, static_cast<uint32_t>(rec.size() + 10 + symbol.size()));
  b.insert(b.end(), rec.begin(), rec.end());
  put_symbol(b, symbol);
  return b;
}

inline Bytes multi_text_bytes(const std::vector<Desc>& ds, const Bytes& symbol = {}) {
  Bytes recs;
  for (const Desc& d : ds) {
    const Bytes r = desc_bytes(d);
    recs.insert(recs.end(), r.begin(), r.end());
  }
  Bytes b = header(XGWKB_TYPE_MULTITEXT);
  put_u32(b, static_cast<uint32_t>(14 + recs.size() + symbol.size()));
  put_u32(b, static_cast<uint32_t>(ds.size()));
  b.insert(b.end(), recs.begin(), recs.end());
  put_symbol(b, symbol);
  return b;
}

// The u32 at offset 5: every annotation blob's total size.
inline uint32_t total_of(const unsigned char* p) {
  uint32_t v = 0;
  for (int i = 0; i < 4; ++i) v |= static_cast<uint32_t>(p[5 + i]) << (8 * i);
  return v;
}

// A block the library handed out, released like a caller must; bytes() copies its first n bytes.
struct Block {
  unsigned char* p = nullptr;
  Block() = default;
  Block(const Block&) = delete;
  ~Block() { std::free(p); }
  unsigned char** out() { return &p; }
  Bytes bytes(std::size_t n) const { return Bytes(p, p + n); }
  Bytes anno() const { return bytes(total_of(p)); }  // an annotation's total-size bytes
};

inline bool operator==(const Desc& a, const Desc& b) {
  return a.text == b.text && a.at == b.at && a.angle == b.angle && a.leader == b.leader &&
         a.box.minx == b.box.minx && a.box.miny == b.box.miny && a.box.maxx == b.box.maxx &&
         a.box.maxy == b.box.maxy;
}

// The fields of a SingleText (index 0) or of record index of a MultiText read back through the
// library's getters; like gives the text length to read.
inline Desc read_desc(const unsigned char* s, int32_t index, const Desc& like) {
  Desc d{};
  _xgWKB_POINT leader{};
  Block text;
  char** t = reinterpret_cast<char**>(text.out());
  bool ok;
  if (index == 0) {
    ok = xgWKB_anno_get_text_point(s, &d.at) == 0 && xgWKB_anno_get_angle(s, &d.angle) == 0 &&
         xgWKB_anno_get_extent(s, &d.box) == 0 && xgWKB_anno_get_text(s, t) == 0;
    if (xgWKB_anno_get_leader_point(s, &leader) == 0) d.leader = leader;
  } else {
    ok = xgWKB_anno_get_multitext_text_point(s, index, &d.at) == 0 &&
         xgWKB_anno_get_multitext_angle(s, index, &d.angle) == 0 &&
         xgWKB_anno_get_multitext_extent(s, index, &d.box) == 0 &&
         xgWKB_anno_get_multitext_text(s, index, t) == 0;
    if (xgWKB_anno_get_multitext_leader_point(s, index, &leader) == 0) d.leader = leader;
  }
  if (ok) d.text.assign(reinterpret_cast<const char*>(text.p), like.text.size());
  return d;
}

inline const Desc kPlain{"ab", {1, 2}, 0.5, std::nullopt, {0, 1, 10, 3}};
inline const Desc kLed{"xyz", {4, 5}, -1.25, _xgWKB_POINT{7, 8}, {-1, -2, 3, 4}};
inline const Desc kLong{"label", {-3, 9}, 2.0, _xgWKB_POINT{0, 0}, {-4, 8, 1, 10}};

}  // namespace xgtest

#endif  // XGGEO_TESTS_ANNO_BLOBS_H
