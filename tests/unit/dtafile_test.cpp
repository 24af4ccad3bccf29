// Dataset files: what is saved comes back, and no damaged file does harm.
#include "dtamake.h"
#include "core/rc.h"

static const dta_saveopts save_over = {true, true, true, false, false, true, nullptr};
static const dta_useopts use_all = {};

static int32_t use_bytes(const std::string &bytes)
{
    put_file(temp_name(), bytes);
    return dta_use(temp_name().c_str(), &use_all);
}

static std::string word(lcg &rnd, uint32_t most)
{
    std::string s(rnd(most + 1), 0);
    for (char &c : s)
        c = char('!' + rnd(90));
    return s;
}

static void scatter_data(lcg &rnd)
{
    fresh_system(true);
    // Rows come back with the columns that hold them, so there are some.
    int32_t K = 1 + int32_t(rnd(8)), N = int32_t(rnd(40));
    for (int32_t k = 1; k <= K; k++) {
        static const uint8_t types[] = {1, 9, 100, 244, T_BYTE, T_INT, T_LONG, T_FLOAT, T_DOUBLE};
        uint8_t t = types[rnd(9)];
        std::string name = "v" + std::to_string(k);
        if (add_user(t, name.c_str()) < 0)
            continue;
        (void)!putvarlab(_Kvar, word(rnd, 90).c_str());
        if (!t_isstr(t) && rnd(3) == 0)
            snprintf(_lbllist[_Kvar - 1], 33, "lab%u", rnd(3));
        if (rnd(2))
            (void)!charsave(name.c_str(), "note1", word(rnd, 300).c_str());
    }
    (void)!dsa_add_obs(sysdsa, _Kvar ? N : 0, true);  // rows without variables are not kept
    for (int32_t k = 1; k <= _Kvar; k++)
        for (int32_t i = 1; i <= _Nobs; i++)
            if (t_isstr(_typlist[k - 1]))
                dsa_safe_sstore(sysdsa, uint32_t(k), uint32_t(i), word(rnd, 244).c_str());
            else
                dsa_store(rnd(2) ? mis_of(int(rnd(27))) : double(rnd(70000)) / 3 - 9000, sysdsa,
                          uint32_t(k), uint32_t(i));
    (void)!charsave("_dta", "a", word(rnd, 2000).c_str());
    snprintf(datalbl, sizeof datalbl, "%s", word(rnd, 80).c_str());
    vltable *t = vlallocate("lab1", 0, 0);
    for (uint32_t i = rnd(20); i; i--)
        t = vladdlab(t, int32_t(rnd(100)) - 50, word(rnd, 40).c_str());
    if (_Kvar > 1 && rnd(2)) {
        _srtlist[0] = int16_t(_Kvar);
        _srtlist[1] = 1;
        _srtlist[2] = 0;
    }
    _i_Kvar = _Kvar;
}

TEST(Dtafile, RandomDataComeBackEqual)
{
    std::string name = temp_name();
    for (uint64_t seed = 1; seed <= 1000; seed++) {
        SCOPED_TRACE(seed);
        lcg rnd(seed);
        scatter_data(rnd);
        std::string was = account();
        dta_saveopts o = save_over;
        o.oldformat = seed % 2;
        ASSERT_EQ(dta_save(name.c_str(), &o), 0);
        std::string first = get_file(name);
        ASSERT_EQ(dta_use(name.c_str(), &use_all), 0);
        ASSERT_EQ(account(), was);
        ASSERT_EQ(dsa_check(sysdsa), 0);
        ASSERT_EQ(s_updata, false);
        // The same data give the same bytes, apart from the stamp.
        ASSERT_EQ(dta_save(name.c_str(), &o), 0);
        std::string second = get_file(name);
        first.replace(91, 18, "");
        second.replace(91, 18, "");
        ASSERT_EQ(first, second);
    }
}

TEST(Dtafile, EveryReleaseAndOrderReadsAsItsModernForm)
{
    fresh_system(true);
    ASSERT_EQ(use_bytes(make_release(115, B_LITTLE)), 0);
    const std::string want = account();
    EXPECT_NE(want.find("i_x[note1]=hold"), std::string::npos);
    EXPECT_NE(want.find("label lab 5=two 6=six"), std::string::npos);
    for (const dtalayout *l = dtalayouts; l->release; l++)
        for (byteorder o : {B_LITTLE, B_BIG}) {
            SCOPED_TRACE(testing::Message() << int(l->release) << " order " << int(o));
            ASSERT_EQ(use_bytes(make_release(l->release, o)), 0);
            std::string got = account();
            std::string expect = want;
            if (!l->expansion)
                expect.erase(expect.find("i_x[note1]=hold\n"), 16);
            EXPECT_EQ(got, expect);
            EXPECT_EQ(dsa_check(sysdsa), 0);
        }
}

