#include "output/translate.h"
#include "core/files.h"
#include "core/mem.h"
#include "core/state.h"
#include "interp/messages.h"
#include "output/htmlout.h"
#include "output/oml.h"
#include "output/pageout.h"
#include <algorithm>
#include <cstring>
#include <memory>
#include <sys/stat.h>

using str = std::string;

void bytesink::flush()
{
    int32_t n = int32_t(held.size());
    if (n && !failed && ovata_write(fd, held.data(), n) != n)
        failed = true;
    held.clear();
}

void bytesink::put(const char *p, size_t n)
{
    held.append(p, n);
    if (held.size() > 16384)
        flush();
}

size_t utf8_at(const char *p, size_t n)
{
    auto b = reinterpret_cast<const uint8_t *>(p);
    size_t k = b[0] < 0x80   ? 1
               : b[0] < 0xc2 ? 0
               : b[0] < 0xe0 ? 2
               : b[0] < 0xf0 ? 3
               : b[0] < 0xf5 ? 4
                             : 0;
    if (!k || k > n)
        return 0;
    for (size_t i = 1; i < k; i++)
        if ((b[i] & 0xc0) != 0x80)
            return 0;
    // Too long a form, half of a pair, beyond the last character.
    if ((b[0] == 0xe0 && b[1] < 0xa0) || (b[0] == 0xed && b[1] > 0x9f) ||
        (b[0] == 0xf0 && b[1] < 0x90) || (b[0] == 0xf4 && b[1] > 0x8f))
        return 0;
    return k;
}

void markreader::take(const char *p, size_t n)
{
    const char *end = p + n;
    while (p < end) {
        if (pending == omlmark_style) {
            instyle = uint8_t(*p++) - 32;
            pending = 0;
            continue;
        }
        if (pending == omlmark_link) {
            auto q = static_cast<const char *>(memchr(p, omlmark_end, size_t(end - p)));
            gathered.append(p, size_t((q ? q : end) - p));
            p = q ? q + 1 : end;
            if (q) {
                tolink = gathered;
                gathered.clear();
                pending = 0;
            }
            continue;
        }
        const char *q = p;
        while (q < end && *q != '\n' && *q != omlmark_style && *q != omlmark_link &&
               *q != omlmark_page)
            q++;
        if (q > p)
            run(instyle, instyle & omlst_link ? tolink : str(), p, size_t(q - p));
        if (q < end && *q == '\n')
            lineend();
        else if (q < end && *q == omlmark_page)
            newpage();
        else if (q < end)
            pending = *q;
        p = q < end ? q + 1 : q;
    }
}

namespace
{

int32_t to_text(const char *p, size_t n, void *arg)
{
    if (p)
        static_cast<bytesink *>(arg)->put(p, n);
    return 0;
}
int32_t to_reader(const char *p, size_t n, void *arg)
{
    if (p)
        static_cast<markreader *>(arg)->take(p, n);
    return 0;
}

// Bytes that would be taken for marks, or for nothing at all, where styles are wanted.
void tame(str *text, bool marks)
{
    for (char &c : *text)
        if (!c || (marks && c != '\n' && c != '\t' && uint8_t(c) < 32))
            c = c ? '?' : ' ';
}

// Hands the file over in pieces of whole lines. The renderer gets mark-up, or raw text.
int32_t feed(int32_t fd, const char *name, oml *o, const trans_how &how)
{
    static char buf[16384];
    str held;
    bool first = true;
    int32_t n;
    do {
        n = ovata_read(fd, buf, sizeof buf);
        if (n < 0)
            return fierr(692, name);
        held.append(buf, size_t(n));
        bool last = n < int32_t(sizeof buf) || held.size() > (1 << 20);
        size_t upto = last ? held.size() : held.rfind('\n') + 1;
        str part = held.substr(0, upto);
        held.erase(0, upto);
        tame(&part, how.kind != TR_TEXT);
        const char *p = part.c_str();
        if (first && how.markup && !strncmp(p, "{omcl}\n", 7))
            p += 7;
        first = false;
        how.markup ? omlsend_genascii(o, p) : omlsend_genascii_raw(o, p);
        if (fault_poll())
            return 1;
    } while (n == int32_t(sizeof buf));
    omlsend_genascii_raw(o, ""); // a tag left open at the end is none
    omlsend_genascii(o, "{p_end}");
    return 0;
}

int32_t render(int32_t fd, const char *name, oml_userfn fn, void *arg, const trans_how &how)
{
    oml *o = omlsend_genascii_begin(how.width, how.kind != TR_TEXT, fn, arg);
    if (!o)
        return error(909);
    int32_t rc = feed(fd, name, o, how);
    omlclose(o);
    return rc;
}

int32_t make(int32_t in, int32_t out, const char *from, const char *to, const trans_how &how)
{
    int32_t rc;
    bool failed;
    if (how.kind == TR_TEXT) {
        bytesink t(out);
        rc = render(in, from, to_text, &t, how);
        t.flush();
        failed = t.failed;
    } else if (how.kind == TR_HTML) {
        htmlout h(out, how.title.c_str());
        rc = render(in, from, to_reader, static_cast<markreader *>(&h), how);
        failed = !h.close();
    } else {
        std::unique_ptr<pageout> p = page_open(out, how);
        if (!p)
            return errout(601, "PostScript and PDF need the cairo library (%s); it was not found\n",
                          page_library);
        trans_how fitting = how;
        fitting.width = std::clamp(std::min(how.width, page_columns(*p)), 40, 255);
        rc = render(in, from, to_reader, static_cast<markreader *>(p.get()), fitting);
        failed = !page_close(*p);
    }
    return rc ? rc : failed ? fierr(693, to) : 0;
}

} // namespace

int32_t translate_file(const char *from, const char *to, bool replace, const trans_how &how)
{
    int32_t in = ov_open(from, OV_READ);
    if (in < 0)
        return fierr(in, from);
    struct stat a, b;  // by any other name it is the same file
    if (!fstat(in, &a) && !stat(path_expand(to).c_str(), &b) && a.st_ino == b.st_ino &&
        a.st_dev == b.st_dev) {
        ov_close(in);
        return fierr(602, to);
    }
    int32_t out = ov_open(to, replace ? OV_REPLACE : OV_CREATE);
    if (out < 0) {
        ov_close(in);
        return fierr(out, to);
    }
    int32_t rc = make(in, out, from, to, how);
    ov_close(in);
    ov_close(out);
    if (rc)
        ov_discard(to);
    return rc;
}
