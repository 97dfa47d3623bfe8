// The shortest round-trip writer against std::to_chars, which it must match character for
// character: its integer paths are checked where they are exact, where they hand over, and on
// many random values of every magnitude.
#include <gtest/gtest.h>

#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "interop/shortest_number.h"

namespace {

void expect_as_to_chars(double v) {
  char ours[xg::kShortestRoom], theirs[40];
  const std::string a(ours, xg::write_shortest(ours, v));
  const std::string b(theirs, std::to_chars(theirs, theirs + sizeof theirs, v).ptr);
  ASSERT_EQ(a, b) << std::hexfloat << v;
  ASSERT_LE(a.size(), xg::kMaxShortestLength);
}

}  // namespace

// Whole numbers: fixed unless scientific is strictly shorter (1e+05 beats 100000, 10000 ties
// with 1e+04 and stays fixed), signed zeros, the ends of the exact range.
TEST(ShortestNumber, WholeNumbersAreWrittenAsToCharsWritesThem) {
  std::vector<double> values = {0.0, -0.0, 1, -1, 9, 10, 100, 1000, 10000, 100000, -100000, 120000, 1200000,
                                12000000, 123456789012345, 1e15, 0x1p53 - 1, -(0x1p53 - 1), 0x1p53, 0x1p53 + 2, 1e22};
  std::mt19937_64 rng(3);
  for (int i = 0; i < 20000; ++i) {
    const int digits = 1 + static_cast<int>(rng() % 16);
    double v = static_cast<double>(rng() % static_cast<uint64_t>(std::pow(10.0, digits)));
    v *= std::pow(10.0, static_cast<double>(rng() % 4));  // trailing zeros
    values.push_back(rng() % 2 ? -v : v);
  }
  for (double v : values) expect_as_to_chars(v);
}

// Fractions: short decimals (the exact binary fractions among them sit on the interval's edge),
// the boundaries of the fast range, powers of two (uneven neighbours), and random bit patterns
// and random walks like real coordinates.
TEST(ShortestNumber, FractionsOfEveryMagnitudeAreWrittenAsToCharsWritesThem) {
  std::vector<double> values = {0.5,     0.25,  0.1,    0.2,   0.3,    1.5,    -2.75,       0.001, 0.00099999999999999,
                                0.0011,  1e-4,  0.0123, 0.999, 9.9999, 123.45, 512345.678, 4012345.678,
                                0x1p52 + 0.5, 0x1p53 - 0.5, 1.0 / 3, 2.0 / 3, 0.1 + 0.2, std::nextafter(1.0, 0.0),
                                std::nextafter(1.0, 2.0), std::numeric_limits<double>::denorm_min(),
                                std::numeric_limits<double>::infinity(), std::numeric_limits<double>::quiet_NaN()};
  for (int e = -12; e <= 60; ++e) {
    const double p = std::ldexp(1.0, e);
    values.insert(values.end(), {p, std::nextafter(p, 0.0), std::nextafter(p, 1e300), -p * 3});
  }
  std::mt19937_64 rng(11);
  for (int i = 0; i < 200000; ++i) {
    uint64_t bits = rng();
    double v;
    std::memcpy(&v, &bits, sizeof v);
    values.push_back(v);
    // Magnitudes from 1e-4 to 1e17, full precision.
    values.push_back(std::ldexp(static_cast<double>(rng() >> 11), static_cast<int>(rng() % 110) - 66));
  }
  std::normal_distribution<double> step(0, 10);
  double x = 512345.678;
  for (int i = 0; i < 100000; ++i) values.push_back(x += step(rng));
  // Short decimals as typed: 1 to 9 decimals.
  for (int i = 0; i < 100000; ++i) {
    const int decimals = 1 + static_cast<int>(rng() % 9);
    values.push_back(static_cast<double>(static_cast<int64_t>(rng() % 2000000000) - 1000000000) /
                     std::pow(10.0, decimals));
  }
  for (double v : values) expect_as_to_chars(v);
}
