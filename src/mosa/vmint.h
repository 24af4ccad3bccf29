// mosa/vmint.h - what the files of the machine share and nobody else needs.
//
// Handlers of instructions, the cache of scalar temporaries, and the small tests that every
// operator begins with.
#pragma once
#include "core/missing.h"
#include "core/state.h"
#include "mosa/vm.h"

// One declaration for each handler named in ops.def.
void opand(), opee(), opge(), ople(), opgt(), oplt(), opne(), opnot(), opmult(), oprsubscr();
void oppower(), oprstosmat(), opcall(), opisrvec(), opiscvec(), opisvec(), opstop();
void opplus(), opelim(), opfind(), opargcrange(), opsub(), opalc(), opldstr();
void oplist2(), opldvoid(), opor(), oprstosmatpop(), opbuiltin(), opisfcn(), opaddc();
void opcor(), opcand(), opcsub(), opcmult(), opcdiv(), opcee(), opcge(), opcle(), opclt();
void opcgt(), opcne(), opcadd(), opneg(), optrans(), opdiv(), opaddr(), opisreal(), opisstr();
void opcpower(), opiscx(), opldimag(), opisnumer();
void opdmult(), oprowto(), opcolto(), opisvoid(), oplsubscr(), oplstosmat2();
void oplsubscr1(), oplstosmat1(), oplstosmat2pop(), oplstosmat1pop(), opderef(), opref();
void opldnull(), oprstosexp(), oplstosexp2(), oplstosexp1(), opsstomat(), opcallind();
void opextern(), opversion(), opolc(), opfindf(), opdrill(), opldmatd(), opldmatdd();
void oppreinc(), oppredec(), oppostinc(), oppostdec(), opcastp(), opolc_stcs(), opldstatic();
void opcallmfcn(), opcallvfcn(), opfindf2(), opcastcls(), opcallvfcn_ptr();

// ---- scalars
// A real 1 by 1 array, in two comparisons. Functions never pass: their code is longer.
inline bool is_rs(const matobj *m)
{
    uint64_t shape;
    uint32_t kind;
    memcpy(&shape, &m->rows, sizeof shape);
    memcpy(&kind, &m->eltype, sizeof kind);
    return shape == 0x100000001u && kind == 0x01000000u;
}
static_assert(offsetof(matobj, cols) == offsetof(matobj, rows) + 4);
static_assert(offsetof(matobj, view) == offsetof(matobj, eltype) + 2);
static_assert(offsetof(matobj, status) == offsetof(matobj, eltype) + 3);

// Writes type, view and status in one piece, as is_rs reads them: a read that spans several
// fresh writes would have to wait for all of them.
inline void rs_kind(matobj *m, uint32_t status)
{
    uint32_t kind = status << 24;
    memcpy(&m->eltype, &kind, sizeof kind);
}

// Scalar temporaries that were dropped wait here whole, record and block, counted as free.
inline constexpr int32_t rs_max = 64;
extern matobj *rs_free[rs_max];
extern int32_t rs_nfree;
void rs_flush(); // gives them back to the pools

// A real scalar temporary with links 0; null with m_xrc set.
inline matobj *rs_new(double z)
{
    if (rs_nfree == 0)
        return m_mktsmatsto(z);
    matobj *m = rs_free[--rs_nfree];
    rs_kind(m, 1);
    m->links = 0;
    m->level = m_level;
    *mo_re(m) = z;
    return m;
}
// One link of a real scalar goes.
inline void rs_unlink(matobj *m)
{
    if (--m->links >= 1)
        return;
    if (!m->info && rs_nfree < rs_max) {
        rs_kind(m, 0);
        rs_free[rs_nfree++] = m;
        return;
    }
    mo_free(m);
}
// m_drop, with the short way for scalars.
inline void drop_top()
{
    matobj *m = *m_stak--;
    if (is_rs(m))
        rs_unlink(m);
    else
        mo_unlink(m);
}
// What arithmetic stores: a number in range, or missing.
inline double z_fix(double z)
{
    return z < misval && z > -__builtin_inf() ? z : misval;
}
inline double z_add(double a, double b)
{
    return a < misval && b < misval ? z_fix(a + b) : misval;
}
inline double z_sub(double a, double b)
{
    return a < misval && b < misval ? z_fix(a - b) : misval;
}
inline double z_mul(double a, double b)
{
    return a < misval && b < misval ? z_fix(a * b) : misval;
}
inline double z_div(double a, double b)
{
    return a < misval && b < misval ? z_fix(a / b) : misval;
}
double z_pow(double a, double b); // missing where the result is not real
// The two real scalars on top give way to a real scalar.
void rs_result2(double z);

// ---- tests of operands
// True with 3102 in m_xrc when it is a function.
inline bool no_mat(const matobj *m)
{
    if (!mo_isfcn(m))
        return false;
    m_xrc = 3102;
    return true;
}
inline bool is_num(const matobj *m)
{
    return m->eltype == MO_REAL || m->eltype == MO_COMPLEX;
}
inline void fail(int32_t code)
{
    m_xrc = code;
}
// Slot fromtop made an array if it is a view (a new temporary in its place) after functions
// were refused. True on failure.
[[nodiscard]] bool need_array(int32_t fromtop);
// Slot fromtop made complex: a new temporary in its place. True on failure.
[[nodiscard]] bool make_complex(int32_t fromtop);
// The top n slots give way to a new result; null (failure) leaves them.
void put_result(int32_t n, matobj *result);
// The break of long loops: true with 1 in m_xrc.
bool row_break();
// The same, looked at for one element in some thousand.
inline bool el_break(int64_t k)
{
    return (k & 4095) == 0 && row_break();
}
// Truth of a 1 by 1: 0 or 1, or -1 with 3250 or 3204 in m_xrc.
int32_t truth_of(const matobj *m);
const char *tmp_name(const matobj *m); // its name, or "<tmp>"
const char *fcn_name(const matobj *f); // "name" or "class::name", in a static buffer

// ---- the parts of calls
// A member function of a class or its parents; null after its words.
matobj *findloadfcn(matobj *definition, const char *member, bool isvirtual);
