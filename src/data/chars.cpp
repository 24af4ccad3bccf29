// data/chars.cpp - characteristics. A record is named by its owner; its body is the name of
// the characteristic in 33 bytes and the text behind it.
#include "core/rc.h"
#include "data/labels.h"
#include "interp/dm.h"
#include <cstdio>
#include <cstring>

static constexpr size_t namebytes = 33;

static void *record(const char *owner, const char *name)
{
    for (void *p = dmfind0(owner, DM_CHAR); p; p = dmnamenext(p, DM_CHAR))
        if (!strncmp(static_cast<char *>(p), name, namebytes - 1))
            return p;
    return nullptr;
}

const char *charfind(const char *owner, const char *name, uint64_t *length)
{
    auto p = static_cast<const char *>(record(owner, name));
    if (length)
        *length = p ? strlen(p + namebytes) : 0;
    return p ? p + namebytes : nullptr;
}

int32_t charsave(const char *owner, const char *name, const char *text)
{
    void *old = record(owner, name);
    size_t len = text ? strnlen(text, char_maxlen) : 0;
    if (len == 0) {
        dmrm(old);
        return 0;
    }
    auto p = static_cast<char *>(dmadd(owner, DM_CHAR, 0, namebytes + len + 1));
    if (!p)
        return RC_DMMEM;
    snprintf(p, namebytes, "%s", name);
    memcpy(p + namebytes, text, len);
    p[namebytes + len] = 0;
    dmrm(old);
    return 0;
}

int32_t charload(const char *owner, const char *name, char *out, int32_t max)
{
    uint64_t len;
    const char *text = charfind(owner, name, &len);
    if (max > 0)
        snprintf(out, size_t(max), "%s", text ? text : "");
    return int32_t(len);
}

const void *charnext(const void *at, char *owner, char *name, const char **text)
{
    void *p = dmnext(const_cast<void *>(at), owner, DM_CHAR, nullptr);
    if (!p)
        return nullptr;
    auto body = static_cast<const char *>(p);
    if (name)
        memcpy(name, body, namebytes);
    if (text)
        *text = body + namebytes;
    return p;
}

void charrm(const char *owner)
{
    if (!owner) {
        dmzap(DM_CHAR);
        return;
    }
    while (void *p = dmfind0(owner, DM_CHAR))
        dmrm(p);
}

int32_t charcopy(const char *owner, const char *toowner)
{
    for (void *p = dmfind0(owner, DM_CHAR), *next; p; p = next) {
        next = dmnamenext(p, DM_CHAR);
        auto body = static_cast<const char *>(p);
        int32_t rc = charsave(toowner, body, body + namebytes);
        if (rc)
            return rc;
    }
    return 0;
}

int32_t charrename(const char *owner, const char *newowner)
{
    if (!strcmp(owner, newowner))
        return 0;
    charrm(newowner);
    while (void *p = dmfind0(owner, DM_CHAR))
        dmrename(p, newowner);
    return 0;
}
