// Files of the matrix language: fifty handles, read through a buffer and written at once.
//
// Every function has a form that begins with _ and answers with the negated code where the other
// raises it; what yields text or a matrix answers J(0, 0, ) then, and fstatus() has the code.
#include "core/files.h"
#include "core/mem.h"
#include "mosa/bi_int.h"
#include "mosa/bihandlers.h"
#include "mosa/moio.h"
#include <algorithm>
#include <cerrno>
#include <climits>
#include <cmath>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace
{

enum file_mode : uint8_t { FM_READ, FM_WRITE, FM_BOTH, FM_APPEND };
enum : int32_t {
    E_NOTFOUND = 601,
    E_FORMAT = 610,
    E_IO = 691,
    E_FULL = 699,
    E_HANDLE = 3601,
    E_NAME = 3602,
    E_MODE = 3603,
    E_TOOMANY = 3611,
    E_TOOLARGE = 3612,
    E_READONLY = 3621,
    E_WRITEONLY = 3622,
    E_APPENDONLY = 3623,
};
constexpr int32_t maxfiles = 50, bufsize = 32768, at_end = -1;

struct openfile {
    bool open;
    file_mode mode;
    bool autoclose;
    int32_t depth; // of the statement that opened it
    int32_t fd;
    int32_t status; // 0, -1 at the end, or a negated code
    int32_t at, held;
    char *buf;
};
openfile files[maxfiles];

int32_t close_file(openfile *f)
{
    int32_t rc = close(f->fd) ? E_IO : 0;
    safefree(f->buf);
    *f = {};
    return rc;
}

} // namespace

// What a failed statement left open goes, where that was asked for.
void m_rtfidx_autoclosexeq()
{
    for (openfile &f : files)
        if (f.open && f.autoclose && m_xrc && f.depth >= mosa_xeq_depth)
            close_file(&f);
}

