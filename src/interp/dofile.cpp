// interp/dofile.cpp - where lines come from: the do-file reader, the keyboard, and the
// # commands that act while a line is read.
#include "core/files.h"
#include "core/mem.h"
#include "core/progress.h"
#include "core/rc.h"
#include "interp/interp.h"
#include "interp/keyboard.h"
#include "interp/messages.h"
#include "output/log.h"
#include "output/oml.h"
#include "output/print.h"
#include <cstdio>
#include <cstring>
#include <string>

struct dofile {
    int32_t fd;
    int32_t pos, n;   // within buf
    int32_t pushed;   // a character to be read again, 0 none
    char buf[512];
};

dofile *dofilep;
bool doeof;
int32_t delimit;
int32_t dofile_rc;
const char *readcons_prompt = prompt_std;

// ---- characters

static int32_t fill(dofile *f)
{
    f->pos = 0;
    f->n = ovata_read(f->fd, f->buf, sizeof f->buf);
    return f->n;
}

dofile *dofopen(const char *name, int32_t *rc)
{
    int32_t fd = ov_open(name, OV_READ);
    if (fd < 0) {
        *rc = -fd;
        return nullptr;
    }
    dofile *f = static_cast<dofile *>(safemalloc(sizeof *f));
    if (!f) {
        ov_close(fd);
        *rc = RC_NOMEM;
        return nullptr;
    }
    f->fd = fd;
    f->pushed = 0;
    fill(f);
    *rc = 0;
    return f;
}

void dofclos(dofile *f)
{
    if (!f)
        return;
    ov_close(f->fd);
    safefree(f);
}

static inline int32_t rawchar(dofile *f, int32_t *status)
{
    if (f->pos >= f->n) {
        int32_t n = f->n < 0 ? f->n : fill(f);
        if (n <= 0) {
            *status = n < 0 ? -2 : -1;
            return 0;
        }
    }
    return uint8_t(f->buf[f->pos++]);
}

int32_t getdofcm(dofile *f, int32_t *status)
{
    *status = 0;
    int32_t c = f->pushed;
    if (c)
        f->pushed = 0;
    else
        c = rawchar(f, status);
    if (c != '\r' || *status)
        return c;
    int32_t next = rawchar(f, status);
    if (!*status && next != '\n')
        f->pushed = next;
    *status = 0;
    return '\n';
}

// ---- commands

namespace {

enum : int32_t { C_NONE = -10, C_EOF = -1, C_ERR = -2 };

// One command on its way from the file to console.
struct reader {
    dofile *f;
    int32_t max;
    int32_t n = 0;            // characters in console
    int32_t held = C_NONE;    // a character looked at and not yet taken
    int32_t prev = '\n';      // the one taken before, on this line of the file
    int32_t col = 0;          // display column on this line of the file
    int32_t comment = 0;      // depth of /* */
    bool linecomment = false, joins = false;  // in a // comment; it continues the command
    bool simple = false;      // in "..."
    int32_t compound = 0;     // depth of `"..."'
    bool hash = false;        // a # command: its line end ends it
    bool toolong = false;
    bool echoing, echoed = false;
    char echo[500];
    int32_t necho = 0;

    reader(dofile *file, int32_t len) : f(file), max(len), echoing(out_shown(2)) {}

