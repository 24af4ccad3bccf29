#include "core/text.h"
#include "interp/messages.h"
#include "core/rc.h"
#include "core/state.h"
#include "output/oml.h"
#include "output/print.h"
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <iterator>

#define MSG(code, level, reported, words) {code, words, level, reported},
const msgrow msgtable[] = {
#include "interp/messages.def"
};
#undef MSG
const int32_t nmsgtable = int32_t(std::size(msgtable));

const msgrow *msg_row(int32_t code)
{
    int32_t lo = 0, hi = nmsgtable - 1;
    while (lo <= hi) {
        int32_t mid = (lo + hi) / 2;
        if (msgtable[mid].code == code)
            return &msgtable[mid];
        if (msgtable[mid].code < code)
            lo = mid + 1;
        else
            hi = mid - 1;
    }
    return nullptr;
}

// ---- texts by number
static constexpr int32_t nmsgblock = 73;
// Where codes that share a run of numbers stand in the block.
static const struct {
    int32_t first, last, shift;
} msgruns[] = {{140, 145, 83}, {611, 614, 561}};

static int32_t blockindex(int32_t code)
{
    for (const auto &r : msgruns)
        if (code >= r.first && code <= r.last)
            return code - r.shift;
    return -1;
}

// The block: 73 texts behind each other, each with its NUL, many of them empty.
static const char *msgblock()
{
    static char block[1024];
    static bool made;
    if (made)
        return block;
    char *at = block;
    for (int32_t i = 0; i < nmsgblock; i++) {
        const char *text = "";
        for (const msgrow &r : msgtable)
            if (blockindex(r.code) == i)
                text = r.text;
        at = stpcpy(at, text) + 1;
    }
    made = true;
    return block;
}

char *loadmsg(char *buffer, int32_t index)
{
    *buffer = 0;
    if (index < 0 || index >= nmsgblock)
        return buffer;
    const char *p = msgblock();
    for (; index; index--)
        p += strlen(p) + 1;
    *stpncpy(buffer, p, 255) = 0;
    return buffer;
}

static const char *const starttexts[] = {
    "", "\nNotes:\n", "You are running Small Ovata", "Command line editing %sabled",
    "Ovata running in batch mode", "\r\nInitialization failure.\r\n",
    "\r\nAllocation failure.\r\n",
};
char *loadstr(char *buffer, int32_t index)
{
    bool good = index >= 0 && size_t(index) < std::size(starttexts);
    snprintf(buffer, 256, "%s", good ? starttexts[index] : "");
    return buffer;
}

// ---- printing
// Our own words: those that hold tags go out as mark-up.
static void words(uint8_t level, const char *text)
{
    outlev_keep keep(level);
    if (!out_shown(level))
        return;
    if (strchr(text, '{')) {
        spout_setcoloroflev();
        spoutsml(text);
    } else
        spout21(text);
    newline();
}

int32_t error(int32_t rc)
{
    if (rc == 0 || rc == 1)
        return rc;
    if (rc > 3000 && rc < 4000) {
        words(3, "Mosa run-time error");
        return rc;
    }
    const msgrow *r = msg_row(rc);
    if (!r)
        return rc;
    // A group without enough observations is a remark on that group, not a failure.
    bool remark = (rc == RC_NOOBS || rc == RC_FEWOBS) && byvar;
    char text[256];
    int32_t index = blockindex(rc);
    words(remark ? 1 : r->level, index >= 0 ? loadmsg(text, index) : r->text);
    return r->reported;
}

int32_t extended_error(int32_t rc)
{
    if (rc == 0)
        return 0;
    if ((rc == RC_NOOBS || rc == RC_FEWOBS) && byvar) {
        exitflg = true;
        return 0;
    }
    switch (rc) {
    case 100: case 101: case 110: case 111: case 132: case 133:
        words(3, "invalid syntax");
        return rc;
    case 106:
        words(3, "type mismatch");
        return rc;
    case 170:
        words(3, "unable to chdir");
        return rc;
    case 301:
        return regrnotfound();
    case 601: case 602: case 603: case 608: case 609: case 610: case 688: case 692: case 693:
    case 699:
        (void)fierr(rc, "");
        return rc;
    }
    // A code that passes between functions is known to users by another number.
    int32_t reported = error(rc);
    return rc > 5000 ? reported : rc;
}

