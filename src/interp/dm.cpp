#include "interp/dm.h"
#include "core/bytes.h"
#include "core/files.h"
#include "core/mem.h"
#include "core/rc.h"
#include "output/print.h"
#include <cstring>

dmrec *dm_hname[dm_nhash];
dmrec *dm_dtyp[DM_NTYPE];
void (*dm_onremove)(void *payload, int32_t type);

static constexpr uint64_t dm_maxsize = uint64_t{1} << 46;

// Types and the words of their memory message, by first and last type of a run.
struct typeword {
    int32_t first, last;
    const char *word;
};
static const typeword typewords[] = {
    {DM_VALLABEL, DM_VALLABEL, "value label"},
    {DM_GLOBAL, DM_GLOBAL, "global macro"},
    {DM_VARLIST, DM_VARLIST, "varlist"},
    {DM_LASTCMD, DM_LASTCMD, "last command"},
    {DM_ESTIMATES, DM_ESTIMATES, "saved estimation result"},
    {DM_VARLABEL, DM_VARLABEL, "variable label"},
    {DM_PROGRAM, DM_PROGRAM, "program"},
    {DM_MATRIX, DM_MATCOLS, "matrix"},
    {DM_CMDBUFFER, DM_CMDBUFFER, "command buffer"},
    {DM_CONSTRAINT, DM_CONSTRAINT, "constraint"},
    {DM_GRAPH, DM_GRAPH, "saved graph"},
    {DM_SCALAR, DM_SCALAR, "scalar"},
    {DM_ESTPRESERVE, DM_ESTPRESERVE, "estimates preserve/restore"},
    {DM_CHAR, DM_CHAR, "characteristic"},
    {DM_TMPNAME, DM_TMPNAME, "tracking the postfile"},
    {DM_TMPMATRIX, DM_TMPMATRIX, "internal temporary matrix"},
    {DM_RSCALAR, DM_RSCALAR, "scalar in r()"},
    {DM_RMACRO, DM_RMACRO, "local macro in r()"},
    {DM_RMATRIX, DM_RMATCOLS, "matrix in r()"},
    {DM_ESCALAR, DM_ESCALAR, "scalar in e()"},
    {DM_EMACRO, DM_EMACRO, "local macro in e()"},
    {DM_EMATRIX, DM_EMATCOLS, "matrix in e()"},
    {DM_SMACRO, DM_SMACRO, "local macro in s()"},
    {DM_PLUGIN, DM_PLUGIN, "plugin"},
    {DM_BYOBS, DM_BYOBS, "byobs subcommand"},
    {DM_FILEHANDLE, DM_FILEHANDLE, "file handle"},
    {DM_PGMINDEX, DM_PGMINDEX, "program index"},
    {DM_HELD_FIRST, DM_HELD_LAST, "held estimates"},
    {DM_LOCAL, DM_LOCAL_LAST, "local macro"},
    {DM_LOCAL + DM_TO_RETSCALAR, DM_LOCAL_LAST + DM_TO_RETSCALAR, "scalar return()"},
    {DM_LOCAL + DM_TO_RETMACRO, DM_LOCAL_LAST + DM_TO_RETMACRO, "local macro return()"},
    {DM_LOCAL + DM_TO_RETMATRIX, DM_LOCAL_LAST + DM_TO_RETCOLS, "matrix return()"},
    {DM_LEVELVARLIST, DM_NTYPE - 1, "varlist"},
};

const char *dm_word(int32_t type)
{
    for (const typeword &w : typewords)
        if (type >= w.first && type <= w.last)
            return w.word;
    return "object";
}

uint32_t dm_hash(const char *name)
{
    uint32_t h = 0;
    for (auto p = reinterpret_cast<const unsigned char *>(name); *p; p++)
        h = h * 31 + *p;
    return h;
}

static uint32_t hash32(const char *name)  // of the part of a name that is kept
{
    uint32_t h = 0;
    auto p = reinterpret_cast<const unsigned char *>(name);
    for (int i = 0; i < 32 && p[i]; i++)
        h = h * 31 + p[i];
    return h;
}

static void link_name(dmrec *r)
{
    dmrec *&head = dm_hname[uint32_t(r->hash) % dm_nhash];
    r->nprev = nullptr;
    r->nnext = head;
    if (head)
        head->nprev = r;
    head = r;
}

static void link_type(dmrec *r)
{
    dmrec *&head = dm_dtyp[r->type];
    r->tprev = nullptr;
    r->tnext = head;
    if (head)
        head->tprev = r;
    head = r;
}

static void unlink_name(dmrec *r)
{
    if (r->nprev)
        r->nprev->nnext = r->nnext;
    else
        dm_hname[uint32_t(r->hash) % dm_nhash] = r->nnext;
    if (r->nnext)
        r->nnext->nprev = r->nprev;
}

static void unlink_type(dmrec *r)
{
    if (r->tprev)
        r->tprev->tnext = r->tnext;
    else
        dm_dtyp[r->type] = r->tnext;
    if (r->tnext)
        r->tnext->tprev = r->tprev;
}

