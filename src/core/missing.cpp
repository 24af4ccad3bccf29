#include "core/missing.h"
#include "core/numtext.h"

double misval = 0x1p1023, misval_z = 0x1.01ap1023, misval_107 = 0x1p333, misval_110 = 0x1p1023;
float fltmis = 0x1p127f, fltmis_110 = 0x1p127f;
double max_ovdouble = 0x1.fffffffffffffp1022, min_ovdouble = -0x1.fffffffffffffp1022,
       min_realdouble = -0x1.fffffffffffffp1023, smallest_ovdouble = 0x1p-1022,
       eps_ovdouble = 0x1p-52, smallest_dndouble = 0x1.0000000000001p-1023,
       max_ovfloat = 0x1.fffffep126, min_ovfloat = -0x1.fffffep126, eps_ovfloat = 0x1p-23;
double double2p = 6.283185307179586, doubleln2pi = 1.8378770664093453;

// One row a constant: where it lives and the text that defines it.
struct constrow {
    double *z;
    float *f;
    const char *text;
};
static const constrow consts[] = {
    {&misval, nullptr, "1.0x+3ff"},
    {nullptr, &fltmis, "1.0x+7f"},
    {nullptr, &fltmis_110, "1.0x+7f"},
    {&misval_110, nullptr, "1.0x+3ff"},
    {&misval_z, nullptr, "1.01ax+3ff"},
    {&misval_107, nullptr, "1.0x+14d"},
    {&max_ovdouble, nullptr, "1.fffffffffffffX+3fe"},
    {&min_ovdouble, nullptr, "-1.fffffffffffffX+3fe"},
    {&min_realdouble, nullptr, "-1.fffffffffffffX+3ff"},
    {&smallest_ovdouble, nullptr, "1.0000000000000X-3fe"},
    {&eps_ovdouble, nullptr, "1.0X-34"},
    {&smallest_dndouble, nullptr, "1.0000000000001X-3ff"},
    {&max_ovfloat, nullptr, "1.fffffeX+7e"},
    {&min_ovfloat, nullptr, "-1.fffffeX+7e"},
    {&eps_ovfloat, nullptr, "1.0X-17"},
};

int32_t numconst_init()
{
    for (const constrow &c : consts) {
        double z;
        if (cnvstoz(c.text, &z) || z != (c.z ? *c.z : double(*c.f)))
            return 1;
        if (c.z)
            *c.z = z;
        else
            *c.f = float(z);
    }
    return 0;
}
