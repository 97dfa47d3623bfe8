// stream_encoder.cpp - shape blob to compressed coordinate stream.
#include "codec/stream_encoder.h"

#include "codec/stream_format.h"
#include "codec/varint_code.h"
#include "core/blob.h"

namespace xg {
namespace codec {
namespace {

// ---- planning: types, range and the capacity bound ---------------------------------------

struct Tally {
  uint64_t points = 0, rings = 0, parts = 0;
  bool inside = true;
};

// Tallies a counted point run; returns its end.  The range test runs on the run's box (kept
// branch-free so that the loop vectorises) plus a test for NaN, which no box comparison sees.
const byte* tally_run(const byte* run, const Frame& frame, Tally& t) {
  const uint32_t n = load_u32(run);
  const byte* c = run + 4;
  if (n == 0) return c;
  double lo_x = load_f64(c), hi_x = lo_x, lo_y = load_f64(c + 8), hi_y = lo_y;
  bool nan = false;
  for (uint32_t i = 0; i < n; ++i, c += kCoordSize) {
    const double x = load_f64(c), y = load_f64(c + 8);
    lo_x = x < lo_x ? x : lo_x;
    hi_x = x > hi_x ? x : hi_x;
    lo_y = y < lo_y ? y : lo_y;
    hi_y = y > hi_y ? y : hi_y;
    nan |= (x != x) | (y != y);
  }
  t.inside &= !nan && frame.contains(lo_x, lo_y) && frame.contains(hi_x, hi_y);
  t.points += n;
  return c;
}

const byte* tally_polygon(const byte* polygon, const Frame& frame, Tally& t) {
  const uint32_t rings = shape_count(polygon);
  const byte* at = polygon + kCountedHeaderSize;
  for (uint32_t i = 0; i < rings; ++i) at = tally_run(at, frame, t);
  t.rings += rings;
  return at;
}

// ---- writing -----------------------------------------------------------------------------

// Appends codes, remembering the running point that the next difference starts from.
class CodeWriter {
 public:
  CodeWriter(byte* at, const Frame& frame) : at_(at), frame_(frame) {}

  byte* position() const { return at_; }
  // The next point is written as its integers.
  void fresh() { px_ = py_ = 0; }

  // Writes the point of the coordinate pair at c.
  void point(const byte* c) {
    byte* at = at_;
    write(&at, to_unit(load_f64(c), frame_.origin_x, frame_.scale),
          to_unit(load_f64(c + 8), frame_.origin_y, frame_.scale), &px_, &py_);
    at_ = at;
  }

  // Writes a point unless it repeats the one written before it (when skip_repeat).  Returns
  // whether it was written.
  bool distinct_point(const byte* c) {
    const int32_t ix = to_unit(load_f64(c), frame_.origin_x, frame_.scale);
    const int32_t iy = to_unit(load_f64(c + 8), frame_.origin_y, frame_.scale);
    if (ix == px_ && iy == py_) return false;
    byte* at = at_;
    write(&at, ix, iy, &px_, &py_);
    at_ = at;
    return true;
  }

  // Writes the points of a counted run: the first always, every later one unless it repeats
  // the point written before it.  Returns the number written.
  uint32_t run(const byte* run) {
    const uint32_t n = load_u32(run);
    if (n == 0) return 0;
    const byte* c = run + 4;
    point(c);
    // The loop keeps everything in locals: its byte stores could alias the members otherwise.
    byte* at = at_;
    int32_t px = px_, py = py_;
    const Frame f = frame_;
    uint32_t written = 1;
    for (uint32_t i = 1; i < n; ++i) {
      c += kCoordSize;
      const int32_t ix = to_unit(load_f64(c), f.origin_x, f.scale);
      const int32_t iy = to_unit(load_f64(c + 8), f.origin_y, f.scale);
      if (ix == px && iy == py) continue;
      write(&at, ix, iy, &px, &py);
      ++written;
    }
    at_ = at;
    px_ = px;
    py_ = py;
    return written;
  }

