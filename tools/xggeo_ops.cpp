// xggeo_ops.cpp - the operation table of the xggeo tool.
//
// One entry per operation: name, what it works on, its argument count (min, max), the argument
// synopsis, a one-line summary and the function.  Each subsystem of the library adds its
// operations in its own section below; an operation with more than a few lines of its own may
// live in a file of its own (tools/xggeo_ops_<subsystem>.cpp, declared here).
#include "xggeo_ops.h"

#include "xggeokit.h"

namespace xggeo {
namespace {

// ---- Well-Known Text -------------------------------------------------------------------------

int32_t op_wkt(const Operands& in, const Args&, Output& out) {
  unsigned char* shape = nullptr;
  const int32_t status = xgWKB_shape_generate_from_WKT(in.text, &shape);
  if (status != XGWKB_OK) return status;
  if (shape == nullptr) return kUnreadableText;
  return out.shape(shape);
}

int32_t op_wkttype(const Operands& in, const Args&, Output& out) {
  int32_t type = 0;
  const int32_t status = xgWKB_shape_get_WKT_type(in.text, &type);
  if (status == XGWKB_OK) out.integer(type);
  return status;
}

int32_t op_wktsize(const Operands& in, const Args&, Output& out) {
  constexpr int32_t kUnset = -1;
  int32_t size = kUnset;
  const int32_t status = xgWKB_shape_get_WKT_size(in.text, &size);
  if (status != XGWKB_OK) return status;
  if (size == kUnset) {
    out.text("none");
  } else {
    out.integer(size);
  }
  return status;
}

// Every form of input, written in the output form (--of, or the input's own).
int32_t op_convert(const Operands& in, const Args&, Output& out) {
  unsigned char* copy = nullptr;
  const int32_t status = xgWKB_shape_duplicate(in.a, &copy);
  return status == XGWKB_OK ? out.shape(copy) : status;
}

// ---- Life cycle, size and type ---------------------------------------------------------------

int32_t op_type(const Operands& in, const Args&, Output& out) {
  uint32_t type = 0;
  const int32_t status = xgWKB_shape_get_type(in.a, &type);
  if (status == XGWKB_OK) out.integer(type);
  return status;
}

int32_t op_size(const Operands& in, const Args&, Output& out) {
  uint32_t size = 0;
  const int32_t status = xgWKB_shape_get_WKB_size(in.a, &size);
  if (status == XGWKB_OK) out.integer(size);
  return status;
}

int32_t op_extent(const Operands& in, const Args& args, Output& out) {
  _xgWKB_BOX box{};
  const int32_t status = xgWKB_shape_get_extent(in.a, args.integer_or(0, 0), &box);
  if (status != XGWKB_OK) return status;
  out.real(box.minx);
  out.real(box.miny);
  out.real(box.maxx);
  out.real(box.maxy);
  return status;
}

// ---- Part and point access -------------------------------------------------------------------

int32_t op_parts(const Operands& in, const Args&, Output& out) {
  uint32_t count = 0;
  const int32_t status = xgWKB_shape_get_num_parts(in.a, &count);
  if (status == XGWKB_OK) out.integer(count);
  return status;
}

int32_t op_points(const Operands& in, const Args& args, Output& out) {
  uint32_t count = 0;
  const int32_t status =
      xgWKB_shape_get_num_points(in.a, args.integer_or(0, 0), args.integer_or(1, 0), &count);
  if (status == XGWKB_OK) out.integer(count);
  return status;
}


// ---- Shared shapes of operation -------------------------------------------------------------

// Runs an operation that derives a new shape from one shape and prints it.
template <class Derive>
int32_t derived(Output& out, Derive&& derive) {
  unsigned char* result = nullptr;
  const int32_t status = derive(&result);
  if (status != XGWKB_OK) {
    xgWKB_shape_free(result);  // some operations hand a block out before they fail
    return status;
  }
  return out.shape(result);
}

// Runs an in-place transform on a copy of the shape and prints the copy.
template <class Transform>
int32_t transformed(const unsigned char* shape, Output& out, Transform&& transform) {
  unsigned char* copy = nullptr;
  int32_t status = xgWKB_shape_duplicate(shape, &copy);
  if (status == XGWKB_OK) status = transform(copy);
  if (status != XGWKB_OK) {
    xgWKB_shape_free(copy);
    return status;
  }
  return out.shape(copy);
}

// ---- Shape construction ----------------------------------------------------------------------

int32_t op_circle(const Operands&, const Args& args, Output& out) {
  const _xgWKB_POINT centre{args.real(0), args.real(1)};
  return derived(out, [&](unsigned char** r) {
    return xgWKB_shape_generate_polygon_from_circle(&centre, args.real(2), args.integer_or(3, 36), r);
  });
}

int32_t op_ellipse(const Operands&, const Args& args, Output& out) {
  const _xgWKB_POINT centre{args.real(0), args.real(1)};
  return derived(out, [&](unsigned char** r) {
    return xgWKB_shape_generate_from_ellipse(&centre, args.real(2), args.real(3), args.real_or(4, 0),
                                             args.integer_or(5, 36), r);
  });
}

int32_t op_rect(const Operands&, const Args& args, Output& out) {
  const _xgWKB_BOX box{args.real(0), args.real(1), args.real(2), args.real(3)};
  return derived(out, [&](unsigned char** r) { return xgWKB_shape_generate_polygon_from_rectangle(&box, r); });
}

int32_t op_part(const Operands& in, const Args& args, Output& out) {
  return derived(out, [&](unsigned char** r) { return xgWKB_shape_generate_from_part(in.a, args.integer(0), r); });
}

int32_t op_aspoint(const Operands& in, const Args&, Output& out) {
  return derived(out, [&](unsigned char** r) { return xgWKB_shape_as_point(in.a, r); });
}

int32_t op_asline(const Operands& in, const Args&, Output& out) {
  return derived(out, [&](unsigned char** r) { return xgWKB_shape_as_line(in.a, r); });
}

int32_t op_assimpleline(const Operands& in, const Args&, Output& out) {
  return derived(out, [&](unsigned char** r) { return xgWKB_shape_as_simple_line(in.a, r); });
}

int32_t op_aspolygon(const Operands& in, const Args&, Output& out) {
  return derived(out, [&](unsigned char** r) { return xgWKB_shape_as_polygon(in.a, r); });
}

// ---- Metrics ---------------------------------------------------------------------------------

int32_t op_area(const Operands& in, const Args& args, Output& out) {
  double area = 0;
  const int32_t status = xgWKB_shape_get_area(in.a, args.integer_or(0, 0), &area);
  if (status == XGWKB_OK) out.real(area);
  return status;
}

int32_t op_length(const Operands& in, const Args& args, Output& out) {
  double length = 0;
  const int32_t status = xgWKB_shape_get_length(in.a, args.integer_or(0, 0), &length);
  if (status == XGWKB_OK) out.real(length);
  return status;
}

int32_t op_closed(const Operands& in, const Args& args, Output& out) {
  const int32_t closed = xgWKB_shape_is_close(in.a, args.real_or(0, kDefaultTolerance));
  if (closed < 0) return closed;
  out.boolean(closed == 1);
  return XGWKB_OK;
}

int32_t op_centroid(const Operands& in, const Args&, Output& out) {
  _xgWKB_POINT c{};
  const int32_t status = xgWKB_shape_get_centroid(in.a, &c);
  if (status != XGWKB_OK) return status;
  return derived(out, [&](unsigned char** r) { return xgWKB_shape_generate_point(&c, r); });
}

int32_t op_boundary(const Operands& in, const Args&, Output& out) {
  return derived(out, [&](unsigned char** r) { return xgWKB_shape_get_boundary(in.a, r); });
}

// ---- Validation ------------------------------------------------------------------------------

// Prints "true", or "false" with the code and message of the rule broken.
int32_t op_valid(const Operands& in, const Args&, Output& out) {
  int32_t status = 0;
  const bool valid = xgWKB_shape_check_WKBdata(in.a, &status) == 1;
  out.boolean(valid);
  if (!valid && status != 0) {
    out.integer(status);
    char* message = nullptr;
    if (xgWKB_shape_get_error_description_utf8(status, &message)) {
      out.text(message);
      xgWKB_shape_free(message);
    }
  }
  return XGWKB_OK;
}

// ---- Affine transforms -----------------------------------------------------------------------

int32_t op_move(const Operands& in, const Args& args, Output& out) {
  return transformed(in.a, out, [&](unsigned char* s) { return xgWKB_shape_move(s, args.real(0), args.real(1)); });
}

int32_t op_rotate(const Operands& in, const Args& args, Output& out) {
  return transformed(in.a, out, [&](unsigned char* s) {
    return xgWKB_shape_rotate(s, args.real(0), args.real_or(1, 0), args.real_or(2, 0));
  });
}

int32_t op_stretch(const Operands& in, const Args& args, Output& out) {
  const _xgWKB_POINT base{args.real(0), args.real(1)};
  return transformed(in.a, out, [&](unsigned char* s) {
    return xgWKB_shape_stretch(s, &base, args.real(2), args.real(3));
  });
}

int32_t op_mirror(const Operands& in, const Args& args, Output& out) {
  const _xgWKB_POINT p1{args.real(0), args.real(1)}, p2{args.real(2), args.real(3)};
  return derived(out, [&](unsigned char** r) { return xgWKB_shape_mirror(in.a, &p1, &p2, r, args.real_or(4, kDefaultTolerance)); });
}

// ---- Relations between two shapes ------------------------------------------------------------

using Predicate = int32_t (*)(const unsigned char*, const unsigned char*, double);

// Prints whether the predicate holds for -a against -b with tolerance TOL (default
// kDefaultTolerance).
template <Predicate predicate>
int32_t relation(const Operands& in, const Args& args, Output& out) {
  out.boolean(predicate(in.a, in.b, args.real_or(0, kDefaultTolerance)) == 1);
  return XGWKB_OK;
}

}  // namespace

const Op kOperations[] = {
    // Well-Known Text
    {"wkt", Inputs::kText, 0, 0, "", "read each text and write the shape back as text", op_wkt},
    {"wkttype", Inputs::kText, 0, 0, "", "type code named by the text's first word", op_wkttype},
    {"wktsize", Inputs::kText, 0, 0, "", "blob size estimated from the text alone, or none",
     op_wktsize},
    {"convert", Inputs::kShape, 0, 0, "", "each geometry in the output form (--of: dialect, wkt, wkb, geojson)",
     op_convert},
    // Life cycle, size and type
    {"type", Inputs::kShape, 0, 0, "", "type code of the shape", op_type},
    {"size", Inputs::kShape, 0, 0, "", "size of the shape's blob in bytes", op_size},
    {"extent", Inputs::kShape, 0, 1, "[PART]",
     "minx miny maxx maxy of the shape (PART 0) or of one part", op_extent},
    // Part and point access
    {"parts", Inputs::kShape, 0, 0, "", "number of rings or members", op_parts},
    {"points", Inputs::kShape, 0, 2, "[PART [SUBPART]]",
     "points of the shape, of part PART, or of ring SUBPART of member PART", op_points},
    // Shape construction
    {"circle", Inputs::kNone, 3, 4, "CX CY R [N]", "polygon of N points (default 36) on a circle", op_circle},
    {"ellipse", Inputs::kNone, 4, 6, "CX CY A B [START [N]]",
     "polygon of N points on an ellipse from angle START (radians)", op_ellipse},
    {"rect", Inputs::kNone, 4, 4, "MINX MINY MAXX MAXY", "polygon of a rectangle", op_rect},
    {"part", Inputs::kShape, 1, 1, "INDEX", "member INDEX of a multi-type as a shape of its own", op_part},
    {"aspoint", Inputs::kShape, 0, 0, "", "multipoint of every vertex", op_aspoint},
    {"asline", Inputs::kShape, 0, 0, "", "the shape's lines: rings become linestrings", op_asline},
    {"assimpleline", Inputs::kShape, 0, 0, "", "the shape's lines split where they cross each other",
     op_assimpleline},
    {"aspolygon", Inputs::kShape, 0, 0, "", "multipolygon of closed simple lines, nested rings as holes",
     op_aspolygon},
    // Metrics
    {"area", Inputs::kShape, 0, 1, "[PART]", "area of the shape or of one part", op_area},
    {"length", Inputs::kShape, 0, 1, "[PART]", "length of the shape or of one part", op_length},
    {"closed", Inputs::kShape, 0, 1, "[TOL]", "whether a line's ends meet within TOL (default 0.0001)",
     op_closed},
    {"centroid", Inputs::kShape, 0, 0, "", "centroid of a polygon's outer ring", op_centroid},
    {"boundary", Inputs::kShape, 0, 0, "", "boundary of the shape", op_boundary},
    // Validation
    {"valid", Inputs::kShape, 0, 0, "", "whether the shape is well formed, else the rule it breaks",
     op_valid},
    // Affine transforms
    {"move", Inputs::kShape, 2, 2, "DX DY", "the shape moved by DX DY", op_move},
    {"rotate", Inputs::kShape, 1, 3, "ANGLE [CX CY]", "the shape turned clockwise by ANGLE radians about CX CY",
     op_rotate},
    {"stretch", Inputs::kShape, 4, 4, "BX BY FX FY", "the shape scaled by FX FY about BX BY", op_stretch},
    {"mirror", Inputs::kShape, 4, 5, "X1 Y1 X2 Y2 [TOL]", "mirror image about the line X1 Y1 - X2 Y2",
     op_mirror},
    // Relations between two shapes
    {"disjoint", Inputs::kShapes, 0, 1, "[TOL]", "whether -a and -b have no point in common",
     relation<xgWKB_shape_is_disjoint>},
    {"intersects", Inputs::kShapes, 0, 1, "[TOL]", "whether -a and -b have a point in common",
     relation<xgWKB_shape_is_intersecting>},
    {"within", Inputs::kShapes, 0, 1, "[TOL]", "whether -a lies within -b", relation<xgWKB_shape_is_within>},
    {"contains", Inputs::kShapes, 0, 1, "[TOL]", "whether -a contains -b", relation<xgWKB_shape_is_containing>},
    {"crosses", Inputs::kShapes, 0, 1, "[TOL]", "whether -a crosses -b", relation<xgWKB_shape_is_crossing>},
    {"overlaps", Inputs::kShapes, 0, 1, "[TOL]", "whether -a and -b overlap", relation<xgWKB_shape_is_overlapping>},
    {"touches", Inputs::kShapes, 0, 1, "[TOL]", "whether -a and -b meet only on their boundaries",
     relation<xgWKB_shape_is_touching>},
    {"equals", Inputs::kShapes, 0, 1, "[TOL]", "whether -a and -b have the same vertices within TOL",
     relation<xgWKB_shape_is_equal>},
    // Overlay
    {"intersection", Inputs::kShapes, 0, 1, "[TOL]", "common part of -a and -b", op_intersection},
    {"union", Inputs::kShapes, 0, 1, "[TOL]", "-a and -b together", op_union},
    {"difference", Inputs::kShapes, 0, 1, "[TOL]", "-a without -b", op_difference},
    {"symdifference", Inputs::kShapes, 0, 1, "[TOL]", "what lies in just one of -a and -b", op_symdifference},
    {"overlay", Inputs::kShapes, 0, 1, "[TOL]", "three lines: only in -a, only in -b, in both", op_overlay},
    // Buffer and clipping
    {"buffer", Inputs::kShape, 1, 2, "D [M]",
     "region within D of the shape (polygons shrink for D < 0); none when D is below the minimum radius M",
     op_buffer},
    {"clip", Inputs::kShape, 4, 4, "MINX MINY MAXX MAXY", "the part of the shape inside the box", op_clip},
    {"cutline", Inputs::kShapes, 0, 1, "[TOL]", "two lines: the pieces of line -a inside polygon -b, those outside",
     op_cutline},
    // Hull, distance and merge
    {"hull", Inputs::kShape, 0, 1, "[TOL]", "convex hull of the shape's vertices", op_hull},
    {"distance", Inputs::kShapes, 0, 1, "[TOL]", "shortest distance between -a and -b", op_distance},
    {"merge", Inputs::kShapes, 0, 1, "[TOL]", "-a and -b merged into one shape, lines joined end to end",
     op_merge},
    // Linear referencing, snapping and envelope relations
    {"along", Inputs::kShape, 1, 1, "F", "the point at fraction F of a linestring's length", op_along},
    {"snap", Inputs::kShape, 4, 4, "X Y T MODES",
     "X Y snapped onto the shape within T; MODES adds 4 end points, 1 vertices, 2 edges", op_snap},
    {"envelope", Inputs::kShape, 5, 6, "REL MINX MINY MAXX MAXY [TOL]",
     "whether the shape REL (disjoint, intersects, within, contains, crosses, overlaps, touches) the box",
     op_envelope},
    // Annotations
    {"text", Inputs::kNone, 8, 10, "TEXT X Y ANGLE MINX MINY MAXX MAXY [LX LY]",
     "a SingleText built from its fields, read back: text, point, angle, leader (or none), box", op_text},
    {"outline", Inputs::kNone, 8, 10, "TEXT X Y ANGLE MINX MINY MAXX MAXY [LX LY]",
     "the outline polygon of a SingleText: its box turned by ANGLE about (X, Y)", op_outline},
    // Coordinate codec
    {"encode", Inputs::kShape, 0, 3, "[OX OY SCALE]",
     "the shape's compressed coordinate stream in hex (origin 0 0, scale 100 by default); with -t "
     "also stream bytes / blob bytes", op_encode},
    {"decode", Inputs::kText, 0, 3, "[OX OY SCALE]", "the shape of a compressed coordinate stream given in hex",
     op_decode},
};

const std::size_t kOperationCount = sizeof kOperations / sizeof kOperations[0];

namespace {

// Printed for each relation between two shapes.
constexpr const char* kRelationNotes =
    "  TOL is the tolerance (default 0.0001): a vertex within TOL of an edge lies on it, and two\n"
    "  points are equal when they differ by strictly less than TOL in x and in y.  With TOL 0 no\n"
    "  two points are equal, not even a point and itself, so shared vertices and boundaries can\n"
    "  go unrecognised: a polygon can then fail to be within itself, and overlap itself.\n";

// equals adds the partial comparisons of the library's equality test.
constexpr const char* kEqualsNotes =
    "  TOL is the tolerance (default 0.0001); coordinates are equal when they differ by strictly\n"
    "  less than TOL, so with TOL 0 nothing is equal, not even a shape and itself.\n"
    "  The shapes must have the same type and their vertices agree in the same order (no\n"
    "  reversal, no other starting vertex of a ring).  Two comparisons are partial on purpose:\n"
    "  - polygons (and the members of multipolygons) are compared on the first half of their\n"
    "    points only: of a ring of n points, only the first n + 1 coordinates (x1 y1 x2 y2 ...)\n"
    "    are compared, the rest of the ring is not looked at;\n"
    "  - multipoints are compared over the points of -b only: an -a with extra points after\n"
    "    those of -b equals -b (the other way round the answer is false).\n";

}  // namespace

const char* operation_notes(const Op& op) {
  if (op.run == relation<xgWKB_shape_is_equal>) return kEqualsNotes;
  const OpFunction relations[] = {relation<xgWKB_shape_is_disjoint>, relation<xgWKB_shape_is_intersecting>,
                                  relation<xgWKB_shape_is_within>, relation<xgWKB_shape_is_containing>,
                                  relation<xgWKB_shape_is_crossing>, relation<xgWKB_shape_is_overlapping>,
                                  relation<xgWKB_shape_is_touching>};
  for (const OpFunction r : relations) {
    if (op.run == r) return kRelationNotes;
  }
  return nullptr;
}

}  // namespace xggeo
