// Libraries that are searched, and functions that are loaded when they are first called.
#include "core/bytes.h"
#include "core/files.h"
#include "core/mem.h"
#include "core/settings.h"
#include "core/text.h"
#include "interp/interp.h"
#include "interp/macros.h"
#include "mosa/compiler.h"
#include "mosa/mlib.h"
#include "mosa/vm.h"
#include "output/print.h"
#include <algorithm>
#include <cstdio>
#include <dirent.h>
#include <memory>
#include <vector>

char m_libpath[ml_maxlibs + 1][33];
int32_t m_nlibpath;
bool m_libpath_notinited = true;
int32_t m_mofirst;

static const char base_library[] = "lmosabase";

// ---- the list of libraries

bool mlibofficial(const char *name)
{
    return !strncmp(name, "lmosa", 5);
}

// The names of libraries in one directory, in order of the alphabet.
static std::vector<std::string> libraries_in(const std::string &dir)
{
    std::vector<std::string> names;
    DIR *d = opendir(dir.c_str());
    if (!d)
        return names;
    while (const dirent *e = readdir(d)) {
        const char *dot = strchr(e->d_name, '.');
        if (e->d_name[0] == 'l' && dot && !strcmp(dot, ".mlib") && dot - e->d_name <= 32)
            names.emplace_back(e->d_name, size_t(dot - e->d_name));
    }
    closedir(d);
    std::sort(names.begin(), names.end());
    return names;
}

static void add_library(const std::string &name)
{
    for (int32_t k = 0; k < m_nlibpath; k++)
        if (name == m_libpath[k])
            return;
    if (m_nlibpath < ml_maxlibs)
        strcut(m_libpath[m_nlibpath++], 33, name.c_str());
}

// The setting shows the list, and a list that was set is used.
static char shown_list[sizeof set_mosalibs];
static void show_list()
{
    std::string text;
    for (int32_t k = 0; k < m_nlibpath; k++)
        text += (k ? ";" : "") + std::string(m_libpath[k]);
    strcut(set_mosalibs, sizeof set_mosalibs, text.c_str());
    strcut(shown_list, sizeof shown_list, text.c_str());
}

static void use_setting()
{
    if (!strcmp(set_mosalibs, shown_list))
        return;
    m_nlibpath = 0;
    std::string list = set_mosalibs;
    for (size_t at = 0; at < list.size();) {
        size_t end = std::min(list.find_first_of("; ", at), list.size());
        if (end > at && end - at <= 32)
            add_library(list.substr(at, end - at));
        at = end + 1;
    }
    strcut(shown_list, sizeof shown_list, set_mosalibs);
}

void mosarehash()
{
    m_libpath_notinited = false;
    m_nlibpath = 0;
    const char *ado = macptr("S_ADO");
    std::vector<std::string> found;
    if (ado) {
        std::string list = ado, dir;
        for (size_t at = 0; extrpath(list, &at, &dir);)
            for (const std::string &place : {dir, dir + "l"})
                for (const std::string &name : libraries_in(place))
                    if (found.size() < size_t(ml_maxlibs) &&
                        std::find(found.begin(), found.end(), name) == found.end())
                        found.push_back(name);
        add_library(base_library);
        for (bool official : {true, false})
            for (const std::string &name : found)
                if (mlibofficial(name.c_str()) == official)
                    add_library(name);
    }
    show_list();
}

void init_m_libpath()
{
    if (!m_libpath_notinited)
        return;
    if (*set_mosalibs) { // set before anything was looked for
        m_libpath_notinited = false;
        return;
    }
    mosarehash();
}

// ---- one search

namespace
{
struct hunt {
    const char *cls, *name;
    bool load;          // else the place is enough
    bool found = false; // and path tells where
    matobj *f = nullptr;
    std::string path{};
    // What another version compiled: the first that is too old, or a later one that is too new.
    int32_t misfit = 0, format = 0;
    std::string misfitpath{};
    std::unique_ptr<mlib_header, decltype(&safefree)> head{nullptr, safefree};
};
} // namespace

