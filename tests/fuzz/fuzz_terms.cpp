// Lists with operators: what is accepted is written out and read again to the same columns, and
// every column has a name that stands for it.
#include "../session.h"
#include "varlist/terms.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *p, size_t n)
{
    session();
    if (!_Kvar) {
        for (const char *l :
             {"set obs 6", "generate byte g = mod(_n, 3)", "generate byte h = _n > 3",
              "generate x = _n/2", "generate t = _n", "char _dta[_TStvar] t"})
            if (run(l))
                abort();
    }
    s_outlev = 9;
    std::string text(reinterpret_cast<const char *>(p), n < 600 ? n : 600);
    for (char &c : text)
        if (!c || c == '\n')
            c = ' ';
    fvspec s, again;
    if (fv_text(text.c_str(), FV_TS | FV_FACTOR, &s) || s.term.size() > 200)
        return 0;
    fvlist l, m;
    if (fv_expand(s, nullptr, &l) || l.col.size() > 5000)
        return 0;
    if (fv_text(fv_write(s).c_str(), FV_TS | FV_FACTOR, &again) || fv_expand(again, nullptr, &m))
        abort();
    if (l.col.size() != m.col.size())
        abort();
    for (size_t k = 0; k < l.col.size(); k++) {
        termname t;
        std::string name = term_write(l.col[k]);
        if (name != term_write(m.col[k]) || !term_read(name.c_str(), &t) || term_write(t) != name)
            abort();
        (void)fv_xeq(l.col[k], 3);
    }
    return 0;
}
