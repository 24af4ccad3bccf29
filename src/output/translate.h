// output/translate.h - a log or a page of help as plain text, HTML, PostScript or PDF.
//
// Mark-up is rendered at the told width by a renderer of its own; other text is taken as it is.
// HTML is a whole page in UTF-8, fixed-width, its links leading to PAGE.html. PostScript and PDF
// come through the cairo library, which is loaded when it is first needed.
#pragma once
#include <cstddef>
#include <cstdint>
#include <string>

enum trans_kind : uint8_t { TR_TEXT, TR_HTML, TR_PS, TR_PDF };
struct trans_how {
    trans_kind kind;
    bool markup;
    int32_t width;     // columns, 40 to 255; pages take what fits
    std::string title; // of the HTML page, or the head of each page
    bool header;       // pages have a head with their number
    double fontsize;   // points
    double pagewidth, pageheight, left, right, top, bottom; // inches
};
// 0, stopflag or a file code, with its words printed. What it could not finish it removes.
[[nodiscard]] int32_t translate_file(const char *from, const char *to, bool replace,
                                     const trans_how &how);

// Inside: text with styles and links in it, taken apart (see omlsend_genascii_begin).
struct markreader {
    virtual ~markreader() = default;
    // A run without line ends, in one style; link is a page's name or empty.
    virtual void run(uint8_t style, const std::string &link, const char *p, size_t n) = 0;
    virtual void lineend() = 0;
    virtual void newpage() {}
    void take(const char *p, size_t n);

  private:
    uint8_t instyle = 0;
    char pending = 0; // a mark whose rest is to come
    std::string tolink, gathered;
};
// Where the bytes of a translation go; every one tells whether all went well so far.
struct bytesink {
    explicit bytesink(int32_t d) : fd(d) {}
    int32_t fd;
    bool failed = false;
    std::string held;
    void put(const char *p, size_t n);
    void put(const std::string &s) { put(s.data(), s.size()); }
    void flush();
};
// The length of the UTF-8 character at p, 0 when the bytes there are none.
size_t utf8_at(const char *p, size_t n);
