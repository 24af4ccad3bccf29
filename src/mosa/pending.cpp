// Weak stand-ins for the reader of name lists, until it is here.
#include "mosa/compiler.h"

[[gnu::weak]] int32_t mparseinit(m_namelist *) { return 0; }
[[gnu::weak]] int32_t mparse(m_namelist *, const char *, int32_t) { return 198; }
[[gnu::weak]] void mparsefree(m_namelist *) {}
