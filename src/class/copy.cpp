// Copies and clones of values, and the places values lie in.
#include "class/heap.h"
#include "class/types.h"
#include "core/mem.h"
#include "core/rc.h"
#include "core/text.h"
#include "interp/messages.h"
#include <cstring>

clskey oncopy_src_key;
int32_t (*cls_oncopy)(clskey instance);

// ---- rooms that grow

template <class T> static int32_t room(T *list)
{
    auto &items = [list]() -> clskey *& {
        if constexpr (requires { list->attr; })
            return list->attr;
        else
            return list->el;
    }();
    if (list->n < list->cap)
        return 0;
    int32_t cap = list->cap ? list->cap * 2 : 4;
    auto bigger = static_cast<clskey *>(saferealloc(items, size_t(cap) * sizeof(clskey)));
    if (!bigger)
        return error(RC_NOMEM);
    items = bigger;
    list->cap = cap;
    return 0;
}

// ---- attributes

clsattr *cls_attr(clskey owner, const char *name, int32_t *index)
{
    clskind kind = cls_kind(owner);
    if (kind != CK_CLASS && kind != CK_CONTEXT)
        return nullptr;
    auto inst = cls_value<clsinst>(owner);
    char have[33];
    for (int32_t i = 0; i < inst->n; i++) {
        void *p = cls_ptr(inst->attr[i], nullptr, nullptr, have);
        if (!strcmp(have, name)) {
            if (index)
                *index = i;
            return static_cast<clsattr *>(p);
        }
    }
    return nullptr;
}

int32_t cls_addattr(clskey owner, const char *name, clskey value, uint8_t want,
                    const char *wantclass)
{
    if (strlen(name) > 32)
        return 4011;
    if (cls_attr(owner, name, nullptr))
        return 4017;
    auto inst = cls_value<clsinst>(owner);
    clskey node;
    int32_t rc = room(inst);
    if (rc || (rc = cls_newnode(&node, CK_ATTRIBUTE, sizeof(clsattr), name)))
        return rc;
    node->refs = 1;
    inst->attr[inst->n++] = node;
    auto attr = cls_value<clsattr>(node);
    attr->want = want;
    strcut(attr->wantclass, sizeof attr->wantclass, wantclass ? wantclass : "");
    cls_setvalue(&attr->value, value);
    return 0;
}

void cls_delattr(clskey owner, int32_t index)
{
    auto inst = cls_value<clsinst>(owner);
    clskey node = inst->attr[index];
    memmove(inst->attr + index, inst->attr + index + 1, size_t(--inst->n - index) * sizeof(clskey));
    cls_decref(node);
}

// ---- arrays

clskey cls_array_el(clskey array, int32_t index)
{
    auto a = cls_value<clsarray>(array);
    return index >= 1 && index <= a->n ? *cls_value<clskey>(a->el[index - 1]) : nullkey;
}

int32_t cls_array_push(clskey array, clskey value)
{
    auto a = cls_value<clsarray>(array);
    if (a->n >= int32_t(cls_maxlen))
        return 4000;
    clskey node;
    int32_t rc = room(a);
    if (rc || (rc = cls_newnode(&node, CK_ARRAYNODE, sizeof(clskey), nullptr)))
        return rc;
    node->refs = 1;
    a->el[a->n++] = node;
    cls_setvalue(cls_value<clskey>(node), value);
    return 0;
}

int32_t cls_add_to_array(clskey array, int32_t index, clskey value)
{
    auto a = cls_value<clsarray>(array);
    if (index < 1 || index > int32_t(cls_maxlen))
        return 4029;
    int32_t before = a->n, rc = 0;
    while (!rc && a->n < index)
        rc = cls_array_push(array, nullkey);
    while (rc && a->n > before)
        cls_array_pop(array);
    if (!rc)
        cls_setvalue(cls_value<clskey>(a->el[index - 1]), value);
    return rc;
}

void cls_array_pop(clskey array)
{
    auto a = cls_value<clsarray>(array);
    if (a->n)
        cls_decref(a->el[--a->n]);
}

void cls_array_delete_el(clskey array, int32_t index)
{
    auto a = cls_value<clsarray>(array);
    if (index < 1 || index > a->n)
        return;
    clskey node = a->el[index - 1];
    memmove(a->el + index - 1, a->el + index, size_t(a->n - index) * sizeof(clskey));
    a->n--;
    cls_decref(node);
}

// ---- copies

// A member: what is not there stays away; a reference stays a reference to the same node.
static int32_t member(clskey *out, clskey value, bool clone)
{
    *out = nullkey;
    if (!value)
        return 0;
    if (cls_kind(value) == CK_KEY)
        return cls_newkey(out, *cls_value<clskey>(value), nullptr);
    return clone ? cls_clonevalueref(out, value, false) : cls_newvalue(out, value, false);
}

