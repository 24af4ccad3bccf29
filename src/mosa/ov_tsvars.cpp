// Variables that hold operated ones: L.x, D2.x and their kin as numbers of variables.
#include "core/mem.h"
#include "core/rc.h"
#include "core/state.h"
#include "core/text.h"
#include "data/labels.h"
#include "data/variables.h"
#include "interp/messages.h"
#include "mosa/bihandlers.h"
#include "mosa/ov_index.h"
#include "output/fmt.h"
#include "varlist/terms.h"

namespace
{

// One variable with operators of time series, looked up.
int32_t read_operated(const std::string &text, termname *out)
{
    fvspec typed;
    fvlist list;
    // Not found is said of names only: without a time variable there are no operators.
    if (int32_t rc = ts_init())
        return rc == RC_NOTFOUND ? int32_t(RC_CONTEXT) : rc;
    if (int32_t rc = fv_text(text.c_str(), FV_TS, &typed))
        return rc;
    if (int32_t rc = fv_expand(typed, nullptr, &list))
        return rc;
    if (list.col.size() != 1 || list.col[0].n != 1)
        return errout(RC_SYNTAX, "%s invalid name\n", text.c_str());
    *out = list.col[0];
    if (t_isstr(_typlist[out->part[0].var - 1]))
        return error(RC_TYPE);
    return 0;
}

// A temporary variable behind the others with the values; its label tells what it stands for.
int32_t make_operated(const termname &t)
{
    char name[9], label[varlablen + 1];
    mktmpvn(name);
    int32_t var = addvar(T_DOUBLE, name);
    if (var < 0)
        return var;
    int32_t rc = 0;
    for (int32_t obs = 1; obs <= _Nobs && !rc; obs++) {
        if ((obs & 0xfff) == 0 && fault_poll())
            rc = stopflag;
        dsa_store(fv_xeq(t, obs), sysdsa, uint32_t(var), uint32_t(obs));
    }
    strcut(label, sizeof label, term_write(t).c_str());
    if (!rc)
        rc = putvarlab(var, label);
    return rc ? -rc : var;
}

// The number of one name, or a negated code.
int32_t number_for(const std::string &name)
{
    if (name.find('.') == std::string::npos) {
        int32_t var = ov_varnumber(name, ovata_varabbrev);
        return var ? var : -varnotfound(name.c_str());
    }
    termname t;
    int32_t rc = read_operated(name, &t);
    return rc ? -rc : make_operated(t);
}

// ov_tsrevar(names): a plain name gives its variable, an operated one a new temporary variable.
// The quiet form gives missing for what is neither, the other then takes all back.
void tsrevar(int32_t argc, const char *id, bool quiet)
{
    m_xeqerrid = id;
    const matobj *names = m_arg(0);
    if (!bi_isstring(names))
        return;
    ov_end end(names->rows, names->cols);
    auto before = uint32_t(_Kvar);
    ov_hush keep(quiet);
    for (int64_t k = 0; end && k < mo_count(names); k++) {
        auto had = uint32_t(_Kvar);
        int32_t var = number_for(ov_element(names, k));
        mo_re(end.result)[k] = var > 0 ? var : misval;
        if (var > 0)
            continue;
        bool all = !quiet || var == -RC_BREAK || var == -RC_NOMEM || var == -RC_DMMEM;
        dsa_truncate_var(sysdsa, all ? before : had, true);
        if (!all)
            continue;
        if (var == -RC_NOTFOUND)
            m_xrc = 3500;
        else
            ov_failed(-var);
        return;
    }
    if (!end)
        return;
    if (uint32_t(_Kvar) > before) {
        _i_Kvar = _Kvar;
        s_updata = newdata = true;
    }
    end.done(argc);
}

} // namespace

std::string ov_operated(int32_t var)
{
    char label[varlablen + 1];
    const char *name = _varlist[var - 1];
    getvarlab(var, label);
    termname t;
    return istmpvn(name, 0) && term_read(label, &t) && t.n == 1 && t.part[0].ts.any() ? label
                                                                                      : name;
}

void biov_tsrevar(int32_t argc)
{
    tsrevar(argc, "ov_tsrevar()", false);
}
void bi_ov_tsrevar(int32_t argc)
{
    tsrevar(argc, "_ov_tsrevar()", true);
}
