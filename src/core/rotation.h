// rotation.h - the one rotation rule of the library.
//
// A positive angle turns clockwise about the origin: x' = x*c + y*s, y' = y*c - x*s, both from the
// old coordinates.  The point primitive and the shape transforms share this helper, so a shape
// rotated vertex by vertex agrees bit for bit with rotating each vertex on its own.
#ifndef XGGEO_CORE_ROTATION_H
#define XGGEO_CORE_ROTATION_H

#include "xggeokit.h"

namespace xg {

// p turned by the angle whose cosine is c and sine is s (computed once by the caller).
inline _xgWKB_POINT rotate_cs(const _xgWKB_POINT& p, double c, double s) {
  return _xgWKB_POINT{p.x * c + p.y * s, p.y * c - p.x * s};
}

}  // namespace xg

#endif  // XGGEO_CORE_ROTATION_H