    int32_t peek()
    {
        if (held != C_NONE)
            return held;
        int32_t status, c;
        do {
            c = getdofcm(f, &status);
            if (status)
                return held = status;
        } while ((c < 32 && c != '\t' && c != '\n') || c == 255);
        return held = c;
    }
    void flush()
    {
        if (necho)
            spoutfordo(echo, necho);
        necho = 0;
    }
    void show(char c)
    {
        if (!echoing)
            return;
        echoed = true;
        echo[necho++] = c;
        if (necho == int32_t(sizeof echo))
            flush();
    }
    // Takes the character peek showed; it is echoed and moves the column.
    int32_t take()
    {
        int32_t c = peek();
        held = C_NONE;
        prev = c;
        if (c == '\n' || c < 0)
            return c;
        if (c != '\t') {
            show(char(c));
            col += (c & 0xC0) != 0x80;
        }
        return c;
    }
    void put(char c)
    {
        if (n + 1 >= max)
            toolong = true;
        else
            console[n++] = c;
    }
    // A tab is as many blanks as reach the next stop; within a comment they are only shown.
    void tab(bool keep)
    {
        do {
            show(' ');
            if (keep)
                put(' ');
            col++;
        } while (col % 8);
        prev = ' ';
    }
    void newline_shown(bool more)
    {
        show('\n');
        flush();
        if (more) {
            show('>');
            show(' ');
        }
        col = 0;
        prev = '\n';
    }
    bool quoted() const { return simple || compound; }
    bool line_end();
    void comment_char();
    bool opens_comment(int32_t before);
    bool plain_char();
    int32_t run();
};

// A line end was taken. True when it ends the command.
bool reader::line_end()
{
    bool join = linecomment && joins;
    linecomment = joins = false;
    if (join || comment) {
        newline_shown(true);
        return false;
    }
    if (!delimit || hash) {
        newline_shown(false);
        return true;
    }
    if (n || echoed) {
        newline_shown(true);
        put(' ');
    }
    return false;
}

void reader::comment_char()
{
    int32_t c = take();
    if (c == '\t')
        tab(false);
    else if (c == '/' && peek() == '*')
        comment += take() == '*';
    else if (c == '*' && peek() == '/')
        comment -= take() == '/';
}

// A slash was taken. True when it began a comment.
bool reader::opens_comment(int32_t before)
{
    if (peek() == '*') {
        take();
        comment = 1;
        return true;
    }
    if (peek() != '/' || (before != ' ' && before != '\n'))
        return false;
    take();
    linecomment = true;
    if (peek() == '/') {
        take();
        joins = !delimit;
    }
    return true;
}

// A character outside comments. True when it ends the command.
bool reader::plain_char()
{
    int32_t before = prev, c = take();
    if (c == '\t') {
        tab(true);
        return false;
    }
    if (!quoted()) {
        if (c == ';' && delimit && !hash) {
            newline_shown(false);
            return true;
        }
        if (c == '/' && opens_comment(before))
            return false;
        if (c == '#' && !hash) {
            int32_t i = 0;
            while (i < n && console[i] == ' ')
                i++;
            hash = i == n;
        }
    }
    put(char(c));
    if (c == '"') {
        if (compound && peek() == '\'') {
            put(char(take()));
            compound--;
        } else if (!compound) {
            simple = !simple;
        }
    } else if (c == '`' && !simple && peek() == '"') {
        put(char(take()));
        compound++;
    }
    return false;
}

// 0 a command is in console; 1 the file is at its end.
int32_t reader::run()
{
    for (;;) {
        int32_t c = peek();
        if (c == C_EOF || c == C_ERR) {
            if (c == C_ERR)
                dofile_rc = RC_IOREAD;
            break;
        }
        if (c == '\n') {
            take();
            if (line_end())
                break;
        } else if (comment) {
            comment_char();
        } else if (linecomment) {
            if (take() == '\t')
                tab(false);
        } else if (plain_char()) {
            break;
        }
        if (toolong)
            break;
    }
    console[n] = 0;
    bool atend = held == C_EOF || held == C_ERR;
    if ((atend || toolong) && col)
        newline_shown(false);
    flush();
    if (toolong) {
        dofile_rc = RC_LONGCMD;
        return errout(1, "input too long\n");
    }
    if (!atend)
        return 0;
    if (held == C_ERR)
        return errout(1, "unexpected end of do-file\n");
    return strspn(console, " ") == size_t(n);
}

// ---- the lines typed lately

constexpr int32_t nreview = 100;
std::string review[nreview];
int32_t reviewed;   // ever

void rollin(const char *line)
{
    if (*line)
        review[reviewed++ % nreview] = line;
}

// #review [n [m]]: m lines, beginning n lines back.
void show_review(toktype *ti)
{
    int32_t n = 5, m, given;
    const char *token = ti_gettok(ti, prsenum);
    if (*token && sscanf(token, "%d", &given) == 1)
        n = given;
    n = n < 1 ? 1 : n > nreview ? nreview : n;
    m = n;
    token = ti_gettok(ti, prsenum);
    if (*token && sscanf(token, "%d", &given) == 1)
        m = given;
    for (int32_t back = n; back > n - m && back > 0; back--)
        if (back <= reviewed)
            spout21f("%3d  %s\n", back, review[(reviewed - back) % nreview].c_str());
}

// Acts on a # command in console. False when the line is to be handed on.
bool hash_command(bool fromfile, bool allowunknown)
{
    const char *p = console;
    while (*p == ' ')
        p++;
    if (*p != '#')
        return false;
    toktype ti;
    ti_settok(&ti, console);
    ti_gettok(&ti, prsestd);
    std::string word = ti_gettok(&ti, prsestd);
    if (fromfile && cmdcmp(word.c_str(), "delimit", 1)) {
        delimit = strcmp(ti_gettok(&ti, prsestd), "cr") ? 1 : 0;
        spout21(delimit ? "delimiter now ;\n" : "delimiter now cr\n");
        return true;
    }
    if (cmdcmp(word.c_str(), "review", 1)) {
        show_review(&ti);
        return true;
    }
    if (allowunknown)
        return false;
    if (errout(0, "Unknown #command\n"))
        stopflag = stopflag_val;
    return true;
}

int32_t read_file(int32_t len)
{
    spout21(readcons_prompt);
    reader r(dofilep, len);
    if (!r.run())
        return 0;
    doeof = true;
    return 1;
}

// Does a typed line go on behind ///? It is cut there. What stands behind // alone stays, for
// only files have comments.
bool cut_continuation(char *line)
{
    bool simple = false;
    int32_t compound = 0;
    for (char *p = line; *p; p++) {
        bool quoted = simple || compound;
        if (!simple && p[0] == '`' && p[1] == '"') {
            compound++;
            p++;
        } else if (compound && p[0] == '"' && p[1] == '\'') {
            compound--;
            p++;
        } else if (*p == '"' && !compound) {
            simple = !simple;
        } else if (!quoted && !strncmp(p, "//", 2) && (p == line || p[-1] == ' ')) {
            if (p[2] == '/')
                *p = 0;
            return !*p;
        }
    }
    return false;
}

// One line of the keyboard, or of a pipe in its place, behind its prompt.
kb_answer one_line(const char *prompt, bool fresh, char *buffer, int32_t len)
{
    spout21(prompt);
    omlflush(oml_cur);
    kb_answer got = kb_editing ? kb_terminal.line(out_shown(4) ? prompt : "", fresh, buffer, len)
                               : kb_line(buffer, len);
    if (got == KB_EOF || leavesignal) {
        newline();
        sexit(leavesignal ? 128 + int32_t(leavesignal) : 0);
    }
    omltyped(oml_cur, buffer, !nokbrd);
    return got;
}

// A command as typed, which may take several lines. After a break at the prompt there is a new
// prompt; where more lines of a command were wanted the break stands, and the command gives up.
void read_keyboard(int32_t len)
{
    bool fresh = !strcmp(readcons_prompt, ": ") ||  // a statement of the matrix language
                 (!realbusy && readcons_prompt == prompt_std);
    progress_level(-1);
    for (;;) {
        kb_answer got = one_line(readcons_prompt, fresh, console, len);
        while (got == KB_LINE && cut_continuation(console)) {
            auto n = int32_t(strlen(console));
            got = one_line("> ", false, console + n, len - n);
        }
        if (got == KB_BREAK) {
            *console = 0;
            if (fresh)
                stopflag = 0;
            newline();
        }
        if (got != KB_TOOLONG)
            return;
        *console = 0;
        globalrc = errout(RC_LONGCMD, "input too long\n");
        show_rc_line();
    }
}

}  // namespace

int32_t readcons(int32_t len, bool fromdo, bool allowunknownhash, bool newlinefirst)
{
    bool fromfile = fromdo && dofilep;
    outlev_keep level(fromfile ? 2 : 4);
    if (newlinefirst && *console)
        newline();
    do {
        c_outlev = fromfile ? 2 : 4;
        if (!fromfile)
            read_keyboard(len);
        else if (read_file(len))
            return 1;
        size_t n = strlen(console);
        while (n && console[n - 1] == ' ')
            n--;
        console[n] = 0;
    } while (hash_command(fromfile, allowunknownhash));
    if (!fromfile) {
        rollin(console);
        if (cmdlog_on)
            cmdlog_line(console);
    }
    return 0;
}
