#include "stats/esample.h"
#include "core/state.h"
#include "core/text.h"
#include "data/dsa.h"
#include "data/variables.h"
#include "stats/results.h"
#include <cstring>

static int32_t find()
{
    return *esamplename ? sysfindvar(esamplename) : 0;
}

int32_t esample_count() { return find() > 0; }

int32_t esample_set(const uint8_t *mark)
{
    int32_t var = sysfindvar(esample_hidden_name);
    if (!var) {
        if (_Kvar != _i_Kvar)  // work variables of the command stand behind the user's
            return 0;
        bool was = s_updata;
        if ((var = addwrkvar(T_BYTE, 0)) < 0)
            return -var;
        _i_Kvar = _Kvar;
        s_updata = was;
    }
    strcut(_varlist[var - 1], 33, esample_hidden_name);
    strcut(esamplename, sizeof esamplename, esample_hidden_name);
    for (int32_t obs = 1; obs <= _Nobs; obs++)
        dsa_store(mark[obs] != 0, sysdsa, uint32_t(var), uint32_t(obs));
    return 0;
}

int32_t esample_take(int32_t var)
{
    int32_t old = sysfindvar(esample_hidden_name);
    if (old && old != var) {
        char name[33];
        strcut(name, sizeof name, _varlist[var - 1]);
        if (int32_t rc = dsa_drop_one_var(sysdsa, uint32_t(old), true))
            return rc;
        var = sysfindvar(name);
    }
    strcut(_varlist[var - 1], 33, esample_hidden_name);
    strcut(esamplename, sizeof esamplename, esample_hidden_name);
    newdata = true;
    return 0;
}

void esample_drop()
{
    int32_t var = find();
    *esamplename = 0;
    if (var && dsa_drop_one_var(sysdsa, uint32_t(var), true))
        return;
}
