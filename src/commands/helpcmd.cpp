// commands/helpcmd.cpp - help and search: man chelp search lookup _findhlpalias HELPCHK.
#include "commands/helptopics.h"
#include "commands/showfile.h"
#include "core/rc.h"
#include "interp/interp.h"
#include "interp/messages.h"
#include "output/oml.h"
#include "output/print.h"
#include "stats/results.h"
#include <cctype>
#include <cstdlib>
#include <cstring>

using str = std::string;

// The rest of the line up to a comma outside brackets, without blanks and quotes around it.
static str rest_of_line()
{
    const char *p = ti_wheretok(tokinfo);
    str text(p, strcspn(p, ","));
    if (text.find('(') != str::npos)
        text = p;
    size_t b = text.find_first_not_of(" \t\"`"), e = text.find_last_not_of(" \t\"'");
    return b == str::npos ? "" : text.substr(b, e - b + 1);
}

// r(198), or just 198: the words of that code.
static bool return_code(const str &topic, int32_t *code)
{
    const char *p = topic.c_str();
    if (!strncmp(p, "r(", 2))
        p += 2;
    char *end;
    long v = strtol(p, &end, 10);
    if (end == p || v < 1 || v > 32000 || strcmp(end, p == topic.c_str() ? "" : ")") != 0)
        return false;
    *code = int32_t(v);
    return true;
}

// What codes mean whose words name a thing of the user's, or that have none of their own.
static const struct {
    int32_t code;
    const char *meaning;
} meanings[] = {
    {1, "The break key was pressed, or the output was left at the prompt of a page."},
    {6, "Nothing stands where something was expected."},
    {7, "Something else stands there than was expected."},
    {9, "What was asserted is not true, or the version is not the one that is needed."},
    {100, "Something is missing on the line that the command requires."},
    {101, "Something stands on the line that the command does not allow."},
    {110, "The name is taken already."},
    {111, "There is nothing of that name: a variable, label, program, scalar, page."},
    {120, "The format is none, or not one for this kind of value."},
    {132, "Quotes or brackets do not match."},
    {133, "There is no function of that name, or it does not stand for what is needed."},
    {170, "The directory cannot be gone to."},
    {182, "The name cannot be one."},
    {198, "What was typed is not what the command takes; its page shows what it does take."},
    {199, "No command or program of that name was found."},
    {301, "The command needs the results of a model, and there are none."},
    {303, "The model has no equation of that name."},
    {601, "No file of that name was found."},
    {602, "The file is there already; most commands take the option replace."},
    {603, "The file could not be opened."},
    {604, "A log file is open already under that name."},
    {606, "No log file is open under that name."},
    {607, "No command log is open."},
    {608, "The file may be read only."},
    {693, "Writing to the file failed; the disk may be full or the directory gone."},
    {909, "The operating system gave no more memory."},
    {920, "Macros or programs are nested too deeply."},
    {1000, "A limit of the system was reached."},
};

static int32_t show_code(int32_t code)
{
    outlev_keep keep(1);
    spoutsmlf("{err:r(%d)}{space 2}", int(code));
    int32_t from = omlcolumn(oml_cur);
    (void)extended_error(code);
    bool silent = omlcolumn(oml_cur) == from;
    if (silent)
        newline();
    const char *more = silent ? "Whoever returned it has said why." : nullptr;
    for (const auto &m : meanings)
        if (m.code == code)
            more = m.meaning;
    if (more)
        spoutsmlf("{txt}{p 8 8 2}%s{p_end}\n", more);
    return spoutsml("{txt}{p 8 8 2}See {help return_codes:help return codes}.{p_end}\n");
}

// Nearest names, where somebody is there to read them; logs do not hold them.
static void offer(const str &topic)
{
    if (nokbrd || batchmode || out_shown(3) == false)
        return;
    str line;
    for (const str &word : help_nearest(topic, 5))
        line += (line.empty() ? "{txt}(did you mean " : ", ") + ("{help " + word + "}");
    if (!line.empty())
        omlsendscreen(oml_cur, (line + "?)\n").c_str());
}

int32_t ti_help(int32_t)
{
    str topic = rest_of_line();
    helppage page;
    int32_t code;
    if (topic.empty())
        topic = "contents";
    if (topic[0] == 'r' && return_code(topic, &code))
        return show_code(code);
    if (!help_find(topic, &page)) {
        int32_t rc = errout(RC_NOTFOUND, "help for %s not found\n", topic.c_str());
        offer(topic);
        outlev_keep keep(1);
        spoutsml("{txt}try {bf:search ");
        spout21(topic.c_str());
        spoutsml("} or {help contents:help contents}\n");
        return rc;
    }
    int32_t rc = show_file(page.file, false);
    if (!rc && page.row && page.row->handler == notbuilt) {
        spoutsml("\n{txt}{p 0 0 2}({cmd:");
        spout21at(1, page.row->word);
        rc = spoutsml("} is not in this version of Ovata.){p_end}\n");
    }
    return rc;
}

int32_t ti_cmdlookup(int32_t)
{
    str topic = rest_of_line(), word;
    int32_t code;
    if (topic.empty())
        return error(RC_SYNTAX);
    if (return_code(topic, &code))
        return show_code(code);
    std::vector<str> words;
    for (char c : topic + " ") {
        if (isalnum(uint8_t(c)) || c == '_')
            word += char(tolower(uint8_t(c)));
        else if (!word.empty()) {
            words.push_back(word);
            word.clear();
        }
    }
    std::vector<helphit> hits = help_search(words);
    outlev_keep keep(1);
    if (words.empty() || hits.empty()) {
        if (!help_indexed())
            return errout(RC_FILENOTFOUND, "the index of help was not found\n");
        spoutsml("{txt}no page of help has ");
        spout21(words.size() > 1 ? "all of " : "");
        spout21(topic.c_str());
        spoutsml("\n");
    }
    for (const helphit &h : hits) {
        if (words.empty())
            break;
        spoutsml(("{txt}{p2colset 2 24 26 2}{p2col:{help " + h.page + "}}").c_str());
        spout21(h.title.c_str());
        if (spoutsml("{p_end}\n{p2colreset}{...}\n"))
            break;
    }
    return stopflag;
}

// _findhlpalias WORD: the page that answers for it and its file, in r().
int32_t findhlpalias(int32_t)
{
    helppage page;
    str topic = rest_of_line();
    if (topic.empty())
        return error(RC_SYNTAX);
    bool found = help_find(topic, &page);
    retval_clear();
    retval_set_glocal("page", found ? page.name.c_str() : "");
    retval_set_glocal("filename", found ? page.file.c_str() : "");
    return 0;
}

// Names the words of the language that have no page. Its row cannot be reached by typing; the
// tests call it.
int32_t helpchk(int32_t)
{
    helppage page;
    int32_t rc = 0;
    for (const str &word : help_words())
        if (!help_find(word, &page))
            rc = errout(RC_NOTFOUND, "no page for %s\n", word.c_str());
    return rc;
}
