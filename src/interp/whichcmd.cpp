// which, discard, sysdir.
#include "core/files.h"
#include "core/numtext.h"
#include "core/rc.h"
#include "core/state.h"
#include "interp/dm.h"
#include "interp/interp.h"
#include "interp/messages.h"
#include "interp/programs.h"
#include "output/print.h"
#include "stats/results.h"
#include <cstdio>
#include <cstring>
#include <string>

// Lines of a program file that begin with *! tell its version.
static int32_t show_versions(const char *path)
{
    int32_t fd = ov_open(path, OV_READ);
    if (fd < 0)
        return fierr(-fd, path);
    std::string text;
    char buf[4096];
    for (int32_t n; (n = ovata_read(fd, buf, sizeof buf)) > 0;)
        text.append(buf, size_t(n));
    ov_close(fd);
    for (size_t at = 0; at < text.size();) {
        size_t end = text.find('\n', at);
        if (end == std::string::npos)
            end = text.size();
        if (!text.compare(at, 2, "*!")) {
            spout21(text.substr(at, end - at).c_str());
            if (spout21("\n"))
                return stopflag;
        }
        at = end + 1;
    }
    return 0;
}

int32_t whichcmd(int32_t)
{
    char file[filenamelen + 1], path[512];
    int32_t rc = ti_gettokfn(tokinfo, file);
    if (rc)
        return error(rc);
    std::string name(file), ext = "ado";
    const char *builtin = findbuiltin(file);
    outlev_keep level(0);
    if (builtin)
        return spout21f("built-in command:  %s\n", builtin);
    size_t dot = name.rfind('.');
    if (dot != std::string::npos) {
        ext = name.substr(dot + 1);
        name.resize(dot);
    }
    if (!srchado(name.c_str(), ext.c_str(), 1, path)) {
        spout21(path);
        spout21("\n");
        return show_versions(path);
    }
    if (pgmfind(file, sys_pgmclass, PF_PROGRAM))
        return spout21f("%s is a program in memory\n", file);
    return errout(RC_NOTFOUND, "command %s not found as either built-in or ado-file\n", file);
}

int32_t discardal(int32_t)
{
    const char *tok = ti_gettok(tokinfo, prsestd);
    if (*tok)
        return notalow(tok_text(tok));
    pgm_discard_loaded();
    if (cls_forget_hook && !sys_is_cls)
        cls_forget_hook();
    return 0;
}

int32_t sysdircmd(int32_t)
{
    const char *tok = ti_gettok(tokinfo, prsestd);
    outlev_keep level(0);
    if (!*tok || cmdcmp(tok, "list", 1)) {
        for (int32_t i = 0; sysdir_words[i]; i++) {
            std::string head = std::string(sysdir_words[i]) + ":";
            spout21f("%12s  ", head.c_str());
            const char *dir = sysdir_of(sysdir_words[i]);
            spout21(dir ? dir : "");
            if (spout21("\n"))
                return stopflag;
        }
        return 0;
    }
    if (strcmp(tok, "set"))
        return error(RC_SYNTAX);
    char word[40], path[filenamelen + 1];
    snprintf(word, sizeof word, "%.39s", ti_gettok(tokinfo, prsestd));
    if (*ti_gettok(tokinfo, prsestd) != '=')
        ti_ungettok(tokinfo);
    int32_t rc = ti_gettokfn(tokinfo, path);
    return rc ? error(rc) : sysdir_set(word, path);
}
