// commands/rawlayout.cpp - fields at told places of lines, and the dictionaries that tell them.
#include "commands/rawlayout.h"
#include "core/limits.h"
#include "core/mem.h"
#include "core/missing.h"
#include "core/numtext.h"
#include "core/progress.h"
#include "core/rc.h"
#include "core/state.h"
#include "interp/messages.h"
#include "interp/tokens.h"
#include "output/fmt.h"
#include <algorithm>
#include <cctype>
#include <cstring>

// ---- reading

namespace {

struct reader {
    const rawlayout *l;
    const textfile *t;
    std::vector<textline> lines;  // of the observation
    char *next;                   // behind them
    size_t line;
    int32_t col;                  // from 1
};

char *stop(const reader *d) { return d->t->text + d->t->n; }

textline line_at(const reader *d, char *p)
{
    if (!d->l->lrecl)
        return text_line(d->t, p);
    char *end = p + std::min<int64_t>(d->l->lrecl, stop(d) - p);
    return {p, end, end};
}

// False when the text has no line left.
bool one_more(reader *d)
{
    if (d->next >= stop(d))
        return false;
    d->lines.push_back(line_at(d, d->next));
    d->next = d->lines.back().next;
    return true;
}

// Lines beyond the end of the text are empty.
void go_to(reader *d, size_t line, int32_t col)
{
    while (d->lines.size() <= line && one_more(d)) {
    }
    d->line = line;
    d->col = std::max(col, 1);
}

void take(reader *d, rawdata *r, const rawstep &s)
{
    if (d->line >= d->lines.size())
        return;
    const textline &l = d->lines[d->line];
    const char *p = l.at + std::min<int64_t>(d->col - 1, l.end - l.at), *e = l.end;
    if (s.n) {
        e = p + std::min<int64_t>(s.n, l.end - p);
        d->col += s.n;
        return raw_put(r, size_t(s.var), p, size_t(e - p));
    }
    while (p < e && (*p == ' ' || *p == '\t' || *p == ','))
        p++;
    const char *q = p;
    if (p < e && (*p == '"' || *p == '\'')) {
        q = static_cast<const char *>(memchr(p + 1, *p, size_t(e - p - 1)));
        raw_put(r, size_t(s.var), p + 1, size_t((q ? q : e) - p - 1));
        q = q ? q + 1 : e;
    } else {
        while (q < e && *q != ' ' && *q != '\t' && *q != ',')
            q++;
        raw_put(r, size_t(s.var), p, size_t(q - p));
    }
    d->col = int32_t(q - l.at) + 1;
}

void observation(reader *d, rawdata *r)
{
    for (const rawstep &s : d->l->steps)
        switch (s.kind) {
        case RS_FIELD: take(d, r, s); break;
        case RS_COLUMN: d->col = s.n; break;
        case RS_SKIP: d->col += s.n; break;
        case RS_LINE: go_to(d, size_t(s.n) - 1, 1); break;
        case RS_NEWLINE: go_to(d, d->line + size_t(s.n), 1); break;
        }
    while (d->lines.size() < size_t(d->l->lines) && one_more(d)) {
    }
}

}  // namespace

int32_t layout_read(const rawlayout *l, rawdata *r, const textfile *t, char *from)
{
    reader d = {l, t, {}, from, 0, 1};
    for (int32_t i = 1; i < l->firstline && d.next < stop(&d); i++)
        d.next = line_at(&d, d.next).next;
    for (;;) {
        d.lines.clear();
        if (!one_more(&d))
            return 0;
        d.line = 0;
        d.col = 1;
        int32_t rc = raw_row(r);
        if (rc)
            return rc;
        observation(&d, r);
        if (!raw_keep(r))
            return 0;
        if ((r->row & 0xfff) == 0) {
            progress("reading", double(d.next - t->text) / double(t->n));
            if (fault_poll())
                return stopflag;
        }
    }
}

int32_t layout_run(const rawlayout *l, rawdata *r, const textfile *t, char *from)
{
    int32_t rc = raw_check(r);
    if (rc)
        return rc;
    rc = raw_begin(r);
    if (!rc)
        rc = layout_read(l, r, t, from);
    progress_end();
    return raw_end(r, rc);
}

// ---- words of a dictionary

