// The way from the command language into the matrix language.
//
//   mosa                    a block up to a line "end"; at the keyboard an error leaves one in it
//   mosa:                   a block that an error leaves with its code
//   mosa: STATEMENT         one statement, which may read on over the next lines
//   mosa SUBCOMMAND ...     the commands mosa_SUBCOMMAND, here and within a block
//
// Lines of a block are macro-expanded as they are read; everything else about them is the
// matrix language's.
#include "core/rc.h"
#include "core/state.h"
#include "interp/interp.h"
#include "interp/macros.h"
#include "interp/messages.h"
#include "mosa/compiler.h"
#include "mosa/vm.h"
#include "output/print.h"
#include <cstring>
#include <string>

int32_t mosa_clear(int32_t), mosa_describe(int32_t), mosa_drop(int32_t), mosa_memory(int32_t),
    mosa_mlib(int32_t), mosa_mosave(int32_t), mosa_rename(int32_t), mosa_which(int32_t);

namespace
{

constexpr int32_t rc_compile = 3000;

struct subcommand {
    const char *word;
    int32_t min;
    int32_t (*handler)(int32_t);
};
const subcommand subcommands[] = {
    {"clear", 5, mosa_clear},   {"describe", 1, mosa_describe}, {"drop", 4, mosa_drop},
    {"memory", 3, mosa_memory}, {"rename", 3, mosa_rename},     {"which", 5, mosa_which},
    {"mlib", 4, mosa_mlib},     {"mosave", 6, mosa_mosave},
};

bool at_keyboard()
{
    return !runprog && !dofilep;
}

// What one run of the compiler's text needs kept while another is under way inside it.
struct text_keep {
    std::string src = m_src;
    int32_t pos = m_srcpos, line = cc_lineno, state = mosa_state;
    bool may = m_mayreadcons;
    bool (*getline)() = m_getline;
    const char *prompt = readcons_prompt;
    ~text_keep()
    {
        m_setline(src.c_str());
        m_srcpos = pos;
        cc_lineno = line;
        mosa_state = state;
        m_mayreadcons = may;
        m_getline = getline;
        readcons_prompt = prompt;
    }
    text_keep() = default;
    text_keep(const text_keep &) = delete;
    text_keep &operator=(const text_keep &) = delete;
};

// The next line of a statement that is not complete.
bool next_line()
{
    const char *was = readcons_prompt;
    readcons_prompt = "> ";
    int32_t end = getreq_raw();
    readcons_prompt = was;
    if (end || stopflag || macexp())
        return false;
    cc_lineno++;
    m_setline(console);
    return true;
}

// Everything on a line: 0, 1 for a break, 3000, or the first run-time code.
int32_t run_text(const char *text)
{
    m_setline(text);
    while (!m_lineended()) {
        mosa_state = 2;
        if (cc_compile()) {
            if (!cc_failed)
                break;
            return stopflag ? RC_BREAK : rc_compile;
        }
        if (!cc_wasstmt)
            continue;
        m_newstatement();
        mosa_state = 3;
        int32_t rc = ixeq();
        if (rc)
            return rc;
    }
    return 0;
}

// A list that begins with the pattern * or *(), which no expression goes on with.
bool all_names(const char *p)
{
    p += strspn(p, " ");
    if (*p++ != '*')
        return false;
    p += strspn(p, " ");
    return !*p || (*p == '(' && p[1 + strspn(p + 1, " ")] == ')');
}

// The row of a word "mosa_drop", or of "mosa" and the word behind it, with tokinfo behind the
// words; null, with tokinfo as it was, when the line is the matrix language's own.
const subcommand *find_subcommand(bool within)
{
    gettok_state at;
    ti_stattok(tokinfo, &at);
    const char *word = ti_gettok(tokinfo, prsestd);
    bool joined = within && !strncmp(word, "mosa_", 5);
    if (joined)
        word += 5;
    else if (within && (cmdcmp(word, "mosa", 4) || !strcmp(word, "m")))
        word = ti_gettok(tokinfo, prsestd);
    else if (within)
        word = "";
    for (const subcommand &s : subcommands) {
        if (!cmdcmp(word, s.word, s.min))
            continue;
        char next = ti_peektok_chr(tokinfo);
        if (next && strchr("=([.:-+*/^", next) && !all_names(ti_wheretok(tokinfo)))
            break;
        return &s;
    }
    ti_resettok(tokinfo, &at);
    return nullptr;
}

bool is_end(const char *line)
{
    line += strspn(line, " \t");
    return !strncmp(line, "end", 3) && !line[3 + strspn(line + 3, " \t")];
}

// `set` within a block means the settings of the system.
int32_t run_block_line()
{
    int32_t rc = macexp();
    if (rc)
        return rc;
    ti_settok(tokinfo, console);
    if (const subcommand *s = find_subcommand(true)) {
        rc = s->handler(0);
        c_outlev = 0;
        return rc;
    }
    std::string line = console; // reading on overwrites the console
    return run_text(line.c_str());
}

int32_t run_block(bool colon)
{
    bool keyboard = at_keyboard();
    if (!runprog)
        readcons_prompt = ": ";
    cc_lineno = 0;
    for (;;) {
        if (getreq_raw())
            return stopflag ? RC_BREAK : error(612);
        if (is_end(console))
            return 0;
        cc_lineno++;
        c_outlev = 0;
        int32_t rc = stopflag ? RC_BREAK : run_block_line();
        if (!rc)
            continue;
        if (!keyboard || colon)
            return rc;
        globalrc = rc;
        rc_shown = false;
        show_rc_line();
        globalrc = 0;
        rc_shown = false;
        stopflag = 0;
        altstopflag = 0;
    }
}

// A dead block is read to its end, so that what it holds is not taken for commands.
int32_t skip_block()
{
    while (!is_end(console))
        if (getreq_raw())
            return stopflag ? RC_BREAK : error(612);
    return 0;
}

} // namespace

int32_t mosacmd(int32_t)
{
    if (const subcommand *s = procflg ? find_subcommand(false) : nullptr)
        return s->handler(0);
    const char *rest = ti_wheretok(tokinfo);
    rest += strspn(rest, " ");
    bool colon = *rest == ':';
    rest += colon;
    rest += strspn(rest, " ");
    if (!procflg)
        return *rest ? dead_line() : skip_block();
    text_keep keep;
    m_getline = next_line;
    m_mayreadcons = true;
    if (!*rest)
        return run_block(colon);
    std::string line = rest;
    cc_lineno = 1;
    return run_text(line.c_str());
}
