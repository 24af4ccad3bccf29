// tests/fuzz/fuzz_moio.cpp - matrix streams of any making: what is read is written again, and
// reads as the same bytes.
#include "../session.h"
#include "mosa/moio.h"
#include "mosa/vm.h"
#include <sys/mman.h>

static void setup()
{
    session();
    if (mosastakinit(1))
        abort();
    s_outlev = 5;
}

// One file in memory for what comes in, one for what goes out.
static int32_t in, out;

static void fill(int32_t fd, const void *p, size_t n)
{
    if (ftruncate(fd, 0) || lseek(fd, 0, SEEK_SET) || lovata_write(fd, p, int64_t(n)) != int64_t(n))
        abort();
}

static std::string stream_of(matobj *m)
{
    fill(out, "", 0);
    if (moio_write(out, m))
        abort();
    lseek(out, 0, SEEK_SET);
    std::string b(size_t(ov_left(out)), 0);
    if (lovata_read(out, b.data(), int64_t(b.size())) != int64_t(b.size()))
        abort();
    return b;
}

// The matrix, or null.
static matobj *read_from(int32_t fd)
{
    matobj *m;
    char name[33];
    lseek(fd, 0, SEEK_SET);
    moio_code rc = moio_read(fd, &m, name);
    if (!rc != (m != nullptr) || strlen(name) > 32 || m_xrc)
        abort();
    return m;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *p, size_t n)
{
    static const bool ready = (setup(), in = memfd_create("in", 0), out = memfd_create("out", 0),
                               in >= 0 && out >= 0);
    if (!ready)
        return 0;
    fill(in, p, n);
    if (matobj *m = read_from(in)) {
        m->links++;
        std::string first = stream_of(m);
        matobj *again = read_from(out);
        if (!again || (again->links++, stream_of(again)) != first)
            abort();
        mo_unlink(again);
        mo_unlink(m);
    }
    if (mo_nextmat(nullptr) && run("mosa_clear")) // circles
        abort();
    if (mo_nextmat(nullptr) || dm_dtyp[DM_MOSAKEYS])
        abort();
    return 0;
}
