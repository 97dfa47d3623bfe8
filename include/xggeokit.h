/*
 * xggeokit.h - the public interface of xgGeoKit, a library of planar vector geometry.
 *
 * Every geometry crossing this interface is a *shape*: one contiguous blob in little-endian
 * Well-Known Binary layout.  Byte 0 is a byte-order byte that the library always writes as 0
 * (the numbers that follow are little-endian all the same), a u32 type code follows at offset 1,
 * and the body depends on the type:
 *
 *   point            x, y                                      21 bytes
 *   linestring       u32 n, n points of 16 bytes                9 + 16n
 *   polygon          u32 r, r rings (u32 n, n points)           9 + sum(4 + 16n)
 *   multipoint       u32 k, k point blobs (with headers)        9 + 21k
 *   multilinestring  u32 k, k linestring blobs                  9 + sum of members
 *   multipolygon     u32 k, k polygon blobs                     9 + sum of members
 *   nil              nothing                                     5 bytes
 *   envelope         minx, miny, maxx, maxy                     37 bytes
 *
 * Doubles sit at arbitrary (usually odd) offsets.  Sizes are never stored; they are computed
 * from the counts.  Shapes returned through an out-pointer are fresh allocations owned by the
 * caller and released with xgWKB_shape_free; shapes passed in stay the caller's.
 *
 * Functions return a signed 32-bit status: 0 on success, a negative XGWKB_E_* code otherwise
 * (xgWKB_shape_get_error_description turns a code into its message).  Predicates return 1 or 0.
 * No function keeps state between calls; every function may be called from many threads at
 * once on different shapes.
 *
 * The header compiles as C (C99 or later) and as C++.
 */
#ifndef XGGEOKIT_H
#define XGGEOKIT_H

#include <stdint.h>

#if defined(XGGEO_BUILDING)
#define XGGEO_API __attribute__((visibility("default")))
#else
#define XGGEO_API
#endif

/* No exception leaves the library: to C++ callers every export is noexcept. */
#ifdef __cplusplus
#define XGGEO_NOEXCEPT noexcept
#else
#define XGGEO_NOEXCEPT
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* ------------------------------------------------------------------------------------------ */
/* Shared structures and constants                                                             */
/* ------------------------------------------------------------------------------------------ */

/* One planar coordinate pair: two packed doubles, 16 bytes. */
typedef struct _xgWKB_POINT {
  double x;
  double y;
} _xgWKB_POINT;

/* An axis-aligned envelope: four packed doubles, 32 bytes. */
typedef struct _xgWKB_BOX {
  double minx;
  double miny;
  double maxx;
  double maxy;
} _xgWKB_BOX;

/* Type codes stored at offset 1 of every shape blob. */
enum {
  XGWKB_TYPE_NIL = 0,
  XGWKB_TYPE_POINT = 1,
  XGWKB_TYPE_LINESTRING = 2,
  XGWKB_TYPE_POLYGON = 3,
  XGWKB_TYPE_MULTIPOINT = 4,
  XGWKB_TYPE_MULTILINESTRING = 5,
  XGWKB_TYPE_MULTIPOLYGON = 6,
  XGWKB_TYPE_SINGLETEXT = 9,
  XGWKB_TYPE_MULTITEXT = 10,
  XGWKB_TYPE_HORIDIM = 11,
  XGWKB_TYPE_VERTDIM = 12,
  XGWKB_TYPE_ALIGNEDDIM = 13,
  XGWKB_TYPE_ENVELOPE = 21
};

/* Status codes.  The library produces the ones listed here; the message table knows more. */
enum {
  XGWKB_OK = 0,
  XGWKB_E_FAILED = -1,               /* function call failed (also: out of memory) */
  XGWKB_E_NO_ANNOTATION = -3,        /* the shape holds no annotation */
  XGWKB_E_NOT_STARTED = -5,          /* the engine is not started */
  XGWKB_E_UNCHANGED = -6,            /* the given shape was not changed */
  XGWKB_E_INVALID_ENTITY = -27,      /* invalid entity: wrong kind of shape or failed precondition */
  XGWKB_E_TOO_MANY_POINTS = -36,     /* more than the given maximum number of points */
  XGWKB_E_NULL_POINTER = -65,        /* the given pointer is null or invalid */
  XGWKB_E_INVALID_ARGUMENT = -66,    /* the given argument value is invalid */
  XGWKB_E_INTEGRITY = -82,           /* shape integrity error */
  XGWKB_E_INVALID_SHAPE = -134,      /* the shape handle is invalid (type not taken) */
  XGWKB_E_NO_PART = -135,            /* the part index does not exist */
  XGWKB_E_INCOMPATIBLE = -136,       /* the shapes are incompatible with each other */
  XGWKB_E_INVALID_PART_OFFSET = -137, /* the part offset is invalid */
  XGWKB_E_RINGS_OVERLAP = -147,      /* two inner or two outer rings overlap */
  XGWKB_E_TOO_FEW_POINTS = -148,     /* fewer points than the feature type requires */
  XGWKB_E_NOT_CLOSED = -150,         /* polygon not correctly closed */
  XGWKB_E_HOLE_OUTSIDE = -151,       /* the outer ring does not wholly contain an inner ring */
  XGWKB_E_OVERLAPPING_POLYGONS = -154, /* overlapping polygons in a multipolygon; line doubles back */
  XGWKB_E_SELF_INTERSECTION = -155,  /* the boundary of a line or polygon intersects itself */
  XGWKB_E_INVALID_GEOMETRY_TYPE = -199, /* the type is not a valid geometry type */
  XGWKB_E_NIL_AS_WKB = -208,         /* a nil shape has no WKB representation */
  XGWKB_E_INVALID_INDEX = -317       /* invalid index argument */
};

/* ------------------------------------------------------------------------------------------ */
/* Life cycle, size and type                                                                   */
/* ------------------------------------------------------------------------------------------ */

/* Byte size of a point, linestring, polygon or multi-type blob, computed from its counts.
 * Returns 0; -65 for a null shape (size set to 0); -134 for any other type (size untouched). */
XGGEO_API int32_t xgWKB_shape_get_WKB_size(const unsigned char *shape,
                                           uint32_t *size) XGGEO_NOEXCEPT;

/* Allocates the 5-byte nil shape into *shape.  handle is only tested for being non-zero (-65). */
XGGEO_API int32_t xgWKB_shape_make_nil(uint32_t handle, unsigned char **shape) XGGEO_NOEXCEPT;

/* Releases a shape or a string the library returned; a null pointer is ignored. */
XGGEO_API void xgWKB_shape_free(void *shape) XGGEO_NOEXCEPT;

/* Releases the first count shapes of the array (not the array itself). */
XGGEO_API void xgWKB_shape_free_array(int32_t count, unsigned char **shapes) XGGEO_NOEXCEPT;

/* Copies a shape into a new blob *copy (a nil shape copies its 5 bytes; an annotation or
 * dimension as many bytes as its total-size field at offset 5 says).  Null shape: -134. */
XGGEO_API int32_t xgWKB_shape_duplicate(const unsigned char *shape, unsigned char **copy) XGGEO_NOEXCEPT;

/* Reads the type code at offset 1 without checking it.  Null shape: *type = 0 and -65. */
XGGEO_API int32_t xgWKB_shape_get_type(const unsigned char *shape, uint32_t *type) XGGEO_NOEXCEPT;

/* 1 for the nil shape (type 0), else 0; a null pointer gives 0. */
XGGEO_API uint32_t xgWKB_shape_is_nil(const unsigned char *shape) XGGEO_NOEXCEPT;

/* 1 for a point or multipoint, else 0; a null pointer gives 0. */
XGGEO_API uint32_t xgWKB_shape_is_point(const unsigned char *shape) XGGEO_NOEXCEPT;

/* 1 for a linestring or multilinestring, else 0; a null pointer gives 0. */
XGGEO_API uint32_t xgWKB_shape_is_line(const unsigned char *shape) XGGEO_NOEXCEPT;

/* 1 for a polygon or multipolygon, else 0; a null pointer gives 0. */
XGGEO_API uint32_t xgWKB_shape_is_polygon(const unsigned char *shape) XGGEO_NOEXCEPT;

/* 1 for a multipoint, multilinestring or multipolygon, else 0; a null pointer gives 0. */
XGGEO_API uint32_t xgWKB_shape_is_multipart(const unsigned char *shape) XGGEO_NOEXCEPT;

/* Envelope of a shape or of one of its parts.  part 0 is the whole shape.  Polygon: part k >= 2
 * is ring k.  Multilinestring and multipolygon: part j in 1..k-1 is member j+1, part k the whole
 * shape (member 1 alone cannot be asked for).  -65 null shape, -134 type not 1-6,
 * -135 part outside 0..count. */
XGGEO_API int32_t xgWKB_shape_get_extent(const unsigned char *shape, int32_t part,
                                         _xgWKB_BOX *box) XGGEO_NOEXCEPT;

/* ------------------------------------------------------------------------------------------ */
/* Error messages                                                                              */
/* ------------------------------------------------------------------------------------------ */

/* Copies the message of a status code, as GBK bytes, into a new string *message released with
 * xgWKB_shape_free.  Returns 1 when the code is known, else 0 (and *message is untouched). */
XGGEO_API uint32_t xgWKB_shape_get_error_description(int32_t code, char **message) XGGEO_NOEXCEPT;

/* As xgWKB_shape_get_error_description, with the message encoded as UTF-8. */
XGGEO_API uint32_t xgWKB_shape_get_error_description_utf8(int32_t code,
                                                          char **message) XGGEO_NOEXCEPT;

/* ------------------------------------------------------------------------------------------ */
/* Point primitives: bare points and point arrays, no allocation, no pointer checks            */
/* ------------------------------------------------------------------------------------------ */

/* 1 when a and b differ by strictly less than tol in x and in y, else 0 (tol 0: never equal). */
XGGEO_API int32_t xgWKB_baseGeo_point_is_equal(const _xgWKB_POINT *a, const _xgWKB_POINT *b,
                                               double tol) XGGEO_NOEXCEPT;

/* Euclidean distance between a and b. */
XGGEO_API double xgWKB_baseGeo_point_calculate_distance(const _xgWKB_POINT *a,
                                                        const _xgWKB_POINT *b) XGGEO_NOEXCEPT;

/* p becomes p - offset (the origin moves to offset). */
XGGEO_API void xgWKB_baseGeo_move_point(_xgWKB_POINT *p, const _xgWKB_POINT *offset) XGGEO_NOEXCEPT;

/* out becomes p - origin; p is unchanged. */
XGGEO_API void xgWKB_baseGeo_moveEx_point(const _xgWKB_POINT *p, const _xgWKB_POINT *origin,
                                          _xgWKB_POINT *out) XGGEO_NOEXCEPT;

/* Rotates p about (0,0) clockwise by angle (radians). */
XGGEO_API void xgWKB_baseGeo_rotate_point(_xgWKB_POINT *p, double angle) XGGEO_NOEXCEPT;

