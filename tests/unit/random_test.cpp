#include "stats/random.h"
#include "core/state.h"
#include <cstring>
#include <gtest/gtest.h>
#include <string>

TEST(random, seed_strings)
{
    char text[42], before[42];
    seturnseed_i4(123456789);
    geturnseed(text);
    EXPECT_STREQ(text, "X075bcd151f123bb5159a55e50022865700043e55");
    seturnseed_i4(5);
    geturnseed(text);
    EXPECT_STREQ(text, "X58a3adc9c43f462544a474abacbdd93d00042793");
    double first = urnuni();
    seturnseed_i4(-5);
    EXPECT_EQ(urnuni(), first);
    EXPECT_EQ(seturnseed(text), 0);
    EXPECT_EQ(urnuni(), first);
    // A refusal leaves the state as it was.
    geturnseed(before);
    std::string s = text;
    s[20] = s[20] == '1' ? '2' : '1';
    std::string upper = text;
    upper[2] = 'A';
    for (const std::string &bad : {s, upper, std::string(text).substr(0, 40), std::string("X"),
                                   std::string(text, 33) + "0005" + std::string(text + 37)}) {
        EXPECT_EQ(seturnseed(bad.c_str()), 1) << bad;
        geturnseed(text);
        EXPECT_STREQ(text, before);
    }
    // The short form means the first version: 33 characters and their checksum.
    char shorter[42];
    strcpy(shorter, before);
    uint32_t h = 0;
    for (int i = 0; i < 33; i++)
        h = uint8_t(shorter[i]) + 31u * h;
    snprintf(shorter + 33, 5, "%04x", h % 20009);
    EXPECT_EQ(seturnseed(shorter), 0);
    EXPECT_EQ(ver_rng, 1);
    EXPECT_EQ(iurnuni() != 0, true);
}

TEST(random, versions)
{
    static const int16_t rows[][2] = {{1100, 1}, {1110, 1}, {1111, 4}, {1115, 4}, {1120, 2},
                                      {1200, 3}, {1201, 4}, {1210, 4}};
    for (auto &r : rows)
        EXPECT_EQ(ver_rng_of_vernum(r[0]), r[1]) << r[0];
    int16_t was = vernum;
    vernum = 1120;
    seturnseed_i4(1);
    EXPECT_EQ(ver_rng, 2);
    vernum = was;
}

TEST(random, old_generator)
{
    rndseed = 1001;
    EXPECT_EQ(ovrandom(), double(1001LL * 69069 % 2147483648LL) / 2147483648.0);
    int64_t s = rndseed;
    EXPECT_EQ(ovrandom(), double(s * 69069 % 2147483648LL) / 2147483648.0);
}
