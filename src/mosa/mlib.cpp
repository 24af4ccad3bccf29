// Files of compiled functions: heads, members, additions.
#include "mosa/mlib.h"
#include "core/bytes.h"
#include "core/files.h"
#include "core/mem.h"
#include "core/rc.h"
#include "core/text.h"
#include "interp/interp.h"
#include "interp/messages.h"
#include "mosa/classdef.h"
#include "mosa/compiler.h"
#include "mosa/image.h"
#include "mosa/moio.h"
#include "output/print.h"
#include <cstdarg>
#include <cstdio>
#include <memory>
#include <unistd.h>

namespace
{

constexpr uint8_t magic[4] = {0x81, 0x92, 0xa7, 0xb9};
constexpr int32_t rc_format = 610, rc_full = 611, rc_short = 612, rc_empty = 9777, rc_unfit = 9711;
constexpr int32_t fixed = 16, imagehead = 18, oldest_format = 890;

using bytes_ptr = std::unique_ptr<uint8_t, decltype(&safefree)>;
bytes_ptr take(int64_t n)
{
    return {static_cast<uint8_t *>(safecalloc(size_t(n))), safefree};
}

int64_t head_size(int32_t version, int32_t capacity)
{
    return fixed + (version < 5 ? 41 : 74) * int64_t(capacity);
}

int32_t no_memory()
{
    return errout(RC_NOMEM, "insufficient memory\n");
}

} // namespace

// ---- the head of a file

// Writes the head over what is at the start. The version keeps this machine's order: who reads
// knows by the order byte whether to turn it.
static bool write_head(int32_t fd, const mlib_header *h)
{
    int64_t size = head_size(h->version, h->capacity), n = h->capacity;
    bytes_ptr buf = take(size);
    if (!buf)
        return false;
    uint8_t *p = buf.get();
    memcpy(p, magic, sizeof magic);
    p[4] = b_native;
    put16(p + 6, uint16_t(h->version), b_native);
    put32(p + 8, uint32_t(h->nmembers), b_native);
    put32(p + 12, uint32_t(n), b_native);
    for (int32_t k = 0; k < h->nmembers; k++) {
        put32(p + fixed + 4 * k, uint32_t(h->bigoff[k]), b_native);
        put32(p + fixed + 4 * (n + k), uint32_t(h->littleoff[k]), b_native);
        memcpy(p + fixed + 8 * n + 33 * k, h->name[k], 33);
        memcpy(p + fixed + 41 * n + 33 * k, h->cls[k], 33);
    }
    return lseek(fd, 0, SEEK_SET) == 0 && lovata_write(fd, p, size) == size;
}

int32_t mlib_create(const char *path, int32_t capacity)
{
    int32_t fd = ov_open(path, OV_CREATE);
    if (fd < 0)
        return fierr(-fd, path);
    std::unique_ptr<mlib_header, decltype(&safefree)> h(
        static_cast<mlib_header *>(safecalloc(sizeof(mlib_header))), safefree);
    int32_t rc = h ? 0 : RC_NOMEM;
    if (h) {
        h->version = ml_version;
        h->capacity = capacity;
        if (!write_head(fd, h.get()))
            rc = RC_IOWRITE;
    }
    ov_close(fd);
    if (!rc)
        return 0;
    ov_discard(path);
    return rc == RC_NOMEM ? no_memory() : fierr(rc, path);
}

// Copies the tables out of the bytes of a head.
static void unpack_tables(mlib_header *h, const uint8_t *p, byteorder order)
{
    int64_t n = h->capacity;
    for (int32_t k = 0; k < h->nmembers; k++) {
        h->bigoff[k] = int32_t(get32(p + 4 * k, order));
        h->littleoff[k] = int32_t(get32(p + 4 * (n + k), order));
        memcpy(h->name[k], p + 8 * n + 33 * k, 32);
        if (h->version >= 5)
            memcpy(h->cls[k], p + 41 * n + 33 * k, 32);
    }
}

// The words of a failed opening; the negated code.
[[gnu::format(printf, 3, 4)]] static int32_t refuse(int32_t rc, int32_t mode, const char *fmt, ...)
{
    if (mode & ML_QUIET)
        return -rc;
    char text[700];
    va_list args;
    va_start(args, fmt);
    vsnprintf(text, sizeof text, fmt, args);
    va_end(args);
    spout21at(3, text);
    return -rc;
}

