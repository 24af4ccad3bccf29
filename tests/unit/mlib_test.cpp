// Library files: the layout byte for byte, what is refused, additions that fail, and functions
// that are loaded when they are called.
#include "../mosa_asm.h"
#include "core/bytes.h"
#include "mosa/classdef.h"
#include "mosa/mlib.h"
#include "mosahelp.h"
#include <filesystem>
#include <fstream>
#include <memory>

namespace
{

using bytes = std::string;

bytes slurp(const std::string &path)
{
    std::ifstream f(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(f), {}};
}

void spill(const std::string &path, const bytes &b)
{
    std::ofstream(path, std::ios::binary).write(b.data(), std::streamsize(b.size()));
}

int32_t at32(const bytes &b, size_t at, byteorder order = B_LITTLE)
{
    return int32_t(get32(b.data() + at, order));
}

matobj *simple(const char *name, double z, const char *subname = "")
{
    assembler a;
    return a.op("argc", 0).num(z).op("ret").store(name, MT_REAL, OT_SCALAR, subname);
}

struct library {
    std::unique_ptr<mlib_header> h = std::make_unique<mlib_header>();
    int32_t fd;
    explicit library(const char *path, int32_t mode = ML_WRITE)
    {
        session_output.clear();
        fd = mlib_init(h.get(), path, mode, false);
        omlflush(oml_cur);
    }
    ~library() { ov_close(fd); }
    int32_t add(const matobj *f)
    {
        session_output.clear();
        int32_t rc = mlib_add(fd, h.get(), f);
        omlflush(oml_cur);
        return rc;
    }
    int32_t load(const char *cls, const char *name, int32_t *format)
    {
        mlib_info info;
        return mlib_load1(fd, h.get(), cls, name, &info, format);
    }
};

void fresh(const char *path, int32_t capacity)
{
    ms_begin();
    ov_discard(path);
    ASSERT_EQ(mlib_create(path, capacity), 0);
}

} // namespace

TEST(Mlib, TheLayoutOfAFile)
{
    fresh("la.mlib", 2);
    bytes head = slurp("la.mlib");
    ASSERT_EQ(head.size(), size_t(16 + 74 * 2));
    EXPECT_EQ(head.substr(0, 16), bytes("\x81\x92\xa7\xb9\x02\0\x06\0\0\0\0\0\x02\0\0\0", 16));
    EXPECT_EQ(head.find_first_not_of('\0', 16), bytes::npos);

    matobj *f = simple("abc", 1.5), *g = simple("cls", 2, "abc");
    library lib("la.mlib");
    ASSERT_EQ(lib.add(f), 0) << session_output;
    ASSERT_EQ(lib.add(g), 0) << session_output; // the same name, in a class
    bytes b = slurp("la.mlib");
    int32_t words = f->rows, size = 18 + 4 * words;
    ASSERT_EQ(b.size(), head.size() + 4 * size_t(size));
    EXPECT_EQ(at32(b, 8), 2);
    // most significant first in the first table, though it was written behind
    EXPECT_EQ(at32(b, 24), int32_t(head.size()));
    EXPECT_EQ(at32(b, 16), int32_t(head.size()) + size);
    EXPECT_EQ(at32(b, 28), int32_t(head.size()) + 2 * size);
    EXPECT_EQ(b.substr(32, 66), bytes("abc") + bytes(30, 0) + "abc" + bytes(30, 0));
    EXPECT_EQ(b.substr(98, 66), bytes(33, 0) + "cls" + bytes(30, 0));

    for (byteorder order : {B_LITTLE, B_BIG}) {
        const char *p = b.data() + at32(b, order == B_LITTLE ? 24 : 16);
        EXPECT_EQ(get32(p, order), uint32_t(words) * 4);
        EXPECT_EQ(get32(p + 4, order), uint32_t(words));
        EXPECT_EQ(get32(p + 8, order), uint32_t(MT_REAL));
        EXPECT_EQ(get16(p + 12, order), OT_SCALAR);
        EXPECT_EQ(get16(p + 14, order), 2);
        EXPECT_EQ(get16(p + 16, order), 1210);
        const int32_t *code = mo_code(f);
        bool pool = false;
        for (int32_t k = 0; k < words; k++) {
            if (pool) { // the number is one of 8 bytes
                EXPECT_EQ(std::bit_cast<double>(get64(p + 18 + 4 * k, order)), 1.5);
                break;
            }
            EXPECT_EQ(int32_t(get32(p + 18 + 4 * k, order)), code[k]) << k;
            pool = k > 2 && code[k - 1] == 38;
        }
        EXPECT_TRUE(pool);
    }
    bytes before = b;
    EXPECT_EQ(lib.add(simple("third", 3)), 611);
    EXPECT_EQ(session_output, "library is full\n");
    EXPECT_EQ(slurp("la.mlib"), before);
    EXPECT_EQ(mlib_search(lib.h.get(), "", "abc"), at32(b, 24));
    EXPECT_EQ(mlib_search(lib.h.get(), "abc", ""), at32(b, 24)); // one part is the name
    EXPECT_EQ(mlib_search(lib.h.get(), "cls", "abc"), at32(b, 28));
    EXPECT_EQ(mlib_search(lib.h.get(), "cls", "abd"), 0);
    mlib_info info;
    EXPECT_EQ(mlib_nmbr(lib.fd, lib.h.get(), 1, &info), 0);
    EXPECT_EQ(info.words, words);
    EXPECT_EQ(mlib_nmbr(lib.fd, lib.h.get(), 2, &info), -1);
}

