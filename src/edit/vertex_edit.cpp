// vertex_edit.cpp - adding, deleting and changing single vertices of linestrings,
// multilinestrings, polygons and multipolygons.
//
// Every operation first finds the counted run it works on (a linestring body or a ring) and then
// runs one of three shared steps: insert a vertex, leave one out, or overwrite one.  Adding and
// deleting build a new blob with a Splice; changing writes into the caller's blob.
#include "core/blob.h"
#include "core/boundary.h"
#include "edit/edit_checks.h"
#include "edit/splice.h"

using namespace xg;
using namespace xg::edit;

namespace xg {
namespace {

constexpr uint32_t kMinLineToDelete = 3;  // a linestring keeps at least 2 vertices
constexpr uint32_t kMinRingToDelete = 5;  // a ring keeps at least 4, its closing vertex included

// The run a vertex operation works on.  A linestring body belongs to a linestring blob whose
// header is written afresh with the new count; a ring has only its own count patched.
struct Site {
  const byte* run;
  const byte* line;  // the linestring blob holding the run, or null for a polygon ring

  uint32_t count() const { return PointRun{run}.size(); }
};

Site line_site(const byte* line) { return Site{line_run(line).at, line}; }
Site ring_site(const byte* polygon, int32_t ring) {
  return Site{ring_at(polygon, slot(ring)), nullptr};
}

void patch_count(Splice& edit, const Site& site, uint32_t count) {
  if (site.line != nullptr) {
    edit.renew_header(site.line, count);
  } else {
    edit.set_run_count(site.run, count);
  }
}

// The edit that puts point before vertex index of the site; vertex holds its 16 encoded bytes.
void splice_add(Splice& edit, const Site& site, int32_t index, const byte (&vertex)[kCoordSize]) {
  edit.insert(vertex_at(site.run, slot(index)), ByteRange{vertex, vertex + kCoordSize});
  patch_count(edit, site, site.count() + 1);
}

// The edit that leaves out vertex index of the site.  For a ring, leaving out the first or the
// closing vertex gives vertices 2..n-1 followed by vertex 2 again: the ring stays closed and
// starts at the old second vertex.
void splice_delete(Splice& edit, const Site& site, int32_t index) {
  const uint32_t n = site.count();
  const uint32_t i = slot(index);
  if (site.line == nullptr && (i == 0 || i == n - 1)) {
    edit.erase(vertex_span(site.run, 0))
        .replace(vertex_span(site.run, n - 1), vertex_span(site.run, 1));
  } else {
    edit.erase(vertex_span(site.run, i));
  }
  patch_count(edit, site, n - 1);
}

// Overwrites vertex index of the site in place; on a ring the first and the closing vertex move
// together so that the ring stays closed.
void change_vertex(byte* shape, const Site& site, int32_t index, const _xgWKB_POINT& point) {
  const uint32_t n = site.count();
  const uint32_t i = slot(index);
  if (site.line == nullptr && (i == 0 || i == n - 1)) {
    store_point(writable(shape, vertex_at(site.run, 0)), point);
    store_point(writable(shape, vertex_at(site.run, n - 1)), point);
  } else {
    store_point(writable(shape, vertex_at(site.run, i)), point);
  }
}

// Builds the result of adding point before vertex index of the site (index tested by the caller).
int32_t build_add(const byte* shape, std::size_t size, const Site& site, int32_t index,
                  const _xgWKB_POINT& point, byte** out) {
  byte vertex[kCoordSize];
  store_point(vertex, point);
  Splice edit(shape, size);
  splice_add(edit, site, index, vertex);
  return edit.build(out);
}

// Writes the result of a delete into a block handed out earlier (sized for one vertex fewer).
void fill_delete(const byte* shape, std::size_t size, const Site& site, int32_t index,
                 byte* block) {
  Splice edit(shape, size);
  splice_delete(edit, site, index);
  edit.write(block);
}

// The delete of the multilinestring and polygon forms.  Intended: the block is the caller's
// from the moment it is handed out, also when a test after it fails.
int32_t delete_into_handed_block(const byte* shape, std::size_t size, const Site& site,
                                 int32_t point_index, uint32_t min_points, byte** out) {
  byte* block = hand_out_block(size - kCoordSize, out);
  if (block == nullptr) return XGWKB_E_FAILED;
  if (site.count() < min_points) return XGWKB_E_UNCHANGED;
  if (!in_range(point_index, site.count())) return XGWKB_E_NO_PART;
  fill_delete(shape, size, site, point_index, block);
  return XGWKB_OK;
}

// Finds the run a vertex operation of a shape of `type` works on: the blob must be of that type
// and sized (-134), a multi-type's 1-based part must be in range (-100), and so must a polygon
// ring's 1-based index (-100).  part is not looked at for the single types, ring not for lines.
int32_t find_site(const byte* shape, uint32_t type, int32_t part, int32_t ring, std::size_t* size,
                  Site* site) {
  if (!sized_as(shape, type, size)) return XGWKB_E_INVALID_SHAPE;
  const byte* body = shape;
  if (is_multi_type(type)) {
    if (!in_range(part, shape_count(shape))) return XGWKB_E_NO_PART;
    body = member_of(shape, part);
  }
  if (type == XGWKB_TYPE_LINESTRING || type == XGWKB_TYPE_MULTILINESTRING) {
    *site = line_site(body);
    return XGWKB_OK;
  }
  if (!in_range(ring, shape_count(body))) return XGWKB_E_NO_PART;
  *site = ring_site(body, ring);
  return XGWKB_OK;
}

// The add of every form: the site, then the point index (-100), then the new blob.
int32_t add_vertex(const byte* shape, uint32_t type, int32_t part, int32_t ring, int32_t point_index,
                   const _xgWKB_POINT& point, byte** out) {
  std::size_t size = 0;
  Site site{};
  const int32_t status = find_site(shape, type, part, ring, &size, &site);
  if (status != XGWKB_OK) return status;
  if (!in_range(point_index, site.count())) return XGWKB_E_NO_PART;
  return build_add(shape, size, site, point_index, point, out);
}

// The delete of the multilinestring and polygon forms: the site, then the handed-out block.
int32_t delete_vertex(const byte* shape, uint32_t type, int32_t part, int32_t ring,
                      int32_t point_index, uint32_t min_points, byte** out) {
  std::size_t size = 0;
  Site site{};
  const int32_t status = find_site(shape, type, part, ring, &size, &site);
  if (status != XGWKB_OK) return status;
  return delete_into_handed_block(shape, size, site, point_index, min_points, out);
}

// The change of every form but the multilinestring: the site, the point index (-100), then the
// vertex is overwritten in the caller's blob.
int32_t change_vertex_at(byte* shape, uint32_t type, int32_t part, int32_t ring, int32_t point_index,
                         const _xgWKB_POINT& point) {
  std::size_t size = 0;
  Site site{};
  const int32_t status = find_site(shape, type, part, ring, &size, &site);
  if (status != XGWKB_OK) return status;
  if (!in_range(point_index, site.count())) return XGWKB_E_NO_PART;
  change_vertex(shape, site, point_index, point);
  return XGWKB_OK;
}

}  // namespace
}  // namespace xg

