// The machine: entry, the loop with the commonest instructions, the way out, and statements.
#include "mosa/vm.h"
#include "core/mem.h"
#include "core/settings.h"
#include "core/state.h"
#include "mosa/mtypes.h"
#include "mosa/vmint.h"
#include "output/print.h"
#include <cstdio>
#include <sys/resource.h>

m_machine m_vm = {nullptr, nullptr, nullptr, 0, -1, 0, 0, 0, 0, 0, 0};
matobj **m_stak, **m_stakbase, **m_staktop;
int32_t *m_ops;
int32_t m_xrc, m_xrc_first, m_condflag;
const char *m_xeqerrid;
matobj *m_rt;
int32_t mosa_state = -1;
bool m_debug;
int64_t m_opcount;
void (*m_autoclose)();

// ---- the two stacks

// Calls nest on the native stack. What is left of it is known by address; the limit is raised
// so that a program may recurse until the machine's own stack is full.
static const char *native_base;
static uint64_t native_room = 4u << 20;

static void measure_native_stack(const char *here)
{
    constexpr rlim_t want = 96u << 20;
    constexpr uint64_t margin = 2u << 20;
    native_base = here;
    rlimit lim;
    if (getrlimit(RLIMIT_STACK, &lim))
        return;
    if (lim.rlim_cur < want) {
        rlimit more = lim;
        more.rlim_cur = lim.rlim_max < want ? lim.rlim_max : want;
        if (!setrlimit(RLIMIT_STACK, &more))
            lim = more;
    }
    uint64_t room = lim.rlim_cur < want ? lim.rlim_cur : want;
    native_room = room > 2 * margin ? room - margin : room / 2;
}

bool m_nativefull(uint64_t beyond)
{
    const char *here = static_cast<const char *>(__builtin_frame_address(0));
    return uint64_t(native_base - here) > native_room + beyond && here < native_base;
}

int32_t mosastakinit(int32_t on)
{
    if (!on) {
        rs_flush();
        safefree(m_stakbase);
        m_stakbase = m_stak = m_staktop = nullptr;
        return 0;
    }
    if (m_stakbase)
        return 0;
    m_stakbase = static_cast<matobj **>(safemalloc(sizeof(matobj *) * m_stakslots));
    if (!m_stakbase)
        return 9801;
    m_stak = m_stakbase - 1;
    m_staktop = m_stakbase + m_stakslots;
    measure_native_stack(static_cast<const char *>(__builtin_frame_address(0)));
    return 0;
}

// ---- the loop

// The top goes into a slot, whatever both are. True on failure.
static bool store_slow(matobj *dest)
{
    matobj *src = *m_stak;
    if (no_mat(dest) || no_mat(src))
        return true;
    if (dest == src && !src->view)
        return false;
    if (cpymat(dest, src, true)) {
        if (!m_xrc)
            m_xrc = 3900;
        return true;
    }
    return m_xrc != 0;
}

// ++ and -- of a real scalar variable.
static bool step_slow(matobj *m, double by)
{
    if (no_mat(m))
        return true;
    if (m->view)
        m_xrc = 3103;
    else if (m->eltype != MO_REAL)
        m_xrc = 3253;
    else if (!mo_is1by1(m))
        m_xrc = 3204;
    else
        *mo_re(m) = z_add(*mo_re(m), by);
    return m_xrc != 0;
}

static void assert_matrix()
{
    m_custom_xeqerrf(3102, "%s not a matrix", fcn_name(*m_stak));
}

static void assert_scalar(const matobj *m)
{
    if (mo_isfcn(m)) {
        if (m->eltype != OT_SCALAR)
            m_custom_xeqerrf(3204, "%s() does not return %s", fcn_name(m), "scalar");
    } else if (!mo_is1by1(m))
        m_custom_xeqerrf(3204, "%s[%d,%d] found where %s required", tmp_name(m), m->rows, m->cols,
                         "scalar");
}

// What the cases of the loop share: the state in locals goes out before anything is called
// that may look at the stack, and comes back afterwards.
#define OUT() (m_vm.pc = pc, m_stak = sp)
#define PUSH(object)                                                                               \
    {                                                                                              \
        matobj *pushed = (object);                                                                 \
        if (!pushed)                                                                               \
            return OUT(), void();                                                                  \
        if (sp + 1 >= limit) [[unlikely]] {                                                        \
            m_xrc = 3998;                                                                          \
            return OUT(), void();                                                                  \
        }                                                                                          \
        pushed->links++;                                                                           \
        *++sp = pushed;                                                                            \
    }
#define DROP()                                                                                     \
    {                                                                                              \
        matobj *dropped = *sp--;                                                                   \
        if (is_rs(dropped))                                                                        \
            rs_unlink(dropped);                                                                    \
        else if (--dropped->links < 1) {                                                           \
            OUT();                                                                                 \
            mo_free(dropped);                                                                      \
            if (m_xrc) [[unlikely]]                                                                \
                return;                                                                            \
        }                                                                                          \
    }
