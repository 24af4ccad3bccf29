#include "stats/statparse.h"
#include "core/rc.h"
#include "core/settings.h"
#include "core/state.h"
#include "data/dsa.h"
#include "data/variables.h"
#include "interp/messages.h"

int32_t stat_parse(const statline &line)
{
    parinfo->pi_in = parinfo->pi_if = parinfo->pi_opts = PI_OK;
    parinfo->pi_by = line.by ? PI_OK : PI_NO;
    parinfo->pi_vlist = line.vlist;
    parinfo->pi_blankall = line.blankall;
    parinfo->pi_fvok = line.fv ? 1 : parinfo->pi_fvok;
    parinfo->pi_wgt = line.weights ? PI_OK : PI_NO;
    parinfo->pi_wgtmask = line.weights;
    int32_t rc = ti_pi_parse(tokinfo, parinfo);
    if (!rc && parinfo->pi_hasexp && line.weightdflt)
        pi_wgtdflt(parinfo, line.weightdflt);
    return rc;
}

bool stat_option(const char *word, int32_t min, bool dflt)
{
    return ti_pi_findopt(tokinfo, parinfo, word, min, dflt) != 0;
}

int32_t stat_numvar(const char *text, int32_t *var)
{
    int32_t v = ovata_findvar(text, 1, !ovata_varabbrev);
    if (v < 0)
        return -v;
    if (t_isstr(_typlist[v - 1]))
        return error(RC_TYPE);
    *var = v;
    return 0;
}

int32_t take_block(matblock *m, int32_t rows)
{
    if (rows > set_matsize)
        return error(908);
    size_t bytes = sizeof(double) * size_t(rows) * size_t(set_matsize);
    m->reset(static_cast<double *>(safecalloc(bytes)));
    return *m ? 0 : errout(RC_NOMEM, "op. sys. refuses to provide memory\n");
}
