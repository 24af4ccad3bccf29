// Weak stand-ins for the compiler, until it is here.
#include "mosa/compiler.h"

[[gnu::weak]] char m_src[8704];
[[gnu::weak]] int32_t m_srcpos;
[[gnu::weak]] bool m_mayreadcons;
[[gnu::weak]] bool (*m_getline)();
[[gnu::weak]] bool cc_wasstmt, cc_failed;
[[gnu::weak]] int32_t cc_lineno;
[[gnu::weak]] void m_setline(const char *) {}
[[gnu::weak]] bool m_lineended() { return true; }
[[gnu::weak]] int32_t cc_compile() { return 1; }
[[gnu::weak]] int32_t mparseinit(m_namelist *) { return 0; }
[[gnu::weak]] int32_t mparse(m_namelist *, const char *, int32_t) { return 198; }
[[gnu::weak]] void mparsefree(m_namelist *) {}
