// Classes: definition blocks, inheritance, member search.
#include "class/types.h"
#include "class/paths.h"
#include "core/mem.h"
#include "core/rc.h"
#include "core/state.h"
#include "core/text.h"
#include "data/variables.h"
#include "expr/parse.h"
#include "interp/dm.h"
#include "interp/interp.h"
#include "interp/messages.h"
#include "interp/programs.h"
#include "output/print.h"
#include <algorithm>
#include <cstring>

static std::vector<clskey> types; // the newest last

const std::vector<clskey> &cls_alltypes()
{
    return types;
}

std::string cls_typename(clskey type)
{
    char name[33];
    cls_ptr(type, nullptr, nullptr, name);
    return name;
}

clskey cls_prototype(clskey type)
{
    return cls_value<clstype>(type)->proto;
}

clskey cls_typeinmemory(const char *name)
{
    for (clskey t : types)
        if (cls_typename(t) == name)
            return t;
    return nullkey;
}

int32_t cls_findtype(const char *name, clskey *out)
{
    char path[512];
    *out = cls_typeinmemory(name);
    if (*out || strlen(name) > 32 || chkname(name, true) || srchado(name, "class", 1, path))
        return 0;
    char was[sizeof cmd];
    memcpy(was, cmd, sizeof cmd);
    strcut(cmd, sizeof cmd, name);
    int32_t rc = autoload("class", false);
    memcpy(cmd, was, sizeof cmd);
    if (rc)
        return rc;
    *out = cls_typeinmemory(name);
    return *out ? 0 : errout(4099, "class %s not defined by %s.class\n", name, name);
}

static clskey super_of(clskey type, int32_t i)
{
    return *cls_value<clskey>(cls_value<clstype>(type)->super.el[i]);
}

static void add_lineage(clskey type, std::vector<clskey> *list)
{
    if (std::find(list->begin(), list->end(), type) != list->end())
        return;
    list->push_back(type);
    for (int32_t i = 0; i < cls_value<clstype>(type)->super.n; i++)
        add_lineage(super_of(type, i), list);
}

std::vector<clskey> cls_lineage(clskey type)
{
    std::vector<clskey> list;
    if (type)
        add_lineage(type, &list);
    return list;
}

bool cls_isa(clskey type, const char *name)
{
    for (clskey t : cls_lineage(type))
        if (cls_typename(t) == name)
            return true;
    return false;
}

clskey cls_findmember(clskey type, const char *name, clskey behind)
{
    bool on = !behind;
    for (clskey t : cls_lineage(type)) {
        std::string owner = cls_typename(t);
        if (on) {
            auto p = static_cast<pgmrec *>(pgmfind(name, owner.c_str(), PF_PROGRAM));
            if (p && p->isclass && owner == p->owner)
                return t;
        }
        on |= t == behind;
    }
    return nullkey;
}

clsattr *cls_findstatic(clskey type, const char *name)
{
    for (clskey t : cls_lineage(type))
        if (clsattr *a = cls_attr(cls_value<clstype>(t)->statics, name, nullptr))
            return a;
    return nullptr;
}

// ---- definition