TEST(Mlib, AdditionsThatAreRefused)
{
    fresh("lb.mlib", 5);
    library lib("lb.mlib");
    ASSERT_EQ(lib.add(simple("one", 1)), 0);
    bytes before = slurp("lb.mlib");
    EXPECT_EQ(lib.add(simple("one", 1)), 602);
    EXPECT_EQ(session_output, "one() already member of library\n");
    matobj *f = simple("two", 2);
    int32_t rows = f->rows;
    f->rows = 0;
    EXPECT_EQ(lib.add(f), 9777);
    EXPECT_EQ(session_output, "unexpected 0-length function\n");
    f->rows = rows;
    mo_code(f)[2] = 9999;
    EXPECT_EQ(lib.add(f), 9711);
    EXPECT_EQ(slurp("lb.mlib"), before);
    lib.h->version = 5;
    EXPECT_EQ(lib.add(simple("three", 1)), 610);
    EXPECT_EQ(session_output, "cannot add members to old-format library\n");
}

// Every write fails in turn: the file is as it was, or says that its head is not to be trusted.
TEST(Mlib, FailedWritesLeaveTheFileAsItWas)
{
    fresh("lc.mlib", 400); // its head takes several writes
    matobj *f = simple("one", 1);
    bytes before = slurp("lc.mlib");
    int32_t rc = 1;
    for (int64_t n = 1; rc; n++) {
        ASSERT_LT(n, 50);
        spill("lc.mlib", before);
        library lib("lc.mlib");
        fault_arm(F_WRITE, n, true);
        rc = lib.add(f);
        fault_disarm();
        if (!rc)
            break;
        EXPECT_EQ(rc, 693);
        if (session_output == "could not write into library\n") {
            EXPECT_EQ(slurp("lc.mlib"), before) << n;
        } else
            EXPECT_EQ(session_output, "error writing file; library corrupt\n");
    }
    for (int64_t n = 1;; n++) {
        spill("lc.mlib", before);
        library lib("lc.mlib");
        fault_arm(F_MEM, n, false);
        rc = lib.fd < 0 ? -lib.fd : lib.add(f);
        if (!fault_disarm())
            break;
        EXPECT_TRUE(rc == 909 || rc == 693) << rc;
        EXPECT_FALSE(session_output.empty());
        if (rc == 909) {
            EXPECT_EQ(slurp("lc.mlib"), before);
        }
    }
    // nothing is left of a file that could not be made
    ov_discard("lc.mlib");
    fault_arm(F_WRITE, 1, false);
    EXPECT_EQ(mlib_create("lc.mlib", 4), 693);
    fault_disarm();
    EXPECT_FALSE(path_isfile("lc.mlib"));
}