static void load_member(hunt *q, int32_t fd, const mlib_info &info)
{
    const char *cls = q->cls, *name = q->name;
    bool member = *cls && *name;
    matobj *f =
        m_mkfcn("", member ? cls : name, member ? name : "", info.words, info.eltype, info.orgtype);
    if (!f)
        return;
    if (mlib_load2(fd, f->data, info.bytes)) {
        mo_freefcn(f);
        return;
    }
    f->view = 1;
    m_albytes += f->alloc;
    q->f = f;
}

// Looks into one file. What cannot be opened or read is passed over.
static void look_into(hunt *q, const char *path)
{
    if (!q->head)
        q->head.reset(static_cast<mlib_header *>(safemalloc(sizeof(mlib_header))));
    if (!q->head)
        return;
    int32_t fd = mlib_init(q->head.get(), path, ML_READ | ML_QUIET, false);
    if (fd < 0)
        return;
    mlib_info info;
    int32_t format = 0;
    int32_t rc = mlib_load1(fd, q->head.get(), q->cls, q->name, &info, &format);
    if (rc > 0 && (!q->misfit || (q->misfit == 1 && rc == 2))) {
        q->misfit = rc;
        q->format = format;
        q->misfitpath = path;
    }
    if (rc == 0) {
        if (q->load)
            load_member(q, fd, info);
        q->found = !q->load || q->f;
        q->path = path;
    }
    ov_close(fd);
}

static void search_libraries(hunt *q)
{
    char path[512];
    for (int32_t k = 0; k < m_nlibpath && !q->found && !stopflag; k++)
        if (!srchado(m_libpath[k], "mlib", 1, path))
            look_into(q, path);
}

static void search_mofile(hunt *q)
{
    char path[512];
    if (!q->found && !stopflag && !srchado(*q->cls ? q->cls : q->name, "mo", 1, path))
        look_into(q, path);
}

// Text of the user inside mark-up.
static std::string marked(const std::string &text)
{
    std::string s;
    for (char c : text)
        s += c == '{' ? "{c -(}" : c == '}' ? "{c )-}" : std::string(1, c);
    return s;
}

static void tell_misfit(const hunt &q)
{
    if (c_outlev >= 3 || s_outlev >= 3)
        return;
    char version[24];
    snprintf(version, sizeof version, "%d.%02d", q.format / 100, q.format % 100);
    if (size_t n = strlen(version); version[n - 1] == '0')
        version[n - 1] = 0;
    std::string text = "{p}\n(" + std::string(q.cls) + (*q.cls ? "::" : "") + q.name + "() in " +
                       marked(q.misfitpath) + ",\ncompiled by Ovata " + version + ",\nis too " +
                       (q.misfit == 1 ? "old" : "new") +
                       " to be run by this version of Ovata\nand so was ignored)\n{p_end}\n";
    spoutsml(text.c_str());
}

static bool search(hunt *q)
{
    if (!*q->name) {
        q->name = q->cls;
        q->cls = "";
    }
    if (!*q->name || strlen(q->name) > 32 || strlen(q->cls) > 32)
        return false;
    init_m_libpath();
    use_setting();
    if (m_mofirst)
        search_mofile(q);
    search_libraries(q);
    if (!m_mofirst)
        search_mofile(q);
    if (!q->found && q->misfit)
        tell_misfit(*q);
    return q->found;
}

bool m_autosearch(const char *cls, const char *name, std::string *path)
{
    hunt q{.cls = cls, .name = name, .load = false};
    if (!search(&q))
        return false;
    *path = q.path;
    return true;
}

static matobj *load(const char *cls, const char *name)
{
    hunt q{.cls = cls, .name = name, .load = true};
    return search(&q) ? q.f : nullptr;
}

static const bool hooked = [] {
    m_autoload = load;
    return true;
}();
