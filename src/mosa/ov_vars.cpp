// What the dictionary says of variables, and names that are good for something.
#include "commands/renaming.h"
#include "core/files.h"
#include "core/rc.h"
#include "core/state.h"
#include "core/text.h"
#include "data/labels.h"
#include "data/variables.h"
#include "expr/parse.h"
#include "expr/varlist.h"
#include "interp/messages.h"
#include "mosa/bihandlers.h"
#include "mosa/ov_index.h"
#include "output/fmt.h"
#include <cstring>
#include <vector>

namespace
{

// ---- names to numbers and back

// A second argument that is not 0.
bool second_flag(int32_t argc, bool *abbrev)
{
    double z = 0;
    if (argc > 1 && !bi_real(bi_arg(argc, 2), &z))
        return false;
    *abbrev = z != 0;
    return true;
}

// ov_varindex(names [, abbrev]); the quiet form has missing for a name that is none.
void varindex(int32_t argc, const char *id, bool quiet)
{
    m_xeqerrid = id;
    const matobj *names = bi_arg(argc, 1);
    bool abbrev;
    if (!bi_isstring(names) || !second_flag(argc, &abbrev))
        return;
    ov_end end(names->rows, names->cols);
    for (int64_t k = 0; end && k < mo_count(names); k++) {
        std::string name = ov_element(names, k);
        int32_t var = ov_varnumber(name, abbrev);
        if (!var && !quiet)
            return m_custom_xeqerrf(3500, "variable %s not found", name.c_str());
        mo_re(end.result)[k] = var ? var : misval;
    }
    if (end)
        end.done(argc);
}

matobj *row_of(const std::vector<std::string> &names)
{
    matobj *r = m_mktmat(MO_STRING, 1, int32_t(names.size()));
    for (size_t k = 0; r && k < names.size(); k++)
        if (selreplace(r, int64_t(k), names[k].data(), int64_t(names[k].size()))) {
            mo_freemat(r);
            return nullptr;
        }
    return r;
}

// ---- what one variable has

// Argument 1 names the variable, the second, when it is there, is what it is to have.
bool one_of(int32_t argc, const char *id, int32_t *var, std::string *text)
{
    m_xeqerrid = id;
    return ov_readvar(bi_arg(argc, 1), var) && (argc < 2 || ov_string(bi_arg(argc, 2), text));
}

void kind_of(int32_t argc, const char *id, bool strings)
{
    int32_t var;
    if (one_of(argc, id, &var, nullptr))
        ov_real(argc, ov_isstring(var) == strings);
}

// ---- lists

// _ov_varlist(L, text), _ov_ivarlist(L, text) and _ov_unab(L, text): L becomes what the list
// stands for, and the code says whether it is one. A code leaves L as it was.
bool read_list(int32_t argc, const char *id, ov_list<int32_t> *vars, int32_t *rc)
{
    m_xeqerrid = id;
    std::string text;
    if (!bi_ismatrix(m_arg(1)) || !ov_string(m_arg(0), &text))
        return false;
    std::vector<int32_t> list(size_t(maxvlist) + 1);
    int32_t n = 0;
    ov_hush keep(true);
    *rc = text.find_first_not_of(' ') == std::string::npos
              ? 0
              : vlist_text(text.c_str(), list.data(), &n, maxvlist);
    if (*rc == RC_BREAK)
        return bi_fail(1);
    for (int32_t k = 0; k < n && !*rc; k++)
        if (!vars->add(list[size_t(k)]))
            return false;
    (void)argc;
    return true;
}

// The argument of the caller takes the value; then the code is the result.
void give(int32_t argc, matobj *to, matobj *value, int32_t rc)
{
    ov_end end(1, 1);
    if (end && !rc && value && !cpymat(to, value, false)) {
        *mo_re(end.result) = 0;
        end.done(argc);
    } else if (end && rc) {
        *mo_re(end.result) = rc;
        end.done(argc);
    }
    if (value)
        mo_freemat(value);
}

bool is_format(const matobj *m, fmtinfo *f, bool *good)
{
    std::string text;
    if (!ov_string(m, &text))
        return false;
    *good = !text.empty() && text.size() <= size_t(fmtlen) && !chkfmt(text.c_str(), f);
    return true;
}

bool is_strfmt(const fmtinfo &f)
{
    return f.kind == 's';
}

// ov_tempname([n]) and ov_tempfilename([n]) as a row.
void temporaries(int32_t argc, const char *id, bool files)
{
    m_xeqerrid = id;
    int32_t n = 1;
    if (argc && !bi_int(m_arg(0), 0, 32767, &n))
        return;
    matobj *r = m_mktmat(MO_STRING, 1, n);
    for (int32_t k = 0; r && k < n; k++) {
        char name[16];
        mktmpvn(name);
        std::string text = files ? mktmpfn() : name;
        if (selreplace(r, k, text.data(), int64_t(text.size()))) {
            mo_freemat(r);
            return;
        }
    }
    if (r)
        m_result(argc, r);
}

} // namespace

void biov_varindex(int32_t argc)
{
    varindex(argc, "ov_varindex()", false);
}
void bi_ov_varindex(int32_t argc)
{
    varindex(argc, "_ov_varindex()", true);
}

