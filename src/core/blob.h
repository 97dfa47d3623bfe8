// blob.h - the one place that knows the byte layout of shape blobs.
//
// Every other file reads and writes blobs through these helpers: little-endian loads and stores
// built on memcpy (doubles sit at odd offsets, so a blob pointer is never cast to double*),
// header and count access, views over counted point runs, walkers over rings and members, and a
// writer that appends headers, counts and points.
//
// Layout reminder: [u8 byte order][u32 type] then, by type,
//   1 point: x y | 2 linestring: n, n points | 3 polygon: r, r runs (n, n points)
//   4/5/6 multi: k, k whole member blobs (each with its own 5-byte header).
#ifndef XGGEO_CORE_BLOB_H
#define XGGEO_CORE_BLOB_H

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "xggeokit.h"

namespace xg {

using byte = unsigned char;

constexpr std::size_t kHeaderSize = 5;         // byte-order byte + type code
constexpr std::size_t kCountSize = 4;          // one u32 count (points, rings or members)
constexpr std::size_t kCountedHeaderSize = kHeaderSize + kCountSize;
constexpr std::size_t kCoordSize = 16;         // one packed point
constexpr std::size_t kPointBlobSize = 21;     // header + one point
constexpr std::size_t kEnvelopeBlobSize = 37;  // header + four doubles
constexpr double kFixedTolerance = 0.0001;     // tolerance of the operations that take none

// ---- little-endian scalars ---------------------------------------------------------------

namespace detail {
constexpr bool kHostLittleEndian = __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__;
inline uint32_t to_le(uint32_t v) { return kHostLittleEndian ? v : __builtin_bswap32(v); }
inline uint64_t to_le(uint64_t v) { return kHostLittleEndian ? v : __builtin_bswap64(v); }
}  // namespace detail

inline uint32_t load_u32(const byte* p) {
  uint32_t v;
  std::memcpy(&v, p, sizeof v);
  return detail::to_le(v);
}

inline void store_u32(byte* p, uint32_t v) {
  v = detail::to_le(v);
  std::memcpy(p, &v, sizeof v);
}

inline double load_f64(const byte* p) {
  uint64_t bits;
  std::memcpy(&bits, p, sizeof bits);
  bits = detail::to_le(bits);
  double v;
  std::memcpy(&v, &bits, sizeof v);
  return v;
}

inline void store_f64(byte* p, double v) {
  uint64_t bits;
  std::memcpy(&bits, &v, sizeof bits);
  bits = detail::to_le(bits);
  std::memcpy(p, &bits, sizeof bits);
}

// Big-endian (network order) scalars, for foreign WKB written in that order.
inline uint32_t load_u32_big(const byte* p) { return __builtin_bswap32(load_u32(p)); }

inline double load_f64_big(const byte* p) {
  uint64_t bits;
  std::memcpy(&bits, p, sizeof bits);
  bits = detail::kHostLittleEndian ? __builtin_bswap64(bits) : bits;
  double v;
  std::memcpy(&v, &bits, sizeof v);
  return v;
}

inline void store_u32_big(byte* p, uint32_t v) { store_u32(p, __builtin_bswap32(v)); }

inline void store_f64_big(byte* p, double v) {
  uint64_t bits;
  std::memcpy(&bits, &v, sizeof bits);
  bits = detail::kHostLittleEndian ? __builtin_bswap64(bits) : bits;
  std::memcpy(p, &bits, sizeof bits);
}

inline _xgWKB_POINT load_point(const byte* p) { return {load_f64(p), load_f64(p + 8)}; }

inline void store_point(byte* p, const _xgWKB_POINT& pt) {
  store_f64(p, pt.x);
  store_f64(p + 8, pt.y);
}

// The rectangle of an envelope blob: minx, miny, maxx, maxy at offsets 5, 13, 21 and 29 (the
// type code is not looked at).
inline _xgWKB_BOX load_envelope(const byte* envelope) {
  const byte* at = envelope + kHeaderSize;
  return _xgWKB_BOX{load_f64(at), load_f64(at + 8), load_f64(at + 16), load_f64(at + 24)};
}

// ---- header and counts -------------------------------------------------------------------

inline uint32_t shape_type(const byte* s) { return load_u32(s + 1); }

// The u32 after the header: points of a linestring, rings of a polygon, members of a multi-type.
inline uint32_t shape_count(const byte* s) { return load_u32(s + kHeaderSize); }

inline bool is_geometry_type(uint32_t type) {
  return type >= XGWKB_TYPE_POINT && type <= XGWKB_TYPE_MULTIPOLYGON;
}

inline bool is_multi_type(uint32_t type) {
  return type >= XGWKB_TYPE_MULTIPOINT && type <= XGWKB_TYPE_MULTIPOLYGON;
}

// Writes the 5-byte header; the byte-order byte is 0 in every blob this library writes, although
// the numbers are little-endian.  Readers never look at it.
inline void write_header(byte* p, uint32_t type) {
  p[0] = 0;
  store_u32(p + 1, type);
}

// ---- counted point runs (linestring bodies and polygon rings) ----------------------------

// Size of a counted point run (u32 n then n points): (n << 4) | 4, which is 16n + 4.
inline uint32_t wkb_ring_size(const byte* run) {
  return (load_u32(run) << 4) | static_cast<uint32_t>(kCountSize);
}

// Byte count of a counted run of n points, in 64 bits (no 32-bit wrap as in wkb_ring_size), for
// sizing blobs before they are written.
inline uint64_t run_bytes(uint64_t n) { return kCountSize + kCoordSize * n; }

// A read-only view of a counted point run.
struct PointRun {
  const byte* at;  // the u32 count

