// stream_decoder.h - compressed coordinate stream to shape blob (format in stream_format.h).
#ifndef XGGEO_CODEC_STREAM_DECODER_H
#define XGGEO_CODEC_STREAM_DECODER_H

#include <cstddef>
#include <cstdint>

#include "codec/coordinate_frame.h"

namespace xg {
namespace codec {

// Where the decoder writes the blob: a buffer it asks to grow as the blob does.
class BlobSink {
 public:
  unsigned char* data = nullptr;
  std::size_t capacity = 0;
  // Makes capacity at least need (data may move, keeping its contents); false when memory runs
  // out.
  virtual bool grow(std::size_t need) = 0;

 protected:
  ~BlobSink() = default;
};

// Decodes a stream of which only the first `available` bytes may be read.  Returns XGWKB_OK with
// *size the blob's size; XGWKB_E_CODEC_NOTHING for a malformed stream: fewer than 9 bytes, a
// first byte other than 1, a type word outside 10001..10006, a length field below 9 or above
// available, or a body that is not one the encoder writes (a code running past the body's end
// or longer than five bytes, a running point outside 0..2147483647, a ring count of 0 where a
// ring must start or larger than the rest of the body could hold, a ring of fewer than 4 or a
// line of fewer than 2 points, an empty polygon, multilinestring or multipolygon, a separator
// or 0 word at the end, bytes after the point of a point stream); XGWKB_E_FAILED when memory
// runs out or the blob would exceed 2^31 - 1 bytes.  Bytes past the length field are not read.
int32_t read_stream(const unsigned char* stream, std::size_t available, const Frame& frame, BlobSink& sink,
                    int32_t* size);

}  // namespace codec
}  // namespace xg

#endif  // XGGEO_CODEC_STREAM_DECODER_H
