// commands/labelcmd.cpp - _label: labels of the data, of variables and of values.
//
//   label data ["text"]                      label dir
//   label variable var ["text"]              label list [names]
//   label values varlist [name | .]          label drop names | _all
//   label define name # "text" ... [, add modify replace nofix]
//   label save [names] using file [, replace]
//   label language, label check        labellang.cpp, labelcheck.cpp
#include "commands/labelsub.h"
#include "core/files.h"
#include "core/limits.h"
#include "core/numtext.h"
#include "core/rc.h"
#include "core/state.h"
#include "core/text.h"
#include "data/dsa.h"
#include "data/labels.h"
#include "data/variables.h"
#include "expr/parse.h"
#include "interp/dm.h"
#include "interp/interp.h"
#include "interp/messages.h"
#include "output/fmt.h"
#include "output/print.h"
#include "stats/results.h"
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <map>
#include <string>
#include <vector>

int32_t labelcmd(int32_t);

namespace {

// A quoted text of any length; false when none stands here.
bool quoted(std::string *text)
{
    char *start, *end, *next;
    ti_trimtokwhite(tokinfo);
    if (ti_parse_quoted_string(tokinfo, ti_wheretok(tokinfo), &start, &end, &next))
        return false;
    text->assign(start, size_t(end - start));
    tokinfo->c_ptr = next;
    tokinfo->lc_ptr = nullptr;
    return true;
}

// The text that ends a line: quoted, a bare word, or nothing.
int32_t last_text(std::string *text)
{
    if (!quoted(text))
        *text = tok_text(ti_gettok(tokinfo, " "));
    return *ti_gettok(tokinfo, prsestd) ? error(RC_SYNTAX) : 0;
}

void note_cut(const std::string &text)
{
    if (text.size() > size_t(varlablen))
        spout21at(1, "note: label truncated to 80 characters\n");
}

int32_t label_data()
{
    std::string text;
    int32_t rc = last_text(&text);
    if (rc)
        return rc;
    note_cut(text);
    strcut(datalbl, sizeof datalbl, text.c_str());
    s_updata = true;
    return 0;
}

int32_t label_variable()
{
    const char *word = tok_text(ti_gettok(tokinfo, prsevar));
    if (!*word)
        return required("varname");
    int32_t var = findtyped(std::string(word).c_str(), !ovata_varabbrev), rc;
    if (var < 0)
        return -var;
    std::string text;
    if ((rc = last_text(&text)))
        return rc;
    note_cut(text);
    s_updata = true;
    return putvarlab(var, text.c_str());
}

// ---- formats follow the labels: %9.0g becomes %12.0g when a text is 12 long

void widen_format(int32_t var, int32_t width)
{
    fmtinfo f;
    char *fmt = _fmtlist[var - 1];
    if (t_isstr(_typlist[var - 1]) || chkfmt(fmt, &f) || !strchr("gfe", f.kind) ||
        f.width >= width)
        return;
    std::string s = "%";
    s += f.left ? "-" : "";
    s += f.zero ? "0" : "";
    s += std::to_string(std::min(width, 80));
    const char *rest = fmt + 1;
    rest += strspn(rest, "-0123456789");
    s += rest;
    if (s.size() <= size_t(fmtlen) && !chkfmt(s.c_str(), nullptr)) {
        strcut(fmt, 49, s.c_str());
        upFormat = true;
    }
}

void fix_formats(const char *name)
{
    int32_t width = vlmaxlen(vlfind(name));
    for (int32_t k = 1; k <= _i_Kvar; k++)
        if (!strcmp(_lbllist[k - 1], name))
            widen_format(k, width);
}

// ---- define

struct pair {
    int32_t value;
    std::string text;
};

int32_t take_value(const char *word, int32_t *value)
{
    double z;
    if (cnvstoz(word, &z) || (z < misval && z != double(int64_t(z))) || z == misval)
        return errout(RC_SYNTAX, "may not label %s\n", word);
    *value = ovlong_of_ovdouble(z);
    if (z < misval && double(*value) != z)
        return errout(RC_SYNTAX, "may not label %s\n", word);
    return 0;
}

int32_t take_pairs(std::vector<pair> *pairs)
{
    for (;;) {
        char next = ti_peektok_chr(tokinfo);
        if (!next || next == ',')
            return 0;
        pair p;
        std::string word = tok_text(ti_gettok(tokinfo, prsenum));
        int32_t rc = take_value(word.c_str(), &p.value);
        if (rc)
            return rc;
        if (!quoted(&p.text)) {
            next = ti_peektok_chr(tokinfo);
            if (!next || next == ',')
                return error(RC_SYNTAX);
            p.text = tok_text(ti_gettok(tokinfo, " ,"));
        }
        pairs->push_back(p);
    }
}

struct defopts {
    bool add, modify, replace, fix;
};

int32_t take_defopts(defopts *o)
{
    parinfo->pi_vlist = parinfo->pi_if = parinfo->pi_in = PI_NO;
    parinfo->pi_opts = PI_OK;
    int32_t rc = ti_pi_parse(tokinfo, parinfo);
    if (rc)
        return rc;
    o->add = ti_pi_findopt(tokinfo, parinfo, "add", 1, 0);
    o->modify = ti_pi_findopt(tokinfo, parinfo, "modify", 1, 0);
    o->replace = ti_pi_findopt(tokinfo, parinfo, "replace", 1, 0);
    o->fix = ti_pi_findopt(tokinfo, parinfo, "fix", 3, 1);
    return ti_pi_chkopt(tokinfo, parinfo);
}

// What the table will hold: the old entries in the order of their texts, then the new ones.
int32_t merge_pairs(const vltable *old, const std::vector<pair> &pairs, const defopts &o,
                    std::vector<pair> *all)
{
    struct kept {
        const char *text;
        int32_t value;
    };
    std::vector<kept> was;
    std::map<int32_t, size_t> at;
    for (int32_t i = 0; i < vlgetcount(old) && !o.replace; i++) {
        kept k;
        vlgetofi(old, i, &k.text, &k.value);
        was.push_back(k);
    }
    std::sort(was.begin(), was.end(), [](const kept &a, const kept &b) { return a.text < b.text; });
    for (const kept &k : was) {
        at[k.value] = all->size();
        all->push_back({k.value, k.text});
    }
    size_t nold = all->size();
    for (const pair &p : pairs) {
        auto found = at.find(p.value);
        // add alone may bring new values only.
        if (found != at.end() && found->second < nold && !o.modify)
            return error(7196);
        if (found != at.end())
            (*all)[found->second].text.assign(1, '\0');  // gone; its place is not reused
        at[p.value] = all->size();
        all->push_back(p);
    }
    std::vector<pair> left;
    for (const pair &p : *all)
        if (!p.text.empty() && p.text != std::string(1, '\0'))
            left.push_back(p);
    all->swap(left);
    return 0;
}

int32_t label_define()
{
    char name[33];
    std::string word = tok_text(ti_gettok(tokinfo, prsestd));
    int32_t rc = chksinglename(word.c_str(), false);
    if (rc)
        return rc;
    strcut(name, sizeof name, word.c_str());
    std::vector<pair> pairs, all;
    defopts o;
    if ((rc = take_pairs(&pairs)) || (rc = take_defopts(&o)))
        return rc;
    vltable *old = vlfind(name);
    if (old && !o.add && !o.modify && !o.replace)
        return errout(RC_EXISTS, "label %s already defined\n", name);
    if ((rc = merge_pairs(old, pairs, o, &all)))
        return rc;
    std::vector<vlpair> flat;
    for (const pair &p : all)
        flat.push_back({p.value, p.text.c_str()});
    // The new table stands in front of the old one, which goes last.
    if (!vlbuild(name, flat.data(), int32_t(flat.size()))) {
        rc = vlwhy();
        return rc;
    }
    dmrm(old);
    if (o.fix)
        fix_formats(name);
    s_updata = true;
    return 0;
}

// ---- values

int32_t label_values()
{
    // The last word is the label; without a varlist before it the labels are taken off.
    std::string line = ti_wheretok(tokinfo), label = ".";
    size_t comma = line.find(',');
    bool fix = true;
    if (comma != std::string::npos) {
        std::string opt = line.substr(comma + 1);
        opt.erase(0, opt.find_first_not_of(' '));
        opt.erase(opt.find_last_not_of(' ') + 1);
        if (opt != "nofix" && !opt.empty())
            return errout(RC_SYNTAX, "option %s not allowed\n", opt.c_str());
        fix = opt != "nofix";
        line.erase(comma);
    }
    line.erase(line.find_last_not_of(' ') + 1);
    size_t blank = line.find_last_of(' ');
    std::string last = blank == std::string::npos ? "" : line.substr(blank + 1);
    std::string before = blank == std::string::npos ? "" : line.substr(0, blank);
    if (before.find_first_not_of(' ') != std::string::npos) {
        label = last;
        line = before;
    }
    if (label != ".") {
        int32_t rc = chksinglename(label.c_str(), false);
        if (rc)
            return rc;
    }
    toktype ti;
    ti_settok(&ti, line.data());
    parinfo->pi_vlist = PI_REQ;
    parinfo->pi_if = parinfo->pi_in = parinfo->pi_opts = PI_NO;
    int32_t rc = ti_pi_parse(&ti, parinfo);
    if (rc)
        return rc;
    for (int32_t i = 0; i < parinfo->pi_nvar; i++)
        if (label != "." && t_isstr(_typlist[parinfo->vl_vr[i] - 1]))
            return error(181);
    for (int32_t i = 0; i < parinfo->pi_nvar; i++)
        strcut(_lbllist[parinfo->vl_vr[i] - 1], 33, label == "." ? "" : label.c_str());
    if (label != "." && fix)
        fix_formats(label.c_str());
    s_updata = upValLabel = true;
    return 0;
}

// ---- dir, list, drop, save

// All tables by name.
std::vector<std::string> tables()
{
    std::vector<std::string> v;
    char name[33];
    for (void *p = nullptr; (p = dmnext(p, name, DM_VALLABEL, nullptr));)
        v.emplace_back(name);
    std::sort(v.begin(), v.end());
    return v;
}

// The names typed, each checked; all of them when none is typed.
int32_t named(std::vector<std::string> *v, bool allword)
{
    for (;;) {
        std::string word = tok_text(ti_gettok(tokinfo, prsestd));
        if (word.empty() || word == "," || word == "using") {
            if (!word.empty())
                ti_ungettok(tokinfo);
            break;
        }
        if (allword && word == "_all") {
            *v = tables();
            continue;
        }
        if (!vlfind(word.c_str()))
            return labnotfound(word.c_str());
        v->push_back(word);
    }
    return 0;
}

int32_t label_dir()
{
    if (*ti_gettok(tokinfo, prsestd))
        return error(RC_SYNTAX);
    std::string all;
    retval_clear();
    for (const std::string &name : tables()) {
        spout21at(0, (name + "\n").c_str());
        all += (all.empty() ? "" : " ") + name;
        if (stopflag)
            return stopflag;
    }
    retval_set_glocal("names", all.c_str());
    return 0;
}

// A value as it is typed: a number, or a missing value's letter.
std::string value_text(int32_t v)
{
    if (v <= 2147483620)
        return std::to_string(v);
    return std::string(".") + (v > 2147483621 ? std::string(1, char('a' + v - 2147483622)) : "");
}

int32_t list_one(const std::string &name)
{
    const vltable *t = vlfind(name.c_str());
    int32_t n = vlgetcount(t), count = 0, low = 0, high = 0;
    bool letters = false;
    spout21at(1, (name + ":\n").c_str());
    for (int32_t i = 0; i < n; i++) {
        const char *text;
        int32_t v;
        vlgetofi(t, i, &text, &v);
        spout21fat(1, "%12s ", value_text(v).c_str());
        spout21at(0, text);
        spout21at(0, "\n");
        if (v > 2147483620) {
            letters = true;
        } else {
            low = count++ ? low : v;
            high = v;
        }
        if (stopflag)
            return stopflag;
    }
    retval_clear();
    retval_set_gscalar(n, "k");
    retval_set_gscalar(count ? low : misval, "min");
    retval_set_gscalar(count ? high : misval, "max");
    retval_set_gscalar(letters, "hasemiss");
    return 0;
}

int32_t label_list()
{
    std::vector<std::string> v;
    int32_t rc = named(&v, true);
    if (rc)
        return rc;
    if (*ti_gettok(tokinfo, prsestd))
        return error(RC_SYNTAX);
    if (v.empty())
        v = tables();
    for (const std::string &name : v)
        if ((rc = list_one(name)))
            return rc;
    return 0;
}

int32_t label_drop()
{
    std::vector<std::string> v;
    if (!ti_peektok_chr(tokinfo))
        return required("label name");
    int32_t rc = named(&v, true);
    if (rc)
        return rc;
    if (*ti_gettok(tokinfo, prsestd))
        return error(RC_SYNTAX);
    for (const std::string &name : v)
        dmrm(vlfind(name.c_str()));
    upValLabel = true;
    if (_i_Kvar > 0)
        s_updata = true;
    return 0;
}

void save_one(int32_t fd, const std::string &name)
{
    const vltable *t = vlfind(name.c_str());
    for (int32_t i = 0; i < vlgetcount(t); i++) {
        const char *text;
        int32_t v;
        vlgetofi(t, i, &text, &v);
        std::string line = "label define " + name + " " + value_text(v) + " `\"" + text + "\"'" +
                           (i ? ", modify" : ", replace") + "\n";
        (void)!wr(fd, line.data(), int64_t(line.size()));
    }
}

int32_t label_save()
{
    std::vector<std::string> v;
    int32_t rc = named(&v, true);
    if (rc)
        return rc;
    parinfo->pi_vlist = parinfo->pi_if = parinfo->pi_in = PI_NO;
    parinfo->pi_using = PI_REQ;
    parinfo->pi_opts = PI_OK;
    if ((rc = ti_pi_parse(tokinfo, parinfo)))
        return rc;
    bool over = ti_pi_findopt(tokinfo, parinfo, "replace", 7, 0);
    if ((rc = ti_pi_chkopt(tokinfo, parinfo)))
        return rc;
    std::string path = path_addext(parinfo->pi_using_name, ".do");
    int32_t fd = ov_open(path.c_str(), over ? OV_REPLACE : OV_CREATE);
    if (fd < 0)
        return fierr(fd, path.c_str());
    wrinit();
    if (v.empty())
        v = tables();
    for (const std::string &name : v)
        save_one(fd, name);
    bool failed = wr(fd, "", 0);
    ov_close(fd);
    return fierr(failed ? 693 : 697, path.c_str());
}

struct subcommand {
    const char *word;
    int32_t min;
    int32_t (*run)();
};
const subcommand subcommands[] = {
    {"data", 2, label_data},   {"variable", 3, label_variable}, {"define", 3, label_define},
    {"values", 3, label_values}, {"dir", 3, label_dir},         {"list", 1, label_list},
    {"drop", 4, label_drop},   {"save", 4, label_save},
    {"language", 3, label_language}, {"check", 5, label_check},
};

}  // namespace

int32_t label_named(std::vector<std::string> *names)
{
    int32_t rc = named(names, true);
    if (!rc && names->empty())
        *names = tables();
    return rc;
}

int32_t labelcmd(int32_t)
{
    std::string word = ti_gettok(tokinfo, prsestd);
    for (const subcommand &s : subcommands)
        if (cmdcmp(word.c_str(), s.word, s.min))
            return s.run();
    return error(RC_SYNTAX);
}
