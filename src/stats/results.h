// stats/results.h - stored results: r(), e(), s(), and the return() hold of each level.
//
// r() belongs to the last general command, e() to the last estimation, s() to parsing
// programs. The first 20 scalars of r() and of e() stand in a table beside the dm store; the
// rest, macros and matrices are dm records. What a program returns is held under its level's
// own types and becomes r() when it ends, by changing types, never by copying.
#pragma once
#include <cstddef>
#include <cstdint>
#include <string>

enum result_kind : int32_t { RK_R = 3, RK_RETURN = 4, RK_E = 5, RK_S = 6 };

// What is found is kept as the current item, which the accessors read. 15 a scalar, 5179 a
// macro, 9 a matrix, 0 nothing.
int32_t gretval_find(int32_t kind, const char *name);
double retval_get_as_double();
void retval_get_as_string(char *buf, int32_t max);   // at most max characters
int32_t retval_get_as_double_any(double *out);       // nonzero when it is no number
const char *retval_get_strptr();
int32_t retval_get_rvcat();

extern uint8_t retval_flag;  // bit 1 the table, bit 2 the dm types
void retval_clear();         // each r-class command starts with this
void retval_zap();
void retval_set_gscalar(double value, const char *name, int32_t cat = 0);
void retval_reset_gscalar(double value, const char *name, int32_t cat = 0);
void retval_set_glocal(const char *name, const char *text, int32_t cat = 0);
void retval_erase(const char *name);
[[nodiscard]] int32_t retval_internal_to_dynamic();

extern bool lastest;
extern bool lastest_op;      // the next display of estimates is a replay of them
void estval_clear();
void estval_partial_clear_for_huber();  // the scalars, before a robust step writes its own
void estval_partial_clear_for_post();   // b and V, before others take their place
void estval_set_gscalar(double value, const char *name, int32_t cat = 0);
void estval_set_glocal(const char *name, const char *text, int32_t cat = 0);
int32_t estval_reset_gscalar(double value, const char *name, int32_t cat = 0);  // 0 or 950
int32_t estval_reset_glocal(const char *name, const char *text, int32_t cat = 0);  // 0 or 950
void estval_erase(const char *name);
[[nodiscard]] int32_t estval_internal_to_dynamic();
double estval_get_double(const char *name);
// The facts that a robust step leaves, by their places.
void estval_save_vcetype(const char *text);
const char *estval_use_vcetype();            // empty when there is none
void estval_save_clustvar(const char *name);
const char *estval_use_clustvar();
void estval_erase_clustvar();
void estval_save_N_clust(double n);
double estval_use_N_clust();
void estval_erase_N_clust();
extern char esamplename[33];  // the hidden sample variable, empty when there is none
// The matrix behind e(b) or e(V): its dm name, or null without estimates.
const char *find_e_of_specialname(const char *name);

void myretval_clear();
void myretval_erase(const char *name);
[[nodiscard]] int32_t myretval_reset_gscalar(double value, const char *name, int32_t cat);
[[nodiscard]] int32_t myretval_reset_glocal(const char *name, const char *text, int32_t cat);
[[nodiscard]] int32_t myretval_add();
void myretval_to_r();   // at a program's end: the hold becomes r()

// The category of the item that a return or ereturn command is setting.
extern int32_t savres_cat;

void sretval_clear();
[[nodiscard]] int32_t sretval_reset_local(const char *name, const char *text);
// The names of one sort (15 scalars, 5179 macros, 9 matrices; 0 functions) with blanks between.
int32_t retval_names(int32_t kind, int32_t sort, std::string *out);
int32_t retvals_dir(int32_t kind);  // the listing form; returns stopflag
void retval_mark_dm();  // r() now holds records

// One item of a store put in the place of any of that name, or nothing changed and 950. A name is
// of one sort at a time. Empty texts take the item away. put_matrix takes over a matrix of the
// user, named from. The stores are told apart as for gretval_find.
[[nodiscard]] int32_t retval_put_scalar(int32_t kind, const char *name, double z, int32_t cat);
[[nodiscard]] int32_t retval_put_macro(int32_t kind, const char *name, const char *text,
                                       int32_t cat);
[[nodiscard]] int32_t retval_put_matrix(int32_t kind, const char *name, const char *from,
                                        int32_t cat);
void retval_take_away(int32_t kind, const char *name);

// ---- whole sets set aside under a name; kind is RK_R or RK_E. Silent.
[[nodiscard]] int32_t held_hold(int32_t kind, const char *name, bool permanent = false);
                                                           // 0, 110, 950, 1000
[[nodiscard]] int32_t held_restore(int32_t kind, const char *name, bool keep);  // 0, 111, 950
[[nodiscard]] int32_t held_drop(int32_t kind, const char *name);     // _all too
void held_droplevel(int32_t kind, int32_t level);  // those held at typelmac level or above
int32_t held_dir(int32_t kind);
bool held_last(int32_t kind, int32_t level, char *name);  // one held at that level; 33 bytes

// _result(0..20) of old programs.
extern double usresult[21];
