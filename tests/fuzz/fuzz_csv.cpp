// tests/fuzz/fuzz_csv.cpp - any bytes read as a table of text give a code, and what loads is
// sound.
#include "../session.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *p, size_t n)
{
    session();
    FILE *f = fopen("in.csv", "wb");
    if (!f || (n && fwrite(p, 1, n, f) != n))
        abort();
    fclose(f);
    int32_t rc = run("insheet using in.csv, clear");
    if (rc && (session_output.empty() || rc >= 9000))
        abort();
    if (dsa_check(sysdsa))
        abort();
    if (!rc && run("list in f"))
        return 0;
    return 0;
}