namespace
{

int32_t open_file(const char *name, file_mode mode, int32_t *handle)
{
    static const ov_mode modes[] = {OV_READ, OV_CREATE, OV_EITHER, OV_APPEND};
    for (int32_t k = 0; k < maxfiles; k++) {
        openfile *f = &files[k];
        if (f->open)
            continue;
        int32_t fd = ov_open(name, modes[mode]);
        if (fd < 0)
            return -fd;
        *f = {};
        if (mode == FM_READ || mode == FM_BOTH) {
            f->buf = static_cast<char *>(safemalloc(bufsize));
            if (!f->buf) {
                ov_close(fd);
                return 3900;
            }
        }
        f->open = true;
        f->mode = mode;
        f->fd = fd;
        f->depth = mosa_xeq_depth;
        m_autoclose = m_rtfidx_autoclosexeq;
        *handle = k;
        return 0;
    }
    return E_TOOMANY;
}

// ---- moving bytes

// The file's own position comes to where reading has got. False where there are no positions.
bool settle(openfile *f)
{
    int32_t ahead = f->held - f->at;
    f->at = f->held = 0;
    return ahead == 0 || lseek(f->fd, -ahead, SEEK_CUR) >= 0;
}

bool fill(openfile *f)
{
    errno = 0;
    f->at = 0;
    f->held = ovata_read(f->fd, f->buf, bufsize);
    return f->held > 0;
}

// Up to n bytes into memory; fewer at the end of the file or on a failure.
int64_t read_bytes(openfile *f, char *to, int64_t n)
{
    int64_t done = std::min<int64_t>(n, f->held - f->at);
    memcpy(to, f->buf + f->at, size_t(done));
    f->at += int32_t(done);
    errno = 0;
    return done < n ? done + lovata_read(f->fd, to + done, n - done) : done;
}

// Up to a line feed and with it.
int32_t read_line(openfile *f, std::string *line)
{
    for (;;) {
        if (f->at == f->held && !fill(f))
            return line->empty() ? at_end : 0;
        const char *from = f->buf + f->at;
        auto *end = static_cast<const char *>(memchr(from, '\n', size_t(f->held - f->at)));
        size_t some = end ? size_t(end - from) + 1 : size_t(f->held - f->at);
        if (line->size() + some >= size_t(INT_MAX) - 8)
            return E_TOOLARGE;
        line->append(from, some);
        f->at += int32_t(some);
        if (end)
            return 0;
        if (fault_poll())
            return 1;
    }
}

int32_t write_bytes(openfile *f, const char *bytes, int64_t n)
{
    if (f->held && !settle(f))
        return E_IO;
    errno = 0;
    if (lovata_write(f->fd, bytes, n) == n)
        return 0;
    return errno == ENOSPC || errno == EDQUOT ? E_FULL : E_IO;
}

// ---- what the handlers share

// The function's failure: raised, or its negation the result.
void failed(int32_t argc, bool quiet, int32_t code)
{
    if (m_xrc) // words of their own, or a break
        return;
    if (!quiet || code < 600)
        bi_fail(code);
    else
        m_result(argc, m_mktsmatsto(-code));
}

// The open file that an argument tells; its code otherwise.
int32_t file_of(const matobj *m, openfile **f)
{
    double z;
    *f = nullptr;
    if (!bi_real(m, &z))
        return m_xrc;
    if (z != std::floor(z) || z < 0 || z >= maxfiles || !files[int32_t(z)].open)
        return E_HANDLE;
    *f = &files[int32_t(z)];
    return 0;
}

int32_t name_of(const matobj *m, std::string *name)
{
    const char *p;
    int32_t n;
    if (!bi_string(m, &p, &n))
        return m_xrc;
    name->assign(p, size_t(n));
    return name->empty() || name->find('\0') != name->npos ? int32_t(E_NAME) : 0;
}

matobj *empty_text()
{
    return m_mktmat(MO_STRING, 0, 0);
}

void done(int32_t argc, openfile *f, bool quiet)
{
    f->status = 0;
    m_result(argc, quiet ? m_mktsmatsto(0) : m_mktmat(MO_REAL, 0, 0));
}

void fopen_of(int32_t argc, const char *id, bool quiet)
{
    static const struct {
        const char *word;
        file_mode mode;
    } modes[] = {{"r", FM_READ}, {"w", FM_WRITE}, {"rw", FM_BOTH}, {"a", FM_APPEND}};
    m_xeqerrid = id;
    std::string name, word;
    int32_t rc = name_of(bi_arg(argc, 1), &name), handle = 0;
    const char *p;
    int32_t n;
    if (m_xrc || !bi_string(bi_arg(argc, 2), &p, &n))
        return;
    word.assign(p, size_t(n));
    if (!rc) {
        rc = E_MODE;
        for (const auto &m : modes)
            if (word == m.word)
                rc = open_file(name.c_str(), m.mode, &handle);
    }
    rc ? failed(argc, quiet, rc) : m_result(argc, m_mktsmatsto(handle));
}

void fclose_of(int32_t argc, const char *id, bool quiet)
{
    m_xeqerrid = id;
    openfile *f;
    int32_t rc = file_of(m_arg(0), &f);
    if (!rc)
        rc = close_file(f);
    if (rc)
        failed(argc, quiet, rc);
    else
        m_result(argc, quiet ? m_mktsmatsto(0) : m_mktmat(MO_REAL, 0, 0));
}

// A file that may be read; the code is told to be one of the handle, or of the file.
int32_t reading(const matobj *m, openfile **f)
{
    int32_t rc = file_of(m, f);
    return !rc && !(*f)->buf ? int32_t(E_WRITEONLY) : rc;
}

// Ends a function that reads: its text, or J(0, 0, "") with the status kept.
void read_end(int32_t argc, openfile *f, bool quiet, int32_t rc, const std::string &text)
{
    if (m_xrc)
        return;
    if (f)
        f->status = rc == at_end ? at_end : -rc;
    if (rc == 1)
        bi_fail(1);
    else if (rc == 0)
        m_result(argc, m_mktstr(text.data(), int64_t(text.size())));
    else if (rc == at_end || (quiet && f))
        m_result(argc, empty_text());
    else
        bi_fail(rc);
}

void fget_of(int32_t argc, const char *id, bool quiet, bool keepend)
{
    m_xeqerrid = id;
    openfile *f;
    std::string line;
    int32_t rc = reading(m_arg(0), &f);
    if (!rc && (rc = read_line(f, &line)) == at_end && errno)
        rc = E_IO;
    if (!rc && !keepend && line.back() == '\n') {
        line.pop_back();
        if (!line.empty() && line.back() == '\r')
            line.pop_back();
    }
    read_end(argc, f, quiet, rc, line);
}

void fread_of(int32_t argc, const char *id, bool quiet)
{
    m_xeqerrid = id;
    openfile *f;
    double n;
    int32_t rc = reading(bi_arg(argc, 1), &f);
    if (m_xrc || !bi_real(bi_arg(argc, 2), &n))
        return;
    if (!(n >= 0 && n <= 9007199254740992.0)) {
        bi_fail(3300);
        return;
    }
    if (rc)
        return read_end(argc, f, quiet, rc, "");
    int64_t left = ov_left(f->fd), here = f->held - f->at;
    int64_t want = left < 0 ? int64_t(n) : std::min(int64_t(n), left + here);
    if (want > INT_MAX - 16)
        return read_end(argc, f, quiet, E_TOOLARGE, "");
    matobj *m = m_mktmat(MO_STRING, 1, 1);
    if (!m || selrecreate(m, 0, want)) {
        if (m)
            mo_free(m);
        return;
    }
    int64_t got = want ? read_bytes(f, mo_sel(m)[0] + 4, want) : 0;
    f->status = got || n < 1 ? 0 : errno ? -E_IO : at_end;
    if (got == want && (got || n < 1))
        return m_result(argc, m);
    std::string bytes(got ? mo_sel(m)[0] + 4 : "", size_t(got));
    mo_free(m);
    read_end(argc, f, quiet, -f->status == E_IO ? int32_t(E_IO) : f->status, bytes);
}

int32_t writing(const matobj *m, openfile **f)
{
    int32_t rc = file_of(m, f);
    return !rc && (*f)->mode == FM_READ ? int32_t(E_READONLY) : rc;
}

void fwrite_of(int32_t argc, const char *id, bool quiet, bool newline)
{
    m_xeqerrid = id;
    openfile *f;
    const char *p;
    int32_t n, rc = writing(bi_arg(argc, 1), &f);
    if (m_xrc || !bi_string(bi_arg(argc, 2), &p, &n))
        return;
    if (!rc && newline) {
        std::string line(p, size_t(n));
        line += '\n';
        rc = write_bytes(f, line.data(), int64_t(line.size()));
    } else if (!rc)
        rc = write_bytes(f, p, n);
    if (!rc)
        return done(argc, f, quiet);
    if (f)
        f->status = -rc;
    failed(argc, quiet, rc);
}

// The new position, from the start; below 0 a negated code.
int64_t seek(openfile *f, double offset, int32_t whence)
{
    if (f->mode == FM_APPEND && (whence || offset != 0))
        return -E_APPENDONLY;
    if (!settle(f))
        return -E_IO;
    off_t at = lseek(f->fd, off_t(offset),
                     whence < 0   ? SEEK_SET
                     : whence > 0 ? SEEK_END
                                  : SEEK_CUR);
    return at < 0 ? -int64_t(errno == EINVAL ? 3300 : int32_t(E_IO)) : at;
}

void fseek_of(int32_t argc, const char *id, bool quiet)
{
    m_xeqerrid = id;
    openfile *f;
    double offset;
    int32_t whence, rc = file_of(bi_arg(argc, 1), &f);
    if (m_xrc || !bi_real(bi_arg(argc, 2), &offset) || !bi_int(bi_arg(argc, 3), -1, 1, &whence))
        return;
    if (!rc && !(std::fabs(offset) <= 9007199254740992.0 && offset == std::floor(offset))) {
        bi_fail(3300);
        return;
    }
    int64_t at = rc ? -rc : seek(f, offset, whence);
    if (at < 0)
        return failed(argc, quiet, int32_t(-at));
    f->status = 0;
    m_result(argc, quiet ? m_mktsmatsto(double(at)) : m_mktmat(MO_REAL, 0, 0));
}

void ftruncate_of(int32_t argc, const char *id, bool quiet)
{
    m_xeqerrid = id;
    openfile *f;
    int32_t rc = writing(m_arg(0), &f);
    if (!rc && f->mode == FM_APPEND)
        rc = E_APPENDONLY;
    if (!rc) {
        off_t at = settle(f) ? lseek(f->fd, 0, SEEK_CUR) : -1;
        rc = at < 0 || ftruncate(f->fd, at) ? int32_t(E_IO) : 0;
    }
    rc ? failed(argc, quiet, rc) : done(argc, f, quiet);
}

// Of an open file, or of one told by its name.
void fsize_of(int32_t argc, const char *id, bool quiet)
{
    m_xeqerrid = id;
    struct stat st;
    int32_t rc;
    if (!bi_ismatrix(m_arg(0)))
        return;
    if (m_arg(0)->eltype == MO_STRING) {
        std::string name;
        rc = name_of(m_arg(0), &name);
        if (!rc && stat(path_expand(name).c_str(), &st))
            rc = errno == ENOENT || errno == ENOTDIR ? int32_t(E_NOTFOUND) : int32_t(E_IO);
    } else {
        openfile *f;
        rc = file_of(m_arg(0), &f);
        if (!rc && fstat(f->fd, &st))
            rc = E_IO;
    }
    rc ? failed(argc, quiet, rc) : m_result(argc, m_mktsmatsto(double(st.st_size)));
}

void unlink_of(int32_t argc, const char *id, bool quiet)
{
    m_xeqerrid = id;
    std::string name;
    int32_t rc = name_of(m_arg(0), &name);
    if (!rc && unlink(path_expand(name).c_str()))
        rc = errno == ENOENT || errno == ENOTDIR ? int32_t(E_NOTFOUND) : int32_t(E_IO);
    if (rc)
        failed(argc, quiet, rc);
    else
        m_result(argc, quiet ? m_mktsmatsto(0) : m_mktmat(MO_REAL, 0, 0));
}

// The code of this language for a failed stream.
int32_t stream_code(moio_code rc, bool write)
{
    switch (rc) {
    case MOIO_GOOD: return 0;
    case MOIO_BUSY: return 3999;
    case MOIO_END: return at_end;
    case MOIO_MEMORY: return 3900;
    case MOIO_WRITE: return errno == ENOSPC || errno == EDQUOT ? E_FULL : E_IO;
    case MOIO_TYPE: return write ? 3250 : int32_t(E_FORMAT);
    case MOIO_FUNCTION: return write ? 3102 : int32_t(E_FORMAT);
    case MOIO_VIEW: return 3598;
    default: return errno ? E_IO : E_FORMAT;
    }
}

void fputmatrix_of(int32_t argc, const char *id, bool quiet)
{
    m_xeqerrid = id;
    openfile *f;
    int32_t rc = writing(bi_arg(argc, 1), &f);
    if (m_xrc || !bi_ismatrix(bi_arg(argc, 2)))
        return;
    if (!rc && !settle(f))
        rc = E_IO;
    if (!rc) {
        errno = 0;
        rc = stream_code(moio_write(f->fd, bi_arg(argc, 2)), true);
    }
    if (!rc && !m_xrc)
        return done(argc, f, quiet);
    if (f)
        f->status = -rc;
    failed(argc, quiet, rc);
}

void fgetmatrix_of(int32_t argc, const char *id, bool quiet)
{
    m_xeqerrid = id;
    openfile *f;
    matobj *m = nullptr;
    char name[33];
    int32_t rc = reading(m_arg(0), &f);
    if (!rc && !settle(f))
        rc = E_IO;
    errno = 0;
    if (!rc)
        rc = stream_code(moio_read(f->fd, &m, name), false);
    if (m_xrc)
        return;
    if (f)
        f->status = rc == at_end ? at_end : -rc;
    if (!rc)
        m_result(argc, m);
    else if (rc == at_end || (quiet && f && rc < 3900))
        m_result(argc, m_mktmat(MO_REAL, 0, 0));
    else
        bi_fail(rc);
}

} // namespace

