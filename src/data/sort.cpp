// data/sort.cpp - the order of the observations.
//
// The order test comes first: what is in order does not move, what is in reverse order is
// turned around. Anything else is shuffled before it is sorted, so that nobody can lean on
// the order of ties; a stable sort adds the row number as the last key.
#include "data/sort.h"
#include "core/mem.h"
#include "core/progress.h"
#include "core/rc.h"
#include "core/state.h"
#include "data/sort_int.h"
#include "data/variables.h"
#include "interp/messages.h"
#include <algorithm>
#include <memory>
#include <utility>

static constexpr int32_t maxvrl = 121, swap_lrec = 160;
int32_t sort_lastmode;

namespace {
struct freer {
    void operator()(void *p) const { safefree(p); }
};
}  // namespace
template <class T> using block = std::unique_ptr<T[], freer>;
template <class T> static block<T> getblock(uint64_t n)
{
    return block<T>(static_cast<T *>(safemalloc(n * sizeof(T))));
}

// ---- the generator of the shuffle, apart from the user's random numbers

static uint32_t seed = 1001;
static int32_t rnd_base, rnd_width;

uint32_t sortseed() { return seed; }
void setsortseed(uint32_t s) { seed = s; }
void srndobs(int32_t lo, int32_t hi)
{
    rnd_base = lo;
    rnd_width = hi - lo;
}
int32_t rndobs()
{
    constexpr uint32_t mask = 0x7fffffff;
    seed = (((seed * 3433u) & mask) + ((seed << 16) & mask)) & mask;
    auto n = int64_t(seed / 2147483646.0 * rnd_width + 0.5);
    return rnd_base + int32_t(n > rnd_width ? rnd_width : n);
}

// ---- keys

struct sortjob {
    sortkey key[maxvrl + 1];
    int32_t nkey;
    int32_t first, last;
};

static void set_keys(sortjob *j, const int32_t *keys, int32_t nkeys)
{
    j->nkey = nkeys;
    for (int32_t i = 0; i < nkeys; i++)
        j->key[i] = {sysdsa->typ[keys[i] - 1], sysdsa->offset[keys[i] - 1]};
}

static const char *row_of(int32_t obs) { return dsa_obsptr(sysdsa, uint32_t(obs)); }

int32_t sort_compare(uint32_t a, uint32_t b, const int32_t *keys, int32_t nkeys)
{
    int c = 0;
    for (int32_t i = 0; i < nkeys && c == 0; i++) {
        sortkey k = {sysdsa->typ[keys[i] - 1], sysdsa->offset[keys[i] - 1]};
        c = sort_onekey(k, row_of(int32_t(a)), row_of(int32_t(b)));
    }
    return c;
}

bool sort_known(const int32_t *keys, int32_t nkeys)
{
    for (int32_t i = 0; i < nkeys; i++)
        if (_srtlist[i] == 0 || _srtlist[i] != keys[i])
            return false;
    return true;
}

void pi_chksort(int32_t var)
{
    for (int32_t i = 0; _srtlist[i]; i++)
        if (_srtlist[i] == var) {
            _srtlist[i] = 0;
            return;
        }
}

static void put_sortlist(const int32_t *keys, int32_t nkeys)
{
    int32_t n = 0;
    for (int32_t i = 0; i < nkeys; i++) {
        bool repeat = false;
        for (int32_t k = 0; k < n && !repeat; k++)
            repeat = _srtlist[k] == keys[i];
        if (!repeat)
            _srtlist[n++] = int16_t(keys[i]);
    }
    _srtlist[n] = 0;
}

// 1 ascending, -1 descending, 0 neither, 2 after a break.
static int order_test(const sortjob *j)
{
    int sign = 0;
    for (int32_t i = j->first; i < j->last; i++) {
        int c = sort_rows(j->key, j->nkey, row_of(i), row_of(i + 1));
        if (c) {
            c = c < 0 ? 1 : -1;
            if (sign && c != sign)
                return 0;
            sign = c;
        }
        if ((i & 1023) == 0 && fault_poll())
            return 2;
    }
    return sign ? sign : 1;
}

// ---- three ways to hold an order: the rows themselves, numbers in memory, numbers in a
// work variable. row(i) is the row that stands at place i.

