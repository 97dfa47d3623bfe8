// varint_code.h - the codec's variable-length code of one signed 32-bit value.
//
// First byte: bit 7 continuation, bit 6 sign, bits 5..0 the lowest six bits of |v|.  Each further
// byte: bit 7 continuation, bits 6..0 the next seven bits (least significant group first).  A
// code has at most five bytes (6 + 4 * 7 bits, room for |v| up to 2^31).
#ifndef XGGEO_CODEC_VARINT_CODE_H
#define XGGEO_CODEC_VARINT_CODE_H

#include <cstdint>
#include <cstring>

namespace xg {
namespace codec {

using byte = unsigned char;

constexpr int kMaxCodeBytes = 5;

// Bytes in the code of a value of magnitude a.  Intended: a magnitude of exactly 6, 13, 20 or
// 27 bits gets one byte more than it needs, holding 0 (the coder stops only once the count of
// bits still to write has gone below zero), so 63 codes as 0xBF 0x00.  Stored streams have this
// form; decoders take it as it comes.
inline int code_length(uint32_t a) {
  const int bits = a == 0 ? 0 : 32 - __builtin_clz(a);
  return 1 + (bits + 1) / 7;
}

// Writes the code of v at out (room for kMaxCodeBytes); returns the byte after it.
inline byte* put_code(byte* out, int32_t v) {
  const bool negative = v < 0;
  uint32_t a = negative ? 0u - static_cast<uint32_t>(v) : static_cast<uint32_t>(v);
  const int n = code_length(a);
  const byte first = static_cast<byte>((a & 0x3Fu) | (negative ? 0x40u : 0u));
  if (n == 1) {
    *out = first;
    return out + 1;
  }
  *out++ = static_cast<byte>(first | 0x80u);
  a >>= 6;
  for (int k = 2; k < n; ++k) {
    *out++ = static_cast<byte>((a & 0x7Fu) | 0x80u);
    a >>= 7;
  }
  *out++ = static_cast<byte>(a);  // at most seven bits are left here
  return out;
}

// Bytes a writer must have beyond its last code for put_code_wide.
constexpr int kWideSlack = 8;

// The same code as put_code, built without branches and stored as one 8-byte word: the bytes
// past the code are scratch, so out needs kWideSlack bytes of room.  The encoder's hot loop
// uses this; the byte count of a code varies from point to point and would mispredict.
inline byte* put_code_wide(byte* out, int32_t v) {
  const uint32_t negative = static_cast<uint32_t>(v) >> 31;
  const uint32_t a = negative ? 0u - static_cast<uint32_t>(v) : static_cast<uint32_t>(v);
  const int n = code_length(a);
  const uint64_t rest = a >> 6;  // at most 26 bits, spread over bytes 1..4, seven per byte
  uint64_t word = (a & 0x3Fu) | (negative << 6) |
                  ((rest & 0x7Fu) | ((rest & 0x3F80u) << 1) | ((rest & 0x1FC000u) << 2) |
                   ((rest & 0xFE00000u) << 3))
                      << 8;
  word |= 0x8080808080ull & ((uint64_t{1} << (8 * (n - 1))) - 1);  // continuation bits
  if (__BYTE_ORDER__ != __ORDER_LITTLE_ENDIAN__) word = __builtin_bswap64(word);
  std::memcpy(out, &word, sizeof word);
  return out + n;
}

// Reads one code from [p, end).  Returns the byte after it, or nullptr when the code runs past
// end or is longer than five bytes.  *value is the signed magnitude, which a five-byte code can
// make as large as 2^34 - 1; callers check the range they need.
inline const byte* get_code(const byte* p, const byte* end, int64_t* value) {
  if (p == end) return nullptr;
  uint32_t b = *p++;
  const bool negative = (b & 0x40u) != 0;
  uint64_t a = b & 0x3Fu;
  int shift = 6;
  while (b & 0x80u) {
    if (shift > 27 || p == end) return nullptr;
    b = *p++;
    a |= static_cast<uint64_t>(b & 0x7Fu) << shift;
    shift += 7;
  }
  *value = negative ? -static_cast<int64_t>(a) : static_cast<int64_t>(a);
  return p;
}

}  // namespace codec
}  // namespace xg

#endif  // XGGEO_CODEC_VARINT_CODE_H
