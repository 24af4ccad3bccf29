// terminal/complete.h - what may stand where the cursor is, from the tables the parser reads:
// the command table, programs in memory and along the search path, variables, macros, settings,
// functions, the options a program's syntax line or a command's page names, files.
#pragma once
#include <cstddef>
#include <string>
#include <vector>

struct candidate {
    std::string text; // stands in place of what was typed of the word
    char after;       // to follow it when it is the only one: blank, (, a quote; 0 nothing
};
// line is the text before the cursor. Fills words, sorted, each once, and returns where in the
// line the word begins.
size_t complete(const std::string &line, std::vector<candidate> *words);

// The options of a command as completeopt.cpp finds them.
void option_words(const std::string &command, std::vector<candidate> *words);
// Those a syntax description names behind its comma, and those of a page.
void options_of_syntax(const std::string &text, std::vector<candidate> *words);
void options_of_page(const std::string &text, std::vector<candidate> *words);
std::string whole_text(const std::string &path); // of a file; empty when it cannot be read
