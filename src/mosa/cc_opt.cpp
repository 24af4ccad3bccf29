// The optimiser: a few instructions at a time, again and again until nothing changes.
//
// The code is held as a list of instructions, so that deleting and moving touch neighbours
// only. A deleted instruction passes what jumps to it on to the one behind it. Every rule asks
// first whether a jump leads between the instructions that it joins.
#include "mosa/cc_int.h"
#include "output/print.h"
#include <cstring>

static constexpr int32_t maxsteps = 10000;

struct op_ins {
    int32_t at, len; // the words it came with; len may shrink
    int32_t op;
    int32_t prev, next;   // -1 at the ends
    int32_t target;       // of jumps, by instruction
    int32_t ntargets;     // jumps that lead here
    int32_t heir;         // of a deleted one
    int32_t nown, own[3]; // operands of its own, in place of its words
    bool gone;
};
static op_ins *ins;
static int32_t nins, first, steps;

static bool is_jump(int32_t i)
{
    int32_t op = ins[i].op;
    return op == 1 || op == 10 || op == 28;
}

static bool ends_flow(int32_t i)
{
    int32_t op = ins[i].op;
    return op == 1 || op == 3 || op == 30;
}

static int32_t resolve(int32_t i)
{
    while (i >= 0 && ins[i].gone)
        i = ins[i].heir;
    return i;
}

static int32_t target_of(int32_t i)
{
    return ins[i].target = resolve(ins[i].target);
}

static int32_t operand(int32_t i, int32_t k)
{
    return ins[i].nown ? ins[i].own[k] : m_pgm.code[ins[i].at + 1 + k];
}

static bool is(int32_t i, int32_t op)
{
    return i >= 0 && ins[i].op == op;
}

// The next one has this code and is entered only from the one before it.
static int32_t follows(int32_t i, int32_t op)
{
    int32_t n = ins[i].next;
    return is(n, op) && !ins[n].ntargets ? n : -1;
}

static void forget_target(int32_t i)
{
    if (is_jump(i))
        ins[target_of(i)].ntargets--;
}

static void unlink(int32_t i)
{
    int32_t p = ins[i].prev, n = ins[i].next;
    if (p >= 0)
        ins[p].next = n;
    else
        first = n;
    if (n >= 0)
        ins[n].prev = p;
}

static void remove(int32_t i)
{
    forget_target(i);
    unlink(i);
    ins[i].gone = true;
    ins[i].heir = ins[i].next;
    if (ins[i].next >= 0)
        ins[ins[i].next].ntargets += ins[i].ntargets;
}

static void become(int32_t i, int32_t op, int32_t len)
{
    if (is_jump(i) && op != 10)
        forget_target(i);
    ins[i].op = op;
    ins[i].len = len;
}

// ---- the code as a list

static void load_code()
{
    int32_t *index = static_cast<int32_t *>(cc_alloc(size_t(m_pgm.pc + 1) * 4));
    ins = static_cast<op_ins *>(cc_alloc(size_t(m_pgm.pc) * sizeof(op_ins)));
    nins = 0;
    for (int32_t at = 2; at < m_pgm.pc;) {
        int32_t len = m_lofmop(m_pgm.code + at, m_pgm.pc - at);
        if (len < 1)
            cc_err("sysfail 41\n");
        index[at] = nins;
        ins[nins] = {at, len, m_pgm.code[at], nins - 1, nins + 1, -1, 0, -1, 0, {}, false};
        nins++;
        at += len;
    }
    ins[nins - 1].next = -1;
    first = 0;
    for (int32_t i = 0; i < nins; i++)
        if (is_jump(i)) {
            ins[i].target = index[m_pgm.code[ins[i].at + 1]];
            ins[ins[i].target].ntargets++;
        }
}

static void store_code()
{
    auto *out = static_cast<int32_t *>(cc_alloc(size_t(m_maxpgmsize) * 4));
    auto *moved = static_cast<int32_t *>(cc_alloc(size_t(m_pgm.pc + 1) * 4));
    memset(moved, -1, size_t(m_pgm.pc + 1) * 4); // by old word: the new one
    out[0] = m_pgm.code[0];
    out[1] = m_pgm.code[1];
    int32_t at = 2;
    for (int32_t i = first; i >= 0; i = ins[i].next) {
        op_ins &x = ins[i];
        out[at] = x.op;
        int32_t len = x.nown ? x.nown + 1 : x.len;
        for (int32_t k = 1; k < len; k++) {
            out[at + k] = x.nown ? x.own[k - 1] : m_pgm.code[x.at + k];
            if (!x.nown)
                moved[x.at + k] = at + k;
        }
        x.at = at;
        x.len = len;
        at += len;
    }
    for (int32_t i = first; i >= 0; i = ins[i].next)
        if (is_jump(i))
            out[ins[i].at + 1] = ins[target_of(i)].at;
    int32_t n = 0;
    for (int32_t i = 0; i < m_cc->nfix; i++) {
        cc_fix f = m_cc->fix[i];
        f.word = moved[f.word];
        if (f.word >= 0)
            m_cc->fix[n++] = f;
    }
    m_cc->nfix = n;
    m_pgm.code = out;
    m_pgm.pc = at;
}

// ---- rules. Each tells whether it changed something.

// x = e followed by x: the store leaves x on top anyway.
static bool store_pop_load(int32_t i)
{
    if (ins[i].op != 5)
        return false;
    int32_t pop = follows(i, 2), load = pop >= 0 ? follows(pop, 7) : -1;
    if (load < 0 || operand(load, 0) != operand(i, 0))
        return false;
    remove(pop);
    remove(load);
    return true;
}

