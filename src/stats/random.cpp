#include "stats/random.h"
#include "core/state.h"
#include <cstdio>
#include <cstring>

static constexpr urnstate start = {123456789, 521288629, 362436069, 2262615};
urnstate urn = start;
int16_t ver_rng = 4;
int32_t rndseed = 1001;

int16_t ver_rng_of_vernum(int16_t version)
{
    return version < 1111 ? 1 : version == 1120 ? 2 : version == 1200 ? 3 : 4;
}

int16_t vernum_of_ver_rng(int16_t version)
{
    static constexpr int16_t of[] = {1110, 1120, 1200, 1210};
    return of[version >= 1 && version <= 4 ? version - 1 : 3];
}

void seturnseed_i4(int32_t seed)
{
    uint32_t neg = 0u - uint32_t(seed);
    urn = start;
    urn.x = seed < 0 && int32_t(neg) > 0 ? neg : uint32_t(seed);
    if (urn.x != start.x)
        for (int i = 0; i < 100; i++)
            iurnuni();
    ver_rng = ver_rng_of_vernum(vernum);
}

static uint32_t checksum(const char *text, size_t n)
{
    uint32_t h = 0;
    for (size_t i = 0; i < n; i++)
        h = uint8_t(text[i]) + 31u * h;
    return h % 20009u;
}

static uint32_t hex(const char *p, int n)
{
    uint32_t v = 0;
    for (int i = 0; i < n; i++)
        v = v << 4 | uint32_t(p[i] <= '9' ? p[i] - '0' : p[i] - 'a' + 10);
    return v;
}

int32_t seturnseed(const char *text)
{
    size_t n = strlen(text);
    if ((n != 37 && n != 41) || *text != 'X' || strspn(text + 1, "0123456789abcdef") != n - 1)
        return 1;
    uint32_t version = n == 41 ? hex(text + 33, 4) : 1;
    if (version < 1 || version > 4 || hex(text + n - 4, 4) != checksum(text, n - 4))
        return 1;
    urn = {hex(text + 1, 8), hex(text + 9, 8), hex(text + 17, 8), hex(text + 25, 8)};
    ver_rng = int16_t(version);
    return 0;
}

void geturnseed(char *buf)
{
    snprintf(buf, 42, "X%08x%08x%08x%08x%04x", urn.x, urn.y, urn.z, urn.w, unsigned(ver_rng));
    snprintf(buf + 37, 5, "%04x", checksum(buf, 37));
}

double ovrandom()
{
    uint32_t s = uint32_t(rndseed);
    rndseed = int32_t(((s & 32767u) * 65536u + ((s * 3533u) & 2147483647u)) & 2147483647u);
    return rndseed / 2147483648.0;
}
