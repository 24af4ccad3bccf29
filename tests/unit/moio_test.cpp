// Matrix streams: their bytes, graphs of pointers, streams of the other order, and every way in
// which reading and writing fails.
#include "../mosa_asm.h"
#include "core/bytes.h"
#include "mosa/moio.h"
#include "mosahelp.h"
#include <unistd.h>

namespace
{

using bytes = std::string;
bytes operator""_b(const char *p, size_t n)
{
    return {p, n};
}

struct stream {
    int32_t fd;
    explicit stream(const bytes &b = "") : fd(ov_open("stream", OV_REPLACE))
    {
        EXPECT_EQ(lovata_write(fd, b.data(), int64_t(b.size())), int64_t(b.size()));
        ov_close(fd);
        fd = ov_open("stream", OV_UPDATE);
    }
    ~stream() { ov_close(fd); }
    stream(const stream &) = delete;
    stream &operator=(const stream &) = delete;
    bytes all() const
    {
        lseek(fd, 0, SEEK_SET);
        bytes b(size_t(ov_left(fd)), 0);
        EXPECT_EQ(lovata_read(fd, b.data(), int64_t(b.size())), int64_t(b.size()));
        return b;
    }
};

bytes written(matobj *m, moio_code want = MOIO_GOOD)
{
    stream s;
    EXPECT_EQ(moio_write(s.fd, m), want);
    return s.all();
}

moio_code got(const bytes &b, matobj **m)
{
    stream s(b);
    char name[33];
    return moio_read(s.fd, m, name);
}

// What a stream holds as text, or the code.
std::string shown(const bytes &b)
{
    matobj *m = nullptr;
    moio_code rc = got(b, &m);
    if (rc)
        return std::to_string(rc);
    std::string text = show(m);
    m->links++;
    mo_unlink(m);
    return text;
}

matobj *global(const char *name)
{
    return findlvl0mat(name);
}

bytes object(int32_t key, const bytes &name = "")
{
    bytes b = "OBJ\0\1"_b + name + bytes(33 - name.size(), 0) + bytes(4, 0);
    put32(b.data() + b.size() - 4, uint32_t(key), B_LITTLE);
    return b;
}

bytes matrix(char letter, int32_t rows, int32_t cols, byteorder order = B_LITTLE)
{
    bytes b = "MAT\0"_b + letter + bytes(8, 0);
    put32(b.data() + 5, uint32_t(rows), order);
    put32(b.data() + 9, uint32_t(cols), order);
    return b;
}

bytes number(double z, byteorder order = B_LITTLE)
{
    bytes b(8, 0);
    put64(b.data(), std::bit_cast<uint64_t>(z), order);
    return b;
}

bytes whole(int32_t n, byteorder order = B_LITTLE)
{
    bytes b(4, 0);
    put32(b.data(), uint32_t(n), order);
    return b;
}

const bytes head = "MOTOP\0\0\2"_b, headbig = "MOTOP\0\0\1"_b, end = "TAM\0JBO\0"_b,
            tail = "POTOM\0"_b;

} // namespace

