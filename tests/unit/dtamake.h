// tests/unit/dtamake.h - dataset files of any release and order, byte by byte from the rows of
// the layout; and a plain account of a dataset to compare with.
#pragma once
#include "area.h"
#include "core/bytes.h"
#include "data/dtafmt.h"
#include <algorithm>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <unistd.h>

struct madefile {
    std::string bytes;
    byteorder o;
    void num(int64_t v, int w)
    {
        char b[8];
        if (w == 1)
            b[0] = char(v);
        else if (w == 2)
            put16(b, uint16_t(v), o);
        else if (w == 4)
            put32(b, uint32_t(v), o);
        else
            put64(b, uint64_t(v), o);
        bytes.append(b, size_t(w));
    }
    void text(const std::string &s, size_t w)
    {
        std::string t = s.substr(0, w);
        t.resize(w, 0);
        bytes += t;
    }
};

// Five numbers and a text: b i l f d s5, sorted by b, three rows, the last all missing.
inline std::string make_release(uint8_t release, byteorder o)
{
    const dtalayout *lay = dta_layout(release);
    madefile f;
    f.o = release == 102 ? B_LITTLE : o;
    constexpr int K = 6, N = 3;
    dtahdr h = {};
    h.release = release;
    h.order = f.o;
    h.filetype = 1;
    h.K = K;
    h.N = N;
    snprintf(h.label, sizeof h.label, "made");
    snprintf(h.stamp, sizeof h.stamp, "21 Nov 2026 03:17");
    uint8_t head[128];
    dta_puthdr(lay, &h, head);
    f.bytes.assign(reinterpret_cast<char *>(head), lay->hdrlen);
    f.bytes += lay->letters ? std::string("bilfd") + char(127 + 5) : "\xfb\xfc\xfd\xfe\xff\x05";
    const char *names[K] = {"b", release < 107 ? "i.x" : "i_x", "l", "f", "d", "s"};
    for (const char *n : names)
        f.text(n, lay->width[DS_NAMES]);
    for (int i = 0; i <= K; i++)
        f.num(i == 0 ? 1 : 0, 2);
    const char *fmts[K] = {"%8.0g", "%8.0g", "%12.0g", "%9.0g", "%10.0g", "%9s"};
    for (const char *t : fmts)
        f.text(t, lay->width[DS_FMTS]);
    for (int i = 0; i < K; i++)
        f.text(i == 0 ? "lab" : "", lay->width[DS_LBLS]);
    for (int i = 0; i < K; i++)
        f.text(i == 1 ? "an integer" : "", lay->width[DS_VARLABS]);
    if (lay->expansion) {
        int w = lay->expansion == 3 ? 9 : 33, lenw = lay->expansion - 1;
        f.num(7, 1);
        f.num(3, lenw);
        f.text("???", 3);
        f.num(1, 1);
        f.num(2 * w + 5, lenw);
        f.text(release < 107 ? "i.x" : "i_x", size_t(w));
        f.text("note1", size_t(w));
        f.text("hold", 5);
        f.num(0, 1);
        f.num(0, lenw);
    }
    bool old = release < 112;
    double olddouble = release < 108 ? misval_107 : misval;
    for (int i = 0; i < N; i++) {
        bool miss = i == N - 1;
        f.num(miss ? (old ? 127 : 101) : 5 + i, 1);
        f.num(miss ? (old ? 32767 : 32741) : -300 + i, 2);
        f.num(miss ? (old ? 2147483647 : 2147483621) : 70000 + i, 4);
        f.num(std::bit_cast<int32_t>(miss ? fltmis : 1.5f + float(i)), 4);
        f.num(std::bit_cast<int64_t>(miss ? olddouble : -2.25 * (i + 1)), 8);
        f.text(miss ? "" : i ? "full5" : "ab", 5);
    }
    if (lay->labname) {
        f.num(8 + 16 + 8, 4);
        f.text("lab", lay->labname);
        f.text("", 3);
        f.num(2, 4);
        f.num(8, 4);
        f.num(4, 4);
        f.num(0, 4);
        f.num(5, 4);
        f.num(6, 4);
        f.text("six", 4);
        f.text("two", 4);
    } else {
        f.num(2, 2);
        f.text("lab", 10);
        f.num(5, 2);
        f.num(6, 2);
        f.text("two", 8);
        f.text("six", 8);
    }
    return f.bytes;
}

inline std::string temp_name()
{
    // Thousands of small files: in memory where the system has a place for that.
    const char *dir = access("/dev/shm", W_OK) ? "/tmp" : "/dev/shm";
    return dir + ("/ovata_test_" + std::to_string(getpid()) + ".dta");
}
inline void put_file(const std::string &name, const std::string &bytes)
{
    std::ofstream(name, std::ios::binary).write(bytes.data(), std::streamsize(bytes.size()));
}
inline std::string get_file(const std::string &name)
{
    std::ifstream f(name, std::ios::binary);
    return {std::istreambuf_iterator<char>(f), {}};
}

// The dataset in memory as text: everything a file keeps.
inline std::string account()
{
    std::string s = std::string(datalbl) + "|" + std::to_string(_Nobs) + "\n";
    char buf[245], lab[81];
    for (int32_t k = 1; k <= _Kvar; k++) {
        getvarlab(k, lab);
        s += std::string(_varlist[k - 1]) + " " + std::to_string(_typlist[k - 1]) + " " +
             _fmtlist[k - 1] + " " + _lbllist[k - 1] + " " + lab + ":";
        for (int32_t i = 1; i <= _Nobs; i++) {
            if (t_isstr(_typlist[k - 1])) {
                s += std::string(dsa_sdata(sysdsa, uint32_t(k), uint32_t(i), buf)) + ",";
                continue;
            }
            snprintf(buf, sizeof buf, "%a,", dsa_data(sysdsa, uint32_t(k), uint32_t(i)));
            s += buf;
        }
        s += "\n";
    }
    for (int i = 0; _srtlist[i]; i++)
        s += std::to_string(_srtlist[i]) + " ";
    std::vector<std::string> lines;
    char owner[33], name[33];
    const char *text;
    for (const void *p = nullptr; (p = charnext(p, owner, name, &text));)
        lines.push_back(std::string(owner) + "[" + name + "]=" + text + "\n");
    for (void *p = nullptr; (p = dmnext(p, name, DM_VALLABEL, nullptr));) {
        auto t = static_cast<vltable *>(p);
        std::string line = std::string("label ") + name;
        for (int32_t i = 0; i < vlgetcount(t); i++) {
            int32_t v;
            vlgetofi(t, i, &text, &v);
            line += " " + std::to_string(v) + "=" + text;
        }
        lines.push_back(line + "\n");
    }
    std::sort(lines.begin(), lines.end());
    for (auto &l : lines)
        s += l;
    return s;
}
