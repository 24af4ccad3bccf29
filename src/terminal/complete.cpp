#include "terminal/complete.h"
#include "commands/helptopics.h"
#include "core/files.h"
#include "core/settings.h"
#include "core/state.h"
#include "data/dsa.h"
#include "expr/expr.h"
#include "interp/dm.h"
#include "interp/interp.h"
#include "interp/macros.h"
#include <algorithm>
#include <cctype>
#include <cstring>
#include <dirent.h>
#include <sys/stat.h>

using words_t = std::vector<candidate>;
using str = std::string;

static bool namechar(char c)
{
    return isalnum(uint8_t(c)) || c == '_';
}

static bool begins(const char *name, const str &typed)
{
    return !strncmp(name, typed.c_str(), typed.size());
}

static void offer(words_t *words, const char *name, const str &typed, char after)
{
    if (begins(name, typed))
        words->push_back({name, after});
}

// ---- the kinds of words

namespace
{
struct found {
    str name, path;
};
} // namespace

static void each_file(const str &dir, const str &suffix, const str &typed, std::vector<found> *out)
{
    DIR *d = opendir(dir.empty() ? "." : dir.c_str());
    if (!d)
        return;
    while (const dirent *e = readdir(d)) {
        str name = e->d_name;
        if (name.size() > suffix.size() && begins(name.c_str(), typed) &&
            !name.compare(name.size() - suffix.size(), suffix.size(), suffix))
            out->push_back({name.substr(0, name.size() - suffix.size()), path_join(dir, name)});
    }
    closedir(d);
}

// Does a file only lead an abbreviation to its command? Those are a few lines.
static bool is_short_form(const str &path)
{
    struct stat st;
    return !stat(path.c_str(), &st) && st.st_size < 300;
}

// Files of a kind in the directories of programs, and in their subdirectories of a letter.
// Parts of programs, which have an underscore, are left out until one is typed.
static void along_path(const char *suffix, const str &typed, words_t *words)
{
    std::vector<found> all;
    for (int32_t i = 0; sysdir_words[i]; i++) {
        const char *dir = sysdir_of(sysdir_words[i]);
        if (!dir || !*dir || !strcmp(sysdir_words[i], "OVATA"))
            continue;
        each_file(dir, suffix, typed, &all);
        if (!typed.empty())
            each_file(dir + ado_subdir(typed.c_str()), suffix, typed, &all);
    }
    each_file("", suffix, typed, &all);
    std::sort(all.begin(), all.end(),
              [](const found &x, const found &y) { return x.name < y.name; });
    if (typed.find('_') == typed.npos)
        std::erase_if(all, [](const found &f) { return f.name.find('_') != f.name.npos; });
    for (size_t i = 0; i < all.size(); i++) {
        bool leads = i + 1 < all.size() && begins(all[i + 1].name.c_str(), all[i].name);
        if (!leads || !is_short_form(all[i].path))
            words->push_back({all[i].name, ' '});
    }
}

static void commands(const str &typed, words_t *words)
{
    for (int32_t i = 0; i < ncmdtable; i++) {
        const cmdrow &row = cmdtable[i];
        bool inner = *row.word == '_' || isupper(uint8_t(*row.word));
        if (row.handler != notbuilt && vernum < row.below && vernum >= row.from &&
            (!inner || !typed.empty()))
            offer(words, row.word, typed, ' ');
    }
    char name[33];
    for (void *p = dmnext(nullptr, name, DM_PROGRAM, nullptr); p;
         p = dmnext(p, name, DM_PROGRAM, nullptr))
        if (*name != '_' || !typed.empty())
            offer(words, name, typed, ' ');
    if (!typed.empty())
        along_path(".ado", typed, words);
}

// Of a command's abbreviations, which all lead to its page, only the command is offered.
static void topics(const str &typed, words_t *words)
{
    std::vector<str> all = help_words();
    std::erase_if(all, [&](const str &w) { return !begins(w.c_str(), typed); });
    helppage page, next;
    for (size_t i = 0; i < all.size(); i++) {
        bool leads = all.size() < 200 && i + 1 < all.size() && begins(all[i + 1].c_str(), all[i]) &&
                     help_find(all[i], &page) && help_find(all[i + 1], &next) &&
                     page.name == next.name;
        if (!leads)
            words->push_back({all[i], ' '});
    }
    along_path(".ovhlp", typed, words);
}

