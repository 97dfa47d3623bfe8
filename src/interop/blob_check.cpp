// blob_check.cpp - bounded walk over a blob of unknown origin (see blob_check.h).
#include "interop/blob_check.h"

namespace xg {
namespace {

// Walks the geometry at `at` (of type `want` when non-zero) without reading past len; advances
// at past it.
class BlobCheck {
 public:
  BlobCheck(const byte* s, std::size_t len) : s_(s), len_(len) {}

  int32_t geometry(std::size_t& at, uint32_t want) {
    if (len_ - at < kHeaderSize) return XGWKB_E_BLOB_TOO_SMALL;
    const uint32_t type = shape_type(s_ + at);
    if (!is_geometry_type(type) || (want != 0 && type != want)) return XGWKB_E_INVALID_GEOMETRY_TYPE;
    at += kHeaderSize;
    switch (type) {
      case XGWKB_TYPE_POINT:
        return skip(at, kCoordSize);
      case XGWKB_TYPE_LINESTRING:
        return run(at);
      case XGWKB_TYPE_POLYGON: {
        uint32_t rings = 0;
        if (int32_t s = count(at, 4, &rings)) return s;
        for (uint32_t i = 0; i < rings; ++i)
          if (int32_t s = run(at)) return s;
        return XGWKB_OK;
      }
      default: {
        uint32_t members = 0;
        if (int32_t s = count(at, kHeaderSize, &members)) return s;
        for (uint32_t i = 0; i < members; ++i)
          if (int32_t s = geometry(at, type - 3)) return s;
        return XGWKB_OK;
      }
    }
  }

 private:
  int32_t skip(std::size_t& at, std::size_t n) {
    if (len_ - at < n) return XGWKB_E_BLOB_TOO_SMALL;
    at += n;
    return XGWKB_OK;
  }

  // A u32 count of items of at least min_item bytes each, tested against the bytes left.
  int32_t count(std::size_t& at, std::size_t min_item, uint32_t* n) {
    if (len_ - at < 4) return XGWKB_E_BLOB_TOO_SMALL;
    *n = load_u32(s_ + at);
    at += 4;
    return *n > (len_ - at) / min_item ? int32_t{XGWKB_E_BLOB_TOO_SMALL} : int32_t{XGWKB_OK};
  }

  int32_t run(std::size_t& at) {
    uint32_t n = 0;
    if (int32_t s = count(at, kCoordSize, &n)) return s;
    at += kCoordSize * std::size_t{n};
    return XGWKB_OK;
  }

  const byte* s_;
  std::size_t len_;
};

}  // namespace

int32_t check_blob(const byte* shape, std::size_t len) {
  if (len < kHeaderSize) return XGWKB_E_BLOB_TOO_SMALL;
  std::size_t size = 0;
  switch (shape_type(shape)) {
    case XGWKB_TYPE_NIL:
      size = kHeaderSize;
      break;
    case XGWKB_TYPE_ENVELOPE:
      size = kEnvelopeBlobSize;
      break;
    default: {
      BlobCheck check(shape, len);
      if (int32_t s = check.geometry(size, 0)) return s;
    }
  }
  if (len < size) return XGWKB_E_BLOB_TOO_SMALL;
  if (size > UINT32_MAX) return XGWKB_E_BUFFER_SIZE;  // sizes are 32-bit throughout the library
  return len == size ? int32_t{XGWKB_OK} : int32_t{XGWKB_E_BUFFER_SIZE};
}

}  // namespace xg
