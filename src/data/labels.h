// data/labels.h - value labels, variable labels, characteristics: records of the dm store.
//
// A value-label table is one block, in memory and in the file: n, txtlen (int32), then n
// offsets, n values in ascending order, and the texts in the order they were added.
#pragma once
#include <cstdint>

struct vltable;  // int32 n, txtlen, off[n], val[n], char txt[txtlen]
inline constexpr int32_t vl_maxn = 65536, vl_maxtext = 32000, char_maxlen = 67783;

vltable *vlfind(const char *name);  // or null
vltable *vlallocate(const char *name, int32_t n, int32_t textlen);
vltable *vladdlab(vltable *table, int32_t value, const char *text);  // replaces the pointer
vltable *vlrmlab(vltable *table, int32_t value);
// Index of a value, or -1 minus where it would stand. Copies its text when out is not null,
// at most maxlen bytes with the terminator (no bound above vl_maxtext).
int32_t vlfindval(const vltable *table, double value, char *out, int32_t maxlen);
int32_t vlfindtxt(const vltable *table, const char *text, int32_t *value);  // 0 found, 1 not
void vlgetofi(const vltable *table, int32_t i, const char **text, int32_t *value);
int32_t vlgetcount(const vltable *table);
int32_t vlmaxlen(const vltable *table);      // longest text
[[nodiscard]] int32_t vlwhy();               // code of the last failure; words of 134
// A variable carries this label, or will once another label language is shown.
bool vl_inuse(const char *name, int32_t nvars);
inline constexpr char vl_waiting[] = "_vallab_";  // its characteristic begins so
[[nodiscard]] int32_t vldrop(const char *name);
// A table built at once from pairs in any order. Later pairs of a value replace earlier ones.
struct vlpair {
    int32_t value;
    const char *text;
};
vltable *vlbuild(const char *name, const vlpair *pairs, int32_t n);

// ---- characteristics: text named by owner (a variable or _dta) and name
const char *charfind(const char *owner, const char *name, uint64_t *length);  // or null
[[nodiscard]] int32_t charsave(const char *owner, const char *name, const char *text);
int32_t charload(const char *owner, const char *name, char *out, int32_t max);  // length
// Walks all characteristics; null starts. Gives owner and name (33 bytes each) and the text.
const void *charnext(const void *at, char *owner, char *name, const char **text);
void charrm(const char *owner);              // all of one owner; null of everybody
[[nodiscard]] int32_t charrename(const char *owner, const char *newowner);
[[nodiscard]] int32_t charcopy(const char *owner, const char *toowner);

// ---- variable labels, at most 80 characters
void getvarlab(int32_t var, char *out);      // 81 bytes
[[nodiscard]] int32_t putvarlab(int32_t var, const char *text);
void renamevarlab(const char *oldname, const char *newname);
void rmvarlab(const char *name);
