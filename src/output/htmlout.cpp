#include "output/htmlout.h"
#include "output/oml.h"
#include <cctype>
#include <cstring>

static const char head[] =
    "<style>\n"
    "body { background: #fff; color: #222; }\n"
    "pre { font-family: \"DejaVu Sans Mono\", Consolas, Menlo, monospace; font-size: 13px; }\n"
    ".r { font-weight: bold; }\n.e { color: #b00020; }\n.c { font-weight: bold; }\n"
    ".b { font-weight: bold; }\n.i { font-style: italic; }\n.u { text-decoration: underline; }\n"
    ".l, a { color: #0645ad; text-decoration: none; }\na:hover { text-decoration: underline; }\n"
    "</style>\n</head>\n<body>\n<pre>\n";

htmlout::htmlout(int32_t fd, const char *title) : sink(fd)
{
    sink.put("<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n<title>");
    escaped(title, strlen(title));
    sink.put("</title>\n");
    sink.put(head);
}

void htmlout::escaped(const char *p, size_t n)
{
    for (const char *end = p + n; p < end;) {
        size_t k = utf8_at(p, size_t(end - p));
        switch (*p) {
        case '&': sink.put("&amp;"); break;
        case '<': sink.put("&lt;"); break;
        case '>': sink.put("&gt;"); break;
        case '"': sink.put("&quot;"); break;
        default:
            if (k == 1 && *p != '\t' && (uint8_t(*p) < 32 || *p == 127))
                sink.put("?");
            else if (k)
                sink.put(p, k);
            else
                sink.put("\xef\xbf\xbd");
        }
        p += k ? k : 1;
    }
}

// A page's file: its name with blanks as underscores. Anything odd is no link.
static std::string target(const std::string &page)
{
    std::string out;
    for (char c : page) {
        if (isalnum(uint8_t(c)) || strchr("_.-()", c))
            out += c;
        else if (c == ' ')
            out += '_';
        else
            return "";
    }
    return out.empty() || out[0] == '.' ? "" : out + ".html";
}

void htmlout::restyle(uint8_t style, const std::string &link)
{
    if (style == open && link == leads)
        return;
    if (inspan)
        sink.put("</span>");
    if (inlink)
        sink.put("</a>");
    inspan = inlink = false;
    std::string to = target(link), classes;
    if (!to.empty()) {
        sink.put("<a href=\"" + to + "\">");
        inlink = true;
    }
    static const struct {
        uint8_t mask, value;
        char name;
    } rows[] = {
        {omlst_color, omlst_result, 'r'},  {omlst_color, omlst_error, 'e'},
        {omlst_color, omlst_command, 'c'}, {omlst_bold, omlst_bold, 'b'},
        {omlst_italic, omlst_italic, 'i'}, {omlst_under, omlst_under, 'u'},
        {omlst_link, omlst_link, 'l'},
    };
    for (auto &r : rows)
        if ((style & r.mask) == r.value && !(r.name == 'l' && inlink)) {
            classes += classes.empty() ? "" : " ";
            classes += r.name;
        }
    if (!classes.empty()) {
        sink.put("<span class=\"" + classes + "\">");
        inspan = true;
    }
    open = style;
    leads = link;
}

void htmlout::run(uint8_t style, const std::string &link, const char *p, size_t n)
{
    restyle(style, link);
    escaped(p, n);
}

void htmlout::lineend()
{
    restyle(0, "");
    sink.put("\n");
}

bool htmlout::close()
{
    restyle(0, "");
    sink.put("</pre>\n</body>\n</html>\n");
    sink.flush();
    return !sink.failed;
}
