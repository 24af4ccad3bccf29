// The size of the dataset: observations and variables added and dropped.
#include "commands/dropping.h"
#include "core/rc.h"
#include "core/state.h"
#include "data/variables.h"
#include "expr/varlist.h"
#include "interp/messages.h"
#include "mosa/bihandlers.h"
#include "mosa/ov_index.h"
#include "output/fmt.h"
#include <cstring>
#include <vector>

namespace
{

bool flag_of(int32_t argc, int32_t k, bool *flag)
{
    double z = 0;
    if (argc >= k && !bi_real(bi_arg(argc, k), &z))
        return false;
    *flag = z != 0;
    return true;
}

// A caller who is about to store may say that nothing need be filled in. It is filled in all the
// same: bytes that were something else could be no number at all.

// ov_addobs(n [, nofill]): 0 or the code of the storage area, nothing added then.
bool addobs(int32_t argc, bool hush, int32_t *rc)
{
    double n;
    bool nofill;
    if (!bi_real(m_arg(argc - 1), &n) || !flag_of(argc, 2, &nofill))
        return false;
    if (!(n >= 0 && n <= zmaxlong))
        return bi_fail(3300);
    ov_hush keep(hush);
    *rc = n < 1 ? 0 : dsa_add_obs(sysdsa, int64_t(n), true);
    if (!*rc && n >= 1) {
        s_updata = newdata = true;
        _srtlist[0] = 0; // the new rows stand behind the others whatever they hold
    }
    return true;
}

// ---- new variables

struct newvars {
    std::vector<std::string> names;
    std::vector<uint8_t> types;
    bool nofill;
};

// A word of a type, or how many characters a text may have.
bool read_type(const matobj *m, int64_t k, uint8_t *type)
{
    if (m->eltype == MO_STRING) {
        *type = type_ofword(ov_element(m, k).c_str());
        return *type || bi_fail(3300);
    }
    double z = m->view ? v_el1(m, k) : mo_re(m)[k];
    if (!(z >= 1 && z <= double(T_STRMAX)))
        return bi_fail(3300);
    *type = uint8_t(z);
    return true;
}

bool read_newvars(int32_t argc, newvars *v)
{
    const matobj *t = bi_arg(argc, 1), *n = bi_arg(argc, 2);
    if (!bi_ismatrix(t) || !bi_isstring(n) || !flag_of(argc, 3, &v->nofill))
        return false;
    if (t->eltype != MO_REAL && t->eltype != MO_STRING)
        return bi_fail(3255);
    if ((n->rows != 1 && n->cols != 1) || (t->rows != 1 && t->cols != 1))
        return bi_fail(3201);
    if (mo_count(t) != 1 && mo_count(t) != mo_count(n))
        return bi_fail(3200);
    for (int64_t k = 0; k < mo_count(n); k++) {
        uint8_t type = 0;
        if (!read_type(t, mo_count(t) == 1 ? 0 : k, &type))
            return false;
        v->types.push_back(type);
        v->names.push_back(ov_element(n, k));
    }
    return true;
}

void fill_missing(uint32_t var)
{
    char cell[T_STRMAX] = {};
    if (!t_isstr(_typlist[var - 1]))
        cell_store(misval, _typlist[var - 1], cell);
    auto w = size_t(dsa_bytlenc(_typlist[var - 1]));
    for (uint32_t i = 1; i < sysdsa->_No_; i++)
        memcpy(dsa_varobsptr(sysdsa, var, i), cell, w);
}

// All of them behind the variables there are, or none.
int32_t add_them(const newvars &v)
{
    auto before = uint32_t(_Kvar);
    for (size_t k = 0; k < v.names.size(); k++) {
        int32_t var = addvar(v.types[k], v.names[k].c_str());
        if (var < 0) {
            dsa_truncate_var(sysdsa, before, true);
            return -var;
        }
        fill_missing(uint32_t(var));
    }
    if (uint32_t(_Kvar) > before) {
        _i_Kvar = _Kvar;
        s_updata = newdata = true;
    }
    return 0;
}

void addvar_call(int32_t argc, const char *id, bool hush)
{
    m_xeqerrid = id;
    newvars v;
    if (!read_newvars(argc, &v))
        return;
    auto n = int32_t(v.names.size());
    int32_t before = _Kvar, rc;
    ov_end end(1, n);
    if (!end)
        return;
    {
        ov_hush keep(hush);
        rc = add_them(v);
    }
    if (rc && hush)
        return ov_real(argc, -rc);
    if (ov_failed(rc))
        return;
    for (int32_t k = 0; k < n; k++)
        mo_re(end.result)[k] = before + 1 + k;
    end.done(argc);
}

// ---- dropping

void drop_variables(int32_t argc, const char *id, bool keep)
{
    m_xeqerrid = id;
    ov_list<int32_t> vars;
    if (!ov_readvars(m_arg(0), &vars))
        return;
    ov_end end;
    uint8_t *flags = end ? dsa_drop_open(sysdsa, 0) : nullptr;
    if (!flags) {
        m_xrc = m_xrc ? m_xrc : 3900;
        return;
    }
    if (keep) {
        std::vector<int32_t> all(size_t(_Kvar) + 1);
        int32_t n = vlist_all(all.data());
        for (int32_t k = 0; k < n; k++)
            flags[all[size_t(k)] - 1] = 1;
    }
    for (int64_t k = 0; k < vars.n; k++)
        flags[vars[k] - 1] = !keep;
    int32_t rc = _Kvar ? drop_vars(flags) : 0;
    dsa_drop_close(sysdsa, flags);
    if (!ov_failed(rc))
        end.done(argc);
}

// Rows by numbers and ranges, or by a column that is not 0 for what is meant. A range that lies
// outside the data fails before anything is marked.
bool mark(const matobj *what, bool byvalue, bool keep, uint32_t flag, int32_t *n)
{
    ov_list<ov_run> runs;
    if (byvalue) {
        for (int32_t k = 0; k < what->rows * what->cols; k++)
            if (bi_stop(k))
                return false;
            else if ((what->view ? v_el1(what, k) : mo_re(what)[k]) != 0 &&
                     !runs.add({k + 1, k + 1}))
                return false;
    } else if (!ov_readruns(what, &runs))
        return false;
    for (int64_t r = 0; r < runs.n; r++)
        for (int32_t obs = runs[r].first; obs <= runs[r].last; obs++)
            dsa_bstore(!keep, sysdsa, flag, uint32_t(obs));
    *n = 0;
    for (int32_t obs = 1; obs <= _Nobs; obs++)
        *n += dsa_bdata(sysdsa, flag, uint32_t(obs));
    return true;
}

void drop_rows(int32_t argc, const char *id, bool byvalue, bool keep)
{
    m_xeqerrid = id;
    const matobj *what = m_arg(0);
    if (!bi_isreal(what))
        return;
    if (byvalue && what->rows != 1 && what->cols != 1 && mo_count(what)) {
        m_xrc = 3201;
        return;
    }
    if (byvalue && mo_count(what) != _Nobs) {
        m_xrc = 3200;
        return;
    }
    ov_end end;
    if (!end)
        return;
    dsa_delhandle h = dsa_delete_open(sysdsa, keep);
    if (h.var < 0) {
        ov_failed(-h.var);
        return;
    }
    int32_t n;
    bool good = mark(what, byvalue, keep, uint32_t(h.var), &n);
    int32_t rc = drop_marked(&h, good ? n : 0, 0);
    if (good && !ov_failed(rc))
        end.done(argc);
}

} // namespace

