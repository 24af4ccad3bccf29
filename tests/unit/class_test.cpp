// Objects of the command language: the heap under them, and statements over it.
#include "../session.h"
#include "class/members.h"
#include "core/mem.h"
#include "core/missing.h"
#include "interp/dm.h"
#include <gtest/gtest.h>

static clskey number(double z)
{
    clskey key;
    EXPECT_EQ(cls_newnumber(&key, z, nullptr), 0);
    return key;
}

static double value(const char *ref)
{
    clskey key;
    EXPECT_EQ(cls_rvalue(ref, &key), 0) << ref;
    double z = cls_kind(key) == CK_DOUBLE ? *cls_value<double>(key) : misval;
    cls_release(key);
    return z;
}

TEST(ClassHeap, NodesKnowKindLengthAndName)
{
    session();
    clskey key;
    clskind kind;
    uint32_t n;
    char name[33];
    ASSERT_EQ(cls_newstring(&key, "abc", 3, "label"), 0);
    EXPECT_STREQ(static_cast<char *>(cls_ptr(key, &kind, &n, name)), "abc");
    EXPECT_EQ(kind, CK_STRING);
    EXPECT_EQ(n, 3u);
    EXPECT_STREQ(name, "label");
    cls_release(key);
    EXPECT_EQ(cls_ptr(nullkey, &kind, &n, name), nullptr);
    EXPECT_EQ(kind, CK_NONE);
    EXPECT_STREQ(name, "");
    EXPECT_EQ(cls_refct(nullkey), 0);
    cls_decref(nullkey);
    const std::string big(cls_maxlen, 'x');
    EXPECT_EQ(cls_newstring(&key, big.data(), big.size(), nullptr), 4052);
    ASSERT_EQ(cls_newstring(&key, big.data(), big.size() - 1, nullptr), 0);
    cls_release(key);
}

TEST(ClassHeap, KeysAsText)
{
    session();
    clskey key = number(3), back;
    char text[48], K[24];
    key_to_ref(key, text);
    EXPECT_EQ(ref_to_key(&back, text), 0);
    EXPECT_EQ(back, key);
    for (const char *form : {"  %s", "%s  ", "  %s "}) {
        char padded[80];
        snprintf(padded, sizeof padded, form, text);
        EXPECT_EQ(ref_to_key(&back, padded), 0) << padded;
    }
    for (const char *bad :
         {"", "__key", "__key()", "__key(xyz)", "__key(12", "key(12)", "__key(0)"}) {
        EXPECT_EQ(ref_to_key(&back, bad), 4009) << bad;
        EXPECT_EQ(back, nullkey);
    }
    std::string behind = std::string(text) + "x";
    EXPECT_EQ(ref_to_key(&back, behind.c_str()), 4009);
    key_to_Kstr(key, K);
    EXPECT_NE(dmfind0(K, DM_CLSKEY), nullptr);
    key_to_ref_array(key, 7, text);
    EXPECT_EQ(std::string(text).substr(std::string(text).size() - 3), "[7]");
    key_to_ref(key, text);
    cls_release(key);
    EXPECT_EQ(ref_to_key(&back, text), 4009);
}

TEST(ClassHeap, CopiesAndClones)
{
    session();
    clskey source = number(3), out, ref, array;
    cls_incref(source);
    ASSERT_EQ(cls_newvalue(&out, source, false), 0);
    EXPECT_NE(out, source);
    cls_release(out);
    ASSERT_EQ(cls_clonevalueref(&out, source, false), 0);
    EXPECT_EQ(out, source);
    // A reference is followed, and gives its name to what it leads to when asked.
    ASSERT_EQ(cls_newkey(&ref, source, "other"), 0);
    for (bool keep : {false, true}) {
        char name[33];
        ASSERT_EQ(cls_newvalue(&out, ref, keep), 0);
        EXPECT_EQ(*static_cast<double *>(cls_ptr(out, nullptr, nullptr, name)), 3);
        EXPECT_STREQ(name, keep ? "other" : "");
        cls_release(out);
    }
    EXPECT_EQ(cls_refct(source), 2);
    // What is copied deep and what is not.
    ASSERT_EQ(cls_newarray(&array, nullptr), 0);
    ASSERT_EQ(cls_array_push(array, source), 0);
    ASSERT_EQ(cls_add_to_array(array, 4, ref), 0);
    ASSERT_EQ(cls_newvalue(&out, array, false), 0);
    EXPECT_EQ(cls_value<clsarray>(out)->n, 4);
    EXPECT_NE(cls_array_el(out, 1), source);
    EXPECT_EQ(cls_array_el(out, 2), nullkey);
    EXPECT_EQ(cls_follow(cls_array_el(out, 4)), source);
    cls_release(out);
    ASSERT_EQ(cls_clonevalueref(&out, array, false), 0);
    EXPECT_EQ(cls_array_el(out, 1), source);
    cls_release(out);
    cls_array_delete_el(array, 1);
    EXPECT_EQ(cls_array_el(array, 3), ref);
    EXPECT_EQ(cls_add_to_array(array, 0, nullkey), 4029);
    cls_release(array);
    cls_decref(source);
    EXPECT_EQ(cls_newvalue(&out, nullkey, false), 4010);
    EXPECT_EQ(cls_newvalue(&out, cls_root, false), 4305);
    clskey blob, code;
    ASSERT_EQ(cls_newblob(&blob, "\0\1", 2, nullptr), 0);
    ASSERT_EQ(cls_clonevalueref(&out, blob, false), 0);
    EXPECT_EQ(cls_refct(blob), 1);
    cls_decref(blob);
    ASSERT_EQ(cls_newnode(&code, CK_CODE, 8, nullptr), 0);
    EXPECT_EQ(cls_newvalue(&out, code, false), -1);
    EXPECT_EQ(cls_clonevalueref(&out, code, false), -1);
    cls_release(code);
}

