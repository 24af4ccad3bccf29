// What every object can do, a table of rows, and the running of member programs.
#include "class/members.h"
#include "core/rc.h"
#include "core/state.h"
#include "core/text.h"
#include "interp/dm.h"
#include "interp/interp.h"
#include "interp/messages.h"
#include "interp/programs.h"
#include <cstdio>
#include <cstring>

bool cls_noprograms;

// ---- member programs

static clsenv *env_top;

clsenv *cls_env()
{
    return env_top && env_top->level == ovata_level && sys_is_cls ? env_top : nullptr;
}

static int32_t run(clskey self, clskey type, const char *name, const char *args, clskey *result,
                   bool keep)
{
    *result = nullkey;
    if (cls_noprograms)
        return errout(4023, "class programs may not run in the middle of an expression\n");
    clsenv env = {self, type, ovata_level + 1, nullkey, env_top};
    std::string owner = cls_typename(type), text = args;
    cls_incref(self);
    cls_incref(type);
    env_top = &env;
    int32_t rc = run_program(name, owner.c_str(), text.c_str(), keep);
    env_top = env.outer;
    cls_decref(self);
    cls_decref(type);
    if (rc)
        cls_decref(env.result);
    else
        *result = env.result;
    return rc;
}

int32_t cls_run_memberpgm(clskey self, clskey type, const char *name, const char *args,
                          clskey *result)
{
    return run(self, type, name, args, result, false);
}
int32_t cls_run_memberpgm_safe(clskey self, clskey type, const char *name, const char *args,
                               clskey *result)
{
    return run(self, type, name, args, result, true);
}

// ---- members of ours

namespace
{

clskey type_of(clskey value)
{
    return cls_kind(value) == CK_CLASS       ? cls_value<clsinst>(value)->type
           : cls_kind(value) == CK_CLASSTYPE ? value
                                             : nullkey;
}

int32_t number(clscall *c, double z)
{
    return cls_newnumber(&c->result, z, nullptr);
}
int32_t string(clscall *c, const std::string &s)
{
    return cls_newstring(&c->result, s.data(), s.size(), nullptr);
}
int32_t no_args(clscall *c)
{
    return *c->args ? error(RC_SYNTAX) : 0;
}

int32_t mb_new(clscall *c)
{
    clskey type = c->place->value, made, none;
    int32_t rc = cls_newvalue(&made, type, false);
    if (rc)
        return rc;
    cls_value<clstype>(type)->made++;
    clskey program = cls_findmember(type, "new", nullkey);
    if (!program && *c->args) {
        cls_release(made);
        return errout(4023, "class %s has no member program new\n", cls_typename(type).c_str());
    }
    cls_incref(made);
    if (program)
        rc = cls_run_memberpgm_safe(made, program, "new", c->args, &none);
    cls_decref(none = program && !rc ? none : nullkey);
    if (rc) {
        cls_decref(made);
        return rc;
    }
    made->refs--;
    c->result = made;
    return 0;
}

int32_t mb_copy(clscall *c)
{
    int32_t rc = no_args(c);
    if (rc)
        return rc;
    rc = cls_newvalue(&c->result, c->place->value, false);
    return rc == 4010 || rc == 4305 ? error(rc) : rc;
}

int32_t mb_clone(clscall *c)
{
    int32_t rc = no_args(c);
    if (rc)
        return rc;
    if (cls_kind(c->place->value) != CK_CLASS)
        return error(4025);
    return cls_clonevalueref(&c->result, c->place->value, false);
}

int32_t mb_ref(clscall *c)
{
    if (c->place->super)
        return errout(4003, "may not use reference option when source class is a super class\n");
    int32_t rc = no_args(c);
    return rc ? rc : cls_newkey(&c->result, c->place->value, nullptr);
}

int32_t mb_objkey(clscall *c)
{
    char text[48];
    key_to_ref(c->place->value, text);
    return string(c, text);
}
int32_t mb_objtype(clscall *c)
{
    return string(c, cls_map9_type(cls_kind(c->place->value)));
}
int32_t mb_classname(clscall *c)
{
    return string(c, cls_typename(type_of(c->place->value)));
}
int32_t mb_isofclass(clscall *c)
{
    return number(c, cls_isa(type_of(c->place->value), c->args));
}

// A name that no other object of the class gets.
int32_t mb_uname(clscall *c)
{
    static uint32_t serial;
    char text[48];
    snprintf(text, sizeof text, "_%.24s_%u", cls_typename(type_of(c->place->value)).c_str(),
             ++serial);
    return string(c, text);
}
int32_t mb_ref_n(clscall *c)
{
    return number(c, cls_refct(c->place->value));
}

int32_t names(clscall *c, clskey owner, bool dynamic, bool all)
{
    int32_t rc = cls_newarray(&c->result, nullptr);
    auto inst = cls_value<clsinst>(owner);
    for (int32_t i = 0; !rc && i < inst->n; i++) {
        char name[33];
        auto a = static_cast<clsattr *>(cls_ptr(inst->attr[i], nullptr, nullptr, name));
        clskey text;
        if (!all && a->dynamic != uint8_t(dynamic))
            continue;
        if (!(rc = cls_newstring(&text, name, strlen(name), nullptr)))
            rc = cls_array_push(c->result, text);
    }
    return rc;
}
int32_t mb_instancemv(clscall *c)
{
    return names(c, c->place->value, false, false);
}
int32_t mb_dynamicmv(clscall *c)
{
    return names(c, c->place->value, true, false);
}
int32_t mb_classmv(clscall *c)
{
    return names(c, cls_value<clstype>(type_of(c->place->value))->statics, false, true);
}

int32_t mb_superclass(clscall *c)
{
    int32_t rc = cls_newarray(&c->result, nullptr);
    const clsarray &super = cls_value<clstype>(type_of(c->place->value))->super;
    for (int32_t i = 0; !rc && i < super.n; i++) {
        std::string name = cls_typename(*cls_value<clskey>(super.el[i]));
        clskey text;
        if (!(rc = cls_newstring(&text, name.data(), name.size(), nullptr)))
            rc = cls_array_push(c->result, text);
    }
    return rc;
}

// declare TYPE NAME [= VALUE]: a member of this object alone.
int32_t mb_declare(clscall *c)
{
    clsdeclared m;
    int32_t rc = cls_readdeclaration(c->args, &m);
    if (rc)
        return rc;
    clskey owner = c->place->value;
    rc = cls_addattr(owner, m.name.c_str(), m.value, m.want, m.wantclass.c_str());
    if (rc) {
        cls_release(m.value);
        return rc == RC_DMMEM || rc == RC_NOMEM ? rc : error(rc);
    }
    cls_attr(owner, m.name.c_str(), nullptr)->dynamic = 1;
    return 0;
}

int32_t mb_arrnels(clscall *c)
{
    return number(c, cls_value<clsarray>(c->place->value)->n);
}

// The first element whose text is that of the value; 0 for none.
int32_t mb_arrindexof(clscall *c)
{
    clskey value;
    int32_t rc = cls_rvalue(c->args, &value), found = 0;
    if (rc)
        return rc;
    std::string text = cls_text(value);
    clskind kind = cls_kind(cls_follow(value));
    for (int32_t i = 1; !found && i <= cls_value<clsarray>(c->place->value)->n; i++) {
        clskey el = cls_follow(cls_array_el(c->place->value, i));
        if (cls_kind(el) == kind && cls_text(el) == text)
            found = i;
    }
    cls_release(value);
    return number(c, found);
}

int32_t mb_arrpush(clscall *c)
{
    clskey value, mine, array = c->place->value;
    cls_incref(array); // the value may come from a program
    int32_t rc = cls_rvalue(c->args, &value);
    mine = value;
    if (!rc && value && value->refs)
        rc = cls_newvalue(&mine, value, false);
    if (!rc && (rc = cls_array_push(array, mine)))
        cls_release(mine);
    cls_decref(array);
    return rc;
}

// Takes the last element out and answers it.
int32_t mb_arrpop(clscall *c)
{
    clskey array = c->place->value;
    auto a = cls_value<clsarray>(array);
    int32_t rc = no_args(c);
    if (rc || !a->n)
        return rc;
    clskey last = cls_array_el(array, a->n);
    cls_incref(last);
    cls_array_pop(array);
    if (last)
        last->refs--;
    c->result = last;
    return 0;
}

int32_t mb_arrdelete(clscall *c)
{
    clskey value;
    int32_t rc = cls_rvalue(c->args, &value);
    if (rc)
        return rc;
    clskey v = cls_follow(value);
    double z = cls_kind(v) == CK_DOUBLE ? *cls_value<double>(v) : 0;
    cls_release(value);
    if (!(z >= 1 && z <= cls_value<clsarray>(c->place->value)->n))
        return error(4029);
    cls_array_delete_el(c->place->value, int32_t(z));
    return 0;
}

constexpr uint16_t on(clskind k)
{
    return uint16_t(1 << k);
}
constexpr uint16_t any = on(CK_DOUBLE) | on(CK_STRING) | on(CK_CLASS) | on(CK_ARRAY) |
                         on(CK_CLASSTYPE) | on(CK_BLOB) | on(CK_CODE),
                   classes = on(CK_CLASS) | on(CK_CLASSTYPE);

} // namespace

