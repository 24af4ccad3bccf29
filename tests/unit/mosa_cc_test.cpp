#include "mosahelp.h"

TEST(mosa_cc, probe)
{
    const char *prog = getenv("MS");
    int32_t rc = ms(prog ? prog : "x = 3 + 4");
    printf("rc %d\n%s", rc, session_output.c_str());
    const char *n = getenv("MSF");
    if (n)
        printf("%s", ms_code(n, getenv("MSM") ? getenv("MSM") : "").c_str());
    const char *e = getenv("MSV");
    if (e)
        printf("%.17g\n", ms_value(e));
    if (e)
        printf("%s\n", session_output.c_str());
}
