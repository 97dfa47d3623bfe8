// ops.cpp - the operation tables: one row per vectorised function.  The adapters turn each
// export's own signature into the table's; nothing here touches Python.
#include "ops.h"

#include <cctype>
#include <cstring>
#include <limits>

#include <xggeokit.h>

#include "shape.h"

namespace xgpy {

namespace {

// ---- small adapters ---------------------------------------------------------------------------

// The nil shape is what an overlay leaves when nothing is left: it measures 0 and has no bounds
// (nan), as empty geometries do in Shapely, so that results can be measured without filtering.
int32_t area(const unsigned char *s, const double *, double *out) {
  if (xgWKB_shape_is_nil(s)) return *out = 0.0, XGWKB_OK;
  return xgWKB_shape_get_area(s, 0, out);
}
int32_t length(const unsigned char *s, const double *, double *out) {
  if (xgWKB_shape_is_nil(s)) return *out = 0.0, XGWKB_OK;
  return xgWKB_shape_get_length(s, 0, out);
}

int32_t bounds(const unsigned char *s, const double *, double *out) {
  uint32_t type = 0;
  xgWKB_shape_get_type(s, &type);
  if (type == XGWKB_TYPE_ENVELOPE) {
    for (int k = 0; k < 4; ++k) std::memcpy(out + k, s + 5 + 8 * k, 8);
    return XGWKB_OK;
  }
  if (type == XGWKB_TYPE_NIL) {
    for (int k = 0; k < 4; ++k) out[k] = std::numeric_limits<double>::quiet_NaN();
    return XGWKB_OK;
  }
  _xgWKB_BOX box{};
  int32_t status = xgWKB_shape_get_extent(s, 0, &box);
  if (status == XGWKB_OK) {
    out[0] = box.minx, out[1] = box.miny, out[2] = box.maxx, out[3] = box.maxy;
  }
  return status;
}

int32_t is_valid(const unsigned char *s, const double *) {
  int32_t status = 0;
  return xgWKB_shape_check_WKBdata(s, &status) ? 1 : 0;
}

int32_t is_closed(const unsigned char *s, const double *p) { return xgWKB_shape_is_close(s, p[0]); }
int32_t is_empty(const unsigned char *s, const double *) { return xgWKB_shape_is_nil(s) ? 1 : 0; }

int32_t convex_hull(const unsigned char *s, const double *p, unsigned char **out) {
  return xgWKB_shape_generate_convex_hull(s, out, p[0]);
}

int32_t centroid(const unsigned char *s, const double *, unsigned char **out) {
  _xgWKB_POINT c{};
  int32_t status = xgWKB_shape_get_centroid(s, &c);
  return status == XGWKB_OK ? xgWKB_shape_generate_point(&c, out) : status;
}

int32_t boundary(const unsigned char *s, const double *, unsigned char **out) {
  unsigned char *result = nullptr;
  int32_t status = xgWKB_shape_get_boundary(s, &result);
  if (status == XGWKB_E_NIL_AS_WKB) {
    // A point's boundary comes back as a nil shape with a warning status: the nil shape is the answer.
    *out = result;
    return XGWKB_OK;
  }
  if (status == XGWKB_OK) *out = result;
  else xgWKB_shape_free(result);
  return status;
}

int32_t as_points(const unsigned char *s, const double *, unsigned char **out) { return xgWKB_shape_as_point(s, out); }
int32_t as_lines(const unsigned char *s, const double *, unsigned char **out) { return xgWKB_shape_as_line(s, out); }
int32_t as_polygons(const unsigned char *s, const double *, unsigned char **out) {
  return xgWKB_shape_as_polygon(s, out);
}

int32_t envelope(const unsigned char *s, const double *, unsigned char **out) {
  double b[4];
  int32_t status = bounds(s, nullptr, b);
  if (status != XGWKB_OK) return status;
  _xgWKB_BOX box{b[0], b[1], b[2], b[3]};
  return xgWKB_shape_generate_envelope(&box, out);
}

// The in-place transforms work on a copy, so the input shape stays immutable.
template <class Apply>
int32_t on_copy(const unsigned char *s, unsigned char **out, Apply apply) {
  unsigned char *copy = nullptr;
  int32_t status = xgWKB_shape_duplicate(s, &copy);
  if (status != XGWKB_OK) return status;
  status = apply(copy);
  if (status != XGWKB_OK) {
    xgWKB_shape_free(copy);
    return status;
  }
  *out = copy;
  return XGWKB_OK;
}

int32_t move(const unsigned char *s, const double *p, unsigned char **out) {
  return on_copy(s, out, [p](unsigned char *c) { return xgWKB_shape_move(c, p[0], p[1]); });
}
int32_t rotate(const unsigned char *s, const double *p, unsigned char **out) {
  return on_copy(s, out, [p](unsigned char *c) { return xgWKB_shape_rotate(c, p[0], p[1], p[2]); });
}
int32_t stretch(const unsigned char *s, const double *p, unsigned char **out) {
  const _xgWKB_POINT base{p[2], p[3]};
  return on_copy(s, out, [p, &base](unsigned char *c) { return xgWKB_shape_stretch(c, &base, p[0], p[1]); });
}
int32_t mirror(const unsigned char *s, const double *p, unsigned char **out) {
  const _xgWKB_POINT a{p[0], p[1]}, b{p[2], p[3]};
  return xgWKB_shape_mirror(s, &a, &b, out, p[4]);
}

int32_t take_text(int32_t status, char *text, std::string *out) {
  if (status != XGWKB_OK) return status;
  if (text == nullptr) return XGWKB_E_FAILED;
  try {
    out->assign(text);
  } catch (...) {
    status = XGWKB_E_FAILED;
  }
  xgWKB_shape_free_WKT(text);
  return status;
}

int32_t to_wkt(const unsigned char *s, const double *, std::string *out) {
  // The nil shape has no dialect text of its own; "point empty" reads back as nil.
  if (xgWKB_shape_is_nil(s)) return out->assign("point empty"), XGWKB_OK;
  char *text = nullptr;
  int32_t status = xgWKB_shape_generate_to_WKT(s, &text);
  return take_text(status, text, out);
}

int32_t to_ogc_wkt(const unsigned char *s, const double *p, std::string *out) {
  char *text = nullptr;
  int32_t status = xgWKB_shape_to_ogc_wkt(s, static_cast<int32_t>(p[0]), &text);
  return take_text(status, text, out);
}

int32_t to_wkb(const unsigned char *s, const double *p, std::string *out) {
  unsigned char *wkb = nullptr;
  uint32_t size = 0;
  int32_t status = xgWKB_shape_to_wkb(s, p[0] != 0.0 ? 1 : 0, &wkb, &size);
  if (status != XGWKB_OK) return status;
  try {
    out->assign(reinterpret_cast<const char *>(wkb), size);
  } catch (...) {
    status = XGWKB_E_FAILED;
  }
  xgWKB_shape_free(wkb);
  return status;
}

int32_t is_valid_reason(const unsigned char *s, const double *, std::string *out) {
  int32_t status = 0;
  uint32_t valid = xgWKB_shape_check_WKBdata(s, &status);
  try {
    if (valid) out->assign("Valid Geometry");
    else if (status == 0) out->assign("Not a geometry");
    else out->assign(status_message(status));
  } catch (...) {
    return XGWKB_E_FAILED;
  }
  return XGWKB_OK;
}

// The envelope predicates read four doubles from an envelope blob: anything else is refused
// rather than read past its end.
template <uint32_t (*Fn)(const unsigned char *, const unsigned char *, double)>
int32_t envelope_predicate(const unsigned char *shape, const unsigned char *box, double t) {
  uint32_t type = 0;
  xgWKB_shape_get_type(box, &type);
  if (type != XGWKB_TYPE_ENVELOPE) return XGWKB_E_INVALID_ENTITY;
  return Fn(shape, box, t) ? 1 : 0;
}

// A point found on a shape, handed out as a point shape.
int32_t point_shape(int32_t status, const _xgWKB_POINT &at, unsigned char **out) {
  return status == XGWKB_OK ? xgWKB_shape_generate_point(&at, out) : status;
}

int32_t line_interpolate(const unsigned char *s, const double *p, unsigned char **out) {
  _xgWKB_POINT at{};
  return point_shape(xgWKB_shape_find_along(s, p[0], &at), at, out);
}

int32_t snap(const unsigned char *s, const double *p, unsigned char **out) {
  const _xgWKB_POINT target{p[0], p[1]};
  _xgWKB_POINT at{};
  return point_shape(xgWKB_shape_snap_point(s, &target, p[2], static_cast<int32_t>(p[3]), &at), at, out);
}

int32_t buffer(const unsigned char *s, const double *p, unsigned char **out) {
  return xgWKB_shape_generate_buffer(s, p[0], out, p[1]);
}

// Clipping reads four doubles from an envelope blob: anything else is refused, as above.
int32_t clip(const unsigned char *shape, const unsigned char *box, unsigned char **out, double t) {
  uint32_t type = 0;
  xgWKB_shape_get_type(box, &type);
  if (type != XGWKB_TYPE_ENVELOPE) return XGWKB_E_INVALID_ENTITY;
  return xgWKB_shape_clip(shape, box, out, t);
}

int32_t distance(const unsigned char *a, const unsigned char *b, double t, double *out) {
  return xgWKB_shape_calculate_distance(a, b, out, t);
}

// Text is the library's dialect when it starts with a lower-case keyword and reads as one;
// anything else (and dialect-looking text the dialect reader leaves unread) goes to the OGC
// reader, whose status is the one reported.
int32_t from_wkt(const char *text, std::size_t len, unsigned char **out) {
  if (std::strlen(text) != len) return XGWKB_E_TEXT_SYNTAX;  // an embedded zero byte
  const char *p = text;
  while (*p == ' ' || *p == '\t' || *p == '\n' || *p == '\r') ++p;
  if (std::islower(static_cast<unsigned char>(*p))) {
    unsigned char *shape = nullptr;
    if (xgWKB_shape_generate_from_WKT(text, &shape) == XGWKB_OK && shape != nullptr) {
      *out = shape;
      return XGWKB_OK;
    }
  }
  return xgWKB_shape_from_ogc_wkt(text, 0, out);
}

int32_t from_wkb(const char *data, std::size_t len, unsigned char **out) {
  return xgWKB_shape_from_wkb(reinterpret_cast<const unsigned char *>(data), len, out);
}

// ---- the tables -------------------------------------------------------------------------------

const F64Op kF64Ops[] = {
    {"area", "", 1, area, "Area of polygons and multipolygons (holes subtracted)."},
    {"length", "", 1, length, "Length of lines, or of the rings of polygons."},
    {"bounds", "", 4, bounds, "(minx, miny, maxx, maxy) of each shape, as the last axis."},
};

const BoolOp kBoolOps[] = {
    {"is_valid", "", is_valid, "True for a well-formed geometry."},
    {"is_closed", "tolerance=0.0001", is_closed, "True for a line whose ends meet within tolerance."},
    {"is_empty", "", is_empty, "True for the nil shape."},
};

const ShapeOp kShapeOps[] = {
    {"convex_hull", "tolerance=0.0001", convex_hull, "Convex hull of the vertices."},
    {"centroid", "", centroid, "Centroid of a polygon's outer ring, as a point."},
    {"boundary", "", boundary, "Boundary: rings of polygons, end points of lines."},
    {"as_points", "", as_points, "Multipoint of every vertex."},
    {"as_lines", "", as_lines, "Line form: rings of polygons, a line through multipoints."},
    {"as_polygons", "", as_polygons, "Multipolygon from closed, simple rings."},
    {"envelope", "", envelope, "The envelope (type 21) of each shape's bounds."},
    {"move", "dx, dy", move, "Shapes moved by (dx, dy)."},
    {"rotate", "angle, cx=0.0, cy=0.0", rotate, "Shapes rotated clockwise by angle radians about (cx, cy)."},
    {"stretch", "fx, fy, bx=0.0, by=0.0", stretch, "Shapes scaled by fx, fy about (bx, by)."},
    {"mirror", "x1, y1, x2, y2, tolerance=0.0001", mirror, "Mirror images about the line (x1, y1)-(x2, y2)."},
    {"buffer", "distance, min_radius=0.0", buffer, "The region within distance (None below min_radius)."},
    {"line_interpolate", "fraction", line_interpolate, "The point at a fraction (0 to 1) of a linestring's length."},
    {"snap", "x, y, tolerance, modes=7.0", snap,
     "(x, y) snapped to the nearest end point (4), vertex (1) or edge point (2) within tolerance; modes OR-ed."},
};

const TextOp kTextOps[] = {
    {"to_wkt", "", false, to_wkt, "The library's WKT dialect."},
    {"to_ogc_wkt", "precision=-1", false, to_ogc_wkt, "OGC WKT; precision -1 writes the shortest exact digits."},
    {"to_wkb", "big_endian=0", true, to_wkb, "Standard 2D WKB bytes."},
    {"is_valid_reason", "", false, is_valid_reason, "\"Valid Geometry\" or the message of the first rule broken."},
};

const PredicateOp kPredicateOps[] = {
    {"intersects", xgWKB_shape_is_intersecting, "a and b have a point in common."},
    {"disjoint", xgWKB_shape_is_disjoint, "a and b have no point in common."},
    {"within", xgWKB_shape_is_within, "a lies in b."},
    {"contains", xgWKB_shape_is_containing, "b lies in a."},
    {"touches", xgWKB_shape_is_touching, "a and b meet only on their boundaries."},
    {"crosses", xgWKB_shape_is_crossing, "a and b cross."},
    {"overlaps", xgWKB_shape_is_overlapping, "a and b overlap."},
    {"equals", xgWKB_shape_is_equal, "a and b have equal vertices within tolerance, in order."},
    {"envelope_disjoint", envelope_predicate<xgWKB_shape_envelope_is_disjoint>, "a is apart from envelope b."},
    {"envelope_intersects", envelope_predicate<xgWKB_shape_envelope_is_intersecting>, "a meets envelope b."},
    {"envelope_within", envelope_predicate<xgWKB_shape_envelope_is_within>, "a lies within envelope b."},
    {"envelope_contains", envelope_predicate<xgWKB_shape_envelope_is_containing>, "a contains envelope b."},
    {"envelope_crosses", envelope_predicate<xgWKB_shape_envelope_is_crossing>, "a crosses envelope b."},
    {"envelope_overlaps", envelope_predicate<xgWKB_shape_envelope_is_overlapping>, "a overlaps envelope b."},
    {"envelope_touches", envelope_predicate<xgWKB_shape_envelope_is_touching>, "a touches envelope b."},
};

const BinaryF64Op kBinaryF64Ops[] = {
    {"distance", distance, "Shortest distance between a and b."},
};

const BinaryShapeOp kBinaryShapeOps[] = {
    {"intersection", xgWKB_shape_intersection, "Points, lines or area common to a and b."},
    {"union", xgWKB_shape_union, "a and b united."},
    {"difference", xgWKB_shape_difference, "a without b."},
    {"symmetric_difference", xgWKB_shape_symmetric_difference, "What lies in exactly one of a and b."},
    {"merge", xgWKB_shape_merge, "a and b merged into one shape, lines joined end to end."},
    {"clip", clip, "The part of a inside envelope b (see clip_by_rect)."},
};

const ReadOp kReadOps[] = {
    {"from_wkt", from_wkt, "Shapes from the library's WKT dialect or OGC WKT."},
    {"from_wkb", from_wkb, "Shapes from standard WKB (either byte order, Z/M/SRID variants)."},
};

template <class Op, std::size_t N>
Table<Op> table(const Op (&rows)[N]) {
  return Table<Op>{rows, N};
}

}  // namespace

Table<F64Op> f64_ops() { return table(kF64Ops); }
Table<BoolOp> bool_ops() { return table(kBoolOps); }
Table<ShapeOp> shape_ops() { return table(kShapeOps); }
Table<TextOp> text_ops() { return table(kTextOps); }
Table<PredicateOp> predicate_ops() { return table(kPredicateOps); }
Table<BinaryF64Op> binary_f64_ops() { return table(kBinaryF64Ops); }
Table<BinaryShapeOp> binary_shape_ops() { return table(kBinaryShapeOps); }
Table<ReadOp> read_ops() { return table(kReadOps); }

}  // namespace xgpy