static void variables(const str &typed, words_t *words)
{
    for (int32_t i = 0; i < _i_Kvar; i++)
        offer(words, _varlist[i], typed, ' ');
}

static void functions(const str &typed, words_t *words)
{
    if (typed.empty())
        return;
    for (const fcnrow *f = fcntable; f->opcode; f++)
        if (!f->later && *f->name != '_')
            offer(words, f->name, typed, '(');
    for (int32_t i = 0; fcn_byname[i]; i++)
        offer(words, fcn_byname[i], typed, '(');
}

static void records(int32_t type, const str &typed, words_t *words)
{
    char name[33];
    for (void *p = dmnext(nullptr, name, type, nullptr); p; p = dmnext(p, name, type, nullptr))
        offer(words, name, typed, ' ');
}

static void macros(bool local, const str &typed, char after, words_t *words)
{
    char name[33];
    int32_t type = local ? typelmac : DM_GLOBAL;
    for (void *p = dmnext(nullptr, name, type, nullptr); p; p = dmnext(p, name, type, nullptr))
        if (!mac_hidden(name) && (!local || *name == '_'))
            offer(words, local ? name + 1 : name, typed, after);
}

static void settings_words(const str &typed, words_t *words)
{
    for (int32_t i = 0; i < nsettings; i++)
        offer(words, settings[i].name, typed, ' ');
}

static bool is_dir(const str &path)
{
    struct stat st;
    return !stat(path.c_str(), &st) && S_ISDIR(st.st_mode);
}

// quote: the one that is open before the name, or 0; a name with blanks gets one then.
static void files(const str &typed, char quote, bool onlydirs, words_t *words)
{
    size_t slash = typed.rfind('/');
    str dir = slash == typed.npos ? "" : typed.substr(0, slash + 1),
        rest = typed.substr(dir.size());
    str where = dir.empty() ? "." : path_expand(dir);
    DIR *d = opendir(where.c_str());
    if (!d)
        return;
    while (const dirent *e = readdir(d)) {
        str name = e->d_name;
        if (!begins(name.c_str(), rest) || name == "." || name == ".." ||
            (name[0] == '.' && (rest.empty() || rest[0] != '.')))
            continue;
        bool sub = is_dir(where + "/" + name);
        if (onlydirs && !sub)
            continue;
        str text = dir + name;
        bool blank = !quote && text.find(' ') != text.npos;
        candidate c = {blank ? '"' + text : text, quote || blank ? '"' : ' '};
        if (sub)
            c = {c.text + '/', 0};
        words->push_back(c);
    }
    closedir(d);
}

// ---- where the cursor is

namespace
{

struct place {
    str command;    // the first word, prefixes taken off
    bool first;     // the cursor is in it
    size_t rest;    // where the line goes on behind it
    char quote = 0; // of the text the cursor is in: " or 0
    size_t quoted;  // where that text begins
    bool comma = false;
    int32_t depth = 0;
};

} // namespace

static size_t skip(const str &s, size_t at)
{
    while (at < s.size() && s[at] == ' ')
        at++;
    return at;
}

// Behind the colon that ends a prefix, strings and parentheses passed over; npos without one.
static size_t behind_colon(const str &s, size_t at)
{
    bool quoted = false;
    int32_t depth = 0;
    for (; at < s.size(); at++) {
        quoted ^= s[at] == '"';
        depth += quoted ? 0 : s[at] == '(' ? 1 : s[at] == ')' ? -1 : 0;
        if (s[at] == ':' && !quoted && depth <= 0)
            return at + 1;
    }
    return s.npos;
}

// A word that another command stands behind.
static bool prefix_word(const str &w, bool *needcolon)
{
    static const struct {
        const char *word;
        int32_t min;
        bool colon;
    } rows[] = {{"quietly", 3, false},      {"noisily", 1, false}, {"capture", 3, false},
                {"break", 5, false},        {"nobreak", 7, false}, {"varabbrev", 9, false},
                {"novarabbrev", 11, false}, {"by", 2, true},       {"bysort", 3, true},
                {"version", 4, true}};
    for (const auto &row : rows)
        if (cmdcmp(w.c_str(), row.word, row.min)) {
            *needcolon = row.colon;
            return true;
        }
    const cmdrow *built = cmd_row(w.c_str(), 0);
    *needcolon = true;
    return !built || built->handler == notbuilt; // programs may be prefixes
}

