// mosa/classdef.h - images of struct and class definitions, and what is built from them.
//
// A definition is a function record: cols MT_STRUCTDEF or MT_CLASSDEF, data its words, name its
// name. Indices count words from the start of the image; -1 is none.
//
// Struct definition: 1210, version, 139, n; n members {0, type, text}; types
// {1, eltype, orgtype, isfcn, text of the struct or class name, type pointed to}; texts
// {2, words + 1, NUL-padded bytes}; 3.
//
// Class definition: 23 head words (clsw below), then records by their first word; 30 ends it.
//   CR_VAR     {0, type, text, access, flags}
//   CR_STATIC  {1, type, text, access, flags, 64 bits: the live value}
//   CR_FCN     {2, type, text, access, flags, nargs, least nargs, 64 bits: the function}
//   CR_VIRT    {3, type, text, access, flags, virtual index, stamp of the link, 64 bits: the
//              function that was linked}
//   CR_TYPE    {4, eltype, orgtype, isfcn, text, type pointed to}
//   CR_TEXT    {5, n, n words of NUL-padded bytes}
//   CR_END     {30}
// Variables, statics and functions stand in runs, in the order declared.
//
// Instances. A struct instance is a pointer array, one row a member; a class instance is a
// column of type MO_CLASS whose row 0 points to the definition (a function record, which tells
// an instance from an array) and whose other rows are the members, the parent's first. Values
// that programs hold are arrays of type MO_STRUCT or MO_CLASS, whose elements point to
// instances; a scalar is 1 by 1. Drilling takes row numbers: from 0 in a struct, from 1 in a
// class. Assignment copies members; subscripts and arguments share the instance.
#pragma once
#include "mosa/mtypes.h"
#include "mosa/values.h"

enum sdw : int32_t { SD_FORMAT, SD_VERSION, SD_MARK, SD_N, SD_FIRST };
inline constexpr int32_t sd_mark = 139;
enum clsw : int32_t {
    CW_FORMAT,
    CW_VERSION,
    CW_MARK,        // 169
    CW_WORDS,       // words of the image
    CW_STAMP,       // of this compilation: what was compiled against another stamp is refused
    CW_NAME,        // text
    CW_PARENT,      // text of the parent's name, -1
    CW_PARENTSTAMP, // stamp of the parent it was compiled with
    CW_NVARS,       // declared here
    CW_NSTATICS,
    CW_NFCNS, // CR_FCN and CR_VIRT together
    CW_VARS,  // word of the first CR_VAR
    CW_STATICS,
    CW_FCNS,
    CW_FIRSTSLOT, // row of the first own variable in an instance: 1, or behind the parent's
    CW_NVIRTUALS, // virtual functions, the parent's included
    CW_NEW,       // word of the record of new(), -1
    CW_DESTROY,   // word of the record of destroy(), -1
    CW_SPARE1,
    CW_SPARE2,
    CW_SPARE3,
    CW_RUNTIME, // 64 bits: what m_rt_prepareclassdef made
    CW_HEAD = 23,
};
inline constexpr int32_t cls_mark = 169;
enum clsrec : int32_t { CR_VAR, CR_STATIC, CR_FCN, CR_VIRT, CR_TYPE, CR_TEXT, CR_END = 30 };
enum : int32_t { CA_PUBLIC = 0, CA_PROTECTED = 1, CA_PRIVATE = 2 };
enum : int32_t { CF_STATIC = 1, CF_FINAL = 2, CF_VIRTUAL = 4 };

const char *sd_text(const int32_t *code, int32_t word); // text of a struct definition's record
const char *cls_text(const int32_t *code, int32_t word);
// Whether an image can be trusted: every index in range, every text ended, walks that end.
const char *sd_check(const int32_t *code, int32_t words);
const char *cls_check(const int32_t *code, int32_t words);

void m_ac_zapclassdef(int32_t *code); // clears what an image holds for the running program

// ---- building. null with m_xrc set on failure; links 0.
matobj *rt_findstruct(const char *name);   // "struct %s not found", "%s() not struct definition"
matobj *rt_findclassdef(const char *name); // loads when needed; null with 3499
[[nodiscard]] matobj *m_mkstruct(const matobj *definition, int32_t depth); // an instance
[[nodiscard]] matobj *m_mkstructfromname(const char *name, int32_t depth); // a 1 by 1
[[nodiscard]] matobj *m_mkstructarray(const matobj *definition, int32_t rows, int32_t cols);
// Links parents, counts rows, makes statics; run once before the first instance. 0 or 1 with
// m_xrc set (3020 when the parent was compiled at another time).
[[nodiscard]] int32_t m_rt_prepareclassdef(matobj *definition);
void m_rt_freeclassdef(matobj *definition);
[[nodiscard]] matobj *m_mktclassobj(matobj *definition, int32_t rows, int32_t cols); // runs new()
[[nodiscard]] matobj *m_mktclassobjfromname(const char *name, int32_t depth);
void rt_clsdestroy(matobj *instance); // destroy() of the class, then of its parents, once

inline bool mo_isinstance(const matobj *m)
{
    return m->eltype == MO_CLASS && m->cols == 1 && m->rows > 0 && mo_pel(m)[0] &&
           mo_isfcn(mo_pel(m)[0]);
}
// A copy of an instance of a struct or class: members copied, pointers keep their targets.
[[nodiscard]] matobj *m_dupinstance(const matobj *instance);
bool structequal(const matobj *a, const matobj *b);
bool classequal(const matobj *a, const matobj *b);
// The program whose file a definition or function came with, "" for none.
inline const char *mo_program(const matobj *f)
{
    return f->info && f->info->inclass ? dm_rec(f)->name : "";
}
// The definition is cls or has it as an ancestor.
bool cls_isa(const matobj *definition, const char *cls);
// Of a prepared definition: its parent or null, whether it declares the member function, the
// live value of a static of it or of its parents, and the function that a name means for its
// instances when that was settled since the links became stale (else null).
matobj *cls_parent(const matobj *definition);
bool cls_declares(const matobj *definition, const char *member);
matobj *cls_static(const matobj *definition, const char *member);
matobj *cls_virtual(const matobj *definition, const char *member);