void bifopen(int32_t argc)
{
    fopen_of(argc, "fopen()", false);
}
void bi_fopen(int32_t argc)
{
    fopen_of(argc, "_fopen()", true);
}
void bifclose(int32_t argc)
{
    fclose_of(argc, "fclose()", false);
}
void bi_fclose(int32_t argc)
{
    fclose_of(argc, "_fclose()", true);
}
void bifgetnl(int32_t argc)
{
    fget_of(argc, "fgetnl()", false, true);
}
void bi_fgetnl(int32_t argc)
{
    fget_of(argc, "_fgetnl()", true, true);
}
void bifget(int32_t argc)
{
    fget_of(argc, "fget()", false, false);
}
void bi_fget(int32_t argc)
{
    fget_of(argc, "_fget()", true, false);
}
void bifread(int32_t argc)
{
    fread_of(argc, "fread()", false);
}
void bi_fread(int32_t argc)
{
    fread_of(argc, "_fread()", true);
}
void bifwrite(int32_t argc)
{
    fwrite_of(argc, "fwrite()", false, false);
}
void bi_fwrite(int32_t argc)
{
    fwrite_of(argc, "_fwrite()", true, false);
}
void bifput(int32_t argc)
{
    fwrite_of(argc, "fput()", false, true);
}
void bi_fput(int32_t argc)
{
    fwrite_of(argc, "_fput()", true, true);
}
void bifseek(int32_t argc)
{
    fseek_of(argc, "fseek()", false);
}
void bi_fseek(int32_t argc)
{
    fseek_of(argc, "_fseek()", true);
}
void biftruncate(int32_t argc)
{
    ftruncate_of(argc, "ftruncate()", false);
}
void bi_ftruncate(int32_t argc)
{
    ftruncate_of(argc, "_ftruncate()", true);
}
void bifsize(int32_t argc)
{
    fsize_of(argc, "fsize()", false);
}
void bi_fsize(int32_t argc)
{
    fsize_of(argc, "_fsize()", true);
}
void biunlink(int32_t argc)
{
    unlink_of(argc, "unlink()", false);
}
void bi_unlink(int32_t argc)
{
    unlink_of(argc, "_unlink()", true);
}
void bifputmatrix(int32_t argc)
{
    fputmatrix_of(argc, "fputmatrix()", false);
}
void bi_fputmatrix(int32_t argc)
{
    fputmatrix_of(argc, "_fputmatrix()", true);
}
void bifgetmatrix(int32_t argc)
{
    fgetmatrix_of(argc, "fgetmatrix()", false);
}
void bi_fgetmatrix(int32_t argc)
{
    fgetmatrix_of(argc, "_fgetmatrix()", true);
}

// 0 after the last operation went well, -1 at the end of the file, else its negated code.
void bifstatus(int32_t argc)
{
    m_xeqerrid = "fstatus()";
    openfile *f;
    int32_t rc = file_of(m_arg(0), &f);
    if (rc)
        bi_fail(rc);
    else
        m_result(argc, m_mktsmatsto(f->status));
}

// Whether the file is closed when the statement that opened it fails.
void bifautoclose(int32_t argc)
{
    m_xeqerrid = "fautoclose()";
    openfile *f;
    double on = 1;
    int32_t rc = file_of(bi_arg(argc, 1), &f);
    if (m_xrc || (argc > 1 && !bi_real(bi_arg(argc, 2), &on)))
        return;
    if (rc) {
        bi_fail(rc);
        return;
    }
    f->autoclose = on != 0;
    m_result(argc, m_mktmat(MO_REAL, 0, 0));
}

void bitmpfilename(int32_t argc)
{
    m_xeqerrid = "tmpfilename()";
    std::string name = mktmpfn();
    m_result(argc, m_mktstr(name.data(), int64_t(name.size())));
}
