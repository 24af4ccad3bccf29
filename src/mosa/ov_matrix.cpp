// The console's matrices, their stripes, and the estimates, which are matrices with roles.
#include "core/rc.h"
#include "core/state.h"
#include "core/text.h"
#include "data/labels.h"
#include "data/scalars.h"
#include "data/umat.h"
#include "data/variables.h"
#include "interp/macros.h"
#include "interp/messages.h"
#include "mosa/bihandlers.h"
#include "mosa/ov_names.h"
#include "stats/results.h"
#include <cstring>
#include <vector>

namespace
{

matkind store_of(const ov_name &n)
{
    return n.where != OVN_RESULT ? MK_MAT
           : n.kind == RK_R      ? MK_R
           : n.kind == RK_E      ? MK_E
                                 : MK_RETURN;
}

// A name where a matrix may be: no system values, no characteristics, no s().
bool read_matname(const matobj *m, ov_name *n)
{
    return ov_readname(m, n) &&
           (n->where == OVN_PLAIN || (n->where == OVN_RESULT && n->kind != RK_S) || bi_fail(3300));
}

matobj *copy_of(const umat *m)
{
    matobj *r = m_mktmat(MO_REAL, m->rows, m->cols);
    if (r)
        memcpy(mo_re(r), m->el, sizeof(double) * size_t(mo_count(r)));
    return r;
}

bool put_elements(umat *to, const matobj *x)
{
    if (!x->view) {
        memcpy(to->el, mo_re(x), sizeof(double) * size_t(mo_count(x)));
        return true;
    }
    for (int64_t k = 0; k < mo_count(x); k++)
        to->el[k] = v_el1(x, k);
    return true;
}

int32_t check_matname(const char *name)
{
    double z;
    int32_t rc = chkreskeywrds(name);
    if (!rc && (sclrld(name, &z) || ssclrld(name)))
        rc = errout(507, "%s already defined as a scalar\n", name);
    return rc;
}

// A new matrix with the usual names takes the place of what the name has.
int32_t put_matrix(const ov_name &n, const matobj *x, int32_t cat)
{
    char work[9];
    matref m;
    const char *name = n.name.c_str();
    bool plain = n.where == OVN_PLAIN;
    if (int32_t rc = plain ? check_matname(name) : 0)
        return rc;
    mktmpvn(work);
    if (int32_t rc = umat_new(work, MK_MAT, x->rows, x->cols, &m))
        return rc;
    put_elements(m.m, x);
    return plain ? umat_rename(work, name, MK_MAT) : retval_put_matrix(n.kind, name, work, cat);
}

void drop_matrix(const ov_name &n)
{
    matref m;
    if (n.where == OVN_PLAIN)
        umat_rm(n.name.c_str(), MK_MAT);
    else if (umat_get(n.name.c_str(), store_of(n), &m))
        retval_take_away(n.kind, n.name.c_str());
}

// ---- stripes

matobj *stripe_of(const umatname *s, int32_t n)
{
    matobj *r = m_mktmat(MO_STRING, n, 2);
    for (int32_t i = 0; r && i < n; i++) {
        const char *eq = strcmp(s[i].eq, "_") ? s[i].eq : "";
        if (selreplace(r, 2 * int64_t(i), eq, int64_t(strlen(eq))) ||
            selreplace(r, 2 * int64_t(i) + 1, s[i].name, int64_t(strlen(s[i].name)))) {
            mo_freemat(r);
            return nullptr;
        }
    }
    return r;
}

bool stripe_word(const std::string &word, const char *none, char *out, size_t room)
{
    // Only the name of a term may be longer than a plain one.
    bool term = word.find_first_of(".#") != std::string::npos;
    if (word.size() >= room || (!term && word.size() > namelen) ||
        word.find_first_of(": \"`'") != std::string::npos)
        return bi_fail(3300);
    strcut(out, room, word.empty() ? none : word.c_str());
    return true;
}

// Rows of equation and name, n of them.
bool read_stripe(const matobj *s, int32_t n, std::vector<umatname> *out)
{
    if (!bi_isstring(s))
        return false;
    if (s->rows != n || s->cols != 2)
        return bi_fail(3200);
    out->resize(size_t(n));
    for (int32_t i = 0; i < n; i++)
        if (!stripe_word(ov_element(s, 2 * int64_t(i)), "_", (*out)[size_t(i)].eq,
                         sizeof umatname::eq) ||
            !stripe_word(ov_element(s, 2 * int64_t(i) + 1), "_", (*out)[size_t(i)].name,
                         sizeof umatname::name))
            return false;
    return true;
}

// ov_matrixrowstripe(name [, S]) and the same of columns
void stripe_call(int32_t argc, const char *id, bool rows)
{
    m_xeqerrid = id;
    ov_name n;
    matref m;
    if (!read_matname(bi_arg(argc, 1), &n))
        return;
    bool found = umat_get(n.name.c_str(), store_of(n), &m);
    if (argc == 1) {
        matobj *r = found ? stripe_of(rows ? m.row : m.col, rows ? m.m->rows : m.m->cols)
                          : m_mktmat(MO_STRING, 0, 2);
        if (r)
            m_result(argc, r);
        return;
    }
    ov_end end;
    std::vector<umatname> names;
    if (!end || (!found && ov_failed(matnotfound(n.name.c_str()))) ||
        !read_stripe(bi_arg(argc, 2), rows ? m.m->rows : m.m->cols, &names))
        return;
    memcpy(rows ? m.row : m.col, names.data(), sizeof(umatname) * names.size());
    end.done(argc);
}

// ---- estimates

// The coefficients, or 301 with words when nothing was estimated.
bool coefficients(matref *b)
{
    return umat_get("b", MK_E, b) || !ov_failed(regrnotfound());
}

bool get_e(const matobj *m, matref *out, bool *found)
{
    std::string name;
    if (!ov_string(m, &name))
        return false;
    *found = umat_get(name.c_str(), MK_E, out);
    return mac_goodname(name.c_str(), name.size()) || bi_fail(3300);
}

} // namespace

