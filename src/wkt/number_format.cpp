// number_format.cpp - "%lf" text of a double by exact integer arithmetic.
//
// A finite double is m * 2^e with an integer m < 2^53.  For e >= 0 the value is an integer and
// only its digits are needed.  For e < 0 the integer part is m >> -e and the fraction f / 2^-e;
// the six decimals are floor(f * 10^6 / 2^-e), rounded by comparing the remainder with half of
// 2^-e.  f * 10^6 < 2^73 fits a 128-bit integer, so every step is exact and the rounding is the
// correct one, with ties going to the even last digit as glibc does under the default rounding
// mode.
#include "wkt/number_format.h"

#include <charconv>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <system_error>

namespace xg {
namespace {

__extension__ typedef unsigned __int128 u128;

constexpr char kDigitPairs[] =
    "0001020304050607080910111213141516171819"
    "2021222324252627282930313233343536373839"
    "4041424344454647484950515253545556575859"
    "6061626364656667686970717273747576777879"
    "8081828384858687888990919293949596979899";

constexpr uint64_t kMillion = 1000000;
constexpr uint64_t kTenPow19 = 10000000000000000000ull;

inline void put_pair(char* at, unsigned v) { std::memcpy(at, kDigitPairs + 2 * v, 2); }

// Writes the digits of v without leading zeros ("0" for zero); returns the end.
char* write_u64(uint64_t v, char* out) {
  char buf[20];
  char* const end = buf + sizeof buf;
  char* p = end;
  while (v >= 100) {
    p -= 2;
    put_pair(p, static_cast<unsigned>(v % 100));
    v /= 100;
  }
  if (v >= 10) {
    p -= 2;
    put_pair(p, static_cast<unsigned>(v));
  } else {
    *--p = static_cast<char>('0' + v);
  }
  const std::size_t n = static_cast<std::size_t>(end - p);
  std::memcpy(out, p, n);
  return out + n;
}

// Writes exactly 19 digits of v < 10^19, with leading zeros.
char* write_u64_19(uint64_t v, char* out) {
  for (int i = 18; i >= 0; --i) {
    out[i] = static_cast<char>('0' + v % 10);
    v /= 10;
  }
  return out + 19;
}

char* write_u128(u128 v, char* out) {
  if (v <= UINT64_MAX) return write_u64(static_cast<uint64_t>(v), out);
  const u128 high = v / kTenPow19;
  out = write_u128(high, out);
  return write_u64_19(static_cast<uint64_t>(v - high * kTenPow19), out);
}

// The point and six decimals of q < 10^6.
char* write_decimals(uint32_t q, char* out) {
  out[0] = '.';
  put_pair(out + 1, q / 10000);
  put_pair(out + 3, q / 100 % 100);
  put_pair(out + 5, q % 100);
  return out + 7;
}

std::size_t format_with_printf(double v, char* out) {
  char buf[kMaxFixed6Length + 2];
  const int n = std::snprintf(buf, sizeof buf, "%lf", v);
  const std::size_t len = n < 0 ? 0 : static_cast<std::size_t>(n);
  std::memcpy(out, buf, len);
  return len;
}

}  // namespace

std::size_t format_fixed6(double v, char* out) {
  uint64_t bits;
  std::memcpy(&bits, &v, sizeof bits);
  const bool negative = (bits >> 63) != 0;
  const unsigned biased = static_cast<unsigned>(bits >> 52) & 0x7ff;
  const uint64_t fraction = bits & ((uint64_t{1} << 52) - 1);

  char* p = out;
  if (negative) *p++ = '-';
  if (biased == 0x7ff) {
    std::memcpy(p, fraction == 0 ? "inf" : "nan", 3);
    return static_cast<std::size_t>(p + 3 - out);
  }

  const uint64_t m = biased == 0 ? fraction : (fraction | (uint64_t{1} << 52));
  const int e = biased == 0 ? -1074 : static_cast<int>(biased) - 1075;

  if (e >= 0) {
    if (e > 74) return format_with_printf(v, out);  // 2^127 and above: rare, left to printf
    p = write_u128(static_cast<u128>(m) << e, p);
    return static_cast<std::size_t>(write_decimals(0, p) - out);
  }

  const int s = -e;  // value = m / 2^s
  uint64_t integer = 0;
  uint32_t decimals = 0;
  // At s >= 74 the value is below 2^53 / 2^74, whose millionfold is under one half: it rounds
  // to 0.000000.
  if (s < 74) {
    uint64_t frac = m;
    if (s < 64) {
      integer = m >> s;
      frac = m & ((uint64_t{1} << s) - 1);
    }
    const u128 scaled = static_cast<u128>(frac) * kMillion;  // < 2^73
    uint64_t q = static_cast<uint64_t>(scaled >> s);
    const u128 rest = scaled - (static_cast<u128>(q) << s);
    const u128 half = static_cast<u128>(1) << (s - 1);
    if (rest > half || (rest == half && (q & 1) != 0)) ++q;
    if (q == kMillion) {
      q = 0;
      ++integer;
    }
    decimals = static_cast<uint32_t>(q);
  }
  p = write_u64(integer, p);
  return static_cast<std::size_t>(write_decimals(decimals, p) - out);
}

double parse_number_field(const char* begin, const char* stop) {
  // Fast path: blanks, then an optional minus and a digit or point.  from_chars rounds exactly
  // as strtod does; it differs only on forms it does not take (hexadecimal after "0x", leading
  // "+" or other white space, inf, nan) and on overflow and underflow, which all go to strtod.
  const char* p = begin;
  while (p < stop && *p == ' ') ++p;
  const char* q = p < stop && *p == '-' ? p + 1 : p;
  if (q < stop && ((*q >= '0' && *q <= '9') || *q == '.')) {
    double v = 0;
    const auto [end, ec] = std::from_chars(p, stop, v);
    if (ec == std::errc() && !(end < stop && (*end == 'x' || *end == 'X'))) return v;
  }
  // strtod reads a zero-terminated string; the field is followed by the rest of the text.  When
  // strtod went past stop (the field is all white space, or ends inside a "nan(...)"), convert
  // a copy holding the field alone.
  char* end = nullptr;
  const double v = std::strtod(begin, &end);
  if (end <= stop) return v;
  const std::string field(begin, stop);
  return std::strtod(field.c_str(), nullptr);
}

}  // namespace xg
