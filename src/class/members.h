// class/members.h - what every object can do, and running member programs.
#pragma once
#include "class/paths.h"

struct clscall {
    clsplace *place;
    const char *args;
    clskey result = nullkey; // a new node or one that lies somewhere; null for nothing
};
struct clsmember {
    const char *name;
    uint16_t on; // a bit for each clskind it acts on
    int32_t (*handler)(clscall *c);
    const char *does;
};
extern const clsmember cls_members[];
extern const int32_t cls_nmember;
const clsmember *cls_member(const char *name, clskind on); // or null

// The member program that is running; null outside of all and in programs that one has called.
struct clsenv {
    clskey self, type; // the object and the class that the program belongs to
    int32_t level;
    clskey result;
    clsenv *outer;
};
clsenv *cls_env();
// Runs the program of class type for self; *result is what class exit gave, a node with a
// reference to it for the caller to drop, or null. 0 or the program's code. The line under way
// is lost; safe keeps it.
[[nodiscard]] int32_t cls_run_memberpgm(clskey self, clskey type, const char *name,
                                        const char *args, clskey *result);
[[nodiscard]] int32_t cls_run_memberpgm_safe(clskey self, clskey type, const char *name,
                                             const char *args, clskey *result);
extern bool cls_noprograms; // in the middle of an expression only data can be looked at
