// Paths, directories and binary buffers. Bytes of numbers were worked out by hand from the
// layouts of IEEE 754 and of the storage types.
#include "../mosa_asm.h"
#include "mosabi.h"

static const called paths[] = {
    {"(pathisurl(\"http://a\"), pathisurl(\"HTTPS://a\"), pathisurl(\"a/http://\"), "
     "pathisurl(\"\"))",
     "R1,4:1 1 0 0"},
    {"(pathisabs(\"/a\"), pathisabs(\"~/a\"), pathisabs(\"a/b\"), pathisabs(\"ftp://a\"), "
     "pathisabs(\"\"))",
     "R1,5:1 1 0 1 0"},
    {"(pathsuffix(\"a/b.c/d\"), pathsuffix(\"a.b.dta\"), pathsuffix(\".x\"), pathsuffix(\"a/.x\"), "
     "pathsuffix(\"a.\"), pathsuffix(\"\"))",
     "S1,6:|.dta|||.|"},
    {"(pathrmsuffix(\"a/b.c/d\"), pathrmsuffix(\"a.b.dta\"), pathrmsuffix(\"/.x\"))",
     "S1,3:a/b.c/d|a.b|/.x"},
    {"(pathovatasuffix(\"a.DTA\"), pathovatasuffix(\"a.mlib\"), pathovatasuffix(\"a.txt\"), "
     "pathasciisuffix(\"a.txt\"), pathasciisuffix(\"a.do\"), pathasciisuffix(\"a.dta\"), "
     "pathasciisuffix(\"a\"))",
     "R1,7:1 1 0 1 1 0 0"},
    {"(adosubdir(\"Xtreg.ado\"), adosubdir(\"_a\"), adosubdir(\"\"))", "S1,3:x|_|"},
    {"(pathbasename(\"a/b\"), pathbasename(\"a/\"), pathbasename(\"b\"))", "S1,3:b||b"},
    {"(pathjoin(\"a\", \"b\"), pathjoin(\"a/\", \"b\"), pathjoin(\"\", \"b\"), pathjoin(\"a\", "
     "\"\"), pathjoin(\"a\", \"/b\"), pathjoin(\"a\", \"~/b\"))",
     "S1,6:a/b|a/b|b|a|/b|~/b"},
    {"pathjoin(\"a\", 1)", "3254"},
    {"pathsuffix((\"a\", \"b\"))", "3204"},
};

static const called directories[] = {
    {"(_mkdir(\"d1\"), _mkdir(\"d1\"), _mkdir(\"d1/d2\", 1), direxists(\"d1/d2\"), "
     "direxists(\"none\"))",
     "R1,5:0 693 0 1 0"},
    {"p = pwd(); (_chdir(\"d1\"), pwd() == pathjoin(p, \"d1\"), _chdir(\"none\"), _chdir(p), "
     "pwd() == p)",
     "R1,5:0 1 170 0 1"},
    {"f = fopen(\"d1/b.txt\", \"w\"); fclose(f); f = fopen(\"d1/a.txt\", \"w\"); fclose(f); f = "
     "fopen(\"d1/c.do\", \"w\"); fclose(f); dir(\"d1\", \"files\", \"*.txt\")'",
     "S1,2:a.txt|b.txt"},
    {"dir(\"d1\", \"files\", \"?.*\", 1)'", "S1,3:d1/a.txt|d1/b.txt|d1/c.do"},
    {"dir(\"d1\", \"dirs\", \"*\")", "S1,1:d2"},
    {"dir(\"d1\", \"other\", \"*\")", "S0,1:"},
    {"dir(\"none\", \"files\", \"*\")", "601"},
    {"dir(\"d1/a.txt\", \"files\", \"*\")", "603"},
    {"dir(\"d1\", \"things\", \"*\")", "3300"},
    {"(_rmdir(\"d1\"), _unlink(\"d1/a.txt\"), _unlink(\"d1/b.txt\"), _unlink(\"d1/c.do\"), "
     "_rmdir(\"d1/d2\"), _rmdir(\"d1\"), _unlink(\".\"))",
     "R1,7:693 0 0 0 0 0 -691"},
};

TEST(MosaPath, TextsAndDirectories)
{
    ms_begin();
    try_all(paths);
    try_all(directories);
}

