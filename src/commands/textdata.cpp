#include "commands/textdata.h"
#include "core/files.h"
#include "core/mem.h"
#include "core/numtext.h"
#include "core/progress.h"
#include "core/rc.h"
#include "core/state.h"
#include "expr/parse.h"
#include "interp/messages.h"
#include <cstring>
#include <unistd.h>

textfile::~textfile() { safefree(text); }

// Reads to the end of a descriptor whose size is not known beforehand.
static int32_t load_stream(textfile *t, int32_t fd)
{
    int64_t cap = 1 << 16;
    if (!(t->text = static_cast<char *>(safemalloc(size_t(cap)))))
        return RC_NOMEM;
    for (;;) {
        if (stopflag)
            return RC_BREAK;
        t->n += lovata_read(fd, t->text + t->n, cap - 1 - t->n);
        if (t->n < cap - 1)
            return 0;
        char *more = static_cast<char *>(saferealloc(t->text, size_t(cap) * 2));
        if (!more)
            return RC_NOMEM;
        t->text = more;
        cap *= 2;
    }
}

static int32_t load_sized(textfile *t, int32_t fd, int64_t size)
{
    if (!(t->text = static_cast<char *>(safemalloc(size_t(size) + 1))))
        return RC_NOMEM;
    if ((t->n = lovata_read(fd, t->text, size)) < size)
        return RC_IOREAD;
    return 0;
}

static void clean(textfile *t)
{
    char *e = t->text + t->n;
    *e = 0;
    for (char *p = t->text; (p = static_cast<char *>(memchr(p, 0, size_t(e - p)))); p++)
        *p = ' ';
    if (memchr(t->text, '\n', size_t(t->n)))
        return;
    for (char *p = t->text; (p = static_cast<char *>(memchr(p, '\r', size_t(e - p)))); p++)
        *p = '\n';
}

int32_t text_load(textfile *t, const char *name)
{
    int32_t fd = ov_open(name, OV_READ);
    if (fd < 0)
        return fierr(-fd, name);
    int64_t size = ov_left(fd);
    int32_t rc = size > 0 ? load_sized(t, fd, size) : load_stream(t, fd);
    ov_close(fd);
    if (rc == RC_NOMEM)
        return error(RC_NOMEM);
    if (rc == RC_IOREAD)
        return fierr(RC_IOREAD, name);
    if (rc)
        return rc;
    clean(t);
    // A byte-order mark in front of UTF-8 text is not part of the first name.
    if (t->n >= 3 && !memcmp(t->text, "\xef\xbb\xbf", 3))
        memset(t->text, ' ', 3);
    return 0;
}

textline text_line(const textfile *t, char *p)
{
    char *stop = t->text + t->n;
    char *lf = static_cast<char *>(memchr(p, '\n', size_t(stop - p)));
    char *end = lf ? lf : stop;
    char *next = lf ? lf + 1 : stop;
    if (end > p && end[-1] == '\r')
        end--;
    return {p, end, next};
}

static textfield quoted_field(char **p, char *end, char delim)
{
    char *from = *p + 1, *to = from, *q = from;
    bool closed = false;
    while (q < end) {
        if (*q != '"') {
            *to++ = *q++;
            continue;
        }
        if (q + 1 < end && q[1] == '"') {
            *to++ = '"';
            q += 2;
            continue;
        }
        closed = true;
        q++;
        break;
    }
    textfield f = {from, int32_t(to - from), true, !closed};
    // Whatever stands between the closing quote and the delimiter is dropped.
    char *d = static_cast<char *>(memchr(q, delim, size_t(end - q)));
    *p = d ? d + 1 : end + 1;
    return f;
}

textfield text_field(char **p, char *end, char delim)
{
    char *q = *p;
    while (q < end && *q == ' ')
        q++;
    if (q < end && *q == '"') {
        *p = q;
        return quoted_field(p, end, delim);
    }
    char *d = static_cast<char *>(memchr(q, delim, size_t(end - q)));
    char *e = d ? d : end;
    *p = d ? d + 1 : end + 1;
    while (e > q && e[-1] == ' ')
        e--;
    return {q, int32_t(e - q), false, false};
}

// Plain decimals of up to 15 digits, exactly: both the digits and the power of ten are doubles
// without error, so one division rounds correctly.
static bool plain_number(const char *p, const char *e, double *z)
{
    static const double pow10[] = {1e0, 1e1, 1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                   1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};
    bool neg = p < e && *p == '-';
    p += neg;
    if (e - p > 16 || p == e)
        return false;
    uint64_t m = 0;
    int digits = 0, after = -1;
    for (; p < e; p++) {
        if (*p >= '0' && *p <= '9') {
            m = m * 10 + uint64_t(*p - '0');
            digits++;
            after += after >= 0;
        } else if (*p == '.' && after < 0) {
            after = 0;
        } else {
            return false;
        }
    }
    if (!digits || digits > 15)
        return false;
    double v = double(m);
    if (after > 0)
        v /= pow10[after];
    *z = neg ? -v : v;
    return true;
}

bool text_number(const textfield *f, double *z)
{
    if (!f->n)
        return false;
    return plain_number(f->at, f->at + f->n, z) || !cnvstozn(f->at, f->n, z);
}

static int32_t write_rows(int32_t fd, const std::string &head, textrow row, const void *arg)
{
    std::string out = head;
    wrinit();
    for (int32_t obs = parinfo->pi_obs1; obs <= parinfo->pi_obs2; obs++) {
        if (!selobs(obs))
            continue;
        row(arg, &out, obs);
        if (out.size() > 1 << 16) {
            if (wr(fd, out.data(), int64_t(out.size())))
                return RC_DISKFULL;
            out.clear();
            progress("writing", double(obs) / parinfo->pi_obs2);
            if (fault_poll())
                return stopflag;
        }
    }
    return wr(fd, out.data(), int64_t(out.size())) ? RC_DISKFULL : 0;
}

int32_t text_save(const std::string &file, bool replace, const std::string &head, textrow row,
                  const void *arg)
{
    int32_t fd = ov_open(file.c_str(), replace ? OV_REPLACE : OV_CREATE);
    if (fd < 0)
        return fierr(-fd, file.c_str());
    int32_t rc = write_rows(fd, head, row, arg);
    ov_close(fd);
    progress_end();
    if (rc)
        ov_discard(file.c_str());
    return rc == RC_DISKFULL ? fierr(rc, file.c_str()) : rc;
}
