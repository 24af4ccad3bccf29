// commands/ordercmd.cpp - the order of the variables.
#include "core/rc.h"
#include "core/state.h"
#include "data/dsa.h"
#include "expr/parse.h"
#include "interp/messages.h"
#include <algorithm>
#include <cstring>
#include <vector>

namespace {

struct orderopts {
    bool last, alpha;
    int32_t before, after;  // a variable, or 0
};

int32_t parse(orderopts *o)
{
    parinfo->pi_vlist = PI_REQ;
    parinfo->pi_opts = PI_OK;
    int32_t rc = ti_pi_parse(tokinfo, parinfo);
    if (rc)
        return rc;
    int32_t nb = 0, na = 0, one[2] = {0, 0};
    bool first = ti_pi_findopt(tokinfo, parinfo, "first", 1, 0) == 1;
    o->last = ti_pi_findopt(tokinfo, parinfo, "last", 1, 0) == 1;
    o->alpha = ti_pi_findopt(tokinfo, parinfo, "alphabetic", 5, 0) == 1;
    if ((nb = ti_pi_findvlist(tokinfo, parinfo, "before", 1, one, 1)))
        o->before = one[0];
    if ((na = ti_pi_findvlist(tokinfo, parinfo, "after", 1, one, 1)))
        o->after = one[0];
    if ((rc = ti_pi_chkopt(tokinfo, parinfo)))
        return rc;
    return int(first) + o->last + (nb > 0) + (na > 0) > 1 ? error(RC_SYNTAX) : 0;
}

// The variables listed, each once, in the order asked for.
std::vector<int32_t> listed(bool alpha, std::vector<bool> *in)
{
    std::vector<int32_t> v;
    for (int32_t i = 0; i < parinfo->pi_nvar; i++) {
        int32_t var = parinfo->vl_vr[i];
        if (!(*in)[size_t(var)])
            v.push_back(var);
        (*in)[size_t(var)] = true;
    }
    if (alpha)
        std::stable_sort(v.begin(), v.end(), [](int32_t a, int32_t b) {
            return strcmp(_varlist[a - 1], _varlist[b - 1]) < 0;
        });
    return v;
}

// The whole order that results.
std::vector<int32_t> wanted(const orderopts &o)
{
    std::vector<bool> in(size_t(_Kvar) + 1);
    std::vector<int32_t> moved = listed(o.alpha, &in), all;
    bool done = false;
    auto insert = [&] {
        all.insert(all.end(), moved.begin(), moved.end());
        done = true;
    };
    // A target that is itself moved counts with the place it has left.
    if (!o.last && !o.before && !o.after)
        insert();
    for (int32_t v = 1; v <= _i_Kvar; v++) {
        if (v == o.before && !done)
            insert();
        if (!in[size_t(v)])
            all.push_back(v);
        if (v == o.after && !done)
            insert();
    }
    if (!done)
        insert();
    return all;
}

}  // namespace

int32_t ordercmd(int32_t)
{
    orderopts o{};
    int32_t rc = parse(&o);
    if (rc)
        return rc;
    std::vector<int32_t> want = wanted(o), now(want.size());
    for (size_t i = 0; i < now.size(); i++)
        now[i] = int32_t(i) + 1;
    for (size_t to = 0; to < want.size(); to++) {
        auto at = size_t(std::find(now.begin(), now.end(), want[to]) - now.begin());
        if (at == to)
            continue;
        if ((rc = pi_dsa_mvvar(sysdsa, uint32_t(at + 1), uint32_t(to + 1), nullptr)))
            return rc;
        std::rotate(now.begin() + int64_t(to), now.begin() + int64_t(at),
                    now.begin() + int64_t(at) + 1);
        s_updata = newdata = true;
        if (stopflag)
            return stopflag;
    }
    return 0;
}
