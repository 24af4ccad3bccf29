// Types at their edges, names, lookup and temporary names.
#include "area.h"
#include <cmath>

static double through(double z, uint8_t type)
{
    char cell[8];
    cell_store(z, type, cell);
    return cell_data(type, cell);
}
static uint64_t bits(double z) { return std::bit_cast<uint64_t>(z); }

TEST(Variables, AllMissingValuesThroughAllTypes)
{
    for (uint8_t t : {T_BYTE, T_INT, T_LONG, T_FLOAT, T_DOUBLE})
        for (int k = 0; k <= 26; k++)
            EXPECT_EQ(bits(through(mis_of(k), t)), bits(mis_of(k))) << int(t) << " " << k;
    EXPECT_EQ(bits(mis_of(26)), bits(misval_z));
    for (uint8_t t = T_BYTE110; t <= T_FLOAT110; t++)
        EXPECT_EQ(through(mis_of(5), t), misval) << int(t);
    EXPECT_EQ(ovbyte_of_ovdouble(misval_z), 127);
    EXPECT_EQ(ovint_of_ovdouble(misval), 32741);
    EXPECT_EQ(ovlong_of_ovdouble(mis_of(1)), 2147483622);
}

TEST(Variables, IntegersAtTheirEdges)
{
    static const struct {
        uint8_t type;
        double in, out;
    } rows[] = {
        {T_BYTE, 100, 100},         {T_BYTE, 101, misval},      {T_BYTE, -127, -127},
        {T_BYTE, -128, misval},     {T_BYTE, 2.9, 2},           {T_BYTE, -2.9, -2},
        {T_BYTE, -127.9, -127},     {T_BYTE, 100.9, 100},       {T_BYTE, 127.5, misval},
        {T_BYTE, 128, misval},      {T_INT, 32740, 32740},      {T_INT, 32741, misval},
        {T_INT, -32767, -32767},    {T_INT, -32768, misval},    {T_LONG, 2147483620, 2147483620},
        {T_LONG, 2147483621, misval},                           {T_LONG, -2147483647, -2147483647},
        {T_LONG, -2147483648.0, misval},                        {T_LONG, 1e300, misval},
        {T_LONG, -1e-300, 0},       {T_BYTE110, 127, misval},   {T_BYTE110, 126, 126},
        {T_INT110, 32766, 32766},   {T_LONG110, 2147483646, 2147483646},
        {T_LONG110, -2147483648.0, misval},
    };
    for (auto &r : rows)
        EXPECT_EQ(through(r.in, r.type), r.out) << int(r.type) << " " << r.in;
    // A missing value between the letters is . in an integer, and kept by the reals.
    double odd = std::bit_cast<double>(bits(misval) | uint64_t{200} << 40);
    EXPECT_EQ(bits(through(odd, T_LONG)), bits(misval));
    EXPECT_EQ(bits(through(odd, T_FLOAT)), bits(odd));
    EXPECT_EQ(bits(through(odd, T_DOUBLE)), bits(odd));
}

TEST(Variables, FloatsAtTheirEdges)
{
    EXPECT_EQ(through(1e39, T_FLOAT), misval);
    EXPECT_EQ(through(-1e39, T_FLOAT), misval);
    EXPECT_EQ(bits(through(1e-46, T_FLOAT)), 0u);
    EXPECT_EQ(bits(through(-1e-46, T_FLOAT)), 0u) << "positive zero, whatever the sign";
    EXPECT_EQ(through(max_ovfloat, T_FLOAT), max_ovfloat);
    EXPECT_EQ(through(min_ovfloat, T_FLOAT), min_ovfloat);
    // The double just below 2 to the 127th rounds up into missing.
    EXPECT_EQ(through(std::nextafter(0x1p127, 0), T_FLOAT), misval);
    EXPECT_EQ(through(-0x1p1023, T_FLOAT), misval);
    EXPECT_EQ(through(0.1, T_FLOAT), double(0.1f));
    float f;
    EXPECT_EQ(ovfloat(3.5, &f), 0);
    EXPECT_EQ(f, 3.5f);
    EXPECT_EQ(ovfloat(1e300, &f), 1);
    EXPECT_EQ(through(0x1p-122, T_FLOAT110), 0);
    EXPECT_EQ(through(0x1p-120, T_FLOAT110), 0x1p-120);
    EXPECT_EQ(through(0x1p125, T_FLOAT110), misval);
}

TEST(Variables, TextFillsItsCellAndNoMore)
{
    fresh_system(true);
    ASSERT_EQ(add_user(3, "s"), 1);
    ASSERT_EQ(add_user(T_BYTE, "x"), 2);
    ASSERT_EQ(dsa_add_obs(sysdsa, 2, true), 0);
    dsa_store(7, sysdsa, 2, 1);
    dsa_safe_sstore(sysdsa, 1, 1, "abcdef");
    char buf[245];
    EXPECT_STREQ(dsa_sdata(sysdsa, 1, 1, buf), "abc");
    EXPECT_EQ(dsa_data(sysdsa, 2, 1), 7);
    dsa_safe_sstore(sysdsa, 1, 1, "z");
    EXPECT_STREQ(dsa_sdata(sysdsa, 1, 1, buf), "z");
    EXPECT_STREQ(dsa_sdata(sysdsa, 2, 1, buf), "");
}

