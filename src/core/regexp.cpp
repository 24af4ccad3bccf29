#include "core/regexp.h"
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <list>
#include <memory>
#include <re2/re2.h>
#include <string>
#include <vector>

// Compiled patterns, the latest first: a command runs the same one on every row.
struct compiled {
    std::string pattern;
    std::unique_ptr<re2::RE2> re;
};
static std::list<compiled> cache;
static constexpr size_t ncache = 16;

// The last match: its text and where its pieces lie; begin -1 for one that took no part.
struct piece {
    int32_t begin, len;
};
static std::string lasttext;
static std::vector<piece> lastpieces;
static bool matched;

static const re2::RE2 &compile(const char *pattern)
{
    for (auto it = cache.begin(); it != cache.end(); ++it)
        if (it->pattern == pattern) {
            if (it != cache.begin())
                cache.splice(cache.begin(), cache, it);
            return *cache.front().re;
        }
    re2::RE2::Options opt;
    opt.set_encoding(re2::RE2::Options::EncodingLatin1);  // bytes, as everywhere in the data
    opt.set_longest_match(true);
    opt.set_log_errors(false);
    opt.set_never_nl(false);
    opt.set_dot_nl(true);
    cache.push_front({pattern, std::make_unique<re2::RE2>(pattern, opt)});
    if (cache.size() > ncache)
        cache.pop_back();
    return *cache.front().re;
}

// Pieces of the leftmost-longest match of pattern in text; empty without one.
static bool match(const re2::RE2 &re, const char *text, std::vector<piece> *pieces)
{
    static std::vector<re2::StringPiece> sub;  // keeps its room from row to row
    re2::StringPiece in(text);
    sub.assign(size_t(1 + re.NumberOfCapturingGroups()), {});
    if (!re.Match(in, 0, in.size(), re2::RE2::UNANCHORED, sub.data(), int(sub.size())))
        return false;
    pieces->clear();
    for (const auto &s : sub)
        pieces->push_back(s.data() ? piece{int32_t(s.data() - in.data()), int32_t(s.size())}
                                   : piece{-1, 0});
    return true;
}

int32_t regx_match(const char *text, const char *pattern, char *why, size_t len)
{
    if (why && len)
        *why = '\0';
    const re2::RE2 &re = compile(pattern);
    if (!re.ok()) {
        if (why && len)
            snprintf(why, len, "%s", re.error().c_str());
        return -1;
    }
    static std::vector<piece> found;
    if (!match(re, text, &found))
        return 0;
    lasttext = text;
    lastpieces.swap(found);
    matched = true;
    return 1;
}

void regx_replace(const char *text, const char *pattern, const char *subst, char *out, size_t max)
{
    if (!max)
        return;
    const re2::RE2 &re = compile(pattern);
    static std::vector<piece> found;
    static std::string s, by;
    s = text;
    if (re.ok() && match(re, text, &found)) {
        by.clear();
        for (const char *p = subst; *p; p++) {
            if (*p == '\\' && p[1] >= '0' && p[1] <= '9') {
                auto k = size_t(*++p - '0');
                if (k < found.size() && found[k].begin >= 0)
                    by.append(text + found[k].begin, size_t(found[k].len));
            } else if (*p == '\\' && p[1] == '\\') {
                by += *p++;
            } else
                by += *p;
        }
        s.replace(size_t(found[0].begin), size_t(found[0].len), by);
    }
    size_t n = std::min(s.size(), max - 1);
    memcpy(out, s.data(), n);
    out[n] = '\0';
}

int32_t regx_sub(int32_t n, char *out, size_t max)
{
    if (max)
        *out = '\0';
    if (!matched)
        return 1;
    if (n < 0 || size_t(n) >= lastpieces.size())
        return 2;
    const piece &p = lastpieces[size_t(n)];
    if (p.begin >= 0 && max) {
        size_t k = std::min(size_t(p.len), max - 1);
        memcpy(out, lasttext.data() + p.begin, k);
        out[k] = '\0';
    }
    return 0;
}

int32_t regx_nsub()
{
    return matched ? int32_t(lastpieces.size()) - 1 : -1;
}
