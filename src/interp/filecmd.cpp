// file: text and binary files read and written by programs, by handle.
#include "core/bytes.h"
#include "core/files.h"
#include "core/mem.h"
#include "core/missing.h"
#include "core/numtext.h"
#include "core/rc.h"
#include "core/state.h"
#include "data/dsa.h"
#include "data/scalars.h"
#include "data/variables.h"
#include "expr/expr.h"
#include "interp/dm.h"
#include "interp/interp.h"
#include "interp/macros.h"
#include "interp/messages.h"
#include "interp/programs.h"
#include "interp/syntaxpat.h"
#include "output/fmt.h"
#include "output/print.h"
#include "stats/results.h"
#include <algorithm>
#include <cmath>
#include <cstring>
#include <memory>
#include <string>
#include <unistd.h>

bool hastmp_fhopened;

using str = std::string;

namespace {

struct handle {
    str path;
    int32_t fd = -1;
    bool reads = false, writes = false, binary = false;
    byteorder order = b_native;
    str in;          // read and not yet handed out
    size_t at = 0;
    bool ended = false;
    str out;         // not yet written
    size_t column = 1;

    ~handle()
    {
        if (fd >= 0)
            ov_close(fd);
    }
};

handle *of(void *payload) { return *static_cast<handle **>(payload); }

int32_t flush(handle *h)
{
    int64_t n = int64_t(h->out.size());
    bool good = lovata_write(h->fd, h->out.data(), n) == n;
    h->out.clear();
    return good ? 0 : fierr(RC_IOWRITE, h->path.c_str());
}

int32_t find(handle **out)
{
    const char *name = ti_gettok(tokinfo, prsestd);
    void *rec = *name ? dmfind0(name, DM_FILEHANDLE) : nullptr;
    if (!rec)
        return errout(RC_NOTFOUND, "file handle %s not found\n", tok_text(name));
    *out = of(rec);
    return 0;
}

// ---- open

struct openwords {
    bool read = false, write = false, text = false, binary = false, replace = false,
         append = false, all = false;
};

int32_t read_words(openwords *w)
{
    const char *tok = ti_gettok(tokinfo, prsestd);
    if (*tok != ',')
        return *tok ? error(RC_SYNTAX) : required("option read, write or read write");
    struct {
        const char *word;
        bool *flag;
    } rows[] = {{"read", &w->read},       {"write", &w->write},     {"text", &w->text},
                {"binary", &w->binary},   {"replace", &w->replace}, {"append", &w->append},
                {"all", &w->all}};
    while (*(tok = ti_gettok(tokinfo, prsestd))) {
        bool hit = false;
        for (auto &r : rows)
            if (!strcmp(tok, r.word))
                *r.flag = hit = true;
        if (!hit)
            return errout(RC_SYNTAX, "option %s not allowed\n", tok_text(tok));
    }
    if (!w->read && !w->write)
        return required("option read, write or read write");
    if ((w->text && w->binary) || (w->replace && w->append))
        return error(184);
    return 0;
}

int32_t file_open()
{
    char name[33], path[filenamelen + 1];
    const char *tok = ti_gettok(tokinfo, prsestd);
    int32_t rc = chkname(tok, false);
    if (rc)
        return rc;
    memcpy(name, tok, strlen(tok) + 1);
    if (dmfind0(name, DM_FILEHANDLE))
        return errout(RC_EXISTS, "file handle %s already exists\n", name);
    if (strcmp(ti_gettok(tokinfo, prsestd), "using"))
        return required("using");
    if ((rc = ti_gettokfn(tokinfo, path)))
        return error(rc);
    openwords w;
    if ((rc = read_words(&w)))
        return rc;
    auto h = std::make_unique<handle>();
    h->path = path_expand(path);
    h->reads = w.read;
    h->writes = w.write;
    h->binary = w.binary;
    if (w.read && w.write && !w.replace && !path_isfile(h->path))
        h->fd = ov_open(h->path.c_str(), OV_CREATE);
    else
        h->fd = ov_open(h->path.c_str(), !w.write    ? OV_READ
                                         : w.replace ? OV_REPLACE
                                         : w.append || w.read ? OV_APPEND
                                                              : OV_CREATE);
    if (h->fd < 0)
        return fierr(-h->fd, path);
    if (w.read)
        lseek(h->fd, 0, SEEK_SET);
    void *rec = dmadd(name, DM_FILEHANDLE, istmpvn(name, 0) ? typelmac : 0, sizeof(handle *));
    if (!rec)
        return RC_DMMEM;
    handle *raw = h.release();
    memcpy(rec, &raw, sizeof raw);
    hastmp_fhopened = true;
    return 0;
}

// ---- reading

bool more(handle *h)
{
    char buf[16384];
    if (h->ended)
        return false;
    int32_t n = ovata_read(h->fd, buf, sizeof buf);
    if (n <= 0) {
        h->ended = true;
        return false;
    }
    h->in.erase(0, h->at);
    h->at = 0;
    h->in.append(buf, size_t(n));
    return true;
}

int32_t local_name(str *out)
{
    *out = str("_") + ti_gettok(tokinfo, prsestd);
    return mac_goodname(out->c_str(), out->size()) ? 0 : invalid(out->c_str() + 1);
}

int32_t read_line(handle *h)
{
    str name;
    int32_t rc = local_name(&name);
    if (rc)
        return rc;
    size_t from = h->at, end;
    while ((end = h->in.find_first_of("\r\n", from)) == str::npos ||
           (h->in[end] == '\r' && end + 1 == h->in.size() && !h->ended)) {
        size_t seen = h->in.size() - h->at;
        if (!more(h)) {
            if (end == str::npos)
                end = h->in.size();
            break;
        }
        from = h->at + (seen ? seen - 1 : 0);
    }
    bool eof = h->at >= h->in.size();
    str line = h->in.substr(h->at, end - h->at);
    const char *status = "none";
    if (end < h->in.size()) {
        bool cr = h->in[end] == '\r', crlf = cr && end + 1 < h->in.size() && h->in[end + 1] == '\n';
        status = crlf ? "win" : cr ? "mac" : "unix";
        end += crlf ? 2 : 1;
    }
    h->at = end;
    retval_clear();
    retval_set_gscalar(eof, "eof");
    retval_set_glocal("status", eof ? "eof" : status);
    for (char &c : line)
        if (!c)
            c = ' ';
    return macresave(name.c_str(), line.substr(0, macrolen - 1).c_str());
}

struct binfmt {
    int32_t width;
    char kind;     // z a float or double, b an integer, s text
    bool isunsigned;
};

int32_t read_binfmt(binfmt *f)
{
    str text = ti_gettok(tokinfo, prsestd);
    if (text != "%")
        return error(RC_SYNTAX);
    text = ti_gettok(tokinfo, prsestd);
    size_t n = text.find_first_not_of("0123456789");
    if (!n || n == str::npos || cnvstoint4(text.substr(0, n).c_str(), &f->width))
        return error(RC_SYNTAX);
    f->kind = text[n];
    str tail = text.substr(n + 1);
    f->isunsigned = tail == "u";
    bool good = f->kind == 'z'   ? (f->width == 4 || f->width == 8) && tail.empty()
                : f->kind == 'b' ? (f->width == 1 || f->width == 2 || f->width == 4) &&
                                       (tail.empty() || tail == "u" || tail == "s")
                : f->kind == 's' ? f->width > 0 && f->width < macrolen && tail.empty()
                                 : false;
    return good ? 0 : error(RC_SYNTAX);
}

double take_number(const handle *h, const binfmt &f, const char *p)
{
    char b[8];
    memcpy(b, p, size_t(f.width));
    if (h->order != b_native)
        std::reverse(b, b + f.width);
    if (f.kind == 'z')
        return cell_data(f.width == 4 ? T_FLOAT : T_DOUBLE, b);
    if (f.width == 1)
        return f.isunsigned ? uint8_t(b[0]) : int8_t(b[0]);
    if (f.width == 2) {
        uint16_t v = get16(b, b_native);
        return f.isunsigned ? v : int16_t(v);
    }
    uint32_t v = get32(b, b_native);
    return f.isunsigned ? v : double(int32_t(v));
}

int32_t read_binary(handle *h)
{
    binfmt f;
    int32_t rc = read_binfmt(&f);
    if (rc)
        return rc;
    str name = ti_gettok(tokinfo, prsestd);
    bool local = name == "local";
    if (local)
        name = ti_gettok(tokinfo, prsestd);
    if (!mac_goodname(name.c_str(), name.size()))
        return invalid(name.c_str());
    while (h->in.size() - h->at < size_t(f.width) && more(h))
        ;
    bool eof = h->in.size() - h->at < size_t(f.width);
    retval_clear();
    retval_set_gscalar(eof, "eof");
    str bytes = h->in.substr(h->at, size_t(f.width));
    h->at += bytes.size();
    if (f.kind == 's') {
        str text(bytes.c_str());
        return local ? macresave(("_" + name).c_str(), text.c_str())
                     : ssclrsv(name.c_str(), text.substr(0, strlen_max).c_str());
    }
    double z = eof ? misval : take_number(h, f, bytes.data());
    if (!local)
        return sclrsv(name.c_str(), z);
    char num[32];
    mac_numtext(z, num);
    return macresave(("_" + name).c_str(), num);
}

int32_t file_read()
{
    handle *h;
    int32_t rc = find(&h);
    if (rc)
        return rc;
    if (!h->reads)
        return errout(RC_FILEOPEN, "file not opened for reading\n");
    if (h->writes && (rc = flush(h)))
        return rc;
    return h->binary ? read_binary(h) : read_line(h);
}

// ---- writing

void put(handle *h, const str &text)
{
    h->out += text;
    size_t lf = text.rfind('\n');
    h->column = lf == str::npos ? h->column + text.size() : text.size() - lf;
}

// The expression in the parentheses at the scan position.
int32_t value(bool *isstr, double *z, char *s)
{
    const char *p = ti_wheretok(tokinfo);
    while (*p == ' ')
        p++;
    const char *end = *p == '(' ? syn_closeparen(p) : nullptr;
    if (!end)
        return error(RC_SYNTAX);
    int32_t rc = exp_text(str(p + 1, end - 1).c_str(), W_ANY, isstr, z, s);
    ti_settok(tokinfo, ti_wheretok(tokinfo) + (end - ti_wheretok(tokinfo)));
    return rc;
}

int32_t count_arg(int32_t *n)
{
    *n = 1;
    if (*ti_wheretok(tokinfo) != '(')
        return 0;
    bool isstr;
    double z;
    char s[256];
    int32_t rc = value(&isstr, &z, s);
    if (rc)
        return rc;
    if (isstr || !(z >= 0 && z < 32768))
        return error(RC_SYNTAX);
    *n = int32_t(z);
    return 0;
}

int32_t put_value(handle *h, const str &fmt)
{
    bool isstr;
    double z;
    char s[256], buf[512];
    int32_t rc = value(&isstr, &z, s);
    if (rc)
        return rc;
    if (!fmt.empty() && fmt_isstr(fmt.c_str()) != isstr)
        return error(RC_TYPE);
    if (isstr && fmt.empty())
        put(h, s);
    else if (isstr)
        put(h, str(buf, size_t(fmtstr(buf, sizeof buf, s, fmt.c_str()))));
    else if (fmt.empty())
        put(h, str(buf, size_t(fmtnumtrim(buf, sizeof buf, z, "%9.0g"))));
    else
        put(h, str(buf, size_t(fmtnum(buf, sizeof buf, z, fmt.c_str()))));
    return 0;
}

int32_t put_directive(handle *h, const str &word)
{
    int32_t n;
    bool col = word == "_col" || word == "_column", skip = word == "_s" || word == "_skip";
    int32_t rc = count_arg(&n);
    if (rc)
        return rc;
    if (word == "_n" || word == "_newline")
        put(h, str(size_t(n), '\n'));
    else if (word == "_tab")
        put(h, str(size_t(n), '\t'));
    else if (word == "_page")
        put(h, str(size_t(n), '\f'));
    else if (word == "_char")
        put(h, str(1, char(n)));
    else if (skip)
        put(h, str(size_t(n), ' '));
    else if (col)
        put(h, str(size_t(n) > h->column ? size_t(n) - h->column : 0, ' '));
    else
        return error(RC_SYNTAX);
    return 0;
}

int32_t write_text(handle *h)
{
    for (;;) {
        const char *p = ti_wheretok(tokinfo);
        while (*p == ' ')
            p++;
        if (!*p)
            return 0;
        int32_t rc;
        if (*p == '(')
            rc = put_value(h, "");
        else if (*p == '%') {
            const char *b = p;
            while (*p && *p != ' ' && *p != '(')
                p++;
            str fmt(b, p);
            fmtinfo f;
            if (chkfmt(fmt.c_str(), &f))
                return errout(120, "invalid %%format\n");
            ti_settok(tokinfo, ti_wheretok(tokinfo) + (p - ti_wheretok(tokinfo)));
            rc = put_value(h, fmt);
        } else {
            char *start, *end, *next;
            if (!ti_parse_quoted_string(tokinfo, ti_wheretok(tokinfo) + (p - ti_wheretok(tokinfo)),
                                        &start, &end, &next)) {
                put(h, str(start, end));
                ti_settok(tokinfo, next);
                rc = 0;
            } else
                rc = put_directive(h, ti_gettok(tokinfo, prsestd));
        }
        if (rc)
            return rc;
    }
}

int32_t write_binary(handle *h)
{
    while (ti_peektok_chr(tokinfo)) {
        binfmt f;
        bool isstr;
        double z;
        char s[256], b[8];
        int32_t rc = read_binfmt(&f);
        if (rc || (rc = value(&isstr, &z, s)))
            return rc;
        if (isstr != (f.kind == 's'))
            return error(RC_TYPE);
        if (isstr) {
            str text(s);
            text.resize(size_t(f.width), '\0');
            h->out += text;
            continue;
        }
        double low = f.isunsigned ? 0 : -std::ldexp(1, 8 * f.width - 1);
        double high = std::ldexp(1, 8 * f.width - (f.isunsigned ? 0 : 1)) - 1;
        if (f.kind == 'z')
            cell_store(z, f.width == 4 ? T_FLOAT : T_DOUBLE, b);
        else {
            if (ovismissing(z) || z < low || z > high)
                return errout(RC_SYNTAX, "value out of range\n");
            uint32_t v = uint32_t(int64_t(z));
            f.width == 4 ? put32(b, v, b_native)
                         : f.width == 2 ? put16(b, uint16_t(v), b_native) : void(b[0] = char(v));
        }
        if (h->order != b_native)
            std::reverse(b, b + f.width);
        h->out.append(b, size_t(f.width));
    }
    return 0;
}

int32_t file_write()
{
    handle *h;
    int32_t rc = find(&h);
    if (rc)
        return rc;
    if (!h->writes)
        return errout(RC_FILEOPEN, "file not opened for writing\n");
    rc = h->binary ? write_binary(h) : write_text(h);
    return !rc && h->out.size() > 65536 ? flush(h) : rc;
}

// ---- seek, set, close, query

int32_t file_seek()
{
    handle *h;
    int32_t rc = find(&h), n = 0;
    if (rc || (h->writes && (rc = flush(h))))
        return rc;
    str where = ti_gettok(tokinfo, prsestd);
    off_t now = lseek(h->fd, 0, SEEK_CUR) - off_t(h->in.size() - h->at);
    if (where == "tof" || where == "eof" || !cnvstoint4(where.c_str(), &n)) {
        now = where == "eof" ? lseek(h->fd, 0, SEEK_END) : lseek(h->fd, n, SEEK_SET);
        h->in.clear();
        h->at = 0;
        h->ended = false;
    } else if (where != "query")
        return error(RC_SYNTAX);
    retval_clear();
    retval_set_gscalar(double(now), "loc");
    return now < 0 ? error(651) : 0;
}

int32_t file_set()
{
    handle *h;
    int32_t rc = find(&h);
    if (rc)
        return rc;
    if (strcmp(ti_gettok(tokinfo, prsestd), "byteorder"))
        return error(RC_SYNTAX);
    str w = ti_gettok(tokinfo, prsestd);
    if (w != "hilo" && w != "lohi" && w != "1" && w != "2")
        return error(RC_SYNTAX);
    h->order = w == "hilo" || w == "1" ? B_BIG : B_LITTLE;
    return 0;
}

int32_t close_one(void *rec)
{
    handle *h = of(rec);
    int32_t rc = h->writes ? flush(h) : 0;
    dmrm(rec);
    return rc;
}

int32_t file_close()
{
    str name = ti_gettok(tokinfo, prsestd);
    int32_t rc = 0;
    if (name == "_all") {
        while (void *rec = dmnext(nullptr, nullptr, DM_FILEHANDLE, nullptr))
            if (int32_t r = close_one(rec))
                rc = r;
        return rc;
    }
    void *rec = dmfind0(name.c_str(), DM_FILEHANDLE);
    return rec ? close_one(rec) : errout(RC_NOTFOUND, "file handle %s not found\n", name.c_str());
}

int32_t file_query()
{
    outlev_keep level(0);
    char name[33];
    int32_t n = 0;
    for (void *p = nullptr; (p = dmnext(p, name, DM_FILEHANDLE, nullptr)); n++) {
        handle *h = of(p);
        spout21f("%12s  %s %s%s%s  ", name, h->binary ? "binary" : "text", h->reads ? "read" : "",
                 h->reads && h->writes ? " " : "", h->writes ? "write" : "");
        spout21(h->path.c_str());
        if (spout21("\n"))
            return stopflag;
    }
    retval_clear();
    retval_set_gscalar(n, "N");
    return n ? 0 : spout21("(no files open)\n");
}

}  // namespace

void file_onremove(void *payload) { delete of(payload); }

void ovfile_autoclose()
{
    for (dmrec *r = dm_dtyp[DM_FILEHANDLE], *next; r; r = next) {
        next = r->tnext;
        if (r->aux >= typelmac && close_one(dm_payload(r)))
            continue;
    }
    hastmp_fhopened = false;
}

int32_t filecmd(int32_t)
{
    str sub = ti_gettok(tokinfo, prsestd);
    static const struct {
        const char *word;
        int32_t (*fcn)();
    } rows[] = {{"open", file_open}, {"read", file_read}, {"write", file_write},
                {"seek", file_seek}, {"set", file_set},   {"close", file_close},
                {"query", file_query}};
    for (const auto &r : rows)
        if (sub == r.word)
            return r.fcn();
    return error(RC_SYNTAX);
}
