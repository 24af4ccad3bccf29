// commands/encodecmd.cpp - encode and decode: texts to labelled numbers and back.
//
//   encode strvar [if] [in], generate(name) [label(name) noextend]
//   decode numvar [if] [in], generate(name) [maxlength(#)]
#include "core/limits.h"
#include "core/mem.h"
#include "core/progress.h"
#include "core/rc.h"
#include "core/state.h"
#include "core/text.h"
#include "data/dsa.h"
#include "data/labels.h"
#include "data/variables.h"
#include "expr/parse.h"
#include "interp/dm.h"
#include "interp/messages.h"
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string>
#include <unordered_map>
#include <vector>

namespace {

struct enccmd {
    char name[33], label[33];
    bool extend;
    int32_t maxlen;
};

int32_t parse(enccmd *c, bool decode)
{
    parinfo->pi_vlist = PI_REQ;
    parinfo->pi_if = parinfo->pi_in = parinfo->pi_opts = PI_OK;
    int32_t rc = ti_pi_parse(tokinfo, parinfo);
    if (rc)
        return rc;
    double n = T_STRMAX;
    ti_pi_findargn(tokinfo, parinfo, "generate", 1, c->name, sizeof c->name, 1);
    *c->label = 0;
    if (decode) {
        ti_pi_findoptv(tokinfo, parinfo, "maxlength", 6, &n, 1, 0);
    } else {
        ti_pi_findargn(tokinfo, parinfo, "label", 1, c->label, sizeof c->label, 1);
        c->extend = ti_pi_findopt(tokinfo, parinfo, "extend", 3, 1);
    }
    if ((rc = ti_pi_chkopt(tokinfo, parinfo)))
        return rc;
    if (parinfo->pi_nvar != 1)
        return error(RC_TOOMANYVARS);
    if (!*c->name)
        return required("option generate()");
    if (!(n >= 1 && n <= double(T_STRMAX)))
        return errout(RC_SYNTAX, "maxlength() must be between 1 and 244\n");
    c->maxlen = int32_t(n);
    if (sysfindvar(c->name))
        return error2(3, c->name);
    if ((rc = chkname(c->name, false)) || (rc = chkreskeywrds(c->name)))
        return rc;
    return *c->label ? chksinglename(c->label, false) : 0;
}

// ---- encode

using codes = std::unordered_map<std::string, int32_t>;

// Every text that is selected, with its value once known (0 before).
int32_t texts_of(int32_t var, codes *map)
{
    char buf[246];
    std::string s;
    for (int32_t obs = parinfo->pi_obs1; obs <= parinfo->pi_obs2; obs++) {
        if ((obs & 0xfff) == 0 && progress_poll("converting", obs, parinfo->pi_obs2))
            return RC_BREAK;
        if (!selobs(obs))
            continue;
        s = dsa_sdata(sysdsa, uint32_t(var), uint32_t(obs), buf);
        if (!s.empty())
            map->emplace(s, 0);
    }
    return 0;
}

// The label's table comes to hold every text; the map gets the values.
int32_t number_texts(const enccmd *c, codes *map)
{
    const char *table = *c->label ? c->label : c->name;
    const vltable *t = vlfind(table);
    std::vector<vlpair> pairs;
    std::vector<bool> done;
    int32_t n = vlgetcount(t), last = 0;
    for (int32_t i = 0; i < n; i++) {
        vlpair p;
        vlgetofi(t, i, &p.text, &p.value);
        auto found = map->find(p.text);
        if (found != map->end() && !found->second)
            found->second = p.value;
        if (p.value <= int32_t(max_ovlong))
            last = std::max(last, p.value);
        pairs.push_back(p);
    }
    std::vector<const std::string *> fresh;
    for (const auto &e : *map)
        if (!e.second)
            fresh.push_back(&e.first);
    if (fresh.empty())
        return 0;
    if (!c->extend)
        return errout(180, "not all texts are in label %s\n", table);
    std::sort(fresh.begin(), fresh.end(),
              [](const std::string *a, const std::string *b) { return *a < *b; });
    // Existing texts stay in the order in which they were added.
    std::stable_sort(pairs.begin(), pairs.end(),
                     [](const vlpair &a, const vlpair &b) { return a.text < b.text; });
    for (const std::string *s : fresh) {
        (*map)[*s] = ++last;
        pairs.push_back({last, s->c_str()});
    }
    auto old = const_cast<vltable *>(t);
    if (!vlbuild(table, pairs.data(), int32_t(pairs.size())))
        return vlwhy();
    dmrm(old);
    upValLabel = true;
    return 0;
}

int32_t encode(const enccmd *c)
{
    int32_t from = parinfo->vl_vr[0];
    if (!t_isstr(_typlist[from - 1]))
        return error(107);
    codes map;
    int32_t rc = texts_of(from, &map);
    if (rc || (rc = number_texts(c, &map)))
        return rc;
    int32_t var = addvar(T_LONG, c->name);
    if (var < 0)
        return -var;
    _i_Kvar = _Kvar;
    char buf[246];
    std::string s;
    for (int32_t obs = 1; obs <= _Nobs; obs++) {
        bool in = obs >= parinfo->pi_obs1 && obs <= parinfo->pi_obs2 && selobs(obs);
        s = in ? dsa_sdata(sysdsa, uint32_t(from), uint32_t(obs), buf) : "";
        double z = s.empty() ? misval : ovdouble_of_ovlong(map[s]);
        dsa_store(z, sysdsa, uint32_t(var), uint32_t(obs));
        if ((obs & 0xfff) == 0 && progress_poll("converting", obs, parinfo->pi_obs2)) {
            dsa_truncate_var(sysdsa, uint32_t(var) - 1, true);
            return RC_BREAK;
        }
    }
    const char *table = *c->label ? c->label : c->name;
    strcut(_lbllist[var - 1], 33, table);
    int32_t wide = std::clamp(vlmaxlen(vlfind(table)), 12, 80);
    snprintf(_fmtlist[var - 1], 49, "%%%d.0g", wide);
    getvarlab(from, buf);
    s_updata = newdata = true;
    return putvarlab(var, buf);
}

// ---- decode

int32_t decode(const enccmd *c)
{
    int32_t from = parinfo->vl_vr[0];
    if (t_isstr(_typlist[from - 1]))
        return error(108);
    const vltable *t = vlfind(_lbllist[from - 1]);
    if (!t)
        return errout(182, "%s has no value label\n", _varlist[from - 1]);
    int32_t width = std::clamp(vlmaxlen(t), 1, c->maxlen);
    int32_t var = addvar(uint8_t(width), c->name);
    if (var < 0)
        return -var;
    _i_Kvar = _Kvar;
    char buf[246];
    for (int32_t obs = 1; obs <= _Nobs; obs++) {
        *buf = 0;
        if (obs >= parinfo->pi_obs1 && obs <= parinfo->pi_obs2 && selobs(obs))
            vlfindval(t, dsa_data(sysdsa, uint32_t(from), uint32_t(obs)), buf, width + 1);
        dsa_sstore(sysdsa, uint32_t(var), uint32_t(obs), buf);
        if ((obs & 0xfff) == 0 && progress_poll("converting", obs, parinfo->pi_obs2)) {
            dsa_truncate_var(sysdsa, uint32_t(var) - 1, true);
            return RC_BREAK;
        }
    }
    getvarlab(from, buf);
    s_updata = newdata = true;
    return putvarlab(var, buf);
}

}  // namespace

int32_t encodecmd(int32_t isdecode)
{
    enccmd c = {};
    int32_t rc = parse(&c, isdecode);
    if (rc)
        return rc;
    return isdecode ? decode(&c) : encode(&c);
}
