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
XGGEO_API int32_t xgWKB_shape_get_WKB_size(const unsigned char *shape, uint32_t *size);

/* Allocates the 5-byte nil shape into *shape.  handle is only tested for being non-zero (-65). */
XGGEO_API int32_t xgWKB_shape_make_nil(uint32_t handle, unsigned char **shape);

/* Releases a shape or a string the library returned; a null pointer is ignored. */
XGGEO_API void xgWKB_shape_free(void *shape);

/* Releases the first count shapes of the array (not the array itself). */
XGGEO_API void xgWKB_shape_free_array(int32_t count, unsigned char **shapes);

/* Copies a shape into a new blob *copy (a nil shape copies its 5 bytes).  Null shape: -134. */
XGGEO_API int32_t xgWKB_shape_duplicate(const unsigned char *shape, unsigned char **copy);

/* Reads the type code at offset 1 without checking it.  Null shape: *type = 0 and -65. */
XGGEO_API int32_t xgWKB_shape_get_type(const unsigned char *shape, uint32_t *type);

/* 1 for the nil shape (type 0), else 0; a null pointer gives 0. */
XGGEO_API uint32_t xgWKB_shape_is_nil(const unsigned char *shape);

/* 1 for a point or multipoint, else 0; a null pointer gives 0. */
XGGEO_API uint32_t xgWKB_shape_is_point(const unsigned char *shape);

/* 1 for a linestring or multilinestring, else 0; a null pointer gives 0. */
XGGEO_API uint32_t xgWKB_shape_is_line(const unsigned char *shape);

/* 1 for a polygon or multipolygon, else 0; a null pointer gives 0. */
XGGEO_API uint32_t xgWKB_shape_is_polygon(const unsigned char *shape);

/* 1 for a multipoint, multilinestring or multipolygon, else 0; a null pointer gives 0. */
XGGEO_API uint32_t xgWKB_shape_is_multipart(const unsigned char *shape);

/* Envelope of a shape or of one of its parts.  part 0 is the whole shape.  Polygon: part k >= 2
 * is ring k.  Multilinestring and multipolygon: part j in 1..k-1 is member j+1, part k the whole
 * shape (member 1 alone cannot be asked for).  -65 null shape, -134 type not 1-6,
 * -135 part outside 0..count. */
XGGEO_API int32_t xgWKB_shape_get_extent(const unsigned char *shape, int32_t part, _xgWKB_BOX *box);

/* ------------------------------------------------------------------------------------------ */
/* Error messages                                                                              */
/* ------------------------------------------------------------------------------------------ */

/* Copies the message of a status code, as GBK bytes, into a new string *message released with
 * xgWKB_shape_free.  Returns 1 when the code is known, else 0 (and *message is untouched). */
XGGEO_API uint32_t xgWKB_shape_get_error_description(int32_t code, char **message);

/* As xgWKB_shape_get_error_description, with the message encoded as UTF-8. */
XGGEO_API uint32_t xgWKB_shape_get_error_description_utf8(int32_t code, char **message);

/* ------------------------------------------------------------------------------------------ */
/* Point primitives: bare points and point arrays, no allocation, no pointer checks            */
/* ------------------------------------------------------------------------------------------ */

/* 1 when a and b differ by strictly less than tol in x and in y, else 0 (tol 0: never equal). */
XGGEO_API int32_t xgWKB_baseGeo_point_is_equal(const _xgWKB_POINT *a, const _xgWKB_POINT *b,
                                               double tol);

/* Euclidean distance between a and b. */
XGGEO_API double xgWKB_baseGeo_point_calculate_distance(const _xgWKB_POINT *a, const _xgWKB_POINT *b);

/* p becomes p - offset (the origin moves to offset). */
XGGEO_API void xgWKB_baseGeo_move_point(_xgWKB_POINT *p, const _xgWKB_POINT *offset);

/* out becomes p - origin; p is unchanged. */
XGGEO_API void xgWKB_baseGeo_moveEx_point(const _xgWKB_POINT *p, const _xgWKB_POINT *origin,
                                          _xgWKB_POINT *out);

