// data/sort_int.h - keys of rows, shared by the files that sort.
#pragma once
#include "data/dsa.h"
#include <cstring>

// A key within a row. Numbers compare as 64-bit integers whose order is that of the values:
// integers as they are, reals by their bits, so that no pattern breaks a comparison.
struct sortkey {
    uint8_t type;
    uint32_t at;
};

inline int64_t sort_ofdouble(double z)
{
    auto b = std::bit_cast<int64_t>(z);
    if (b == INT64_MIN)
        return 0;  // minus zero is zero
    return b < 0 ? b ^ INT64_MAX : b;
}

// The key's value, or the first eight bytes of a string: unequal decides.
inline int64_t sort_ordinal(const sortkey &k, const char *row)
{
    const char *p = row + k.at;
    switch (k.type) {
    case T_BYTE:
        return int8_t(*p);
    case T_INT: {
        int16_t v;
        memcpy(&v, p, sizeof v);
        return v;
    }
    case T_LONG: {
        int32_t v;
        memcpy(&v, p, sizeof v);
        return v;
    }
    default:
        break;
    }
    if (!t_isstr(k.type))
        return sort_ofdouble(cell_data(k.type, p));
    uint64_t v = 0;
    int n = k.type < 8 ? k.type : 8;
    for (int i = 0; i < n && p[i]; i++)
        v |= uint64_t(uint8_t(p[i])) << (56 - 8 * i);
    return int64_t(v ^ (uint64_t{1} << 63));
}

inline int sort_onekey(const sortkey &k, const char *a, const char *b)
{
    int64_t x = sort_ordinal(k, a), y = sort_ordinal(k, b);
    if (x != y)
        return x < y ? -1 : 1;
    return k.type > 8 && k.type <= T_STRMAX ? strncmp(a + k.at, b + k.at, k.type) : 0;
}

inline int sort_rows(const sortkey *k, int32_t n, const char *a, const char *b)
{
    int c = 0;
    for (int32_t i = 0; i < n && c == 0; i++)
        c = sort_onekey(k[i], a, b);
    return c;
}
