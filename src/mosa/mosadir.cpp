// The commands about what the matrix language holds: describe, drop, clear, rename, which,
// memory. In the sanitized build `mosa describe NAME(), code` lists the instructions too.
#include "core/rc.h"
#include "data/variables.h"
#include "interp/interp.h"
#include "interp/messages.h"
#include "interp/tokens.h"
#include "mosa/builtins.h"
#include "mosa/classdef.h"
#include "mosa/compiler.h"
#include "mosa/mlib.h"
#include "mosa/mtypes.h"
#include "mosa/views.h"
#include "output/fmt.h"
#include "output/print.h"
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

int32_t mosa_clear(int32_t), mosa_describe(int32_t), mosa_drop(int32_t), mosa_memory(int32_t),
    mosa_rename(int32_t), mosa_which(int32_t);

namespace
{

// "struct scalar", "real matrix", "function returning ..." of an object.
std::string type_text(const matobj *m)
{
    if (!mo_isfcn(m)) {
        std::string shape = mo_is1by1(m)   ? "scalar"
                            : m->cols == 1 ? "colvector"
                            : m->rows == 1 ? "rowvector"
                                           : "matrix";
        return std::string(mateltypestr(m->eltype)) + " " + shape;
    }
    if (m->cols == MT_STRUCTDEF || m->cols == MT_CLASSDEF)
        return readableeltype(m->cols);
    if (m->eltype == OT_VOID)
        return "void";
    return std::string(readableeltype(m->cols)) + " " + readableorgtype(m->eltype);
}

std::string full_name(const matobj *m)
{
    std::string s = mo_name(m);
    if (mo_isfcn(m)) {
        if (*m->info->subname)
            s += std::string("::") + m->info->subname;
        return s + "()";
    }
    if (!mo_is1by1(m))
        s += "[" + std::to_string(m->rows) + "," + std::to_string(m->cols) + "]";
    return s;
}

bool shown(const matobj *m)
{
    // Functions of a program file are nobody else's: they come and go with their program.
    if (mo_isfcn(m))
        return *mo_name(m) && *mo_name(m) != '<' && !m->info->inclass;
    return m_isvisible(m);
}

void collect(std::vector<matobj *> *list)
{
    for (matobj *f = mo_nextfcn(nullptr); f; f = mo_nextfcn(f))
        if (shown(f))
            list->push_back(f);
    for (matobj *m = mo_nextmat(nullptr); m; m = mo_nextmat(m))
        if (shown(m))
            list->push_back(m);
}

matobj *first_shown(matobj *(*next)(matobj *))
{
    matobj *m = next(nullptr);
    while (m && !shown(m))
        m = next(m);
    return m;
}

bool still_there(const matobj *object)
{
    for (matobj *(*next)(matobj *) : {mo_nextmat, mo_nextfcn})
        for (matobj *m = next(nullptr); m; m = next(m))
            if (m == object)
                return true;
    return false;
}

// With nothing running and no name left, what is still there points at itself in circles (but
// for statics of classes that program files keep). Emptying the pointers lets it go.
void open_circles()
{
    for (matobj *f = mo_nextfcn(nullptr); f; f = mo_nextfcn(f))
        if (f->info->inclass)
            return;
    for (matobj *m = mo_nextmat(nullptr); m;) {
        bool full = false;
        for (int64_t k = 0; m->eltype == MO_POINTER && !m->view && k < mo_count(m); k++)
            full |= mo_pel(m)[k] != nullptr;
        if (!full) {
            m = mo_nextmat(m);
            continue;
        }
        m->links++;
        mo_subptrfree(m);
        mo_unlink(m);
        m = mo_nextmat(nullptr);
    }
}

void list_line(const matobj *m)
{
    spout21f("%12lld   %-27s %s\n", static_cast<long long>(m_objsize(m)), type_text(m).c_str(),
             full_name(m).c_str());
}

const char *rest_of_line()
{
    const char *p = ti_wheretok(tokinfo);
    while (*p == ' ')
        p++;
    return p;
}

} // namespace

int32_t mosa_describe(int32_t)
{
    std::vector<matobj *> list;
    std::string what = rest_of_line();
    if (what.compare(0, 6, "using ") == 0)
        return m_describe_library(what.substr(6));
#ifdef OVATA_DEV
    bool code = false;
    if (size_t comma = what.find(", code"); comma != what.npos) {
        code = true;
        what.resize(comma);
    }
#endif
    if (!what.empty()) {
        m_namelist names{};
        int32_t rc = mparseinit(&names);
        if (!rc)
            rc = mparse(&names, what.c_str(), MP_MATRICES | MP_FUNCTIONS);
        if (!rc)
            list.assign(names.obj, names.obj + names.n);
        mparsefree(&names);
        if (rc)
            return rc;
    } else
        collect(&list);
    std::stable_sort(list.begin(), list.end(), [](const matobj *a, const matobj *b) {
        return mo_isfcn(a) != mo_isfcn(b) ? mo_isfcn(a) : full_name(a) < full_name(b);
    });
    outlev_keep level(0);
    spoutsml("\n{txt}     # bytes   type                        name and extent\n{hline 72}\n");
    for (const matobj *m : list) {
        if (stopflag)
            return RC_BREAK;
        list_line(m);
#ifdef OVATA_DEV
        if (code && mo_isfcn(m) && m->cols >= 0)
            spout21(m_disasm(mo_code(m), m->rows).c_str());
#endif
    }
    spoutsml("{txt}{hline 72}\n");
    return 0;
}

