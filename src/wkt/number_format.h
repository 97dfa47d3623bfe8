// number_format.h - coordinates to text and back: exactly what printf("%lf") prints, and
// exactly what strtod reads from one field of a text.
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

// The field [begin, stop) converted as strtod converts a string holding just that field (in the
// C locale): leading white space skipped, the longest valid prefix taken (hexadecimal, inf and
// nan forms included), 0 when there is none.  Plain decimal numbers take a fast exact path;
// everything else goes to strtod.  Reads nothing outside the field except, on the strtod path,
// the text up to its terminating zero, which must follow somewhere at or after stop.
double parse_number_field(const char* begin, const char* stop);

}  // namespace xg

#endif  // XGGEO_WKT_NUMBER_FORMAT_H