TEST(Dtafile, OldTypesThatDoNotFitArePromoted)
{
    fresh_system(true);
    std::string b = make_release(111, B_LITTLE);
    // First row: byte 126, int 32760, long 2147483646 are numbers there and too large today.
    size_t row = b.find(std::string("\x05\xd4\xfe", 3));
    ASSERT_NE(row, std::string::npos);
    b[row] = 126;
    b.replace(row + 1, 2, "\xf8\x7f");
    b.replace(row + 3, 4, "\xfe\xff\xff\x7f");
    ASSERT_EQ(use_bytes(b), 0);
    EXPECT_EQ(_typlist[0], T_INT);
    EXPECT_EQ(_typlist[1], T_LONG);
    EXPECT_EQ(_typlist[2], T_DOUBLE);
    EXPECT_EQ(dsa_data(sysdsa, 1, 1), 126);
    EXPECT_EQ(dsa_data(sysdsa, 2, 1), 32760);
    EXPECT_EQ(dsa_data(sysdsa, 3, 1), 2147483646);
    EXPECT_EQ(dsa_data(sysdsa, 3, 3), misval);
    EXPECT_STREQ(_varlist[1], "i_x");
    EXPECT_STREQ(_lbllist[0], "lab");
    EXPECT_STREQ(charfind("i_x", "note1", nullptr), "hold");
    EXPECT_EQ(_srtlist[0], 1);
    EXPECT_EQ(dsa_check(sysdsa), 0);
}

TEST(Dtafile, CutAtEveryLengthAndDamagedInEveryByte)
{
    static const uint8_t releases[] = {102, 105, 106, 108, 110, 113, 115};
    fresh_system(true);
    for (uint8_t r : releases) {
        const std::string whole = make_release(r, B_BIG);
        for (size_t n = 0; n < whole.size(); n++) {
            int32_t rc = use_bytes(whole.substr(0, n));
            ASSERT_EQ(dsa_check(sysdsa), 0) << int(r) << " cut at " << n;
            ASSERT_TRUE(rc == 0 || rc == 610 || rc == 688 || rc == 692) << rc;
            if (rc && n >= dta_layout(r)->hdrlen) {
                ASSERT_EQ(_Kvar, 0);
            }
        }
        for (size_t i = 0; i < whole.size(); i++)
            for (uint8_t v : {0, 0x7f, 0xff}) {
                std::string b = whole;
                b[i] = char(v);
                (void)!use_bytes(b);
                ASSERT_EQ(dsa_check(sysdsa), 0) << int(r) << " byte " << i;
            }
    }
}

TEST(Dtafile, HeadersThatLie)
{
    fresh_system(true);
    add_user(T_BYTE, "mine");
    const std::string good = make_release(115, B_LITTLE);
    auto with = [&](size_t at, const std::string &s) {
        std::string b = good;
        b.replace(at, s.size(), s);
        return b;
    };
    EXPECT_EQ(use_bytes(with(0, "\x74")), 610);
    EXPECT_EQ(use_bytes(with(0, "\x6d")), 610);
    EXPECT_EQ(use_bytes(with(2, "\x02")), 609);
    EXPECT_EQ(use_bytes(with(4, "\xff\xff")), 688);
    EXPECT_EQ(use_bytes(with(108, "x")), 610);
    EXPECT_EQ(_Kvar, 1) << "a bad header leaves the data alone";
    mem_use before = mem_live();
    EXPECT_EQ(use_bytes(with(6, "\xff\xff\xff\x7f")), 692);
    EXPECT_LT(mem_live().bytes, before.bytes + 100000);
    EXPECT_EQ(_Kvar, 0);
    EXPECT_EQ(use_bytes(with(109, std::string(1, '\0'))), 610);
    EXPECT_EQ(use_bytes(with(109, "\xf5")), 610);
    EXPECT_EQ(dta_use("/tmp/no_such_file.dta", &use_all), 601);
}

TEST(Dtafile, DamagedLabelsAreLeftOutAndTheDataKept)
{
    fresh_system(true);
    const std::string good = make_release(115, B_LITTLE);
    size_t table = good.size() - 32;
    for (size_t at : {table, table + 4, table + 8, table + 12, table + 16, table + 20}) {
        std::string b = good;
        b.replace(at, 4, "\xff\xff\xff\x7f");
        ASSERT_EQ(use_bytes(b), 0);
        EXPECT_EQ(_Nobs, 3);
        if (at == table + 20) {
            EXPECT_TRUE(vlfind("lab"));  // 5, then a larger value: still in order
        } else {
            EXPECT_FALSE(vlfind("lab")) << at - table;
        }
    }
    std::string b = good;
    b.replace(table + 8, 8, std::string("\0\0\0\0\2\0\0\0", 8));  // texts overlap
    ASSERT_EQ(use_bytes(b), 0);
    char text[8];
    EXPECT_EQ(vlfindval(vlfind("lab"), 6, text, 8), 1);
    EXPECT_STREQ(text, "x");
}

