// mosa/image.h - code images: rows of instructions, walking, checking, listing.
//
//   word 0      1210, the format
//   word 1      version in force at compilation, at least 900
//   word 2 on   instructions; execution starts here
//   at the end  the pools: opcode 39 and its strings, opcode 38 and its numbers, which stand on
//               an 8-byte boundary (opcode 82 fills); reached by index only, never executed
//
// A function is laid out as a jump to the prologue, the body, opcode 30, the prologue, a jump
// back to the body. The prologue pushes one slot for every symbol in symbol order: optional
// arguments that were not passed, then locals, globals and functions.
//
// Every image is checked once before it first runs, whoever made it.
#pragma once
#include "mosa/values.h"
#include <cstdint>
#include <string>

inline constexpr int32_t m_format = 1210;
inline constexpr int32_t m_nops = 169;

struct m_oprow {
    int16_t op;
    const char *name;     // null for a number without a row
    const char *operands; // letters, ops.def
    void (*handler)();    // null: decoded by the machine's loop, data, or not there
    const char *meaning;
};
extern m_oprow m_optable[m_nops]; // indexed by opcode

// Length in words of the instruction at p, of which left words remain in the image; 0 when the
// opcode is unknown or the instruction does not fit. Pools count as one instruction.
int32_t m_lofmop(const int32_t *p, int64_t left);

// Calls each operand of the instruction at p: the letter and the index of the word.
using m_operand_fn = void (*)(char letter, int32_t word, void *arg);
void m_walkoperands(const int32_t *p, m_operand_fn fn, void *arg);

// Why code is not fit to run, or null: known opcodes, lengths, jump targets on instructions,
// slots below what the prologue can make, pool indices on pool values, built-in ids that exist.
const char *m_checkcode(const int32_t *code, int32_t words);
void m_cleanpgm(int32_t *code, int32_t words); // forgets cached links
// The image in the other byte order, in place; foreign tells that it is in the other order
// now. Cached links of member functions and statics are forgotten. 0, or 9711 with words.
[[nodiscard]] int32_t m_revpgm(int32_t *code, int32_t words, bool foreign);
// The same for the image of a struct (MT_STRUCTDEF) or class definition, or, by eltype, of any
// function. What a class holds for the running program must be clear beforehand.
[[nodiscard]] int32_t m_revstructdef(int32_t *code, int32_t words, bool foreign);
[[nodiscard]] int32_t m_revclassdef(int32_t *code, int32_t words, bool foreign);
[[nodiscard]] int32_t m_revimage(int32_t *code, int32_t words, int32_t eltype, bool foreign);
// One line an instruction: word, name, operands, literals spelt out.
std::string m_disasm(const int32_t *code, int32_t words);

// The address cached in three words: stamp, then 64 bits.
inline void *m_linkget(const int32_t *w)
{
    void *p;
    memcpy(&p, w + 1, sizeof p);
    return p;
}
inline void m_linkput(int32_t *w, int32_t stamp, void *p)
{
    w[0] = stamp;
    memcpy(w + 1, &p, sizeof p);
}
