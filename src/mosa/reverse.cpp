// Code images in the other byte order, for files that any machine is to read.
#include "interp/messages.h"
#include "mosa/image.h"
#include "output/print.h"
#include <bit>

static constexpr int32_t rc_notcode = 9711;

static int32_t swapped(int32_t w)
{
    return int32_t(__builtin_bswap32(uint32_t(w)));
}

// One image under way. Numbers that steer the walk are read in this machine's order: before
// they are turned when the image is native, after when it is foreign.
namespace
{
struct turner {
    int32_t *code;
    int64_t words, at;
    bool foreign;

    bool room(int64_t n) const { return n >= 0 && n <= words - at; }
    int32_t turn() // the word at at, in this machine's order
    {
        int32_t was = code[at];
        code[at++] = swapped(was);
        return foreign ? swapped(was) : was;
    }
    // Bytes are no numbers: only the count in front of them is turned.
    bool text()
    {
        if (!room(1))
            return false;
        int32_t n = turn();
        if (!room(n))
            return false;
        at += n;
        return true;
    }
    bool numbers()
    {
        if (!room(1))
            return false;
        int64_t n = turn();
        if (n < 0 || !room(2 * n))
            return false;
        for (int64_t i = 0; i < n; i++, at += 2) {
            int32_t low = code[at];
            code[at] = swapped(code[at + 1]);
            code[at + 1] = swapped(low);
        }
        return true;
    }
    bool strings()
    {
        if (!room(1))
            return false;
        for (int32_t n = turn(); n > 0; n--)
            if (!text())
                return false;
        return true;
    }
    bool cache(int32_t op)
    {
        if (!room(3))
            return false;
        for (int32_t i = 0; i < 3; i++, at++)
            code[at] = op == 163 || op == 164 ? 0 : swapped(code[at]);
        return true;
    }
    bool operand(char letter, int32_t op)
    {
        switch (letter) {
        case 'T': return text();
        case 'D': return numbers();
        case 'S': return strings();
        case 'c': return cache(op);
        default:
            if (!room(1))
                return false;
            turn();
            return true;
        }
    }
};
} // namespace

int32_t m_revpgm(int32_t *code, int32_t words, bool foreign)
{
    turner t{code, words, 0, foreign};
    for (int32_t head = 0; head < 2 && t.room(1); head++)
        t.turn();
    while (t.at < words) {
        int32_t op = t.turn();
        bool good = op > 0 && op < m_nops && m_optable[op].name;
        for (const char *o = good ? m_optable[op].operands : ""; good && *o; o++)
            good = t.operand(*o, op);
        if (!good) {
            spout21fat(3, "revpgm: invalid opcode %d\n", op);
            return rc_notcode;
        }
    }
    return 0;
}
