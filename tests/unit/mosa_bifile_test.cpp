// Files from the matrix language: every function, every mode, the codes of each refusal.
#include "../mosa_asm.h"
#include "core/mem.h"
#include "mosabi.h"
#include <cstdio>
#include <sys/stat.h>

static const called calls[] = {
    {"f = fopen(\"a\", \"w\"); fput(f, \"one\"); fwrite(f, \"tw\"); fwrite(f, \"o\"+char(10)); "
     "fput(f, \"\"); fwrite(f, \"end\"); fclose(f); fsize(\"a\")",
     "R1,1:12"},
    {"f = fopen(\"a\", \"r\"); (fget(f), fgetnl(f) , fget(f), fget(f))", "S1,4:one|two\n||end"},
    {"(rows(fget(f)), fstatus(f))", "R1,2:0 -1"},
    {"(_fseek(f, -3, 1), _fseek(f, 1, -1), _fseek(f, 0, 0), _fseek(f, 2, 0))", "R1,4:9 1 1 3"},
    {"(fread(f, 4), fread(f, 0), _fget(f), fread(f, 100))", "S1,4:\ntwo|||\nend"},
    {"rows(fread(f, 1))", "R1,1:0"},
    {"fseek(f, 0, -1); fstatus(f)", "R1,1:0"},
    {"(_fput(f, \"x\"), _fwrite(f, \"x\"), _ftruncate(f), _fputmatrix(f, 1))",
     "R1,4:-3621 -3621 -3621 -3621"},
    {"fput(f, \"x\")", "3621"},
    {"(_fopen(\"a\", \"w\"), _fopen(\"none\", \"r\"), _fopen(\"\", \"r\"), _fopen(\"a\", \"x\"))",
     "R1,4:-602 -601 -3602 -3603"},
    {"fopen(\"a\", \"w\")", "602"},
    {"fopen(\"none\", \"r\")", "601"},
    {"fopen(\"none/a\", \"w\")", "603"},
    {"fopen(\".\", \"r\")", "603"},
    {"fopen(\"a\"+char(0)+\"b\", \"r\")", "3602"},
    {"fopen(\"a\", \"R\")", "3603"},
    {"fopen(1, \"r\")", "3254"},
    {"_fclose(f)", "R1,1:0"},
    {"_fclose(f)", "R1,1:-3601"},
    {"fclose(1.5)", "3601"},
    {"_fget(f)", "3601"},
    // both ways: reading stops where writing begins
    {"f = fopen(\"a\", \"rw\"); s = fget(f); fwrite(f, \"TWO\"); (s, fget(f))", "S1,2:one|"},
    {"fseek(f, 0, -1); fread(f, 100)", "S1,1:one\nTWO\n\nend"},
    {"fseek(f, 4, -1); ftruncate(f); (_fsize(f), _fsize(\"a\"), _fsize(\"none\"))",
     "R1,3:4 4 -601"},
    {"fsize(\"none\")", "601"},
    {"fseek(f, -1, -1)", "3300"},
    {"fseek(f, 1.5, -1)", "3300"},
    {"fclose(f); f = fopen(\"a\", \"a\"); fput(f, \"more\"); (_fseek(f, 0, -1), _ftruncate(f), "
     "_fseek(f, 0, 0))",
     "R1,3:-3623 -3623 9"},
    {"fseek(f, 0, -1)", "3623"},
    {"fget(f)", "3622"},
    {"(rows(_fgetnl(f)), rows(_fread(f, 1)), rows(_fgetmatrix(f)), fstatus(f))",
     "R1,4:0 0 0 -3622"},
    {"fclose(f); (_unlink(\"a\"), _unlink(\"a\"))", "R1,2:0 -601"},
    {"unlink(\"a\")", "601"},
    {"unlink(\"\")", "3602"},
    {"t = tmpfilename(); u = tmpfilename(); (t != u, strlen(t) > 5)", "R1,2:1 1"},
    // carriage returns go with the line feed, alone they are text
    {"f = fopen(t, \"w\"); fwrite(f, \"a\"+char(13)+char(10)+\"b\"+char(13)+\"c\"); fclose(f); "
     "f = fopen(t, \"r\"); s = fget(f); (s, subinstr(fget(f), char(13), \"!\"))",
     "S1,2:a|b!c"},
    {"fclose(f); unlink(t); 1", "R1,1:1"},
};

TEST(MosaFile, EveryFunction)
{
    ms_begin();
    try_all(calls);
}

TEST(MosaFile, FiftyHandlesAndNoMore)
{
    ms_begin();
    ASSERT_EQ(ms("h = J(1, 50, .)\nfor (i=1; i<=50; i++) h[i] = fopen(\"h\" + strofreal(i), "
                 "\"w\")"),
              0)
        << session_output;
    EXPECT_EQ(value("(_fopen(\"h51\", \"w\"), h == (0..49))"), "R1,2:-3611 1");
    EXPECT_EQ(value("fopen(\"h51\", \"w\")"), "3611");
    ASSERT_EQ(ms("fclose(h[7])"), 0);
    EXPECT_EQ(value("fopen(\"h51\", \"w\")"), "R1,1:6"); // the number is used again
    ASSERT_EQ(ms("for (i=0; i<50; i++) fclose(i)"), 0) << session_output;
}

