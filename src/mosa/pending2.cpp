// Weak stand-ins for the table of built-in functions; gone with its coming.
#include "mosa/builtins.h"

[[gnu::weak]] extern const m_birow m_bitable[1] = {};
[[gnu::weak]] int32_t m_findbuiltin(const char *) { return -1; }
[[gnu::weak]] bool ismosabuiltin(const char *) { return false; }
[[gnu::weak]] void m_biinit() {}
