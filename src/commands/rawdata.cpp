// commands/rawdata.cpp - rows read from text into a new dataset.
#include "commands/rawdata.h"
#include "core/files.h"
#include "core/mem.h"
#include "core/numtext.h"
#include "core/rc.h"
#include "core/settings.h"
#include "core/state.h"
#include "data/dsa.h"
#include "data/labels.h"
#include "data/variables.h"
#include "expr/generate.h"
#include "expr/parse.h"
#include "interp/messages.h"
#include "output/fmt.h"
#include "output/print.h"
#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstring>

// ---- the line

// The next comma, or one of the words, outside quotes and brackets; else the end.
static const char *clause(const char *p, const char *const *words, size_t *len)
{
    bool start = true, open = false;
    while (*p) {
        auto q = const_cast<char *>(p);
        if (*p == '"')
            p = psimplequotes(q, &open);
        else if (*p == '(')
            p = pbrackets(q, &open);
        else if (*p == ',') {
            *len = 1;
            return p;
        } else {
            size_t n = strcspn(p, " ,(\"");
            for (const char *const *w = words; *w && start && n; w++)
                if (n == strlen(*w) && !strncmp(p, *w, n)) {
                    *len = n;
                    return p;
                }
            p += n ? n : 1;
            start = n == 0;
            continue;
        }
        start = true;
        if (open)
            break;
    }
    *len = 0;
    return p + strlen(p);
}

bool raw_using()
{
    static const char *const words[] = {"using", nullptr};
    size_t n;
    clause(ti_wheretok(tokinfo), words, &n);
    return n == 5;
}

int32_t raw_split(rawline *l)
{
    static const char *const words[] = {"using", nullptr}, *const none[] = {nullptr};
    std::string line = ti_wheretok(tokinfo);
    size_t n;
    const char *at = clause(line.c_str(), words, &n);
    if (n != 5)
        return required("using");
    l->before.assign(line.c_str(), at);
    std::string rest = at + 5;
    toktype ti;
    ti_settok(&ti, rest.data());
    char file[500];
    if (int32_t rc = ti_gettokfn(&ti, file))
        return error(rc);
    l->file = file;
    const char *p = ti.c_ptr, *comma = clause(p, none, &n);
    l->quals.assign(p, comma);
    l->opts = comma;
    return 0;
}

int32_t raw_options(rawline *l)
{
    static toktype ti;
    ti_settok(&ti, l->opts.data());
    parinfo->pi_vlist = parinfo->pi_if = parinfo->pi_in = parinfo->pi_exp = parinfo->pi_wgt =
        parinfo->pi_using = PI_NO;
    parinfo->pi_opts = PI_OK;
    return ti_pi_parse(&ti, parinfo);
}

// ---- variables

int32_t raw_check(const rawdata *r)
{
    if (r->vars.empty())
        return required("varlist");
    if (r->vars.size() > size_t(maxmaxvar))
        return error(RC_NOVARROOM);
    for (size_t i = 0; i < r->vars.size(); i++) {
        const rawvar &v = r->vars[i];
        int32_t rc = chkname(v.name.c_str(), false);
        if (rc || (rc = chkreskeywrds(v.name.c_str())))
            return rc;
        if (!v.vallab.empty() && ((rc = chkname(v.vallab.c_str(), false)) || t_isstr(v.type)))
            return rc ? rc : error(181);
        for (size_t k = 0; k < i; k++)
            if (r->vars[k].name == v.name)
                return error2(3, v.name.c_str());
    }
    return 0;
}

static int32_t compile(rawdata *r)
{
    static toktype ti;
    ti_settok(&ti, r->quals.data());
    pi_allow_reset(parinfo);
    parinfo->pi_vlist = parinfo->pi_exp = parinfo->pi_wgt = parinfo->pi_using =
        parinfo->pi_opts = PI_NO;
    parinfo->pi_if = PI_OK;
    parinfo->pi_in = PI_WIDE;
    return ti_parse1(&ti, parinfo);
}

