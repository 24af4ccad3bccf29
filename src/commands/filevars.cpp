// commands/filevars.cpp - a list of variables that speaks of a dataset file.
#include "commands/filevars.h"
#include "core/state.h"
#include "interp/messages.h"
#include <cstring>

namespace {

bool fits(const char *pattern, const char *name)
{
    for (; *pattern; pattern++, name++) {
        if (*pattern == '*' || *pattern == '~') {
            for (const char *p = name;; p++) {
                if (fits(pattern + 1, p))
                    return true;
                if (!*p)
                    return false;
            }
        }
        if (!*name || (*pattern != '?' && *pattern != *name))
            return false;
    }
    return !*name;
}

// One whole name, or the one name that begins so. 1-based; a negated code with words.
int32_t file_var(const dtadict *d, const std::string &word)
{
    int32_t hit = 0;
    for (int32_t k = 1; k <= d->K; k++) {
        const char *name = d->names[k - 1];
        if (word == name)
            return k;
        if (ovata_varabbrev && !strncmp(name, word.c_str(), word.size()))
            hit = hit ? -1 : k;
    }
    if (hit > 0)
        return hit;
    return hit < 0 ? -error2(4, word.c_str()) : -varnotfound(word.c_str());
}

int32_t one_item(const dtadict *d, const std::string &word, uint8_t *wanted)
{
    size_t dash = word.find('-');
    if (dash != std::string::npos) {
        int32_t a = file_var(d, word.substr(0, dash)), b = file_var(d, word.substr(dash + 1));
        if (a < 0 || b < 0)
            return a < 0 ? -a : -b;
        if (a > b)
            return error(198);
        memset(wanted + a - 1, 1, size_t(b - a) + 1);
        return 0;
    }
    if (word.find_first_of("*?~") == std::string::npos && word != "_all") {
        int32_t k = file_var(d, word);
        if (k < 0)
            return -k;
        wanted[k - 1] = 1;
        return 0;
    }
    bool any = false;
    for (int32_t k = 0; k < d->K; k++)
        if (word == "_all" || fits(word.c_str(), d->names[k]))
            wanted[k] = any = true;
    return any ? 0 : varnotfound(word.c_str());
}

}  // namespace

int32_t filevars_pick(const dtadict *d, const std::string &list, std::vector<uint8_t> *wanted)
{
    wanted->assign(size_t(d->K) + 1, 0);
    std::string text;
    // Blanks around a dash belong to the range.
    for (char c : list) {
        if (c == '-')
            while (!text.empty() && text.back() == ' ')
                text.pop_back();
        if (c == ' ' && !text.empty() && text.back() == '-')
            continue;
        text += c;
    }
    for (size_t at = 0; (at = text.find_first_not_of(' ', at)) != std::string::npos;) {
        size_t end = text.find(' ', at);
        if (end == std::string::npos)
            end = text.size();
        int32_t rc = one_item(d, text.substr(at, end - at), wanted->data());
        if (rc)
            return rc;
        at = end;
    }
    return 0;
}