  uint32_t size() const { return load_u32(at); }
  _xgWKB_POINT point(uint32_t i) const { return load_point(at + kCountSize + kCoordSize * i); }
  // The i-th double of the packed coordinates x0, y0, x1, y1, ... (i < 2n).
  double value(uint32_t i) const {
    return load_f64(at + kCountSize + sizeof(double) * static_cast<std::size_t>(i));
  }
  _xgWKB_POINT front() const { return point(0); }
  _xgWKB_POINT back() const { return point(size() - 1); }
  std::size_t bytes() const { return wkb_ring_size(at); }
  const byte* end() const { return at + bytes(); }

  // Copies the points into out; returns the slot after the last one written.
  _xgWKB_POINT* copy_to(_xgWKB_POINT* out) const {
    const uint32_t n = size();
    for (uint32_t i = 0; i < n; ++i) out[i] = point(i);
    return out + n;
  }
};

// The body of a linestring blob as a point run.
inline PointRun line_run(const byte* line) { return PointRun{line + kHeaderSize}; }

// The coordinates of a point blob.
inline _xgWKB_POINT point_of(const byte* point) { return load_point(point + kHeaderSize); }

// ---- walking members and rings -----------------------------------------------------------

// Size of a geometry blob of type 1-6 computed from its counts, members checked for their own
// type.  Returns XGWKB_OK with *size set, or XGWKB_E_INVALID_SHAPE (size untouched).
int32_t geometry_size(const byte* shape, uint32_t* size);

// Size of a blob of type 1-6 holding `points` points (multipoint: members) in `runs` counted
// runs (linestrings of a multilinestring, rings of polygons) over `polygons` member polygons;
// 0 for any other type.  Computed in 64 bits so that callers can test it against their limits.
inline uint64_t geometry_size_for(uint32_t type, uint64_t points, uint64_t runs, uint64_t polygons) {
  const uint64_t coords = kCoordSize * points;
  switch (type) {
    case XGWKB_TYPE_POINT:
      return kPointBlobSize;
    case XGWKB_TYPE_LINESTRING:
      return kCountedHeaderSize + coords;
    case XGWKB_TYPE_POLYGON:
      return kCountedHeaderSize + kCountSize * runs + coords;
    case XGWKB_TYPE_MULTIPOINT:
      return kCountedHeaderSize + kPointBlobSize * points;
    case XGWKB_TYPE_MULTILINESTRING:
      return kCountedHeaderSize + kCountedHeaderSize * runs + coords;
    case XGWKB_TYPE_MULTIPOLYGON:
      return kCountedHeaderSize + kCountedHeaderSize * polygons + kCountSize * runs + coords;
    default:
      return 0;
  }
}

// Size of a member blob whose type has already been vetted by the caller's walk; 0 for a blob
// whose type is not 1-6 (walkers stop there rather than loop).
inline std::size_t member_size(const byte* member) {
  uint32_t size = 0;
  return geometry_size(member, &size) == XGWKB_OK ? size : 0;
}

// Cursors, for walks that must advance through two shapes side by side: the first ring of a
// polygon and the ring after a ring; the first member of a multi-type and the member after a
// member (whose type the caller has vetted).
inline PointRun first_ring(const byte* polygon) { return PointRun{polygon + kCountedHeaderSize}; }
inline PointRun next_ring(PointRun ring) { return PointRun{ring.end()}; }
inline const byte* first_member(const byte* multi) { return multi + kCountedHeaderSize; }
inline const byte* next_member(const byte* member) { return member + member_size(member); }

// Calls f(PointRun ring, uint32_t index) for every ring of a polygon blob; index is 0-based.
// Returns the end of the polygon.
template <class F>
const byte* for_each_ring(const byte* polygon, F&& f) {
  const uint32_t rings = shape_count(polygon);
  PointRun run = first_ring(polygon);
  for (uint32_t i = 0; i < rings; ++i) {
    f(run, i);
    run = next_ring(run);
  }
  return run.at;
}

// The type of the members of a multi-type (point for multipoint, linestring for
// multilinestring, polygon for multipolygon); 0 for any other type.
inline uint32_t member_type_of(uint32_t multi_type) {
  return is_multi_type(multi_type) ? multi_type - (XGWKB_TYPE_MULTIPOINT - XGWKB_TYPE_POINT) : 0;
}

// Calls f(const byte* member, uint32_t index) for every member of a multi-type; index is 0-based.
// Each member's type code is checked before f sees it: the walk stops at the first member that
// is not of the multi-type's member type (a multipoint holding a linestring, say) and returns
// false.  Returns true when every member was visited.
template <class F>
bool for_each_member(const byte* multi, F&& f) {
  const uint32_t members = shape_count(multi);
  const uint32_t want = member_type_of(shape_type(multi));
  const byte* at = first_member(multi);
  for (uint32_t i = 0; i < members; ++i) {
    if (shape_type(at) != want) return false;
    f(at, i);
    at = next_member(at);
  }
  return true;
}

// True unless shape is a multi-type holding a member of a foreign type.  Exports that reach
// members by index or sum over them test this first and answer XGWKB_E_INVALID_SHAPE.
inline bool members_well_typed(const byte* shape) {
  return !is_multi_type(shape_type(shape)) || for_each_member(shape, [](const byte*, uint32_t) {});
}

// The member at 0-based index i of a multi-type (no range check: callers test i < count first,
// and members_well_typed).
inline const byte* member_at(const byte* multi, uint32_t i) {
  const byte* at = first_member(multi);
  for (uint32_t k = 0; k < i; ++k) at = next_member(at);
  return at;
}

// The ring at 0-based index i of a polygon (no range check).
inline const byte* ring_at(const byte* polygon, uint32_t i) {
  PointRun run = first_ring(polygon);
  for (uint32_t k = 0; k < i; ++k) run = next_ring(run);
  return run.at;
}

// Calls f(const byte* coord) for every coordinate pair of a type 1-6 geometry in storage order,
// ring-closing points included.  B is `const byte` or `byte` (for in-place edits).  Returns
// false when a member of a multi-type has a foreign type (the walk stops before it), else true.
template <class B, class F>
bool for_each_coord(B* shape, F&& f) {
  auto run = [&f](B* at) {
    const uint32_t n = load_u32(at);
    for (uint32_t i = 0; i < n; ++i) f(at + kCountSize + kCoordSize * i);
    return at + run_bytes(n);
  };
  auto polygon = [&run](B* poly) {
    const uint32_t rings = shape_count(poly);
    B* at = poly + kCountedHeaderSize;
    for (uint32_t i = 0; i < rings; ++i) at = run(at);
  };
  auto geometry = [&](B* at) {
    switch (shape_type(at)) {
      case XGWKB_TYPE_POINT:
        f(at + kHeaderSize);
        return;
      case XGWKB_TYPE_LINESTRING:
        run(at + kHeaderSize);
        return;
      case XGWKB_TYPE_POLYGON:
        polygon(at);
        return;
      default:
        return;
    }
  };
  if (!is_multi_type(shape_type(shape))) {
    geometry(shape);
    return true;
  }
  // B may be writable: the walk hands out the member's own pointer type.
  return for_each_member(shape, [&](const byte* member, uint32_t) {
    geometry(shape + (member - shape));
  });
}

// ---- allocation and writing --------------------------------------------------------------

// Every blob and string handed to a caller comes from malloc and is released with free.
inline byte* blob_alloc(std::size_t size) { return static_cast<byte*>(std::malloc(size)); }

// A fresh copy of the first size bytes of blob into *out; XGWKB_E_FAILED when memory runs out.
inline int32_t blob_copy(const byte* blob, std::size_t size, byte** out) {
  byte* copy = blob_alloc(size);
  if (copy == nullptr) return XGWKB_E_FAILED;
  std::memcpy(copy, blob, size);
  *out = copy;
  return XGWKB_OK;
}

struct FreeDeleter {
  void operator()(void* p) const { std::free(p); }
};

// An intermediate blob owned by the code that made it.
using OwnedBlob = std::unique_ptr<byte, FreeDeleter>;

// Appends headers, counts and points to a buffer sized by the caller beforehand.
class BlobWriter {
 public:
  explicit BlobWriter(byte* buffer) : at_(buffer) {}

