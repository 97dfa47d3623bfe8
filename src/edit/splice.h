// splice.h - edited copies of shape blobs.
//
// Nearly every editing operation builds its result the same way: copy the input up to a part,
// ring or vertex, write something new there (or nothing), copy the rest, and fix the counts of
// the enclosing headers.  A Splice describes such an edit - byte ranges of the input replaced by
// new bytes, plus the counts to patch - and writes the result in one pass.  The span helpers
// locate parts, rings and vertices with the blob layer's walkers; positions are always pointers
// into the input blob, so callers never compute offsets themselves.
#ifndef XGGEO_EDIT_SPLICE_H
#define XGGEO_EDIT_SPLICE_H

#include <cstddef>
#include <cstdint>
#include <vector>

#include "core/blob.h"

namespace xg::edit {

// A byte range [from, to) of a blob or of a buffer of new bytes.
struct ByteRange {
  const byte* from;
  const byte* to;
  std::size_t size() const { return static_cast<std::size_t>(to - from); }
};

inline ByteRange whole(const byte* blob, std::size_t size) { return ByteRange{blob, blob + size}; }
inline ByteRange whole(const std::vector<byte>& bytes) {
  return ByteRange{bytes.data(), bytes.data() + bytes.size()};
}

// The members of a multi-type or the rings of a polygon: everything after the counted header.
inline ByteRange body_of(const byte* blob, std::size_t size) {
  return ByteRange{blob + kCountedHeaderSize, blob + size};
}

// Member i (0-based) of a multi-type whose members the caller has vetted (the blob has a size).
inline ByteRange member_span(const byte* multi, uint32_t i) {
  const byte* m = member_at(multi, i);
  return ByteRange{m, m + member_size(m)};
}

// Ring i (0-based) of a polygon blob.
inline ByteRange ring_span(const byte* polygon, uint32_t i) {
  const byte* r = ring_at(polygon, i);
  return ByteRange{r, r + wkb_ring_size(r)};
}

// The slot of vertex i (0-based) of a counted run; i == n is the end of the run.
inline const byte* vertex_at(const byte* run, uint32_t i) { return run + kCountSize + kCoordSize * i; }
inline ByteRange vertex_span(const byte* run, uint32_t i) {
  const byte* v = vertex_at(run, i);
  return ByteRange{v, v + kCoordSize};
}

// The writable twin of a position that the read-only walkers found inside a blob we own.
inline byte* writable(byte* blob, const byte* at) { return blob + (at - blob); }

// A counted run built from caller points: u32 n, then the points in the order given.
std::vector<byte> make_run(const _xgWKB_POINT* points, uint32_t n);

// One edited copy of a blob.  Edits are given in ascending order and do not overlap; patched
// counts lie outside every edited range.  At most kMaxEdits edits and kMaxPatches patches.
class Splice {
 public:
  Splice(const byte* src, std::size_t size) : src_(src), size_(size) {}

  // The input bytes of old are replaced by the bytes of data (data must outlive write()).
  Splice& replace(ByteRange old, ByteRange data);
  Splice& insert(const byte* at, ByteRange data) { return replace(ByteRange{at, at}, data); }
  Splice& erase(ByteRange old) { return replace(old, ByteRange{nullptr, nullptr}); }
  Splice& append(ByteRange data) { return insert(src_ + size_, data); }

  // The count of the blob (or member blob) starting at blob is copied as count.
  Splice& set_count(const byte* blob, uint32_t count);
  // The count of the run (polygon ring) starting at run is copied as count.
  Splice& set_run_count(const byte* run, uint32_t count);
  // The header of the blob starting at blob is written afresh: byte-order byte 0, its type, count.
  Splice& renew_header(const byte* blob, uint32_t count);

  // Size of the result.
  std::size_t size() const;
  // Writes the result into out, which holds size() bytes.
  void write(byte* out) const;
  // Allocates the result into *out and writes it; XGWKB_E_FAILED when the allocation fails.
  int32_t build(byte** out) const;

 private:
  struct Edit {
    const byte* from;
    const byte* to;
    ByteRange data;
  };
  struct Patch {
    const byte* at;  // position of the u32 count in the input
    uint32_t count;
    const byte* header;  // non-null: the header at this position is written afresh
  };
  static constexpr int kMaxEdits = 2;
  static constexpr int kMaxPatches = 2;

  Splice& patch(const Patch& p);
  // Position in the result of an input position that lies outside every edited range.
  std::size_t result_offset(const byte* at) const;

  const byte* src_;
  std::size_t size_;
  Edit edits_[kMaxEdits] = {};
  int num_edits_ = 0;
  Patch patches_[kMaxPatches] = {};
  int num_patches_ = 0;
};

// Allocates a zero-filled block of size bytes and stores it in *out at once, for the operations
// that hand their result block to the caller before their last test (the caller frees it even
// when the operation then fails).  Returns the block, or null when allocation fails.
byte* hand_out_block(std::size_t size, byte** out);

}  // namespace xg::edit

#endif  // XGGEO_EDIT_SPLICE_H
