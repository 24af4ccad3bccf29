// commands/matscore.cpp - matrix score: a row of coefficients times the variables it names.
//
//   matrix score [type] newvar = A [if] [in] [, equation(name|#k) missval(#) replace]
#include "commands/matrixstat.h"
#include "core/missing.h"
#include "core/rc.h"
#include "core/settings.h"
#include "core/state.h"
#include "core/text.h"
#include "data/umat.h"
#include "data/variables.h"
#include "expr/generate.h"
#include "expr/rows.h"
#include "interp/interp.h"
#include "interp/messages.h"
#include "output/fmt.h"
#include "output/print.h"
#include "stats/statparse.h"
#include "varlist/terms.h"
#include <cstring>
#include <vector>

namespace
{

struct scorecmd {
    uint8_t type = 0; // 0: as settings say
    char name[33], matrix[33], eq[33] = "";
    double missval = misval;
    bool replace;
    std::vector<int32_t> vars; // 0 for the constant, -k for term k
    std::vector<termname> terms;
    bool times = false;
    std::vector<double> b;
};

int32_t parse(scorecmd *c)
{
    const char *t = ti_gettok(tokinfo, prsestd);
    if ((c->type = type_ofword(t)) && ti_peektok_chr(tokinfo) != '=')
        t = ti_gettok(tokinfo, prsestd);
    else
        c->type = 0;
    if (t_isstr(c->type) && c->type)
        return error(RC_TYPE);
    if (!*t || *t == '"')
        return required("variable name");
    strcut(c->name, sizeof c->name, t);
    if (int32_t rc = ti_gtokis(tokinfo, '='))
        return rc;
    t = ti_gettok(tokinfo, prsestd);
    if (!*t)
        return required("matrix name");
    strcut(c->matrix, sizeof c->matrix, t);
    statline line;
    line.vlist = PI_NO;
    line.by = false;
    int32_t rc = stat_parse(line);
    if (rc)
        return rc;
    c->replace = stat_option("replace", 3);
    (void)ti_pi_findoptv(tokinfo, parinfo, "missval", 4, &c->missval, 1, 0);
    if (!ti_pi_findargn(tokinfo, parinfo, "equation", 2, c->eq, 32, 1))
        *c->eq = 0;
    return ti_pi_chkopt(tokinfo, parinfo);
}

int32_t find_columns(scorecmd *c)
{
    matref A;
    if (!umat_get(c->matrix, MK_MAT, &A))
        return matnotfound(c->matrix);
    if (A.m->rows != 1)
        return error(503);
    int32_t first, last;
    if (!umat_eqspan(A.col, A.m->cols, c->eq, &first, &last))
        return eqnotfound(c->eq);
    for (int32_t j = first; j <= last; j++) {
        const char *name = A.col[j].name;
        int32_t var = 0;
        termname t;
        if (strchr(name, '.')) {
            if (term_read(name, &t) && term_isomitted(t))
                continue;
            if (int32_t rc = ti_fv_findvar(name, &t))
                return rc;
            for (int32_t i = 0; i < t.n; i++)
                c->times |= t.part[i].ts.any();
            c->terms.push_back(t);
            var = -int32_t(c->terms.size());
        } else if (strcmp(name, "_cons")) {
            if (!(var = sysfindvar(name)))
                return varnotfound(name);
            if (t_isstr(_typlist[var - 1]))
                return error(RC_TYPE);
        }
        c->vars.push_back(var);
        c->b.push_back(umat_el(A.m, 1, j + 1));
    }
    return c->times ? ts_init() : 0;
}

// The variable to fill: an old one with replace, else a new one behind the others.
int32_t target(const scorecmd *c, int32_t *var)
{
    if (c->replace) {
        if (int32_t rc = findvarnoab(c->name); rc < 0)
            return -rc;
        return stat_numvar(c->name, var);
    }
    *var = addvar(c->type ? c->type : type_ofword(set_type), c->name);
    return *var < 0 ? -*var : 0;
}

double value_at(const scorecmd *c, int32_t obs)
{
    double sum = 0;
    for (size_t j = 0; j < c->vars.size(); j++) {
        int32_t v = c->vars[j];
        double z = v > 0   ? dsa_data(sysdsa, uint32_t(v), uint32_t(obs))
                   : v < 0 ? fv_xeq(c->terms[size_t(-v) - 1], obs)
                           : 1;
        if (z >= misval)
            return c->missval;
        sum += c->b[j] * z;
    }
    return sum > -misval && sum < misval ? sum : misval;
}

} // namespace

int32_t mat_score(int32_t)
{
    scorecmd c;
    int32_t var = 0, missing = 0, rc = parse(&c);
    if (rc || (rc = find_columns(&c)) || (rc = target(&c, &var)))
        return rc;
    rowvalues v;
    rv_open(&v, nullptr, parinfo->pi_obs2);
    for (int32_t obs = 1; obs <= _Nobs; obs++) {
        if ((obs & 0xfff) == 0 && fault_poll())
            break;
        bool in = obs >= parinfo->pi_obs1 && obs <= parinfo->pi_obs2 && rv_selected(&v, obs);
        if (!in && c.replace)
            continue;
        double z = in ? value_at(&c, obs) : misval;
        dsa_store(z, sysdsa, uint32_t(var), uint32_t(obs));
        missing += z >= misval;
    }
    s_updata = newdata = true;
    if (stopflag) {
        if (!c.replace)
            (void)dsa_drop_one_var(sysdsa, uint32_t(var), true);
        return stopflag;
    }
    _i_Kvar = _Kvar;
    if (out_shown(2))
        missmsg(missing, true);
    return 0;
}
