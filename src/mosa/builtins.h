// mosa/builtins.h - the functions that are part of the program.
//
// builtins.def has a row for each; opcode 55 carries its id, which never changes. A handler
// finds its arguments in the top argc slots, the last on top, and leaves one result in their
// place (m_result). It names itself in m_xeqerrid, tests its arguments in the order store type,
// view, type, shape, and on a failure sets m_xrc and returns with the stack as it was. A row
// without a handler answers 3996.
#pragma once
#include "mosa/mtypes.h"
#include "mosa/vm.h"

using m_bihandler = void (*)(int32_t argc);
struct m_birow {
    const char *name;
    int32_t id;
    int8_t eltype, orgtype; // of the result, compile-time numbers
    int32_t minargs, maxargs;
    m_bihandler handler;
};
extern const m_birow m_bitable[];
extern const int32_t m_nbuiltin;
inline constexpr int32_t m_maxbiid = 760;
extern m_bihandler m_bihandlers[m_maxbiid]; // by id
extern int32_t m_biargs[m_maxbiid][2];      // least and most arguments by id; most -1: no row

// Row index or -1, by the version in force: two names have older meanings.
int32_t m_findbuiltin(const char *name);
bool ismosabuiltin(const char *name);
void m_biinit();

// The display of a matrix as opcode 41 and display() print it, at the present level.
void mo_display(const matobj *m);
