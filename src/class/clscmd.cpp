// Statements of the class system: lines with a leading dot, the command class, and references
// in macros and expressions.
#include "class/class.h"
#include "class/members.h"
#include "core/missing.h"
#include "core/rc.h"
#include "core/state.h"
#include "core/text.h"
#include "data/variables.h"
#include "expr/expr.h"
#include "expr/parse.h"
#include "interp/dm.h"
#include "interp/interp.h"
#include "interp/macros.h"
#include "interp/messages.h"
#include "interp/programs.h"
#include "output/print.h"
#include <cstring>

namespace
{

// The = of a statement: behind the path, before any quote.
size_t assignment(const std::string &line)
{
    char *p = const_cast<char *>(line.c_str());
    bool open;
    while (*p && *p != ' ' && *p != '=')
        p = *p == '[' || *p == '(' ? pbrackets(p, &open) : p + 1;
    while (*p == ' ')
        p++;
    return *p == '=' && p[1] != '=' ? size_t(p - line.c_str()) : std::string::npos;
}

int32_t assign(std::string left, const char *right)
{
    left.resize(left.find_last_not_of(' ') + 1);
    bool isref = left.size() > 4 && left.compare(left.size() - 4, 4, ".ref") == 0;
    if (isref)
        left.resize(left.size() - 4);
    clskey value;
    int32_t rc = cls_rvalue(right, &value);
    if (rc)
        return rc;
    clsplace place;
    if ((rc = cls_resolve(left.c_str(), &place))) {
        cls_release(value);
        return rc;
    }
    return isref ? cls_assignref(&place, value) : cls_assign(&place, value);
}

// A call as a statement: what it answers is shown when it is text or a number.
int32_t call(const std::string &line)
{
    clsplace place;
    int32_t rc = cls_resolve(line.c_str(), &place);
    if (rc)
        return rc;
    clskey result;
    if ((rc = cls_evaluate(&place, &result)))
        return rc;
    clskind kind = cls_kind(cls_follow(result));
    if (kind == CK_DOUBLE || kind == CK_STRING) {
        outlev_keep keep(1);
        spout21(cls_text(result).c_str());
        newline();
    }
    cls_release(result);
    return 0;
}

} // namespace

int32_t cls_clscmd()
{
    std::string line = ti_lwheretok(tokinfo);
    line.resize(line.find_last_not_of(' ') + 1);
    size_t at = assignment(line);
    return at == line.npos ? call(line) : assign(line.substr(0, at), line.c_str() + at + 1);
}

// ---- class

namespace
{

int32_t class_exit()
{
    clsenv *env = cls_env();
    if (!env)
        return error(4007);
    std::string text = ti_wheretok(tokinfo);
    if (text.find_first_not_of(' ') == text.npos)
        return RC_BARERETURN;
    clskey value;
    if (int32_t rc = cls_rvalue(text.c_str(), &value))
        return rc;
    // What lies in a member goes out as a copy; a reference goes out as one.
    if (value && value->refs) {
        clskey copy;
        if (int32_t rc = cls_newvalue(&copy, value, false))
            return rc < 0 ? error(4026) : rc;
        value = copy;
    }
    cls_setvalue(&env->result, value);
    return RC_BARERETURN;
}

std::string shown(clskey value)
{
    clskey v = cls_follow(value);
    std::string way = cls_kind(value) == CK_KEY ? "-> " : "";
    switch (cls_kind(v)) {
    case CK_NONE: return "";
    case CK_STRING: return way + "\"" + cls_text(v) + "\"";
    case CK_CLASS: return way + "." + cls_typename(cls_value<clsinst>(v)->type);
    case CK_ARRAY: {
        int32_t n = cls_value<clsarray>(v)->n;
        return way + "array of " + std::to_string(n);
    }
    default: return way + cls_text(v);
    }
}

void list(clskey owner, const char *indent)
{
    auto inst = cls_value<clsinst>(owner);
    for (int32_t i = 0; i < inst->n && !stopflag; i++) {
        char name[33];
        auto a = static_cast<clsattr *>(cls_ptr(inst->attr[i], nullptr, nullptr, name));
        clskind kind = a->want ? clskind(a->want) : cls_kind(cls_follow(a->value));
        spout21f("%s%-9s .%-20s ", indent, *a->wantclass ? a->wantclass : cls_map9_type(kind),
                 name);
        spout21(shown(a->value).c_str());
        newline();
    }
}

int32_t describe_type(clskey type)
{
    auto t = cls_value<clstype>(type);
    std::string supers;
    for (int32_t i = 0; i < t->super.n; i++)
        supers += " " + cls_typename(*cls_value<clskey>(t->super.el[i]));
    spout21f("class %s%s%s\n", cls_typename(type).c_str(), supers.empty() ? "" : ", inherits from",
             supers.c_str());
    if (cls_value<clsinst>(t->statics)->n) {
        spout21("  classwide:\n");
        list(t->statics, "    ");
    }
    if (cls_value<clsinst>(t->proto)->n) {
        spout21("  instancespecific:\n");
        list(t->proto, "    ");
    }
    std::string name = cls_typename(type);
    bool any = false;
    char member[33];
    for (void *p = dmnext(nullptr, member, DM_PROGRAM, nullptr); p;
         p = dmnext(p, member, DM_PROGRAM, nullptr)) {
        auto r = static_cast<pgmrec *>(p);
        if (!r->isclass || name != r->owner)
            continue;
        if (!any)
            spout21("  programs:\n");
        any = true;
        spout21f("    .%s\n", member);
    }
    return stopflag;
}

int32_t class_describe()
{
    outlev_keep keep(1);
    std::string text = ti_wheretok(tokinfo) + strspn(ti_wheretok(tokinfo), " ");
    text.resize(text.find_last_not_of(' ') + 1);
    if (!text.empty() && text[0] != '.')
        text = "." + text;
    clsplace place;
    int32_t rc = cls_resolve(text.c_str(), &place);
    if (rc)
        return rc;
    if (!place.value || place.builtin || place.program)
        return error(4012);
    if (cls_kind(place.value) == CK_CLASSTYPE)
        return describe_type(place.value);
    spout21f("%s ", text.c_str());
    spout21(shown(place.value).c_str());
    newline();
    if (cls_kind(place.value) == CK_CLASS)
        list(place.value, "    ");
    if (cls_kind(place.value) == CK_ARRAY)
        for (int32_t i = 1; i <= cls_value<clsarray>(place.value)->n && !stopflag; i++) {
            spout21f("    [%d] ", i);
            spout21(shown(cls_array_el(place.value, i)).c_str());
            newline();
        }
    return stopflag;
}

int32_t class_dir()
{
    outlev_keep keep(1);
    for (clskey type : cls_alltypes())
        spout21f("class     %s\n", cls_typename(type).c_str());
    list(cls_root, "");
    return stopflag;
}

// class drop NAME|.NAME ...: all of them or none.
int32_t class_drop()
{
    std::string rest = ti_wheretok(tokinfo);
    for (bool act : {false, true}) {
        std::string text = rest;
        toktype ti;
        ti_settok(&ti, text.data());
        for (std::string name; !(name = ti_gettok(&ti, prsestd)).empty();) {
            int32_t index;
            if (name[0] == '.' ? !cls_attr(cls_root, name.c_str() + 1, &index)
                               : !cls_typeinmemory(name.c_str()))
                return errout(4012, "class object %s not found\n", name.c_str());
            if (!act)
                continue;
            if (name[0] == '.')
                cls_delattr(cls_root, index);
            else if (int32_t rc = cls_droptype(name.c_str()))
                return rc;
        }
    }
    return 0;
}

int32_t class_clear()
{
    if (cls_env())
        return errout(4007, "class clear not allowed in a member program\n");
    cls_freecontext();
    return 0;
}

const struct {
    const char *word;
    int32_t min;
    int32_t (*handler)();
} verbs[] = {
    {"exit", 2, class_exit}, {"dir", 3, class_dir},     {"describe", 1, class_describe},
    {"drop", 4, class_drop}, {"clear", 5, class_clear},
};

} // namespace