TEST(Moio, BytesOfEveryType)
{
    ms_begin();
    ASSERT_EQ(ms("r = (1, .a)\nc = (1+2i, 3)\ns = (\"ab\", \"\", char(0))\ne = J(0, 5, 0)\n"
                 "m = 7\np = (&m, NULL, &m, &rows_of())\n"),
              3499);
    ASSERT_EQ(ms("real scalar f() return(1)\np = (&m, NULL, &m, &f())\n"
                 "ring = NULL\nring = &ring\nstruct pair {\n real scalar a\n string matrix b\n}\n"
                 "struct pair scalar make() {\n struct pair scalar t\n t.a = 2\n return(t)\n}\n"
                 "t = make()"),
              0)
        << session_output;
    bytes r = head + object(1, "r") + matrix('R', 1, 2) + number(1) +
              number(std::bit_cast<double>(0x7fe0010000000000u)) + end + tail;
    EXPECT_EQ(written(global("r")), r);
    bytes c = head + object(1, "c") + matrix('C', 1, 2) + number(1) + number(3) + number(2) +
              number(0) + end + tail;
    EXPECT_EQ(written(global("c")), c);
    bytes s = head + object(1, "s") + matrix('S', 1, 3) + whole(2) + "ab" + whole(0) + whole(1) +
              "\0"_b + end + tail;
    EXPECT_EQ(written(global("s")), s);
    EXPECT_EQ(written(global("e")), head + object(1, "e") + matrix('R', 0, 5) + end + tail);
    bytes seven = object(2, "m") + matrix('R', 1, 1) + number(7) + end;
    bytes p = head + object(1, "p") + matrix('P', 1, 4) + "NEW\0"_b + seven + "NUL\0KEY\0"_b +
              whole(2) + "NUL\0"_b + end + tail;
    EXPECT_EQ(written(global("p")), p);
    bytes ring = head + object(1, "ring") + matrix('P', 1, 1) + "KEY\0"_b + whole(1) + end + tail;
    EXPECT_EQ(written(global("ring")), ring);
    bytes t = head + object(1, "t") + matrix('T', 1, 1) + "NEW\0"_b + object(2) +
              matrix('P', 2, 1) + "NEW\0"_b + object(3) + matrix('R', 1, 1) + number(2) + end +
              "NEW\0"_b + object(4) + matrix('S', 0, 0) + end + end + end + tail;
    EXPECT_EQ(written(global("t")), t);
    for (const auto &[stream, want] : std::initializer_list<std::pair<bytes, const char *>>{
             {r, "R1,2:1 ."}, {c, "C1,2:1+2i 3+0i"}, {t, "T1,1:1"}, {p, "P1,4:1 0 1 0"}})
        EXPECT_EQ(shown(stream), want);
    matobj *m;
    char name[33];
    {
        stream both(p + ring + s);
        ASSERT_EQ(moio_read(both.fd, &m, name), 0);
        EXPECT_STREQ(name, "p");
        EXPECT_EQ(mo_pel(m)[0], mo_pel(m)[2]);
        EXPECT_EQ(mo_pel(m)[0]->links, 2);
        EXPECT_EQ(m->links, 0);
        mo_free(m);
        ASSERT_EQ(moio_read(both.fd, &m, name), 0); // a file may hold several
        EXPECT_EQ(mo_pel(m)[0], m);
        EXPECT_EQ(m->links, 1);
        mo_free(m);
        ASSERT_EQ(moio_read(both.fd, &m, name), 0);
        EXPECT_EQ(bytes(sel_text(mo_sel(m)[2]), 1), "\0"_b);
        mo_free(m);
        EXPECT_EQ(moio_read(both.fd, &m, name), MOIO_END);
        EXPECT_EQ(m, nullptr);
    }
    EXPECT_EQ(dm_dtyp[DM_MOSAKEYS], nullptr);
}

TEST(Moio, TheOtherOrder)
{
    ms_begin();
    EXPECT_EQ(shown(headbig + object(1) + matrix('R', 1, 2, B_BIG) + number(1.5, B_BIG) +
                    number(-2, B_BIG) + end + tail),
              "R1,2:1.5 -2");
    EXPECT_EQ(shown(headbig + object(1) + matrix('S', 1, 1, B_BIG) + whole(3, B_BIG) + "abc" + end +
                    tail),
              "S1,1:abc");
    // keys mean nothing but themselves
    matobj *m;
    ASSERT_EQ(got(headbig + object(16777216) + matrix('P', 1, 2, B_BIG) + "NEW\0"_b +
                      object(33554432) + matrix('R', 0, 0) + end + "KEY\0"_b + whole(33554432) +
                      end + tail,
                  &m),
              0);
    EXPECT_EQ(mo_pel(m)[0], mo_pel(m)[1]);
    mo_free(m);
}

TEST(Moio, WhatCannotBeWritten)
{
    ms_begin();
    ASSERT_EQ(ms("class k {\n real scalar a\n}\no = k()\nx = J(300, 300, 1)\n"
                 "real scalar fn() return(1)\npo = &o"),
              0);
    EXPECT_EQ(written(mo_findfcn("", "fn", ""), MOIO_FUNCTION), "");
    written(global("o"), MOIO_TYPE);
    written(global("po"), MOIO_TYPE);
    EXPECT_EQ(shown(head + object(1) + matrix(0, 1, 1) + end + tail), "2");
    int32_t rc = 1;
    for (int64_t n = 1; rc; n++) {
        ASSERT_LT(n, 100);
        stream s;
        fault_arm(F_WRITE, n, true);
        rc = moio_write(s.fd, global("x"));
        fault_disarm();
        EXPECT_TRUE(rc == 0 || rc == MOIO_WRITE) << rc;
    }
    // struct elements that are empty
    matobj *t = m_mktmat(MO_STRUCT, 1, 1);
    written(t, MOIO_KEY);
    mo_free(t);
}

