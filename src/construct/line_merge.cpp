// line_merge.cpp - merging two shapes of one dimension into one shape.
//
// Points: two points give the first (equal) or a multipoint of both; a point and a multipoint
// give the multipoint, grown by the point unless it equals the first member; two multipoints
// give the first's members and those of the second that equal none of them.
// Lines: two linestrings are joined where an end of one equals an end of the other (the four
// cases below, tried in order); with a multilinestring on either side, every member of both is
// joined end to end with any other open line sharing an end (join_lines).
// Polygons: one multipolygon, overlapping and edge-sharing polygons united (unite_polygons).
#include <algorithm>
#include <vector>

#include "construct/overlay_kernels.h"
#include "construct/point_grid.h"
#include "core/boundary.h"

namespace xg {

namespace {

using Pt = _xgWKB_POINT;

int dimension(uint32_t type) { return static_cast<int>((type - 1) % 3); }  // types 1..6

// The single shapes making up a shape: itself, or its members.
std::vector<const byte*> parts_of(const byte* shape) {
  std::vector<const byte*> parts;
  if (!is_multi_type(shape_type(shape))) {
    parts.push_back(shape);
  } else {
    for_each_member(shape, [&parts](const byte* m, uint32_t) { parts.push_back(m); });
  }
  return parts;
}

byte* multi_of(uint32_t type, const std::vector<const byte*>& members) {
  std::size_t size = kCountedHeaderSize;
  for (const byte* m : members) size += member_size(m);
  byte* blob = blob_alloc(size);
  if (blob == nullptr) return nullptr;
  BlobWriter w(blob);
  w.header(type).u32(static_cast<uint32_t>(members.size()));
  for (const byte* m : members) w.bytes(m, member_size(m));
  return blob;
}

byte* copy_of(const byte* shape) {
  byte* blob = nullptr;
  blob_copy(shape, member_size(shape), &blob);
  return blob;
}

// ---- points ------------------------------------------------------------------------------

byte* merge_point_point(const byte* a, const byte* b, double t) {
  if (wkb_point_equal_tol(load_point(a + kHeaderSize), load_point(b + kHeaderSize), t)) return copy_of(a);
  return multi_of(XGWKB_TYPE_MULTIPOINT, {a, b});
}

byte* merge_point_multipoint(const byte* point, const byte* multipoint, double t) {
  const uint32_t k = shape_count(multipoint);
  const Pt p = load_point(point + kHeaderSize);
  const byte* first = multipoint + kCountedHeaderSize;
  for (uint32_t i = 0; i < k; ++i) {
    // Compares the first member on every pass: intended, callers rely on it.
    if (wkb_point_equal_tol(p, load_point(first + kHeaderSize), t)) return copy_of(multipoint);
  }
  std::vector<const byte*> members = parts_of(multipoint);
  members.push_back(point);  // after the members
  return multi_of(XGWKB_TYPE_MULTIPOINT, members);
}

byte* merge_multipoints(const byte* a, const byte* b, double t) {
  std::vector<const byte*> members = parts_of(a);
  PointGrid grid(t);
  for (uint32_t i = 0; i < members.size(); ++i) grid.insert(load_point(members[i] + kHeaderSize), i);
  for (const byte* m : parts_of(b)) {
    if (!grid.find(load_point(m + kHeaderSize), [](uint32_t) { return PointGrid::kStop; })) {
      members.push_back(m);
    }
  }
  return multi_of(XGWKB_TYPE_MULTIPOINT, members);
}

// ---- two linestrings -----------------------------------------------------------------------

// The line kernel: 1 joined, 2 joined and closed on itself, 3 not joined (a multilinestring of
// the two); *out gets the blob (null when memory runs out).
int merge_two_lines(const byte* a, const byte* b, double t, byte** out) {
  const PointRun ra = line_run(a);
  const PointRun rb = line_run(b);
  const uint32_t n = ra.size();
  const uint32_t m = rb.size();
  auto eq = [t](const Pt& p, const Pt& q) { return wkb_point_equal_tol(p, q, t) == 1; };
  int joined = 0;
  if (n > 0 && m > 0) {
    if (eq(ra.front(), rb.front())) {
      joined = 1;
    } else if (eq(ra.front(), rb.back())) {
      joined = 2;
    } else if (eq(ra.back(), rb.front())) {
      joined = 3;
    } else if (eq(ra.back(), rb.back())) {
      joined = 4;
    }
  }
  if (joined == 0) {
    *out = multi_of(XGWKB_TYPE_MULTILINESTRING, {a, b});
    return 3;
  }
  byte* blob = blob_alloc(kCountedHeaderSize + kCoordSize * (uint64_t{n} + m - 1));
  *out = blob;
  if (blob == nullptr) return 3;
  BlobWriter w(blob);
  w.header(XGWKB_TYPE_LINESTRING).u32(n + m - 1);
  bool closed = false;
  switch (joined) {
    case 1:  // A backwards, then B from its second point
      for (uint32_t i = n; i-- > 0;) w.point(ra.point(i));
      for (uint32_t i = 1; i < m; ++i) w.point(rb.point(i));
      closed = eq(ra.back(), rb.back());
      break;
    case 2:  // B, then A from its second point
      for (uint32_t i = 0; i < m; ++i) w.point(rb.point(i));
      for (uint32_t i = 1; i < n; ++i) w.point(ra.point(i));
      closed = eq(ra.back(), rb.front());
      break;
    case 3:  // A, then B from its second point
      for (uint32_t i = 0; i < n; ++i) w.point(ra.point(i));
      for (uint32_t i = 1; i < m; ++i) w.point(rb.point(i));
      closed = eq(ra.front(), rb.back());
      break;
    default:  // A, then B backwards from its second-to-last point
      for (uint32_t i = 0; i < n; ++i) w.point(ra.point(i));
      for (uint32_t i = m - 1; i-- > 0;) w.point(rb.point(i));
      closed = eq(ra.front(), rb.front());
      break;
  }
  return closed ? 2 : 1;
}

// ---- many lines ------------------------------------------------------------------------------

// A sequence of points that grows at both ends, and can be read backwards at no cost.
class Chain {
 public:
  explicit Chain(const PointRun& run) {
    tail_.reserve(run.size());
    for (uint32_t i = 0; i < run.size(); ++i) tail_.push_back(run.point(i));
  }
  std::size_t size() const { return head_.size() + tail_.size(); }
  Pt at(std::size_t i) const { return slot(rev_ ? size() - 1 - i : i); }
  Pt& at_ref(std::size_t i) { return const_cast<Pt&>(slot(rev_ ? size() - 1 - i : i)); }
  Pt front() const { return at(0); }
  Pt back() const { return at(size() - 1); }
  void push_back(const Pt& p) { rev_ ? head_.push_back(p) : tail_.push_back(p); }
  void push_front(const Pt& p) { rev_ ? tail_.push_back(p) : head_.push_back(p); }
  void reverse() {
    rev_ = !rev_;
    std::swap(front_end, back_end);
  }
  void take_storage(Chain& other) {
    head_.swap(other.head_);
    tail_.swap(other.tail_);
    rev_ = other.rev_;
  }
  void release() {
    std::vector<Pt>().swap(head_);
    std::vector<Pt>().swap(tail_);
  }