/* Direction angle of from->to, counter-clockwise from +x, in [0, 2pi); equal points give pi/2. */
XGGEO_API double xgWKB_baseGeo_point_calculate_angle(const _xgWKB_POINT *from,
                                                     const _xgWKB_POINT *to) XGGEO_NOEXCEPT;

/* Relation of p to the segment a->b: 1 on it, 2 at a, 3 at b (within 0.0001), 0 off the line
 * by more than tol, -1 on the line beyond b, -2 on the line before a. */
XGGEO_API int32_t xgWKB_baseGeo_point_line_relation(const _xgWKB_POINT *p, const _xgWKB_POINT *a,
                                                    const _xgWKB_POINT *b,
                                                    double tol) XGGEO_NOEXCEPT;

/* Relation of p to the run pts[0..n-1]: -(k+1) at vertex k, i inside the segment ending at
 * vertex i, 0 elsewhere. */
XGGEO_API int32_t xgWKB_baseGeo_point_linestring_relation(const _xgWKB_POINT *p,
                                                          const _xgWKB_POINT *pts, int32_t n,
                                                          double tol) XGGEO_NOEXCEPT;

/* 1 when the run has at least 3 points and its ends are equal within tol, else 0. */
XGGEO_API int32_t xgWKB_baseGeo_linestring_is_closed(const _xgWKB_POINT *pts, int32_t n,
                                                     double tol) XGGEO_NOEXCEPT;

/* Relation of p to a closed ring pts[0..n-1] (last point repeating the first; no closing edge is
 * added): 0 outside, 1 inside, 2 on the boundary. */
XGGEO_API int32_t xgWKB_baseGeo_point_simplePolygon_relation(const _xgWKB_POINT *p,
                                                             const _xgWKB_POINT *pts, int32_t n,
                                                             double tol) XGGEO_NOEXCEPT;

/* ------------------------------------------------------------------------------------------ */
/* Part and point access                                                                       */
/* ------------------------------------------------------------------------------------------ */

/* Rings of a polygon or members of a multi-type into *count.  -65 null shape; any other type:
 * *count = 0 and -27. */
XGGEO_API int32_t xgWKB_shape_get_num_parts(const unsigned char *shape,
                                            uint32_t *count) XGGEO_NOEXCEPT;

/* Rings of a multipolygon: part 0 all rings, part p the rings of polygon p.  -65 null shape
 * (*count = 0); not a multipolygon: *count = 1 and -27; part outside 0..members: *count = 0
 * and -137. */
XGGEO_API int32_t xgWKB_shape_get_num_subparts(const unsigned char *shape, int32_t part,
                                               uint32_t *count) XGGEO_NOEXCEPT;

/* Number of points of the shape (part 0), of a ring or member (part k), or of ring subpart of
 * multipolygon member part (subpart 0: the whole member).  -65 null shape, -134 type not 1-6,
 * -137 index out of range (*count = 0). */
XGGEO_API int32_t xgWKB_shape_get_num_points(const unsigned char *shape, int32_t part,
                                             int32_t subpart, uint32_t *count) XGGEO_NOEXCEPT;

/* Copies the points of one part into the caller's array: point, linestring and multipoint all
 * points; polygon ring part; multilinestring member part; multipolygon every ring of polygon part.
 * -65 null shape, -134 type not 1-6, -137 part outside 1..count. */
XGGEO_API int32_t xgWKB_shape_get_points(const unsigned char *shape, int32_t part,
                                         _xgWKB_POINT *points) XGGEO_NOEXCEPT;

/* Copies every point into points and, when given, the start index of each part and ring into
 * part_offsets and subpart_offsets (sized by the counting functions).  -65 null shape,
 * -134 type not 1-6. */
XGGEO_API int32_t xgWKB_shape_get_all_points(const unsigned char *shape, int32_t *part_offsets,
                                             int32_t *subpart_offsets,
                                             _xgWKB_POINT *points) XGGEO_NOEXCEPT;

/* ------------------------------------------------------------------------------------------ */
/* Shape construction                                                                          */
/* ------------------------------------------------------------------------------------------ */

/* Every constructor hands a new blob through out, released with xgWKB_shape_free, writes 0 into
 * every byte-order byte and stores points as given (no ring is closed, reordered or reoriented).
 * Arguments are checked in the order listed; a null out-pointer gives -65 after those checks,
 * and running out of memory gives -1. */

/* A 21-byte point blob of *p.  -65 p or out null. */
XGGEO_API int32_t xgWKB_shape_generate_point(const _xgWKB_POINT *p,
                                             unsigned char **out) XGGEO_NOEXCEPT;

/* A multipoint of k member point blobs (9 + 21k bytes).  -148 k < 1 (tested before the array),
 * -65 points null. */
XGGEO_API int32_t xgWKB_shape_generate_multipoint(int32_t k, const _xgWKB_POINT *points,
                                                  unsigned char **out) XGGEO_NOEXCEPT;

/* A linestring of n points (9 + 16n bytes).  -65 points null, -148 n < 2. */
XGGEO_API int32_t xgWKB_shape_generate_line(int32_t n, const _xgWKB_POINT *points,
                                            unsigned char **out) XGGEO_NOEXCEPT;

/* A multilinestring of parts members, member i taking the next counts[i] points of points; total
 * is not used.  parts 0 gives the empty 9-byte multilinestring.  -65 points null (or counts null
 * with parts > 0), -66 parts < 0, -148 some counts[i] < 2 (nothing is allocated). */
XGGEO_API int32_t xgWKB_shape_generate_multiline(int32_t total, int32_t parts, const int32_t *counts,
                                                 const _xgWKB_POINT *points,
                                                 unsigned char **out) XGGEO_NOEXCEPT;

/* As xgWKB_shape_generate_multiline, then every member is split where it crosses or touches
 * another member (tolerance 0.0001) and the pieces form the result.  Always returns 0: when the
 * multilinestring cannot be built, nothing is stored in out (preset it). */
XGGEO_API int32_t xgWKB_shape_generate_simple_line(int32_t total, int32_t parts,
                                                   const int32_t *counts,
                                                   const _xgWKB_POINT *points,
                                                   unsigned char **out) XGGEO_NOEXCEPT;

/* A polygon of rings rings, ring i taking the next counts[i] points; with counts null, one ring of
 * total points (13 + 16 total bytes).  Ring 1 is the outer ring.  -65 points null, -148 total < 4
 * (even with counts) or some counts[i] < 4, -66 rings != 1 without counts (or rings < 0). */
XGGEO_API int32_t xgWKB_shape_generate_polygon(int32_t total, int32_t rings, const int32_t *counts,
                                               const _xgWKB_POINT *points,
                                               unsigned char **out) XGGEO_NOEXCEPT;

/* A 37-byte envelope blob (type 21): minx, miny, maxx, maxy.  -65 box or out null. */
XGGEO_API int32_t xgWKB_shape_generate_envelope(const _xgWKB_BOX *box,
                                                unsigned char **out) XGGEO_NOEXCEPT;

/* A 93-byte polygon of the box: (minx,miny), (minx,maxy), (maxx,maxy), (maxx,miny), (minx,miny),
 * clockwise and closed.  -65 box or out null. */
XGGEO_API int32_t xgWKB_shape_generate_polygon_from_rectangle(const _xgWKB_BOX *box,
                                                              unsigned char **out) XGGEO_NOEXCEPT;

/* A polygon of n points on the circle, counter-clockwise from (cx + radius, cy), at the angles
 * i * 2pi / n with the single-precision 2pi.  The counted ring is not closed: one more point
 * (cx + radius, cy) follows it outside the count, so the block is 16 bytes longer than
 * xgWKB_shape_get_WKB_size says.  -66 unless radius >= 0 and n >= 4; -65 centre null. */
XGGEO_API int32_t xgWKB_shape_generate_polygon_from_circle(const _xgWKB_POINT *centre, double radius,
                                                           int32_t n,
                                                           unsigned char **out) XGGEO_NOEXCEPT;

/* A polygon of n points on the ellipse with semi-axes a (along x) and b, swept from the angle
 * start (radians) to 2pi.  The first point and the uncounted point written after the ring are
 * (cx + a cos start, cy + a sin start).  -66 unless a >= 0, b >= 0, a >= b, 0 <= start <= 360
 * and n >= 9; -65 centre null. */
XGGEO_API int32_t xgWKB_shape_generate_from_ellipse(const _xgWKB_POINT *centre, double a, double b,
                                                    double start, int32_t n,
                                                    unsigned char **out) XGGEO_NOEXCEPT;

/* A copy of member index (1-based) of a multipoint, multilinestring or multipolygon as a shape of
 * its own.  -65 shape null, -27 not a multi-type, -66 index outside 1..members. */
XGGEO_API int32_t xgWKB_shape_generate_from_part(const unsigned char *shape, int32_t index,
                                                 unsigned char **out) XGGEO_NOEXCEPT;

/* One multi-type holding every member of the multi-type inputs and every other input as a member,
 * in order.  The last input's type picks the result: point or multipoint gives a multipoint, and
 * so on; the others are not checked against it.  -65 shapes, an entry or out null; -66 count < 1;
 * -134 an earlier input that is not a geometry (nothing allocated); -134 when the last input is
 * not a geometry, in which case a zeroed block has already been stored in *out and the caller
 * frees it. */
XGGEO_API int32_t xgWKB_shape_combine(const unsigned char *const *shapes, int32_t count,
                                      unsigned char **out) XGGEO_NOEXCEPT;

/* A multipoint of every vertex in storage order (ring-closing vertices included); a multipoint is
 * copied.  -65 shape null, -27 type not 1-6. */
XGGEO_API int32_t xgWKB_shape_as_point(const unsigned char *shape,
                                       unsigned char **out) XGGEO_NOEXCEPT;

/* The line form of a shape: a point gives the nil shape (status 0), a linestring or
 * multilinestring a copy, a multipoint one linestring through its points, a polygon or
 * multipolygon a multilinestring of all its rings (-27 when it has none).  -65 shape null,
 * -134 type not 1-6. */
XGGEO_API int32_t xgWKB_shape_as_line(const unsigned char *shape,
                                      unsigned char **out) XGGEO_NOEXCEPT;

/* xgWKB_shape_as_line, then a multilinestring result is split where its members cross or touch
 * (tolerance 0.0001); any other result is returned as it is.  -65 shape null; otherwise always
 * 0, even when the conversion failed (nothing is stored then: preset out). */
XGGEO_API int32_t xgWKB_shape_as_simple_line(const unsigned char *shape,
                                             unsigned char **out) XGGEO_NOEXCEPT;

/* A multipolygon from closed rings.  A linestring must be closed and not cross itself and gives
 * one polygon of one ring.  A multilinestring's members must be closed and cross neither
 * themselves nor each other; a ring inside another is a hole, the others are outer rings, and
 * each outer ring becomes a polygon with every hole that lies inside it (tolerance 0.0001).
 * -65 shape null, -27 not a linestring or multilinestring, or a test failed. */
XGGEO_API int32_t xgWKB_shape_as_polygon(const unsigned char *shape,
                                         unsigned char **out) XGGEO_NOEXCEPT;

