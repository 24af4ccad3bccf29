#include "commands/helptopics.h"
#include "core/files.h"
#include "expr/expr.h"
#include "interp/interp.h"
#include <algorithm>
#include <cctype>
#include <cstring>
#include <dirent.h>
#include <string_view>
#include <utility>

using str = std::string;
using aliasrow = std::pair<str, str>;

static str help_dir()
{
    return str(sysdir_of("OVATA")) + "help/";
}

static str whole_file(const str &path)
{
    str text;
    int32_t fd = ov_open(path.c_str(), OV_READ);
    if (fd < 0)
        return text;
    char buf[16384];
    int32_t n;
    do {
        n = ovata_read(fd, buf, sizeof buf);
        if (n > 0)
            text.append(buf, size_t(n));
    } while (n == int32_t(sizeof buf));
    ov_close(fd);
    return text;
}

template <class Each> static void each_line(const str &text, Each each)
{
    for (size_t at = 0; at < text.size();) {
        size_t end = std::min(text.find('\n', at), text.size());
        each(std::string_view(text).substr(at, end - at));
        at = end + 1;
    }
}

static std::vector<aliasrow> aliases()
{
    std::vector<aliasrow> rows;
    each_line(whole_file(help_dir() + "aliases"), [&](std::string_view line) {
        size_t blank = line.find(' ');
        if (line.substr(0, 2) == "# " || blank == line.npos || !blank)
            return;
        size_t page = line.find_first_not_of(' ', blank);
        if (page != line.npos)
            rows.emplace_back(str(line.substr(0, blank)), str(line.substr(page)));
    });
    return rows;
}

// One exact name: a page of ours, an alias of one, a page along the search path.
static bool exact(const str &name, const std::vector<aliasrow> &rows, helppage *out)
{
    if (name.empty() || name.find('/') != name.npos || name.size() > 100)
        return false;
    auto ours = [&](const str &page) {
        str file = help_dir() + page + ".ovhlp";
        if (!path_isfile(file))
            return false;
        out->name = page;
        out->file = file;
        return true;
    };
    if (ours(name))
        return true;
    for (const aliasrow &row : rows)
        if (row.first == name && ours(row.second))
            return true;
    char path[512];
    if (srchado(name.c_str(), "ovhlp", 1, path))
        return false;
    out->name = name;
    out->file = path;
    return true;
}

static bool find_name(const str &name, const std::vector<aliasrow> &rows, helppage *out)
{
    out->row = cmd_row(name.c_str(), 0);
    if (out->row && name != out->row->word) // an abbreviation; a page of that very name wins
        return exact(name, rows, out) || exact(out->row->word, rows, out);
    return exact(name, rows, out) || exact(name + "()", rows, out);
}

bool help_find(const str &topic, helppage *out)
{
    str name;
    for (char c : topic.substr(0, topic.find("##"))) {
        if (c != ' ' && c != '\t')
            name += c;
        else if (!name.empty() && name.back() != '_')
            name += '_';
    }
    while (name.size() > 1 && name.back() == '_')
        name.pop_back();
    if (name.size() > 2 && name.back() == ')' && name[name.size() - 2] != '(')
        name.erase(name.find('(') + 1).append(")"); // strpos(s, t) is strpos()
    std::vector<aliasrow> rows = aliases();
    if (find_name(name, rows, out))
        return true;
    str lower = name;
    for (char &c : lower)
        c = char(tolower(uint8_t(c)));
    if (lower != name && find_name(lower, rows, out))
        return true;
    size_t blank = topic.find(' ');
    return blank != topic.npos && blank && find_name(topic.substr(0, blank), rows, out);
}

