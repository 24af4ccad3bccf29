// Patterns of syntax and what is typed against them: the first line is the pattern, the rest
// the arguments of the call. A line that begins with ! is run by tokenize and gettoken too.
#include "../session.h"
#include "interp/dm.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *p, size_t n)
{
    session();
    if (!_Kvar) {
        if (run("set obs 3") || run("generate x = _n") || run("generate y = 2*x"))
            abort();
    }
    s_outlev = 9;
    std::string text(reinterpret_cast<const char *>(p), n), typed;
    for (char &c : text)
        if (!c)
            c = ' ';
    size_t lf = text.find('\n');
    if (lf != std::string::npos) {
        typed = text.substr(lf + 1, 4000);
        text.resize(lf);
    }
    text.resize(text.size() < 4000 ? text.size() : 4000);
    if (macresave("_0", typed.c_str()))
        abort();
    int32_t rc = run("syntax " + text);
    if (rc < 0 || _Kvar != 2)
        abort();
    if (text[0] == '!') {
        (void)run("gettoken a b : 0, match(c) parse(\"" + text.substr(1, 5) + "\")");
        (void)run("tokenize " + typed);
    }
    dmzap(typelmac);
    return 0;
}
