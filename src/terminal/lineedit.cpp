#include "terminal/lineedit.h"
#include "core/clock.h"
#include "core/settings.h"
#include "core/state.h"
#include "terminal/complete.h"
#include "terminal/history.h"
#include "terminal/screen.h"
#include <algorithm>
#include <cerrno>
#include <clocale>
#include <csignal>
#include <cstring>
#include <cwchar>
#include <histedit.h>
#include <locale.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

static EditLine *el;
static locale_t utf8;
static const wchar_t *prompt_text;
static bool editing, broken;
static std::wstring keys;   // to be taken before those of the keyboard
static std::string waiting; // text behind the line that was given out
static bool has_waiting;

static void drop_waiting()
{
    has_waiting = false;
    waiting.clear();
}

static constexpr size_t max_paste = 1 << 20;

// The library asks the locale how characters are written; the rest of the program must not see
// another one than "C".
struct in_utf8 {
    locale_t was = utf8 ? uselocale(utf8) : nullptr;
    ~in_utf8()
    {
        if (was)
            uselocale(was);
    }
};

static void put(const char *text)
{
    size_t n = strlen(text);
    if (n && write(1, text, n) < 0)
        return;
}

// ---- characters

static constexpr wchar_t stray = 0xdc00; // + the byte

std::wstring le_wide(const std::string &text)
{
    std::wstring out;
    const auto *p = reinterpret_cast<const unsigned char *>(text.data()), *end = p + text.size();
    while (p < end) {
        uint32_t c = *p;
        int more = c < 0x80                ? 0
                   : c >= 0xc2 && c < 0xe0 ? 1
                   : (c & 0xf0) == 0xe0    ? 2
                   : c >= 0xf0 && c < 0xf5 ? 3
                                           : -1;
        if (more > 0) {
            c &= 0x3fu >> more;
            int i = 1;
            while (i <= more && p + i < end && (p[i] & 0xc0) == 0x80)
                c = c << 6 | (p[i++] & 0x3fu);
            static const uint32_t least[] = {0, 0x80, 0x800, 0x10000};
            if (i <= more || c < least[more] || c > 0x10ffff || (c >= 0xd800 && c < 0xe000))
                more = -1;
        }
        out += more < 0 ? wchar_t(stray + *p) : wchar_t(c);
        p += more < 0 ? 1 : more + 1;
    }
    return out;
}

std::string le_bytes(const wchar_t *text, size_t n)
{
    std::string out;
    for (size_t i = 0; i < n; i++) {
        auto c = uint32_t(text[i]);
        if (c < 0x80)
            out += char(c);
        else if (c >= uint32_t(stray) && c <= uint32_t(stray) + 255)
            out += char(c - uint32_t(stray));
        else {
            int more = c < 0x800 ? 1 : c < 0x10000 ? 2 : 3;
            static const unsigned lead[] = {0, 0xc0, 0xe0, 0xf0};
            out += char(lead[more] | c >> (6 * more));
            for (int k = more - 1; k >= 0; k--)
                out += char(0x80 | ((c >> (6 * k)) & 0x3f));
        }
    }
    return out;
}

// ---- keys

static volatile sig_atomic_t suspended;
static void note_suspend(int)
{
    suspended = 1;
}

static void raw_mode(bool on)
{
    if (!on)
        put("\033[?2004l");
    el_wset(el, EL_PREP_TERM, int(on));
    if (on)
        put("\033[?2004h");
}

// The terminal has broken the lines anew: the edited one is drawn again from its first row.
static void new_size()
{
    winresized = 0;
    const LineInfoW *li = el_wline(el);
    auto before = int32_t(wcslen(prompt_text) + size_t(li->cursor - li->buffer));
    el_resize(el);
    winsize w;
    int32_t rows = !ioctl(1, TIOCGWINSZ, &w) && w.ws_col > 0 ? before / w.ws_col : 0;
    std::string out = "\r";
    for (; rows > 0; rows--)
        out += sc_up();
    put((out + sc_cleardown()).c_str());
    el_wset(el, EL_REFRESH);
}

