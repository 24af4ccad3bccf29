#include "core/mem.h"
#include "core/state.h"
#include <cstdlib>
#include <cstring>
#include <malloc.h>

static mem_use live;
static struct {
    fault_kind kind;
    int64_t next;  // events to let pass; -1 not armed
    bool stay;
    int64_t hits;
} fault = {F_MEM, -1, false, 0};

void fault_arm(fault_kind kind, int64_t n, bool stay) { fault = {kind, n - 1, stay, 0}; }

int64_t fault_disarm()
{
    fault.next = -1;
    return fault.hits;
}

bool fault_hit(fault_kind kind)
{
    if (fault.next < 0 || kind != fault.kind) [[likely]]
        return false;
    if (fault.next > 0) {
        fault.next--;
        return false;
    }
    fault.hits++;
    if (!fault.stay)
        fault.next = -1;
    return true;
}

int32_t fault_poll()
{
    if (fault_hit(F_BREAK))
        state_break();
    return stopflag;
}

static void *count(void *p)
{
    if (p) {
        live.blocks++;
        live.bytes += int64_t(malloc_usable_size(p));
    }
    return p;
}

void *safemalloc(size_t size)
{
    return fault_hit(F_MEM) ? nullptr : count(malloc(size ? size : 1));
}

void *safecalloc(size_t size)
{
    return fault_hit(F_MEM) ? nullptr : count(calloc(1, size ? size : 1));
}

void *saferealloc(void *p, size_t size)
{
    if (!p)
        return safemalloc(size);
    if (fault_hit(F_MEM))
        return nullptr;
    int64_t was = int64_t(malloc_usable_size(p));
    void *q = realloc(p, size ? size : 1);
    if (q)
        live.bytes += int64_t(malloc_usable_size(q)) - was;
    return q;
}

void safefree(void *p)
{
    if (!p)
        return;
    live.blocks--;
    live.bytes -= int64_t(malloc_usable_size(p));
    free(p);
}

mem_use mem_live() { return live; }