  BlobWriter& header(uint32_t type) {
    write_header(at_, type);
    at_ += kHeaderSize;
    return *this;
  }
  BlobWriter& u32(uint32_t v) {
    store_u32(at_, v);
    at_ += kCountSize;
    return *this;
  }
  BlobWriter& point(const _xgWKB_POINT& p) {
    store_point(at_, p);
    at_ += kCoordSize;
    return *this;
  }
  BlobWriter& points(const _xgWKB_POINT* pts, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i) point(pts[i]);
    return *this;
  }
  BlobWriter& bytes(const byte* src, std::size_t n) {
    if (n != 0) std::memcpy(at_, src, n);
    at_ += n;
    return *this;
  }
  // A whole point blob: header, x, y.
  BlobWriter& point_blob(const _xgWKB_POINT& p) { return header(XGWKB_TYPE_POINT).point(p); }

  byte* position() const { return at_; }

 private:
  byte* at_;
};

// ---- internal operations shared by all subsystems ----------------------------------------

// Box of a counted point run; an empty run gives the zero box.  Returns 0.
int32_t wkb_points_extent(const byte* run, _xgWKB_BOX* box);

// Box of every point of a linestring, polygon, multilinestring or multipolygon, read straight
// from the blob in one pass.  Coordinates that are NaN are passed over; a shape without points
// gives the inverted box (+inf, +inf, -inf, -inf).  False, with *box unspecified, for any other
// type or a multi-type holding a member of a foreign type.
bool shape_points_box(const byte* shape, _xgWKB_BOX* box);