/* Rotates p about (0,0) clockwise by angle (radians). */
XGGEO_API void xgWKB_baseGeo_rotate_point(_xgWKB_POINT *p, double angle);

/* Direction angle of from->to, counter-clockwise from +x, in [0, 2pi); equal points give pi/2. */
XGGEO_API double xgWKB_baseGeo_point_calculate_angle(const _xgWKB_POINT *from, const _xgWKB_POINT *to);

/* Relation of p to the segment a->b: 1 on it, 2 at a, 3 at b (within 0.0001), 0 off the line
 * by more than tol, -1 on the line beyond b, -2 on the line before a. */
XGGEO_API int32_t xgWKB_baseGeo_point_line_relation(const _xgWKB_POINT *p, const _xgWKB_POINT *a,
                                                    const _xgWKB_POINT *b, double tol);

/* Relation of p to the run pts[0..n-1]: -(k+1) at vertex k, i inside the segment ending at
 * vertex i, 0 elsewhere. */
XGGEO_API int32_t xgWKB_baseGeo_point_linestring_relation(const _xgWKB_POINT *p,
                                                          const _xgWKB_POINT *pts, int32_t n,
                                                          double tol);

/* 1 when the run has at least 3 points and its ends are equal within tol, else 0. */
XGGEO_API int32_t xgWKB_baseGeo_linestring_is_closed(const _xgWKB_POINT *pts, int32_t n, double tol);

/* Relation of p to a closed ring pts[0..n-1] (last point repeating the first; no closing edge is
 * added): 0 outside, 1 inside, 2 on the boundary. */
XGGEO_API int32_t xgWKB_baseGeo_point_simplePolygon_relation(const _xgWKB_POINT *p,
                                                             const _xgWKB_POINT *pts, int32_t n,
                                                             double tol);

/* ------------------------------------------------------------------------------------------ */
/* Part and point access                                                                       */
/* ------------------------------------------------------------------------------------------ */

/* Rings of a polygon or members of a multi-type into *count.  -65 null shape; any other type:
 * *count = 0 and -27. */
XGGEO_API int32_t xgWKB_shape_get_num_parts(const unsigned char *shape, uint32_t *count);

/* Rings of a multipolygon: part 0 all rings, part p the rings of polygon p.  -65 null shape
 * (*count = 0); not a multipolygon: *count = 1 and -27; part outside 0..members: *count = 0
 * and -137. */
XGGEO_API int32_t xgWKB_shape_get_num_subparts(const unsigned char *shape, int32_t part,
                                               uint32_t *count);

/* Number of points of the shape (part 0), of a ring or member (part k), or of ring subpart of
 * multipolygon member part (subpart 0: the whole member).  -65 null shape, -134 type not 1-6,
 * -137 index out of range (*count = 0). */
XGGEO_API int32_t xgWKB_shape_get_num_points(const unsigned char *shape, int32_t part,
                                             int32_t subpart, uint32_t *count);

/* Copies the points of one part into the caller's array: point, linestring and multipoint all
 * points; polygon ring part; multilinestring member part; multipolygon every ring of polygon part.
 * -65 null shape, -134 type not 1-6, -137 part outside 1..count. */
XGGEO_API int32_t xgWKB_shape_get_points(const unsigned char *shape, int32_t part,
                                         _xgWKB_POINT *points);

/* Copies every point into points and, when given, the start index of each part and ring into
 * part_offsets and subpart_offsets (sized by the counting functions).  -65 null shape,
 * -134 type not 1-6. */
XGGEO_API int32_t xgWKB_shape_get_all_points(const unsigned char *shape, int32_t *part_offsets,
                                             int32_t *subpart_offsets, _xgWKB_POINT *points);

/* ------------------------------------------------------------------------------------------ */
/* Shape construction                                                                          */
/* ------------------------------------------------------------------------------------------ */

