// Paths and values.
#include "class/paths.h"
#include "class/members.h"
#include "core/missing.h"
#include "core/rc.h"
#include "core/state.h"
#include "core/text.h"
#include "data/variables.h"
#include "expr/expr.h"
#include "interp/macros.h"
#include "interp/messages.h"
#include "interp/tokens.h"
#include <cstring>

clskey cls_follow(clskey key)
{
    for (int32_t i = 0; i < 64 && cls_kind(key) == CK_KEY; i++)
        key = *cls_value<clskey>(key);
    return key;
}

namespace
{

bool name_char(char c, bool first)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' ||
           (!first && c >= '0' && c <= '9');
}

// The name behind a dot; empty when there is none.
std::string take_name(const char **p)
{
    const char *q = *p;
    if (!strncmp(q, "__key(", 6)) {
        const char *end = strchr(q, ')');
        q = end ? end + 1 : q;
    } else if (name_char(*q, true))
        while (name_char(*q, false))
            q++;
    std::string name(*p, size_t(q - *p));
    *p = q;
    return name;
}

int32_t bad(const char *name)
{
    return errout(4012, "class member %s not found\n", name);
}

struct walk {
    clsplace *at;
    clskey behind = nullkey; // .super: the classes behind this one
};

void to_value(clsplace *at, clskey value)
{
    std::string name = at->name;
    const char *rest = at->rest;
    *at = clsplace();
    at->name = name;
    at->rest = rest;
    at->value = cls_follow(value);
}

void to_attr(clsplace *at, clskey owner, clsattr *attr)
{
    to_value(at, attr->value);
    at->owner = owner;
    at->attr = attr;
}

// A member of the value: a place, one of ours or a program. False when it has none of the name.
bool find_in(walk *w, clskey value, const std::string &name)
{
    clskind kind = cls_kind(value);
    clskey type = kind == CK_CLASS       ? cls_value<clsinst>(value)->type
                  : kind == CK_CLASSTYPE ? value
                                         : nullkey;
    if (clsattr *a = cls_attr(value, name.c_str(), nullptr)) {
        to_attr(w->at, value, a);
        return true;
    }
    if (clsattr *a = type ? cls_findstatic(type, name.c_str()) : nullptr) {
        to_attr(w->at, value, a);
        return true;
    }
    // A program goes before one of ours, but an object is never made by a program alone.
    clskey program =
        type && name != "new" ? cls_findmember(type, name.c_str(), w->behind) : nullkey;
    if (w->behind && name == "new")
        program = cls_findmember(type, "new", w->behind);
    const clsmember *ours = program ? nullptr : cls_member(name.c_str(), kind);
    if (!program && !ours)
        return false;
    to_value(w->at, value);
    w->at->program = program;
    w->at->builtin = ours;
    w->at->name = name;
    return true;
}

int32_t first(walk *w, const std::string &name)
{
    clsplace *at = w->at;
    clsenv *env = cls_env();
    at->name = name;
    if (name[0] == '_' && name.back() == ')') {
        clskey key;
        int32_t rc = ref_to_key(&key, name.c_str());
        if (rc)
            return error(rc);
        to_value(at, key);
        return 0;
    }
    if (name == "this" || name == "super") {
        if (!env)
            return error(4007);
        to_value(at, env->self);
        at->super = name == "super";
        w->behind = at->super ? env->type : nullkey;
        return 0;
    }
    if (name == "global" || name == "oncopy_src") {
        to_value(at, name == "global" ? cls_root : oncopy_src_key);
        return at->value ? 0 : error(4007);
    }
    if (env && find_in(w, env->self, name))
        return 0;
    if (clsattr *a = cls_attr(cls_root, name.c_str(), nullptr)) {
        to_attr(at, cls_root, a);
        return 0;
    }
    clskey type;
    int32_t rc = cls_findtype(name.c_str(), &type);
    if (rc)
        return rc;
    if (type)
        to_value(at, type);
    else if (find_in(w, cls_root, name))
        return 0;
    else {
        at->owner = cls_root;
        at->name = name;
    }
    return 0;
}

// [N] behind a value.
int32_t element(clsplace *at, const char **p)
{
    const char *end = pfindoutside(const_cast<char *>(*p + 1), ']');
    if (*end != ']')
        return errout(4003, "] required\n");
    if (cls_kind(at->value) != CK_ARRAY)
        return error(4020);
    std::string text(*p + 1, size_t(end - *p - 1));
    bool isstr;
    double z;
    char str[256];
    int32_t rc = exp_text(text.c_str(), W_NUM, &isstr, &z, str);
    if (rc)
        return rc;
    if (isstr || !(z >= 1 && z <= double(cls_maxlen)))
        return error(4029);
    clskey array = at->value;
    to_value(at, cls_array_el(array, int32_t(z)));
    at->array = array;
    at->index = int32_t(z);
    *p = end + 1;
    return 0;
}

} // namespace

