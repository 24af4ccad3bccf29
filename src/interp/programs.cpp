#include "interp/programs.h"
#include "core/mem.h"
#include "core/rc.h"
#include "core/settings.h"
#include "core/state.h"
#include "core/text.h"
#include "data/variables.h"
#include "expr/parse.h"
#include "interp/dm.h"
#include "interp/interp.h"
#include "interp/macros.h"
#include "interp/messages.h"
#include "mosa/values.h"
#include "output/print.h"
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

pgmrec *sys_pgmloc;
int32_t sys_upline, pgm_indent, sysldtime, load_depth;
bool sys_is_cls, resort_on_exit, reading_cls_pgm, not_autoload = true;
void *(*cls_pgmfind_hook)(const char *name, const char *owner);
int32_t (*cls_init_hook)();
int32_t (*cls_statement_hook)();
void (*cls_forget_hook)();

// A record that goes takes the cached pointer to it along, and what it stands for.
static void on_remove(void *payload, int32_t type)
{
    if (type == DM_PROGRAM && payload == sys_pgmloc)
        sys_pgmloc = nullptr;
    if (type == DM_PROGRAM && !*static_cast<pgmrec *>(payload)->owner)
        mo_dropclass(dm_rec(payload)->name);
    else if (type == DM_TMPNAME)
        post_onremove(payload);
    else if (type == DM_FILEHANDLE)
        file_onremove(payload);
}
[[maybe_unused]] static const bool hooked = (dm_onremove = on_remove, true);

// ---- finding

static const char *owner_of(const void *payload)
{
    return dm_rec(payload)->type == DM_PROGRAM ? static_cast<const pgmrec *>(payload)->owner : "";
}

static bool of_kind(const void *payload, int32_t which)
{
    int32_t t = dm_rec(payload)->type;
    return ((which & PF_PROGRAM) && t == DM_PROGRAM) || ((which & PF_PLUGIN) && t == DM_PLUGIN);
}

void *pgmfind(const char *name, const char *owner, int32_t which)
{
    void *common = nullptr;
    for (void *p = dmfindany(name); p; p = dmnamenext(p, -1)) {
        if (!of_kind(p, which))
            continue;
        const char *o = owner_of(p);
        if (!strcmp(o, owner))
            return p;
        if (!*o && !common)
            common = p;
    }
    return common;
}

void *pgm_load(const char *name)
{
    void *p = pgmfind(name, sys_pgmclass, PF_PROGRAM);
    char path[512];
    if (p || srchado(name, "ado", 1, path))
        return p;
    char was[sizeof cmd];
    memcpy(was, cmd, sizeof cmd);
    snprintf(cmd, sizeof cmd, "%s", name);
    int32_t rc = autoload("ado", true);
    memcpy(cmd, was, sizeof cmd);
    return rc ? nullptr : pgmfind(name, sys_pgmclass, PF_PROGRAM);
}

int32_t pgm_nlines(const pgmrec *p) { return dm_rec(p)->aux; }

int32_t pgm_getline()
{
    if (!sys_pgmloc) {
        void *p = sys_is_cls && cls_pgmfind_hook ? cls_pgmfind_hook(sys_pgmname, sys_pgmclass)
                                                 : pgmfind(sys_pgmname, sys_pgmclass, PF_PROGRAM);
        sys_pgmloc = static_cast<pgmrec *>(p);
        if (!p)
            return 1;
    }
    if (sys_upline < 0 || sys_upline >= pgm_nlines(sys_pgmloc))
        return 1;
    int32_t n;
    const char *line = pgm_line(sys_pgmloc, sys_upline++, &n);
    memcpy(console, line, size_t(n));
    pgm_indent = uint8_t(*console);
    *console = ' ';
    ti_settok(tokinfo, console);
    return 0;
}

// ---- storing lines

namespace {

struct body {
    std::unique_ptr<char[]> text{new (std::nothrow) char[pgm_maxbytes]};
    std::vector<int32_t> start;
    int32_t used = 0;
    bool full = false;

