#include "stats/groups.h"
#include "data/dsa.h"

int32_t group_at(groupids *g, int32_t obs)
{
    if (t_isstr(_typlist[g->var - 1])) {
        char buf[246];
        dsa_sdata(sysdsa, uint32_t(g->var), uint32_t(obs), buf);
        if (!*buf)
            return -1;
        auto at = g->text.try_emplace(buf, g->n);
        g->n += at.second;
        return at.first->second;
    }
    double z = dsa_data(sysdsa, uint32_t(g->var), uint32_t(obs));
    if (z >= misval)
        return -1;
    auto at = g->num.try_emplace(z, g->n);
    g->n += at.second;
    return at.first->second;
}
