// tests/fuzz/fuzz_mosacode.cpp - code images of any making: the check looks at each without
// harm, and what it lets through runs without harm and leaves the stack and the values as they
// were.
//
// An image whose first byte is even is taken as it is; from an odd one instructions are built
// that are whole and point to something, so that many get past the check.
#include "../mosa_asm.h"
#include "mosa/classdef.h"
#include <csignal>
#include <memory>
#include <sys/time.h>

static const uint8_t *at, *end;

static uint32_t draw(uint32_t n)
{
    return at < end ? *at++ % n : 0;
}

static matobj *helper, *pairdef;

static void setup()
{
    session();
    if (mosastakinit(1))
        abort();
    signal(SIGALRM, [](int) { stopflag = 1; });
    s_outlev = 5;
    assembler g;
    helper = g.op("argc", 1).op("ld", 0).op("ref").op("ret").store("g");
    std::vector<int32_t> w{1210, 1210, sd_mark, 2, 0, 10, 22, 0, 16, 25};
    w.insert(w.end(), {1, MT_REAL, OT_SCALAR, 0, -1, -1, 1, MT_STRING, OT_MATRIX, 0, -1, -1});
    w.insert(w.end(), {2, 2, 'a', 2, 2, 'b', 3});
    pairdef = mo_allocfcn("", "pair", "", int64_t(w.size()) * 4);
    memcpy(pairdef->data, w.data(), w.size() * 4);
    pairdef->rows = int32_t(w.size());
    pairdef->cols = MT_STRUCTDEF;
    if (!m_mkglobalmat("x", MO_REAL, 2, 2) || !m_mkglobalmat("y", MO_STRING, 1, 2))
        abort();
    fillwithmissing(findglobalmat("x"));
}

static const char *const numbers[] = {"0", "1", "2", "-1", "0.5", "."};

// The k-th instruction, with operands that make sense of themselves; jumps go forward.
static void instruction(assembler *s, int32_t k)
{
    static const int32_t safe[] = {0, 1, 15, 50}; // abs, cols, rows, sum
    // Two of three are of a kind that seldom fails, or runs would end at once.
    static const int32_t gentle[] = {7,  7,   7,  31, 31,  40,  78,  79, 80,  5,  6,
                                     2,  58,  74, 62, 70,  32,  21,  14, 64,  72, 20,
                                     71, 113, 37, 99, 107, 111, 93,  91, 22,  94, 92,
                                     96, 118, 8,  10, 28,  1,   120, 34, 152, 59};
    int32_t op = draw(3) ? gentle[draw(sizeof gentle / sizeof *gentle)] : int32_t(draw(m_nops));
    const m_oprow &row = m_optable[op];
    bool wide = op == 86 || op == 87 || op == 88; // their results may be of any size
    if (!row.name || strpbrk(row.operands, "DS") || op == 82 || op == 139 || wide ||
        (op >= 163 && op <= 168) || op == 41)
        return;
    if (op == 31 || op == 84) {
        s->op(row.name, 0);
        uint32_t which = draw(6);
        s->numbers.emplace_back(s->w.size() - 1, which == 5 ? misval : atof(numbers[which]));
        return;
    }
    s->w.push_back(op);
    for (const char *o = row.operands; *o; o++) {
        static const char *const names[] = {"x", "y", "g", "pair"};
        switch (*o) {
        case 't':
            s->w.push_back(0);
            s->jumps.emplace_back(s->w.size() - 1, std::to_string(k + 1 + int32_t(draw(8))));
            break;
        case 'T': s->inline_text(names[draw(4)]); break;
        case 'l':
            s->w.push_back(0);
            s->literal(names[draw(4)]);
            break;
        case 'c': s->w.insert(s->w.end(), {0, 0, 0}); break;
        case 'b': s->w.push_back(safe[draw(4)]); break;
        default: s->w.push_back(int32_t(draw(5)));
        }
    }
}

// What has been built so far with an end to it; jumps to what is not there go to the end.
static assembler ended(assembler s)
{
    s.label("end").op("ldvoid").op("ret");
    for (auto &[word, name] : s.jumps)
        if (!s.labels.count(name))
            name = "end";
    s.finish();
    return s;
}

// Instructions that the check refuses where they stand are left out again.
static assembler build()
{
    assembler s;
    s.op("argc", 3);
    constexpr int32_t most = 60;
    for (int32_t k = 0; k < most && at < end; k++) {
        assembler more = s;
        more.label(std::to_string(k));
        instruction(&more, k);
        assembler whole = ended(more);
        if (!m_checkcode(whole.w.data(), int32_t(whole.w.size())))
            s = more;
        else
            s.label(std::to_string(k));
    }
    return ended(s);
}

static void run_image(const std::vector<int32_t> &w)
{
    matobj *f = mo_allocfcn("", "fuzzed", "", int64_t(w.size()) * 4);
    memcpy(f->data, w.data(), w.size() * 4);
    f->rows = int32_t(w.size());
    static const char *const values[] = {"R1,1:2", "R2,2:1 2 3 .", "C1,2:1+1i .", "S1,2:ab|c",
                                         "P1,1:1", "R1,3:1 2 3",   "P1,1:0"};
    std::vector<matobj *> args{value_of(values[draw(7)]), value_of(values[draw(7)]),
                               draw(8) ? value_of(values[draw(7)]) : helper};
    itimerval limit{{0, 0}, {0, 300000}};
    setitimer(ITIMER_REAL, &limit, nullptr);
    matobj **top = m_stak;
    call_with(f, args);
    limit = {};
    setitimer(ITIMER_REAL, &limit, nullptr);
    stopflag = 0;
    if (m_stak != top || helper->links != 1 || pairdef->links != 1)
        abort();
    mo_freefcn(f);
    m_newstatement();
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *p, size_t n)
{
    static const bool ready = (setup(), true);
    if (!ready || n < 2)
        return 0;
    at = p + 1;
    end = p + n;
    std::vector<int32_t> w{1210, 1210};
    if (*p % 2)
        w = build().w;
    else {
        w.resize(2 + (n - 1) / 4);
        memcpy(w.data() + 2, p + 1, (n - 1) / 4 * 4);
    }
    auto words = int32_t(w.size());
    auto copy = std::make_unique<int32_t[]>(size_t(words)); // its end is watched
    memcpy(copy.get(), w.data(), size_t(words) * 4);
    const char *why = m_checkcode(copy.get(), words);
    m_disasm(copy.get(), words);
    m_cleanpgm(copy.get(), words);
    if (!why)
        run_image(w);
    return 0;
}
