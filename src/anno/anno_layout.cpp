// anno_layout.cpp - the walks and copies of the annotation layout that are more than a field.
#include "anno/anno_layout.h"

namespace xg::anno {

namespace {

// A fresh block of size bytes copied from src; a zero size still gets a block of its own.
int32_t copy_out(const byte* src, std::size_t size, byte** out) {
  byte* copy = blob_alloc(size != 0 ? size : 1);
  if (copy == nullptr) return XGWKB_E_FAILED;
  if (size != 0) std::memcpy(copy, src, size);
  *out = copy;
  return XGWKB_OK;
}

}  // namespace

int32_t copy_desc_text(const byte* d, char** out) {
  byte* text = nullptr;
  const int32_t status = copy_out(desc_text(d), desc_text_length(d), &text);
  if (status == XGWKB_OK) *out = reinterpret_cast<char*>(text);
  return status;
}

int32_t copy_symbol(const SymbolTail& tail, byte** out) {
  if (!tail.present()) return XGWKB_E_FAILED;
  return copy_out(tail.block(), tail.size(), out);
}

std::size_t anno_bytes(const byte* s) {
  const std::size_t stated = anno_total(s);
  std::size_t content = stated;
  if (shape_type(s) == XGWKB_TYPE_SINGLETEXT) content = single_content_size(s);
  if (shape_type(s) == XGWKB_TYPE_MULTITEXT) content = multi_content_size(s);
  return stated > content ? stated : content;
}

byte* alloc_anno(std::size_t stated, std::size_t content) {
  const std::size_t size = stated > content ? stated : content;
  byte* blob = blob_alloc(size != 0 ? size : 1);
  if (blob != nullptr && size > content) std::memset(blob + content, 0, size - content);
  return blob;
}

bool dim_layout(const byte* s, DimLayout* out) {
  DimLayout l{};
  std::size_t at = kDimMembersAt;
  for (int i = 0; i < kDimMembers; ++i) {
    uint32_t size = 0;
    if (geometry_size(s + at, &size) != XGWKB_OK) return false;
    l.member[i] = at;
    l.member_size[i] = size;
    at += size;
  }
  if (shape_type(s + at) != XGWKB_TYPE_SINGLETEXT) return false;
  l.label = at;
  l.label_size = anno_total(s + at);
  at += l.label_size;
  l.carried = at;
  l.angles = at + 4;
  l.flag = at + 12;
  l.further = at + 13;
  at = l.further;
  if (s[l.flag] != 0) {
    if (geometry_size(s + at, &l.further_size) != XGWKB_OK) return false;
    at += l.further_size;
  }
  l.end = at;
  *out = l;
  return true;
}

}  // namespace xg::anno
