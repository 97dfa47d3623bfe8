// shortest_number.cpp - shortest round-trip digits (see shortest_number.h).
#include "interop/shortest_number.h"

#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>

namespace xg {
namespace {

using u128 = unsigned __int128;

constexpr uint64_t kPow10[] = {1ull,
                               10ull,
                               100ull,
                               1000ull,
                               10000ull,
                               100000ull,
                               1000000ull,
                               10000000ull,
                               100000000ull,
                               1000000000ull,
                               10000000000ull,
                               100000000000ull,
                               1000000000000ull,
                               10000000000000ull,
                               100000000000000ull,
                               1000000000000000ull,
                               10000000000000000ull,
                               100000000000000000ull,
                               1000000000000000000ull,
                               10000000000000000000ull};

// Two decimal digits per table entry.
constexpr char kDigitPairs[] =
    "00010203040506070809101112131415161718192021222324252627282930313233343536373839"
    "40414243444546474849505152535455565758596061626364656667686970717273747576777879"
    "8081828384858687888990919293949596979899";

// The eight digits of x < 10^8 at p, zeros in front: two independent halves, two digits a step.
[[gnu::always_inline]] inline void write8(char* p, uint32_t x) {
  const uint32_t a = x / 10000, b = x % 10000;
  std::memcpy(p, kDigitPairs + 2 * (a / 100), 2);
  std::memcpy(p + 2, kDigitPairs + 2 * (a % 100), 2);
  std::memcpy(p + 4, kDigitPairs + 2 * (b / 100), 2);
  std::memcpy(p + 6, kDigitPairs + 2 * (b % 100), 2);
}

// Exactly `count` digits of u (u < 10^count, zeros in front) ending at end.  The digits go
// straight to their place: a text assembled elsewhere and copied would be read back right
// after its small stores, which the processor cannot forward.
void write_digits(char* end, uint64_t u, int count) {
  for (; count >= 8; count -= 8) {
    end -= 8;
    write8(end, static_cast<uint32_t>(u % 100000000));
    u /= 100000000;
  }
  auto x = static_cast<uint32_t>(u);
  for (; count >= 2; count -= 2) {
    end -= 2;
    std::memcpy(end, kDigitPairs + 2 * (x % 100), 2);
    x /= 100;
  }
  if (count == 1) end[-1] = static_cast<char>('0' + x);
}

// The number of decimal digits of u > 0.
int decimal_digits(uint64_t u) {
  const int guess = ((64 - __builtin_clzll(u)) * 1233) >> 12;  // digits - 1 or digits
  return guess + (u >= kPow10[guess] ? 1 : 0);
}

// Whole numbers below 2^53 (v == whole): the integer's digits, unless scientific notation is
// strictly shorter (then nullptr).  s significant digits give "d.ddde+XX", s + (s > 1) + 4
// characters (the exponent is below 16 here), against the d digits of the integer.
char* write_whole(char* at, double v, int64_t whole) {
  if (whole == 0) {
    if (std::signbit(v)) *at++ = '-';
    *at++ = '0';
    return at;
  }
  const uint64_t u = whole < 0 ? 0 - static_cast<uint64_t>(whole) : static_cast<uint64_t>(whole);
  const int digits = decimal_digits(u);
  int zeros = 0;
  for (uint64_t t = u; t % 10 == 0; t /= 10) ++zeros;
  const int significant = digits - zeros;
  if (significant + (significant > 1 ? 1 : 0) + 4 < digits) return nullptr;
  if (whole < 0) *at++ = '-';
  write_digits(at + digits, u, digits);
  return at + digits;
}

// Fractions with 0.001 <= |v| < 2^53: v = m / 2^s exactly (1 <= s <= 62).  The reals that read
// back to v lie strictly between (2m - 1) / 2^(s+1) and (2m + 1) / 2^(s+1); the fewest decimals
// q for which a multiple of 10^-q lies inside gives the fewest significant digits (the integer
// part is fixed), and the multiple closest to v is the one to write.  Fixed notation is the
// shorter one throughout this range.  nullptr when the case is left to std::to_chars: the
// lower neighbour nearer than the upper (m = 2^52), a candidate on an edge of the interval (whether
// the edge reads back to v depends on rounding to even), or a tie between two closest.
char* write_fraction(char* at, double v) {
  uint64_t bits;
  std::memcpy(&bits, &v, sizeof bits);
  const int exponent = static_cast<int>((bits >> 52) & 0x7FF);
  const uint64_t m = (bits & ((uint64_t{1} << 52) - 1)) | (uint64_t{1} << 52);
  const int s = 1075 - exponent;  // v = m / 2^s
  if (s < 1 || s > 62 || m == uint64_t{1} << 52) return nullptr;
  const int shift = s + 1;  // 2 <= shift <= 63
  // x / 2^shift for the x below, whose quotients stay under 2^58 (about 2 v 10^q with at most
  // seventeen significant digits): two word shifts, no test for shifts of 64 and more.
  auto over = [shift](u128 x) {
    return (static_cast<uint64_t>(x >> 64) << (64 - shift)) | (static_cast<uint64_t>(x) >> shift);
  };
  // Whether some multiple of 10^-q lies inside the interval: an integer in
  // ((2m-1) 10^q, (2m+1) 10^q] / 2^shift.  An edge is itself such a multiple only when 2^shift
  // divides 10^q, that is when shift <= q; those q are left to std::to_chars below.
  auto fits = [&](int q) {
    const u128 lo = static_cast<u128>(2 * m - 1) * kPow10[q];
    return over(lo + 2 * static_cast<u128>(kPow10[q])) > over(lo);
  };
  // The fewest decimals.  Seventeen significant digits always suffice: qmax decimals, with
  // the integer digits (or the zeros after the point) counted from the magnitude.  Most
  // full-precision values need sixteen or seventeen, so those are tried first; shorter ones are
  // found by bisection, as fits(q) implies fits(q + 1).
  const double magnitude = std::fabs(v);
  int qmax = 17;
  if (magnitude >= 1) {
    qmax -= decimal_digits(static_cast<uint64_t>(magnitude));
  } else {
    qmax += magnitude < 0.1 ? (magnitude < 0.01 ? 2 : 1) : 0;
  }
  // Both tried without a branch between them: which of the two it is is a coin toss for
  // full-precision data, and a mispredicted branch would cost more than the second test.
  const bool sixteen = qmax >= 1 && fits(qmax - 1);
  const bool fifteen = qmax >= 2 && fits(qmax - 2);  // implies sixteen
  int q = qmax - static_cast<int>(sixteen) - static_cast<int>(fifteen);
  if (fifteen) {
    int low = 0, high = q;  // fits(high); no q below low fits
    while (low < high) {
      const int mid = (low + high) / 2;
      if (fits(mid)) high = mid;
      else low = mid + 1;
    }
    q = high;
  }
  if (shift <= q) return nullptr;
  const u128 lo = static_cast<u128>(2 * m - 1) * kPow10[q];
  const u128 scaled = lo + kPow10[q];  // 2m 10^q
  uint64_t d = over(scaled);
  const uint64_t rest = static_cast<uint64_t>(scaled) & ((uint64_t{1} << shift) - 1);
  const uint64_t half = uint64_t{1} << (shift - 1);
  if (rest == half) return nullptr;
  if (rest > half) ++d;
  // The closest multiple lies inside the interval (symmetric about v here); with no edge an
  // integer, k is inside when floor(lo) < k <= floor(hi).
  if (d <= over(lo) || d > over(scaled + kPow10[q])) return nullptr;

  if (std::signbit(v)) *at++ = '-';
  // The integer part is that of v unless rounding carried into it (9.99... to 10).
  uint64_t integer = static_cast<uint64_t>(magnitude);
  uint64_t fraction = d - integer * kPow10[q];
  if (fraction >= kPow10[q]) {
    fraction -= kPow10[q];
    ++integer;
  }
  const int integer_digits = integer == 0 ? 1 : decimal_digits(integer);
  write_digits(at + integer_digits, integer, integer_digits);
  at += integer_digits;
  *at++ = '.';
  if (q <= 16) {
    // Sixteen digits in two fixed blocks, the fraction's q first; the rest is scribble past the
    // end of the text (a fraction of varying length would cost a mispredicted loop).
    const uint64_t padded = fraction * kPow10[16 - q];
    write8(at, static_cast<uint32_t>(padded / 100000000));
    write8(at + 8, static_cast<uint32_t>(padded % 100000000));
  } else {
    write_digits(at + q, fraction, q);
  }
  return at + q;
}

}  // namespace

char* write_shortest(char* at, double v) {
  const double magnitude = std::fabs(v);
  if (magnitude < 0x1p53) {
    const int64_t whole = static_cast<int64_t>(v);
    char* end = nullptr;
    if (static_cast<double>(whole) == v) {
      end = write_whole(at, v, whole);
    } else if (magnitude >= 0.001) {
      end = write_fraction(at, v);
    }
    if (end != nullptr) return end;
  }
  return std::to_chars(at, at + kMaxShortestLength, v).ptr;  // the true bound of its output
}

}  // namespace xg
