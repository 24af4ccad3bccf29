#include "core/limits.h"
#include "core/rc.h"
#include <cstdlib>
#include <cstring>

const edition editions[] = {
    {"small", nullptr, "Small", 120, 120, 1201, 2097152, 100, 100},
    {"small7", "ovata-sm", "Small", 120, 120, 7001, 7340032, 100, 100},
    {"full", "ovata", "Full", 5000, 32767, 2147483647, 0, 400, 11000},
    {},
};
const edition *cur_edition = &editions[2];

static const edition *edition_named(const char *word)
{
    for (const edition *e = editions; e->word; e++)
        if (!strcmp(word, e->word))
            return e;
    return nullptr;
}

int32_t edition_choose(const char *argv0)
{
    const char *last = argv0 ? strrchr(argv0, '/') : nullptr;
    last = last ? last + 1 : argv0;
    cur_edition = edition_named("full");
    for (const edition *e = editions; e->word; e++)
        if (last && e->program && !strcmp(last, e->program))
            cur_edition = e;
    const char *word = getenv("OVATA_EDITION");
    if (!word || !*word)
        return 0;
    const edition *asked = edition_named(word);
    if (!asked)
        return RC_SYNTAX;
    cur_edition = asked;
    return 0;
}
