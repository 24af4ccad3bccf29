// interp/trace.h - lines of programs shown as they run (set trace).
#pragma once

// The line is about to run. Shown behind "- ", and when expansion changed it, the result
// behind "= ". Nothing is shown deeper than set tracedepth levels below where tracing began.
void trace_line(const char *text);
void trace_expanded(const char *text);
void trace_enter(const char *name);
void trace_leave(const char *name);
// The level where tracing began, -1 without; saved with each level.
extern int trace_low;
