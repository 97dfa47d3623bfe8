// Round trips between the interchange readers and writers and GEOS's: seeded random shapes of
// every type written by GEOS as WKB (both byte orders, ISO and extended, with and without Z,
// with an SRID) and as WKT, read here and compared coordinate for coordinate; and ours read back
// by GEOS to the same geometry.
#include <gtest/gtest.h>

#include <cstdio>
#include <random>
#include <string>

#include "support/blob_builder.h"
#include "support/geos_oracle.h"

using namespace xgtest;

namespace {

// A random shape as our blob and as WKT with a Z ordinate, written to read back exactly.
struct Sample {
  Bytes blob;
  std::string wkt_z;
};

class Sampler {
 public:
  explicit Sampler(uint32_t seed) : rng_(seed) {}

  Sample make(uint32_t type) {
    Sample s;
    static const char* const kNames[] = {"", "POINT", "LINESTRING", "POLYGON", "MULTIPOINT", "MULTILINESTRING", "MULTIPOLYGON"};
    s.wkt_z = std::string(kNames[type]) + " Z ";
    const int members = 1 + static_cast<int>(rng_() % 3);
    switch (type) {
      case XGWKB_TYPE_POINT: {
        const Ring p = run(1, false);
        s.blob = point(p[0].x, p[0].y);
        s.wkt_z += "(" + text(p) + ")";
        break;
      }
      case XGWKB_TYPE_LINESTRING:
        s.blob = line(s.wkt_z);
        break;
      case XGWKB_TYPE_POLYGON:
        s.blob = poly(s.wkt_z);
        break;
      default: {
        std::vector<Bytes> parts;
        s.wkt_z += "(";
        for (int i = 0; i < members; ++i) {
          if (i != 0) s.wkt_z += ", ";
          if (type == XGWKB_TYPE_MULTIPOINT) {
            const Ring p = run(1, false);
            parts.push_back(point(p[0].x, p[0].y));
            s.wkt_z += "(" + text(p) + ")";
          } else {
            parts.push_back(type == XGWKB_TYPE_MULTILINESTRING ? line(s.wkt_z) : poly(s.wkt_z));
          }
        }
        s.wkt_z += ")";
        s.blob = multi(type, parts);
      }
    }
    return s;
  }

 private:
  double coord() { return std::uniform_real_distribution<double>(-1e6, 1e6)(rng_); }

  Ring run(std::size_t n, bool closed) {
    Ring r;
    for (std::size_t i = 0; i < n; ++i) r.push_back({coord(), coord()});
    if (closed) r.push_back(r.front());
    return r;
  }

  std::string text(const Ring& r) {
    std::string t;
    char buf[96];
    for (const _xgWKB_POINT& p : r) {
      std::snprintf(buf, sizeof buf, "%s%.17g %.17g %.17g", t.empty() ? "" : ", ", p.x, p.y, coord());
      t += buf;
    }
    return t;
  }

  Bytes line(std::string& wkt) {
    const Ring r = run(2 + rng_() % 5, false);
    wkt += "(" + text(r) + ")";
    return linestring(r);
  }

  Bytes poly(std::string& wkt) {
    std::vector<Ring> rings;
    wkt += "(";
    for (int i = 0, n = 1 + static_cast<int>(rng_() % 3); i < n; ++i) {
      rings.push_back(run(3 + rng_() % 4, true));
      wkt += (i != 0 ? ", (" : "(") + text(rings.back()) + ")";
    }
    wkt += ")";
    return polygon(rings);
  }

  std::mt19937 rng_;
};

}  // namespace

