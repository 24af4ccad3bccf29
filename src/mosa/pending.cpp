// Weak stand-ins for parts of the matrix language that are being built; gone with the last.
#include "mosa/classdef.h"
#include "mosa/vm.h"

[[gnu::weak]] int32_t m_xrc;
[[gnu::weak]] void m_custom_xeqerrf(int32_t code, const char *, ...) { m_xrc = code; }
[[gnu::weak]] void m_custom_xeqerr(int32_t code, const char *) { m_xrc = code; }
[[gnu::weak]] matobj *m_dupinstance(const matobj *) { return nullptr; }