namespace {

// Words parted by blanks; brackets stay with their word, a quoted text is a word of its own
// that begins with its quote; a line that begins with * is passed over.
std::vector<std::string> words_of(const std::string &text)
{
    std::vector<std::string> v;
    size_t i = 0;
    bool linestart = true;
    while (i < text.size()) {
        char c = text[i];
        if (c == '\n') {
            linestart = true;
            i++;
        } else if (isspace(uint8_t(c))) {
            i++;
        } else if (c == '*' && linestart) {
            while (i < text.size() && text[i] != '\n')
                i++;
        } else if (c == '"') {
            size_t e = text.find_first_of("\"\n", i + 1);
            e = e == std::string::npos ? text.size() : e;
            v.push_back(text.substr(i, e - i));
            i = e + 1;
            linestart = false;
        } else {
            size_t e = i;
            for (int32_t depth = 0; e < text.size(); e++) {
                depth += (text[e] == '(') - (text[e] == ')');
                if (depth <= 0 && (isspace(uint8_t(text[e])) || text[e] == '"'))
                    break;
            }
            v.push_back(text.substr(i, e - i));
            i = e;
            linestart = false;
        }
    }
    return v;
}

// word(#) or, with a default, word alone: true when it is this directive.
bool directive(const std::string &w, const char *name, int32_t dflt, int32_t *n, int32_t *rc)
{
    size_t len = strlen(name);
    if (w.compare(0, len, name) || (w.size() > len && w[len] != '('))
        return false;
    *n = dflt;
    if (w.size() == len) {
        if (!dflt)
            *rc = errout(RC_SYNTAX, "%s requires a number in parentheses\n", name);
        return true;
    }
    bool closed = w.back() == ')';
    if (!closed || cnvstoint4(w.substr(len + 1, w.size() - len - 2).c_str(), n) || *n < 1)
        *rc = errout(RC_SYNTAX, "%s invalid\n", w.c_str());
    return true;
}

// %[w][.d]{f|g|e|s|S}: width and how the text is read.
int32_t informat(const std::string &w, rawvar *v, int32_t *width)
{
    size_t i = 1;
    *width = 0;
    auto digits = [&] {
        int32_t n = 0;
        for (; i < w.size() && isdigit(uint8_t(w[i])); i++)
            n = n < 100000 ? n * 10 + (w[i] - '0') : n;
        return n;
    };
    *width = digits();
    if (i < w.size() && (w[i] == '.' || w[i] == ',')) {
        i++;
        v->decimals = digits();
    }
    bool str = t_isstr(v->type);
    if (i + 1 != w.size() || !strchr(str ? "sS" : "fgedx", w[i]) || v->decimals > 300)
        return errout(RC_SYNTAX, "%s is not a format that %s can be read by\n", w.c_str(),
                      v->name.c_str());
    v->trim = w[i] != 'S';
    return 0;
}

void name_and_label(const std::string &w, rawvar *v)
{
    size_t colon = w.find(':');
    v->name = w.substr(0, colon);
    if (colon != std::string::npos)
        v->vallab = w.substr(colon + 1);
}

}  // namespace

int32_t infile_dictionary(const std::string &text, rawlayout *l, rawdata *r)
{
    std::vector<std::string> w = words_of(text);
    int32_t n, rc = 0, lines = 1, line = 1;
    for (size_t i = 0; i < w.size() && !rc; i++) {
        if (directive(w[i], "_lrecl", 0, &n, &rc))
            l->lrecl = n;
        else if (directive(w[i], "_firstlineoffile", 0, &n, &rc) ||
                 directive(w[i], "_first", 0, &n, &rc))
            l->firstline = n;
        else if (directive(w[i], "_lines", 0, &n, &rc))
            l->lines = n;
        else if (directive(w[i], "_line", 0, &n, &rc))
            l->steps.push_back({RS_LINE, line = n, 0});
        else if (directive(w[i], "_newline", 1, &n, &rc)) {
            l->steps.push_back({RS_NEWLINE, n, 0});
            line += n;
        } else if (directive(w[i], "_column", 0, &n, &rc))
            l->steps.push_back({RS_COLUMN, n, 0});
        else if (directive(w[i], "_skip", 1, &n, &rc))
            l->steps.push_back({RS_SKIP, n, 0});
        else {
            rawvar v;
            if ((v.type = type_ofword(w[i].c_str())) != 0 && ++i >= w.size())
                return errout(RC_SYNTAX, "dictionary ends where a variable name is expected\n");
            name_and_label(w[i], &v);
            int32_t width = 0;
            if (i + 1 < w.size() && w[i + 1][0] == '%')
                rc = informat(w[++i], &v, &width);
            if (i + 1 < w.size() && w[i + 1][0] == '"')
                v.label = w[++i].substr(1, size_t(varlablen));
            l->steps.push_back({RS_FIELD, width, int32_t(r->vars.size())});
            r->vars.push_back(v);
        }
        lines = std::max(lines, line);
    }
    if (!l->lines)
        l->lines = lines;
    return rc;
}

// ---- columns of infix

