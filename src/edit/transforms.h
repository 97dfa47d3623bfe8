// transforms.h - the point rules of the affine transforms and the shape transforms built on them,
// for internal callers (the annotation and dimension transforms among them).
//
// Each rule is a small function object mapping one point to its image, so a shape transformed
// vertex by vertex and a single field transformed on its own agree bit for bit.
#ifndef XGGEO_EDIT_TRANSFORMS_H
#define XGGEO_EDIT_TRANSFORMS_H

#include <cmath>
#include <cstdint>

#include "core/blob.h"
#include "core/rotation.h"

namespace xg::edit {

// (x, y) -> (x + dx, y + dy).
struct MoveBy {
  double dx, dy;
  _xgWKB_POINT operator()(const _xgWKB_POINT& p) const { return _xgWKB_POINT{p.x + dx, p.y + dy}; }
};

// Clockwise rotation about (cx, cy) by an angle whose cosine and sine are computed once.
struct RotateAbout {
  RotateAbout(double angle, double cx_, double cy_)
      : c(std::cos(angle)), s(std::sin(angle)), cx(cx_), cy(cy_) {}
  double c, s, cx, cy;
  _xgWKB_POINT operator()(const _xgWKB_POINT& p) const {
    const _xgWKB_POINT r = rotate_cs(_xgWKB_POINT{p.x - cx, p.y - cy}, c, s);
    return _xgWKB_POINT{cx + r.x, cy + r.y};
  }
};

// Scaling about a base point by factors fx, fy (zero and negative factors taken as they are).
struct StretchAbout {
  _xgWKB_POINT base;
  double fx, fy;
  _xgWKB_POINT operator()(const _xgWKB_POINT& p) const {
    return _xgWKB_POINT{(p.x - base.x) * fx + base.x, (p.y - base.y) * fy + base.y};
  }
};

// Reflection about the line through p1 and p2 with the tolerance of the horizontal-line test.
class MirrorLine {
 public:
  MirrorLine(const _xgWKB_POINT& p1, const _xgWKB_POINT& p2, double tol) : p1_(p1) {
    // Intended: the line counts as horizontal when the y difference, truncated toward zero to an
    // integer, is below tol in magnitude - and a horizontal line reflects about the vertical
    // through p1.  trunc() gives the integer a 32-bit conversion would for every difference that
    // fits one; larger differences keep their size instead of overflowing.
    horizontal_ = std::fabs(std::trunc(p1.y - p2.y)) < tol;
    k_ = (p1.x - p2.x) / (p1.y - p2.y);
    k2_ = k_ * k_;
    d_ = k2_ + 1;
  }

  _xgWKB_POINT operator()(const _xgWKB_POINT& p) const {
    if (horizontal_) return _xgWKB_POINT{2 * p1_.x - p.x, p.y};
    // Foot of the perpendicular from p, evaluated term by term in this order.
    const double fx = (k_ * p.y + k2_ * p.x + p1_.x - k_ * p1_.y) / d_;
    const double fy = (k_ * p.x - k_ * p1_.x + k2_ * p1_.y + p.y) / d_;
    return _xgWKB_POINT{2 * fx - p.x, 2 * fy - p.y};
  }

 private:
  _xgWKB_POINT p1_;
  bool horizontal_;
  double k_, k2_, d_;
};

// The shape transforms on geometries of type 1-6: every vertex mapped in place (move, rotate,
// stretch) or into a fresh blob_alloc copy (mirror).  -27 for any other type, nothing changed or
// allocated; -1 when memory runs out.
int32_t shape_move(byte* shape, double dx, double dy);
int32_t shape_rotate(byte* shape, double angle, double cx, double cy);
int32_t shape_stretch(byte* shape, const _xgWKB_POINT& base, double fx, double fy);
int32_t shape_mirror(const byte* shape, const _xgWKB_POINT& p1, const _xgWKB_POINT& p2, double tol,
                     byte** out);

}  // namespace xg::edit

#endif  // XGGEO_EDIT_TRANSFORMS_H
