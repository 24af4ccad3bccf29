// terminal/completeopt.cpp - the options of a command.
//
// A program tells its options in its syntax line; those of a built-in command stand on its page.
#include "commands/helptopics.h"
#include "core/files.h"
#include "core/mem.h"
#include "interp/dm.h"
#include "interp/interp.h"
#include "interp/programs.h"
#include "terminal/complete.h"
#include <cctype>
#include <cstring>

using words_t = std::vector<candidate>;

std::string whole_text(const std::string &path)
{
    std::string text;
    int32_t fd = ov_open(path.c_str(), OV_READ), n;
    if (fd < 0)
        return text;
    char buf[16384];
    while (text.size() < (1 << 20) && (n = ovata_read(fd, buf, int32_t(sizeof buf))) > 0)
        text.append(buf, size_t(n));
    ov_close(fd);
    return text;
}

static bool namechar(char c)
{
    return isalnum(uint8_t(c)) || c == '_';
}

static void add(words_t *words, std::string name, bool argument)
{
    for (char &c : name)
        c = char(tolower(uint8_t(c)));
    if (!name.empty() && isalpha(uint8_t(name[0])))
        words->push_back({name, argument ? '(' : ' '});
}

// Behind the comma at depth 0, names with their arguments in parentheses.
void options_of_syntax(const std::string &text, words_t *words)
{
    int32_t depth = 0;
    bool behind = false;
    for (size_t i = 0; i < text.size(); i++) {
        char c = text[i];
        if (c == '(')
            depth++;
        else if (c == ')')
            depth--;
        else if (c == ',' && !depth)
            behind = true;
        else if (behind && !depth && namechar(c)) {
            size_t from = i;
            while (i < text.size() && namechar(text[i]))
                i++;
            add(words, text.substr(from, i - from), i < text.size() && text[i] == '(');
            i--;
        }
    }
}

// The name of an option within a tag: the colon parts its abbreviation from the rest.
static void tagged(const std::string &text, size_t at, bool abbreviated, words_t *words)
{
    std::string name;
    for (; at < text.size() && (namechar(text[at]) || (abbreviated && text[at] == ':')); at++)
        if (text[at] != ':')
            name += text[at];
    add(words, name, at < text.size() && text[at] == '(');
}

void options_of_page(const std::string &text, words_t *words)
{
    static const struct {
        const char *tag;
        bool abbreviated;
    } tags[] = {{"{opt ", true}, {"{opth ", true}, {"{cmdab:", true}, {"{cmd:", false}};
    size_t at = 0;
    while ((at = text.find("{synopt:", at)) != text.npos) {
        at += 8;
        size_t end = text.find('\n', at), best = text.npos;
        for (const auto &t : tags) {
            size_t k = text.find(t.tag, at);
            if (k >= end || k >= best)
                continue;
            best = k;
        }
        for (const auto &t : tags)
            if (best != text.npos && !text.compare(best, strlen(t.tag), t.tag))
                tagged(text, best + strlen(t.tag), t.abbreviated, words);
    }
    for (at = 0; (at = text.find("{cmd:, ", at)) != text.npos; at += 7)
        tagged(text, at + 7, false, words);
}

// The text behind `syntax` in the lines of a program; a line may go on behind ///.
static std::string syntax_line(const std::string &program)
{
    std::string out;
    bool more = false;
    for (size_t at = 0; at < program.size();) {
        size_t end = program.find('\n', at);
        if (end == program.npos)
            end = program.size();
        std::string line = program.substr(at, end - at);
        at = end + 1;
        size_t from = line.find_first_not_of(" \t");
        if (from == line.npos || (!more && line.compare(from, 7, "syntax ")))
            continue;
        size_t joined = line.find("///");
        out += ' ' + line.substr(more ? from : from + 7,
                                 joined == line.npos ? joined : joined - (more ? from : from + 7));
        more = joined != line.npos;
        if (!more)
            break;
    }
    return out;
}

static std::string lines_of(const pgmrec *p)
{
    std::string text;
    for (int32_t i = 0, n; i < pgm_nlines(p); i++) {
        const char *line = pgm_line(p, i, &n);
        text += line + 1;
        text += '\n';
    }
    return text;
}

void option_words(const std::string &command, words_t *words)
{
    const cmdrow *row = cmd_row(command.c_str(), 0);
    std::string name = row ? row->word : command;
    char path[500];
    if (!row || row->handler == notbuilt) {
        name = command;
        std::string text;
        if (auto p = static_cast<pgmrec *>(dmfind0(name.c_str(), DM_PROGRAM)))
            text = lines_of(p);
        else if (!srchado(name.c_str(), "ado", 1, path))
            text = whole_text(path);
        options_of_syntax(syntax_line(text), words);
        if (!words->empty())
            return;
    }
    helppage page;
    if (help_find(name, &page))
        options_of_page(whole_text(page.file), words);
}