// big and small are control vectors; bytes() shows a buffer as numbers.
TEST(MosaBuffer, BytesOfEveryFormat)
{
    ms_begin();
    ASSERT_EQ(ms("big = (1, 12.1)\nlow = (2, 12.1)\nold = (2, 6)\nnone = (2, .)\n"
                 "real rowvector bytes(real rowvector c, string scalar f, x) {\n"
                 " string scalar b\n b = (bufbfmtlen(f) * length(x)) * char(7)\n"
                 " bufput(c, b, 0, f, x)\n return(ascii(b))\n}\n"
                 "transmorphic matrix again(real rowvector c, string scalar f, x) {\n"
                 " string scalar b\n b = (1 + bufbfmtlen(f) * length(x)) * char(7)\n"
                 " bufput(c, b, 1, f, x)\n return(bufget(c, b, 1, f, rows(x), cols(x)))\n}"),
              0)
        << session_output;
    static const called rows[] = {
        {"bytes(big, \"%8z\", -2.5)", "R1,8:192 4 0 0 0 0 0 0"},
        {"bytes(low, \"%8z\", -2.5)", "R1,8:0 0 0 0 0 0 4 192"},
        {"bytes(big, \"%8z\", .)", "R1,8:127 224 0 0 0 0 0 0"},
        {"bytes(big, \"%8z\", .b)", "R1,8:127 224 2 0 0 0 0 0"},
        {"bytes(big, \"%4z\", (1.5, .a))", "R1,8:63 192 0 0 127 0 8 0"},
        {"bytes(big, \"%4b\", (1, -2))", "R1,8:0 0 0 1 255 255 255 254"},
        {"bytes(low, \"%2bs\", (258, ., .z, 99999))", "R1,8:2 1 229 127 255 127 229 127"},
        {"bytes(low, \"%1b\", (100, 101, -127, -128, .c))", "R1,5:100 101 129 101 104"},
        {"bytes(old, \"%1b\", (100, ., .a))", "R1,3:100 127 127"},
        {"bytes(none, \"%1b\", (127, -128))", "R1,2:127 128"},
        {"bytes(none, \"%1b\", 128)", "3300"},
        {"bytes(none, \"%2b\", .)", "3300"},
        {"bytes(low, \"%2bu\", (65535, 2.9))", "R1,4:255 255 2 0"},
        {"bytes(low, \"%2bu\", -1)", "3300"},
        {"bytes(low, \"%2bu\", .)", "3300"},
        {"bytes(low, \"%3s\", (\"ab\", \"abcd\"))", "R1,6:97 98 0 97 98 99"},
        {"again(big, \"%8z\", (1e300, . \\ .z, -0.1))", "R2,2:1e+300 . . -0.1"},
        {"x = (1, .k, -7, .); (again(low, \"%8z\", x) == x, again(big, \"%4z\", x) == x, "
         "again(low, \"%4b\", x) == x, again(big, \"%2bs\", x) == x, again(low, \"%1b\", x) == x)",
         "R1,5:1 1 1 1 1"},
        {"again(big, \"%4bu\", (4294967295, 0))", "R1,2:4294967295 0"},
        {"again(old, \"%8z\", (1, .k))", "R1,2:1 ."},
        {"again(old, \"%4z\", (1e30, .))", "R1,2:1.000000015e+30 ."},
        {"again(low, \"%4z\", 1e39)", "R1,1:."},
        {"again(low, \"%5s\", (\"abc\", \"abcdefg\"))", "S1,2:abc|abcde"},
        {"strlen(again(low, \"%5S\", (\"abc\", \"a\"+char(0)+\"b\")))", "R1,2:5 5"},
        {"b = 4*char(255); (bufget(low, b, 0, \"%4b\"), bufget(low, b, 0, \"%4bu\"), bufget(low, "
         "b, 0, \"%4z\"))",
         "R1,3:-1 4294967295 ."},
        {"b = char((101, 127)); (bufget(low, b, 0, \"%1b\", 1, 2), bufget(none, b, 0, \"%1b\", 1, "
         "2), bufget(old, b, 0, \"%1b\", 1, 2))",
         "R1,6:. . 101 127 101 ."},
        {"bufsub(\"abcdef\", 2, 3)", "S1,1:cde"},
        {"bufsub(\"abcdef\", 6, 0)", "S1,1:"},
        {"bufsub(\"abcdef\", 4, 3)", "3300"},
        {"bufsub(\"abcdef\", -1, 1)", "3300"},
        {"b = \"abcd\"; bufput(low, b, 1, \"%3s\", b); b", "S1,1:aabc"}, // itself
        {"b = \"abcd\"; bufput(low, b, 3, \"%2b\", 1); b", "3300"},
        {"bufget(low, b, 0, \"%2b\", 3)", "3300"},
        {"bufget(low, b, 0, \"%2b\", 0, 5)", "R0,5:"},
        {"bufget(3, b, 0, \"%2b\")", "3300"},
        {"bufget(low, b, 0, \"%2b\", 2147483647, 2147483647)", "3300"},
        {"(bufbfmtlen(\"%8z\"), bufbfmtlen(\"%20s\"), bufbfmtisnum(\"%4bu\"), "
         "bufbfmtisnum(\"%4S\"))",
         "R1,4:8 20 1 0"},
        {"bufbfmtlen(\"%3b\")", "3302"},
        {"bufbfmtlen(\"%8zs\")", "3302"},
        {"bufbfmtlen(\"%0s\")", "3302"},
        {"bufbfmtlen(\"%s\")", "3302"},
        {"bufbfmtisnum(\"\")", "3302"},
        {"bufbfmtlen(\"%99999999999s\")", "3302"},
    };
    try_all(rows);
}