/* Reserved entry points: they accept any arguments (declared without any here), ignore them,
 * do nothing and return 0.  No coordinate reference is stored in a shape. */
XGGEO_API int32_t xgWKB_shape_build(void) XGGEO_NOEXCEPT;
XGGEO_API int32_t xgWKB_shape_filter_coordinate(void) XGGEO_NOEXCEPT;
XGGEO_API int32_t xgWKB_shape_change_coordref(void) XGGEO_NOEXCEPT;
XGGEO_API int32_t xgWKB_shape_get_coordref(void) XGGEO_NOEXCEPT;

/* ------------------------------------------------------------------------------------------ */
/* Metrics                                                                                     */
/* ------------------------------------------------------------------------------------------ */

/* Length of a line or of the rings of an area: linestring (part ignored); polygon all rings
 * (part 0) or ring part; multilinestring all members or member part; multipolygon all polygons
 * or polygon part.  -65 shape null, -135 part outside 0..parts, -27 point or multipoint,
 * -134 other types; on failure *length is 0. */
XGGEO_API int32_t xgWKB_shape_get_length(const unsigned char *shape, int32_t part,
                                         double *length) XGGEO_NOEXCEPT;

/* Area of a polygon or multipolygon, holes subtracted as magnitudes.  Polygon: part 0 and part r
 * (the ring count, r >= 2) the whole polygon, part 1 the outer ring alone, part j in 2..r-1
 * ring j+1 alone.  Multipolygon: part 0 all polygons, part p polygon p.  -65 shape null,
 * -135 part outside 0..parts, -134 other types; on failure *area is 0. */
XGGEO_API int32_t xgWKB_shape_get_area(const unsigned char *shape, int32_t part,
                                       double *area) XGGEO_NOEXCEPT;

/* 1 when a linestring's end points are equal within tol (or every member of a multilinestring
 * is closed; an empty one is), else 0.  -65 shape null, -27 other types. */
XGGEO_API int32_t xgWKB_shape_is_close(const unsigned char *shape, double tol) XGGEO_NOEXCEPT;

/* Boundary into *out (tolerance 0.0001): a point or multipoint gives a nil shape and -208 (free
 * it); an open linestring the multipoint of its first and last point, a closed one the nil shape;
 * a polygon or multipolygon the multilinestring of its rings; a multilinestring the multipoint of
 * the end points met an odd number of times by its open members, in order of appearance (the
 * nil shape when none is).  -65 shape or out null, -134 other types. */
XGGEO_API int32_t xgWKB_shape_get_boundary(const unsigned char *shape,
                                           unsigned char **out) XGGEO_NOEXCEPT;

/* Centroid of a polygon's outer ring (holes ignored); a ring of almost no area gives its first
 * point.  -65 shape or centroid null, -134 not a polygon (multipolygons included), -27 no ring. */
XGGEO_API int32_t xgWKB_shape_get_centroid(const unsigned char *shape,
                                           _xgWKB_POINT *centroid) XGGEO_NOEXCEPT;

/* ------------------------------------------------------------------------------------------ */
/* Validation                                                                                  */
/* ------------------------------------------------------------------------------------------ */

/* Checks that a shape is a well-formed geometry: lines do not double back, rings are closed and
 * simple, holes lie inside their shell without overlapping or cutting the interior apart, members
 * of a multipolygon do not overlap.  Holes nested in each other, two holes through the same points
 * and a hole through the shell's points are overlapping rings (-147).  Returns 1 valid, 0 invalid
 * or not a geometry.  *status gets the code of the first rule broken (-148, -150, -151, -147, -154,
 * -155, -82); some failures (-65 for a null shape among them) are ORed into *status instead, so
 * preset it to 0.  A type other than 1-6 leaves *status untouched. */
XGGEO_API uint32_t xgWKB_shape_check_WKBdata(const unsigned char *shape, int32_t *status) XGGEO_NOEXCEPT;

/* ------------------------------------------------------------------------------------------ */
/* Well-Known Text                                                                             */
/* ------------------------------------------------------------------------------------------ */

/* The library's WKT dialect: lower-case keywords, coordinates printed as "%lf" (six decimals,
 * never an exponent), one blank between x and y and after the keyword, no blank after a comma:
 *   polygon ((0.000000 0.000000,1.000000 0.000000,1.000000 1.000000,0.000000 0.000000))
 * A part with one point leaves its parenthesis open ("linestring (1.000000 2.000000"), parts
 * with no points are left out, and a linestring with no points is the empty text "".  The reader
 * accepts exactly that layout; "point empty", "polygon empty", ... (whole texts) read as the
 * nil shape. */

/* Writes a point, linestring, polygon or multi-type as text into *wkt (release it with
 * xgWKB_shape_free_WKT).  -65 null shape or out-pointer, -27 any other type (nil, annotation,
 * dimension); *wkt is untouched on failure. */
XGGEO_API int32_t xgWKB_shape_generate_to_WKT(const unsigned char *shape,
                                              char **wkt) XGGEO_NOEXCEPT;

/* Releases a text the library returned; a null pointer is ignored. */
XGGEO_API void xgWKB_shape_free_WKT(char *wkt) XGGEO_NOEXCEPT;

/* Reads a text into a new shape *shape (release it with xgWKB_shape_free).  -65 null text,
 * -27 keyword other than the six geometry types.  A geometry text that does not follow the
 * dialect returns 0 and makes NO shape: preset *shape to NULL and test it after the call. */
XGGEO_API int32_t xgWKB_shape_generate_from_WKT(const char *wkt,
                                                unsigned char **shape) XGGEO_NOEXCEPT;

/* The type code of the text's first word (point 1 ... multipolygon 6, SingleText 9, MultiText 10,
 * HoriDim 11, VertDim 12, AlignedDim 13, anything else 0) into *type.  Returns 0; -65 null text. */
XGGEO_API int32_t xgWKB_shape_get_WKT_type(const char *wkt, int32_t *type) XGGEO_NOEXCEPT;

/* Estimated blob size of a text into *size: 5 for an empty text, 21 for a point; for the other
 * geometry types the estimate is stored only when no blank follows the opening parentheses, so
 * any readable text leaves *size untouched (size the blob with xgWKB_shape_get_WKB_size after
 * reading instead).  Returns 0; -65 null text; -27 other keyword (*size = 0). */
XGGEO_API int32_t xgWKB_shape_get_WKT_size(const char *wkt, int32_t *size) XGGEO_NOEXCEPT;

/* Checks nothing and returns 0. */
XGGEO_API int32_t xgWKB_shape_check_WKTdata(const char *wkt) XGGEO_NOEXCEPT;

/* ------------------------------------------------------------------------------------------ */
/* Affine transforms                                                                           */
/* ------------------------------------------------------------------------------------------ */

/* The transforms take points, linestrings, polygons and their multi-types; any other type, or a
 * multi-type holding a member of a foreign type, gives -27 and nothing is changed or allocated. */

/* Moves every vertex of shape in place by (dx, dy).  -65 null shape, -27 type not taken. */
XGGEO_API int32_t xgWKB_shape_move(unsigned char *shape, double dx, double dy) XGGEO_NOEXCEPT;

/* Rotates every vertex of shape in place about (cx, cy) by angle radians; a positive angle turns
 * clockwise.  -65 null shape, -27 type not taken. */
XGGEO_API int32_t xgWKB_shape_rotate(unsigned char *shape, double angle, double cx,
                                     double cy) XGGEO_NOEXCEPT;

/* Scales every vertex of shape in place about base by fx and fy (any factors, 0 and negative
 * ones included).  -65 null shape or base, -27 type not taken. */
XGGEO_API int32_t xgWKB_shape_stretch(unsigned char *shape, const _xgWKB_POINT *base, double fx,
                                      double fy) XGGEO_NOEXCEPT;

/* Mirror image of shape about the line p1-p2 as a new blob *out (free with xgWKB_shape_free).
 * When |trunc(p1.y - p2.y)| < tol the line counts as horizontal and the image is taken about the
 * vertical line through p1 instead.  Vertex order is kept; member headers carry byte-order
 * byte 0.  -65 null pointer, -27 type not taken; on failure *out is not written. */
XGGEO_API int32_t xgWKB_shape_mirror(const unsigned char *shape, const _xgWKB_POINT *p1,
                                     const _xgWKB_POINT *p2, unsigned char **out,
                                     double tol) XGGEO_NOEXCEPT;

/* ------------------------------------------------------------------------------------------ */
/* Part and ring editing                                                                       */
/* ------------------------------------------------------------------------------------------ */

/* Every operation here leaves its input alone and returns a new blob through *out, to be freed
 * with xgWKB_shape_free; previous contents of *out are not freed.  Indices are 1-based.  A new
 * ring must lie inside the polygon's first ring (tolerance 0.0001).  Null pointers give -65. */

/* Appends part to shape.  Polygon: part is read as a linestring and becomes the last ring (-82
 * when not inside the first ring).  Multipoint, multilinestring, multipolygon: part is a member
 * (count + 1) or a multi-type of the same kind whose members are all appended.  -134 shape or
 * part type not taken. */
XGGEO_API int32_t xgWKB_shape_add_part(const unsigned char *shape, const unsigned char *part,
                                       unsigned char **out) XGGEO_NOEXCEPT;

/* Inserts part before part or ring index (1..count).  Tested in order: -134 shape type not 3-6,
 * -136 part not the member type (polygon: not readable as a linestring), -82 polygon ring not
 * inside the first ring, -135 index out of range.  For a multipoint the result block is handed
 * to *out before the index test, so on -135 *out holds a block the caller frees. */
XGGEO_API int32_t xgWKB_shape_insert_part(const unsigned char *shape, const unsigned char *part,
                                          int32_t index, unsigned char **out) XGGEO_NOEXCEPT;

/* Replaces part or ring index with part.  Tested in order: -27 shape type not 3-6, -136 part
 * not the member type, -6 polygon ring (other than ring 1) not inside the first ring, -135 index
 * out of range. */
XGGEO_API int32_t xgWKB_shape_replace_part(const unsigned char *shape, const unsigned char *part,
                                           int32_t index, unsigned char **out) XGGEO_NOEXCEPT;

/* Deletes part or ring index.  Multi-types: -135 index out of range; deleting the only member
 * gives the nil shape.  Polygon: -6 for ring 1 or a one-ring polygon (tested first), -135 index
 * out of range.  -134 other types. */
XGGEO_API int32_t xgWKB_shape_delete_part(const unsigned char *shape, int32_t index,
                                          unsigned char **out) XGGEO_NOEXCEPT;

/* Appends the ring points[0..count-1] (no closing point added) to a polygon.  -136 not a
 * polygon, -66 count negative, -82 ring not inside the first ring. */
XGGEO_API int32_t xgWKB_shape_add_island(const unsigned char *shape, const _xgWKB_POINT *points,
                                         int32_t count, unsigned char **out) XGGEO_NOEXCEPT;

