// The rows of instructions; lengths, operands, cleaning and listing of code images.
#include "mosa/image.h"
#include "mosa/builtins.h"
#include "mosa/vmint.h"
#include <cstdio>

// ops.def names the shared allocation handlers, the cases of the machine's loop and data.
m_oprow m_optable[m_nops];

static const m_oprow op_rows[] = {
#define OP(number, name, operands, handler, meaning) {number, name, operands, handler, meaning},
#include "mosa/ops.def"
#undef OP
};

// The table by number is filled before anything runs.
static const bool table_filled = [] {
    for (const m_oprow &row : op_rows)
        m_optable[row.op] = row;
    return true;
}();

static const char *operands_of(int32_t op)
{
    if (op < 0 || op >= m_nops || !m_optable[op].name)
        return nullptr;
    return m_optable[op].operands;
}

// Words of one operand at p; 0 when it does not fit in left.
static int64_t operand_length(char letter, const int32_t *p, int64_t left)
{
    if (left < 1)
        return 0;
    if (letter == 'c')
        return left >= 3 ? 3 : 0;
    if (letter == 'T')
        return p[0] >= 0 && p[0] < left ? 1 + int64_t(p[0]) : 0;
    if (letter == 'D')
        return p[0] >= 0 && 2 * int64_t(p[0]) < left ? 1 + 2 * int64_t(p[0]) : 0;
    if (letter != 'S')
        return 1;
    int64_t at = 1;
    for (int32_t i = 0; i < p[0]; i++) {
        if (at >= left || p[at] < 0 || p[at] >= left - at)
            return 0;
        at += 1 + p[at];
    }
    return p[0] < 0 ? 0 : at;
}

int32_t m_lofmop(const int32_t *p, int64_t left)
{
    const char *operands = left > 0 ? operands_of(p[0]) : nullptr;
    if (!operands)
        return 0;
    int64_t at = 1;
    for (; *operands; operands++) {
        int64_t n = operand_length(*operands, p + at, left - at);
        if (!n)
            return 0;
        at += n;
    }
    return int32_t(at);
}

void m_walkoperands(const int32_t *p, m_operand_fn fn, void *arg)
{
    const char *operands = operands_of(p[0]);
    int64_t at = 1;
    for (; operands && *operands; operands++) {
        fn(*operands, int32_t(at), arg);
        at += operand_length(*operands, p + at, INT32_MAX);
    }
}

void m_cleanpgm(int32_t *code, int32_t words)
{
    for (int64_t at = 2; at < words;) {
        int32_t n = m_lofmop(code + at, words - at);
        if (!n)
            return;
        const char *operands = operands_of(code[at]);
        if (operands[0] == 'c')
            memset(code + at + 1, 0, 3 * sizeof(int32_t));
        at += n;
    }
}

// ---- listing

static void append(std::string *out, const char *fmt, auto... args)
{
    char text[80];
    snprintf(text, sizeof text, fmt, args...);
    *out += text;
}

static void list_text(std::string *out, const int32_t *words)
{
    *out += " \"";
    out->append(reinterpret_cast<const char *>(words + 1),
                strnlen(reinterpret_cast<const char *>(words + 1), size_t(words[0]) * 4));
    *out += '"';
}

static void list_pools(std::string *out, const int32_t *p)
{
    if (p[0] == 39) {
        int64_t at = 2;
        for (int32_t i = 0; i < p[1]; i++) {
            list_text(out, p + at);
            at += 1 + p[at];
        }
        return;
    }
    for (int32_t i = 0; i < p[1]; i++) {
        double z;
        memcpy(&z, p + 2 + 2 * i, sizeof z);
        append(out, " %.17g", z);
    }
}

static void list_operand(std::string *out, const int32_t *code, int32_t words, char letter,
                         const int32_t *w)
{
    double z;
    switch (letter) {
    case 'T': list_text(out, w); break;
    case 'c': break;
    case 't': append(out, " ->%d", *w); break;
    case 's': append(out, " [%d]", *w); break;
    case 'd':
        if (*w < 2 || *w > words - 2)
            break;
        memcpy(&z, code + *w, sizeof z);
        append(out, " %.17g", z);
        break;
    case 'l':
        if (*w >= 2 && *w < words && code[*w] >= 0 && code[*w] < words - *w)
            list_text(out, code + *w);
        break;
    default: append(out, " %d", *w);
    }
}

std::string m_disasm(const int32_t *code, int32_t words)
{
    std::string out;
    for (int64_t at = 2; at < words;) {
        const int32_t *p = code + at;
        int32_t n = m_lofmop(p, words - at);
        if (!n) {
            append(&out, "%5d  ? %d\n", int32_t(at), p[0]);
            return out;
        }
        append(&out, "%5d  %s", int32_t(at), m_optable[p[0]].name);
        if (p[0] == 38 || p[0] == 39)
            list_pools(&out, p);
        else {
            struct ctx {
                std::string *out;
                const int32_t *code, *p;
                int32_t words;
            } c{&out, code, p, words};
            m_walkoperands(
                p,
                [](char letter, int32_t word, void *arg) {
                    auto *x = static_cast<ctx *>(arg);
                    list_operand(x->out, x->code, x->words, letter, x->p + word);
                },
                &c);
        }
        out += '\n';
        at += n;
    }
    return out;
}
