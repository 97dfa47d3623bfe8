// angles.h - the angle constants of the point primitives.
//
// Intended: pi/2, pi, 3pi/2 and 2pi are single-precision values widened to double, not the
// double-precision constants; direction angles and circle steps are defined with them.
#ifndef XGGEO_CORE_ANGLES_H
#define XGGEO_CORE_ANGLES_H

namespace xg {

constexpr double kHalfPiF = static_cast<double>(1.5707963267948966f);   // 1.5707963705062866
constexpr double kPiF = static_cast<double>(3.1415926535897932f);       // 3.1415927410125732
constexpr double kThreeHalfPiF = static_cast<double>(4.7123889803846897f);  // 4.71238899230957
constexpr double kTwoPiF = static_cast<double>(6.2831853071795865f);    // 6.2831854820251465

}  // namespace xg

#endif  // XGGEO_CORE_ANGLES_H
