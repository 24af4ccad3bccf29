// output/pageout.h - the pages of a translation, drawn by the cairo library.
//
// The library is loaded at the first use, so that a session that draws nothing does not pay for
// it.
#pragma once
#include "output/translate.h"
#include <memory>

struct pageout;
extern const char page_library[];
std::unique_ptr<pageout> page_open(int32_t fd, const trans_how &how); // null without the library
int32_t page_columns(const pageout &p); // characters that fit between the margins
bool page_close(pageout &p);            // false when it could not all be written

struct pagetools;
struct pageout final : markreader {
    pageout(const pagetools *t, int32_t fd, const trans_how &how);
    ~pageout() override;
    void run(uint8_t style, const std::string &link, const char *p, size_t n) override;
    void lineend() override;
    void newpage() override;
    void drawhead();
    void text(uint8_t style, double x, double y, const std::string &s);

    const pagetools *lib;
    bytesink sink;
    trans_how how;
    void *surface = nullptr, *cr = nullptr;
    double advance = 0, step = 0;
    int32_t col = 0, line = 0, lines = 1, page = 1;
    bool started = false; // something is on this page
};
