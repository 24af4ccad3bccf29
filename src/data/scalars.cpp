#include "data/scalars.h"
#include "interp/dm.h"
#include <cstring>

static void *find(const char *name, int32_t kind)
{
    void *p = dmfind0(name, DM_SCALAR);
    return p && dm_rec(p)->aux == kind ? p : nullptr;
}

bool sclrld(const char *name, double *out)
{
    void *p = find(name, 0);
    if (p)
        memcpy(out, p, sizeof *out);
    return p;
}

const char *ssclrld(const char *name) { return static_cast<const char *>(find(name, 1)); }

int32_t sclrsv(const char *name, double z)
{
    return dmresave(name, DM_SCALAR, 0, &z, sizeof z);
}

int32_t ssclrsv(const char *name, const char *text)
{
    return dmresave(name, DM_SCALAR, 1, text, strlen(text) + 1);
}

bool sclrrm(const char *name)
{
    void *p = dmfind0(name, DM_SCALAR);
    dmrm(p);
    return p;
}