static void first_word(const str &s, place *p)
{
    size_t at = 0;
    for (;;) {
        at = skip(s, at);
        if (at < s.size() && s[at] == '!') {
            p->command = "!";
            p->first = false;
            p->rest = at + 1;
            return;
        }
        size_t end = at;
        while (end < s.size() && namechar(s[end]))
            end++;
        p->command = s.substr(at, end - at);
        p->first = end == s.size();
        p->rest = end;
        bool colon;
        if (p->first || !prefix_word(p->command, &colon))
            return;
        size_t next = colon ? behind_colon(s, end) : skip(s, end);
        if (next == s.npos)
            return;
        if (!colon && next < s.size() && s[next] == ':')
            next++;
        at = next;
    }
}

// Quotes, parentheses and the comma from the rest of the line on.
static void read_rest(const str &s, place *p)
{
    for (size_t i = p->rest; i < s.size(); i++) {
        char c = s[i];
        if (c == '"') {
            p->quote = p->quote ? 0 : '"';
            p->quoted = i + 1;
        } else if (!p->quote) {
            p->depth += c == '(' ? 1 : c == ')' ? -1 : 0;
            p->comma |= c == ',' && p->depth <= 0;
        }
    }
}

static bool one_of(const str &w, std::initializer_list<const char *> names)
{
    const cmdrow *row = cmd_row(w.c_str(), 0);
    for (const char *name : names)
        if (w == name || (row && !strcmp(row->word, name)))
            return true;
    return false;
}

static bool takes_file(const str &w)
{
    return one_of(w, {"use",   "save",  "do",    "run",    "include", "cd",   "chdir", "type",
                      "cat",   "erase", "rm",    "copy",   "cp",      "view", "dir",   "ls",
                      "mkdir", "rmdir", "shell", "xshell", "winexec", "!"});
}

// The word before the one at `at`.
static str word_before(const str &s, size_t at)
{
    while (at && s[at - 1] == ' ')
        at--;
    size_t end = at;
    while (at && namechar(s[at - 1]))
        at--;
    return s.substr(at, end - at);
}

static size_t name_start(const str &s)
{
    size_t at = s.size();
    while (at && namechar(s[at - 1]))
        at--;
    return at;
}

static size_t choose(const str &line, words_t *words)
{
    size_t at = name_start(line);
    str typed = line.substr(at);
    if (at && line[at - 1] == '`') {
        macros(true, typed, '\'', words);
        return at;
    }
    if (at && line[at - 1] == '$') {
        macros(false, typed, 0, words);
        return at;
    }
    if (at > 1 && line[at - 1] == '{' && line[at - 2] == '$') {
        macros(false, typed, '}', words);
        return at;
    }
    place p;
    first_word(line, &p);
    if (p.first) {
        commands(p.command, words);
        return line.size() - p.command.size();
    }
    read_rest(line, &p);
    bool dirs = one_of(p.command, {"cd", "chdir", "mkdir", "rmdir"});
    if (p.quote) {
        files(line.substr(p.quoted), p.quote, dirs, words);
        return p.quoted;
    }
    size_t blank = line.find_last_of(" (");
    blank = blank == line.npos ? 0 : blank + 1;
    if (cmdcmp(word_before(line, blank).c_str(), "using", 2) ||
        (!p.comma && takes_file(p.command))) {
        files(line.substr(blank), 0, dirs, words);
        return blank;
    }
    if (p.comma && p.depth <= 0) {
        option_words(p.command, words);
        std::erase_if(*words, [&](const candidate &c) { return !begins(c.text.c_str(), typed); });
        return at;
    }
    bool argument = skip(line, p.rest) == at; // the first word behind the command
    if (argument && one_of(p.command, {"help", "chelp", "man", "search", "which"}))
        topics(typed, words);
    else if (argument && one_of(p.command, {"set"}))
        settings_words(typed, words);
    else {
        variables(typed, words);
        if (one_of(p.command, {"matrix"}))
            records(DM_MATRIX, typed, words);
        if (one_of(p.command, {"scalar", "display"}))
            records(DM_SCALAR, typed, words);
        if (words->empty())
            functions(typed, words);
    }
    return at;
}

size_t complete(const str &line, words_t *words)
{
    size_t at = choose(line, words);
    std::sort(words->begin(), words->end(),
              [](const candidate &a, const candidate &b) { return a.text < b.text; });
    words->erase(
        std::unique(words->begin(), words->end(),
                    [](const candidate &a, const candidate &b) { return a.text == b.text; }),
        words->end());
    return at;
}
