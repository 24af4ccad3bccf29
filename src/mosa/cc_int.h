// mosa/cc_int.h - what the files of the compiler share.
//
//   cc_scan    text to tokens; lookahead; token checks
//   cc_emit    code words, fixups, tags, literals
//   cc_syms    the symbols of one function, notes about them
//   cc_types   type syntax, type rules, the words of a mismatch
//   cc_expr    token lists: reading, nesting, postponed increments
//   cc_split   splitting a list at its weakest operator; operators, primaries, assignment
//   cc_call    calls, members, casts and addresses
//   cc_stmt    statements
//   cc_func    whole programs: headers, arguments, prologue, storing
//   cc_struct, cc_class   definitions and looking into them
//   cc_opt     the optimiser
//
// An expression pushes one value; an argument list pushes its values in order. How what is not
// an operator compiles:
//
//   x[i,j]         x, i, j, 91      x[i]  x, i, 93      x[|r|]  x, r, 22
//   x[i,j] = e     e, i, j, 92 slot; 94 and 24 likewise
//   LV[i,j] = e    e, LV, i, j, 116; 117 and 115 likewise; LV = e is e, LV, 118
//   a.m            a, 140 row        rows from 0 in a struct, from 1 in a class
//   p->m           p, 112, 140 row
//   static m       42, 163 (class, member, number of the static variable, class stamp)
//   a.f(...)       a, arguments, 164 (class, member, n, class stamp, 1), n counting a; a static
//                  f goes without a: n counts the arguments, and 0 stands for 1
//   virtual        a, arguments, 165 (class, member, n, class stamp)
//   p->f(...)      of an unknown class: p, 112, arguments, 168 (member, n)
//   (*g)(...)      arguments, g, 112, 119 n
//   &f()           138 f, 113; a member function 166 class::f, 113
//   this           slot 0 of a member function that is not static
//
// In calls of members n counts everything that lies on the stack for them. The class told is
// the one that declares the member; the stamp is its definition's.
//
// Errors print their words and throw cc_abort, which only cc_compile catches.
#pragma once
#include "core/limits.h"
#include "core/state.h"
#include "mosa/compiler.h"
#include "mosa/image.h"
#include "mosa/mtypes.h"
#include "mosa/vm.h"
#include <cstddef>

struct cc_abort {
};
[[noreturn, gnu::format(printf, 1, 2)]] void cc_err(const char *fmt, ...); // words, then leaves
void *cc_alloc(size_t bytes); // scratch, zeroed, released when the compilation ends

// ---- tokens
enum cc_token : int32_t {
    T_EOL = 10,
    T_BAD = 129,
    T_NUM,
    T_NAME,
    T_STR,
    T_EQ,
    T_NE,
    T_LE,
    T_GE,
    T_INC,
    T_DEC,
    T_ANY,
    T_COLONSET,
    T_CEQ,
    T_CGT,
    T_CGE,
    T_CLT,
    T_CLE,
    T_CNOT,
    T_CNE,
    T_CDIV,
    T_CMUL,
    T_CADD,
    T_CSUB,
    T_COR,
    T_CAND,
    T_CPOW,
    T_IMAG,
    T_ROWTO,
    T_COLTO,
    T_LRANGE,
    T_RRANGE,
    T_MEMBER,
    T_ARROW,
    T_COMMENT = 216,
    T_ENDCOMMENT = 217,
    K_FIRST = 299,
#define MW(token, word) token,
#include "mosa/words.def"
#undef MW
    K_LAST,
};
static_assert(T_ARROW == 161);

extern int32_t m_tok;        // the token at hand
extern double m_toknum;      // of T_NUM and T_IMAG
extern char m_toktext[8704]; // of names, words and strings; the spelling of the rest
extern int32_t m_toklen;     // bytes of m_toktext
extern int32_t m_tokpos;     // where it begins in m_src
extern bool m_thisisword;    // "this" is a reserved word just now

struct m_tokstate {
    int32_t pos, prev;
};
int32_t m_gettok();  // fetches the next token into m_tok
int32_t m_nexttok(); // the one after it, without moving
int32_t m_nextnexttok();
void m_gettoksave(m_tokstate *s);
void m_gettokrestore(const m_tokstate *s);
bool m_nlokay();           // at the end of a line: goes on in the next; false if there is none
void m_skiplines();        // passes over ends of lines, demanding more text
void m_match(int32_t t);   // demands and passes a token
bool m_tokenis(int32_t t); // passes it when it is there
[[noreturn]] void m_nottoken(int32_t wanted); // "'...' found where ... expected"
[[noreturn]] void m_nottokentext(const char *wanted);
bool m_nameis(const char *word);   // the token is this name
const char *cc_tokword(int32_t t); // spelling of a token that has only one
inline bool cc_isword(int32_t t)
{
    return t > K_FIRST && t < K_LAST;
}

