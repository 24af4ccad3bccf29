// mosa/compiler.h - from text to code images.
//
// One pass, no tree: statements emit code as they are parsed; an expression is read whole into
// a token list and compiled by splitting the list at its weakest operator. What declarations
// do not settle is settled at run time by assertions. Every error prints its words and leaves
// through one jump (a private exception caught in cc_compile); nothing half built is stored.
//
// Source lines. The text being compiled is m_src from m_srcpos on. When a statement needs more,
// m_nlokay asks m_getline for the next line, already macro-expanded, which replaces m_src.
#pragma once
#include "mosa/values.h"
#include <cstdint>

extern char m_src[8704];
extern int32_t m_srcpos;
extern bool m_mayreadcons; // more lines may be read
// The next line into m_src; false at the end of input. Set by who runs the block.
extern bool (*m_getline)();

void m_setline(const char *line);
bool m_lineended(); // nothing but blanks and comments is left of m_src

// Compiles one statement or definition from the text. 0: the statement "<istmt%d>" or a
// definition is stored; cc_wasstmt tells which. 1: nothing on the line, or an error, which was
// printed (cc_failed tells which). Afterwards m_srcpos stands behind what was compiled, on an
// error behind the whole line.
int32_t cc_compile();
extern bool cc_wasstmt, cc_failed;
extern int32_t cc_lineno; // of the block being read, for opcode 89 with set mosalnum on

void cc_freeistmt(const char *name);
void breakout(); // for the compiler's loops: leaves with "--Break--" when a stop is asked

// What is compiled is for an official library: the same text gives the same code at any time.
extern bool m_official;

// A function record filled with code; null after its words were printed.
[[nodiscard]] matobj *m_mkfcn(const char *cls, const char *name, const char *subname, int32_t words,
                              int32_t eltype, int32_t orgtype);

// Whether all functions that a class declares are defined, and the words about those that are
// not.
bool isclassdefcomplete(const matobj *definition);
void dispundefinedclsmbrfcn(const matobj *definition);

// Lists of names for commands such as mosa drop: "name", "name()", "cls::name()", patterns.
struct m_namelist {
    int32_t n;
    matobj **obj; // functions and matrices
};
enum : int32_t { MP_MATRICES = 1, MP_FUNCTIONS = 2 };
[[nodiscard]] int32_t mparseinit(m_namelist *list);
[[nodiscard]] int32_t mparse(m_namelist *list, const char *text, int32_t allow); // 0 or a code
void mparsefree(m_namelist *list);
