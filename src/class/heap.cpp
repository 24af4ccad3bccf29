// The heap of nodes: making, naming, counting and freeing them.
#include "class/heap.h"
#include "class/types.h"
#include "core/mem.h"
#include "core/rc.h"
#include "core/text.h"
#include "interp/dm.h"
#include "interp/messages.h"
#include "output/print.h"
#include <cstdio>
#include <cstdlib>
#include <cstring>

static constexpr uint32_t named_bit = 1u << 31;
static constexpr int32_t kind_shift = 25;
static constexpr uint32_t length_mask = cls_maxlen - 1;
static constexpr size_t name_room = 32;

static clsnode *hslots[cls_nslot];
clskey cls_root;
static bool sweeping; // what a node refers to may be gone already

static const struct {
    clskind kind;
    const char *word;
} kinds[] = {
    {CK_NONE, ""},           {CK_DOUBLE, "double"},       {CK_STRING, "string"},
    {CK_CLASS, "class"},     {CK_CODE, "code"},           {CK_KEY, "key"},
    {CK_ARRAY, "array"},     {CK_CLASSTYPE, "classtype"}, {CK_ATTRIBUTE, "attribute"},
    {CK_CONTEXT, "context"}, {CK_ARRAYNODE, "arraynode"}, {CK_BLOB, "blob"},
};

const char *cls_map9_type(clskind kind)
{
    for (const auto &k : kinds)
        if (k.kind == kind)
            return k.word;
    return "";
}

// ---- nodes

clskind cls_kind(clskey key)
{
    return key ? clskind((key->typelen >> kind_shift) & 15) : CK_NONE;
}

void *cls_ptr(clskey key, clskind *kind, uint32_t *length, char *name)
{
    if (kind)
        *kind = cls_kind(key);
    if (length)
        *length = key ? key->typelen & length_mask : 0;
    if (name)
        *name = 0;
    if (!key)
        return nullptr;
    char *p = reinterpret_cast<char *>(key + 1);
    if (key->typelen & named_bit) {
        if (name) {
            memcpy(name, p, name_room);
            name[name_room] = 0;
        }
        p += name_room;
    }
    return p;
}

static clsnode **slot_of(clskey key)
{
    return &hslots[(reinterpret_cast<uintptr_t>(key) >> 4) % cls_nslot];
}

int32_t cls_newnode(clskey *out, clskind kind, uint32_t length, const char *name)
{
    *out = nullkey;
    if (length >= cls_maxlen)
        return 4052;
    bool named = name && *name;
    size_t room = length + (kind == CK_STRING); // and its NUL
    if (room < 8)
        room = 8;
    auto key = static_cast<clskey>(safecalloc(sizeof(clsnode) + (named ? name_room : 0) + room));
    if (!key) {
        spout21fat(3, "insufficient memory for a class object\n");
        return RC_DMMEM;
    }
    char K[24];
    key_to_Kstr(key, K);
    auto filed = static_cast<clskey *>(dmadd(K, DM_CLSKEY, 0, sizeof(clskey)));
    if (!filed) {
        safefree(key);
        return RC_DMMEM;
    }
    *filed = key;
    key->typelen = (named ? named_bit : 0) | uint32_t(kind) << kind_shift | length;
    if (named)
        memcpy(key + 1, name, strnlen(name, name_room));
    clsnode **slot = slot_of(key);
    key->next = *slot;
    if (*slot)
        (*slot)->prev = key;
    *slot = key;
    *out = key;
    return 0;
}

int32_t cls_newnumber(clskey *out, double z, const char *name)
{
    int32_t rc = cls_newnode(out, CK_DOUBLE, sizeof z, name);
    if (!rc)
        *cls_value<double>(*out) = z;
    return rc;
}

static int32_t newbytes(clskey *out, clskind kind, const void *bytes, size_t n, const char *name)
{
    *out = nullkey;
    if (n >= cls_maxlen)
        return 4052;
    int32_t rc = cls_newnode(out, kind, uint32_t(n), name);
    if (!rc && n)
        memcpy(cls_value<char>(*out), bytes, n);
    return rc;
}

int32_t cls_newstring(clskey *out, const char *bytes, size_t n, const char *name)
{
    return newbytes(out, CK_STRING, bytes, n, name);
}
int32_t cls_newblob(clskey *out, const void *bytes, size_t n, const char *name)
{
    return newbytes(out, CK_BLOB, bytes, n, name);
}

int32_t cls_newkey(clskey *out, clskey target, const char *name)
{
    int32_t rc = cls_newnode(out, CK_KEY, sizeof(clskey), name);
    if (!rc)
        cls_setvalue(cls_value<clskey>(*out), target);
    return rc;
}

int32_t cls_newarray(clskey *out, const char *name)
{
    return cls_newnode(out, CK_ARRAY, sizeof(clsarray), name);
}

int32_t cls_newinstance(clskey *out, clskey type, const char *name)
{
    int32_t rc = cls_newnode(out, type ? CK_CLASS : CK_CONTEXT, sizeof(clsinst), name);
    if (!rc)
        cls_setvalue(&cls_value<clsinst>(*out)->type, type);
    return rc;
}

// ---- counting

static bool in_heap(clskey key)
{
    for (clsnode *p = *slot_of(key); p; p = p->next)
        if (p == key)
            return true;
    return false;
}

