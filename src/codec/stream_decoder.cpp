// stream_decoder.cpp - compressed coordinate stream to shape blob, bounded by the bytes given.
//
// The decoder reads the body once, writing the blob as it goes into a sink that grows on
// demand; counts of the blob (points of a line, rings, members) are filled in when known.  Every
// read is checked against the end of the body, and every running point against the integer
// range, so a stream from anywhere gives either a well-formed blob or -501.
#include "codec/stream_decoder.h"

#include "codec/stream_format.h"
#include "codec/varint_code.h"
#include "core/blob.h"

namespace xg {
namespace codec {
namespace {

constexpr int32_t kMalformed = XGWKB_E_CODEC_NOTHING;
constexpr std::size_t kMaxBlobSize = 2147483647;

class Decoder {
 public:
  Decoder(const byte* body, const byte* end, const Frame& frame, BlobSink& sink)
      : p_(body), end_(end), frame_(frame), sink_(sink) {}

  int32_t run(uint32_t shape_type);
  std::size_t size() const { return size_; }

 private:
  // Room for n more bytes of blob; XGWKB_OK or XGWKB_E_FAILED.
  int32_t reserve(std::size_t n) {
    const std::size_t need = size_ + n;
    if (need <= sink_.capacity) return XGWKB_OK;
    if (need > kMaxBlobSize || !sink_.grow(need)) return XGWKB_E_FAILED;
    return XGWKB_OK;
  }
  byte* at() const { return sink_.data + size_; }

  // Reads the next difference and adds it to the running point into (*x, *y); the running point
  // itself is left to the caller.  False when a code is malformed.
  bool next(int64_t* x, int64_t* y) {
    int64_t dx, dy;
    const byte* q = get_code(p_, end_, &dx);
    if (q == nullptr) return false;
    q = get_code(q, end_, &dy);
    if (q == nullptr) return false;
    p_ = q;
    *x = px_ + dx;
    *y = py_ + dy;
    return true;
  }
  static bool in_range(int64_t x, int64_t y) {
    return (x >= 0) & (x <= kMaxUnit) & (y >= 0) & (y <= kMaxUnit);
  }
  // Stores the point of the running point (x, y) at out and makes it the running point.
  void put(byte* out, int64_t x, int64_t y) {
    store_f64(out, from_unit(x, frame_.origin_x, frame_.scale));
    store_f64(out + 8, from_unit(y, frame_.origin_y, frame_.scale));
    px_ = x;
    py_ = y;
  }
  void fresh() { px_ = py_ = 0; }

  // A blob header with a count to fill in later; returns the offset of the count.
  int32_t counted_header(uint32_t type, std::size_t* count_at) {
    if (int32_t s = reserve(kCountedHeaderSize)) return s;
    write_header(at(), type);
    *count_at = size_ + kHeaderSize;
    size_ += kCountedHeaderSize;
    return XGWKB_OK;
  }
  void fill_count(std::size_t count_at, uint32_t n) { store_u32(sink_.data + count_at, n); }

  int32_t point();
  int32_t linestring();
  int32_t multipoint();
  int32_t polygon(bool member, bool* more);
  int32_t multilinestring();
  int32_t multipolygon();

