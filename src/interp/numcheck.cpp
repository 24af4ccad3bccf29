#include "interp/numcheck.h"
#include "core/limits.h"
#include "core/mem.h"
#include "core/missing.h"
#include "core/numtext.h"
#include "core/rc.h"
#include "expr/parse.h"
#include "expr/varlist.h"
#include "interp/interp.h"
#include "interp/macros.h"
#include "interp/messages.h"
#include <algorithm>
#include <cmath>
#include <cstring>
#include <memory>
#include <vector>

namespace {

struct bound {
    char op;     // < l(<=) > g(>=)
    double z;
};
struct want {
    bool ascending = false, descending = false, integer = false, missingok = false, sort = false;
    int32_t min = -1, max = -1;
    std::vector<bound> bounds;
};

const char *blanks(const char *p)
{
    while (*p == ' ')
        p++;
    return p;
}

// <# <=# >#  >=#, one or more, up to end.
int32_t read_bounds(const char *p, const char *end, want *w)
{
    while ((p = blanks(p)) < end) {
        if (*p != '<' && *p != '>')
            return error(RC_SYNTAX);
        bound b = {*p++, 0};
        if (*p == '=') {
            b.op = b.op == '<' ? 'l' : 'g';
            p++;
        }
        p = blanks(p);
        int32_t n = 0;
        while (p + n < end && !strchr(" <>", p[n]))
            n++;
        if (cnvstozn(p, n, &b.z))
            return error(RC_SYNTAX);
        w->bounds.push_back(b);
        p += n;
    }
    return 0;
}

// # behind min or max, as =# or (#).
int32_t read_count(const char **at, int32_t *out)
{
    const char *p = blanks(*at);
    bool paren = *p == '(';
    if (!paren && *p != '=')
        return error(RC_SYNTAX);
    p = blanks(p + 1);
    std::string num;
    while (*p >= '0' && *p <= '9')
        num += *p++;
    p = blanks(p);
    if (cnvstoint4(num.c_str(), out) || (paren && *p++ != ')'))
        return error(RC_SYNTAX);
    *at = p;
    return 0;
}

int32_t read_want(const char *p, want *w)
{
    int32_t rc = 0;
    while (!rc && *(p = blanks(p))) {
        if (*p == '<' || *p == '>') {
            const char *end = p;
            while (*end && !((*end >= 'a' && *end <= 'z')))
                end++;
            rc = read_bounds(p, end, w);
            p = end;
            continue;
        }
        const char *b = p;
        while (*p >= 'a' && *p <= 'z')
            p++;
        std::string word(b, p);
        if (cmdcmp(word.c_str(), "ascending", 3))
            w->ascending = true;
        else if (cmdcmp(word.c_str(), "descending", 4))
            w->descending = true;
        else if (cmdcmp(word.c_str(), "integer", 3))
            w->integer = true;
        else if (cmdcmp(word.c_str(), "missingokay", 4))
            w->missingok = true;
        else if (cmdcmp(word.c_str(), "sort", 4))
            w->sort = true;
        else if (word == "min")
            rc = read_count(&p, &w->min);
        else if (word == "max")
            rc = read_count(&p, &w->max);
        else if (word == "range" && *(p = blanks(p)) == '(') {
            const char *end = strchr(p, ')');
            if (!end)
                return required(")");
            rc = read_bounds(p + 1, end, w);
            p = end + 1;
        } else
            rc = notalow(word.empty() ? p : word.c_str());
    }
    return rc;
}

bool inside(double z, const bound &b)
{
    return b.op == '<' ? z < b.z : b.op == 'l' ? z <= b.z : b.op == '>' ? z > b.z : z >= b.z;
}

int32_t check(const double *z, int32_t n, const want &w)
{
    if (w.min >= 0 && n < w.min)
        return 122;
    if (w.max >= 0 && n > w.max)
        return 123;
    for (int32_t i = 0; i < n; i++) {
        if (i && ((w.ascending && z[i] <= z[i - 1]) || (w.descending && z[i] >= z[i - 1])))
            return 124;
        if (ovismissing(z[i]))
            continue;
        if (w.integer && z[i] != std::trunc(z[i]))
            return 126;
        for (const bound &b : w.bounds)
            if (!inside(z[i], b))
                return 125;
    }
    return 0;
}

}  // namespace

int32_t numcheck_opts(const char *opts)
{
    want w;
    return read_want(opts, &w);
}

int32_t numcheck_text(const char *list, const char *opts, std::string *out)
{
    constexpr int32_t most = 100000;
    want w;
    int32_t n = 0, rc = read_want(opts, &w);
    if (rc)
        return rc;
    std::unique_ptr<double[]> z(new (std::nothrow) double[most]);
    if (!z)
        return error(RC_NOMEM);
    if ((rc = numlist_read(list, z.get(), &n, most, w.missingok)))
        return errornumlist(rc);
    if (w.sort)
        std::sort(z.get(), z.get() + n);
    if ((rc = check(z.get(), n, w)))
        return errornumlist(rc);
    out->clear();
    for (int32_t i = 0; i < n; i++) {
        char num[40];
        if (ovismissing(z[size_t(i)]))
            cnvztos(z[size_t(i)], num);
        else
            mac_numtext(z[size_t(i)], num);
        *out += i ? " " : "";
        *out += num;
    }
    return out->size() >= size_t(macrolen) ? errornumlist(123) : 0;
}
