// core/mem.h - memory, and the hook through which tests make things fail.
//
// Every allocation whose failure a user can cause goes through safemalloc, every transfer
// through ovata_read and ovata_write (core/files.h), every poll of a long loop through
// fault_poll. One armed fault therefore reaches any of them.
#pragma once
#include <cstddef>
#include <cstdint>

// size bytes aligned for any object, or null. A size of 0 counts as 1.
[[nodiscard]] void *safemalloc(size_t size);
// As safemalloc, zeroed.
[[nodiscard]] void *safecalloc(size_t size);
// Null leaves the old block as it was.
[[nodiscard]] void *saferealloc(void *p, size_t size);
void safefree(void *p);

// Blocks and bytes handed out and not yet freed.
struct mem_use {
    int64_t blocks, bytes;
};
mem_use mem_live();

enum fault_kind : uint8_t { F_MEM, F_READ, F_WRITE, F_BREAK };
// Refuse the n-th (1-based) event of a kind from now on; with stay, every later one too.
void fault_arm(fault_kind kind, int64_t n, bool stay);
// Disarms and tells how many events were refused.
int64_t fault_disarm();
// Counts an event; true when it must fail. The readers of the hook call this.
bool fault_hit(fault_kind kind);

// The poll of a long loop: stopflag, after an armed F_BREAK had its chance to set it.
int32_t fault_poll();