/* Deletes the first inner ring having a vertex within 0.0001 of point.  The result has one ring
 * fewer, and every ring of it is a copy of the outer ring (long-standing behaviour).
 * -136 not a polygon, -6 no inner ring at point. */
XGGEO_API int32_t xgWKB_shape_delete_island(const unsigned char *shape, const _xgWKB_POINT *point,
                                            unsigned char **out) XGGEO_NOEXCEPT;

/* Inserts the ring points[0..count-1] before ring ring_index of member part of a multipolygon.
 * -134 not a multipolygon, -66 count negative, -135 part out of range; then the result block is
 * handed to *out and -82 (ring not inside the member's first ring) or -135 (ring_index out of
 * range) leave it there for the caller to free. */
XGGEO_API int32_t xgWKB_shape_add_multipolygon_ring(const unsigned char *shape, int32_t part,
                                                    int32_t ring_index,
                                                    const _xgWKB_POINT *points, int32_t count,
                                                    unsigned char **out) XGGEO_NOEXCEPT;

/* Deletes ring ring_index (2..rings: the outer ring stays) of member part of a multipolygon.
 * -134 not a multipolygon, -135 part or ring out of range. */
XGGEO_API int32_t xgWKB_shape_delete_multipolygon_ring(const unsigned char *shape, int32_t part,
                                                       int32_t ring_index,
                                                       unsigned char **out) XGGEO_NOEXCEPT;

/* Replaces ring ring_index of member part of a multipolygon by points[0..count-1].  -134 not a
 * multipolygon, -66 count negative, -135 part or ring out of range; then the result block is
 * handed to *out and -82 (ring not inside the member's first ring) leaves it there. */
XGGEO_API int32_t xgWKB_shape_replace_multipolygon_ring(const unsigned char *shape, int32_t part,
                                                        int32_t ring_index,
                                                        const _xgWKB_POINT *points,
                                                        int32_t count,
                                                        unsigned char **out) XGGEO_NOEXCEPT;

/* Reserved entry points: they accept and ignore any arguments, do nothing and return 0. */
XGGEO_API int32_t xgWKB_shape_change_path(void) XGGEO_NOEXCEPT;
XGGEO_API int32_t xgWKB_shape_delete_path(void) XGGEO_NOEXCEPT;
XGGEO_API int32_t xgWKB_shape_replace_path_with_arc(void) XGGEO_NOEXCEPT;
XGGEO_API int32_t xgWKB_shape_delete_point(void) XGGEO_NOEXCEPT;
XGGEO_API int32_t xgWKB_shape_move_point(void) XGGEO_NOEXCEPT;
XGGEO_API int32_t xgWKB_shape_extend_line(void) XGGEO_NOEXCEPT;

/* ------------------------------------------------------------------------------------------ */
/* Vertex editing                                                                              */
/* ------------------------------------------------------------------------------------------ */

/* Vertex operations of linestrings, multilinestrings, polygons and multipolygons.  Indices are
 * 1-based (part, ring, point).  add inserts before the point index (so appending after the last
 * vertex is not possible) and returns a blob one vertex longer through *out; delete returns one
 * vertex shorter; change writes into shape in place.  Results are freed with xgWKB_shape_free.
 * Codes: -65 null pointer, -134 shape not of the named type, -135 an index out of range, -6 a
 * delete that would leave a linestring below 2 vertices or a ring below 4.  Ring rules: delete
 * and change of point 1 or of the last point keep the ring closed; add does not (adding at
 * point 1 leaves the ring open). */

XGGEO_API int32_t xgWKB_shape_add_lineString_point(const unsigned char *shape, int32_t point_index,
                                                   const _xgWKB_POINT *point,
                                                   unsigned char **out) XGGEO_NOEXCEPT;
XGGEO_API int32_t xgWKB_shape_delete_lineString_point(const unsigned char *shape,
                                                      int32_t point_index,
                                                      unsigned char **out) XGGEO_NOEXCEPT;
XGGEO_API int32_t xgWKB_shape_change_linestring_point(unsigned char *shape, int32_t point_index,
                                                      const _xgWKB_POINT *point) XGGEO_NOEXCEPT;

/* Delete: once the part index is found in range the result block is handed to *out, and a -6
 * or -135 that follows leaves it there for the caller to free. */
XGGEO_API int32_t xgWKB_shape_add_MultiLineString_point(const unsigned char *shape, int32_t part,
                                                        int32_t point_index,
                                                        const _xgWKB_POINT *point,
                                                        unsigned char **out) XGGEO_NOEXCEPT;
XGGEO_API int32_t xgWKB_shape_delete_MultiLineString_point(const unsigned char *shape,
                                                           int32_t part, int32_t point_index,
                                                           unsigned char **out) XGGEO_NOEXCEPT;
/* (Name spelt so on purpose.)  A point index that matches no vertex of the part changes nothing
 * and returns 0. */
XGGEO_API int32_t xgWKB_shape_chage_MultiLineString_point(unsigned char *shape, int32_t part,
                                                          int32_t point_index,
                                                          const _xgWKB_POINT *point) XGGEO_NOEXCEPT;

/* Delete: once the ring index is found in range the result block is handed to *out, and a -6
 * or -135 that follows leaves it there for the caller to free. */
XGGEO_API int32_t xgWKB_shape_add_polygon_point(const unsigned char *shape, int32_t ring_index,
                                                int32_t point_index, const _xgWKB_POINT *point,
                                                unsigned char **out) XGGEO_NOEXCEPT;
XGGEO_API int32_t xgWKB_shape_delete_polygon_point(const unsigned char *shape, int32_t ring_index,
                                                   int32_t point_index,
                                                   unsigned char **out) XGGEO_NOEXCEPT;
XGGEO_API int32_t xgWKB_shape_change_polygon_point(unsigned char *shape, int32_t ring_index,
                                                   int32_t point_index,
                                                   const _xgWKB_POINT *point) XGGEO_NOEXCEPT;

/* Delete: once the part index is found in range the result block is handed to *out; a -135 for
 * the ring index leaves it there for the caller to free, while a -6 or a -135 for the point
 * index frees it and sets *out to null. */
XGGEO_API int32_t xgWKB_shape_add_multipolygon_point(const unsigned char *shape, int32_t part,
                                                     int32_t ring_index, int32_t point_index,
                                                     const _xgWKB_POINT *point,
                                                     unsigned char **out) XGGEO_NOEXCEPT;
XGGEO_API int32_t xgWKB_shape_delete_multipolygon_point(const unsigned char *shape, int32_t part,
                                                        int32_t ring_index, int32_t point_index,
                                                        unsigned char **out) XGGEO_NOEXCEPT;
XGGEO_API int32_t xgWKB_shape_change_multipolygon_point(unsigned char *shape, int32_t part,
                                                        int32_t ring_index, int32_t point_index,
                                                        const _xgWKB_POINT *point) XGGEO_NOEXCEPT;

/* ------------------------------------------------------------------------------------------ */
/* Relations between two shapes                                                                */
/* ------------------------------------------------------------------------------------------ */

/* The predicates below compare two shapes a and b with tolerance t (a vertex within t of an
 * edge touches it; points are equal when they differ by strictly less than t on both axes).
 * The comparison is strict, so with t = 0 no two points are equal, not even a point and itself:
 * shared vertices and coincident boundaries can then go unrecognised (a polygon can fail to be
 * within itself and overlap itself).  Pass a small positive t, such as the library's own
 * 0.0001, to compare shapes that share vertices.  Each returns 1 or 0 and never fails; the
 * pointers are not tested.  Only the six geometry types take part: nil, annotation, dimension
 * and envelope shapes give 0 in every predicate, as do the pairs of types a predicate does not
 * define (noted per predicate). */

/* 1 when a and b have no point in common.  Defined for every pair of geometry types. */
XGGEO_API int32_t xgWKB_shape_is_disjoint(const unsigned char *a, const unsigned char *b,
                                          double t) XGGEO_NOEXCEPT;

/* 1 when a and b have a point in common: exactly the negation of xgWKB_shape_is_disjoint for
 * geometry types, 0 for any other type. */
XGGEO_API int32_t xgWKB_shape_is_intersecting(const unsigned char *a, const unsigned char *b,
                                              double t) XGGEO_NOEXCEPT;

/* 1 when a lies in b and their interiors meet.  Undefined (0): any shape within a point, a
 * linestring or multilinestring within a multipoint, a polygon or multipolygon within a point
 * type or a line type. */
XGGEO_API int32_t xgWKB_shape_is_within(const unsigned char *a, const unsigned char *b,
                                        double t) XGGEO_NOEXCEPT;

/* xgWKB_shape_is_within(b, a, t), for every pair. */
XGGEO_API int32_t xgWKB_shape_is_containing(const unsigned char *a, const unsigned char *b,
                                            double t) XGGEO_NOEXCEPT;

/* 1 when the interiors meet but neither shape covers the other's interior part: lines meeting
 * in isolated points; a multipoint or line partly inside, partly outside the other shape.
 * Undefined (0): any pair with a single point, polygon types with each other, multipoint with
 * multipoint. */
XGGEO_API int32_t xgWKB_shape_is_crossing(const unsigned char *a, const unsigned char *b,
                                          double t) XGGEO_NOEXCEPT;

/* 1 when two shapes of one dimension share part of their interiors and each has interior
 * points outside the other.  Defined for multipoint with multipoint, line types with line
 * types and polygon types with polygon types (a single point: 0). */
XGGEO_API int32_t xgWKB_shape_is_overlapping(const unsigned char *a, const unsigned char *b,
                                             double t) XGGEO_NOEXCEPT;

/* 1 when a and b meet only on their boundaries.  Undefined (0): a point or multipoint with a
 * point or multipoint.  A closed linestring has no boundary. */
XGGEO_API int32_t xgWKB_shape_is_touching(const unsigned char *a, const unsigned char *b,
                                          double t) XGGEO_NOEXCEPT;

/* 1 when a and b have the same geometry type and equal vertices within t, in the same order.
 * Deliberately partial: multipoints compare b's count of points only (a with extra points after
 * b's equals b; a with fewer gives 0), and polygon rings (of polygons and of multipolygon
 * members) compare only their first n + 1 coordinates x1, y1, x2, ... (n the ring's point
 * count), that is about the first half of their points; the rest of a ring is not looked at. */
XGGEO_API int32_t xgWKB_shape_is_equal(const unsigned char *a, const unsigned char *b,
                                       double t) XGGEO_NOEXCEPT;

/* Reserved; reads nothing and returns 0. */
XGGEO_API int32_t xgWKB_shape_find_relation(void) XGGEO_NOEXCEPT;

/* ------------------------------------------------------------------------------------------ */
/* Standard interchange                                                                       */
/* ------------------------------------------------------------------------------------------ */

/* Exchange with the outside world: standard WKB (either byte order, ISO and extended Z/M/SRID
 * variants), OGC simple-features WKT, and a structural check of blobs received from elsewhere.
 * The readers take untrusted input: they never read past the length (or the terminating zero)
 * given, check every count against the bytes left before allocating, and on failure allocate
 * nothing and leave *out untouched.  Shapes made here are released with xgWKB_shape_free, WKB
 * with xgWKB_shape_free and text with xgWKB_shape_free_WKT. */