/* Every constructor hands a new blob through out, released with xgWKB_shape_free, writes 0 into
 * every byte-order byte and stores points as given (no ring is closed, reordered or reoriented).
 * Arguments are checked in the order listed; a null out-pointer gives -65 after those checks,
 * and running out of memory gives -1. */

/* A 21-byte point blob of *p.  -65 p or out null. */
XGGEO_API int32_t xgWKB_shape_generate_point(const _xgWKB_POINT *p, unsigned char **out);

/* A multipoint of k member point blobs (9 + 21k bytes).  -148 k < 1 (tested before the array),
 * -65 points null. */
XGGEO_API int32_t xgWKB_shape_generate_multipoint(int32_t k, const _xgWKB_POINT *points,
                                                  unsigned char **out);

/* A linestring of n points (9 + 16n bytes).  -65 points null, -148 n < 2. */
XGGEO_API int32_t xgWKB_shape_generate_line(int32_t n, const _xgWKB_POINT *points,
                                            unsigned char **out);

/* A multilinestring of parts members, member i taking the next counts[i] points of points; total
 * is not used.  parts 0 gives the empty 9-byte multilinestring.  -65 points null (or counts null
 * with parts > 0), -66 parts < 0, -148 some counts[i] < 2 (nothing is allocated). */
XGGEO_API int32_t xgWKB_shape_generate_multiline(int32_t total, int32_t parts, const int32_t *counts,
                                                 const _xgWKB_POINT *points, unsigned char **out);

/* As xgWKB_shape_generate_multiline, then every member is split where it crosses or touches
 * another member (tolerance 0.0001) and the pieces form the result.  Always returns 0: when the
 * multilinestring cannot be built, nothing is stored in out (preset it). */
XGGEO_API int32_t xgWKB_shape_generate_simple_line(int32_t total, int32_t parts,
                                                   const int32_t *counts,
                                                   const _xgWKB_POINT *points, unsigned char **out);

/* A polygon of rings rings, ring i taking the next counts[i] points; with counts null, one ring of
 * total points (13 + 16 total bytes).  Ring 1 is the outer ring.  -65 points null, -148 total < 4
 * (even with counts) or some counts[i] < 4, -66 rings != 1 without counts (or rings < 0). */
XGGEO_API int32_t xgWKB_shape_generate_polygon(int32_t total, int32_t rings, const int32_t *counts,
                                               const _xgWKB_POINT *points, unsigned char **out);

/* A 37-byte envelope blob (type 21): minx, miny, maxx, maxy.  -65 box or out null. */
XGGEO_API int32_t xgWKB_shape_generate_envelope(const _xgWKB_BOX *box, unsigned char **out);

/* A 93-byte polygon of the box: (minx,miny), (minx,maxy), (maxx,maxy), (maxx,miny), (minx,miny),
 * clockwise and closed.  -65 box or out null. */
XGGEO_API int32_t xgWKB_shape_generate_polygon_from_rectangle(const _xgWKB_BOX *box,
                                                              unsigned char **out);

/* A polygon of n points on the circle, counter-clockwise from (cx + radius, cy), at the angles
 * i * 2pi / n with the single-precision 2pi.  The counted ring is not closed: one more point
 * (cx + radius, cy) follows it outside the count, so the block is 16 bytes longer than
 * xgWKB_shape_get_WKB_size says.  -66 unless radius >= 0 and n >= 4; -65 centre null. */
XGGEO_API int32_t xgWKB_shape_generate_polygon_from_circle(const _xgWKB_POINT *centre, double radius,
                                                           int32_t n, unsigned char **out);

/* A polygon of n points on the ellipse with semi-axes a (along x) and b, swept from the angle
 * start (radians) to 2pi.  The first point and the uncounted point written after the ring are
 * (cx + a cos start, cy + a sin start).  -66 unless a >= 0, b >= 0, a >= b, 0 <= start <= 360
 * and n >= 9; -65 centre null. */
XGGEO_API int32_t xgWKB_shape_generate_from_ellipse(const _xgWKB_POINT *centre, double a, double b,
                                                    double start, int32_t n, unsigned char **out);

