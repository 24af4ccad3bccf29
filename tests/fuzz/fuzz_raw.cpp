// tests/fuzz/fuzz_raw.cpp - any bytes as the data and as the dictionary of infile and infix: a
// code with its words or sound data. The first byte chooses the command.
#include "../session.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *p, size_t n)
{
    static const char *const lines[] = {
        "infile using in.raw, clear automatic",
        "infix using in.raw, clear",
        "infile using in.raw if _n < 9, using(in.raw) clear",
        "infile a str8 b _skip(2) c:lab using in.raw in 2/9, clear automatic",
        "infile a str3 b using in.raw, byvariable(7) clear",
        "infix a 1-3 str b 2-9 2: c 1 using in.raw, clear",
    };
    session();
    FILE *f = fopen("in.raw", "wb");
    if (!f || (n > 1 && fwrite(p + 1, 1, n - 1, f) != n - 1))
        abort();
    fclose(f);
    size_t which = n ? *p % (sizeof lines / sizeof *lines) : 0;
    int32_t rc = run(lines[which]);
    if (rc && (session_output.empty() || rc >= 9000))
        abort();
    if (dsa_check(sysdsa))
        abort();
    if (!rc && _Kvar && _Nobs && run("outfile using out.raw in f, replace"))
        abort();
    return 0;
}
