// Cross products about given means, and cross products whose sums carry twice the digits.
//
// Sums in quad precision keep a number as the unevaluated sum of two; products by Dekker 1971
// (Numerische Mathematik 18, 224) through a fused multiplication, sums by Knuth.
#include "mosa/bihandlers.h"
#include "mosa/lapack.h"
#include <algorithm>

namespace
{

struct two {
    double hi, lo;
};
inline two two_sum(double a, double b)
{
    double s = a + b, t = s - a;
    return {s, (a - (s - t)) + (b - t)};
}
inline two two_prod(double a, double b)
{
    double p = a * b;
    return {p, std::fma(a, b, -p)};
}
inline two mul(two a, two b)
{
    two p = two_prod(a.hi, b.hi);
    p.lo += a.hi * b.lo + a.lo * b.hi;
    return p;
}
inline void add(two &to, two z)
{
    two s = two_sum(to.hi, z.hi);
    s.lo += to.lo + z.lo;
    to.hi = s.hi + s.lo;
    to.lo = s.lo - (to.hi - s.hi);
}

struct operand {
    const matobj *m, *mean;
    int32_t constant; // a column of ones behind
    int32_t cols() const { return m->cols + constant; }
};

struct product {
    operand x, z;
    const matobj *w;
    bool same; // one matrix about one mean: half of it need not be summed
};

bool read_constant(const matobj *m, operand *o)
{
    double z;
    if (!bi_real(m, &z))
        return false;
    o->constant = z != 0;
    return true;
}

bool conformable(product *c)
{
    for (operand *o : {&c->x, &c->z}) {
        if (!bi_isreal(o->m) || (o->mean && !bi_isreal(o->mean)))
            return false;
        if (o->mean && (mo_count(o->mean) != o->cols() ||
                        (mo_count(o->mean) && o->mean->rows != 1 && o->mean->cols != 1)))
            return bi_fail(3200);
    }
    if (c->w && !bi_isreal(c->w))
        return false;
    if (c->x.m->rows != c->z.m->rows)
        return bi_fail(3200);
    if (c->w && !mo_is1by1(c->w) &&
        (mo_count(c->w) != c->x.m->rows || (c->w->rows != 1 && c->w->cols != 1)))
        return bi_fail(3200);
    c->same = c->x.m == c->z.m && c->x.constant == c->z.constant && c->x.mean == c->z.mean;
    return true;
}

// The arguments are X [, xc] [, x] [, w], Z [, zc] [, z], told apart by how many there are: the
// constants always stand together, and with means there are two more.
bool read_product(int32_t argc, bool means, product *c)
{
    int32_t k = 1, extra = means ? 2 : 0, plain = argc - extra;
    bool constants = plain >= 4, weight = plain == 3 || plain == 5;
    *c = {};
    c->x.m = bi_arg(argc, k++);
    if (constants && !read_constant(bi_arg(argc, k++), &c->x))
        return false;
    if (means)
        c->x.mean = bi_arg(argc, k++);
    if (weight)
        c->w = bi_arg(argc, k++);
    c->z.m = bi_arg(argc, k++);
    if (constants && !read_constant(bi_arg(argc, k++), &c->z))
        return false;
    if (means)
        c->z.mean = bi_arg(argc, k++);
    return conformable(c);
}

double vector_el(const matobj *m, int64_t k)
{
    return m->view ? v_el1(m, k) : mo_re(m)[k];
}

// Row i less the mean; false when an element is missing.
bool read_row(const operand &o, const double *mean, int32_t i, two *to)
{
    const double *row = o.m->view ? nullptr : mo_re(o.m) + int64_t(i) * o.m->cols;
    bool ok = true;
    for (int32_t j = 0; j < o.m->cols; j++) {
        double v = row ? row[j] : v_el(o.m, i, j);
        ok &= v < misval;
        to[j] = mean ? two_sum(v, -mean[j]) : two{v, 0};
    }
    if (o.constant)
        to[o.m->cols] = mean ? two_sum(1, -mean[o.m->cols]) : two{1, 0};
    return ok;
}

void sum_quad(const two *x, const two *z, double w, int64_t nx, int64_t nz, bool same, two *out)
{
    for (int64_t a = 0; a < nx; a++) {
        two f = mul(x[a], {w, 0});
        for (int64_t b = same ? a : 0; b < nz; b++)
            add(out[a * nz + b], mul(f, z[b]));
    }
}
void sum_plain(const two *x, const two *z, double w, int64_t nx, int64_t nz, bool same, two *out)
{
    for (int64_t a = 0; a < nx; a++) {
        double f = w * x[a].hi;
        for (int64_t b = same ? a : 0; b < nz; b++)
            out[a * nz + b].hi += f * z[b].hi;
    }
}

std::unique_ptr<double[]> read_mean(const matobj *m, bool *missing)
{
    auto p = la_scratch<double>(mo_count(m));
    for (int64_t k = 0; p && k < mo_count(m); k++) {
        p[size_t(k)] = vector_el(m, k);
        *missing |= p[size_t(k)] >= misval;
    }
    return p;
}

void cross_product(int32_t argc, bool means, bool quad)
{
    product c;
    if (!read_product(argc, means, &c))
        return;
    int64_t nx = c.x.cols(), nz = c.z.cols();
    matobj *r = m_mktmat(MO_REAL, int32_t(nx), int32_t(nz));
    auto sums = la_scratch<two>(nx * nz), row = la_scratch<two>(nx + nz);
    std::unique_ptr<double[]> xm, zm;
    bool missing = false;
    if (!r || !sums || !row)
        return;
    if (means && (!(xm = read_mean(c.x.mean, &missing)) || !(zm = read_mean(c.z.mean, &missing))))
        return;
    if (missing) {
        fillwithmissing(r);
        m_result(argc, r);
        return;
    }
    two *x = row.get(), *z = c.same ? x : x + nx;
    std::fill_n(sums.get(), nx * nz, two{0, 0});
    for (int32_t i = 0; i < c.x.m->rows; i++) {
        if (row_break())
            return;
        double w = !c.w ? 1 : vector_el(c.w, mo_is1by1(c.w) ? 0 : i);
        bool use = read_row(c.x, xm.get(), i, x) && w < misval;
        use &= c.same || read_row(c.z, zm.get(), i, z);
        if (use)
            (quad ? sum_quad : sum_plain)(x, z, w, nx, nz, c.same, sums.get());
    }
    for (int64_t a = 0; a < nx; a++)
        for (int64_t b = 0; b < nz; b++) {
            two s = sums[size_t(c.same && b < a ? b * nz + a : a * nz + b)];
            mo_re(r)[a * nz + b] = la_kept(s.hi + s.lo);
        }
    m_result(argc, r);
}

} // namespace

// quadcross(): the forms of cross(), summed in quad precision.
void biquadcross(int32_t argc)
{
    m_xeqerrid = "quadcross()";
    cross_product(argc, false, true);
}
// crossdev(X, x, Z, z), (X, x, w, Z, z), (X, xc, x, Z, zc, z), (X, xc, x, w, Z, zc, z):
// (X :- x)' diag(w) (Z :- z); rows with a missing value are left out.
void bicrossdev(int32_t argc)
{
    m_xeqerrid = "crossdev()";
    cross_product(argc, true, false);
}
void biquadcrossdev(int32_t argc)
{
    m_xeqerrid = "quadcrossdev()";
    cross_product(argc, true, true);
}