struct by_rows {
    int32_t row(int32_t i) const { return i; }
    void swap(int32_t i, int32_t k) { dsa_exchange_obs(sysdsa, uint32_t(i), uint32_t(k)); }
};
struct by_vector {
    int32_t *v;
    int32_t row(int32_t i) const { return v[i]; }
    void set(int32_t i, int32_t r) { v[i] = r; }
    void swap(int32_t i, int32_t k) { std::swap(v[i], v[k]); }
};
struct by_variable {
    uint32_t var;
    int32_t row(int32_t i) const { return dsa_idata(sysdsa, var, uint32_t(i)); }
    void set(int32_t i, int32_t r) { dsa_istore(r, sysdsa, var, uint32_t(i)); }
    void swap(int32_t i, int32_t k)
    {
        int32_t a = row(i);
        set(i, row(k));
        set(k, a);
    }
};

template <class A> static int32_t shuffle(A a, const sortjob *j)
{
    srndobs(j->first, j->last);
    for (int32_t i = j->first; i <= j->last; i++) {
        int32_t x = rndobs(), y = rndobs();
        if (x != y)
            a.swap(x, y);
        if ((i & 1023) == 0 && fault_poll())
            return RC_BREAK;
    }
    return 0;
}

template <class A> struct quick {
    A a;
    const sortjob *j;
    const char *at(int32_t i) const { return row_of(a.row(i)); }
    int cmp(int32_t x, int32_t y) const { return sort_rows(j->key, j->nkey, at(x), at(y)); }
    // The row at place i against the pivot, whose first key is known.
    int against(int32_t i, int64_t key, const char *pivot) const
    {
        const char *r = at(i);
        int64_t x = sort_ordinal(j->key[0], r);
        return x != key ? (x < key ? -1 : 1) : sort_rows(j->key, j->nkey, r, pivot);
    }
    void insertion(int32_t lo, int32_t hi)
    {
        for (int32_t i = lo + 1; i <= hi; i++)
            for (int32_t k = i; k > lo && cmp(k - 1, k) > 0; k--)
                a.swap(k - 1, k);
    }
    // The pivot, the middle of three, waits at lo while the rest is parted.
    int32_t part(int32_t lo, int32_t hi)
    {
        int32_t mid = lo + (hi - lo) / 2;
        if (cmp(mid, lo) < 0)
            a.swap(mid, lo);
        if (cmp(hi, lo) < 0)
            a.swap(hi, lo);
        if (cmp(hi, mid) < 0)
            a.swap(hi, mid);
        a.swap(lo, mid);
        const char *pivot = at(lo);
        int64_t key = sort_ordinal(j->key[0], pivot);
        int32_t i = lo, k = hi + 1;
        for (;;) {
            do
                i++;
            while (i <= hi && against(i, key, pivot) < 0);
            do
                k--;
            while (against(k, key, pivot) > 0);
            if (i >= k)
                break;
            a.swap(i, k);
        }
        a.swap(lo, k);
        return k;
    }
    int32_t sort(int32_t lo, int32_t hi)
    {
        while (hi - lo > 8) {
            if (fault_poll())
                return RC_BREAK;
            int32_t p = part(lo, hi);
            int32_t rc = p - lo < hi - p ? sort(lo, p - 1) : sort(p + 1, hi);
            if (rc)
                return rc;
            if (p - lo < hi - p)
                lo = p + 1;
            else
                hi = p - 1;
        }
        insertion(lo, hi);
        return 0;
    }
};

// Rows to their places, cycle by cycle, through the scratch row. A break, where it is let in,
// closes the cycle under way: every row is still there once, in no order.
template <class A> static int32_t apply(A a, const sortjob *j, bool breakable)
{
    dsa_area *d = sysdsa;
    int32_t moved = 0, n = j->last - j->first + 1;
    for (int32_t i = j->first; i <= j->last; i++) {
        int32_t from = a.row(i), to = i;
        if (from == i)
            continue;
        dsa_cp_obs(d, 0, uint32_t(i));
        while (from != i) {
            // Read where the next row goes before this place is written over.
            int32_t next = a.row(from);
            dsa_cp_obs(d, uint32_t(to), uint32_t(from));
            a.set(to, to);
            to = from;
            from = next;
            if (breakable && (++moved & 0xfff) == 0 &&
                progress_poll("sorting", 0.8 + 0.2 * moved / n, 1)) {
                dsa_cp_obs(d, uint32_t(to), 0);
                return RC_BREAK;
            }
        }
        dsa_cp_obs(d, uint32_t(to), 0);
        a.set(to, to);
    }
    return 0;
}

void sort_apply(int32_t *rows)
{
    sortjob j;
    j.first = 1;
    j.last = _Nobs;
    _srtlist[0] = 0;
    (void)apply(by_vector{rows}, &j, false);
    upSort = true;
}

