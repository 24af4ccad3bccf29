// commands/matrixcmd.cpp - the matrix command.
//
//   matrix [define] A = exp          matrix A[i,j] = exp
//   matrix list A [, noheader nonames nohalf format(%fmt) title(text)]
//   matrix dir    matrix drop A ...|_all    matrix rename A B
//   matrix rownames|colnames|roweq|coleq A = name ...
//   and those of commands/matrixstat.h
#include "commands/matrixstat.h"
#include "core/missing.h"
#include "core/settings.h"
#include "core/state.h"
#include "core/text.h"
#include "data/umat.h"
#include "data/variables.h"
#include "expr/parse.h"
#include "interp/dm.h"
#include "interp/interp.h"
#include "interp/messages.h"
#include "output/fmt.h"
#include "output/print.h"
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

static const char *token() { return ti_gettok(tokinfo, prsestd); }
static bool at_end() { return !*token(); }

static int32_t name_token(char *name)
{
    const char *t = token();
    if (!*t || *t == '"')
        return required("matrix name");
    if (int32_t rc = chkname(t, false))
        return rc;
    snprintf(name, 33, "%s", t);
    return 0;
}

// ---- definition

static int32_t compile_rest(xeqpgm *pgm)
{
    initialize_compexp_shared();
    int32_t rc = compmatexp(pgm, W_NUMMAT, false, false, true);
    return rc ? rc : at_end() ? 0 : error(198);
}

// One side of a subscript: a position, or a name of the stripe.
static int32_t position(const std::string &text, const umatname *stripe, int32_t n, int32_t *out)
{
    bool isstr;
    double z;
    char name[246];
    if (int32_t rc = exp_text(text.c_str(), W_ANY, &isstr, &z, name))
        return rc;
    *out = isstr ? umat_findname(stripe, n, name, false) : z >= 1 && z < n + 1.0 ? int32_t(z) : 0;
    return *out ? 0 : error(503);
}

// The text between [ and ], split at its comma.
static int32_t subscript_texts(std::string *row, std::string *col)
{
    char *from = ti_wheretok(tokinfo);
    bool open = false;
    char *p = from, *comma = nullptr;
    int32_t depth = 0;
    while (*p && (*p != ']' || depth)) {
        if (*p == '"') {
            p = psimplequotes(p, &open);
            continue;
        }
        depth += (*p == '(' || *p == '[') - (*p == ')' || *p == ']');
        if (*p == ',' && !depth)
            comma = p;
        p++;
    }
    if (*p != ']' || !comma || open)
        return error(198);
    row->assign(from, size_t(comma - from));
    col->assign(comma + 1, size_t(p - comma - 1));
    gettok_state at{p + 1, nullptr};
    ti_resettok(tokinfo, &at);
    return 0;
}

// Puts a number or the block of a matrix into A from a position on.
static int32_t assign_element(const char *name)
{
    static const char *const temp = "1put";
    std::string rtext, ctext;
    matref a, b;
    int32_t rc = subscript_texts(&rtext, &ctext), i = 0, j = 0;
    if (!rc && !umat_get(name, MK_MAT, &a))
        rc = matnotfound(name);
    if (!rc)
        rc = position(rtext, a.row, a.m->rows, &i);
    if (!rc)
        rc = position(ctext, a.col, a.m->cols, &j);
    if (!rc)
        rc = ti_gtokis(tokinfo, '=');
    xeqpgm pgm;
    if (!rc)
        rc = compile_rest(&pgm);
    if (!rc)
        rc = xeqmat_mat(&pgm, temp, MK_MAT);
    if (rc)
        return rc;
    if (!umat_get(name, MK_MAT, &a) || !umat_get(temp, MK_MAT, &b))
        return matnotfound(name);
    if (i + b.m->rows - 1 > a.m->rows || j + b.m->cols - 1 > a.m->cols)
        rc = error(503);
    for (int32_t r = 0; !rc && r < b.m->rows; r++)
        for (int32_t c = 0; c < b.m->cols; c++)
            a.m->el[int64_t(i + r - 1) * a.m->cols + (j + c - 1)] = umat_el(b.m, r + 1, c + 1);
    (void)umat_rm(temp, MK_MAT);
    return rc;
}