// An object of that class with the members of source.
static int32_t with_members(clskey *out, clskey type, clskey source, bool clone)
{
    auto from = cls_value<clsinst>(source);
    clskey made;
    int32_t rc = cls_newinstance(&made, type, nullptr);
    for (int32_t i = 0; !rc && i < from->n; i++) {
        char name[33];
        auto attr = static_cast<clsattr *>(cls_ptr(from->attr[i], nullptr, nullptr, name));
        clskey value;
        if ((rc = member(&value, attr->value, clone)))
            break;
        rc = cls_addattr(made, name, value, attr->want, attr->wantclass);
        if (rc)
            cls_release(value);
        else
            cls_attr(made, name, nullptr)->dynamic = attr->dynamic;
    }
    if (rc) {
        cls_release(made);
        made = nullkey;
    }
    *out = made;
    return rc;
}

int32_t cls_copyclone_instance(clskey *out, clskey source, bool clone)
{
    return with_members(out, cls_value<clsinst>(source)->type, source, clone);
}

int32_t cls_copyclone_array(clskey *out, clskey source, bool clone)
{
    auto from = cls_value<clsarray>(source);
    clskey made;
    int32_t rc = cls_newarray(&made, nullptr);
    for (int32_t i = 1; !rc && i <= from->n; i++) {
        clskey value;
        if ((rc = member(&value, cls_array_el(source, i), clone)))
            break;
        if ((rc = cls_array_push(made, value)))
            cls_release(value);
    }
    if (rc) {
        cls_release(made);
        made = nullkey;
    }
    *out = made;
    return rc;
}

// The oncopy of the class sees the source; without one nothing happens.
static int32_t copied_instance(clskey *out, clskey source)
{
    int32_t rc = cls_copyclone_instance(out, source, false);
    if (rc || !cls_oncopy)
        return rc;
    clskey outer = oncopy_src_key;
    oncopy_src_key = source;
    cls_incref(*out);
    rc = cls_oncopy(*out);
    oncopy_src_key = outer;
    if (rc) {
        cls_decref(*out);
        *out = nullkey;
        return rc;
    }
    (*out)->refs--;
    return 0;
}

static int32_t newbytes(clskey *out, clskind kind, const void *bytes, uint32_t n,
                        const char *name = nullptr)
{
    int32_t rc = cls_newnode(out, kind, n, name);
    if (!rc)
        memcpy(cls_value<char>(*out), bytes, n);
    return rc;
}

// The same value under a name.
static int32_t renamed(clskey *out, const char *name)
{
    clskind kind = cls_kind(*out);
    uint32_t n;
    void *p = cls_ptr(*out, nullptr, &n, nullptr);
    if (kind != CK_DOUBLE && kind != CK_STRING && kind != CK_BLOB)
        return 0; // what has parts keeps its node
    clskey made;
    int32_t rc = newbytes(&made, kind, p, n, name);
    if (rc)
        return rc;
    cls_release(*out);
    *out = made;
    return 0;
}

static int32_t duplicate(clskey *out, clskey source, bool keepname, bool clone, int32_t depth)
{
    *out = nullkey;
    if (!source)
        return 4010;
    if (depth > 64)
        return 4000;
    char name[33];
    uint32_t n;
    clskind kind;
    void *p = cls_ptr(source, &kind, &n, name);
    switch (kind) {
    case CK_DOUBLE:
    case CK_STRING:
        if (!clone)
            return newbytes(out, kind, p, n);
        *out = source;
        return 0;
    case CK_BLOB:
        if (!clone)
            return newbytes(out, kind, p, n);
        cls_incref(source);
        *out = source;
        return 0;
    case CK_CLASS:
        return clone ? cls_copyclone_instance(out, source, true) : copied_instance(out, source);
    case CK_CODE: return -1;
    case CK_KEY: {
        int32_t rc = duplicate(out, *static_cast<clskey *>(p), keepname, clone, depth + 1);
        return !rc && keepname && *name && !clone ? renamed(out, name) : rc;
    }
    case CK_ARRAY: return cls_copyclone_array(out, source, clone);
    case CK_CLASSTYPE: return with_members(out, source, cls_prototype(source), clone);
    default: return 4305;
    }
}

int32_t cls_newvalue(clskey *out, clskey source, bool keepname)
{
    return duplicate(out, source, keepname, false, 0);
}
int32_t cls_clonevalueref(clskey *out, clskey source, bool keepname)
{
    return duplicate(out, source, keepname, true, 0);
}
