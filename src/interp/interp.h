// interp/interp.h - the spine: lines, levels, dispatch, the way in and the way out.
//
//   readcons -> console -> macexp -> ti_gettok -> selreq -> row of commands.def -> handler
//
// Nothing unwinds by itself: a handler's code climbs through doreq and godo by plain returns,
// and every level restores its doframe on the way. capture stops the climb.
#pragma once
#include "core/state.h"
#include "interp/tokens.h"
#include <cstdint>
#include <string>

// ---- the command table. Order of rows is part of the language: the first that fits wins.
enum : uint8_t {
    C_BY = 1,    // may stand behind by
    C_DEAD = 2,  // looked at in dead lines
};
struct cmdrow {
    const char *word;
    uint8_t min;
    int32_t (*handler)(int32_t arg);
    int32_t arg;
    int16_t below, from;  // version gate: vernum < below, vernum >= from
    uint8_t flags;
};
extern const cmdrow cmdtable[];
extern const int32_t ncmdtable;
// The row a word selects now, among rows with all the flags of need; or null.
const cmdrow *cmd_row(const char *word, uint8_t need);
const char *findbuiltin(const char *word);
const char *findbyablebuiltin(const char *word);
int32_t cmdcmp(const char *word, const char *full, int32_t minlen);
int32_t cmdcmp_lc(const char *word, const char *full, int32_t minlen);
int32_t cmdhash(const char *text);
int32_t byability(const char *word);  // 0 none, 1 onecall, 2 recall, 3 noheader, 9 not loaded
void cmdinit();
void cmdinit_plus_byvar();
[[nodiscard]] int32_t notbuilt(int32_t arg);  // the handler of rows that are not built yet
// What counts of a line in a block that is skipped: the brace it may open at its end.
[[nodiscard]] int32_t dead_line();
inline constexpr const char *notbuilt_words = "this command is not available in this version of Ovata\n";

[[nodiscard]] int32_t selreq();
int32_t getreq(bool fromprogram, bool newlinefirst);  // 0 a line is ready, 1 end of input
int32_t getreq_raw();  // of a matrix-language block: blank lines and lines with * come too
// The line opens a block of the matrix language, which ends with a line "end": 0 no, 1 mosa,
// 2 mosa with a colon, which an error leaves.
int32_t mosa_opens(const char *line);
int32_t doreq();                                      // 1 go on, 0 leave this level
// Runs a command line from C++ on the caller's level, console and tokens as before on return.
[[nodiscard]] int32_t run_line(const char *line);
// Runs a program of an owner, which need not be visible from here. With keep the console is as
// before on return; without, the line under way is lost.
[[nodiscard]] int32_t run_program(const char *name, const char *owner, const char *args, bool keep);
// Takes the next token as the command word and dispatches it, as a prefix does: work variables
// the command leaves behind are dropped.
[[nodiscard]] int32_t run_next();
extern bool rc_shown;  // a line of the level just left has shown globalrc, and speaks for it
void show_rc_line();  // the line of globalrc at the prompt and in do-files

// ---- do-files and programs
struct dofile;  // a do-file reader
enum godo_kind : int32_t { GD_DO = 0, GD_RUN = 1, GD_PROGRAM = 3, GD_INCLUDE = 4 };
[[nodiscard]] int32_t godo(int32_t kind, bool keepclsrtn);
// The by-environment byprefix leaves for the program it calls next (core/state.h has the one
// of the running program).
extern byenv by_waiting;
enum xq_byask : uint8_t;
double by_query(xq_byask ask);  // what _by() and its kin answer

extern dofile *dofilep;
extern bool doeof;
extern int32_t delimit;
extern int32_t dofile_rc;     // why the do-file ended early: 0, 692 or 1004
extern int32_t doreq_nest;    // lines of this do-file level under way, one inside the other
dofile *dofopen(const char *name, int32_t *rc);
int32_t getdofcm(dofile *f, int32_t *status);  // a character; status -1 end, -2 error
void dofclos(dofile *f);
// Reads one command line into console. Returns 1 at the end of a do-file (doeof is then set);
// the end of the keyboard's input ends the process. readcons_prompt is what stands before
// the line; who changes it puts it back.
int32_t readcons(int32_t len, bool fromdo, bool allowunknownhash, bool newlinefirst);
inline constexpr const char *prompt_std = ". ";
extern const char *readcons_prompt;
int32_t setbreak(bool on);  // the earlier setting

// Finding files. srchado writes the nth hit (1-based) along S_ADO of name.extension into
// result (500 bytes); all return 0 when found, 1 otherwise.
int32_t srchado(const char *name, const char *extension, int32_t nth, char *result);
int32_t srchadofile(const char *name, char *result);
int32_t srchfile(const char *name, bool usesys, char *result);
[[nodiscard]] int32_t autoload(const char *extension, bool mustdefine);
// A code word of S_ADO or `sysdir` (OVATA, BASE, SITE, ...) to its directory, with its
// separator at the end; null when it is none. sysdir_set changes one: 0, or 198.
const char *sysdir_of(const char *word);
extern double rmsgtime;  // seconds the last command took, with set rmsg on
[[nodiscard]] int32_t sysdir_set(const char *word, const char *path);
extern const char *const sysdir_words[];  // in the order of the listing; ends with null
// The next directory of a search path such as S_ADO, from *at, with its separator; false at
// the end of the path.
bool extrpath(const std::string &list, size_t *at, std::string *dir);
// The subdirectory of the ado directories that holds a file: its first letter, lower case.
std::string ado_subdir(const char *name);

// ---- start and end
int32_t sinit0(int32_t argc, char **argv);
int32_t sinit();
int32_t tinit();
[[noreturn]] void sexit(int32_t code);
extern int32_t sinit_state;
[[nodiscard]] int32_t goexit(int32_t arg);