TEST(InteropGeos, GeosWkbAndWktReadHereCoordinateForCoordinate) {
  GeosOracle oracle;
  GEOSContextHandle_t h = oracle.handle();
  GEOSWKBWriter* wkb = GEOSWKBWriter_create_r(h);
  GEOSWKTWriter* wkt = GEOSWKTWriter_create_r(h);
  GEOSWKTWriter_setRoundingPrecision_r(h, wkt, 17);
  GEOSWKTWriter_setTrim_r(h, wkt, 1);
  Sampler sampler(42);
  for (int i = 0; i < 300; ++i) {
    const Sample s = sampler.make(1 + i % 6);
    GeosGeom g(oracle, oracle.from_wkt(s.wkt_z));
    ASSERT_NE(g.get(), nullptr) << s.wkt_z;
    GEOSSetSRID_r(h, g.get(), 4326);
    for (int dims : {2, 3}) {
      GEOSWKTWriter_setOutputDimension_r(h, wkt, dims);
      char* text = GEOSWKTWriter_write_r(h, wkt, g.get());
      unsigned char* out = nullptr;
      ASSERT_EQ(xgWKB_shape_from_ogc_wkt(text, 0, &out), 0) << text;
      EXPECT_EQ(take_shape(out), s.blob) << text;
      GEOSFree_r(h, text);
      for (int order : {GEOS_WKB_XDR, GEOS_WKB_NDR})
        for (int flavor : {GEOS_WKB_ISO, GEOS_WKB_EXTENDED}) {
          GEOSWKBWriter_setOutputDimension_r(h, wkb, dims);
          GEOSWKBWriter_setByteOrder_r(h, wkb, order);
          GEOSWKBWriter_setFlavor_r(h, wkb, flavor);
          GEOSWKBWriter_setIncludeSRID_r(h, wkb, flavor == GEOS_WKB_EXTENDED);
          size_t size = 0;
          unsigned char* bytes = GEOSWKBWriter_write_r(h, wkb, g.get(), &size);
          out = nullptr;
          ASSERT_EQ(xgWKB_shape_from_wkb(bytes, size, &out), 0) << s.wkt_z << " " << order << flavor << dims;
          EXPECT_EQ(take_shape(out), s.blob) << s.wkt_z;
          const int32_t refused = xgWKB_shape_from_wkb_ex(bytes, size, XGWKB_REFUSE_Z, &out, nullptr);
          EXPECT_EQ(refused, dims == 3 ? XGWKB_E_EXTRA_ORDINATES : 0);
          if (refused == 0) xgWKB_shape_free(out);
          GEOSFree_r(h, bytes);
        }
    }
  }
  GEOSWKBWriter_destroy_r(h, wkb);
  GEOSWKTWriter_destroy_r(h, wkt);
}

TEST(InteropGeos, OursReadByGeosIsTheSameGeometry) {
  GeosOracle oracle;
  GEOSContextHandle_t h = oracle.handle();
  GEOSWKBReader* reader = GEOSWKBReader_create_r(h);
  Sampler sampler(7);
  for (int i = 0; i < 300; ++i) {
    const Sample s = sampler.make(1 + i % 6);
    GeosGeom want(oracle, oracle.to_geos(s.blob.data()));
    char* text = nullptr;
    ASSERT_EQ(xgWKB_shape_to_ogc_wkt(s.blob.data(), -1, &text), 0);
    GeosGeom from_text(oracle, oracle.from_wkt(text));
    EXPECT_EQ(GEOSEqualsExact_r(h, want.get(), from_text.get(), 0), 1) << text;
    xgWKB_shape_free_WKT(text);
    for (int big : {0, 1}) {
      unsigned char* bytes = nullptr;
      uint32_t size = 0;
      ASSERT_EQ(xgWKB_shape_to_wkb(s.blob.data(), big, &bytes, &size), 0);
      GeosGeom from_wkb(oracle, GEOSWKBReader_read_r(h, reader, bytes, size));
      ASSERT_NE(from_wkb.get(), nullptr);
      EXPECT_EQ(GEOSEqualsExact_r(h, want.get(), from_wkb.get(), 0), 1) << s.wkt_z;
      xgWKB_shape_free(bytes);
    }
  }
  GEOSWKBReader_destroy_r(h, reader);
}
