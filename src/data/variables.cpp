// data/variables.cpp - names and lookup in the dictionary, work variables, temporary names.
#include "data/variables.h"
#include "core/rc.h"
#include "core/state.h"
#include "data/dsa.h"
#include "data/scalars.h"
#include "data/umat.h"
#include "interp/dm.h"
#include "interp/messages.h"
#include "output/fmt.h"
#include <cctype>

const char *const resword[] = {"_pred", "_b",  "_n",       "_N",    "float", "double", "int",
                               "long",  "_uniform", "_coef", "_rc", "_pi",   "byte",   " "};
const char *const keyword[] = {"with", "using", "if", "in", "%", "=", ",", " "};

// ---- names

static int32_t bad_name(const char *name, bool quiet)
{
    return quiet ? RC_SYNTAX : error2(1, name);
}

int32_t chkname(const char *name, bool quiet)
{
    if (!*name)
        return quiet ? RC_SYNTAX : errout(RC_SYNTAX, "nothing found where name expected\n");
    size_t n = strcspn(name, "\\!@#$%^&*()-+=[]{}:;,'\"~<>?/|.");
    if (name[n] || n > size_t(namelen) || !(isalpha(uint8_t(*name)) || *name == '_'))
        return bad_name(name, quiet);
    return 0;
}

int32_t chksinglename(const char *name, bool quiet)
{
    return strchr(name, ' ') ? bad_name(name, quiet) : chkname(name, quiet);
}

static bool in_list(const char *const *list, const char *name)
{
    for (; strcmp(*list, " "); list++)
        if (!strcmp(*list, name))
            return true;
    return false;
}

int32_t chkreserved(const char *name) { return in_list(resword, name) ? RC_SYNTAX : 0; }

int32_t chkreskeywrds_quietly(const char *name)
{
    return in_list(keyword, name) || in_list(resword, name) ? RC_SYNTAX : 0;
}

int32_t chkreskeywrds(const char *name)
{
    if (!chkreskeywrds_quietly(name))
        return 0;
    return errout(RC_SYNTAX, "%s invalid name (reserved word)\n", name);
}

// ---- lookup

// 0-based place of a whole name among the first n, or -1.
static int32_t whole(const char *name, const char (*names)[33], int32_t n)
{
    size_t len = strlen(name) + 1;
    if (len > 33)
        return -1;
    for (int32_t k = 0; k < n; k++)
        if (names[k][0] == name[0] && !memcmp(names[k], name, len))
            return k;
    return -1;
}

// One pass: a whole name wins at once, else the one name that begins so. -1 none, -2 several.
static int32_t prefix(const char *name, const char (*names)[33], int32_t n)
{
    size_t len = strlen(name);
    int32_t hit = -1;
    for (int32_t k = 0; k < n; k++) {
        if (strncmp(names[k], name, len))
            continue;
        if (names[k][len] == 0)
            return k;
        hit = hit == -1 ? k : -2;
    }
    return hit;
}

int32_t ovata_findvar(const char *name, int32_t mode, bool exact)
{
    bool quiet = mode >= 10;
    if (quiet)
        mode -= 10;
    int32_t rc = chkname(name, true);
    if (rc)
        return -rc;
    if (_Kvar == 0) {
        if (mode == 0 || quiet)
            return 1;
        return -error(RC_NOTFOUND);
    }
    int32_t k = mode == 0 || exact ? whole(name, _varlist, _Kvar) : prefix(name, _varlist, _Kvar);
    if (mode == 0) {
        if (k < 0)
            return _Kvar + 1;
        return quiet ? k + 1 : -error2(3, name);
    }
    if (k >= 0)
        return k + 1;
    if (k == -2)
        return quiet ? -RC_NOTFOUND : -error2(4, name);
    return quiet ? _Kvar + 1 : -varnotfound(name);
}

int32_t findtyped(const char *name, bool exact)
{
    int32_t rc = chkname(name, false);
    return rc ? -rc : ovata_findvar(name, 1, exact);
}

int32_t sysfindvar(const char *name) { return whole(name, _varlist, _Kvar) + 1; }

int32_t sysfindvarfromend(const char *name)
{
    for (int32_t k = _Kvar; k > 0; k--)
        if (!strcmp(_varlist[k - 1], name))
            return k;
    return 0;
}