// ov_matrix(name [, X [, category]]): nothing when there is none; nothing takes it away.
void biov_matrix(int32_t argc)
{
    m_xeqerrid = "ov_matrix()";
    ov_name n;
    matref m;
    int32_t cat;
    if (!read_matname(bi_arg(argc, 1), &n))
        return;
    if (argc == 1) {
        if (!umat_get(n.name.c_str(), store_of(n), &m))
            return ov_void(argc);
        if (matobj *r = copy_of(m.m))
            m_result(argc, r);
        return;
    }
    const matobj *x = bi_arg(argc, 2);
    ov_end end;
    if (!end || !bi_isreal(x) || !ov_readcategory(argc, 3, &cat))
        return;
    if (mo_count(x) == 0)
        drop_matrix(n);
    else if (ov_failed(put_matrix(n, x, cat)))
        return;
    end.done(argc);
}

// ov_replacematrix(name, X): new numbers, the names stay.
void biov_replacematrix(int32_t argc)
{
    m_xeqerrid = "ov_replacematrix()";
    ov_name n;
    matref m;
    const matobj *x = m_arg(0);
    if (!read_matname(m_arg(1), &n) || !bi_isreal(x))
        return;
    ov_end end;
    if (!end ||
        (!umat_get(n.name.c_str(), store_of(n), &m) && ov_failed(matnotfound(n.name.c_str()))))
        return;
    if (m.m->rows != x->rows || m.m->cols != x->cols) {
        m_xrc = 3200;
        return;
    }
    put_elements(m.m, x);
    end.done(argc);
}

void biov_matrixrowstripe(int32_t argc)
{
    stripe_call(argc, "ov_matrixrowstripe()", true);
}
void biov_matrixcolstripe(int32_t argc)
{
    stripe_call(argc, "ov_matrixcolstripe()", false);
}

// ov_estversion(): the version the last estimates were made under, missing without any.
void biov_estversion(int32_t argc)
{
    m_xeqerrid = "ov_estversion()";
    double z = estval_get_double("version");
    ov_real(argc, !lastest ? misval : z < misval ? z : vernum / 100.0);
}

// ov_sys_lastest(): 1 when there are estimates to show again.
void biov_sys_lastest(int32_t argc)
{
    ov_real(argc, lastest);
}

