// commands/charcmd.cpp - char define, list, rename.
//
//   char [define] owner[name] ["text"]      owner is _dta or a variable
//   char list [owner[name] | owner[]]
//   char rename owner newowner [, replace]
//   char notes ...                          notescmd.cpp
#include "commands/labelsub.h"
#include "core/rc.h"
#include "core/state.h"
#include "core/text.h"
#include "data/dsa.h"
#include "data/labels.h"
#include "data/variables.h"
#include "interp/interp.h"
#include "interp/messages.h"
#include "output/print.h"
#include <cstdio>
#include <cstring>
#include <string>

int32_t charcmd(int32_t);

namespace {

struct charname {
    char owner[33], name[33];
};

// _dta, or a variable by its full name.
int32_t take_owner(const char *word, char *owner)
{
    if (!strcmp(word, "_dta")) {
        strcut(owner, 33, word);
        return 0;
    }
    return *word ? unab_var(word, owner) : error(RC_SYNTAX);
}

// owner[name]; the name may be empty when every one is meant.
int32_t take_name(charname *c, bool all)
{
    const char *t = ti_gettok(tokinfo, prsestd);
    int32_t rc = take_owner(std::string(tok_text(t)).c_str(), c->owner);
    if (rc)
        return rc;
    if (strcmp(ti_gettok(tokinfo, prsestd), "["))
        return error(RC_SYNTAX);
    t = ti_gettok(tokinfo, prsestd);
    c->name[0] = 0;
    if (all && !strcmp(t, "]"))
        return 0;
    if ((rc = chksinglename(tok_text(t), false)))
        return rc;
    strcut(c->name, sizeof c->name, tok_text(t));
    return ti_gtokis(tokinfo, ']');
}

int32_t define()
{
    charname c;
    int32_t rc = take_name(&c, false);
    if (rc)
        return rc;
    char *start, *end, *next;
    ti_trimtokwhite(tokinfo);
    char *at = ti_wheretok(tokinfo);
    std::string text = at;
    if (!ti_parse_quoted_string(tokinfo, at, &start, &end, &next)) {
        text.assign(start, size_t(end - start));
        tokinfo->c_ptr = next;
        if (*ti_gettok(tokinfo, prsestd))
            return error(RC_SYNTAX);
    }
    while (!text.empty() && text.back() == ' ')
        text.pop_back();
    s_updata = true;
    return charsave(c.owner, c.name, text.c_str());
}

void show(const char *owner, const char *name, const char *text)
{
    std::string key = std::string("  ") + owner + "[" + name + "]:";
    spout21fat(1, "%-30s ", key.c_str());
    outlev_keep keep(0);
    spout21(text);
    spout21("\n");
}

int32_t list()
{
    charname only = {};
    if (ti_peektok_chr(tokinfo)) {
        int32_t rc = take_name(&only, true);
        if (rc)
            return rc;
        if (*ti_gettok(tokinfo, prsestd))
            return error(RC_SYNTAX);
    }
    char owner[33], name[33];
    const char *text;
    for (const void *p = nullptr; (p = charnext(p, owner, name, &text));) {
        if (*only.owner && strcmp(only.owner, owner))
            continue;
        if (*only.name && strcmp(only.name, name))
            continue;
        show(owner, name, text);
        if (stopflag)
            return stopflag;
    }
    return 0;
}

bool has_chars(const char *owner)
{
    char o[33];
    for (const void *p = nullptr; (p = charnext(p, o, nullptr, nullptr));)
        if (!strcmp(o, owner))
            return true;
    return false;
}

int32_t rename_owner()
{
    char from[33], to[33];
    int32_t rc;
    bool over = false;
    if ((rc = take_owner(std::string(ti_gettok(tokinfo, prsestd)).c_str(), from)) ||
        (rc = take_owner(std::string(ti_gettok(tokinfo, prsestd)).c_str(), to)))
        return rc;
    const char *t = ti_gettok(tokinfo, prsestd);
    if (!strcmp(t, ",")) {
        over = !strcmp(ti_gettok(tokinfo, prsestd), "replace");
        if (!over)
            return error(RC_SYNTAX);
        t = ti_gettok(tokinfo, prsestd);
    }
    if (*t)
        return error(RC_SYNTAX);
    if (!over && has_chars(to))
        return errout(RC_EXISTS, "%s has characteristics already\n", to);
    s_updata = true;
    return charrename(from, to);
}

}  // namespace

int32_t charcmd(int32_t)
{
    gettok_state at;
    ti_stattok(tokinfo, &at);
    const char *t = ti_gettok(tokinfo, prsestd);
    if (ti_peektok_chr(tokinfo) == '[' || !*t) {
        ti_resettok(tokinfo, &at);
        return *t ? define() : list();
    }
    if (cmdcmp(t, "define", 3))
        return define();
    if (cmdcmp(t, "list", 1))
        return list();
    if (cmdcmp(t, "rename", 3))
        return rename_owner();
    if (cmdcmp(t, "notes", 4))
        return char_notes();
    return error(RC_SYNTAX);
}