  // The difference that takes the running point to (-1, 0): (-x - 1, -y).
  void separator() {
    at_ = put_code(at_, -px_ - 1);
    at_ = put_code(at_, -py_);
    px_ = -1;
    py_ = 0;
  }

  void u32(uint32_t v) {
    store_u32(at_, v);
    at_ += 4;
  }

  // Where a piece that may be taken back out starts: the position and the running point.
  struct Mark {
    byte* at;
    int32_t px, py;
  };
  Mark mark() const { return {at_, px_, py_}; }
  void rewind(const Mark& m) {
    at_ = m.at;
    px_ = m.px;
    py_ = m.py;
  }

 private:
  // Both integers lie in 0..2147483647, so the differences fit in 32 bits.
  static void write(byte** at, int32_t ix, int32_t iy, int32_t* px, int32_t* py) {
    *at = put_code_wide(*at, ix - *px);
    *at = put_code_wide(*at, iy - *py);
    *px = ix;
    *py = iy;
  }

  byte* at_;
  const Frame frame_;
  int32_t px_ = 0, py_ = 0;
};

// Writes a polygon's rings (u32 count, points), continuing from the running point.  A ring left
// with fewer than 4 points is taken back out whole, and the running point returns to the end of
// the last ring kept; when that happens to the outer ring, nothing of the polygon stays.
// Returns the number of rings kept.
uint32_t write_polygon(CodeWriter& w, const byte* polygon) {
  const uint32_t rings = shape_count(polygon);
  const byte* at = polygon + kCountedHeaderSize;
  uint32_t kept = 0;
  for (uint32_t r = 0; r < rings; ++r) {
    const CodeWriter::Mark start = w.mark();
    w.u32(0);  // the count, filled in below
    const uint32_t n = w.run(at);
    at += wkb_ring_size(at);
    if (n < kMinRingPoints) {
      w.rewind(start);
      if (r == 0) return 0;
      continue;
    }
    store_u32(start.at, n);
    ++kept;
  }
  return kept;
}

bool write_linestring(CodeWriter& w, const byte* line) {
  w.fresh();
  return w.run(line + kHeaderSize) >= kMinLinePoints;
}

void write_multipoint(CodeWriter& w, const byte* multi) {
  w.fresh();
  const uint32_t members = shape_count(multi);
  const byte* at = multi + kCountedHeaderSize;
  for (uint32_t i = 0; i < members; ++i, at += kPointBlobSize) {
    if (i == 0) {
      w.point(at + kHeaderSize);
    } else {
      w.distinct_point(at + kHeaderSize);
    }
  }
}

// Lines each written fresh, a separator after every kept line but the shape's last.  A line
// left with fewer than 2 points is taken back out; when that is the last line, the separator
// after the line kept before it goes too.  Returns whether any line was kept.
bool write_multilinestring(CodeWriter& w, const byte* multi) {
  const uint32_t members = shape_count(multi);
  const byte* at = multi + kCountedHeaderSize;
  bool any = false;
  byte* last_separator = nullptr;
  for (uint32_t i = 0; i < members; ++i) {
    const bool last = i + 1 == members;
    const CodeWriter::Mark start = w.mark();
    w.fresh();
    const uint32_t n = w.run(at + kHeaderSize);
    at += kHeaderSize + wkb_ring_size(at + kHeaderSize);
    if (n < kMinLinePoints) {
      w.rewind(start);
      if (last && last_separator != nullptr) w.rewind({last_separator, 0, 0});
      continue;
    }
    any = true;
    if (!last) {
      last_separator = w.position();
      w.separator();
    }
  }
  return any;
}

// Member polygons each written fresh, a u32 0 after every kept member but the shape's last.  A
// member whose outer ring is dropped (or that has no ring) is dropped whole; when that is the
// last member, the 0 after the member kept before it goes too.  Returns whether any member was
// kept.
bool write_multipolygon(CodeWriter& w, const byte* multi) {
  const uint32_t members = shape_count(multi);
  const byte* at = multi + kCountedHeaderSize;
  bool any = false;
  byte* last_zero = nullptr;
  for (uint32_t i = 0; i < members; ++i) {
    const bool last = i + 1 == members;
    w.fresh();
    const uint32_t kept = write_polygon(w, at);
    at += member_size(at);
    if (kept == 0) {
      if (last && last_zero != nullptr) w.rewind({last_zero, 0, 0});
      continue;
    }
    any = true;
    if (!last) {
      last_zero = w.position();
      w.u32(0);
    }
  }
  return any;
}

}  // namespace

int32_t plan_stream(const byte* shape, const Frame& frame, int64_t* capacity) {
  const uint32_t type = shape_type(shape);
  if (!is_geometry_type(type)) return XGWKB_E_INVALID_GEOMETRY_TYPE;
  Tally t;
  switch (type) {
    case XGWKB_TYPE_POINT: {
      const byte* c = shape + kHeaderSize;
      t.inside = frame.contains(load_f64(c), load_f64(c + 8));
      t.points = 1;
      break;
    }
    case XGWKB_TYPE_LINESTRING:
      tally_run(shape + kHeaderSize, frame, t);
      break;
    case XGWKB_TYPE_POLYGON:
      tally_polygon(shape, frame, t);
      break;
    default: {  // the multi-types
      const uint32_t member_type = type - 3;
      const uint32_t members = shape_count(shape);
      const byte* at = shape + kCountedHeaderSize;
      for (uint32_t i = 0; i < members; ++i) {
        if (shape_type(at) != member_type) return XGWKB_E_INVALID_SHAPE;
        if (member_type == XGWKB_TYPE_POINT) {
          const byte* c = at + kHeaderSize;
          t.inside &= frame.contains(load_f64(c), load_f64(c + 8));
          ++t.points;
          at += kPointBlobSize;
        } else if (member_type == XGWKB_TYPE_LINESTRING) {
          at = tally_run(at + kHeaderSize, frame, t);
        } else {
          at = tally_polygon(at, frame, t);
        }
      }
      t.parts = members;
      break;
    }
  }
  if (!t.inside) return XGWKB_E_CODEC_RANGE;
  // Every point codes in at most 10 bytes, as does a separator; counts and 0 words take 4.
  const int64_t points = static_cast<int64_t>(t.points), rings = static_cast<int64_t>(t.rings),
                parts = static_cast<int64_t>(t.parts);
  int64_t need = 10 * points + static_cast<int64_t>(kStreamHeaderSize);
  if (type == XGWKB_TYPE_POLYGON) need += 4 * rings;
  if (type == XGWKB_TYPE_MULTILINESTRING) need += 10 * (parts - 1);
  if (type == XGWKB_TYPE_MULTIPOLYGON) need += 4 * (parts + rings - 1);
  if (need < static_cast<int64_t>(kStreamHeaderSize)) need = kStreamHeaderSize;
  *capacity = need + kWideSlack;
  return XGWKB_OK;
}

int32_t write_stream(const byte* shape, const Frame& frame, byte* out, int32_t* size) {
  const uint32_t type = shape_type(shape);
  out[0] = kStreamMark;
  store_u32(out + 1, kStreamTypeBase + type);
  CodeWriter w(out + kStreamHeaderSize, frame);
  bool written = true;
  switch (type) {
    case XGWKB_TYPE_POINT:
      w.point(shape + kHeaderSize);
      break;
    case XGWKB_TYPE_LINESTRING:
      written = write_linestring(w, shape);
      break;
    case XGWKB_TYPE_POLYGON:
      w.fresh();
      written = write_polygon(w, shape) != 0;
      break;
    case XGWKB_TYPE_MULTIPOINT:
      write_multipoint(w, shape);  // never fails: an empty multipoint has an empty body
      break;
    case XGWKB_TYPE_MULTILINESTRING:
      written = write_multilinestring(w, shape);
      break;
    default:
      written = write_multipolygon(w, shape);
      break;
  }
  if (!written) return XGWKB_E_CODEC_NOTHING;
  const auto length = static_cast<uint32_t>(w.position() - out);
  store_u32(out + 5, length);
  *size = static_cast<int32_t>(length);
  return XGWKB_OK;
}

}  // namespace codec
}  // namespace xg
