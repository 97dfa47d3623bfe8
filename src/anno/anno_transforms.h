// anno_transforms.h - transforms of SingleText shapes for internal callers (the dimension
// transforms apply them to their labels).
#ifndef XGGEO_ANNO_ANNO_TRANSFORMS_H
#define XGGEO_ANNO_ANNO_TRANSFORMS_H

#include <cstdint>

#include "core/blob.h"

namespace xg::anno {

// In place on the record of a SingleText: text point, leader (when present) and both box corners.
void single_move(byte* s, double dx, double dy);
void single_stretch(byte* s, const _xgWKB_POINT& base, double sx, double sy);
// The text point and leader turn clockwise about (cx, cy); the angle drops by `angle`; the box
// moves with the text point.
void single_rotate(byte* s, double angle, double cx, double cy);
// A mirrored copy into *out (blob_alloc); -1 when memory runs out.
int32_t single_mirror(const byte* s, const _xgWKB_POINT& a, const _xgWKB_POINT& b, double tol, byte** out);

}  // namespace xg::anno

#endif  // XGGEO_ANNO_ANNO_TRANSFORMS_H
