// `: list ...': macros taken as lists of words.
#include "core/rc.h"
#include "core/state.h"
#include "interp/macros.h"
#include "interp/messages.h"
#include "interp/tokens.h"
#include <algorithm>
#include <cstring>
#include <string>
#include <unordered_map>
#include <vector>

using items = std::vector<std::string>;
using counts = std::unordered_map<std::string, int32_t>;

static items split(const char *text)
{
    items v;
    char word[macrolen];
    while ((text = mac_item(text, word, macrolen, nullptr)))
        v.emplace_back(word);
    return v;
}

static std::string join(const items &v)
{
    std::string s;
    for (const std::string &w : v) {
        if (!s.empty())
            s += ' ';
        if (w.find('"') != std::string::npos)
            s += "`\"" + w + "\"'";
        else if (w.empty() || w.find(' ') != std::string::npos)
            s += '"' + w + '"';
        else
            s += w;
    }
    return s;
}

static counts count_of(const items &v)
{
    counts c;
    for (const std::string &w : v)
        c[w]++;
    return c;
}

// A macro name, local(name) or global(name), from the tokens.
static int32_t operand(items *out)
{
    char name[64] = "_";
    std::string tok = ti_gettok(tokinfo, prsestd);
    bool global = tok == "global", paren = global || tok == "local";
    if (paren && ti_peektok_chr(tokinfo) == '(') {
        ti_gettok(tokinfo, prsestd);
        tok = ti_gettok(tokinfo, prsestd);
        if (ti_gtokis(tokinfo, ')'))
            return RC_SYNTAX;
    } else
        global = false;
    size_t at = global ? 0 : 1;
    if (tok.size() > 32 - at)
        return invalid(tok.c_str());
    memcpy(name + at, tok.c_str(), tok.size() + 1);
    if (tok.empty() || !mac_goodname(name, at + tok.size()))
        return tok.empty() ? error(RC_SYNTAX) : invalid(tok_text(tok.c_str()));
    const char *text = macptr(name);
    *out = text ? split(text) : items();
    return 0;
}

static int32_t at_end() { return *ti_gettok(tokinfo, prsestd) ? error(RC_SYNTAX) : 0; }

// First ones, or the further ones, of each word.
static items once(const items &v, bool further)
{
    counts seen;
    items out;
    for (const std::string &w : v)
        if ((seen[w]++ > 0) == further)
            out.push_back(w);
    return out;
}

static int32_t unary(const std::string &fcn, std::string *result)
{
    items v;
    int32_t rc = operand(&v);
    if (!rc)
        rc = at_end();
    if (rc)
        return rc;
    if (fcn == "uniq")
        v = once(v, false);
    else if (fcn == "dups")
        v = once(v, true);
    else if (fcn == "sort")
        std::sort(v.begin(), v.end());
    else if (fcn == "sizeof") {
        *result = std::to_string(v.size());
        return 0;
    }
    *result = join(v);
    return 0;
}

static int32_t posof(std::string *result)
{
    std::string what = tok_text(ti_gettok(tokinfo, prsestd));
    if (strcmp(ti_gettok(tokinfo, prsestd), "in"))
        return error(RC_SYNTAX);
    items v;
    int32_t rc = operand(&v);
    if (!rc)
        rc = at_end();
    if (rc)
        return rc;
    auto it = std::find(v.begin(), v.end(), what);
    *result = std::to_string(it == v.end() ? 0 : it - v.begin() + 1);
    return 0;
}

// The operator, with its words brought to one form; empty when it is none.
static std::string read_op()
{
    static const struct {
        const char *word, *op;
    } words[] = {{"|", "|"},   {"union", "|"}, {"&", "&"},   {"intersection", "&"}, {"-", "-"},
                 {"minus", "-"}, {"in", "in"},   {"==", "=="}};
    std::string tok = ti_gettok(tokinfo, prsestd);
    if (tok == "==" && ti_peektok_chr(tokinfo) == '=' && *ti_wheretok(tokinfo) == '=') {
        ti_gettok(tokinfo, prsestd);
        return "===";
    }
    for (const auto &w : words)
        if (tok == w.word)
            return w.op;
    return "";
}

static items combine(const items &a, const std::string &op, const items &b)
{
    items out;
    counts inb = count_of(b);
    if (op == "|") {
        out = a;
        counts ina = count_of(a);
        for (const std::string &w : b)
            if (!ina.count(w))
                out.push_back(w);
        return out;
    }
    for (const std::string &w : a)
        if ((inb.count(w) > 0) == (op == "&"))
            out.push_back(w);
    return out;
}

static bool compare(items a, const std::string &op, items b)
{
    if (op == "==")
        return a == b;
    if (op == "===") {
        std::sort(a.begin(), a.end());
        std::sort(b.begin(), b.end());
        return a == b;
    }
    counts inb = count_of(b);
    return std::all_of(a.begin(), a.end(), [&](const std::string &w) { return inb.count(w); });
}

int32_t ti_maclistfcn(std::string *result)
{
    static const char *const fcns[] = {"uniq", "dups", "sort", "sizeof", "retokenize", "clean"};
    gettok_state start;
    ti_stattok(tokinfo, &start);
    std::string fcn = ti_gettok(tokinfo, prsestd);
    char next = ti_peektok_chr(tokinfo);
    int32_t rc;
    bool isname = (next >= 'a' && next <= 'z') || (next >= 'A' && next <= 'Z') || next == '_' ||
                  (next >= '0' && next <= '9');
    bool word = std::any_of(std::begin(fcns), std::end(fcns),
                            [&](const char *f) { return fcn == f; });
    if (fcn == "posof" && (next == '"' || next == '`' || isname))
        rc = posof(result);
    else if (word && isname && strncmp(ti_wheretok(tokinfo) + strspn(ti_wheretok(tokinfo), " "),
                                       "in ", 3))
        rc = unary(fcn, result);
    else {
        ti_resettok(tokinfo, &start);
        items a, b;
        if ((rc = operand(&a)))
            return rc;
        std::string op = read_op();
        if (op.empty())
            return error(RC_SYNTAX);
        if ((rc = operand(&b)) || (rc = at_end()))
            return rc;
        if (op == "in" || op[0] == '=')
            *result = compare(a, op, b) ? "1" : "0";
        else
            *result = join(combine(a, op, b));
    }
    if (!rc && result->size() >= size_t(macrolen))
        return errout(RC_SYNTAX, "extended macro function list:  resulting macro too long\n");
    return rc;
}
