// splice.cpp - writing an edited copy of a blob in one pass.
#include "edit/splice.h"

#include <cassert>

namespace xg::edit {

std::vector<byte> make_run(const _xgWKB_POINT* points, uint32_t n) {
  std::vector<byte> run(run_bytes(n));
  BlobWriter(run.data()).u32(n).points(points, n);
  return run;
}

Splice& Splice::replace(ByteRange old, ByteRange data) {
  assert(num_edits_ < kMaxEdits);
  assert(num_edits_ == 0 || edits_[num_edits_ - 1].to <= old.from);
  edits_[num_edits_++] = Edit{old.from, old.to, data};
  return *this;
}

Splice& Splice::patch(const Patch& p) {
  assert(num_patches_ < kMaxPatches);
  patches_[num_patches_++] = p;
  return *this;
}

Splice& Splice::set_count(const byte* blob, uint32_t count) {
  return patch(Patch{blob + kHeaderSize, count, nullptr});
}

Splice& Splice::set_run_count(const byte* run, uint32_t count) {
  return patch(Patch{run, count, nullptr});
}

Splice& Splice::renew_header(const byte* blob, uint32_t count) {
  return patch(Patch{blob + kHeaderSize, count, blob});
}

std::size_t Splice::size() const {
  std::size_t size = size_;
  for (int i = 0; i < num_edits_; ++i) {
    size = size - static_cast<std::size_t>(edits_[i].to - edits_[i].from) + edits_[i].data.size();
  }
  return size;
}

std::size_t Splice::result_offset(const byte* at) const {
  std::size_t offset = static_cast<std::size_t>(at - src_);
  for (int i = 0; i < num_edits_ && edits_[i].to <= at; ++i) {
    offset =
        offset - static_cast<std::size_t>(edits_[i].to - edits_[i].from) + edits_[i].data.size();
  }
  return offset;
}

void Splice::write(byte* out) const {
  BlobWriter w(out);
  const byte* copied = src_;
  for (int i = 0; i < num_edits_; ++i) {
    const Edit& e = edits_[i];
    w.bytes(copied, static_cast<std::size_t>(e.from - copied)).bytes(e.data.from, e.data.size());
    copied = e.to;
  }
  w.bytes(copied, static_cast<std::size_t>(src_ + size_ - copied));
  for (int i = 0; i < num_patches_; ++i) {
    const Patch& p = patches_[i];
    if (p.header != nullptr) write_header(out + result_offset(p.header), shape_type(p.header));
    store_u32(out + result_offset(p.at), p.count);
  }
}

int32_t Splice::build(byte** out) const {
  byte* blob = blob_alloc(size());
  if (blob == nullptr) return XGWKB_E_FAILED;
  write(blob);
  *out = blob;
  return XGWKB_OK;
}

byte* hand_out_block(std::size_t size, byte** out) {
  byte* block = blob_alloc(size);
  if (block == nullptr) return nullptr;
  std::memset(block, 0, size);
  *out = block;
  return block;
}

}  // namespace xg::edit
