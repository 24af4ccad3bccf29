// The commands about files of functions: mosa mlib, mosa mosave, mosa describe using.
//
//   mosa mlib create NAME [, dir(DIRECTORY) size(#) replace]
//   mosa mlib add NAME FUNCTIONS [, dir(DIRECTORY) complete]
//   mosa mlib index | query
//   mosa mosave FUNCTION [, dir(DIRECTORY) replace complete]
#include "core/files.h"
#include "core/mem.h"
#include "core/numtext.h"
#include "core/rc.h"
#include "core/text.h"
#include "data/variables.h"
#include "interp/interp.h"
#include "interp/messages.h"
#include "mosa/compiler.h"
#include "mosa/mlib.h"
#include "mosa/mtypes.h"
#include "output/print.h"
#include <algorithm>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

int32_t mosa_mlib(int32_t), mosa_mosave(int32_t);

namespace
{

struct lib_options {
    std::string dir; // with its separator; empty when none is told
    int32_t size = ml_capacity;
    bool hasdir = false, hassize = false, replace = false, complete = false;
};
enum : int32_t { LO_DIR = 1, LO_SIZE = 2, LO_REPLACE = 4, LO_COMPLETE = 8 };

std::string trimmed(const std::string &s)
{
    size_t from = s.find_first_not_of(' '), to = s.find_last_not_of(' ');
    return from == s.npos ? "" : s.substr(from, to - from + 1);
}

// A code word such as PERSONAL, or a path.
std::string directory_of(std::string text)
{
    text = trimmed(text);
    if (text.size() > 1 && text.front() == '"' && text.back() == '"')
        text = text.substr(1, text.size() - 2);
    if (const char *known = sysdir_of(text.c_str()))
        return known;
    text = path_expand(text);
    return text.empty() || text == "." ? "" : text.back() == '/' ? text : text + "/";
}

// The text in the brackets behind an option; false when there are none.
bool argument(toktype *ti, std::string *text)
{
    bool open;
    char *from = ti_wheretok(ti);
    if (*from != '(')
        return false;
    char *end = pbrackets(from, &open);
    if (open)
        return false;
    text->assign(from + 1, size_t(end - from) - 2);
    ti_settok(ti, end);
    return true;
}

int32_t one_option(toktype *ti, const char *word, int32_t allow, lib_options *o)
{
    std::string text;
    if ((allow & LO_DIR) && cmdcmp(word, "dir", 3)) {
        if (!argument(ti, &text))
            return errout(RC_SYNTAX, "option dir() incorrectly specified\n");
        o->dir = directory_of(text);
        o->hasdir = true;
    } else if ((allow & LO_SIZE) && cmdcmp(word, "size", 1)) {
        if (!argument(ti, &text) || cnvstoint4(trimmed(text).c_str(), &o->size) || o->size < 2 ||
            o->size > ml_maxmembers)
            return errout(RC_SYNTAX, "size() must be between 2 and %d\n", ml_maxmembers);
        o->hassize = true;
    } else if ((allow & LO_REPLACE) && cmdcmp(word, "replace", 7))
        o->replace = true;
    else if ((allow & LO_COMPLETE) && cmdcmp(word, "complete", 1))
        o->complete = true;
    else
        return errout(RC_SYNTAX, "option %s not allowed\n", word);
    return 0;
}

// The rest of the line: what stands before the comma, and the options behind it.
int32_t parse_rest(std::string *before, int32_t allow, lib_options *o)
{
    char *from = ti_wheretok(tokinfo), *comma = pfindoutside(from, ',');
    before->assign(from, size_t(comma - from));
    *before = trimmed(*before);
    if (!*comma)
        return 0;
    toktype ti;
    ti_settok(&ti, comma + 1);
    for (;;) {
        char word[40];
        strcut(word, sizeof word, ti_gettok(&ti, prsestd));
        if (!*word)
            return 0;
        if (int32_t rc = one_option(&ti, word, allow, o))
            return rc;
    }
}

int32_t check_libname(std::string *name)
{
    if (name->size() > 5 && name->compare(name->size() - 5, 5, ".mlib") == 0)
        name->resize(name->size() - 5);
    if (name->empty())
        return required("library name");
    if (chkname(name->c_str(), true))
        return errout(RC_SYNTAX, "%s invalid name\n", name->c_str());
    if ((*name)[0] != 'l')
        return errout(RC_SYNTAX, "library names must start with letter lowercase l\n");
    if (mlibofficial(name->c_str()) && !m_official)
        return errout(RC_SYNTAX, "prefix lmosa reserved for official libraries\n");
    return 0;
}

using head_ptr = std::unique_ptr<mlib_header, decltype(&safefree)>;
head_ptr new_head()
{
    return {static_cast<mlib_header *>(safecalloc(sizeof(mlib_header))), safefree};
}

int32_t no_memory()
{
    return errout(RC_NOMEM, "insufficient memory\n");
}

// What exists gives way only when the new file is whole.
int32_t settle(const std::string &made, const std::string &path)
{
    if (made == path || !rename(made.c_str(), path.c_str()))
        return fierr(697, path.c_str());
    ov_discard(made.c_str());
    return fierr(RC_FILEOPEN, path.c_str());
}

// Where the file is made: beside one that it is to replace, or in its place. 602 when it is
// there and may not be replaced.
int32_t place_of(const std::string &path, bool replace, std::string *made)
{
    bool there = path_isfile(path) || path_isdir(path);
    if (there && !replace)
        return fierr(RC_FILEEXISTS, path.c_str());
    *made = there ? path + ".new" : path;
    if (there)
        ov_discard(made->c_str());
    return 0;
}

std::string first_word(std::string *text)
{
    size_t end = std::min(text->find(' '), text->size());
    std::string word = text->substr(0, end);
    *text = trimmed(text->substr(end));
    return word;
}

int32_t create()
{
    lib_options o;
    std::string name, made;
    int32_t rc = parse_rest(&name, LO_DIR | LO_SIZE | LO_REPLACE, &o);
    if (rc || (rc = check_libname(&name)))
        return rc;
    std::string path = o.dir + name + ".mlib";
    if ((rc = place_of(path, o.replace, &made)) || (rc = mlib_create(made.c_str(), o.size)))
        return rc;
    return settle(made, path);
}

// ---- functions to add

bool by_name(const matobj *a, const matobj *b)
{
    int32_t order = strcmp(mo_name(a), mo_name(b));
    return order ? order < 0 : strcmp(a->info->subname, b->info->subname) < 0;
}

// The functions that a list names, by name; a pattern leaves out what came from a library. What
// a definition of a class in the list takes along is left to it.
int32_t functions_of(const std::string &text, std::vector<const matobj *> *list)
{
    m_namelist names{};
    int32_t rc = mparseinit(&names);
    if (!rc)
        rc = mparse(&names, text.c_str(), MP_MATRICES | MP_FUNCTIONS);
    bool pattern = text.find_first_of("*?") != text.npos;
    for (int32_t i = 0; !rc && i < names.n; i++) {
        const matobj *f = names.obj[i];
        if (!mo_isfcn(f)) {
            std::string name = mo_name(f);
            rc = errout(RC_SYNTAX, "%s:  only functions may be written in libraries\n",
                        name.c_str());
            if (rc != RC_BREAK)
                rc = errout(rc, "nothing added; library unchanged\n");
        } else if (!pattern || !f->view)
            list->push_back(f);
    }
    mparsefree(&names);
    std::sort(list->begin(), list->end(), by_name);
    std::vector<const matobj *> classes;
    for (const matobj *f : *list)
        if (f->cols == MT_CLASSDEF)
            classes.push_back(f);
    std::erase_if(*list, [&](const matobj *f) {
        return *f->info->subname && std::any_of(classes.begin(), classes.end(), [&](auto *c) {
            return !strcmp(mo_name(c), mo_name(f));
        });
    });
    return rc;
}

int32_t add_all(int32_t fd, mlib_header *h, const std::vector<const matobj *> &list, bool complete,
                int32_t *total)
{
    int32_t result = 0;
    for (const matobj *f : list) {
        const char *cls = *f->info->subname ? mo_name(f) : "";
        const char *name = *cls ? f->info->subname : mo_name(f);
        if (mlib_search(h, cls, name)) {
            result =
                errout(RC_FILEEXISTS, "%s%s%s() already in library\n", cls, *cls ? "::" : "", name);
            continue;
        }
        int32_t added = 0, rc = mlib_fancyadd(fd, h, f, complete, &added);
        *total += added;
        if (rc)
            return rc;
        if (stopflag)
            return RC_BREAK;
    }
    return result;
}

int32_t add()
{
    lib_options o;
    std::string text;
    int32_t rc = parse_rest(&text, LO_DIR | LO_COMPLETE, &o);
    std::string name = first_word(&text);
    if (rc || (rc = check_libname(&name)))
        return rc;
    std::vector<const matobj *> list;
    if ((rc = functions_of(text, &list)))
        return rc;
    head_ptr h = new_head();
    if (!h)
        return no_memory();
    std::string path = o.hasdir ? o.dir + name + ".mlib" : name;
    int32_t fd = mlib_init(h.get(), path.c_str(), ML_WRITE, !o.hasdir);
    if (fd < 0)
        return -fd;
    int32_t n = 0;
    rc = add_all(fd, h.get(), list, o.complete, &n);
    ov_close(fd);
    outlev_keep level(0);
    spout21f("(%d function%s added)\n", n, n == 1 ? "" : "s");
    return rc;
}

int32_t show_libraries(const char *title)
{
    outlev_keep level(0);
    spout21(title);
    for (int32_t k = 0; k < m_nlibpath; k++)
        if (spout21f("    %s\n", m_libpath[k]))
            return stopflag;
    return 0;
}

} // namespace