// The result of two real scalars in the place of both.
#define RESULT2(value)                                                                             \
    {                                                                                              \
        double result = (value);                                                                   \
        if (a->links == 1) {                                                                       \
            *mo_re(a) = result;                                                                    \
            rs_unlink(b);                                                                          \
            sp--;                                                                                  \
        } else if (b->links == 1) {                                                                \
            *mo_re(b) = result;                                                                    \
            rs_unlink(a);                                                                          \
            *--sp = b;                                                                             \
        } else {                                                                                   \
            matobj *r = rs_new(result);                                                            \
            if (!r)                                                                                \
                return OUT(), void();                                                              \
            r->links = 1;                                                                          \
            *--sp = r;                                                                             \
            rs_unlink(a);                                                                          \
            rs_unlink(b);                                                                          \
        }                                                                                          \
        pc++;                                                                                      \
    }
#define ARITHMETIC(op, function)                                                                   \
    case op: {                                                                                     \
        matobj *a = sp[-1], *b = *sp;                                                              \
        if (!is_rs(a) || !is_rs(b))                                                                \
            goto other;                                                                            \
        RESULT2(function(*mo_re(a), *mo_re(b)));                                                   \
        continue;                                                                                  \
    }
#define COMPARE(op, sign)                                                                          \
    case op: {                                                                                     \
        matobj *a = sp[-1], *b = *sp;                                                              \
        if (!is_rs(a) || !is_rs(b))                                                                \
            goto other;                                                                            \
        m_condflag = *mo_re(a) sign * mo_re(b);                                                    \
        RESULT2(m_condflag);                                                                       \
        continue;                                                                                  \
    }
#define GOTO(word)                                                                                 \
    {                                                                                              \
        if (stopflag) [[unlikely]] {                                                               \
            m_xrc = 1;                                                                             \
            return OUT(), void();                                                                  \
        }                                                                                          \
        pc = ops + (word);                                                                         \
    }

static inline double literal(const int32_t *ops, int32_t word)
{
    double z;
    memcpy(&z, ops + word, sizeof z);
    return z;
}

// Runs until m_xrc is set.
static void loop(int32_t *const ops, matobj **const fp)
{
    int32_t *pc = ops + 2;
    matobj **sp = m_stak;
    matobj **const limit = m_staktop;
    for (;;) {
        switch (*pc) {
        case 1: GOTO(pc[1]); continue;
        case 2:
            DROP();
            pc++;
            continue;
        case 3: m_xrc = 10000; return OUT(), void();
        case 4:
            if (m_vm.argc != pc[1]) [[unlikely]] {
                OUT();
                m_custom_xeqerrf(3001, "expected %d arguments but received %d", pc[1], m_vm.argc);
                return;
            }
            pc += 2;
            continue;
        case 5:
        case 6: {
            matobj *dest = fp[pc[1]], *src = *sp;
            if (is_rs(dest) && is_rs(src)) [[likely]] {
                *mo_re(dest) = *mo_re(src);
            } else {
                OUT();
                if (store_slow(dest))
                    return;
            }
            if (*pc == 5 && dest != src) {
                dest->links++;
                *sp = dest;
                OUT();
                mo_unlink(src);
                if (m_xrc) [[unlikely]]
                    return;
            } else if (*pc == 6)
                DROP();
            pc += 2;
            continue;
        }
        case 7:
        case 57:
            PUSH(fp[pc[1]]);
            pc += 2;
            continue;
        case 8:
        case 9: {
            matobj *m = fp[pc[1]];
            double by = *pc == 8 ? 1 : -1;
            if (is_rs(m)) [[likely]]
                *mo_re(m) = z_add(*mo_re(m), by);
            else if (OUT(), step_slow(m, by))
                return;
            pc += 2;
            continue;
        }
        case 10:
            DROP();
            if (m_condflag)
                pc += 2;
            else
                GOTO(pc[1]);
            continue;
        case 11:
            if (mo_isfcn(*sp)) [[unlikely]]
                return OUT(), assert_matrix();
            pc++;
            continue;
        case 12:
            if (!is_rs(*sp)) {
                OUT();
                assert_scalar(*sp);
                if (m_xrc)
                    return;
            }
            pc++;
            continue;
        case 28: {
            int32_t truth;
            if (is_rs(*sp)) [[likely]]
                truth = *mo_re(*sp) != 0;
            else if (OUT(), (truth = truth_of(*sp)) < 0)
                return;
            DROP();
            if (truth)
                pc += 2;
            else
                GOTO(pc[1]);
            continue;
        }
        case 31:
            PUSH(rs_new(literal(ops, pc[1])));
            pc += 2;
            continue;
        case 78:
            PUSH(*sp);
            pc++;
            continue;
        case 79:
        case 80:
        case 81:
            PUSH(rs_new(*pc == 79 ? 0 : *pc == 80 ? 1 : misval));
            pc++;
            continue;
        case 89:
            m_vm.line = pc[1];
            pc += 2;
            continue;
            ARITHMETIC(32, z_add)
            ARITHMETIC(36, z_sub)
            ARITHMETIC(21, z_mul)
            ARITHMETIC(73, z_div)
            COMPARE(14, ==)
            COMPARE(15, >=)
            COMPARE(16, <=)
            COMPARE(17, >)
            COMPARE(18, <)
            COMPARE(19, !=)
        default:
        other : {
            OUT();
            m_opcount++;
            auto handler = m_optable[*pc].handler;
            if (handler)
                handler();
            else
                m_xrc = 3997;
            if (m_xrc) [[unlikely]]
                return;
            pc = m_vm.pc + 1;
            sp = m_stak;
            continue;
        }
        }
    }
}

