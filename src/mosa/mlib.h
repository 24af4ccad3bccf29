// mosa/mlib.h - files of compiled functions: libraries (.mlib) and single functions (.mo).
//
// Both have one layout: a head of 16 + 74 * capacity bytes, then the images of the members, each
// twice, in the order of this machine and in the other one, so that any machine reads any file.
//
//   0    magic 0x81 0x92 0xa7 0xb9; order of the writer, 1 big or 2 little; 0; version (int16)
//   8    members; capacity N
//   16   N offsets of the images most significant byte first, N of those least significant first
//   ...  N member names of 33 bytes, N class names of 33 bytes (since version 5)
//   then images: 18 bytes (bytes, words, type, shape, store type, format) and the code words
//
// A struct or class definition is a member like a function; a member function lies under the
// name of its class. Only the head is ever rewritten; an addition that fails cuts the file back.
#pragma once
#include "mosa/values.h"
#include <cstdint>
#include <string>

inline constexpr int32_t ml_maxmembers = 2048, ml_version = 6;
inline constexpr int32_t ml_capacity = 1024, ml_mocapacity = 20; // as created when nothing is told

struct mlib_header {
    uint8_t order, zero;
    int16_t version;
    int32_t nmembers, capacity;
    int32_t bigoff[ml_maxmembers];
    int32_t littleoff[ml_maxmembers];
    char name[ml_maxmembers][33];
    char cls[ml_maxmembers][33];
};
static_assert(sizeof(mlib_header) == 151564);

// The head of a member's image.
struct mlib_info {
    int32_t bytes, words;
    int32_t eltype, orgtype, type; // in this program's numbers
    int32_t format;
};

enum : int32_t { ML_WRITE = 2, ML_QUIET = 8, ML_READ = 1024 };

// A new file with an empty head; nothing is left of it when that fails. A return code, whose
// words were printed.
[[nodiscard]] int32_t mlib_create(const char *path, int32_t capacity);
// Opens a file and reads its head. With search, name is that of a library, looked for along
// the ado path; else it is a path. The descriptor, or a negated return code whose words were
// printed unless mode has ML_QUIET.
[[nodiscard]] int32_t mlib_init(mlib_header *h, const char *name, int32_t mode, bool search);
// Where the image of a member lies, or 0. With a single part given that is the name.
int32_t mlib_search(const mlib_header *h, const char *cls, const char *name);
// The head of a member. 0 good, -1 not there, -2 unreadable or damaged, 1 of a format too old
// for this program, 2 too new; *version is the format. The file is left at the code.
int32_t mlib_load1(int32_t fd, const mlib_header *h, const char *cls, const char *name,
                   mlib_info *info, int32_t *version);
// The code behind the head; true on failure.
[[nodiscard]] bool mlib_load2(int32_t fd, void *memory, int32_t bytes);
// The head of the k-th member, from 0. 0, -1 past the end, -2 unreadable.
int32_t mlib_nmbr(int32_t fd, const mlib_header *h, int32_t k, mlib_info *info);
// Appends a function or definition. 0, or a code whose words were printed: 602 it is there
// already, 610 old file, 611 full, 693 write failure, 9711 and 9777 unfit code.
[[nodiscard]] int32_t mlib_add(int32_t fd, mlib_header *h, const matobj *object);
// With a class definition goes what is defined of its member functions; with complete, all
// must be (111). *added counts members.
[[nodiscard]] int32_t mlib_fancyadd(int32_t fd, mlib_header *h, const matobj *object, bool complete,
                                    int32_t *added);

// ---- libraries that are searched (mlibload.cpp)
inline constexpr int32_t ml_maxlibs = 50;
extern char m_libpath[ml_maxlibs + 1][33]; // names without .mlib
extern int32_t m_nlibpath;
extern bool m_libpath_notinited;
extern int32_t m_mofirst; // single-function files are looked for before libraries
bool mlibofficial(const char *name);
void init_m_libpath(); // once, at the first look
void mosarehash();     // reads the directories again
// Where a function of a library or .mo file comes from; true when there is one.
bool m_autosearch(const char *cls, const char *name, std::string *path);
// m_autoload (vm.h) loads it: the function, or null. What another version compiled is told of
// and passed over.
// The members of a library, or of the file a path leads to, as a table. A return code.
[[nodiscard]] int32_t m_describe_library(const std::string &name);
