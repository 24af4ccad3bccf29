// core/progress.h - how far long work has come, shown on the terminal and nowhere else.
//
// A long loop calls progress where it polls for a break. Nothing is shown in the first two
// seconds; then one line tells the share done and the time left, and it is gone when the
// work is done or anything else is printed. Without a watching terminal a call costs the test
// of one flag.
//
// A program that repeats a command names its own steps with progress_task: while its task
// lasts, what the commands inside report is left out.
#pragma once
#include "core/mem.h"
#include <cstdint>

extern bool progress_watched;  // a terminal is there and the user wants to see it
extern bool progress_shown;    // the line stands on the screen now

// Filled by the floors above: may a line of its own be written now; the control text that
// wipes the line the cursor is in.
extern bool (*progress_ready)();
extern const char *progress_wipetext;

void progress_tell(const char *what, double share);
void progress_wipe();  // takes the line off the screen
void progress_done();  // the command is over: wipes, and forgets its timing
// Step done of total at a level of nesting; a task ends when done reaches total or its level
// ends (progress_level).
void progress_task(double done, double total, int32_t level);
void progress_level(int32_t level);  // levels above this one are gone

// what: one or two words in the -ing form, a literal. share: 0 to 1.
inline void progress(const char *what, double share)
{
    if (progress_watched) [[unlikely]]
        progress_tell(what, share);
}
inline void progress_end()
{
    if (progress_watched) [[unlikely]]
        progress_done();
}
// The poll of a loop that knows its length: fault_poll, and the report.
inline int32_t progress_poll(const char *what, double done, double total)
{
    if (progress_watched) [[unlikely]]
        progress_tell(what, total > 0 ? done / total : 1);
    return fault_poll();
}
