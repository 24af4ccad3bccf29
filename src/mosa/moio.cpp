// Matrices as streams of bytes.
#include "mosa/moio.h"
#include "core/bytes.h"
#include "core/files.h"
#include "core/mem.h"
#include "core/text.h"
#include "mosa/mtypes.h"
#include "mosa/views.h"
#include "mosa/vmint.h"
#include "output/print.h"
#include <cerrno>
#include <cfloat>
#include <cmath>
#include <cstdio>
#include <unistd.h>

// ---- numbers as files keep them: the same today, so that ours may change

int32_t itox_dttype(int32_t type)
{
    return type == DM_MOSA ? 1 : type == DM_MOSAFCN ? 2 : 255;
}

int32_t xtoi_dttype(int32_t type)
{
    return type == 1 ? int32_t(DM_MOSA) : type == 2 ? int32_t(DM_MOSAFCN) : -1;
}

static int32_t checked(int32_t n, int32_t low, int32_t high, const char *fmt)
{
    if (n < low || n > high) {
        char text[64];
        snprintf(text, sizeof text, "missing %s %d\n", fmt, n);
        spout21at(3, text);
    }
    return n;
}

int32_t itox_eltype(int32_t eltype)
{
    return checked(eltype, MT_CLASSDEF, MT_CLASS, "itox_eltype");
}

int32_t xtoi_eltype(int32_t eltype)
{
    return checked(eltype, MT_CLASSDEF, MT_CLASS, "xtoi_eltype");
}

int32_t itox_orgtype(int32_t orgtype)
{
    return checked(orgtype, OT_MATRIX, OT_VOID, "itox_orgtype");
}

int32_t xtoi_orgtype(int32_t orgtype)
{
    return checked(orgtype, OT_MATRIX, OT_VOID, "xtoi_orgtype");
}

namespace
{

bool busy;
int32_t lastkey;

struct keyentry {
    matobj *object;
    int64_t key;
};
static_assert(sizeof(keyentry) == 16);

void name_of(char name[33], uint64_t number)
{
    snprintf(name, 33, "%lx", static_cast<unsigned long>(number));
}

void forget_keys()
{
    dmzap(DM_MOSAKEYS);
    lastkey = 0;
}

// Files object and key under a number of either. False when there is no memory.
bool file_key(uint64_t number, matobj *object, int32_t key)
{
    char name[33];
    name_of(name, number);
    keyentry e{object, key};
    return !dmsave(name, DM_MOSAKEYS, 0, &e, sizeof e);
}

const keyentry *find_key(uint64_t number)
{
    char name[33];
    name_of(name, number);
    return static_cast<const keyentry *>(dmfind0(name, DM_MOSAKEYS));
}

uint64_t address(const matobj *m)
{
    return reinterpret_cast<uintptr_t>(m);
}

char letter_of(int16_t eltype)
{
    switch (eltype) {
    case MO_REAL: return 'R';
    case MO_COMPLEX: return 'C';
    case MO_STRING: return 'S';
    case MO_POINTER: return 'P';
    case MO_STRUCT: return 'T';
    default: return 0;
    }
}

// ---- writing

constexpr int32_t room = 32768;

struct writer {
    int32_t fd;
    int32_t used = 0;
    bool failed = false;
    uint8_t buf[room];

