// Subscripts: elements and blocks read from and stored into arrays and views.
//
// Indices are settled first, as two lists of positions; what reads or writes elements knows
// only positions. Single elements of real arrays go a shorter way.
#include "core/mem.h"
#include "mosa/views.h"
#include "mosa/vmint.h"

namespace
{

// Positions along one side, from 0: a run from start, or a list.
struct positions {
    int32_t n = 0, start = 0;
    int32_t *list = nullptr;
    int32_t near[100];
    positions() = default;
    positions(const positions &) = delete;
    positions &operator=(const positions &) = delete;
    ~positions()
    {
        if (list != near)
            safefree(list);
    }
    int32_t at(int32_t k) const { return list ? list[k] : start + k; }
    void run(int32_t from, int32_t count)
    {
        start = from;
        n = count;
    }
};

bool bad(int32_t code)
{
    m_xrc = code;
    return false;
}

// Reads an index against a side of size elements. False with m_xrc set.
bool read_index(const matobj *m, int32_t size, positions *p)
{
    if (no_mat(m))
        return false;
    if (m->eltype != MO_REAL)
        return bad(3253);
    if (m->rows != 1 && m->cols != 1)
        return bad(3301);
    int64_t n = mo_count(m);
    if (n == 1) {
        double z = m_el(m, 0, 0);
        if (z >= misval) {
            p->run(0, size);
            return true;
        }
        if (!(z >= 1 && z < double(size) + 1))
            return bad(3301);
        p->run(int32_t(z) - 1, 1);
        return true;
    }
    p->n = int32_t(n);
    p->list = n <= 100 ? p->near : static_cast<int32_t *>(safemalloc(size_t(n) * 4));
    if (!p->list)
        return bad(3900);
    for (int64_t k = 0; k < n; k++) {
        double z = m->view ? v_el1(m, k) : mo_re(m)[k];
        if (!(z >= 1 && z < double(size) + 1))
            return bad(3301);
        p->list[k] = int32_t(z) - 1;
    }
    return true;
}

// The one index of a vector; the other side is its whole. A 1 by 1 takes the index's own
// direction.
bool read_index1(const matobj *x, const matobj *index, positions *r, positions *c)
{
    if (no_mat(x))
        return false;
    bool row = x->rows == 1 && (x->cols != 1 || mo_isfcn(index) || index->rows == 1);
    if (!row && x->cols != 1)
        return bad(3301);
    if (!read_index(index, row ? x->cols : x->rows, row ? c : r))
        return false;
    (row ? r : c)->run(0, 1);
    return true;
}

// First and last positions from a range's two ends along a side. False with 3301.
bool read_ends(double first, double last, int32_t size, positions *p)
{
    if (first >= misval)
        first = 1;
    if (last >= misval)
        last = size;
    bool in = first >= 1 && first < zmaxlong && last < zmaxlong && last < double(size) + 1;
    if (!in || int32_t(first) > int32_t(last))
        return bad(3301);
    p->run(int32_t(first) - 1, int32_t(last) - int32_t(first) + 1);
    return true;
}

// A range subscript: corners of a block, or first and last of a vector.
bool read_range(const matobj *x, const matobj *r, positions *rows, positions *cols)
{
    if (no_mat(x) || no_mat(r))
        return false;
    if (r->eltype != MO_REAL)
        return bad(3253);
    if (r->view)
        return bad(3103);
    if (r->rows < 1 || r->rows > 2 || r->cols < 1 || r->cols > 2)
        return bad(3301);
    const double *z = mo_re(r);
    if (r->rows == 2 && r->cols == 2)
        return read_ends(z[0], z[2], x->rows, rows) && read_ends(z[1], z[3], x->cols, cols);
    if (x->rows == 1 || x->cols == 1) {
        double last = mo_is1by1(r) ? z[0] : z[1];
        bool row = x->rows == 1 && x->cols != 1;
        (row ? rows : cols)->run(0, 1);
        return read_ends(z[0], last, row ? x->cols : x->rows, row ? cols : rows);
    }
    if (r->rows != 1 || r->cols != 2)
        return bad(3301);
    return read_ends(z[0], z[0], x->rows, rows) && read_ends(z[1], z[1], x->cols, cols);
}

// ---- reading

bool read_element(matobj *out, int64_t to, const matobj *x, int32_t i, int32_t j)
{
    if (x->view) {
        if (x->eltype == MO_STRING) {
            char text[256];
            int32_t n = v_sel(x, i, j, text);
            return selreplace(out, to, text, n) == 0;
        }
        mo_re(out)[to] = v_el(x, i, j);
        return true;
    }
    int64_t from = int64_t(i) * x->cols + j;
    if (mo_isptrlike(x->eltype)) {
        pelreplace(out, to, mo_pel(x)[from]);
        return true;
    }
    return matcpy_el(out, to, x, from) == 0;
}

bool read_row(matobj *out, int64_t to, const matobj *x, int32_t i, const positions &cols)
{
    int32_t n = cols.n;
    if (x->eltype == MO_REAL && !x->view) {
        const double *from = mo_re(x) + int64_t(i) * x->cols;
        double *z = mo_re(out) + to;
        if (!cols.list)
            memcpy(z, from + cols.start, size_t(n) * 8);
        else
            for (int32_t j = 0; j < n; j++)
                z[j] = from[cols.list[j]];
        return true;
    }
    for (int32_t j = 0; j < n; j++)
        if (!read_element(out, to + j, x, i, cols.at(j)))
            return false;
    return true;
}

// The block in the place of x and its argc - 1 indices.
void read_block(int32_t argc, const matobj *x, const positions &rows, const positions &cols)
{
    if (x->eltype == MO_ODD)
        return fail(3250);
    matobj *out = m_mktmat(x->eltype, rows.n, cols.n);
    if (!out)
        return;
    for (int32_t i = 0; i < rows.n; i++)
        if ((x->cols > 1 && row_break()) ||
            !read_row(out, int64_t(i) * cols.n, x, rows.at(i), cols)) {
            if (!m_xrc)
                m_xrc = 3900;
            return mo_free(out);
        }
    put_result(argc, out);
}

// An index that is a real scalar within a side; -1 when it is anything else.
inline int32_t quick_index(const matobj *m, int32_t size)
{
    if (!is_rs(m))
        return -1;
    double z = *mo_re(m);
    return z >= 1 && z < double(size) + 1 ? int32_t(z) - 1 : -1;
}

// One number in the place of x and its indices.
inline void give_number(int32_t argc, double z)
{
    matobj *index = *m_stak;
    if (is_rs(index) && index->links == 1) {
        *mo_re(index) = z;
        m_stak--;
        for (int32_t k = 1; k < argc; k++)
            drop_top();
        *++m_stak = index;
        return;
    }
    put_result(argc, rs_new(z));
}

inline bool is_ra(const matobj *m)
{
    return m->eltype == MO_REAL && m->view == 0 && !mo_isfcn(m);
}

} // namespace