// ---- an index in memory, with each row's first key beside its number

struct entry {
    int64_t key;
    int32_t row;
};

struct entry_less {
    const sortjob *j;
    bool operator()(const entry &a, const entry &b) const
    {
        if (a.key != b.key)
            return a.key < b.key;
        if (j->nkey == 1 && (j->key[0].type <= 8 || !t_isstr(j->key[0].type)))
            return false;
        return sort_rows(j->key, j->nkey, row_of(a.row), row_of(b.row)) < 0;
    }
};

// As std::merge of e[0..mid) and e[mid..n), seeing a break on the way.
static int32_t merge_entries(const entry *e, int64_t mid, int64_t n, entry *out,
                             const entry_less &less)
{
    constexpr int64_t piece = 65536;
    const entry *a = e, *aend = e + mid, *b = aend, *bend = e + n;
    while (a < aend && b < bend) {
        entry *stop = out + std::min(piece, (aend - a) + (bend - b));
        while (out < stop && a < aend && b < bend)
            *out++ = less(*b, *a) ? *b++ : *a++;
        if (fault_poll())
            return RC_BREAK;
    }
    out = std::copy(a, aend, out);
    std::copy(b, bend, out);
    return 0;
}

// Runs are sorted, then merged back and forth between the two halves of the buffer; between
// them a break is seen. Ties keep their order. The result may stand in either half.
static entry *sort_entries(entry *e, entry *other, int64_t n, const sortjob *j, int32_t *rc)
{
    constexpr int64_t run = 8192;
    entry_less less = {j};
    for (int64_t i = 0; i < n; i += run) {
        std::stable_sort(e + i, e + std::min(n, i + run), less);
        if ((*rc = progress_poll("sorting", 0.3 * double(i) / double(n), 1) ? RC_BREAK : 0))
            return e;
    }
    double pass = 0, passes = 1;
    for (int64_t w = run; 2 * w < n; w *= 2)
        passes++;
    for (int64_t w = run; w < n; w *= 2, pass++) {
        for (int64_t i = 0; i < n; i += 2 * w) {
            int64_t mid = std::min(n, i + w), end = std::min(n, i + 2 * w);
            *rc = merge_entries(e + i, mid - i, end - i, other + i, less);
            progress("sorting", 0.3 + 0.5 * (pass + double(i) / double(n)) / passes);
            if (*rc)
                return e;
        }
        std::swap(e, other);
    }
    return e;
}

// Sorts numbers v[0..n) of rows. Without memory for the keys the rows are asked each time, and
// ties come in any order.
static int32_t sort_vector(int32_t *v, int64_t n, const sortjob *j, bool *loose)
{
    auto e = getblock<entry>(uint64_t(n) * 2);
    *loose = !e;
    if (!e)
        return quick<by_vector>{{v}, j}.sort(0, int32_t(n - 1));
    for (int64_t i = 0; i < n; i++)
        e[size_t(i)] = {sort_ordinal(j->key[0], row_of(v[i])), v[i]};
    int32_t rc = 0;
    const entry *sorted = sort_entries(e.get(), e.get() + n, n, j, &rc);
    for (int64_t i = 0; i < n && !rc; i++)
        v[i] = sorted[i].row;
    return rc;
}

// ---- moving the rows

static bool move_by_vector(const sortjob *j, int32_t *rc)
{
    auto v = getblock<int32_t>(uint64_t(_Nobs) + 1);
    if (!v)
        return false;
    sort_lastmode = SORT_IVEC;
    for (int32_t i = j->first; i <= j->last; i++)
        v[size_t(i)] = i;
    by_vector a = {v.get()};
    bool loose;
    *rc = shuffle(a, j);
    if (!*rc)
        *rc = sort_vector(v.get() + j->first, int64_t(j->last) - j->first + 1, j, &loose);
    if (!*rc)
        *rc = apply(a, j, true);
    return true;
}

static bool move_by_variable(const sortjob *j, int32_t *rc)
{
    uint8_t noisy = dsa_reset_noisy(sysdsa, 0);
    int32_t var = addwrkvar(T_LONG, misval);
    dsa_reset_noisy(sysdsa, noisy);
    if (var < 0)
        return false;
    sort_lastmode = SORT_IVAR;
    by_variable a = {uint32_t(var)};
    for (int32_t i = j->first; i <= j->last; i++)
        a.set(i, i);
    *rc = shuffle(a, j);
    if (!*rc)
        *rc = quick<by_variable>{a, j}.sort(j->first, j->last);
    if (!*rc)
        *rc = apply(a, j, true);
    dsa_truncate_var_fast(sysdsa, uint32_t(var) - 1);
    return true;
}

