// single_text.cpp - SingleText shapes: built from fields, read and changed field by field,
// copied with a new text or symbol.
#include "anno/anno_layout.h"
#include "core/boundary.h"

using namespace xg;
using namespace xg::anno;

extern "C" {

int32_t xgWKB_anno_create(const _xgWKB_POINT* text_point, const _xgWKB_POINT* leader_point,
                          const _xgWKB_BOX* extent, double angle, const char* text,
                          const unsigned char* symbol, unsigned char** out) noexcept {
  // Only a null text is refused by the rule; null points, box or out-pointer are refused as well
  // rather than read.
  if (text == nullptr || text_point == nullptr || leader_point == nullptr || extent == nullptr ||
      out == nullptr) {
    return XGWKB_E_NULL_POINTER;
  }
  return guarded([&] {
    const DescFields fields = desc_fields(*text_point, *leader_point, *extent, angle, text);
    const std::size_t d = desc_size_for(fields);
    const std::size_t total = d + kSingleFixedSize + (symbol != nullptr ? symbol_size(symbol) : 0);
    byte* blob = blob_alloc(total);
    if (blob == nullptr) return XGWKB_E_FAILED;
    BlobWriter(blob).header(XGWKB_TYPE_SINGLETEXT).u32(static_cast<uint32_t>(total));
    write_symbol(write_desc(single_desc(blob), static_cast<uint32_t>(d), fields), symbol);
    *out = blob;
    return XGWKB_OK;
  });
}

int32_t xgWKB_anno_get_text_point(const unsigned char* shape, _xgWKB_POINT* out) noexcept {
  if (shape == nullptr || out == nullptr) return XGWKB_E_NULL_POINTER;
  *out = desc_text_point(single_desc(shape));
  return XGWKB_OK;
}

int32_t xgWKB_anno_get_leader_point(const unsigned char* shape, _xgWKB_POINT* out) noexcept {
  if (shape == nullptr || out == nullptr) return XGWKB_E_NULL_POINTER;
  const byte* d = single_desc(shape);
  if (!desc_has_leader(d)) return XGWKB_E_FAILED;
  *out = desc_leader(d);
  return XGWKB_OK;
}

int32_t xgWKB_anno_get_angle(const unsigned char* shape, double* out) noexcept {
  if (shape == nullptr || out == nullptr) return XGWKB_E_NULL_POINTER;
  *out = desc_angle(single_desc(shape));
  return XGWKB_OK;
}

int32_t xgWKB_anno_get_text(const unsigned char* shape, char** out) noexcept {
  if (shape == nullptr || out == nullptr) return XGWKB_E_NULL_POINTER;
  return guarded([&] { return copy_desc_text(single_desc(shape), out); });
}

int32_t xgWKB_anno_get_extent(const unsigned char* shape, _xgWKB_BOX* out) noexcept {
  if (shape == nullptr || out == nullptr) return XGWKB_E_NULL_POINTER;
  *out = desc_extent(single_desc(shape));
  return XGWKB_OK;
}

int32_t xgWKB_anno_get_symbol(const unsigned char* shape, unsigned char** out) noexcept {
  if (shape == nullptr || out == nullptr) return XGWKB_E_NULL_POINTER;
  return guarded([&] { return copy_symbol(single_symbol(shape), out); });
}

int32_t xgWKB_anno_set_text_point(unsigned char* shape, const _xgWKB_POINT* p) noexcept {
  if (shape == nullptr || p == nullptr) return XGWKB_E_NULL_POINTER;
  set_desc_text_point(single_desc(shape), *p);
  return XGWKB_OK;
}

int32_t xgWKB_anno_set_leader_point(unsigned char* shape, const _xgWKB_POINT* p) noexcept {
  if (shape == nullptr || p == nullptr) return XGWKB_E_NULL_POINTER;
  byte* d = single_desc(shape);
  // Intended: as the record setter - without a leader the point covers the start of the box.
  mark_desc_leader(d);
  set_desc_leader(d, *p);
  return XGWKB_OK;
}

int32_t xgWKB_anno_set_angle(unsigned char* shape, double angle) noexcept {
  if (shape == nullptr) return XGWKB_E_NULL_POINTER;
  set_desc_angle(single_desc(shape), angle);
  return XGWKB_OK;
}

int32_t xgWKB_anno_set_extent(unsigned char* shape, const _xgWKB_BOX* extent) noexcept {
  if (shape == nullptr || extent == nullptr) return XGWKB_E_NULL_POINTER;
  set_desc_extent(single_desc(shape), *extent);
  return XGWKB_OK;
}

int32_t xgWKB_anno_set_text(const unsigned char* shape, const char* text, unsigned char** out) noexcept {
  if (shape == nullptr || text == nullptr || out == nullptr) return XGWKB_E_NULL_POINTER;
  return guarded([&] {
    const byte* d = single_desc(shape);
    // Intended: unlike a record built from fields, the text is stored with its terminator and
    // the terminator is counted in L.
    const uint32_t new_length = static_cast<uint32_t>(std::strlen(text)) + 1;
    const uint32_t old_length = desc_text_length(d);
    const uint32_t old_total = anno_total(shape);
    const uint32_t total = old_total + new_length - old_length;
    const std::size_t rest = kSingleDescAt + text_point_at(d);  // the old blob after the text
    const std::size_t rest_size = single_content_size(shape) - rest;
    byte* blob = alloc_anno(total, rest - old_length + new_length + rest_size);
    if (blob == nullptr) return XGWKB_E_FAILED;
    BlobWriter(blob)
        .bytes(shape, kTotalAt)
        .u32(total)
        .u32(desc_size(d) + new_length - old_length)
        .u32(new_length)
        .bytes(reinterpret_cast<const byte*>(text), new_length)
        .bytes(shape + rest, rest_size);
    *out = blob;
    return XGWKB_OK;
  });
}

int32_t xgWKB_anno_set_symbol(const unsigned char* shape, const unsigned char* symbol,
                              unsigned char** out) noexcept {
  if (shape == nullptr || out == nullptr) return XGWKB_E_NULL_POINTER;
  return guarded([&] {
    const std::size_t head = kSingleDescAt + desc_size(single_desc(shape));
    const uint32_t new_size = symbol != nullptr ? symbol_size(symbol) : 0;
    const uint32_t old_total = anno_total(shape);
    const uint32_t total = symbol != nullptr ? old_total + new_size - single_symbol(shape).size() : old_total;
    byte* blob = alloc_anno(total, head + 1 + new_size);
    if (blob == nullptr) return XGWKB_E_FAILED;
    std::memcpy(blob, shape, head);
    write_symbol(blob + head, symbol);
    // Intended: with a symbol the total is patched by the difference of the symbol sizes rather
    // than recomputed (the old size is read only behind a set flag: behind a clear one lies the
    // end of the blob); without a symbol the total-size field keeps its old value.  The block
    // covers that value all the same.
    set_anno_total(blob, total);
    *out = blob;
    return XGWKB_OK;
  });
}

int32_t xgWKB_anno_get_type(const unsigned char* shape, int32_t* type) noexcept {
  if (shape == nullptr || type == nullptr) return XGWKB_E_NULL_POINTER;
  *type = static_cast<int32_t>(shape_type(shape));
  return XGWKB_OK;
}

int32_t xgWKB_anno_duplicate(const unsigned char* shape, unsigned char** out) noexcept {
  if (shape == nullptr || out == nullptr) return XGWKB_E_NULL_POINTER;
  // The total-size field decides; a blob whose fields run past it (after a MultiText text change)
  // is copied whole rather than cut off.
  return guarded([&] { return blob_copy(shape, anno_bytes(shape), out); });
}

void xgWKB_anno_free(void* shape) noexcept { std::free(shape); }

}  // extern "C"
