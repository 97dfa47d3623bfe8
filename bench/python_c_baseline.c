/* python_c_baseline.c - the C side of bench/bench_python.py: the same library calls the Python
 * benchmark makes, in a plain C loop, so that the binding's per-element overhead can be measured.
 *
 *   python_c_baseline BLOBS QUERY TEXTS
 * BLOBS holds n shape blobs back to back (sizes from their counts), QUERY one blob, TEXTS n
 * zero-terminated texts.  Prints "area SECONDS", "intersects SECONDS" and "from_wkt SECONDS". */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>

#include <xggeokit.h>

static unsigned char *slurp(const char *path, size_t *len) {
  FILE *f = fopen(path, "rb");
  if (!f) { perror(path); exit(1); }
  fseek(f, 0, SEEK_END);
  *len = (size_t)ftell(f);
  fseek(f, 0, SEEK_SET);
  unsigned char *buf = malloc(*len + 1);
  if (!buf || fread(buf, 1, *len, f) != *len) { perror(path); exit(1); }
  buf[*len] = 0;
  fclose(f);
  return buf;
}

static double now(void) {
  struct timespec ts;
  clock_gettime(CLOCK_MONOTONIC, &ts);
  return ts.tv_sec + ts.tv_nsec * 1e-9;
}

int main(int argc, char **argv) {
  if (argc != 4) { fprintf(stderr, "usage: %s BLOBS QUERY TEXTS\n", argv[0]); return 2; }
  size_t len, qlen, tlen;
  unsigned char *blobs = slurp(argv[1], &len), *query = slurp(argv[2], &qlen), *texts = slurp(argv[3], &tlen);
  size_t n = 0, cap = 1024;
  const unsigned char **shapes = malloc(cap * sizeof *shapes);
  for (size_t off = 0; off < len; ++n) {
    uint32_t size = 0;
    if (n == cap) shapes = realloc(shapes, (cap *= 2) * sizeof *shapes);
    shapes[n] = blobs + off;
    if (xgWKB_shape_get_WKB_size(blobs + off, &size) != XGWKB_OK || size == 0) { fprintf(stderr, "bad blob\n"); return 1; }
    off += size;
  }
  double *areas = malloc(n * sizeof *areas);
  unsigned char *hits = malloc(n);

  double t = now();
  for (size_t i = 0; i < n; ++i) xgWKB_shape_get_area(shapes[i], 0, &areas[i]);
  printf("area %.6f\n", now() - t);

  t = now();
  for (size_t i = 0; i < n; ++i) hits[i] = (unsigned char)xgWKB_shape_is_intersecting(shapes[i], query, 0.0001);
  printf("intersects %.6f\n", now() - t);

  t = now();
  const char *p = (const char *)texts;
  for (size_t i = 0; i < n; ++i) {
    unsigned char *out = NULL;
    xgWKB_shape_from_ogc_wkt(p, 0, &out);
    xgWKB_shape_free(out);
    p += strlen(p) + 1;
  }
  printf("from_wkt %.6f\n", now() - t);

  double sum = 0;
  size_t count = 0;
  for (size_t i = 0; i < n; ++i) sum += areas[i], count += hits[i];
  fprintf(stderr, "(checksum %g %zu)\n", sum, count);
  free(areas); free(hits); free(shapes); free(blobs); free(query); free(texts);
  return 0;
}
