// From the matrix language into the command language.
#include "core/rc.h"
#include "core/state.h"
#include "data/dsa.h"
#include "interp/interp.h"
#include "interp/macros.h"
#include "interp/messages.h"
#include "mosa/bi_int.h"
#include "mosa/bihandlers.h"
#include "mosa/ov_names.h"
#include "output/print.h"
#include <cstring>
#include <string>

namespace
{

void result_of(int32_t argc, double z)
{
    m_result(argc, m_mktsmatsto(z));
}

// A command of the host, quietly when told, its words expanded unless told.
int32_t run_command(std::string line, bool quiet, bool asis)
{
    uint8_t was = s_outlev, level = c_outlev;
    int32_t rc = asis ? 0 : ov_expandline(&line);
    if (quiet && s_outlev < 3)
        s_outlev = 3;
    c_outlev = 0;
    if (!rc)
        rc = run_line(line.c_str());
    s_outlev = was;
    c_outlev = level;
    m_newstatement();
    return rc;
}

// ovata(line [, quietly [, asis]]); false with m_xrc set
bool command_call(int32_t argc, const char *id, int32_t *rc)
{
    m_xeqerrid = id;
    const char *p;
    int32_t n;
    double quiet = 0, asis = 0;
    if (!bi_string(bi_arg(argc, 1), &p, &n) || (argc > 1 && !bi_real(bi_arg(argc, 2), &quiet)) ||
        (argc > 2 && !bi_real(bi_arg(argc, 3), &asis)))
        return false;
    *rc = run_command(std::string(p, size_t(n)), quiet != 0, asis != 0);
    return true;
}

} // namespace

void biovata(int32_t argc)
{
    int32_t rc;
    if (!command_call(argc, "ovata()", &rc))
        return;
    m_xeqerrid = "ovata()";
    if (rc)
        m_xrc = rc == RC_BREAK ? 1 : 3598;
    else
        m_result(argc, m_mktmat(MO_REAL, 0, 0));
}

void bi_ovata(int32_t argc)
{
    int32_t rc;
    if (!command_call(argc, "_ovata()", &rc))
        return;
    if (rc == RC_BREAK)
        m_xrc = 1;
    else
        result_of(argc, rc);
}

void biov_nobs(int32_t argc)
{
    result_of(argc, _Nobs);
}
void biov_nvar(int32_t argc)
{
    result_of(argc, _Kvar);
}