    void add(const char *line);
    void put(char c)
    {
        if (used == pgm_maxbytes)
            full = true;
        else
            text[size_t(used++)] = c;
    }
};

// Runs of blanks outside quotes shrink to one; leading ones are only counted.
void body::add(const char *line)
{
    int32_t indent = 0, depth = 0;
    bool simple = false;
    while (*line == ' ') {
        line++;
        indent++;
    }
    if (start.size() == size_t(pgm_maxlines))
        full = true;
    if (full)
        return;
    start.push_back(used);
    put(char(indent > 255 ? 255 : indent));
    int32_t first = used;
    for (const char *p = line; *p; p++) {
        if (!simple && p[0] == '`' && p[1] == '"') {
            depth++;
            put(*p++);
        } else if (depth && p[0] == '"' && p[1] == '\'') {
            depth--;
            put(*p++);
        } else if (!depth && *p == '"')
            simple = !simple;
        else if (*p == ' ' && !simple && !depth && p[1] == ' ')
            continue;
        put(*p);
    }
    if (!full && used > first && text[size_t(used) - 1] == ' ')
        used--;
    put(0);
}

// What the braces of a line do to the depth of a block. From version 8 on only a brace that
// ends or begins a line counts.
int32_t brace_change(const char *line)
{
    while (*line == ' ')
        line++;
    if (vernum >= 800) {
        size_t n = strlen(line);
        while (n && line[n - 1] == ' ')
            n--;
        return (n && line[n - 1] == '{' ? 1 : 0) - (*line == '}' ? 1 : 0);
    }
    int32_t d = 0;
    bool quoted = false;
    for (; *line; line++) {
        if (*line == '"')
            quoted = !quoted;
        else if (!quoted && *line == '{')
            d++;
        else if (!quoted && *line == '}')
            d--;
    }
    return d;
}

bool is_end(const char *line)
{
    while (*line == ' ')
        line++;
    return !strncmp(line, "end", 3) && (line[3] == 0 || line[3] == ' ');
}

// The number that stands before each line while a body is read.
struct lineprompt {
    const char *was = readcons_prompt;
    char text[16];
    void set(int32_t n)
    {
        snprintf(text, sizeof text, "%3d. ", n);
        readcons_prompt = text;
    }
    ~lineprompt() { readcons_prompt = was; }
};

// Reads up to `end`, or for a block until its braces balance.
int32_t read_body(body *b, bool block, int32_t depth)
{
    lineprompt prompt;
    if (block && depth <= 0)
        return 0;
    int32_t shown = int32_t(b->start.size());
    bool matrices = false;  // within a block of the matrix language, whose end is its own
    for (;;) {
        prompt.set(++shown);
        if (matrices ? getreq_raw() : getreq(true, false))
            return stopflag ? RC_BREAK : error(612);
        if (stopflag)
            return RC_BREAK;
        if (!block && !matrices && is_end(console))
            break;
        b->add(console);
        matrices = matrices ? !is_end(console) : mosa_opens(console) != 0;
        if (block && (depth += brace_change(console)) <= 0)
            break;
    }
    return b->full ? error(RC_LIMIT) : 0;
}

int32_t store(const char *name, const char *owner, const pgmopts *o, const body &b)
{
    int32_t n = int32_t(b.start.size());
    size_t head = offsetof(pgmrec, off) + size_t(n + 1) * sizeof(int32_t);
    auto r = static_cast<pgmrec *>(dmadd(name, DM_PROGRAM, n, head + size_t(b.used)));
    if (!r)
        return RC_DMMEM;
    r->loadtime = sysldtime;
    r->sortpreserve = o->sortpreserve;
    r->isclass = o->isclass;
    r->pgmclass = o->pgmclass;
    r->byable = o->byable;
    r->version = vernum;
    snprintf(r->owner, sizeof r->owner, "%s", owner);
    snprintf(r->properties, sizeof r->properties, "%s", o->properties ? o->properties : "");
    for (int32_t i = 0; i < n; i++)
        r->off[i] = int32_t(head) + b.start[size_t(i)];
    r->off[n] = int32_t(head) + b.used;
    memcpy(reinterpret_cast<char *>(r) + head, b.text.get(), size_t(b.used));
    return 0;
}

pgmrec *same_scope(const char *name, const char *owner)
{
    for (void *p = dmfind0(name, DM_PROGRAM); p; p = dmnamenext(p, DM_PROGRAM))
        if (!strcmp(owner_of(p), owner))
            return static_cast<pgmrec *>(p);
    return nullptr;
}

}  // namespace

int32_t mosa_opens(const char *line)
{
    toktype ti;
    std::string text = line;
    ti_settok(&ti, text.data());
    const char *word = ti_gettok(&ti, prsestd);
    while (cmdcmp(word, "quietly", 3) || cmdcmp(word, "noisily", 1) || cmdcmp(word, "version", 4)) {
        if (cmdcmp(word, "version", 4))
            ti_gettok(&ti, prsenum);
        word = ti_gettok(&ti, prsestd);
        if (*word == ':')
            word = ti_gettok(&ti, prsestd);
    }
    if (!cmdcmp(word, "mosa", 4) && strcmp(word, "m") != 0)
        return 0;
    bool colon = *ti_gettok(&ti, prsestd) == ':';
    if (colon)
        ti_gettok(&ti, prsestd);
    return *ti.token ? 0 : colon ? 2 : 1;
}