// The job is stopped with the terminal as the user knows it, and picks its line up again.
static void stop_here()
{
    suspended = 0;
    raw_mode(false);
    // Not the stop that cannot be refused: with nobody to wake the job up the system ignores
    // this one.
    struct sigaction usual = {}, ours;
    usual.sa_handler = SIG_DFL;
    sigset_t one;
    sigemptyset(&one);
    sigaddset(&one, SIGTSTP);
    sigaction(SIGTSTP, &usual, &ours);
    raise(SIGTSTP);
    sigprocmask(SIG_UNBLOCK, &one, nullptr); // stops here
    sigprocmask(SIG_BLOCK, &one, nullptr);
    sigaction(SIGTSTP, &ours, nullptr);
    raw_mode(true);
    new_size();
}

// A byte; -1 when there will be none, -2 after a break.
static int32_t next_byte()
{
    sigset_t open_mask;
    sigprocmask(SIG_SETMASK, nullptr, &open_mask);
    for (int s : {SIGINT, SIGWINCH, SIGTSTP, SIGHUP, SIGTERM})
        sigdelset(&open_mask, s);
    for (;;) {
        if (leavesignal)
            return -1;
        if (stopflag && !broken)
            return -2;
        if (suspended)
            stop_here();
        if (winresized)
            new_size();
        pollfd p = {0, POLLIN, 0};
        int n = ppoll(&p, 1, nullptr, &open_mask);
        if (n < 0 && errno == EINTR)
            continue;
        if (n < 0)
            return -1;
        unsigned char c;
        ssize_t got = read(0, &c, 1);
        if (got == 1)
            return c;
        if (got == 0 || errno != EINTR)
            return -1;
    }
}

// The library's key, called by it. A break moves to the end of the line first, so that what
// comes next stands below it.
static int get_key(EditLine *, wchar_t *out)
{
    if (keys.empty()) {
        std::string one;
        int32_t c = next_byte(), more;
        if (c == -1)
            return -1;
        if (c == -2) {
            broken = true;
            keys = L"\005\003";
        } else {
            one += char(c);
            more = c < 0xc2 ? 0 : c < 0xe0 ? 1 : c < 0xf0 ? 2 : c < 0xf5 ? 3 : 0;
            for (; more > 0 && (c = next_byte()) >= 0; more--)
                one += char(c);
            keys = le_wide(one);
        }
    }
    *out = keys[0];
    keys.erase(0, 1);
    return 1;
}

// ---- functions bound to keys

static unsigned char on_break(EditLine *, int)
{
    broken = true;
    return CC_EOF;
}

// Text up to the end of a bracketed paste, cleaned as a typed line is: false after a break.
static bool read_paste(std::string *text)
{
    static const char mark[] = "\033[201~";
    int32_t c;
    while ((c = next_byte()) >= 0) {
        *text += char(c);
        if (text->size() >= sizeof mark - 1 &&
            !text->compare(text->size() - (sizeof mark - 1), std::string::npos, mark)) {
            text->resize(text->size() - (sizeof mark - 1));
            break;
        }
        if (text->size() > max_paste)
            text->pop_back();
    }
    std::string clean;
    size_t col = 0;
    for (size_t i = 0; i < text->size(); i++) {
        char ch = (*text)[i];
        if (ch == '\r') {
            if (i + 1 < text->size() && (*text)[i + 1] == '\n')
                continue;
            ch = '\n';
        }
        if (ch == '\n') {
            clean += ch;
            col = 0;
        } else if (ch == '\t') {
            do
                clean += ' ';
            while (++col % 8);
        } else if (uint8_t(ch) >= 32 && uint8_t(ch) != 127) {
            clean += ch;
            col++;
        }
    }
    *text = clean;
    return c >= 0;
}

