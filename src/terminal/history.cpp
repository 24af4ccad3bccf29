#include "terminal/history.h"
#include "core/files.h"
#include <cstdio>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

static std::string file;
static std::vector<std::string> entries; // oldest first
static std::string open_entry;
static bool is_open;

// ---- the file

static std::string coded(const std::string &entry)
{
    std::string out;
    for (char c : entry)
        if (c == '\n')
            out += "\\n";
        else if (c == '\\')
            out += "\\\\";
        else
            out += c;
    return out + "\n";
}

static std::string decoded(const char *p, size_t n)
{
    std::string out;
    for (size_t i = 0; i < n; i++)
        if (p[i] != '\\' || i + 1 == n)
            out += p[i];
        else
            out += p[++i] == 'n' ? '\n' : p[i];
    return out;
}

static void make_dirs(const std::string &path)
{
    for (size_t at = path.find('/', 1); at != path.npos; at = path.find('/', at + 1))
        mkdir(path.substr(0, at).c_str(), 0777);
}

// The file, locked. Another session may put a shorter one in its place while the lock is
// waited for: then the new one is meant.
static int locked(int flags)
{
    for (int tries = 0; tries < 5; tries++) {
        int fd = open(file.c_str(), flags | O_CLOEXEC, 0600);
        if (fd < 0)
            return -1;
        struct stat mine, there;
        if (flock(fd, LOCK_EX) || fstat(fd, &mine) || stat(file.c_str(), &there) ||
            mine.st_ino == there.st_ino)
            return fd;
        close(fd);
    }
    return -1;
}

static std::vector<std::string> read_all(int fd)
{
    std::string text;
    char buf[16384];
    for (ssize_t n; (n = read(fd, buf, sizeof buf)) > 0;)
        text.append(buf, size_t(n));
    std::vector<std::string> all;
    for (size_t at = 0; at < text.size();) {
        size_t end = text.find('\n', at);
        if (end == text.npos)
            end = text.size();
        if (end > at && end - at <= 2 * hist_maxentry)
            all.push_back(decoded(text.data() + at, end - at));
        at = end + 1;
    }
    return all;
}

static bool write_all(int fd, const std::string &text)
{
    return lovata_write(fd, text.data(), int64_t(text.size())) == int64_t(text.size());
}

// Through a file beside it: whatever happens, one of the two is whole.
static void shorten()
{
    int fd = locked(O_RDONLY);
    if (fd < 0)
        return;
    std::vector<std::string> all = read_all(fd);
    if (all.size() > 2 * hist_limit) {
        std::string text, tmp = file + "." + std::to_string(getpid());
        for (size_t i = all.size() - hist_limit; i < all.size(); i++)
            text += coded(all[i]);
        int to = open(tmp.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
        bool good = to >= 0 && write_all(to, text);
        if (to >= 0)
            close(to);
        if (!good || rename(tmp.c_str(), file.c_str()))
            unlink(tmp.c_str());
    }
    close(fd);
}

static void append(const std::string &entry)
{
    if (file.empty())
        return;
    int fd = locked(O_WRONLY | O_APPEND | O_CREAT);
    if (fd < 0) {
        make_dirs(file);
        fd = locked(O_WRONLY | O_APPEND | O_CREAT);
    }
    if (fd < 0 || !write_all(fd, coded(entry)))
        file.clear(); // a disk that is full, a directory that is gone: the session goes on
    if (fd >= 0)
        close(fd);
}

// ---- the entries

void hist_open(const std::string &path)
{
    file = path;
    entries.clear();
    int fd = file.empty() ? -1 : open(file.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0)
        return;
    entries = read_all(fd);
    close(fd);
    if (entries.size() > 2 * hist_limit)
        shorten();
    if (entries.size() > hist_limit)
        entries.erase(entries.begin(), entries.end() - ptrdiff_t(hist_limit));
}

void hist_close()
{
    if (!is_open)
        return;
    is_open = false;
    while (!open_entry.empty() && (open_entry.back() == ' ' || open_entry.back() == '\n'))
        open_entry.pop_back();
    if (open_entry.find_first_not_of(" \n") == open_entry.npos)
        return;
    if (!entries.empty() && entries.back() == open_entry)
        return;
    entries.push_back(open_entry);
    if (entries.size() > hist_limit)
        entries.erase(entries.begin());
    append(open_entry);
}

void hist_line(const char *line, bool fresh)
{
    if (fresh || !is_open) {
        hist_close();
        open_entry = line;
        is_open = true;
    } else if (open_entry.size() < hist_maxentry) {
        open_entry += '\n';
        open_entry += line;
    }
}

const std::string *hist_back(size_t back)
{
    return back < entries.size() ? &entries[entries.size() - 1 - back] : nullptr;
}
