// multi_text.cpp - MultiText shapes: built from arrays of fields, read and changed record by
// record (1-based), copied with a record's text or the symbol replaced, records added, inserted
// and deleted.
#include <vector>

#include "anno/anno_layout.h"
#include "core/boundary.h"

using namespace xg;
using namespace xg::anno;

namespace {

bool in_records(const byte* s, int32_t index) {
  return index >= 1 && static_cast<uint32_t>(index) <= multi_count(s);
}

// The records of a MultiText as one byte range.
struct Records {
  const byte* from;
  const byte* to;
  std::size_t size() const { return static_cast<std::size_t>(to - from); }
};

Records records_of(const byte* s) { return Records{multi_first_desc(s), multi_descs_end(s)}; }

// Writes flag and symbol block as they stand in the source.
BlobWriter& copy_tail(BlobWriter& w, const SymbolTail& tail) { return w.bytes(tail.flag, tail.bytes()); }

int32_t create_multitext(const _xgWKB_POINT* text_points, const _xgWKB_POINT* leader_points,
                         const _xgWKB_BOX* extents, const double* angles, const char** texts,
                         int32_t n, const byte* symbol, byte** out) {
  std::vector<DescFields> fields;
  fields.reserve(static_cast<std::size_t>(n));
  std::size_t total = kMultiFixedSize + (symbol != nullptr ? symbol_size(symbol) : 0);
  for (int32_t i = 0; i < n; ++i) {
    if (texts[i] == nullptr) return XGWKB_E_NULL_POINTER;
    fields.push_back(desc_fields(text_points[i], leader_points[i], extents[i], angles[i], texts[i]));
    total += desc_size_for(fields.back());
  }
  byte* blob = blob_alloc(total);
  if (blob == nullptr) return XGWKB_E_FAILED;
  BlobWriter(blob).header(XGWKB_TYPE_MULTITEXT).u32(static_cast<uint32_t>(total)).u32(static_cast<uint32_t>(n));
  byte* at = blob + kMultiDescsAt;
  for (const DescFields& f : fields) at = write_desc(at, static_cast<uint32_t>(desc_size_for(f)), f);
  write_symbol(at, symbol);
  *out = blob;
  return XGWKB_OK;
}

// A copy of s with the record desc written after the last record (append) or right after record
// `after` (outside 1..N: nowhere), N + 1 and the total grown by the record's size.
int32_t with_record(const byte* s, bool append, uint32_t after, const byte* desc, byte** out) {
  const uint32_t d = desc_size(desc);
  const uint32_t n = multi_count(s);
  const SymbolTail tail = multi_symbol(s);
  const std::size_t content = multi_content_size(s);
  const bool placed = append || (after >= 1 && after <= n);
  byte* blob = alloc_anno(anno_total(s) + std::size_t{d}, content + (placed ? d : 0));
  if (blob == nullptr) return XGWKB_E_FAILED;
  BlobWriter w(blob);
  w.bytes(s, kTotalAt).u32(anno_total(s) + d).u32(n + 1);
  for_each_desc(s, [&](const byte* rec, uint32_t i) {
    w.bytes(rec, desc_size(rec));
    if (!append && i == after) w.bytes(desc, d);
  });
  if (append) w.bytes(desc, d);
  copy_tail(w, tail);
  *out = blob;
  return XGWKB_OK;
}

int32_t set_multitext_text(const byte* s, uint32_t index, const char* text, byte** out) {
  // Intended: the old text length is always the first record's, whichever record changes.
  const uint32_t l1 = desc_text_length(multi_first_desc(s));
  const uint32_t l_new = static_cast<uint32_t>(std::strlen(text));
  const byte* target = multi_desc(s, index);
  const uint32_t d = desc_size(target);
  // With a first text longer than this whole record the copy would start past its end.
  if (d < 8 + std::size_t{l1}) return XGWKB_E_FAILED;
  const std::size_t content = multi_content_size(s) + l_new - l1;
  byte* blob = alloc_anno(std::size_t{anno_total(s)} + l_new - l1, content);
  if (blob == nullptr) return XGWKB_E_FAILED;
  BlobWriter w(blob);
  // Intended: the 13-byte head is copied as it stands - the total-size field is not updated.
  w.bytes(s, kMultiDescsAt);
  for_each_desc(s, [&](const byte* rec, uint32_t i) {
    if (i != index) {
      w.bytes(rec, desc_size(rec));
      return;
    }
    w.u32(d + l_new - l1).u32(l_new).bytes(reinterpret_cast<const byte*>(text), l_new);
    w.bytes(rec + 8 + l1, d - 8 - l1);
  });
  copy_tail(w, multi_symbol(s));
  *out = blob;
  return XGWKB_OK;
}

int32_t set_multitext_symbol(const byte* s, const byte* symbol, byte** out) {
  const Records recs = records_of(s);
  const uint32_t old_size = multi_symbol(s).size();
  const uint32_t new_size = symbol != nullptr ? symbol_size(symbol) : 0;
  const uint32_t total = anno_total(s) + new_size - old_size;
  byte* blob = alloc_anno(total, kMultiDescsAt + recs.size() + 1 + new_size);
  if (blob == nullptr) return XGWKB_E_FAILED;
  BlobWriter w(blob);
  w.bytes(s, kTotalAt).u32(total).u32(multi_count(s)).bytes(recs.from, recs.size());
  write_symbol(w.position(), symbol);
  *out = blob;
  return XGWKB_OK;
}

int32_t delete_desc(const byte* s, uint32_t index, byte** out) {
  const uint32_t d = desc_size(multi_desc(s, index));
  const std::size_t content = multi_content_size(s) - d;
  byte* blob = alloc_anno(anno_total(s) - d, content);
  if (blob == nullptr) return XGWKB_E_FAILED;
  BlobWriter w(blob);
  w.bytes(s, kTotalAt).u32(anno_total(s) - d).u32(multi_count(s) - 1);
  for_each_desc(s, [&](const byte* rec, uint32_t i) {
    if (i != index) w.bytes(rec, desc_size(rec));
  });
  copy_tail(w, multi_symbol(s));
  *out = blob;
  return XGWKB_OK;
}

}  // namespace

