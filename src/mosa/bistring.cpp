// Functions of strings, element by element. Strings hold any byte, at any length.
#include "core/mem.h"
#include "core/numtext.h"
#include "expr/strfun.h"
#include "mosa/bi_map.h"
#include "mosa/bihandlers.h"
#include "output/fmt.h"
#include <algorithm>
#include <cmath>
#include <string>
#include <string_view>
#include <vector>

namespace
{

using text = std::string_view;

void map_text(int32_t argc, const char *id, std::string (*f)(text))
{
    m_xeqerrid = id;
    matobj *a = m_arg(0);
    if (!bi_isstring(a))
        return;
    matobj *r = m_mktmat(MO_STRING, a->rows, a->cols);
    char buffer[256];
    for (int64_t k = 0, n = r ? mo_count(r) : 0; k < n && !bi_stop(k); k++)
        if (!bi_puttext(r, k, f(bi_textc(a, int32_t(k / a->cols), int32_t(k % a->cols), buffer))))
            break;
    if (r)
        m_result(argc, r);
}

char lower(char c)
{
    return c >= 'A' && c <= 'Z' ? char(c + 32) : c;
}
char upper(char c)
{
    return c >= 'a' && c <= 'z' ? char(c - 32) : c;
}
bool letter(char c)
{
    return upper(c) >= 'A' && upper(c) <= 'Z';
}

std::string f_lower(text t)
{
    std::string s(t);
    std::transform(s.begin(), s.end(), s.begin(), lower);
    return s;
}
std::string f_upper(text t)
{
    std::string s(t);
    std::transform(s.begin(), s.end(), s.begin(), upper);
    return s;
}
std::string f_proper(text t)
{
    std::string s(t);
    bool in = false;
    for (char &c : s) {
        c = in ? lower(c) : upper(c);
        in = letter(c);
    }
    return s;
}
std::string f_reverse(text t)
{
    return {t.rbegin(), t.rend()};
}
text ltrim(text t)
{
    size_t p = t.find_first_not_of(' ');
    return p == text::npos ? text() : t.substr(p);
}
text rtrim(text t)
{
    size_t p = t.find_last_not_of(' ');
    return p == text::npos ? text() : t.substr(0, p + 1);
}
std::string f_ltrim(text t)
{
    return std::string(ltrim(t));
}
std::string f_rtrim(text t)
{
    return std::string(rtrim(t));
}
std::string f_trim(text t)
{
    return std::string(ltrim(rtrim(t)));
}
std::string f_itrim(text t)
{
    std::string s;
    for (char c : t)
        if (c != ' ' || s.empty() || s.back() != ' ' || s.find_first_not_of(' ') == s.npos)
            s += c;
    return s;
}

} // namespace

void bistrlower(int32_t argc)
{
    map_text(argc, "strlower()", f_lower);
}
void bistrupper(int32_t argc)
{
    map_text(argc, "strupper()", f_upper);
}
void bistrproper(int32_t argc)
{
    map_text(argc, "strproper()", f_proper);
}
void bistrreverse(int32_t argc)
{
    map_text(argc, "strreverse()", f_reverse);
}
void bistrtrim(int32_t argc)
{
    map_text(argc, "strtrim()", f_trim);
}
void bistrltrim(int32_t argc)
{
    map_text(argc, "strltrim()", f_ltrim);
}
void bistrrtrim(int32_t argc)
{
    map_text(argc, "strrtrim()", f_rtrim);
}
void bistritrim(int32_t argc)
{
    map_text(argc, "stritrim()", f_itrim);
}

void bistrlen(int32_t argc)
{
    m_xeqerrid = "strlen()";
    const matobj *a = m_arg(0);
    if (!bi_isstring(a))
        return;
    matobj *r = m_mktmat(MO_REAL, a->rows, a->cols);
    char buffer[256];
    for (int64_t k = 0, n = r ? mo_count(r) : 0; k < n && !bi_stop(k); k++)
        mo_re(r)[k] = double(bi_textc(a, int32_t(k / a->cols), int32_t(k % a->cols), buffer).size());
    if (r)
        m_result(argc, r);
}

// ---- two strings to a number

