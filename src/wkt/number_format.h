// number_format.h - coordinates as text, exactly as printf("%lf") prints them.
//
// The WKT writer prints every coordinate in fixed-point notation with six decimals.  Calling
// printf once per coordinate dominates the writer's time, so format_fixed6 produces the same
// characters by exact integer arithmetic and falls back to snprintf only for magnitudes of 2^127
// (about 1.7e38) and above.  The result equals glibc's "%lf" under the default rounding mode:
// correctly rounded, ties to even, negative zero and negative values that round to zero keep their
// minus sign, infinities and NaNs print as inf, -inf, nan and -nan.
#ifndef XGGEO_WKT_NUMBER_FORMAT_H
#define XGGEO_WKT_NUMBER_FORMAT_H

#include <cstddef>

namespace xg {

// Longest text format_fixed6 writes: a sign, 309 integer digits, the point and six decimals.
constexpr std::size_t kMaxFixed6Length = 1 + 309 + 1 + 6;

// Writes v as "%lf" would into out, which has room for kMaxFixed6Length characters; no
// terminating zero is written.  Returns the number of characters written.
std::size_t format_fixed6(double v, char* out);

}  // namespace xg

#endif  // XGGEO_WKT_NUMBER_FORMAT_H