int32_t findvarnoab(const char *name)
{
    int32_t k = sysfindvar(name);
    return k ? k : -varnotfound(name);
}

int32_t unab_var(const char *name, char *full)
{
    int32_t k = ovata_findvar(name, 1, !ovata_varabbrev);
    if (k < 0)
        return -k;
    memcpy(full, _varlist[k - 1], 33);
    return 0;
}

int32_t findvar_in_list(const char *name, const char (*names)[33], int32_t n, bool exact)
{
    int32_t k = exact ? whole(name, names, n) : prefix(name, names, n);
    return k == -2 ? -1 : k + 1;
}

// ---- additions

int32_t addvar(uint8_t type, const char *name)
{
    int32_t rc = chksinglename(name, false);
    if (!rc && !sysflag)
        rc = chkreskeywrds(name);
    if (rc)
        return -rc;
    int32_t k = ovata_findvar(name, 0, true);
    if (k < 0)
        return k;
    char fmt[16];
    if ((rc = dsa_add_var(sysdsa, type, name, fmt_default(type, fmt))))
        return -rc;
    return _Kvar;
}

int32_t addwrkvar(uint8_t type, double initial)
{
    char name[9], fmt[16];
    mktmpvn(name);
    dsa_area *d = sysdsa;
    uint32_t limit = d->K_max;
    if (d->K >= limit)
        d->K_max = d->K + 1;
    int32_t rc = dsa_add_var(d, type, name, fmt_default(type, fmt));
    d->K_max = limit;
    if (rc)
        return -rc;
    uint32_t var = d->K;
    char cell[T_STRMAX] = {};
    if (!t_isstr(type))
        cell_store(initial, type, cell);
    size_t w = size_t(dsa_bytlenc(type));
    for (uint32_t i = 1; i < d->_No_; i++)
        memcpy(dsa_varobsptr(d, var, i), cell, w);
    return int32_t(var);
}

// ---- temporary names

int32_t tmpvctr;
static constexpr int32_t tmpv_last = 2146483646, tmpv_digits = 6;

void mktmpvn(char *buffer)
{
    int32_t n = tmpvctr;
    memcpy(buffer, "__000000", 9);
    for (int32_t i = tmpv_digits - 1; i >= 0; i--, n /= 36)
        buffer[2 + i] = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ"[n % 36];
    if (++tmpvctr > tmpv_last)
        tmpvctr = 0;
}

bool istmpvn(const char *name, int32_t start)
{
    if (strlen(name) != 2 + size_t(tmpv_digits) || name[0] != '_' || name[1] != '_')
        return false;
    int64_t n = 0;
    for (int32_t i = 0; i < tmpv_digits; i++) {
        char c = name[2 + i];
        if (!isdigit(uint8_t(c)) && !isupper(uint8_t(c)))
            return false;
        n = n * 36 + (isdigit(uint8_t(c)) ? c - '0' : c - 'A' + 10);
    }
    if (n > tmpv_last)
        return false;
    // The counter may have begun anew since start.
    return start <= tmpvctr ? n >= start && n < tmpvctr : n >= start || n < tmpvctr;
}

static void rm_records(int32_t type, int32_t start)
{
    char name[33];
    void *p = dmnext(nullptr, name, type, nullptr);
    while (p) {
        char next_name[33];
        void *next = dmnext(p, next_name, type, nullptr);
        if (istmpvn(name, start)) {
            if (type == DM_SCALAR)
                sclrrm(name);
            else
                umat_rm(name, MK_MAT);
        }
        p = next;
        memcpy(name, next_name, sizeof name);
    }
}

// The flags stand in memory of their own: what a level made goes also when there is no more.
void rmtmpvn(int32_t start)
{
    static uint8_t flags[max_theory_k + 256];
    bool any = false;
    for (int32_t k = 0; k < _Kvar && !any; k++)
        any = istmpvn(_varlist[k], start);
    if (any && size_t(_Kvar) <= sizeof flags) {
        for (int32_t k = 0; k < _Kvar; k++)
            flags[k] = istmpvn(_varlist[k], start);
        (void)!dsa_drop(sysdsa, flags, true);
    }
    rm_records(DM_SCALAR, start);
    rm_records(DM_MATRIX, start);
}
