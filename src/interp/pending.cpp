// interp/pending.cpp - weak stand-ins for handlers that are still being written. Each answers
// as an unbuilt row does; the real one replaces it by being linked.
#include "interp/interp.h"

#define PENDING(f)                                                                             \
    [[gnu::weak]] int32_t f(int32_t)                                                           \
    {                                                                                          \
        return notbuilt(0);                                                                    \
    }
PENDING(encodecmd)
PENDING(expandcmd)

