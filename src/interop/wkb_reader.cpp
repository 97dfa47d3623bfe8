// wkb_reader.cpp - bounded reading of standard WKB (see wkb_reader.h).
//
// The input is walked twice by the same code: the first walk checks every header and count
// against the bytes left and sums the size of the blob to build; the second walk, over input now
// known to be sound, writes the blob.  Nothing is allocated before the first walk succeeds.
#include "interop/wkb_reader.h"

#include <cmath>
#include <cstring>

namespace xg {
namespace {

constexpr uint32_t kEwkbZ = 0x80000000u;
constexpr uint32_t kEwkbM = 0x40000000u;
constexpr uint32_t kEwkbSrid = 0x20000000u;
constexpr uint32_t kCollection = 7;

struct Header {
  bool big = false;
  uint32_t base = 0;  // 1-6
  uint32_t dims = 2;  // ordinates per point
};

class WkbWalk {
 public:
  WkbWalk(const byte* data, std::size_t len, uint32_t flags) : data_(data), len_(len), flags_(flags) {}

  // Walks one geometry at `at`; with writer null only checks and adds to size_.
  int32_t geometry(std::size_t& at, uint32_t want, BlobWriter* w, Header* top = nullptr) {
    Header h;
    const std::size_t start = at;
    if (int32_t s = header(at, h)) return s;
    if (want != 0 && h.base != want) return fail(XGWKB_E_INVALID_GEOMETRY_TYPE, start + 1);
    if (top != nullptr) *top = h;
    const std::size_t point_bytes = 8 * std::size_t{h.dims};
    switch (h.base) {
      case XGWKB_TYPE_POINT:
        if (left(at) < point_bytes) return fail(XGWKB_E_WKB_TRUNCATED, at);
        size_ += kPointBlobSize;
        if (w != nullptr) w->header(XGWKB_TYPE_POINT).point(point(at, h.big));
        at += point_bytes;
        return XGWKB_OK;
      case XGWKB_TYPE_LINESTRING:
        if (w != nullptr) w->header(XGWKB_TYPE_LINESTRING);
        size_ += kHeaderSize;
        return run(at, h, w);
      case XGWKB_TYPE_POLYGON: {
        uint32_t rings = 0;
        if (int32_t s = count(at, h.big, 4, &rings)) return s;
        size_ += kCountedHeaderSize;
        if (w != nullptr) w->header(XGWKB_TYPE_POLYGON).u32(rings);
        for (uint32_t i = 0; i < rings; ++i)
          if (int32_t s = run(at, h, w)) return s;
        return XGWKB_OK;
      }
      default: {  // the multi-types: members are whole geometries of the matching simple type
        uint32_t members = 0;
        if (int32_t s = count(at, h.big, kHeaderSize, &members)) return s;
        size_ += kCountedHeaderSize;
        if (w != nullptr) w->header(h.base).u32(members);
        for (uint32_t i = 0; i < members; ++i)
          if (int32_t s = geometry(at, h.base - 3, w)) return s;
        return XGWKB_OK;
      }
    }
  }

  uint64_t size() const { return size_; }
  std::size_t fault() const { return fault_; }
  const byte* data() const { return data_; }

  _xgWKB_POINT point(std::size_t at, bool big) const {
    const byte* p = data_ + at;
    return big ? _xgWKB_POINT{load_f64_big(p), load_f64_big(p + 8)} : _xgWKB_POINT{load_f64(p), load_f64(p + 8)};
  }

 private:
  std::size_t left(std::size_t at) const { return len_ - at; }

  int32_t fail(int32_t status, std::size_t offset) {
    fault_ = offset;
    return status;
  }

  // Reads a u32 count whose items take at least `min_item` bytes each, so that a count larger
  // than the bytes left can allow is refused before anything loops or sizes over it.
  int32_t count(std::size_t& at, bool big, std::size_t min_item, uint32_t* n) {
    if (left(at) < 4) return fail(XGWKB_E_WKB_TRUNCATED, at);
    *n = big ? load_u32_big(data_ + at) : load_u32(data_ + at);
    if (*n > (left(at) - 4) / min_item) return fail(XGWKB_E_WKB_TRUNCATED, at);
    at += 4;
    return XGWKB_OK;
  }