void oplsubscr()
{
    matobj *x = m_stak[-2];
    if (is_ra(x)) {
        int32_t i = quick_index(m_stak[-1], x->rows), j = quick_index(m_stak[0], x->cols);
        if (i >= 0 && j >= 0)
            return give_number(3, mo_re(x)[int64_t(i) * x->cols + j]);
    }
    positions rows, cols;
    if (!no_mat(x) && read_index(m_stak[-1], x->rows, &rows) &&
        read_index(m_stak[0], x->cols, &cols))
        read_block(3, x, rows, cols);
}

void oplsubscr1()
{
    matobj *x = m_stak[-1];
    if (is_ra(x) && (x->rows == 1 || x->cols == 1)) {
        int32_t i = quick_index(m_stak[0], x->rows == 1 ? x->cols : x->rows);
        if (i >= 0)
            return give_number(2, mo_re(x)[i]);
    }
    positions rows, cols;
    if (read_index1(x, m_stak[0], &rows, &cols))
        read_block(2, x, rows, cols);
}

void oprsubscr()
{
    positions rows, cols;
    matobj *x = m_stak[-1];
    if (read_range(x, m_stak[0], &rows, &cols))
        read_block(2, x, rows, cols);
}

// ---- storing

namespace
{

// Whether elements of value may go into dest. Sets m_xrc when not.
bool may_store(const matobj *dest, const matobj *value)
{
    if (no_mat(value))
        return false;
    if (dest->eltype == value->eltype && dest->eltype != MO_ODD)
        return true;
    if (dest->eltype == MO_COMPLEX && value->eltype == MO_REAL)
        return true;
    return bad(3250);
}

bool store_in_view(const matobj *dest, int32_t i, int32_t j, const matobj *value, int64_t from)
{
    char text[256];
    if (dest->eltype != MO_STRING)
        v_sto_el(value->view ? v_el1(value, from) : mo_re(value)[from], dest, i, j);
    else if (value->view) {
        int32_t n = v_sel1(value, from, text);
        v_sto_sel(text, n, dest, i, j);
    } else
        v_sto_sel(sel_text(mo_sel(value)[from]), sel_len(mo_sel(value)[from]), dest, i, j);
    return true;
}

bool store_element(matobj *dest, int32_t i, int32_t j, matobj *value, int64_t from)
{
    if (dest->view)
        return store_in_view(dest, i, j, value, from);
    int64_t to = int64_t(i) * dest->cols + j;
    if (dest->eltype == MO_COMPLEX && value->eltype == MO_REAL) {
        double z = value->view ? v_el1(value, from) : mo_re(value)[from];
        mo_re(dest)[to] = z;
        mo_im(dest)[to] = z < misval ? 0 : misval;
        return true;
    }
    if (value->view) {
        char text[256];
        if (value->eltype == MO_REAL)
            mo_re(dest)[to] = v_el1(value, from);
        else {
            int32_t n = v_sel1(value, from, text);
            return selreplace(dest, to, text, n) == 0;
        }
        return true;
    }
    // Instances of a temporary are handed over, those of a variable are copied.
    matobj *instance = mo_isptrlike(value->eltype) ? mo_pel(value)[from] : nullptr;
    if (value->eltype <= MO_STRUCT && value->links == 1 && instance && instance->links == 1) {
        pelreplace(dest, to, instance);
        return true;
    }
    return matcpy_el(dest, to, value, from) == 0;
}

// Stores the block; false with m_xrc set. The value stands fromtop below the top.
bool store_block(matobj *dest, const positions &rows, const positions &cols, int32_t fromtop)
{
    matobj *value = m_stak[-fromtop];
    if (v_fvnotallowed(dest) || !may_store(dest, value))
        return false;
    if (value->rows != rows.n || value->cols != cols.n)
        return bad(3301);
    // Read all before any is written; two views may show the same observations.
    if (value == dest || (dest->view && value->view)) {
        matobj *copy = m_dupmat(value);
        if (!copy)
            return false;
        copy->links = 1;
        m_stak[-fromtop] = copy;
        mo_unlink(value);
        value = copy;
    }
    for (int32_t i = 0; i < rows.n; i++) {
        if (dest->cols > 1 && row_break())
            return false;
        for (int32_t j = 0; j < cols.n; j++)
            if (!store_element(dest, rows.at(i), cols.at(j), value, int64_t(i) * cols.n + j)) {
                if (!m_xrc)
                    m_xrc = 3900;
                return false;
            }
    }
    return m_xrc == 0;
}

enum form { BLOCK2, BLOCK1, RANGE };

bool settle(form how, const matobj *dest, positions *rows, positions *cols)
{
    if (how == BLOCK2)
        return !no_mat(dest) && read_index(m_stak[-1], dest->rows, rows) &&
               read_index(m_stak[0], dest->cols, cols);
    if (how == BLOCK1)
        return read_index1(dest, m_stak[0], rows, cols);
    return read_range(dest, m_stak[0], rows, cols);
}

// One number into a real array; false when it takes the long way.
inline bool quick_store(form how, matobj *dest, const matobj *value)
{
    if (!is_ra(dest) || !is_rs(value) || how == RANGE)
        return false;
    if (how == BLOCK2) {
        int32_t i = quick_index(m_stak[-1], dest->rows), j = quick_index(m_stak[0], dest->cols);
        if (i < 0 || j < 0)
            return false;
        mo_re(dest)[int64_t(i) * dest->cols + j] = *mo_re(value);
        return true;
    }
    if (dest->rows != 1 && dest->cols != 1)
        return false;
    int32_t i = quick_index(m_stak[0], dest->rows == 1 ? dest->cols : dest->rows);
    if (i < 0)
        return false;
    mo_re(dest)[i] = *mo_re(value);
    return true;
}

// dest[...] = value. between counts what stands between value and indices.
bool store_into(form how, matobj *dest, int32_t between)
{
    int32_t fromtop = (how == BLOCK2 ? 2 : 1) + between;
    if (quick_store(how, dest, m_stak[-fromtop]))
        return true;
    positions rows, cols;
    dest->links++; // what is stored may take the place of the last link to it
    bool stored = settle(how, dest, &rows, &cols) && store_block(dest, rows, cols, fromtop);
    mo_unlink(dest);
    return stored;
}

void drop_n(int32_t n)
{
    while (n-- > 0)
        drop_top();
}

void store_slot(form how, bool pop)
{
    matobj *dest = m_vm.frame[m_vm.pc[1]];
    if (!store_into(how, dest, 0))
        return;
    m_vm.pc++;
    drop_n((how == BLOCK2 ? 2 : 1) + pop);
}

void store_target(form how)
{
    int32_t n = how == BLOCK2 ? 2 : 1;
    matobj *target = m_stak[-n];
    if (target->links == 1)
        return fail(3011);
    if (store_into(how, target, 1))
        drop_n(n + 1);
}

} // namespace

void oprstosmat()
{
    store_slot(RANGE, false);
}
void oprstosmatpop()
{
    store_slot(RANGE, true);
}
void oplstosmat2()
{
    store_slot(BLOCK2, false);
}
void oplstosmat2pop()
{
    store_slot(BLOCK2, true);
}
void oplstosmat1()
{
    store_slot(BLOCK1, false);
}
void oplstosmat1pop()
{
    store_slot(BLOCK1, true);
}
void oprstosexp()
{
    store_target(RANGE);
}
void oplstosexp2()
{
    store_target(BLOCK2);
}
void oplstosexp1()
{
    store_target(BLOCK1);
}

// The value goes to the target, which stays.
void opsstomat()
{
    matobj *target = m_stak[0], *value = m_stak[-1];
    if (no_mat(target) || no_mat(value))
        return;
    if (target->links == 1)
        return fail(3011);
    if (cpymat(target, value, true)) {
        if (!m_xrc)
            m_xrc = 3900;
        return;
    }
    if (!m_xrc)
        ppp(target);
}
