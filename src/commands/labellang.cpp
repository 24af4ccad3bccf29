// commands/labellang.cpp - label language: several sets of labels in one dataset.
//
//   label language                     lists them
//   label language NAME                makes NAME the one shown
//   label language NAME, new [copy]    a new one, empty or with the labels shown now
//   label language NAME, rename        another name for the one shown
//   label language NAME, delete
//
// The labels shown are those of the variables and the dataset; the others wait in
// characteristics, so that they travel with the file:
//
//   _dta[_languages]  names, blanks between     owner[_label_NAME]   label
//   _dta[_language]   the one shown             owner[_vallab_NAME]  value label of a variable
#include "commands/labelsub.h"
#include "core/limits.h"
#include "core/rc.h"
#include "core/state.h"
#include "core/text.h"
#include "data/dsa.h"
#include "data/labels.h"
#include "data/variables.h"
#include "expr/parse.h"
#include "interp/messages.h"
#include "output/print.h"
#include "stats/results.h"
#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

namespace {

constexpr size_t longest = 24, most = 100;

struct languages {
    std::vector<std::string> all;
    std::string shown;
};

languages now()
{
    languages l;
    const char *names = charfind("_dta", "_languages", nullptr);
    const char *shown = charfind("_dta", "_language", nullptr);
    l.shown = shown ? shown : "default";
    std::string text = names ? names : l.shown;
    for (size_t at = 0; (at = text.find_first_not_of(' ', at)) != std::string::npos;) {
        size_t end = std::min(text.find(' ', at), text.size());
        l.all.push_back(text.substr(at, end - at));
        at = end;
    }
    return l;
}

int32_t remember(const languages &l)
{
    std::string names;
    for (const std::string &s : l.all)
        names += (names.empty() ? "" : " ") + s;
    // A single language with the usual name is what every dataset has.
    bool plain = l.all.size() == 1 && l.shown == "default";
    s_updata = true;
    int32_t rc = charsave("_dta", "_languages", plain ? "" : names.c_str());
    return rc ? rc : charsave("_dta", "_language", plain ? "" : l.shown.c_str());
}

bool known(const languages &l, const std::string &name)
{
    return std::find(l.all.begin(), l.all.end(), name) != l.all.end();
}

// ---- labels to and from their waiting place

int32_t put_away(const std::string &name)
{
    std::string label = "_label_" + name, vallab = vl_waiting + name;
    int32_t rc = charsave("_dta", label.c_str(), datalbl);
    for (int32_t k = 1; k <= _i_Kvar && !rc; k++) {
        char text[81];
        getvarlab(k, text);
        rc = charsave(_varlist[k - 1], label.c_str(), text);
        if (!rc)
            rc = charsave(_varlist[k - 1], vallab.c_str(), _lbllist[k - 1]);
    }
    return rc;
}

void forget(const std::string &name)
{
    std::string label = "_label_" + name, vallab = vl_waiting + name;
    (void)!charsave("_dta", label.c_str(), "");
    for (int32_t k = 1; k <= _i_Kvar; k++) {
        (void)!charsave(_varlist[k - 1], label.c_str(), "");
        (void)!charsave(_varlist[k - 1], vallab.c_str(), "");
    }
}

int32_t bring(const std::string &name)
{
    std::string label = "_label_" + name, vallab = vl_waiting + name;
    charload("_dta", label.c_str(), datalbl, sizeof datalbl);
    for (int32_t k = 1; k <= _i_Kvar; k++) {
        char text[81];
        charload(_varlist[k - 1], label.c_str(), text, sizeof text);
        charload(_varlist[k - 1], vallab.c_str(), _lbllist[k - 1], 33);
        if (int32_t rc = putvarlab(k, text))
            return rc;
    }
    forget(name);
    upValLabel = true;
    return 0;
}

// ---- what is asked

int32_t list()
{
    languages l = now();
    std::string names;
    outlev_keep keep(1);
    spout21at(1, "languages of the labels:\n");
    for (const std::string &s : l.all) {
        spout21fat(0, "    %s", s.c_str());
        spout21at(1, s == l.shown ? "  (shown)\n" : "\n");
        names += (names.empty() ? "" : " ") + s;
    }
    retval_clear();
    retval_set_gscalar(double(l.all.size()), "k");
    retval_set_glocal("language", l.shown.c_str());
    retval_set_glocal("languages", names.c_str());
    return stopflag;
}

int32_t show(languages *l, const std::string &name)
{
    if (!known(*l, name))
        return errout(RC_NOTFOUND, "label language %s not found\n", name.c_str());
    if (name == l->shown)
        return 0;
    int32_t rc = put_away(l->shown);
    if (rc || (rc = bring(name)))
        return rc;
    l->shown = name;
    return remember(*l);
}

int32_t make(languages *l, const std::string &name, bool copy)
{
    if (known(*l, name))
        return errout(RC_EXISTS, "label language %s already defined\n", name.c_str());
    if (l->all.size() >= most)
        return errout(RC_LIMIT, "too many label languages\n");
    int32_t rc = put_away(l->shown);
    if (rc)
        return rc;
    if (!copy) {
        *datalbl = 0;
        for (int32_t k = 1; k <= _i_Kvar && !rc; k++) {
            *_lbllist[k - 1] = 0;
            rc = putvarlab(k, "");
        }
        upValLabel = true;
    }
    l->all.push_back(name);
    l->shown = name;
    return rc ? rc : remember(*l);
}

int32_t rename(languages *l, const std::string &name)
{
    if (known(*l, name))
        return errout(RC_EXISTS, "label language %s already defined\n", name.c_str());
    *std::find(l->all.begin(), l->all.end(), l->shown) = name;
    l->shown = name;
    return remember(*l);
}

int32_t drop(languages *l, const std::string &name)
{
    if (!known(*l, name))
        return errout(RC_NOTFOUND, "label language %s not found\n", name.c_str());
    if (l->all.size() == 1)
        return errout(RC_SYNTAX, "the only label language cannot be deleted\n");
    l->all.erase(std::find(l->all.begin(), l->all.end(), name));
    if (name != l->shown) {
        forget(name);
        return remember(*l);
    }
    l->shown = l->all[0];
    int32_t rc = bring(l->shown);
    return rc ? rc : remember(*l);
}

}  // namespace

int32_t label_language()
{
    if (!ti_peektok_chr(tokinfo))
        return list();
    std::string name = ti_gettok(tokinfo, prsestd);
    int32_t rc = chksinglename(name.c_str(), false);
    if (rc)
        return rc;
    if (name.size() > longest)
        return errout(RC_SYNTAX, "names of label languages have at most 24 characters\n");
    parinfo->pi_vlist = parinfo->pi_if = parinfo->pi_in = PI_NO;
    parinfo->pi_opts = PI_OK;
    if ((rc = ti_pi_parse(tokinfo, parinfo)))
        return rc;
    bool isnew = ti_pi_findopt(tokinfo, parinfo, "new", 3, 0);
    bool copy = ti_pi_findopt(tokinfo, parinfo, "copy", 4, 0);
    bool ren = ti_pi_findopt(tokinfo, parinfo, "rename", 3, 0);
    bool del = ti_pi_findopt(tokinfo, parinfo, "delete", 3, 0);
    if ((rc = ti_pi_chkopt(tokinfo, parinfo)))
        return rc;
    if (isnew + ren + del > 1 || (copy && !isnew))
        return error(184);
    languages l = now();
    if (isnew)
        return make(&l, name, copy);
    if (ren)
        return rename(&l, name);
    return del ? drop(&l, name) : show(&l, name);
}