#include <stddef.h> /* size_t */

/* Flags of the interchange readers: refuse, rather than drop, Z or M ordinates. */
enum { XGWKB_REFUSE_Z = 1, XGWKB_REFUSE_M = 2 };

/* Statuses of the interchange functions (beside -1, -65, -66, -134, -199, -208). */
enum {
  XGWKB_E_BUFFER_SIZE = -57,       /* the bytes do not match the size the blob needs; too large */
  XGWKB_E_WKB_BYTE_ORDER = -198,   /* a WKB byte-order byte other than 0 or 1 */
  XGWKB_E_BLOB_TOO_SMALL = -202,   /* the blob's counts need more bytes than were given */
  XGWKB_E_TEXT_SYNTAX = -204,      /* the text does not follow the WKT grammar */
  XGWKB_E_WKB_TRUNCATED = -206,    /* the WKB ends before its counts say it should */
  XGWKB_E_WKB_COLLECTION = -207,   /* geometry collections have no shape */
  XGWKB_E_EXTRA_ORDINATES = -209,  /* Z or M ordinates the caller's flags refuse */
  XGWKB_E_WKB_TRAILING = -211      /* bytes left over after the WKB geometry */
};

/* Reads one standard WKB geometry from data[0, len) into a new shape in *out.  Types 1-6 in
 * either byte order (each member its own), ISO (1001, 2001, 3001...) and extended (high-bit Z,
 * M and SRID) variants; Z, M and the SRID are dropped.  A point of two NaNs (POINT EMPTY)
 * becomes the nil shape.  Returns 0, -65 (data or out null), -206 truncated or a count larger
 * than the bytes left, -198 bad byte-order byte, -199 unknown type or a member of the wrong
 * type, -207 geometry collection, -211 bytes after the geometry, -57 result over 4 GiB, -1 out
 * of memory.  Release the shape with xgWKB_shape_free. */
XGGEO_API int32_t xgWKB_shape_from_wkb(const unsigned char *data, size_t len, unsigned char **out) XGGEO_NOEXCEPT;

/* As xgWKB_shape_from_wkb, with flags (XGWKB_REFUSE_Z, XGWKB_REFUSE_M: such ordinates give
 * -209) and, on a failure other than -65 and -1, the byte offset of the fault in
 * *error_offset (which may be null). */
XGGEO_API int32_t xgWKB_shape_from_wkb_ex(const unsigned char *data, size_t len, uint32_t flags,
                                          unsigned char **out, size_t *error_offset) XGGEO_NOEXCEPT;

/* Writes a shape of type 1-6 as standard 2D WKB: big_endian non-zero gives network order (byte
 * 0), zero little-endian (byte 1), every member with its own byte-order byte.  *out receives a
 * new buffer of *size bytes (release with xgWKB_shape_free).  Returns 0, -65 (a pointer null),
 * -208 for the nil shape, -134 for any other type or a member of the wrong type, -1 out of
 * memory.  The shape is trusted: check foreign blobs with xgWKB_shape_check_blob first. */
XGGEO_API int32_t xgWKB_shape_to_wkb(const unsigned char *shape, int32_t big_endian,
                                     unsigned char **out, uint32_t *size) XGGEO_NOEXCEPT;

/* Checks that shape[0, len) is exactly one blob the other functions can walk safely: a known
 * type (nil, 1-6 or envelope), members of the type their multi-type needs, every count within
 * len and no byte left over.  The byte-order byte is not examined.  Returns 0, or the status of
 * the first fault: -65 null shape, -202 the blob needs more than len bytes, -57 bytes left over,
 * -199 a type this check does not know (annotation and dimension blobs included).  Allocates
 * nothing. */
XGGEO_API int32_t xgWKB_shape_check_blob(const unsigned char *shape, size_t len) XGGEO_NOEXCEPT;

/* Reads OGC simple-features WKT (keywords in any case, any blanks, optional SRID=n; prefix,
 * Z/M/ZM tags apart or joined, EMPTY, MULTIPOINT (1 2, 3 4) and MULTIPOINT ((1 2), (3 4)),
 * exponents) into a new shape in *out.  Extra ordinates are dropped unless flags refuse them
 * (-209).  POINT EMPTY gives the nil shape; other EMPTY texts give shapes without points.
 * Returns 0, -65 (text or out null), -204 syntax error, -199 a type the library has no shape for,
 * -207 geometry collection, -57 result over 4 GiB, -1 out of memory.  Release with
 * xgWKB_shape_free. */
XGGEO_API int32_t xgWKB_shape_from_ogc_wkt(const char *text, uint32_t flags, unsigned char **out) XGGEO_NOEXCEPT;

/* As xgWKB_shape_from_ogc_wkt, with the byte offset in the text where reading stopped stored in
 * *error_offset (which may be null) on a failure other than -65 and -1. */
XGGEO_API int32_t xgWKB_shape_from_ogc_wkt_ex(const char *text, uint32_t flags, unsigned char **out,
                                              size_t *error_offset) XGGEO_NOEXCEPT;

/* Reads a text in the library's own WKT dialect (see "Well-Known Text") as
 * xgWKB_shape_generate_from_WKT does, but reports a text the dialect does not allow: returns 0
 * with a new shape in *out (release with xgWKB_shape_free), -65 (text or out null), -27 a first
 * word other than the six geometry keywords (*error_offset 0), -204 the text does not follow the
 * dialect, with the byte offset where the reader stopped in *error_offset (which may be null),
 * -1 out of memory.  On failure nothing is allocated and *out is untouched. */
XGGEO_API int32_t xgWKB_shape_from_WKT_ex(const char *text, unsigned char **out, size_t *error_offset) XGGEO_NOEXCEPT;

/* Writes a shape of type 1-6 as OGC WKT: upper-case keywords, ", " between points, multipoints
 * as MULTIPOINT ((x y), ...), parts without points as EMPTY; the nil shape gives POINT EMPTY.
 * precision -1 writes each coordinate with the fewest digits that read back to the same double,
 * 0-17 that many fixed decimals.  *out receives new text (release with xgWKB_shape_free_WKT).
 * Returns 0, -65 (a pointer null), -66 precision outside -1..17, -134 any other type or a
 * member of the wrong type, -1 out of memory. */
XGGEO_API int32_t xgWKB_shape_to_ogc_wkt(const unsigned char *shape, int32_t precision, char **out) XGGEO_NOEXCEPT;

/* ------------------------------------------------------------------------------------------ */
/* Relations between an envelope and a shape                                                  */
/* ------------------------------------------------------------------------------------------ */

/* How a shape stands to the rectangle of an envelope blob (the 37-byte blob of
 * xgWKB_shape_generate_envelope; only its four doubles are read), the shape being the subject:
 * within means the shape lies within the rectangle, containing that it contains the rectangle.
 * Each returns 1 or 0 and never fails; the pointers are not tested.  Built from box tests with
 * tolerance t: a vertex is inside when it lies more than t inside every edge, on the boundary
 * when it lies closer than t to an edge's line within the edge's span, outside only when it
 * lies beyond an edge (exactly, t unused); segments are clipped with a fixed margin of 0.0001.
 * Lines, polygons and their multi-types first test their box: apart from the rectangle by more
 * than t, they are disjoint and nothing else.  Types outside 1-6 give 0 everywhere.  Defined
 * per predicate as noted; the other types give 0. */

/* No point in common.  Points and multipoints: every point outside the rectangle (exactly). */
XGGEO_API uint32_t xgWKB_shape_envelope_is_disjoint(const unsigned char *shape,
                                                    const unsigned char *envelope, double t) XGGEO_NOEXCEPT;

/* Exactly the negation of xgWKB_shape_envelope_is_disjoint for types 1-6, 0 for other types. */
XGGEO_API uint32_t xgWKB_shape_envelope_is_intersecting(const unsigned char *shape,
                                                        const unsigned char *envelope, double t) XGGEO_NOEXCEPT;

/* The shape lies within the rectangle.  Deliberately partial for multipoints: the point that is
 * first found inside is examined twice and the last point never. */
XGGEO_API uint32_t xgWKB_shape_envelope_is_within(const unsigned char *shape,
                                                  const unsigned char *envelope, double t) XGGEO_NOEXCEPT;

/* The shape contains the rectangle: polygons and multipolygons only. */
XGGEO_API uint32_t xgWKB_shape_envelope_is_containing(const unsigned char *shape,
                                                      const unsigned char *envelope, double t) XGGEO_NOEXCEPT;

/* The shape is partly inside, partly outside the rectangle: line types and multipoints only. */
XGGEO_API uint32_t xgWKB_shape_envelope_is_crossing(const unsigned char *shape,
                                                    const unsigned char *envelope, double t) XGGEO_NOEXCEPT;

/* Polygon and rectangle share area and each has area outside the other: polygon types only. */
XGGEO_API uint32_t xgWKB_shape_envelope_is_overlapping(const unsigned char *shape,
                                                       const unsigned char *envelope, double t) XGGEO_NOEXCEPT;

/* The shape meets the rectangle's boundary (within t) but not its interior.  A closed
 * linestring's ends do not count as its boundary. */
XGGEO_API uint32_t xgWKB_shape_envelope_is_touching(const unsigned char *shape,
                                                    const unsigned char *envelope, double t) XGGEO_NOEXCEPT;

/* ------------------------------------------------------------------------------------------ */
/* Polygon overlay                                                                            */
/* ------------------------------------------------------------------------------------------ */

/* Boolean operations between two shapes of types 1-6; t is the point and line tolerance
 * (polygon work ignores it).  The result is a new blob in *out, released with xgWKB_shape_free:
 *   points   - a multipoint of the operands' point blobs copied byte for byte, or the nil shape;
 *              two points are equal when the first 16 bytes of their blobs (header included),
 *              read as two doubles, differ by less than t on both; a point against a multipoint
 *              is compared with the first member only;
 *   lines    - a multilinestring of the kept pieces (lines split where they meet within t), or
 *              the nil shape; an intersection of lines without a common point stores null;
 *   polygons - a multipolygon (nil when nothing is left); both operands without rings or
 *              members: status 0 and null stored; one empty: difference gives nil or a copy of
 *              the first, intersection nil, union and symmetric difference a byte copy of the
 *              other operand (keeping type 3 or 6).
 * Pairs: intersection takes every pair, difference a first shape of no higher dimension than the
 * second, union and symmetric difference shapes of one dimension.
 * Statuses: -65 a null pointer (out included); -66 a NaN or infinite coordinate or tolerance,
 * or an extent too large to clip; -1 out of memory; otherwise, for a first type outside 1-6 / a second type
 * outside 1-6 / a refused pair:
 *   difference            -134 / -134 / -27
 *   intersection          -134 / -134, but 0 with nothing stored when the first is a polygon
 *   union                 -27 / -27, but -134 when the first is a multipoint / -134
 *   symmetric difference  -27 / -27 / -134
 * Nothing is stored on a failure. */