// ov_varname(k [, operated]): names of numbers; with operated not 0, what a temporary variable
// of ov_tsrevar() stands for in place of its name.
void biov_varname(int32_t argc)
{
    m_xeqerrid = "ov_varname()";
    const matobj *k = bi_arg(argc, 1);
    bool operated;
    if (!bi_isreal(k) || !second_flag(argc, &operated))
        return;
    if (k->rows != 1 && k->cols != 1) {
        m_xrc = 3201;
        return;
    }
    std::vector<std::string> names;
    for (int64_t i = 0; i < mo_count(k); i++) {
        double z = k->view ? v_el1(k, i) : mo_re(k)[i];
        if (!(z >= 1 && z < double(_Kvar) + 1)) {
            m_xrc = 3300;
            return;
        }
        names.push_back(operated ? ov_operated(int32_t(z)) : _varlist[int32_t(z) - 1]);
    }
    if (matobj *r = row_of(names))
        m_result(argc, r);
}

void biov_vartype(int32_t argc)
{
    int32_t var;
    char word[8];
    if (one_of(argc, "ov_vartype()", &var, nullptr))
        ov_text(argc, type_word(_typlist[var - 1], word));
}
void biov_isnumvar(int32_t argc)
{
    kind_of(argc, "ov_isnumvar()", false);
}
void biov_isstrvar(int32_t argc)
{
    kind_of(argc, "ov_isstrvar()", true);
}

void biov_varrename(int32_t argc)
{
    int32_t var;
    std::string name;
    ov_end end;
    if (end && one_of(argc, "ov_varrename()", &var, &name) &&
        !ov_failed(rename_variable(var, name.c_str())))
        end.done(argc);
}

void biov_varformat(int32_t argc)
{
    int32_t var;
    std::string text;
    fmtinfo f;
    bool good;
    if (!one_of(argc, "ov_varformat()", &var, &text))
        return;
    if (argc == 1)
        return ov_text(argc, _fmtlist[var - 1]);
    if (!is_format(bi_arg(argc, 2), &f, &good))
        return;
    if (!good || f.width < 1) {
        m_xrc = 3302;
        return;
    }
    if (is_strfmt(f) != ov_isstring(var)) {
        m_xrc = 3250;
        return;
    }
    ov_end end;
    if (!end)
        return;
    strcut(_fmtlist[var - 1], sizeof _fmtlist[0], text.c_str());
    s_updata = upFormat = true;
    end.done(argc);
}

void biov_varlabel(int32_t argc)
{
    int32_t var;
    std::string text;
    if (!one_of(argc, "ov_varlabel()", &var, &text))
        return;
    if (argc == 1) {
        char label[varlablen + 1];
        getvarlab(var, label);
        return ov_text(argc, label);
    }
    ov_end end;
    if (!end || ov_failed(putvarlab(var, text.c_str())))
        return;
    s_updata = true;
    end.done(argc);
}

void biov_varvaluelabel(int32_t argc)
{
    int32_t var;
    std::string text;
    if (!one_of(argc, "ov_varvaluelabel()", &var, &text))
        return;
    if (argc == 1)
        return ov_text(argc, _lbllist[var - 1]);
    ov_end end;
    if (!end || (!text.empty() && ov_failed(chksinglename(text.c_str(), false))))
        return;
    if (!text.empty() && ov_isstring(var)) {
        ov_failed(error(181));
        return;
    }
    strcut(_lbllist[var - 1], sizeof _lbllist[0], text.c_str());
    s_updata = upValLabel = true;
    end.done(argc);
}

void biov_tempname(int32_t argc)
{
    temporaries(argc, "ov_tempname()", false);
}
void biov_tempfilename(int32_t argc)
{
    temporaries(argc, "ov_tempfilename()", true);
}

void biov_isfmt(int32_t argc)
{
    m_xeqerrid = "ov_isfmt()";
    fmtinfo f;
    bool good;
    if (is_format(m_arg(0), &f, &good))
        ov_real(argc, good);
}
void biov_isnumfmt(int32_t argc)
{
    m_xeqerrid = "ov_isnumfmt()";
    fmtinfo f;
    bool good;
    if (is_format(m_arg(0), &f, &good))
        ov_real(argc, good && !is_strfmt(f));
}
void biov_isstrfmt(int32_t argc)
{
    m_xeqerrid = "ov_isstrfmt()";
    fmtinfo f;
    bool good;
    if (is_format(m_arg(0), &f, &good))
        ov_real(argc, good && is_strfmt(f));
}
void biov_isname(int32_t argc)
{
    m_xeqerrid = "ov_isname()";
    std::string text;
    if (ov_string(m_arg(0), &text))
        ov_real(argc, !chksinglename(text.c_str(), true) && !chkreskeywrds_quietly(text.c_str()));
}

void bi_ov_varlist(int32_t argc)
{
    ov_list<int32_t> vars;
    int32_t rc;
    if (!read_list(argc, "_ov_varlist()", &vars, &rc))
        return;
    std::vector<std::string> names;
    for (int64_t k = 0; k < vars.n; k++)
        names.emplace_back(_varlist[vars[k] - 1]);
    give(argc, m_arg(1), rc ? nullptr : row_of(names), rc);
}

void bi_ov_ivarlist(int32_t argc)
{
    ov_list<int32_t> vars;
    int32_t rc;
    if (!read_list(argc, "_ov_ivarlist()", &vars, &rc))
        return;
    matobj *r = rc ? nullptr : m_mktmat(MO_REAL, 1, int32_t(vars.n));
    for (int64_t k = 0; r && k < vars.n; k++)
        mo_re(r)[k] = vars[k];
    give(argc, m_arg(1), r, rc);
}

void bi_ov_unab(int32_t argc)
{
    ov_list<int32_t> vars;
    int32_t rc;
    if (!read_list(argc, "_ov_unab()", &vars, &rc))
        return;
    std::string all;
    for (int64_t k = 0; k < vars.n; k++)
        all += (k ? " " : "") + std::string(_varlist[vars[k] - 1]);
    give(argc, m_arg(1), rc ? nullptr : m_mktstr(all.data(), int64_t(all.size())), rc);
}
