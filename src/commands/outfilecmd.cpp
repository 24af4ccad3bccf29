// commands/outfilecmd.cpp - outfile: the dataset as words that infile reads back.
//
//   outfile [varlist] using FILE [if] [in]
//           [, comma dictionary nolabel noquote replace rjs fjs runtogether wide]
//
// Numbers stand as they are displayed, in columns; texts in quotes. Lines are folded at 80
// columns unless wide; with comma there are no columns and a missing value is empty.
#include "commands/textdata.h"
#include "core/files.h"
#include "core/missing.h"
#include "core/rc.h"
#include "core/state.h"
#include "data/dsa.h"
#include "data/labels.h"
#include "expr/parse.h"
#include "interp/messages.h"
#include "output/fmt.h"
#include <cstring>
#include <string>

namespace {

struct outcmd {
    bool comma, dict, label, quote, replace, right, asformat, together, wide;
};
constexpr size_t linewidth = 80;
char text[vl_maxtext + 1];  // a cell's text, before it is quoted

int32_t parse(outcmd *o)
{
    parinfo->pi_vlist = parinfo->pi_in = parinfo->pi_if = parinfo->pi_opts = PI_OK;
    parinfo->pi_blankall = 1;
    parinfo->pi_using = PI_REQ;
    int32_t rc = ti_pi_parse(tokinfo, parinfo);
    if (rc)
        return rc;
    o->comma = ti_pi_findopt(tokinfo, parinfo, "comma", 1, 0);
    o->dict = ti_pi_findopt(tokinfo, parinfo, "dictionary", 1, 0);
    o->label = ti_pi_findopt(tokinfo, parinfo, "label", 3, 1);
    o->quote = ti_pi_findopt(tokinfo, parinfo, "quote", 3, 1);
    o->replace = ti_pi_findopt(tokinfo, parinfo, "replace", 7, 0);
    o->right = ti_pi_findopt(tokinfo, parinfo, "rjs", 3, 0);
    o->asformat = ti_pi_findopt(tokinfo, parinfo, "fjs", 3, 0);
    o->together = ti_pi_findopt(tokinfo, parinfo, "runtogether", 5, 0);
    o->wide = ti_pi_findopt(tokinfo, parinfo, "wide", 1, 0);
    if ((rc = ti_pi_chkopt(tokinfo, parinfo)))
        return rc;
    if (o->right + o->asformat > 1 || (o->comma && (o->right || o->asformat || o->together)))
        return error(184);
    if (!_Kvar)
        return error(RC_NOTFOUND);
    for (int32_t i = 0; o->together && i < parinfo->pi_nvar; i++)
        if (!t_isstr(_typlist[parinfo->vl_vr[i] - 1]))
            return errout(109, "runtogether takes string variables only\n");
    return 0;
}

// The cell as text; true when it is to be quoted.
bool cell(const outcmd *o, int32_t var, int32_t obs)
{
    if (t_isstr(_typlist[var - 1])) {
        dsa_sdata(sysdsa, uint32_t(var), uint32_t(obs), text);
        return true;
    }
    double z = dsa_data(sysdsa, uint32_t(var), uint32_t(obs));
    const char *label = _lbllist[var - 1];
    if (o->label && *label) {
        const vltable *t = vlfind(label);
        if (t && vlfindval(t, z, text, sizeof text) >= 0)
            return true;
    }
    *text = 0;
    if (z == misval && o->comma)
        return false;
    fmtnumtrim(text, sizeof text, z, _fmtlist[var - 1]);
    return strpbrk(text, " ,") != nullptr;
}

// A text that holds a double quote goes between single ones.
void quoted(std::string *s)
{
    char q = strchr(text, '"') ? '\'' : '"';
    *s = q + std::string(text) + q;
}

void pad(const outcmd *o, std::string *s, int32_t var, bool isquoted)
{
    fmtinfo f;
    if (chkfmt(_fmtlist[var - 1], &f))
        return;
    size_t width = size_t(f.width) + (isquoted ? 2 : 0);
    bool left = isquoted || t_isstr(_typlist[var - 1]);
    if (o->right)
        left = false;
    if (o->asformat)
        left = f.left;
    if (s->size() < width)
        s->insert(left ? s->size() : 0, width - s->size(), ' ');
}

void row(const void *arg, std::string *out, int32_t obs)
{
    const outcmd *o = static_cast<const outcmd *>(arg);
    std::string s;
    size_t at = 0;  // columns used of the line
    for (int32_t i = 0; i < parinfo->pi_nvar; i++) {
        int32_t var = parinfo->vl_vr[i];
        bool q = cell(o, var, obs) && o->quote && !o->together;
        if (q)
            quoted(&s);
        else
            s = text;
        if (!o->comma)
            pad(o, &s, var, q);
        bool fold = !o->wide && !o->comma && at && at + 1 + s.size() > linewidth;
        if (fold) {
            while (out->back() == ' ')
                out->pop_back();
            *out += '\n';
            at = 0;
        } else if (i && !o->together) {
            *out += o->comma ? ',' : ' ';
            at++;
        }
        *out += s;
        at += s.size();
    }
    while (!o->comma && !out->empty() && out->back() == ' ')
        out->pop_back();
    *out += '\n';
}

void dictionary(const outcmd *o, std::string *out)
{
    char word[8], label[81];
    *out += "dictionary {\n";
    for (int32_t i = 0; i < parinfo->pi_nvar; i++) {
        int32_t var = parinfo->vl_vr[i];
        bool vl = o->label && vlfind(_lbllist[var - 1]);
        *out += std::string("\t") + type_word(_typlist[var - 1], word) + " " + _varlist[var - 1] +
                (vl ? std::string(":") + _lbllist[var - 1] : "");
        getvarlab(var, label);
        if (*label)
            *out += std::string(" \"") + label + "\"";
        *out += '\n';
    }
    *out += "}\n";
}

}  // namespace

int32_t outfilecmd(int32_t);
int32_t outfilecmd(int32_t)
{
    outcmd o = {};
    int32_t rc = parse(&o);
    if (rc)
        return rc;
    // A dictionary is read line by line, so its rows are not folded.
    o.wide |= o.dict;
    std::string file = path_addext(parinfo->pi_using_name, o.dict ? ".dct" : ".raw");
    std::string head;
    if (o.dict)
        dictionary(&o, &head);
    return text_save(file, o.replace, head, row, &o);
}
