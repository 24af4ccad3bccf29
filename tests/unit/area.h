// tests/unit/area.h - storage areas of a few rows a segment, and a fresh system area.
#pragma once
#include "core/mem.h"
#include "core/state.h"
#include "data/dsa.h"
#include "data/dsa_int.h"
#include "data/labels.h"
#include "data/variables.h"
#include "interp/dm.h"
#include "output/fmt.h"
#include <gtest/gtest.h>
#include <string>
#include <vector>

struct lcg {
    uint64_t s;
    explicit lcg(uint64_t seed) : s(seed * 2862933555777941757u + 3037000493u) {}
    uint32_t operator()(uint32_t n)
    {
        s = s * 6364136223846793005u + 1442695040888963407u;
        return n ? uint32_t(s >> 33) % n : 0;
    }
};

// An area with segments of 4096 bytes and rows of at most 1000.
inline dsa_area *tiny_area(bool issys)
{
    dsa_segsize_floor = 1024;
    dsa_area *d = dsa_open(issys, 0);
    d->segsize_min = 1024;
    d->segsize_suggested = 4096;
    d->width_max = 1000;
    d->width_suggested = 400;
    d->width_free_big = 160;
    d->niceness = 10;
    d->segtab = {2, 4, 5000, 3, 3};
    d->vartab = {2, 3, 400, 2, 2};
    EXPECT_EQ(dsa_start(d), 0);
    return d;
}

// The system area made anew, tiny or as the edition has it; everything named is gone too.
inline void fresh_system(bool tiny)
{
    static bool once;
    if (!once && !sysdsa)
        dminit();
    once = true;
    stopflag = 0;
    if (sysdsa)
        dsa_close(sysdsa);
    dsa_segsize_floor = 1048576;
    if (tiny) {
        if (!dsa_onvarsgone) {
            EXPECT_EQ(sinit0_dsa(), 0);
            dsa_close(sysdsa);
        }
        tiny_area(true);
        maxmaxvar = int32_t(sysdsa->K_max);
    } else {
        EXPECT_EQ(sinit0_dsa(), 0);
    }
    sysdsa->noisy = 0;
    drop_all();
}

inline int32_t add_user(uint8_t type, const char *name)
{
    char fmt[16];
    int32_t rc = dsa_add_var(sysdsa, type, name, fmt_default(type, fmt));
    if (!rc)
        _i_Kvar = _Kvar;
    return rc ? -rc : _Kvar;
}