TEST(MosaFile, WhatFailsMayCloseItsFiles)
{
    ms_begin();
    ASSERT_EQ(ms("void keeps(string scalar n) {\n real scalar f\n f = fopen(n, \"w\")\n "
                 "fput(f, \"x\")\n _error(3300)\n}\n"
                 "void closes(string scalar n) {\n real scalar f\n f = fopen(n, \"w\")\n"
                 " fautoclose(f)\n fput(f, \"x\")\n _error(3300)\n}\n"
                 "real scalar ends(string scalar n) {\n real scalar f\n f = fopen(n, \"w\")\n"
                 " fautoclose(f, 1)\n return(f)\n}"),
              0);
    EXPECT_EQ(ms("closes(\"k1\")"), 3300);
    EXPECT_EQ(value("_fclose(0)"), "R1,1:-3601");
    EXPECT_EQ(ms("keeps(\"k2\")"), 3300);
    EXPECT_EQ(value("_fclose(0)"), "R1,1:0");
    EXPECT_EQ(value("f = ends(\"k3\"); _fclose(f)"), "R1,1:0"); // nothing failed
    // A statement inside another leaves the outer one's files alone.
    EXPECT_EQ(value("f = fopen(\"k4\", \"w\"); fautoclose(f); rc = _ovata(\"mosa: _error(3300)\", "
                    "1); _fclose(f)"),
              "R1,1:0");
}

TEST(MosaFile, LongLinesAndBytesOfAllKinds)
{
    ms_begin();
    EXPECT_EQ(value("s = 20000 * \"abcde\"; f = fopen(\"l\", \"w\"); fput(f, s); fwrite(f, "
                    "char(0..255)); fclose(f); f = fopen(\"l\", \"r\"); t = fget(f); u = fread(f, "
                    "1000); fclose(f); (s == t, strlen(u), ascii(u) == (0..255))"),
              "R1,3:1 256 1");
}

TEST(MosaFile, FailingTransfersAreToldWithTheirCode)
{
    ms_begin();
    ASSERT_EQ(ms("f = fopen(\"w\", \"w\")"), 0);
    fault_arm(F_WRITE, 1, false);
    EXPECT_EQ(ms("fput(f, \"x\")"), 691);
    fault_disarm();
    EXPECT_EQ(value("fstatus(f)"), "R1,1:-691");
    EXPECT_EQ(value("(_fput(f, \"x\"), fstatus(f))"), "R1,2:0 0");
    ASSERT_EQ(ms("fclose(f)\nf = fopen(\"w\", \"r\")"), 0);
    for (const char *call : {"fget(f)", "fread(f, 10)", "fgetmatrix(f)"}) {
        fault_arm(F_READ, 1, true);
        EXPECT_NE(ms(call), 0) << call;
        fault_disarm();
    }
    fault_arm(F_READ, 1, true);
    EXPECT_EQ(value("(rows(_fget(f)), fstatus(f))"), "R1,2:0 -691");
    fault_disarm();
    EXPECT_EQ(value("fseek(f, 0, -1); fget(f)"), "S1,1:x");
    ASSERT_EQ(ms("fclose(f)"), 0);
    // /dev/full takes nothing: the code of a disk that is full
    struct stat st;
    if (!stat("/dev/full", &st)) {
        EXPECT_EQ(value("f = fopen(\"/dev/full\", \"a\"); rc = _fput(f, \"x\"); fclose(f); rc"),
                  "R1,1:-699");
    }
}

TEST(MosaFile, MatricesComeBack)
{
    ms_begin();
    ASSERT_EQ(run("drop _all"), 0);
    ASSERT_EQ(run("set obs 3"), 0);
    ASSERT_EQ(run("generate byte va = _n"), 0);
    ASSERT_EQ(run("generate str3 vs = \"s\" + string(_n)"), 0);
    static const called rows[] = {
        {"ov_view(V=., ., \"va\"); ov_sview(W=., ., \"vs\"); f = fopen(\"m\", \"w\"); "
         "fputmatrix(f, (1, .a \\ -1e300, 0)); fputmatrix(f, 1+2i); fputmatrix(f, (\"a\", \"\" \\ "
         "char(0), \"long\")); fputmatrix(f, J(0, 3, 0)); fputmatrix(f, V); fputmatrix(f, W); "
         "fclose(f); f = fopen(\"m\", \"r\"); fgetmatrix(f)",
         "R2,2:1 . -1e+300 0"},
        {"fseek(f, 0, -1); fgetmatrix(f) == (1, .a \\ -1e300, 0)", "R1,1:1"},
        {"fgetmatrix(f)", "C1,1:1+2i"},
        {"s = fgetmatrix(f); (s[1,1], s[1,2], strofreal(ascii(s[2,1])), s[2,2])", "S1,4:a||0|long"},
        {"fgetmatrix(f)", "R0,3:"},
        {"(isview(V), (t = fgetmatrix(f))', isview(t))", "R1,5:1 1 2 3 0"},
        {"fgetmatrix(f)'", "S1,3:s1|s2|s3"},
        {"(rows(fgetmatrix(f)), fstatus(f))", "R1,2:0 -1"},
        // not a stream, and one that ends too soon
        {"fseek(f, 3, -1); (rows(_fgetmatrix(f)), fstatus(f))", "R1,2:0 -610"},
        {"fseek(f, 3, -1); fgetmatrix(f)", "610"},
        {"fclose(f); f = fopen(\"m\", \"rw\"); fseek(f, 60, -1); ftruncate(f); fseek(f, 0, -1); "
         "(rows(_fgetmatrix(f)), fstatus(f))",
         "R1,2:0 -610"},
        {"fclose(f); 1", "R1,1:1"},
        {"f = fopen(\"m\", \"rw\"); fputmatrix(f, &fopen())", "3000"},
    };
    try_all(rows);
}
