// interp/findfile.cpp - where program files and start-up files are looked for.
#include "core/files.h"
#include "core/rc.h"
#include "interp/findfile.h"
#include "interp/interp.h"
#include "interp/macros.h"
#include <climits>
#include <cstdlib>
#include <cstring>
#include <string>
#include <unistd.h>

char filepath[4096];

const char *const sysdir_words[] = {"OVATA", "UPDATES",  "BASE",     "SITE",
                                    "PLUS",  "PERSONAL", "OLDPLACE", nullptr};
static std::string sysdirs[7];

static std::string as_dir(const std::string &path)
{
    return path.empty() || path.back() == '/' ? path : path + '/';
}

// The installation holds ado/. A build tree has it beside the sources, some directories above
// the program; an installed one under share.
static std::string find_installation()
{
    const char *env = getenv("SYSDIR_OVATA");
    if (env && *env)
        return path_isdir(env) ? as_dir(env) : "";
    char exe[PATH_MAX];
    ssize_t n = readlink("/proc/self/exe", exe, sizeof exe - 1);
    if (n <= 0)
        return "";
    std::string dir(exe, size_t(n));
    dir.erase(dir.rfind('/') + 1);
    static const char *const places[] = {"../../", "../share/ovata/", "../../../", "../", ""};
    for (const char *place : places) {
        if (path_isdir(dir + place + "ado/base")) {
            char real[PATH_MAX];
            return as_dir(realpath((dir + place).c_str(), real) ? real : dir + place);
        }
    }
    return "";
}

int32_t get_ovata_dir()
{
    std::string home = find_installation();
    if (home.empty())
        return 1;
    const char *env = getenv("HOME");
    std::string own = as_dir(env && *env ? env : ".") + "ado/";
    sysdirs[0] = home;
    sysdirs[1] = home + "ado/updates/";
    sysdirs[2] = home + "ado/base/";
    sysdirs[3] = home + "ado/site/";
    sysdirs[4] = own + "plus/";
    sysdirs[5] = own + "personal/";
    sysdirs[6] = own;
    return macresave("S_ADO", "UPDATES;BASE;SITE;.;PERSONAL;PLUS;OLDPLACE");
}

static int32_t word_index(const char *word)
{
    for (int32_t i = 0; sysdir_words[i]; i++)
        if (!strcmp(word, sysdir_words[i]))
            return i;
    return -1;
}

const char *sysdir_of(const char *word)
{
    int32_t i = word_index(word);
    return i < 0 ? nullptr : sysdirs[i].c_str();
}

int32_t sysdir_set(const char *word, const char *path)
{
    int32_t i = word_index(word);
    if (i < 0)
        return RC_SYNTAX;
    sysdirs[i] = as_dir(path_expand(path));
    return 0;
}

std::string ado_subdir(const char *name)
{
    char c = *name;
    return std::string(1, c >= 'A' && c <= 'Z' ? char(c - 'A' + 'a') : c);
}

// A codeword or a plain path, to a directory with its separator.
static std::string mapdirname(std::string word)
{
    size_t from = word.find_first_not_of(" \""), to = word.find_last_not_of(" \"");
    if (from == std::string::npos)
        return "";
    word = word.substr(from, to - from + 1);
    const char *dir = sysdir_of(word.c_str());
    return dir ? dir : as_dir(path_expand(word));
}

static bool hit(const std::string &path, int32_t *nth, char *result)
{
    if (path.size() > size_t(filenamelen) || !path_isfile(path) || --*nth > 0)
        return false;
    memcpy(result, path.c_str(), path.size() + 1);
    return true;
}

bool extrpath(const std::string &list, size_t *at, std::string *dir)
{
    while (*at <= list.size()) {
        size_t end = list.find(';', *at);
        if (end == std::string::npos)
            end = list.size();
        *dir = mapdirname(list.substr(*at, end - *at));
        *at = end + 1;
        if (!dir->empty())
            return true;
    }
    return false;
}

static int32_t along_ado(const std::string &file, int32_t nth, char *result)
{
    char path[1001];
    *result = 0;
    if (file.empty())
        return 1;
    macuseshort("S_ADO", path, int32_t(sizeof path));
    std::string list = path, sub = ado_subdir(file.c_str()), dir;
    for (size_t at = 0; extrpath(list, &at, &dir);) {
        if (dir == "./")
            dir = "";
        if (hit(dir + file, &nth, result) || hit(dir + sub + "/" + file, &nth, result))
            return 0;
    }
    return 1;
}

int32_t srchado(const char *name, const char *extension, int32_t nth, char *result)
{
    return along_ado(std::string(name) + "." + extension, nth, result);
}

int32_t srchadofile(const char *name, char *result) { return along_ado(name, 1, result); }

int32_t srchfile(const char *name, bool usesys, char *result)
{
    int32_t nth = 1;
    *result = 0;
    if (usesys && hit(sysdirs[0] + name, &nth, result))
        return 0;
    if (hit(name, &nth, result))
        return 0;
    std::string list = filepath;
    for (size_t at = 0; at < list.size();) {
        size_t end = list.find(':', at);
        if (end == std::string::npos)
            end = list.size();
        std::string dir = list.substr(at, end - at);
        at = end + 1;
        if (!dir.empty() && hit(path_join(dir, name), &nth, result))
            return 0;
    }
    return hit(sysdirs[0] + name, &nth, result) ? 0 : 1;
}
