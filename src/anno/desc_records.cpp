// desc_records.cpp - the descriptor functions: one placed text's record read and changed
// field by field in a block the caller owns.  C++ linkage; points and boxes by reference.
#include "anno/anno_layout.h"
#include "core/boundary.h"

using namespace xg;
using namespace xg::anno;

int32_t xgWKB_desc_get_size(const _xgWKB_POINT& text_point, const _xgWKB_POINT& leader_point,
                            const _xgWKB_BOX& extent, double angle, const char* text) noexcept {
  if (text == nullptr) return XGWKB_E_NULL_POINTER;
  return guarded([&] {
    return static_cast<int32_t>(desc_size_for(desc_fields(text_point, leader_point, extent, angle, text)));
  });
}

int32_t xgWKB_desc_create(const _xgWKB_POINT& text_point, const _xgWKB_POINT& leader_point,
                          const _xgWKB_BOX& extent, double angle, const char* text, int32_t size,
                          unsigned char* out) noexcept {
  if (text == nullptr || out == nullptr) return XGWKB_E_NULL_POINTER;
  return guarded([&] {
    // Intended: the stored size is the caller's value as given (callers pass the value of
    // xgWKB_desc_get_size), and the text is stored without its terminator.
    write_desc(out, static_cast<uint32_t>(size), desc_fields(text_point, leader_point, extent, angle, text));
    return XGWKB_OK;
  });
}

int32_t xgWKB_get_desc_text_point(const unsigned char* desc, _xgWKB_POINT* out) noexcept {
  if (desc == nullptr || out == nullptr) return XGWKB_E_NULL_POINTER;
  *out = desc_text_point(desc);
  return XGWKB_OK;
}

int32_t xgWKB_get_desc_leader_point(const unsigned char* desc, _xgWKB_POINT* out) noexcept {
  if (desc == nullptr || out == nullptr) return XGWKB_E_NULL_POINTER;
  if (!desc_has_leader(desc)) return XGWKB_E_FAILED;
  *out = desc_leader(desc);
  return XGWKB_OK;
}

int32_t xgWKB_get_desc_angle(const unsigned char* desc, double* out) noexcept {
  if (desc == nullptr || out == nullptr) return XGWKB_E_NULL_POINTER;
  *out = desc_angle(desc);
  return XGWKB_OK;
}

int32_t xgWKB_get_desc_text(const unsigned char* desc, char** out) noexcept {
  if (desc == nullptr || out == nullptr) return XGWKB_E_NULL_POINTER;
  // Intended: exactly the L stored bytes, no terminator added.
  return guarded([&] { return copy_desc_text(desc, out); });
}

int32_t xgWKB_get_desc_symbol(const unsigned char* desc, unsigned char** out) noexcept {
  if (desc == nullptr || out == nullptr) return XGWKB_E_NULL_POINTER;
  // The byte after the record is taken as a symbol flag: inside a SingleText, it is one.
  return guarded([&] { return copy_symbol(SymbolTail{desc_end(desc)}, out); });
}

int32_t xgWKB_desc_get_extent(const unsigned char* desc, _xgWKB_BOX* out) noexcept {
  if (desc == nullptr || out == nullptr) return XGWKB_E_NULL_POINTER;
  *out = desc_extent(desc);
  return XGWKB_OK;
}

int32_t xgWKB_set_desc_text_point(unsigned char* desc, const _xgWKB_POINT& p) noexcept {
  if (desc == nullptr) return XGWKB_E_NULL_POINTER;
  set_desc_text_point(desc, p);
  return XGWKB_OK;
}

int32_t xgWKB_set_desc_angle(unsigned char* desc, double angle) noexcept {
  if (desc == nullptr) return XGWKB_E_NULL_POINTER;
  set_desc_angle(desc, angle);
  return XGWKB_OK;
}

int32_t xgWKB_set_desc_extent(unsigned char* desc, const _xgWKB_BOX& extent) noexcept {
  if (desc == nullptr) return XGWKB_E_NULL_POINTER;
  set_desc_extent(desc, extent);
  return XGWKB_OK;
}

int32_t xgWKB_set_desc_leader_point(unsigned char* desc, const _xgWKB_POINT& p) noexcept {
  if (desc == nullptr) return XGWKB_E_NULL_POINTER;
  // Intended: a record without a leader is not enlarged - the flag is set and the point covers
  // the first 16 bytes of the box.  Callers set the leader only on records that have one.
  mark_desc_leader(desc);
  set_desc_leader(desc, p);
  return XGWKB_OK;
}

int32_t xgWKB_set_desc_text(unsigned char** desc, const char* text) noexcept {
  if (desc == nullptr || *desc == nullptr || text == nullptr) return XGWKB_E_NULL_POINTER;
  return guarded([&] {
    const byte* old = *desc;
    const uint32_t old_size = desc_size(old);
    const uint32_t new_length = static_cast<uint32_t>(std::strlen(text));
    const uint32_t new_size = old_size - desc_text_length(old) + new_length;
    const std::size_t rest = text_point_at(old);  // everything after the old text
    byte* fresh = blob_alloc(new_size);
    if (fresh == nullptr) return XGWKB_E_FAILED;  // the old block stays the caller's
    BlobWriter(fresh)
        .u32(new_size)
        .u32(new_length)
        .bytes(reinterpret_cast<const byte*>(text), new_length)
        .bytes(old + rest, old_size - rest);
    // Intended: the one descriptor function that frees its input - the block is replaced.
    std::free(*desc);
    *desc = fresh;
    return XGWKB_OK;
  });
}