int32_t mosa_mlib(int32_t)
{
    char word[40];
    strcut(word, sizeof word, ti_gettok(tokinfo, prsestd));
    if (cmdcmp(word, "create", 1))
        return create();
    if (cmdcmp(word, "add", 1))
        return add();
    if (cmdcmp(word, "index", 1)) {
        mosarehash();
        return show_libraries(".mlib libraries to be searched are now\n");
    }
    if (cmdcmp(word, "query", 1)) {
        init_m_libpath();
        return show_libraries(".mlib libraries to be searched are\n");
    }
    if (!strcmp(word, "OFFICIAL") || !strcmp(word, "USER")) {
        m_official = *word == 'O';
        return 0;
    }
    return errout(RC_SYNTAX, "%s:  invalid mlib subcommand\n", tok_text(word));
}

int32_t mosa_mosave(int32_t)
{
    lib_options o;
    std::string text, made;
    std::vector<const matobj *> list;
    int32_t rc = parse_rest(&text, LO_DIR | LO_REPLACE | LO_COMPLETE, &o);
    if (rc || (rc = functions_of(text, &list)))
        return rc;
    if (list.size() != 1)
        return errout(RC_SYNTAX, "one function must be named\n");
    std::string path = o.dir + mo_name(list[0]) + ".mo";
    if ((rc = place_of(path, o.replace, &made)))
        return rc;
    head_ptr h = new_head();
    if (!h)
        return no_memory();
    if ((rc = mlib_create(made.c_str(), ml_mocapacity)))
        return rc;
    int32_t fd = mlib_init(h.get(), made.c_str(), ML_WRITE, false), added;
    rc = fd < 0 ? -fd : mlib_fancyadd(fd, h.get(), list[0], o.complete, &added);
    ov_close(fd);
    if (!rc)
        return settle(made, path);
    ov_discard(made.c_str());
    return rc;
}

