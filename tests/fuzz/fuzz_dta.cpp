// Any bytes as a dataset file: a code or sound data, never a crash. What loads is saved and
// must load again.
#include "core/mem.h"
#include "core/state.h"
#include "data/dsa_int.h"
#include "data/dtafile.h"
#include "data/dtaside.h"
#include "interp/dm.h"
#include "output/print.h"
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <sys/mman.h>
#include <unistd.h>

static int32_t fd = -1;
static std::string path;

static void start()
{
    dminit();
    s_outlev = 5;
    if (sinit0_dsa())
        abort();
    fd = memfd_create("fuzz", 0);
    path = "/proc/self/fd/" + std::to_string(fd);
}

static void check()
{
    if (int32_t rule = dsa_check(sysdsa)) {
        fprintf(stderr, "rule R%d is broken\n", rule);
        abort();
    }
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *p, size_t n)
{
    if (fd < 0)
        start();
    if (ftruncate(fd, 0) || pwrite(fd, p, n, 0) != ssize_t(n))
        return 0;
    {
        dtaside side;
        if (!side_load(path.c_str(), &side) && side_labels(&side, nullptr))
            abort();
    }
    dta_useopts use = {};
    int32_t rc = dta_use(path.c_str(), &use);
    check();
    if (rc)
        return 0;
    dta_saveopts save = {true, true, true, false, true, true, nullptr};
    if (dta_save(path.c_str(), &save) || dta_use(path.c_str(), &use))
        abort();
    check();
    return 0;
}
