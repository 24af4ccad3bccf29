// data/dtaread.cpp - a dataset file into memory.
//
// A bad header leaves the data in memory alone. After that the memory is emptied, and a file
// that turns out bad leaves it empty.
#include "core/progress.h"
#include "core/text.h"
#include "core/files.h"
#include "core/mem.h"
#include "core/rc.h"
#include "core/state.h"
#include "data/dsa_int.h"
#include "data/dtafmt.h"
#include "data/labels.h"
#include "data/sort.h"
#include "data/variables.h"
#include "interp/messages.h"
#include "output/fmt.h"
#include "output/print.h"
#include <string>
#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstring>
#include <memory>

namespace {
struct freer {
    void operator()(void *p) const { safefree(p); }
};
}  // namespace
using block = std::unique_ptr<uint8_t[], freer>;

struct usejob {
    int32_t fd;
    const char *name;
    const dta_useopts *o;
    dtadict d;
    // File variable k is variable vars[k] in memory; 0 was not asked for.
    std::unique_ptr<int32_t[], freer> vars;
    bool whole;  // rows go in as they stand in the file
    byteorder order;
};

static bool wants(const usejob *j, int32_t k) { return !j->o->wanted || j->o->wanted[k]; }

static int32_t shortread(const usejob *j) { return fierr(RC_IOREAD, j->name); }

// ---- variables

// What memory takes as a name.
static void good_name(const usejob *j, int32_t k, char *name)
{
    memcpy(name, j->d.names[k], 33);
    for (char *p = name; *p; p++)
        if (!isalnum(uint8_t(*p)) && *p != '_' && !(*p & 0x80))
            *p = '_';
    if (!isalpha(uint8_t(*name)) && *name != '_') {
        char rest[33];
        memcpy(rest, name, 33);
        snprintf(name, 33, "_%.31s", rest);
    }
    bool again = chkreskeywrds_quietly(name) != 0;
    char stem[33];
    snprintf(stem, sizeof stem, "%.26s", name);
    for (int32_t n = 1; again || sysfindvar(name); n++, again = false)
        strcut(name, 33, (stem + std::to_string(n)).c_str());
}

// A format that suits the type; old files may hold anything.
static void good_format(const usejob *j, int32_t k, uint8_t type, char *fmt)
{
    snprintf(fmt, 49, "%s", j->d.fmts[k]);
    if (chkfmt(fmt, nullptr) || fmt_isstr(fmt) != t_isstr(type))
        fmt_default(dsa_modernvartype(type), fmt);
}

static int32_t add_vars(usejob *j)
{
    int32_t limit = 0;
    for (int32_t k = 0; k < j->d.K; k++)
        limit += wants(j, k);
    if (limit > maxmaxvar)
        return dsa_fail_vars(sysdsa);
    j->whole = limit == j->d.K;
    for (int32_t k = 0; k < j->d.K; k++) {
        j->vars[size_t(k)] = 0;
        if (!wants(j, k))
            continue;
        char name[33], fmt[49];
        good_name(j, k, name);
        good_format(j, k, j->d.types[k], fmt);
        int32_t rc = dsa_add_var(sysdsa, j->d.types[k], name, fmt);
        if (rc)
            return rc;
        j->vars[size_t(k)] = _Kvar;
        if (!chkname(j->d.lbls[k], true))
            memcpy(_lbllist[_Kvar - 1], j->d.lbls[k], 33);
        if ((rc = putvarlab(_Kvar, j->d.varlabs[k])))
            return rc;
    }
    _i_Kvar = _Kvar;
    return 0;
}

static void take_sortlist(const usejob *j)
{
    int32_t n = 0;
    for (int32_t i = 0; i < j->d.K; i++) {
        int32_t k = j->d.srt[i];
        if (k < 1 || k > j->d.K || !j->vars[size_t(k) - 1])
            break;
        int32_t var = j->vars[size_t(k) - 1];
        bool repeat = false;
        for (int32_t b = 0; b < n; b++)
            repeat |= _srtlist[b] == var;
        if (repeat)
            break;
        _srtlist[n++] = int16_t(var);
    }
    _srtlist[n] = 0;
}

