// commands/sidejoin.cpp - what append and merge share.
#include "commands/sidejoin.h"
#include "commands/filevars.h"
#include "core/files.h"
#include "core/limits.h"
#include "core/mem.h"
#include "core/rc.h"
#include "core/state.h"
#include "core/text.h"
#include "data/dsa.h"
#include "data/labels.h"
#include "data/variables.h"
#include "expr/generate.h"
#include "expr/parse.h"
#include "interp/messages.h"
#include "output/fmt.h"
#include "output/print.h"
#include <cstring>

// The narrowest type that takes the values of both.
static uint8_t common_type(uint8_t a, uint8_t b)
{
    if (t_isstr(a) || a == b)
        return a > b ? a : b;
    uint8_t lo = a < b ? a : b, hi = a < b ? b : a;
    return lo == T_LONG && hi == T_FLOAT ? uint8_t(T_DOUBLE) : hi;
}

int32_t join_match(const dtaside *s, const std::vector<uint8_t> &wanted, bool force,
                   std::vector<joinvar> *list)
{
    for (int32_t k = 0; k < s->d.K; k++) {
        if (!wanted[size_t(k)])
            continue;
        int32_t var = sysfindvar(s->d.names[k]);
        if (var && t_isstr(_typlist[var - 1]) != t_isstr(s->type[size_t(k)])) {
            if (force)
                continue;
            char a[8], b[8];
            return errout(106, "variable %s is %s in memory but %s in the file\n", s->d.names[k],
                          type_word(_typlist[var - 1], a), type_word(s->type[size_t(k)], b));
        }
        list->push_back({k, var, var == 0});
    }
    return 0;
}

static int32_t widen(int32_t var, uint8_t type)
{
    uint8_t was = _typlist[var - 1], to = common_type(was, type);
    if (to == was)
        return 0;
    int32_t rc = change_vartype_fmt(var, to);
    if (!rc)
        tmsg(_varlist[var - 1], was, to);
    return rc;
}

static int32_t make(const dtaside *s, joinvar *v)
{
    const dtadict *d = &s->d;
    uint8_t type = s->type[size_t(v->side)];
    char fmt[49];
    strcut(fmt, sizeof fmt, d->fmts[v->side]);
    if (chkfmt(fmt, nullptr) || fmt_isstr(fmt) != t_isstr(type))
        fmt_default(type, fmt);
    const char *name = d->names[v->side];
    int32_t rc = chkname(name, false);
    if (rc || (rc = dsa_add_var(sysdsa, type, name, fmt)))
        return rc;
    v->var = _i_Kvar = _Kvar;
    if (!chkname(d->lbls[v->side], true))
        memcpy(_lbllist[v->var - 1], d->lbls[v->side], 33);
    for (int32_t i = 1; i <= _Nobs; i++) {
        if (t_isstr(type))
            dsa_safe_sstore(sysdsa, uint32_t(v->var), uint32_t(i), "");
        else
            dsa_store(misval, sysdsa, uint32_t(v->var), uint32_t(i));
        if ((i & 0xfff) == 0 && fault_poll())
            return RC_BREAK;
    }
    return putvarlab(v->var, d->varlabs[v->side]);
}

int32_t join_room(const dtaside *s, const std::vector<joinvar> &list, bool flag, int64_t rows)
{
    int64_t n = flag, width = flag;
    for (const joinvar &v : list)
        if (v.fresh) {
            n++;
            width += dsa_bytlenc(s->type[size_t(v.side)]);
        }
    return dsa_alloc(sysdsa, n, width, rows);
}

int32_t join_ready(const dtaside *s, std::vector<joinvar> *list)
{
    int32_t rc;
    for (joinvar &v : *list)
        if (!v.fresh && (rc = widen(v.var, s->type[size_t(v.side)])))
            return rc;
    for (joinvar &v : *list)
        if (v.fresh && (rc = make(s, &v)))
            return rc;
    return 0;
}

void join_put(const dtaside *s, const joinvar *v, int32_t row, int32_t obs)
{
    uint8_t from = s->d.types[v->side], to = _typlist[v->var - 1];
    const char *cell = side_cell(s, v->side, row);
    char *at = dsa_varobsptr(sysdsa, uint32_t(v->var), uint32_t(obs));
    if (t_isstr(to)) {
        memcpy(at, cell, from);
        memset(at + from, 0, size_t(to - from));
    } else if (from == to) {
        memcpy(at, cell, size_t(dsa_bytlenc(to)));
    } else {
        cell_store(side_num(s, v->side, row), to, at);
    }
}

// ---- labels and characteristics

static bool wanted_here(const char *name)
{
    return vl_inuse(name, _Kvar);
}

int32_t join_labels(dtaside *s)
{
    upValLabel = true;
    return side_labels(s, wanted_here);
}

// note7 gives 7, note0 is the count; -1 for other names.
static int32_t note_number(const std::string &name)
{
    if (name.compare(0, 4, "note") || name.size() < 5 || name.size() > 8 ||
        name.find_first_not_of("0123456789", 4) != std::string::npos)
        return -1;
    return atoi(name.c_str() + 4);
}

static int32_t note_count()
{
    const char *p = charfind("_dta", "note0", nullptr);
    return p ? atoi(p) : 0;
}

// A note behind those there are, unless one says the same.
static int32_t add_note(const std::string &text)
{
    int32_t n = note_count();
    for (int32_t i = 1; i <= n; i++) {
        const char *p = charfind("_dta", ("note" + std::to_string(i)).c_str(), nullptr);
        if (p && text == p)
            return 0;
    }
    int32_t rc = charsave("_dta", ("note" + std::to_string(n + 1)).c_str(), text.c_str());
    return rc ? rc : charsave("_dta", "note0", std::to_string(n + 1).c_str());
}

int32_t join_chars(const dtaside *s, const std::vector<joinvar> &list, bool notes)
{
    int32_t rc = 0, last = 0;
    for (const sidechar &c : s->chars)
        if (c.owner == "_dta")
            last = std::max(last, note_number(c.name));
    for (int32_t i = 1; i <= last && notes; i++)
        for (const sidechar &c : s->chars)
            if (c.owner == "_dta" && note_number(c.name) == i && (rc = add_note(c.text)))
                return rc;
    for (const sidechar &c : s->chars) {
        bool known = c.owner == "_dta" ? note_number(c.name) < 0 : false;
        for (size_t i = 0; i < list.size() && !known; i++)
            known = c.owner == s->d.names[list[i].side];
        if (known && !charfind(c.owner.c_str(), c.name.c_str(), nullptr) &&
            (rc = charsave(c.owner.c_str(), c.name.c_str(), c.text.c_str())))
            return rc;
    }
    return 0;
}

// ---- clauses

std::string join_file()
{
    return path_addext(parinfo->pi_using_name, ".dta");
}

int32_t join_wanted(const dtadict *d, const char *option, std::vector<uint8_t> *wanted)
{
    char text[macrolen];
    if (ti_pi_findargasis(tokinfo, parinfo, option, int32_t(strlen(option)), text, sizeof text))
        return filevars_pick(d, text, wanted);
    wanted->assign(size_t(d->K) + 1, 1);
    return 0;
}
