// commands/appendcmd.cpp - _append: the rows of a file behind those in memory.
//
//   _append using FILE [, nolabel force keep(names)]
//
// Variables meet by name. A numeric type grows until it holds both sides, a string until the
// longer one fits; where one side is text and the other numbers, force leaves the file's
// values out. What only the file has is new, with its labels and characteristics.
#include "core/bytes.h"
#include "core/files.h"
#include "core/mem.h"
#include "core/missing.h"
#include "core/rc.h"
#include "core/state.h"
#include "core/text.h"
#include "data/dsa.h"
#include "data/dtafmt.h"
#include "data/labels.h"
#include "data/variables.h"
#include "expr/generate.h"
#include "expr/parse.h"
#include "interp/messages.h"
#include "output/fmt.h"
#include "output/print.h"
#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

int32_t appendcmd(int32_t);

namespace {

struct field {
    uint32_t at, width;
    int32_t var;  // 0: not taken
    uint8_t type;
};

struct appendjob {
    int32_t fd = -1;
    std::string name;
    bool nolabel, force;
    std::vector<std::string> keep;
    dtadict d;
    std::vector<field> fields;
    std::vector<int32_t> isnew;  // the number of a variable that memory lacked, else 0
    ~appendjob()
    {
        if (fd >= 0)
            ov_close(fd);
    }
};

// The type that holds both. A long and a float have no common type below double.
uint8_t common_type(uint8_t a, uint8_t b)
{
    uint8_t hi = std::max(a, b), lo = std::min(a, b);
    return !t_isstr(hi) && hi == T_FLOAT && lo == T_LONG ? uint8_t(T_DOUBLE) : hi;
}

int32_t parse(appendjob *j)
{
    parinfo->pi_vlist = parinfo->pi_if = parinfo->pi_in = parinfo->pi_exp = parinfo->pi_wgt = PI_NO;
    parinfo->pi_using = PI_REQ;
    parinfo->pi_opts = PI_OK;
    int32_t rc = ti_pi_parse(tokinfo, parinfo);
    if (rc)
        return rc;
    char names[macrolen] = "";
    j->nolabel = !ti_pi_findopt(tokinfo, parinfo, "label", 3, 1);
    j->force = ti_pi_findopt(tokinfo, parinfo, "force", 5, 0) == 1;
    ti_pi_findargasis(tokinfo, parinfo, "keep", 4, names, sizeof names);
    if ((rc = ti_pi_chkopt(tokinfo, parinfo)))
        return rc;
    for (char *word = strtok(names, " "); word; word = strtok(nullptr, " "))
        j->keep.push_back(word);
    j->name = path_addext(parinfo->pi_using_name, ".dta");
    return 0;
}

bool wanted(const appendjob *j, const char *name)
{
    return j->keep.empty() || std::find(j->keep.begin(), j->keep.end(), name) != j->keep.end();
}

int32_t conflict(const appendjob *j, int32_t var, uint8_t type)
{
    char mine[16], theirs[16];
    const char *name = _varlist[var - 1];
    type_word(_typlist[var - 1], mine);
    type_word(type, theirs);
    if (!j->force)
        return errout(RC_TYPE, "variable %s is %s in memory but %s in the using data;\n"
                                 "the option force leaves the values of the using data out\n",
                      name, mine, theirs);
    spout21fat(1, "(note: variable %s is %s in memory but %s in the using data; its values there "
                  "are left out)\n", name, mine, theirs);
    return 0;
}

int32_t new_var(appendjob *j, int32_t k, uint8_t type)
{
    const dtadict &d = j->d;
    char dflt[8];
    int32_t rc = chkname(d.names[k], false);
    if (rc)
        return rc;
    bool good = !chkfmt(d.fmts[k], nullptr) && fmt_isstr(d.fmts[k]) == t_isstr(type);
    if ((rc = dsa_add_var(sysdsa, type, d.names[k], good ? d.fmts[k] : fmt_default(type, dflt))))
        return rc;
    j->isnew[size_t(k)] = _Kvar;
    if (!chkname(d.lbls[k], true))
        memcpy(_lbllist[_Kvar - 1], d.lbls[k], 33);
    for (int32_t obs = 1; obs <= _Nobs; obs++)
        if (t_isstr(type))
            dsa_safe_sstore(sysdsa, uint32_t(_Kvar), uint32_t(obs), "");
        else
            dsa_store(misval, sysdsa, uint32_t(_Kvar), uint32_t(obs));
    return putvarlab(_Kvar, d.varlabs[k]);
}

// Finds or makes the variable for each of the file's, wide enough.
int32_t match_vars(appendjob *j)
{
    uint32_t at = 0;
    j->isnew.assign(size_t(j->d.K) + 1, 0);
    for (int32_t k = 0; k < j->d.K; k++) {
        uint8_t old = j->d.types[k], type = dsa_modernvartype(old);
        field f = {at, uint32_t(dsa_bytlenc(old)), 0, old};
        at += f.width;
        if (!wanted(j, j->d.names[k]))
            continue;
        f.var = sysfindvar(j->d.names[k]);
        int32_t rc = 0;
        if (!f.var) {
            rc = new_var(j, k, type);
            f.var = _Kvar;
        } else if (uint8_t mine = _typlist[f.var - 1]; t_isstr(mine) != t_isstr(type)) {
            rc = conflict(j, f.var, type);
            f.var = 0;
        } else if (common_type(mine, type) != mine)
            rc = change_vartype_fmt(f.var, common_type(mine, type));
        if (rc)
            return rc;
        if (f.var)
            j->fields.push_back(f);
    }
    return 0;
}

void put_cell(const appendjob *j, const field &f, const char *row, uint32_t obs)
{
    if (t_isstr(f.type)) {
        char text[256];
        memcpy(text, row + f.at, f.width);
        text[f.width] = 0;
        dsa_safe_sstore(sysdsa, uint32_t(f.var), obs, text);
        return;
    }
    alignas(8) char cell[8];
    memcpy(cell, row + f.at, f.width);
    if (dta_order(&j->d.h) != b_native)
        std::reverse(cell, cell + f.width);
    double z = cell_data(f.type, cell);
    if (j->d.h.release < 108 && f.type == T_DOUBLE110 && z == misval_107)
        z = misval;
    dsa_store(z, sysdsa, uint32_t(f.var), obs);
}

int32_t read_rows(appendjob *j)
{
    int32_t N = j->d.N, first = _Nobs;
    uint64_t w = j->d.width;
    int64_t left = ov_left(j->fd);
    if (left >= 0 && w * uint64_t(N) > uint64_t(left))
        return fierr(RC_IOREAD, j->name.c_str());
    int32_t rc = dsa_add_obs(sysdsa, N, true);
    if (rc || w == 0)
        return rc;
    int64_t many = std::min<int64_t>(std::max<int64_t>(int64_t(262144 / w), 1), std::max(N, 1));
    std::vector<char> buf(uint64_t(many) * w);
    for (int32_t done = 0; done < N;) {
        auto n = int32_t(std::min<int64_t>(many, N - done));
        auto bytes = int64_t(uint64_t(n) * w);
        if (lovata_read(j->fd, buf.data(), bytes) < bytes)
            return fierr(RC_IOREAD, j->name.c_str());
        for (int32_t i = 0; i < n; i++)
            for (const field &f : j->fields)
                put_cell(j, f, buf.data() + uint64_t(i) * w, uint32_t(first + done + i + 1));
        done += n;
        if (fault_poll())
            return RC_BREAK;
    }
    return 0;
}

// Tables come along when a new variable uses them and memory has none of that name.
const appendjob *labjob;
bool label_wanted(const char *name)
{
    if (vlfind(name))
        return false;
    for (int32_t var : labjob->isnew)
        if (var && !strcmp(_lbllist[var - 1], name))
            return true;
    return false;
}

int32_t join(appendjob *j)
{
    int32_t rc = match_vars(j);
    if (rc || (rc = dta_readchars(j->fd, &j->d, j->name.c_str(), j->isnew.data(), false)) ||
        (rc = read_rows(j)))
        return rc;
    labjob = j;
    return j->nolabel ? 0 : loadlab(j->fd, &j->d, label_wanted);
}

}  // namespace

int32_t appendcmd(int32_t)
{
    appendjob j;
    int32_t rc = parse(&j);
    if (rc)
        return rc;
    const char *name = j.name.c_str();
    if ((j.fd = ov_open(name, OV_READ)) < 0)
        return fierr(j.fd, name);
    if ((rc = rdhdr(j.fd, &j.d.h, name)) || (rc = dta_readdict(j.fd, &j.d, name)))
        return rc;
    // A failure takes back the rows and variables that were added.
    dsa_chkpt point = dsa_chkpt_open(sysdsa);
    rc = join(&j);
    dsa_chkpt_close(sysdsa, &point, rc != 0);
    _i_Kvar = _Kvar;
    if (rc)
        return rc;
    _srtlist[0] = 0;
    s_updata = newdata = newDtaset = true;
    return 0;
}