TEST(Moio, WhatCannotBeRead)
{
    ms_begin();
    const bytes one = matrix('R', 1, 1) + number(1) + end;
    EXPECT_EQ(shown(""), "8");
    EXPECT_EQ(shown(head + object(1) + "MAT\0"_b), "5");
    EXPECT_EQ(shown("MOTOP\0\0\3"_b + object(1) + one + tail), "5");
    EXPECT_EQ(shown("MOTOQ\0\0\2"_b + object(1) + one + tail), "5");
    bytes fcn = object(1), other = object(1);
    fcn[4] = 2;
    other[4] = 9;
    EXPECT_EQ(shown(head + fcn + one + tail), "7");
    EXPECT_EQ(shown(head + other + one + tail), "2");
    EXPECT_EQ(shown(head + object(1) + matrix('K', 1, 1) + number(1) + end + tail), "2");
    EXPECT_EQ(shown(head + object(1) + matrix('R', -1, 1) + end + tail), "5");
    EXPECT_EQ(shown(head + object(1) + matrix('C', 2147483647, 2147483647) + end + tail), "9");
    EXPECT_EQ(shown(head + object(1) + matrix('R', 2147483647, 4) + end + tail), "5");
    EXPECT_EQ(shown(head + object(1) + matrix('S', 1, 1) + whole(-1) + end + tail), "5");
    EXPECT_EQ(shown(head + object(1) + matrix('S', 1, 1) + whole(2000000000) + end + tail), "5");
    bytes p = head + object(1) + matrix('P', 1, 1);
    EXPECT_EQ(shown(p + "KEY\0"_b + whole(2) + end + tail), "6");
    EXPECT_EQ(shown(p + "NEW\0"_b + object(1) + one + end + tail), "5"); // a key twice
    EXPECT_EQ(shown(p + "OLD\0"_b + end + tail), "5");
    bytes t = head + object(1) + matrix('T', 1, 1);
    EXPECT_EQ(shown(t + "NUL\0"_b + end + tail), "6");
    EXPECT_EQ(shown(t + "NEW\0"_b + object(2) + one + end + tail), "5"); // no instance
    // numbers that nothing reckons
    EXPECT_EQ(shown(head + object(1) + matrix('R', 1, 2) + number(__builtin_nan("")) +
                    number(-__builtin_inf()) + end + tail),
              "R1,2:. .");
}

// Cut at any byte, and with memory refused at any place, nothing is read and nothing is kept.
TEST(Moio, CutsAndRefusalsLeaveNothingBehind)
{
    ms_begin();
    const bytes ring = head + object(1) + matrix('P', 1, 3) + "NEW\0"_b + object(2) +
                       matrix('P', 1, 2) + "KEY\0"_b + whole(1) + "NEW\0"_b + object(3) +
                       matrix('P', 1, 1) + "KEY\0"_b + whole(2) + end + end + "NUL\0"_b +
                       "NEW\0"_b + object(4) + matrix('S', 1, 1) + whole(3) + "abc" + end + end +
                       tail;
    EXPECT_EQ(shown(ring), "P1,3:1 0 1");
    auto live = [] {
        mo_reinit();
        return m_getsum().nmat;
    };
    int32_t before = live();
    matobj *m;
    for (size_t n = 1; n < ring.size(); n++) {
        EXPECT_EQ(got(ring.substr(0, n), &m), MOIO_FORMAT) << n;
        ASSERT_EQ(live(), before) << n;
    }
    for (int64_t n = 1;; n++) {
        mo_reinit();
        fault_arm(F_MEM, n, true);
        moio_code rc = got(ring, &m);
        int64_t hits = fault_disarm();
        m_xrc = 0;
        if (!hits) {
            EXPECT_EQ(rc, 0);
            mo_free(m);
            before = live(); // a circle is nobody's to open
            break;
        }
        EXPECT_EQ(rc, MOIO_MEMORY);
        ASSERT_EQ(live(), before) << n;
    }
    fault_arm(F_READ, 1, true);
    EXPECT_EQ(got(ring, &m), MOIO_FORMAT);
    fault_disarm();
    EXPECT_EQ(live(), before);
    EXPECT_EQ(dm_dtyp[DM_MOSAKEYS], nullptr);
}

TEST(Moio, DeepGraphs)
{
    ms_begin();
    ASSERT_EQ(ms("pointer chain(real scalar n) {\n pointer vector p\n real scalar i\n p = NULL\n"
                 " for (i=1; i<=n; i++) p = &(p, NULL)\n return(p)\n}\nc = chain(20000)"),
              0)
        << session_output;
    bytes b = written(global("c"));
    matobj *m;
    ASSERT_EQ(got(b, &m), 0);
    int32_t depth = 0;
    for (const matobj *at = m; at; at = mo_pel(at)[0])
        depth++;
    EXPECT_EQ(depth, 20001);
    mo_free(m);
}
