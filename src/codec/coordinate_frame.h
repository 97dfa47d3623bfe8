// coordinate_frame.h - how the codec turns coordinates into integers and back.
//
// A frame is an origin and a scale (integer units per coordinate unit).  The integer of a value
// v is trunc((v - origin) * scale + 0.5), which rounds a half upward for every v at or above the
// origin; integers run from 0 to 2147483647, so the frame covers origin .. origin + 2147483647 /
// scale (the upper corner).  The way back is i / scale + origin.
#ifndef XGGEO_CODEC_COORDINATE_FRAME_H
#define XGGEO_CODEC_COORDINATE_FRAME_H

#include <cstdint>

namespace xg {
namespace codec {

constexpr int32_t kMaxUnit = 2147483647;

struct Frame {
  double origin_x, origin_y, scale, upper_x, upper_y;

  // Inside the frame, edges included; a NaN coordinate is not.
  bool contains(double x, double y) const {
    return (x >= origin_x) & (x <= upper_x) & (y >= origin_y) & (y <= upper_y);
  }
};

// The integer of v.  Values whose integer does not fit in 32 bits saturate (NaN gives 0), so
// that even a caller who skipped the range test gets a defined result; inside the frame only
// the very top edge, through rounding of the scale, can come near that.
inline int32_t to_unit(double v, double origin, double scale) {
  const double d = (v - origin) * scale + 0.5;
  if (d >= 2147483647.0) return kMaxUnit;
  if (d > -2147483648.0) return static_cast<int32_t>(d);  // truncates toward zero
  return d != d ? 0 : INT32_MIN;
}

inline double from_unit(int64_t i, double origin, double scale) {
  return static_cast<double>(i) / scale + origin;
}

}  // namespace codec
}  // namespace xg

#endif  // XGGEO_CODEC_COORDINATE_FRAME_H
