#include "core/state.h"

char console[conslen + 1];
char cmd[33];
int32_t globalrc, captrc;
volatile sig_atomic_t stopflag, altstopflag, ov_fpeerror, winresized, leavesignal;
volatile sig_atomic_t stopflag_val = 1, altstopflag_val = 0;
bool exitflg, gexitflg, runprog;
bool procflg = true;
bool syselseflg, breakallowed;
uint8_t breakdetail;
bool mac_expanded;
int32_t ovata_level;
int32_t typelmac = 5179;
int16_t vernum = ver_current, caller_vernum = ver_current;
bool mvmodern = true;
int32_t sysclock, batchmode;
bool nokbrd, realbusy;
bool ovata_varabbrev = true;
bool ovata_dpc, sysflag;
uint8_t program_class;
char sys_pgmname[33], sys_pgmclass[33];
int32_t byvar;
bool lastby = true;
int32_t nobss1 = 1, nobss2;
byenv by_env;
bool s_updata, newdata, newDtaset, upSort, upFormat, upValLabel;
char datalbl[81];

void state_break()
{
    stopflag = stopflag_val;
    altstopflag = altstopflag_val;
}
