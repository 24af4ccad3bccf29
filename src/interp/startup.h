// interp/startup.h - the stages of the start, between main and the first line.
//
// sinit_state tells sexit how far the start came:
//
//    1 settings   3 renderer   4 command line, batch log, installation   5 labels
//    7 constants  8 signals   10 logo   12 dataset   13 notes   14 keys   15 16 17 later pieces
//   18 ready, a command may be waiting in console   19 ready for the prompt
//
// A command on the command line skips 19 on purpose: sexit then leaves its first step out.
#pragma once
#include <cstdint>
#include <string>

extern char sysprofilefn[500], profilefn[500];  // start-up files that were run, or empty

struct startopts {
    bool logo = true;
    bool wflag = false;     // -w
    bool markuplog = false; // -s
    int32_t batch = 0;
    int32_t nargs = 0;      // options read
};
// Reads leading options; prints the usage text and returns -1 for a wrong one.
int32_t start_options(int32_t argc, char **argv, startopts *o);
// The remaining arguments as one command, each with a blank behind it; a file name in front
// is given the command its ending stands for.
std::string start_command(int32_t argc, char **argv);
// Name of the batch log of a command.
std::string batch_logname(const std::string &command, bool markup);
// Signals and the terminal's size; has an effect once.
int32_t tinit();
void load_set_prefs();
void load_mem_prefs();
// Opens the batch log and attaches it; -1 after a message on standard error.
int32_t inibatch(const std::string &command, bool markup);
void close_batchlog();
// The profile files, then the waiting command, then lines until the end.
[[noreturn]] void run_session(bool command);