static int32_t define()
{
    char name[33];
    if (int32_t rc = name_token(name))
        return rc;
    const char *t = token();
    if (*t == '[')
        return assign_element(name);
    if (strcmp(t, "="))
        return error(198);
    xeqpgm pgm;
    int32_t rc = compile_rest(&pgm);
    return rc ? rc : xeqmat_mat(&pgm, name, MK_MAT);
}

// ---- listing

struct listing {
    matref a;
    char fmt[fmtlen + 1];
    bool names, half, dotz;
    int32_t width;     // of a cell
    int32_t label;     // of the names of the rows
    int32_t first, last;  // columns of the panel
};

static bool has_equations(const umatname *s, int32_t n)
{
    for (int32_t i = 0; i < n; i++)
        if (strcmp(s[i].eq, "_"))
            return true;
    return false;
}

static const char *equation(const umatname &n) { return strcmp(n.eq, "_") ? n.eq : ""; }

static int32_t longest(const umatname *s, int32_t n)
{
    size_t most = 0;
    for (int32_t i = 0; i < n; i++) {
        size_t len = strlen(s[i].name), eq = strlen(equation(s[i]));
        most = len > most ? len : most;
        most = eq > most ? eq : most;
    }
    return int32_t(most);
}

static void measure(listing *l)
{
    char cell[256];
    l->width = l->names ? longest(l->a.col, l->a.m->cols) : 0;
    for (int64_t i = 0; i < int64_t(l->a.m->rows) * l->a.m->cols; i++) {
        int32_t n = fmtnumtrim(cell, sizeof cell, l->a.m->el[i], l->fmt);
        l->width = n > l->width ? n : l->width;
    }
    l->label = 0;
    for (int32_t i = 0; l->names && i < l->a.m->rows; i++) {
        size_t eq = strlen(equation(l->a.row[i])), n = strlen(l->a.row[i].name) + eq + (eq > 0);
        l->label = int32_t(n) > l->label ? int32_t(n) : l->label;
    }
}

static void heading(const listing *l, bool eq)
{
    spout21f("%*s", l->label, "");
    for (int32_t j = l->first; j <= l->last; j++)
        spout21f("  %*s", l->width, eq ? equation(l->a.col[j]) : l->a.col[j].name);
    newline();
}

static int32_t panel(const listing *l)
{
    char cell[256], label[sizeof(umatname) + 2];
    if (l->names) {
        if (has_equations(l->a.col, l->a.m->cols))
            heading(l, true);
        heading(l, false);
    }
    for (int32_t i = 0; i < l->a.m->rows; i++) {
        const umatname &r = l->a.row[i];
        bool eq = *equation(r);
        snprintf(label, sizeof label, "%s%s%s", eq ? r.eq : "", eq ? ":" : "", r.name);
        if (l->half && i < l->first)
            continue;
        spout21f("%*s", l->label, l->names ? label : "");
        for (int32_t j = l->first; j <= (l->half && i < l->last ? i : l->last); j++) {
            double z = umat_el(l->a.m, i + 1, j + 1);
            *cell = 0;
            if (l->dotz || z != misval_z)
                fmtnumtrim(cell, sizeof cell, z, l->fmt);
            spout21f("  %*s", l->width, cell);
        }
        if (newline())
            return 1;
    }
    return 0;
}

// A name, or r(name) and kin. Nothing is printed when it is there.
static int32_t named_matrix(matref *a, char *shown)
{
    char word[33], inner[33];
    snprintf(word, sizeof word, "%s", token());
    bool stored = (!strcmp(word, "r") || !strcmp(word, "e") || !strcmp(word, "return"))
                  && ti_peektok_chr(tokinfo) == '(';
    if (!stored) {
        snprintf(shown, 48, "%s", word);
        if (!*word)
            return required("matrix name");
        return umat_get(word, MK_MAT, a) ? 0 : matnotfound(word);
    }
    (void)token();
    snprintf(inner, sizeof inner, "%s", token());
    if (int32_t rc = ti_gtokis(tokinfo, ')'))
        return rc;
    snprintf(shown, 48, "%.6s(%.32s)", word, inner);
    matkind kind = *word == 'e' ? MK_E : word[1] ? MK_RETURN : MK_R;
    return umat_get(inner, kind, a) ? 0 : matnotfound(shown);
}

