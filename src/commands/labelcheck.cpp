// commands/labelcheck.cpp - label check [names] [, length(#)]: what looks wrong in value labels.
//
// Gaps in the values, texts that repeat, texts that are the same once cut (to 12 characters,
// or length()), blanks at either end, numbers as texts, tables without a variable and
// variables whose table is missing.
#include "commands/labelsub.h"
#include "core/numtext.h"
#include "core/rc.h"
#include "core/state.h"
#include "data/dsa.h"
#include "data/labels.h"
#include "expr/parse.h"
#include "interp/messages.h"
#include "output/print.h"
#include "stats/results.h"
#include <cstring>
#include <map>
#include <string>
#include <vector>

namespace {

struct findings {
    std::string gaps, repeats, cut, blanks, numbers, unused, missing;
};

void add(std::string *list, const std::string &name)
{
    *list += (list->empty() ? "" : " ") + name;
}

void say(const std::string &name, const char *what)
{
    spout21fat(0, "    %-16s", name.c_str());
    spout21fat(1, " %s\n", what);
}

bool has_gaps(const vltable *t)
{
    int32_t last = 0, v;
    const char *text;
    for (int32_t i = 0; i < vlgetcount(t); i++) {
        vlgetofi(t, i, &text, &v);
        if (v > int32_t(max_ovlong))
            break;
        if (i && int64_t(v) - last > 1)
            return true;
        last = v;
    }
    return false;
}

// Two values whose texts are the same over n characters.
bool repeats(const vltable *t, size_t n)
{
    std::map<std::string, int32_t> seen;
    int32_t v;
    const char *text;
    for (int32_t i = 0; i < vlgetcount(t); i++) {
        vlgetofi(t, i, &text, &v);
        if (!seen.emplace(std::string(text, strnlen(text, n)), v).second)
            return true;
    }
    return false;
}

template <class F> bool any(const vltable *t, F f)
{
    int32_t v;
    const char *text;
    for (int32_t i = 0; i < vlgetcount(t); i++) {
        vlgetofi(t, i, &text, &v);
        if (f(text))
            return true;
    }
    return false;
}

void check(const std::string &name, size_t length, findings *f)
{
    const vltable *t = vlfind(name.c_str());
    auto hit = [&](std::string *list, const char *what) {
        add(list, name);
        say(name, what);
    };
    if (has_gaps(t))
        hit(&f->gaps, "gaps in the values");
    if (repeats(t, SIZE_MAX))
        hit(&f->repeats, "a text stands for several values");
    else if (repeats(t, length))
        hit(&f->cut, "texts are the same when cut");
    if (any(t, [](const char *s) { return *s == ' ' || (*s && s[strlen(s) - 1] == ' '); }))
        hit(&f->blanks, "blanks at the beginning or end of a text");
    if (any(t, [](const char *s) { double z; return !cnvstoz(s, &z); }))
        hit(&f->numbers, "a number for a text");
    if (!vl_inuse(name.c_str(), _i_Kvar))
        hit(&f->unused, "no variable has this label");
}

}  // namespace

int32_t label_check()
{
    std::vector<std::string> names;
    int32_t rc = label_named(&names);
    if (rc)
        return rc;
    parinfo->pi_vlist = parinfo->pi_if = parinfo->pi_in = PI_NO;
    parinfo->pi_opts = PI_OK;
    if ((rc = ti_pi_parse(tokinfo, parinfo)))
        return rc;
    double length = 12;
    ti_pi_findoptv(tokinfo, parinfo, "length", 3, &length, 1, 0);
    if ((rc = ti_pi_chkopt(tokinfo, parinfo)))
        return rc;
    if (!(length >= 1 && length <= 32000))
        return errout(RC_SYNTAX, "length() must be between 1 and 32000\n");
    findings f;
    for (const std::string &name : names) {
        check(name, size_t(length), &f);
        if (stopflag)
            return stopflag;
    }
    for (int32_t k = 0; k < _i_Kvar; k++)
        if (*_lbllist[k] && !vlfind(_lbllist[k])) {
            add(&f.missing, _varlist[k]);
            say(_varlist[k], "the value label of this variable is not defined");
        }
    retval_clear();
    const struct {
        const char *name;
        const std::string *list;
    } out[] = {{"gaps", &f.gaps},       {"repeats", &f.repeats}, {"truncated", &f.cut},
               {"blanks", &f.blanks},   {"numbers", &f.numbers}, {"unused", &f.unused},
               {"undefined", &f.missing}};
    bool clean = true;
    for (const auto &o : out) {
        retval_set_glocal(o.name, o.list->c_str());
        clean &= o.list->empty();
    }
    if (clean)
        spout21at(1, "(nothing found)\n");
    return stopflag;
}
