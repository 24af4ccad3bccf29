// How a matrix looks on the screen.
//
// A scalar stands alone; anything else is framed, its rows and columns numbered, all columns
// of one width. What is too wide for the line goes on below with the next columns.
#include "core/mem.h"
#include "core/settings.h"
#include "core/state.h"
#include "mosa/builtins.h"
#include "mosa/views.h"
#include "output/fmt.h"
#include "output/print.h"
#include <algorithm>
#include <cstdio>
#include <string>

namespace
{

constexpr const char *number_format = "%10.0g";
constexpr int32_t gap = 3; // blanks between columns

std::string text_number(double z)
{
    char buffer[64];
    fmtnumtrim(buffer, sizeof buffer, z, number_format);
    return buffer;
}

std::string text_complex(double re, double im)
{
    if (ovismissing(re))
        return text_number(re);
    if (im == 0)
        return text_number(re);
    std::string part = text_number(im < 0 ? -im : im) + "i";
    if (re == 0)
        return im < 0 ? "-" + part : part;
    return text_number(re) + (im < 0 ? " - " : " + ") + part;
}

std::string text_of(const matobj *m, int32_t i, int32_t j)
{
    int64_t k = int64_t(i) * m->cols + j;
    char buffer[256];
    switch (m->eltype) {
    case MO_REAL: return text_number(m->view ? v_el(m, i, j) : mo_re(m)[k]);
    case MO_COMPLEX: return text_complex(mo_re(m)[k], mo_im(m)[k]);
    case MO_STRING:
        if (m->view)
            return std::string(buffer, size_t(v_sel(m, i, j, buffer)));
        return std::string(sel_text(mo_sel(m)[k]), size_t(sel_len(mo_sel(m)[k])));
    default:
        snprintf(buffer, sizeof buffer, "0x%llx",
                 static_cast<unsigned long long>(reinterpret_cast<uintptr_t>(mo_pel(m)[k])));
        return buffer;
    }
}

int32_t digits(int32_t n)
{
    int32_t d = 1;
    while (n >= 10) {
        n /= 10;
        d++;
    }
    return d;
}

bool is_symmetric(const matobj *m)
{
    if (m->rows != m->cols || m->rows < 2 || m->eltype != MO_REAL)
        return false;
    for (int32_t i = 0; i < m->rows; i++)
        for (int32_t j = 0; j < i; j++)
            if (m_el(m, i, j) != m_el(m, j, i))
                return false;
    return true;
}

struct layout {
    int32_t label; // width of the row numbers
    int32_t cell;
    bool lower; // symmetric: the upper half is left out
};

int32_t widest(const matobj *m, bool lower)
{
    size_t w = size_t(digits(m->cols));
    for (int32_t i = 0; i < m->rows && !fault_poll(); i++)
        for (int32_t j = 0; j < (lower ? i + 1 : m->cols); j++)
            w = std::max(w, text_of(m, i, j).size());
    return int32_t(w);
}

void rule(const layout *l, int32_t n)
{
    std::string s(size_t(l->label) + 3, ' ');
    s += '+';
    s.append(size_t(n * l->cell + (n - 1) * gap + 4), '-');
    s += "+\n";
    spout21(s.c_str());
}

// A raw text, which may hold NUL bytes: those show as blanks.
void put(std::string *s)
{
    std::replace(s->begin(), s->end(), '\0', ' ');
    spout21(s->c_str());
}

// Text at the right of a field.
void pad_to(std::string *s, int32_t width, const std::string &text)
{
    if (int32_t(text.size()) < width)
        s->append(size_t(width) - text.size(), ' ');
    *s += text;
}

void block(const matobj *m, const layout *l, int32_t from, int32_t to)
{
    std::string s(size_t(l->label) + 4, ' ');
    for (int32_t j = from; j < to; j++)
        pad_to(&s, (j == from ? 2 : gap) + l->cell, std::to_string(j + 1));
    s += '\n';
    put(&s);
    rule(l, to - from);
    for (int32_t i = 0; i < m->rows && !fault_poll(); i++) {
        s.clear();
        pad_to(&s, l->label + 2, std::to_string(i + 1));
        s += " |";
        for (int32_t j = from; j < to; j++) {
            std::string cell = l->lower && j > i ? "" : text_of(m, i, j);
            pad_to(&s, (j == from ? 2 : gap) + l->cell, cell);
        }
        s += "  |\n";
        put(&s);
    }
    rule(l, to - from);
}

} // namespace

void mo_display(const matobj *m)
{
    if (m->rows == 0 || m->cols == 0 || !out_shown(c_outlev))
        return;
    if (m->eltype == MO_ODD)
        return;
    if (mo_is1by1(m)) {
        std::string s = "  " + text_of(m, 0, 0) + "\n";
        put(&s);
        return;
    }
    layout l{digits(m->rows), 0, is_symmetric(m)};
    l.cell = widest(m, l.lower);
    if (l.lower)
        spout21("[symmetric]\n");
    int32_t room = set_linesize - l.label - 8 + gap;
    int32_t per = std::max(1, room / (l.cell + gap));
    for (int32_t from = 0; from < m->cols && !stopflag; from += per)
        block(m, &l, from, std::min(m->cols, from + per));
}
