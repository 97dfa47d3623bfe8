// stream_encoder.cpp - shape blob to compressed coordinate stream.
//
// Two passes: plan_stream walks the headers only (types and counts, for the capacity bound);
// write_stream reads every coordinate once, coding it and folding it into the range test as it
// goes, so a long line is read from memory once.  Coordinates that the writer skips (the rest of
// a polygon whose outer ring is dropped) are range-tested on their own, so the range verdict
// covers every coordinate of the shape and wins over "nothing left".
#include "codec/stream_encoder.h"

#include "codec/stream_format.h"
#include "codec/varint_code.h"
#include "core/blob.h"

namespace xg {
namespace codec {
namespace {

// ---- planning: types and the capacity bound ----------------------------------------------

struct Tally {
  uint64_t points = 0, rings = 0, parts = 0;
};

const byte* tally_polygon(const byte* polygon, Tally& t) {
  const uint32_t rings = shape_count(polygon);
  const byte* at = polygon + kCountedHeaderSize;
  for (uint32_t i = 0; i < rings; ++i) {
    t.points += load_u32(at);
    at += wkb_ring_size(at);
  }
  t.rings += rings;
  return at;
}

// ---- writing -----------------------------------------------------------------------------

// Appends codes, remembering the running point that the next difference starts from, and
// whether every coordinate seen so far lies inside the frame.  Outside the frame the integers
// saturate and the differences wrap (no overflow); such a stream is thrown away.
class CodeWriter {
 public:
  CodeWriter(byte* at, const Frame& frame) : at_(at), frame_(frame) {}

  byte* position() const { return at_; }
  bool inside() const { return inside_; }
  // The next point is written as its integers.
  void fresh() { px_ = py_ = 0; }

  // Writes the point of the coordinate pair at c.
  void point(const byte* c) {
    const double x = load_f64(c), y = load_f64(c + 8);
    inside_ &= frame_.contains(x, y);
    byte* at = at_;
    write(&at, to_unit(x, frame_.origin_x, frame_.scale), to_unit(y, frame_.origin_y, frame_.scale), &px_, &py_);
    at_ = at;
  }

  // Writes the point of the pair at c unless it repeats the point written before it.
  void distinct_point(const byte* c) {
    const double x = load_f64(c), y = load_f64(c + 8);
    inside_ &= frame_.contains(x, y);
    const int32_t ix = to_unit(x, frame_.origin_x, frame_.scale);
    const int32_t iy = to_unit(y, frame_.origin_y, frame_.scale);
    if (ix == px_ && iy == py_) return;
    byte* at = at_;
    write(&at, ix, iy, &px_, &py_);
    at_ = at;
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
    bool inside = true;
    uint32_t written = 1;
    for (uint32_t i = 1; i < n; ++i) {
      c += kCoordSize;
      const double x = load_f64(c), y = load_f64(c + 8);
      inside &= f.contains(x, y);
      const int32_t ix = to_unit(x, f.origin_x, f.scale);
      const int32_t iy = to_unit(y, f.origin_y, f.scale);
      if (ix == px && iy == py) continue;
      write(&at, ix, iy, &px, &py);
      ++written;
    }
    at_ = at;
    px_ = px;
    py_ = py;
    inside_ &= inside;
    return written;
  }

  // Range-tests a run that is not written.
  void check(const byte* run) {
    const uint32_t n = load_u32(run);
    const byte* c = run + 4;
    bool inside = true;
    for (uint32_t i = 0; i < n; ++i, c += kCoordSize) inside &= frame_.contains(load_f64(c), load_f64(c + 8));
    inside_ &= inside;
  }

  // The difference that takes the running point to (-1, 0): (-x - 1, -y).
  void separator() {
    at_ = put_code(at_, wrap(0u - static_cast<uint32_t>(px_) - 1u));
    at_ = put_code(at_, wrap(0u - static_cast<uint32_t>(py_)));
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
  static int32_t wrap(uint32_t v) { return static_cast<int32_t>(v); }

  // Inside the frame both integers lie in 0..2147483647, so the differences fit in 32 bits.
  static void write(byte** at, int32_t ix, int32_t iy, int32_t* px, int32_t* py) {
    *at = put_code_wide(*at, wrap(static_cast<uint32_t>(ix) - static_cast<uint32_t>(*px)));
    *at = put_code_wide(*at, wrap(static_cast<uint32_t>(iy) - static_cast<uint32_t>(*py)));
    *px = ix;
    *py = iy;
  }

  byte* at_;
  const Frame frame_;
  int32_t px_ = 0, py_ = 0;
  bool inside_ = true;
};

// Writes a polygon's rings (u32 count, points), continuing from the running point.  A ring left
// with fewer than 4 points is taken back out whole, and the running point returns to the end of
// the last ring kept; when that happens to the outer ring, nothing of the polygon stays (its
// other rings are only range-tested).  Returns the number of rings kept.
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
      if (r == 0) {
        for (uint32_t rest = 1; rest < rings; ++rest, at += wkb_ring_size(at)) w.check(at);
        return 0;
      }
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

int32_t plan_stream(const byte* shape, int64_t* capacity) {
  const uint32_t type = shape_type(shape);
  if (!is_geometry_type(type)) return XGWKB_E_INVALID_GEOMETRY_TYPE;
  Tally t;
  switch (type) {
    case XGWKB_TYPE_POINT:
      t.points = 1;
      break;
    case XGWKB_TYPE_LINESTRING:
      t.points = shape_count(shape);
      break;
    case XGWKB_TYPE_POLYGON:
      tally_polygon(shape, t);
      break;
    default: {  // the multi-types
      const uint32_t member_type = type - 3;
      const uint32_t members = shape_count(shape);
      const byte* at = shape + kCountedHeaderSize;
      for (uint32_t i = 0; i < members; ++i) {
        if (shape_type(at) != member_type) return XGWKB_E_INVALID_SHAPE;
        if (member_type == XGWKB_TYPE_POINT) {
          ++t.points;
          at += kPointBlobSize;
        } else if (member_type == XGWKB_TYPE_LINESTRING) {
          t.points += shape_count(at);
          at += kHeaderSize + wkb_ring_size(at + kHeaderSize);
        } else {
          at = tally_polygon(at, t);
        }
      }
      t.parts = members;
      break;
    }
  }
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
  if (!w.inside()) return XGWKB_E_CODEC_RANGE;
  if (!written) return XGWKB_E_CODEC_NOTHING;
  const auto length = static_cast<uint32_t>(w.position() - out);
  store_u32(out + 5, length);
  *size = static_cast<int32_t>(length);
  return XGWKB_OK;
}

}  // namespace codec
}  // namespace xg