    void flush()
    {
        if (used && !failed && lovata_write(fd, buf, used) < used)
            failed = true;
        used = 0;
    }
    void put(const void *bytes, int64_t n)
    {
        if (n > room - used) {
            flush();
            if (n >= room) {
                failed = failed || lovata_write(fd, bytes, n) < n;
                return;
            }
        }
        memcpy(buf + used, bytes, size_t(n));
        used += int32_t(n);
    }
    void put_int(int32_t n) { put(&n, sizeof n); }
    void tag(const char *text) { put(text, int64_t(strlen(text)) + 1); }
};

moio_code put_object(writer *w, matobj *m);

moio_code put_numbers(writer *w, matobj *m)
{
    if (!m->view) {
        w->put(m->data, mo_count(m) * mo_elsize(m->eltype));
        return MOIO_GOOD;
    }
    if (m->view > 2 && v_fvxeqinit(m))
        return MOIO_VIEW;
    for (int64_t k = 0, n = mo_count(m); k < n && !w->failed; k++) {
        double z = v_el1(m, k);
        if (el_break(k))
            return MOIO_WRITE;
        w->put(&z, sizeof z);
    }
    return MOIO_GOOD;
}

moio_code put_strings(writer *w, const matobj *m)
{
    char buf[256];
    for (int64_t k = 0, n = mo_count(m); k < n && !w->failed; k++) {
        if (el_break(k))
            return MOIO_WRITE;
        const char *text = m->view ? buf : sel_text(mo_sel(m)[k]);
        int32_t length = m->view ? v_sel1(m, k, buf) : sel_len(mo_sel(m)[k]);
        w->put_int(length);
        w->put(text, length);
    }
    return MOIO_GOOD;
}

moio_code put_pointers(writer *w, const matobj *m)
{
    for (int64_t k = 0, n = mo_count(m); k < n && !w->failed; k++) {
        matobj *to = mo_pel(m)[k];
        if (el_break(k))
            return MOIO_WRITE;
        if (!to || mo_isfcn(to)) {
            if (m->eltype == MO_STRUCT)
                return MOIO_KEY;
            w->tag("NUL");
            continue;
        }
        const keyentry *known = to->links > 1 ? find_key(address(to)) : nullptr;
        if (known) {
            w->tag("KEY");
            w->put_int(int32_t(known->key));
            continue;
        }
        w->tag("NEW");
        if (moio_code rc = put_object(w, to))
            return rc;
    }
    return MOIO_GOOD;
}

moio_code put_matrix(writer *w, matobj *m)
{
    char letter = letter_of(m->eltype);
    w->tag("MAT");
    w->put(&letter, 1);
    w->put_int(m->rows);
    w->put_int(m->cols);
    moio_code rc = MOIO_TYPE;
    switch (letter) {
    case 'R':
    case 'C': rc = put_numbers(w, m); break;
    case 'S': rc = put_strings(w, m); break;
    case 'P':
    case 'T': rc = put_pointers(w, m); break;
    default: break;
    }
    w->tag("TAM");
    return rc;
}

moio_code put_object(writer *w, matobj *m)
{
    if (m_nativefull())
        return MOIO_MEMORY;
    char name[33] = {};
    auto type = uint8_t(itox_dttype(dm_rec(m)->type));
    strcut(name, sizeof name, mo_name(m));
    lastkey++;
    if (m->links > 1 && !file_key(address(m), m, lastkey)) // others may lead here
        return MOIO_MEMORY;
    w->tag("OBJ");
    w->put(&type, 1);
    w->put(name, sizeof name);
    w->put_int(lastkey);
    moio_code rc = put_matrix(w, m);
    if (!rc)
        w->tag("JBO");
    return w->failed ? MOIO_WRITE : rc;
}

// ---- reading

struct reader {
    int32_t fd;
    byteorder order = b_native;
    int64_t left = -1; // bytes of the file behind the buffer, -1 not known
    int32_t at = 0, held = 0, most = room;
    bool refused = false; // the system could not read
    uint8_t buf[room];

