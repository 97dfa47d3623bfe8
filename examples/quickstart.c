/* quickstart.c - the library's typical request in plain C: build a polygon from coordinates,
 * measure it, test it against another shape, print it as text and release everything.
 * Written in C to show that the public header needs nothing else. */
#include <stdio.h>

#include "xggeokit.h"

/* Prints a status with its message (UTF-8); returns the status. */
static int32_t report(const char *what, int32_t status) {
  char *msg = NULL;
  if (status == XGWKB_OK) return status;
  if (xgWKB_shape_get_error_description_utf8(status, &msg)) {
    printf("%s: status %d: %s\n", what, status, msg);
    xgWKB_shape_free(msg);
  } else {
    printf("%s: status %d\n", what, status);
  }
  return status;
}

static void print_shape(const char *name, const unsigned char *shape) {
  char *wkt = NULL;
  if (report("to text", xgWKB_shape_generate_to_WKT(shape, &wkt)) == XGWKB_OK) {
    printf("%s: %s\n", name, wkt);
    xgWKB_shape_free_WKT(wkt);
  }
}

int main(void) {
  /* A 10 x 10 square with a 2 x 2 hole: two closed rings, one after the other. */
  const _xgWKB_POINT coords[10] = {{0, 0}, {0, 10}, {10, 10}, {10, 0}, {0, 0},
                                   {4, 4}, {6, 4}, {6, 6}, {4, 6}, {4, 4}};
  const int32_t ring_sizes[2] = {5, 5};
  unsigned char *parcel = NULL, *road = NULL, *copy = NULL;
  if (report("polygon", xgWKB_shape_generate_polygon(10, 2, ring_sizes, coords, &parcel)) != XGWKB_OK)
    return 1;
  print_shape("parcel", parcel);

  uint32_t size = 0, rings = 0;
  double area = 0, length = 0;
  _xgWKB_BOX box;
  xgWKB_shape_get_WKB_size(parcel, &size);
  xgWKB_shape_get_num_parts(parcel, &rings);
  xgWKB_shape_get_area(parcel, 0, &area);
  xgWKB_shape_get_length(parcel, 0, &length);
  xgWKB_shape_get_extent(parcel, 0, &box);
  printf("%u bytes, %u rings, area %g, perimeter %g, extent (%g %g, %g %g)\n", size, rings, area,
         length, box.minx, box.miny, box.maxx, box.maxy);

  int32_t status = 0;
  printf("valid: %u\n", xgWKB_shape_check_WKBdata(parcel, &status));

  /* A road crossing the parcel, read from text. */
  xgWKB_shape_generate_from_WKT("linestring (-5 5,15 5)", &road);
  if (road == NULL) return 1;
  printf("road intersects parcel: %d, crosses: %d, within: %d\n",
         xgWKB_shape_is_intersecting(road, parcel, 0.0001), xgWKB_shape_is_crossing(road, parcel, 0.0001),
         xgWKB_shape_is_within(road, parcel, 0.0001));

  /* Transforms work in place on a copy that the caller owns. */
  if (xgWKB_shape_duplicate(parcel, &copy) == XGWKB_OK) {
    xgWKB_shape_move(copy, 100, 0);
    print_shape("moved copy", copy);
    printf("moved copy disjoint from road: %d\n", xgWKB_shape_is_disjoint(copy, road, 0.0001));
  }

  /* Errors come back as status codes with a message. */
  report("extent of ring 7", xgWKB_shape_get_extent(parcel, 7, &box));
  report("polygon of 3 points", xgWKB_shape_generate_polygon(3, 1, NULL, coords, &copy));

  xgWKB_shape_free(copy);
  xgWKB_shape_free(road);
  xgWKB_shape_free(parcel);
  return 0;
}
