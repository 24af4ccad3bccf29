#include "commands/categories.h"
#include "core/missing.h"
#include "data/dsa.h"
#include "data/labels.h"
#include "output/fmt.h"
#include <algorithm>
#include <numeric>

void category_open(categories *c, int32_t var)
{
    *c = {};
    c->var = var;
    c->text = t_isstr(_typlist[var - 1]);
}

int32_t category_at(categories *c, int32_t obs, bool missing, int32_t max)
{
    if (!c->text) {
        double z = dsa_data(sysdsa, uint32_t(c->var), uint32_t(obs));
        if (z >= misval && !missing)
            return -1;
        if (z == 0)
            z = 0;  // both zeros are one value
        auto [it, fresh] = c->of_num.try_emplace(z, c->count());
        if (fresh) {
            c->num.push_back(z);
            if (c->count() > max)
                return -2;
        }
        return it->second;
    }
    char buf[246];
    dsa_sdata(sysdsa, uint32_t(c->var), uint32_t(obs), buf);
    if (!*buf && !missing)
        return -1;
    auto [it, fresh] = c->of_str.try_emplace(buf, c->count());
    if (fresh) {
        c->str.emplace_back(buf);
        if (c->count() > max)
            return -2;
    }
    return it->second;
}

int32_t category_find(const categories *c, int32_t obs)
{
    if (!c->text) {
        auto at = c->of_num.find(dsa_data(sysdsa, uint32_t(c->var), uint32_t(obs)));
        return at == c->of_num.end() ? -1 : at->second;
    }
    char buf[246];
    auto at = c->of_str.find(dsa_sdata(sysdsa, uint32_t(c->var), uint32_t(obs), buf));
    return at == c->of_str.end() ? -1 : at->second;
}

void category_sort(categories *c)
{
    c->order.resize(size_t(c->count()));
    c->rank.resize(c->order.size());
    std::iota(c->order.begin(), c->order.end(), 0);
    std::sort(c->order.begin(), c->order.end(), [c](int32_t a, int32_t b) {
        return c->text ? c->str[size_t(a)] < c->str[size_t(b)]
                       : c->num[size_t(a)] < c->num[size_t(b)];
    });
    for (size_t i = 0; i < c->order.size(); i++)
        c->rank[size_t(c->order[i])] = int32_t(i);
}

std::string category_text(const categories *c, int32_t rank, bool nolabel)
{
    size_t k = size_t(c->order[size_t(rank)]);
    if (c->text)
        return c->str[k];
    char buf[256];
    const char *label = _lbllist[c->var - 1];
    if (!nolabel && *label) {
        const vltable *t = vlfind(label);
        if (t && vlfindval(t, c->num[k], buf, sizeof buf) >= 0)
            return buf;
    }
    fmtnumtrim(buf, sizeof buf, c->num[k], _fmtlist[c->var - 1]);
    return buf;
}