namespace
{

void compare(int32_t argc, const char *id, double (*f)(text, text))
{
    m_xeqerrid = id;
    const matobj *a = m_arg(1), *b = m_arg(0);
    if (!bi_isstring(a) || !bi_isstring(b))
        return;
    int32_t rows, cols;
    if (m_colonshape(a, b, &rows, &cols) == CC_NONE) {
        m_xrc = 3200;
        return;
    }
    matobj *r = m_mktmat(MO_REAL, rows, cols);
    char x[256], y[256];
    for (int32_t i = 0; r && i < rows && !bi_stop(i); i++)
        for (int32_t j = 0; j < cols; j++)
            mo_re(r)[int64_t(i) * cols + j] = f(bi_textc(a, i, j, x), bi_textc(b, i, j, y));
    if (r)
        m_result(argc, r);
}

double f_pos(text s, text what)
{
    size_t p = what.empty() ? text::npos : s.find(what);
    return p == text::npos ? 0 : double(p + 1);
}

double f_indexnot(text s, text set)
{
    size_t p = s.find_first_not_of(set);
    return p == text::npos ? 0 : double(p + 1);
}

// * for any run, ? for one character; a mismatch goes back to the last * only.
double f_match(text s, text pattern)
{
    size_t i = 0, j = 0, star = text::npos, mark = 0;
    while (i < s.size()) {
        if (j < pattern.size() && (pattern[j] == '?' || (pattern[j] == s[i] && s[i] != '*'))) {
            i++;
            j++;
        } else if (j < pattern.size() && pattern[j] == '*') {
            star = j++;
            mark = i;
        } else if (star != text::npos) {
            j = star + 1;
            i = ++mark;
        } else
            return 0;
    }
    while (j < pattern.size() && pattern[j] == '*')
        j++;
    return j == pattern.size();
}

} // namespace

void bistrpos(int32_t argc)
{
    compare(argc, "strpos()", f_pos);
}
void biindexnot(int32_t argc)
{
    compare(argc, "indexnot()", f_indexnot);
}
void bistrmatch(int32_t argc)
{
    compare(argc, "strmatch()", f_match);
}

// ---- parts and replacements

namespace
{

// From position b (1 is the first, -1 the last) for l characters; missing l means the rest.
text part(text s, double b, double l)
{
    auto n = double(s.size());
    double from = b < 0 ? n + b : b - 1;
    if (b >= misval || from < 0 || from >= n || l <= 0)
        return {};
    return s.substr(size_t(from), l >= n - from ? text::npos : size_t(l));
}

} // namespace

void bisubstr(int32_t argc)
{
    m_xeqerrid = "substr()";
    const matobj *s = bi_arg(argc, 1), *b = bi_arg(argc, 2),
                 *l = argc > 2 ? bi_arg(argc, 3) : nullptr;
    if (!bi_isstring(s) || !bi_isreal(b) || (l && !bi_isreal(l)))
        return;
    int32_t rows, cols, r2 = s->rows, c2 = s->cols;
    if (m_colonshape(s, b, &rows, &cols) == CC_NONE ||
        (l && m_colonshape(s, l, &r2, &c2) == CC_NONE)) {
        m_xrc = 3200;
        return;
    }
    rows = std::max(rows, r2);
    cols = std::max(cols, c2);
    matobj *r = m_mktmat(MO_STRING, rows, cols);
    char buffer[256];
    for (int32_t i = 0; r && i < rows && !bi_stop(i); i++)
        for (int32_t j = 0; j < cols; j++) {
            double from = m_el(b, b->rows == 1 ? 0 : i, b->cols == 1 ? 0 : j);
            double len = l ? m_el(l, l->rows == 1 ? 0 : i, l->cols == 1 ? 0 : j) : misval;
            if (!bi_puttext(r, int64_t(i) * cols + j,
                     part(bi_textc(s, i, j, buffer), trunc(from), trunc(len))))
                return;
        }
    if (r)
        m_result(argc, r);
}

// Up to count occurrences of from become to; words has blanks or ends on both sides. False for
// a text too long, or a break.
static bool replaced(text s, text from, text to, double count, bool words, std::string *out)
{
    size_t at = 0, look = 0, hit;
    for (int64_t k = 0; !from.empty() && count >= 1 && (hit = s.find(from, look)) != s.npos; k++) {
        size_t end = hit + from.size();
        look = hit + 1;
        if (bi_stop(k))
            return false;
        if (words && ((hit && s[hit - 1] != ' ') || (end < s.size() && s[end] != ' ')))
            continue;
        out->append(s, at, hit - at).append(to);
        look = at = end;
        count--;
        if (out->size() > 2147483647)
            return bi_fail(3492);
    }
    out->append(s.substr(at));
    return true;
}