// The coefficients as a row, and new numbers for them under the names they have.
void biov_sys_getusb(int32_t argc)
{
    m_xeqerrid = "ov_sys_getusb()";
    matref b;
    if (!coefficients(&b))
        return;
    if (matobj *r = copy_of(b.m))
        m_result(argc, r);
}
void biov_sys_putusb(int32_t argc)
{
    m_xeqerrid = "ov_sys_putusb()";
    const matobj *x = m_arg(0);
    matref b;
    ov_end end;
    if (!end || !bi_isreal(x) || !coefficients(&b))
        return;
    if (x->rows != b.m->rows || x->cols != b.m->cols) {
        m_xrc = 3200;
        return;
    }
    put_elements(b.m, x);
    end.done(argc);
}

// Their names; new ones go to the variance matrix too.
void biov_sys_getusbstripe(int32_t argc)
{
    m_xeqerrid = "ov_sys_getusbstripe()";
    matref b;
    if (!coefficients(&b))
        return;
    if (matobj *r = stripe_of(b.col, b.m->cols))
        m_result(argc, r);
}
void biov_sys_putusbstripe(int32_t argc)
{
    m_xeqerrid = "ov_sys_putusbstripe()";
    matref b, v;
    std::vector<umatname> names;
    ov_end end;
    if (!end || !coefficients(&b) || !read_stripe(m_arg(0), b.m->cols, &names))
        return;
    size_t n = sizeof(umatname) * names.size();
    memcpy(b.col, names.data(), n);
    if (umat_get("V", MK_E, &v) && v.m->rows == b.m->cols && v.m->cols == b.m->cols) {
        memcpy(v.row, names.data(), n);
        memcpy(v.col, names.data(), n);
    }
    end.done(argc);
}

// Labels of the variables whose names the coefficients have: one a row, "" for what is no
// variable. New ones are given to the variables.
void biov_sys_getusbvlab(int32_t argc)
{
    m_xeqerrid = "ov_sys_getusbvlab()";
    matref b;
    if (!coefficients(&b))
        return;
    matobj *r = m_mktmat(MO_STRING, b.m->cols, 1);
    for (int32_t k = 0; r && k < b.m->cols; k++) {
        char label[varlablen + 1] = "";
        if (int32_t var = ov_varnumber(b.col[k].name, false))
            getvarlab(var, label);
        if (selreplace(r, k, label, int64_t(strlen(label)))) {
            mo_freemat(r);
            return;
        }
    }
    if (r)
        m_result(argc, r);
}
void biov_sys_putusbvlab(int32_t argc)
{
    m_xeqerrid = "ov_sys_putusbvlab()";
    const matobj *s = m_arg(0);
    matref b;
    ov_end end;
    if (!end || !bi_isstring(s) || !coefficients(&b))
        return;
    if (mo_count(s) != b.m->cols) {
        m_xrc = 3200;
        return;
    }
    for (int32_t k = 0; k < b.m->cols; k++)
        if (int32_t var = ov_varnumber(b.col[k].name, false)) {
            if (ov_failed(putvarlab(var, ov_element(s, k).c_str())))
                return;
            s_updata = true;
        }
    end.done(argc);
}

// A matrix of the estimates by its bare name; new numbers of its shape keep its names.
void biov_sys_getematrix(int32_t argc)
{
    m_xeqerrid = "ov_sys_getematrix()";
    matref m;
    bool found;
    if (!get_e(m_arg(0), &m, &found))
        return;
    if (!found)
        return ov_void(argc);
    if (matobj *r = copy_of(m.m))
        m_result(argc, r);
}
void biov_sys_putematrix(int32_t argc)
{
    m_xeqerrid = "ov_sys_putematrix()";
    const matobj *x = m_arg(0);
    matref m;
    bool found;
    ov_name n;
    ov_end end;
    if (!end || !get_e(m_arg(1), &m, &found) || !bi_isreal(x))
        return;
    if (mo_count(x) == 0) {
        m_xrc = 3200;
        return;
    }
    n.where = OVN_RESULT;
    n.kind = RK_E;
    (void)!ov_string(m_arg(1), &n.name);
    if (found && m.m->rows == x->rows && m.m->cols == x->cols)
        put_elements(m.m, x);
    else if (ov_failed(put_matrix(n, x, 0)))
        return;
    end.done(argc);
}
