// commands/describe.cpp - _describe: what the dataset holds, variable by variable.
#include "core/missing.h"
#include "core/rc.h"
#include "core/state.h"
#include "data/dsa.h"
#include "data/labels.h"
#include "expr/parse.h"
#include "expr/strfun.h"
#include "interp/macros.h"
#include "interp/messages.h"
#include "output/fmt.h"
#include "output/oml.h"
#include "output/print.h"
#include "stats/esample.h"
#include "stats/results.h"
#include <cstdio>
#include <cstring>
#include <string>

namespace {

struct descopts {
    bool brief, simple, fullnames, numbers;
};

int32_t parse(descopts *o)
{
    parinfo->pi_vlist = PI_OK;
    parinfo->pi_opts = PI_OK;
    parinfo->pi_blankall = 1;
    int32_t rc = ti_pi_parse(tokinfo, parinfo);
    if (rc)
        return rc;
    o->brief = ti_pi_findopt(tokinfo, parinfo, "short", 1, 0);
    o->simple = ti_pi_findopt(tokinfo, parinfo, "simple", 2, 0);
    o->fullnames = ti_pi_findopt(tokinfo, parinfo, "fullnames", 1, 0);
    o->numbers = ti_pi_findopt(tokinfo, parinfo, "numbers", 1, 0);
    if ((rc = ti_pi_chkopt(tokinfo, parinfo)))
        return rc;
    if (o->fullnames && o->numbers)
        return errout(RC_SYNTAX, "options fullnames and numbers may not be combined\n");
    return 0;
}

void rule()
{
    std::string s(size_t(omlquery_maxwidth(oml_cur)), '-');
    s += '\n';
    spout21at(1, s.c_str());
}

void fact(const char *word, double z, const char *right)
{
    char buf[40];
    spout21fat(1, "%6s:", word);
    spout21fat(0, "%14s", fmt_comma(buf, z));
    if (*right)
        spout21fat(0, "%14s%s", "", right);
    newline();
}

void heading()
{
    char file[macrolen], date[macrolen];
    macuse("S_FN", file);
    macuse("S_FNDATE", date);
    newline();
    if (*file) {
        spout21at(1, "Contains data from ");
        spout21fat(0, "%s\n", file);
    } else {
        spout21at(1, "Contains data\n");
    }
    fact("obs", _Nobs, datalbl);
    fact("vars", _Kvar - esample_count(), date);
    fact("size", double(_Nobs) * double(sysdsa->lrec), "");
}

void row(const descopts *o, int32_t var)
{
    char name[246], type[8], label[81], num[16] = "";
    int32_t w = 15;
    if (o->fullnames)
        snprintf(name, sizeof name, "%s", _varlist[var - 1]);
    else
        str_abbrev(name, _varlist[var - 1], o->numbers ? 8 : w);
    if (o->numbers)
        snprintf(num, sizeof num, "%5d. ", var);
    getvarlab(var, label);
    spout21fat(0, "%s", num);
    spout21fat(0, "%-*s ", o->numbers ? 8 : w, name);
    if (o->fullnames && strlen(name) > size_t(w))
        spout21fat(1, "\n%*s ", w, "");
    spout21fat(1, "%-7s %-10s ", type_word(_typlist[var - 1], type), _fmtlist[var - 1]);
    if (*label) {
        spout21fat(1, "%-10s ", _lbllist[var - 1]);
        spout21fat(0, "%s\n", label);
    } else {
        spout21fat(1, "%s\n", _lbllist[var - 1]);
    }
}

void sorted_by()
{
    spout21at(1, "Sorted by:");
    for (const int16_t *s = _srtlist; s && *s; s++)
        spout21fat(0, "  %s", _varlist[*s - 1]);
    newline();
}

// Names alone, in columns down the screen.
void simple_list()
{
    int32_t n = parinfo->pi_nvar, widest = 0;
    for (int32_t i = 0; i < n; i++) {
        int32_t w = int32_t(strlen(_varlist[parinfo->vl_vr[i] - 1]));
        widest = w > widest ? w : widest;
    }
    int32_t per = omlquery_maxwidth(oml_cur) / (widest + 2);
    if (per < 1)
        per = 1;
    int32_t lines = (n + per - 1) / per;
    for (int32_t r = 0; r < lines && !stopflag; r++) {
        for (int32_t i = r; i < n; i += lines)
            spout21fat(0, "%-*s", i + lines < n ? widest + 2 : 0,
                       _varlist[parinfo->vl_vr[i] - 1]);
        newline();
    }
}

void post()
{
    retval_clear();
    retval_set_gscalar(_Nobs, "N");
    retval_set_gscalar(_Kvar - esample_count(), "k");
    retval_set_gscalar(double(sysdsa->lrec), "width");
    retval_set_gscalar(sysdsa->_N_max - 1, "N_max");
    retval_set_gscalar(maxmaxvar, "k_max");
    retval_set_gscalar(s_updata, "changed");
    std::string by;
    for (const int16_t *s = _srtlist; s && *s; s++)
        by += (by.empty() ? "" : " ") + std::string(_varlist[*s - 1]);
    retval_set_glocal("sortlist", by.c_str());
}

}  // namespace

int32_t describecmd(int32_t);
int32_t describecmd(int32_t)
{
    descopts o = {};
    int32_t rc = parse(&o);
    if (rc)
        return rc;
    outlev_keep keep(1);
    if (o.simple) {
        simple_list();
        post();
        return stopflag;
    }
    heading();
    if (!o.brief) {
        rule();
        const char *pad = o.numbers ? "" : "              ";
        spout21fat(1, "%s%s storage   display    value\n", pad, o.numbers ? "               " : "");
        spout21fat(1, "%s   type    format     label      variable label\n",
                   o.numbers ? " variable name" : "variable name");
        rule();
        for (int32_t i = 0; i < parinfo->pi_nvar && !stopflag; i++)
            row(&o, parinfo->vl_vr[i]);
        rule();
    }
    sorted_by();
    if (s_updata)
        spout21at(1, "     Note:  dataset has changed since last saved\n");
    post();
    return stopflag;
}
