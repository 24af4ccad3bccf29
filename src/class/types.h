// class/types.h - classes: what a definition block declares, and the search for members.
//
//   class NAME {
//       classwide:                 (what follows belongs to the class, once)
//           double count = 0
//       instancespecific:          (to each object; where a block begins)
//           double x = 1
//           string label = "none"
//           array  list = {1, "two"}
//           point  centre          (an object of class point, none yet)
//   } [, inherit(NAME ...)]
//
// An object has the members of all classes it inherits from; where two declare the same name the
// first in the order of inherit() is taken, and the class itself comes before all. Member
// programs are looked for in the same order.
#pragma once
#include "class/heap.h"
#include <string>
#include <vector>

struct clstype {
    clskey proto;   // what a new object is a copy of
    clskey statics; // classwide members, a context
    clsarray super; // class types, by CK_ARRAYNODE
    int32_t made;   // objects made so far
};

// The class of that name, its file loaded when there is one; *out null and no words when there
// is none. A code with words when its file fails.
[[nodiscard]] int32_t cls_findtype(const char *name, clskey *out);
clskey cls_typeinmemory(const char *name);
const std::vector<clskey> &cls_alltypes();
std::string cls_typename(clskey type);
clskey cls_prototype(clskey type);
bool cls_isa(clskey type, const char *name); // the class, or one it inherits from
// The class and what it inherits from, in the order of search.
std::vector<clskey> cls_lineage(clskey type);
// A member program: its class, or null. behind: the search starts behind this class.
clskey cls_findmember(clskey type, const char *name, clskey behind);
// A classwide member, in the lineage.
clsattr *cls_findstatic(clskey type, const char *name);

// The block that the command class opens; NAME and { are still to be read.
[[nodiscard]] int32_t cls_define();
// Forgets a class that no object and no class refers to: 0, 4012, or 4050 with words.
[[nodiscard]] int32_t cls_droptype(const char *name);
void cls_freetype(clskey type); // of cls_rem
void cls_forgettypes();         // of cls_freecontext