// Reads the head of an open file. 0 or a negated code with its words.
static int32_t read_head(int32_t fd, mlib_header *h, const char *name, int32_t mode)
{
    memset(h, 0, sizeof *h);
    uint8_t first[fixed];
    int32_t got = ovata_read(fd, first, fixed);
    if (got >= 4 && memcmp(first, magic, sizeof magic) != 0)
        return refuse(rc_format, mode, "%s not mosa library\n", name);
    if (got < fixed)
        return refuse(rc_short, mode, *name ? "could not read %s\n" : "%s", name);
    h->order = first[4];
    if (h->order != B_LITTLE && h->order != B_BIG)
        return refuse(rc_format, mode, "%s not mosa library\n", name);
    auto order = byteorder(h->order);
    h->version = int16_t(get16(first + 6, order));
    if (h->version <= 1)
        return refuse(rc_format, mode, "%s from a older version of Ovata\n", name);
    if (h->version > ml_version)
        return refuse(rc_format, mode, "%s from a more recent version of Ovata\n", name);
    h->nmembers = int32_t(get32(first + 8, order));
    h->capacity = int32_t(get32(first + 12, order));
    if (h->capacity < 1 || h->capacity > ml_maxmembers || h->nmembers < 0 ||
        h->nmembers > h->capacity)
        return refuse(rc_format, mode, "%s not mosa library\n", name);
    int64_t rest = head_size(h->version, h->capacity) - fixed;
    bytes_ptr buf = take(rest);
    if (!buf)
        return refuse(RC_NOMEM, mode, "insufficient memory\n");
    if (lovata_read(fd, buf.get(), rest) < rest)
        return refuse(rc_short, mode, *name ? "could not read %s\n" : "%s", name);
    unpack_tables(h, buf.get(), order);
    return 0;
}

int32_t mlib_init(mlib_header *h, const char *name, int32_t mode, bool search)
{
    char path[512];
    if (search) {
        if (srchado(name, "mlib", 1, path))
            return refuse(RC_FILENOTFOUND, mode, "%s.mlib not found\n", name);
        name = path;
    }
    int32_t fd = ov_open(name, mode & ML_WRITE ? OV_UPDATE : OV_READ);
    if (fd < 0) {
        if (!(mode & ML_QUIET))
            return -fierr(-fd, name);
        return fd;
    }
    int32_t rc = read_head(fd, h, name, mode);
    if (!rc)
        return fd;
    ov_close(fd);
    return rc;
}

// ---- members

static int32_t member_index(const mlib_header *h, const char *cls, const char *name)
{
    if (!*name) {
        name = cls;
        cls = "";
    }
    for (int32_t k = 0; *name && k < h->nmembers; k++)
        if (!strcmp(h->name[k], name) && !strcmp(h->cls[k], cls))
            return k;
    return -1;
}

static int32_t image_offset(const mlib_header *h, int32_t k)
{
    return b_native == B_LITTLE ? h->littleoff[k] : h->bigoff[k];
}

int32_t mlib_search(const mlib_header *h, const char *cls, const char *name)
{
    int32_t k = member_index(h, cls, name);
    return k < 0 ? 0 : image_offset(h, k);
}

// Every number is looked at before anything is made of it.
static int32_t read_info(int32_t fd, const mlib_header *h, int32_t offset, mlib_info *info)
{
    uint8_t p[imagehead];
    if (offset < head_size(h->version, h->capacity) || lseek(fd, offset, SEEK_SET) != offset ||
        ovata_read(fd, p, imagehead) < imagehead)
        return -2;
    info->bytes = int32_t(get32(p, b_native));
    info->words = int32_t(get32(p + 4, b_native));
    info->eltype = int32_t(get32(p + 8, b_native));
    info->orgtype = int16_t(get16(p + 12, b_native));
    info->type = xtoi_dttype(int16_t(get16(p + 14, b_native)));
    info->format = get16(p + 16, b_native);
    if (info->type != DM_MOSAFCN || info->words < 3 || info->bytes != int64_t(info->words) * 4 ||
        info->bytes > ov_left(fd))
        return -2;
    if (info->eltype < MT_CLASSDEF || info->eltype > MT_CLASS || info->orgtype < OT_MATRIX ||
        info->orgtype > OT_VOID)
        return -2;
    info->eltype = xtoi_eltype(info->eltype);
    info->orgtype = xtoi_orgtype(info->orgtype);
    return 0;
}

int32_t mlib_load1(int32_t fd, const mlib_header *h, const char *cls, const char *name,
                   mlib_info *info, int32_t *version)
{
    int32_t k = member_index(h, cls, name);
    if (k < 0)
        return -1;
    if (read_info(fd, h, image_offset(h, k), info))
        return -2;
    *version = info->format;
    return info->format < oldest_format ? 1 : info->format > m_format ? 2 : 0;
}

bool mlib_load2(int32_t fd, void *memory, int32_t bytes)
{
    return ovata_read(fd, memory, bytes) != bytes;
}

int32_t mlib_nmbr(int32_t fd, const mlib_header *h, int32_t k, mlib_info *info)
{
    if (k < 0 || k >= h->nmembers)
        return -1;
    return read_info(fd, h, image_offset(h, k), info);
}

// ---- additions

// What only this run of the program can use stays out of files.
static void forget_addresses(const matobj *f, int32_t *code)
{
    if (f->cols == MT_CLASSDEF)
        m_ac_zapclassdef(code);
    else if (f->cols != MT_STRUCTDEF)
        m_cleanpgm(code, f->rows);
}

