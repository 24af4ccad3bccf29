// output/htmlout.h - the HTML page of a translation.
#pragma once
#include "output/translate.h"

struct htmlout final : markreader {
    htmlout(int32_t fd, const char *title);
    void run(uint8_t style, const std::string &link, const char *p, size_t n) override;
    void lineend() override;
    bool close(); // false when it could not all be written

  private:
    void escaped(const char *p, size_t n);
    void restyle(uint8_t style, const std::string &link);
    bytesink sink;
    uint8_t open = 0;
    bool inlink = false, inspan = false;
    std::string leads;
};