extern "C" {

// ---- linestring ----------------------------------------------------------------------------

int32_t xgWKB_shape_add_lineString_point(const unsigned char* shape, int32_t point_index,
                                         const _xgWKB_POINT* point, unsigned char** out) noexcept {
  if (shape == nullptr || point == nullptr || out == nullptr) return XGWKB_E_NULL_POINTER;
  return guarded([&] { return add_vertex(shape, XGWKB_TYPE_LINESTRING, 0, 0, point_index, *point, out); });
}

int32_t xgWKB_shape_delete_lineString_point(const unsigned char* shape, int32_t point_index,
                                            unsigned char** out) noexcept {
  if (shape == nullptr || out == nullptr) return XGWKB_E_NULL_POINTER;
  std::size_t size = 0;
  Site site{};
  const int32_t status = find_site(shape, XGWKB_TYPE_LINESTRING, 0, 0, &size, &site);
  if (status != XGWKB_OK) return status;
  if (!in_range(point_index, site.count())) return XGWKB_E_NO_PART;
  if (site.count() < kMinLineToDelete) return XGWKB_E_UNCHANGED;
  return guarded([&] {
    Splice edit(shape, size);
    splice_delete(edit, site, point_index);
    return edit.build(out);
  });
}

int32_t xgWKB_shape_change_linestring_point(unsigned char* shape, int32_t point_index,
                                            const _xgWKB_POINT* point) noexcept {
  if (shape == nullptr || point == nullptr) return XGWKB_E_NULL_POINTER;
  return change_vertex_at(shape, XGWKB_TYPE_LINESTRING, 0, 0, point_index, *point);
}

// ---- multilinestring -----------------------------------------------------------------------

int32_t xgWKB_shape_add_MultiLineString_point(const unsigned char* shape, int32_t part,
                                              int32_t point_index, const _xgWKB_POINT* point,
                                              unsigned char** out) noexcept {
  if (shape == nullptr || point == nullptr || out == nullptr) return XGWKB_E_NULL_POINTER;
  return guarded([&] { return add_vertex(shape, XGWKB_TYPE_MULTILINESTRING, part, 0, point_index, *point, out); });
}

int32_t xgWKB_shape_delete_MultiLineString_point(const unsigned char* shape, int32_t part,
                                                 int32_t point_index,
                                                 unsigned char** out) noexcept {
  if (shape == nullptr || out == nullptr) return XGWKB_E_NULL_POINTER;
  return guarded([&] { return delete_vertex(shape, XGWKB_TYPE_MULTILINESTRING, part, 0, point_index, kMinLineToDelete,
                       out); });
}

int32_t xgWKB_shape_chage_MultiLineString_point(unsigned char* shape, int32_t part,
                                                int32_t point_index,
                                                const _xgWKB_POINT* point) noexcept {
  if (shape == nullptr || point == nullptr) return XGWKB_E_NULL_POINTER;
  std::size_t size = 0;
  Site site{};
  const int32_t status = find_site(shape, XGWKB_TYPE_MULTILINESTRING, part, 0, &size, &site);
  if (status != XGWKB_OK) return status;
  // Intended: a point index that matches no vertex changes nothing and still succeeds.
  if (in_range(point_index, site.count())) change_vertex(shape, site, point_index, *point);
  return XGWKB_OK;
}

// ---- polygon -------------------------------------------------------------------------------

int32_t xgWKB_shape_add_polygon_point(const unsigned char* shape, int32_t ring_index,
                                      int32_t point_index, const _xgWKB_POINT* point,
                                      unsigned char** out) noexcept {
  if (shape == nullptr || point == nullptr || out == nullptr) return XGWKB_E_NULL_POINTER;
  // Intended: the closing vertex is left as it is, so adding at point 1 opens the ring.
  return guarded([&] { return add_vertex(shape, XGWKB_TYPE_POLYGON, 0, ring_index, point_index, *point, out); });
}

int32_t xgWKB_shape_delete_polygon_point(const unsigned char* shape, int32_t ring_index,
                                         int32_t point_index, unsigned char** out) noexcept {
  if (shape == nullptr || out == nullptr) return XGWKB_E_NULL_POINTER;
  return guarded([&] { return delete_vertex(shape, XGWKB_TYPE_POLYGON, 0, ring_index, point_index, kMinRingToDelete, out); });
}

int32_t xgWKB_shape_change_polygon_point(unsigned char* shape, int32_t ring_index,
                                         int32_t point_index, const _xgWKB_POINT* point) noexcept {
  if (shape == nullptr || point == nullptr) return XGWKB_E_NULL_POINTER;
  return change_vertex_at(shape, XGWKB_TYPE_POLYGON, 0, ring_index, point_index, *point);
}

// ---- multipolygon --------------------------------------------------------------------------

int32_t xgWKB_shape_add_multipolygon_point(const unsigned char* shape, int32_t part,
                                           int32_t ring_index, int32_t point_index,
                                           const _xgWKB_POINT* point,
                                           unsigned char** out) noexcept {
  if (shape == nullptr || point == nullptr || out == nullptr) return XGWKB_E_NULL_POINTER;
  return guarded([&] { return add_vertex(shape, XGWKB_TYPE_MULTIPOLYGON, part, ring_index, point_index, *point, out); });
}

int32_t xgWKB_shape_delete_multipolygon_point(const unsigned char* shape, int32_t part,
                                              int32_t ring_index, int32_t point_index,
                                              unsigned char** out) noexcept {
  if (shape == nullptr || out == nullptr) return XGWKB_E_NULL_POINTER;
  std::size_t size = 0;
  if (!sized_as(shape, XGWKB_TYPE_MULTIPOLYGON, &size)) return XGWKB_E_INVALID_SHAPE;
  if (!in_range(part, shape_count(shape))) return XGWKB_E_NO_PART;
  const byte* polygon = member_of(shape, part);
  // Intended: the block is handed out before the ring index is tested; a bad ring index leaves
  // it with the caller, while a ring too short (or a point index past it) takes it back.
  return guarded([&]() -> int32_t {
    byte* block = hand_out_block(size - kCoordSize, out);
    if (block == nullptr) return kOutOfMemory;
    if (!in_range(ring_index, shape_count(polygon))) return XGWKB_E_NO_PART;
    const Site site = ring_site(polygon, ring_index);
    const int32_t refused = site.count() < kMinRingToDelete        ? XGWKB_E_UNCHANGED
                            : !in_range(point_index, site.count()) ? XGWKB_E_NO_PART
                                                                   : XGWKB_OK;
    if (refused != XGWKB_OK) {
      std::free(block);
      *out = nullptr;
      return refused;
    }
    fill_delete(shape, size, site, point_index, block);
    return XGWKB_OK;
  });
}

int32_t xgWKB_shape_change_multipolygon_point(unsigned char* shape, int32_t part,
                                              int32_t ring_index, int32_t point_index,
                                              const _xgWKB_POINT* point) noexcept {
  if (shape == nullptr || point == nullptr) return XGWKB_E_NULL_POINTER;
  return change_vertex_at(shape, XGWKB_TYPE_MULTIPOLYGON, part, ring_index, point_index, *point);
}

}  // extern "C"