// The words of a title without the quotes that may stand around them.
static void bare_title(char *title)
{
    char *first, *last, *next;
    if (*title && !ti_parse_quoted_string(nullptr, title, &first, &last, &next) && !*next) {
        *last = 0;
        memmove(title, first, size_t(last - first) + 1);
    }
}

static int32_t list()
{
    listing l{};
    char shown[48], title[246] = "";
    int32_t rc = named_matrix(&l.a, shown);
    if (rc)
        return rc;
    parinfo->pi_opts = PI_OK;
    if ((rc = ti_pi_parse(tokinfo, parinfo)))
        return rc;
    bool header = ti_pi_findopt(tokinfo, parinfo, "header", 4, 1);
    bool blank = ti_pi_findopt(tokinfo, parinfo, "blank", 4, 1);
    l.dotz = ti_pi_findopt(tokinfo, parinfo, "dotz", 4, 1);
    l.names = ti_pi_findopt(tokinfo, parinfo, "names", 4, 1);
    bool half = ti_pi_findopt(tokinfo, parinfo, "half", 4, 1);
    if (!ti_pi_findargn(tokinfo, parinfo, "format", 1, l.fmt, fmtlen, 1))
        strcpy(l.fmt, "%10.0g");
    (void)ti_pi_findargasis(tokinfo, parinfo, "title", 1, title, sizeof title - 1);
    bare_title(title);
    if ((rc = ti_pi_chkopt(tokinfo, parinfo)))
        return rc;
    if (chkfmt(l.fmt, nullptr) || fmt_isstr(l.fmt))
        return errout(120, "invalid %%format\n");
    outlev_keep level(0);
    bool symmetric = umat_issym(&l.a) != 0;
    l.half = half && symmetric;
    if (header)
        spout21f("%s%s%s[%d,%d]%s%s\n", blank ? "\n" : "", l.half && l.a.m->rows > 1 ? "symmetric " : "", shown,
                 l.a.m->rows, l.a.m->cols, *title ? ":  " : "", title);
    measure(&l);
    int32_t fit = (set_linesize - l.label) / (l.width + 2);
    fit = fit < 1 ? 1 : fit;
    for (l.first = 0; l.first < l.a.m->cols; l.first += fit) {
        l.last = l.first + fit > l.a.m->cols ? l.a.m->cols - 1 : l.first + fit - 1;
        if (l.first)
            newline();
        if (panel(&l))
            return 1;
    }
    return stopflag;
}

static int32_t dir()
{
    if (!at_end())
        return error(198);
    outlev_keep level(0);
    char name[33];
    for (void *p = nullptr; (p = dmnext(p, name, DM_MATRIX, nullptr));) {
        const umat *m = static_cast<const umat *>(p);
        if (*name != '1' && spout21f("%20s[%d,%d]\n", name, m->rows, m->cols))
            return 1;
    }
    return 0;
}

// ---- housekeeping

static int32_t drop_matrices()
{
    bool any = false;
    for (const char *t = token(); *t; t = token(), any = true) {
        if (!strcmp(t, "_all")) {
            dmzap(DM_MATRIX);
            dmzap(DM_MATROWS);
            dmzap(DM_MATCOLS);
        } else if (!umat_rm(t, MK_MAT))
            return matnotfound(t);
    }
    return any ? 0 : required("matrix name");
}