/* A copy of member index (1-based) of a multipoint, multilinestring or multipolygon as a shape of
 * its own.  -65 shape null, -27 not a multi-type, -66 index outside 1..members. */
XGGEO_API int32_t xgWKB_shape_generate_from_part(const unsigned char *shape, int32_t index,
                                                 unsigned char **out);

/* One multi-type holding every member of the multi-type inputs and every other input as a member,
 * in order.  The last input's type picks the result: point or multipoint gives a multipoint, and
 * so on; the others are not checked against it.  -65 shapes, an entry or out null; -66 count < 1;
 * -134 an earlier input that is not a geometry (nothing allocated); -134 when the last input is
 * not a geometry, in which case a zeroed block has already been stored in *out and the caller
 * frees it. */
XGGEO_API int32_t xgWKB_shape_combine(const unsigned char *const *shapes, int32_t count,
                                      unsigned char **out);

/* A multipoint of every vertex in storage order (ring-closing vertices included); a multipoint is
 * copied.  -65 shape null, -27 type not 1-6. */
XGGEO_API int32_t xgWKB_shape_as_point(const unsigned char *shape, unsigned char **out);

/* The line form of a shape: a point gives the nil shape (status 0), a linestring or
 * multilinestring a copy, a multipoint one linestring through its points, a polygon or
 * multipolygon a multilinestring of all its rings (-27 when it has none).  -65 shape null,
 * -134 type not 1-6. */
XGGEO_API int32_t xgWKB_shape_as_line(const unsigned char *shape, unsigned char **out);

/* xgWKB_shape_as_line, then a multilinestring result is split where its members cross or touch
 * (tolerance 0.0001); any other result is returned as it is.  -65 shape null; otherwise always
 * 0, even when the conversion failed (nothing is stored then: preset out). */
XGGEO_API int32_t xgWKB_shape_as_simple_line(const unsigned char *shape, unsigned char **out);

/* A multipolygon from closed rings.  A linestring must be closed and not cross itself and gives
 * one polygon of one ring.  A multilinestring's members must be closed and cross neither
 * themselves nor each other; a ring inside another is a hole, the others are outer rings, and
 * each outer ring becomes a polygon with every hole that lies inside it (tolerance 0.0001).
 * -65 shape null, -27 not a linestring or multilinestring, or a test failed. */
XGGEO_API int32_t xgWKB_shape_as_polygon(const unsigned char *shape, unsigned char **out);

/* Reserved entry points: they accept any arguments (declared without any here), ignore them,
 * do nothing and return 0.  No coordinate reference is stored in a shape. */
XGGEO_API int32_t xgWKB_shape_build(void);
XGGEO_API int32_t xgWKB_shape_filter_coordinate(void);
XGGEO_API int32_t xgWKB_shape_change_coordref(void);
XGGEO_API int32_t xgWKB_shape_get_coordref(void);

/* ------------------------------------------------------------------------------------------ */
/* Metrics                                                                                     */
/* ------------------------------------------------------------------------------------------ */

/* Length of a line or of the rings of an area: linestring (part ignored); polygon all rings
 * (part 0) or ring part; multilinestring all members or member part; multipolygon all polygons
 * or polygon part.  -65 shape null, -135 part outside 0..parts, -27 point or multipoint,
 * -134 other types; on failure *length is 0. */
XGGEO_API int32_t xgWKB_shape_get_length(const unsigned char *shape, int32_t part, double *length);

/* Area of a polygon or multipolygon, holes subtracted as magnitudes.  Polygon: part 0 and part r
 * (the ring count, r >= 2) the whole polygon, part 1 the outer ring alone, part j in 2..r-1
 * ring j+1 alone.  Multipolygon: part 0 all polygons, part p polygon p.  -65 shape null,
 * -135 part outside 0..parts, -134 other types; on failure *area is 0. */
XGGEO_API int32_t xgWKB_shape_get_area(const unsigned char *shape, int32_t part, double *area);

/* 1 when a linestring's end points are equal within tol (or every member of a multilinestring
 * is closed; an empty one is), else 0.  -65 shape null, -27 other types. */
