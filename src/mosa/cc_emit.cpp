// Code words, what in them must be fixed later, and literals.
#include "core/missing.h"
#include "core/text.h"
#include "interp/dm.h"
#include "mosa/cc_int.h"
#include "output/print.h"
#include <cstring>

void *cc_alloc(size_t bytes)
{
    void *p = dmadd("", DM_MOSASCRATCH, 0, bytes);
    if (!p)
        throw cc_abort{}; // dmadd told of it
    return p;
}

void mop_add(int32_t word)
{
    if (m_pgm.pc >= m_maxpgmsize)
        cc_err("program too long\n");
    m_pgm.code[m_pgm.pc++] = word;
}

void mop_add(int32_t op, int32_t a)
{
    mop_add(op);
    mop_add(a);
}

void mop_add(int32_t op, int32_t a, int32_t b)
{
    mop_add(op);
    mop_add(a);
    mop_add(b);
}

// ---- fixups

static void add_fix(int32_t word, int8_t kind)
{
    if (m_cc->nfix >= cc_maxfix)
        cc_err("program too long\n");
    m_cc->fix[m_cc->nfix++] = {word, kind};
}

void fu_refadr(int32_t word)
{
    add_fix(word, FX_ADR);
}

void fu_reftag(int32_t word, int32_t tag)
{
    m_pgm.code[word] = tag;
    add_fix(word, FX_TAG);
}

int32_t mop_add_paddr(int32_t op)
{
    mop_add(op, 0);
    fu_refadr(m_pgm.pc - 1);
    return m_pgm.pc - 1;
}

void mop_fix_paddr(int32_t word)
{
    m_pgm.code[word] = m_pgm.pc;
}

void mop_add_saddr(int32_t op, int32_t address)
{
    mop_add(op, address);
    fu_refadr(m_pgm.pc - 1);
}

void mop_add_jump(int32_t tag)
{
    mop_add(1, 0);
    fu_reftag(m_pgm.pc - 1, tag);
}

// The few words from begin to the end, assertions, go before those from to on. What jumps
// among the words passed over moves with them; what jumps to their start now meets the
// assertions first.
void mop_bringforward(int32_t to, int32_t begin)
{
    int32_t n = m_pgm.pc - begin, held[8];
    if (n == 0)
        return;
    int32_t *code = m_pgm.code;
    memcpy(held, code + begin, size_t(n) * 4);
    memmove(code + to + n, code + to, size_t(begin - to) * 4);
    memcpy(code + to, held, size_t(n) * 4);
    for (int32_t i = 0; i < m_cc->nfix; i++) {
        cc_fix &f = m_cc->fix[i];
        if (f.word < to)
            continue;
        f.word += n;
        if (f.kind == FX_ADR && code[f.word] > to)
            code[f.word] += n;
    }
}

// ---- tags

int32_t fu_crtag()
{
    if (m_cc->ntag >= cc_maxtag)
        cc_err("too many branch points\n");
    m_cc->tag[m_cc->ntag].at = -1;
    m_cc->tag[m_cc->ntag].name[0] = 0;
    return m_cc->ntag++;
}

int32_t fu_find_or_cr_tag(const char *name)
{
    if (strlen(name) > 7)
        cc_err("%s:  tag name too long\n", name);
    for (int32_t i = 0; i < m_cc->ntag; i++)
        if (!strcmp(m_cc->tag[i].name, name))
            return i;
    int32_t i = fu_crtag();
    strcut(m_cc->tag[i].name, sizeof m_cc->tag[i].name, name);
    return i;
}

void fu_settagadr(int32_t tag)
{
    cc_tag &t = m_cc->tag[tag];
    if (t.at >= 0)
        cc_err("symbol %s multiply defined\n", t.name);
    t.at = m_pgm.pc;
}

void fu_fixtags()
{
    for (int32_t i = 0; i < m_cc->nfix; i++) {
        cc_fix &f = m_cc->fix[i];
        if (f.kind != FX_TAG)
            continue;
        const cc_tag &t = m_cc->tag[m_pgm.code[f.word]];
        if (t.at < 0)
            cc_err("%s undefined tag\n", t.name);
        m_pgm.code[f.word] = t.at;
        f.kind = FX_ADR;
    }
}

// ---- text