static void remove_rec(dmrec *r)
{
    if (dm_onremove)
        dm_onremove(dm_payload(r), r->type);
    unlink_name(r);
    unlink_type(r);
    safefree(r);
}

static bool good_type(int32_t type) { return type >= 0 && type < DM_NTYPE; }

static dmrec *new_rec(const char *name, int32_t type, uint64_t size, bool zeroed)
{
    dmrec *r = nullptr;
    if (good_type(type) && size < dm_maxsize)
        r = static_cast<dmrec *>(zeroed ? safecalloc(dm_hdrsize + size)
                                        : safemalloc(dm_hdrsize + size));
    if (!r) {
        spout21fat(3, "insufficient memory for %s\n", dm_word(type));
        return nullptr;
    }
    size_t n = strnlen(name, 32);
    memcpy(r->name, name, n);
    memset(r->name + n, 0, sizeof r->name - n);
    r->cap = r->len = size;
    r->hash = int32_t(dm_hash(r->name));
    r->type = type;
    r->aux = 0;
    r->a = r->b = -1;
    r->flag = 0;
    link_name(r);
    link_type(r);
    return r;
}

static dmrec *find_rec(const char *name, int32_t type)
{
    uint32_t h = hash32(name);
    for (dmrec *r = dm_hname[h % dm_nhash]; r; r = r->nnext)
        if (r->type == type && uint32_t(r->hash) == h && strncmp(r->name, name, 32) == 0)
            return r;
    return nullptr;
}

void dminit()
{
    memset(dm_hname, 0, sizeof dm_hname);
    memset(dm_dtyp, 0, sizeof dm_dtyp);
}

void dmshutdown()
{
    for (int32_t t = 0; t < DM_NTYPE; t++)
        dmzap(t);
}

void *dmadd(const char *name, int32_t type, int32_t aux, uint64_t size)
{
    return dmadd23(name, type, aux, -1, -1, size);
}

void *dmadd23(const char *name, int32_t type, int32_t aux, int16_t a, int16_t b, uint64_t size)
{
    dmrec *r = new_rec(name, type, size, true);
    if (!r)
        return nullptr;
    r->aux = aux;
    r->a = a;
    r->b = b;
    return dm_payload(r);
}

int32_t dmsave(const char *name, int32_t type, int32_t aux, const void *data, uint64_t size)
{
    return dmsave23(name, type, aux, -1, -1, data, size);
}

int32_t dmsave23(const char *name, int32_t type, int32_t aux, int16_t a, int16_t b,
                 const void *data, uint64_t size)
{
    dmrec *r = new_rec(name, type, size, false);
    if (!r)
        return RC_DMMEM;
    r->aux = aux;
    r->a = a;
    r->b = b;
    if (size)
        memcpy(dm_payload(r), data, size);
    return 0;
}

// Near enough in size to be used again.
static bool fits(const dmrec *r, uint64_t size)
{
    uint64_t slack = size / 2 < 128 ? 128 : size / 2 > 1024 ? 1024 : size / 2;
    return r->cap >= size && r->cap <= size + slack;
}

int32_t dmresave(const char *name, int32_t type, int32_t aux, const void *data, uint64_t size)
{
    dmrec *r = find_rec(name, type);
    if (r && fits(r, size)) {
        memmove(dm_payload(r), data, size);
        r->len = size;
        r->aux = aux;
        r->a = r->b = -1;
        return 0;
    }
    dmrec *fresh = new_rec(name, type, size, false);
    if (!fresh)
        return RC_DMMEM;
    memcpy(dm_payload(fresh), data, size);
    fresh->aux = aux;
    if (r)
        remove_rec(r);
    return 0;
}

void *dmreadd23(const char *name, int32_t type, int32_t aux, int16_t a, int16_t b, uint64_t size)
{
    dmrec *r = find_rec(name, type);
    if (!r || !fits(r, size)) {
        dmrec *fresh = new_rec(name, type, size, false);
        if (!fresh)
            return nullptr;
        if (r)
            remove_rec(r);
        r = fresh;
    }
    r->len = size;
    r->aux = aux;
    r->a = a;
    r->b = b;
    return dm_payload(r);
}

int32_t dmuse(const char *name, int32_t type, uint64_t *length, void *buffer, uint64_t size)
{
    dmrec *r = find_rec(name, type);
    if (length)
        *length = r ? r->len : 0;
    if (!r)
        return RC_NOTFOUND;
    memcpy(buffer, dm_payload(r), r->len < size ? r->len : size);
    return 0;
}

void dmrm(void *payload)
{
    if (payload)
        remove_rec(dm_rec(payload));
}

void dmzap(int32_t type)
{
    if (!good_type(type))
        return;
    while (dmrec *r = dm_dtyp[type])
        remove_rec(r);
}

void dmretype(void *payload, int32_t type)
{
    if (!payload || !good_type(type))
        return;
    dmrec *r = dm_rec(payload);
    unlink_type(r);
    r->type = type;
    link_type(r);
}

