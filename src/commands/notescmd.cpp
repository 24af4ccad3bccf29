// commands/notescmd.cpp - char notes, which the program notes calls: texts kept with the
// dataset and its variables.
//
//   notes [owner]: text                 adds one; a word TS in it becomes date and time
//   notes [list] [owners] [in #[/#]]    _dta or variables; all when none is named
//   notes replace owner in #: text
//   notes drop owners [in #[/#]]
//   notes renumber owner
//
// Note # of an owner is its characteristic note#; note0 holds the highest number in use.
#include "commands/labelsub.h"
#include "core/clock.h"
#include "core/limits.h"
#include "core/rc.h"
#include "core/state.h"
#include "data/dsa.h"
#include "data/labels.h"
#include "data/variables.h"
#include "expr/parse.h"
#include "interp/interp.h"
#include "interp/messages.h"
#include "output/oml.h"
#include "output/print.h"
#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

namespace {

constexpr int32_t most = 9999;

std::string note_name(int32_t i) { return "note" + std::to_string(i); }

int32_t last_note(const std::string &owner)
{
    const char *p = charfind(owner.c_str(), "note0", nullptr);
    int32_t n = p ? atoi(p) : 0;
    return n < 0 ? 0 : n > most ? most : n;
}

const char *note(const std::string &owner, int32_t i)
{
    return charfind(owner.c_str(), note_name(i).c_str(), nullptr);
}

int32_t put(const std::string &owner, int32_t i, const std::string &text)
{
    s_updata = true;
    return charsave(owner.c_str(), note_name(i).c_str(), text.c_str());
}

// note0 follows the notes there are.
int32_t settle(const std::string &owner, int32_t n)
{
    while (n > 0 && !note(owner, n))
        n--;
    return charsave(owner.c_str(), "note0", n ? std::to_string(n).c_str() : "");
}

// ---- the line

struct noteline {
    std::vector<std::string> owners;
    int32_t from = 1, to = most;
};

// Words in front of the colon, or the whole line: owners, then a range of notes.
int32_t take(std::string words, noteline *l)
{
    std::string list;
    toktype ti;
    ti_settok(&ti, words.data());
    while (*ti_gettok(&ti, " ")) {
        if (strcmp(ti.token, "in")) {
            if (!strcmp(ti.token, "_dta"))
                l->owners.emplace_back("_dta");
            else
                list += std::string(" ") + ti.token;
            continue;
        }
        std::string range = ti_gettok(&ti, " ");
        size_t slash = range.find('/');
        l->from = atoi(range.c_str());
        l->to = slash == std::string::npos ? l->from : atoi(range.c_str() + slash + 1);
        if (l->from < 1 || l->to < l->from || *ti_gettok(&ti, " "))
            return error(RC_SYNTAX);
    }
    if (list.empty())
        return 0;
    std::vector<int32_t> vars(size_t(_Kvar) + 1);
    int32_t n = 0, rc = vlist_text(list.c_str(), vars.data(), &n, _Kvar);
    for (int32_t i = 0; !rc && i < n; i++)
        l->owners.emplace_back(_varlist[vars[size_t(i)] - 1]);
    return rc;
}

// The date and time for each word TS.
std::string stamped(const std::string &text)
{
    std::string out;
    char date[32];
    getstamp(date);
    for (size_t at = 0; at < text.size();) {
        size_t end = std::min(text.find(' ', at), text.size());
        out += text.substr(at, end - at) == "TS" ? date : text.substr(at, end - at);
        if (end < text.size())
            out += ' ';
        at = end + 1;
    }
    return out;
}

std::string trimmed(const std::string &s)
{
    size_t a = s.find_first_not_of(' '), b = s.find_last_not_of(' ');
    return a == std::string::npos ? "" : s.substr(a, b - a + 1);
}

// ---- what is asked

int32_t add(const noteline &l, const std::string &text)
{
    if (l.owners.size() > 1)
        return error(RC_TOOMANYVARS);
    std::string owner = l.owners.empty() ? "_dta" : l.owners[0];
    if (text.empty())
        return errout(RC_SYNTAX, "nothing found where a note is expected\n");
    int32_t n = last_note(owner) + 1;
    if (n > most)
        return errout(RC_LIMIT, "too many notes\n");
    int32_t rc = put(owner, n, stamped(text));
    return rc ? rc : settle(owner, n);
}

// A text folded between words to the width of the screen, behind its number.
int32_t show(int32_t i, const char *text)
{
    auto width = size_t(std::max(omlquery_maxwidth(oml_cur) - 8, 20));
    spout21fat(1, "%4d.  ", i);
    outlev_keep keep(0);
    std::string rest = text;
    while (rest.size() > width) {
        size_t cut = rest.rfind(' ', width);
        if (cut == std::string::npos || cut == 0)
            cut = width;
        spout21((rest.substr(0, cut) + "\n       ").c_str());
        rest.erase(0, rest.find_first_not_of(' ', cut));
    }
    rest += '\n';
    return spout21(rest.c_str());
}

int32_t list(noteline l)
{
    if (l.owners.empty()) {
        l.owners.emplace_back("_dta");
        for (int32_t k = 0; k < _i_Kvar; k++)
            l.owners.emplace_back(_varlist[k]);
    }
    for (const std::string &owner : l.owners) {
        bool head = false;
        for (int32_t i = l.from; i <= std::min(l.to, last_note(owner)); i++) {
            const char *text = note(owner, i);
            if (!text)
                continue;
            if (!head)
                spout21fat(1, "\n%s:\n", owner.c_str());
            head = true;
            if (show(i, text))
                return stopflag;
        }
    }
    return 0;
}

int32_t replace(const noteline &l, const std::string &text)
{
    if (l.owners.size() != 1 || l.from != l.to || text.empty())
        return error(RC_SYNTAX);
    if (!note(l.owners[0], l.from))
        return errout(RC_NOTFOUND, "note %d of %s not found\n", l.from, l.owners[0].c_str());
    return put(l.owners[0], l.from, stamped(text));
}

int32_t drop(const noteline &l)
{
    if (l.owners.empty())
        return required("_dta or varlist");
    int32_t n = 0, rc = 0;
    for (const std::string &owner : l.owners) {
        int32_t last = last_note(owner);
        for (int32_t i = l.from; i <= std::min(l.to, last) && !rc; i++)
            if (note(owner, i)) {
                rc = put(owner, i, "");
                n++;
            }
        if (rc || (rc = settle(owner, last)))
            return rc;
    }
    spout21fat(1, "(%d note%s dropped)\n", n, n == 1 ? "" : "s");
    return 0;
}

int32_t renumber(const noteline &l)
{
    if (l.owners.size() != 1)
        return error(RC_SYNTAX);
    const std::string &owner = l.owners[0];
    int32_t last = last_note(owner), to = 0, rc = 0;
    for (int32_t i = 1; i <= last && !rc; i++) {
        const char *p = note(owner, i);
        if (!p || ++to == i)
            continue;
        std::string text = p;
        if (!(rc = put(owner, to, text)))
            rc = put(owner, i, "");
    }
    return rc ? rc : settle(owner, last);
}

}  // namespace

int32_t char_notes()
{
    std::string line = ti_wheretok(tokinfo), before = line, text;
    tokinfo->c_ptr += line.size();
    size_t colon = line.find(':');
    bool adds = colon != std::string::npos;
    if (adds) {
        before = line.substr(0, colon);
        text = trimmed(line.substr(colon + 1));
    }
    before = trimmed(before);
    std::string word = before.substr(0, before.find(' '));
    static const char *const verbs[] = {"list", "replace", "drop", "renumber"};
    size_t verb = 0;
    while (verb < 4 && !(cmdcmp(word.c_str(), verbs[verb], verb == 0 ? 1 : 3) &&
                         (verb == 1 || !adds) && !sysfindvar(word.c_str())))
        verb++;
    noteline l;
    int32_t rc = take(verb < 4 ? before.substr(word.size()) : before, &l);
    if (rc)
        return rc;
    switch (verb) {
    case 0: return list(l);
    case 1: return replace(l, text);
    case 2: return drop(l);
    case 3: return renumber(l);
    default: return adds ? add(l, text) : list(l);
    }
}