static int32_t rename_matrix()
{
    char from[33], to[33];
    int32_t rc = name_token(from);
    if (!rc && !ismatrixname(from))
        rc = matnotfound(from);
    if (!rc)
        rc = name_token(to);
    if (!rc && !at_end())
        rc = error(198);
    if (!rc && strcmp(from, to) && ismatrixname(to))
        rc = error2(3, to);
    return rc ? rc : umat_rename(from, to, MK_MAT);
}

// what: r or c, and n for names or e for equations.
static int32_t set_names(char side, char what)
{
    char name[33];
    matref a;
    if (int32_t rc = name_token(name))
        return rc;
    if (!umat_get(name, MK_MAT, &a))
        return matnotfound(name);
    if (int32_t rc = ti_gtokis(tokinfo, '='))
        return rc;
    int32_t n = side == 'r' ? a.m->rows : a.m->cols, count = 0;
    umatname *stripe = side == 'r' ? a.row : a.col;
    std::vector<umatname> given(stripe, stripe + n);
    bool eqonly = false;
    static const char blank[] = " \"";
    for (std::string word = ti_gettok(tokinfo, blank); !word.empty();
         word = ti_gettok(tokinfo, blank)) {
        word = tok_text(word.c_str());
        size_t colon = word.find(':');
        std::string eq = what == 'e' ? word : colon != std::string::npos ? word.substr(0, colon) : "";
        std::string own = what == 'e' ? "" : colon != std::string::npos ? word.substr(colon + 1) : word;
        if (eq.size() > 32 || own.size() > size_t(term_maxname) ||
            (own.size() > 32 && own.find('.') == std::string::npos))
            return invalid(word.c_str());
        if (count == n)
            return error(503);
        if (!eq.empty() || what == 'e')
            snprintf(given[size_t(count)].eq, 33, "%s", eq.empty() ? "_" : eq.c_str());
        eqonly = own.empty();
        if (what == 'n' && !own.empty())
            {
            strcut(given[size_t(count)].name, sizeof umatname::name, own.c_str());
            given[size_t(count)].info = 0;
        }
        count++;
    }
    if (!count)
        return error(198);
    // The last one given holds for the rest; an equation alone leaves their names.
    const umatname last = given[size_t(count) - 1];
    for (int32_t i = count; i < n; i++)
        if (what == 'e' || eqonly)
            strcpy(given[size_t(i)].eq, last.eq);
        else
            given[size_t(i)] = last;
    memcpy(stripe, given.data(), sizeof(umatname) * size_t(n));
    return 0;
}

int32_t matrixcmd(int32_t);
int32_t matrixcmd(int32_t)
{
    gettok_state start;
    ti_stattok(tokinfo, &start);
    std::string word = token();
    char next = ti_peektok_chr(tokinfo);
    auto is = [&](const char *full, int32_t min) { return cmdcmp(word.c_str(), full, min) != 0; };
    if (next == '=' || next == '[') {  // a matrix may be called as a subcommand is
        ti_resettok(tokinfo, &start);
        return define();
    }
    if (is("define", 3))
        return define();
    if (is("input", 1))
        return define();
    if (is("list", 1))
        return list();
    if (is("dir", 2))
        return dir();
    if (is("drop", 4))
        return drop_matrices();
    if (is("rename", 3))
        return rename_matrix();
    if (is("rownames", 4))
        return set_names('r', 'n');
    if (is("colnames", 4))
        return set_names('c', 'n');
    if (is("roweq", 5))
        return set_names('r', 'e');
    if (is("coleq", 5))
        return set_names('c', 'e');
    static const struct {
        const char *word;
        int32_t min;
        int32_t (*run)(int32_t);
    } later[] = {{"accum", 2, mat_accum}, {"vecaccum", 4, mat_vecaccum},
                 {"glsaccum", 4, mat_glsaccum}, {"svd", 3, mat_svd},
                 {"symeigen", 3, mat_symeigen}, {"eigenvalues", 5, mat_eigenvalues},
                 {"score", 2, mat_score}};
    for (const auto &l : later)
        if (is(l.word, l.min))
            return l.run(0);
    if (word.empty())
        return error(198);
    return errout(198, "matrix %s is not available in this version of Ovata\n", word.c_str());
}
