// mosa/vm.h - the machine that runs code images.
//
// One stack of 65,536 pointers holds arguments, locals and temporaries; a frame is a base into
// it. m_stak is the address of the top slot. No slot is ever null: pushing raises links,
// dropping lowers them. Handlers take their operands behind m_pc, which they leave on the last
// word they consumed; a failure sets m_xrc and returns with the operands in place, and the
// loop unwinds.
//
// m_xrc: 0; 1 break; 2 reported already; 10000 return; 10001 own words printed; else a code.
#pragma once
#include "mosa/image.h"
#include "mosa/values.h"
#include <cstdint>

inline constexpr int32_t m_stakslots = 65536;

struct m_machine { // saved and restored around every call as one block
    int32_t *pc;
    matobj *curfcn;
    matobj **frame;
    int32_t argc;
    int32_t level;
    int32_t line; // source line, 0 unknown
    int32_t version, callerversion;
    int32_t moreflag, moresave;
    int32_t inclass;
};
extern m_machine m_vm; // m_vm.level is m_level's twin: both are set by m_xeq
extern matobj **m_stak, **m_stakbase, **m_staktop;
extern int32_t *m_ops; // base of the running image
extern int32_t m_xrc, m_xrc_first;
extern const char *m_xeqerrid; // operator or built-in named in the traceback, or null
extern int32_t m_condflag;     // truth of the last comparison
extern matobj *m_rt;           // class definition in whose member code runs, or null
extern int32_t mosa_state;     // 1 commands, 2 compiling, 3 running, -1 otherwise
extern bool m_debug;           // tracebacks with word offsets
extern int64_t m_opcount;      // instructions carried out by handlers, not by the loop itself

[[nodiscard]] int32_t mosainit();  // at start-up: 0, or 9801
[[nodiscard]] int32_t mosastakinit(int32_t on); // 0, or 9801
// Runs a function whose argc arguments are on the stack; the result replaces them.
void m_xeq(matobj *fcn, int32_t argc);
// Calls any callable (function, struct or class definition) as opcode 25 does, from native code:
// the argc arguments on the stack give way to one result; on a failure m_xrc is set, its line
// of the traceback is printed, and there is no result (a frame's arguments are gone).
void m_callfcn(matobj *fcn, int32_t argc);
// Runs "<istmt%d>". 0, 1 for a break, else the first code. Words are printed.
int32_t ixeq();
const char *name_istmt(); // "<istmt%d>" of the present depth
// Too little of the native stack is left to go deeper; beyond allows so many bytes more.
bool m_nativefull(uint64_t beyond = 0);
void m_newstatement();    // links cached so far become stale
extern void (*m_autoclose)(); // closes what a statement left open; null when nothing does
void m_rtfidx_autoclosexeq(); // what it is once a file was opened

// ---- errors
[[gnu::format(printf, 2, 3)]] void m_custom_xeqerrf(int32_t code, const char *fmt, ...);
void m_custom_xeqerr(int32_t code, const char *text);
void m_xeqerrstd();
const char *m_rctext(int32_t code);
void intr_reset();

// ---- the stack, for handlers and built-ins
inline matobj *m_arg(int32_t fromtop)
{
    return m_stak[-fromtop];
}
// Pushes with links raised; 3998 when full (the object stays for the sweep).
inline void m_push(matobj *m)
{
    if (m_stak + 1 >= m_staktop) {
        m_xrc = 3998;
        return;
    }
    m->links++;
    *++m_stak = m;
}
inline void m_drop()
{
    mo_unlink(*m_stak--);
}
// An operand that may be overwritten: an array that only its stack slot holds.
inline bool m_isfree(const matobj *m)
{
    return m->links == 1 && m->view == 0;
}
void pushdbl(double z);
void pushint(int32_t i);
void pushhint(int32_t i); // half-width: an int16 value
void pushstr(const char *text);
void pushstrn(const char *bytes, int64_t n);
void pushvoid();
void ppp(matobj *result);  // binary operator's end: the result may be an operand
void qppp(matobj *result); // the result is new
void popoff(int32_t n);    // drops n, clears m_xeqerrid
// A built-in's end: drops argc arguments and pushes the result, which may be one of them.
void m_result(int32_t argc, matobj *result);
const char *m_xeqldstr(char *buffer, size_t size); // inline string at m_vm.pc + 1

// ---- functions
// In memory or loaded (m_autoload hook); null when there is none. No words.
matobj *emo_find(const char *cls, const char *name, const char *subname);
extern matobj *(*m_autoload)(const char *cls, const char *name); // null when nothing loads

// ---- kernels that built-ins share
enum m_colonclass : int32_t {
    CC_NONE,
    CC_SAME,
    CC_BROW,
    CC_BCOL,
    CC_AROW,
    CC_ACOL,
    CC_BONE,
    CC_AONE
};
m_colonclass m_colonshape(const matobj *a, const matobj *b, int32_t *rows, int32_t *cols);
[[nodiscard]] matobj *m_transpose(const matobj *m); // conjugates
// c = a * b for real arrays, missing told apart: any missing in a row or column gives missing.
void multrc_ra_ra(double *c, const double *a, const double *b, int64_t n, int64_t k, int64_t m);
bool matricesequal(const matobj *a, const matobj *b);
// A real or complex element of an array or view; imaginary part 0 for reals.
double m_el(const matobj *m, int64_t i, int64_t j);
