#include "core/timers.h"
#include "core/clock.h"

struct watch {
    double total, since;
    int32_t runs;
    bool on;
};
static watch watches[ntimers + 1];

void timer_clear(int32_t i)
{
    watches[i] = {};
}

void timer_on(int32_t i)
{
    watch &w = watches[i];
    if (w.on)
        return;
    w.runs++;
    w.since = clock_secs();
    w.on = true;
}

void timer_off(int32_t i)
{
    watch &w = watches[i];
    if (!w.on)
        return;
    w.total += clock_secs() - w.since;
    w.on = false;
}

timer_reading timer_read(int32_t i)
{
    const watch &w = watches[i];
    return {w.total + (w.on ? clock_secs() - w.since : 0), w.runs};
}