  int32_t header(std::size_t& at, Header& h) {
    if (left(at) < kHeaderSize) return fail(XGWKB_E_WKB_TRUNCATED, at);
    const byte order = data_[at];
    if (order > 1) return fail(XGWKB_E_WKB_BYTE_ORDER, at);
    h.big = order == 0;
    const uint32_t raw = h.big ? load_u32_big(data_ + at + 1) : load_u32(data_ + at + 1);
    bool z = (raw & kEwkbZ) != 0, m = (raw & kEwkbM) != 0;
    const bool srid = (raw & kEwkbSrid) != 0;
    uint32_t code = raw & ~(kEwkbZ | kEwkbM | kEwkbSrid);
    if (code >= 1000 && code < 4000) {
      if (z || m) return fail(XGWKB_E_INVALID_GEOMETRY_TYPE, at + 1);  // both conventions at once
      const uint32_t iso = code / 1000;
      z = iso == 1 || iso == 3;
      m = iso == 2 || iso == 3;
      code %= 1000;
    }
    if (code == kCollection) return fail(XGWKB_E_WKB_COLLECTION, at + 1);
    if (code < XGWKB_TYPE_POINT || code > XGWKB_TYPE_MULTIPOLYGON) return fail(XGWKB_E_INVALID_GEOMETRY_TYPE, at + 1);
    if ((z && (flags_ & XGWKB_REFUSE_Z)) || (m && (flags_ & XGWKB_REFUSE_M)))
      return fail(XGWKB_E_EXTRA_ORDINATES, at + 1);
    h.base = code;
    h.dims = 2 + (z ? 1 : 0) + (m ? 1 : 0);
    at += kHeaderSize;
    if (srid) {
      if (left(at) < 4) return fail(XGWKB_E_WKB_TRUNCATED, at);
      at += 4;  // the reference system identifier is not kept
    }
    return XGWKB_OK;
  }

  // A counted point run: u32 n then n points of h.dims ordinates, written as n and n (x, y).
  int32_t run(std::size_t& at, const Header& h, BlobWriter* w) {
    const std::size_t point_bytes = 8 * std::size_t{h.dims};
    uint32_t n = 0;
    if (int32_t s = count(at, h.big, point_bytes, &n)) return s;
    size_ += 4 + kCoordSize * uint64_t{n};
    if (w != nullptr) {
      w->u32(n);
      if (!h.big && h.dims == 2 && detail::kHostLittleEndian) {
        w->bytes(data_ + at, kCoordSize * std::size_t{n});  // already the blob's layout
      } else {
        for (uint32_t i = 0; i < n; ++i) w->point(point(at + point_bytes * i, h.big));
      }
    }
    at += point_bytes * n;
    return XGWKB_OK;
  }

  const byte* data_;
  std::size_t len_;
  uint32_t flags_;
  uint64_t size_ = 0;
  std::size_t fault_ = 0;
};

}  // namespace

int32_t read_wkb(const byte* data, std::size_t len, uint32_t flags, byte** out, std::size_t* fault_offset) {
  WkbWalk walk(data, len, flags);
  std::size_t at = 0;
  Header top;
  if (int32_t s = walk.geometry(at, 0, nullptr, &top)) {
    *fault_offset = walk.fault();
    return s;
  }
  if (at != len) {
    *fault_offset = at;
    return XGWKB_E_WKB_TRAILING;
  }
  if (walk.size() > UINT32_MAX) {
    *fault_offset = 0;
    return XGWKB_E_BUFFER_SIZE;
  }
  if (top.base == XGWKB_TYPE_POINT) {
    const _xgWKB_POINT p = walk.point(len - 8 * std::size_t{top.dims}, top.big);
    if (std::isnan(p.x) && std::isnan(p.y)) {  // POINT EMPTY: the library's empty shape is nil
      byte* nil = blob_alloc(kHeaderSize);
      if (nil == nullptr) return XGWKB_E_FAILED;
      write_header(nil, XGWKB_TYPE_NIL);
      *out = nil;
      return XGWKB_OK;
    }
  }
  byte* blob = blob_alloc(static_cast<std::size_t>(walk.size()));
  if (blob == nullptr) return XGWKB_E_FAILED;
  BlobWriter w(blob);
  at = 0;
  walk.geometry(at, 0, &w);  // cannot fail: the same walk succeeded above
  *out = blob;
  return XGWKB_OK;
}

}  // namespace xg