XGGEO_API int32_t xgWKB_shape_is_close(const unsigned char *shape, double tol);

/* Boundary into *out (tolerance 0.0001): a point or multipoint gives a nil shape and -208 (free
 * it); an open linestring the multipoint of its first and last point, a closed one the nil shape;
 * a polygon or multipolygon the multilinestring of its rings; a multilinestring the multipoint of
 * the end points met an odd number of times by its open members, in order of appearance (the
 * nil shape when none is).  -65 shape or out null, -134 other types. */
XGGEO_API int32_t xgWKB_shape_get_boundary(const unsigned char *shape, unsigned char **out);

/* Centroid of a polygon's outer ring (holes ignored); a ring of almost no area gives its first
 * point.  -65 shape or centroid null, -134 not a polygon (multipolygons included), -27 no ring. */
XGGEO_API int32_t xgWKB_shape_get_centroid(const unsigned char *shape, _xgWKB_POINT *centroid);

/* ------------------------------------------------------------------------------------------ */
/* Validation                                                                                  */
/* ------------------------------------------------------------------------------------------ */

/* Checks that a shape is a well-formed geometry: lines do not double back, rings are closed and
 * simple, holes lie inside their shell without overlapping or cutting the interior apart, members
 * of a multipolygon do not overlap.  Returns 1 valid, 0 invalid or not a geometry.  *status gets
 * the code of the first rule broken (-148, -150, -151, -147, -154, -155, -82); some failures
 * (-65 for a null shape among them) are ORed into *status instead, so preset it to 0.  A type
 * other than 1-6 leaves *status untouched. */
XGGEO_API uint32_t xgWKB_shape_check_WKBdata(const unsigned char *shape, int32_t *status);

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
XGGEO_API int32_t xgWKB_shape_generate_to_WKT(const unsigned char *shape, char **wkt);

/* Releases a text the library returned; a null pointer is ignored. */
XGGEO_API void xgWKB_shape_free_WKT(char *wkt);

/* Reads a text into a new shape *shape (release it with xgWKB_shape_free).  -65 null text,
 * -27 keyword other than the six geometry types.  A geometry text that does not follow the
 * dialect returns 0 and makes NO shape: preset *shape to NULL and test it after the call. */
XGGEO_API int32_t xgWKB_shape_generate_from_WKT(const char *wkt, unsigned char **shape);

/* The type code of the text's first word (point 1 ... multipolygon 6, SingleText 9, MultiText 10,
 * HoriDim 11, VertDim 12, AlignedDim 13, anything else 0) into *type.  Returns 0; -65 null text. */
XGGEO_API int32_t xgWKB_shape_get_WKT_type(const char *wkt, int32_t *type);

/* Estimated blob size of a text into *size: 5 for an empty text, 21 for a point; for the other
 * geometry types the estimate is stored only when no blank follows the opening parentheses, so
 * any readable text leaves *size untouched (size the blob with xgWKB_shape_get_WKB_size after
 * reading instead).  Returns 0; -65 null text; -27 other keyword (*size = 0). */
XGGEO_API int32_t xgWKB_shape_get_WKT_size(const char *wkt, int32_t *size);

/* Checks nothing and returns 0. */
XGGEO_API int32_t xgWKB_shape_check_WKTdata(const char *wkt);

/* ------------------------------------------------------------------------------------------ */
/* Affine transforms                                                                           */
/* ------------------------------------------------------------------------------------------ */

/* The transforms take points, linestrings, polygons and their multi-types; any other type, or a
 * multi-type holding a member of a foreign type, gives -27 and nothing is changed or allocated. */

/* Moves every vertex of shape in place by (dx, dy).  -65 null shape, -27 type not taken. */
XGGEO_API int32_t xgWKB_shape_move(unsigned char *shape, double dx, double dy);

/* Rotates every vertex of shape in place about (cx, cy) by angle radians; a positive angle turns
 * clockwise.  -65 null shape, -27 type not taken. */
XGGEO_API int32_t xgWKB_shape_rotate(unsigned char *shape, double angle, double cx, double cy);