namespace
{

struct defining {
    clskey type;
    bool classwide = false;
};

int32_t new_type(const char *name, clskey *out)
{
    clskey type;
    int32_t rc = cls_newnode(&type, CK_CLASSTYPE, sizeof(clstype), name);
    if (rc)
        return rc;
    auto t = cls_value<clstype>(type);
    clskey part;
    // The prototype is no object of the class: it does not keep the class alive.
    if (!(rc = cls_newinstance(&part, nullkey, nullptr))) {
        cls_setvalue(&t->proto, part);
        rc = cls_newinstance(&part, nullkey, nullptr);
    }
    if (!rc)
        cls_setvalue(&t->statics, part);
    if (rc)
        cls_release(type);
    else
        *out = type;
    return rc;
}

// One member: TYPE NAME [= VALUE]
int32_t declaration(defining *d, const char *line)
{
    clsdeclared m;
    int32_t rc = cls_readdeclaration(line, &m);
    if (rc)
        return rc;
    auto t = cls_value<clstype>(d->type);
    clskey owner = d->classwide ? t->statics : t->proto;
    if (cls_attr(t->statics, m.name.c_str(), nullptr) ||
        cls_attr(t->proto, m.name.c_str(), nullptr)) {
        cls_release(m.value);
        return errout(4017, "%s already declared in current class\n", m.name.c_str());
    }
    rc = cls_addattr(owner, m.name.c_str(), m.value, m.want, m.wantclass.c_str());
    if (rc)
        cls_release(m.value);
    return rc;
}

bool section(defining *d, const std::string &line)
{
    if (line.empty() || line.back() != ':')
        return false;
    std::string word = line.substr(0, line.find_last_not_of(": ") + 1);
    if (word == "classwide" || word == "shared")
        d->classwide = true;
    else if (word == "instancespecific" || word == "instance")
        d->classwide = false;
    else
        return false;
    return true;
}

std::string trimmed(const char *text)
{
    std::string s = text + strspn(text, " \t");
    if (size_t c = s.find("//"); c != s.npos && s.find('"') == s.npos)
        s.resize(c);
    s.resize(s.find_last_not_of(" \t") + 1);
    return s;
}

// inherit(NAME ...): members of the others behind our own.
int32_t inherit(defining *d, char *names)
{
    auto t = cls_value<clstype>(d->type);
    toktype ti;
    ti_settok(&ti, names);
    for (std::string name; !(name = ti_gettok(&ti, prsestd)).empty();) {
        clskey super;
        int32_t rc = cls_findtype(name.c_str(), &super);
        if (rc)
            return rc;
        if (!super)
            return errout(4018, "class type %s not found\n", name.c_str());
        clsarray *list = &t->super;
        clskey node;
        auto grown =
            static_cast<clskey *>(saferealloc(list->el, size_t(list->n + 1) * sizeof(clskey)));
        if (!grown)
            return error(RC_NOMEM);
        list->el = grown;
        if ((rc = cls_newnode(&node, CK_ARRAYNODE, sizeof(clskey), nullptr)))
            return rc;
        node->refs = 1;
        list->el[list->n++] = node;
        cls_setvalue(cls_value<clskey>(node), super);
        auto proto = cls_value<clsinst>(cls_prototype(super));
        for (int32_t i = 0; i < proto->n; i++) {
            char member[33];
            auto a = static_cast<clsattr *>(cls_ptr(proto->attr[i], nullptr, nullptr, member));
            if (cls_attr(t->proto, member, nullptr))
                continue;
            clskey copy = nullkey;
            if (a->value && (rc = cls_newvalue(&copy, a->value, false)))
                return rc;
            if ((rc = cls_addattr(t->proto, member, copy, a->want, a->wantclass))) {
                cls_release(copy);
                return rc;
            }
        }
    }
    return 0;
}

int32_t after_brace(defining *d, const std::string &rest)
{
    if (rest.empty())
        return 0;
    std::string text = rest;
    toktype ti;
    ti_settok(&ti, text.data());
    char names[500];
    if (*ti_gettok(&ti, prsestd) != ',')
        return error(RC_SYNTAX);
    parinfo->pi_opts = PI_OK;
    parinfo->pi_nopt = 0;
    int32_t rc = ti_proption(&ti, parinfo);
    if (rc)
        return rc;
    bool found = ti_pi_findargasis(&ti, parinfo, "inherit", 7, names, sizeof names - 1);
    if ((rc = ti_pi_chkopt(&ti, parinfo)))
        return rc;
    return found ? inherit(d, names) : 0;
}

// The lines of the block; the closing brace may bear options.
int32_t block(defining *d)
{
    for (;;) {
        if (getreq(true, false))
            return stopflag ? RC_BREAK : error(612);
        if (stopflag)
            return RC_BREAK;
        std::string line = trimmed(console);
        if (line.empty() || line[0] == '*')
            continue;
        if (line[0] == '}')
            return after_brace(d, trimmed(line.c_str() + 1));
        if (section(d, line))
            continue;
        if (int32_t rc = declaration(d, line.c_str()))
            return rc;
    }
}

// What is left of a block that failed would be taken for commands.
void skip_block()
{
    while (trimmed(console)[0] != '}' && !stopflag)
        if (getreq(true, false))
            return;
}

} // namespace

int32_t cls_define()
{
    const char *tok = ti_gettok(tokinfo, prsestd);
    std::string name = *tok == '{' ? sys_pgmclass : tok;
    if (*tok != '{')
        tok = ti_gettok(tokinfo, prsestd);
    int32_t rc = *tok == '{' ? 0 : required("{");
    if (!rc)
        rc = chkname(name.c_str(), false);
    if (!rc && reading_cls_pgm && name != sys_pgmclass)
        rc = errout(4099, "%s.class defines class %s\n", sys_pgmclass, name.c_str());
    if (!rc && cls_typeinmemory(name.c_str()))
        rc = error2(3, name.c_str());
    defining d;
    if (rc || (rc = new_type(name.c_str(), &d.type))) {
        skip_block();
        return rc;
    }
    std::string rest = trimmed(ti_wheretok(tokinfo));
    if (!rest.empty() && rest[0] == '}') // no members of its own
        rc = after_brace(&d, trimmed(rest.c_str() + 1));
    else if (!rest.empty()) {
        rc = error(RC_SYNTAX);
        skip_block();
    } else if ((rc = block(&d)))
        skip_block();
    if (rc) {
        cls_release(d.type);
        return rc;
    }
    cls_incref(d.type);
    types.push_back(d.type);
    return 0;
}

// ---- the end

void cls_freetype(clskey type)
{
    auto t = cls_value<clstype>(type);
    cls_setvalue(&t->proto, nullkey);
    cls_setvalue(&t->statics, nullkey);
    while (t->super.n)
        cls_decref(t->super.el[--t->super.n]);
    safefree(t->super.el);
}

// Member programs of a class go with it.
static void drop_members(const std::string &name)
{
    for (void *p = dmnext(nullptr, nullptr, DM_PROGRAM, nullptr); p;) {
        void *next = dmnext(p, nullptr, DM_PROGRAM, nullptr);
        auto r = static_cast<pgmrec *>(p);
        if (r->isclass && name == r->owner && !r->inuse)
            dmrm(p);
        p = next;
    }
}

int32_t cls_droptype(const char *name)
{
    clskey type = cls_typeinmemory(name);
    if (!type)
        return 4012;
    if (type->refs > 1)
        return errout(4050, "class %s is in use by objects or classes\n", name);
    drop_members(name);
    types.erase(std::find(types.begin(), types.end(), type));
    cls_decref(type);
    return 0;
}

void cls_forgettypes()
{
    for (clskey t : types)
        drop_members(cls_typename(t));
    types.clear();
}