TEST(Dtafile, NothingButTheVariables)
{
    fresh_system(true);
    std::string name = temp_name();
    dta_saveopts o = save_over;
    o.emptyok = false;
    EXPECT_EQ(dta_save(name.c_str(), &o), 111);
    EXPECT_EQ(dta_save(name.c_str(), &save_over), 0);
    EXPECT_EQ(get_file(name).size(), 109u + 2 + 5);
    EXPECT_EQ(dta_use(name.c_str(), &use_all), 0);
    add_user(T_BYTE, "a");
    add_user(5, "b");
    add_user(T_INT, "es");
    ASSERT_EQ(pi_dsa_mvvar(sysdsa, 3, 1, nullptr), 0);
    o = save_over;
    o.replace = false;
    EXPECT_EQ(dta_save(name.c_str(), &o), 602);
    o = save_over;
    o.esample = "es";
    ASSERT_EQ(dsa_add_obs(sysdsa, 2, true), 0);
    EXPECT_EQ(dta_save(name.c_str(), &o), 0);
    EXPECT_EQ(dta_use(name.c_str(), &use_all), 0);
    EXPECT_EQ(_Kvar, 2);
    EXPECT_STREQ(_varlist[0], "a");
    // Part of the variables, part of the rows.
    ASSERT_EQ(use_bytes(make_release(115, B_BIG)), 0);
    ASSERT_EQ(dta_save(name.c_str(), &save_over), 0);
    const uint8_t wanted[] = {0, 0, 1, 0, 0, 1};
    auto odd = [](void *, int32_t, int32_t row) { return row % 2 == 1; };
    dta_useopts part = {false, nullptr, odd, nullptr, wanted};
    ASSERT_EQ(dta_use(name.c_str(), &part), 0);
    EXPECT_EQ(_Kvar, 2);
    EXPECT_EQ(_Nobs, 2);
    EXPECT_EQ(dsa_data(sysdsa, 1, 1), 70000);
    EXPECT_EQ(dsa_data(sysdsa, 1, 2), misval);
    EXPECT_EQ(_srtlist[0], 0);
    EXPECT_FALSE(vlfind("lab"));
    EXPECT_EQ(dsa_check(sysdsa), 0);
}

TEST(Dtafile, FormatsOfOlderFiles)
{
    static const struct {
        const char *now, *then;
    } rows[] = {{"%tc", "%15.0g"},      {"%tCHH:MM", "%15.0g"}, {"%td", "%d"},
                {"%tdD_m_Y", "%d"},     {"%d", "%d"},           {"%dD_m", "%d"},
                {"%-td", "%-td"},       {"%tm", "%tm"},         {"%tb", "%9.0g"},
                {"%tg", "%10.0g"},      {"%9.2f", "%9.2f"}};
    for (auto &r : rows) {
        char out[12];
        get113fmt(out, r.now);
        EXPECT_STREQ(out, r.then) << r.now;
    }
}

TEST(Dtafile, FailedWritesAndRefusedMemory)
{
    std::string name = temp_name();
    for (fault_kind kind : {F_WRITE, F_MEM})
        for (int stay = 0; stay <= 1; stay++)
            for (int n = 1;; n++) {
                lcg rnd(12);
                scatter_data(rnd);
                std::string was = account();
                unlink(name.c_str());
                fault_arm(kind, n, stay);
                int32_t rc = dta_save(name.c_str(), &save_over);
                int64_t hits = fault_disarm();
                ASSERT_EQ(account(), was);
                if (!hits) {
                    ASSERT_EQ(rc, 0);
                    break;
                }
                ASSERT_EQ(rc, kind == F_WRITE ? 699 : 909);
                ASSERT_NE(access(name.c_str(), F_OK), 0);
            }
    for (fault_kind kind : {F_READ, F_MEM, F_BREAK})
        for (int n = 1;; n++) {
            fresh_system(true);
            put_file(name, make_release(107, B_BIG));
            fault_arm(kind, n, true);
            int32_t rc = dta_use(name.c_str(), &use_all);
            int64_t hits = fault_disarm();
            stopflag = 0;
            ASSERT_EQ(dsa_check(sysdsa), 0);
            if (!hits) {
                ASSERT_EQ(rc, 0);
                break;
            }
            if (rc) {
                ASSERT_EQ(_Kvar, 0);
                ASSERT_EQ(vlfind("lab"), nullptr);
            }
        }
    unlink(name.c_str());
}
