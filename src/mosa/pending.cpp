// Weak stand-ins for parts of the matrix language that are being built; gone with the last.
#include "mosa/builtins.h"

[[gnu::weak]] void mo_display(const matobj *) {}
[[gnu::weak]] m_bihandler m_bihandlers[m_maxbiid];
[[gnu::weak]] int32_t m_biargs[m_maxbiid][2];
