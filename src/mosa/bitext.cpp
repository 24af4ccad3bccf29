// Texts: patterns, words, names, tokens, hashes, and letters of columns.
#include "core/regexp.h"
#include "expr/strfun.h"
#include "mosa/bi_map.h"
#include "mosa/bihandlers.h"
#include "mosa/tokenize.h"
#include "output/fmt.h"
#include <algorithm>
#include <bit>
#include <string>

namespace
{

using text = std::string_view;

// The routines below read C texts, up to the first NUL. held keeps its room from call to call.
const char *c_text(const matobj *m, int32_t i, int32_t j, std::string *held)
{
    char view[bi_textroom];
    held->assign(bi_textc(m, i, j, view));
    return held->c_str();
}

bool bad_pattern(const char *why)
{
    m_custom_xeqerrf(3498, "regexp: %s", why);
    return false;
}

} // namespace

// ---- regular expressions

// regexm(S, pattern): 1 where the pattern is found
void biregexm(int32_t argc)
{
    m_xeqerrid = "regexm()";
    const matobj *s = m_arg(1), *p = m_arg(0);
    int32_t rows, cols;
    if (!bi_isstring(s) || !bi_isstring(p) || !bi_conform(argc, 1, 2, &rows, &cols))
        return;
    matobj *r = m_mktmat(MO_REAL, rows, cols);
    static std::string a, b;
    for (int64_t k = 0, n = r ? mo_count(r) : 0; k < n; k++) {
        auto i = int32_t(k / cols), j = int32_t(k % cols);
        char why[128];
        int32_t rc = regx_match(c_text(s, i, j, &a), c_text(p, i, j, &b), why, sizeof why);
        if (bi_stop(k) || (rc < 0 && !bad_pattern(why)))
            return;
        mo_re(r)[k] = rc;
    }
    m_result(argc, r);
}

// regexr(S, pattern, by): the first place where the pattern is found replaced
void biregexr(int32_t argc)
{
    m_xeqerrid = "regexr()";
    int32_t rows, cols;
    for (int32_t k = 1; k <= 3; k++)
        if (!bi_isstring(bi_arg(argc, k)))
            return;
    if (!bi_conform(argc, 1, 3, &rows, &cols))
        return;
    matobj *r = m_mktmat(MO_STRING, rows, cols);
    static std::string s, p, by, out;
    for (int64_t k = 0, n = r ? mo_count(r) : 0; k < n; k++) {
        auto i = int32_t(k / cols), j = int32_t(k % cols);
        if (bi_stop(k))
            return;
        c_text(m_arg(2), i, j, &s), c_text(m_arg(1), i, j, &p), c_text(m_arg(0), i, j, &by);
        // Each \1 may stand for the whole text.
        auto pieces = size_t(std::count(by.begin(), by.end(), '\\'));
        size_t most = s.size() * (pieces + 1) + by.size() + 1;
        if (most > 2147483647) {
            m_xrc = 3492;
            return;
        }
        out.resize(most);
        regx_replace(s.c_str(), p.c_str(), by.c_str(), out.data(), most);
        if (!bi_puttext(r, k, out.c_str()))
            return;
    }
    m_result(argc, r);
}

// regexs(n): piece n of the last match, 0 the whole of it
void biregexs(int32_t argc)
{
    m_xeqerrid = "regexs()";
    int32_t n;
    if (!bi_int(m_arg(0), 0, 99, &n))
        return;
    std::string out(1024, '\0');
    int32_t rc = regx_sub(n, out.data(), out.size());
    while (!rc && strlen(out.c_str()) + 1 == out.size() && out.size() < 1u << 30) {
        out.assign(out.size() * 4, '\0');
        rc = regx_sub(n, out.data(), out.size());
    }
    if (rc) {
        m_xrc = 3300;
        return;
    }
    m_result(argc, m_mktstr(out.data(), int64_t(strlen(out.c_str()))));
}

// ---- words and names