TEST(Mlib, HeadsOfEveryKind)
{
    fresh("ld.mlib", 2);
    ASSERT_EQ(library("ld.mlib").add(simple("one", 1)), 0);
    const bytes good = slurp("ld.mlib");
    auto opened = [&](const bytes &b) {
        spill("ld.mlib", b);
        library lib("ld.mlib", ML_READ);
        return lib.fd < 0 ? lib.fd : 0;
    };
    auto with = [&](size_t at, const char *text, size_t n) {
        bytes b = good;
        return b.replace(at, n, text, n);
    };
    EXPECT_EQ(opened(good), 0);
    EXPECT_EQ(opened(with(3, "\0", 1)), -610);
    EXPECT_EQ(session_output, "ld.mlib not mosa library\n");
    EXPECT_EQ(opened(with(6, "\1", 1)), -610);
    EXPECT_EQ(session_output, "ld.mlib from a older version of Ovata\n");
    EXPECT_EQ(opened(with(6, "\7", 1)), -610);
    EXPECT_EQ(session_output, "ld.mlib from a more recent version of Ovata\n");
    EXPECT_EQ(opened(with(4, "\3", 1)), -610);
    for (const char *n : {"\3\0\0\0", "\377\377\377\377"})
        EXPECT_EQ(opened(with(8, n, 4)), -610);
    for (const char *n : {"\0\0\0\0", "\1\10\0\0", "\0\0\0\200"})
        EXPECT_EQ(opened(with(12, n, 4)), -610);
    for (size_t n : {size_t(0), size_t(3), size_t(15), size_t(163)}) {
        EXPECT_EQ(opened(good.substr(0, n)), -612) << n;
        EXPECT_EQ(session_output, "could not read ld.mlib\n");
    }
    spill("ld.mlib", good.substr(0, 9));
    library quiet("ld.mlib", ML_READ | ML_QUIET);
    EXPECT_EQ(quiet.fd, -612);
    EXPECT_EQ(session_output, "");

    // a head in the other order, and one from before classes had a place
    bytes big = good;
    big[4] = 1;
    auto turn = [](bytes *b, size_t at, size_t n) {
        std::reverse(b->data() + at, b->data() + at + n);
    };
    turn(&big, 6, 2);
    for (size_t at = 8; at < 32; at += 4)
        turn(&big, at, 4);
    spill("ld.mlib", big);
    int32_t format;
    EXPECT_EQ(library("ld.mlib").load("", "one", &format), 0);
    EXPECT_EQ(format, 1210);
    // what is added is found by everybody
    ASSERT_EQ(library("ld.mlib").add(simple("two", 2)), 0);
    EXPECT_EQ(library("ld.mlib").load("", "two", &format), 0);
    EXPECT_EQ(library("ld.mlib").load("", "one", &format), 0);

    bytes old = good;
    old[6] = 4;
    old.erase(98, 66);
    for (size_t at : {size_t(16), size_t(24)})
        put32(old.data() + at, uint32_t(at32(old, at) - 66), B_LITTLE);
    spill("ld.mlib", old);
    library before("ld.mlib");
    EXPECT_EQ(before.load("", "one", &format), 0);
    EXPECT_STREQ(before.h->cls[0], "");
    EXPECT_EQ(before.add(simple("three", 3)), 610);
}

TEST(Mlib, MembersThatCannotBeUsed)
{
    fresh("le.mlib", 3);
    ASSERT_EQ(library("le.mlib").add(simple("one", 1)), 0);
    const bytes good = slurp("le.mlib");
    auto at = size_t(at32(good, 16 + 12));
    auto load = [&](size_t offset, std::initializer_list<int> what) {
        bytes b = good;
        for (int byte : what)
            b[offset++] = char(byte);
        spill("le.mlib", b);
        int32_t format = 0, rc = library("le.mlib").load("", "one", &format);
        return rc > 0 ? 10000 * rc + format : rc;
    };
    EXPECT_EQ(load(at, {good[at]}), 0);
    EXPECT_EQ(load(at + 16, {0x79, 0x03}), 10889);
    EXPECT_EQ(load(at + 16, {0x7a, 0x03}), 0); // 890
    EXPECT_EQ(load(at + 16, {0xbb, 0x04}), 21211);
    EXPECT_EQ(load(at, {1}), -2);                           // bytes are not words * 4
    EXPECT_EQ(load(at, {0, 0, 0, 1, 0, 0, 64, 0}), -2);     // longer than the file
    EXPECT_EQ(load(at, {0, 0, 0, 0, 0, 0, 0, 0}), -2);      // no code
    EXPECT_EQ(load(at, {0, 0, 0, 128, 0, 0, 0, 0xe0}), -2); // below 0
    EXPECT_EQ(load(at + 8, {8}), -2);                       // no such type
    EXPECT_EQ(load(at + 12, {6}), -2);                      // no such shape
    EXPECT_EQ(load(at + 14, {1}), -2);                      // a matrix
    EXPECT_EQ(load(16 + 12, {1, 0, 0, 0}), -2);             // within the head
    EXPECT_EQ(load(16 + 12, {0, 0, 0, 0x40}), -2);          // behind the end
    EXPECT_EQ(load(16 + 12, {255, 255, 255, 255}), -2);
    EXPECT_EQ(load(40, {'x'}), -1);
    spill("le.mlib", good.substr(0, at + 17));
    int32_t format;
    EXPECT_EQ(library("le.mlib").load("", "one", &format), -2);
}

