// Any bytes as a do-file: each command that comes out is a clean line that fits, and every
// parse string takes it apart without losing its place.
#include "core/limits.h"
#include "interp/interp.h"
#include "output/print.h"
#include <cstdlib>
#include <cstring>
#include <sys/mman.h>
#include <string>
#include <unistd.h>

static void need(bool ok)
{
    if (!ok)
        abort();
}

static void take_apart(const char *parse)
{
    static char buf[macrolen];
    toktype ti;
    ti_settok(&ti, console);
    for (char *at = ti_wheretok(&ti); *ti_gettok(&ti, parse); at = ti_wheretok(&ti)) {
        need(strlen(ti.token) <= size_t(tokenlen));
        need(ti_wheretok(&ti) > at && ti_wheretok(&ti) <= console + strlen(console));
        gettok_state state;
        ti_stattok(&ti, &state);
        std::string token = ti.token;
        ti_ungettok(&ti);
        need(token == ti_gettok(&ti, parse));
        need(strlen(ti_gettoklong(&ti, buf, parse, true)) < size_t(macrolen));
        ti_resettok(&ti, &state);
    }
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    int fd = memfd_create("fuzz", 0);
    if (fd < 0 || write(fd, data, size) != ssize_t(size))
        return 0;
    std::string path = "/proc/self/fd/" + std::to_string(fd);
    int32_t rc;
    s_outlev = 5;
    dofilep = dofopen(path.c_str(), &rc);
    close(fd);
    if (!dofilep)
        return 0;
    doeof = false;
    delimit = 0;
    while (!readcons(conslen, true, false, false) && !doeof) {
        size_t n = strlen(console);
        need(n < size_t(conslen) && (!n || console[n - 1] != ' '));
        for (size_t i = 0; i < n; i++)
            need(uint8_t(console[i]) >= 32 && uint8_t(console[i]) != 255);
        for (const char *parse : {prsestd, prsefls, prseeqn, prseclsvar, prsenum})
            take_apart(parse);
    }
    dofclos(dofilep);
    dofilep = nullptr;
    doeof = false;
    stopflag = 0;
    return 0;
}