    explicit reader(int32_t f) : fd(f), left(ov_left(f))
    {
        if (left < 0)
            most = 1; // what cannot be given back is not taken
    }
    int64_t from_file(void *to, int64_t n)
    {
        errno = 0;
        int64_t got = lovata_read(fd, to, n);
        refused = refused || (got < n && errno);
        left -= left < 0 ? 0 : got;
        return got;
    }
    // Bytes into memory; fewer only at the end.
    int64_t get(void *to, int64_t n)
    {
        int64_t done = 0;
        while (done < n) {
            if (at == held) {
                if (n - done >= most) {
                    int64_t got = from_file(static_cast<char *>(to) + done, n - done);
                    return done + got;
                }
                at = 0;
                held = int32_t(from_file(buf, most));
                if (held == 0)
                    return done;
            }
            int64_t some = n - done < held - at ? n - done : held - at;
            memcpy(static_cast<char *>(to) + done, buf + at, size_t(some));
            at += int32_t(some);
            done += some;
        }
        return done;
    }
    bool fits(int64_t n) const { return left < 0 || n <= left + held - at; }
    // Numbers are turned where the writer's order is not ours; keys never are.
    bool get_int(int32_t *n, bool turn)
    {
        if (get(n, sizeof *n) < int64_t(sizeof *n))
            return false;
        if (turn && order != b_native)
            *n = int32_t(__builtin_bswap32(uint32_t(*n)));
        return true;
    }
    bool tag(const char *text)
    {
        char got[8];
        int64_t n = int64_t(strlen(text)) + 1;
        return get(got, n) == n && !memcmp(got, text, size_t(n));
    }
    // The file stands behind what was used.
    void finish()
    {
        if (at < held && lseek(fd, at - held, SEEK_CUR) < 0)
            return;
    }
};

moio_code get_object(reader *r, matobj **made, char name[33], matobj *holder, int64_t element);

moio_code get_numbers(reader *r, matobj *m)
{
    int64_t n = mo_count(m) * (m->eltype == MO_COMPLEX ? 2 : 1);
    if (r->get(m->data, n * 8) < n * 8)
        return MOIO_FORMAT;
    double *z = mo_re(m);
    for (int64_t k = 0; k < n; k++) {
        if (r->order != b_native) {
            uint64_t bits;
            memcpy(&bits, z + k, 8);
            bits = __builtin_bswap64(bits);
            memcpy(z + k, &bits, 8);
        }
        if (!(fabs(z[k]) <= DBL_MAX)) // what no calculation leaves behind
            z[k] = misval;
    }
    return MOIO_GOOD;
}

moio_code get_strings(reader *r, matobj *m)
{
    for (int64_t k = 0, n = mo_count(m); k < n; k++) {
        int32_t length;
        if (el_break(k))
            return MOIO_FORMAT;
        if (!r->get_int(&length, true) || length < 0 || !r->fits(length))
            return MOIO_FORMAT;
        if (!length)
            continue;
        if (selrecreate(m, k, length))
            return MOIO_MEMORY;
        char *block = mo_sel(m)[k];
        if (r->get(block + 4, length) < length)
            return MOIO_FORMAT;
        block[4 + length] = 0;
    }
    return MOIO_GOOD;
}

moio_code get_pointer(reader *r, matobj *m, int64_t k)
{
    char tag[4];
    if (r->get(tag, 4) < 4)
        return MOIO_FORMAT;
    if (!memcmp(tag, "NUL", 4))
        return m->eltype == MO_STRUCT ? MOIO_KEY : MOIO_GOOD;
    matobj *to = nullptr;
    if (!memcmp(tag, "KEY", 4)) {
        int32_t key;
        if (!r->get_int(&key, false))
            return MOIO_FORMAT;
        const keyentry *known = find_key(uint32_t(key));
        if (!known)
            return MOIO_KEY;
        to = known->object;
        pelreplace(m, k, to);
    } else if (!memcmp(tag, "NEW", 4)) {
        char name[33];
        if (moio_code rc = get_object(r, &to, name, m, k))
            return rc;
    } else
        return MOIO_FORMAT;
    return m->eltype == MO_STRUCT && to->eltype != MO_POINTER ? MOIO_FORMAT : MOIO_GOOD;
}

// Room for the matrix that is announced, when the file can hold it.
moio_code new_matrix(reader *r, matobj **made)
{
    static const struct {
        char letter;
        int16_t eltype, least; // bytes that an element takes in the stream, at least
    } kinds[] = {{'R', MO_REAL, 8},
                 {'C', MO_COMPLEX, 16},
                 {'S', MO_STRING, 4},
                 {'P', MO_POINTER, 4},
                 {'T', MO_STRUCT, 4}};
    char letter;
    int32_t rows, cols;
    if (r->get(&letter, 1) < 1 || !r->get_int(&rows, true) || !r->get_int(&cols, true))
        return MOIO_FORMAT;
    for (const auto &kind : kinds) {
        if (kind.letter != letter)
            continue;
        int64_t bytes;
        if (rows < 0 || cols < 0)
            return MOIO_FORMAT;
        if (!m_canmultiply(mo_elsize(kind.eltype), rows, cols, &bytes))
            return MOIO_SIZE;
        if (!r->fits(int64_t(rows) * cols * kind.least))
            return MOIO_FORMAT;
        *made = m_mktmat(kind.eltype, rows, cols);
        return *made ? MOIO_GOOD : MOIO_MEMORY;
    }
    return MOIO_TYPE;
}

moio_code get_payload(reader *r, matobj *m)
{
    if (m->eltype == MO_STRING)
        return get_strings(r, m);
    if (!mo_isptrlike(m->eltype))
        return get_numbers(r, m);
    for (int64_t k = 0, n = mo_count(m); k < n; k++)
        if (moio_code rc = get_pointer(r, m, k))
            return rc;
    return MOIO_GOOD;
}

// An object is held by its key until all is read, and by the element that it is read for.
moio_code get_object(reader *r, matobj **made, char name[33], matobj *holder, int64_t element)
{
    uint8_t type;
    int32_t key;
    if (m_nativefull() || row_break())
        return MOIO_MEMORY;
    if (!r->tag("OBJ") || r->get(&type, 1) < 1 || r->get(name, 33) < 33 || !r->get_int(&key, false))
        return MOIO_FORMAT;
    name[32] = 0;
    if (xtoi_dttype(type) != DM_MOSA)
        return xtoi_dttype(type) == DM_MOSAFCN ? MOIO_FUNCTION : MOIO_TYPE;
    if (!r->tag("MAT"))
        return MOIO_FORMAT;
    if (find_key(uint32_t(key)))
        return MOIO_FORMAT;
    if (moio_code rc = new_matrix(r, made))
        return rc;
    if (!file_key(uint32_t(key), *made, key)) {
        mo_free(*made);
        return MOIO_MEMORY;
    }
    (*made)->links++;
    if (holder)
        pelreplace(holder, element, *made);
    if (moio_code rc = get_payload(r, *made))
        return rc;
    return r->tag("TAM") && r->tag("JBO") ? MOIO_GOOD : MOIO_FORMAT;
}

// Every object loses the link of its key. When reading failed they lose their elements first,
// so that nothing stays in a circle.
void release_keys(bool failed)
{
    uint64_t length;
    char name[33];
    for (int32_t pass = failed ? 0 : 1; pass < 2; pass++)
        for (void *p = dmnext(nullptr, name, DM_MOSAKEYS, &length); p;
             p = dmnext(p, name, DM_MOSAKEYS, &length)) {
            matobj *m = static_cast<keyentry *>(p)->object;
            if (pass == 0) {
                if (mo_isptrlike(m->eltype))
                    mo_subptrfree(m);
            } else if (--m->links < 1 && failed)
                mo_free(m);
        }
}

moio_code read_stream(reader *r, matobj **object, char name[33])
{
    static const char first[] = "MOTOP";
    char got[6];
    uint8_t head[2];
    int64_t n = r->get(got, 6);
    if (n == 0)
        return r->refused ? MOIO_FORMAT : MOIO_END;
    if (n < 6 || memcmp(got, first, 6) != 0 || r->get(head, 2) < 2 ||
        (head[1] != B_BIG && head[1] != B_LITTLE))
        return MOIO_FORMAT;
    r->order = byteorder(head[1]);
    moio_code rc = get_object(r, object, name, nullptr, 0);
    return rc || r->tag("POTOM") ? rc : MOIO_FORMAT;
}

} // namespace

moio_code moio_write(int32_t fd, matobj *object)
{
    if (busy)
        return MOIO_BUSY;
    if (mo_isfcn(object))
        return MOIO_FUNCTION;
    busy = true;
    forget_keys();
    writer w;
    w.fd = fd;
    const uint8_t order[2] = {0, b_native};
    w.tag("MOTOP");
    w.put(order, 2);
    moio_code rc = put_object(&w, object);
    if (!rc)
        w.tag("POTOM");
    w.flush();
    forget_keys();
    busy = false;
    return rc == MOIO_GOOD && w.failed ? MOIO_WRITE : rc;
}

moio_code moio_read(int32_t fd, matobj **object, char name[33])
{
    if (busy)
        return MOIO_BUSY;
    busy = true;
    *object = nullptr;
    name[0] = 0;
    forget_keys();
    reader r(fd);
    moio_code rc = read_stream(&r, object, name);
    r.finish();
    release_keys(rc != MOIO_GOOD);
    forget_keys();
    if (rc)
        *object = nullptr;
    busy = false;
    return rc;
}
