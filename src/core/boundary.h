// boundary.h - what every export does at the C boundary.
//
// Internal code may throw (std::bad_alloc from a vector, say); no exception may cross into the
// caller.  Every export is noexcept where it is defined, and an export body that allocates, or
// calls anything that might throw, runs inside guarded() or guarded_value(), which turn an
// escaping exception into a status.
#ifndef XGGEO_CORE_BOUNDARY_H
#define XGGEO_CORE_BOUNDARY_H

#include <cstdint>
#include <new>

#include "xggeokit.h"

namespace xg {

// The status of an export that ran out of memory.  The status table has no negative
// out-of-memory code: its only memory entry (5, "memory-allocation error, exit") is positive and
// sits with the success codes, so a caller testing for a negative status would take it for
// success.  The general failure (-1) is the code a failed malloc has always produced here, so an
// allocation that fails by exception answers the same.
constexpr int32_t kOutOfMemory = XGWKB_E_FAILED;

// Runs body() and returns its status; std::bad_alloc becomes kOutOfMemory, any other exception
// XGWKB_E_FAILED.
template <class Body>
int32_t guarded(Body&& body) noexcept {
  try {
    return body();
  } catch (const std::bad_alloc&) {
    return kOutOfMemory;
  } catch (...) {
    return XGWKB_E_FAILED;
  }
}

// For predicates and other exports whose result is a plain value: an exception yields fallback.
template <class T, class Body>
T guarded_value(T fallback, Body&& body) noexcept {
  try {
    return body();
  } catch (...) {
    return fallback;
  }
}

}  // namespace xg

#endif  // XGGEO_CORE_BOUNDARY_H
