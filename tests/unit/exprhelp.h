// What the tests of expressions share: evaluating a text, and a dataset to evaluate over.
#pragma once
#include "core/missing.h"
#include "core/state.h"
#include "data/dsa.h"
#include "expr/parse.h"
#include "output/print.h"
#include <cstring>
#include <string>

struct exprvalue {
    int32_t rc;
    bool isstr;
    double num;
    std::string str;
};

inline exprvalue evaluate(const std::string &text, int32_t wanted = W_ANY)
{
    exprvalue v{0, false, misval, ""};
    char str[246] = "";
    s_outlev = 5;
    v.rc = exp_text(text.c_str(), wanted, &v.isstr, &v.num, str);
    v.str = str;
    return v;
}

inline double number(const std::string &text) 
{
    exprvalue v = evaluate(text);
    return v.rc || v.isstr ? -98765 - v.rc : v.num;
}

inline std::string text_of(const std::string &text)
{
    exprvalue v = evaluate(text);
    return v.rc ? "rc " + std::to_string(v.rc) : v.isstr ? v.str : "a number";
}

inline int32_t code(const std::string &text, int32_t wanted = W_ANY)
{
    return evaluate(text, wanted).rc;
}
