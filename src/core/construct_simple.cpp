// construct_simple.cpp - shapes built from caller arrays of points and from boxes.
//
// Every builder sums the exact size first, allocates once and writes with BlobWriter.  Nothing
// is reordered, closed or reoriented: what the caller gives is what is stored.
#include "core/boundary.h"
#include "core/construct.h"

using namespace xg;

namespace {

// Hands a finished block to the caller, or reports that memory ran out.
int32_t deliver(byte* blob, byte** out) {
  if (blob == nullptr) return kOutOfMemory;
  *out = blob;
  return XGWKB_OK;
}

}  // namespace

namespace xg {

byte* polygon_of_box(const _xgWKB_BOX& b) {
  byte* blob = blob_alloc(kCountedHeaderSize + run_bytes(5));
  if (blob == nullptr) return nullptr;
  // Clockwise and closed: lower left, upper left, upper right, lower right, lower left.
  BlobWriter(blob)
      .header(XGWKB_TYPE_POLYGON)
      .u32(1)
      .u32(5)
      .point({b.minx, b.miny})
      .point({b.minx, b.maxy})
      .point({b.maxx, b.maxy})
      .point({b.maxx, b.miny})
      .point({b.minx, b.miny});
  return blob;
}

int32_t make_multiline(int32_t parts, const int32_t* counts, const _xgWKB_POINT* points, byte** out) {
  if (points == nullptr) return XGWKB_E_NULL_POINTER;
  if (parts < 0) return XGWKB_E_INVALID_ARGUMENT;
  if (parts > 0 && counts == nullptr) return XGWKB_E_NULL_POINTER;
  // Every count is tested while the size is summed, before anything is allocated.
  std::size_t size = kCountedHeaderSize;
  for (int32_t i = 0; i < parts; ++i) {
    if (counts[i] < 2) return XGWKB_E_TOO_FEW_POINTS;
    size += kHeaderSize + run_bytes(counts[i]);
  }
  if (out == nullptr) return XGWKB_E_NULL_POINTER;
  byte* blob = blob_alloc(size);
  if (blob == nullptr) return XGWKB_E_FAILED;
  BlobWriter w(blob);
  w.header(XGWKB_TYPE_MULTILINESTRING).u32(static_cast<uint32_t>(parts));
  const _xgWKB_POINT* next = points;
  for (int32_t i = 0; i < parts; ++i) {
    w.header(XGWKB_TYPE_LINESTRING).u32(static_cast<uint32_t>(counts[i])).points(next, counts[i]);
    next += counts[i];
  }
  *out = blob;
  return XGWKB_OK;
}

}  // namespace xg

