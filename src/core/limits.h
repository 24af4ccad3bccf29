// core/limits.h - fixed sizes of the language, and the editions.
//
// One program serves several editions. Which one runs is told by the name it was started
// under (ovata-sm is the small one, ovata the full one); the environment variable
// OVATA_EDITION (small, small7, full) overrides the name.
#pragma once
#include <cstdint>

inline constexpr int32_t conslen = 8697;        // bytes of the command line
inline constexpr int32_t macrolen = 8681;       // bytes of a macro value, with its NUL
inline constexpr int32_t namelen = 32;          // characters of a name
inline constexpr int32_t tokenlen = 503;        // characters of a token
inline constexpr int32_t strlen_max = 244;      // characters of a string in data and expressions
inline constexpr int32_t maxlevel = 64;         // nested do-files and programs
inline constexpr int32_t pgm_maxlines = 3500;   // lines of a program
inline constexpr int32_t pgm_maxbytes = 135600; // bytes of a program's text
inline constexpr int32_t fmtlen = 48;           // characters of a display format
inline constexpr int32_t varlablen = 80;        // characters of a variable label
inline constexpr int32_t filenamelen = 499;     // characters of a file name
inline constexpr int32_t max_theory_N = 2147483646;
inline constexpr int32_t max_theory_k = 32767;

struct edition {
    const char *word;       // value of OVATA_EDITION
    const char *program;    // name the program is started under, or null
    const char *flavour;    // c(flavor)
    int32_t maxvar;         // variables at start
    int32_t maxvar_max;     // highest `set maxvar`; equal to maxvar where it is refused
    uint32_t N_max;         // slots of the storage area: observations + 1
    uint64_t segsize;       // suggested segment size in bytes; 0 leaves the default
    int32_t matsize;        // at start
    int32_t matsize_max;
};

// Rows small, small7, full. The table ends with a null word.
extern const edition editions[];
extern const edition *cur_edition;  // never null

// Chooses the edition: OVATA_EDITION when it names one, else the last path element of
// argv0, else full. Returns 0, or 198 when OVATA_EDITION names none (full is then in force).
int32_t edition_choose(const char *argv0);