const clsmember cls_members[] = {
    {"new", on(CK_CLASSTYPE), mb_new, "a new object; the member program new runs"},
    {"copy", any, mb_copy, "a deep copy; the member program oncopy runs"},
    {"clone", any, mb_clone, "a copy that shares its texts and numbers"},
    {"ref", any, mb_ref, "a reference to the object itself"},
    {"objkey", any, mb_objkey, "its key as text"},
    {"objtype", any | on(CK_NONE), mb_objtype, "its kind: double, string, class, array, classtype"},
    {"classname", classes, mb_classname, "the name of its class"},
    {"isofclass", classes | on(CK_NONE), mb_isofclass,
     "1 if it is of that class or inherits from it"},
    {"uname", classes, mb_uname, "a name that is not in use"},
    {"ref_n", any, mb_ref_n, "how many places hold it"},
    {"superclass", classes, mb_superclass, "the classes it inherits from"},
    {"instancemv", on(CK_CLASS), mb_instancemv, "the names of its members"},
    {"classmv", classes, mb_classmv, "the names of the members of its class"},
    {"dynamicmv", on(CK_CLASS), mb_dynamicmv, "the names of members declared for it alone"},
    {"declare", on(CK_CLASS) | on(CK_CONTEXT), mb_declare, "a member for this object alone"},
    {"arrnels", on(CK_ARRAY), mb_arrnels, "the number of elements"},
    {"arrindexof", on(CK_ARRAY), mb_arrindexof, "where a value is first found, or 0"},
    {"arrpush", on(CK_ARRAY), mb_arrpush, "one more element at the end"},
    {"arrpop", on(CK_ARRAY), mb_arrpop, "takes the last element out"},
    {"arrdelete", on(CK_ARRAY), mb_arrdelete, "takes element N out"},
};
const int32_t cls_nmember = int32_t(sizeof cls_members / sizeof cls_members[0]);

const clsmember *cls_member(const char *name, clskind kind)
{
    for (const clsmember &m : cls_members)
        if ((m.on & on(kind)) && !strcmp(m.name, name))
            return &m;
    return nullptr;
}