// ---- the function being built
inline constexpr int32_t m_maxpgmsize = macrolen / 4 + 8000;
struct cc_pgm {
    int32_t nargs, firstopt, pc;
    char classname[33], name[33];
    bool isclassmember, isnonstatic, isstatic, isvirtual;
    bool indecl, isfunc;
    int32_t result;
    int32_t *code;
    matobj *classdef; // of the member being built, linked while it is
    int32_t depth;    // open braces
    int32_t exittag;  // of return statements, -1 while there is none
    bool thisused;
};

enum : int8_t { SC_LOCAL = 0, SC_EXTERNAL = 1, SC_PARAM = 2 };
enum : int32_t { SK_VAR = 1, SK_FCN = 2 };
struct cc_sym {
    char name[33];
    int8_t cls, kind;
    int32_t type;
    bool symiscr; // may be created where it is not there
    bool declared, assigned, read, beforeset;
};
enum : int8_t { FX_ADR, FX_TAG, FX_DLIT, FX_SLIT };
struct cc_fix {
    int32_t word;
    int8_t kind;
};
struct cc_tag {
    int32_t at; // -1 not set yet
    char name[8];
};
struct cc_str {
    const char *text;
    int32_t len, word; // word of its count in the image
};
inline constexpr int32_t cc_maxsym = 400, cc_maxfix = 10000, cc_maxdlit = 2000, cc_maxslit = 499,
                         cc_maxtag = 500, cc_maxlist = 500, cc_maxtypes = 1000, cc_maxinc = 8;

// ---- token lists
struct cc_tk {
    int32_t tok;
    int32_t match; // of brackets: the other one
    int32_t len;
    double num;       // of numbers
    const char *text; // as typed, of every token
};
struct cc_list {
    int32_t n, ninc;
    bool assigned; // nothing to display
    bool alias;    // the value may be a variable itself
    cc_tk t[cc_maxlist + 8];
    struct {
        int32_t at, dir; // token of the name, 1 or -1
        int32_t slot;    // -1: not a variable of the frame
    } inc[cc_maxinc];
};

// Everything of one compilation.
struct cc_block {
    cc_pgm pgm;
    int32_t nsym, nfix, ndlit, nslit, ntag, ntype;
    cc_sym sym[cc_maxsym];
    cc_fix fix[cc_maxfix];
    double dlit[cc_maxdlit];
    cc_str slit[cc_maxslit];
    cc_tag tag[cc_maxtag];
    int32_t type[cc_maxtypes]; // the type stack
    cc_list list;
    mtyp_table types;
    int32_t breaktag, conttag; // of the innermost loop, -1 outside
    char *arena;               // texts of the present token list
    size_t arenaleft;
};
extern cc_block *m_cc;
#define m_pgm (m_cc->pgm)

// ---- emitting
void mop_add(int32_t word);
void mop_add(int32_t op, int32_t a);
void mop_add(int32_t op, int32_t a, int32_t b);
int32_t mop_add_paddr(int32_t op); // address to come: the word to fix
void mop_fix_paddr(int32_t word);  // it is here
void mop_add_saddr(int32_t op, int32_t address);
void mop_bringforward(int32_t to, int32_t begin); // at most 8 words
void mop_sto(const char *text);                   // words of text
void mop_add_str(const char *text);               // count and text
void mop_add_findf(const char *name);
void mop_add_longstr(const char *text, int32_t len); // push of a string literal
void mop_add_slit(const char *text);                 // a word that refers to a string literal
void mop_add_num(double z);                          // push of a number
void fu_refadr(int32_t word);
void fu_reftag(int32_t word, int32_t tag);
void fu_refdlit(int32_t word, double z);
void fu_refslit(int32_t word, const char *text, int32_t len);
int32_t fu_poolwords();         // of the literals behind pc words of code
void fu_reflit(int32_t *image); // lays the pools behind the code and resolves references
void fu_fixtags();
int32_t fu_crtag();
int32_t fu_find_or_cr_tag(const char *name);
void fu_settagadr(int32_t tag);
void mop_add_jump(int32_t tag); // opcode 1 to a tag
void cc_optimize();

