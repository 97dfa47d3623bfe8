// shortest_number.h - the shortest text of a double that reads back to it, as std::to_chars
// writes it, with fast exact paths for the numbers coordinates are made of.
#ifndef XGGEO_INTEROP_SHORTEST_NUMBER_H
#define XGGEO_INTEROP_SHORTEST_NUMBER_H

#include <cstddef>

namespace xg {

// Longest text write_shortest writes ("-2.2250738585072014e-308").
constexpr std::size_t kMaxShortestLength = 24;
// Room write_shortest needs at `at`: it writes a fraction's digits in fixed blocks and may
// scribble past the end of the text it returns.
constexpr std::size_t kShortestRoom = 40;

// Writes at `at` (room for kShortestRoom characters) exactly what
// std::to_chars(first, last, v) writes: the fewest significant digits that read back to v, the
// closest to v among them, in fixed notation unless scientific is strictly shorter.  Returns the
// end; no terminating zero.
//
// Two cases cover nearly all coordinates and are done here with integer arithmetic: whole
// numbers below 2^53, and fractions with 0.001 <= |v| < 2^53, for which the digits are found by
// testing, for q decimals, whether a multiple of 10^-q lies strictly inside the interval of
// reals that round to v (exact in 128 bits, as v = m / 2^s with s <= 62 there).  Everything
// else, and the rare ties and candidates on the interval's edge, go to std::to_chars.
char* write_shortest(char* at, double v);

}  // namespace xg

#endif  // XGGEO_INTEROP_SHORTEST_NUMBER_H