/* Scales every vertex of shape in place about base by fx and fy (any factors, 0 and negative
 * ones included).  -65 null shape or base, -27 type not taken. */
XGGEO_API int32_t xgWKB_shape_stretch(unsigned char *shape, const _xgWKB_POINT *base, double fx,
                                      double fy);

/* Mirror image of shape about the line p1-p2 as a new blob *out (free with xgWKB_shape_free).
 * When |trunc(p1.y - p2.y)| < tol the line counts as horizontal and the image is taken about the
 * vertical line through p1 instead.  Vertex order is kept; member headers carry byte-order
 * byte 0.  -65 null pointer, -27 type not taken; on failure *out is not written. */
XGGEO_API int32_t xgWKB_shape_mirror(const unsigned char *shape, const _xgWKB_POINT *p1,
                                     const _xgWKB_POINT *p2, unsigned char **out, double tol);

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
                                       unsigned char **out);

/* Inserts part before part or ring index (1..count).  Tested in order: -134 shape type not 3-6,
 * -136 part not the member type (polygon: not readable as a linestring), -82 polygon ring not
 * inside the first ring, -135 index out of range.  For a multipoint the result block is handed
 * to *out before the index test, so on -135 *out holds a block the caller frees. */
XGGEO_API int32_t xgWKB_shape_insert_part(const unsigned char *shape, const unsigned char *part,
                                          int32_t index, unsigned char **out);

/* Replaces part or ring index with part.  Tested in order: -27 shape type not 3-6, -136 part
 * not the member type, -6 polygon ring (other than ring 1) not inside the first ring, -135 index
 * out of range. */
XGGEO_API int32_t xgWKB_shape_replace_part(const unsigned char *shape, const unsigned char *part,
                                           int32_t index, unsigned char **out);

/* Deletes part or ring index.  Multi-types: -135 index out of range; deleting the only member
 * gives the nil shape.  Polygon: -6 for ring 1 or a one-ring polygon (tested first), -135 index
 * out of range.  -134 other types. */
XGGEO_API int32_t xgWKB_shape_delete_part(const unsigned char *shape, int32_t index,
                                          unsigned char **out);

/* Appends the ring points[0..count-1] (no closing point added) to a polygon.  -136 not a
 * polygon, -66 count negative, -82 ring not inside the first ring. */
XGGEO_API int32_t xgWKB_shape_add_island(const unsigned char *shape, const _xgWKB_POINT *points,
                                         int32_t count, unsigned char **out);

/* Deletes the first inner ring having a vertex within 0.0001 of point.  The result has one ring
 * fewer, and every ring of it is a copy of the outer ring (long-standing behaviour).
 * -136 not a polygon, -6 no inner ring at point. */
XGGEO_API int32_t xgWKB_shape_delete_island(const unsigned char *shape, const _xgWKB_POINT *point,
                                            unsigned char **out);

/* Inserts the ring points[0..count-1] before ring ring_index of member part of a multipolygon.
 * -134 not a multipolygon, -66 count negative, -135 part out of range; then the result block is
 * handed to *out and -82 (ring not inside the member's first ring) or -135 (ring_index out of
 * range) leave it there for the caller to free. */
XGGEO_API int32_t xgWKB_shape_add_multipolygon_ring(const unsigned char *shape, int32_t part,
                                                    int32_t ring_index,
                                                    const _xgWKB_POINT *points, int32_t count,
                                                    unsigned char **out);

/* Deletes ring ring_index (2..rings: the outer ring stays) of member part of a multipolygon.
 * -134 not a multipolygon, -135 part or ring out of range. */
XGGEO_API int32_t xgWKB_shape_delete_multipolygon_ring(const unsigned char *shape, int32_t part,
                                                       int32_t ring_index, unsigned char **out);

/* Replaces ring ring_index of member part of a multipolygon by points[0..count-1].  -134 not a
 * multipolygon, -66 count negative, -135 part or ring out of range; then the result block is
 * handed to *out and -82 (ring not inside the member's first ring) leaves it there. */
