// commands/describe.cpp - _describe: what the dataset holds, variable by variable.
//
//   _describe [varlist] [, short simple fullnames numbers]
//   _describe [varlist] using FILE [, the same, or layout]
//
// Of a file only the header and the dictionary are read; layout lists its fields by offset.
#include "commands/filevars.h"
#include "commands/rawdata.h"
#include "core/files.h"
#include "core/missing.h"
#include "core/rc.h"
#include "core/state.h"
#include "data/dsa.h"
#include "data/labels.h"
#include "data/variables.h"
#include "expr/parse.h"
#include "expr/strfun.h"
#include "interp/macros.h"
#include "interp/messages.h"
#include "output/fmt.h"
#include "output/oml.h"
#include "output/print.h"
#include "stats/esample.h"
#include "stats/results.h"
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

namespace {

struct descopts {
    bool brief, simple, fullnames, numbers, layout;
};

// What is described: the dataset in memory, or the dictionary of a file.
struct descvar {
    int32_t number;
    const char *name, *fmt, *lbl;
    uint8_t type;
    char label[81];
};
struct described {
    std::vector<descvar> vars;
    std::vector<std::string> sortedby;
    std::string file, stamp, label;
    double N, K, width;
    bool changed;
};

int32_t options(descopts *o)
{
    o->brief = ti_pi_findopt(tokinfo, parinfo, "short", 1, 0);
    o->simple = ti_pi_findopt(tokinfo, parinfo, "simple", 2, 0);
    o->fullnames = ti_pi_findopt(tokinfo, parinfo, "fullnames", 1, 0);
    o->numbers = ti_pi_findopt(tokinfo, parinfo, "numbers", 1, 0);
    o->layout = ti_pi_findopt(tokinfo, parinfo, "layout", 3, 0);
    if (int32_t rc = ti_pi_chkopt(tokinfo, parinfo))
        return rc;
    if (o->fullnames && o->numbers)
        return errout(RC_SYNTAX, "options fullnames and numbers may not be combined\n");
    return 0;
}

int32_t of_memory(descopts *o, described *d)
{
    parinfo->pi_vlist = PI_OK;
    parinfo->pi_opts = PI_OK;
    parinfo->pi_blankall = 1;
    int32_t rc = ti_pi_parse(tokinfo, parinfo);
    if (rc || (rc = options(o)))
        return rc;
    if (o->layout)
        return errout(RC_SYNTAX, "option layout goes with using only\n");
    char text[macrolen];
    macuse("S_FN", text);
    d->file = text;
    macuse("S_FNDATE", text);
    d->stamp = text;
    d->label = datalbl;
    d->N = _Nobs;
    d->K = _Kvar - esample_count();
    d->width = double(sysdsa->lrec);
    d->changed = s_updata;
    for (int32_t i = 0; i < parinfo->pi_nvar; i++) {
        int32_t k = parinfo->vl_vr[i] - 1;
        descvar v = {k + 1, _varlist[k], _fmtlist[k], _lbllist[k], _typlist[k], ""};
        getvarlab(k + 1, v.label);
        d->vars.push_back(v);
    }
    for (const int16_t *s = _srtlist; s && *s; s++)
        d->sortedby.emplace_back(_varlist[*s - 1]);
    return 0;
}

int32_t of_file(descopts *o, described *d, dtadict *f)
{
    rawline l;
    int32_t rc = raw_split(&l);
    if (rc || (rc = raw_options(&l)) || (rc = options(o)))
        return rc;
    if (l.quals.find_first_not_of(' ') != std::string::npos)
        return error(RC_SYNTAX);
    d->file = path_addext(l.file, ".dta");
    if ((rc = dta_peek(d->file.c_str(), f)))
        return rc;
    bool all = l.before.find_first_not_of(' ') == std::string::npos;
    std::vector<uint8_t> wanted;
    if ((rc = filevars_pick(f, all ? "_all" : l.before, &wanted)) && f->K)
        return rc;
    d->stamp = f->h.stamp;
    d->label = f->h.label;
    d->N = f->N;
    d->K = f->K;
    d->width = double(f->width);
    d->changed = false;
    for (int32_t k = 0; k < f->K; k++)
        if (wanted[size_t(k)]) {
            descvar v = {k + 1,        f->names[k], f->fmts[k],
                         f->lbls[k], dsa_modernvartype(f->types[k]), ""};
            memcpy(v.label, f->varlabs[k], sizeof v.label);
            d->vars.push_back(v);
        }
    for (int32_t i = 0; i < f->K && f->srt[i] > 0 && f->srt[i] <= f->K; i++)
        d->sortedby.emplace_back(f->names[f->srt[i] - 1]);
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

void heading(const described *d)
{
    newline();
    if (!d->file.empty()) {
        spout21at(1, "Contains data from ");
        spout21fat(0, "%s\n", d->file.c_str());
    } else {
        spout21at(1, "Contains data\n");
    }
    fact("obs", d->N, d->label.c_str());
    fact("vars", d->K, d->stamp.c_str());
    fact("size", d->N * d->width, "");
}

void row(const descopts *o, const descvar &v)
{
    char name[246], type[8], num[16] = "";
    int32_t w = 15;
    if (o->fullnames)
        snprintf(name, sizeof name, "%s", v.name);
    else
        str_abbrev(name, v.name, o->numbers ? 8 : w);
    if (o->numbers)
        snprintf(num, sizeof num, "%5d. ", v.number);
    spout21fat(0, "%s", num);
    spout21fat(0, "%-*s ", o->numbers ? 8 : w, name);
    if (o->fullnames && strlen(name) > size_t(w))
        spout21fat(1, "\n%*s ", w, "");
    spout21fat(1, "%-7s %-10s ", type_word(v.type, type), v.fmt);
    if (*v.label) {
        spout21fat(1, "%-10s ", v.lbl);
        spout21fat(0, "%s\n", v.label);
    } else {
        spout21fat(1, "%s\n", v.lbl);
    }
}

void sorted_by(const described *d)
{
    spout21at(1, "Sorted by:");
    for (const std::string &s : d->sortedby)
        spout21fat(0, "  %s", s.c_str());
    newline();
}

// Names alone, in columns down the screen.
void simple_list(const described *d)
{
    size_t n = d->vars.size(), widest = 0;
    for (const descvar &v : d->vars)
        widest = std::max(widest, strlen(v.name));
    size_t per = std::max<size_t>(size_t(omlquery_maxwidth(oml_cur)) / (widest + 2), 1);
    size_t lines = (n + per - 1) / per;
    for (size_t r = 0; r < lines && !stopflag; r++) {
        for (size_t i = r; i < n; i += lines)
            spout21fat(0, "%-*s", i + lines < n ? int(widest) + 2 : 0, d->vars[i].name);
        newline();
    }
}

void post(const described *d)
{
    retval_clear();
    retval_set_gscalar(d->N, "N");
    retval_set_gscalar(d->K, "k");
    retval_set_gscalar(d->width, "width");
    retval_set_gscalar(sysdsa->_N_max - 1, "N_max");
    retval_set_gscalar(maxmaxvar, "k_max");
    retval_set_gscalar(d->changed, "changed");
    std::string by;
    for (const std::string &s : d->sortedby)
        by += (by.empty() ? "" : " ") + s;
    retval_set_glocal("sortlist", by.c_str());
}

}  // namespace

int32_t describecmd(int32_t);
int32_t describecmd(int32_t)
{
    descopts o = {};
    described d;
    dtadict f;
    bool file = raw_using();
    int32_t rc = file ? of_file(&o, &d, &f) : of_memory(&o, &d);
    if (rc)
        return rc;
    outlev_keep keep(1);
    if (o.layout)
        return dta_dump(d.file.c_str());
    if (o.simple) {
        simple_list(&d);
        post(&d);
        return stopflag;
    }
    heading(&d);
    if (!o.brief) {
        rule();
        const char *pad = o.numbers ? "" : "              ";
        spout21fat(1, "%s%s storage   display    value\n", pad, o.numbers ? "               " : "");
        spout21fat(1, "%s   type    format     label      variable label\n",
                   o.numbers ? " variable name" : "variable name");
        rule();
        for (size_t i = 0; i < d.vars.size() && !stopflag; i++)
            row(&o, d.vars[i]);
        rule();
    }
    sorted_by(&d);
    if (d.changed)
        spout21at(1, "     Note:  dataset has changed since last saved\n");
    post(&d);
    return stopflag;
}