static int32_t text_words(size_t len)
{
    return int32_t(len / 4) + 1;
}

void mop_sto(const char *text)
{
    size_t len = strlen(text);
    for (int32_t i = 0; i < text_words(len); i++) {
        int32_t word = 0;
        size_t at = size_t(i) * 4;
        memcpy(&word, text + at, len - at < 4 ? len - at : 4);
        mop_add(word);
    }
}

void mop_add_str(const char *text)
{
    mop_add(text_words(strlen(text)));
    mop_sto(text);
}

void mop_add_findf(const char *name)
{
    mop_add(138);
    mop_add(0, 0, 0);
    mop_add_str(name);
}

// ---- literals

static int32_t m_litaddd(double z)
{
    for (int32_t i = 0; i < m_cc->ndlit; i++)
        if (!memcmp(&m_cc->dlit[i], &z, sizeof z))
            return i;
    if (m_cc->ndlit >= cc_maxdlit)
        cc_err("no room to add more double literals\n");
    m_cc->dlit[m_cc->ndlit] = z;
    return m_cc->ndlit++;
}

static int32_t m_litadds_fromdtl(const char *text, int32_t len)
{
    for (int32_t i = 0; i < m_cc->nslit; i++)
        if (m_cc->slit[i].len == len && !memcmp(m_cc->slit[i].text, text, size_t(len)))
            return i;
    if (m_cc->nslit >= cc_maxslit)
        cc_err("too many string literals\n");
    auto *copy = static_cast<char *>(cc_alloc(size_t(len) + 1));
    memcpy(copy, text, size_t(len));
    m_cc->slit[m_cc->nslit] = {copy, len, 0};
    return m_cc->nslit++;
}

void fu_refdlit(int32_t word, double z)
{
    m_pgm.code[word] = m_litaddd(z);
    add_fix(word, FX_DLIT);
}

void fu_refslit(int32_t word, const char *text, int32_t len)
{
    m_pgm.code[word] = m_litadds_fromdtl(text, len);
    add_fix(word, FX_SLIT);
}

void mop_add_longstr(const char *text, int32_t len)
{
    mop_add(40, 0);
    fu_refslit(m_pgm.pc - 1, text, len);
}

void mop_add_slit(const char *text)
{
    mop_add(0);
    fu_refslit(m_pgm.pc - 1, text, int32_t(strlen(text)));
}

void mop_add_num(double z)
{
    if (z == 0)
        mop_add(79);
    else if (z == 1)
        mop_add(80);
    else if (z == misval)
        mop_add(81);
    else {
        mop_add(31, 0);
        fu_refdlit(m_pgm.pc - 1, z);
    }
}

// ---- the pools: strings, then numbers on an 8-byte boundary

static int32_t string_words()
{
    int32_t n = m_cc->nslit ? 2 : 0;
    for (int32_t i = 0; i < m_cc->nslit; i++)
        n += 1 + text_words(size_t(m_cc->slit[i].len));
    return n;
}

int32_t fu_poolwords()
{
    int32_t n = string_words();
    if (m_cc->ndlit)
        n += (m_pgm.pc + n) % 2 + 2 + 2 * m_cc->ndlit;
    return n;
}

void fu_reflit(int32_t *image)
{
    int32_t at = m_pgm.pc;
    if (m_cc->nslit) {
        image[at++] = 39;
        image[at++] = m_cc->nslit;
    }
    for (int32_t i = 0; i < m_cc->nslit; i++) {
        cc_str &s = m_cc->slit[i];
        int32_t n = text_words(size_t(s.len));
        s.word = at;
        image[at++] = n;
        memset(image + at, 0, size_t(n) * 4);
        memcpy(image + at, s.text, size_t(s.len));
        at += n;
    }
    if (m_cc->ndlit) {
        if (at % 2)
            image[at++] = 82;
        image[at++] = 38;
        image[at++] = m_cc->ndlit;
        memcpy(image + at, m_cc->dlit, size_t(m_cc->ndlit) * 8);
    }
    for (int32_t i = 0; i < m_cc->nfix; i++) {
        const cc_fix &f = m_cc->fix[i];
        if (f.kind == FX_DLIT)
            image[f.word] = at + 2 * image[f.word];
        else if (f.kind == FX_SLIT)
            image[f.word] = m_cc->slit[image[f.word]].word;
    }
}
