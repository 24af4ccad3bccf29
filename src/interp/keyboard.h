// interp/keyboard.h - lines from standard input, be it a terminal or a pipe.
#pragma once
#include <cstdint>

enum kb_answer : uint8_t { KB_LINE, KB_EOF, KB_BREAK, KB_TOOLONG };

// Reads a line of fewer than len characters into buffer, without its end. Tabs become blanks
// up to the next multiple of 8, other control characters and byte 255 are dropped. A last
// line without an end counts. After KB_BREAK and KB_TOOLONG the buffer is empty and the rest
// of the line is gone.
kb_answer kb_line(char *buffer, int32_t len);
// One key, or -1 at the end of input.
int32_t kb_key();