static int32_t move_rows(const sortjob *j, int32_t mode)
{
    int32_t rc = 0;
    if (mode == SORT_AUTO && dsa_lrec(sysdsa) <= swap_lrec)
        mode = SORT_SWAP;
    if ((mode == SORT_AUTO || mode == SORT_IVEC) && move_by_vector(j, &rc))
        return rc;
    if (mode != SORT_SWAP && move_by_variable(j, &rc))
        return rc;
    sort_lastmode = SORT_SWAP;
    by_rows a;
    if ((rc = shuffle(a, j)))
        return rc;
    return quick<by_rows>{a, j}.sort(j->first, j->last);
}

static int32_t sort_step(const sortjob *j, const int32_t *keys, int32_t nkeys, int32_t mode)
{
    bool whole = j->first == 1 && j->last == _Nobs;
    sort_lastmode = 0;
    int32_t rc = 0;
    switch (order_test(j)) {
    case 1:
        break;
    case -1:
        _srtlist[0] = 0;
        for (int32_t a = j->first, b = j->last; a < b && !rc; a++, b--) {
            dsa_exchange_obs(sysdsa, uint32_t(a), uint32_t(b));
            rc = (a & 0xfff) == 0 && fault_poll() ? RC_BREAK : 0;
        }
        break;
    case 2:
        rc = RC_BREAK;
        _srtlist[0] = 0;
        break;
    default:
        _srtlist[0] = 0;
        rc = move_rows(j, mode);
    }
    if (!rc && whole)
        put_sortlist(keys, nkeys);
    return rc;
}

int32_t sort_obs(const int32_t *keys, int32_t nkeys, int32_t first, int32_t last, bool stable,
                 int32_t mode)
{
    if (first < 1)
        first = 1;
    if (last > _Nobs)
        last = _Nobs;
    if (last - first < 1)
        stable = false;
    if (nkeys > maxvrl || (stable && nkeys + 1 >= maxvrl))
        return error(RC_TOOMANYVARS);
    sortjob j;
    j.first = first;
    j.last = last;
    int32_t var = 0;
    if (stable) {
        if ((var = addwrkvar(T_LONG, 1)) < 0)
            return -var;
        for (int32_t i = first; i <= last; i++)
            dsa_istore(i - first + 1, sysdsa, uint32_t(var), uint32_t(i));
    }
    set_keys(&j, keys, nkeys);
    if (stable)
        j.key[j.nkey++] = {T_LONG, sysdsa->offset[var - 1]};
    int32_t rc = sort_step(&j, keys, nkeys, mode);
    if (stable)
        dsa_truncate_var_fast(sysdsa, uint32_t(var) - 1);
    if (!rc)
        upSort = true;
    return rc;
}

// ---- an order without moving rows

int32_t sort_index(const int32_t *keys, int32_t nkeys, const uint8_t *sel, int32_t *idx)
{
    if (nkeys > maxvrl)
        return -error(RC_TOOMANYVARS);
    sortjob j;
    set_keys(&j, keys, nkeys);
    int32_t n = 0;
    for (int32_t i = 1; i <= _Nobs; i++)
        if (!sel || sel[i - 1])
            idx[n++] = i;
    if (n < 2 || nkeys == 0 || sort_known(keys, nkeys))
        return n;
    bool ordered = true;
    for (int32_t i = 1; i < n && ordered; i++)
        ordered = sort_rows(j.key, j.nkey, row_of(idx[i - 1]), row_of(idx[i])) <= 0;
    if (ordered)
        return n;
    bool loose;
    int32_t rc = sort_vector(idx, n, &j, &loose);
    for (int32_t i = 0, k; loose && !rc && i < n; i = k) {
        for (k = i + 1; k < n && !sort_rows(j.key, j.nkey, row_of(idx[i]), row_of(idx[k]));)
            k++;
        sortnints(idx + i, k - i);
    }
    return rc ? -rc : n;
}

// ---- an order in a work variable: each of its rows holds the number of an observation