int32_t mosa_drop(int32_t)
{
    m_namelist names{};
    int32_t rc = mparseinit(&names);
    if (!rc)
        rc = mparse(&names, rest_of_line(), MP_MATRICES | MP_FUNCTIONS);
    for (int32_t i = 0; !rc && i < names.n; i++)
        if (still_there(names.obj[i])) // named twice, or taken along by a destructor
            m_rmobject(names.obj[i]);
    mparsefree(&names);
    m_newstatement();
    return rc;
}

int32_t mosa_clear(int32_t)
{
    if (*rest_of_line())
        return errout(RC_SYNTAX, "invalid syntax\n");
    // Matrices first: a class instance that goes still needs its definition and destroy(). What
    // destroy() does may take other objects along, so each walk begins anew.
    while (matobj *m = first_shown(mo_nextmat))
        m_rmobject(m);
    while (matobj *f = first_shown(mo_nextfcn))
        m_rmobject(f);
    m_newstatement();
    if (!mosa_xeq_depth) {
        open_circles();
        mosa_has_any_memory();
    }
    return 0;
}

// mosa rename OLD NEW, functions with their parentheses
int32_t mosa_rename(int32_t)
{
    std::string from = ti_gettok(tokinfo, prsestd);
    bool fcn = ti_peektok_chr(tokinfo) == '(';
    if (fcn) {
        ti_gettok(tokinfo, prsestd);
        if (*ti_gettok(tokinfo, prsestd) != ')')
            return errout(RC_SYNTAX, "invalid syntax\n");
    }
    std::string to = ti_gettok(tokinfo, prsestd);
    if (fcn && ti_peektok_chr(tokinfo) == '(') {
        ti_gettok(tokinfo, prsestd);
        ti_gettok(tokinfo, prsestd);
    }
    if (from.empty() || to.empty() || *ti_gettok(tokinfo, prsestd) || to.size() > 32)
        return errout(RC_SYNTAX, "invalid syntax\n");
    if (int32_t rc = chkname(to.c_str(), false))
        return rc;
    matobj *m = fcn ? mo_findfcn("", from.c_str(), "") : findlvl0mat(from.c_str());
    if (!m)
        return errout(RC_NOTFOUND, "%s%s not found\n", from.c_str(), fcn ? "()" : "");
    if (fcn ? mo_findfcn("", to.c_str(), "") != nullptr : findlvl0mat(to.c_str()) != nullptr)
        return errout(RC_EXISTS, "%s%s already exists\n", to.c_str(), fcn ? "()" : "");
    if (fcn && ismosabuiltin(to.c_str()))
        return errout(RC_EXISTS, "%s() is built-in\n", to.c_str());
    m_newstatement();
    if (fcn)
        mo_renamefcn(m, to.c_str());
    else if (mo_renamemat(m, to.c_str()))
        return RC_NOMEM;
    return 0;
}

// mosa which f(), mosa which c::f(), brackets or not
int32_t mosa_which(int32_t)
{
    std::string name = rest_of_line(), cls;
    while (!name.empty() && strchr(" ()", name.back()))
        name.pop_back();
    std::string shown_name = name;
    if (size_t colons = name.find("::"); colons != name.npos) {
        cls = name.substr(0, colons);
        name.erase(0, colons + 2);
    }
    if (chkname(name.c_str(), true) || (!cls.empty() && chkname(cls.c_str(), true)))
        return errout(RC_SYNTAX, "invalid syntax\n");
    std::string where;
    const matobj *f =
        cls.empty() ? mo_findfcn("", name.c_str(), "") : mo_findfcn("", cls.c_str(), name.c_str());
    if (cls.empty() && ismosabuiltin(name.c_str()))
        where = "built-in";
    else if (f && !f->view)
        where = "in memory";
    else if (!m_autosearch(cls.c_str(), name.c_str(), &where) && f)
        where = "loaded from a library";
    if (where.empty())
        return errout(RC_NOTFOUND, "function %s() not found\n", shown_name.c_str());
    spout21f("  %s():  %s\n", shown_name.c_str(), where.c_str());
    return 0;
}

int32_t mosa_memory(int32_t)
{
    m_sums s = m_getsum();
    const struct {
        const char *what;
        int64_t n, bytes;
    } rows[] = {{"functions", s.nfcn, s.fcn},
                {"functions, from libraries", s.nauto, s.autos},
                {"functions of program files", s.nclass, s.inclass},
                {"matrices", s.nmat, s.mat}};
    int64_t n = 0, bytes = 0;
    outlev_keep level(0);
    spoutsml("\n{txt}                                    #        # bytes\n{hline 51}\n");
    for (const auto &r : rows) {
        spout21f("%-27s %9lld %13lld\n", r.what, static_cast<long long>(r.n),
                 static_cast<long long>(r.bytes));
        n += r.n;
        bytes += r.bytes;
    }
    int64_t overhead = n * mo_overhead;
    spout21f("%-27s %9s %13lld\n", "overhead", "", static_cast<long long>(overhead));
    spoutsml("{txt}{hline 51}\n");
    spout21f("%-27s %9lld %13lld\n", "total", static_cast<long long>(n),
             static_cast<long long>(bytes + overhead));
    return 0;
}