extern "C" {

int32_t xgWKB_anno_create_multitext(const _xgWKB_POINT* text_points, const _xgWKB_POINT* leader_points,
                                    const _xgWKB_BOX* extents, const double* angles, const char** texts,
                                    int32_t n, const unsigned char* symbol, unsigned char** out) noexcept {
  if (text_points == nullptr || leader_points == nullptr || extents == nullptr || angles == nullptr ||
      texts == nullptr) {
    return XGWKB_E_NULL_POINTER;
  }
  // Every text is tested, not only the first, and only the n given are read.
  if (n < 0) return XGWKB_E_INVALID_ARGUMENT;
  if (out == nullptr) return XGWKB_E_NULL_POINTER;
  return guarded([&] {
    return create_multitext(text_points, leader_points, extents, angles, texts, n, symbol, out);
  });
}

int32_t xgWKB_anno_get_desc_num(const unsigned char* shape, int32_t* n) noexcept {
  if (shape == nullptr || n == nullptr) return XGWKB_E_NULL_POINTER;
  if (shape_type(shape) != XGWKB_TYPE_MULTITEXT) return XGWKB_E_FAILED;
  *n = static_cast<int32_t>(multi_count(shape));
  return XGWKB_OK;
}

int32_t xgWKB_anno_get_multitext_text_point(const unsigned char* shape, int32_t index, _xgWKB_POINT* out) noexcept {
  if (shape == nullptr || out == nullptr) return XGWKB_E_NULL_POINTER;
  if (!in_records(shape, index)) return XGWKB_E_INVALID_INDEX;
  *out = desc_text_point(multi_desc(shape, index));
  return XGWKB_OK;
}

int32_t xgWKB_anno_get_multitext_leader_point(const unsigned char* shape, int32_t index,
                                              _xgWKB_POINT* out) noexcept {
  if (shape == nullptr || out == nullptr) return XGWKB_E_NULL_POINTER;
  if (!in_records(shape, index)) return XGWKB_E_INVALID_INDEX;
  const byte* d = multi_desc(shape, index);
  if (!desc_has_leader(d)) return XGWKB_E_FAILED;
  *out = desc_leader(d);
  return XGWKB_OK;
}

int32_t xgWKB_anno_get_multitext_angle(const unsigned char* shape, int32_t index, double* out) noexcept {
  if (shape == nullptr || out == nullptr) return XGWKB_E_NULL_POINTER;
  if (!in_records(shape, index)) return XGWKB_E_INVALID_INDEX;
  *out = desc_angle(multi_desc(shape, index));
  return XGWKB_OK;
}

int32_t xgWKB_anno_get_multitext_text(const unsigned char* shape, int32_t index, char** out) noexcept {
  if (shape == nullptr || out == nullptr) return XGWKB_E_NULL_POINTER;
  if (!in_records(shape, index)) return XGWKB_E_INVALID_INDEX;
  return guarded([&] { return copy_desc_text(multi_desc(shape, index), out); });
}

int32_t xgWKB_anno_get_multitext_extent(const unsigned char* shape, int32_t index, _xgWKB_BOX* out) noexcept {
  if (shape == nullptr || out == nullptr) return XGWKB_E_NULL_POINTER;
  if (!in_records(shape, index)) return XGWKB_E_INVALID_INDEX;
  *out = desc_extent(multi_desc(shape, index));
  return XGWKB_OK;
}

int32_t xgWKB_anno_get_multitext_symbol(const unsigned char* shape, unsigned char** out) noexcept {
  if (shape == nullptr || out == nullptr) return XGWKB_E_NULL_POINTER;
  return guarded([&] { return copy_symbol(multi_symbol(shape), out); });
}

int32_t xgWKB_anno_set_multitext_text_point(unsigned char* shape, int32_t index, const _xgWKB_POINT* p) noexcept {
  if (shape == nullptr || p == nullptr) return XGWKB_E_NULL_POINTER;
  // Intended: the index is bounded by the first record's size, not by N; an index above N but
  // within that bound changes nothing and succeeds.  (Without records there is no first size to
  // read, and every index is refused.)
  const uint32_t bound = multi_count(shape) != 0 ? desc_size(multi_first_desc(shape)) : 0;
  if (index < 1 || static_cast<uint32_t>(index) > bound) return XGWKB_E_INVALID_INDEX;
  if (!in_records(shape, index)) return XGWKB_OK;
  set_desc_text_point(multi_desc(shape, index), *p);
  return XGWKB_OK;
}

int32_t xgWKB_anno_set_multitext_leader_point(unsigned char* shape, int32_t index, const _xgWKB_POINT* p) noexcept {
  // Null pointers are refused here too, rather than read.
  if (shape == nullptr || p == nullptr) return XGWKB_E_NULL_POINTER;
  // Intended: an index outside 1..N is an invalid value (-66) here, not an invalid index.
  if (!in_records(shape, index)) return XGWKB_E_INVALID_ARGUMENT;
  byte* d = multi_desc(shape, index);
  // Intended: as the record setter - without a leader the point covers the start of the box.
  mark_desc_leader(d);
  set_desc_leader(d, *p);
  return XGWKB_OK;
}

int32_t xgWKB_anno_set_multitext_angle(unsigned char* shape, int32_t index, double angle) noexcept {
  if (shape == nullptr) return XGWKB_E_NULL_POINTER;
  if (!in_records(shape, index)) return XGWKB_E_INVALID_INDEX;
  set_desc_angle(multi_desc(shape, index), angle);
  return XGWKB_OK;
}

int32_t xgWKB_anno_set_multitext_extent(unsigned char* shape, int32_t index, const _xgWKB_BOX* extent) noexcept {
  if (shape == nullptr || extent == nullptr) return XGWKB_E_NULL_POINTER;
  if (!in_records(shape, index)) return XGWKB_E_INVALID_INDEX;
  set_desc_extent(multi_desc(shape, index), *extent);
  return XGWKB_OK;
}

int32_t xgWKB_anno_set_multitext_text(const unsigned char* shape, int32_t index, const char* text,
                                      unsigned char** out) noexcept {
  if (shape == nullptr || text == nullptr || out == nullptr) return XGWKB_E_NULL_POINTER;
  if (!in_records(shape, index)) return XGWKB_E_INVALID_INDEX;
  return guarded([&] { return set_multitext_text(shape, static_cast<uint32_t>(index), text, out); });
}

int32_t xgWKB_anno_set_multitext_symbol(const unsigned char* shape, const unsigned char* symbol,
                                        unsigned char** out) noexcept {
  if (shape == nullptr || out == nullptr) return XGWKB_E_NULL_POINTER;
  return guarded([&] { return set_multitext_symbol(shape, symbol, out); });
}

int32_t xgWKB_anno_add_desc(const unsigned char* shape, const unsigned char* desc, unsigned char** out) noexcept {
  if (shape == nullptr || desc == nullptr || out == nullptr) return XGWKB_E_NULL_POINTER;
  // The type is not tested.
  return guarded([&] { return with_record(shape, true, 0, desc, out); });
}

int32_t xgWKB_anno_insert_desc(const unsigned char* shape, int32_t index, const unsigned char* desc,
                               unsigned char** out) noexcept {
  if (shape == nullptr || desc == nullptr || out == nullptr) return XGWKB_E_NULL_POINTER;
  // Intended: an index outside 1..N is not refused - N and the total count the record, but it is
  // not written (the block's last bytes are left zero).
  const uint32_t after = index >= 1 ? static_cast<uint32_t>(index) : 0;
  return guarded([&] { return with_record(shape, false, after, desc, out); });
}

int32_t xgWKB_anno_delete_desc(const unsigned char* shape, int32_t index, unsigned char** out) noexcept {
  if (shape == nullptr) return XGWKB_E_NULL_POINTER;
  if (multi_count(shape) < 2) return XGWKB_E_FAILED;  // the last record cannot be deleted
  if (!in_records(shape, index)) return XGWKB_E_INVALID_ARGUMENT;
  if (out == nullptr) return XGWKB_E_NULL_POINTER;
  return guarded([&] { return delete_desc(shape, static_cast<uint32_t>(index), out); });
}

}  // extern "C"