// The one before, passing over ++ and --; -1 where a jump leads in between.
static int32_t before_increments(int32_t i)
{
    for (;;) {
        if (ins[i].ntargets)
            return -1;
        i = ins[i].prev;
        if (i < 0 || (ins[i].op != 8 && ins[i].op != 9))
            return i;
    }
}

static bool unused_load(int32_t i)
{
    if (ins[i].op != 2)
        return false;
    int32_t load = before_increments(i);
    if (!is(load, 7))
        return false;
    remove(i);
    remove(load);
    return true;
}

// Where a chain of jumps ends.
static bool thread(int32_t i)
{
    int32_t t = target_of(i);
    if (ins[t].op != 1 || target_of(t) == t)
        return false;
    while (ins[t].op == 1 && target_of(t) != t) {
        if (++steps > maxsteps) {
            spout21at(3, "optimizer:  too many recursive goto's\n");
            spout21at(3, "            (program probably contains endless loop)\n");
            return false;
        }
        t = target_of(t);
    }
    forget_target(i);
    ins[i].target = t;
    ins[t].ntargets++;
    return true;
}

static bool jumps(int32_t i)
{
    if (!is_jump(i))
        return false;
    int32_t t = target_of(i);
    if (t == ins[i].next && ins[i].op != 28) { // 28 also refuses what has no truth
        if (ins[i].op == 1)
            remove(i);
        else
            become(i, 2, 1);
        return true;
    }
    if (steps <= maxsteps && thread(i))
        return true;
    if (ins[i].op == 1 && ins[t].op == 3) {
        become(i, 3, 1);
        return true;
    }
    return false;
}

static bool store_and_pop(int32_t i)
{
    if (ins[i].op != 2)
        return false;
    int32_t store = before_increments(i);
    if (store < 0)
        return false;
    int32_t op = ins[store].op;
    int32_t fused = op == 5 ? 6 : op == 24 ? 44 : op == 92 ? 95 : op == 94 ? 96 : 0;
    if (!fused)
        return false;
    ins[store].op = fused;
    remove(i);
    return true;
}

static bool compare_and_jump(int32_t i)
{
    int32_t p = ins[i].prev;
    if (ins[i].op != 28 || ins[i].ntargets || p < 0 || ins[p].op < 14 || ins[p].op > 19)
        return false;
    become(i, 10, 2);
    return true;
}

static bool load_twice(int32_t i)
{
    int32_t second = ins[i].op == 7 ? follows(i, 7) : -1;
    if (second < 0 || operand(second, 0) != operand(i, 0))
        return false;
    become(second, 78, 1);
    return true;
}

static bool load_and_drill(int32_t i)
{
    int32_t drill = ins[i].op == 7 ? follows(i, 140) : -1;
    if (drill < 0)
        return false;
    int32_t more = follows(drill, 140), slot = operand(i, 0);
    if (more < 0 && is(ins[drill].next, 140))
        return false;
    ins[i].own[0] = slot;
    ins[i].own[1] = operand(drill, 0);
    if (more >= 0)
        ins[i].own[2] = operand(more, 0);
    ins[i].nown = more >= 0 ? 3 : 2;
    ins[i].op = more >= 0 ? 142 : 141;
    remove(drill);
    if (more >= 0)
        remove(more);
    return true;
}

static bool dead_code(int32_t i)
{
    if (!ends_flow(i))
        return false;
    bool any = false;
    while (ins[i].next >= 0 && !ins[ins[i].next].ntargets) {
        remove(ins[i].next);
        any = true;
    }
    return any;
}

// A jump that alone leads to a block of code takes the block in its place. This brings the
// prologue in front of the body.
static bool move_block(int32_t i)
{
    if (ins[i].op != 1)
        return false;
    int32_t b = target_of(i), before = ins[b].prev;
    if (b == i || ins[b].ntargets != 1 || before < 0 || !ends_flow(before) || before == i)
        return false;
    int32_t e = b;
    while (!ends_flow(e)) {
        if (e == i)
            return false;
        e = ins[e].next;
        if (e < 0) {
            spout21at(3, "optimize:  unterminated block not optimized\n");
            return false;
        }
    }
    if (e == i)
        return false;
    int32_t after = ins[e].next;
    ins[before].next = after;
    if (after >= 0)
        ins[after].prev = before;
    int32_t next = ins[i].next;
    ins[i].next = b;
    ins[b].prev = i;
    ins[e].next = next;
    if (next >= 0)
        ins[next].prev = e;
    remove(i);
    return true;
}

using opt_rule = bool (*)(int32_t);
static const opt_rule rules[] = {unused_load, jumps,          store_and_pop, compare_and_jump,
                                 load_twice,  load_and_drill, dead_code,     move_block};

// One pass over the code; whether anything changed.
static bool second_pass()
{
    bool any = false;
    for (int32_t i = first; i >= 0;) {
        breakout();
        bool fired = false;
        for (opt_rule rule : rules)
            if (rule(i)) {
                fired = any = true;
                break;
            }
        if (!fired)
            i = ins[i].next;
        else if (ins[i].gone) // back to what may match now
            i = ins[i].prev >= 0 ? resolve(ins[i].prev) : first;
    }
    return any;
}

void cc_optimize()
{
    load_code();
    steps = 0;
    for (int32_t i = first; i >= 0; i = ins[i].next)
        while (store_pop_load(i)) {
        }
    while (second_pass()) {
    }
    store_code();
}