int32_t pgmdefine(const char *name, const char *owner, const pgmopts *opts, const char *firstline)
{
    pgmrec *old = same_scope(name, owner);
    if (old && !opts->isclass)
        return error2(3, name);
    body b;
    if (!b.text)
        return error(RC_NOMEM);
    if (opts->isclass) {
        char line[32];
        snprintf(line, sizeof line, "version %d.%02d", vernum / 100, vernum % 100);
        b.add(line);
    }
    if (firstline)
        b.add(firstline);
    bool block = firstline != nullptr;
    int32_t rc = read_body(&b, block, block ? brace_change(firstline) : 0);
    if (rc)
        return rc;
    dmrm(old);
    return b.start.empty() ? 0 : store(name, owner, opts, b);
}

// ---- program define

namespace {

// byable(recall [, header|noheader]) or byable(onecall)
int32_t read_byable(char *text, uint8_t *out)
{
    toktype ti;
    ti_settok(&ti, text);
    const char *tok = ti_gettok(&ti, prsestd);
    *out = 0;
    if (cmdcmp(tok, "recall", 1)) {
        *out = 2;
        if (*ti_gettok(&ti, prsestd) == ',') {
            tok = ti_gettok(&ti, prsestd);
            if (cmdcmp(tok, "noheader", 1))
                *out = 3;
            else if (!cmdcmp(tok, "header", 3))
                *out = 0;
            ti_gettok(&ti, prsestd);
        }
    } else if (cmdcmp(tok, "onecall", 1)) {
        *out = 1;
        ti_gettok(&ti, prsestd);
    }
    if (!*out || *ti.token)
        return errout(RC_SYNTAX, "option byable() incorrectly specified\n");
    return 0;
}

int32_t read_options(pgmopts *o, char *properties, int32_t len)
{
    parinfo->pi_vlist = parinfo->pi_exp = parinfo->pi_wgt = parinfo->pi_in = parinfo->pi_if =
        parinfo->pi_by = PI_NO;
    parinfo->pi_using = parinfo->pi_opts = PI_OK;
    parinfo->pi_blankall = 0;
    int32_t rc = ti_pi_parse(tokinfo, parinfo);
    if (rc)
        return rc;
    static const struct {
        const char *word;
        uint8_t pgmclass;
    } classes[] = {{"rclass", 1}, {"eclass", 3}, {"sclass", 2}, {"return", 1}, {"nclass", 0}};
    bool plugin = ti_pi_hasopt(tokinfo, parinfo, "plugin", 4);
    o->sortpreserve = ti_pi_hasopt(tokinfo, parinfo, "sortpreserve", 4);
    for (const auto &c : classes)
        if (ti_pi_hasopt(tokinfo, parinfo, c.word, 1))
            o->pgmclass = c.pgmclass;
    char by[41] = "";
    if (ti_pi_findargasis(tokinfo, parinfo, "byable", 2, by, 40) && (rc = read_byable(by, &o->byable)))
        return rc;
    if (ti_pi_findargasis(tokinfo, parinfo, "properties", 4, properties, len))
        o->properties = properties;
    if ((rc = ti_pi_chkopt(tokinfo, parinfo)))
        return rc;
    return plugin ? notbuilt(0) : 0;
}

// NAME, or CLASS.NAME for a member program; .NAME in the file of a class, and NAME there too.
int32_t program_name(const char *token, char *name, char *owner, uint8_t *isclass)
{
    std::string word = token, before = sys_pgmclass;
    *isclass = reading_cls_pgm;
    if (size_t dot = word.rfind('.'); dot != word.npos) {
        if (dot)
            before = word.substr(0, dot);
        if (before.empty())
            return errout(4007, "no current class context\n");
        word.erase(0, dot + 1);
        *isclass = 1;
    }
    int32_t rc = chkname(word.c_str(), false);
    if (!rc && *isclass)
        rc = chkname(before.c_str(), false);
    if (rc)
        return rc;
    strcut(name, 33, word.c_str());
    strcut(owner, 33, before.c_str());
    return 0;
}

int32_t pgmgen()
{
    char name[33], owner[33], properties[81] = "";
    pgmopts o = {};
    int32_t rc = program_name(tokinfo->token, name, owner, &o.isclass);
    if (rc)
        return rc;
    if (ti_peektok_chr(tokinfo) && (rc = read_options(&o, properties, 80)))
        return rc;
    // What a file defines beside its main program belongs to that program.
    bool sub = sysldtime && !not_autoload && strcmp(name, sys_pgmclass) != 0;
    return pgmdefine(name, o.isclass ? owner : sub ? sys_pgmclass : "", &o, nullptr);
}

// ---- dir, list, drop

// Lifted loops have names no user can give; they are nobody's to list or drop.
bool temporary(const void *p) { return dm_rec(p)->name[0] >= '0' && dm_rec(p)->name[0] <= '9'; }

int32_t dir()
{
    outlev_keep level(0);
    int64_t total = 0;
    char name[33];
    for (void *p = nullptr; (p = dmnext(p, name, DM_PROGRAM, nullptr));) {
        auto r = static_cast<pgmrec *>(p);
        if (temporary(p))
            continue;
        int64_t bytes = int64_t(dm_rec(p)->len);
        total += bytes;
        const char *sep = *r->owner ? "." : "";
        if (spout21f("%4s%10lld  %s%s%s\n", r->loadtime ? "ado" : "", (long long)bytes, r->owner,
                     sep, name))
            return stopflag;
    }
    spout21("    ----------\n");
    return spout21f("%14lld\n", (long long)total);
}

int32_t list_one(const char *name, const pgmrec *p)
{
    outlev_keep level(0);
    if (*p->owner)
        spout21f("\n%s.%s:\n", p->owner, name);
    else
        spout21f("\n%s:\n", name);
    static const char *const classes[] = {"", ", rclass", ", sclass", ", eclass"};
    if (p->pgmclass)
        spout21f("     (program%s)\n", classes[p->pgmclass & 3]);
    for (int32_t i = 0, n; i < pgm_nlines(p); i++) {
        const char *line = pgm_line(p, i, &n);
        spout21f("%3d. %*s", i + 1, int(uint8_t(*line)), "");
        spout21(line + 1);
        if (spout21("\n"))
            return stopflag;
    }
    return 0;
}

// NAME or OWNER.NAME among all programs.
void *find_named(const char *text)
{
    if (const char *dot = strchr(text, '.')) {
        std::string owner(text, dot);
        for (void *p = dmfind0(dot + 1, DM_PROGRAM); p; p = dmnamenext(p, DM_PROGRAM))
            if (owner == owner_of(p))
                return p;
        return nullptr;
    }
    return pgmfind(text, sys_pgmclass, PF_BOTH);
}

int32_t list()
{
    if (!ti_peektok_chr(tokinfo))
        return dir();
    while (*ti_gettok(tokinfo, prsestd)) {
        if (!strcmp(tokinfo->token, "_all")) {
            char name[33];
            for (void *p = nullptr; (p = dmnext(p, name, DM_PROGRAM, nullptr));)
                if (!temporary(p) && list_one(name, static_cast<pgmrec *>(p)))
                    return stopflag;
            continue;
        }
        void *p = find_named(tokinfo->token);
        if (!p || dm_rec(p)->type != DM_PROGRAM)
            return notfound(tok_text(tokinfo->token));
        if (list_one(dm_rec(p)->name, static_cast<pgmrec *>(p)))
            return stopflag;
    }
    return 0;
}

void drop_all_programs(bool loadedonly)
{
    void *next;
    for (void *p = dmnext(nullptr, nullptr, DM_PROGRAM, nullptr); p; p = next) {
        next = dmnext(p, nullptr, DM_PROGRAM, nullptr);
        if (!temporary(p) && (!loadedonly || static_cast<pgmrec *>(p)->loadtime))
            dmrm(p);
    }
    if (!loadedonly)
        dmzap(DM_PLUGIN);
}

}  // namespace

