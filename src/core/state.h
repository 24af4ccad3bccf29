// core/state.h - the state of the running interpreter that more than one floor reads.
//
// Process-wide variables on purpose: there is one console, one dataset, one thread. Each
// do-file or program level saves what it must in a doframe (interp/interp.h) and puts it
// back on its way out, whatever the way.
#pragma once
#include "core/limits.h"
#include <csignal>
#include <cstdint>

extern char console[conslen + 1];  // the one command line, expanded in place
extern char cmd[33];               // its first word, cut to 32 characters

extern int32_t globalrc;  // code of the last command at this level
extern int32_t captrc;    // _rc: code kept by the last capture

// Break. The signal handler stores stopflag_val in stopflag and altstopflag_val in
// altstopflag and does nothing else. Long loops and every print poll stopflag and return
// it; its value 1 is r(1). Under nobreak the two values are 0 and 1, so that the break
// waits in altstopflag.
extern volatile sig_atomic_t stopflag, altstopflag;
extern volatile sig_atomic_t stopflag_val, altstopflag_val;
extern volatile sig_atomic_t ov_fpeerror;  // a floating-point trap was seen
extern volatile sig_atomic_t winresized;   // the terminal has another size since this was cleared
// The signal that ended the session (a terminal that went away, a request to leave), else 0.
// It comes with a break; the line under way gives up and the session leaves the orderly way.
extern volatile sig_atomic_t leavesignal;

extern bool exitflg, gexitflg;   // leave this level; leave the process
extern bool runprog;             // lines come from a stored program
extern bool procflg;             // this line is live; false while a block is skipped
extern bool syselseflg;          // the last if was true
extern bool breakallowed;        // continue is legal here
extern uint8_t breakdetail;      // 0, 1 continue, 2 continue, break is pending
extern bool mac_expanded;        // doreq expanded the current line
extern int32_t ovata_level;      // nesting of do-files and programs, 0 at the prompt
extern int32_t typelmac;         // dm type of this level's local macros
extern int16_t vernum, caller_vernum;  // version in force and the caller's, times 100
extern bool mvmodern;            // missing values compare by letter
extern int32_t sysclock;         // counts commands; 2147483646 is followed by 1
extern int32_t batchmode;        // 0 interactive, 1 batch, 2 batch without the logo
extern bool nokbrd;              // standard input is no terminal
extern bool realbusy;            // a command of the top loop is running
extern bool ovata_varabbrev;     // variable names may be abbreviated
extern bool ovata_dpc;           // decimal comma in output
extern bool sysflag;             // a system caller, which may use reserved names
extern uint8_t program_class;    // 0 none, 1 r-class, 2 s-class, 3 e-class
extern char sys_pgmname[33], sys_pgmclass[33];

// by. byvar is 0 outside by, 1 at the first group, 2 at later ones; lastby is true at the
// last group and outside by. nobss1..nobss2 is the range of the group.
extern int32_t byvar;
extern bool lastby;
extern int32_t nobss1, nobss2;

// What by tells a program: on while one runs behind by. With recall it is called once for
// each group, observations n1 to n2 the index-th of them; with onecall once for all.
struct byenv {
    bool on, recall, lastcall;
    int32_t index, n1, n2;
    const char *vars;  // names of the by variables, blanks between
};
extern byenv by_env;

// The dataset, as flags.
extern bool s_updata;   // changed since it was last saved
extern bool newdata, newDtaset, upSort, upFormat, upValLabel;  // told to whoever watches
extern char datalbl[81];

inline constexpr int16_t ver_current = 1210, ver_lowest = 100;

// Set a flag that says a break was asked for, as the signal does. For tests and for the
// keys that mean a break.
void state_break();
