// overlay_points.cpp - the point kernels of the overlay operations.
#include <algorithm>
#include <cmath>
#include <memory>
#include <unordered_map>
#include <vector>

#include "construct/overlay_kernels.h"
#include "core/construct.h"
#include "relate/point_runs.h"
#include "relate/ring_index.h"
#include "relate/segment_tests.h"

namespace xg {
namespace {

// The two doubles the point kernels compare: the first 16 bytes of a point blob, its header
// included (so the second double holds the end of x and the start of y).
struct Key {
  double u;
  double v;
};

// Reading from the blob's start rather than its coordinates: intended, callers rely on it.
Key key_of(const byte* point_blob) { return Key{load_f64(point_blob), load_f64(point_blob + 8)}; }

bool keys_equal(const Key& a, const Key& b, double t) {
  return std::fabs(a.u - b.u) < t && std::fabs(a.v - b.v) < t;
}

bool points_equal(const byte* a, const byte* b, double t) { return keys_equal(key_of(a), key_of(b), t); }

// The members of a point (itself) or of a multipoint.
std::vector<const byte*> members_of(const byte* points) {
  std::vector<const byte*> m;
  if (shape_type(points) == XGWKB_TYPE_POINT) {
    m.push_back(points);
  } else {
    const uint32_t k = shape_count(points);
    m.reserve(k);
    for (uint32_t i = 0; i < k; ++i) m.push_back(points + kCountedHeaderSize + kPointBlobSize * i);
  }
  return m;
}


int32_t copy_blob(const byte* shape, byte** out) {
  uint32_t size = 0;
  const int32_t status = geometry_size(shape, &size);
  if (status != XGWKB_OK) return status;
  return blob_copy(shape, size, out);
}

// Finds, for a key, whether some member of a set has an equal key, without comparing all pairs:
// keys are filed in square cells of side t, and an equal key can only sit in the 3 x 3 cells
// around the query's.  Keys that are not finite never equal anything and are not filed.
class KeySet {
 public:
  KeySet(const std::vector<const byte*>& members, double t) : t_(t) {
    if (!(t > 0)) return;  // nothing is strictly closer than a tolerance of 0 (or NaN)
    cells_.reserve(members.size());
    for (const byte* m : members) {
      const Key k = key_of(m);
      if (std::isfinite(k.u) && std::isfinite(k.v)) cells_[cell_of(k)].push_back(k);
    }
  }

  bool contains(const byte* point_blob) const {
    const Key k = key_of(point_blob);
    if (cells_.empty() || !std::isfinite(k.u) || !std::isfinite(k.v)) return false;
    const Cell c = cell_of(k);
    for (int du = -1; du <= 1; ++du) {
      for (int dv = -1; dv <= 1; ++dv) {
        const auto it = cells_.find(Cell{c.u + du, c.v + dv});
        if (it == cells_.end()) continue;
        for (const Key& o : it->second)
          if (keys_equal(k, o, t_)) return true;
      }
    }
    return false;
  }

 private:
  struct Cell {
    double u, v;  // floor(key / t); kept as doubles, so huge keys cannot overflow an integer
    bool operator==(const Cell& o) const { return u == o.u && v == o.v; }
  };
  struct CellHash {
    std::size_t operator()(const Cell& c) const {
      return std::hash<double>()(c.u) * 31 + std::hash<double>()(c.v);
    }
  };
  Cell cell_of(const Key& k) const { return Cell{std::floor(k.u / t_), std::floor(k.v / t_)}; }

