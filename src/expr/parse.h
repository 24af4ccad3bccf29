// expr/parse.h - one parser for all commands.
//
//   [by ...:] command [varlist] [=exp] [if exp] [in range] [using file] [weight] [, options]
//
// A command sets the allow bytes, parses, claims its options by name, checks that none is
// left over, and loops over the observations that selobs selects:
//
//   pi_in_ok(); parinfo->pi_if = PI_OK; ...
//   if ((rc = ti_pi_parse(tokinfo, parinfo))) return rc;
//   bool det = ti_pi_findopt(tokinfo, parinfo, "detail", 1, 0);
//   if ((rc = ti_pi_chkopt(tokinfo, parinfo))) return rc;
//   for (int32_t obs = parinfo->pi_obs1; obs <= parinfo->pi_obs2; obs++)
//       if (selobs(obs)) ...
//
// Clauses may stand in any order. Options are recorded unread and read when claimed. Under by
// the parse of the first group is kept with its literal pools and replayed for the others.
#pragma once
#include "expr/expr.h"
#include <cstdint>

// Values of allow bytes. What each byte takes stands in pi_defaults below.
enum : uint8_t { PI_OK = 0, PI_REQ = 1, PI_WIDE = 2, PI_NO = 3, PI_FIND = 4 };
enum : uint8_t { W_AW = 1, W_FW = 2, W_PW = 4, W_IW = 8, W_ALL4 = 15 };
inline constexpr int32_t pi_maxopt = 70;

struct vlrecipe {
    char bytes[16];
};
struct parinfo_t {
    uint8_t pi_unused0;
    uint8_t pi_fvok;
    uint8_t pi_vlflag2, pi_vlflag3, pi_vlflag4;
    uint8_t pi_in;       // PI_OK, PI_REQ, PI_WIDE (past _N), PI_NO
    uint8_t pi_if;       // PI_OK, 2 (OK at the next parse), PI_NO, PI_FIND (found, not compiled)
    uint8_t pi_vlist;    // PI_OK, PI_REQ, PI_NO
    uint8_t pi_wgt;      // PI_OK, PI_NO
    uint8_t pi_using;    // PI_OK, PI_REQ, PI_WIDE (the name may be empty), PI_NO
    uint8_t pi_exp;      // PI_OK, PI_REQ, PI_NO
    uint8_t pi_by;       // PI_OK, PI_NO
    uint8_t pi_opts;     // PI_OK, PI_NO
    uint8_t pi_wgtmask;  // W_ bits
    uint8_t pi_blankall; // an empty varlist means all
    uint8_t pi_orin;     // a varlist or an in range must be given
    uint8_t pi_stopunknown;
    uint8_t pi_pad11;
    uint8_t pi_exptype;  // wanted of =exp
    void *pi_fvtoc;      // the terms of the varlist (fvspec), null when it has no operators
    uint8_t pi_ov;
    uint8_t pi_hasvlist;
    uint8_t pi_hasin;
    char pi_intext[32];
    uint8_t pi_hasif;
    uint8_t pi_hasexp;
    uint8_t pi_wtype;        // W_ bit of the weight, 0 none or not told
    uint8_t pi_wtype_typed;
    uint8_t pi_oldwgt;
    xeqpgm *ifpgm, *wepgm;   // the condition; =exp or the weight
    char *pi_optat[pi_maxopt];
    int32_t pi_nopt;
    uint8_t pi_optseen[pi_maxopt];  // bit 1 claimed, bit 2 malformed
    char pi_using_name[500];
    int32_t pi_nvar;
    int32_t pi_obs1, pi_obs2;
    int32_t pi_ntsop;
    int32_t *pi_tsopvars;
    int32_t *vl_vr;          // variable numbers, capacity maxmaxvar + 1; -k is column k of
                             // fv_current (varlist/terms.h), where pi_fvok is 1
    vlrecipe *vl_rcp;
    const char (*pi_altvarlist)[33];
    int32_t pi_altnvars;
};
extern parinfo_t parinfo_rec;
inline constexpr parinfo_t *parinfo = &parinfo_rec;

// How the varlist of the next parse is read; reset with the allow bytes. New variables are
// made by the parse itself (with the type typed, else set type), behind the user's.
enum vl_mode : uint8_t { VL_OLD, VL_NEW1, VL_NEW, VL_NAMES };
extern vl_mode pi_vlmode;
extern uint8_t pi_newtype;   // type typed before a new varlist, 0 none

// THE defaults of the allow bytes, in field order from pi_unused0 to pi_exptype.
struct pi_default {
    const char *field;
    uint8_t value;
    uint16_t at;  // offset in parinfo_t
};
extern const pi_default pi_defaults[];
extern const int32_t npi_defaults;
void pi_allow_reset(parinfo_t *pi);  // what dispatch does before each command

