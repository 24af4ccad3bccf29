// core/files.h - files and paths.
//
// Descriptors are the system's. Failures come back as negated return codes from ov_open and
// as short counts from the transfers; the words are the caller's (fierr in interp/messages.h).
#pragma once
#include <cstddef>
#include <cstdint>
#include <string>

enum ov_mode : uint8_t {
    OV_READ,     // must exist
    OV_CREATE,   // must not exist (602)
    OV_REPLACE,  // created or truncated
    OV_APPEND,   // created or appended to
    OV_UPDATE,   // must exist; read and written, from the start
    OV_EITHER,   // created or kept; read and written, from the start
};

// A descriptor, or -601 not found, -602 already exists, -603 could not be opened,
// -608 read-only. A leading ~ is the home directory.
[[nodiscard]] int32_t ov_open(const char *name, ov_mode mode);
void ov_close(int32_t fd);
// Removes a file that could not be finished. Never a device or anything else than a file.
void ov_discard(const char *name);

// Bytes moved; fewer than n means end of file (reading) or failure. Transfers above 32768
// bytes go in pieces of 16384. The l forms are for lengths past 2^31.
[[nodiscard]] int32_t ovata_read(int32_t fd, void *buf, int32_t n);
[[nodiscard]] int32_t ovata_write(int32_t fd, const void *buf, int32_t n);
[[nodiscard]] int64_t lovata_read(int32_t fd, void *buf, int64_t n);
[[nodiscard]] int64_t lovata_write(int32_t fd, const void *buf, int64_t n);
// Bytes from the present position to the end, or -1 for a pipe.
int64_t ov_left(int32_t fd);

// Writing with a latch: after the first short write every later one fails at once.
// wr returns 0, or 1 once anything failed since wrinit.
void wrinit();
[[nodiscard]] int32_t wr(int32_t fd, const void *buf, int64_t n);

// Paths, as text. None of them touches the disk but the last three.
std::string path_expand(const std::string &path);               // leading ~
std::string path_join(const std::string &dir, const std::string &file);
std::string path_last(const std::string &path);                 // last element
bool path_hasext(const std::string &path);                      // last element holds a dot
std::string path_addext(const std::string &path, const char *ext);  // ".do" unless it has one
bool path_isfile(const std::string &path);
bool path_isdir(const std::string &path);
std::string path_cwd();

// Temporary files live in OVATATMP, else TMPDIR, else /tmp. init_tmp reads the environment
// once. mktmpfn makes a fresh name and remembers it with its number; rmtmpfn(from) removes
// every file numbered from or above, and returns the counter to from.
extern int32_t tmpfctr;
void init_tmp();
const char *tmp_dir();
std::string mktmpfn();
void rmtmpfn(int32_t from);
