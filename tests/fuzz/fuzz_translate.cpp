// Any file, taken as mark-up and as text, becomes text, HTML and PostScript: never a crash; HTML
// whose tags match, with nothing in it that was not escaped.
#include "output/oml.h"
#include "output/translate.h"
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <sys/mman.h>
#include <unistd.h>

// A file in memory, with a name.
struct onfile {
    int fd = memfd_create("fuzz", 0);
    std::string path = "/proc/self/fd/" + std::to_string(fd);
    const char *name = path.c_str();
    std::string text() const
    {
        std::string s(size_t(lseek(fd, 0, SEEK_END)), 0);
        if (pread(fd, s.data(), s.size(), 0) != ssize_t(s.size()))
            abort();
        return s;
    }
};

static void expect_html(const std::string &s)
{
    size_t at = s.find("<pre>\n"), end = s.rfind("</pre>");
    if (at == s.npos || end == s.npos)
        abort();
    int a = 0, span = 0;
    for (at += 6; at < end; at++) {
        if (uint8_t(s[at]) < 32 && s[at] != '\n' && s[at] != '\t')
            abort();
        if (s[at] == '>' || s[at] == '"')
            abort();
        if (s[at] != '<')
            continue;
        bool known = true;
        if (!s.compare(at, 9, "<a href=\""))
            a++;
        else if (!s.compare(at, 13, "<span class=\""))
            span++;
        else if (!s.compare(at, 4, "</a>"))
            a--;
        else if (!s.compare(at, 7, "</span>"))
            span--;
        else
            known = false;
        if (!known || a < 0 || a > 1 || span < 0 || span > 1)
            abort();
        at = s.find('>', at);
    }
    if (a || span)
        abort();
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *p, size_t n)
{
    static onfile in, out;
    if (ftruncate(in.fd, 0) || pwrite(in.fd, p, n, 0) != ssize_t(n))
        abort();
    trans_how how = {TR_TEXT, true, 79, "t", true, 9, 8.5, 11, 1, 1, 1, 1};
    for (bool markup : {false, true})
        for (trans_kind kind : {TR_TEXT, TR_HTML, TR_PS}) {
            if (kind == TR_PS && n > 100)
                continue;
            how.kind = kind;
            how.markup = markup;
            if (translate_file(in.name, out.name, true, how))
                abort();
            if (kind == TR_HTML)
                expect_html(out.text());
        }
    return 0;
}
