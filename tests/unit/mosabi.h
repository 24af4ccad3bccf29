// A table of calls of built-in functions with what each shows.
#pragma once
#include "../mosa_asm.h"
#include "mosahelp.h"

struct called {
    const char *text; // statements before the last ';' prepare, the rest is the expression
    const char *want; // as show() writes it, or the code
};

inline std::string value(const std::string &text)
{
    size_t at = text.rfind("; ");
    std::string before = at == std::string::npos ? "" : text.substr(0, at);
    std::string last = at == std::string::npos ? text : text.substr(at + 2);
    int32_t rc = before.empty() ? 0 : ms(before);
    rc = rc ? rc : ms("ms__v = (" + last + ")");
    if (rc)
        return std::to_string(rc);
    matobj *m = findlvl0mat("ms__v");
    return m ? show(m) : "none";
}

template <size_t N> inline void try_all(const called (&rows)[N])
{
    for (auto &r : rows)
        EXPECT_EQ(value(r.text), r.want) << r.text;
}
