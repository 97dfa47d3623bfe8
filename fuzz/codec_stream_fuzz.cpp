// codec_stream_fuzz.cpp - libFuzzer target: the codec's bounded stream decoder on any bytes.
//
// Every input must give either -501 with a result size of 0, or a blob whose size, computed from
// its own counts, is the result size; and a blob that decodes must encode again.  The sanitizers
// catch any read past the input.
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "core/blob.h"
#include "xggeokit.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size > 1 << 20) return 0;
  // A heap copy of exactly the input, so that a read past it cannot go unnoticed.
  auto* bytes = static_cast<unsigned char*>(std::malloc(size == 0 ? 1 : size));
  if (size != 0) std::memcpy(bytes, data, size);

  CDataTransfer codec;
  codec.SetCoordinateInf(-1000, -1000, 1000);
  const int32_t status = codec.ConvertCompress2Wkb(bytes, static_cast<int32_t>(size));
  if (status != 0) {
    if (status != XGWKB_E_CODEC_NOTHING || codec.GetResultSize() != 0) std::abort();
  } else {
    uint32_t blob_size = 0;
    if (xg::geometry_size(codec, &blob_size) != XGWKB_OK ||
        static_cast<int32_t>(blob_size) != codec.GetResultSize()) {
      std::abort();
    }
    // The decoded shape is inside the frame by construction; encoding it again must not fail
    // with anything but "nothing left" (a decoded ring may repeat points the encoder drops).
    auto* blob = static_cast<unsigned char*>(std::malloc(blob_size));
    std::memcpy(blob, static_cast<unsigned char*>(codec), blob_size);
    const int32_t again = codec.ConvertWkb2Compress(blob);
    if (again != XGWKB_OK && again != XGWKB_E_CODEC_NOTHING) std::abort();
    std::free(blob);
  }
  std::free(bytes);
  return 0;
}
