// class/class.h - objects of the command language.
//
// A program of the command language can make objects, keep them under names with a leading dot
// and pass them around as text:
//
//   .p = .point.new 3 4          a new object of class point, made by its member program new
//   .p.x = 7                     a member
//   display `.p.norm'            what a member program answers, in the place of a macro
//   .q = .p                      a copy; .q.ref = .p makes .q another name of the same object
//   local k = "`.p.objkey'"      __key(55d0...), good as a name: .`k'.x
//
// A class lies in NAME.class on the search path of programs: its members in a block
// `class NAME { ... }`, then its member programs. Everything is a node of one heap (heap.h);
// names lead to nodes (paths.h); classes are nodes too (types.h); what every object can do is
// a table of rows (members.h).
//
//   heap.h      nodes, keys, counts of references, copies and clones, arrays, instances
//   types.h     classes: declarations, inheritance, the search for members
//   paths.h     .a.b[2].c and what may stand right of =
//   members.h   built-in members, and running member programs
//   clscmd.cpp  statements with a leading dot, the command class, references in macros and the
//               functions cls() and scls()
#pragma once
#include "class/heap.h"

// A statement that begins with a dot, from the text of the line.
[[nodiscard]] int32_t cls_clscmd();
// The command class: a definition block, class exit, dir, describe, drop, clear.
int32_t classcmd(int32_t arg);