namespace {

bool number(const std::string &w, int32_t *n) { return !cnvstoint4(w.c_str(), n) && *n > 0; }

// 5 or 1-5.
int32_t columns(const std::string &w, int32_t *from, int32_t *width)
{
    size_t dash = w.find('-');
    int32_t to;
    bool good = number(w.substr(0, dash), from);
    to = *from;
    if (good && dash != std::string::npos)
        good = number(w.substr(dash + 1), &to);
    *width = to - *from + 1;
    return good && to >= *from ? 0 : errout(RC_SYNTAX, "columns %s invalid\n", w.c_str());
}

// Blanks around a dash belong to the columns.
std::string close_dashes(const std::string &text)
{
    std::string s;
    for (size_t i = 0; i < text.size(); i++) {
        if (text[i] == '-') {
            while (!s.empty() && s.back() == ' ')
                s.pop_back();
            s += '-';
            while (i + 1 < text.size() && text[i + 1] == ' ')
                i++;
        } else {
            s += text[i];
        }
    }
    return s;
}

}  // namespace

int32_t infix_dictionary(const std::string &text, rawlayout *l, rawdata *r)
{
    std::vector<std::string> w = words_of(close_dashes(text));
    uint8_t type = 0;
    bool str = false;
    int32_t lines = 1, line = 1, n, rc = 0;
    for (size_t i = 0; i < w.size() && !rc; i++) {
        const char *next = i + 1 < w.size() ? w[i + 1].c_str() : "";
        uint8_t t = type_ofword(w[i].c_str());
        if (w[i] == "/") {
            l->steps.push_back({RS_NEWLINE, 1, 0});
            line++;
        } else if (w[i].back() == ':' && number(w[i].substr(0, w[i].size() - 1), &n)) {
            l->steps.push_back({RS_LINE, line = n, 0});
        } else if (number(w[i], &n) && (!strcmp(next, "lines") || !strcmp(next, "line"))) {
            l->lines = n;
            i++;
        } else if (number(w[i], &n) &&
                   (!strcmp(next, "firstlineoffile") || !strcmp(next, "firstline") ||
                    !strcmp(next, "startline"))) {
            l->firstline = n;
            i++;
        } else if (t || w[i] == "str") {
            type = t;
            str = !t;
        } else {
            rawvar v;
            int32_t from, width;
            name_and_label(w[i], &v);
            if (!*next)
                return errout(RC_SYNTAX, "columns of %s expected\n", w[i].c_str());
            if ((rc = columns(w[++i], &from, &width)))
                return rc;
            v.type = str ? uint8_t(std::min(width, int32_t(T_STRMAX))) : type;
            l->steps.push_back({RS_COLUMN, from, 0});
            l->steps.push_back({RS_FIELD, width, int32_t(r->vars.size())});
            r->vars.push_back(v);
            type = 0;
            str = false;
        }
        lines = std::max(lines, line);
    }
    if (!l->lines)
        l->lines = lines;
    return rc;
}

// ---- dictionary files

int32_t dictionary_split(const textfile *t, const char *name, dictparts *d)
{
    char *p = t->text, *stop = p + t->n;
    auto word = [&] {
        while (p < stop && isspace(uint8_t(*p)))
            p++;
        char *q = p;
        while (q < stop && (isalnum(uint8_t(*q)) || *q == '_'))
            q++;
        std::string w(p, q);
        p = q;
        return w;
    };
    // Comment lines may stand before the first word.
    for (;;) {
        while (p < stop && isspace(uint8_t(*p)))
            p++;
        if (p >= stop || *p != '*')
            break;
        while (p < stop && *p != '\n')
            p++;
    }
    std::string w = word();
    if (w == "infile" || w == "infix") {
        d->kind = w;
        w = word();
    }
    d->notdict = w != "dictionary";
    if (d->notdict)
        return 0;
    char *open = static_cast<char *>(memchr(p, '{', size_t(stop - p)));
    char *close = open ? static_cast<char *>(memchr(open, '}', size_t(stop - open))) : nullptr;
    if (!close)
        return errout(RC_SYNTAX, "dictionary %s has no %s\n", name, open ? "}" : "{");
    std::string head(p, open);
    if (head.find_first_not_of(" \t\n") != std::string::npos) {
        toktype ti;
        for (char &c : head)
            c = c == '\n' || c == '\t' ? ' ' : c;
        ti_settok(&ti, head.data());
        char file[500];
        if (strcmp(ti_gettok(&ti, prsestd), "using") || ti_gettokfn(&ti, file))
            return errout(RC_SYNTAX, "dictionary %s:  using expected before {\n", name);
        d->file = file;
    }
    d->body.assign(open + 1, close);
    d->data = text_line(t, close).next;
    return 0;
}