XGGEO_API int32_t xgWKB_shape_difference(const unsigned char *a, const unsigned char *b, unsigned char **out,
                                         double t) XGGEO_NOEXCEPT;
XGGEO_API int32_t xgWKB_shape_intersection(const unsigned char *a, const unsigned char *b,
                                           unsigned char **out, double t) XGGEO_NOEXCEPT;
XGGEO_API int32_t xgWKB_shape_union(const unsigned char *a, const unsigned char *b, unsigned char **out, double t) XGGEO_NOEXCEPT;
XGGEO_API int32_t xgWKB_shape_symmetric_difference(const unsigned char *a, const unsigned char *b,
                                                   unsigned char **out, double t) XGGEO_NOEXCEPT;

/* The three parts of two points or multipoints, or of two polygons or multipolygons: *only_a
 * (in a only), *only_b (in b only), *common (in both), each released with xgWKB_shape_free.
 * Polygons: all three are written (multipolygons, or nil when empty).  Points: a point equal to
 * b (or to b's first member) gives only *common, a point blob whose coordinates are the first 16
 * bytes of a's blob, and for a multipoint b also *only_b (b without that member); otherwise
 * *only_a and *only_b are copies of a and b; two multipoints write all three.  Outputs not
 * written keep their values: preset them to null.  Statuses: -65 a null pointer; -27 a first
 * type outside 1-6, or a second one (but -134 when the first is a line type); -134 any other
 * pair; -66 and -1 as for the operations above. */
XGGEO_API int32_t xgWKB_shape_overlay(const unsigned char *a, const unsigned char *b, unsigned char **only_a,
                                      unsigned char **only_b, unsigned char **common, double t) XGGEO_NOEXCEPT;

/* ------------------------------------------------------------------------------------------ */
/* Buffer and clipping                                                                        */
/* ------------------------------------------------------------------------------------------ */

/* The region within distance of a shape, as a new blob in *out (released with xgWKB_shape_free):
 *  - point: the circle block, a 678-byte multipolygon of one ring of 41 points starting and
 *    ending at (x + distance, y), counter-clockwise, vertex i at angle i * 2pi / 40 (2pi and 40
 *    in single precision); distance < min_radius stores null;
 *  - linestring, multilinestring, multipoint: the union of 40-gon circles of radius |distance|
 *    around every vertex and rectangles around every segment, as a multipolygon (nil when it
 *    has no area); distance < min_radius writes nothing;
 *  - polygon, multipolygon: the shape united with the buffer of all its rings (radius |distance|)
 *    for distance >= 0, or the shape minus that buffer for distance < 0; |distance| < min_radius
 *    or no ring writes nothing; a buffer without area gives a byte copy of the shape.
 * Statuses: 0 (also when nothing is written: preset *out to null); -65 shape or out null; -27 a
 * type outside 1..6 or a multi-type with a foreign member; -66 a distance or coordinate that is
 * NaN or infinite, or an extent too large to clip; -1 out of memory (nothing stored). */
XGGEO_API int32_t xgWKB_shape_generate_buffer(const unsigned char *shape, double distance, unsigned char **out,
                                              double min_radius) XGGEO_NOEXCEPT;

/* The part of a shape inside the box whose four doubles minx, miny, maxx, maxy sit at bytes 5-36
 * of `box` (an envelope blob; its first five bytes are not read), as a new blob in *out
 * (released with xgWKB_shape_free), the nil shape when nothing is left:
 *  - nil: nil; point: a copy when minx <= x <= maxx and miny <= y <= maxy (no tolerance), else
 *    nil; multipoint: the members in the box, in order;
 *  - linestring, multilinestring: a multilinestring of the clipped parts.  Segments are clipped
 *    to the box grown by 0.0001 (an end up to 0.0001 outside is kept as it is, ends beyond are
 *    moved onto the box's edges); a clipped segment starting within t (both axes, strictly) of
 *    the last point of the current part extends it, others start a new part;
 *  - polygon, multipolygon: the intersection with the box polygon, as a multipolygon; only a
 *    multipolygon's result is cleaned of vertices within 0.0001 of the line through their
 *    neighbours (a polygon's keeps them).
 * A box with a minimum above its maximum is taken as it stands (no point is inside it).
 * Statuses: 0; -65 shape, box or out null; -27 a type above 6 or a multi-type with a foreign
 * member; -66 a polygon or box coordinate that is NaN or infinite; -1 out of memory.  Nothing is
 * stored on a failure. */
XGGEO_API int32_t xgWKB_shape_clip(const unsigned char *shape, const unsigned char *box, unsigned char **out,
                                   double t) XGGEO_NOEXCEPT;

/* The pieces of a linestring cut by a polygon: both members are multilinestrings (the nil shape
 * when there is no piece of that kind), released with xgWKB_shape_free. */
typedef struct _xgWKB_LINE_PIECES {
  unsigned char *inside;   /* pieces inside the polygon or on its boundary, in line order */
  unsigned char *outside;  /* pieces outside the polygon, in line order */
} _xgWKB_LINE_PIECES;

/* Cuts a linestring or multilinestring by a polygon or multipolygon where they meet within t
 * and stores both kinds of pieces in *pieces, consecutive pieces of a kind joined back along their
 * line.  Returns 1 on success; -1 on failure (a null pointer, a line that is not a line type or a
 * polygon that is not a polygon type, a foreign member, a NaN or infinite coordinate or t, out of
 * memory), with *pieces untouched. */
XGGEO_API int32_t xgWKB_shape_ClipLinestringPolygon(const unsigned char *line, const unsigned char *polygon,
                                                    _xgWKB_LINE_PIECES *pieces, double t) XGGEO_NOEXCEPT;

/* ------------------------------------------------------------------------------------------ */
/* Convex hull, distance and line merge                                                       */
/* ------------------------------------------------------------------------------------------ */

/* The convex hull of a shape's vertices (a polygon's first ring, a multipolygon's first rings;
 * holes are ignored), walked counter-clockwise from the first point of smallest x.  Points are
 * collinear within t (cross products compared with t*t) and coincide within the fixed 0.0001.
 * A point gives a copy of itself; a set of two points the linestring of both in input order; a
 * larger set a polygon of one closed counter-clockwise ring, or the point or two-point
 * linestring its walk degenerates to (coinciding points give a polygon whose ring holds one
 * point).  Returns 0; -65 for a null shape or out; -27 for a type outside 1..6 or a multi-type
 * with a foreign member; -148 for a shape without points; -1 when memory runs out.  *out is a
 * new shape, released with xgWKB_shape_free. */
XGGEO_API int32_t xgWKB_shape_generate_convex_hull(const unsigned char *shape, unsigned char **out, double t) XGGEO_NOEXCEPT;

/* The shortest Euclidean distance between two shapes of types 1..6, in either order: 0 where
 * they meet or one lies inside the other (polygons closer than about 0.0001 count as meeting).
 * Where either shape is a point or multipoint, or a multilinestring or multipolygon, a distance
 * below t counts as 0.  Points on a polygon's boundary within t are at distance 0.  Returns 0
 * with *distance set; -65 for a null shape or distance; -27 for a type outside 1..6 or a
 * multi-type with a foreign member; -148 when a shape has no point; -1 when memory runs out.
 * *distance is written only on success.  Nothing is allocated. */
XGGEO_API int32_t xgWKB_shape_calculate_distance(const unsigned char *a, const unsigned char *b, double *distance,
                                                 double t) XGGEO_NOEXCEPT;

/* Merges two shapes of one dimension (points are equal within t on both axes):
 *  - point, point: a copy of the first when they are equal, else a multipoint of both;
 *  - point and multipoint (either order): a copy of the multipoint when the point equals its
 *    first member, else the multipoint with the point appended;
 *  - multipoint, multipoint: the first's members, then the second's that equal none of them;
 *  - linestring, linestring: one linestring when an end of one equals an end of the other
 *    (tried first-first, first-last, last-first, last-last; the parts are reversed as needed and
 *    the shared point kept once), else a multilinestring of the two;
 *  - linestrings and multilinestrings otherwise: the members of both joined end to end wherever
 *    an open line's end equals another's; one line comes back as a linestring, several as a
 *    multilinestring in the order their first member came;
 *  - polygons and multipolygons: one multipolygon of the members of both, in order.
 * Returns 0; -65 for a null shape or out; -27 when the first type is outside 1..6 or a
 * multi-type holds a foreign member; -136 when the second is not of the first's dimension; -1
 * when memory runs out.  *out is a new shape, released with xgWKB_shape_free. */
XGGEO_API int32_t xgWKB_shape_merge(const unsigned char *a, const unsigned char *b, unsigned char **out, double t) XGGEO_NOEXCEPT;

/* ------------------------------------------------------------------------------------------ */
/* Linear referencing and snapping                                                            */
/* ------------------------------------------------------------------------------------------ */

/* The point at fraction f of a linestring's length, written to *out; allocates nothing.
 * f = 0 gives the first point and f = 1 the last.  Up to one half the walk runs from the start
 * over segments (i-1, i); above one half it runs back from the end, measuring segments (k-1, k)
 * for k = n-2 down to 1 (the last segment is never measured) and placing the point on segment
 * (k, k+1).  A target exactly on a vertex matches no segment (the tests are strict).  The shape
 * is read as a linestring whatever its type.
 * Returns 0; -65 line or out null; -66 f above 1; -1 no segment holds the target (a negative
 * or NaN f, an empty line, the backward walk running out). */
XGGEO_API int32_t xgWKB_shape_find_along(const unsigned char *line, double fraction, _xgWKB_POINT *out) XGGEO_NOEXCEPT;

/* Snap modes, OR-ed: vertices, edges, end points. */
enum { XGWKB_SNAP_VERTEX = 1, XGWKB_SNAP_EDGE = 2, XGWKB_SNAP_END = 4 };

/* Moves p onto the shape, trying the modes given in the order end points, vertices, edges; the
 * first that succeeds writes *out.  End points (line types): the first or last point of a line
 * whose ends differ (by 0.0001 or more), when p is closer than t; a closed line never snaps to
 * its ends.  Vertices (every geometry type): a vertex within t on both axes.  Edges (line and
 * polygon types): p within t of a segment or vertex; *out is the foot of the perpendicular from
 * p on the line of that segment (of the segment starting at the vertex; the last vertex uses the
 * last segment).  Parts and rings are tried in order; the first hit wins.  Allocates nothing.
 * Returns 0 snapped; -65 shape, p or out null; -1 nothing within t (or no mode given). */
XGGEO_API int32_t xgWKB_shape_snap_point(const unsigned char *shape, const _xgWKB_POINT *p, double t,
                                         int32_t modes, _xgWKB_POINT *out) XGGEO_NOEXCEPT;

/* ------------------------------------------------------------------------------------------ */
/* Text annotations and dimensions                                                            */
/* ------------------------------------------------------------------------------------------ */

