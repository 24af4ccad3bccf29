// core/settings.h - what `set` changes, `query` shows and c() reads: one table of rows.
//
// A row names the setting, where its value lives, what it may be, and the section of `query`
// it stands in. The command parses by kind and stores; a row whose change needs more than a
// store names a hook number, and the floor that owns the effect fills set_hooks at start-up.
//
//   kind     storage        words
//   SK_BOOL  bool           on, off
//   SK_INT   int32_t        a whole number from low to high
//   SK_NUM   double         a number from low to high; misval where high says so
//   SK_WORD  char[33]       one of the |-separated choices
//   SK_TEXT  char[500]      any text
//   SK_ACT   none           only the hook knows (obs, seed, memory sizes)
#pragma once
#include <cstdint>
#include <string>

enum set_kind : uint8_t { SK_BOOL, SK_INT, SK_NUM, SK_WORD, SK_TEXT, SK_ACT };
enum set_hook : uint8_t {
    SH_NONE,
    SH_OBS,
    SH_SEED,
    SH_MAXVAR,
    SH_MATSIZE,
    SH_NICENESS,
    SH_SEGSIZE,
    SH_MINMEM,
    SH_MAXMEM,
    SH_LINESIZE,
    SH_PAGESIZE,
    SH_MORE,
    SH_TRACE,
    SH_VERSION_RNG,
    SH_CHARSET,
    SH_FORMAT,    // cformat, pformat, sformat: a number format or nothing
    SH_ADOSIZE,
    SH_MEMORY,    // the old request for memory, answered with a note
    SH_DP,
    SH_SORTSEED,
    SH_PROGRESS,
    SH_N,
};

struct setting {
    const char *name;
    uint8_t min;         // least abbreviation
    set_kind kind;
    void *at;
    double low, high;
    const char *choices; // SK_WORD
    const char *section; // heading in `query`, or null to leave it out
    set_hook hook;
    bool perm;           // `, permanently` is allowed
};
extern const setting settings[];
extern const int32_t nsettings;

// The row a word names (abbreviation allowed), or null.
const setting *setting_find(const char *word);
// The row of exactly this name, or null. c() reads through this.
const setting *setting_exact(const char *name);

// Called with the text after the name once the plain checks passed (SK_ACT: at once).
// The hook prints its own words and returns a code; on failure the old value stays.
using set_fn = int32_t (*)(const setting *s, const char *text);
extern set_fn set_hooks[SH_N];

// The values themselves, for the code that acts by them.
extern bool set_more, set_rmsg, set_trace, set_graphics, set_progress;
extern int32_t set_linesize, set_pagesize, set_matsize, set_maxvar, set_tracedepth, set_maxiter,
    set_adosize, set_niceness;
extern bool set_tracesep, set_traceindent, set_traceexpand, set_tracenumber;
extern double set_level;                 // confidence level in percent, 10 to 99.99
// The user chose the size of lines or pages: the terminal's size no longer decides.
extern bool linesize_chosen, pagesize_chosen;
extern char set_type[33];                // storage type of generate: byte int long float double
extern char set_logtype[33], set_dp[33];
extern bool set_mosastrict, set_mosalnum, set_mosaoptimize;

extern bool set_checksum, set_httpproxy, set_httpproxyauth;
extern int32_t set_linegap, set_scrollbufsize, set_textsize, set_timeout1, set_timeout2,
    set_httpproxyport, set_mosacache, set_maxdb;
extern char set_showbaselevels[33], set_showemptycells[33], set_showomitted[33],
    set_lstretch[33], set_coeftabresults[33], set_charset[33], set_printcolor[33],
    set_mosafavor[33];
extern char set_cformat[500], set_pformat[500], set_sformat[500], set_scheme[500],
    set_httpproxyhost[500], set_httpproxyuser[500], set_httpproxypw[500], set_tracehilite[500],
    set_mosalibs[500], set_odbcmgr[500];

// Checks text against a row and, with store, keeps it. 0; 1 not of its kind; 2 out of range.
// Prints nothing and calls no hook; SK_ACT is always 0.
int32_t setting_put(const setting *s, const char *text, bool store);
// The value as text, 500 bytes; empty for SK_ACT. Returns buf.
char *setting_text(const setting *s, char *buf);
// What it may be, for messages: "on or off", "between 40 and 255", ... 500 bytes.
char *setting_range(const setting *s, char *buf);

// Preferences: text rows `name value` under the user's configuration directory
// (XDG_CONFIG_HOME, else ~/.config, then ovata/preferences). A missing or unreadable file is
// no error; a bad row is passed over.
std::string prefsdir();  // without a slash at its end; empty when there is none
void open_prefs();
void sprefs_load();      // settings marked permanent, in the order of the file
int32_t sprefs_put(const char *name, const char *value);
const char *sprefs_get(const char *name);  // or null
void write_prefs();
void close_prefs();