void biov_addobs(int32_t argc)
{
    m_xeqerrid = "ov_addobs()";
    int32_t rc;
    ov_end end;
    if (end && addobs(argc, false, &rc) && !ov_failed(rc))
        end.done(argc);
}
void bi_ov_addobs(int32_t argc)
{
    m_xeqerrid = "_ov_addobs()";
    int32_t rc;
    ov_end end(1, 1);
    if (!end || !addobs(argc, true, &rc))
        return;
    *mo_re(end.result) = rc;
    end.done(argc);
}

void biov_addvar(int32_t argc)
{
    addvar_call(argc, "ov_addvar()", false);
}
void bi_ov_addvar(int32_t argc)
{
    addvar_call(argc, "_ov_addvar()", true);
}

void biov_dropvar(int32_t argc)
{
    drop_variables(argc, "ov_dropvar()", false);
}
void biov_keepvar(int32_t argc)
{
    drop_variables(argc, "ov_keepvar()", true);
}
void biov_dropobsin(int32_t argc)
{
    drop_rows(argc, "ov_dropobsin()", false, false);
}
void biov_dropobsif(int32_t argc)
{
    drop_rows(argc, "ov_dropobsif()", true, false);
}
void biov_keepobsin(int32_t argc)
{
    drop_rows(argc, "ov_keepobsin()", false, true);
}
void biov_keepobsif(int32_t argc)
{
    drop_rows(argc, "ov_keepobsif()", true, true);
}

// ov_updata() tells whether the data changed since they were saved, ov_updata(x) says so.
void biov_updata(int32_t argc)
{
    m_xeqerrid = "ov_updata()";
    double z;
    if (argc == 0)
        return ov_real(argc, s_updata);
    if (!bi_real(m_arg(0), &z))
        return;
    s_updata = z != 0;
    ov_void(argc);
}
