// The constants of IEEE single precision, rounded to nearest, that the LAPACK routines compute with; SLAMCH gives them
// by letter.
#pragma once

namespace qrv::machine {

inline constexpr float epsilon = 0x1p-24F;                    // "E": the largest relative error of one rounding
inline constexpr float precision = 0x1p-23F;                  // "P": epsilon times the base
inline constexpr float safeMinimum = 0x1p-126F;               // "S": the smallest number whose reciprocal is finite
inline constexpr float overflow = 0x1.fffffep127F;            // "O": the largest number
inline constexpr float base = 2;                              // "B"
inline constexpr float digits = 24;                           // "N": digits of the significand
inline constexpr float minimumExponent = -125;                // "M": of the smallest normal number, significand below 1
inline constexpr float maximumExponent = 128;                 // "L": of the largest
inline constexpr float underflow = safeMinimum;               // "U": the smallest normal number
inline constexpr float roundsToNearest = 1;                   // "R"
inline constexpr float smallNumber = safeMinimum / precision; // below it a quotient of full precision may be denormal
inline constexpr float bigNumber = 1 / smallNumber;

} // namespace qrv::machine