int32_t cls_resolve(const char *text, clsplace *place)
{
    *place = clsplace();
    walk w = {place};
    const char *p = text;
    for (bool begun = false;; begun = true) {
        if (*p != '.')
            return error(4003);
        p++;
        std::string name = take_name(&p);
        if (name.empty())
            return error(4003);
        if (name.size() > 32 && name[0] != '_')
            return error(4011);
        int32_t rc = 0;
        if (!begun)
            rc = first(&w, name);
        else {
            clskey value = place->value;
            if (!value) { // a place that holds nothing yet can be asked what it holds
                place->builtin =
                    place->attr || place->array ? cls_member(name.c_str(), CK_NONE) : nullptr;
                if (!place->builtin)
                    return bad(place->attr ? name.c_str() : place->name.c_str());
                place->rest = p;
                return 0;
            }
            w.behind = place->super ? w.behind : nullkey;
            if (!find_in(&w, value, name)) {
                if (cls_kind(value) != CK_CLASS && cls_kind(value) != CK_CONTEXT)
                    return bad(name.c_str());
                *place = clsplace();
                place->owner = value;
                place->name = name;
            }
        }
        while (!rc && *p == '[')
            rc = element(place, &p);
        if (rc)
            return rc;
        place->rest = p;
        if (place->program || place->builtin || *p != '.')
            return 0;
    }
}

// ---- values

std::string cls_text(clskey key)
{
    key = cls_follow(key);
    char text[48] = "";
    switch (cls_kind(key)) {
    case CK_NONE: break;
    case CK_DOUBLE: mac_numtext(*cls_value<double>(key), text); break;
    case CK_STRING: {
        uint32_t n;
        auto p = static_cast<char *>(cls_ptr(key, nullptr, &n, nullptr));
        return std::string(p, n);
    }
    default: key_to_ref(key, text);
    }
    return text;
}

int32_t cls_evaluate(clsplace *at, clskey *out)
{
    *out = nullkey;
    const char *rest = at->rest + strspn(at->rest, " ");
    if (at->program || at->builtin) {
        if (at->program) {
            clskey result;
            int32_t rc =
                cls_run_memberpgm_safe(at->value, at->program, at->name.c_str(), rest, &result);
            if (!rc && result)
                result->refs--; // the caller keeps or releases it
            *out = result;
            return rc;
        }
        clscall c = {at, rest};
        int32_t rc = at->builtin->handler(&c);
        *out = c.result;
        return rc;
    }
    if (!at->attr && !at->array && !at->value)
        return bad(at->name.c_str());
    if (*rest)
        return error(4003);
    *out = at->value;
    return 0;
}

static int32_t array_value(const char **p, clskey *out)
{
    clskey array;
    int32_t rc = cls_newarray(&array, nullptr);
    const char *q = *p + 1;
    while (!rc) {
        q += strspn(q, " ,");
        if (*q == '}' || !*q)
            break;
        clskey value;
        if ((rc = cls_listvalue(&q, &value)))
            break;
        if (value && value->refs) { // it lies elsewhere
            clskey copy;
            if ((rc = cls_newvalue(&copy, value, false)))
                break;
            value = copy;
        }
        if ((rc = cls_array_push(array, value)))
            cls_release(value);
    }
    if (!rc && *q != '}')
        rc = error(4030);
    if (rc) {
        cls_release(array);
        return rc;
    }
    *p = q + 1;
    *out = array;
    return 0;
}

int32_t cls_listvalue(const char **end, clskey *out)
{
    const char *p = *end;
    if (*p == '{') {
        int32_t rc = array_value(end, out);
        return rc;
    }
    bool open;
    char *q = const_cast<char *>(p);
    while (*q && *q != ',' && *q != '}') {
        if (*q == '"')
            q = psimplequotes(q, &open);
        else if (*q == '`' && q[1] == '"')
            q = pcompoundquotes(q, &open);
        else if (*q == '(' || *q == '[')
            q = pbrackets(q, &open);
        else
            q++;
    }
    std::string text(p, size_t(q - p));
    *end = q;
    return cls_rvalue(text.c_str(), out);
}

// .a to .z are missing values where nothing bears the name.
static bool is_object(const std::string &s)
{
    if (s[0] != '.' || s.size() < 2 || !name_char(s[1], true))
        return false;
    const char name[] = {s[1], 0};
    return s.size() > 2 || s[1] < 'a' || cls_attr(cls_root, name, nullptr) ||
           (cls_env() && cls_attr(cls_env()->self, name, nullptr));
}