TEST(Variables, NamesAreChecked)
{
    for (const char *good : {"a", "_", "x1", "Abc_9", "a234567890123456789012345678901z"})
        EXPECT_EQ(chkname(good, true), 0) << good;
    for (const char *bad : {"", "1a", "a.b", "a-b", "x\"", "a|b", "a23456789012345678901234567890123"})
        EXPECT_EQ(chkname(bad, true), 198) << bad;
    EXPECT_EQ(chksinglename("a b", true), 198);
    for (const char *word : {"if", "using", "_n", "float", "byte", "_rc"})
        EXPECT_EQ(chkreskeywrds_quietly(word), 198) << word;
    EXPECT_EQ(chkreserved("if"), 0);
    EXPECT_EQ(chkreskeywrds_quietly("string"), 0);
    fresh_system(true);
    EXPECT_EQ(addvar(T_FLOAT, "in"), -198);
    sysflag = true;
    EXPECT_EQ(addvar(T_FLOAT, "_rc"), 1);
    sysflag = false;
    EXPECT_EQ(addvar(T_FLOAT, "_rc"), -198);
    EXPECT_EQ(addvar(T_FLOAT, "ok"), 2);
    EXPECT_EQ(addvar(T_FLOAT, "ok"), -110);
}

TEST(Variables, LookupWithAbbreviations)
{
    fresh_system(true);
    EXPECT_EQ(ovata_findvar("abc", 0, true), 1);
    EXPECT_EQ(ovata_findvar("abc", 1, false), -111);
    for (const char *n : {"abc", "abd", "xyz"})
        add_user(T_BYTE, n);
    EXPECT_EQ(ovata_findvar("ab", 1, false), -111);
    EXPECT_EQ(ovata_findvar("x", 1, false), 3);
    EXPECT_EQ(ovata_findvar("x", 1, true), -111);
    EXPECT_EQ(ovata_findvar("x", 11, true), 4);
    EXPECT_EQ(ovata_findvar("abd", 1, false), 2);
    EXPECT_EQ(ovata_findvar("ab", 0, true), 4);
    EXPECT_EQ(ovata_findvar("abc", 0, true), -110);
    EXPECT_EQ(ovata_findvar("abc", 10, true), 1);
    EXPECT_EQ(ovata_findvar("1x", 1, false), -198);
    add_user(T_BYTE, "ab");
    EXPECT_EQ(ovata_findvar("ab", 1, false), 4);
    char full[33];
    EXPECT_EQ(unab_var("xy", full), 0);
    EXPECT_STREQ(full, "xyz");
    EXPECT_EQ(sysfindvar("xy"), 0);
    EXPECT_EQ(findvar_in_list("ab", _varlist, 3, false), -1);
}

TEST(Variables, TemporaryNamesAndTheirWindow)
{
    char name[9];
    tmpvctr = 35;
    mktmpvn(name);
    EXPECT_STREQ(name, "__00000Z");
    mktmpvn(name);
    EXPECT_STREQ(name, "__000010");
    EXPECT_TRUE(istmpvn("__00000Z", 35));
    EXPECT_FALSE(istmpvn("__00000Y", 35));
    EXPECT_FALSE(istmpvn("__000011", 35));
    EXPECT_FALSE(istmpvn("__00000z", 0));
    tmpvctr = 2146483646;
    mktmpvn(name);
    EXPECT_EQ(tmpvctr, 0);
    char last[9];
    memcpy(last, name, 9);
    mktmpvn(name);
    EXPECT_STREQ(name, "__000000");
    EXPECT_TRUE(istmpvn(last, 2146483646));
    EXPECT_TRUE(istmpvn(name, 2146483646));
    EXPECT_FALSE(istmpvn("__000005", 2146483646));

    fresh_system(true);
    add_user(T_BYTE, "keep");
    tmpvctr = 50;
    mktmpvn(name);
    add_user(T_BYTE, name);
    add_user(T_BYTE, "behind");
    rmtmpvn(50);
    EXPECT_EQ(_i_Kvar, 2);
    EXPECT_STREQ(_varlist[1], "behind");
    EXPECT_EQ(dsa_check(sysdsa), 0);
}

TEST(Variables, WorkVariablesStandPastTheLimit)
{
    fresh_system(true);
    while (_Kvar < 120)
        add_user(T_BYTE, "x");
    ASSERT_EQ(dsa_add_obs(sysdsa, 3, true), 0);
    EXPECT_EQ(add_user(T_BYTE, "y"), -900);
    EXPECT_EQ(addwrkvar(T_DOUBLE, 2.5), 121);
    EXPECT_EQ(addwrkvar(5, 0), 122);
    EXPECT_EQ(dsa_data(sysdsa, 121, 3), 2.5);
    dsa_truncate_var(sysdsa, uint32_t(_i_Kvar), true);
    EXPECT_EQ(_Kvar, 120);
    EXPECT_EQ(sysdsa->K_max, 120u);
    EXPECT_EQ(dsa_check(sysdsa), 0);
}
