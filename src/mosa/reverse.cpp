// Code images in the other byte order, for files that any machine is to read.
#include "interp/messages.h"
#include "mosa/classdef.h"
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
    void turn64()
    {
        int32_t low = code[at];
        code[at] = swapped(code[at + 1]);
        code[at + 1] = swapped(low);
        at += 2;
    }
    bool numbers()
    {
        if (!room(1))
            return false;
        int64_t n = turn();
        if (n < 0 || !room(2 * n))
            return false;
        for (int64_t i = 0; i < n; i++)
            turn64();
        return true;
    }
    // A record of so many words, the first of which was turned; a last pair may be one number.
    bool record(int32_t length, bool pair)
    {
        if (!room(length - 1))
            return false;
        for (int32_t n = length - 1 - 2 * pair; n > 0; n--)
            turn();
        if (pair)
            turn64();
        return true;
    }
    // A count of words and the words, so many of the count being no words of the text.
    bool counted(int32_t more)
    {
        if (!room(1))
            return false;
        int64_t n = int64_t(turn()) - more;
        if (n < 0 || !room(n))
            return false;
        at += n;
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

int32_t m_revstructdef(int32_t *code, int32_t words, bool foreign)
{
    turner t{code, words, 0, foreign};
    if (words <= SD_FIRST || (foreign ? swapped(code[SD_MARK]) : code[SD_MARK]) != sd_mark) {
        spout21at(3, "not struct def\n");
        return rc_notcode;
    }
    while (t.at < SD_FIRST)
        t.turn();
    while (t.at < words) {
        int32_t kind = t.turn();
        if (kind == 3 && t.at == words)
            return 0;
        if (kind == 0 ? !t.record(3, false)
            : kind == 1 ? !t.record(6, false)
            : kind == 2 ? !t.counted(1)
                        : true)
            break;
    }
    spout21at(3, "revstructdef: invalid opcode\n");
    return rc_notcode;
}

int32_t m_revclassdef(int32_t *code, int32_t words, bool foreign)
{
    turner t{code, words, 0, foreign};
    bool good = words > CW_HEAD;
    if (good) {
        t.turn();
        good = t.record(CW_HEAD, true);
    }
    while (good && t.at < words) {
        int32_t kind = t.turn();
        switch (kind) {
        case CR_VAR: good = t.record(5, false); break;
        case CR_STATIC: good = t.record(7, true); break;
        case CR_FCN:
        case CR_VIRT: good = t.record(9, true); break;
        case CR_TYPE: good = t.record(6, false); break;
        case CR_TEXT: good = t.counted(0); break;
        case CR_END:
            if (t.at == words)
                return 0;
            good = false;
            break;
        default: spout21at(3, "classdefrevbytes: error 2\n"); return rc_notcode;
        }
    }
    spout21at(3, "classdefrevbytes: error 1\n");
    return rc_notcode;
}

int32_t m_revimage(int32_t *code, int32_t words, int32_t eltype, bool foreign)
{
    return eltype == MT_STRUCTDEF  ? m_revstructdef(code, words, foreign)
           : eltype == MT_CLASSDEF ? m_revclassdef(code, words, foreign)
                                   : m_revpgm(code, words, foreign);
}