namespace
{

// f writes at most 246 bytes for the text of each element and the number beside it.
void named(int32_t argc, const char *id, char *(*f)(char *, const char *, double), double dflt)
{
    m_xeqerrid = id;
    const matobj *s = bi_arg(argc, 1), *x = argc > 1 ? bi_arg(argc, 2) : nullptr;
    int32_t rows, cols;
    if (!bi_isstring(s) || (x && !bi_isreal(x)) || !bi_conform(argc, 1, argc, &rows, &cols))
        return;
    matobj *r = m_mktmat(MO_STRING, rows, cols);
    static std::string held;
    char out[bi_textroom];
    for (int64_t k = 0, n = r ? mo_count(r) : 0; k < n; k++) {
        auto i = int32_t(k / cols), j = int32_t(k % cols);
        if (bi_stop(k) ||
            !bi_puttext(r, k, f(out, c_text(s, i, j, &held), x ? bi_elc(x, i, j) : dflt)))
            return;
    }
    m_result(argc, r);
}

} // namespace

void bisoundex(int32_t argc)
{
    named(
        argc, "soundex()", [](char *out, const char *s, double) { return str_soundex(out, s); }, 0);
}
void bisoundex_nara(int32_t argc)
{
    named(
        argc, "soundex_nara()",
        [](char *out, const char *s, double) { return str_soundex_nara(out, s); }, 0);
}
// strtoname(S [, p]): a name; p 0 leaves digits in front
void bistrtoname(int32_t argc)
{
    named(argc, "strtoname()", str_toname, 1);
}
// abbrev(S, n): at most n characters, 5 to 32
void biabbrev(int32_t argc)
{
    named(argc, "abbrev()", str_abbrev, 32);
}

// fmtwidth(S): the characters a display format takes, missing for what is none
void bifmtwidth(int32_t argc)
{
    m_xeqerrid = "fmtwidth()";
    const matobj *s = m_arg(0);
    if (!bi_isstring(s))
        return;
    matobj *r = m_mktmat(MO_REAL, s->rows, s->cols);
    static std::string held;
    for (int64_t k = 0, n = r ? mo_count(r) : 0; k < n; k++) {
        if (bi_stop(k))
            return;
        int32_t w = fmtwidth(c_text(s, int32_t(k / s->cols), int32_t(k % s->cols), &held));
        mo_re(r)[k] = w > 0 ? w : misval;
    }
    m_result(argc, r);
}

// _substr(s, t, from): writes t over the characters of s
void bi_substr(int32_t argc)
{
    m_xeqerrid = "_substr()";
    matobj *s = m_arg(2);
    const char *t;
    int32_t n, from;
    if (!bi_isarray(s) || !bi_isstring(s) || !bi_isscalar(s) || !bi_string(m_arg(1), &t, &n))
        return;
    int32_t room = sel_len(*mo_sel(s)) - n + 1;
    if (!bi_int(m_arg(0), 1, std::max(room, 1), &from))
        return;
    if (n) {
        if (room < 1) {
            m_xrc = 3300;
            return;
        }
        memmove(*mo_sel(s) + 4 + from - 1, t, size_t(n));
    }
    m_result(argc, m_mktmat(MO_REAL, 0, 0));
}

// ---- tokens

namespace
{

// The elements of a string vector; false with a code in m_xrc.
bool pieces(const matobj *m, std::vector<text> *out)
{
    if (!bi_isarray(m) || !bi_isstring(m))
        return false;
    out->clear();
    for (int64_t k = 0, n = mo_count(m); k < n; k++)
        if (int32_t len = sel_len(mo_sel(m)[k]))
            out->emplace_back(sel_text(mo_sel(m)[k]), size_t(len));
    return true;
}

} // namespace

