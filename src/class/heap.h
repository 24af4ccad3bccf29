// class/heap.h - the nodes that objects of the command language are made of.
//
// A node is a header, a name when it has one, and its value:
//
//   clsnode | char name[32] when named | value by kind
//
// Its key is its address. As text a key is __key(HEX), for an element of an array
// __key(HEX)[N]. Every node is filed in the dm store as well, under K and its address, so that
// a key that arrives as text can be told from a stale one. A node goes when the last reference
// to it does; what refers to itself in a circle goes with cls_freecontext.
//
// Functions return 0, a code of the class system, 950 or 909 without memory (with words), or a
// negative internal code. Null keys are allowed everywhere.
#pragma once
#include <cstddef>
#include <cstdint>

enum clskind : uint8_t {
    CK_NONE = 0,
    CK_DOUBLE = 1, // double
    CK_STRING = 2, // bytes with a NUL behind them
    CK_CLASS = 3,  // clsinst: an instance
    CK_CODE = 4,
    CK_KEY = 5,        // clskey: a reference
    CK_ARRAY = 6,      // clsarray
    CK_CLASSTYPE = 7,  // clstype, types.h
    CK_ATTRIBUTE = 8,  // clsattr: a named place of an instance, a class or a context
    CK_CONTEXT = 9,    // clsinst without a type: the names outside all objects
    CK_ARRAYNODE = 10, // clskey: an element
    CK_BLOB = 13,      // bytes of the program's own
};

struct clsnode {
    clsnode *prev, *next; // in the chain of its hash slot
    uint32_t typelen;     // 1 bit named, 2 spare, 4 bits of kind, 25 of length
    int32_t refs;
};
using clskey = clsnode *;
inline constexpr clskey nullkey = nullptr;
inline constexpr uint32_t cls_maxlen = 1u << 25;
inline constexpr int32_t cls_nslot = 7919;

struct clsattr {
    clskey value;
    uint8_t want;    // declared kind; CK_NONE takes anything
    uint8_t dynamic; // declared for this object alone
    char wantclass[33];
};
struct clsinst {
    clskey type; // of an instance
    int32_t n, cap;
    clskey *attr; // CK_ATTRIBUTE nodes in order of declaration
};
struct clsarray {
    int32_t n, cap;
    clskey *el; // CK_ARRAYNODE nodes, from 1 for the user
};

[[nodiscard]] int32_t cls_init(); // 0 or -950
void cls_freecontext();           // every object, then every class
extern clskey cls_root;           // the context of names outside all objects

// The value of a node, and what is asked of kind, length and name (33 bytes; the others may be
// null). A null key gives kind 0, length 0, an empty name and a null value.
void *cls_ptr(clskey key, clskind *kind, uint32_t *length, char *name);
clskind cls_kind(clskey key);
const char *cls_map9_type(clskind kind); // the word of a kind
template <class T> T *cls_value(clskey key)
{
    return static_cast<T *>(cls_ptr(key, nullptr, nullptr, nullptr));
}

// New nodes with no reference to them yet. name may be null.
[[nodiscard]] int32_t cls_newnode(clskey *out, clskind kind, uint32_t length, const char *name);
[[nodiscard]] int32_t cls_newnumber(clskey *out, double z, const char *name);
[[nodiscard]] int32_t cls_newstring(clskey *out, const char *bytes, size_t n, const char *name);
[[nodiscard]] int32_t cls_newblob(clskey *out, const void *bytes, size_t n, const char *name);
[[nodiscard]] int32_t cls_newkey(clskey *out, clskey target, const char *name);
[[nodiscard]] int32_t cls_newarray(clskey *out, const char *name);
[[nodiscard]] int32_t cls_newinstance(clskey *out, clskey type, const char *name);

int32_t cls_refct(clskey key);
void cls_incref(clskey key);
void cls_decref(clskey key);  // the node goes at 0
void cls_release(clskey key); // goes if nothing refers to it
void cls_rem(clskey key);     // goes, whatever refers to it
// Takes a value out of its place: attributes and keys. 4050 with words for what has no place.
[[nodiscard]] int32_t cls_unlink(clskey key);

bool cls_valid_key(clskey key);
// "__key(HEX)" with blanks around it. 4009 with *out null for anything else, and for a key of no
// node.
[[nodiscard]] int32_t ref_to_key(clskey *out, const char *text);
void key_to_ref(clskey key, char *out);                      // 32 bytes
void key_to_ref_array(clskey key, int32_t index, char *out); // 48 bytes
void key_to_Kstr(clskey key, char *out);                     // 24 bytes

// A deep copy, and a copy that shares what need not be copied. With keepname a node reached
// through a named key takes that name. 4010 for no source, 4305 for what cannot be copied, -1
// for code.
[[nodiscard]] int32_t cls_newvalue(clskey *out, clskey source, bool keepname);
[[nodiscard]] int32_t cls_clonevalueref(clskey *out, clskey source, bool keepname);
[[nodiscard]] int32_t cls_copyclone_instance(clskey *out, clskey source, bool clone);
[[nodiscard]] int32_t cls_copyclone_array(clskey *out, clskey source, bool clone);
extern clskey oncopy_src_key;                  // while a member program oncopy runs
extern int32_t (*cls_oncopy)(clskey instance); // runs it

// Places of an instance or a context.
clsattr *cls_attr(clskey owner, const char *name, int32_t *index);
[[nodiscard]] int32_t cls_addattr(clskey owner, const char *name, clskey value, uint8_t want,
                                  const char *wantclass);
void cls_delattr(clskey owner, int32_t index);
void cls_setvalue(clskey *place, clskey value); // counts both

// Arrays; an index is from 1.
[[nodiscard]] int32_t cls_add_to_array(clskey array, int32_t index, clskey value);
[[nodiscard]] int32_t cls_array_push(clskey array, clskey value);
void cls_array_pop(clskey array); // of an empty one does nothing
void cls_array_delete_el(clskey array, int32_t index);
clskey cls_array_el(clskey array, int32_t index); // null beyond the end