// 1 when a and b differ by strictly less than t on both axes, else 0.  Strict on purpose: with
// t = 0 no two points are equal (not even a point and itself), and a difference of exactly t is
// not equal either.  The point primitive and every tolerance test of the library use this rule.
inline int32_t wkb_point_equal_tol(const _xgWKB_POINT& a, const _xgWKB_POINT& b, double t) {
  return b.x - t < a.x && a.x < b.x + t && b.y - t < a.y && a.y < b.y + t;
}

// A linestring with at least two points: its ends equal within t.  Fewer points: 0.  Any other
// type: the first four bytes read as one integer, 1 when at least 2 (see blob.cpp).
int32_t wkb_line_is_closed_tol(const byte* shape, double t);

// 1 when every member of a multilinestring passes wkb_line_is_closed_tol (an empty one passes).
int32_t wkb_multiline_is_closed_tol(const byte* shape, double t);

// 1 when the boxes are apart by more than t on some side, else 0.  (Inline: the segment walks
// call it once per pair of segments.)
inline int32_t wkb_boxes_disjoint_tol(const _xgWKB_BOX& a, const _xgWKB_BOX& b, double t) {
  if (a.maxy + t < b.miny) return 1;
  if (a.miny - t > b.maxy) return 1;
  if (a.maxx + t < b.minx) return 1;
  if (a.minx - t > b.maxx) return 1;
  return 0;
}

// The box spanned by two points.
inline void wkb_box_of_two_points(const _xgWKB_POINT& a, const _xgWKB_POINT& b, _xgWKB_BOX* box) {
  box->minx = a.x < b.x ? a.x : b.x;
  box->maxx = a.x < b.x ? b.x : a.x;
  box->miny = a.y < b.y ? a.y : b.y;
  box->maxy = a.y < b.y ? b.y : a.y;
}

// Grows box to cover other.
inline void box_merge(_xgWKB_BOX* box, const _xgWKB_BOX& other) {
  if (other.minx < box->minx) box->minx = other.minx;
  if (other.miny < box->miny) box->miny = other.miny;
  if (other.maxx > box->maxx) box->maxx = other.maxx;
  if (other.maxy > box->maxy) box->maxy = other.maxy;
}

}  // namespace xg

#endif  // XGGEO_CORE_BLOB_H
