// The check that every code image passes before it first runs.
//
// First the words are walked once: known instructions, whole, texts ended, pools well formed.
// Then the flow is followed from word 2 with the least number of values each instruction can
// find on the frame, so that nothing pops below its frame or reads a slot that is not there,
// and every jump lands on an instruction. Code that no path reaches is not looked at twice.
#include "mosa/builtins.h"
#include "mosa/image.h"
#include <cstdlib>
#include <vector>

namespace
{

enum : int32_t { NOT_OP = -2, UNSEEN = -1 };
// What is known of optional arguments where it is not a count of settled ones: nothing is
// pending, or the stack is as it was at entry, so that arguments may still be counted.
enum : int32_t { SETTLED = -1, ENTRY = -2 };

struct checker {
    const int32_t *code;
    int32_t words;
    std::vector<int32_t> depth; // by word: least depth, UNSEEN, or NOT_OP inside instructions
    std::vector<int32_t> opt;   // optional arguments settled so far, SETTLED or ENTRY
    std::vector<int32_t> todo;
    std::vector<uint8_t> pool; // by word: 1 a number, 2 the count of a text
    const char *why = nullptr;
};

// What an instruction takes and how the depth changes.
struct effect {
    int32_t takes, adds;
};

const char *const unfit = "instruction that does not belong in code";

bool ended_text(const int32_t *w)
{
    return w[0] > 0 && w[0] <= 0x10000000 && memchr(w + 1, 0, size_t(w[0]) * 4) != nullptr;
}

bool mark_pool(checker *c, int32_t at)
{
    const int32_t *p = c->code + at;
    if (p[0] == 38) {
        for (int32_t i = 0; i < p[1]; i++)
            c->pool[size_t(at + 2 + 2 * i)] = 1;
        return true;
    }
    int32_t word = at + 2;
    for (int32_t i = 0; i < p[1]; i++) {
        if (!ended_text(c->code + word))
            return false;
        c->pool[size_t(word)] = 2;
        word += 1 + c->code[word];
    }
    return true;
}

// Lays out where instructions begin and what the pools hold.
void lay_out(checker *c)
{
    for (int32_t at = 2; at < c->words;) {
        const int32_t *p = c->code + at;
        int32_t n = m_lofmop(p, c->words - at);
        if (!n) {
            c->why = "unknown or cut instruction";
            return;
        }
        c->depth[size_t(at)] = UNSEEN;
        if ((p[0] == 38 || p[0] == 39) && !mark_pool(c, at)) {
            c->why = "text without an end";
            return;
        }
        at += n;
    }
}

struct operand_ctx {
    checker *c;
    int32_t at;
};

void check_operand(char letter, int32_t word, void *arg)
{
    auto *x = static_cast<operand_ctx *>(arg);
    checker *c = x->c;
    int32_t v = c->code[x->at + word];
    bool good = true;
    switch (letter) {
    case 't': good = v >= 2 && v < c->words && c->depth[size_t(v)] != NOT_OP; break;
    case 's': good = v >= 0 && v < c->depth[size_t(x->at)]; break;
    case 'd': good = v >= 2 && v < c->words && c->pool[size_t(v)] == 1; break;
    case 'l': good = v >= 2 && v < c->words && c->pool[size_t(v)] == 2; break;
    case 'T': good = ended_text(c->code + x->at + word); break;
    case 'b': good = v >= 0 && v < m_maxbiid; break;
    case 'n':
    case 'k': good = v >= 0 && v <= m_stakslots * 1024; break;
    default: break;
    }
    if (!good)
        c->why = letter == 't'   ? "jump to no instruction"
                 : letter == 's' ? "slot that is not there"
                 : letter == 'T' ? "text without an end"
                                 : "operand out of range";
}

effect effect_of(const int32_t *p)
{
    switch (p[0]) {
    case 1:
    case 8:
    case 9:
    case 33:
    case 89:
    case 121: return {0, 0};
    case 2:
    case 10:
    case 28:
    case 6: return {1, -1};
    case 3:
    case 5:
    case 11:
    case 12:
    case 26:
    case 27:
    case 29:
    case 56:
    case 75:
    case 76:
    case 83:
    case 85:
    case 90:
    case 20:
    case 71:
    case 72:
    case 41:
    case 112:
    case 113:
    case 140:
    case 150:
    case 151:
    case 152:
    case 153:
    case 154:
    case 163:
    case 167: return {1, 0};
    case 78: return {1, 1};
    case 24:
    case 94:
    case 118: return {2, -1};
    case 44:
    case 96: return {2, -2};
    case 92:
    case 115:
    case 117: return {3, -2};
    case 95: return {3, -3};
    case 116: return {4, -3};
    case 91: return {3, -2};
    case 25:
    case 55: return {p[2], 1 - p[2]};
    case 119: return {p[1] + 1, -p[1]};
    case 164: return {p[6], 1 - p[6]};
    case 165: return {p[3], 1 - p[3]};
    case 168: return {p[2 + p[1]], 1 - p[2 + p[1]]};
    case 30: return {0, 0};
    case 7:
    case 31:
    case 34:
    case 40:
    case 42:
    case 57:
    case 79:
    case 80:
    case 81:
    case 84:
    case 114:
    case 120:
    case 138:
    case 141:
    case 142:
    case 166: return {0, 1};
    case 4:
    case 35: return {0, 0};
    default: break;
    }
    const char *operands = m_optable[p[0]].operands;
    if (operands[0] == 'T')
        return {0, 1}; // allocation of a local
    return {2, -1};    // binary operators
}

// The instruction at word is reached with this depth.
void reach(checker *c, int64_t word, int32_t depth, int32_t opt)
{
    if (word >= c->words || c->depth[size_t(word)] == NOT_OP) {
        c->why = "code runs off its end";
        return;
    }
    int32_t &d = c->depth[size_t(word)];
    int32_t &o = c->opt[size_t(word)];
    if (d != UNSEEN && o != opt) {
        if (o >= 0 || opt >= 0)
            c->why = "optional arguments are not settled on every way";
        opt = SETTLED;
    }
    if (d != UNSEEN && d <= depth && o == opt)
        return;
    d = d != UNSEEN && d < depth ? d : depth;
    o = opt;
    c->todo.push_back(int32_t(word));
}

// Optional arguments are settled one after the other behind opcode 35: opt then holds how many
// are there, and in its upper bits how many there will be.
struct arguments {
    int32_t settled, most;
};

arguments unpack(int32_t opt)
{
    return {opt & 0x7fff, opt >> 15};
}

bool is_olc(int32_t op)
{
    return op != 155 && m_optable[op].operands[0] == 'k';
}

// Depth and pending optional arguments behind the instructions that deal with arguments.
// False when the instruction is not one of them.
bool step_arguments(checker *c, const int32_t *p, int32_t *depth, int32_t *opt)
{
    if (p[0] == 4 || p[0] == 35) {
        int32_t least = p[1], most = p[0] == 4 ? p[1] : p[2];
        if (most < least || most > 0x7fff || *opt != ENTRY)
            c->why = "argument counts out of place or range";
        *depth = least;
        *opt = most > least ? least | most << 15 : int32_t(SETTLED);
        return true;
    }
    if (!is_olc(p[0]))
        return false;
    arguments a = unpack(*opt);
    if (*opt < 0 || p[1] != a.settled + 1) {
        c->why = "optional argument out of order";
        return true;
    }
    *depth = a.settled + 1;
    *opt = a.settled + 1 == a.most ? int32_t(SETTLED) : (a.settled + 1) | a.most << 15;
    return true;
}

void step(checker *c, int32_t at)
{
    const int32_t *p = c->code + at;
    int32_t op = p[0], depth = c->depth[size_t(at)], opt = c->opt[size_t(at)];
    if (op == 38 || op == 39 || op == 82 || op == 139) {
        c->why = unfit;
        return;
    }
    operand_ctx x{c, at};
    m_walkoperands(p, check_operand, &x);
    if (c->why)
        return;
    int32_t next = at + m_lofmop(p, c->words - at);
    if (op == 155) // raises an error whatever comes
        return;
    if (!step_arguments(c, p, &depth, &opt)) {
        if (op != 1 && op != 89 && op != 121 && op != 33) {
            if (opt >= 0) {
                c->why = "optional arguments are not settled";
                return;
            }
            opt = SETTLED;
        }
        effect e = effect_of(p);
        if (e.takes > depth) {
            c->why = "stack empty";
            return;
        }
        depth += e.adds;
    }
    if (c->why || op == 3 || op == 30)
        return;
    if (op == 1 || op == 10 || op == 28)
        reach(c, p[1], depth, opt);
    if (op != 1)
        reach(c, next, depth, opt);
}

} // namespace

const char *m_checkcode(const int32_t *code, int32_t words)
{
    if (!code || words < 3)
        return "no code";
    if (code[0] < 890 || code[0] > m_format)
        return "format of another time";
    checker c{code,
              words,
              std::vector<int32_t>(size_t(words), NOT_OP),
              std::vector<int32_t>(size_t(words), SETTLED),
              {},
              std::vector<uint8_t>(size_t(words)),
              nullptr};
    lay_out(&c);
    if (!c.why)
        reach(&c, 2, 0, ENTRY);
    while (!c.why && !c.todo.empty()) {
        int32_t at = c.todo.back();
        c.todo.pop_back();
        step(&c, at);
    }
    return c.why;
}