void pi_zap(parinfo_t *pi);
[[nodiscard]] int32_t pi_init(parinfo_t *pi);  // 0 or 950
void pi_free(parinfo_t *pi);
[[nodiscard]] int32_t ti_pi_parse(toktype *ti, parinfo_t *pi);
[[nodiscard]] int32_t ti_parse1(toktype *ti, parinfo_t *pi);
[[nodiscard]] int32_t ti_parse_ifinopts(toktype *ti, parinfo_t *pi);
[[nodiscard]] int32_t ti_proption(toktype *ti, parinfo_t *pi);
[[nodiscard]] int32_t ti_moveto_opt_arg_end(toktype *ti);
[[nodiscard]] int32_t ti_pi_chkopt(toktype *ti, parinfo_t *pi);
void pi_resetopt(parinfo_t *pi);
void pi_initialize_xeq(parinfo_t *pi);          // zeroes the sums
void pi_initialize_compexp_xeq(parinfo_t *pi);  // and empties the pools
void rmvlist();                                 // forgets the parse kept for by

// ---- option finders. min is the least abbreviation.
int32_t ti_pi_findopt(toktype *ti, parinfo_t *pi, const char *name, int32_t min, int32_t dflt);
int32_t ti_findopt_lc(toktype *ti, const char *name, int32_t min, int32_t dflt);
int32_t ti_pi_findscal(toktype *ti, parinfo_t *pi, int32_t kind, int32_t min);
// True when the option is there, with or without an argument.
bool ti_pi_hasopt(toktype *ti, parinfo_t *pi, const char *name, int32_t min);
int32_t ti_pi_findopta(toktype *ti, parinfo_t *pi, const char *name, int32_t min, int32_t dflt);
// Count of numbers read, 0 when absent.
int32_t ti_pi_findoptv(toktype *ti, parinfo_t *pi, const char *name, int32_t min, double *values,
                       int32_t n, int32_t flag);
int32_t ti_findoptv_lc(toktype *ti, const char *name, int32_t min, double *values, int32_t n,
                       int32_t flag);
// 1 when found with a good argument, else 0.
int32_t ti_pi_findargn(toktype *ti, parinfo_t *pi, const char *name, int32_t min, char *buf,
                       int32_t len, int32_t maxwords);
int32_t ti_pi_findargasis(toktype *ti, parinfo_t *pi, const char *name, int32_t min, char *buf,
                          int32_t len);
int32_t ti_pi_findvlist(toktype *ti, parinfo_t *pi, const char *name, int32_t min, int32_t *list,
                        int32_t n);  // count of variables, 0 when absent
double ti_pi_findlevel(toktype *ti, parinfo_t *pi, int32_t min);
double ti_pi_findlevellike(toktype *ti, parinfo_t *pi, const char *name, int32_t min);
int32_t ti_pi_findusg(toktype *ti, parinfo_t *pi, const char *name, int32_t min, char *file);

// ---- helpers
[[nodiscard]] int32_t chkrange(const char *name, int32_t value, int32_t low, int32_t high);
[[nodiscard]] int32_t dchkrange(const char *name, double value, double low, double high);
void wgtkeyword(char *buf, int32_t kind);
void pi_wgtdflt(parinfo_t *pi, int32_t kind);
// The condition at an observation; missing counts as true.
inline bool selobs(int32_t obs)
{
    return !parinfo->pi_hasif || pi_xeq(parinfo, parinfo->ifpgm, obs) != 0;
}
bool iskey(const char *word);
bool iskeyorb(const char *word);
void ti_pfixeq(toktype *ti);
void ti_optionallyclear(toktype *ti);
// The range reader: a, a/b, f, l, negative from the end. 0 or a code with words.
[[nodiscard]] int32_t ti_range(toktype *ti, int32_t N, bool wide, int32_t *obs1, int32_t *obs2,
                               char *text);

// ---- variable lists over the dataset: names, a-b, a*, a?b, *b, a~b, _all. Reads words until
// one that cannot belong to a list. list holds maxmaxvar + 1 numbers. Prints its words.
[[nodiscard]] int32_t ti_ssvlist(toktype *ti, int32_t *list, int32_t *n);
// The same over a text. Repeats are kept.
[[nodiscard]] int32_t vlist_text(const char *text, int32_t *list, int32_t *n, int32_t max);

// ---- numlists: 1 2 3/5 1(2)9 4 6 to 12, 1 2: 5 ... into out. 0 or 121 to 127 with words.
[[nodiscard]] int32_t numlist_text(const char *text, double *out, int32_t *n, int32_t max);