int32_t cls_rvalue(const char *text, clskey *out)
{
    *out = nullkey;
    std::string s = text + strspn(text, " ");
    s.resize(s.find_last_not_of(' ') + 1);
    if (s.empty())
        return error(4026);
    if (s[0] == '{') {
        const char *p = s.c_str();
        int32_t rc = array_value(&p, out);
        if (!rc && p[strspn(p, " ")]) {
            cls_release(*out);
            *out = nullkey;
            rc = error(4030);
        }
        return rc;
    }
    if (!s.compare(0, 6, "__key("))
        s = "." + s;
    if (is_object(s)) {
        clsplace place;
        int32_t rc = cls_resolve(s.c_str(), &place);
        return rc ? rc : cls_evaluate(&place, out);
    }
    char *start, *stop, *next;
    toktype ti;
    if ((s[0] == '"' || (s[0] == '`' && s[1] == '"')) &&
        !ti_parse_quoted_string(&ti, s.data(), &start, &stop, &next) && !next[strspn(next, " ")])
        return cls_newstring(out, start, size_t(stop - start), nullptr);
    bool isstr;
    double z;
    char str[256];
    int32_t rc = exp_text(s.c_str(), W_ANY, &isstr, &z, str);
    if (rc)
        return rc;
    return isstr ? cls_newstring(out, str, strlen(str), nullptr) : cls_newnumber(out, z, nullptr);
}

// ---- declarations and assignment

int32_t cls_fits(uint8_t want, const char *wantclass, clskey value)
{
    clskey v = cls_follow(value);
    clskind kind = cls_kind(v);
    if (!want || !v)
        return 0;
    if (want == CK_CLASS && kind == CK_CLASS) {
        if (cls_isa(cls_value<clsinst>(v)->type, wantclass))
            return 0;
        return errout(4027, "    may not assign instances of incompatible classes\n");
    }
    return kind == want ? 0 : error(4019);
}

int32_t cls_readdeclaration(const char *line, clsdeclared *out)
{
    static const struct {
        const char *word;
        clskind kind;
    } words[] = {{"double", CK_DOUBLE}, {"string", CK_STRING}, {"array", CK_ARRAY}};
    std::string text = line;
    size_t equals = std::string::npos;
    if (char *e = pfindoutside(text.data(), '='); *e == '=')
        equals = size_t(e - text.data());
    std::string value = equals == text.npos ? "" : text.substr(equals + 1);
    text.resize(std::min(equals, text.size()));
    toktype ti;
    ti_settok(&ti, text.data());
    std::string type = ti_gettok(&ti, prsestd);
    out->name = ti_gettok(&ti, prsestd);
    if (*ti_gettok(&ti, prsestd))
        return error(RC_SYNTAX);
    if (int32_t rc = chkname(out->name.c_str(), false))
        return rc;
    out->want = CK_CLASS;
    for (const auto &w : words)
        if (type == w.word)
            out->want = w.kind;
    if (out->want == CK_CLASS) {
        if (chkname(type.c_str(), true))
            return error(4006);
        out->wantclass = type;
    }
    if (equals != std::string::npos) {
        clskey found;
        int32_t rc = cls_rvalue(value.c_str(), &found);
        if (!rc && found && found->refs) {
            clskey copy;
            rc = cls_newvalue(&copy, found, false);
            found = copy;
        }
        if (!rc && (rc = cls_fits(out->want, out->wantclass.c_str(), found)))
            cls_release(found);
        out->value = rc ? nullkey : found;
        return rc;
    }
    switch (out->want) {
    case CK_DOUBLE: return cls_newnumber(&out->value, misval, nullptr);
    case CK_STRING: return cls_newstring(&out->value, "", 0, nullptr);
    case CK_ARRAY: return cls_newarray(&out->value, nullptr);
    default: return 0;
    }
}

// The value finds its place, which is made when it is not there.
static int32_t put(clsplace *at, clskey value)
{
    if (at->program || at->builtin || at->super)
        return error(4005);
    if (at->attr) {
        int32_t rc = cls_fits(at->attr->want, at->attr->wantclass, value);
        if (!rc)
            cls_setvalue(&at->attr->value, value);
        return rc;
    }
    if (at->array)
        return cls_valid_key(at->array) ? cls_add_to_array(at->array, at->index, value)
                                        : error(4028);
    if (at->owner == cls_root && cls_root)
        return cls_addattr(cls_root, at->name.c_str(), value, CK_NONE, nullptr);
    return at->owner ? bad(at->name.c_str()) : error(4005);
}

int32_t cls_assign(clsplace *at, clskey value)
{
    if (cls_kind(value) == CK_KEY) {
        cls_release(value);
        return errout(4019, "= assigment of a reference is not allowed\n");
    }
    if (cls_kind(value) == CK_CLASSTYPE)
        return error(4027);
    clskey mine = value;
    if (value && value->refs) {
        int32_t rc = cls_newvalue(&mine, value, false);
        if (rc)
            return rc < 0 ? error(4027) : error(rc);
    }
    int32_t rc = put(at, mine);
    if (rc)
        cls_release(mine);
    return rc;
}

int32_t cls_assignref(clsplace *at, clskey value)
{
    clskey target = cls_follow(value), key;
    if (!target) {
        cls_release(value);
        return error(4010);
    }
    int32_t rc = cls_newkey(&key, target, nullptr);
    cls_release(value);
    if (!rc && (rc = put(at, key)))
        cls_release(key);
    return rc;
}