extern "C" {

int32_t xgWKB_shape_generate_point(const _xgWKB_POINT* p, unsigned char** out) noexcept {
  if (p == nullptr || out == nullptr) return XGWKB_E_NULL_POINTER;
  return guarded([&] {
    byte* blob = blob_alloc(kPointBlobSize);
    if (blob != nullptr) BlobWriter(blob).point_blob(*p);
    return deliver(blob, out);
  });
}

int32_t xgWKB_shape_generate_multipoint(int32_t k, const _xgWKB_POINT* points,
                                        unsigned char** out) noexcept {
  // The count is tested before the array: k = 0 with a null array is -148.
  if (k <= 0) return XGWKB_E_TOO_FEW_POINTS;
  if (points == nullptr || out == nullptr) return XGWKB_E_NULL_POINTER;
  return guarded([&] {
    byte* blob = blob_alloc(kCountedHeaderSize + kPointBlobSize * static_cast<std::size_t>(k));
    if (blob != nullptr) {
      BlobWriter w(blob);
      w.header(XGWKB_TYPE_MULTIPOINT).u32(static_cast<uint32_t>(k));
      for (int32_t i = 0; i < k; ++i) w.point_blob(points[i]);
    }
    return deliver(blob, out);
  });
}

int32_t xgWKB_shape_generate_line(int32_t n, const _xgWKB_POINT* points,
                                  unsigned char** out) noexcept {
  if (points == nullptr) return XGWKB_E_NULL_POINTER;
  if (n < 2) return XGWKB_E_TOO_FEW_POINTS;
  if (out == nullptr) return XGWKB_E_NULL_POINTER;
  return guarded([&] {
    byte* blob = blob_alloc(kHeaderSize + run_bytes(n));
    if (blob != nullptr) {
      BlobWriter(blob)
          .header(XGWKB_TYPE_LINESTRING)
          .u32(static_cast<uint32_t>(n))
          .points(points, n);
    }
    return deliver(blob, out);
  });
}

int32_t xgWKB_shape_generate_multiline(int32_t total, int32_t parts, const int32_t* counts,
                                       const _xgWKB_POINT* points, unsigned char** out) noexcept {
  (void)total;  // the point total is implied by counts and is not used
  return guarded([&] { return make_multiline(parts, counts, points, out); });
}

int32_t xgWKB_shape_generate_polygon(int32_t total, int32_t rings, const int32_t* counts,
                                     const _xgWKB_POINT* points, unsigned char** out) noexcept {
  if (points == nullptr) return XGWKB_E_NULL_POINTER;
  // The total is tested even when counts are given.
  if (total < 4) return XGWKB_E_TOO_FEW_POINTS;
  std::size_t size = kCountedHeaderSize;
  if (counts != nullptr) {
    if (rings < 0) return XGWKB_E_INVALID_ARGUMENT;
    for (int32_t i = 0; i < rings; ++i) {
      if (counts[i] < 4) return XGWKB_E_TOO_FEW_POINTS;
      size += run_bytes(counts[i]);
    }
  } else {
    if (rings != 1) return XGWKB_E_INVALID_ARGUMENT;
    size += run_bytes(total);
  }
  if (out == nullptr) return XGWKB_E_NULL_POINTER;
  return guarded([&] {
    byte* blob = blob_alloc(size);
    if (blob != nullptr) {
      BlobWriter w(blob);
      w.header(XGWKB_TYPE_POLYGON).u32(static_cast<uint32_t>(rings));
      if (counts == nullptr) {
        w.u32(static_cast<uint32_t>(total)).points(points, total);
      } else {
        const _xgWKB_POINT* next = points;
        for (int32_t i = 0; i < rings; ++i) {
          w.u32(static_cast<uint32_t>(counts[i])).points(next, counts[i]);
          next += counts[i];
        }
      }
    }
    return deliver(blob, out);
  });
}

int32_t xgWKB_shape_generate_envelope(const _xgWKB_BOX* box, unsigned char** out) noexcept {
  if (box == nullptr || out == nullptr) return XGWKB_E_NULL_POINTER;
  return guarded([&] {
    byte* blob = blob_alloc(kEnvelopeBlobSize);
    if (blob != nullptr) {
      BlobWriter(blob)
          .header(XGWKB_TYPE_ENVELOPE)
          .point({box->minx, box->miny})
          .point({box->maxx, box->maxy});
    }
    return deliver(blob, out);
  });
}

int32_t xgWKB_shape_generate_polygon_from_rectangle(const _xgWKB_BOX* box,
                                                    unsigned char** out) noexcept {
  if (box == nullptr || out == nullptr) return XGWKB_E_NULL_POINTER;
  return guarded([&] { return deliver(polygon_of_box(*box), out); });
}

// Reserved entry points: they accept any arguments, ignore them and succeed.  No coordinate
// reference is ever stored in a shape.
int32_t xgWKB_shape_build(void) noexcept { return XGWKB_OK; }
int32_t xgWKB_shape_filter_coordinate(void) noexcept { return XGWKB_OK; }
int32_t xgWKB_shape_change_coordref(void) noexcept { return XGWKB_OK; }
int32_t xgWKB_shape_get_coordref(void) noexcept { return XGWKB_OK; }

}  // extern "C"