// 1 ascending, -1 descending, 0 neither, 2 after a break, seen through the index.
static int index_test(const by_variable &a, const sortjob *j)
{
    int sign = 0;
    for (int32_t i = j->first; i < j->last; i++) {
        int c = sort_rows(j->key, j->nkey, row_of(a.row(i)), row_of(a.row(i + 1)));
        if (c) {
            c = c < 0 ? 1 : -1;
            if (sign && c != sign)
                return 0;
            sign = c;
        }
        if ((i & 1023) == 0 && fault_poll())
            return 2;
    }
    return sign ? sign : 1;
}

static int32_t sort_through(by_variable a, const sortjob *j)
{
    int how = index_test(a, j);
    if (how == 1 || how == 2)
        return how == 2 ? RC_BREAK : 0;
    if (how == -1) {
        for (int32_t i = j->first, k = j->last; i < k; i++, k--)
            a.swap(i, k);
        return 0;
    }
    srndobs(j->first, j->last);
    for (int32_t i = (j->last - j->first + 1) / 2; i > 0; i--) {
        int32_t x = rndobs(), y = rndobs();
        a.swap(x, y);
    }
    return quick<by_variable>{a, j}.sort(j->first, j->last);
}

int32_t sortvar1(int32_t idx, const int32_t *keys, int32_t nkeys, int32_t first, int32_t last)
{
    if (nkeys > maxvrl)
        return error(RC_TOOMANYVARS);
    if (first >= last || nkeys < 1)
        return 0;
    sortjob j;
    j.first = first;
    j.last = last;
    set_keys(&j, keys, nkeys);
    return sort_through({uint32_t(idx)}, &j);
}

int32_t sortvar(const int32_t *keys, int32_t nkeys, int32_t first, int32_t last,
                bool (*sel)(int32_t obs), int32_t marker, int32_t *n)
{
    int32_t var = addwrkvar(T_LONG, misval);
    if (var < 0)
        return var;
    int32_t in = first - 1, out = last, rc = 0;
    for (int32_t i = first; i <= last && !rc; i++) {
        bool there = (!sel || sel(i)) &&
                     (!marker || !ovismissing(dsa_data(sysdsa, uint32_t(marker), uint32_t(i))));
        dsa_istore(i, sysdsa, uint32_t(var), uint32_t(there ? ++in : out--));
        rc = (i & 1023) == 0 && fault_poll() ? RC_BREAK : 0;
    }
    *n = in - first + 1;
    // Data that are known to be in this order give an index that is.
    if (!rc && !sort_known(keys, nkeys))
        rc = sortvar1(var, keys, nkeys, first, in);
    if (!rc)
        return var;
    dsa_truncate_var_fast(sysdsa, uint32_t(var) - 1);
    return -rc;
}

// ---- plain integers

void sortnints(int32_t *values, int32_t n)
{
    int32_t up = 1, down = 1;
    for (int32_t i = 1; i < n; i++) {
        up &= values[i - 1] <= values[i];
        down &= values[i - 1] >= values[i];
    }
    if (up)
        return;
    if (down)
        std::reverse(values, values + n);
    else
        std::sort(values, values + n);
}

int32_t uniqnints(int32_t *values, int32_t n)
{
    sortnints(values, n);
    return int32_t(std::unique(values, values + n) - values);
}

// ---- a variable that is an index: its values are the places

static bool index_vector(uint32_t var, int32_t *v)
{
    for (int32_t i = 1; i <= _Nobs; i++)
        v[i] = 0;
    for (int32_t i = 1; i <= _Nobs; i++) {
        double z = dsa_data(sysdsa, var, uint32_t(i));
        if (!(z >= 1 && z <= _Nobs) || z != double(int32_t(z)) || v[int32_t(z)])
            return false;
        v[int32_t(z)] = i;
    }
    return true;
}

int32_t sysidxsort(const char *name, bool breakable)
{
    int32_t var = findvarnoab(name);
    if (var < 0)
        return -var;
    if (t_isstr(_typlist[var - 1]))
        return error(108);
    auto v = getblock<int32_t>(uint64_t(_Nobs) + 1);
    if (!v)
        return error(RC_NOMEM);
    if (!index_vector(uint32_t(var), v.get()))
        return error(459);
    auto sv = stopflag_val, av = altstopflag_val;
    if (!breakable) {
        stopflag_val = 0;
        altstopflag_val = 1;
    }
    int32_t rc = fault_poll() ? RC_BREAK : 0;
    if (!rc) {
        sortjob j = {};
        j.first = 1;
        j.last = _Nobs;
        _srtlist[0] = 0;
        rc = apply(by_vector{v.get()}, &j, breakable);
        upSort = true;
    }
    stopflag_val = sv;
    altstopflag_val = av;
    return rc;
}
