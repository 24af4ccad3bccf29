// commands/infilecmd.cpp - infile and infix.
//
//   infile varlist [_skip[(#)]] using FILE [if] [in] [, automatic byvariable(#) clear]
//   infile using DICTIONARY [if] [in] [, using(FILE) automatic clear]
//   infix [lines] name columns ... using FILE [if] [in] [, clear]
//   infix using DICTIONARY [if] [in] [, using(FILE) clear]
//
// Without a dictionary infile reads words, one after the other, whatever the lines.
#include "commands/rawlayout.h"
#include "core/files.h"
#include "core/mem.h"
#include "core/progress.h"
#include "core/rc.h"
#include "core/state.h"
#include "data/dsa.h"
#include "expr/parse.h"
#include "expr/varlist.h"
#include "interp/messages.h"
#include "output/print.h"
#include <cctype>
#include <cstring>

namespace {

struct infilejob {
    rawline line;
    rawdata r;
    textfile t;
    std::string other;  // of using()
    bool clear;
    int32_t byvar;      // rows of data that go variable by variable, 0 none
    std::vector<int32_t> fields;  // a variable for each word of a row, -1 to pass it over
};

int32_t open_line(infilejob *j, bool words)
{
    int32_t rc = raw_split(&j->line);
    if (rc || (rc = raw_options(&j->line)))
        return rc;
    char file[500] = "";
    j->clear = ti_pi_findopt(tokinfo, parinfo, "clear", 5, 0);
    j->r.automatic = words && ti_pi_findopt(tokinfo, parinfo, "automatic", 1, 0);
    double n = 0;
    if (words && ti_pi_findoptv(tokinfo, parinfo, "byvariable", 2, &n, 1, 0))
        j->byvar = n >= 1 && n <= 2147483620 ? int32_t(n) : 0;
    ti_pi_findargn(tokinfo, parinfo, "using", 5, file, sizeof file, 1);
    if ((rc = ti_pi_chkopt(tokinfo, parinfo)))
        return rc;
    j->other = file;
    j->r.quals = j->line.quals;
    return !j->clear && (_Kvar || _Nobs) ? error(18) : 0;
}

bool blank(const std::string &s) { return s.find_first_not_of(' ') == std::string::npos; }

// ---- by dictionary

int32_t by_dictionary(infilejob *j, const char *kind)
{
    std::string name = path_addext(j->line.file, ".dct");
    dictparts d;
    int32_t rc = text_load(&j->t, name.c_str());
    if (rc || (rc = dictionary_split(&j->t, name.c_str(), &d)))
        return rc;
    if (d.notdict || (!d.kind.empty() && d.kind != kind))
        return errout(RC_SYNTAX, "file %s is no %s dictionary\n", name.c_str(), kind);
    rawlayout l;
    bool columns = !strcmp(kind, "infix");
    rc = columns ? infix_dictionary(d.body, &l, &j->r) : infile_dictionary(d.body, &l, &j->r);
    if (rc)
        return rc;
    if (j->other.empty() && d.file.empty())
        return layout_run(&l, &j->r, &j->t, d.data);
    textfile data;
    std::string file = path_addext(j->other.empty() ? d.file : j->other, ".raw");
    if ((rc = text_load(&data, file.c_str())))
        return rc;
    return layout_run(&l, &j->r, &data, data.text);
}

// ---- word by word

// The list with its _skip words taken out; what stands between goes through the list reader.
int32_t take_list(infilejob *j)
{
    const std::string &text = j->line.before;
    for (size_t at = 0; at < text.size();) {
        size_t skip = at;
        do
            skip = text.find("_skip", skip == at ? at : skip + 1);
        while (skip != std::string::npos && skip > 0 && text[skip - 1] != ' ');
        std::string part = text.substr(at, skip == std::string::npos ? skip : skip - at);
        if (!blank(part)) {
            toktype ti;
            ti_settok(&ti, part.data());
            if (int32_t rc = ti_newvlist(&ti))
                return rc;
            for (int32_t i = 0; i < pi_nnew; i++) {
                j->fields.push_back(int32_t(j->r.vars.size()));
                rawvar v;
                v.type = pi_new[i].type;
                v.name = pi_new[i].name;
                v.vallab = pi_new[i].label;
                j->r.vars.push_back(v);
            }
        }
        if (skip == std::string::npos)
            break;
        char *p = nullptr;
        const char *from = text.c_str() + skip + 5;
        long n = *from == '(' ? strtol(from + 1, &p, 10) : 1;
        if (*from == '(' && (*p != ')' || n < 1 || n > 100000))
            return errout(RC_SYNTAX, "_skip() invalid\n");
        j->fields.insert(j->fields.end(), size_t(n), -1);
        at = size_t((p ? p + 1 : from) - text.c_str());
    }
    return 0;
}

struct words {
    const char *p, *stop;
};

// The next word; false at the end. Two commas hold an empty word.
bool next_word(words *w, const char **at, size_t *n)
{
    const char *p = w->p, *e = w->stop;
    while (p < e && isspace(uint8_t(*p)))
        p++;
    if (p >= e)
        return w->p = p, false;
    const char *q = p;
    if (*p == '"' || *p == '\'') {
        auto nl = static_cast<const char *>(memchr(p, '\n', size_t(e - p)));
        const char *end = nl ? nl : e;
        q = static_cast<const char *>(memchr(p + 1, *p, size_t(end - p - 1)));
        *at = p + 1;
        *n = size_t((q ? q : end) - p - 1);
        q = q ? q + 1 : end;
    } else {
        while (q < e && !isspace(uint8_t(*q)) && *q != ',')
            q++;
        *at = p;
        *n = size_t(q - p);
    }
    // A comma that follows ends this word and no other.
    while (q < e && (*q == ' ' || *q == '\t' || *q == '\r'))
        q++;
    w->p = q < e && *q == ',' ? q + 1 : q;
    return true;
}

int32_t poll(const infilejob *j, const words *w)
{
    if (j->r.row & 0xfff)
        return 0;
    progress("reading", double(w->p - j->t.text) / double(j->t.n));
    return fault_poll() ? RC_BREAK : 0;
}

int32_t row_by_row(infilejob *j, words *w)
{
    const char *at;
    size_t n, k = j->fields.size();
    while (next_word(w, &at, &n)) {
        int32_t rc = raw_row(&j->r);
        for (size_t i = 0; i < k && !rc; i++) {
            if (i && !next_word(w, &at, &n)) {
                spout21at(1, "(file ends within an observation)\n");
                break;
            }
            if (j->fields[i] >= 0)
                raw_put(&j->r, size_t(j->fields[i]), at, n);
        }
        if (rc || (rc = poll(j, w)))
            return rc;
        if (!raw_keep(&j->r))
            break;
    }
    return 0;
}

// All values of the first variable, then those of the second, ...
int32_t var_by_var(infilejob *j, words *w)
{
    int32_t rc = dsa_add_obs(sysdsa, j->byvar, true);
    if (rc)
        return rc;
    const char *at;
    size_t n;
    for (size_t i = 0; i < j->fields.size(); i++)
        for (j->r.row = 1; j->r.row <= j->byvar; j->r.row++) {
            if (!next_word(w, &at, &n)) {
                spout21at(1, "(file ends within an observation)\n");
                return 0;
            }
            if (j->fields[i] >= 0)
                raw_put(&j->r, size_t(j->fields[i]), at, n, j->r.row);
            if ((rc = poll(j, w)))
                return rc;
        }
    return 0;
}

int32_t by_words(infilejob *j)
{
    int32_t rc = take_list(j);
    if (rc || (rc = raw_check(&j->r)))
        return rc;
    if (j->byvar && !blank(j->r.quals))
        return errout(RC_SYNTAX, "byvariable() may not be combined with if or in\n");
    std::string name = path_addext(j->line.file, ".raw");
    if ((rc = text_load(&j->t, name.c_str())))
        return rc;
    words w = {j->t.text, j->t.text + j->t.n};
    rc = raw_begin(&j->r);
    if (!rc)
        rc = j->byvar ? var_by_var(j, &w) : row_by_row(j, &w);
    progress_end();
    return raw_end(&j->r, rc);
}

}  // namespace

int32_t infilecmd(int32_t);
int32_t infilecmd(int32_t)
{
    infilejob j = {};
    int32_t rc = open_line(&j, true);
    if (rc)
        return rc;
    return blank(j.line.before) ? by_dictionary(&j, "infile") : by_words(&j);
}

int32_t infixcmd(int32_t);
int32_t infixcmd(int32_t)
{
    infilejob j = {};
    int32_t rc = open_line(&j, false);
    if (rc)
        return rc;
    if (blank(j.line.before))
        return by_dictionary(&j, "infix");
    rawlayout l;
    std::string name = path_addext(j.line.file, ".raw");
    if ((rc = infix_dictionary(j.line.before, &l, &j.r)) || (rc = text_load(&j.t, name.c_str())))
        return rc;
    return layout_run(&l, &j.r, &j.t, j.t.text);
}
