#include "support/blob_builder.h"

#include <cstring>

namespace xgtest {

void put_u32(Bytes& b, uint32_t v) {
  for (int i = 0; i < 4; ++i) b.push_back(static_cast<unsigned char>(v >> (8 * i)));
}

void put_f64(Bytes& b, double v) {
  uint64_t bits;
  std::memcpy(&bits, &v, sizeof bits);
  for (int i = 0; i < 8; ++i) b.push_back(static_cast<unsigned char>(bits >> (8 * i)));
}

void put_header(Bytes& b, uint32_t type) {
  b.push_back(0);
  put_u32(b, type);
}

Bytes header(uint32_t type) {
  Bytes b;
  put_header(b, type);
  return b;
}

Bytes point(double x, double y) {
  Bytes b = header(XGWKB_TYPE_POINT);
  put_f64(b, x);
  put_f64(b, y);
  return b;
}

static void put_run(Bytes& b, const Ring& pts) {
  put_u32(b, static_cast<uint32_t>(pts.size()));
  for (const _xgWKB_POINT& p : pts) {
    put_f64(b, p.x);
    put_f64(b, p.y);
  }
}

Bytes linestring(const Ring& pts) {
  Bytes b = header(XGWKB_TYPE_LINESTRING);
  put_run(b, pts);
  return b;
}

Bytes polygon(const std::vector<Ring>& rings) {
  Bytes b = header(XGWKB_TYPE_POLYGON);
  put_u32(b, static_cast<uint32_t>(rings.size()));
  for (const Ring& r : rings) put_run(b, r);
  return b;
}

Bytes multi(uint32_t type, const std::vector<Bytes>& members) {
  Bytes b = header(type);
  put_u32(b, static_cast<uint32_t>(members.size()));
  for (const Bytes& m : members) b.insert(b.end(), m.begin(), m.end());
  return b;
}

Bytes multiline(const std::vector<Ring>& lines) {
  std::vector<Bytes> members;
  for (const Ring& r : lines) members.push_back(linestring(r));
  return multi(XGWKB_TYPE_MULTILINESTRING, members);
}

Bytes nil() { return header(XGWKB_TYPE_NIL); }

Bytes take_shape(unsigned char* shape) {
  uint32_t size = static_cast<uint32_t>(header(XGWKB_TYPE_NIL).size());  // nil: its header alone
  if (shape[1] != XGWKB_TYPE_NIL) xgWKB_shape_get_WKB_size(shape, &size);
  Bytes b(shape, shape + size);
  xgWKB_shape_free(shape);
  return b;
}

Misaligned::Misaligned(const Bytes& blob, std::size_t shift) : shift_(shift) {
  // vector storage is at least 8-aligned, so an odd shift misaligns every double; the storage is
  // reserved exactly, so the blob ends where the heap buffer ends and a read past it shows under
  // the address sanitizer.
  storage_.reserve(shift + blob.size());
  storage_.assign(shift, 0);
  storage_.insert(storage_.end(), blob.begin(), blob.end());
}

Ring square(double x0, double y0, double size) {
  return {{x0, y0}, {x0 + size, y0}, {x0 + size, y0 + size}, {x0, y0 + size}, {x0, y0}};
}

}  // namespace xgtest