static void pack_info(uint8_t *p, const matobj *f, byteorder order)
{
    put32(p, uint32_t(f->rows) * 4, order);
    put32(p + 4, uint32_t(f->rows), order);
    put32(p + 8, uint32_t(itox_eltype(f->cols)), order);
    put16(p + 12, uint16_t(itox_orgtype(f->eltype)), order);
    put16(p + 14, uint16_t(itox_dttype(DM_MOSAFCN)), order);
    put16(p + 16, uint16_t(mo_code(f)[0]), order);
}

// The image at the end of the file; *offset is where it begins.
static bool append(int32_t fd, const uint8_t *image, int64_t size, int64_t *offset)
{
    *offset = lseek(fd, 0, SEEK_END);
    return *offset > 0 && *offset + size <= INT32_MAX && lovata_write(fd, image, size) == size;
}

// Writes the image in both orders; where they stand goes into the offset tables.
static int32_t write_member(int32_t fd, mlib_header *h, const matobj *f)
{
    constexpr byteorder other = b_native == B_LITTLE ? B_BIG : B_LITTLE;
    int64_t size = imagehead + int64_t(f->rows) * 4, at = 0, at2 = 0;
    bytes_ptr buf = take(size + 2), code = take(int64_t(f->rows) * 4);
    if (!buf || !code)
        return no_memory();
    auto *words = reinterpret_cast<int32_t *>(code.get());
    memcpy(words, f->data, size_t(f->rows) * 4);
    forget_addresses(f, words);
    pack_info(buf.get(), f, b_native);
    memcpy(buf.get() + imagehead, words, size_t(f->rows) * 4);
    bool good = append(fd, buf.get(), size, &at);
    int32_t rc = 0;
    if (good && !(rc = m_revimage(words, f->rows, f->cols, false))) {
        pack_info(buf.get(), f, other);
        memcpy(buf.get() + imagehead, words, size_t(f->rows) * 4);
        good = append(fd, buf.get(), size, &at2);
    }
    if (!good || rc) {
        // Should even that fail, the head does not know of what stays behind the last image.
        bool cut = at <= 0 || !ftruncate(fd, at);
        (void)cut;
        return rc ? rc : errout(RC_IOWRITE, "could not write into library\n");
    }
    (b_native == B_LITTLE ? h->littleoff : h->bigoff)[h->nmembers] = int32_t(at);
    (b_native == B_LITTLE ? h->bigoff : h->littleoff)[h->nmembers] = int32_t(at2);
    return 0;
}

// Images that came from a file and never ran are looked at before they are walked.
static bool unfit(const matobj *f)
{
    if (dm_rec(f)->a == 1)
        return false;
    if (f->rows < 1 || int64_t(f->rows) * 4 > f->alloc)
        return true;
    return (f->cols == MT_STRUCTDEF  ? sd_check(mo_code(f), f->rows)
            : f->cols == MT_CLASSDEF ? cls_check(mo_code(f), f->rows)
                                     : m_checkcode(mo_code(f), f->rows)) != nullptr;
}

int32_t mlib_add(int32_t fd, mlib_header *h, const matobj *object)
{
    if (h->version != ml_version)
        return errout(rc_format, "cannot add members to old-format library\n");
    if (h->nmembers >= h->capacity)
        return errout(rc_full, "library is full\n");
    bool member = object->info->subname[0] != 0;
    const char *cls = member ? object->info->name : "";
    const char *name = member ? object->info->subname : object->info->name;
    if (mlib_search(h, cls, name))
        return errout(RC_FILEEXISTS, "%s%s%s() already member of library\n", cls,
                      member ? "::" : "", name);
    if (object->rows < 1)
        return errout(rc_empty, "unexpected 0-length function\n");
    if (unfit(object))
        return errout(rc_unfit, "%s%s%s() is not fit to run\n", cls, member ? "::" : "", name);
    int32_t rc = write_member(fd, h, object);
    if (rc)
        return rc;
    strcut(h->cls[h->nmembers], 33, cls);
    strcut(h->name[h->nmembers], 33, name);
    h->nmembers++;
    if (!write_head(fd, h))
        return errout(RC_IOWRITE, "error writing file; library corrupt\n");
    return 0;
}

int32_t mlib_fancyadd(int32_t fd, mlib_header *h, const matobj *object, bool complete,
                      int32_t *added)
{
    *added = 0;
    bool isclass = object->cols == MT_CLASSDEF;
    if (isclass && complete && !unfit(object) && !isclassdefcomplete(object)) {
        dispundefinedclsmbrfcn(object);
        return RC_NOTFOUND;
    }
    int32_t rc = mlib_add(fd, h, object);
    if (rc)
        return rc;
    *added = 1;
    const int32_t *code = mo_code(object);
    for (int32_t k = 0; isclass && k < code[CW_NFCNS]; k++) {
        const int32_t *rec = code + code[CW_FCNS] + 9 * k;
        const matobj *f = mo_findfcn(mo_program(object), mo_name(object), cls_text(code, rec[2]));
        if (f && (rc = mlib_add(fd, h, f)))
            return rc;
        *added += f != nullptr;
    }
    return 0;
}
