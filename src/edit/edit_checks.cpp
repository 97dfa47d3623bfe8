// edit_checks.cpp - the argument checks the editing operations share.
#include "edit/edit_checks.h"

#include "edit/splice.h"
#include "relate/segment_tests.h"

namespace xg::edit {

bool part_as_run(const byte* part, const byte** run) {
  uint32_t size = 0;
  if (geometry_size(part, &size) != XGWKB_OK) return false;
  const PointRun line = line_run(part);
  if (kHeaderSize + run_bytes(line.size()) > size) return false;
  *run = line.at;
  return true;
}

bool inside_first_ring(const byte* run, const byte* polygon) {
  if (shape_count(polygon) == 0) return false;
  return ring_inside_ring(run, ring_at(polygon, 0), kFixedTolerance) == 1;
}

}  // namespace xg::edit
