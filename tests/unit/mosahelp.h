// tests/unit/mosahelp.h - texts of the matrix language compiled and run inside a test.
#pragma once
#include "../session.h"
#include "core/settings.h"
#include "mosa/builtins.h"
#include "mosa/compiler.h"
#include "mosa/image.h"
#include "mosa/vm.h"
#include <gtest/gtest.h>

inline std::string ms_rest; // lines not read yet

inline bool ms_getline()
{
    if (ms_rest.empty())
        return false;
    size_t n = ms_rest.find('\n');
    m_setline(ms_rest.substr(0, n).c_str());
    ms_rest.erase(0, n == std::string::npos ? n : n + 1);
    return true;
}

inline void ms_begin()
{
    session();
    static bool once = [] { return mosastakinit(1) == 0; }();
    ASSERT_TRUE(once);
    m_getline = ms_getline;
    m_mayreadcons = true;
    session_output.clear();
    stopflag = 0;
    c_outlev = 0;
}

// Compiles and, unless it is not wanted, runs a text of several lines. 0, 3000, or the first
// code; what was printed is in session_output.
inline int32_t ms(const std::string &text, bool execute = true)
{
    ms_begin();
    ms_rest = text;
    int32_t rc = 0;
    while (!rc && ms_getline())
        while (!rc && !m_lineended()) {
            if (cc_compile()) {
                if (!cc_failed)
                    break;
                rc = 3000;
            } else if (cc_wasstmt && execute) {
                m_newstatement();
                rc = ixeq();
            }
        }
    omlflush(oml_cur);
    return rc;
}

// The words of a function, or of the statement compiled last.
inline std::string ms_code(const char *name, const char *member = "")
{
    matobj *f = mo_findfcn("", name, member);
    return f ? m_disasm(mo_code(f), f->rows) : "none";
}

// The one line of a compilation that fails.
inline std::string ms_fails(const std::string &text)
{
    int32_t rc = ms(text, false);
    return rc == 3000 ? session_output : "compiled: " + session_output;
}

// The value of an expression; NaN when it failed.
inline double ms_value(const std::string &expression)
{
    int32_t rc = ms("ms__v = (" + expression + ")");
    matobj *m = rc ? nullptr : findlvl0mat("ms__v");
    return m && m->eltype == MO_REAL && mo_is1by1(m) ? m_el(m, 0, 0) : __builtin_nan("");
}
