// commands/outsheet.cpp - outsheet: the dataset as text, one line an observation.
//
// Numbers are written with as few digits as read back the same; dates by their formats;
// labelled values by their labels unless nolabel. System missing is an empty field.
#include "commands/textdata.h"
#include "core/files.h"
#include "core/missing.h"
#include "core/numtext.h"
#include "core/rc.h"
#include "core/state.h"
#include "data/dsa.h"
#include "data/labels.h"
#include "expr/parse.h"
#include "interp/messages.h"
#include "output/fmt.h"
#include "output/print.h"
#include <cstring>
#include <string>

namespace {

struct outcmd {
    char delim;
    bool names, label, quote, replace;
};

int32_t parse(outcmd *o)
{
    parinfo->pi_vlist = PI_OK;
    parinfo->pi_blankall = 1;
    parinfo->pi_in = parinfo->pi_if = parinfo->pi_opts = PI_OK;
    parinfo->pi_using = PI_REQ;
    int32_t rc = ti_pi_parse(tokinfo, parinfo);
    if (rc)
        return rc;
    bool comma = ti_pi_findopt(tokinfo, parinfo, "comma", 1, 0);
    char buf[8] = "";
    int32_t has = ti_pi_findargasis(tokinfo, parinfo, "delimiter", 3, buf, sizeof buf);
    o->names = ti_pi_findopt(tokinfo, parinfo, "names", 3, 1);
    o->label = ti_pi_findopt(tokinfo, parinfo, "label", 3, 1);
    o->quote = ti_pi_findopt(tokinfo, parinfo, "quote", 3, 1);
    o->replace = ti_pi_findopt(tokinfo, parinfo, "replace", 7, 0);
    if ((rc = ti_pi_chkopt(tokinfo, parinfo)))
        return rc;
    const char *d = *buf == '"' ? buf + 1 : buf;
    if ((comma && has) || (has && !*d))
        return error(RC_SYNTAX);
    o->delim = comma ? ',' : has ? *d : '\t';
    return _Kvar ? 0 : error(RC_NOTFOUND);
}

void put_quoted(std::string *line, const char *text, bool quote)
{
    if (!quote) {
        *line += text;
        return;
    }
    *line += '"';
    for (; *text; text++) {
        if (*text == '"')
            *line += '"';
        *line += *text;
    }
    *line += '"';
}

void put_cell(const outcmd *o, std::string *line, int32_t var, int32_t obs)
{
    char buf[256];
    if (t_isstr(_typlist[var - 1])) {
        put_quoted(line, dsa_sdata(sysdsa, uint32_t(var), uint32_t(obs), buf), o->quote);
        return;
    }
    double z = dsa_data(sysdsa, uint32_t(var), uint32_t(obs));
    const char *label = _lbllist[var - 1];
    if (o->label && *label) {
        const vltable *t = vlfind(label);
        if (t && vlfindval(t, z, buf, sizeof buf) >= 0) {
            put_quoted(line, buf, o->quote);
            return;
        }
    }
    if (z == misval)
        return;
    if (fmt_isdate(_fmtlist[var - 1])) {
        fmtnumtrim(buf, sizeof buf, z, _fmtlist[var - 1]);
        *line += buf;
        return;
    }
    if (_typlist[var - 1] == T_FLOAT)
        fmtnumtrim(buf, sizeof buf, z, "%12.0g");
    double back;
    if (_typlist[var - 1] != T_FLOAT || cnvstoz(buf, &back) || float(back) != float(z))
        cnvztos(z, buf);
    *line += buf;
}

std::string heading(const outcmd *o)
{
    std::string line;
    for (int32_t i = 0; o->names && i < parinfo->pi_nvar; i++) {
        if (i)
            line += o->delim;
        line += _varlist[parinfo->vl_vr[i] - 1];
    }
    return o->names ? line + '\n' : line;
}

void put_row(const void *arg, std::string *line, int32_t obs)
{
    const outcmd *o = static_cast<const outcmd *>(arg);
    for (int32_t i = 0; i < parinfo->pi_nvar; i++) {
        if (i)
            *line += o->delim;
        put_cell(o, line, parinfo->vl_vr[i], obs);
    }
    *line += '\n';
}

}  // namespace

int32_t outsheet(int32_t);
int32_t outsheet(int32_t)
{
    outcmd o = {};
    int32_t rc = parse(&o);
    if (rc)
        return rc;
    std::string file = path_addext(parinfo->pi_using_name, o.delim == ',' ? ".csv" : ".out");
    return text_save(file, o.replace, heading(&o), put_row, &o);
}
