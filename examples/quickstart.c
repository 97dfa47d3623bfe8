/* quickstart.c - builds a few shapes by hand, queries them and prints what the library says.
 * Written in plain C to show that the public header needs nothing else. */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "xggeokit.h"

/* Writes a little-endian u32 / f64 at p and returns the next position. */
static unsigned char *put_u32(unsigned char *p, uint32_t v) {
  for (int i = 0; i < 4; ++i) p[i] = (unsigned char)(v >> (8 * i));
  return p + 4;
}

static unsigned char *put_f64(unsigned char *p, double v) {
  uint64_t bits;
  memcpy(&bits, &v, sizeof bits);
  for (int i = 0; i < 8; ++i) p[i] = (unsigned char)(bits >> (8 * i));
  return p + 8;
}

static void print_error(int32_t code) {
  char *msg = NULL;
  if (xgWKB_shape_get_error_description_utf8(code, &msg)) {
    printf("status %d: %s\n", code, msg);
    xgWKB_shape_free(msg);
  } else {
    printf("status %d: (no message)\n", code);
  }
}

int main(void) {
  /* A polygon: a 10 x 10 square with a 2 x 2 hole, both rings closed. */
  static const double shell[5][2] = {{0, 0}, {10, 0}, {10, 10}, {0, 10}, {0, 0}};
  static const double hole[5][2] = {{4, 4}, {4, 6}, {6, 6}, {6, 4}, {4, 4}};
  unsigned char blob[9 + 2 * (4 + 5 * 16)];
  unsigned char *p = blob;
  *p++ = 0;
  p = put_u32(p, XGWKB_TYPE_POLYGON);
  p = put_u32(p, 2);
  p = put_u32(p, 5);
  for (int i = 0; i < 5; ++i) p = put_f64(put_f64(p, shell[i][0]), shell[i][1]);
  p = put_u32(p, 5);
  for (int i = 0; i < 5; ++i) p = put_f64(put_f64(p, hole[i][0]), hole[i][1]);

  uint32_t size = 0, type = 0, parts = 0, points = 0;
  xgWKB_shape_get_WKB_size(blob, &size);
  xgWKB_shape_get_type(blob, &type);
  xgWKB_shape_get_num_parts(blob, &parts);
  xgWKB_shape_get_num_points(blob, 0, 0, &points);
  printf("polygon: type %u, %u bytes, %u rings, %u points\n", type, size, parts, points);

  _xgWKB_BOX box;
  xgWKB_shape_get_extent(blob, 0, &box);
  printf("extent: (%g %g, %g %g)\n", box.minx, box.miny, box.maxx, box.maxy);

  _xgWKB_POINT pts[10];
  xgWKB_shape_get_points(blob, 2, pts);
  printf("hole starts at (%g %g)\n", pts[0].x, pts[0].y);

  /* Where do a few points lie against the outer ring? 0 outside, 1 inside, 2 on the boundary. */
  _xgWKB_POINT shell_pts[5];
  xgWKB_shape_get_points(blob, 1, shell_pts);
  const _xgWKB_POINT probes[3] = {{5, 5}, {10, 5}, {12, 5}};
  for (int i = 0; i < 3; ++i)
    printf("(%g %g) against the shell: %d\n", probes[i].x, probes[i].y,
           xgWKB_baseGeo_point_simplePolygon_relation(&probes[i], shell_pts, 5, 0.0001));

  const _xgWKB_POINT a = {0, 0}, b = {3, 4};
  printf("distance (0 0)-(3 4): %g, direction angle: %.10f\n",
         xgWKB_baseGeo_point_calculate_distance(&a, &b), xgWKB_baseGeo_point_calculate_angle(&a, &b));

  /* Copies are the caller's to free. */
  unsigned char *copy = NULL;
  if (xgWKB_shape_duplicate(blob, &copy) == XGWKB_OK) {
    printf("duplicate is a polygon: %u\n", xgWKB_shape_is_polygon(copy));
    xgWKB_shape_free(copy);
  }

  /* Errors come back as status codes with a message. */
  print_error(xgWKB_shape_get_extent(blob, 7, &box));
  print_error(xgWKB_shape_get_num_parts(NULL, &parts));
  return 0;
}
