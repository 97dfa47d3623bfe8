// The oracle itself: our blobs survive the trip through GEOS unchanged.
#include <gtest/gtest.h>

#include "support/blob_builder.h"
#include "support/geos_oracle.h"

using namespace xgtest;

TEST(GeosOracle, RoundTripsEveryGeometryType) {
  GeosOracle oracle;
  const std::vector<Bytes> blobs = {
      point(1.5, -2),
      linestring({{0, 0}, {1, 1}, {2, 0}}),
      polygon({square(0, 0, 10), square(2, 2, 1)}),
      multi(XGWKB_TYPE_MULTIPOINT, {point(0, 0), point(3, 4)}),
      multi(XGWKB_TYPE_MULTILINESTRING, {linestring({{0, 0}, {1, 0}}), linestring({{5, 5}, {6, 7}})}),
      multi(XGWKB_TYPE_MULTIPOLYGON, {polygon({square(0, 0, 1)}), polygon({square(5, 5, 2)})}),
  };
  for (const Bytes& b : blobs) {
    GeosGeom g(oracle, oracle.to_geos(b.data()));
    EXPECT_EQ(oracle.from_geos(g.get()), b) << oracle.to_wkt(g.get());
  }
}

TEST(GeosOracle, ReadsAreaOfPolygonWithHole) {
  GeosOracle oracle;
  const Bytes poly = polygon({square(0, 0, 10), square(2, 2, 1)});
  GeosGeom g(oracle, oracle.to_geos(poly.data()));
  double area = 0;
  ASSERT_EQ(GEOSArea_r(oracle.handle(), g.get(), &area), 1);
  EXPECT_DOUBLE_EQ(area, 99.0);
}
