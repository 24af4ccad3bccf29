#include "core/mem.h"
#include "core/rc.h"
#include "interp/dm.h"
#include "output/print.h"
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <map>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

// Types nobody else in the tests uses.
constexpr int32_t T1 = DM_BYOBS, T2 = DM_GRAPH;

struct dm : testing::Test {
    void SetUp() override { s_outlev = 9; }
    void TearDown() override
    {
        dmzap(T1);
        dmzap(T2);
        s_outlev = 0;
    }
};

const char *text(void *p) { return p ? static_cast<const char *>(p) : "(absent)"; }
int32_t put(const char *name, int32_t type, const char *value)
{
    return dmsave(name, type, 0, value, strlen(value) + 1);
}

// Both chains of every record agree with each other and with the tables.
void check_chains()
{
    size_t byname = 0, bytype = 0;
    for (int32_t h = 0; h < dm_nhash; h++)
        for (dmrec *r = dm_hname[h], *prev = nullptr; r; prev = r, r = r->nnext, byname++) {
            ASSERT_EQ(r->nprev, prev);
            ASSERT_EQ(uint32_t(r->hash), dm_hash(r->name));
            ASSERT_EQ(uint32_t(r->hash) % dm_nhash, uint32_t(h));
            ASSERT_LE(r->len, r->cap);
        }
    for (int32_t t = 0; t < DM_NTYPE; t++)
        for (dmrec *r = dm_dtyp[t], *prev = nullptr; r; prev = r, r = r->tnext, bytype++) {
            ASSERT_EQ(r->tprev, prev);
            ASSERT_EQ(r->type, t);
        }
    ASSERT_EQ(byname, bytype);
}

TEST_F(dm, hash_of_names)
{
    EXPECT_EQ(dm_hash(""), 0u);
    EXPECT_EQ(dm_hash("ab"), 97u * 31 + 98);
    EXPECT_EQ(dm_hash("\xff"), 255u);  // bytes count unsigned
}

TEST_F(dm, newest_of_a_name_is_found_first)
{
    ASSERT_EQ(put("x", T1, "old"), 0);
    ASSERT_EQ(put("x", T1, "new"), 0);
    ASSERT_EQ(put("x", T2, "other"), 0);
    EXPECT_STREQ(text(dmfind0("x", T1)), "new");
    EXPECT_STREQ(text(dmfindany("x")), "other");
    void *p = dmnamenext(dmfindany("x"), -1);
    EXPECT_STREQ(text(p), "new");
    p = dmnamenext(p, T1);
    EXPECT_STREQ(text(p), "old");
    EXPECT_EQ(dmnamenext(p, -1), nullptr);
    dmrm(dmfind0("x", T1));
    EXPECT_STREQ(text(dmfind0("x", T1)), "old");
    check_chains();
}

TEST_F(dm, long_names_are_cut_everywhere_alike)
{
    std::string long40(40, 'a'), long32(32, 'a');
    ASSERT_EQ(put(long40.c_str(), T1, "v"), 0);
    EXPECT_STREQ(text(dmfind0(long32.c_str(), T1)), "v");
    EXPECT_STREQ(text(dmfind0((long32 + "b").c_str(), T1)), "v");
    EXPECT_STREQ(text(dmfindany(long40.c_str())), "v");
    dmrename(dmfind0(long32.c_str(), T1), long40.c_str());
    EXPECT_STREQ(text(dmfind0(long32.c_str(), T1)), "v");
    EXPECT_EQ(dmfind0(long32.substr(1).c_str(), T1), nullptr);
}

TEST_F(dm, block_is_used_again_only_when_near_in_size)
{
    void *p = dmreadd23("x", T1, 1, 2, 3, 1000);
    EXPECT_EQ(dmreadd23("x", T1, 4, 5, 6, 700), p);   // slack 350: 1000 <= 1050
    EXPECT_EQ(dm_rec(p)->len, 700u);
    EXPECT_EQ(dm_rec(p)->cap, 1000u);
    EXPECT_EQ(dm_rec(p)->aux, 4);
    EXPECT_EQ(dm_rec(p)->b, 6);
    EXPECT_EQ(dmreadd23("x", T1, 0, 0, 0, 667), p);   // 667 + 333 = 1000: still fits
    p = dmreadd23("x", T1, 0, 0, 0, 666);             // 666 + 333 < 1000
    EXPECT_EQ(dm_rec(p)->cap, 666u);
    p = dmreadd23("x", T1, 0, 0, 0, 667);
    EXPECT_EQ(dm_rec(p)->cap, 667u);
    p = dmreadd23("x", T1, 0, 0, 0, 129);
    EXPECT_EQ(dmreadd23("x", T1, 0, 0, 0, 1), p);     // 1 + 128 = 129
    p = dmreadd23("x", T1, 0, 0, 0, 5000);
    void *q = dmreadd23("x", T1, 0, 0, 0, 3000);      // slack is at most 1024
    EXPECT_EQ(dm_rec(q)->cap, 3000u);
    EXPECT_EQ(dmnext(q, nullptr, T1, nullptr), nullptr);
}

