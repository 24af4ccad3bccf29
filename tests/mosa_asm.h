// tests/mosa_asm.h - code images written by hand, and values as text.
//
//   assembler a;
//   a.op("argc", 1).op("ld", 0).num(2).op("plus").op("ret");
//   matobj *f = a.store("f");
//
// Values read and print as "R2,2:1 2 3 .", "C1,1:1+2i", "S1,2:ab|c", "P1,1:0".
#pragma once
#include "core/missing.h"
#include "mosa/builtins.h"
#include "mosa/image.h"
#include "mosa/mtypes.h"
#include "mosa/views.h"
#include "mosa/vm.h"
#include "session.h"
#include <map>
#include <vector>

struct assembler {
    std::vector<int32_t> w{1210, 1210};
    std::map<std::string, int32_t> labels;
    std::vector<std::pair<size_t, std::string>> jumps, texts;
    std::vector<std::pair<size_t, double>> numbers;

    static int32_t number_of(const std::string &name)
    {
        for (int32_t i = 0; i < m_nops; i++)
            if (m_optable[i].name && name == m_optable[i].name)
                return i;
        abort();
    }
    template <class... T> assembler &op(const char *name, T... words)
    {
        w.push_back(number_of(name));
        (w.push_back(int32_t(words)), ...);
        return *this;
    }
    assembler &inline_text(const std::string &s)
    {
        size_t n = s.size() / 4 + 1;
        w.push_back(int32_t(n));
        w.resize(w.size() + n);
        memcpy(&w[w.size() - n], s.data(), s.size());
        return *this;
    }
    assembler &named(const char *name, const std::string &text)
    {
        return op(name).inline_text(text);
    }
    assembler &named(const char *name, int32_t word, const std::string &text)
    {
        return op(name, word).inline_text(text);
    }
    assembler &findf(const std::string &name) { return op("findf", 0, 0, 0).inline_text(name); }
    assembler &num(double z)
    {
        op("lddbl", 0);
        numbers.emplace_back(w.size() - 1, z);
        return *this;
    }
    assembler &str(const std::string &s)
    {
        op("ldstr", 0);
        return literal(s);
    }
    assembler &literal(const std::string &s) // the last word becomes the index of the text
    {
        texts.emplace_back(w.size() - 1, s);
        return *this;
    }
    assembler &jump(const char *name, const std::string &label)
    {
        op(name, 0);
        jumps.emplace_back(w.size() - 1, label);
        return *this;
    }
    assembler &label(const std::string &name)
    {
        labels[name] = int32_t(w.size());
        return *this;
    }
    void finish()
    {
        for (auto &[at, name] : jumps)
            w[at] = labels.at(name);
        if (!texts.empty()) {
            op("spool", texts.size());
            for (auto &[at, s] : texts) {
                w[at] = int32_t(w.size());
                inline_text(s);
            }
        }
        if (!numbers.empty()) {
            if (w.size() % 2)
                op("filler");
            op("dpool", numbers.size());
            for (auto &[at, z] : numbers) {
                w[at] = int32_t(w.size());
                w.resize(w.size() + 2);
                memcpy(&w[w.size() - 2], &z, 8);
            }
        }
    }
    matobj *store(const char *name, int32_t eltype = MT_TRANSMORPHIC, int32_t orgtype = OT_MATRIX,
                  const char *subname = "")
    {
        finish();
        matobj *f = mo_allocfcn("", name, subname, int64_t(w.size()) * 4);
        memcpy(f->data, w.data(), w.size() * 4);
        f->rows = int32_t(w.size());
        f->cols = eltype;
        f->eltype = int16_t(orgtype);
        return f;
    }
};

inline std::string show_number(double z)
{
    char text[40];
    if (z >= misval)
        return ".";
    snprintf(text, sizeof text, "%.10g", z);
    return text;
}