// _tokenget(s, at, white, signs, quotes, numbers, hex): the token at or behind character at,
// which moves behind it. Quotes are vectors of pairs, each half its element.
void bi_tokenget(int32_t argc)
{
    m_xeqerrid = "_tokenget()";
    static tk_rules rules;
    static std::vector<text> quotes;
    static std::string held, white;
    const char *p;
    int32_t n;
    double at, numbers, hex;
    matobj *pos = bi_arg(argc, 2);
    if (!bi_string(bi_arg(argc, 1), &p, &n))
        return;
    text s(p, size_t(n));
    if (bi_arg(argc, 1)->view) // its text stays only until the next is read
        s = held.assign(s);
    if (!bi_isarray(pos) || !bi_real(pos, &at) || !bi_string(bi_arg(argc, 3), &p, &n))
        return;
    white.assign(p, size_t(n));
    if (!pieces(bi_arg(argc, 4), &rules.signs) || !pieces(bi_arg(argc, 5), &quotes) ||
        !bi_real(bi_arg(argc, 6), &numbers) || !bi_real(bi_arg(argc, 7), &hex))
        return;
    if (!(at >= 1)) {
        m_xrc = 3300;
        return;
    }
    rules.white = white;
    rules.quotes.clear();
    for (text q : quotes) {
        if (q.size() % 2) {
            m_xrc = 3300;
            return;
        }
        rules.quotes.push_back({q.substr(0, q.size() / 2), q.substr(q.size() / 2)});
    }
    rules.numbers = numbers != 0;
    rules.hex = hex != 0;
    size_t from = at > double(s.size()) ? s.size() : size_t(at) - 1;
    text token = tk_next(s, &from, rules);
    matobj *r = m_mktstr(token.data(), int64_t(token.size()));
    if (!r)
        return;
    *mo_re(pos) = double(from + 1);
    m_result(argc, r);
}

// tokens(s [, breaks]): all tokens; a blank among the breaks is between them, any other
// character there is one itself.
void bitokens(int32_t argc)
{
    m_xeqerrid = "tokens()";
    const char *p;
    int32_t n;
    if (!bi_string(bi_arg(argc, 1), &p, &n))
        return;
    std::string s(p, size_t(n)), breaks = " ";
    if (argc > 1) {
        if (!bi_string(bi_arg(argc, 2), &p, &n))
            return;
        breaks.assign(p, size_t(n));
    }
    tk_rules rules;
    rules.quotes = {{"\"", "\""}, {"`\"", "\"'"}};
    for (size_t k = 0; k < breaks.size(); k++)
        if (breaks[k] == ' ')
            rules.white = " ";
        else
            rules.signs.emplace_back(&breaks[k], 1);
    std::vector<text> words;
    size_t at = 0;
    for (text t; !(t = tk_next(s, &at, rules)).empty();) {
        if (bi_stop(int64_t(words.size())))
            return;
        words.push_back(t);
    }
    matobj *r = m_mktmat(MO_STRING, 1, int32_t(words.size()));
    for (size_t k = 0; r && k < words.size(); k++)
        if (bi_stop(int64_t(k)) || !bi_puttext(r, int64_t(k), words[k]))
            return;
    m_result(argc, r);
}

// ---- hashes

namespace
{

// One byte after another (B. Jenkins, Dr. Dobb's Journal 22 (9), 1997, "Hash functions").
struct hasher {
    uint32_t h = 0;
    void byte(uint8_t b)
    {
        h += b;
        h += h << 10;
        h ^= h >> 6;
    }
    void bytes(uint64_t bits, bool lowfirst)
    {
        for (int k = 0; k < 8; k++)
            byte(uint8_t(bits >> (lowfirst ? 8 * k : 56 - 8 * k)));
    }
    void number(double z, bool lowfirst)
    {
        bytes(std::bit_cast<uint64_t>(z == 0 ? 0.0 : z), lowfirst); // -0 equals 0
    }
    uint32_t value() const
    {
        uint32_t z = h + (h << 3);
        z ^= z >> 11;
        return z + (z << 15);
    }
};

// The parts of a number follow one another, as do elements; a NUL stands between texts.
void hash_of(const matobj *m, bool lowfirst, hasher *h)
{
    char view[bi_textroom];
    for (int64_t k = 0, n = mo_count(m); k < n && !bi_stop(k); k++) {
        if (m->eltype == MO_STRING) {
            if (k)
                h->byte(0);
            for (char c : bi_textc(m, int32_t(k / m->cols), int32_t(k % m->cols), view))
                h->byte(uint8_t(c));
            continue;
        }
        if (m->eltype == MO_POINTER) {
            auto at = reinterpret_cast<uintptr_t>(mo_pel(m)[k]);
            h->bytes(uint64_t(at), lowfirst);
            continue;
        }
        h->number(m->view ? v_el1(m, k) : mo_re(m)[k], lowfirst);
        if (m->eltype == MO_COMPLEX)
            h->number(mo_im(m)[k], lowfirst);
    }
}

} // namespace

