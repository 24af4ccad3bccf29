// Any text as an expression: compiled in every context and run over a small dataset.
#include "core/state.h"
#include "data/dsa.h"
#include "data/scalars.h"
#include "data/umat.h"
#include "data/variables.h"
#include "expr/parse.h"
#include "output/print.h"
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

static parinfo_t pi;

static void make_data()
{
    if (sinit0_dsa() || dsa_add_obs(sysdsa, 5, true))
        abort();
    const uint8_t types[] = {T_BYTE, T_INT, T_FLOAT, T_DOUBLE, 8, 244};
    const char *const names[] = {"x", "year", "price", "z", "name", "text"};
    for (int i = 0; i < 6; i++)
        if (addvar(types[i], names[i]) < 0)
            abort();
    for (uint32_t obs = 1; obs <= 5; obs++) {
        for (uint32_t v = 1; v <= 4; v++)
            dsa_store(obs == 3 ? misval : obs * v, sysdsa, v, obs);
        dsa_sstore(sysdsa, 5, obs, "full len");
        dsa_sstore(sysdsa, 6, obs, std::string(244, 'q').c_str());
    }
    _i_Kvar = _Kvar;
    pi.pi_obs1 = nobss1 = 1;
    pi.pi_obs2 = nobss2 = 5;
    matref m;
    if (sclrsv("sc", 2) || umat_new("A", MK_MAT, 2, 3, &m))
        abort();
}

static void run(const xeqpgm *compiled)
{
    xeqpgm pgm = *compiled;
    char buffer[246];
    for (int32_t obs = 1; obs <= 6; obs++) {
        if (pgm.restype == XR_STR) {
            if (strlen(sxeq(&pgm, obs, buffer)) > 244)
                abort();
            continue;
        }
        double z = pi_xeq(&pi, &pgm, obs), b;
        if (z_allexp(z))
            abort();
        if (xeq_can_block(&pgm)) {
            xeq_block(&pi, &pgm, obs, 1, &b);
            if (memcmp(&b, &z, 8))
                abort();
        }
    }
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *p, size_t n)
{
    if (!sysdsa)
        make_data();
    s_outlev = 6;
    std::string text(reinterpret_cast<const char *>(p), n > 8000 ? 8000 : n);
    for (int32_t wanted : {W_ANY, W_NUMMAT})
        for (int16_t version : {1210, 400}) {
            vernum = version;
            mvmodern = version >= 800;
            std::string line = text;
            xeqpgm pgm;
            initialize_compexp_shared();
            ti_settok(tokinfo, line.data());
            int32_t rc = wanted == W_ANY
                             ? ti_compexp(tokinfo, &pgm, wanted, n & 1, false, nullptr, 0)
                             : compmatexp(&pgm, wanted, false, false, n & 2);
            if (tokinfo->c_ptr > line.c_str() + line.size())
                abort();
            if (!rc && wanted == W_ANY)
                run(&pgm);
            double z;
            if (!rc && wanted == W_NUMMAT)
                (void)xeqmat_g(&pgm, "T", MK_MAT, &z);
            if (nsystak > systak_n || nssystak > ssystak_n)
                abort();
        }
    vernum = ver_current;
    mvmodern = true;
    if (dsa_check(sysdsa))
        abort();
    return 0;
}