// ---- what a library holds

static std::string member_type(const mlib_info &info)
{
    if (info.eltype == MT_STRUCTDEF || info.eltype == MT_CLASSDEF)
        return readableeltype(info.eltype);
    if (info.orgtype == OT_VOID)
        return "void";
    return std::string(readableeltype(info.eltype)) + " " + readableorgtype(info.orgtype);
}

int32_t m_describe_library(const std::string &what)
{
    std::string name = trimmed(what);
    bool path = name.find('/') != name.npos || path_hasext(name);
    if (name.size() > 1 && name.front() == '"' && name.back() == '"')
        name = name.substr(1, name.size() - 2);
    if (name.empty())
        return required("library name");
    head_ptr h = new_head();
    if (!h)
        return no_memory();
    if (path && !path_hasext(name))
        name += ".mlib";
    int32_t fd = mlib_init(h.get(), name.c_str(), ML_READ, !path);
    if (fd < 0)
        return -fd;
    outlev_keep level(0);
    spoutsml("\n{txt}     # bytes   type                        name and extent\n{hline 72}\n");
    mlib_info info;
    for (int32_t k = 0; !stopflag; k++) {
        int32_t rc = mlib_nmbr(fd, h.get(), k, &info);
        if (rc == -1)
            break;
        spout21f("%12d   %-27s %s%s%s()\n", rc ? 0 : info.bytes,
                 rc ? "(damaged)" : member_type(info).c_str(), h->cls[k], h->cls[k][0] ? "::" : "",
                 h->name[k]);
    }
    spoutsml("{txt}{hline 72}\n");
    ov_close(fd);
    return stopflag;
}