XGGEO_API int32_t xgWKB_shape_replace_multipolygon_ring(const unsigned char *shape, int32_t part,
                                                        int32_t ring_index,
                                                        const _xgWKB_POINT *points,
                                                        int32_t count, unsigned char **out);

/* Reserved entry points: they accept and ignore any arguments, do nothing and return 0. */
XGGEO_API int32_t xgWKB_shape_change_path(void);
XGGEO_API int32_t xgWKB_shape_delete_path(void);
XGGEO_API int32_t xgWKB_shape_replace_path_with_arc(void);
XGGEO_API int32_t xgWKB_shape_delete_point(void);
XGGEO_API int32_t xgWKB_shape_move_point(void);
XGGEO_API int32_t xgWKB_shape_extend_line(void);

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
                                                   const _xgWKB_POINT *point, unsigned char **out);
XGGEO_API int32_t xgWKB_shape_delete_lineString_point(const unsigned char *shape,
                                                      int32_t point_index, unsigned char **out);
XGGEO_API int32_t xgWKB_shape_change_linestring_point(unsigned char *shape, int32_t point_index,
                                                      const _xgWKB_POINT *point);

/* Delete: once the part index is found in range the result block is handed to *out, and a -6
 * or -135 that follows leaves it there for the caller to free. */
XGGEO_API int32_t xgWKB_shape_add_MultiLineString_point(const unsigned char *shape, int32_t part,
                                                        int32_t point_index,
                                                        const _xgWKB_POINT *point,
                                                        unsigned char **out);
XGGEO_API int32_t xgWKB_shape_delete_MultiLineString_point(const unsigned char *shape,
                                                           int32_t part, int32_t point_index,
                                                           unsigned char **out);
/* (Name spelt so on purpose.)  A point index that matches no vertex of the part changes nothing
 * and returns 0. */
XGGEO_API int32_t xgWKB_shape_chage_MultiLineString_point(unsigned char *shape, int32_t part,
                                                          int32_t point_index,
                                                          const _xgWKB_POINT *point);

/* Delete: once the ring index is found in range the result block is handed to *out, and a -6
 * or -135 that follows leaves it there for the caller to free. */
XGGEO_API int32_t xgWKB_shape_add_polygon_point(const unsigned char *shape, int32_t ring_index,
                                                int32_t point_index, const _xgWKB_POINT *point,
                                                unsigned char **out);
XGGEO_API int32_t xgWKB_shape_delete_polygon_point(const unsigned char *shape, int32_t ring_index,
                                                   int32_t point_index, unsigned char **out);
XGGEO_API int32_t xgWKB_shape_change_polygon_point(unsigned char *shape, int32_t ring_index,
                                                   int32_t point_index, const _xgWKB_POINT *point);

/* Delete: once the part index is found in range the result block is handed to *out; a -135 for
 * the ring index leaves it there for the caller to free, while a -6 or a -135 for the point
 * index frees it and sets *out to null. */
XGGEO_API int32_t xgWKB_shape_add_multipolygon_point(const unsigned char *shape, int32_t part,
                                                     int32_t ring_index, int32_t point_index,
                                                     const _xgWKB_POINT *point, unsigned char **out);
XGGEO_API int32_t xgWKB_shape_delete_multipolygon_point(const unsigned char *shape, int32_t part,
                                                        int32_t ring_index, int32_t point_index,
                                                        unsigned char **out);
XGGEO_API int32_t xgWKB_shape_change_multipolygon_point(unsigned char *shape, int32_t part,
                                                        int32_t ring_index, int32_t point_index,
                                                        const _xgWKB_POINT *point);

/* ------------------------------------------------------------------------------------------ */
/* Relations between two shapes                                                                */
/* ------------------------------------------------------------------------------------------ */

/* The predicates below compare two shapes a and b with tolerance t (a vertex within t of an
 * edge touches it; points are equal when they differ by less than t on both axes).  Each
 * returns 1 or 0 and never fails; the pointers are not tested.  Only the six geometry types
 * take part: nil, annotation, dimension and envelope shapes give 0 in every predicate, as do
 * the pairs of types a predicate does not define (noted per predicate). */