// ---- characteristics

static int32_t take_char(void *arg, const char *owner, const char *name, const char *text)
{
    auto j = static_cast<const usejob *>(arg);
    if (!strcmp(owner, "_dta"))
        return charsave(owner, name, text);
    for (int32_t k = 0; k < j->d.K; k++)
        if (j->vars[size_t(k)] && !strcmp(owner, j->d.names[k]))
            return charsave(_varlist[j->vars[size_t(k)] - 1], name, text);
    return 0;
}

// ---- rows

struct rowfield {
    uint32_t from, to, width;
    bool reverse;
};

static void swap_bytes(char *p, uint32_t w)
{
    for (uint32_t i = 0; i < w / 2; i++)
        std::swap(p[i], p[w - 1 - i]);
}

// From a row of the file to a row in memory.
static void put_row(const usejob *j, const rowfield *f, int32_t nf, const char *from, int32_t obs)
{
    char *to = dsa_obsptr(sysdsa, uint32_t(obs));
    if (j->whole)
        memcpy(to, from, j->d.width);
    for (int32_t i = 0; i < nf; i++) {
        if (!j->whole)
            memcpy(to + f[i].to, from + f[i].from, f[i].width);
        if (f[i].reverse)
            swap_bytes(to + f[i].to, f[i].width);
    }
}

// The fields that need a hand: all when a part is read, else those to be reversed.
static int32_t list_fields(const usejob *j, rowfield *f)
{
    uint32_t at = 0;
    int32_t n = 0;
    for (int32_t k = 0; k < j->d.K; k++) {
        auto w = uint32_t(dsa_bytlenc(j->d.types[k]));
        bool reverse = j->order != b_native && !t_isstr(j->d.types[k]) && w > 1;
        if (j->vars[size_t(k)] && (reverse || !j->whole))
            f[n++] = {at, sysdsa->offset[j->vars[size_t(k)] - 1], w, reverse};
        at += w;
    }
    return n;
}

static int32_t take_rows(usejob *j, const rowfield *f, int32_t nf, const char *buf, int32_t n,
                         int32_t done)
{
    const dta_useopts *o = j->o;
    if (!o->keep) {
        int32_t rc = dsa_add_obs(sysdsa, n, false);
        if (rc)
            return rc;
    }
    for (int32_t i = 0; i < n; i++, buf += j->d.width) {
        if (!o->keep) {
            put_row(j, f, nf, buf, done + i + 1);
            continue;
        }
        int32_t rc = dsa_add_obs(sysdsa, 1, false);
        if (rc)
            return rc;
        put_row(j, f, nf, buf, _Nobs);
        if (!o->keep(o->arg, _Nobs, done + i + 1))
            dsa_truncate_obs_fast(sysdsa, uint32_t(_Nobs) - 1);
    }
    return 0;
}

static int32_t read_rows(usejob *j)
{
    uint64_t w = j->d.width;
    int32_t N = w ? j->d.N : 0, rc;  // without variables nothing bears out a count of rows
    int64_t left = ov_left(j->fd);
    if (left >= 0 && w * uint64_t(N) > uint64_t(left))
        return shortread(j);
    if (!j->o->keep && N > 0 && (rc = dsa_alloc(sysdsa, 0, 0, int64_t(N) + 1)))
        return rc;
    if (N == 0)
        return 0;
    int64_t many = int64_t(262144 / w);
    many = std::min<int64_t>(std::max<int64_t>(many, 2), N);
    block buf(static_cast<uint8_t *>(safemalloc(uint64_t(many) * w + 2)));
    std::unique_ptr<rowfield[], freer> f(
        static_cast<rowfield *>(safemalloc((uint64_t(j->d.K) + 1) * sizeof(rowfield))));
    if (!buf || !f)
        return error(RC_NOMEM);
    int32_t nf = list_fields(j, f.get());
    for (int32_t done = 0; done < N;) {
        auto n = int32_t(std::min<int64_t>(many, N - done));
        auto bytes = int64_t(uint64_t(n) * w);
        if (lovata_read(j->fd, buf.get(), bytes) < bytes)
            return shortread(j);
        auto rows = reinterpret_cast<const char *>(buf.get());
        if ((rc = take_rows(j, f.get(), nf, rows, n, done)))
            return rc;
        done += n;
        if (fault_poll())
            return RC_BREAK;
        progress("reading", double(done) / N);
    }
    return 0;
}

