// terminal/history.h - the commands typed, of this session and of earlier ones.
//
// An entry is a whole command, its lines parted by line feeds. The file holds an entry a line,
// with \n and \\ for a line feed and a backslash. Each entry is appended when its command is
// complete, under a lock, so that sessions side by side keep each other's; when the file has
// grown to twice its limit the older half goes.
#pragma once
#include <cstddef>
#include <string>

inline constexpr size_t hist_limit = 2000;     // entries kept
inline constexpr size_t hist_maxentry = 32768; // bytes of one

void hist_open(const std::string &path); // reads it; an empty path keeps nothing on disk
// A line was typed: it begins an entry (fresh), or goes on with the one that is open.
void hist_line(const char *line, bool fresh);
void hist_close(); // completes the open entry
// Entry back from the newest (0); null behind the oldest.
const std::string *hist_back(size_t back);
