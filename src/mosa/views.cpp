#include "mosa/views.h"
#include "core/mem.h"
#include "core/state.h"
#include "data/dsa.h"
#include "data/sort.h"
#include "mosa/vm.h"
#include "varlist/terms.h"
#include <algorithm>
#include <new>
#include <vector>

int64_t v_length(int32_t kind, int32_t rows, int32_t cols)
{
    int64_t r = rows, c = cols;
    switch (kind) {
    case 0: return r * c * 8;
    case 1: return (c + 1) * 4;
    case 2: return (r + c) * 4;
    case 3: return c * 4 + 12;
    default: return (r + c) * 4 + 8;
    }
}

const char *mosa_representation(const matobj *m)
{
    static const char *const words[] = {"Array", "View1", "View2", "View3", "View4"};
    return m->view >= 0 && m->view <= 4 ? words[m->view] : "Array";
}

static int32_t *numbers(const matobj *v)
{
    return static_cast<int32_t *>(v->data) + (v->view > 2 ? 2 : 0);
}

int32_t v_obs(const matobj *v, int32_t i)
{
    const int32_t *n = numbers(v) + v->cols;
    return v->view == 1 || v->view == 3 ? n[0] + i : n[i];
}

int32_t v_var(const matobj *v, int32_t j)
{
    return numbers(v)[j];
}

// The cell a view's element stands for; false when the dataset has none.
static bool cell(const matobj *v, int32_t i, int32_t j, uint32_t *var, uint32_t *obs)
{
    int32_t k = v_var(v, j), n = v_obs(v, i);
    if (v->view > 2 || k < 1 || k > _Kvar || n < 1 || n > _Nobs)
        return false;
    *var = uint32_t(k);
    *obs = uint32_t(n);
    return true;
}

// The data changed, and may be out of order from this variable on.
static void written(uint32_t var)
{
    s_updata = true;
    if (_srtlist[0])
        pi_chksort(int32_t(var));
}

static double v_term(const matobj *v, int32_t i, int32_t j);

double v_el(const matobj *v, int32_t i, int32_t j)
{
    uint32_t k, n;
    if (v->view > 2)
        return v_term(v, i, j);
    if (!cell(v, i, j, &k, &n) || t_isstr(_typlist[k - 1]))
        return misval;
    return dsa_data(sysdsa, k, n);
}

void v_row(const matobj *v, int32_t i, double *out)
{
    int32_t n = v_obs(v, i);
    if (v->view > 2 || n < 1 || n > _Nobs) {
        for (int32_t j = 0; j < v->cols; j++)
            out[j] = v_el(v, i, j);
        return;
    }
    const char *row = dsa_obsptr(sysdsa, uint32_t(n));
    const int32_t *k = numbers(v);
    for (int32_t j = 0; j < v->cols; j++) {
        bool there = k[j] >= 1 && k[j] <= _Kvar;
        out[j] = there ? cell_data(_typlist[k[j] - 1], row + sysdsa->offset[k[j] - 1]) : misval;
    }
}

double v_el1(const matobj *v, int64_t k)
{
    return v_el(v, int32_t(k / v->cols), int32_t(k % v->cols));
}

void v_sto_el(double z, const matobj *v, int32_t i, int32_t j)
{
    uint32_t k, n;
    if (!cell(v, i, j, &k, &n) || t_isstr(_typlist[k - 1]))
        return;
    dsa_store(z, sysdsa, k, n);
    written(k);
}

void v_sto_el1(double z, const matobj *v, int64_t k)
{
    v_sto_el(z, v, int32_t(k / v->cols), int32_t(k % v->cols));
}

int32_t v_sel(const matobj *v, int32_t i, int32_t j, char *buffer)
{
    uint32_t k, n;
    buffer[0] = '\0';
    if (!cell(v, i, j, &k, &n) || !t_isstr(_typlist[k - 1]))
        return 0;
    dsa_sdata(sysdsa, k, n, buffer);
    return int32_t(strlen(buffer));
}

int32_t v_sel1(const matobj *v, int64_t k, char *buffer)
{
    return v_sel(v, int32_t(k / v->cols), int32_t(k % v->cols), buffer);
}

