#include "core/missing.h"
#include "core/numtext.h"
#include "core/rc.h"
#include "expr/parse.h"
#include "expr/varlist.h"
#include "interp/messages.h"
#include <cmath>
#include <cstring>

// Where the reader stands, and what it has read. Codes are those of a bad list, 121 to 127.
struct numreader {
    const char *p;
    double *out;
    int32_t n, max;
    bool missingok;
};

static void skip(numreader *r)
{
    while (*r->p == ' ' || *r->p == '\t' || *r->p == ',')
        r->p++;
}

// Blanks only: a comma separates elements, and operators do not reach over it.
static char peek(numreader *r)
{
    const char *q = r->p;
    while (*q == ' ' || *q == '\t')
        q++;
    return *q;
}

static void take(numreader *r)
{
    while (*r->p == ' ' || *r->p == '\t')
        r->p++;
    r->p++;
}

static int32_t number(numreader *r, double *z)
{
    skip(r);
    size_t n = strcspn(r->p, " \t,/()[]:");
    if (!n || n > 60 || cnvstozn(r->p, int32_t(n), z))
        return 121;
    r->p += n;
    return 0;
}

static int32_t emit(numreader *r, double z)
{
    if (ovismissing(z) && !r->missingok)
        return 127;
    if (r->n >= r->max)
        return 123;
    r->out[r->n++] = z;
    return 0;
}

// a, a+step, ... up to b; a itself was emitted. Each is computed from a, so that errors do
// not add up, and the end may be missed by a rounding error of the step.
static int32_t series(numreader *r, double a, double step, double b)
{
    if (ovismissing(a) || ovismissing(step) || ovismissing(b))
        return 127;
    if (step == 0)
        return a == b ? 0 : 121;
    double count = std::floor((b - a) / step + 1e-9);
    if (count > r->max)
        return 123;
    if (count < 0)
        return 121;
    for (double i = 1; i <= count; i++)
        if (int32_t rc = emit(r, a + i * step))
            return rc;
    return 0;
}

static bool isto(numreader *r)
{
    const char *q = r->p;
    while (*q == ' ' || *q == '\t')
        q++;
    return !strncmp(q, "to", 2) && (q[2] == ' ' || q[2] == '\t');
}

// What may follow a number: /b, (step)b, [step]b, : b, to b. The last two take their step
// from the two numbers before.
static int32_t tail(numreader *r, double a)
{
    double b, step;
    int32_t rc;
    char c = peek(r);
    if (c == '/') {
        take(r);
        if ((rc = number(r, &b)))
            return rc;
        return series(r, a, b < a ? -1 : 1, b);
    }
    if (c == '(' || c == '[') {
        take(r);
        if ((rc = number(r, &step)))
            return rc;
        if (peek(r) != (c == '(' ? ')' : ']'))
            return 121;
        take(r);
        if ((rc = number(r, &b)))
            return rc;
        return series(r, a, step, b);
    }
    if (c == ':' || isto(r)) {
        take(r);
        if (c != ':')
            r->p++;
        if (r->n < 2)
            return 121;
        step = a - r->out[r->n - 2];
        if ((rc = number(r, &b)))
            return rc;
        return series(r, a, step, b);
    }
    return 0;
}

int32_t numlist_read(const char *text, double *out, int32_t *n, int32_t max, bool missingok)
{
    numreader r{text, out, 0, max, missingok};
    int32_t rc = 0;
    *n = 0;
    for (skip(&r); *r.p && !rc; skip(&r)) {
        double a;
        if (!(rc = number(&r, &a)) && !(rc = emit(&r, a)))
            rc = tail(&r, a);
    }
    *n = r.n;
    return rc;
}

int32_t numlist_text(const char *text, double *out, int32_t *n, int32_t max)
{
    int32_t rc = numlist_read(text, out, n, max, false);
    return rc ? errornumlist(rc) : 0;
}
