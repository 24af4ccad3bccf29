// What is displayed: matrices of every type with any bytes and any bits in them, at any width of
// the line, and any text as a format of printf and its kin. The stack stays as it was, and what
// has elements shows something.
#include "../session.h"
#include "core/settings.h"
#include "mosa/builtins.h"
#include "mosa/vm.h"

namespace
{

const uint8_t *at;
size_t left;

uint8_t byte()
{
    return left ? left--, *at++ : 0;
}

double number()
{
    double z = int8_t(byte());
    if (left > 8 && byte() & 1) {
        memcpy(&z, at, 8);
        at += 8;
        left -= 8;
        if (z_allexp(z)) // arithmetic never leaves an infinity or a NaN behind
            z = misval;
    }
    return z;
}

void text(matobj *m, int64_t k, size_t most)
{
    size_t n = byte() % (most + 1);
    n = n > left ? left : n;
    if (selreplace(m, k, reinterpret_cast<const char *>(at), int64_t(n)))
        abort();
    at += n;
    left -= n;
}

matobj *matrix(int32_t rows, int32_t cols)
{
    static const int16_t types[] = {MO_REAL, MO_COMPLEX, MO_STRING, MO_POINTER};
    matobj *m = m_mktmat(types[byte() % 4], rows, cols);
    if (!m)
        abort();
    for (int64_t k = 0; k < mo_count(m); k++)
        if (m->eltype == MO_STRING) {
            text(m, k, 60);
        } else if (m->eltype == MO_POINTER) {
            if (byte() & 1)
                pelreplace(m, k, m_mktsmatsto(1));
        } else {
            mo_re(m)[k] = number();
            if (m->eltype == MO_COMPLEX)
                mo_im(m)[k] = mo_re(m)[k] >= misval ? misval : number();
        }
    return m;
}

void display()
{
    int32_t rows = byte() % 12, cols = byte() % 12;
    set_linesize = 40 + byte() % 200;
    matobj *m = matrix(rows, cols);
    omlflush(oml_cur); // an unended line of printf
    session_output.clear();
    mo_display(m);
    omlflush(oml_cur);
    if ((rows == 0 || cols == 0) != session_output.empty())
        abort();
    mo_freemat(m);
    set_linesize = 80;
}

void format()
{
    constexpr int32_t id_errprintf = 10, id_sprintf = 12;
    matobj **top = m_stak;
    matobj *f = m_mktmat(MO_STRING, 1, 1);
    text(f, 0, 120);
    m_push(f);
    int32_t argc = 1 + byte() % 4;
    for (int32_t i = 1; i < argc; i++)
        m_push(matrix(1, byte() % 16 ? 1 : 2));
    m_xrc = 0;
    m_bihandlers[id_errprintf + byte() % (id_sprintf - id_errprintf + 1)](argc);
    if (m_xrc ? m_stak != top + argc : m_stak != top + 1)
        abort();
    while (m_stak > top)
        m_drop();
    m_xrc = 0;
    m_xeqerrid = nullptr;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *p, size_t n)
{
    static bool started = [] {
        session();
        return mosastakinit(1) == 0;
    }();
    if (!started)
        abort();
    at = p;
    left = n;
    c_outlev = 0;
    for (int32_t i = 0; i < 8 && left; i++)
        byte() & 1 ? format() : display();
    omlflush(oml_cur);
    session_output.clear();
    return 0;
}