char *v_exsel(const matobj *v, int32_t i, int32_t j)
{
    char text[256];
    int32_t n = v_sel(v, i, j, text);
    if (!n)
        return nullptr;
    auto *block = static_cast<char *>(safemalloc(size_t(n) + 5));
    if (!block) {
        m_custom_xeqerr(3900, "unable to allocate string");
        return nullptr;
    }
    int32_t stored = n + 1;
    memcpy(block, &stored, sizeof stored);
    memcpy(block + 4, text, size_t(n) + 1);
    return block;
}

void v_sto_sel(const char *bytes, int32_t length, const matobj *v, int32_t i, int32_t j)
{
    uint32_t k, n;
    if (!cell(v, i, j, &k, &n) || !t_isstr(_typlist[k - 1]))
        return;
    char text[T_STRMAX + 1] = {};
    memcpy(text, bytes, size_t(length < T_STRMAX ? length : T_STRMAX));
    dsa_safe_sstore(sysdsa, k, n, text);
    written(k);
}

// ---- views of terms

struct fvhandle {
    fvlist list;
    int32_t holds;
    bool ts;
};
static std::vector<fvhandle *> live;

fvhandle *v_fvnew(fvlist &&list)
{
    auto *h = new (std::nothrow) fvhandle{std::move(list), 1, false};
    if (!h) {
        m_xrc = 3900;
        return nullptr;
    }
    for (const termname &t : h->list.col)
        for (int32_t i = 0; i < t.n; i++)
            h->ts |= t.part[i].ts.any();
    live.push_back(h);
    return h;
}

fvhandle *v_fvhandle(const matobj *v)
{
    fvhandle *h = nullptr;
    if (v->view > 2 && v->data)
        memcpy(&h, v->data, sizeof h);
    return h;
}

void v_fvset(matobj *v, fvhandle *h)
{
    memcpy(v->data, &h, sizeof h);
    v_fvhold(h);
}

void v_fvhold(fvhandle *h)
{
    if (h)
        h->holds++;
}

void v_fvlet(fvhandle *h)
{
    auto at = std::find(live.begin(), live.end(), h);
    if (at == live.end() || --h->holds)
        return;
    live.erase(at);
    delete h;
}

static double v_term(const matobj *v, int32_t i, int32_t j)
{
    int32_t k = v_var(v, j), n = v_obs(v, i);
    const fvhandle *h = v_fvhandle(v);
    if (!h || n < 1 || n > _Nobs)
        return misval;
    if (k > 0)
        return k > _Kvar || t_isstr(_typlist[k - 1]) ? misval
                                                     : dsa_data(sysdsa, uint32_t(k), uint32_t(n));
    if (!k)
        return misval;
    const termname &t = h->list.col[size_t(-k) - 1];
    for (int32_t p = 0; p < t.n; p++) {
        int32_t var = t.part[p].var;
        if (var < 1 || var > _Kvar || t_isstr(_typlist[var - 1]))
            return misval;
    }
    return fv_value(t, n);
}

int32_t v_fvxeqinit(matobj *v)
{
    const fvhandle *h = v_fvhandle(v);
    if (!h || !h->ts || !ts_init())
        return 0;
    m_xrc = 3598;
    return 1;
}

bool v_fvnotallowed(const matobj *v)
{
    if (v->view < 3 || v->eltype != MO_REAL)
        return false;
    m_xrc = 3206;
    return true;
}

void v_fvfree(matobj *v)
{
    if (v->view < 3 || !v->data)
        return;
    v_fvlet(v_fvhandle(v));
    memset(v->data, 0, sizeof(fvhandle *));
}

void v_fvclearall()
{
    for (matobj *m = mo_nextmat(nullptr); m; m = mo_nextmat(m))
        v_fvfree(m);
}

// A variable that went away is none; those behind it move down.
static void renumber_terms(int32_t n)
{
    for (fvhandle *h : live)
        for (termname &t : h->list.col)
            for (int32_t i = 0; i < t.n; i++) {
                int32_t &var = t.part[i].var;
                var = var == n ? 0 : var - (var > n);
            }
}

void v_upvarnums(int32_t n)
{
    for (matobj *m = mo_nextmat(nullptr); m; m = mo_nextmat(m))
        for (int32_t j = 0; m->view && j < m->cols; j++)
            if (numbers(m)[j] > n)
                numbers(m)[j]--;
    renumber_terms(n);
    ts_renumber(n);
}