std::vector<str> help_words()
{
    std::vector<str> all;
    for (int32_t i = 0; i < ncmdtable; i++)
        all.push_back(cmdtable[i].word);
    for (const fcnrow *f = fcntable; f->opcode; f++)
        all.push_back(str(f->name) + "()");
    for (const char *const *f = fcn_byname; *f; f++)
        all.push_back(str(*f) + "()");
    for (const aliasrow &row : aliases())
        all.push_back(row.first);
    if (DIR *d = opendir(help_dir().c_str())) {
        while (const dirent *e = readdir(d)) {
            std::string_view file = e->d_name;
            if (file.size() > 6 && file.substr(file.size() - 6) == ".ovhlp")
                all.emplace_back(file.substr(0, file.size() - 6));
        }
        closedir(d);
    }
    std::sort(all.begin(), all.end());
    all.erase(std::unique(all.begin(), all.end()), all.end());
    return all;
}

// How many characters were put in, left out, changed or swapped with their neighbour
// (optimal string alignment), not more than limit.
static int distance(std::string_view a, std::string_view b, int limit)
{
    static constexpr size_t most = 40;
    int row[3][most + 1];
    if (a.size() > most || b.size() > most ||
        std::max(a.size(), b.size()) - std::min(a.size(), b.size()) > size_t(limit))
        return limit;
    int *before = row[0], *last = row[1], *now = row[2];
    for (size_t j = 0; j <= b.size(); j++)
        last[j] = int(j);
    for (size_t i = 1; i <= a.size(); i++) {
        now[0] = int(i);
        for (size_t j = 1; j <= b.size(); j++) {
            now[j] = std::min({last[j] + 1, now[j - 1] + 1, last[j - 1] + (a[i - 1] != b[j - 1])});
            if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1])
                now[j] = std::min(now[j], before[j - 2] + 1);
        }
        int *spare = before;
        before = last;
        last = now;
        now = spare;
    }
    return std::min(last[b.size()], limit);
}

std::vector<str> help_nearest(const str &topic, size_t most)
{
    int limit = topic.size() < 4 ? 2 : topic.size() < 8 ? 3 : 4;
    std::vector<std::pair<int, str>> found;
    for (const str &word : help_words()) {
        if (word[0] == '_' && topic[0] != '_')
            continue;
        std::string_view bare = word;
        if (bare.size() > 2 && bare.substr(bare.size() - 2) == "()")
            bare.remove_suffix(2);
        int d = distance(topic, bare, limit);
        if (d < limit)
            found.emplace_back(d * 2 + (bare[0] != topic[0]), word);
    }
    std::stable_sort(found.begin(), found.end(),
                     [](const auto &a, const auto &b) { return a.first < b.first; });
    std::vector<str> out;
    for (size_t i = 0; i < found.size() && i < most; i++)
        out.push_back(found[i].second);
    return out;
}

static bool begins_a_word(std::string_view text, std::string_view word)
{
    for (size_t at = 0; (at = text.find(word, at)) != text.npos; at++)
        if (!at || !isalnum(uint8_t(text[at - 1])))
            return true;
    return false;
}

bool help_indexed() { return path_isfile(help_dir() + "index"); }

std::vector<helphit> help_search(const std::vector<str> &words)
{
    std::vector<helphit> hits;
    each_line(whole_file(help_dir() + "index"), [&](std::string_view line) {
        size_t a = line.find('|'), b = a == line.npos ? a : line.find('|', a + 1);
        if (b == line.npos)
            return;
        helphit h = {str(line.substr(0, a)), str(line.substr(a + 1, b - a - 1)), 0};
        str head = h.page + " " + h.title;
        for (char &c : head)
            c = char(tolower(uint8_t(c)));
        for (const str &word : words) {
            int rank = word == h.page                            ? 0
                       : begins_a_word(head, word)               ? 1
                       : begins_a_word(line.substr(b + 1), word) ? 2
                                                                 : 3;
            h.rank = std::max(h.rank, rank);
        }
        if (h.rank < 3)
            hits.push_back(h);
    });
    std::stable_sort(hits.begin(), hits.end(),
                     [](const helphit &x, const helphit &y) { return x.rank < y.rank; });
    return hits;
}
