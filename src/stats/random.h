// stats/random.h - the one stream of random numbers.
//
// A 32-bit KISS generator of four parts: linear congruential, xorshift and two
// multiply-with-carry (Marsaglia 1999, "Random numbers for C: the end, at last?"). Its state
// can be read as a text, kept, and set back; the text carries the version of the variate
// algorithms with it, so that later draws repeat too.
//
//   X xxxxxxxx yyyyyyyy zzzzzzzz wwwwwwww vvvv cccc     41 characters, lower-case hexadecimal
//   the form without vvvv, of 37 characters, means version 1
#pragma once
#include <cstdint>

struct urnstate {
    uint32_t x, y, z, w;
};
extern urnstate urn;
extern int16_t ver_rng;     // 1 to 4
extern int32_t rndseed;     // state of the old generator

inline uint32_t iurnuni()
{
    urn.x = 69069u * urn.x + 1234567u;
    urn.y ^= urn.y << 13;
    urn.y ^= urn.y >> 17;
    urn.y ^= urn.y << 5;
    urn.z = 65184u * (urn.z & 65535u) + (urn.z >> 16);
    urn.w = 63663u * (urn.w & 65535u) + (urn.w >> 16);
    return urn.y + urn.z + (urn.w << 16) + urn.x;
}
inline double urnuni() { return iurnuni() / 4294967296.0; }

void seturnseed_i4(int32_t seed);          // also takes ver_rng from vernum
int32_t seturnseed(const char *text);      // 0, or 1 with the state untouched
void geturnseed(char *buf);                // 42 bytes
int16_t ver_rng_of_vernum(int16_t vernum);
int16_t vernum_of_ver_rng(int16_t version);
double ovrandom();                         // the old generator
