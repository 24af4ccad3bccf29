// interp/keyboard.h - lines from standard input, be it a terminal or a pipe.
#pragma once
#include <cstdint>

enum kb_answer : uint8_t { KB_LINE, KB_EOF, KB_BREAK, KB_TOOLONG };

// Reads a line of fewer than len characters into buffer, without its end. Tabs become blanks
// up to the next multiple of 8, other control characters and byte 255 are dropped. A last
// line without an end counts. After KB_BREAK and KB_TOOLONG the buffer is empty and the rest
// of the line is gone.
kb_answer kb_line(char *buffer, int32_t len);

// What the terminal does for the keyboard; the floor above fills the rows it has, null ones
// are done without. All but size are called in the order in which they stand.
struct kb_terminal_t {
    bool (*open)();  // takes the terminal; true when lines can be edited
    // As kb_line, edited. The prompt is on the screen already. fresh: a command begins, in
    // place of one going on.
    kb_answer (*line)(const char *prompt, bool fresh, char *buffer, int32_t len);
    void (*close)();  // gives the terminal back as it was
    bool (*size)(int32_t *lines, int32_t *columns);  // as the terminal's description has it
};
extern kb_terminal_t kb_terminal;
extern bool kb_editing;  // open said so
