// commands/datasigcmd.cpp - _datasignature [varlist] [if] [in] [, nonames fast]: a short text
// that changes when the data do.
//
//   N:K(names):values:values       numbers in decimal
//
// The sums are 32-bit FNV-1a hashes (Fowler, Noll and Vo) of the names, and of the values by
// row with two different starts. Storage types, formats and labels do not count; the order of
// rows and of variables does. fast hashes the stored bytes, which is quicker but depends on
// the types.
#include "core/mem.h"
#include "core/progress.h"
#include "core/rc.h"
#include "core/state.h"
#include "data/dsa.h"
#include "expr/parse.h"
#include "interp/messages.h"
#include "output/print.h"
#include "stats/results.h"
#include <cstdio>
#include <cstring>

int32_t datasigcmd(int32_t);

namespace {

struct hashes {
    uint32_t a = 2166136261u, b = 2166136261u ^ 0x5bd1e995u;
    void byte(uint8_t c)
    {
        a = (a ^ c) * 16777619u;
        b = (b ^ c) * 16777619u;
        b = b << 13 | b >> 19;
    }
};

void hash_text(hashes *h, const char *p, size_t most)
{
    size_t n = strnlen(p, most);
    for (size_t i = 0; i < n; i++)
        h->byte(uint8_t(p[i]));
    h->byte(0);
}

void hash_number(hashes *h, double z)
{
    auto bits = std::bit_cast<uint64_t>(z == 0 ? 0.0 : z);
    for (int32_t i = 0; i < 8; i++)
        h->byte(uint8_t(bits >> 8 * i));
}

void hash_cell(hashes *h, int32_t var, const char *row, bool fast)
{
    uint8_t t = _typlist[var - 1];
    const char *p = row + sysdsa->offset[var - 1];
    if (t_isstr(t))
        return hash_text(h, p, t);
    if (!fast)
        return hash_number(h, cell_data(t, p));
    for (int32_t i = dsa_bytlenc(t); i > 0; i--)
        h->byte(uint8_t(*p++));
}

}  // namespace

int32_t datasigcmd(int32_t)
{
    parinfo->pi_vlist = parinfo->pi_if = parinfo->pi_in = parinfo->pi_opts = PI_OK;
    parinfo->pi_blankall = 1;
    int32_t rc = ti_pi_parse(tokinfo, parinfo);
    if (rc)
        return rc;
    bool names = ti_pi_findopt(tokinfo, parinfo, "names", 3, 1);
    bool fast = ti_pi_findopt(tokinfo, parinfo, "fast", 4, 0);
    if ((rc = ti_pi_chkopt(tokinfo, parinfo)))
        return rc;
    hashes nh, h;
    for (int32_t i = 0; names && i < parinfo->pi_nvar; i++)
        hash_text(&nh, _varlist[parinfo->vl_vr[i] - 1], 33);
    int32_t n = 0;
    for (int32_t obs = parinfo->pi_obs1; obs <= parinfo->pi_obs2; obs++) {
        if ((obs & 0xfff) == 0 && progress_poll("signing", obs, parinfo->pi_obs2))
            return RC_BREAK;
        if (!selobs(obs))
            continue;
        n++;
        const char *row = dsa_obsptr(sysdsa, uint32_t(obs));
        for (int32_t i = 0; i < parinfo->pi_nvar; i++)
            hash_cell(&h, parinfo->vl_vr[i], row, fast);
    }
    char text[96], nametext[16] = "";
    if (names)
        snprintf(nametext, sizeof nametext, "%u", nh.a);
    snprintf(text, sizeof text, "%d:%d(%s):%u:%u", n, parinfo->pi_nvar, nametext, h.a, h.b);
    spout21fat(0, "  %s\n", text);
    retval_clear();
    retval_set_glocal("datasignature", text);
    return stopflag;
}
