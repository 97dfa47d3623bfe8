// anno_layout.h - the one place that knows the byte layout of annotation records and of the
// SingleText, MultiText and dimension blobs.
//
// Descriptor record (L text bytes, D record bytes):
//   [u32 D][u32 L][L text bytes][text point x y][angle][u8 leader flag][leader x y, flag only][box]
//   D = 65 + L without a leader, 81 + L with one.
// SingleText (type 9):  [header][u32 total][record][u8 symbol flag][symbol block, flag only]
// MultiText (type 10):  [header][u32 total][u32 N][N records][u8 symbol flag][symbol block]
// A symbol block starts with its own u32 size S.
// Dimension (11-13):    [header][u32 total][five geometry blobs][SingleText][u32 carried]
//                       [i32 angle 1][i32 angle 2][u8 flag][further geometry, flag only]
//
// Every annotation export reads and writes through these helpers, which are built on the blob
// layer's little-endian loads and stores (doubles at odd offsets are never cast).  Records are
// reached only by walking them by their stored sizes; sizes and counts are trusted, as the
// callers' blobs carry no length of their own.
#ifndef XGGEO_ANNO_ANNO_LAYOUT_H
#define XGGEO_ANNO_ANNO_LAYOUT_H

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "core/blob.h"

namespace xg::anno {

constexpr std::size_t kDescBaseSize = 65;  // a record without text or leader
constexpr std::size_t kLeaderSize = 16;
constexpr std::size_t kBoxSize = 32;
constexpr std::size_t kTotalAt = kHeaderSize;  // the total-size field of every annotation blob
constexpr std::size_t kSingleDescAt = 9;
constexpr std::size_t kSingleFixedSize = 10;  // header, total and symbol flag around the record
constexpr std::size_t kMultiCountAt = 9;
constexpr std::size_t kMultiDescsAt = 13;
constexpr std::size_t kMultiFixedSize = 14;  // header, total, count and symbol flag
constexpr std::size_t kDimMembersAt = 9;
constexpr int kDimMembers = 5;

// ---- boxes -------------------------------------------------------------------------------

inline _xgWKB_BOX load_box(const byte* p) {
  return _xgWKB_BOX{load_f64(p), load_f64(p + 8), load_f64(p + 16), load_f64(p + 24)};
}

inline void store_box(byte* p, const _xgWKB_BOX& b) {
  store_f64(p, b.minx);
  store_f64(p + 8, b.miny);
  store_f64(p + 16, b.maxx);
  store_f64(p + 24, b.maxy);
}

// ---- descriptor records ------------------------------------------------------------------

// Size of a record holding text_length text bytes, with or without a leader point.
inline std::size_t desc_size_for(std::size_t text_length, bool leader) {
  return kDescBaseSize + text_length + (leader ? kLeaderSize : 0);
}

inline uint32_t desc_size(const byte* d) { return load_u32(d); }
inline uint32_t desc_text_length(const byte* d) { return load_u32(d + 4); }
inline const byte* desc_text(const byte* d) { return d + 8; }

// Field offsets from the start of a record.
inline std::size_t text_point_at(const byte* d) { return 8 + std::size_t{desc_text_length(d)}; }
inline std::size_t angle_at(const byte* d) { return text_point_at(d) + kCoordSize; }
inline std::size_t leader_flag_at(const byte* d) { return angle_at(d) + 8; }
inline std::size_t leader_at(const byte* d) { return leader_flag_at(d) + 1; }
inline bool desc_has_leader(const byte* d) { return d[leader_flag_at(d)] != 0; }
inline std::size_t extent_at(const byte* d) {
  return leader_at(d) + (desc_has_leader(d) ? kLeaderSize : 0);
}

inline _xgWKB_POINT desc_text_point(const byte* d) { return load_point(d + text_point_at(d)); }
inline double desc_angle(const byte* d) { return load_f64(d + angle_at(d)); }
inline _xgWKB_POINT desc_leader(const byte* d) { return load_point(d + leader_at(d)); }
inline _xgWKB_BOX desc_extent(const byte* d) { return load_box(d + extent_at(d)); }

inline void set_desc_size(byte* d, uint32_t size) { store_u32(d, size); }
inline void set_desc_text_point(byte* d, const _xgWKB_POINT& p) { store_point(d + text_point_at(d), p); }
inline void set_desc_angle(byte* d, double a) { store_f64(d + angle_at(d), a); }
inline void set_desc_leader(byte* d, const _xgWKB_POINT& p) { store_point(d + leader_at(d), p); }
inline void set_desc_extent(byte* d, const _xgWKB_BOX& b) { store_box(d + extent_at(d), b); }
// Sets the leader flag to 1 (the record's size and the box's place are the caller's business).
inline void mark_desc_leader(byte* d) { d[leader_flag_at(d)] = 1; }

// The byte right after a record (inside a SingleText: its symbol flag).
inline const byte* desc_end(const byte* d) { return d + desc_size(d); }

// The fields of a record to be written.
struct DescFields {
  _xgWKB_POINT text_point;
  const _xgWKB_POINT* leader;  // null: no leader
  _xgWKB_BOX extent;
  double angle;
  const char* text;
  uint32_t text_length;  // bytes of text stored
};

// The fields of a new record: the leader is kept only when it differs from the text point by
// 0.0001 or more on some axis; the text is stored without its terminator.
inline DescFields desc_fields(const _xgWKB_POINT& text_point, const _xgWKB_POINT& leader,
                              const _xgWKB_BOX& extent, double angle, const char* text) {
  const bool has_leader = wkb_point_equal_tol(text_point, leader, kFixedTolerance) == 0;
  return DescFields{text_point, has_leader ? &leader : nullptr, extent, angle, text,
                    static_cast<uint32_t>(std::strlen(text))};
}

inline std::size_t desc_size_for(const DescFields& f) {
  return desc_size_for(f.text_length, f.leader != nullptr);
}

// Writes a record into out with D = size as given; returns the byte after the last one written.
inline byte* write_desc(byte* out, uint32_t size, const DescFields& f) {
  BlobWriter w(out);
  w.u32(size).u32(f.text_length).bytes(reinterpret_cast<const byte*>(f.text), f.text_length);
  w.point(f.text_point);
  byte* at = w.position();
  store_f64(at, f.angle);
  at[8] = f.leader != nullptr ? 1 : 0;
  at += 9;
  if (f.leader != nullptr) {
    store_point(at, *f.leader);
    at += kCoordSize;
  }
  store_box(at, f.extent);
  return at + kBoxSize;
}

// Calls f(point) -> point on the geometric fields of a record, in place: the text point, the
// leader when its flag is set, and the two corners of the box.
template <class F>
void map_desc_points(byte* d, F&& f) {
  set_desc_text_point(d, f(desc_text_point(d)));
  if (desc_has_leader(d)) set_desc_leader(d, f(desc_leader(d)));
  const _xgWKB_BOX b = desc_extent(d);
  const _xgWKB_POINT lo = f(_xgWKB_POINT{b.minx, b.miny});
  const _xgWKB_POINT hi = f(_xgWKB_POINT{b.maxx, b.maxy});
  set_desc_extent(d, _xgWKB_BOX{lo.x, lo.y, hi.x, hi.y});
}

// ---- symbol blocks -----------------------------------------------------------------------

inline uint32_t symbol_size(const byte* symbol) { return load_u32(symbol); }

// The symbol flag and the block after it.
struct SymbolTail {
  const byte* flag;