// ---- old missing values

static void fix_107(uint32_t var)
{
    bool any = false;
    for (int32_t i = 1; i <= _Nobs; i++)
        if (dsa_data(sysdsa, var, uint32_t(i)) == misval_107) {
            dsa_store(misval, sysdsa, var, uint32_t(i));
            any = true;
        }
    for (int32_t i = 0; any && _srtlist[i]; i++)
        if (uint32_t(_srtlist[i]) == var) {
            outlev_keep keep(1);
            spout21f("Warning:  old-format data was sorted by %s\n", _varlist[var - 1]);
        }
    if (any)
        pi_chksort(int32_t(var));
}

static void tell_renamed(const usejob *j)
{
    outlev_keep keep(1);
    for (int32_t k = 0; k < j->d.K; k++) {
        int32_t var = j->vars[size_t(k)];
        if (var && strcmp(j->d.names[k], _varlist[var - 1]))
            spout21f("Warning:  renamed %s to %s\n", j->d.names[k], _varlist[var - 1]);
    }
}

static int32_t fix_old(const usejob *j)
{
    tell_renamed(j);
    if (j->d.h.release < 108)
        for (int32_t k = 1; k <= _Kvar; k++)
            if (_typlist[k - 1] == T_DOUBLE110)
                fix_107(uint32_t(k));
    return j->d.h.release < 112 ? dsa_fix_old_vartypes() : 0;
}

// ---- the whole

static const usejob *labjob;
static bool label_used(const char *name)
{
    return labjob->whole || vl_inuse(name, _Kvar);
}

static int32_t fill_memory(usejob *j)
{
    int32_t rc = dta_readdict(j->fd, &j->d, j->name);
    if (rc)
        return rc;
    j->vars.reset(static_cast<int32_t *>(safemalloc((uint64_t(j->d.K) + 1) * sizeof(int32_t))));
    if (!j->vars)
        return error(RC_NOMEM);
    if ((rc = add_vars(j)))
        return rc;
    snprintf(datalbl, sizeof datalbl, "%s", j->d.h.label);
    if (*datalbl) {
        outlev_keep keep(1);
        spout21f("(%s)\n", datalbl);
    }
    take_sortlist(j);
    if ((rc = getgchar(j->fd, &j->d, j->name, take_char, j)))
        return rc;
    if (j->o->begin && (rc = j->o->begin(j->o->arg, j->d.N)))
        return rc;
    if ((rc = read_rows(j)))
        return rc;
    labjob = j;
    if (!j->o->nolabel && (rc = loadlab(j->fd, &j->d, label_used)))
        return rc;
    return fix_old(j);
}

int32_t dta_use(const char *name, const dta_useopts *o)
{
    usejob j = {};
    j.name = name;
    j.o = o;
    if ((j.fd = ov_open(name, OV_READ)) < 0)
        return fierr(j.fd, name);
    int32_t rc = rdhdr(j.fd, &j.d.h, name);
    if (rc)
        return rc;
    j.order = dta_order(&j.d.h);
    drop_all();
    rc = fill_memory(&j);
    progress_end();
    ov_close(j.fd);
    if (rc)
        drop_all();
    memcpy(dta_stamp, j.d.h.stamp, sizeof dta_stamp);
    s_updata = false;
    newdata = newDtaset = true;
    return rc;
}