inline std::string show(const matobj *m)
{
    if (mo_isfcn(m))
        return std::string("function ") + mo_name(m);
    std::string out = m->eltype == MO_REAL      ? "R"
                      : m->eltype == MO_COMPLEX ? "C"
                      : m->eltype == MO_STRING  ? "S"
                      : m->eltype == MO_POINTER ? "P"
                      : m->eltype == MO_STRUCT  ? "T"
                                                : "K";
    out += std::to_string(m->rows) + "," + std::to_string(m->cols) + ":";
    for (int64_t k = 0; k < mo_count(m); k++) {
        char text[256];
        if (k)
            out += m->eltype == MO_STRING ? "|" : " ";
        if (m->eltype == MO_REAL)
            out += show_number(m->view ? v_el1(m, k) : mo_re(m)[k]);
        else if (m->eltype == MO_COMPLEX)
            out += mo_re(m)[k] >= misval ? "."
                                         : show_number(mo_re(m)[k]) + (mo_im(m)[k] < 0 ? "" : "+") +
                                               show_number(mo_im(m)[k]) + "i";
        else if (m->eltype == MO_STRING && m->view)
            out.append(text, size_t(v_sel1(m, k, text)));
        else if (m->eltype == MO_STRING)
            out.append(sel_text(mo_sel(m)[k]), size_t(sel_len(mo_sel(m)[k])));
        else
            out += mo_pel(m)[k] ? "1" : "0";
    }
    return out;
}

// "V3,2:1" is a real view of rows 1 on and as many variables from number 1 on.
inline matobj *value_of(const std::string &text)
{
    int rows, cols, used;
    char kind;
    if (sscanf(text.c_str(), "%c%d,%d:%n", &kind, &rows, &cols, &used) < 3)
        abort();
    const char *p = text.c_str() + used;
    int16_t eltype = kind == 'C'   ? MO_COMPLEX
                     : kind == 'S' ? MO_STRING
                     : kind == 'P' ? MO_POINTER
                                   : MO_REAL;
    if (kind == 'V') {
        matobj *v = m_mktview(MO_REAL, 1, rows, cols);
        auto *n = static_cast<int32_t *>(v->data);
        for (int j = 0; j < cols; j++)
            n[j] = atoi(p) + j;
        n[cols] = 1;
        return v;
    }
    matobj *m = m_mktmat(eltype, rows, cols);
    for (int64_t k = 0; k < mo_count(m); k++) {
        char *end = const_cast<char *>(p);
        if (eltype == MO_STRING) {
            size_t n = strcspn(p, "|");
            if (selreplace(m, k, p, int64_t(n)))
                abort();
            p += n + (p[n] == '|');
            continue;
        }
        if (eltype == MO_POINTER) {
            p += *p == ' ';
            if (*p++ == '1')
                pelreplace(m, k, m_mktsmatsto(double(k)));
            continue;
        }
        p += *p == ' ';
        bool missing = *p == '.' && (p[1] == ' ' || p[1] == 0 || p[1] == 'i');
        mo_re(m)[k] = missing ? misval : strtod(p, &end);
        p = missing ? p + 1 : end;
        if (eltype == MO_COMPLEX) {
            mo_im(m)[k] = missing ? misval : strtod(p, &end);
            p = missing ? p : end + 1;
        }
    }
    return m;
}

// What a call came to: "CODE" and its words in session_output, or the value.
inline std::string call_with(matobj *f, const std::vector<matobj *> &args)
{
    session();
    session_output.clear();
    if (mosastakinit(1))
        abort();
    m_xrc = m_xrc_first = 0;
    m_xeqerrid = nullptr;
    matobj **top = m_stak;
    for (matobj *m : args)
        m_push(m);
    m_callfcn(f, int32_t(args.size()));
    std::string out;
    if (m_xrc)
        out = std::to_string(m_xrc == 1 ? 1 : m_xrc_first);
    else
        out = show(*m_stak);
    while (m_stak > top)
        m_drop();
    m_xrc = 0;
    omlflush(oml_cur);
    return out;
}

inline std::string call_values(matobj *f, const std::vector<std::string> &args)
{
    std::vector<matobj *> values;
    for (const std::string &text : args)
        values.push_back(value_of(text));
    return call_with(f, values);
}

// Live matrices, for tests that nothing is left behind.
inline int32_t live_matrices()
{
    int32_t n = 0;
    for (matobj *m = mo_nextmat(nullptr); m; m = mo_nextmat(m))
        n++;
    return n;
}
