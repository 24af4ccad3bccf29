// Any bytes, cut anywhere into mark-up and raw text, some for the screen alone, some typed, with
// logs that come and go: never a crash, and the mark-up log renders to what the plain log holds.
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

static void empty(int fd)
{
    if (ftruncate(fd, 0) || lseek(fd, 0, SEEK_SET) != 0)
        abort();
}

// A third log, text or mark-up, that is attached, paused and taken off again.
struct passing {
    int fd = tempfd();
    int32_t id = -1;
    bool paused = false;
    void step(oml *o, bool markup)
    {
        if (id < 0) {
            empty(fd);
            id = markup ? omlset_log_input(o, fd) : omlset_log_output(o, fd, 40);
            paused = false;
        } else if (!paused) {
            omllog_pause(o, id, paused = true);
            omlsendlog(o, id, "{p 2}last {bf:words");
        } else if (omllog_close(o, id))
            abort();
        else
            id = -1;
    }
};

enum kind { MARKUP, RAW, SCREEN, TYPED };
static void send(oml *o, const std::string &piece, kind k)
{
    switch (k) {
    case RAW: omlsendraw(o, piece.c_str()); break;
    case SCREEN: omlsendscreen(o, piece.c_str()); break;
    case TYPED: omltyped(o, piece.c_str(), piece.size() & 1); break;
    default: omlsend(o, piece.c_str());
    }
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *p, size_t n)
{
    static int in = tempfd(), out = tempfd();
    static passing third;
    empty(in);
    empty(out);
    std::string shown, again, piece;
    oml *o = omlopen(OML_PLAIN);
    omlset_user(o, take, &shown);
    int32_t idin = omlset_log_input(o, in), idout = omlset_log_output(o, out, 79);
    // A byte 1 to 31 other than a line end begins a piece and says of what kind.
    kind k = MARKUP;
    bool same = true;
    for (size_t i = 0; i <= n; i++) {
        uint8_t c = i < n ? p[i] : 1;
        if (c >= 32 || c == '\n') {
            piece += char(c);
            continue;
        }
        send(o, piece, k);
        lenofomcl(piece.c_str());
        piece.clear();
        k = c == 24 ? SCREEN : c == 25 ? TYPED : c & 1 ? RAW : MARKUP;
        same = same && k != SCREEN && k != TYPED;
        if (c == 26 || c == 28)
            third.step(o, c == 26);
    }
    omlsendraw(o, "\n"); // a tag still open is none
    omlsend(o, "{p_end}\n");
    if (omllog_close(o, idin) || omllog_close(o, idout))
        abort();
    third.id = -1;
    omlclose(o);
    std::string log = contents(in), plain = contents(out);
    oml *r = omlsend_genascii_begin(79, false, take, &again);
    omlsend_genascii(r, log.c_str() + 7);
    omlclose(r);
    if (again != plain || (same && shown != plain))
        abort();
    return 0;
}
