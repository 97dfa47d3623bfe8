// codec_samples.h - seeded random shapes for the coordinate codec's tests, each with the blob
// its stream must decode to: every coordinate rounded to the codec's grid, trunc((v - o) * s +
// 0.5) / s + o, and the repeated points the encoder leaves out taken away.
#ifndef XGGEO_TESTS_CODEC_SAMPLES_H
#define XGGEO_TESTS_CODEC_SAMPLES_H

#include <cmath>
#include <random>
#include <vector>

#include "support/blob_builder.h"

namespace xgtest {

struct CodecSample {
  Bytes shape;     // what goes into the encoder
  Bytes expected;  // what comes out of the decoder
};

class CodecSampler {
 public:
  CodecSampler(uint64_t seed, double origin_x, double origin_y, double scale, double span)
      : rng_(seed), ox_(origin_x), oy_(origin_y), scale_(scale), span_(span) {}

  // The integer and the grid value of a coordinate, by the codec's rounding rule.
  static double grid(double v, double origin, double scale) {
    return static_cast<double>(static_cast<int32_t>(std::trunc((v - origin) * scale + 0.5))) / scale + origin;
  }

  // A sample of the given shape type (1-6).
  CodecSample make(uint32_t type) {
    switch (type) {
      case XGWKB_TYPE_POINT: {
        const Run r = run(1, false);
        return {point(r.in[0].x, r.in[0].y), point(r.out[0].x, r.out[0].y)};
      }
      case XGWKB_TYPE_LINESTRING: {
        const Run r = run(2 + count(30), true);
        return {linestring(r.in), linestring(r.out)};
      }
      case XGWKB_TYPE_POLYGON: {
        std::vector<Ring> in, out;
        rings(&in, &out);
        return {polygon(in), polygon(out)};
      }
      case XGWKB_TYPE_MULTIPOINT: {
        const Run r = run(count(20), true);
        std::vector<Bytes> in, out;
        for (const auto& p : r.in) in.push_back(point(p.x, p.y));
        for (const auto& p : r.out) out.push_back(point(p.x, p.y));
        return {multi(XGWKB_TYPE_MULTIPOINT, in), multi(XGWKB_TYPE_MULTIPOINT, out)};
      }
      case XGWKB_TYPE_MULTILINESTRING: {
        std::vector<Ring> in, out;
        for (int k = 1 + count(4); k > 0; --k) {
          Run r = run(2 + count(10), true);
          in.push_back(r.in);
          out.push_back(r.out);
        }
        return {multiline(in), multiline(out)};
      }
      default: {
        std::vector<Bytes> in, out;
        for (int k = 1 + count(3); k > 0; --k) {
          std::vector<Ring> rin, rout;
          rings(&rin, &rout);
          in.push_back(polygon(rin));
          out.push_back(polygon(rout));
        }
        return {multi(XGWKB_TYPE_MULTIPOLYGON, in), multi(XGWKB_TYPE_MULTIPOLYGON, out)};
      }
    }
  }

 private:
  struct Run {
    Ring in, out;
  };

  int count(int below) { return std::uniform_int_distribution<int>(0, below - 1)(rng_); }

  _xgWKB_POINT on_grid(const _xgWKB_POINT& p) const { return {grid(p.x, ox_, scale_), grid(p.y, oy_, scale_)}; }

  // n points whose grid values differ from the one before; with repeats, exact copies of the
  // point before are mixed in (they vanish from the expected run).  With closed, the run ends
  // on its first point again (n >= 3 drawn points plus that one).
  Run run(int n, bool repeats, bool closed = false) {
    std::uniform_real_distribution<double> ux(ox_, ox_ + span_), uy(oy_, oy_ + span_);
    Run r;
    while (static_cast<int>(r.out.size()) < n) {
      const _xgWKB_POINT p{ux(rng_), uy(rng_)}, g = on_grid(p);
      if (!r.out.empty() && g.x == r.out.back().x && g.y == r.out.back().y) continue;
      if (closed && static_cast<int>(r.out.size()) == n - 1 && g.x == r.out.front().x && g.y == r.out.front().y) {
        continue;
      }
      r.in.push_back(p);
      r.out.push_back(g);
      if (repeats && count(4) == 0) r.in.push_back(p);
    }
    if (closed) {
      r.in.push_back(r.in.front());
      r.out.push_back(r.out.front());
    }
    return r;
  }

  void rings(std::vector<Ring>* in, std::vector<Ring>* out) {
    for (int k = 1 + count(3); k > 0; --k) {
      Run r = run(3 + count(12), true, true);
      in->push_back(r.in);
      out->push_back(r.out);
    }
  }

  std::mt19937_64 rng_;
  double ox_, oy_, scale_, span_;
};

}  // namespace xgtest

#endif  // XGGEO_TESTS_CODEC_SAMPLES_H
