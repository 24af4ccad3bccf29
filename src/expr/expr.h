// expr/expr.h - expressions: text to a program of 16-bit words, and the machine that runs it.
//
//   text    x>2 & y==z[_n-1]
//   code    74 x 21 #2 8 74 y 76 21 #1 10 75 z 3 2      postfix, operands inline
//
// Compiled once for a command, run once for an observation. What cannot change meanwhile
// (literals, scalars, stored results, c(), dates) is folded into constants, so a compiled
// program is good only for the command that compiled it. Literal pools are shared by all
// expressions of one command.
//
// The loosest operator wins, rightmost first, and every row of the table is a level of its
// own (a+b is looser than a-b, * than /, == than >=, ...).
//
// Limits: 200 words, 250 entries on the type stack, 10 strings, 20 matrices, 5 sum() (130
// each); 50 numbers, 256 bytes of strings (130); names of 113 characters (198).
#pragma once
#include "interp/tokens.h"
#include <cstdint>

inline constexpr int32_t xq_ncode = 200, xq_nsum = 5;
inline constexpr int32_t xq_typestack = 250, xq_strings = 10, xq_mats = 20;
inline constexpr int32_t systak_n = 50, ssystak_n = 256;

struct xeqpgm {
    double sums[xq_nsum];   // running totals of sum()
    int16_t code[xq_ncode];
    int32_t ncode;          // index of the last word, -1 when empty
    int32_t nsum;           // index of the last sum in use, -1 when none
    int32_t obs1, obs2;     // range of the run
    int32_t nobss1, nobss2; // bounds a subscript may reach
    char *tokbeg, *tokend;  // the text in the command line
    uint8_t restype;        // 0 number, 1 string, 4 matrix
    uint8_t hasmatop;
    const char (*varlist)[33];  // names to resolve against while compiling
    int32_t nvars;
};
enum : uint8_t { XR_NUM = 0, XR_STR = 1, XR_MAT = 4 };
enum xq_wanted : int32_t { W_NUM = 0, W_STR = 1, W_ANY = 3, W_MAT = 4, W_NUMMAT = 5 };

extern double systak[systak_n];
extern int32_t nsystak;
extern char ssystak[ssystak_n];
extern int32_t nssystak;
extern bool compile_for_algebra_only;
// The pools, set aside while a nested command runs its own expressions, or with a parse that
// is replayed for each by group.
struct litpools {
    double num[systak_n];
    char str[ssystak_n];
    int32_t nnum, nstr;
};
void pools_save(litpools *p);
void pools_restore(const litpools *p);
void initialize_compexp_shared();  // empties the pools

// Takes an expression from the tokens and compiles it into pgm. With closebracket an
// unmatched ] ends it. With parseonly only its end is found. A null varlist means the
// dataset's names up to _i_Kvar. Prints its words; the token position is behind the text.
[[nodiscard]] int32_t ti_compexp(toktype *ti, xeqpgm *pgm, int32_t wanted, bool closebracket,
                                 bool parseonly, const char (*varlist)[33], int32_t nvars);
// The same for matrix expressions, from tokinfo. literal makes , and \ operators at once.
[[nodiscard]] int32_t compmatexp(xeqpgm *pgm, int32_t wanted, bool closebracket, bool parseonly,
                                 bool literal);
[[nodiscard]] int32_t compalgonly(toktype *ti, xeqpgm *pgm, int32_t wanted, bool closebracket,
                                  bool parseonly, const char (*varlist)[33], int32_t nvars);
// A date literal: kind as in d(), tc() and kin. 0, or 198 with words.
[[nodiscard]] int32_t dtranslate(char kind, const char *begin, const char *end, double *out);

struct parinfo_t;
// Runs a numeric program at an observation with pi's range. Never NaN, never infinite.
double pi_xeq(parinfo_t *pi, xeqpgm *pgm, int32_t obs);
double xeqforby(xeqpgm *pgm, int32_t obs);            // ranges as stored in pgm
// Many observations at once, for programs that read their own row only and leave no trace (no
// subscripts, no sum(), no random numbers): the values of obs to obs + n - 1, n at most
// xq_block, as pi_xeq gives them.
inline constexpr int32_t xq_block = 256;
bool xeq_can_block(const xeqpgm *pgm);
void xeq_block(parinfo_t *pi, xeqpgm *pgm, int32_t obs, int32_t n, double *out);
char *sxeq(xeqpgm *pgm, int32_t obs, char *buffer);   // string program, 246 bytes; buffer
// A matrix or numeric program: the matrix is left under name; a number goes to valueout.
[[nodiscard]] int32_t xeqmat_g(xeqpgm *pgm, const char *name, char namekind, double *valueout);
[[nodiscard]] int32_t xeqmat_mat(xeqpgm *pgm, const char *name, char namekind);

// What _by() and kin ask; by fills the hook, and without it they answer as outside by.
enum xq_byask : uint8_t { BQ_BY, BQ_LASTCALL, BQ_INDEX, BQ_N1, BQ_N2 };
extern double (*xeq_byquery)(xq_byask ask);

// The class system's value at a path, for cls() and scls(): str gets at most 244 bytes when it
// is not null, else num is set. 0, or a code with words. Null until the system is there.
extern int32_t (*xeq_classlook)(const char *path, double *num, char *str);

// For a caller with text at hand and no dataset in mind (macros, if of programs, options):
// compiles and runs at observation 1. num or str (246 bytes) is set by the result; isstr says
// which. The literal pools, parinfo and ti are as before on return.
[[nodiscard]] int32_t exp_text(const char *text, int32_t wanted, bool *isstr, double *num,
                               char *str);

// ---- the function table: one row a function, found by its exact name
enum : uint8_t { FA_NUM = 0, FA_STR = 1, FA_MAT = 2, FA_NONE = 9 };
struct fcnrow {
    const char *name;
    int16_t opcode;   // 0 ends the table
    uint8_t nargs;
    uint8_t argtype, restype;
    bool later;       // its routine is not built yet: refused when compiled, 133
};
extern const fcnrow fcntable[];
const fcnrow *fcn_find(const char *name);
extern const char *const fcn_byname[];  // the names handled one by one; ends with null
inline constexpr const char *fcn_later_words =
    "this function is not available in this version of Ovata\n";

// ---- system values
// 1 a number, 2 a string (500 bytes), 0 unknown.
int32_t cfcn(const char *name, char *stringout, double *numberout);
int32_t cfcnstr(const char *name, char *out);  // as text; 0 when unknown
int32_t creturn_list();                        // the listing under its headings
struct crow {
    const char *name;
    const char *heading;
    int32_t (*get)(char *s, double *z);  // 1 number, 2 string
};
extern const crow crows[];
// What stands above and c() shows; filled by interp.
struct creturn_above_t {
    const char *(*sysdir)(const char *word);
    const char *(*global)(const char *name);  // a global macro, or null
    const double *rmsgtime;
};
extern creturn_above_t creturn_above;
extern const int32_t ncrows;