/* 1 when a and b have no point in common.  Defined for every pair of geometry types. */
XGGEO_API int32_t xgWKB_shape_is_disjoint(const unsigned char *a, const unsigned char *b, double t);

/* 1 when a and b have a point in common: exactly the negation of xgWKB_shape_is_disjoint for
 * geometry types, 0 for any other type. */
XGGEO_API int32_t xgWKB_shape_is_intersecting(const unsigned char *a, const unsigned char *b,
                                              double t);

/* 1 when a lies in b and their interiors meet.  Undefined (0): any shape within a point, a
 * linestring or multilinestring within a multipoint, a polygon or multipolygon within a point
 * type or a line type. */
XGGEO_API int32_t xgWKB_shape_is_within(const unsigned char *a, const unsigned char *b, double t);

/* xgWKB_shape_is_within(b, a, t), for every pair. */
XGGEO_API int32_t xgWKB_shape_is_containing(const unsigned char *a, const unsigned char *b,
                                            double t);

/* 1 when the interiors meet but neither shape covers the other's interior part: lines meeting
 * in isolated points; a multipoint or line partly inside, partly outside the other shape.
 * Undefined (0): any pair with a single point, polygon types with each other, multipoint with
 * multipoint. */
XGGEO_API int32_t xgWKB_shape_is_crossing(const unsigned char *a, const unsigned char *b, double t);

/* 1 when two shapes of one dimension share part of their interiors and each has interior
 * points outside the other.  Defined for multipoint with multipoint, line types with line
 * types and polygon types with polygon types (a single point: 0). */
XGGEO_API int32_t xgWKB_shape_is_overlapping(const unsigned char *a, const unsigned char *b,
                                             double t);

/* 1 when a and b meet only on their boundaries.  Undefined (0): a point or multipoint with a
 * point or multipoint.  A closed linestring has no boundary. */
XGGEO_API int32_t xgWKB_shape_is_touching(const unsigned char *a, const unsigned char *b, double t);

/* 1 when a and b have the same geometry type and equal vertices within t, in the same order.
 * Deliberately partial: multipoints compare b's count of points only (a with extra points after
 * b's equals b; a with fewer gives 0), and polygon rings compare only their first n + 1 doubles
 * (n the ring's point count). */
XGGEO_API int32_t xgWKB_shape_is_equal(const unsigned char *a, const unsigned char *b, double t);

/* Reserved; reads nothing and returns 0. */
XGGEO_API int32_t xgWKB_shape_find_relation(void);

/* ------------------------------------------------------------------------------------------ */
/* Relations between an envelope and a shape                                                  */
/* ------------------------------------------------------------------------------------------ */

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
                                         double t);
XGGEO_API int32_t xgWKB_shape_intersection(const unsigned char *a, const unsigned char *b,
                                           unsigned char **out, double t);
XGGEO_API int32_t xgWKB_shape_union(const unsigned char *a, const unsigned char *b, unsigned char **out, double t);
XGGEO_API int32_t xgWKB_shape_symmetric_difference(const unsigned char *a, const unsigned char *b,
                                                   unsigned char **out, double t);

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
                                      unsigned char **only_b, unsigned char **common, double t);

/* ------------------------------------------------------------------------------------------ */
/* Buffer and clipping                                                                        */
/* ------------------------------------------------------------------------------------------ */

/* ------------------------------------------------------------------------------------------ */
/* Convex hull, distance and line merge                                                       */
/* ------------------------------------------------------------------------------------------ */

/* ------------------------------------------------------------------------------------------ */
/* Linear referencing and snapping                                                            */
/* ------------------------------------------------------------------------------------------ */

/* ------------------------------------------------------------------------------------------ */
/* Text annotations and dimensions                                                            */
/* ------------------------------------------------------------------------------------------ */

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

/* The coordinate codec */

#endif /* __cplusplus */

#endif /* XGGEOKIT_H */
