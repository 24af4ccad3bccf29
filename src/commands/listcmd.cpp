// commands/listcmd.cpp - list: observations as a table on the screen.
//
// Columns are fitted to what they hold: one pass finds the widest value of each, a second
// prints. A table wider than the line goes out as several tables of columns, one below the
// other, each with the observation numbers in front.
#include "core/mem.h"
#include "core/missing.h"
#include "core/rc.h"
#include "core/state.h"
#include "core/text.h"
#include "data/dsa.h"
#include "data/labels.h"
#include "data/variables.h"
#include "expr/parse.h"
#include "expr/strfun.h"
#include "interp/messages.h"
#include "output/fmt.h"
#include "output/oml.h"
#include "output/print.h"
#include <cstdio>
#include <cstring>
#include <memory>
#include <vector>

namespace
{

constexpr int32_t cellmax = 250; // bytes a shown value can need

struct lcol {
    int32_t var;
    int32_t width;
    bool left;
    const vltable *label;
    char head[33];
};

struct listopts {
    bool clean, obs, label, fast, header;
    int32_t separator;  // observations between lines, 0 none
    int32_t abbreviate; // least room for a variable's name
    int32_t string;     // characters of a string that are shown, 0 all
};

struct listing {
    listopts o;
    std::vector<lcol> col;
    std::vector<int32_t> sepby; // a line wherever one of these variables changes
    int32_t obswidth;           // digits of the largest observation number
    // A bit for each observation of the range: what the condition, asked once, said. Null: all.
    std::unique_ptr<uint8_t, void (*)(void *)> chosen{nullptr, [](void *p) { safefree(p); }};
    bool has(int32_t obs) const
    {
        uint32_t i = uint32_t(obs - parinfo->pi_obs1);
        return !chosen || (chosen.get()[i >> 3] >> (i & 7) & 1);
    }
};

// Asks the condition of every observation. 0, 909 or the code of a break.
int32_t choose(listing *l)
{
    if (!parinfo->pi_hasif || parinfo->pi_obs2 < parinfo->pi_obs1)
        return 0;
    uint32_t n = uint32_t(parinfo->pi_obs2 - parinfo->pi_obs1) + 1;
    l->chosen.reset(static_cast<uint8_t *>(safecalloc(n / 8 + 1)));
    if (!l->chosen)
        return error(RC_NOMEM);
    for (uint32_t i = 0; i < n; i++) {
        if ((i & 0xff) == 0 && fault_poll())
            return stopflag;
        if (selobs(parinfo->pi_obs1 + int32_t(i)))
            l->chosen.get()[i >> 3] |= uint8_t(1 << (i & 7));
    }
    return 0;
}

// A value as its column shows it, without padding.
int32_t show(const listopts &o, const lcol &c, int32_t obs, char *out)
{
    int32_t var = c.var;
    const char *fmt = _fmtlist[var - 1];
    if (t_isstr(_typlist[var - 1])) {
        char text[246];
        dsa_sdata(sysdsa, uint32_t(var), uint32_t(obs), text);
        if (o.string > 0 && strlen(text) > size_t(o.string))
            return snprintf(out, cellmax, "%.*s..", o.string, text);
        return snprintf(out, cellmax, "%s", text);
    }
    double z = dsa_data(sysdsa, uint32_t(var), uint32_t(obs));
    if (c.label && vlfindval(c.label, z, out, 80) >= 0)
        return int32_t(strlen(out));
    return fmtnumtrim(out, cellmax, z, fmt);
}

int32_t parse(listing *l, int32_t kind)
{
    parinfo->pi_in = PI_OK;
    parinfo->pi_if = PI_OK;
    parinfo->pi_vlist = PI_OK;
    parinfo->pi_by = PI_OK;
    parinfo->pi_opts = PI_OK;
    parinfo->pi_blankall = 1;
    int32_t rc = ti_pi_parse(tokinfo, parinfo);
    if (rc)
        return rc;
    l->o.clean = ti_pi_findopt(tokinfo, parinfo, "clean", 2, kind == 1);
    l->o.obs = ti_pi_findopt(tokinfo, parinfo, "obs", 3, 1);
    l->o.label = ti_pi_findopt(tokinfo, parinfo, "label", 1, 1);
    l->o.fast = ti_pi_findopt(tokinfo, parinfo, "fast", 4, kind == 2);
    l->o.header = ti_pi_findopt(tokinfo, parinfo, "header", 4, 1);
    l->o.separator = ti_pi_findopta(tokinfo, parinfo, "separator", 3, 5);
    l->o.abbreviate = ti_pi_findopta(tokinfo, parinfo, "abbreviate", 2, 8);
    l->o.string = ti_pi_findopta(tokinfo, parinfo, "string", 3, 0);
    l->sepby.resize(size_t(max_theory_k));
    int32_t nsep = ti_pi_findvlist(tokinfo, parinfo, "sepby", 5, l->sepby.data(), max_theory_k);
    l->sepby.resize(size_t(nsep));
    if ((rc = ti_pi_chkopt(tokinfo, parinfo)))
        return rc;
    for (int32_t i = 0; i < parinfo->pi_nvar; i++) {
        lcol c = {};
        c.var = parinfo->vl_vr[i];
        fmtinfo f;
        c.left = !chkfmt(_fmtlist[c.var - 1], &f) && f.left;
        if (l->o.label && !t_isstr(_typlist[c.var - 1]) && *_lbllist[c.var - 1]) {
            c.label = vlfind(_lbllist[c.var - 1]);
        }
        l->col.push_back(c);
    }
    return 0;
}

// First pass: widths. Returns how many observations are selected, or -1 after a break.
int32_t fit(listing *l)
{
    char buf[cellmax];
    int32_t n = 0, last = 0;
    for (int32_t obs = parinfo->pi_obs1; obs <= parinfo->pi_obs2; obs++) {
        if ((obs & 0xff) == 0 && fault_poll())
            return -1;
        if (!l->has(obs))
            continue;
        n++;
        last = obs;
        if (l->o.fast)
            continue;
        for (lcol &c : l->col) {
            int32_t w = show(l->o, c, obs, buf);
            if (w > c.width)
                c.width = w;
        }
    }
    for (lcol &c : l->col) {
        if (l->o.fast)
            c.width = fmtwidth(_fmtlist[c.var - 1]);
        int32_t room = c.width > l->o.abbreviate ? c.width : l->o.abbreviate;
        room = room < 5 ? 5 : room;
        char full[246];
        str_abbrev(full, _varlist[c.var - 1], room);
        strcut(c.head, sizeof c.head, full);
        int32_t h = int32_t(strlen(c.head));
        if (h > c.width)
            c.width = h;
    }
    char num[16];
    l->obswidth = snprintf(num, sizeof num, "%d", last ? last - nobss1 + 1 : 1);
    return n;
}

// ---- lines, gathered in one buffer each
struct line {
    char at[outbuflen];
    int32_t n = 0;
    void put(const char *s, int32_t len)
    {
        if (len > int32_t(sizeof at) - 2 - n)
            len = int32_t(sizeof at) - 2 - n;
        memcpy(at + n, s, size_t(len));
        n += len;
    }
    void fill(char ch, int32_t len)
    {
        for (; len > 0 && n < int32_t(sizeof at) - 2; len--)
            at[n++] = ch;
    }
    int32_t out(uint8_t level)
    {
        at[n] = '\n';
        at[n + 1] = 0;
        n = 0;
        return spout21at(level, at);
    }
};
line row;

void put_cell(const lcol &c, const char *text, int32_t len)
{
    if (len > c.width)
        len = c.width;
    if (!c.left)
        row.fill(' ', c.width - len);
    row.put(text, len);
    if (c.left)
        row.fill(' ', c.width - len);
}

int32_t lead(const listing &l)
{
    return l.o.obs ? l.obswidth + 3 : l.o.clean ? 0 : 2;
}

int32_t group_width(const listing &l, size_t from, size_t to)
{
    int32_t w = lead(l);
    for (size_t j = from; j < to; j++)
        w += l.col[j].width + (l.o.clean ? 3 : 1);
    return w + (l.o.clean ? 0 : 3);
}

// Rules of the box: the ends of the line are corners, the middle of it dashes.
int32_t put_rule(const listing &l, size_t from, size_t to, char corner)
{
    row.fill(' ', lead(l));
    int32_t w = 1;
    for (size_t j = from; j < to; j++)
        w += l.col[j].width + 1;
    row.fill(corner, 1);
    row.fill('-', w);
    row.fill(corner, 1);
    return row.out(1);
}

int32_t put_head(const listing &l, size_t from, size_t to)
{
    row.fill(' ', lead(l));
    if (!l.o.clean)
        row.put("| ", 2);
    for (size_t j = from; j < to; j++) {
        if (l.o.clean)
            row.fill(' ', 3);
        put_cell(l.col[j], l.col[j].head, int32_t(strlen(l.col[j].head)));
        if (!l.o.clean)
            row.fill(' ', 1);
    }
    if (!l.o.clean)
        row.put("|", 1);
    return row.out(1);
}

int32_t put_obs(const listing &l, int32_t obs, size_t from, size_t to)
{
    char buf[cellmax];
    if (l.o.obs) {
        int32_t n = snprintf(buf, sizeof buf, "%*d. ", l.obswidth + 1, obs - nobss1 + 1);
        row.put(buf, n);
    } else {
        row.fill(' ', lead(l));
    }
    if (!l.o.clean)
        row.put("| ", 2);
    for (size_t j = from; j < to; j++) {
        if (l.o.clean)
            row.fill(' ', 3);
        put_cell(l.col[j], buf, show(l.o, l.col[j], obs, buf));
        if (!l.o.clean)
            row.fill(' ', 1);
    }
    if (!l.o.clean)
        row.put("|", 1);
    return row.out(0);
}

bool differ(int32_t var, int32_t a, int32_t b)
{
    if (!t_isstr(_typlist[var - 1]))
        return dsa_data(sysdsa, uint32_t(var), uint32_t(a)) !=
               dsa_data(sysdsa, uint32_t(var), uint32_t(b));
    char s[246], t[246];
    dsa_sdata(sysdsa, uint32_t(var), uint32_t(a), s);
    dsa_sdata(sysdsa, uint32_t(var), uint32_t(b), t);
    return strcmp(s, t) != 0;
}

// Whether a line goes between the n-th observation shown, last, and the one that follows.
bool line_due(const listing &l, int32_t n, int32_t last, int32_t obs)
{
    if (l.o.clean || !n)
        return false;
    if (l.sepby.empty())
        return l.o.separator > 0 && n % l.o.separator == 0;
    for (int32_t var : l.sepby)
        if (differ(var, last, obs))
            return true;
    return false;
}

int32_t put_table(const listing &l, size_t from, size_t to)
{
    newline();
    if (!l.o.clean)
        put_rule(l, from, to, '+');
    if (l.o.header) {
        put_head(l, from, to);
        if (!l.o.clean)
            put_rule(l, from, to, '|');
    }
    int32_t n = 0, last = 0;
    for (int32_t obs = parinfo->pi_obs1; obs <= parinfo->pi_obs2; obs++) {
        if (!l.has(obs))
            continue;
        if (line_due(l, n, last, obs))
            put_rule(l, from, to, '|');
        n++;
        last = obs;
        if (put_obs(l, obs, from, to))
            return stopflag;
    }
    if (!l.o.clean)
        put_rule(l, from, to, '+');
    return stopflag;
}

} // namespace

int32_t listcmd(int32_t kind);
int32_t listcmd(int32_t kind)
{
    listing l = {};
    outlev_keep keep(1);
    int32_t rc = parse(&l, kind);
    if (rc)
        return rc;
    if ((rc = choose(&l)))
        return rc;
    int32_t n = fit(&l);
    if (n < 0)
        return stopflag;
    if (!n || l.col.empty())
        return 0;
    int32_t line = omlquery_maxwidth(oml_cur);
    for (size_t from = 0, to; from < l.col.size(); from = to) {
        for (to = from + 1; to < l.col.size() && group_width(l, from, to + 1) <= line;)
            to++;
        if ((rc = put_table(l, from, to)))
            return rc;
    }
    return 0;
}