int32_t cls_refct(clskey key)
{
    return key ? key->refs : 0;
}
void cls_incref(clskey key)
{
    if (key)
        key->refs++;
}
void cls_decref(clskey key)
{
    if (!key || (sweeping && !in_heap(key)) || key->refs <= 0)
        return;
    if (--key->refs == 0)
        cls_rem(key);
}
void cls_release(clskey key)
{
    if (key && !key->refs)
        cls_rem(key);
}

void cls_setvalue(clskey *place, clskey value)
{
    clskey old = *place;
    cls_incref(value);
    *place = value;
    cls_decref(old);
}

static void free_inside(clskey key)
{
    switch (cls_kind(key)) {
    case CK_KEY:
    case CK_ARRAYNODE: cls_setvalue(cls_value<clskey>(key), nullkey); break;
    case CK_ATTRIBUTE: cls_setvalue(&cls_value<clsattr>(key)->value, nullkey); break;
    case CK_CLASS:
    case CK_CONTEXT: {
        auto inst = cls_value<clsinst>(key);
        while (inst->n)
            cls_delattr(key, inst->n - 1);
        safefree(inst->attr);
        cls_setvalue(&inst->type, nullkey);
        break;
    }
    case CK_ARRAY: {
        auto a = cls_value<clsarray>(key);
        while (a->n)
            cls_array_pop(key);
        safefree(a->el);
        break;
    }
    case CK_CLASSTYPE: cls_freetype(key); break;
    default: break;
    }
}

void cls_rem(clskey key)
{
    if (!key)
        return;
    key->refs = -1; // a circle back to it finds nothing to do
    free_inside(key);
    char K[24];
    key_to_Kstr(key, K);
    dmrm(dmfind0(K, DM_CLSKEY));
    clsnode **slot = slot_of(key);
    if (key->prev)
        key->prev->next = key->next;
    else
        *slot = key->next;
    if (key->next)
        key->next->prev = key->prev;
    safefree(key);
}

int32_t cls_unlink(clskey key)
{
    switch (cls_kind(key)) {
    case CK_ATTRIBUTE: cls_setvalue(&cls_value<clsattr>(key)->value, nullkey); return 0;
    case CK_KEY: cls_setvalue(cls_value<clskey>(key), nullkey); return 0;
    case CK_CONTEXT: return errout(4050, "attempt to cls_unlink() a context\n");
    case CK_ARRAYNODE: return errout(4050, "attempt to cls_unlink() an array node \n");
    default: return errout(4050, "attempt to cls_unlink() an object of unknown type\n");
    }
}

// ---- everything at once

int32_t cls_init()
{
    memset(hslots, 0, sizeof hslots);
    cls_root = nullkey;
    if (cls_newinstance(&cls_root, nullkey, "") != 0)
        return -950;
    cls_root->refs = 1;
    return 0;
}

// Takes nodes with at most that many references; class types stay until all goes.
static bool sweep(int32_t threshold)
{
    bool any = false;
    for (int32_t s = 0; s < cls_nslot; s++)
        for (clsnode *p = hslots[s]; p;) {
            if (p == cls_root || cls_kind(p) == CK_CLASSTYPE || p->refs > threshold ||
                p->refs < 0) {
                p = p->next;
                continue;
            }
            p->refs = 0;
            cls_rem(p);
            any = true;
            p = hslots[s]; // others of the chain may have gone with it
        }
    return any;
}

void cls_freecontext()
{
    constexpr int32_t all = 999999999;
    sweeping = true;
    for (int32_t threshold = 0;;) {
        if (sweep(threshold))
            threshold = 0;
        else if (threshold >= all)
            break;
        else if (++threshold > 10)
            threshold = all;
    }
    cls_rem(cls_root);
    cls_forgettypes();
    for (auto &slot : hslots)
        while (slot)
            cls_rem(slot);
    sweeping = false;
    dmzap(DM_CLSKEY);
    (void)cls_init();
}

// ---- keys as text

void key_to_ref(clskey key, char *out)
{
    snprintf(out, 32, "__key(%lx)", reinterpret_cast<unsigned long>(key));
}
void key_to_ref_array(clskey key, int32_t index, char *out)
{
    snprintf(out, 48, "__key(%lx)[%d]", reinterpret_cast<unsigned long>(key), index);
}
void key_to_Kstr(clskey key, char *out)
{
    snprintf(out, 24, "K%lx", reinterpret_cast<unsigned long>(key));
}

bool cls_valid_key(clskey key)
{
    char K[24];
    key_to_Kstr(key, K);
    auto filed = static_cast<clskey *>(dmfind0(K, DM_CLSKEY));
    return key && filed && *filed == key;
}

int32_t ref_to_key(clskey *out, const char *text)
{
    *out = nullkey;
    const char *p = text + strspn(text, " ");
    if (strncmp(p, "__key(", 6) != 0)
        return 4009;
    p += 6;
    p += strspn(p, " ");
    char *end;
    if (!strchr("0123456789abcdefABCDEF", *p) || !*p)
        return 4009;
    unsigned long address = strtoul(p, &end, 16);
    end += strspn(end, " ");
    if (*end != ')')
        return 4009;
    end++;
    if (end[strspn(end, " ")])
        return 4009;
    auto key = reinterpret_cast<clskey>(address);
    if (!cls_valid_key(key))
        return 4009;
    *out = key;
    return 0;
}