// What another machine would find is what this one would have written, and the way back.
TEST(Mlib, DefinitionsTurnedTwiceAreThemselves)
{
    ms_begin();
    ASSERT_EQ(ms("struct sd {\n real scalar a, b\n pointer(struct sd scalar) vector p\n}\n"
                 "class parent {\n real scalar x\n static real scalar n\n virtual void f()\n"
                 " void g()\n}\nclass child extends parent {\n virtual void f()\n"
                 " string matrix s\n void new()\n}"),
              0)
        << session_output;
    for (const char *name : {"sd", "parent", "child"}) {
        matobj *f = mo_findfcn("", name, "");
        std::vector<int32_t> w(mo_code(f), mo_code(f) + f->rows), there = w;
        ASSERT_EQ(m_revimage(there.data(), f->rows, f->cols, false), 0) << name;
        EXPECT_NE(there, w);
        EXPECT_EQ(uint32_t(there[0]), __builtin_bswap32(1210));
        std::vector<int32_t> back = there;
        ASSERT_EQ(m_revimage(back.data(), f->rows, f->cols, true), 0) << name;
        EXPECT_EQ(back, w) << name;
        // cut anywhere it is no definition any more
        for (int32_t n = 0; n < f->rows; n++) {
            back = w;
            EXPECT_EQ(m_revimage(back.data(), n, f->cols, false), 9711) << name << n;
        }
    }
    std::vector<int32_t> w{1210, 1210, 140, 0, 3};
    omlflush(oml_cur);
    session_output.clear();
    EXPECT_EQ(m_revstructdef(w.data(), 5, false), 9711);
    w = {1210, 1210, 139, 0, 7, 3};
    EXPECT_EQ(m_revstructdef(w.data(), 6, false), 9711);
    w.assign(23, 0);
    w.push_back(31);
    EXPECT_EQ(m_revclassdef(w.data(), 24, false), 9711);
    w[23] = 30;
    w.push_back(0);
    EXPECT_EQ(m_revclassdef(w.data(), 25, false), 9711);
    omlflush(oml_cur);
    EXPECT_EQ(session_output, "not struct def\nrevstructdef: invalid opcode\n"
                              "classdefrevbytes: error 2\nclassdefrevbytes: error 1\n");
}

TEST(Mlib, TypesThatFilesDoNotKnow)
{
    ms_begin();
    EXPECT_EQ(m_autoload != nullptr, true);
    ASSERT_EQ(ms("struct sd {\n real scalar a\n}"), 0);
    fresh("lf.mlib", 2);
    matobj *f = simple("one", 1);
    f->eltype = 9;
    library lib("lf.mlib");
    EXPECT_EQ(lib.add(f), 0);
    EXPECT_EQ(session_output, "missing itox_orgtype 9\nmissing itox_orgtype 9\n");
    int32_t format;
    EXPECT_EQ(lib.load("", "one", &format), -2);
}

// ---- loading