// The subprograms of a file go with its main program: left behind, they would be in the way
// when the file is loaded again.
static void drop_program(void *p)
{
    std::string name = dm_rec(p)->name;
    bool mainone = dm_rec(p)->type == DM_PROGRAM && static_cast<pgmrec *>(p)->loadtime && !*owner_of(p);
    dmrm(p);
    if (!mainone)
        return;
    void *next;
    for (p = dmnext(nullptr, nullptr, DM_PROGRAM, nullptr); p; p = next) {
        next = dmnext(p, nullptr, DM_PROGRAM, nullptr);
        if (name == owner_of(p))
            dmrm(p);
    }
}

void pgm_discard_loaded() { drop_all_programs(true); }

int32_t pgmdrop()
{
    if (!ti_peektok_chr(tokinfo))
        return error(RC_SYNTAX);
    while (*ti_gettok(tokinfo, prsestd)) {
        const char *tok = tokinfo->token;
        if (!strcmp(tok, "_all"))
            drop_all_programs(false);
        else if (!strcmp(tok, "_allado"))
            drop_all_programs(true);
        else if (void *p = find_named(tok))
            drop_program(p);
        else
            return notfound(tok_text(tok));
    }
    return 0;
}

int32_t pgm(int32_t)
{
    const char *tok = ti_gettok(tokinfo, prsestd);
    if (!*tok)
        return error(RC_SYNTAX);
    char next = ti_peektok_chr(tokinfo);
    if (cmdcmp(tok, "dir", 2) && !next)
        return dir();
    if (cmdcmp(tok, "list", 1) && next != ',')
        return list();
    if (!strcmp(tok, "drop"))
        return pgmdrop();
    if (cmdcmp(tok, "define", 2) && !*ti_gettok(tokinfo, prsestd))
        return error(RC_SYNTAX);
    return pgmgen();
}