// ---- symbols
inline constexpr int32_t ST_FIND = 0, ST_SET = 1, ST_READ = 2, ST_REF = 3;
int32_t st_add(const char *name, int32_t cls, int32_t kind, int32_t type); // declared
int32_t st_find(const char *name, int32_t kind);                           // -1
// mode: set, read, or handed over by reference, which is both.
int32_t st_findoradd(const char *name, int32_t kind, int32_t mode);
void st_mark(int32_t sym, int32_t mode);
void st_undeclared(); // settles undeclared symbols of a function
void st_notes();

// ---- types
int32_t ty(int32_t eltype, int32_t orgtype);
int32_t ty_ptr(int32_t orgtype, int32_t target);
int32_t ty_named(int32_t eltype, int32_t orgtype, const char *name);
int32_t ty_org(int32_t type, int32_t orgtype); // the same with another shape
inline const mtyp_entry &ty_of(int32_t type)
{
    return m_cc->types.e[type];
}
const char *ty_text(int32_t type, char *buffer); // 200 bytes
void ts_push(int32_t type);
int32_t ts_pop();
inline int32_t ts_top()
{
    return m_cc->type[m_cc->ntype - 1];
}
bool cc_istypeword(int32_t t);
int32_t match_type(bool inheader); // from the scanner; void only where it is a header
int32_t match_type_list(int32_t *at, int32_t end); // from the token list
void cc_binarytype(int32_t op, const char *label);
[[noreturn]] void cc_mismatch(const char *label, const char *found, const char *expected);
// A value of type from goes where type to is declared: refuses what cannot be, asserts what
// is not known (the value is on top of the stack).
void cc_settle(int32_t from, int32_t to, const char *label, bool emit);
bool cc_comesfrom(int32_t type, int32_t ancestor); // of two class types
void cc_assert(int32_t type); // assertions of a type, nothing for what may be anything
void cc_needs(int32_t eltype, const char *label); // the top of the type stack must be able to be

// ---- expressions
// Reads to the terminator (T_EOL: also ';' and '}', none of them passed; ')' and ';' are
// passed) and compiles. used: the value goes on to be tested or returned. False when nothing
// stands there.
bool cc_expr(int32_t terminator, bool used);
void cx(int32_t a, int32_t b, bool parens);
void cx_args(int32_t a, int32_t b, int32_t *n);
void cx_store(int32_t a, int32_t b);       // the value on top into the target
int32_t cx_topcomma(int32_t a, int32_t b); // first comma outside brackets, or b
void cx_call(int32_t a, int32_t open, int32_t close);
void cx_member(int32_t a, int32_t b);
bool cx_classvar(const char *name, bool store); // an unqualified member variable: pushed
void cx_cast(int32_t a, int32_t b);
void cx_address(int32_t a, int32_t b);
void cx_type_of_def(const char *name, int32_t nargs);
char *cc_savetext(const char *text, int32_t len);

// ---- statements and programs
void cc_stmt();
void cc_stmtend(); // a statement ends here
void cc_declare(int32_t cls);
void cc_function();
void cc_farglist();
void cc_program();
void cc_structdef();
void cc_classdef();
void cc_stofunc();
void cc_refuse_existing(const char *name, const char *subname);

// ---- definitions
inline constexpr int32_t ce_maxdepth = 500;
struct ce_member {
    matobj *def;  // class that declares it
    int32_t kind; // CR_VAR ...
    int32_t type;
    int32_t row; // of a variable in an instance; number of a static
    int32_t access, flags, vindex;
};
matobj *ce_finddef(const char *name, bool isclass); // loads; words and leaves when it is not one
bool ce_structlookup(const matobj *def, const char *name, int32_t *row, int32_t *type);
matobj *ce_classlookup(const char *name);
matobj *ce_parent(const matobj *def); // null without one
bool ce_classvarlookup(matobj *def, const char *name, ce_member *m);
bool ce_classfcnlookup(matobj *def, const char *name, ce_member *m);
void ce_access(const ce_member *m, const char *name); // leaves when it may not be used here
int32_t ce_stamp(const matobj *def);
const char *ce_name(const matobj *def);
int32_t ce_import(const int32_t *code, int32_t word, bool isclass);

// Images of definitions while they are laid out.
struct cc_image {
    int32_t n;
    int32_t w[m_maxpgmsize];
};
cc_image *ci_new();
int32_t ci_add(cc_image *im, int32_t word); // where it is
int32_t ci_text(cc_image *im, const char *text, bool isclass);
int32_t ci_type(cc_image *im, int32_t type, bool isclass);
void ci_store(const cc_image *im, const char *name, int32_t eltype);