int32_t errout(int32_t rc, const char *fmt, ...)
{
    char text[2048];
    if (!out_shown(3))
        return stopflag ? 1 : rc;
    va_list ap;
    va_start(ap, fmt);
    vsnprintf(text, sizeof text, fmt, ap);
    va_end(ap);
    return spout21at(3, text) ? 1 : rc;
}

int32_t error2(int32_t kind, const char *text)
{
    switch (kind) {
    case 1: return errout(RC_SYNTAX, "%s invalid name\n", text);
    case 2: return errout(RC_SYNTAX, "nothing found where name expected\n");
    case 3: return errout(RC_EXISTS, "%s already defined\n", text);
    case 4: return errout(RC_NOTFOUND, "%s ambiguous abbreviation\n", text);
    case 5: return errout(RC_NOTFOUND, "%s not found\n", text);
    default: return errout(182, "%s invalid name\n", text);
    }
}

int32_t invalid(const char *text) { return errout(RC_SYNTAX, "invalid %s\n", text); }
int32_t required(const char *text) { return errout(RC_REQUIRED, "%s required\n", text); }
int32_t notalow(const char *text) { return errout(RC_NOTALLOWED, "%s not allowed\n", text); }
int32_t notfound(const char *text) { return errout(RC_NOTFOUND, "%s not found\n", text); }
int32_t unmatchedquote() { return errout(RC_PARENS, "unmatched quote\n"); }
int32_t unbalanced_quotes() { return errout(RC_PARENS, "too few quotes\n"); }
int32_t noobsnoerr()
{
    words(1, "no observations");
    return 0;
}
int32_t braceerror() { return errout(RC_SYNTAX, "invalid use of braces\n"); }
int32_t nomatchbrace() { return errout(RC_SYNTAX, "matching close brace not found\n"); }
int32_t macnotfound(const char *name) { return notfound(name); }
int32_t varnotfound(const char *name) { return notfound(name); }
int32_t matnotfound(const char *name) { return notfound(name); }
int32_t labnotfound(const char *name) { return notfound(name); }
int32_t regrnotfound() { return errout(301, "last estimates not found\n"); }
int32_t gnrnotfound(const char *name) { return notfound(name); }
int32_t eqnotfound(const char *name) { return errout(303, "equation [%s] not found\n", name); }
int32_t experr() { return error(RC_SYNTAX); }
int32_t errornumlist(int32_t rc) { return error(rc); }

// ---- file failures
static const struct {
    int32_t code;
    const char *words;
} fierrs[] = {
    {601, "not found"},
    {602, "already exists"},
    {603, "could not be opened"},
    {608, "is read-only; cannot be modified or erased"},
    {609, "xp format"},
    {610, "not Ovata format"},
    {661, "not found"},
    {688, "is corrupt"},
    {692, "I/O error on read"},
    {693, "I/O error on write"},
    {697, "saved"},
    {698, "not found"},
    {699, "insufficient disk space"},
};

int32_t fierr(int32_t code, const char *name)
{
    char other[32];
    if (code < 0)
        code = -code;
    if (code == 0 || code == 1)
        return code;
    snprintf(other, sizeof other, "error %d", code);
    const char *what = other;
    for (const auto &f : fierrs)
        if (f.code == code)
            what = f.words;
    const char *blank = *name ? " " : "";
    if (code == 697 || code == 698) {
        spout21fat(1, code == 697 ? "file%s%s %s\n" : "(file%s%s %s)\n", blank, name, what);
        return 0;
    }
    return errout(code, "%sfile%s%s %s\n", code == 661 ? "host or " : "", blank, name, what);
}