// (s, old, new [, count])
static void replace_in(int32_t argc, const char *id, bool words)
{
    m_xeqerrid = id;
    const matobj *s = bi_arg(argc, 1);
    const char *p;
    int32_t n;
    double count = misval;
    if (!bi_isstring(s) || !bi_string(bi_arg(argc, 2), &p, &n))
        return;
    std::string from(p, size_t(n));
    if (!bi_string(bi_arg(argc, 3), &p, &n) || (argc > 3 && !bi_real(bi_arg(argc, 4), &count)))
        return;
    std::string to(p, size_t(n));
    matobj *r = m_mktmat(MO_STRING, s->rows, s->cols);
    char buffer[256];
    for (int64_t k = 0, all = r ? mo_count(r) : 0; k < all && !bi_stop(k); k++) {
        text old = bi_textc(s, int32_t(k / s->cols), int32_t(k % s->cols), buffer);
        std::string t;
        if (!replaced(old, from, to, count, words, &t) || !bi_puttext(r, k, t))
            return;
    }
    if (r)
        m_result(argc, r);
}

void bisubinstr(int32_t argc)
{
    replace_in(argc, "subinstr()", false);
}
void bisubinword(int32_t argc)
{
    replace_in(argc, "subinword()", true);
}

// ---- numbers and characters

// strofreal(x [, format])
void bistrofreal(int32_t argc)
{
    m_xeqerrid = "strofreal()";
    const matobj *a = bi_arg(argc, 1);
    char format[64] = "%9.0g", out[512];
    if (!bi_isreal(a))
        return;
    if (argc > 1) {
        const char *p;
        int32_t n;
        if (!bi_string(bi_arg(argc, 2), &p, &n))
            return;
        if (n > 48 || (snprintf(format, sizeof format, "%.*s", n, p), chkfmt(format, nullptr))) {
            m_xrc = 3302;
            return;
        }
    }
    matobj *r = m_mktmat(MO_STRING, a->rows, a->cols);
    for (int64_t k = 0, n = r ? mo_count(r) : 0; k < n && !bi_stop(k); k++) {
        double z = a->view ? v_el1(a, k) : mo_re(a)[k];
        int32_t len = fmtnumtrim(out, sizeof out, z, format);
        if (!bi_puttext(r, k, {out, size_t(len)}))
            return;
    }
    if (r)
        m_result(argc, r);
}

// _strtoreal(S, R): the numbers of S into R; answers how many did not convert.
void bi_strtoreal(int32_t argc)
{
    m_xeqerrid = "_strtoreal()";
    const matobj *s = m_arg(1);
    matobj *r = m_arg(0);
    if (!bi_isstring(s) || !bi_isarray(r))
        return;
    matobj *values = m_mktmat(MO_REAL, s->rows, s->cols);
    if (!values)
        return;
    char buffer[256];
    int64_t bad = 0;
    for (int64_t k = 0, n = mo_count(values); k < n && !bi_stop(k); k++) {
        std::string t = f_trim(bi_textc(s, int32_t(k / s->cols), int32_t(k % s->cols), buffer));
        double z = misval;
        if (t.empty() || cnvstoz(t.c_str(), &z)) {
            z = misval;
            bad++;
        }
        mo_re(values)[k] = z;
    }
    m_swapmat(r, values);
    mo_freemat(values);
    m_result(argc, m_mktsmatsto(double(bad)));
}

void biascii(int32_t argc)
{
    m_xeqerrid = "ascii()";
    const char *p;
    int32_t n;
    if (!bi_string(m_arg(0), &p, &n))
        return;
    matobj *r = m_mktmat(MO_REAL, 1, n);
    for (int32_t i = 0; r && i < n; i++)
        mo_re(r)[i] = static_cast<unsigned char>(p[i]);
    if (r)
        m_result(argc, r);
}

void bichar(int32_t argc)
{
    m_xeqerrid = "char()";
    const matobj *a = m_arg(0);
    if (!bi_isreal(a))
        return;
    if (a->rows != 1 && mo_count(a)) {
        m_xrc = 3202;
        return;
    }
    std::string s;
    for (int32_t j = 0; j < a->cols; j++) {
        double z = m_el(a, 0, j);
        if (!(z >= 0 && z <= 255)) {
            m_xrc = 3300;
            return;
        }
        s += char(int(z));
    }
    m_result(argc, m_mktstr(s.data(), int64_t(s.size())));
}
