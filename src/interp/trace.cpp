#include "interp/trace.h"
#include "core/settings.h"
#include "core/state.h"
#include "interp/programs.h"
#include "output/print.h"
#include <cstdio>
#include <cstring>

int trace_low = -1;

static bool traced()
{
    if (!set_trace) {
        trace_low = -1;
        return false;
    }
    if (trace_low < 0)
        trace_low = ovata_level;
    return ovata_level - trace_low < set_tracedepth;
}

static void lead(char mark)
{
    if (set_traceindent)
        for (int32_t i = trace_low; i < ovata_level; i++)
            spout21("  ");
    if (set_tracenumber)
        spout21f("%4d ", sys_upline);
    char text[3] = {mark, ' ', 0};
    spout21(text);
}

static void trace_text(char mark, const char *text)
{
    if (!traced())
        return;
    outlev_keep level(1);
    lead(mark);
    if (*text == ' ')
        text++;
    if (set_traceindent)
        for (int32_t i = 0; i < pgm_indent && i < 40; i++)
            spout21(" ");
    spout21(text);
    spout21("\n");
}

void trace_line(const char *text) { trace_text('-', text); }
void trace_expanded(const char *text) { trace_text('=', text); }

static void divider(const char *what, const char *name)
{
    if (!traced() || !set_tracesep)
        return;
    outlev_keep level(1);
    int32_t indent = set_traceindent ? 2 * (ovata_level - trace_low) : 0;
    int32_t dashes = set_linesize - indent - int32_t(strlen(what) + strlen(name)) - 6;
    for (int32_t i = 0; i < indent; i++)
        spout21(" ");
    for (int32_t i = 0; i < dashes; i++)
        spout21("-");
    spout21f(" %s %s ---\n", what, name);
}

void trace_enter(const char *name) { divider("begin", name); }
void trace_leave(const char *name) { divider("end", name); }
