// Paths and directories. Paths are texts: only the functions of directories touch the disk, and
// of those the ones that begin with _ answer with a return code.
#include "core/files.h"
#include "expr/strfun.h"
#include "mosa/bi_int.h"
#include "mosa/bihandlers.h"
#include <algorithm>
#include <cerrno>
#include <dirent.h>
#include <string>
#include <strings.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace
{

// The k-th argument as text; false with the code set. A NUL ends what can be a path.
bool path_arg(int32_t argc, int32_t k, std::string *path)
{
    const char *p;
    int32_t n;
    if (!bi_string(bi_arg(argc, k), &p, &n))
        return false;
    path->assign(p, strnlen(p, size_t(n)));
    return true;
}

void number(int32_t argc, double z)
{
    m_result(argc, m_mktsmatsto(z));
}

void text(int32_t argc, const std::string &s)
{
    m_result(argc, m_mktstr(s.data(), int64_t(s.size())));
}

// Where the suffix begins, its dot first; the length when there is none. A name that begins with
// its only dot has none.
size_t suffix_at(const std::string &path)
{
    size_t slash = path.rfind('/'), from = slash == path.npos ? 0 : slash + 1;
    size_t dot = path.rfind('.');
    return dot == path.npos || dot <= from ? path.size() : dot;
}

bool one_of(const std::string &suffix, std::initializer_list<const char *> list)
{
    return std::any_of(list.begin(), list.end(),
                       [&](const char *s) { return !strcasecmp(s, suffix.c_str()); });
}

bool is_url(const std::string &path)
{
    for (const char *scheme : {"http://", "https://", "ftp://"})
        if (!strncasecmp(path.c_str(), scheme, strlen(scheme)))
            return true;
    return false;
}

} // namespace

void bipathisurl(int32_t argc)
{
    m_xeqerrid = "pathisurl()";
    std::string path;
    if (path_arg(argc, 1, &path))
        number(argc, is_url(path));
}

void bipathisabs(int32_t argc)
{
    m_xeqerrid = "pathisabs()";
    std::string path;
    if (path_arg(argc, 1, &path))
        number(argc, is_url(path) || path[0] == '/' || path[0] == '~');
}

// Whether files of that suffix are lines of text.
void bipathasciisuffix(int32_t argc)
{
    m_xeqerrid = "pathasciisuffix()";
    std::string path;
    if (path_arg(argc, 1, &path))
        number(argc, one_of(path.substr(suffix_at(path)),
                            {".txt",  ".do",    ".ado",    ".dct",   ".raw", ".csv", ".log",
                             ".omcl", ".class", ".ovhlp",  ".mosa",  ".pkg", ".toc", ".key",
                             ".dlg",  ".idlg",  ".scheme", ".style", ".ps",  ".eps", ".htm",
                             ".html", ".xml",   ".tex",    ".md",    ".c",   ".h"}));
}

// Whether it is a suffix of this system's own.
void bipathovatasuffix(int32_t argc)
{
    m_xeqerrid = "pathovatasuffix()";
    std::string path;
    if (path_arg(argc, 1, &path))
        number(argc, one_of(path.substr(suffix_at(path)),
                            {".do",   ".ado",  ".dct",    ".dta",   ".omcl", ".class",  ".ovhlp",
                             ".mosa", ".mo",   ".mlib",   ".gph",   ".log",  ".pkg",    ".toc",
                             ".dlg",  ".idlg", ".scheme", ".style", ".key",  ".plugin", ".est"}));
}

void bipathsuffix(int32_t argc)
{
    m_xeqerrid = "pathsuffix()";
    std::string path;
    if (path_arg(argc, 1, &path))
        text(argc, path.substr(suffix_at(path)));
}

void bipathrmsuffix(int32_t argc)
{
    m_xeqerrid = "pathrmsuffix()";
    std::string path;
    if (path_arg(argc, 1, &path))
        text(argc, path.substr(0, suffix_at(path)));
}

