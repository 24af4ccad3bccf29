// expr/fcntable.cpp - the function table and the search in it.
#include "expr/opcodes.h"
#include "expr/expr.h"
#include <cstdint>
#include <cstring>

const fcnrow fcntable[] = {
#define F(name, op, n, arg, res) {#name, op, n, arg, res, false},
#define L(name, op, n, arg, res) {#name, op, n, arg, res, true},
#include "expr/fcntable.def"
#undef F
#undef L
    {nullptr, OP_END, 0, 0, 0, false},
};

static uint32_t slot_of(const char *name)
{
    uint32_t h = 0;
    for (; *name; name++)
        h = h * 31 + uint8_t(*name);
    return (h ^ (h >> 9)) & 1023;
}

const fcnrow *fcn_find(const char *name)
{
    static int16_t slots[1024];  // 1-based rows, chained by open addressing
    static bool built;
    if (!built) {
        for (int16_t i = 0; fcntable[i].opcode; i++) {
            uint32_t h = slot_of(fcntable[i].name);
            while (slots[h])
                h = (h + 1) & 1023;
            slots[h] = int16_t(i + 1);
        }
        built = true;
    }
    for (uint32_t h = slot_of(name); slots[h]; h = (h + 1) & 1023)
        if (!strcmp(fcntable[slots[h] - 1].name, name))
            return &fcntable[slots[h] - 1];
    return nullptr;
}
