// expr/comp.h - what the files of the compiler share. For the compiler alone.
//
// A failure leaves through comp_fail, caught at the one entry in compile.cpp; nothing between
// owns anything. Its words are printed where it is seen.
#pragma once
#include "expr/expr.h"
#include "expr/opcodes.h"
#include <cstdint>

enum comptype : uint8_t { CT_NUM = 0, CT_STR = 1, CT_MAT = 2 };

struct compframe {
    xeqpgm *pgm;
    int32_t depth, nstr, nmat;
    int32_t nest;  // of spans within spans
    uint8_t type[xq_typestack];
};
extern compframe *cfr;

struct compflags {
    bool varsallowed;    // names may be variables
    bool matcontext;     // matrix operators may be used
    bool scalarcontext;  // names may be matrices though their operators may not
    bool matliteral;     // , and \ are operators
    bool missingnest;    // inside missing()
};
extern compflags cfl;
struct compflags_keep {
    compflags was = cfl;
    compflags_keep() = default;
    ~compflags_keep() { cfl = was; }
    compflags_keep(const compflags_keep &) = delete;
    compflags_keep &operator=(const compflags_keep &) = delete;
};

struct compfailure {
    int32_t rc;
};
[[noreturn]] void comp_fail(int32_t rc);    // the words are printed already
[[noreturn]] void comp_error(int32_t rc);   // prints the standard words of rc

struct span {
    const char *b, *e;
    int32_t len() const { return int32_t(e - b); }
};

void comp(span s);  // emits a program that leaves the value of s on its stack
void comp_subspan(span s);  // the same with , and \ back to their plain meaning
void comp_name(span s, const char *name);                      // a plain name
void comp_bracket(span s, const char *name, const char *open); // name[...]
void comp_call(span args, const char *name);
void comp_split(span s, const char *at, char op);  // a binary - or + at a place

// ---- output
void emit(int32_t word);
void emit_mat(int32_t word);  // a matrix operator
void push(comptype t);
inline comptype top() { return comptype(cfr->type[cfr->depth - 1]); }
comptype pop();
void popn(int32_t n);
void want_top(comptype t);  // 109 when the top is something else
void push_num(double z);
void push_str(const char *text, int64_t n);  // cut to what strings keep
int32_t strlit(const char *text, int64_t n); // offset in the pool

inline constexpr int32_t comp_maxname = 113;  // characters of a name, with its equation

// ---- scanning
const char *skip_quoted(const char *p, const char *e);
inline bool quote_at(const char *p, const char *e)
{
    return *p == '"' || (*p == '`' && p + 1 < e && p[1] == '"');
}
// The closer of the bracket at p, or null.
const char *closer_of(const char *p, const char *e);
const char *last_comma(span s);  // at depth zero, or null
void copy_name(span s, char *out, int32_t max);  // 198 when longer than max
bool opchar(char c);

// ---- names resolved by the parts
void comp_stored(int32_t kind, span arg);  // r(), return(), e(), s()
void comp_cvalue(span arg);
void comp_has_eprop(span arg);
void comp_variable(int32_t var);
void comp_term(const struct termname &t);
bool comp_findvar(const char *name, int32_t *var);  // 111 when ambiguous
