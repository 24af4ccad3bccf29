// class/paths.h - names with dots, and what may stand right of = .
//
//   .NAME[N].NAME ... MEMBER [ARGUMENTS]
//
// The first name is looked for among the members of the object whose member program is running,
// then among the names outside all objects, then among the classes. .this is that object,
// .super its members as the classes behind the running one have them, .global the names outside
// all objects, .oncopy_src what a copy is made of; .__key(HEX) is any node. References are
// followed.
//
//   value    .PATH  "text"  `"text"'  {VALUE, ...}  or an expression, number or text
#pragma once
#include "class/types.h"
#include <string>

struct clsmember; // members.h
struct clsplace {
    // where it lies: a place of owner, an element of array, or nowhere
    clskey owner = nullkey;
    clsattr *attr = nullptr;
    clskey array = nullkey;
    int32_t index = 0;
    std::string name;       // of the place; with attr null a name that owner does not have yet
    clskey value = nullkey; // with references followed
    // a member that acts on value: one of ours, or a program of the class behind
    const clsmember *builtin = nullptr;
    clskey program = nullkey;
    bool super = false;    // value is seen as the classes behind see it
    const char *rest = ""; // text behind the path
};
// 0, or a code with its words told. A last name that is not there leaves attr, array, builtin
// and program null and owner set.
[[nodiscard]] int32_t cls_resolve(const char *text, clsplace *place);
clskey cls_follow(clskey key); // through references

// A value from its text: a new node, or one that lies somewhere, which the caller copies.
[[nodiscard]] int32_t cls_rvalue(const char *text, clskey *out);
// The same up to a comma or a closing brace outside quotes and brackets; *end is put there.
[[nodiscard]] int32_t cls_listvalue(const char **end, clskey *out);
// What a place or a call comes to, rest being the arguments.
[[nodiscard]] int32_t cls_evaluate(clsplace *place, clskey *out);
// Text of a value for macros: numbers and strings themselves, else the key.
std::string cls_text(clskey key);

struct clsdeclared {
    std::string name, wantclass;
    uint8_t want = CK_NONE;
    clskey value = nullkey;
};
// "TYPE NAME [= VALUE]"; TYPE is double, string, array or a class.
[[nodiscard]] int32_t cls_readdeclaration(const char *line, clsdeclared *out);
// 0, 4019, or 4027 with words: whether a place declared so may hold the value.
[[nodiscard]] int32_t cls_fits(uint8_t want, const char *wantclass, clskey value);
// The place comes to hold a copy of the value, or the value itself when nothing else does.
[[nodiscard]] int32_t cls_assign(clsplace *place, clskey value);
[[nodiscard]] int32_t cls_assignref(clsplace *place, clskey value);