// The first line goes in at the cursor and is entered, the rest waits for the next prompts;
// what stood behind the cursor goes behind the last.
static unsigned char on_paste(EditLine *, int)
{
    std::string text;
    if (has_waiting && waiting.find('\n') == waiting.npos) {
        text = waiting; // what a paste left without a line end
        has_waiting = false;
        waiting.clear();
    } else if (!read_paste(&text)) {
        return CC_REFRESH;
    }
    size_t nl = text.find('\n');
    if (nl == text.npos) {
        el_winsertstr(el, le_wide(text).c_str());
        return CC_REFRESH;
    }
    const LineInfoW *li = el_wline(el);
    auto tail = int(li->lastchar - li->cursor);
    waiting = text.substr(nl + 1) + le_bytes(li->cursor, size_t(tail));
    has_waiting = !waiting.empty();
    el_cursor(el, tail);
    el_wdeletestr(el, tail);
    el_winsertstr(el, le_wide(text.substr(0, nl)).c_str());
    keys = L"\n";
    return CC_REFRESH;
}

// Names in columns below the line, as wide as the screen lets them.
static void list_words(const std::vector<candidate> &words)
{
    size_t widest = 0, width = size_t(set_linesize);
    for (const candidate &w : words)
        widest = std::max(widest, w.text.size());
    size_t columns = std::max<size_t>(1, width / (widest + 2));
    size_t rows = (words.size() + columns - 1) / columns;
    if (rows > size_t(set_pagesize) && rows > 4) {
        put(("\r\nShow all " + std::to_string(words.size()) + "? (y/n) ").c_str());
        int32_t c = next_byte();
        if (c != 'y' && c != 'Y' && c != ' ') {
            put("\r\n");
            return;
        }
    }
    std::string out = "\r\n";
    for (size_t r = 0; r < rows; r++) {
        for (size_t i = r; i < words.size(); i += rows) {
            out += words[i].text;
            if (i + rows < words.size())
                out.append(widest + 2 - words[i].text.size(), ' ');
        }
        out += "\r\n";
    }
    put(out.c_str());
}

static size_t common_prefix(const std::vector<candidate> &words)
{
    const std::string &a = words[0].text;
    size_t n = a.size();
    for (const candidate &w : words) {
        size_t k = 0;
        while (k < n && k < w.text.size() && a[k] == w.text[k])
            k++;
        n = k;
    }
    while (n && n < a.size() && (uint8_t(a[n]) & 0xc0) == 0x80)
        n--;
    return n;
}

static unsigned char on_complete(EditLine *, int)
{
    const LineInfoW *li = el_wline(el);
    std::string before = le_bytes(li->buffer, size_t(li->cursor - li->buffer));
    size_t nl = before.rfind('\n');
    std::string line = nl == before.npos ? before : before.substr(nl + 1);
    if (line.find_first_not_of(' ') == line.npos) { // indentation
        el_winsertstr(el, std::wstring(8 - line.size() % 8, L' ').c_str());
        return CC_REFRESH;
    }
    std::vector<candidate> words;
    size_t from = complete(line, &words);
    if (words.empty())
        return CC_REFRESH_BEEP;
    size_t n = common_prefix(words);
    std::string typed = line.substr(from), now = words[0].text.substr(0, n);
    if (words.size() == 1 && words[0].after)
        now += words[0].after;
    if (now.size() > typed.size() || words.size() == 1) {
        el_wdeletestr(el, int(le_wide(typed).size()));
        el_winsertstr(el, le_wide(now).c_str());
        return CC_REFRESH;
    }
    list_words(words);
    return CC_REDISPLAY;
}

// ---- history, as the library asks for it

static int history_of(void *, HistEventW *event, int op, ...)
{
    static size_t at;
    static std::wstring text;
    switch (op) {
    case H_FIRST: at = 0; break;
    case H_NEXT: at++; break;
    case H_PREV:
        if (!at)
            return -1;
        at--;
        break;
    case H_CURR: break;
    default: return -1;
    }
    const std::string *entry = hist_back(at);
    if (!entry) {
        if (op == H_NEXT)
            at--;
        return -1;
    }
    text = le_wide(*entry);
    event->num = int(at);
    event->str = text.c_str();
    return 0;
}

