// interp/setprefs.cpp - stored preferences take effect, in the two stages of the start.
#include "core/settings.h"
#include "core/state.h"
#include "interp/startup.h"
#include "output/print.h"

static int32_t apply(const char *name)
{
    const setting *s = setting_exact(name);
    const char *value = sprefs_get(name);
    if (!s || !s->perm || !value || !set_hooks[s->hook] || setting_put(s, value, false))
        return 0;
    return set_hooks[s->hook](s, value);
}

// Once the renderer is there.
void load_set_prefs()
{
    for (int32_t i = 0; i < nsettings; i++)
        if (settings[i].kind != SK_ACT)
            (void)apply(settings[i].name);
}

// Once the storage area is there. When it only just survived one of them, the rest is left
// alone. What this edition refuses is refused without words.
void load_mem_prefs()
{
    for (const char *name : {"niceness", "segmentsize", "max_memory", "min_memory"})
        if (apply(name) == 913)
            return;
    uint8_t was = s_outlev;
    s_outlev = 5;
    for (const char *name : {"maxvar", "matsize"})
        (void)apply(name);
    s_outlev = was;
}