int32_t classcmd(int32_t)
{
    if (!procflg)
        return dead_line();
    gettok_state state;
    ti_stattok(tokinfo, &state);
    std::string word = ti_gettok(tokinfo, prsestd);
    if (word.empty())
        return class_dir();
    // A class may have the name of a verb: a brace behind it tells.
    bool block = word == "{" || ti_peektok_chr(tokinfo) == '{';
    if (!block)
        for (const auto &v : verbs)
            if (cmdcmp(word.c_str(), v.word, v.min))
                return v.handler();
    ti_resettok(tokinfo, &state);
    return cls_define();
}

// ---- references

static int32_t expand(const char *ref, std::string *out)
{
    clsplace place;
    clskey value;
    int32_t rc = cls_resolve(ref, &place);
    if (!rc)
        rc = cls_evaluate(&place, &value);
    if (rc)
        return rc == RC_BREAK ? -1 : rc;
    *out = cls_text(value);
    cls_release(value);
    return 0;
}

// cls("PATH") and scls("PATH"): data alone, programs are not run.
static int32_t look(const char *path, double *num, char *str)
{
    std::string text = path + strspn(path, " ");
    if (text.empty() || text[0] != '.')
        text = "." + text;
    bool was = cls_noprograms;
    uint8_t level = s_outlev;
    cls_noprograms = true;
    s_outlev = 5; // functions do not fail: what is not there is missing, row by row
    clsplace place;
    clskey value = nullkey;
    int32_t rc = cls_resolve(text.c_str(), &place);
    if (!rc)
        rc = cls_evaluate(&place, &value);
    cls_noprograms = was;
    s_outlev = level;
    if (rc)
        return rc;
    clskey v = cls_follow(value);
    if (str)
        strcut(str, 245, cls_text(v).c_str());
    else
        *num = cls_kind(v) == CK_DOUBLE ? *cls_value<double>(v) : misval;
    cls_release(value);
    return 0;
}

// The member program oncopy of a new copy, when its class has one.
static int32_t run_oncopy(clskey instance)
{
    clskey type = cls_value<clsinst>(instance)->type, none;
    clskey program = cls_findmember(type, "oncopy", nullkey);
    if (!program)
        return 0;
    int32_t rc = cls_run_memberpgm_safe(instance, program, "oncopy", "", &none);
    if (!rc)
        cls_decref(none);
    return rc;
}

[[maybe_unused]] static const bool hooked =
    (mac_clsxpand = expand, cls_oncopy = run_oncopy, cls_statement_hook = cls_clscmd,
     xeq_classlook = look, cls_init_hook = cls_init, cls_forget_hook = cls_freecontext, true);