// The subdirectory of program files that a file belongs into: its first letter.
void biadosubdir(int32_t argc)
{
    m_xeqerrid = "adosubdir()";
    std::string path;
    if (!path_arg(argc, 1, &path))
        return;
    path = path_last(path);
    if (path.size() > 1)
        path.resize(1);
    if (!path.empty() && path[0] >= 'A' && path[0] <= 'Z')
        path[0] = char(path[0] + 32);
    text(argc, path);
}

void bipathbasename(int32_t argc)
{
    m_xeqerrid = "pathbasename()";
    std::string path;
    if (path_arg(argc, 1, &path))
        text(argc, path_last(path));
}

void bipathjoin(int32_t argc)
{
    m_xeqerrid = "pathjoin()";
    std::string dir, file;
    if (!path_arg(argc, 1, &dir) || !path_arg(argc, 2, &file))
        return;
    bool whole = !file.empty() && (is_url(file) || file[0] == '/' || file[0] == '~');
    text(argc, whole ? file : path_join(dir, file));
}

// ---- directories

void bidirexists(int32_t argc)
{
    m_xeqerrid = "direxists()";
    std::string path;
    if (path_arg(argc, 1, &path))
        number(argc, path_isdir(path_expand(path)));
}

void bipwd(int32_t argc)
{
    m_xeqerrid = "pwd()";
    text(argc, path_cwd());
}

void bi_chdir(int32_t argc)
{
    m_xeqerrid = "_chdir()";
    std::string path;
    if (path_arg(argc, 1, &path))
        number(argc, chdir(path_expand(path).c_str()) ? 170 : 0);
}

// With a second argument that is not 0 everybody may write into it.
void bi_mkdir(int32_t argc)
{
    m_xeqerrid = "_mkdir()";
    std::string path;
    double shared = 0;
    if (!path_arg(argc, 1, &path) || (argc > 1 && !bi_real(bi_arg(argc, 2), &shared)))
        return;
    number(argc, mkdir(path_expand(path).c_str(), shared != 0 ? 0777 : 0755) ? 693 : 0);
}

void bi_rmdir(int32_t argc)
{
    m_xeqerrid = "_rmdir()";
    std::string path;
    if (path_arg(argc, 1, &path))
        number(argc, rmdir(path_expand(path).c_str()) ? 693 : 0);
}

// Names in a directory, of one kind and by a pattern, as a column in order; with a fourth
// argument that is not 0 the directory stands before each.
void bidir(int32_t argc)
{
    m_xeqerrid = "dir()";
    std::string where, kind, pattern;
    double prefix = 0;
    if (!path_arg(argc, 1, &where) || !path_arg(argc, 2, &kind) || !path_arg(argc, 3, &pattern) ||
        (argc > 3 && !bi_real(bi_arg(argc, 4), &prefix)))
        return;
    int32_t want = kind == "files" ? 0 : kind == "dirs" ? 1 : kind == "other" ? 2 : -1;
    if (want < 0) {
        bi_fail(3300);
        return;
    }
    std::string base = path_expand(where.empty() ? "." : where);
    std::vector<std::string> names;
    DIR *d = opendir(base.c_str());
    if (!d) {
        bi_fail(errno == ENOENT ? 601 : 603);
        return;
    }
    while (const dirent *e = readdir(d)) {
        std::string full = path_join(base, e->d_name), name = e->d_name;
        int32_t is = path_isdir(full) ? 1 : path_isfile(full) ? 0 : 2;
        if (is == want && name != "." && name != ".." &&
            str_match(name.c_str(), pattern.c_str()) != 0)
            names.push_back(prefix != 0 ? path_join(where, name) : name);
    }
    closedir(d);
    std::sort(names.begin(), names.end());
    matobj *m = m_mktmat(MO_STRING, int32_t(names.size()), 1);
    for (size_t k = 0; m && k < names.size(); k++)
        if (selreplace(m, int64_t(k), names[k].data(), int64_t(names[k].size()))) {
            mo_free(m);
            return;
        }
    m_result(argc, m);
}
