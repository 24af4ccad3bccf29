// commands/filecmds.cpp - files and directories: pwd cd dir mkdir rmdir erase copy type view.
#include "commands/showfile.h"
#include "core/files.h"
#include "core/mem.h"
#include "core/rc.h"
#include "core/state.h"
#include "interp/interp.h"
#include "interp/messages.h"
#include "output/oml.h"
#include "output/print.h"
#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <dirent.h>
#include <fnmatch.h>
#include <initializer_list>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

// ---- reading the line
static int32_t filename(std::string *out)
{
    char name[500];
    int32_t rc = ti_gettokfn(tokinfo, name);
    if (rc)
        return error(rc);
    *out = path_expand(name);
    return 0;
}

struct optword {
    const char *name;
    int32_t min;
    bool *seen;
};
// The end of the line, or a comma and words of the list.
static int32_t lineend(std::initializer_list<optword> words)
{
    const char *t = ti_gettok(tokinfo, prsestd);
    if (!*t)
        return 0;
    if (strcmp(t, ",") != 0)
        return error(RC_SYNTAX);
    while (*(t = ti_gettok(tokinfo, prsestd))) {
        bool known = false;
        for (const optword &w : words)
            if (cmdcmp(t, w.name, w.min))
                known = *w.seen = true;
        if (!known)
            return errout(RC_SYNTAX, "option %s not allowed\n", tok_text(t));
    }
    return 0;
}

// The code of what the system said about a path.
static int32_t syserr(const char *name)
{
    switch (errno) {
    case ENOENT: return fierr(RC_FILENOTFOUND, name);
    case EEXIST: return fierr(RC_FILEEXISTS, name);
    case EACCES:
    case EPERM:
    case EROFS: return fierr(608, name);
    case ENOSPC: return fierr(RC_DISKFULL, name);
    }
    return fierr(RC_IOWRITE, name);
}

// ---- directories
int32_t cmd_pwd(int32_t)
{
    int32_t rc = lineend({});
    return rc ? rc : spout21fat(0, "%s\n", path_cwd().c_str());
}

int32_t cmd_cd(int32_t)
{
    std::string dir = "~";
    if (ti_peektok_chr(tokinfo)) {
        int32_t rc = filename(&dir);
        if (rc || (rc = lineend({})))
            return rc;
    }
    if (chdir(path_expand(dir).c_str()))
        return errout(170, "unable to chdir\n");
    return spout21fat(0, "%s\n", path_cwd().c_str());
}

int32_t cmd_mkdir(int32_t)
{
    std::string dir;
    bool shared = false;
    int32_t rc = filename(&dir);
    if (rc || (rc = lineend({{"public", 3, &shared}})))
        return rc;
    if (mkdir(dir.c_str(), shared ? 0777 : 0755))
        return errout(693, "could not create directory %s\n", dir.c_str());
    return 0;
}

int32_t cmd_rmdir(int32_t)
{
    std::string dir;
    int32_t rc = filename(&dir);
    if (rc || (rc = lineend({})))
        return rc;
    if (rmdir(dir.c_str()))
        return errout(693, "could not remove directory %s\n", dir.c_str());
    return 0;
}

static int32_t show_entry(const std::string &path, const std::string &name, bool wide)
{
    struct stat st;
    if (lstat(path.c_str(), &st))
        return stopflag;
    bool dir = S_ISDIR(st.st_mode);
    if (wide)
        return spout21f("%s%s\n", name.c_str(), dir ? "/" : "");
    char size[32], when[32];
    double n = double(st.st_size);
    if (dir)
        strcpy(size, "<dir>");
    else if (n < 1e4)
        snprintf(size, sizeof size, "%.0f", n);
    else
        snprintf(size, sizeof size, n < 1e7 ? "%.1fk" : "%.1fM", n / (n < 1e7 ? 1024 : 1048576));
    struct tm tm;
    localtime_r(&st.st_mtime, &tm);
    strftime(when, sizeof when, "%d %b %Y %H:%M", &tm);
    return spout21f("%9s  %s  %s%s\n", size, when, name.c_str(), dir ? "/" : "");
}

int32_t cmd_dir(int32_t)
{
    std::string pattern = "*";
    bool wide = false;
    int32_t rc = 0;
    char next = ti_peektok_chr(tokinfo);
    if (next && next != ',' && (rc = filename(&pattern)))
        return rc;
    if ((rc = lineend({{"wide", 1, &wide}})))
        return rc;
    if (path_isdir(pattern))
        pattern = path_join(pattern, "*");
    size_t slash = pattern.rfind('/');
    std::string dir = slash == pattern.npos ? "" : pattern.substr(0, slash + 1),
                last = path_last(pattern);
    DIR *d = opendir(dir.empty() ? "." : dir.c_str());
    std::vector<std::string> names;
    if (d) {
        while (const dirent *e = readdir(d))
            if (!fnmatch(last.c_str(), e->d_name, FNM_PERIOD) && strcmp(e->d_name, ".") &&
                strcmp(e->d_name, ".."))
                names.push_back(e->d_name);
        closedir(d);
    }
    if (names.empty() && (!d || last != "*"))
        return fierr(RC_FILENOTFOUND, pattern.c_str());
    std::sort(names.begin(), names.end());
    outlev_keep keep(0);
    for (const std::string &name : names)
        if ((rc = show_entry(dir + name, name, wide)))
            return rc;
    return 0;
}

