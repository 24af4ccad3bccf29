// commands/textdata.h - data as lines of text: the scanner that insheet and others share.
//
// A line is a row of fields parted by one delimiter. A field may stand in double quotes, in
// which the delimiter is plain text and "" is one quote; a quote that does not close ends with
// its line, so that one stray quote costs one line and not the rest of the file. Blanks around
// a field do not count. Line ends are LF, CR LF or CR; NUL bytes read as blanks.
#pragma once
#include <cstddef>
#include <cstdint>
#include <string>

// The whole of a text file, with every line end made LF. RAII.
struct textfile {
    char *text = nullptr;
    int64_t n = 0;
    textfile() = default;
    textfile(const textfile &) = delete;
    textfile &operator=(const textfile &) = delete;
    ~textfile();
};
// 0, or a file code or 909, with its words.
[[nodiscard]] int32_t text_load(textfile *t, const char *name);

// The line that starts at p (without its LF); next is where the one behind it starts.
struct textline {
    char *at, *end, *next;
};
textline text_line(const textfile *t, char *p);

struct textfield {
    const char *at;
    int32_t n;
    bool quoted, unclosed;
};
// Takes the field at *p, which moves behind its delimiter, to end + 1 after the last field.
// Doubled quotes are closed up within the line itself, so fields must be taken once a copy.
textfield text_field(char **p, char *end, char delim);

// A number by the field's whole text; false when it is not one. Empty is no number.
bool text_number(const textfield *f, double *z);

// Writes a text file: the head, then what row appends for each observation the parse selects.
// A break or a failed write removes the file. 0, 1, or a file code with its words.
using textrow = void (*)(const void *arg, std::string *out, int32_t obs);
[[nodiscard]] int32_t text_save(const std::string &file, bool replace, const std::string &head,
                                textrow row, const void *arg);