// ---- entry and exit

// The image is looked at once in its life; the mark stands beside the record's name.
static bool fit_to_run(matobj *f)
{
    dmrec *r = dm_rec(f);
    if (r->a == 1)
        return true;
    if (f->rows < 3) { // a record that never got its code
        m_xrc = 3995;
        return false;
    }
    const char *why = m_checkcode(mo_code(f), f->rows);
    if (!why && int64_t(f->rows) * 4 > f->alloc)
        why = "image cut short";
    if (!why) {
        r->a = 1;
        return true;
    }
    if (m_debug)
        spout21fat(3, "%s(): %s\n", fcn_name(f), why);
    m_xrc = 3997;
    return false;
}

static void release_to(matobj **floor)
{
    while (m_stak >= floor)
        drop_top();
}

// The value on top takes the place of the frame.
static void leave_with_value()
{
    m_xrc = 0;
    matobj *value = *m_stak--;
    release_to(m_vm.frame);
    *++m_stak = value;
    if (value->level == m_vm.level && m_vm.level > 0 && !mo_isfcn(value)) {
        safefree(value->info);
        value->info = nullptr;
        value->level--;
    }
}

void m_xeq(matobj *fcn, int32_t argc)
{
    m_vm.argc = argc;
    m_vm.frame = m_stak - argc + 1;
    m_level = ++m_vm.level;
    m_vm.curfcn = fcn;
    m_vm.pc = nullptr;
    if (fcn->info)
        fcn->info->stamp = m_sysclock;
    if (m_nativefull())
        m_xrc = 3998;
    else if (fit_to_run(fcn)) {
        m_ops = mo_code(fcn);
        m_vm.callerversion = m_vm.version;
        m_vm.version = m_ops[1];
        loop(m_ops, m_vm.frame);
    }
    if (m_xrc == 10000) {
        leave_with_value();
        return;
    }
    if (!m_xrc_first && m_xrc != 10002) // exit() brought its own
        m_xrc_first = m_xrc;
    m_xeqerrstd();
    release_to(m_vm.frame);
}

// ---- statements

const char *name_istmt()
{
    static char name[24];
    snprintf(name, sizeof name, "<istmt%d>", mosa_xeq_depth);
    return name;
}

void m_newstatement()
{
    if (m_sysclock >= 2147483646)
        m_resetclock();
    else
        m_sysclock++;
}

namespace
{
// What a statement run from within a statement must leave as it was.
struct machine_keep {
    m_machine vm = m_vm;
    matobj **top = m_stak;
    int32_t *ops = m_ops;
    int32_t xrc = m_xrc, first = m_xrc_first, cond = m_condflag, state = mosa_state,
            level = m_level;
    const char *id = m_xeqerrid;
    matobj *rt = m_rt;
    machine_keep() = default;
    machine_keep(const machine_keep &) = delete;
    machine_keep &operator=(const machine_keep &) = delete;
    ~machine_keep()
    {
        release_to(top + 1);
        m_vm = vm;
        m_ops = ops;
        m_xrc = xrc;
        m_xrc_first = first;
        m_condflag = cond;
        mosa_state = state;
        m_level = level;
        m_xeqerrid = id;
        m_rt = rt;
    }
};
} // namespace

static int32_t run_statement(matobj *f)
{
    m_vm = {};
    m_vm.version = vernum;
    m_vm.level = m_level = -1;
    m_xrc = m_xrc_first = 0;
    m_xeqerrid = nullptr;
    m_rt = nullptr;
    mosa_state = 3;
    mosa_xeq_depth++;
    m_xeq(f, 0);
    if (m_autoclose)
        m_autoclose();
    int32_t rc = m_xrc == 0 ? 0 : m_xrc == 1 ? 1 : m_xrc_first;
    m_xrc = 0;
    return rc < 0 ? -rc : rc;
}

int32_t ixeq()
{
    if (mosastakinit(1)) {
        spout21at(3, "insufficient memory for mosa system stack\n");
        return 9801;
    }
    matobj *f = mo_findfcn("", name_istmt(), "");
    if (!f)
        return 3499;
    m_newstatement();
    int32_t rc;
    {
        machine_keep keep;
        f->links++;
        rc = run_statement(f);
    }
    if (rc)
        m_freeunlinkedmats();
    mosa_xeq_depth--;
    f->links = 0;
    mo_freefcn(f);
    if (mosa_xeq_depth == 0) {
        rs_flush();
        m_dropoldfcns(); // here nothing holds the address of a function that is not linked
    }
    return rc;
}
