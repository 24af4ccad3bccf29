#include "core/files.h"
#include "core/mem.h"
#include "core/rc.h"
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

static constexpr int32_t one_call = 32768, piece = 16384;

static int32_t open_flags(ov_mode mode)
{
    switch (mode) {
    case OV_READ: return O_RDONLY;
    case OV_CREATE: return O_WRONLY | O_CREAT | O_EXCL;
    case OV_REPLACE: return O_WRONLY | O_CREAT | O_TRUNC;
    case OV_APPEND: return O_WRONLY | O_CREAT | O_APPEND;
    case OV_UPDATE: return O_RDWR;
    case OV_EITHER: return O_RDWR | O_CREAT;
    }
    return O_RDONLY;
}

int32_t ov_open(const char *name, ov_mode mode)
{
    std::string path = path_expand(name);
    // Opening a directory for reading succeeds and only the first read fails.
    if (mode == OV_READ && path_isdir(path))
        return -RC_FILEOPEN;
    int32_t fd = open(path.c_str(), open_flags(mode) | O_CLOEXEC, 0666);
    if (fd >= 0)
        return fd;
    if (errno == ENOENT)
        return mode == OV_READ || mode == OV_UPDATE ? -RC_FILENOTFOUND : -RC_FILEOPEN;
    if (errno == EEXIST)
        return -RC_FILEEXISTS;
    bool kept = errno == EACCES || errno == EROFS || errno == ETXTBSY;
    if (mode != OV_READ && kept && path_isfile(path))
        return -608;
    return -RC_FILEOPEN;
}

void ov_close(int32_t fd)
{
    if (fd >= 0)
        close(fd);
}

// One transfer, restarted after a signal. Bytes moved, 0 at the end, below 0 on failure.
static ssize_t read_some(int32_t fd, char *at, size_t n)
{
    if (fault_hit(F_READ)) {
        errno = EIO;
        return -1;
    }
    ssize_t got;
    do
        got = read(fd, at, n);
    while (got < 0 && errno == EINTR);
    return got;
}

static ssize_t write_some(int32_t fd, const char *at, size_t n)
{
    if (fault_hit(F_WRITE)) {
        errno = EIO;
        return -1;
    }
    ssize_t put;
    do
        put = write(fd, at, n);
    while (put < 0 && errno == EINTR);
    return put;
}

int64_t lovata_read(int32_t fd, void *buf, int64_t n)
{
    int64_t step = n > one_call ? piece : n, done = 0;
    while (done < n) {
        int64_t want = n - done < step ? n - done : step;
        ssize_t got = read_some(fd, static_cast<char *>(buf) + done, size_t(want));
        if (got <= 0)
            break;
        done += got;
    }
    return done;
}

int64_t lovata_write(int32_t fd, const void *buf, int64_t n)
{
    int64_t step = n > one_call ? piece : n, done = 0;
    while (done < n) {
        int64_t want = n - done < step ? n - done : step;
        ssize_t put = write_some(fd, static_cast<const char *>(buf) + done, size_t(want));
        if (put <= 0)
            break;
        done += put;
    }
    return done;
}

int32_t ovata_read(int32_t fd, void *buf, int32_t n) { return int32_t(lovata_read(fd, buf, n)); }
int32_t ovata_write(int32_t fd, const void *buf, int32_t n)
{
    return int32_t(lovata_write(fd, buf, n));
}

int64_t ov_left(int32_t fd)
{
    struct stat st;
    off_t at = lseek(fd, 0, SEEK_CUR);
    if (at < 0 || fstat(fd, &st))
        return -1;
    return st.st_size > at ? st.st_size - at : 0;
}

static bool wr_failed;
void wrinit() { wr_failed = false; }
int32_t wr(int32_t fd, const void *buf, int64_t n)
{
    if (!wr_failed && n > 0 && lovata_write(fd, buf, n) < n)
        wr_failed = true;
    return wr_failed;
}

// ---- paths

std::string path_expand(const std::string &path)
{
    if (path.empty() || path[0] != '~' || (path.size() > 1 && path[1] != '/'))
        return path;
    const char *home = getenv("HOME");
    return home && *home ? home + path.substr(1) : path;
}

std::string path_join(const std::string &dir, const std::string &file)
{
    if (dir.empty() || file.empty() || file[0] == '/')
        return dir.empty() ? file : file.empty() ? dir : file;
    return dir.back() == '/' ? dir + file : dir + "/" + file;
}

std::string path_last(const std::string &path)
{
    size_t slash = path.rfind('/');
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

bool path_hasext(const std::string &path)
{
    return path_last(path).find('.') != std::string::npos;
}

std::string path_addext(const std::string &path, const char *ext)
{
    return path_hasext(path) ? path : path + ext;
}

void ov_discard(const char *name)
{
    struct stat st;
    std::string path = path_expand(name);
    if (!stat(path.c_str(), &st) && S_ISREG(st.st_mode))
        unlink(path.c_str());
}

bool path_isfile(const std::string &path)
{
    struct stat st;
    return !stat(path.c_str(), &st) && !S_ISDIR(st.st_mode);
}

bool path_isdir(const std::string &path)
{
    struct stat st;
    return !stat(path.c_str(), &st) && S_ISDIR(st.st_mode);
}

std::string path_cwd()
{
    char *cwd = getcwd(nullptr, 0);
    std::string s = cwd ? cwd : ".";
    free(cwd);
    return s;
}

// ---- temporary files

int32_t tmpfctr;
static std::string tmpdir;
static int32_t tmppid;
// Names handed out, by their number, so that a level removes its own on the way out.
static std::vector<std::string> tmpnames;

void init_tmp()
{
    tmpdir = "/tmp";
    for (const char *var : {"OVATATMP", "TMPDIR"}) {
        const char *dir = getenv(var);
        if (dir && *dir) {
            tmpdir = dir;
            break;
        }
    }
    tmppid = int32_t(getpid());
}

const char *tmp_dir() { return tmpdir.empty() ? "/tmp" : tmpdir.c_str(); }

std::string mktmpfn()
{
    char file[40];
    snprintf(file, sizeof file, "Ov%05d.%06d", int(tmppid), int(tmpfctr));
    std::string path = path_join(tmp_dir(), file);
    if (tmpfctr >= int32_t(tmpnames.size()))
        tmpnames.resize(size_t(tmpfctr) + 1);
    tmpnames[size_t(tmpfctr++)] = path;
    return path;
}

void rmtmpfn(int32_t from)
{
    if (from < 0)
        from = 0;
    for (int32_t i = from; i < tmpfctr && i < int32_t(tmpnames.size()); i++)
        unlink(tmpnames[size_t(i)].c_str());
    if (from < tmpfctr)
        tmpfctr = from;
}
