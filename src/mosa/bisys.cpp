// What a function can ask of the machine: its arguments, errors, global objects by name.
#include "core/missing.h"
#include "core/state.h"
#include "expr/expr.h"
#include "expr/strfun.h"
#include "interp/messages.h"
#include "mosa/bi_int.h"
#include "mosa/bihandlers.h"
#include "stats/random.h"
#include "stats/variates.h"
#include <bit>
#include <cmath>
#include <string>
#include <vector>

namespace
{

void result_of(int32_t argc, double z)
{
    m_result(argc, m_mktsmatsto(z));
}
void result_void(int32_t argc)
{
    m_result(argc, m_mktmat(MO_REAL, 0, 0));
}

} // namespace

void biargs(int32_t argc)
{
    result_of(argc, m_vm.argc);
}
void bicallersversion(int32_t argc)
{
    result_of(argc, m_vm.callerversion / 100.0);
}
void biovataversion(int32_t argc)
{
    result_of(argc, ver_current);
}
void bifavorspeed(int32_t argc)
{
    result_of(argc, 1);
}
void bibyteorder(int32_t argc)
{
    result_of(argc, std::endian::native == std::endian::big ? 1 : 2);
}
void bimindouble(int32_t argc)
{
    result_of(argc, min_ovdouble);
}
void bimaxdouble(int32_t argc)
{
    result_of(argc, max_ovdouble);
}
void bismallestdouble(int32_t argc)
{
    result_of(argc, smallest_dndouble);
}

// The version in force, times 100; with an argument it is set.
void biovatasetversion(int32_t argc)
{
    m_xeqerrid = "ovatasetversion()";
    int32_t was = m_vm.version, v;
    if (argc) {
        if (!bi_int(m_arg(0), ver_lowest, ver_current, &v))
            return;
        m_vm.version = v;
    }
    result_of(argc, was);
}

void biepsilon(int32_t argc)
{
    m_xeqerrid = "epsilon()";
    const matobj *a = m_arg(0);
    if (!bi_isreal(a))
        return;
    matobj *r = m_mktmat(MO_REAL, a->rows, a->cols);
    if (!r)
        return;
    for (int64_t k = 0, n = mo_count(a); k < n; k++) {
        double z = std::fabs(a->view ? v_el1(a, k) : mo_re(a)[k]);
        mo_re(r)[k] = z >= misval ? misval
                      : z == 0    ? smallest_ovdouble
                                  : std::nextafter(z, misval) - z;
    }
    m_result(argc, r);
}

// c("name"): a system value, a number or a text.
void bic(int32_t argc)
{
    m_xeqerrid = "c()";
    const char *p;
    int32_t n;
    if (!bi_string(m_arg(0), &p, &n))
        return;
    std::string name(p, size_t(n));
    char text[macrolen + 1];
    double z = misval;
    int32_t kind = cfcn(name.c_str(), text, &z);
    if (!kind) {
        m_xrc = 3300;
        return;
    }
    m_result(argc, kind == 1 ? m_mktsmatsto(z) : m_mktstr(text, int64_t(strlen(text))));
}

// ---- errors and leaving

// Leaves every frame up to the statement, which then ends quietly.
void biexit(int32_t argc)
{
    m_xeqerrid = nullptr;
    int32_t rc = 0;
    if (argc && !bi_int(m_arg(0), 0, 2147483619, &rc))
        return;
    m_xrc = 10002;
    m_xrc_first = rc;
}

// error(rc): prints what the code means, goes on.
void bierror(int32_t argc)
{
    m_xeqerrid = "error()";
    int32_t rc;
    if (!bi_int(m_arg(0), 0, 2147483619, &rc))
        return;
    (void)!extended_error(rc);
    result_of(argc, rc);
}

// _error(rc), _error(text), _error(rc, text): fails with the code, 3498 for a text alone.
void bi_error(int32_t argc)
{
    constexpr int32_t rc_text = 3498;
    m_xeqerrid = nullptr;
    const matobj *first = bi_arg(argc, 1);
    int32_t rc = rc_text, n;
    const char *p = nullptr;
    bool textonly = argc == 1 && !mo_isfcn(first) && first->eltype == MO_STRING;
    if (!textonly) {
        double z;
        if (!bi_real(first, &z))
            return;
        if (!(z >= 1 && z <= zmaxlong) || (z >= 10000 && z <= 10002)) {
            m_xrc = 3300;
            return;
        }
        rc = int32_t(z);
    }
    if (argc == 1 && !textonly) {
        m_xrc = rc;
        return;
    }
    if (!bi_string(bi_arg(argc, argc), &p, &n))
        return;
    std::string text(p, size_t(n));
    m_custom_xeqerr(rc, text.c_str());
}

void bisetbreakintr(int32_t argc)
{
    m_xeqerrid = "setbreakintr()";
    double z;
    if (!bi_real(m_arg(0), &z))
        return;
    double was = stopflag_val != 0;
    stopflag_val = z != 0;
    altstopflag_val = z == 0;
    result_of(argc, was);
}
void biquerybreakintr(int32_t argc)
{
    result_of(argc, stopflag_val != 0);
}
void bibreakkey(int32_t argc)
{
    result_of(argc, stopflag || altstopflag);
}
void bibreakkeyreset(int32_t argc)
{
    intr_reset();
    result_void(argc);
}

