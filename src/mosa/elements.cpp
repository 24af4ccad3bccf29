// String and pointer elements.
#include "core/mem.h"
#include "mosa/values.h"
#include "mosa/vm.h"
#include <algorithm>

void selinit(matobj *m)
{
    memset(m->data, 0, size_t(mo_count(m)) * sizeof(char *));
}

void selfree(matobj *m)
{
    if (m->eltype != MO_STRING || !m->data)
        return;
    char **s = mo_sel(m);
    for (int64_t i = 0, n = mo_count(m); i < n; i++) {
        safefree(s[i]);
        s[i] = nullptr;
    }
}

void selfreeblock(char *block)
{
    safefree(block);
}

int32_t selrecreate(matobj *m, int64_t i, int64_t length)
{
    char *&slot = mo_sel(m)[i];
    if (length == 0) {
        safefree(slot);
        slot = nullptr;
        return 0;
    }
    if (slot && sel_len(slot) == length)
        return 0;
    char *block =
        length < 2147483647 ? static_cast<char *>(safecalloc(size_t(length) + 5)) : nullptr;
    if (!block) {
        m_custom_xeqerr(3900, "unable to allocate string");
        return 1;
    }
    auto n = int32_t(length + 1);
    memcpy(block, &n, sizeof n);
    safefree(slot);
    slot = block;
    return 0;
}

int32_t selreplace(matobj *m, int64_t i, const char *bytes, int64_t length)
{
    if (!bytes)
        length = 0;
    char *old = mo_sel(m)[i];
    if (old && length && bytes >= old && bytes <= old + 4 + sel_len(old)) {
        // Part of the element itself: kept aside until the new block is filled.
        mo_sel(m)[i] = nullptr;
        if (selrecreate(m, i, length)) {
            mo_sel(m)[i] = old;
            return 1;
        }
        memcpy(mo_sel(m)[i] + 4, bytes, size_t(length));
        safefree(old);
        return 0;
    }
    if (selrecreate(m, i, length))
        return 1;
    if (length) {
        char *block = mo_sel(m)[i];
        memcpy(block + 4, bytes, size_t(length));
        block[4 + length] = '\0';
    }
    return 0;
}

char *selexch(matobj *m, int64_t i)
{
    char *block = mo_sel(m)[i];
    mo_sel(m)[i] = nullptr;
    return block;
}

int32_t exstrcmp(const char *a, const char *b)
{
    int32_t na = sel_len(a), nb = sel_len(b);
    int c = memcmp(sel_text(a), sel_text(b), size_t(std::min(na, nb)));
    return c ? c : na < nb ? -1 : na > nb;
}

void pelinit(matobj *m)
{
    selinit(m);
}

void pelreplace(matobj *m, int64_t i, matobj *target)
{
    matobj *old = mo_pel(m)[i];
    if (target)
        target->links++;
    mo_pel(m)[i] = target;
    if (old)
        mo_unlink(old);
}
