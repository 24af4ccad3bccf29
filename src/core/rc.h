// core/rc.h - return codes.
//
// Every handler answers with a 32-bit code: 0 is success, 1 a break, anything else a failure
// whose words were printed where it happened. interp/messages.h owns the words. Lookups that
// answer with a number (a variable, an observation) answer with the negated code on failure.
//
// Only the codes that the C++ code tests or raises in many places have a name here.
#pragma once
#include <cstdint>

enum : int32_t {
    RC_OK = 0,
    RC_BREAK = 1,
    RC_DATACHANGED = 4,
    RC_REQUIRED = 100,
    RC_NOTALLOWED = 101,
    RC_TOOFEWVARS = 102,
    RC_TOOMANYVARS = 103,
    RC_TYPE = 109,
    RC_EXISTS = 110,
    RC_NOTFOUND = 111,
    RC_CONTEXT = 119,
    RC_TOOLONG = 130,
    RC_PARENS = 132,
    RC_UNKNOWNFCN = 133,
    RC_BY = 190,
    RC_SYNTAX = 198,
    RC_UNRECOGNIZED = 199,
    RC_MATCONTEXT = 509,
    RC_FILENOTFOUND = 601,
    RC_FILEEXISTS = 602,
    RC_FILEOPEN = 603,
    RC_CORRUPT = 688,
    RC_IOREAD = 692,
    RC_IOWRITE = 693,
    RC_DISKFULL = 699,
    RC_NOVARROOM = 900,
    RC_NOOBSROOM = 901,
    RC_NOWIDTH = 902,
    RC_NOPROMOTE = 903,
    RC_NOMEM = 909,
    RC_MACROS = 920,
    RC_DMMEM = 950,
    RC_LIMIT = 1000,
    RC_LONGCMD = 1004,
    RC_NOOBS = 2000,
    RC_FEWOBS = 2001,
    RC_BADFILENAME = 7197,  // internal: reported as 198
    RC_BARERETURN = 9999,   // internal: a bare return, ends the program with 0
};
