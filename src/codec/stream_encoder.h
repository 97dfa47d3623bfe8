// stream_encoder.h - shape blob to compressed coordinate stream (format in stream_format.h).
#ifndef XGGEO_CODEC_STREAM_ENCODER_H
#define XGGEO_CODEC_STREAM_ENCODER_H

#include <cstdint>

#include "codec/coordinate_frame.h"

namespace xg {
namespace codec {

// Vets a shape's type and bounds the stream it gives, from its headers alone.  Returns XGWKB_OK
// with *capacity set (bytes the writer may use: 10 per point, separator or 0 word, 4 per ring
// count, 9 of header, and the slack of the wide code writer); XGWKB_E_INVALID_GEOMETRY_TYPE for
// a type outside 1-6; XGWKB_E_INVALID_SHAPE for a multi-type holding a member of the wrong type.
int32_t plan_stream(const unsigned char* shape, int64_t* capacity);

// Writes the stream of a shape that plan_stream accepted into out (capacity bytes as planned).
// Returns XGWKB_OK with *size the stream's length; XGWKB_E_CODEC_RANGE when a coordinate lies
// outside the frame (every coordinate is tested, holes included, so that no stream is made of
// clipped integers; for a well-formed polygon, whose holes lie inside its outer ring, that is the
// same as testing its envelope); else XGWKB_E_CODEC_NOTHING when nothing is left to write: a
// linestring of fewer than 2 distinct points, a polygon whose outer ring is dropped, a
// multilinestring or multipolygon of which no member is kept.
int32_t write_stream(const unsigned char* shape, const Frame& frame, unsigned char* out, int32_t* size);

}  // namespace codec
}  // namespace xg

#endif  // XGGEO_CODEC_STREAM_ENCODER_H
