// varlist/terms.h - variable lists with operators: time series and factors.
//
//   text   i.g##c.x L(1/2).y                 what was typed
//   terms  i.g   c.x   i.g#c.x   L.y   L2.y        whose levels are not known yet
//   list   1b.g 2.g x 1b.g#co.x 2.g#c.x ...  columns: one a level, found over a sample
//
// Operators stand in front of a point, in any order and any case:
//   i  i2  i(2 3)  2            an indicator for each level, or for those listed
//   b2  bn  b(first last freq none #2 2)  the base: a level, or none; 1b is level 1 as the base
//   c   o  o2  o(2 3)           not an indicator; left out, as a whole or some of its levels
//   L F D S, with a number or a list of numbers in parentheses
// # makes the product of terms, ## the terms as well; a bare variable in a product is a factor.
// Parentheses and patterns take the operators in front of them to all they hold.
//
// The base is the one typed, else that of the characteristic _fv_base, else the lowest level.
// A product that another one of the list already spans at the base is marked as left out there.
//
// Levels are whole numbers from 0. Codes: 109 a string, 111 not found or no time variable, 5 not
// sorted by it, 452 values that are no levels, 6101 to 6104 (as 101) operators where the command
// takes none, 198 syntax; words are printed here.
#pragma once
#include "data/termname.h"
#include "interp/tokens.h"
#include <cstdint>
#include <string>
#include <vector>

enum : uint8_t { FV_TS = 1, FV_FACTOR = 2 }; // what a list may hold, and what it holds

enum fvbase : uint8_t { FB_DEFAULT, FB_NONE, FB_LEVEL, FB_FIRST, FB_LAST, FB_FREQ, FB_ORDER };
struct fvatom {
    int32_t var = 0;
    char kind = 0; // i, c, or 0 as typed without
    tsops ts;
    std::vector<int32_t> levels; // those wanted; none are all
    bool listed = false;         // written i(...), where the base is among them by its value
    bool omit = false;
    std::vector<int32_t> omits;
    fvbase base = FB_DEFAULT;
    int32_t baseno = 0;
};
struct fvterm {
    std::vector<fvatom> part;
};
struct fvspec {
    std::vector<fvterm> term;
    uint8_t has = 0;
};

// Reads elements at *at until something that cannot belong to a list.
[[nodiscard]] int32_t fv_parse(const char **at, uint8_t allow, fvspec *out);
[[nodiscard]] int32_t ti_fv_parse(toktype *ti, uint8_t allow, fvspec *out);
[[nodiscard]] int32_t fv_text(const char *text, uint8_t allow, fvspec *out); // all of it
bool fv_needed(const char *text);      // is there an operator before the clauses of a line?
std::string fv_write(const fvterm &t); // i.g#c.x
std::string fv_write(const fvspec &s);
bool fv_isplain(const fvterm &t); // a variable and nothing else

struct fvlist {
    std::vector<termname> col; // with the numbers of their variables
    std::vector<int32_t> term; // of each column, its term from 0
    int32_t nterm = 0;
};
// Which observations count, a byte for each from 1 on; null for all.
[[nodiscard]] int32_t fv_expand(const fvspec &s, const uint8_t *use, fvlist *out);
// Takes those out of use where a variable of the list is missing.
[[nodiscard]] int32_t fv_markout(const fvspec &s, uint8_t *use);
// One column, by its name: 0, or 111 with words. Names may be abbreviated.
[[nodiscard]] int32_t ti_fv_findvar(const char *name, termname *out);
bool fv_findvars(termname *t, bool abbrev); // the numbers of its variables, quiet

// Does a column belong to a term? The term's levels, if it tells some, must be those.
bool fv_matches(const fvterm &t, const termname &col);
// The columns of a stripe that the terms of a list mean, from 0, in the order of the stripe
// within each term; *missed is the first term without any, or -1.
std::vector<int32_t> fv_columns_of(const fvspec &s, const struct umatname *stripe, int32_t n,
                                   int32_t *missed);
// A name with its abbreviated variables written out: of a variable or a term; as it stands when
// it is neither.
std::string fv_fullname(const char *name);

// ---- values
// Reads the time settings when an operator needs them; 0, 111, 5 or 451 with words.
[[nodiscard]] int32_t ts_init();
void ts_renumber(int32_t n); // variable n went away
double rcpxeq(int32_t var, const tsops &ts, int32_t obs);
double fv_xeq(const termname &t, int32_t obs); // misval where a part is missing

// Columns of a list over blocks of observations: each variable is read once a row.
struct fvcolumns {
    struct source {
        int32_t var;
        tsops ts;
    };
    struct piece {
        int32_t src, level;
        bool indicator, zero;
    };
    std::vector<source> src;
    std::vector<piece> piece_;
    std::vector<int32_t> first; // of each column in piece_, with one more at the end
    std::vector<double> val;    // src by rows of a block
};
// With zeromarked what is left out reads as 0 (and missing as ever): nobody needs its values.
[[nodiscard]] int32_t fvc_open(fvcolumns *c, const std::vector<termname> &col, int32_t rows,
                               bool zeromarked = false);
void fvc_read(fvcolumns *c, const int32_t *obs, int32_t n);
void fvc_column(const fvcolumns *c, int32_t j, int32_t n, double *out, int32_t stride);

// ---- the list of the parse, where it holds operators: an entry -k of vl_vr means column k
extern fvlist fv_current;
const char *fv_name(int32_t entry); // the name behind an entry of vl_vr; valid until the next
// The columns of the command under way, over its sample without missing values; with pi_vlflag2
// each factor is looked at on its own, and with pi_vlflag3 the terms are left as they are.
struct parinfo_t;
[[nodiscard]] int32_t pi_fvexpand(parinfo_t *pi);
// The order in which regressors are swept: base levels and what is marked are left out, plain
// variables and main effects go first. Entries from vars; positions count from first. Ends -1.
void fv_sweeporder(const int32_t *vars, int32_t n, int32_t first, std::vector<int32_t> *order);
// Takes rows and columns of what is marked out of a square block before it is swept.
void fv_apply_omit_for_anova(const int32_t *vars, int32_t n, int32_t first, double *a, int64_t ld);