TEST(MlibLoad, LibrariesAndSingleFiles)
{
    ms_begin();
    ASSERT_EQ(
        ms("real scalar lone() return(1)\nreal scalar ltwo() return(2)\n"
           "struct spair {\n real scalar a\n}\n"
           "class base {\n real scalar n\n virtual real scalar area()\n real scalar twice()\n}\n"
           "real scalar base::area() return(n)\nreal scalar base::twice() return(2*area())\n"
           "class sq extends base {\n virtual real scalar area()\n}\n"
           "real scalar sq::area() return(n*n)"),
        0)
        << session_output;
    EXPECT_EQ(run("mosa mlib create lone, size(20)"), 0) << session_output;
    EXPECT_EQ(run("mosa mlib add lone lone() spair() base() sq()"), 0) << session_output;
    EXPECT_EQ(session_output, "(7 functions added)\n");
    EXPECT_EQ(run("mosa mosave ltwo()"), 0);
    EXPECT_EQ(run("mosa mosave sq(), complete"), 0);
    ASSERT_EQ(ms("real scalar ltwo() return(22)"), 3000); // still there
    EXPECT_EQ(run("mosa drop ltwo()"), 0);
    ASSERT_EQ(ms("real scalar ltwo() return(22)"), 0);
    EXPECT_EQ(run("mosa mlib add lone ltwo()"), 0);
    EXPECT_EQ(run("mosa clear"), 0);
    EXPECT_EQ(run("mosa mlib index"), 0);
    EXPECT_EQ(session_output, ".mlib libraries to be searched are now\n    lmosabase\n    lone\n");
    EXPECT_EQ(ms_value("lone()"), 1);
    EXPECT_EQ(m_getsum().nauto, 1);
    EXPECT_GT(m_albytes, 0);
    EXPECT_EQ(ms_value("ltwo()"), 22); // libraries come first
    EXPECT_EQ(run("mosa drop ltwo()"), 0);
    m_mofirst = 1;
    EXPECT_EQ(ms_value("ltwo()"), 2);
    std::string path;
    EXPECT_TRUE(m_autosearch("base", "twice", &path));
    EXPECT_EQ(path, "lone.mlib");
    EXPECT_TRUE(m_autosearch("", "sq", &path));
    EXPECT_EQ(path, "sq.mo");
    EXPECT_FALSE(m_autosearch("sq", "twice", &path));
    EXPECT_FALSE(m_autosearch("", "", &path));
    m_mofirst = 0;
    // a class, its parent and all their functions, found one by one while they are needed
    ASSERT_EQ(ms("real scalar tryit() {\n class sq scalar s\n class base scalar b\n"
                 " struct spair scalar p\n s.n = 3\n b.n = 4\n p.a = 5\n"
                 " return(100*s.twice() + 10*b.twice() + p.a)\n}\nv = tryit()"),
              0)
        << session_output;
    EXPECT_EQ(ms_value("v"), 1885);
    EXPECT_EQ(run("mosa clear"), 0);
    EXPECT_EQ(m_albytes, 0);
    EXPECT_EQ(ms("none_such()"), 3499);
}

TEST(MlibLoad, OtherVersionsAreToldOfAndPassedOver)
{
    ms_begin();
    ASSERT_EQ(ms("real scalar vone() return(1)"), 0);
    EXPECT_EQ(run("mosa mosave vone()"), 0);
    EXPECT_EQ(run("mosa mlib create lver, size(2)"), 0);
    EXPECT_EQ(run("mosa mlib add lver vone()"), 0);
    EXPECT_EQ(run("mosa clear"), 0);
    EXPECT_EQ(run("mosa mlib index"), 0);
    auto format = [](const char *file, int32_t n) {
        bytes b = slurp(file);
        auto at = size_t(at32(b, size_t(16 + 4 * at32(b, 12))));
        put16(b.data() + at + 16, uint16_t(n), B_LITTLE);
        spill(file, b);
    };
    auto fails = [] {
        EXPECT_EQ(ms("vone()"), 3499);
        return session_output.substr(0, session_output.find("<istmt>"));
    };
    auto told = [](const char *file, const char *version, const char *which) {
        return std::string("(vone() in ") + file + ", compiled by Ovata " + version + ", is too " +
               which + " to be run by this version of Ovata and so was ignored)\n";
    };
    auto squeezed = [](std::string s) { // the lines of a paragraph are filled
        for (size_t k; (k = s.find("\n(")) == 0 || (k = s.find("\n\n")) != s.npos;)
            s.erase(k, 1);
        size_t end = s.find(")\n");
        s.resize(end == s.npos ? s.size() : end + 2);
        for (size_t k = 0; k + 1 < s.size(); k++)
            if (s[k] == '\n')
                s[k] = ' ';
        return s;
    };
    format("lver.mlib", 880);
    format("vone.mo", 1210);
    EXPECT_EQ(ms_value("vone()"), 1); // the next place has a good one
    EXPECT_EQ(run("mosa clear"), 0);
    format("vone.mo", 870);
    EXPECT_EQ(squeezed(fails()), told("lver.mlib", "8.8", "old")); // the first too old
    format("vone.mo", 1211);
    EXPECT_EQ(squeezed(fails()), told("vone.mo", "12.11", "new")); // but too new tells more
    s_outlev = 3;
    EXPECT_EQ(ms("vone()"), 3499);
    EXPECT_EQ(session_output.find("ignored"), bytes::npos);
    s_outlev = 0;
}

