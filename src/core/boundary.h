// boundary.h - what every export does at the C boundary.
//
// Internal code may throw (std::bad_alloc from a vector, say); no exception may cross into the
// caller.  An export body runs inside guarded(), which turns any escaping exception into the
// general failure status.
#ifndef XGGEO_CORE_BOUNDARY_H
#define XGGEO_CORE_BOUNDARY_H

#include <cstdint>
#include <new>

#include "xggeokit.h"

namespace xg {

// Runs body() and returns its status; an exception becomes XGWKB_E_FAILED.
template <class Body>
int32_t guarded(Body&& body) noexcept {
  try {
    return body();
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