TEST_F(dm, a_value_may_be_replaced_by_a_part_of_itself)
{
    ASSERT_EQ(put("x", T1, "abcdefgh"), 0);
    char *p = static_cast<char *>(dmfind0("x", T1));
    ASSERT_EQ(dmresave("x", T1, 0, p + 3, 6), 0);
    EXPECT_STREQ(text(dmfind0("x", T1)), "defgh");
    std::string big(4000, 'z');
    ASSERT_EQ(put("y", T1, big.c_str()), 0);
    p = static_cast<char *>(dmfind0("y", T1));
    ASSERT_EQ(dmresave("y", T1, 0, p + 3990, 11), 0);  // too small for the old block
    EXPECT_STREQ(text(dmfind0("y", T1)), "zzzzzzzzzz");
}

TEST_F(dm, whole_types_move_in_order)
{
    for (const char *n : {"a", "b", "c"})
        ASSERT_EQ(put(n, T1, n), 0);
    ASSERT_EQ(put("z", T2, "z"), 0);
    dmretypeall(T1, T2);
    std::string order;
    char name[33];
    uint64_t len;
    for (void *p = nullptr; (p = dmnext(p, name, T2, &len));)
        order += name;
    EXPECT_EQ(order, "cbaz");
    EXPECT_EQ(dmnext(nullptr, nullptr, T1, nullptr), nullptr);
    dmretype(dmfind0("z", T2), T1);
    EXPECT_STREQ(text(dmfind0("z", T1)), "z");
    dmretypeall(T2, T2);
    check_chains();
    EXPECT_EQ(dmmemory(T1), dm_hdrsize + 2);
}

TEST_F(dm, failed_allocation_loses_nothing)
{
    ASSERT_EQ(put("x", T1, "value"), 0);
    mem_use before = mem_live();
    for (int64_t n = 1; n <= 4; n++) {
        fault_arm(F_MEM, 1, true);
        EXPECT_EQ(put("x", T1, "other"), RC_DMMEM);
        EXPECT_EQ(dmadd("y", T2, 0, 100), nullptr);
        EXPECT_EQ(dmreadd23("x", T1, 0, 0, 0, 5000), nullptr);
        EXPECT_EQ(dmresave("x", T1, 0, std::string(5000, 'a').c_str(), 5001), RC_DMMEM);
        EXPECT_EQ(dmcp(dmfind0("x", T1), "copy", T2), RC_DMMEM);
        EXPECT_EQ(fault_disarm(), 5);
        EXPECT_STREQ(text(dmfind0("x", T1)), "value");
    }
    EXPECT_EQ(mem_live().blocks, before.blocks);
    EXPECT_EQ(mem_live().bytes, before.bytes);
    EXPECT_EQ(dmadd("y", T2, 0, ~uint64_t{0} - 8), nullptr);  // an absurd size is refused
    check_chains();
}

TEST_F(dm, random_use_against_a_plain_map)
{
    std::map<std::string, std::string> want;
    uint32_t s = 12345;
    auto draw = [&](uint32_t n) { return (s = s * 1664525 + 1013904223) >> 8 % 16 ? (s >> 9) % n : 0; };
    for (int i = 0; i < 20000; i++) {
        std::string name = "n" + std::to_string(draw(60));
        switch (draw(4)) {
        case 0:
        case 1: {
            std::string v(draw(600), char('a' + draw(26)));
            ASSERT_EQ(dmresave(name.c_str(), T1, 0, v.c_str(), v.size() + 1), 0);
            want[name] = v;
            break;
        }
        case 2:
            dmrm(dmfind0(name.c_str(), T1));
            want.erase(name);
            break;
        default: {
            auto it = want.find(name);
            ASSERT_STREQ(text(dmfind0(name.c_str(), T1)),
                         it == want.end() ? "(absent)" : it->second.c_str());
        }
        }
    }
    check_chains();
}

TEST_F(dm, records_go_through_a_file)
{
    char path[] = "/tmp/ovata-dm-XXXXXX";
    int fd = mkstemp(path);
    ASSERT_GE(fd, 0);
    ASSERT_EQ(dmsave23("x", T1, 7, 8, -9, "some\0text", 10), 0);
    ASSERT_EQ(dmwrite(fd, dmfind0("x", T1)), 0);
    ASSERT_EQ(dmwrite(fd, dmfind0("x", T1)), 0);
    off_t end = lseek(fd, 0, SEEK_CUR);
    dmzap(T1);
    lseek(fd, 0, SEEK_SET);
    void *p;
    ASSERT_EQ(dmread(fd, &p), 0);
    EXPECT_EQ(dm_rec(p)->aux, 7);
    EXPECT_EQ(dm_rec(p)->a, 8);
    EXPECT_EQ(dm_rec(p)->b, -9);
    EXPECT_EQ(memcmp(p, "some\0text", 10), 0);
    ASSERT_EQ(ftruncate(fd, end - 1), 0);
    EXPECT_NE(dmread(fd, &p), 0);
    EXPECT_EQ(p, nullptr);
    lseek(fd, 0, SEEK_END);
    EXPECT_EQ(dmread(fd, &p), -1);
    close(fd);
    unlink(path);
    check_chains();
}

}  // namespace
