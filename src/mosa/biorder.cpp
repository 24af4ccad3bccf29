// The order of rows, and rows put into an order.
#include "core/mem.h"
#include "core/pollsort.h"
#include "mosa/bi_int.h"
#include "mosa/bihandlers.h"
#include <algorithm>
#include <bit>
#include <cmath>
#include <memory>
#include <vector>

namespace
{

// What is sorted: a number whose order is that of the first column, and the row.
struct place {
    uint64_t key;
    int32_t row;
};

// Unsigned numbers in the order of the doubles; both zeros are one.
uint64_t key_of(double z, bool down)
{
    auto bits = std::bit_cast<uint64_t>(z + 0.0);
    bits = bits >> 63 ? ~bits : bits | uint64_t{1} << 63;
    return down ? ~bits : bits;
}

// The first eight bytes of a text as a number in the order of the bytes.
uint64_t key_of(const char *block, bool down)
{
    uint64_t key = 0;
    const char *s = sel_text(block);
    for (int32_t k = 0, n = std::min(sel_len(block), 8); k < n; k++)
        key |= uint64_t(uint8_t(s[k])) << (56 - 8 * k);
    return down ? ~key : key;
}

// Rows with the same key are told apart by what the columns say, in the end by their place.
struct by_text {
    const matobj *a;
    const std::vector<int32_t> *by;
    bool operator()(const place &p, const place &q) const
    {
        if (p.key != q.key)
            return p.key < q.key;
        for (int32_t c : *by) {
            int64_t j = std::abs(c) - 1;
            int32_t d = exstrcmp(mo_sel(a)[p.row * int64_t(a->cols) + j],
                                 mo_sel(a)[q.row * int64_t(a->cols) + j]);
            if (d)
                return c < 0 ? d > 0 : d < 0;
        }
        return p.row < q.row;
    }
};

struct by_number {
    const uint64_t *more; // the keys of the other columns, column by column
    int64_t rows;
    size_t columns;
    bool operator()(const place &p, const place &q) const
    {
        if (p.key != q.key)
            return p.key < q.key;
        const uint64_t *k = more;
        for (size_t c = 0; c < columns; c++, k += rows)
            if (k[p.row] != k[q.row])
                return k[p.row] < k[q.row];
        return p.row < q.row;
    }
};

struct freed {
    void operator()(void *p) const { safefree(p); }
};
template <class T> using room = std::unique_ptr<T[], freed>;

// Null after 3900 was reported.
template <class T> room<T> room_for(int64_t n)
{
    room<T> p(static_cast<T *>(safemalloc(size_t(n) * sizeof(T))));
    if (!p)
        m_custom_xeqerr(3900, "unable to allocate an order of rows");
    return p;
}

// Keys of one column, or of the imaginary parts in it, at a stride of places or of numbers.
template <class Put> bool keys(const matobj *a, int32_t column, bool imaginary, Put put)
{
    int64_t j = std::abs(column) - 1;
    const double *from = imaginary ? mo_im(a) : mo_re(a);
    for (int64_t i = 0; i < a->rows; i++) {
        if (bi_stop(i))
            return false;
        put(i, key_of(from[i * a->cols + j], column < 0));
    }
    return true;
}

bool order_numbers(const matobj *a, const std::vector<int32_t> &by, place *p)
{
    size_t parts = a->eltype == MO_COMPLEX ? 2 : 1, columns = by.size() * parts - 1;
    int64_t n = a->rows;
    auto more = room_for<uint64_t>(int64_t(columns) * n);
    if (!more)
        return false;
    for (size_t k = 0; k <= columns; k++) {
        uint64_t *to = k ? more.get() + (k - 1) * size_t(n) : nullptr;
        if (!keys(a, by[k / parts], k % parts == 1, [&](int64_t i, uint64_t key) {
                if (to)
                    to[i] = key;
                else
                    p[i].key = key;
            }))
            return false;
    }
    return !poll_sort(p, n, by_number{more.get(), n, columns}) || bi_fail(1);
}

bool order_texts(const matobj *a, const std::vector<int32_t> &by, place *p)
{
    for (int64_t i = 0; i < a->rows; i++)
        p[i].key = key_of(mo_sel(a)[i * a->cols + std::abs(by[0]) - 1], by[0] < 0);
    return !poll_sort(p, a->rows, by_text{a, &by}) || bi_fail(1);
}

// The permutation of the rows of an array, as a column; null on failure.
matobj *ordered(const matobj *a, const std::vector<int32_t> &by)
{
    auto p = room_for<place>(a->rows);
    if (!p)
        return nullptr;
    for (int32_t i = 0; i < a->rows; i++)
        p[size_t(i)] = {0, i};
    if (!by.empty() &&
        !(a->eltype == MO_STRING ? order_texts(a, by, p.get()) : order_numbers(a, by, p.get())))
        return nullptr;
    matobj *r = m_mktmat(MO_REAL, a->rows, 1);
    for (int32_t i = 0; r && i < a->rows; i++)
        mo_re(r)[i] = p[size_t(i)].row + 1;
    return r;
}

} // namespace

// order(X, columns): the permutation that sorts the rows, negative columns downwards; rows that
// are equal keep their order. Complex numbers go by their real, then their imaginary parts.
void biorder(int32_t argc)
{
    m_xeqerrid = "order()";
    matobj *a = m_arg(1);
    const matobj *idx = m_arg(0);
    if (!bi_ismatrix(a) || !bi_isreal(idx))
        return;
    if (mo_isptrlike(a->eltype) || a->eltype == MO_ODD) {
        m_xrc = 3256;
        return;
    }
    std::vector<int32_t> by;
    for (int64_t k = 0; k < mo_count(idx); k++) {
        double z = idx->view ? v_el1(idx, k) : mo_re(idx)[k];
        if (!(std::fabs(z) >= 1 && std::fabs(z) < a->cols + 1.0)) {
            m_xrc = 3300;
            return;
        }
        by.push_back(int32_t(z));
    }
    matobj *src = bi_array(a);
    if (!src)
        return;
    matobj *r = ordered(src, by);
    if (src != a)
        mo_freemat(src);
    m_result(argc, r);
}

// _collate(X, p): the rows of X in the order of the permutation.
void bi_collate(int32_t argc)
{
    m_xeqerrid = "_collate()";
    matobj *a = m_arg(1), *p = m_arg(0);
    if (!bi_ismatrix(a) || !bi_isreal(p))
        return;
    if (mo_count(p) != a->rows || (p->rows != 1 && p->cols != 1)) {
        m_xrc = 3303;
        return;
    }
    std::vector<bool> seen(size_t(a->rows), false);
    matobj *src = bi_array(a);
    matobj *r = src ? m_mktmat(a->eltype, a->rows, a->cols) : nullptr;
    if (!r)
        return;
    for (int32_t i = 0; i < a->rows; i++) {
        double z = p->view ? v_el1(p, i) : mo_re(p)[i];
        if (!(z >= 1 && z <= a->rows) || seen[size_t(z) - 1]) {
            m_xrc = 3303;
            mo_freemat(r);
            return;
        }
        seen[size_t(z) - 1] = true;
        for (int32_t j = 0; j < a->cols; j++)
            if (matcpy_el(r, int64_t(i) * a->cols + j, src, int64_t(z - 1) * a->cols + j))
                return;
    }
    if (src != a)
        mo_freemat(src);
    if (a->view) {
        (void)!matcpy_x_x(a, r);
        mo_freemat(r);
    } else {
        m_swapmat(a, r);
        mo_freemat(r);
    }
    m_result(argc, m_mktmat(MO_REAL, 0, 0));
}