  bool present() const { return *flag != 0; }
  const byte* block() const { return flag + 1; }
  // S, or 0 without a symbol.
  uint32_t size() const { return present() ? symbol_size(block()) : 0; }
  // The flag and the block.
  std::size_t bytes() const { return 1 + std::size_t{size()}; }
};

// Writes a symbol flag and, for a non-null symbol, its block; returns the byte after them.
inline byte* write_symbol(byte* at, const byte* symbol) {
  *at++ = symbol != nullptr ? 1 : 0;
  if (symbol == nullptr) return at;
  const uint32_t size = symbol_size(symbol);
  std::memcpy(at, symbol, size);
  return at + size;
}

// ---- SingleText and MultiText ------------------------------------------------------------

inline uint32_t anno_total(const byte* s) { return load_u32(s + kTotalAt); }
inline void set_anno_total(byte* s, uint32_t total) { store_u32(s + kTotalAt, total); }

// The record of a SingleText.
inline const byte* single_desc(const byte* s) { return s + kSingleDescAt; }
inline byte* single_desc(byte* s) { return s + kSingleDescAt; }
inline SymbolTail single_symbol(const byte* s) { return SymbolTail{desc_end(single_desc(s))}; }

inline uint32_t multi_count(const byte* s) { return load_u32(s + kMultiCountAt); }
inline void set_multi_count(byte* s, uint32_t n) { store_u32(s + kMultiCountAt, n); }
inline const byte* multi_first_desc(const byte* s) { return s + kMultiDescsAt; }

// Record number index (1-based, the caller has tested 1 <= index <= N) of a MultiText, walking
// the records by their sizes.  B is `const byte` or `byte`.
template <class B>
B* multi_desc(B* s, uint32_t index) {
  B* d = s + kMultiDescsAt;
  for (uint32_t i = 1; i < index; ++i) d += desc_size(d);
  return d;
}

// The byte after the N records: the symbol flag.
template <class B>
B* multi_descs_end(B* s) {
  return multi_desc(s, multi_count(s) + 1);
}

inline SymbolTail multi_symbol(const byte* s) { return SymbolTail{multi_descs_end(s)}; }

// Calls f(record, index) for every record of a MultiText, index 1-based.
template <class B, class F>
void for_each_desc(B* s, F&& f) {
  const uint32_t n = multi_count(s);
  B* d = s + kMultiDescsAt;
  for (uint32_t i = 1; i <= n; ++i) {
    B* next = d + desc_size(d);
    f(d, i);
    d = next;
  }
}

// ---- sizes of whole annotation blobs ------------------------------------------------------

// The bytes the fields of a SingleText / MultiText fill, found by walking them.
inline std::size_t single_content_size(const byte* s) {
  return kSingleDescAt + desc_size(single_desc(s)) + single_symbol(s).bytes();
}
inline std::size_t multi_content_size(const byte* s) {
  const byte* end = multi_descs_end(s);
  return static_cast<std::size_t>(end - s) + SymbolTail{end}.bytes();
}

// The bytes that hold a SingleText or MultiText whole: its total-size field or its walked
// content, whichever is more (some setters leave the field behind the content on purpose).
// Other types: the total-size field.
std::size_t anno_bytes(const byte* s);

// A new block for an annotation whose total-size field will say stated and whose fields fill
// content bytes: large enough for both, so no later reader trusting either runs off its end;
// the bytes past content are zeroed.  Null when memory runs out.
byte* alloc_anno(std::size_t stated, std::size_t content);

// ---- dimensions --------------------------------------------------------------------------

// Where the parts of a dimension blob lie, as offsets from its start.
struct DimLayout {
  std::size_t member[kDimMembers];
  uint32_t member_size[kDimMembers];
  std::size_t label;       // the SingleText
  uint32_t label_size;     // its total-size field
  std::size_t carried;     // the u32 every transform carries unchanged
  std::size_t angles;      // the two i32 angles, 4 bytes apart
  std::size_t flag;        // 1 when a further geometry follows
  std::size_t further;     // the further geometry (when flagged)
  uint32_t further_size;   // its WKB size, 0 without one
  std::size_t end;         // the byte after the last part
};

// Walks a dimension blob: five members by their WKB sizes, the label by its total size, the
// fixed fields and the optional further geometry.  False when a member or the further geometry
// is not a geometry of type 1-6 or the label is not a SingleText: such a blob cannot be walked.
bool dim_layout(const byte* s, DimLayout* out);

// A fresh copy of the L text bytes of a record into *out, no terminator added.  -1 when memory
// runs out.
int32_t copy_desc_text(const byte* d, char** out);

// A fresh copy of the S bytes of the symbol block behind a flag into *out; -1 when the flag is 0
// (or memory runs out).
int32_t copy_symbol(const SymbolTail& tail, byte** out);

inline bool is_dim_type(uint32_t type) {
  return type >= XGWKB_TYPE_HORIDIM && type <= XGWKB_TYPE_ALIGNEDDIM;
}

// Rewrites the type code alone (the byte-order byte is left as it is).
inline void set_dim_type(byte* s, uint32_t type) { store_u32(s + 1, type); }

inline bool dim_has_further(const byte* s, const DimLayout& l) { return s[l.flag] != 0; }

inline int32_t dim_angle(const byte* s, const DimLayout& l, int i) {
  return static_cast<int32_t>(load_u32(s + l.angles + 4 * static_cast<std::size_t>(i)));
}

inline void set_dim_angle(byte* s, const DimLayout& l, int i, int32_t v) {
  store_u32(s + l.angles + 4 * static_cast<std::size_t>(i), static_cast<uint32_t>(v));
}

}  // namespace xg::anno

#endif  // XGGEO_ANNO_ANNO_LAYOUT_H
