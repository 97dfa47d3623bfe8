// geos_oracle.h - GEOS as a reference implementation for tests and benchmarks.
//
// Our blobs are little-endian WKB whose byte-order bytes read 0; GEOS wants 1 there for
// little-endian data.  The oracle rewrites those bytes on a copy and hands it to GEOS's WKB reader,
// and turns GEOS geometries back into blobs with the bytes set to 0 again.
#ifndef XGGEO_TESTS_GEOS_ORACLE_H
#define XGGEO_TESTS_GEOS_ORACLE_H

#include <geos_c.h>

#include <string>
#include <vector>

namespace xgtest {

class GeosOracle {
 public:
  GeosOracle();
  ~GeosOracle();
  GeosOracle(const GeosOracle&) = delete;
  GeosOracle& operator=(const GeosOracle&) = delete;

  GEOSContextHandle_t handle() const { return ctx_; }

  // A GEOS geometry from one of our blobs (types 1-6); the caller destroys it with destroy().
  GEOSGeometry* to_geos(const unsigned char* blob) const;
  // The same, with the nil shape (what an operation leaves when nothing is left) as an empty
  // polygon.
  GEOSGeometry* to_geos_or_empty(const unsigned char* blob) const;
  // GEOS's area and length of a geometry (NaN when GEOS cannot compute them).
  double area(const GEOSGeometry* g) const;
  double length(const GEOSGeometry* g) const;
  // Our blob (byte-order bytes 0) from a GEOS geometry.
  std::vector<unsigned char> from_geos(const GEOSGeometry* g) const;
  GEOSGeometry* from_wkt(const std::string& wkt) const;
  std::string to_wkt(const GEOSGeometry* g) const;
  void destroy(GEOSGeometry* g) const;

 private:
  GEOSContextHandle_t ctx_;
  GEOSWKBReader* reader_;
  GEOSWKBWriter* writer_;
  GEOSWKTReader* wkt_reader_;
  GEOSWKTWriter* wkt_writer_;
};

// RAII holder for a geometry owned by an oracle.
class GeosGeom {
 public:
  GeosGeom(const GeosOracle& oracle, GEOSGeometry* g) : oracle_(oracle), g_(g) {}
  ~GeosGeom() { oracle_.destroy(g_); }
  GeosGeom(const GeosGeom&) = delete;
  GeosGeom& operator=(const GeosGeom&) = delete;
  GEOSGeometry* get() const { return g_; }

 private:
  const GeosOracle& oracle_;
  GEOSGeometry* g_;
};

}  // namespace xgtest

#endif  // XGGEO_TESTS_GEOS_ORACLE_H
