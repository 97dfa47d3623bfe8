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

/* ------------------------------------------------------------------------------------------ */
/* Metrics                                                                                     */
/* ------------------------------------------------------------------------------------------ */

/* ------------------------------------------------------------------------------------------ */
/* Validation                                                                                  */
/* ------------------------------------------------------------------------------------------ */

/* ------------------------------------------------------------------------------------------ */
/* Well-Known Text                                                                             */
/* ------------------------------------------------------------------------------------------ */

/* ------------------------------------------------------------------------------------------ */
/* Affine transforms                                                                           */
/* ------------------------------------------------------------------------------------------ */

/* ------------------------------------------------------------------------------------------ */
/* Part and ring editing                                                                       */
/* ------------------------------------------------------------------------------------------ */

/* ------------------------------------------------------------------------------------------ */
/* Vertex editing                                                                              */
/* ------------------------------------------------------------------------------------------ */

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
/* End of the C interface                                                                      */
/* ------------------------------------------------------------------------------------------ */

#ifdef __cplusplus
} /* extern "C" */
#endif

#ifdef __cplusplus
/* ------------------------------------------------------------------------------------------ */
/* C++ linkage: annotation descriptor functions and the coordinate codec                      */
/* ------------------------------------------------------------------------------------------ */

#endif /* __cplusplus */

#endif /* XGGEOKIT_H */
