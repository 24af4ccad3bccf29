// The machine's stack: pushing, dropping, and what the ends of operators and built-ins share.
#include "core/mem.h"
#include "mosa/views.h"
#include "mosa/vmint.h"

matobj *rs_free[rs_max];
int32_t rs_nfree;

void rs_flush()
{
    while (rs_nfree) {
        matobj *m = rs_free[--rs_nfree];
        m->status = 1;
        mo_freemat(m);
    }
}

void rs_result2(double z)
{
    matobj *b = *m_stak, *a = m_stak[-1];
    if (a->links == 1) {
        *mo_re(a) = z;
        m_stak--;
        rs_unlink(b);
    } else if (b->links == 1) {
        *mo_re(b) = z;
        *--m_stak = b;
        rs_unlink(a);
    } else if (matobj *r = rs_new(z)) {
        r->links = 1;
        *--m_stak = r;
        rs_unlink(a);
        rs_unlink(b);
    }
}

static void push_new(matobj *m)
{
    if (m)
        m_push(m);
}

void pushdbl(double z)
{
    push_new(rs_new(z));
}

void pushint(int32_t i)
{
    push_new(rs_new(i));
}

void pushhint(int32_t i)
{
    push_new(rs_new(int16_t(i)));
}

void pushstrn(const char *bytes, int64_t n)
{
    push_new(m_mktstr(bytes, n));
}

void pushstr(const char *text)
{
    pushstrn(text, int64_t(strlen(text)));
}

void pushvoid()
{
    push_new(m_mktmat(MO_REAL, 0, 0));
}

void put_result(int32_t n, matobj *result)
{
    if (!result)
        return;
    result->links++;
    while (n-- > 0)
        drop_top();
    *++m_stak = result;
}

void qppp(matobj *result)
{
    put_result(2, result);
    m_xeqerrid = nullptr;
}

void ppp(matobj *result)
{
    put_result(2, result);
    m_xeqerrid = nullptr;
}

void popoff(int32_t n)
{
    while (n-- > 0)
        drop_top();
    m_xeqerrid = nullptr;
}

void m_result(int32_t argc, matobj *result)
{
    if (!result)
        return;
    m_xeqerrid = nullptr;
    if (argc)
        put_result(argc, result);
    else
        m_push(result);
}

const char *m_xeqldstr(char *buffer, size_t size)
{
    const int32_t *w = m_vm.pc + 1;
    size_t n = strnlen(reinterpret_cast<const char *>(w + 1), size_t(w[0]) * 4);
    if (n >= size)
        n = size - 1;
    memcpy(buffer, w + 1, n);
    buffer[n] = 0;
    m_vm.pc += 1 + w[0];
    return buffer;
}

bool row_break()
{
    if (!fault_poll())
        return false;
    m_xrc = 1;
    return true;
}

bool need_array(int32_t fromtop)
{
    matobj *m = m_stak[-fromtop];
    if (no_mat(m))
        return true;
    if (!m->view)
        return false;
    matobj *copy = v_fvxeqinit(m) ? nullptr : m_dupmat(m);
    if (!copy)
        return true;
    copy->links = 1;
    m_stak[-fromtop] = copy;
    mo_unlink(m);
    return false;
}

bool make_complex(int32_t fromtop)
{
    matobj *m = m_stak[-fromtop];
    if (m->eltype == MO_COMPLEX)
        return false;
    matobj *c = m_mktmat(MO_COMPLEX, m->rows, m->cols);
    if (!c)
        return true;
    int64_t n = mo_count(m);
    for (int64_t i = 0; i < n; i++) {
        double z = mo_re(m)[i];
        mo_re(c)[i] = z;
        mo_im(c)[i] = z < misval ? 0 : misval;
    }
    c->links = 1;
    m_stak[-fromtop] = c;
    mo_unlink(m);
    return false;
}

int32_t truth_of(const matobj *m)
{
    if (no_mat(m))
        return -1;
    if (!mo_is1by1(m)) {
        m_xrc = 3204;
        return -1;
    }
    switch (m->eltype) {
    case MO_REAL: return (m->view ? v_el(m, 0, 0) : *mo_re(m)) != 0;
    case MO_COMPLEX: return mo_re(m)[0] != 0 || mo_re(m)[1] != 0;
    case MO_POINTER: return mo_pel(m)[0] != nullptr;
    default: m_xrc = 3250; return -1;
    }
}

double m_el(const matobj *m, int64_t i, int64_t j)
{
    return m->view ? v_el(m, int32_t(i), int32_t(j)) : mo_re(m)[i * m->cols + j];
}
