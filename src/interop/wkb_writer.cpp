// wkb_writer.cpp - standard WKB from a shape (see wkb_writer.h).
//
// The blob layout is already 2D WKB in little-endian order apart from the byte-order bytes, so
// the little-endian form is a copy with those bytes set to 1; the big-endian form swaps every
// number on the way.
#include "interop/wkb_writer.h"

namespace xg {
namespace {

constexpr byte kWkbLittle = 1;
constexpr byte kWkbBig = 0;

class BigEndianCopy {
 public:
  explicit BigEndianCopy(byte* out) : out_(out) {}

  const byte* geometry(const byte* in) {
    const uint32_t type = shape_type(in);
    header(type);
    switch (type) {
      case XGWKB_TYPE_POINT:
        coords(in + kHeaderSize, 1);
        return in + kPointBlobSize;
      case XGWKB_TYPE_LINESTRING:
        return run(in + kHeaderSize);
      case XGWKB_TYPE_POLYGON: {
        const uint32_t rings = shape_count(in);
        u32(rings);
        const byte* at = in + kCountedHeaderSize;
        for (uint32_t i = 0; i < rings; ++i) at = run(at);
        return at;
      }
      default: {
        const uint32_t members = shape_count(in);
        u32(members);
        const byte* at = in + kCountedHeaderSize;
        for (uint32_t i = 0; i < members; ++i) at = geometry(at);
        return at;
      }
    }
  }

 private:
  void header(uint32_t type) {
    *out_++ = kWkbBig;
    u32(type);
  }
  void u32(uint32_t v) {
    store_u32_big(out_, v);
    out_ += 4;
  }
  void coords(const byte* at, uint32_t points) {
    for (uint32_t i = 0; i < 2 * points; ++i, at += 8, out_ += 8) store_f64_big(out_, load_f64(at));
  }
  const byte* run(const byte* at) {
    const uint32_t n = load_u32(at);
    u32(n);
    coords(at + 4, n);
    return at + wkb_ring_size(at);
  }

  byte* out_;
};

// Sets the byte-order byte of the geometry at `at` and of its members to 1.
void mark_little_endian(byte* at) {
  at[0] = kWkbLittle;
  if (!is_multi_type(shape_type(at))) return;
  const uint32_t members = shape_count(at);
  byte* member = at + kCountedHeaderSize;
  for (uint32_t i = 0; i < members; ++i, member += member_size(member)) member[0] = kWkbLittle;
}

}  // namespace

int32_t write_wkb(const byte* shape, bool big_endian, byte** out, uint32_t* size) {
  uint32_t n = 0;
  if (geometry_size(shape, &n) != XGWKB_OK) return XGWKB_E_INVALID_SHAPE;
  byte* wkb = blob_alloc(n);
  if (wkb == nullptr) return XGWKB_E_FAILED;
  if (big_endian) {
    BigEndianCopy(wkb).geometry(shape);
  } else {
    std::memcpy(wkb, shape, n);
    mark_little_endian(wkb);
  }
  *out = wkb;
  *size = n;
  return XGWKB_OK;
}

}  // namespace xg
