// terminal/lineedit.h - a line of the keyboard, edited. The editing library is known in
// lineedit.cpp only.
//
// While a line is typed the terminal is in the library's mode; between lines it is as the user
// left it, so that commands, their children and a break find what they expect.
#pragma once
#include "interp/keyboard.h"
#include <cstdint>

bool le_open(); // false when the terminal cannot do it
// The prompt stands on the screen already. KB_LINE, KB_EOF, KB_BREAK (stopflag is then set) or
// KB_TOOLONG. A paste of several lines, and an entry of several lines that is called back,
// answer as many calls; the lines behind the first are shown as if typed.
kb_answer le_line(const char *prompt, bool fresh, char *buffer, int32_t len);
void le_close();

// Between the bytes of the program and the characters of the library: UTF-8, and a byte that
// belongs to no character as itself among the surrogates, so that any text comes back whole.
#include <string>
std::wstring le_wide(const std::string &text);
std::string le_bytes(const wchar_t *text, size_t n);