int32_t raw_begin(rawdata *r)
{
    char fmt[16];
    drop_all();
    for (rawvar &v : r->vars) {
        if (!v.type)
            v.type = type_ofword(set_type);
        int32_t rc = dsa_add_var(sysdsa, v.type, v.name.c_str(), fmt_default(v.type, fmt));
        if (rc)
            return rc;
        if (!v.label.empty() && (rc = putvarlab(_Kvar, v.label.c_str())))
            return rc;
        strcpy(_lbllist[_Kvar - 1], v.vallab.c_str());
    }
    _i_Kvar = _Kvar;
    return compile(r);
}

int32_t raw_row(rawdata *r)
{
    r->row++;
    return dsa_add_obs(sysdsa, 1, true);
}

// ---- values

static void not_a_number(rawdata *r, size_t k, const std::string &text, uint32_t obs)
{
    constexpr int32_t shown = 20;
    if (r->bad++ < shown)
        spout21fat(1, "'%s' cannot be read as a number for %s[%u]\n", text.c_str(),
                   r->vars[k].name.c_str(), obs);
    else if (r->bad == shown + 1)
        spout21at(1, "(further ones not shown)\n");
}

// The number behind a text in a labelled variable; with automatic a new one when need be.
static bool by_label(const rawdata *r, size_t k, const std::string &text, double *z)
{
    const char *name = r->vars[k].vallab.c_str();
    vltable *t = vlfind(name);
    int32_t value;
    if (t && !vlfindtxt(t, text.c_str(), &value)) {
        *z = value;
        return true;
    }
    if (!r->automatic || text.empty())
        return false;
    int32_t n = vlgetcount(t);
    const char *last;
    value = 0;
    if (n)
        vlgetofi(t, n - 1, &last, &value);
    *z = ++value;
    if (t)
        return vladdlab(t, value, text.c_str()) != nullptr;
    vlpair pair = {value, text.c_str()};
    return vlbuild(name, &pair, 1) != nullptr;
}

void raw_put(rawdata *r, size_t k, const char *text, size_t n, int32_t obs0)
{
    const rawvar &v = r->vars[k];
    while (v.trim && n && (*text == ' ' || *text == '\t'))
        text++, n--;
    while (v.trim && n && (text[n - 1] == ' ' || text[n - 1] == '\t'))
        n--;
    auto var = uint32_t(k) + 1, obs = uint32_t(obs0 ? obs0 : _Nobs);
    if (t_isstr(v.type)) {
        char buf[245] = "";
        r->cut += n > v.type;
        memcpy(buf, text, std::min<size_t>(n, v.type));
        buf[std::min<size_t>(n, v.type)] = 0;
        dsa_sstore(sysdsa, var, obs, buf);
        return;
    }
    double z = misval;
    if (n == 0)
        return;
    if (cnvstozn(text, int32_t(n), &z)) {
        std::string word(text, n);
        if (v.vallab.empty() || !by_label(r, k, word, &z))
            return not_a_number(r, k, word, obs);
    } else if (v.decimals && z < misval && !memchr(text, '.', n)) {
        z /= std::pow(10, v.decimals);
    }
    dsa_store(z, sysdsa, var, obs);
}

bool raw_keep(rawdata *r)
{
    if (!parinfo->pi_hasif && !parinfo->pi_hasin)
        return true;
    nobss1 = 1;
    nobss2 = _Nobs;
    bool in = !parinfo->pi_hasin || (r->row >= parinfo->pi_obs1 && r->row <= parinfo->pi_obs2);
    if (!in || !selobs(_Nobs))
        dsa_truncate_obs_fast(sysdsa, uint32_t(_Nobs) - 1);
    return !parinfo->pi_hasin || r->row < parinfo->pi_obs2;
}

int32_t raw_end(rawdata *r, int32_t rc)
{
    if (rc) {
        drop_all();
        return rc;
    }
    s_updata = newdata = newDtaset = true;
    if (r->cut)
        spout21fat(1, "(%lld text%s cut to the width of the variable)\n", (long long)r->cut,
                   plural(r->cut));
    spout21fat(1, "(%d observation%s read)\n", _Nobs, plural(_Nobs));
    return stopflag;
}
