// core/missing.h - storage types, missing values and the numeric constants.
//
//   code       type     width  range                         .            .a           .z
//   1..244     strN     N      bytes, NUL-padded, unterminated when full
//   251        byte     1      -127 .. 100                   101          102          127
//   252        int      2      -32767 .. 32740               32741        32742        32767
//   253        long     4      -2147483647 .. 2147483620     2147483621   2147483622   2147483647
//   254        float    4      |x| <= max_ovfloat            0x7F000000   0x7F000800   0x7F00D000
//   255        double   8      |x| <= max_ovdouble           0x7FE0<<48   +1<<40       +26<<40
//   246..250   byte int long float double of old files: one missing value each
//
// A double is missing when it is at or above misval, 2 to the 1023rd. Letter k (.a is 1)
// stands in bits 40 to 47 of the double's mantissa, in bits 11 to 18 of the float's. Plain
// comparison therefore orders numbers < . < .a < ... < .z. NaN is never a missing value:
// every exit of an expression run turns it into misval.
#pragma once
#include <bit>
#include <cstdint>
#include <cstring>

enum : uint8_t {
    T_STRMAX = 244,
    T_BYTE110 = 246,
    T_INT110 = 247,
    T_LONG110 = 248,
    T_FLOAT110 = 249,
    T_DOUBLE110 = 250,
    T_BYTE = 251,
    T_INT = 252,
    T_LONG = 253,
    T_FLOAT = 254,
    T_DOUBLE = 255,
};
inline bool t_isstr(uint8_t type) { return type >= 1 && type <= T_STRMAX; }

// Set from hexadecimal text by numconst_init; the initial values are the same numbers, so
// that code which runs before start-up (unit tests, static tables) sees them too.
extern double misval, misval_z, misval_107, misval_110;
extern float fltmis, fltmis_110;
extern double max_ovdouble, min_ovdouble, min_realdouble, smallest_ovdouble, eps_ovdouble,
    smallest_dndouble, max_ovfloat, min_ovfloat, eps_ovfloat;
extern double double2p, doubleln2pi;  // 2*pi; log(2*pi)
inline constexpr double max_ovbyte = 100, min_ovbyte = -127, max_ovint = 32740,
                        min_ovint = -32767, max_ovlong = 2147483620, min_ovlong = -2147483647;
inline constexpr int32_t bytemis_110 = 127, intmis_110 = 32767, longmis_110 = 2147483647;
// What an integer argument (a subscript, an option's number) may be.
inline constexpr double zminlong = -2147483647.0, zmaxlong = 2147483620.0;

// Reads the constants from their texts through cnvstoz. Returns 0, or 1 when a text does not
// convert or disagrees with the initial value (a broken floating-point unit).
int32_t numconst_init();

inline bool ovismissing(double z) { return z >= misval; }

// Missing value number k: 0 is ., 1 is .a, 26 is .z.
inline double mis_of(int k)
{
    return std::bit_cast<double>((uint64_t{0x7FE0} << 48) | (uint64_t(k) << 40));
}
// Byte 5 of a missing double: 0 for ., 1 to 26 for a letter, anything else a value between.
inline int mis_letter(double z)
{
    return int((std::bit_cast<uint64_t>(z) >> 40) & 0xff);
}
// NaN and the infinities have every exponent bit set.
inline bool z_allexp(double z)
{
    return ((std::bit_cast<uint64_t>(z) >> 52) & 0x7ff) == 0x7ff;
}
