// core/text.h - copying text into a room that may be too small.
#pragma once
#include <cstddef>
#include <cstring>

// Copies src into dst, which holds n bytes, cut where it must be and always terminated.
// Returns dst. The two may not overlap.
inline char *strcut(char *dst, size_t n, const char *src)
{
    size_t len = strlen(src);
    if (len >= n)
        len = n - 1;
    memcpy(dst, src, len);
    dst[len] = 0;
    return dst;
}