/* Annotations are blobs of their own types: a SingleText (9) holds one descriptor record (text,
 * text point, angle, optional leader point, extent box), a MultiText (10) N records back to back;
 * both end with a symbol flag and an optional opaque symbol block whose first u32 is its size.
 * The u32 at offset 5 is the total size.  Sizes and counts in the blobs are trusted.  Every shape,
 * text and symbol handed out is a fresh malloc block the caller releases (xgWKB_anno_free for
 * shapes, free / xgWKB_shape_free for the rest).  -65 for a null shape, text or out-pointer. */

/* A SingleText of one record (the leader is kept only when it differs from the text point by
 * 0.0001 or more) and the symbol block when symbol is not null; D + 10 + S bytes into *out. */
XGGEO_API int32_t xgWKB_anno_create(const _xgWKB_POINT *text_point, const _xgWKB_POINT *leader_point,
                                    const _xgWKB_BOX *extent, double angle, const char *text,
                                    const unsigned char *symbol, unsigned char **out) XGGEO_NOEXCEPT;
/* The fields of a SingleText's record; the leader and symbol getters return -1 when there is
 * none.  The text comes back as its L stored bytes in a new block, no terminator added; the
 * symbol as its S bytes in a new block. */
XGGEO_API int32_t xgWKB_anno_get_text_point(const unsigned char *shape, _xgWKB_POINT *out) XGGEO_NOEXCEPT;
XGGEO_API int32_t xgWKB_anno_get_leader_point(const unsigned char *shape, _xgWKB_POINT *out) XGGEO_NOEXCEPT;
XGGEO_API int32_t xgWKB_anno_get_angle(const unsigned char *shape, double *out) XGGEO_NOEXCEPT;
XGGEO_API int32_t xgWKB_anno_get_text(const unsigned char *shape, char **out) XGGEO_NOEXCEPT;
XGGEO_API int32_t xgWKB_anno_get_extent(const unsigned char *shape, _xgWKB_BOX *out) XGGEO_NOEXCEPT;
XGGEO_API int32_t xgWKB_anno_get_symbol(const unsigned char *shape, unsigned char **out) XGGEO_NOEXCEPT;
/* In-place setters of a SingleText's fixed-size fields (see xgWKB_set_desc_leader_point for a
 * record without a leader). */
XGGEO_API int32_t xgWKB_anno_set_text_point(unsigned char *shape, const _xgWKB_POINT *p) XGGEO_NOEXCEPT;
XGGEO_API int32_t xgWKB_anno_set_leader_point(unsigned char *shape, const _xgWKB_POINT *p) XGGEO_NOEXCEPT;
XGGEO_API int32_t xgWKB_anno_set_angle(unsigned char *shape, double angle) XGGEO_NOEXCEPT;
XGGEO_API int32_t xgWKB_anno_set_extent(unsigned char *shape, const _xgWKB_BOX *extent) XGGEO_NOEXCEPT;
/* A new SingleText with the text replaced; the text is stored WITH its terminator (L = length
 * + 1), total and record size adjusted.  The input stays the caller's. */
XGGEO_API int32_t xgWKB_anno_set_text(const unsigned char *shape, const char *text, unsigned char **out) XGGEO_NOEXCEPT;
/* A new SingleText with the symbol replaced (null: none).  With a symbol the total becomes the old
 * total + S - the old symbol's size; without one the total-size field keeps its old value. */
XGGEO_API int32_t xgWKB_anno_set_symbol(const unsigned char *shape, const unsigned char *symbol,
                                        unsigned char **out) XGGEO_NOEXCEPT;
/* The u32 type at offset 1 into *type. */
XGGEO_API int32_t xgWKB_anno_get_type(const unsigned char *shape, int32_t *type) XGGEO_NOEXCEPT;
/* A copy of the total size (offset 5) bytes. */
XGGEO_API int32_t xgWKB_anno_duplicate(const unsigned char *shape, unsigned char **out) XGGEO_NOEXCEPT;
/* Releases an annotation shape; null is ignored. */
XGGEO_API void xgWKB_anno_free(void *shape) XGGEO_NOEXCEPT;

/* A MultiText of n records built from the five arrays (text i from texts[i]) and the symbol when
 * not null.  -65 for a null array or text; -66 for n < 0. */
XGGEO_API int32_t xgWKB_anno_create_multitext(const _xgWKB_POINT *text_points,
                                              const _xgWKB_POINT *leader_points,
                                              const _xgWKB_BOX *extents, const double *angles,
                                              const char **texts, int32_t n,
                                              const unsigned char *symbol, unsigned char **out) XGGEO_NOEXCEPT;
/* N into *n; -1 when the shape is not a MultiText. */
XGGEO_API int32_t xgWKB_anno_get_desc_num(const unsigned char *shape, int32_t *n) XGGEO_NOEXCEPT;
/* The fields of record index (1-based); -317 outside 1..N; as the SingleText getters otherwise. */
XGGEO_API int32_t xgWKB_anno_get_multitext_text_point(const unsigned char *shape, int32_t index,
                                                      _xgWKB_POINT *out) XGGEO_NOEXCEPT;
XGGEO_API int32_t xgWKB_anno_get_multitext_leader_point(const unsigned char *shape, int32_t index,
                                                        _xgWKB_POINT *out) XGGEO_NOEXCEPT;
XGGEO_API int32_t xgWKB_anno_get_multitext_angle(const unsigned char *shape, int32_t index, double *out) XGGEO_NOEXCEPT;
XGGEO_API int32_t xgWKB_anno_get_multitext_text(const unsigned char *shape, int32_t index, char **out) XGGEO_NOEXCEPT;
XGGEO_API int32_t xgWKB_anno_get_multitext_extent(const unsigned char *shape, int32_t index,
                                                  _xgWKB_BOX *out) XGGEO_NOEXCEPT;
/* The symbol after the N records in a new block; -1 when there is none. */
XGGEO_API int32_t xgWKB_anno_get_multitext_symbol(const unsigned char *shape, unsigned char **out) XGGEO_NOEXCEPT;
/* In place on record index.  -317 for an index below 1 or above the FIRST RECORD'S SIZE; an index
 * above N but within it changes nothing and returns 0. */
XGGEO_API int32_t xgWKB_anno_set_multitext_text_point(unsigned char *shape, int32_t index,
                                                      const _xgWKB_POINT *p) XGGEO_NOEXCEPT;
/* In place on record index; -66 (not -317) outside 1..N. */
XGGEO_API int32_t xgWKB_anno_set_multitext_leader_point(unsigned char *shape, int32_t index,
                                                        const _xgWKB_POINT *p) XGGEO_NOEXCEPT;
/* In place on record index; -317 outside 1..N. */
XGGEO_API int32_t xgWKB_anno_set_multitext_angle(unsigned char *shape, int32_t index, double angle) XGGEO_NOEXCEPT;
XGGEO_API int32_t xgWKB_anno_set_multitext_extent(unsigned char *shape, int32_t index,
                                                  const _xgWKB_BOX *extent) XGGEO_NOEXCEPT;
/* A new MultiText with the text of record index replaced (no terminator stored).  The old text
 * length used throughout is the FIRST record's (L1): the block is old total + L' - L1 bytes,
 * record index gets size D + L' - L1 and its bytes from 8 + L1 on, and the total-size field is
 * copied unchanged.  -317 outside 1..N; -1 when record index is shorter than 8 + L1 bytes. */
XGGEO_API int32_t xgWKB_anno_set_multitext_text(const unsigned char *shape, int32_t index,
                                                const char *text, unsigned char **out) XGGEO_NOEXCEPT;
/* A new MultiText with the symbol replaced (null: none), total adjusted. */
XGGEO_API int32_t xgWKB_anno_set_multitext_symbol(const unsigned char *shape,
                                                  const unsigned char *symbol, unsigned char **out) XGGEO_NOEXCEPT;
/* A new MultiText with the record desc appended (the type is not tested). */
XGGEO_API int32_t xgWKB_anno_add_desc(const unsigned char *shape, const unsigned char *desc,
                                      unsigned char **out) XGGEO_NOEXCEPT;
/* As add, the record placed right after record index.  An index outside 1..N still counts the
 * record in N and in the total but does not write it (those bytes are zero). */
XGGEO_API int32_t xgWKB_anno_insert_desc(const unsigned char *shape, int32_t index,
                                         const unsigned char *desc, unsigned char **out) XGGEO_NOEXCEPT;
/* A new MultiText without record index.  -1 when N < 2; -66 outside 1..N. */
XGGEO_API int32_t xgWKB_anno_delete_desc(const unsigned char *shape, int32_t index,
                                         unsigned char **out) XGGEO_NOEXCEPT;

/* Transforms of every record's text point, leader (when present) and both box corners by the
 * point rules of xgWKB_shape_move / _rotate / _stretch / _mirror; text and symbol untouched.
 * Move, rotate and stretch work in place; rotation lowers each angle by the rotation angle and
 * translates the box with the text point (it keeps its size).  The SingleText mirror sets the
 * angle to 2(a - t) - t + pi (a: direction of the axis from a to b, t: old angle, pi the
 * single-precision value); the MultiText mirror keeps the angles.  Mirrors give a new shape. */
XGGEO_API int32_t xgWKB_anno_move(unsigned char *shape, double dx, double dy) XGGEO_NOEXCEPT;
XGGEO_API int32_t xgWKB_anno_move_multitext(unsigned char *shape, double dx, double dy) XGGEO_NOEXCEPT;
XGGEO_API int32_t xgWKB_anno_rotate(unsigned char *shape, double angle, double cx, double cy) XGGEO_NOEXCEPT;
XGGEO_API int32_t xgWKB_anno_rotate_multitext(unsigned char *shape, double angle, double cx, double cy) XGGEO_NOEXCEPT;
XGGEO_API int32_t xgWKB_anno_stretch(unsigned char *shape, const _xgWKB_POINT *base, double sx, double sy) XGGEO_NOEXCEPT;
XGGEO_API int32_t xgWKB_anno_stretch_multitext(unsigned char *shape, const _xgWKB_POINT *base,
                                               double sx, double sy) XGGEO_NOEXCEPT;
XGGEO_API int32_t xgWKB_anno_mirror(const unsigned char *shape, const _xgWKB_POINT *a,
                                    const _xgWKB_POINT *b, unsigned char **out, double t) XGGEO_NOEXCEPT;
XGGEO_API int32_t xgWKB_anno_mirror_multitext(const unsigned char *shape, const _xgWKB_POINT *a,
                                              const _xgWKB_POINT *b, unsigned char **out, double t) XGGEO_NOEXCEPT;
/* The outline polygon of a SingleText (release with xgWKB_shape_free): with |angle| >= 0.0001 the
 * box corners turned counter-clockwise by the angle about the text point, in the order
 * (minx,maxy), (maxx,maxy), (maxx,miny), (minx,miny), closed; else the box's rectangle polygon
 * (xgWKB_shape_generate_polygon_from_rectangle). */
XGGEO_API int32_t xgWKB_anno_get_outline(const unsigned char *shape, unsigned char **out) XGGEO_NOEXCEPT;
/* The outline of record index of a MultiText, or for index 0 a multipolygon of all of them.
 * -317 for an index below 0 or above N; -66 for index 0 with no record. */
