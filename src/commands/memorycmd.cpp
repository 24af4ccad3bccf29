// commands/memorycmd.cpp - memory: what the data and the stored objects take.
#include "core/mem.h"
#include "core/rc.h"
#include "core/state.h"
#include "data/dsa.h"
#include "interp/dm.h"
#include "interp/interp.h"
#include "interp/messages.h"
#include "output/fmt.h"
#include "output/print.h"
#include "stats/results.h"

static void row(const char *what, double used, double held)
{
    char a[40], b[40];
    outlev_keep keep(1);
    spout21f("  %-34s", what);
    spout21fat(0, "%18s%18s", fmt_comma(a, used), fmt_comma(b, held));
    newline();
}

static double of_types(int32_t from, int32_t to)
{
    double n = 0;
    for (int32_t t = from; t <= to; t++)
        n += double(dmmemory(t));
    return n;
}

int32_t memorycmd(int32_t)
{
    if (*ti_gettok(tokinfo, prsestd))
        return error(RC_SYNTAX);
    const dsa_area *d = sysdsa;
    double data = double(dsa_lrec(d)) * _Nobs, held = double(d->S) * double(d->segment_size),
           spare = d->spare ? double(d->segment_size) : 0, all = double(dmmemory(-1)),
           macros = double(dmmemory(DM_GLOBAL)) + of_types(DM_LOCAL, DM_LOCAL_LAST),
           programs = double(dmmemory(DM_PROGRAM)),
           matrices = of_types(DM_MATRIX, DM_MATCOLS),
           labels = double(dmmemory(DM_VALLABEL)) + double(dmmemory(DM_VARLABEL)) +
                    double(dmmemory(DM_CHAR)),
           process = double(mem_live().bytes);
    outlev_keep keep(1);
    spoutsml("{hline}\n  Memory, in bytes{col 47}used{col 60}allocated\n{hline}\n");
    row("data", data, held);
    row("spare segment", 0, spare);
    row("labels and characteristics", labels, labels);
    row("macros", macros, macros);
    row("programs", programs, programs);
    row("matrices", matrices, matrices);
    double rest = all - labels - macros - programs - matrices;
    row("other stored objects", rest, rest);
    spoutsml("{hline}\n");
    row("total", data + all, held + spare + all);
    row("of the process", process, process);
    retval_clear();
    retval_set_gscalar(data, "data_used");
    retval_set_gscalar(held, "data_allocated");
    retval_set_gscalar(all, "objects");
    retval_set_gscalar(data + all, "total_used");
    retval_set_gscalar(held + spare + all, "total_allocated");
    return stopflag;
}
