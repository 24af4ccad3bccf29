// Lines through the expansion of macros: the first byte picks the version in force, the rest
// up to a line feed is a definition, what follows is the line expanded.
#include "../session.h"
#include "interp/dm.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *p, size_t n)
{
    session();
    s_outlev = 9;
    static const int16_t versions[] = {310, 600, 850, 1210};
    vernum = n ? versions[*p % 4] : int16_t(1210);
    std::string text(reinterpret_cast<const char *>(p) + (n > 0), n - (n > 0)), def;
    for (char &c : text)
        if (!c)
            c = ' ';
    size_t lf = text.find('\n');
    if (lf != std::string::npos) {
        def = text.substr(0, lf);
        text.erase(0, lf + 1);
    }
    stopflag = 0;
    procflg = true;
    // A macro may name itself and others: short values keep each run short.
    if (macresave("_x", def.substr(0, 40).c_str()) || macresave("_i", "2") ||
        macresave("g", "`x'"))
        abort();
    text.resize(text.size() < size_t(conslen) - 1 ? text.size() : size_t(conslen) - 1);
    memcpy(console, text.c_str(), text.size() + 1);
    int32_t rc = macexp();
    if (strlen(console) >= size_t(conslen) || rc < 0)
        abort();
    dmzap(typelmac);
    vernum = ver_current;
    return 0;
}
