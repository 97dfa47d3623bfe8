// blob_builder.h - hand-built shape blobs for tests, independent of the library's writers.
#ifndef XGGEO_TESTS_BLOB_BUILDER_H
#define XGGEO_TESTS_BLOB_BUILDER_H

#include <cmath>
#include <cstdint>
#include <initializer_list>
#include <random>
#include <vector>

#include "xggeokit.h"

namespace xgtest {

using Bytes = std::vector<unsigned char>;
using Ring = std::vector<_xgWKB_POINT>;

// Appenders in the blob's byte layout (little-endian, byte-order byte 0).
void put_u32(Bytes& b, uint32_t v);
void put_f64(Bytes& b, double v);
void put_header(Bytes& b, uint32_t type);
Bytes header(uint32_t type);  // a blob of the header alone

Bytes point(double x, double y);
Bytes linestring(const Ring& pts);
Bytes polygon(const std::vector<Ring>& rings);
Bytes multi(uint32_t type, const std::vector<Bytes>& members);
Bytes multiline(const std::vector<Ring>& lines);  // one member per run
Bytes nil();
// The bytes of a shape the library handed out (a geometry type or nil), which is then freed.
Bytes take_shape(unsigned char* shape);

// A copy of a blob placed at an odd address at the end of a heap buffer, so that every double in
// it is misaligned and nothing past it can be read unnoticed; keeps the storage alive while the
// test uses data().
class Misaligned {
 public:
  explicit Misaligned(const Bytes& blob, std::size_t shift = 3);
  const unsigned char* data() const { return storage_.data() + shift_; }
  unsigned char* data() { return storage_.data() + shift_; }

 private:
  Bytes storage_;
  std::size_t shift_;
};

// A closed axis-aligned square ring, counter-clockwise.
Ring square(double x0, double y0, double size);

// A closed star-shaped ring around c: n vertices, one per equal sector at a jittered angle, at
// radii in [r_min, r_max]; simple for n >= 3.
template <class Rng>
Ring star_ring(Rng& rng, _xgWKB_POINT c, double r_min, double r_max, int n, bool clockwise = false) {
  std::uniform_real_distribution<double> jitter(0.05, 0.95), radius(r_min, r_max);
  Ring ring;
  for (int i = 0; i < n; ++i) {
    const double a = (clockwise ? -2 : 2) * M_PI * (i + jitter(rng)) / n, r = radius(rng);
    ring.push_back({c.x + r * std::cos(a), c.y + r * std::sin(a)});
  }
  ring.push_back(ring.front());
  return ring;
}

}  // namespace xgtest

#endif  // XGGEO_TESTS_BLOB_BUILDER_H
