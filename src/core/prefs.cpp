// core/prefs.cpp - stored preferences: a text file of rows, read once, written whole.
#include "core/files.h"
#include "core/settings.h"
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>
#include <vector>

static std::vector<std::pair<std::string, std::string>> rows;
static bool changed;

std::string prefsdir()
{
    const char *xdg = getenv("XDG_CONFIG_HOME"), *home = getenv("HOME");
    if (xdg && *xdg == '/')
        return std::string(xdg) + "/ovata";
    if (home && *home)
        return std::string(home) + "/.config/ovata";
    return "";
}

void open_prefs()
{
    rows.clear();
    changed = false;
    std::string dir = prefsdir();
    if (dir.empty())
        return;
    int32_t fd = ov_open((dir + "/preferences").c_str(), OV_READ);
    if (fd < 0)
        return;
    int64_t left = ov_left(fd);
    std::string all(size_t(left > 0 && left < (1 << 20) ? left : 0), 0);
    int64_t got = lovata_read(fd, all.data(), int64_t(all.size()));
    ov_close(fd);
    all.resize(got > 0 ? size_t(got) : 0);
    for (size_t at = 0; at < all.size();) {
        size_t nl = all.find('\n', at);
        if (nl == all.npos)
            nl = all.size();
        std::string row = all.substr(at, nl - at);
        size_t blank = row.find(' ');
        if (blank != row.npos && blank && row.find('\0') == row.npos)
            rows.emplace_back(row.substr(0, blank), row.substr(blank + 1));
        at = nl + 1;
    }
}

// What needs more than a store is applied by its owner, who asks with sprefs_get.
void sprefs_load()
{
    for (const auto &r : rows) {
        const setting *s = setting_exact(r.first.c_str());
        if (s && s->perm && s->kind != SK_ACT)
            setting_put(s, r.second.c_str(), true);
    }
}

int32_t sprefs_put(const char *name, const char *value)
{
    changed = true;
    for (auto &r : rows)
        if (r.first == name) {
            r.second = value;
            return 0;
        }
    rows.emplace_back(name, value);
    return 0;
}

const char *sprefs_get(const char *name)
{
    for (const auto &r : rows)
        if (r.first == name)
            return r.second.c_str();
    return nullptr;
}

// Through a file beside it, so that a failure leaves the old preferences.
void write_prefs()
{
    std::string dir = prefsdir(), all;
    if (!changed || dir.empty())
        return;
    for (size_t at = dir.find('/', 1); at != dir.npos; at = dir.find('/', at + 1))
        mkdir(dir.substr(0, at).c_str(), 0777);
    mkdir(dir.c_str(), 0777);
    for (const auto &r : rows)
        all += r.first + " " + r.second + "\n";
    std::string to = dir + "/preferences", tmp = to + "." + std::to_string(getpid());
    int32_t fd = ov_open(tmp.c_str(), OV_REPLACE);
    if (fd < 0)
        return;
    bool good = lovata_write(fd, all.data(), int64_t(all.size())) == int64_t(all.size());
    ov_close(fd);
    if (!good || rename(tmp.c_str(), to.c_str()) != 0)
        unlink(tmp.c_str());
    else
        changed = false;
}

void close_prefs() { rows.clear(); }
