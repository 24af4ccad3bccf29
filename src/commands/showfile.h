// commands/showfile.h - a file on the screen, as type, view and help show it.
#pragma once
#include <cstdint>
#include <string>

// Mark-up (.omcl, .ovhlp, or a first line {omcl}) is rendered unless asis; anything else goes out
// raw. Returns 0, stopflag or a file code with its words printed.
[[nodiscard]] int32_t show_file(const std::string &name, bool asis);
