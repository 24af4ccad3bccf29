// commands/helptopics.h - the pages of help, and what leads to them.
//
// A page is help/NAME.ovhlp of the installation, or NAME.ovhlp along the search path of program
// files. help/aliases has rows "WORD PAGE"; a function stands there as NAME(). A topic of several
// words is looked for with underscores between them, then by its first word alone.
//
// help/index has a line for each page of the installation, "PAGE|TITLE|WORDS", made by
// tools/help-index.sh.
#pragma once
#include <string>
#include <vector>

struct cmdrow;
struct helppage {
    std::string name, file;
    const cmdrow *row; // the command it is about when the topic names one; or null
};
bool help_find(const std::string &topic, helppage *out);
// Every word that help answers for, sorted: commands, functions as NAME(), pages and aliases.
std::vector<std::string> help_words();
// Those nearest to a word nobody knows, at most `most`, best first.
std::vector<std::string> help_nearest(const std::string &topic, size_t most);

struct helphit {
    std::string page, title;
    int rank; // 0 the page itself, 1 in its title, 2 in its text
};
// Pages in which each of the words begins some word; best first.
bool help_indexed();  // there is an index to search
std::vector<helphit> help_search(const std::vector<std::string> &words);
