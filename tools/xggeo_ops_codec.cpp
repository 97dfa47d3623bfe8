// xggeo_ops_codec.cpp - the coordinate codec operations of the xggeo tool: a shape to its
// compressed stream written in hex, and hex back to the shape.
#include <cctype>
#include <string>

#include "xggeo_ops.h"
#include "xggeokit.h"

namespace xggeo {
namespace {

// The codec's frame from the arguments: none (the defaults) or all three of OX OY SCALE.
void set_frame(CDataTransfer& codec, const Args& args) {
  if (args.size() == 0) return;
  if (args.size() != 3) throw UsageError("give all of OX OY SCALE or none");
  codec.SetCoordinateInf(args.real(0), args.real(1), args.real(2));
}

int hex_digit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  const int lower = std::tolower(static_cast<unsigned char>(c));
  return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

}  // namespace

int32_t op_encode(const Operands& in, const Args& args, Output& out) {
  CDataTransfer codec;
  set_frame(codec, args);
  const int32_t status = codec.ConvertWkb2Compress(in.a);
  if (status != XGWKB_OK) return status;
  const unsigned char* stream = codec;
  const int32_t size = codec.GetResultSize();
  static const char kDigits[] = "0123456789abcdef";
  std::string hex;
  hex.reserve(2 * static_cast<std::size_t>(size));
  for (int32_t i = 0; i < size; ++i) {
    hex.push_back(kDigits[stream[i] >> 4]);
    hex.push_back(kDigits[stream[i] & 15]);
  }
  out.text(hex);
  if (in.timed) {
    uint32_t blob_size = 0;
    if (xgWKB_shape_get_WKB_size(in.a, &blob_size) == XGWKB_OK && blob_size != 0) {
      out.real(static_cast<double>(size) / blob_size);
    }
  }
  return XGWKB_OK;
}

int32_t op_decode(const Operands& in, const Args& args, Output& out) {
  CDataTransfer codec;
  set_frame(codec, args);
  // Hex digits, blanks ignored; anything else is not a stream.
  std::string bytes;
  int high = -1;
  for (const char* p = in.text; *p != '\0'; ++p) {
    if (std::isspace(static_cast<unsigned char>(*p))) continue;
    const int d = hex_digit(*p);
    if (d < 0) return XGWKB_E_CODEC_NOTHING;
    if (high < 0) {
      high = d;
    } else {
      bytes.push_back(static_cast<char>(high << 4 | d));
      high = -1;
    }
  }
  if (high >= 0) return XGWKB_E_CODEC_NOTHING;
  const int32_t status = codec.ConvertCompress2Wkb(reinterpret_cast<const unsigned char*>(bytes.data()),
                                                   static_cast<int32_t>(bytes.size()));
  if (status != XGWKB_OK) return status;
  unsigned char* shape = nullptr;  // the result stays the codec's: hand out a copy
  const int32_t copied = xgWKB_shape_duplicate(codec, &shape);
  if (copied != XGWKB_OK) return copied;
  return out.shape(shape);
}

}  // namespace xggeo