// hash1(x [, n [, byte order]]): 0 to 2^32 - 1, or 1 to n. The byte order, 1 or 2, makes the
// answer the same on every machine.
void bihash1(int32_t argc)
{
    m_xeqerrid = "hash1()";
    const matobj *x = bi_arg(argc, 1);
    double n = misval, order = misval;
    if (!bi_ismatrix(x) || (argc > 1 && !bi_real(bi_arg(argc, 2), &n)) ||
        (argc > 2 && !bi_real(bi_arg(argc, 3), &order)))
        return;
    if (mo_isptrlike(x->eltype) && x->eltype != MO_POINTER) { // pointers: where they lead
        m_xrc = 3256;
        return;
    }
    bool anyorder = order >= misval;
    if ((n < misval && !(n >= 1 && n <= 4294967295.0)) || (!anyorder && order != 1 && order != 2)) {
        m_xrc = 3300;
        return;
    }
    hasher h;
    hash_of(x, anyorder ? std::endian::native == std::endian::little : order == 2, &h);
    double z = h.value();
    m_result(argc, m_mktsmatsto(n < misval ? double(uint64_t(z) % uint64_t(n)) + 1 : z));
}

// ---- columns by letters: A to Z, AA, AB and so on

namespace
{

constexpr double most_letters = 4294967295.0;

bool letters_of(double n, std::string *out)
{
    if (!(n >= 1 && n <= most_letters))
        return bi_fail(3300);
    out->clear();
    for (auto k = uint64_t(n); k; k = (k - 1) / 26)
        out->insert(out->begin(), char('A' + (k - 1) % 26));
    return true;
}

} // namespace

void binumtobase26(int32_t argc)
{
    m_xeqerrid = "numtobase26()";
    const matobj *x = m_arg(0);
    if (!bi_isreal(x))
        return;
    matobj *r = m_mktmat(MO_STRING, x->rows, x->cols);
    std::string s;
    for (int64_t k = 0, n = r ? mo_count(r) : 0; k < n; k++)
        if (bi_stop(k) || !letters_of(x->view ? v_el1(x, k) : mo_re(x)[k], &s) ||
            !bi_puttext(r, k, s))
            return;
    m_result(argc, r);
}

// _xlformcolrowlbl(column, row): (3, 7) is C7
void bi_xlformcolrowlbl(int32_t argc)
{
    m_xeqerrid = "_xlformcolrowlbl()";
    int32_t rows, cols;
    if (!bi_isreal(m_arg(1)) || !bi_isreal(m_arg(0)) || !bi_conform(argc, 1, 2, &rows, &cols))
        return;
    matobj *r = m_mktmat(MO_STRING, rows, cols);
    std::string s;
    for (int64_t k = 0, n = r ? mo_count(r) : 0; k < n; k++) {
        auto i = int32_t(k / cols), j = int32_t(k % cols);
        double row = bi_elc(m_arg(0), i, j);
        if (bi_stop(k) || !letters_of(bi_elc(m_arg(1), i, j), &s))
            return;
        if (!(row >= 1 && row <= most_letters)) {
            m_xrc = 3300;
            return;
        }
        if (!bi_puttext(r, k, s + std::to_string(uint64_t(row))))
            return;
    }
    m_result(argc, r);
}

// _xlgetcolrowfromlbl(s): the column and the row of a label such as C7 or $C$7
void bi_xlgetcolrowfromlbl(int32_t argc)
{
    m_xeqerrid = "_xlgetcolrowfromlbl()";
    const char *p;
    int32_t n, k = 0;
    if (!bi_string(m_arg(0), &p, &n))
        return;
    double col = 0, row = 0;
    k += k < n && p[k] == '$';
    for (; k < n && (p[k] | 32) >= 'a' && (p[k] | 32) <= 'z' && col <= most_letters; k++)
        col = col * 26 + (p[k] | 32) - 'a' + 1;
    k += k < n && p[k] == '$';
    for (; k < n && p[k] >= '0' && p[k] <= '9' && row <= most_letters; k++)
        row = row * 10 + p[k] - '0';
    if (k < n || col < 1 || row < 1 || col > most_letters || row > most_letters) {
        m_xrc = 3300;
        return;
    }
    matobj *r = m_mktmat(MO_REAL, 1, 2);
    if (!r)
        return;
    mo_re(r)[0] = col;
    mo_re(r)[1] = row;
    m_result(argc, r);
}
