// tests/unit/frame.h - a dataset as plain vectors, put into memory and read back, so that
// commands can be compared with a second account of what they should do.
#pragma once
#include "../session.h"
#include "area.h"
#include <algorithm>
#include <initializer_list>
#include <map>

// A number goes by its exact digits or its missing letter, a text by itself.
inline std::string num_text(double z)
{
    char buf[40];
    if (ovismissing(z)) {
        int k = mis_letter(z);
        return k ? std::string(".") + char('a' + k - 1) : ".";
    }
    snprintf(buf, sizeof buf, "%.17g", z == 0 ? 0.0 : z);
    return buf;
}

struct column {
    std::string name;
    uint8_t type;
    std::vector<double> num{};
    std::vector<std::string> str{};

    bool text() const { return t_isstr(type); }
    size_t size() const { return text() ? str.size() : num.size(); }
    std::string at(size_t i) const { return text() ? str[i] : num_text(num[i]); }
};
using frame = std::vector<column>;

inline const column *col_of(const frame &f, const std::string &name)
{
    for (const column &c : f)
        if (c.name == name)
            return &c;
    return nullptr;
}

inline frame memory_frame()
{
    frame f;
    char buf[246];
    for (int32_t v = 1; v <= _Kvar; v++) {
        column c = {_varlist[v - 1], _typlist[v - 1]};
        for (int32_t i = 1; i <= _Nobs; i++)
            if (c.text())
                c.str.push_back(dsa_sdata(sysdsa, uint32_t(v), uint32_t(i), buf));
            else
                c.num.push_back(dsa_data(sysdsa, uint32_t(v), uint32_t(i)));
        f.push_back(c);
    }
    return f;
}

// What a type keeps of a number.
inline double kept(double z, uint8_t type)
{
    alignas(8) char cell[8];
    cell_store(z, type, cell);
    return cell_data(type, cell);
}

inline void to_memory(const frame &f)
{
    drop_all();
    for (const column &c : f)
        ASSERT_GT(add_user(c.type, c.name.c_str()), 0);
    ASSERT_EQ(dsa_add_obs(sysdsa, f.empty() ? 0 : int64_t(f[0].size()), true), 0);
    for (size_t v = 0; v < f.size(); v++)
        for (size_t i = 0; i < f[v].size(); i++)
            if (f[v].text())
                dsa_safe_sstore(sysdsa, uint32_t(v + 1), uint32_t(i + 1), f[v].str[i].c_str());
            else
                dsa_store(f[v].num[i], sysdsa, uint32_t(v + 1), uint32_t(i + 1));
}

inline std::string all_text(const frame &f)
{
    std::string s;
    for (const column &c : f) {
        s += c.name + ":";
        for (size_t i = 0; i < c.size(); i++)
            s += " " + c.at(i);
        s += "\n";
    }
    return s;
}

// Everything that makes the dataset: cells, types, formats, labels, characteristics, order.
inline std::string whole_account()
{
    frame f = memory_frame();
    std::string s = "N " + std::to_string(_Nobs) + " " + datalbl + "\n" + all_text(f);
    for (int32_t v = 1; v <= _Kvar; v++) {
        char label[81];
        getvarlab(v, label);
        s += std::to_string(_typlist[v - 1]) + " " + _fmtlist[v - 1] + " " + _lbllist[v - 1] +
             " " + label + "\n";
    }
    std::map<std::string, std::string> chars;
    char owner[33], name[33];
    const char *text;
    for (const void *p = nullptr; (p = charnext(p, owner, name, &text));)
        chars[std::string(owner) + "[" + name + "]"] = text;
    for (const auto &c : chars)
        s += c.first + "=" + c.second + "\n";
    for (int32_t i = 0; i < _Kvar && _srtlist[i]; i++)
        s += std::string("sorted ") + _varlist[_srtlist[i] - 1] + "\n";
    return s;
}

inline uint8_t any_numtype(lcg &rnd) { return uint8_t(T_BYTE + rnd(5)); }

// A number at home in its type: near the edges, in the middle, or missing.
inline double any_number(lcg &rnd, uint8_t type)
{
    if (rnd(6) == 0)
        return mis_of(int(rnd(27)));
    static const double top[] = {100, 32740, 2147483620.0, 1e30, 1e300};
    double m = top[type - T_BYTE], u = double(rnd(1000001)) / 1000000;
    double z = rnd(3) == 0 ? m : rnd(2) ? m * (2 * u - 1) : double(rnd(200)) - 100;
    return kept(type < T_FLOAT ? double(int64_t(z)) : z, type);
}

inline std::string any_text(lcg &rnd, uint32_t most, const char *letters = "abcXYZ 019_,.;-")
{
    std::string s;
    for (uint32_t n = rnd(most + 1); n; n--)
        s += letters[rnd(uint32_t(strlen(letters)))];
    return s;
}

inline column any_column(lcg &rnd, const std::string &name, size_t n, bool text)
{
    column c = {name, text ? uint8_t(1 + rnd(12)) : any_numtype(rnd)};
    for (size_t i = 0; i < n; i++)
        if (text)
            c.str.push_back(any_text(rnd, c.type));
        else
            c.num.push_back(any_number(rnd, c.type));
    return c;
}

struct refusal {
    const char *line;
    int32_t rc;
};
// Each line is refused with its code and leaves the dataset as it is.
inline void expect_refused(std::initializer_list<refusal> rows)
{
    uint64_t was = dsa_hash(sysdsa);
    std::string before = whole_account();
    for (const refusal &r : rows) {
        EXPECT_EQ(run(r.line), r.rc) << r.line << "\n" << session_output;
        EXPECT_EQ(dsa_hash(sysdsa), was) << r.line;
        EXPECT_EQ(whole_account(), before) << r.line;
        EXPECT_EQ(dsa_check(sysdsa), 0) << r.line;
    }
}

inline void expect_ran(std::initializer_list<const char *> lines)
{
    for (const char *line : lines)
        ASSERT_EQ(run(line), 0) << line << "\n" << session_output;
}

// A session with the area of its edition, whatever ran before.
struct with_data : testing::Test {
    void SetUp() override
    {
        session();
        fresh_system(false);
    }
    void TearDown() override
    {
        EXPECT_EQ(dsa_check(sysdsa), 0);
        drop_all();
    }
};