XGGEO_API int32_t xgWKB_anno_get_multitext_outline(const unsigned char *shape, int32_t index,
                                                   unsigned char **out) XGGEO_NOEXCEPT;

/* Dimensions (11, 12, 13): five geometry blobs, a SingleText label, a carried u32, two i32
 * angles in whole degrees and an optional further geometry.  Each member is transformed by the
 * shape transform of the same name, the label by the annotation one.  -65 null shape or point
 * or out-pointer; -134 a type other than 11-13; -27 a blob whose members cannot be walked
 * (nothing changed). */
/* In place; angles unchanged. */
XGGEO_API int32_t xgWKB_dim_move(unsigned char *shape, double dx, double dy) XGGEO_NOEXCEPT;
/* In place; the type becomes 13 and each angle A becomes trunc(A - angle in degrees). */
XGGEO_API int32_t xgWKB_dim_rotate(unsigned char *shape, double angle, double cx, double cy) XGGEO_NOEXCEPT;
/* A new dimension; each angle A becomes A - 2 trunc(A - a), a the axis direction in degrees. */
XGGEO_API int32_t xgWKB_dim_mirror(const unsigned char *shape, const _xgWKB_POINT *a,
                                   const _xgWKB_POINT *b, unsigned char **out, double t) XGGEO_NOEXCEPT;
/* In place; angles unchanged.  (The name's spelling is part of the interface.) */
XGGEO_API int32_t xgWKB_dim_strecth(unsigned char *shape, const _xgWKB_POINT *base, double sx, double sy) XGGEO_NOEXCEPT;

/* ------------------------------------------------------------------------------------------ */
/* End of the C interface                                                                      */
/* ------------------------------------------------------------------------------------------ */

#ifdef __cplusplus
} /* extern "C" */
#endif

#ifdef __cplusplus
/* ------------------------------------------------------------------------------------------ */
/* C++ linkage: annotation descriptor functions and the coordinate codec                      */
/* ------------------------------------------------------------------------------------------ */

/* Annotation descriptors */

/* One placed text's record in a block the caller owns: [u32 D][u32 L][text][text point][angle]
 * [u8 leader flag][leader point, flag only][extent box].  -65 for a null record, text or
 * out-pointer. */
/* D for the given fields (not a status): 65 + strlen(text), + 16 when the two points differ by
 * 0.0001 or more on some axis. */
XGGEO_API int32_t xgWKB_desc_get_size(const _xgWKB_POINT &text_point, const _xgWKB_POINT &leader_point,
                                      const _xgWKB_BOX &extent, double angle, const char *text) XGGEO_NOEXCEPT;
/* Writes a record into out (size bytes, the value of xgWKB_desc_get_size); D is stored as size
 * is given, the text without its terminator. */
XGGEO_API int32_t xgWKB_desc_create(const _xgWKB_POINT &text_point, const _xgWKB_POINT &leader_point,
                                    const _xgWKB_BOX &extent, double angle, const char *text,
                                    int32_t size, unsigned char *out) XGGEO_NOEXCEPT;
/* Field getters; the leader getter returns -1 for a record without one.  The text comes back as
 * its L bytes in a new block (no terminator added).  The symbol getter reads the byte after the
 * record as a symbol flag (inside a SingleText it is one): -1 when 0, else a new block of the S
 * bytes after it. */
XGGEO_API int32_t xgWKB_get_desc_text_point(const unsigned char *desc, _xgWKB_POINT *out) XGGEO_NOEXCEPT;
XGGEO_API int32_t xgWKB_get_desc_leader_point(const unsigned char *desc, _xgWKB_POINT *out) XGGEO_NOEXCEPT;
XGGEO_API int32_t xgWKB_get_desc_angle(const unsigned char *desc, double *out) XGGEO_NOEXCEPT;
XGGEO_API int32_t xgWKB_get_desc_text(const unsigned char *desc, char **out) XGGEO_NOEXCEPT;
XGGEO_API int32_t xgWKB_get_desc_symbol(const unsigned char *desc, unsigned char **out) XGGEO_NOEXCEPT;
XGGEO_API int32_t xgWKB_desc_get_extent(const unsigned char *desc, _xgWKB_BOX *out) XGGEO_NOEXCEPT;
/* In-place setters.  Setting the leader of a record without one sets the flag and writes the
 * point over the first 16 bytes of the box without enlarging the record. */
XGGEO_API int32_t xgWKB_set_desc_text_point(unsigned char *desc, const _xgWKB_POINT &p) XGGEO_NOEXCEPT;
XGGEO_API int32_t xgWKB_set_desc_angle(unsigned char *desc, double angle) XGGEO_NOEXCEPT;
XGGEO_API int32_t xgWKB_set_desc_extent(unsigned char *desc, const _xgWKB_BOX &extent) XGGEO_NOEXCEPT;
XGGEO_API int32_t xgWKB_set_desc_leader_point(unsigned char *desc, const _xgWKB_POINT &p) XGGEO_NOEXCEPT;
/* Replaces the text (stored without terminator) of a record that is a malloc block of its own:
 * a new block of D - L + strlen(text) bytes is stored in *desc and the old one freed.  On failure
 * the old block is kept. */
XGGEO_API int32_t xgWKB_set_desc_text(unsigned char **desc, const char *text) XGGEO_NOEXCEPT;

/* The coordinate codec */

/* Statuses of the codec (they have no message). */
enum {
  XGWKB_E_CODEC_RANGE = -500,   /* a coordinate or integer lies outside the codec's range */
  XGWKB_E_CODEC_NOTHING = -501  /* nothing left to write, or a malformed stream */
};

/* CDataTransfer packs a shape's coordinates into a compact stream and back.  Every coordinate
 * becomes the integer trunc((v - origin) * scale + 0.5) in 0..2147483647 (the range runs from
 * the origin to the upper corner origin + 2147483647 / scale); the first point of a sequence is
 * written as its integers, every later one as the difference from the point before it, each
 * value in a variable-length code of 1 to 5 bytes.  The stream starts with the byte 1, the u32
 * type 10000 + shape type and the u32 total length.  Defaults: origin (0, 0), scale 100.
 *
 * The object owns one result buffer (2048 bytes at first, doubled as needed) that the last
 * conversion fills; GetResultSize gives its valid bytes (0 after a failed conversion) and the
 * conversion operator the buffer itself, which stays the object's: copy what you keep before the
 * next conversion.  Copies and assignments share that buffer (a conversion through one is seen
 * through the other); it is released once, by the last object holding it.  This is the one
 * place the class parts from its long-standing behaviour: there a copy took the bare pointer,
 * so two objects freed one buffer and an assignment leaked the target's own; counting the
 * holders keeps the sharing callers rely on without the double free and the leak.
 * No member throws.  One object must not be used from two threads at once (copies of it may). */
class XGGEO_API CDataTransfer {
 public:
  CDataTransfer();
  ~CDataTransfer();
  /* Shares the buffer of other, like operator=. */
  CDataTransfer(const CDataTransfer &other);
  /* Copies the settings and the result size and shares other's buffer; the buffer this object
   * held is released when no other object holds it. */
  CDataTransfer &operator=(const CDataTransfer &other);

  /* Sets the origin and scale; the upper corner becomes origin + 2147483647 / scale. */
  void SetCoordinateInf(double origin_x, double origin_y, double scale);
  /* box <- (origin x, origin y, upper x, upper y), *scale <- scale; a null pointer is skipped. */
  void GetCoordinateInf(_xgWKB_BOX *box, double *scale);
  /* Integers of one point.  -500 when x or y lies below the origin or above the upper corner
   * (or is not a number); else 0. */
  int32_t Double2Long(double &x, double &y, int32_t &ix, int32_t &iy);
  /* Point of a pair of integers: ix / scale + origin x, likewise y.  -500 when either is
   * negative; else 0. */
  int32_t Long2Double(int32_t &ix, int32_t &iy, double &x, double &y);

  /* Fills the buffer with the stream of a shape of type 1-6.  Repeated points are left out;
   * polygon rings left with fewer than 4 points and lines left with fewer than 2 are dropped
   * (a polygon whose outer ring is dropped writes nothing; so does a multipolygon member).
   * Returns 0; -65 null shape; -199 type not 1-6 (the nil shape included); -134 a multi-type
   * holding a member of another type; -500 a coordinate outside the range (every coordinate is
   * tested, holes included); -501 nothing left to write (a linestring of fewer than 2 points, a
   * polygon, multilinestring or multipolygon with nothing kept); -1 out of memory. */
  int32_t ConvertWkb2Compress(const unsigned char *shape);
  /* Fills the buffer with the shape blob of a stream, trusting the stream's length field.
   * Returns 0; -65 null stream; -199 type word not 10001..10006; -501 a malformed stream (as
   * the bounded form below, with the length field as the bytes available). */
  int32_t ConvertCompress2Wkb(const unsigned char *stream);
  /* Decodes a stream of which only `available` bytes may be read (untrusted input).  A stream
   * whose first byte is not 1, whose length field is below 9 or exceeds available, whose type
   * word is not 10001..10006, or whose body is malformed (a code running past the end or longer
   * than five bytes, a coordinate outside 0..2147483647, a count larger than the body holds,
   * fewer points, rings or lines than the encoder ever writes, bytes left over) returns -501.
   * -65 null stream; -1 out of memory.  Every failure leaves a result size of 0. */
  int32_t ConvertCompress2Wkb(const unsigned char *stream, int32_t available);
  /* Valid bytes in the buffer after the last conversion (0 after a failed one). */
  int32_t GetResultSize();
  /* The result buffer (owned by the object; null only when memory ran out at construction). */
  operator unsigned char *();

 protected:
  /* trunc((v - origin) * scale + 0.5) for x and y, without range test (saturated to int32). */
  void Double2Int(double &x, double &y, int32_t &ix, int32_t &iy);
  /* ix / scale + origin x, likewise y. */
  void Int2Double(int32_t &ix, int32_t &iy, double &x, double &y);
  /* Codes x and y into the two scratch codes. */
  void Int2CompressInt(int32_t &x, int32_t &y);
  /* Decodes one x and one y code at p (the caller vouches for the bytes); used <- bytes read.
   * Returns 1, or 0 when a code is longer than five bytes. */
  int GetNextXY(const unsigned char *p, int32_t &x, int32_t &y, int32_t &used);
  /* When the capacity is at most need, doubles it until it exceeds need and reallocates the
   * buffer, keeping its contents (the buffer is left as it was when memory runs out). */
  void AllocSize(int32_t need);

 private:
  struct Buffer; /* the result buffer, its capacity and its number of holders */
  Buffer *m_buffer;
  int32_t m_resultSize;
  int32_t m_unused; /* kept for the record layout callers know; no operation uses it */
  double m_originX, m_originY, m_scale, m_upperX, m_upperY;
  unsigned char m_codeX[6], m_codeY[6]; /* scratch codes of Int2CompressInt */
  uint16_t m_codeXSize, m_codeYSize;
};

#endif /* __cplusplus */

#endif /* XGGEOKIT_H */