// ---- opening

static const wchar_t *prompt(EditLine *)
{
    return prompt_text;
}

static void bind_keys()
{
    static const struct {
        const wchar_t *key, *fn;
    } rows[] = {
        {L"^I", L"ov-complete"},
        {L"^C", L"ov-break"},
        {L"\033[200~", L"ov-paste"},
        {L"^R", L"em-inc-search-prev"},
        {L"^S", L"em-inc-search-next"},
        {L"^W", L"ed-delete-prev-word"},
        {L"^L", L"ed-clear-screen"},
        {L"\033[A", L"ed-prev-history"},
        {L"\033OA", L"ed-prev-history"},
        {L"\033[B", L"ed-next-history"},
        {L"\033OB", L"ed-next-history"},
        {L"\033[C", L"ed-next-char"},
        {L"\033OC", L"ed-next-char"},
        {L"\033[D", L"ed-prev-char"},
        {L"\033OD", L"ed-prev-char"},
        {L"\033[H", L"ed-move-to-beg"},
        {L"\033OH", L"ed-move-to-beg"},
        {L"\033[1~", L"ed-move-to-beg"},
        {L"\033[7~", L"ed-move-to-beg"},
        {L"\033[F", L"ed-move-to-end"},
        {L"\033OF", L"ed-move-to-end"},
        {L"\033[4~", L"ed-move-to-end"},
        {L"\033[8~", L"ed-move-to-end"},
        {L"\033[3~", L"ed-delete-next-char"},
        {L"\033[5~", L"ed-search-prev-history"},
        {L"\033[6~", L"ed-search-next-history"},
        {L"\033[1;5C", L"em-next-word"},
        {L"\033[1;3C", L"em-next-word"},
        {L"\033[5C", L"em-next-word"},
        {L"\033[1;5D", L"ed-prev-word"},
        {L"\033[1;3D", L"ed-prev-word"},
        {L"\033[5D", L"ed-prev-word"},
    };
    el_wset(el, EL_ADDFN, L"ov-complete", L"complete the word", on_complete);
    el_wset(el, EL_ADDFN, L"ov-break", L"drop the line", on_break);
    el_wset(el, EL_ADDFN, L"ov-paste", L"take a paste", on_paste);
    for (const auto &row : rows)
        el_wset(el, EL_BIND, row.key, row.fn, nullptr);
}

bool le_open()
{
    if (!sc_open() || !isatty(0) || !isatty(1))
        return false;
    return editing = true;
}

// The library is set up at the first prompt, not at the start: a session that is given a
// command never needs it.
static bool set_up()
{
    static bool tried;
    if (tried)
        return el != nullptr;
    tried = true;
    utf8 = newlocale(LC_CTYPE_MASK, "", nullptr);
    if (utf8) {
        in_utf8 here;
        if (MB_CUR_MAX < 2) {
            uselocale(here.was);
            freelocale(utf8);
            utf8 = nullptr;
            here.was = nullptr;
        }
    }
    if (!utf8)
        utf8 = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
    in_utf8 here;
    el = el_init("ovata", stdin, stdout, stderr);
    if (!el)
        return false;
    el_wset(el, EL_SIGNAL, 0);
    el_wset(el, EL_EDITOR, L"emacs");
    el_wset(el, EL_PROMPT, prompt);
    el_wset(el, EL_GETCFN, get_key);
    el_wset(el, EL_HIST, history_of, &keys);
    bind_keys();
    el_source(el, nullptr);
    int on = 0;
    if (el_wget(el, EL_EDITMODE, &on) || !on) {
        el_end(el);
        el = nullptr;
        return false;
    }
    std::string dir = prefsdir();
    hist_open(dir.empty() ? dir : dir + "/history");
    return true;
}