TEST(ClassHeap, UnlinkTellsWhatHasNoPlace)
{
    session();
    clskey key;
    EXPECT_EQ(cls_unlink(cls_root), 4050);
    ASSERT_EQ(cls_newnode(&key, CK_ARRAYNODE, sizeof(clskey), nullptr), 0);
    EXPECT_EQ(cls_unlink(key), 4050);
    cls_release(key);
    key = number(1);
    EXPECT_EQ(cls_unlink(key), 4050);
    clskey ref;
    ASSERT_EQ(cls_newkey(&ref, key, nullptr), 0);
    EXPECT_EQ(cls_unlink(ref), 0); // and with it the last reference to the number
    cls_release(ref);
}

static uint64_t nodes()
{
    return dmmemory(DM_CLSKEY);
}

TEST(ClassHeap, FreeingLeavesNothing)
{
    run("display 1"); // whatever the first line of a session keeps
    int64_t before = mem_live().blocks;
    uint64_t empty = nodes();
    for (const char *line :
         {"class node { }", ".a = .node.new", ".a.declare node next", ".b = .node.new",
          ".a.next.ref = .b", ".b.declare node next", ".b.next.ref = .a",
          ".a.declare array items = {1, \"two\", {3, .b.ref}}", ".c.ref = .a", ".d = .a"})
        EXPECT_EQ(run(line), 0) << line << session_output;
    cls_freecontext();
    EXPECT_EQ(nodes(), empty);
    EXPECT_TRUE(cls_alltypes().empty());
    // Two that hold each other go together; so does what only a circle holds.
    clskey a, b;
    ASSERT_EQ(cls_newarray(&a, nullptr), 0);
    ASSERT_EQ(cls_newarray(&b, nullptr), 0);
    ASSERT_EQ(cls_array_push(a, b), 0);
    ASSERT_EQ(cls_array_push(b, a), 0);
    EXPECT_GT(nodes(), empty);
    cls_freecontext();
    EXPECT_EQ(nodes(), empty);
    EXPECT_EQ(mem_live().blocks, before);
}

TEST(Class, FailuresOfMemoryLoseNothing)
{
    session();
    ASSERT_EQ(run(".v = {1, 2, 3}"), 0);
    for (int64_t n = 1; n < 400; n++) {
        fault_arm(F_MEM, n, false);
        int32_t rc = run(".w = {.v, \"text\", {4, 5}}");
        int64_t refused = fault_disarm();
        EXPECT_EQ(value(".v[3]"), 3);
        if (rc)
            EXPECT_TRUE(!cls_attr(cls_root, "w", nullptr)) << n;
        else {
            EXPECT_EQ(value(".w[3][2]"), 5);
            EXPECT_EQ(run("class drop .w"), 0);
        }
        if (!refused && !rc)
            break;
    }
    uint64_t was = nodes();
    EXPECT_NE(run(".w = {1, {2, nosuchvar}}"), 0);
    EXPECT_EQ(nodes(), was);
    cls_freecontext();
}

struct refusal {
    const char *line;
    int32_t rc;
};

TEST(Class, Refusals)
{
    static const refusal rows[] = {
        {".x", 4012},
        {".x.y = 1", 4012},
        {".1x = 3", 4003},
        {".v[0] = 1", 4029},
        {".v[1.5e300]", 4029},
        {".n[1] = 1", 4020},
        {".v = ", 4026},
        {".v = .v.ref", 4019},
        {".n.copy 3", 198},
        {".n.clone", 4025},
        {".v.arrdelete 9", 4029},
        {".v = {1, 2", 4030},
        {".v = {1} 2", 4030},
        {"class exit 3", 4007},
        {".this.x = 1", 4007},
        {"class drop nosuch", 4012},
        {"class drop .v .nosuch", 4012},
        {".nosuchclass.new", 4012},
        {".__key(12).x = 1", 4009},
        {".v. = 1", 4003},
        {".v[1", 4003},
        {"class describe nosuch", 4012},
        {".n = 5 +", 198},
        {".global.declare double a b", 198},
        {".global.declare 9 b", 4006},
    };
    session();
    ASSERT_EQ(run(".v = {1, 2}"), 0);
    ASSERT_EQ(run(".n = 5"), 0);
    uint64_t was = nodes();
    for (const refusal &r : rows) {
        EXPECT_EQ(run(r.line), r.rc) << r.line << "\n" << session_output;
        EXPECT_EQ(nodes(), was) << r.line;
    }
    EXPECT_EQ(value(".v[2]"), 2);
    EXPECT_EQ(value(".n"), 5);
    cls_freecontext();
}
