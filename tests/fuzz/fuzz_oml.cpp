// Any bytes, cut anywhere into mark-up and raw text: never a crash, the column stays within
// bounds, and the mark-up log of it renders to what the plain log holds.
#include "output/oml.h"
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <unistd.h>

static int32_t take(const char *text, size_t n, void *arg)
{
    if (text)
        static_cast<std::string *>(arg)->append(text, n);
    return 0;
}

static std::string contents(int fd)
{
    std::string s(size_t(lseek(fd, 0, SEEK_END)), 0);
    if (pread(fd, s.data(), s.size(), 0) != ssize_t(s.size()))
        abort();
    return s;
}

static int tempfd()
{
    char name[] = "/tmp/fuzzomlXXXXXX";
    int fd = mkstemp(name);
    unlink(name);
    return fd;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *p, size_t n)
{
    static int in = tempfd(), out = tempfd();
    if (ftruncate(in, 0) || ftruncate(out, 0))
        abort();
    lseek(in, 0, SEEK_SET);
    lseek(out, 0, SEEK_SET);
    std::string shown, again;
    oml *o = omlopen(OML_PLAIN);
    omlset_user(o, take, &shown);
    int32_t idin = omlset_log_input(o, in), idout = omlset_log_output(o, out, 79);
    // A byte 1 to 31 other than a line end begins a piece; odd ones are raw.
    std::string piece;
    bool raw = false;
    for (size_t i = 0; i <= n; i++) {
        uint8_t c = i < n ? p[i] : 1;
        if (c >= 32 || c == '\n') {
            piece += char(c);
            continue;
        }
        raw ? omlsendraw(o, piece.c_str()) : omlsend(o, piece.c_str());
        piece.clear();
        raw = c & 1;
        lenofomcl(piece.c_str());
    }
    omlsendraw(o, "\n");  // a tag still open is none
    omlsend(o, "{p_end}\n");
    if (omllog_close(o, idin) || omllog_close(o, idout))
        abort();
    omlclose(o);
    std::string log = contents(in), plain = contents(out);
    oml *r = omlopen(OML_PLAIN);
    omlset_user(r, take, &again);
    omlsend(r, log.c_str() + 7);
    omlclose(r);
    if (again != plain || shown != plain)
        abort();
    return 0;
}