// ---- global objects by name

namespace
{

bool global_name(const matobj *m, std::string *name)
{
    const char *p;
    int32_t n;
    if (!bi_string(m, &p, &n))
        return false;
    if (n < 1 || n > 32)
        return bi_fail(3300);
    name->assign(p, size_t(n));
    return true;
}

void result_pointer(int32_t argc, matobj *target)
{
    matobj *r = m_mktmat(MO_POINTER, 1, 1);
    if (!r)
        return;
    pelreplace(r, 0, target);
    m_result(argc, r);
}

} // namespace

void bifindexternal(int32_t argc)
{
    m_xeqerrid = "findexternal()";
    std::string name;
    if (global_name(m_arg(0), &name))
        result_pointer(argc, findglobalmat(name.c_str()));
}

// A new 0 by 0 global; NULL when there is one of the name.
void bicrexternal(int32_t argc)
{
    m_xeqerrid = "crexternal()";
    std::string name;
    if (!global_name(m_arg(0), &name))
        return;
    matobj *m = nullptr;
    if (!findglobalmat(name.c_str()) && !(m = m_mkglobalmat(name.c_str(), MO_REAL, 0, 0)))
        return;
    result_pointer(argc, m);
}

void birmexternal(int32_t argc)
{
    m_xeqerrid = "rmexternal()";
    std::string name;
    if (!global_name(m_arg(0), &name))
        return;
    m_rmglobalmat(name.c_str());
    result_void(argc);
}

void bivalofexternal(int32_t argc)
{
    m_xeqerrid = "valofexternal()";
    std::string name;
    if (!global_name(m_arg(0), &name))
        return;
    matobj *m = findglobalmat(name.c_str());
    m_result(argc, m ? m_dupmat(m) : m_mktmat(MO_REAL, 0, 0));
}

void binameexternal(int32_t argc)
{
    m_xeqerrid = "nameexternal()";
    const matobj *p = m_arg(0);
    if (!bi_isarray(p) || !bi_isscalar(p))
        return;
    if (p->eltype != MO_POINTER) {
        m_xrc = 3257;
        return;
    }
    const matobj *m = *mo_pel(p);
    const char *name = m && m_isglobal(m) ? mo_name(m) : "";
    m_result(argc, m_mktstr(name, int64_t(strlen(name))));
}

// Names of the globals that fit a pattern with * and ?.
void bidirexternal(int32_t argc)
{
    m_xeqerrid = "direxternal()";
    const char *p;
    int32_t n;
    if (!bi_string(m_arg(0), &p, &n))
        return;
    std::string pattern(p, size_t(n));
    std::vector<std::string> names;
    for (matobj *m = mo_nextmat(nullptr); m; m = mo_nextmat(m))
        if (m_isglobal(m) && str_match(mo_name(m), pattern.c_str()) != 0)
            names.push_back(mo_name(m));
    matobj *r = m_mktmat(MO_STRING, int32_t(names.size()), 1);
    for (size_t k = 0; r && k < names.size(); k++)
        if (selreplace(r, int64_t(k), names[k].data(), int64_t(names[k].size())))
            return;
    if (r)
        m_result(argc, r);
}

// ---- random numbers

// runiform(r, c)
static void uniforms(int32_t argc, const char *id)
{
    m_xeqerrid = id;
    int32_t rows, cols;
    if (!bi_int(m_arg(1), 0, 2147483646, &rows) || !bi_int(m_arg(0), 0, 2147483646, &cols))
        return;
    matobj *r = m_mktmat(MO_REAL, rows, cols);
    if (!r)
        return;
    runiform_(mo_re(r), mo_count(r), 1);
    m_result(argc, r);
}
void biruniform(int32_t argc)
{
    uniforms(argc, "runiform()");
}
void biuniform(int32_t argc)
{
    uniforms(argc, "uniform()");
}

// rseed(): the state as text; rseed(number or text) sets it.
static void seeded(int32_t argc, const char *id)
{
    m_xeqerrid = id;
    char text[42];
    if (!argc) {
        geturnseed(text);
        m_result(argc, m_mktstr(text, int64_t(strlen(text))));
        return;
    }
    const matobj *a = m_arg(0);
    if (!mo_isfcn(a) && a->eltype == MO_STRING) {
        const char *p;
        int32_t n;
        if (!bi_string(a, &p, &n))
            return;
        if (seturnseed(std::string(p, size_t(n)).c_str())) {
            m_xrc = 3300;
            return;
        }
    } else {
        int32_t seed;
        if (!bi_int(a, 0, 2147483647, &seed))
            return;
        seturnseed_i4(seed);
    }
    result_void(argc);
}
void birseed(int32_t argc)
{
    seeded(argc, "rseed()");
}
void biuniformseed(int32_t argc)
{
    seeded(argc, "uniformseed()");
}
