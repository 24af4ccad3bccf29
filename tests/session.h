// tests/session.h - the whole system started inside a test, silent, with its output kept.
#pragma once
#include "core/files.h"
#include "core/limits.h"
#include "core/mem.h"
#include "core/state.h"
#include "data/dsa.h"
#include "expr/parse.h"
#include "interp/interp.h"
#include "interp/macros.h"
#include "output/oml.h"
#include "output/print.h"
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <string>
#include <unistd.h>

inline std::string session_output;

inline int32_t session_sink(const char *text, size_t n, void *)
{
    session_output.append(text, n);
    return 0;
}

// Starts the system once in this process, in a directory of its own. Standard input is empty.
inline void session()
{
    static bool started;
    if (started)
        return;
    started = true;
    static char dir[] = "/tmp/ovata-test-XXXXXX";
    if (!mkdtemp(dir) || chdir(dir))
        abort();
    static std::string remove = std::string("rm -rf ") + dir;
    static pid_t self = getpid();
    atexit([] {
        if (getpid() == self && system(remove.c_str())) {
        }
    });
    setenv("HOME", dir, 1);
    setenv("XDG_CONFIG_HOME", dir, 1);
    setenv("OVATATMP", dir, 1);
    setenv("OVATA_EDITION", "small7", 0);
#ifdef OVATA_SOURCE_DIR
    setenv("SYSDIR_OVATA", OVATA_SOURCE_DIR, 1);
#endif
    int null = open("/dev/null", O_RDONLY);
    dup2(null, 0);
    static char name[] = "ovata-sm", quiet[] = "-q";
    static char *argv[] = {name, quiet, nullptr};
    edition_choose(name);
    init_tmp();
    ti_settok(tokinfo, console);
    pi_zap(parinfo);
    if (sinit0(2, argv) < 0)
        abort();
    omlset_fd(oml_cur, -1);
    omlset_user(oml_cur, session_sink, nullptr);
}

// Runs one line as typed and returns its code; what it printed is in session_output.
inline int32_t run(const std::string &line)
{
    session();
    session_output.clear();
    stopflag = 0;
    c_outlev = 0;
    int32_t rc = run_line(line.c_str());
    omlflush(oml_cur);
    return rc;
}