  double t_;
  std::unordered_map<Cell, std::vector<Key>, CellHash> cells_;
};

// The coordinates of a member read five bytes past their place, within the operand's blob;
// bytes past its end read as zero.
_xgWKB_POINT shifted_point(const byte* member, const byte* blob_end) {
  byte raw[kCoordSize] = {};
  const byte* from = member + 2 * kHeaderSize;
  const std::size_t have = static_cast<std::size_t>(std::min<std::ptrdiff_t>(blob_end - from, kCoordSize));
  std::memcpy(raw, from, have);
  return load_point(raw);
}

}  // namespace

int32_t multipoint_or_nil(const std::vector<const byte*>& members, byte** out) {
  if (members.empty()) return nil_into(out);
  byte* blob = blob_alloc(kCountedHeaderSize + kPointBlobSize * members.size());
  if (blob == nullptr) return XGWKB_E_FAILED;
  BlobWriter w(blob);
  w.header(XGWKB_TYPE_MULTIPOINT).u32(static_cast<uint32_t>(members.size()));
  for (const byte* m : members) w.bytes(m, kPointBlobSize);
  *out = blob;
  return XGWKB_OK;
}

int32_t point_point_kernel(gpc_op op, const byte* a, const byte* b, double t, byte** out) {
  const bool equal = points_equal(a, b, t);
  switch (op) {
    case GPC_DIFF:
      return multipoint_or_nil(equal ? std::vector<const byte*>{} : std::vector<const byte*>{a}, out);
    case GPC_INT:
      return multipoint_or_nil(equal ? std::vector<const byte*>{a} : std::vector<const byte*>{}, out);
    case GPC_XOR:
      return multipoint_or_nil(equal ? std::vector<const byte*>{} : std::vector<const byte*>{a, b}, out);
    case GPC_UNION:
    default:
      return multipoint_or_nil(equal ? std::vector<const byte*>{a} : std::vector<const byte*>{a, b}, out);
  }
}

int32_t point_multipoint_kernel(gpc_op op, const byte* point, const byte* multipoint, double t, byte** out) {
  const std::vector<const byte*> members = members_of(multipoint);
  // The search never moves past member 0: intended, a match is found there or not at all.
  const bool match = !members.empty() && points_equal(point, members[0], t);
  std::vector<const byte*> rest;
  if (members.size() >= 2) rest.assign(members.begin() + 1, members.end());
  std::vector<const byte*> with_point{point};
  with_point.insert(with_point.end(), members.begin(), members.end());
  switch (op) {
    case GPC_DIFF:
      return multipoint_or_nil(match ? std::vector<const byte*>{} : std::vector<const byte*>{point}, out);
    case GPC_INT:
      if (!match) return multipoint_or_nil({}, out);
      // A match falls through to the symmetric difference, whose result replaces the point:
      // intended, callers rely on it.
      return multipoint_or_nil(rest, out);
    case GPC_XOR:
      return multipoint_or_nil(match ? rest : with_point, out);
    case GPC_UNION:
    default:
      return match ? copy_blob(multipoint, out) : multipoint_or_nil(with_point, out);
  }
}

int32_t multipoint_kernel(gpc_op op, const byte* a, const byte* b, double t, byte** out) {
  const std::vector<const byte*> ma = members_of(a);
  const std::vector<const byte*> mb = members_of(b);
  const KeySet in_b(mb, t);
  std::vector<const byte*> result;
  switch (op) {
    case GPC_DIFF:
      for (const byte* m : ma)
        if (!in_b.contains(m)) result.push_back(m);
      break;
    case GPC_INT:
      for (const byte* m : ma)
        if (in_b.contains(m)) result.push_back(m);
      break;
    case GPC_XOR:
    case GPC_UNION:
    default: {
      const KeySet in_a(ma, t);
      for (const byte* m : ma)
        if (op == GPC_UNION || !in_b.contains(m)) result.push_back(m);
      for (const byte* m : mb)
        if (!in_a.contains(m)) result.push_back(m);
      break;
    }
  }
  return multipoint_or_nil(result, out);
}

int32_t points_on_lines(const byte* points, const byte* lines, bool keep_on, bool shifted, double t, byte** out) {
  ShapeRuns runs;
  if (!runs.load(lines, false)) return multipoint_or_nil({}, out);
  std::vector<std::unique_ptr<IndexedSpan>> spans;
  for (uint32_t i = 0; i < runs.run_count(); ++i) spans.push_back(std::make_unique<IndexedSpan>(runs.run(i), t));
  uint32_t size = 0;
  if (geometry_size(points, &size) != XGWKB_OK) return XGWKB_E_INVALID_SHAPE;
  const byte* end = points + size;
  std::vector<const byte*> result;
  for (const byte* m : members_of(points)) {
    // A difference minus a line reads each point five bytes late: intended, callers rely on it.
    const _xgWKB_POINT p = shifted ? shifted_point(m, end) : load_point(m + kHeaderSize);
    bool on = false;
    for (const auto& s : spans) {
      if (locate_on_run(p, s->span(), t) != 0) {
        on = true;
        break;
      }
    }
    if (on == keep_on) result.push_back(m);
  }
  return multipoint_or_nil(result, out);
}

int32_t points_in_polygons(const byte* points, const byte* polygons, bool keep_in, double t, byte** out) {
  ShapeRuns runs;
  if (!runs.load(polygons, true)) return multipoint_or_nil({}, out);
  std::vector<std::unique_ptr<IndexedPolygon>> parts;
  for (uint32_t i = 0; i < runs.part_count(); ++i) {
    if (runs.part(i).runs > 0) parts.push_back(std::make_unique<IndexedPolygon>(runs.polygon(i), t));
  }
  std::vector<const byte*> result;
  for (const byte* m : members_of(points)) {
    const _xgWKB_POINT p = load_point(m + kHeaderSize);
    bool in = false;
    for (const auto& part : parts) {
      if (!point_outside_polygon(p, part->spans(), t)) {
        in = true;
        break;
      }
    }
    if (in == keep_in) result.push_back(m);
  }
  return multipoint_or_nil(result, out);
}

namespace {

// A point blob whose 16 coordinate bytes are the first 16 bytes of `from`, header included.
int32_t header_copy_point(const byte* from, byte** out) {
  byte* blob = blob_alloc(kPointBlobSize);
  if (blob == nullptr) return XGWKB_E_FAILED;
  // Copies the header bytes as coordinates: intended, callers rely on it.
  BlobWriter(blob).header(XGWKB_TYPE_POINT).bytes(from, kCoordSize);
  *out = blob;
  return XGWKB_OK;
}

// a and b with nothing in common: copies of each into only_a and only_b, both or neither.
int32_t apart(const byte* a, const byte* b, byte** only_a, byte** only_b) {
  byte* oa = nullptr;
  int32_t s = copy_blob(a, &oa);
  if (s != XGWKB_OK) return s;
  OwnedBlob keep(oa);
  s = copy_blob(b, only_b);
  if (s != XGWKB_OK) return s;
  *only_a = keep.release();
  return XGWKB_OK;
}

// Point a against point or multipoint b; outputs not named stay unwritten.
int32_t overlay_point_first(const byte* a, const byte* b, double t, byte** only_a, byte** only_b, byte** common) {
  if (shape_type(b) == XGWKB_TYPE_POINT) {
    if (points_equal(a, b, t)) return header_copy_point(a, common);
    return apart(a, b, only_a, only_b);
  }
  const std::vector<const byte*> members = members_of(b);
  // Member 0 only, as in the other point kernels: intended.
  if (members.empty() || !points_equal(a, members[0], t)) {
    return apart(a, b, only_a, only_b);
  }
  byte* c = nullptr;
  int32_t s = header_copy_point(a, &c);
  if (s != XGWKB_OK) return s;
  OwnedBlob keep(c);
  byte* rest = blob_alloc(kCountedHeaderSize + kPointBlobSize * (members.size() - 1));
  if (rest == nullptr) return XGWKB_E_FAILED;
  BlobWriter w(rest);
  w.header(XGWKB_TYPE_MULTIPOINT).u32(static_cast<uint32_t>(members.size() - 1));
  for (std::size_t i = 1; i < members.size(); ++i) w.bytes(members[i], kPointBlobSize);
  *only_b = rest;
  *common = keep.release();
  return XGWKB_OK;
}

}  // namespace

int32_t overlay_points(const byte* a, const byte* b, double t, byte** only_a, byte** only_b, byte** common) {
  const bool a_point = shape_type(a) == XGWKB_TYPE_POINT;
  const bool b_point = shape_type(b) == XGWKB_TYPE_POINT;
  if (a_point) return overlay_point_first(a, b, t, only_a, only_b, common);
  if (b_point) return overlay_point_first(b, a, t, only_b, only_a, common);
  // Two multipoints: member by member, every output written (nil when empty).
  byte* oa = nullptr;
  byte* ob = nullptr;
  byte* c = nullptr;
  int32_t s = multipoint_kernel(GPC_DIFF, a, b, t, &oa);
  OwnedBlob ka(oa);
  if (s == XGWKB_OK) s = multipoint_kernel(GPC_DIFF, b, a, t, &ob);
  OwnedBlob kb(ob);
  if (s == XGWKB_OK) s = multipoint_kernel(GPC_INT, a, b, t, &c);
  OwnedBlob kc(c);
  if (s != XGWKB_OK) return s;
  *only_a = ka.release();
  *only_b = kb.release();
  *common = kc.release();
  return XGWKB_OK;
}

}  // namespace xg