  const byte* p_;
  const byte* end_;
  const Frame& frame_;
  BlobSink& sink_;
  std::size_t size_ = 0;
  int64_t px_ = 0, py_ = 0;
};

int32_t Decoder::point() {
  int64_t x, y;
  if (!next(&x, &y) || !in_range(x, y) || p_ != end_) return kMalformed;
  if (int32_t s = reserve(kPointBlobSize)) return s;
  write_header(at(), XGWKB_TYPE_POINT);
  put(at() + kHeaderSize, x, y);
  size_ += kPointBlobSize;
  return XGWKB_OK;
}

int32_t Decoder::linestring() {
  std::size_t count_at;
  if (int32_t s = counted_header(XGWKB_TYPE_LINESTRING, &count_at)) return s;
  uint32_t n = 0;
  while (p_ != end_) {
    int64_t x, y;
    if (!next(&x, &y) || !in_range(x, y)) return kMalformed;
    if (int32_t s = reserve(kCoordSize)) return s;
    put(at(), x, y);
    size_ += kCoordSize;
    ++n;
  }
  if (n < kMinLinePoints) return kMalformed;
  fill_count(count_at, n);
  return XGWKB_OK;
}

int32_t Decoder::multipoint() {
  std::size_t count_at;
  if (int32_t s = counted_header(XGWKB_TYPE_MULTIPOINT, &count_at)) return s;
  uint32_t n = 0;  // an empty body is the empty multipoint
  while (p_ != end_) {
    int64_t x, y;
    if (!next(&x, &y) || !in_range(x, y)) return kMalformed;
    if (int32_t s = reserve(kPointBlobSize)) return s;
    write_header(at(), XGWKB_TYPE_POINT);
    put(at() + kHeaderSize, x, y);
    size_ += kPointBlobSize;
    ++n;
  }
  fill_count(count_at, n);
  return XGWKB_OK;
}

// One polygon body, continuing from the running point.  As a multipolygon member (member true)
// it also ends at a count of 0, which must come after a ring and before a further member; *more
// tells whether it did.
int32_t Decoder::polygon(bool member, bool* more) {
  std::size_t count_at;
  if (int32_t s = counted_header(XGWKB_TYPE_POLYGON, &count_at)) return s;
  uint32_t rings = 0;
  *more = false;
  while (p_ != end_) {
    if (end_ - p_ < 4) return kMalformed;
    const uint32_t n = load_u32(p_);
    p_ += 4;
    if (n == 0 && member && rings != 0 && p_ != end_) {
      *more = true;
      break;
    }
    // A point takes at least two bytes, which also bounds what the blob can grow to.
    if (n < kMinRingPoints || n > static_cast<std::size_t>(end_ - p_) / 2) return kMalformed;
    if (int32_t s = reserve(4 + kCoordSize * static_cast<std::size_t>(n))) return s;
    store_u32(at(), n);
    size_ += 4;
    for (uint32_t i = 0; i < n; ++i) {
      int64_t x, y;
      if (!next(&x, &y) || !in_range(x, y)) return kMalformed;
      put(at(), x, y);
      size_ += kCoordSize;
    }
    ++rings;
  }
  if (rings == 0) return kMalformed;
  fill_count(count_at, rings);
  return XGWKB_OK;
}

int32_t Decoder::multilinestring() {
  std::size_t members_at;
  if (int32_t s = counted_header(XGWKB_TYPE_MULTILINESTRING, &members_at)) return s;
  uint32_t lines = 0;
  bool more = true;
  while (more) {
    std::size_t count_at;
    if (int32_t s = counted_header(XGWKB_TYPE_LINESTRING, &count_at)) return s;
    fresh();
    uint32_t n = 0;
    more = false;
    while (p_ != end_) {
      int64_t x, y;
      if (!next(&x, &y)) return kMalformed;
      if (x == -1 && y == 0 && n != 0) {  // the separator before the next line
        more = true;
        break;
      }
      if (!in_range(x, y)) return kMalformed;
      if (int32_t s = reserve(kCoordSize)) return s;
      put(at(), x, y);
      size_ += kCoordSize;
      ++n;
    }
    if (n < kMinLinePoints || (more && p_ == end_)) return kMalformed;
    fill_count(count_at, n);
    ++lines;
  }
  fill_count(members_at, lines);
  return XGWKB_OK;
}

int32_t Decoder::multipolygon() {
  std::size_t members_at;
  if (int32_t s = counted_header(XGWKB_TYPE_MULTIPOLYGON, &members_at)) return s;
  uint32_t members = 0;
  bool more = true;
  while (more) {
    fresh();
    if (int32_t s = polygon(true, &more)) return s;
    ++members;
  }
  fill_count(members_at, members);
  return XGWKB_OK;
}

int32_t Decoder::run(uint32_t shape_type) {
  bool more = false;
  switch (shape_type) {
    case XGWKB_TYPE_POINT:
      return point();
    case XGWKB_TYPE_LINESTRING:
      return linestring();
    case XGWKB_TYPE_POLYGON:
      return polygon(false, &more);
    case XGWKB_TYPE_MULTIPOINT:
      return multipoint();
    case XGWKB_TYPE_MULTILINESTRING:
      return multilinestring();
    case XGWKB_TYPE_MULTIPOLYGON:
      return multipolygon();
    default:
      return kMalformed;
  }
}

}  // namespace

int32_t read_stream(const byte* stream, std::size_t available, const Frame& frame, BlobSink& sink,
                    int32_t* size) {
  if (available < kStreamHeaderSize || stream[0] != kStreamMark) return kMalformed;
  const uint32_t type = load_u32(stream + 1);
  const uint32_t length = load_u32(stream + 5);
  if (!is_stream_type(type) || length < kStreamHeaderSize || length > available) return kMalformed;
  Decoder decoder(stream + kStreamHeaderSize, stream + length, frame, sink);
  if (int32_t s = decoder.run(type - kStreamTypeBase)) return s;
  *size = static_cast<int32_t>(decoder.size());
  return XGWKB_OK;
}

}  // namespace codec
}  // namespace xg