  uint32_t front_end = 0;  // end ids (2 * line + 0 for its first point, + 1 for its last)
  uint32_t back_end = 0;
  uint32_t first_line = 0;  // the earliest line joined into the chain
  bool alive = true;

 private:
  const Pt& slot(std::size_t i) const {
    return i < head_.size() ? head_[head_.size() - 1 - i] : tail_[i - head_.size()];
  }

  std::vector<Pt> head_;  // the physical front, stored backwards
  std::vector<Pt> tail_;
  bool rev_ = false;
};

// d becomes d followed by x, their shared point (d's last, x's first) kept once.  The shorter
// one is copied.
void append_chain(Chain& d, Chain& x) {
  if (x.size() <= d.size()) {
    for (std::size_t i = 1; i < x.size(); ++i) d.push_back(x.at(i));
  } else {
    x.at_ref(0) = d.back();
    for (std::size_t i = d.size() - 1; i-- > 0;) x.push_front(d.at(i));
    d.take_storage(x);
  }
  d.back_end = x.back_end;
}

// d becomes x followed by d, the shared point (x's last, d's first) kept once.
void prepend_chain(Chain& d, Chain& x) {
  if (x.size() <= d.size()) {
    d.at_ref(0) = x.back();
    for (std::size_t i = x.size() - 1; i-- > 0;) d.push_front(x.at(i));
  } else {
    for (std::size_t i = 1; i < d.size(); ++i) x.push_back(d.at(i));
    d.take_storage(x);
  }
  d.front_end = x.front_end;
}

// Joins the lines end to end: each line in turn is joined to the earliest open line (or chain
// of lines already joined) that has an end equal to one of its ends, in the order of the line
// kernel's cases (earlier first-first, first-last, last-first, last-last), and again while
// the grown chain has such a partner.  A line or chain whose ends are equal is closed and is
// not joined further.  Returns the chains in the order of the earliest line in each.
std::vector<Chain> join_lines(const std::vector<const byte*>& lines, double t) {
  const uint32_t count = static_cast<uint32_t>(lines.size());
  std::vector<Chain> chains;
  chains.reserve(count);
  std::vector<uint32_t> parent(count);
  PointGrid grid(t);
  auto root = [&parent](uint32_t i) {
    while (parent[i] != i) i = parent[i] = parent[parent[i]];
    return i;
  };
  auto eq = [t](const Pt& p, const Pt& q) { return wkb_point_equal_tol(p, q, t) == 1; };
  auto open = [&eq](const Chain& c) { return c.size() >= 2 && !eq(c.front(), c.back()); };
  for (uint32_t l = 0; l < count; ++l) {
    parent[l] = l;
    chains.emplace_back(line_run(lines[l]));
    chains[l].front_end = 2 * l;
    chains[l].back_end = 2 * l + 1;
    chains[l].first_line = l;
    uint32_t cur = l;
    while (open(chains[cur])) {
      uint32_t partner = count;
      auto visit = [&](uint32_t end) {
        const uint32_t c = root(end / 2);
        const Chain& ch = chains[c];
        if (c == cur) return PointGrid::kKeep;
        if ((ch.front_end != end && ch.back_end != end) || !open(ch)) return PointGrid::kDrop;
        partner = std::min(partner, c);
        return PointGrid::kKeep;
      };
      grid.find(chains[cur].front(), visit);
      grid.find(chains[cur].back(), visit);
      if (partner == count) break;
      Chain& d = chains[partner];
      Chain& x = chains[cur];
      if (eq(d.front(), x.front())) {
        d.reverse();
        append_chain(d, x);
      } else if (eq(d.front(), x.back())) {
        prepend_chain(d, x);
      } else if (eq(d.back(), x.front())) {
        append_chain(d, x);
      } else {
        x.reverse();
        append_chain(d, x);
      }
      d.first_line = std::min(d.first_line, x.first_line);
      x.alive = false;
      x.release();
      parent[cur] = partner;
      cur = partner;
    }
    const Chain& c = chains[cur];
    if (open(c)) {
      grid.insert(c.front(), c.front_end);
      grid.insert(c.back(), c.back_end);
    }
  }
  std::vector<Chain> alive;
  for (Chain& c : chains) {
    if (c.alive) alive.push_back(std::move(c));
  }
  std::stable_sort(alive.begin(), alive.end(),
                   [](const Chain& l, const Chain& r) { return l.first_line < r.first_line; });
  return alive;
}

byte* lines_blob(const std::vector<Chain>& chains) {
  auto write_line = [](BlobWriter& w, const Chain& c) {
    w.header(XGWKB_TYPE_LINESTRING).u32(static_cast<uint32_t>(c.size()));
    for (std::size_t i = 0; i < c.size(); ++i) w.point(c.at(i));
  };
  std::size_t size = chains.size() == 1 ? 0 : kCountedHeaderSize;
  for (const Chain& c : chains) size += kCountedHeaderSize + kCoordSize * c.size();
  byte* blob = blob_alloc(size);
  if (blob == nullptr) return nullptr;
  BlobWriter w(blob);
  if (chains.size() != 1) w.header(XGWKB_TYPE_MULTILINESTRING).u32(static_cast<uint32_t>(chains.size()));
  for (const Chain& c : chains) write_line(w, c);
  return blob;
}

// ---- polygons --------------------------------------------------------------------------------

// Box of a polygon's outer ring (an empty polygon has the inverted box and meets nothing).
_xgWKB_BOX outer_box(const byte* polygon) {
  _xgWKB_BOX box{1, 1, -1, -1};
  if (shape_count(polygon) > 0) wkb_points_extent(first_ring(polygon).at, &box);
  return box;
}

// Groups of polygons linked by meeting boxes (union-find over a sweep in x, so the cost follows
// the pairs whose boxes meet, not all pairs).  Groups come in the order of their first polygon.
std::vector<std::vector<std::size_t>> box_groups(const std::vector<const byte*>& polygons) {
  const std::size_t n = polygons.size();
  std::vector<_xgWKB_BOX> box(n);
  std::vector<std::size_t> order(n), parent(n);
  for (std::size_t i = 0; i < n; ++i) {
    box[i] = outer_box(polygons[i]);
    order[i] = parent[i] = i;
  }
  auto root = [&parent](std::size_t i) {
    while (parent[i] != i) i = parent[i] = parent[parent[i]];
    return i;
  };
  std::sort(order.begin(), order.end(), [&box](std::size_t l, std::size_t r) { return box[l].minx < box[r].minx; });
  for (std::size_t k = 0; k < n; ++k) {
    const _xgWKB_BOX& a = box[order[k]];
    if (a.minx > a.maxx) continue;
    for (std::size_t j = k + 1; j < n && box[order[j]].minx <= a.maxx; ++j) {
      const _xgWKB_BOX& b = box[order[j]];
      if (b.minx > b.maxx || b.miny > a.maxy || a.miny > b.maxy) continue;
      const std::size_t ra = root(order[k]);
      const std::size_t rb = root(order[j]);
      if (ra != rb) parent[std::max(ra, rb)] = std::min(ra, rb);  // the root is the first polygon
    }
  }
  std::vector<std::vector<std::size_t>> groups;
  std::vector<std::size_t> group_of(n, n);
  for (std::size_t i = 0; i < n; ++i) {
    const std::size_t r = root(i);
    if (group_of[r] == n) {
      group_of[r] = groups.size();
      groups.emplace_back();
    }
    groups[group_of[r]].push_back(i);
  }
  return groups;
}

// The union of a group of polygons through the overlay's polygon kernel, pairwise in a balanced
// tree so that a group of g polygons takes log g rounds rather than g successive unions.
int32_t unite_group(const std::vector<const byte*>& polygons, const std::vector<std::size_t>& group,
                    OwnedBlob* united) {
  std::vector<OwnedBlob> level;
  std::vector<const byte*> operands;
  for (std::size_t i : group) operands.push_back(polygons[i]);
  level.reserve(operands.size());  // every union is owned here the moment it is made
  while (operands.size() > 1) {
    std::vector<const byte*> next_operands;
    for (std::size_t i = 0; i + 1 < operands.size(); i += 2) {
      byte* u = nullptr;
      const int32_t status = polygon_kernel(GPC_UNION, operands[i], operands[i + 1], &u);
      if (status != XGWKB_OK) return status;
      if (u == nullptr) continue;  // both empty
      level.emplace_back(u);
      next_operands.push_back(u);
    }
    if (operands.size() % 2 == 1) next_operands.push_back(operands.back());
    operands.swap(next_operands);
  }
  if (operands.empty()) return XGWKB_OK;
  // The last union is kept; a lone operand that is one of the inputs is copied.
  for (OwnedBlob& b : level) {
    if (b.get() == operands[0]) {
      *united = std::move(b);
      return XGWKB_OK;
    }
  }
  uint32_t size = 0;
  byte* copy = nullptr;
  if (geometry_size(operands[0], &size) != XGWKB_OK) return XGWKB_E_INVALID_SHAPE;
  const int32_t status = blob_copy(operands[0], size, &copy);
  united->reset(copy);
  return status;
}

// One multipolygon of the given polygons.  Polygons whose boxes meet no other polygon's are
// collected as they are; each group of polygons with meeting boxes is replaced by its union
// (overlapping and edge-sharing polygons fuse, the rest of the group comes back as its own
// members).  Groups keep the order of their first polygon.
int32_t unite_polygons(const std::vector<const byte*>& polygons, byte** out) {
  std::vector<OwnedBlob> unions;
  std::vector<const byte*> members;
  for (const std::vector<std::size_t>& group : box_groups(polygons)) {
    if (group.size() == 1) {
      members.push_back(polygons[group[0]]);
      continue;
    }
    OwnedBlob united;
    const int32_t status = unite_group(polygons, group, &united);
    if (status != XGWKB_OK) return status;
    if (!united) continue;
    for (const byte* m : parts_of(united.get())) members.push_back(m);
    unions.push_back(std::move(united));
  }
  *out = multi_of(XGWKB_TYPE_MULTIPOLYGON, members);
  return *out == nullptr ? XGWKB_E_FAILED : XGWKB_OK;
}

int32_t merge(const byte* a, const byte* b, double t, byte** out) {
  const uint32_t ta = shape_type(a);
  const uint32_t tb = shape_type(b);
  if (!members_well_typed(a) || !members_well_typed(b)) return XGWKB_E_INVALID_ENTITY;
  byte* result = nullptr;
  switch (dimension(ta)) {
    case 0:
      if (ta == XGWKB_TYPE_POINT && tb == XGWKB_TYPE_POINT) {
        result = merge_point_point(a, b, t);
      } else if (ta == XGWKB_TYPE_POINT) {
        result = merge_point_multipoint(a, b, t);
      } else if (tb == XGWKB_TYPE_POINT) {
        result = merge_point_multipoint(b, a, t);  // the same kernel, shapes swapped
      } else {
        result = merge_multipoints(a, b, t);
      }
      break;
    case 1:
      if (ta == XGWKB_TYPE_LINESTRING && tb == XGWKB_TYPE_LINESTRING) {
        merge_two_lines(a, b, t, &result);  // every outcome (1, 2, 3) is a success
      } else {
        std::vector<const byte*> lines = parts_of(a);
        for (const byte* m : parts_of(b)) lines.push_back(m);
        result = lines_blob(join_lines(lines, t));
      }
      break;
    default: {
      std::vector<const byte*> polygons = parts_of(a);
      for (const byte* m : parts_of(b)) polygons.push_back(m);
      const int32_t status = unite_polygons(polygons, &result);
      if (status != XGWKB_OK) return status;
      break;
    }
  }
  if (result == nullptr) return XGWKB_E_FAILED;
  *out = result;
  return XGWKB_OK;
}

}  // namespace

}  // namespace xg

extern "C" int32_t xgWKB_shape_merge(const unsigned char* a, const unsigned char* b, unsigned char** out,
                                     double t) noexcept {
  return xg::guarded([&]() -> int32_t {
    if (a == nullptr || b == nullptr || out == nullptr) return XGWKB_E_NULL_POINTER;
    const uint32_t ta = xg::shape_type(a);
    const uint32_t tb = xg::shape_type(b);
    if (!xg::is_geometry_type(ta)) return XGWKB_E_INVALID_ENTITY;
    if (!xg::is_geometry_type(tb) || xg::dimension(ta) != xg::dimension(tb)) return XGWKB_E_INCOMPATIBLE;
    return xg::merge(a, b, t, out);
  });
}
