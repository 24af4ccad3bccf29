// display(), printf() and their kin.
//
// The format of printf is mark-up and may hold \n, \t, \r and \\; what the arguments bring in
// goes out as it is, whatever braces it holds.
#include "core/mem.h"
#include "core/state.h"
#include "mosa/bi_int.h"
#include "mosa/bihandlers.h"
#include "output/fmt.h"
#include "output/oml.h"
#include "output/print.h"
#include <algorithm>
#include <cctype>
#include <cstdio>
#include <string>

namespace
{

uint8_t display_level; // set by displayas()

void result_void(int32_t argc)
{
    m_result(argc, m_mktmat(MO_REAL, 0, 0));
}

// Text of a user inside mark-up.
void append_raw(std::string *out, const char *p, int32_t n)
{
    for (int32_t i = 0; i < n; i++) {
        if (p[i] == '{')
            *out += "{c -(}";
        else if (p[i] == '}')
            *out += "{c )-}";
        else
            *out += p[i] ? p[i] : ' ';
    }
}

// One argument by one directive. False with m_xrc set.
bool append_arg(std::string *out, const std::string &format, matobj *a, bool markup)
{
    char buffer[1024];
    if (!bi_isscalar(a))
        return false;
    if (fmt_isstr(format.c_str())) {
        const char *p;
        int32_t n;
        if (!bi_string(a, &p, &n))
            return false;
        std::string text(p, size_t(n));
        int32_t width = fmtwidth(format.c_str());
        if (int32_t(text.size()) < width && format != "%s") {
            int32_t len = fmtstr(buffer, sizeof buffer, text.c_str(), format.c_str());
            text.assign(buffer, size_t(len));
        }
        markup ? append_raw(out, text.data(), int32_t(text.size())) : void(*out += text);
        return true;
    }
    double z;
    if (!bi_real(a, &z))
        return false;
    bool plain =
        format.find_first_of("0123456789") == std::string::npos && !fmt_isdate(format.c_str());
    std::string f = !plain ? format : format == "%g" ? "%9.0g" : "%9.0" + format.substr(1);
    int32_t n = plain ? fmtnumtrim(buffer, sizeof buffer, z, f.c_str())
                      : fmtnum(buffer, sizeof buffer, z, f.c_str());
    out->append(buffer, size_t(n));
    return true;
}

char escaped(char c)
{
    return c == 'n' ? '\n' : c == 't' ? '\t' : c == 'r' ? '\r' : c;
}

// Where the directive at p ends: behind its letter, or behind the letters of a date format.
size_t directive_end(const std::string &f, size_t p)
{
    size_t end = p + 1;
    while (end < f.size() && strchr("-+~0123456789.,", f[end]))
        end++;
    if (end < f.size() && (f[end] == 't' || f[end] == 'd')) {
        end += f[end] == 't' ? 2 : 1;
        while (end < f.size() &&
               (isalnum(static_cast<unsigned char>(f[end])) || strchr("_.,:-/", f[end])))
            end++;
        return std::min(end, f.size());
    }
    end = std::min(end + 1, f.size());
    if (end < f.size() && f[end] == 'c' && strchr("gfe", f[end - 1]))
        end++;
    return end;
}

// The text of a printf call; false with m_xrc set.
bool format_all(int32_t argc, std::string *out, bool markup)
{
    const char *p;
    int32_t n;
    if (!bi_string(bi_arg(argc, 1), &p, &n))
        return false;
    std::string f(p, size_t(n));
    int32_t next = 2;
    for (size_t i = 0; i < f.size(); i++) {
        if (f[i] == '\\' && i + 1 < f.size() && strchr("ntr\\", f[i + 1])) {
            *out += escaped(f[++i]);
            continue;
        }
        if (f[i] != '%') {
            *out += f[i];
            continue;
        }
        if (i + 1 < f.size() && f[i + 1] == '%') {
            *out += '%';
            i++;
            continue;
        }
        size_t end = directive_end(f, i);
        std::string d = f.substr(i, end - i);
        if (d != "%s" && d != "%g" && d != "%f" && d != "%e" && chkfmt(d.c_str(), nullptr))
            return bi_fail(3302);
        if (next > argc)
            return bi_fail(3001);
        if (!append_arg(out, d, bi_arg(argc, next++), markup))
            return false;
        i = end - 1;
    }
    return next > argc || bi_fail(3001);
}

void print_call(int32_t argc, const char *id, uint8_t level)
{
    m_xeqerrid = id;
    std::string out;
    if (!format_all(argc, &out, true))
        return;
    outlev_keep keep(level);
    spout_setcoloroflev();
    spoutsml(out.c_str());
    result_void(argc);
}

} // namespace

void biprintf(int32_t argc)
{
    print_call(argc, "printf()", display_level);
}
void bierrprintf(int32_t argc)
{
    print_call(argc, "errprintf()", 3);
}

void bisprintf(int32_t argc)
{
    m_xeqerrid = "sprintf()";
    std::string out;
    if (format_all(argc, &out, false))
        m_result(argc, m_mktstr(out.data(), int64_t(out.size())));
}

// display(X [, asis]): a string column line by line, as mark-up unless asis; else as a matrix
// typed alone on a line.
void bidisplay(int32_t argc)
{
    m_xeqerrid = "display()";
    matobj *a = bi_arg(argc, 1);
    double asis = 0;
    if (!bi_ismatrix(a) || (argc > 1 && !bi_real(bi_arg(argc, 2), &asis)))
        return;
    outlev_keep keep(display_level);
    if (a->eltype != MO_STRING || a->cols != 1)
        mo_display(a);
    else
        for (int32_t i = 0; i < a->rows && !fault_poll(); i++) {
            char buffer[256];
            std::string s =
                a->view ? std::string(buffer, size_t(v_sel(a, i, 0, buffer)))
                        : std::string(sel_text(mo_sel(a)[i]), size_t(sel_len(mo_sel(a)[i])));
            s += '\n';
            spout_setcoloroflev();
            asis != 0 ? spout21(s.c_str()) : spoutsml(s.c_str());
        }
    result_void(argc);
}

void bidisplayas(int32_t argc)
{
    m_xeqerrid = "displayas()";
    static const struct {
        const char *word;
        uint8_t level;
    } levels[] = {{"result", 0}, {"text", 1}, {"txt", 1}, {"error", 3}, {"input", 4}};
    const char *p;
    int32_t n;
    if (!bi_string(m_arg(0), &p, &n))
        return;
    for (const auto &l : levels)
        if (n >= 3 && !strncmp(l.word, p, size_t(n))) {
            display_level = l.level;
            result_void(argc);
            return;
        }
    m_xrc = 3300;
}

void bidisplayflush(int32_t argc)
{
    omlflush(oml_cur);
    result_void(argc);
}