TEST(MlibLoad, TheListOfLibraries)
{
    ms_begin();
    std::filesystem::create_directories("place/l");
    for (const char *name :
         {"place/l/lzz.mlib", "place/l/lmosazz.mlib", "place/l/xno.mlib", "place/l/lno.mlib.old",
          "place/l/lno.x.mlib", "place/laa.mlib", "place/l/l23456789012345678901234567890123.mlib"})
        spill(name, "");
    EXPECT_EQ(run("global S_ADO \"place;place\""), 0);
    EXPECT_EQ(run("mosa mlib index"), 0);
    EXPECT_EQ(session_output, ".mlib libraries to be searched are now\n    lmosabase\n"
                              "    lmosazz\n    laa\n    lzz\n");
    for (int32_t k = 0; k < 70; k++)
        spill("place/l/lm" + std::to_string(k) + ".mlib", "");
    mosarehash();
    EXPECT_EQ(m_nlibpath, 50);
    EXPECT_EQ(run("set mosalibs \"lone;ltwo\""), 0) << session_output;
    std::string path;
    EXPECT_FALSE(m_autosearch("", "any", &path));
    EXPECT_EQ(run("mosa mlib query"), 0);
    EXPECT_EQ(session_output, ".mlib libraries to be searched are\n    lone\n    ltwo\n");
    EXPECT_EQ(run("macro drop S_ADO"), 0);
    mosarehash();
    EXPECT_EQ(m_nlibpath, 0);
}

// Every function of the library that comes with the program is fit to run, and can be reached.
TEST(MlibLoad, TheLibraryOfTheSystem)
{
    ms_begin();
    library lib(OVATA_SOURCE_DIR "/ado/base/l/lmosabase.mlib", ML_READ);
    ASSERT_GE(lib.fd, 0) << "the target mosa_library makes it";
    EXPECT_GT(lib.h->nmembers, 20);
    for (int32_t k = 0; k < lib.h->nmembers; k++) {
        const char *cls = lib.h->cls[k], *name = lib.h->name[k];
        EXPECT_FALSE(!*cls && ismosabuiltin(name)) << name << "() is built in";
        const matobj *f = m_autoload(cls, name);
        ASSERT_NE(f, nullptr) << cls << " " << name;
        const char *why = f->cols == MT_STRUCTDEF  ? sd_check(mo_code(f), f->rows)
                          : f->cols == MT_CLASSDEF ? cls_check(mo_code(f), f->rows)
                                                   : m_checkcode(mo_code(f), f->rows);
        EXPECT_EQ(why, nullptr) << cls << " " << name << " " << why;
    }
}

// More than the cache may hold goes between statements, the longest unused first.
TEST(MlibLoad, TheCacheGivesBack)
{
    ms_begin();
    std::string text, add = "mosa mlib add lbig";
    for (int32_t k = 0; k < 300; k++)
        text += "x = " + std::to_string(k + 0.5) + "\n ";
    for (char c = 'a'; c <= 'f'; c++) {
        ASSERT_EQ(ms(std::string("real scalar big_") + c + "() {\n real scalar x\n " + text +
                     "return(1)\n}"),
                  0)
            << session_output;
        add += std::string(" big_") + c + "()";
    }
    EXPECT_EQ(run("mosa mlib create lbig, size(20)"), 0);
    EXPECT_EQ(run(add), 0) << session_output;
    EXPECT_EQ(run("mosa clear"), 0);
    EXPECT_EQ(run("mosa mlib index"), 0);
    EXPECT_EQ(run("set mosacache 10"), 0) << session_output;
    EXPECT_EQ(ms_value("big_a() + big_b() + big_c() + big_d() + big_a() + big_b()"), 6);
    EXPECT_LE(m_albytes, 10 * 1024);
    EXPECT_GT(m_albytes, 0);
    EXPECT_NE(mo_findfcn("", "big_d", ""), nullptr);
    EXPECT_EQ(mo_findfcn("", "big_c", "") && mo_findfcn("", "big_a", ""), false);
    EXPECT_EQ(ms_value("big_c()"), 1); // and is loaded again
}
