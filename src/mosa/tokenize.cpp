#include "mosa/tokenize.h"

namespace
{

using text = std::string_view;

bool digit(char c)
{
    return c >= '0' && c <= '9';
}

bool hexdigit(char c)
{
    return digit(c) || ((c | 32) >= 'a' && (c | 32) <= 'f');
}

const tk_quote *quote_at(text s, size_t at, const tk_rules &r)
{
    const tk_quote *best = nullptr;
    for (auto &q : r.quotes)
        if (s.substr(at).starts_with(q.open) && (!best || best->open.size() < q.open.size()))
            best = &q;
    return best;
}

size_t sign_at(text s, size_t at, const tk_rules &r)
{
    size_t best = 0;
    for (auto &sign : r.signs)
        if (sign.size() > best && s.substr(at).starts_with(sign))
            best = sign.size();
    return best;
}

bool ends_word(text s, size_t at, const tk_rules &r)
{
    return at >= s.size() || r.white.find(s[at]) != r.white.npos || sign_at(s, at, r) ||
           quote_at(s, at, r);
}

size_t quoted_end(text s, size_t at, const tk_quote &q)
{
    size_t depth = 1;
    at += q.open.size();
    while (at < s.size()) {
        text rest = s.substr(at);
        if (rest.starts_with(q.close)) {
            at += q.close.size();
            if (--depth == 0)
                return at;
        } else if (rest.starts_with(q.open)) {
            at += q.open.size();
            depth++;
        } else
            at++;
    }
    return at;
}

// Digits with at most one point; the number of digits seen goes to count.
size_t mantissa(text s, size_t at, bool (*is)(char), size_t *count)
{
    bool point = false;
    for (*count = 0; at < s.size(); at++) {
        if (is(s[at]))
            ++*count;
        else if (s[at] == '.' && !point)
            point = true;
        else
            break;
    }
    return at;
}

// A sign, if there is one, and digits behind it; at where it was without them.
size_t exponent(text s, size_t at, bool (*is)(char), bool mustsign)
{
    size_t p = at;
    if (p < s.size() && (s[p] == '+' || s[p] == '-'))
        p++;
    else if (mustsign)
        return at;
    size_t from = p;
    while (p < s.size() && is(s[p]))
        p++;
    return p > from ? p : at;
}

// Where a number that begins at at ends; at itself when there is none.
size_t number_end(text s, size_t at, const tk_rules &r)
{
    size_t n, end;
    if (r.hex) {
        end = mantissa(s, at, hexdigit, &n);
        if (n && end < s.size() && (s[end] | 32) == 'x') {
            size_t p = exponent(s, end + 1, hexdigit, true);
            if (p > end + 1 && ends_word(s, p, r))
                return p;
        }
    }
    if (!r.numbers)
        return at;
    end = mantissa(s, at, digit, &n);
    if (!n)
        return at;
    if (end < s.size() && (s[end] | 32) == 'e') {
        size_t p = exponent(s, end + 1, digit, false);
        if (p > end + 1 && ends_word(s, p, r))
            return p;
    }
    return ends_word(s, end, r) ? end : at;
}

} // namespace

std::string_view tk_next(std::string_view s, size_t *at, const tk_rules &rules)
{
    size_t from = s.find_first_not_of(rules.white, *at);
    if (from == s.npos) {
        *at = s.size();
        return {};
    }
    size_t end;
    if (const tk_quote *q = quote_at(s, from, rules))
        end = quoted_end(s, from, *q);
    else if ((end = number_end(s, from, rules)) == from) {
        end = from + sign_at(s, from, rules);
        if (end == from)
            do
                end++;
            while (!ends_word(s, end, rules));
    }
    *at = end;
    return s.substr(from, end - from);
}
