// interp/programs.h - programs: named lists of lines in the dm store, and what runs over them.
//
//   pgmrec | off[0] .. off[nlines] | line | line | ...
//   line     one byte of indent (the number of leading blanks), then the text with its NUL
//
// The dm record's aux is the number of lines. A program that came from a file carries the
// time it was loaded and the main program of its file as owner, so that the subprograms of
// one file find each other and nobody else finds them.
//
// Control flow goes back to earlier lines and so works on stored programs. A loop that is
// typed, or stands in a do-file, is first stored as a temporary program, which runs without
// a level of its own.
#pragma once
#include "core/limits.h"
#include <cstdint>
#include <string>

struct pgmrec {
    int32_t loadtime;       // sysldtime when defined; 0 when typed or in a do-file
    int32_t lastuse;        // sysclock at the last call
    uint8_t inuse;
    uint8_t sortpreserve;
    uint8_t isclass;        // belongs to the class system
    uint8_t pgmclass;       // 0 nclass, 1 rclass, 2 sclass, 3 eclass
    uint8_t byable;         // 0, 1 onecall, 2 recall, 3 recall, noheader
    int16_t version;        // vernum at definition
    char owner[33];
    char properties[81];
    int32_t off[1];         // nlines + 1 of them, from the start of the record
};

enum : int32_t { PF_PROGRAM = 1, PF_PLUGIN = 2, PF_BOTH = 3 };
// The record of that name a caller of class `owner` may see, of kind which; or null.
void *pgmfind(const char *name, const char *owner, int32_t which);
// As pgmfind for programs, loading its file when there is one; null without words otherwise.
void *pgm_load(const char *name);
int32_t pgm_nlines(const pgmrec *p);
// Line i (0-based): the indent byte and the text; n is their length with the NUL.
inline const char *pgm_line(const pgmrec *p, int32_t i, int32_t *n)
{
    *n = p->off[i + 1] - p->off[i];
    return reinterpret_cast<const char *>(p) + p->off[i];
}

// ---- the running program
extern pgmrec *sys_pgmloc;      // record of sys_pgmname once found; null when it went
extern int32_t sys_upline;      // next line, 0-based
extern bool sys_is_cls;         // it belongs to the class system
extern bool resort_on_exit;     // sortpreserve is in force at this level
// What the class system, on the floor above, answers: its search for programs (null: the plain
// one), its start, statements that begin with a dot, and forgetting objects and classes.
extern void *(*cls_pgmfind_hook)(const char *name, const char *owner);
extern int32_t (*cls_init_hook)();
extern int32_t (*cls_statement_hook)();
extern void (*cls_forget_hook)();
// Copies the next line into console with a blank for its indent byte, and points tokinfo at
// it. 0; 1 at the end or when the program is gone. pgm_indent is the indent of that line.
int32_t pgm_getline();
extern int32_t pgm_indent;

// ---- defining and forgetting
struct pgmopts {
    uint8_t pgmclass, byable, sortpreserve, isclass;
    const char *properties;
};
// Reads the body from where lines come from now, up to `end`; with firstline not null, up to
// the brace that closes the block it opens (the head is stored as line one).
[[nodiscard]] int32_t pgmdefine(const char *name, const char *owner, const pgmopts *opts,
                                const char *firstline);
[[nodiscard]] int32_t pgmdrop();          // program drop, from tokinfo
[[nodiscard]] int32_t discardal(int32_t arg);
void pgm_discard_loaded();                // every program that came from a file
int32_t pgm(int32_t arg);
extern int32_t sysldtime;                 // sysclock of the load under way, 0 without one
extern bool reading_cls_pgm;
extern bool not_autoload;                 // false while a program file is being run to load it
extern int32_t load_depth;

// ---- control flow
int32_t ifcmd(int32_t isloop);
int32_t forvals(int32_t arg);
int32_t foreach(int32_t arg);
int32_t elsecmd(int32_t arg);
int32_t continuecmd(int32_t arg);
[[nodiscard]] int32_t opbrace();          // the token { was just taken
char *bracefind(char *text);              // the { that opens a block, or null
void foreachrest(char *buffer);           // macrolen bytes

// ---- what a level leaves behind, for its epilog
// Clears the level's locals; for an r-class program its return() becomes r(). typelmac is
// still the level's.
void rmtmpdyn(uint8_t pgmclass);
extern bool hastmp_hreturn;               // _return hold was used at this level
void cleanhret();
extern bool hastmp_fhopened;              // a file handle was opened at this level
void ovfile_autoclose();
void file_onremove(void *payload);        // what a handle or a posting leads to goes with
void post_onremove(void *payload);        // its record
extern int32_t psvfctr;                   // the level's preserved data, -1 none
// At the end of a level with psvfctr not -1: brings the data back. rc is the level's code.
[[nodiscard]] int32_t restore_atend(int32_t rc);
void preserve_shutdown();                 // at the end of the process
extern bool estrestore, hastmp_estheld;   // held estimates come back at exit; some were held
void cleanesti();
void estirestore();
