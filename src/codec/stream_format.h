// stream_format.h - the frame of a compressed coordinate stream.
//
//   offset 0  u8   1
//   offset 1  u32  stream type: 10000 + shape type (10001 point ... 10006 multipolygon)
//   offset 5  u32  total length of the stream in bytes, these 9 included
//   offset 9  ...  body: per point the code of x then the code of y (varint_code.h)
//
// Bodies, with "fresh" meaning the next point is written as its integers and every other point
// as the difference from the point written before it:
//   point            the point
//   linestring       its points, fresh at the start; no count (the length bounds the body)
//   multipoint       the member points, fresh at the start; no count
//   polygon          per ring u32 count, then the points; fresh only at the first ring
//   multilinestring  the lines, each fresh, a separator after each but the last: the difference
//                    that takes the running point to (-1, 0), which no coordinate reaches
//   multipolygon     the member polygons as polygon bodies, each fresh, a u32 0 after each but
//                    the last (a kept ring has at least 4 points, so a count of 0 is free)
#ifndef XGGEO_CODEC_STREAM_FORMAT_H
#define XGGEO_CODEC_STREAM_FORMAT_H

#include <cstddef>
#include <cstdint>

namespace xg {
namespace codec {

constexpr std::size_t kStreamHeaderSize = 9;
constexpr unsigned char kStreamMark = 1;
constexpr uint32_t kStreamTypeBase = 10000;

// Fewest points a written ring and a written line hold; shorter ones are dropped.
constexpr uint32_t kMinRingPoints = 4;
constexpr uint32_t kMinLinePoints = 2;

inline bool is_stream_type(uint32_t type) {
  return type > kStreamTypeBase && type <= kStreamTypeBase + 6;
}

}  // namespace codec
}  // namespace xg

#endif  // XGGEO_CODEC_STREAM_FORMAT_H
