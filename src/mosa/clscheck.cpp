// Images of struct and class definitions: texts and the checks before one is believed.
#include "mosa/classdef.h"
#include "mosa/image.h"
#include <vector>

const char *sd_text(const int32_t *code, int32_t word)
{
    return word < 0 ? "" : reinterpret_cast<const char *>(code + word + 2);
}

const char *cls_text(const int32_t *code, int32_t word)
{
    return word < 0 ? "" : reinterpret_cast<const char *>(code + word + 2);
}

namespace
{

// The first word of each record by its place, -1 elsewhere.
using places = std::vector<int8_t>;

bool ended(const int32_t *text, int64_t words)
{
    return words > 0 && memchr(text, 0, size_t(words) * 4) != nullptr;
}

// Place of a text, or -1 where none is needed.
bool is_text(const places &at, int32_t word, int8_t kind, bool optional)
{
    return (optional && word == -1) ||
           (word >= 0 && word < int32_t(at.size()) && at[size_t(word)] == kind);
}

int64_t sd_length(const int32_t *p, int64_t left)
{
    switch (p[0]) {
    case 0: return 3;
    case 1: return 6;
    case 2: return left >= 2 && p[1] >= 2 && p[1] < left && ended(p + 2, p[1] - 1) ? 1 + p[1] : 0;
    case 3: return 1;
    default: return 0;
    }
}

int64_t cls_length(const int32_t *p, int64_t left)
{
    switch (p[0]) {
    case CR_VAR: return 5;
    case CR_STATIC: return 7;
    case CR_FCN:
    case CR_VIRT: return 9;
    case CR_TYPE: return 6;
    case CR_TEXT:
        return left >= 2 && p[1] >= 1 && p[1] < left - 1 && ended(p + 2, p[1]) ? 2 + p[1] : 0;
    case CR_END: return 1;
    default: return 0;
    }
}

// Fills the places from word first; false unless the last record ends the image.
bool walk(const int32_t *code, int32_t words, int32_t first, int32_t end,
          int64_t (*length)(const int32_t *, int64_t), places *at)
{
    int64_t word = first;
    while (word < words) {
        int64_t n = length(code + word, words - word);
        if (n < 1 || n > words - word)
            return false;
        (*at)[size_t(word)] = int8_t(code[word]);
        if (code[word] == end)
            return word + 1 == words;
        word += n;
    }
    return false;
}

bool good_type(const int32_t *type, const places &at, int8_t typekind, int8_t textkind)
{
    bool named = type[1] == MT_STRUCT || type[1] == MT_CLASS;
    return type[1] >= MT_TRANSMORPHIC && type[1] <= MT_CLASS && type[2] >= 0 &&
           type[2] <= OT_VOID && is_text(at, type[4], textkind, !named) &&
           is_text(at, type[5], typekind, true);
}

bool good_run(const int32_t *code, const places &at, int32_t first, int32_t count, int8_t kind,
              int8_t other, int32_t length)
{
    if (count < 0)
        return false;
    for (int64_t k = 0; k < count; k++) {
        int64_t word = first + k * length;
        if (word < CW_HEAD || word >= int64_t(at.size()) ||
            (at[size_t(word)] != kind && at[size_t(word)] != other))
            return false;
        if (!is_text(at, code[word + 1], CR_TYPE, false) ||
            !is_text(at, code[word + 2], CR_TEXT, false))
            return false;
    }
    return true;
}

} // namespace

const char *sd_check(const int32_t *code, int32_t words)
{
    if (!code || words < SD_FIRST + 1 || code[SD_MARK] != sd_mark)
        return "not a struct definition";
    places at(size_t(words), -1);
    if (!walk(code, words, SD_FIRST, 3, sd_length, &at))
        return "struct definition cut or longer than told";
    if (code[SD_N] < 0 || SD_FIRST + 3 * int64_t(code[SD_N]) >= words)
        return "more members than room";
    for (int32_t word = SD_FIRST; word < words; word++) {
        bool member = at[size_t(word)] == 0;
        if (member != (word < SD_FIRST + 3 * code[SD_N] && (word - SD_FIRST) % 3 == 0))
            return "members out of place";
        if (member &&
            (!is_text(at, code[word + 1], 1, false) || !is_text(at, code[word + 2], 2, false)))
            return "member without type or name";
        if (at[size_t(word)] == 1 && !good_type(code + word, at, 1, 2))
            return "type out of range";
    }
    return nullptr;
}

const char *cls_check(const int32_t *code, int32_t words)
{
    if (!code || words < CW_HEAD + 1 || code[CW_MARK] != cls_mark || code[CW_WORDS] != words)
        return "not a class definition";
    places at(size_t(words), -1);
    if (!walk(code, words, CW_HEAD, CR_END, cls_length, &at))
        return "class definition cut or longer than told";
    if (!is_text(at, code[CW_NAME], CR_TEXT, false) || !is_text(at, code[CW_PARENT], CR_TEXT, true))
        return "class without a name";
    if (!good_run(code, at, code[CW_VARS], code[CW_NVARS], CR_VAR, CR_VAR, 5) ||
        !good_run(code, at, code[CW_STATICS], code[CW_NSTATICS], CR_STATIC, CR_STATIC, 7) ||
        !good_run(code, at, code[CW_FCNS], code[CW_NFCNS], CR_FCN, CR_VIRT, 9))
        return "members out of place";
    if (code[CW_FIRSTSLOT] < 1 || code[CW_FIRSTSLOT] > 1 << 20 || code[CW_NVARS] > 1 << 20)
        return "slots out of range";
    for (int32_t word = CW_HEAD; word < words; word++)
        if (at[size_t(word)] == CR_TYPE && !good_type(code + word, at, CR_TYPE, CR_TEXT))
            return "type out of range";
    return nullptr;
}
