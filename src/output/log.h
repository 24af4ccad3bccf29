// output/log.h - logs: what was printed, in a file; and the command log.
//
// The unnamed log and any number of named ones can be open at once. A log that can no longer
// be written gives one message with 693 and is closed; the session goes on.
#pragma once
#include <cstdint>

struct logrow {
    char name[33];        // empty for the unnamed log
    char path[500];
    char opened[48];
    bool markup, paused;
    int32_t fd, id;
};
// kind 0 text, 1 mark-up. Returns 0, 604 already open, or a file code; prints its words.
[[nodiscard]] int32_t log_open(const char *name, const char *path, int kind, bool replace,
                               bool append);
[[nodiscard]] int32_t log_close(const char *name);          // 606 when it is not open
[[nodiscard]] int32_t log_pause(const char *name, bool pause);
const logrow *log_find(const char *name);                   // or null
const logrow *log_nth(int32_t n);                           // 0-based, or null
void log_closeall();
// Its lines, as at its opening, with the present time for an event; null tells its state.
void log_report(const logrow *l, const char *event);
// Called after each command: reports a failed log write once and closes that log.
void log_check();

extern bool cmdlog_on;   // false while it is off, too
bool cmdlog_isopen();
const char *cmdlog_path();
[[nodiscard]] int32_t cmdlog_open(const char *path, bool replace, bool append);
[[nodiscard]] int32_t cmdlog_close();                       // 607 when it is not open
void cmdlog_line(const char *line);
