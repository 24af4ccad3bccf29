// data/dtaside.cpp - a dataset file held beside the dataset in memory.
#include "data/dtaside.h"
#include "core/files.h"
#include "core/mem.h"
#include "core/rc.h"
#include "core/text.h"
#include "data/dsa.h"
#include "data/labels.h"
#include "data/variables.h"
#include "interp/messages.h"
#include <algorithm>
#include <cctype>
#include <cstring>

dtaside::~dtaside()
{
    safefree(rows);
    if (fd >= 0)
        ov_close(fd);
}

int32_t side_find(const dtaside *s, const char *name)
{
    for (int32_t k = 0; k < s->d.K; k++)
        if (!strcmp(s->d.names[k], name))
            return k;
    return -1;
}

double side_num(const dtaside *s, int32_t k, int32_t row)
{
    double z = cell_data(s->d.types[k], side_cell(s, k, row));
    return s->d.h.release < 108 && z == misval_107 ? misval : z;
}

char *side_str(const dtaside *s, int32_t k, int32_t row, char *buf)
{
    uint8_t n = s->d.types[k];
    memcpy(buf, side_cell(s, k, row), n);
    buf[n] = 0;
    return buf;
}

// Names of early files may hold what no name of today may.
static void clean(char *name)
{
    for (char *p = name; *p; p++)
        if (!isalnum(uint8_t(*p)) && *p != '_' && !(*p & 0x80))
            *p = '_';
}

static int32_t take_char(void *arg, const char *owner, const char *name, const char *text)
{
    auto s = static_cast<dtaside *>(arg);
    char of[33];
    strcut(of, sizeof of, owner);
    clean(of);
    if (!strcmp(of, "_dta") || side_find(s, of) >= 0)
        s->chars.push_back({of, name, text});
    return 0;
}

// Numbers of the other byte order are turned over where they lie.
static void turn(dtaside *s, int32_t k)
{
    int32_t w = dsa_bytlenc(s->d.types[k]);
    if (t_isstr(s->d.types[k]) || w == 1)
        return;
    for (int32_t i = 0; i < s->d.N; i++) {
        char *p = s->rows + uint64_t(i) * s->d.width + s->at[size_t(k)];
        std::reverse(p, p + w);
    }
}

static int32_t read_rows(dtaside *s, const char *name)
{
    uint64_t bytes = s->d.width * uint64_t(s->d.N);
    int64_t left = ov_left(s->fd);
    if (left >= 0 && bytes > uint64_t(left))
        return fierr(RC_IOREAD, name);
    s->rows = static_cast<char *>(safemalloc(bytes + 1));
    if (!s->rows)
        return error(RC_NOMEM);
    if (lovata_read(s->fd, s->rows, int64_t(bytes)) < int64_t(bytes))
        return fierr(RC_IOREAD, name);
    uint32_t at = 0;
    for (int32_t k = 0; k < s->d.K; k++) {
        s->at.push_back(at);
        at += uint32_t(dsa_bytlenc(s->d.types[k]));
        if (dta_order(&s->d.h) != b_native)
            turn(s, k);
    }
    return fault_poll();
}

// Integers of the single-missing types reach further up than those of today.
static uint8_t todays_type(const dtaside *s, int32_t k)
{
    static const double most[] = {max_ovbyte, max_ovint, max_ovlong};
    static const uint8_t wider[] = {T_INT, T_LONG, T_DOUBLE};
    uint8_t old = s->d.types[k], now = dsa_modernvartype(old);
    if (old < T_BYTE110 || old > T_LONG110)
        return now;
    double top = most[old - T_BYTE110];
    for (int32_t i = 0; i < s->d.N; i++) {
        double z = side_num(s, k, i);
        if (z > top && z < misval)
            return wider[old - T_BYTE110];
    }
    return now;
}

int32_t side_load(const char *name, dtaside *s)
{
    if ((s->fd = ov_open(name, OV_READ)) < 0)
        return fierr(s->fd, name);
    int32_t rc = rdhdr(s->fd, &s->d.h, name);
    if (rc) {
        s->fd = -1;  // the reader of headers closed it
        return rc;
    }
    if ((rc = dta_readdict(s->fd, &s->d, name)))
        return rc;
    for (int32_t k = 0; k < s->d.K; k++)
        clean(s->d.names[k]);
    if ((rc = getgchar(s->fd, &s->d, name, take_char, s)) || (rc = read_rows(s, name)))
        return rc;
    for (int32_t k = 0; k < s->d.K; k++)
        s->type.push_back(todays_type(s, k));
    return 0;
}

int32_t side_labels(dtaside *s, bool (*wanted)(const char *name))
{
    return loadlab(s->fd, &s->d, wanted);
}
