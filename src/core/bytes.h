// core/bytes.h - numbers in files, one byte at a time.
//
// order says how the file holds numbers: B_LITTLE least significant byte first, B_BIG most
// significant first. Nothing here depends on the order of the machine.
#pragma once
#include <bit>
#include <cstdint>

enum byteorder : uint8_t { B_BIG = 1, B_LITTLE = 2 };

inline uint16_t get16(const void *p, byteorder o)
{
    auto b = static_cast<const uint8_t *>(p);
    return o == B_LITTLE ? uint16_t(b[0] | b[1] << 8) : uint16_t(b[1] | b[0] << 8);
}
inline uint32_t get32(const void *p, byteorder o)
{
    auto b = static_cast<const uint8_t *>(p);
    uint32_t lo = get16(b, o), hi = get16(b + 2, o);
    return o == B_LITTLE ? lo | hi << 16 : hi | lo << 16;
}
inline uint64_t get64(const void *p, byteorder o)
{
    auto b = static_cast<const uint8_t *>(p);
    uint64_t lo = get32(b, o), hi = get32(b + 4, o);
    return o == B_LITTLE ? lo | hi << 32 : hi | lo << 32;
}
inline void put16(void *p, uint16_t v, byteorder o)
{
    auto b = static_cast<uint8_t *>(p);
    b[o == B_LITTLE ? 0 : 1] = uint8_t(v);
    b[o == B_LITTLE ? 1 : 0] = uint8_t(v >> 8);
}
inline void put32(void *p, uint32_t v, byteorder o)
{
    auto b = static_cast<uint8_t *>(p);
    put16(b + (o == B_LITTLE ? 0 : 2), uint16_t(v), o);
    put16(b + (o == B_LITTLE ? 2 : 0), uint16_t(v >> 16), o);
}
inline void put64(void *p, uint64_t v, byteorder o)
{
    auto b = static_cast<uint8_t *>(p);
    put32(b + (o == B_LITTLE ? 0 : 4), uint32_t(v), o);
    put32(b + (o == B_LITTLE ? 4 : 0), uint32_t(v >> 32), o);
}
inline constexpr byteorder b_native =
    std::endian::native == std::endian::little ? B_LITTLE : B_BIG;
