// commands/insheet.cpp - insheet: a table of text, comma or tab between fields, becomes the
// dataset. The file is gone through twice, first to find what each column holds, then to
// store it, so that storage is allotted once and a mixed column keeps its text.
#include "commands/textdata.h"
#include "core/files.h"
#include "core/limits.h"
#include "core/mem.h"
#include "core/missing.h"
#include "core/progress.h"
#include "core/rc.h"
#include "core/state.h"
#include "data/dsa.h"
#include "data/labels.h"
#include "data/variables.h"
#include "expr/generate.h"
#include "expr/parse.h"
#include "interp/messages.h"
#include "output/fmt.h"
#include "output/print.h"
#include <cmath>
#include <cstring>
#include <string>
#include <vector>

namespace {

struct column {
    bool text;       // some field is no number
    bool fraction;   // some number is no integer
    bool fine;       // some fraction needs more than a float's digits
    int32_t width;   // longest field, in bytes
    double lo, hi;
    uint8_t type;
    char name[33];
    std::string label;
};

struct insheetcmd {
    char file[500];
    std::vector<std::string> given;  // names typed before using
    int32_t names;                   // 1 first row holds names, 0 not, -1 find out
    bool dbl, keepcase, clear;
    char delim;                      // 0: find out
    textfile t;
    std::vector<column> col;
    char *body;                      // where the rows of data start
    int64_t nobs;
    int64_t line0;                   // number of the first line of data
    int64_t nlong;                   // fields cut to the longest string
    int32_t nbad;
};

constexpr int32_t badshown = 10;

int32_t in_parse(insheetcmd *c)
{
    for (;;) {
        const char *w = ti_gettok(tokinfo, prsevar);
        if (!*w || !strcmp(w, "using") || *w == ',') {
            ti_ungettok(tokinfo);
            break;
        }
        int32_t rc = chkname(w, false);
        if (rc || (rc = chkreskeywrds(w)))
            return rc;
        for (const std::string &g : c->given)
            if (g == w)
                return error2(3, w);
        c->given.emplace_back(w);
    }
    parinfo->pi_vlist = PI_NO;
    parinfo->pi_using = PI_REQ;
    parinfo->pi_opts = PI_OK;
    int32_t rc = ti_pi_parse(tokinfo, parinfo);
    if (rc)
        return rc;
    snprintf(c->file, sizeof c->file, "%s", parinfo->pi_using_name);
    c->dbl = ti_pi_findopt(tokinfo, parinfo, "double", 1, 0);
    c->names = ti_pi_findopt(tokinfo, parinfo, "names", 1, -1);
    c->keepcase = ti_pi_findopt(tokinfo, parinfo, "case", 4, 0);
    c->clear = ti_pi_findopt(tokinfo, parinfo, "clear", 5, 0);
    bool comma = ti_pi_findopt(tokinfo, parinfo, "comma", 1, 0);
    bool tab = ti_pi_findopt(tokinfo, parinfo, "tab", 1, 0);
    char buf[8] = "";
    int32_t has = ti_pi_findargasis(tokinfo, parinfo, "delimiter", 3, buf, sizeof buf);
    if ((rc = ti_pi_chkopt(tokinfo, parinfo)))
        return rc;
    const char *d = *buf == '"' ? buf + 1 : buf;
    if (comma + tab + has > 1 || (has && !*d))
        return error(RC_SYNTAX);
    c->delim = comma ? ',' : tab ? '\t' : has ? *d : '\0';
    return 0;
}

// The delimiter is the one of comma and tab that the first line holds outside quotes.
int32_t in_delimiter(insheetcmd *c, const textline &first)
{
    bool comma = false, tab = false, quoted = false;
    for (const char *p = first.at; p < first.end; p++) {
        quoted ^= *p == '"';
        comma |= !quoted && *p == ',';
        tab |= !quoted && *p == '\t';
    }
    if (comma && tab)
        return error(615);
    c->delim = tab ? '\t' : ',';
    return 0;
}

bool blank(const textline &l)
{
    const char *p = l.at;
    while (p < l.end && (*p == ' ' || *p == '\t'))
        p++;
    return p == l.end;
}

// A name from a heading: letters, digits and _ of it; false when nothing usable is left.
bool name_of(const textfield &f, bool keepcase, char *name)
{
    int32_t n = 0;
    for (int32_t i = 0; i < f.n && n < namelen; i++) {
        char ch = f.at[i];
        bool letter = (ch >= 'a' && ch <= 'z') || (ch >= 'A' && ch <= 'Z') || ch == '_';
        if (!letter && !(ch >= '0' && ch <= '9' && n))
            continue;
        if (!keepcase && ch >= 'A' && ch <= 'Z')
            ch = char(ch - 'A' + 'a');
        name[n++] = ch;
    }
    name[n] = 0;
    return n && !chkname(name, true) && !chkreskeywrds_quietly(name);
}

bool taken(const insheetcmd *c, size_t before, const char *name)
{
    for (size_t j = 0; j < before; j++)
        if (!strcmp(c->col[j].name, name))
            return true;
    return false;
}

void name_columns(insheetcmd *c, const std::vector<textfield> &heads)
{
    for (size_t j = 0; j < c->col.size(); j++) {
        column &k = c->col[j];
        if (j < c->given.size()) {
            snprintf(k.name, sizeof k.name, "%s", c->given[j].c_str());
            continue;
        }
        bool usable = c->names && j < heads.size() && name_of(heads[j], c->keepcase, k.name) &&
                      !taken(c, j, k.name);
        if (!usable) {
            size_t v = j + 1;
            do
                snprintf(k.name, sizeof k.name, "v%zu", v++);
            while (taken(c, j, k.name));
        }
        if (c->names && j < heads.size() &&
            (heads[j].n != int32_t(strlen(k.name)) ||
             memcmp(heads[j].at, k.name, size_t(heads[j].n))))
            k.label.assign(heads[j].at, size_t(heads[j].n < varlablen ? heads[j].n : varlablen));
    }
}

// Looks at the first line: the delimiter, the number of columns, whether it holds names.
int32_t in_heading(insheetcmd *c)
{
    char *p = c->t.text, *stop = p + c->t.n;
    textline first = text_line(&c->t, p);
    c->line0 = 1;
    while (p < stop && blank(first = text_line(&c->t, p))) {
        p = first.next;
        c->line0++;
    }
    if (p >= stop)
        return errout(RC_SYNTAX, "file %s has no data\n", c->file);
    int32_t rc;
    if (!c->delim && (rc = in_delimiter(c, first)))
        return rc;
    std::string copy(first.at, size_t(first.end - first.at));
    copy.push_back('\0');
    char *q = copy.data(), *e = q + (first.end - first.at);
    std::vector<textfield> heads;
    bool number = false, word = false;
    while (q <= e) {
        textfield f = text_field(&q, e, c->delim);
        double z;
        bool isnum = text_number(&f, &z);
        number |= isnum;
        word |= f.n > 0 && !isnum;
        heads.push_back(f);
    }
    if (c->names < 0)
        c->names = word && !number;
    c->body = c->names ? first.next : p;
    c->line0 += c->names;
    size_t k = heads.size() > c->given.size() ? heads.size() : c->given.size();
    if (k > size_t(maxmaxvar))
        return error(RC_NOVARROOM);
    c->col.resize(k);
    for (column &j : c->col)
        j = {false, false, false, 0, HUGE_VAL, -HUGE_VAL, 0, "", ""};
    name_columns(c, heads);
    return 0;
}

void bad_line(insheetcmd *c, int64_t line, const char *what)
{
    if (c->nbad++ < badshown)
        spout21fat(1, "(line %lld: %s)\n", (long long)line, what);
}

void look_at(column *k, const textfield &f)
{
    if (f.n > k->width)
        k->width = f.n;
    double z;
    if (k->text || !f.n)
        return;
    if (!text_number(&f, &z)) {
        k->text = true;
        return;
    }
    if (z >= misval)
        return;
    k->lo = z < k->lo ? z : k->lo;
    k->hi = z > k->hi ? z : k->hi;
    if (z != std::floor(z)) {
        k->fraction = true;
        // Seven digits and a sign, a point, perhaps a leading zero.
        if (!k->fine && f.n > 7) {
            int32_t digits = 0;
            for (int32_t i = 0; i < f.n && (f.at[i] | 32) != 'e'; i++)
                digits += f.at[i] >= (digits ? '0' : '1') && f.at[i] <= '9';
            k->fine = digits > 7;
        }
    }
}

uint8_t type_for(const column *k, bool dbl)
{
    if (k->text)
        return uint8_t(k->width < 1 ? 1 : k->width > strlen_max ? strlen_max : k->width);
    if (k->lo > k->hi)
        return T_BYTE;
    if (k->fraction)
        return dbl || k->fine || k->hi > max_ovfloat || k->lo < min_ovfloat ? T_DOUBLE : T_FLOAT;
    uint8_t lo = promoted_vartype(k->lo, T_BYTE), hi = promoted_vartype(k->hi, T_BYTE);
    return lo > hi ? lo : hi;
}

// First walk: columns, rows, and the lines that are not as the others.
int32_t in_look(insheetcmd *c)
{
    std::string copy;
    char *stop = c->t.text + c->t.n;
    int64_t line = c->line0;
    size_t k = c->col.size();
    for (char *p = c->body; p < stop; line++) {
        textline l = text_line(&c->t, p);
        p = l.next;
        if ((line & 0xfff) == 0) {
            progress("reading", 0.5 * double(p - c->t.text) / double(c->t.n));
            if (fault_poll())
                return stopflag;
        }
        if (blank(l) && !(k == 1 && l.at < l.end))
            continue;
        copy.assign(l.at, size_t(l.end - l.at));
        char *q = copy.data(), *e = q + copy.size();
        size_t j = 0;
        bool unclosed = false;
        for (; q <= e; j++) {
            textfield f = text_field(&q, e, c->delim);
            unclosed |= f.unclosed;
            if (j < k)
                look_at(&c->col[j], f);
        }
        if (unclosed)
            bad_line(c, line, "quote not closed");
        if (j > k)
            bad_line(c, line, "too many fields, the last ones left out");
        else if (j < k)
            bad_line(c, line, "too few fields, the rest set to missing");
        c->nobs++;
    }
    if (c->nbad > badshown)
        spout21fat(1, "(%d more lines with such faults)\n", c->nbad - badshown);
    for (column &col : c->col)
        col.type = type_for(&col, c->dbl);
    return 0;
}

// Whether the storage area could hold it, before anything in memory is given up.
int32_t in_fits(const insheetcmd *c)
{
    uint64_t width = 0;
    for (const column &k : c->col)
        width += uint64_t(dsa_bytlenc(k.type));
    if (c->nobs + 1 > int64_t(sysdsa->_N_max))
        return error(RC_NOOBSROOM);
    if (width > sysdsa->width_max)
        return error(RC_NOWIDTH);
    return 0;
}

void put_text(char *at, uint8_t type, const textfield &f, int64_t *nlong)
{
    int32_t n = f.n < type ? f.n : type;
    memcpy(at, f.at, size_t(n));
    if (n < type)
        memset(at + n, 0, size_t(type - n));
    *nlong += f.n > type;
}

void in_row(insheetcmd *c, const textline &l, char *row)
{
    char *q = l.at;
    for (size_t j = 0; j < c->col.size() && q <= l.end; j++) {
        textfield f = text_field(&q, l.end, c->delim);
        char *at = row + sysdsa->offset[j];
        uint8_t type = c->col[j].type;
        double z;
        if (t_isstr(type))
            put_text(at, type, f, &c->nlong);
        else if (text_number(&f, &z))
            cell_store(z, type, at);
    }
}

int32_t in_variables(const insheetcmd *c)
{
    char fmt[16];
    for (const column &k : c->col) {
        int32_t rc = dsa_add_var(sysdsa, k.type, k.name, fmt_default(k.type, fmt));
        if (rc)
            return rc;
    }
    return dsa_add_obs(sysdsa, c->nobs, true);
}

// Second walk: the values.
int32_t in_store(insheetcmd *c)
{
    int32_t rc = in_variables(c);
    if (rc)
        return rc;
    char *stop = c->t.text + c->t.n;
    uint32_t obs = 0;
    size_t k = c->col.size();
    for (char *p = c->body; p < stop;) {
        textline l = text_line(&c->t, p);
        p = l.next;
        if (blank(l) && !(k == 1 && l.at < l.end))
            continue;
        in_row(c, l, dsa_obsptr(sysdsa, ++obs));
        if ((obs & 0xfff) == 0) {
            progress("reading", 0.5 + 0.5 * double(p - c->t.text) / double(c->t.n));
            if (fault_poll())
                return stopflag;
        }
    }
    for (size_t j = 0; j < k; j++)
        if (!c->col[j].label.empty() &&
            (rc = putvarlab(int32_t(j) + 1, c->col[j].label.c_str())))
            return rc;
    return 0;
}

}  // namespace

int32_t insheet(int32_t);
int32_t insheet(int32_t)
{
    insheetcmd c = {};
    int32_t rc = in_parse(&c);
    if (rc)
        return rc;
    if (!c.clear && (_Kvar || _Nobs))
        return error(18);
    std::string file = path_addext(c.file, ".csv");
    snprintf(c.file, sizeof c.file, "%s", file.c_str());
    rc = text_load(&c.t, c.file);
    if (!rc)
        rc = in_heading(&c);
    if (!rc)
        rc = in_look(&c);
    if (!rc)
        rc = in_fits(&c);
    if (!rc) {
        drop_all();
        rc = in_store(&c);
        if (rc)
            drop_all();
    }
    progress_end();
    if (rc)
        return rc;
    _i_Kvar = _Kvar;
    s_updata = newdata = newDtaset = true;
    if (c.nlong)
        spout21fat(1, "(%lld text%s longer than %d characters cut)\n", (long long)c.nlong,
                   plural(c.nlong), strlen_max);
    spout21fat(1, "(%d var%s, %d obs)\n", _Kvar, plural(_Kvar), _Nobs);
    return stopflag;
}