// ---- a line

static kb_answer give(const std::string &line, bool fresh, char *buffer, int32_t len)
{
    *buffer = 0;
    if (line.size() >= size_t(len))
        return KB_TOOLONG;
    memcpy(buffer, line.c_str(), line.size() + 1);
    hist_line(buffer, fresh);
    return KB_LINE;
}

// The next line of a paste, shown behind its prompt.
static kb_answer from_waiting(bool fresh, char *buffer, int32_t len)
{
    size_t nl = waiting.find('\n');
    std::string line = waiting.substr(0, nl);
    waiting.erase(0, nl + 1);
    has_waiting = !waiting.empty();
    put((line + "\n").c_str());
    return give(line, fresh, buffer, len);
}

// Signals come through while a key is waited for and at no other time.
struct signal_gate {
    sigset_t was;
    struct sigaction suspend;
    signal_gate()
    {
        sigset_t shut;
        sigemptyset(&shut);
        for (int s : {SIGINT, SIGWINCH, SIGTSTP, SIGHUP, SIGTERM})
            sigaddset(&shut, s);
        struct sigaction act = {};
        act.sa_handler = note_suspend;
        sigprocmask(SIG_BLOCK, &shut, &was);
        sigaction(SIGTSTP, &act, &suspend);
        if (suspend.sa_handler == SIG_IGN)
            sigaction(SIGTSTP, &suspend, nullptr);
    }
    ~signal_gate()
    {
        sigaction(SIGTSTP, &suspend, nullptr);
        sigprocmask(SIG_SETMASK, &was, nullptr);
    }
};

static kb_answer edit(bool fresh, char *buffer, int32_t len)
{
    signal_gate gate;
    in_utf8 here;
    broken = false;
    keys.clear();
    if (has_waiting)
        keys = L"\033[200~";
    int n = 0;
    // What was typed ahead was echoed by the terminal: it is drawn again, as part of the line.
    el_wset(el, EL_PREP_TERM, 1);
    put(("\r" + std::string(sc_clearline()) + "\033[?2004h").c_str());
    if (winresized)
        el_resize(el);
    winresized = 0;
    const wchar_t *text = el_wgets(el, &n);
    put("\033[?2004l");
    if (broken) {
        stopflag = 1;
        drop_waiting();
        return KB_BREAK;
    }
    if (!text || n <= 0)
        return KB_EOF;
    std::string line = le_bytes(text, size_t(n));
    while (!line.empty() && (line.back() == '\n' || line.back() == '\r'))
        line.pop_back();
    std::erase_if(line, [](char c) { return (uint8_t(c) < 32 && c != '\n') || uint8_t(c) == 127; });
    size_t nl = line.find('\n');
    if (nl != line.npos) { // an entry of several lines came back
        waiting = line.substr(nl + 1) + "\n" + waiting;
        has_waiting = true;
        line.resize(nl);
    }
    return give(line, fresh, buffer, len);
}

kb_answer le_line(const char *prompt_bytes, bool fresh, char *buffer, int32_t len)
{
    *buffer = 0;
    if (!set_up()) {
        kb_editing = false;
        return kb_line(buffer, len);
    }
    if (fresh) {
        hist_close();
        stopflag = 0; // a break that came after its command was done
        if (globalrc == 1)
            drop_waiting(); // a break in a paste ends the paste
    }
    if (stopflag || leavesignal) {
        drop_waiting();
        return leavesignal ? KB_EOF : KB_BREAK;
    }
    if (has_waiting && waiting.find('\n') != waiting.npos)
        return from_waiting(fresh, buffer, len);
    std::wstring wide = le_wide(prompt_bytes);
    prompt_text = wide.c_str();
    return edit(fresh, buffer, len);
}

void le_close()
{
    hist_close();
    if (!el)
        return;
    in_utf8 here;
    el_end(el);
    el = nullptr;
}
