// interp/commands.cpp - the command table and dispatch.
#include "core/progress.h"
#include "core/rc.h"
#include "data/dsa.h"
#include "expr/parse.h"
#include "interp/dm.h"
#include "interp/interp.h"
#include "interp/macros.h"
#include "interp/messages.h"
#include "interp/programs.h"
#include "output/print.h"
#include <cctype>
#include <cstring>

// The handlers, by the names in the rows. They live on floors above and below; nothing but
// the name is known here.
#define CMD(word, min, handler, arg, below, from, flags) int32_t handler(int32_t);
#include "interp/commands.def"
#undef CMD

static constexpr int16_t V_MAX = 32767;

const cmdrow cmdtable[] = {
#define CMD(word, min, handler, arg, below, from, flags)                                       \
    {word, min, handler, arg, below, from, flags},
#include "interp/commands.def"
#undef CMD
};
const int32_t ncmdtable = int32_t(sizeof cmdtable / sizeof cmdtable[0]);

namespace {

// First and last row of each first character. The rows of a character stand together; the
// one row that begins with H stands at the end of the chain of _, which only words that
// begin with _ enter.
struct chain {
    int16_t first = 0, behind = 0;
};
struct chains {
    chain of[256];
    chains()
    {
        for (int16_t i = 0; i < ncmdtable; i++) {
            chain &c = of[uint8_t(cmdtable[i].word[0])];
            if (cmdtable[i].word[0] == 'H') {
                of[uint8_t('_')].behind = int16_t(i + 1);
                continue;
            }
            if (c.behind == 0)
                c.first = i;
            c.behind = int16_t(i + 1);
        }
    }
};

inline bool row_fits(const cmdrow &row, const char *word, size_t n, uint8_t min)
{
    return n >= min && vernum < row.below && vernum >= row.from && !strncmp(word, row.word, n);
}

}  // namespace

const cmdrow *cmd_row(const char *word, uint8_t need)
{
    static const chains all;
    const chain &c = all.of[uint8_t(*word)];
    size_t n = strlen(word);
    if (!n)
        return nullptr;
    for (int16_t i = c.first; i < c.behind; i++) {
        const cmdrow &row = cmdtable[i];
        if ((row.flags & need) != need || row.word[0] != *word)
            continue;
        uint8_t min = row.min;
        // While a block is skipped, q alone is quietly (nothing else there begins with q).
        if ((need & C_DEAD) && *word == 'q' && vernum >= 800)
            min = 1;
        if (row_fits(row, word, n, min))
            return &row;
    }
    return nullptr;
}

const char *findbuiltin(const char *word)
{
    const cmdrow *row = cmd_row(word, 0);
    return row ? row->word : nullptr;
}

// The first row that fits decides: a word is not byable because of a later row.
const char *findbyablebuiltin(const char *word)
{
    const cmdrow *row = cmd_row(word, 0);
    return row && (row->flags & C_BY) ? row->word : nullptr;
}

int32_t cmdcmp(const char *word, const char *full, int32_t minlen)
{
    if (*word != *full)
        return 0;
    size_t n = strlen(word);
    return n <= strlen(full) && int64_t(n) >= minlen && !memcmp(word, full, n);
}

int32_t cmdcmp_lc(const char *word, const char *full, int32_t minlen)
{
    int32_t n = 0;
    for (; word[n]; n++)
        if (!full[n] || tolower(uint8_t(word[n])) != tolower(uint8_t(full[n])))
            return 0;
    return n >= minlen;
}

int32_t cmdhash(const char *text)
{
    uint32_t h = 0;
    for (; *text; text++)
        h = h * 31 + uint8_t(*text);
    return int32_t(h % 1997333137u);
}

int32_t byability(const char *word)
{
    const pgmrec *p = static_cast<const pgmrec *>(pgmfind(word, sys_pgmclass, 1));
    return p ? p->byable : 9;
}

void cmdinit() { pi_allow_reset(parinfo); }

void cmdinit_plus_byvar()
{
    cmdinit();
    byvar = 0;
    lastby = true;
}

int32_t notbuilt(int32_t)
{
    return procflg ? errout(RC_SYNTAX, "%s", notbuilt_words) : dead_line();
}

int32_t dead_line()
{
    char *p = ti_wheretok(tokinfo);
    size_t n = strlen(p);
    while (n && p[n - 1] == ' ')
        n--;
    if (!n || p[n - 1] != '{')
        return 0;
    ti_settok(tokinfo, p + n - 1);
    ti_gettok(tokinfo, prsestd);
    return opbrace();
}

namespace {

int32_t take_cmd()
{
    const char *token = ti_gettok(tokinfo, prsestd);
    size_t n = strnlen(token, namelen);
    memcpy(cmd, token, n);
    cmd[n] = 0;
    return *cmd != 0;
}

// A word no row knows: a program in memory, or a file that defines one.
int32_t sel_program()
{
    void *rec = pgmfind(cmd, sys_pgmclass, 3);
    if (rec && dm_rec(rec)->type == DM_PLUGIN)
        return notbuilt(0);
    if (!rec) {
        int32_t rc = autoload("ado", true);
        if (rc)
            return rc;
    }
    return godo(GD_PROGRAM, false);
}

int32_t sel_dead()
{
    if (*cmd == '{')
        return opbrace();
    const cmdrow *row = cmd_row(cmd, C_DEAD);
    return row ? row->handler(row->arg) : 0;
}

}  // namespace

int32_t command(int32_t);

// Prefixes, blocks and levels all come back here: this is where nesting is bounded.
static constexpr int32_t maxselect = 1000;

static int32_t select_row()
{
    _i_Kvar = _Kvar;
    pi_allow_reset(parinfo);
    c_outlev = 0;
    sysclock = sysclock >= 2147483646 ? 1 : sysclock + 1;
    if (!*cmd || *cmd == '*')
        return 0;
    if (!procflg)
        return sel_dead();
    while (*cmd == '.') {
        if (cmd[1])
            return cls_statement_hook ? cls_statement_hook() : notbuilt(0);
        if (!take_cmd())
            return 0;
    }
    if (*cmd == '!')
        return command(0);
    if (*cmd == '{')
        return opbrace();
    const cmdrow *row = cmd_row(cmd, 0);
    return row ? row->handler(row->arg) : sel_program();
}

int32_t selreq()
{
    static int32_t depth;
    if (depth >= maxselect)
        return error(RC_LIMIT);
    depth++;
    int32_t rc = select_row();
    depth--;
    return rc;
}

int32_t run_next()
{
    take_cmd();
    int32_t rc = selreq();
    progress_end();
    if (_Kvar > _i_Kvar)
        dsa_truncate_var(sysdsa, uint32_t(_i_Kvar), true);
    return rc;
}