void dmretypeall(int32_t from, int32_t to)
{
    if (!good_type(from) || !good_type(to) || from == to || !dm_dtyp[from])
        return;
    dmrec *head = dm_dtyp[from], *tail = nullptr;
    for (dmrec *r = head; r; r = r->tnext) {
        r->type = to;
        tail = r;
    }
    tail->tnext = dm_dtyp[to];
    if (dm_dtyp[to])
        dm_dtyp[to]->tprev = tail;
    dm_dtyp[to] = head;
    dm_dtyp[from] = nullptr;
}

void dmrename(void *payload, const char *name)
{
    if (!payload)
        return;
    dmrec *r = dm_rec(payload);
    unlink_name(r);
    char cut[33];  // name may be the record's own
    size_t n = strnlen(name, 32);
    memcpy(cut, name, n);
    memset(cut + n, 0, sizeof cut - n);
    memcpy(r->name, cut, sizeof cut);
    r->hash = int32_t(dm_hash(r->name));
    link_name(r);
}

void *dmfind(const char *name, int32_t type, uint64_t *length)
{
    dmrec *r = find_rec(name, type);
    if (length)
        *length = r ? r->len : 0;
    return r ? dm_payload(r) : nullptr;
}

void *dmfind0(const char *name, int32_t type)
{
    dmrec *r = find_rec(name, type);
    return r ? dm_payload(r) : nullptr;
}

void *dmfindany(const char *name)
{
    uint32_t h = hash32(name);
    for (dmrec *r = dm_hname[h % dm_nhash]; r; r = r->nnext)
        if (uint32_t(r->hash) == h && strncmp(r->name, name, 32) == 0)
            return dm_payload(r);
    return nullptr;
}

void *dmnamenext(void *payload, int32_t type)
{
    if (!payload)
        return nullptr;
    dmrec *at = dm_rec(payload);
    for (dmrec *r = at->nnext; r; r = r->nnext)
        if (r->hash == at->hash && (type == -1 || r->type == type) && !strcmp(r->name, at->name))
            return dm_payload(r);
    return nullptr;
}

void *dmnext(void *payload, char *name, int32_t type, uint64_t *length)
{
    dmrec *r = payload ? dm_rec(payload)->tnext : good_type(type) ? dm_dtyp[type] : nullptr;
    if (!r) {
        if (length)
            *length = 0;
        return nullptr;
    }
    if (name)
        memcpy(name, r->name, sizeof r->name);
    if (length)
        *length = r->len;
    return dm_payload(r);
}

int32_t dmcp(const void *payload, const char *name, int32_t type)
{
    const dmrec *r = dm_rec(payload);
    return dmsave23(name, type, r->aux, r->a, r->b, payload, r->len);
}

uint64_t dmmemory(int32_t type)
{
    uint64_t sum = 0;
    if (type == -1)
        for (int32_t h = 0; h < dm_nhash; h++)
            for (dmrec *r = dm_hname[h]; r; r = r->nnext)
                sum += dm_hdrsize + r->cap;
    else if (good_type(type))
        for (dmrec *r = dm_dtyp[type]; r; r = r->tnext)
            sum += dm_hdrsize + r->cap;
    return sum;
}

// In a file a record is 33 bytes of name, type, aux, a, b and length, then its payload.
static constexpr int32_t dm_filehdr = 33 + 4 + 4 + 2 + 2 + 8;

int32_t dmwrite(int32_t fd, const void *payload)
{
    const dmrec *r = dm_rec(payload);
    char h[dm_filehdr];
    memcpy(h, r->name, 33);
    put32(h + 33, uint32_t(r->type), B_LITTLE);
    put32(h + 37, uint32_t(r->aux), B_LITTLE);
    put16(h + 41, uint16_t(r->a), B_LITTLE);
    put16(h + 43, uint16_t(r->b), B_LITTLE);
    put64(h + 45, r->len, B_LITTLE);
    if (ovata_write(fd, h, dm_filehdr) != dm_filehdr)
        return RC_IOWRITE;
    return lovata_write(fd, payload, int64_t(r->len)) == int64_t(r->len) ? 0 : RC_IOWRITE;
}

int32_t dmread(int32_t fd, void **payload)
{
    *payload = nullptr;
    char h[dm_filehdr];
    int32_t got = ovata_read(fd, h, dm_filehdr);
    if (got == 0)
        return -1;
    if (got != dm_filehdr || h[32])
        return RC_CORRUPT;
    int32_t type = int32_t(get32(h + 33, B_LITTLE));
    uint64_t len = get64(h + 45, B_LITTLE);
    int64_t left = ov_left(fd);
    if (!good_type(type) || len >= dm_maxsize || (left >= 0 && len > uint64_t(left)))
        return RC_CORRUPT;
    dmrec *r = new_rec(h, type, len, false);
    if (!r)
        return RC_DMMEM;
    r->aux = int32_t(get32(h + 37, B_LITTLE));
    r->a = int16_t(get16(h + 41, B_LITTLE));
    r->b = int16_t(get16(h + 43, B_LITTLE));
    if (lovata_read(fd, dm_payload(r), int64_t(len)) != int64_t(len)) {
        remove_rec(r);
        return RC_IOREAD;
    }
    *payload = dm_payload(r);
    return 0;
}