// ---- files
int32_t ti_crcerase(int32_t)
{
    std::string name;
    int32_t rc = filename(&name);
    if (rc || (rc = lineend({})))
        return rc;
    if (path_isdir(name))
        return fierr(RC_FILEOPEN, name.c_str());
    return unlink(name.c_str()) ? syserr(name.c_str()) : 0;
}

static int32_t copy_bytes(int32_t from, int32_t to, const std::string &a, const std::string &b)
{
    static char buf[32768];
    for (;;) {
        int32_t n = ovata_read(from, buf, sizeof buf);
        if (n < 0)
            return fierr(RC_IOREAD, a.c_str());
        if (ovata_write(to, buf, n) != n)
            return fierr(RC_DISKFULL, b.c_str());
        if (n < int32_t(sizeof buf))
            return 0;
        if (fault_poll())
            return RC_BREAK;
    }
}

int32_t cmd_copy(int32_t)
{
    std::string a, b;
    bool replace = false, shared = false, text = false;
    int32_t rc;
    if ((rc = filename(&a)) || (rc = filename(&b)) ||
        (rc = lineend({{"replace", 3, &replace}, {"public", 3, &shared}, {"text", 1, &text}})))
        return rc;
    if (path_isdir(b))
        b = path_join(b, path_last(a));
    struct stat sa, sb;
    if (!stat(a.c_str(), &sa) && !stat(b.c_str(), &sb) && sa.st_ino == sb.st_ino &&
        sa.st_dev == sb.st_dev)
        return fierr(RC_FILEEXISTS, b.c_str());
    int32_t from = ov_open(a.c_str(), OV_READ);
    if (from < 0)
        return fierr(from, a.c_str());
    int32_t to = ov_open(b.c_str(), replace ? OV_REPLACE : OV_CREATE);
    if (to < 0) {
        ov_close(from);
        return fierr(to, b.c_str());
    }
    rc = copy_bytes(from, to, a, b);
    ov_close(from);
    ov_close(to);
    if (rc)
        ov_discard(b.c_str());
    return rc;
}

// ---- showing a file
static bool hasending(const std::string &name, const char *end)
{
    size_t n = strlen(end);
    return name.size() >= n && !name.compare(name.size() - n, n, end);
}

// Raw lines go out in pieces as they are read; mark-up needs its whole line.
static int32_t show_piece(std::string *held, bool markup, bool all)
{
    size_t upto = all ? held->size() : held->rfind('\n') + 1;
    if (!upto)
        return stopflag;
    std::string part = held->substr(0, upto);
    held->erase(0, upto);
    std::replace(part.begin(), part.end(), '\0', ' ');
    if (markup && part.compare(0, 7, "{omcl}\n") == 0)
        part.erase(0, 7);
    return markup ? spoutsml(part.c_str()) : spout21(part.c_str());
}

int32_t show_file(const std::string &name, bool asis)
{
    int32_t fd = ov_open(name.c_str(), OV_READ);
    if (fd < 0)
        return fierr(fd, name.c_str());
    static char buf[16384];
    std::string held;
    bool markup = !asis && (hasending(name, ".omcl") || hasending(name, ".ovhlp"));
    bool first = true, nl = true;
    outlev_keep keep(1);
    int32_t rc = 0, n;
    do {
        n = ovata_read(fd, buf, sizeof buf);
        if (n < 0) {
            rc = fierr(RC_IOREAD, name.c_str());
            break;
        }
        held.append(buf, size_t(n));
        if (first && !asis && held.compare(0, 7, "{omcl}\n") == 0)
            markup = true;
        if (first && markup)
            spoutsml("{txt}"); // not in the style of the command that asked
        first = false;
        if (n)
            nl = buf[n - 1] == '\n';
        rc = show_piece(&held, markup, !markup || n < int32_t(sizeof buf) || held.size() > 65536);
    } while (!rc && n == int32_t(sizeof buf));
    ov_close(fd);
    if (!rc && !nl)
        rc = newline();
    return rc;
}

int32_t cmd_type(int32_t)
{
    std::string name;
    bool asis = false, starbang = false, tabs = false;
    int32_t rc = filename(&name);
    if (rc ||
        (rc = lineend({{"asis", 1, &asis}, {"starbang", 8, &starbang}, {"showtabs", 8, &tabs}})))
        return rc;
    return show_file(name, asis);
}

int32_t viewcmd(int32_t)
{
    gettok_state at;
    std::string name;
    bool asis = false;
    ti_stattok(tokinfo, &at);
    const char *word = ti_gettok(tokinfo, prsefls);
    if (strcmp(word, "file") != 0 || !ti_peektok_chr(tokinfo))
        ti_resettok(tokinfo, &at);
    int32_t rc = filename(&name);
    if (rc || (rc = lineend({{"asis", 1, &asis}})))
        return rc;
    for (const char *ext : {"", ".omcl", ".ovhlp"})
        if (path_isfile(name + ext))
            return show_file(name + ext, asis);
    return fierr(RC_FILENOTFOUND, name.c_str());
}
