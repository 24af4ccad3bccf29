// interp/macros.h - macros: named texts pasted into a line before its command is looked at.
//
// A local's store name begins with _ and lives under the type of the level (typelmac);
// everything else is global (type 2). A payload is the text with its NUL, and its length
// counts the NUL. Every failure to store is 950.
#pragma once
#include "core/limits.h"
#include <cstddef>
#include <cstdint>
#include <string>

extern char space_for_macexp[macrolen];  // the name being looked up

char *macptr(const char *name);                        // text, or null
char *macfind(const char *name, uint64_t *length);
void macload(const char *payload, uint64_t length, char *buffer);
void macuse(const char *name, char *buffer);           // macrolen bytes; empty when absent
void macuseshort(const char *name, char *buffer, int32_t max);
[[nodiscard]] int32_t macsave(const char *name, const char *value);
[[nodiscard]] int32_t macsave0(const char *name);
[[nodiscard]] int32_t macresave(const char *name, const char *value);
[[nodiscard]] int32_t macresaveq(const char *name, const char *value);
[[nodiscard]] int32_t macresave_c(const char *name, const char *value);
// op '+' or '-'; when 1 buffer gets the new value, -1 the old one.
[[nodiscard]] int32_t macincr(const char *name, char op, char *buffer, int32_t when);
void macerase(const char *name);
char *macnext(const char *payload, char *name);        // walk the globals

// A number as macros hold it: "%18.0g" with a decimal point, unpadded. buf holds 32 bytes.
// Returns the length.
int32_t mac_numtext(double z, char *buf);
// The first word of text as a list item (a blank ends it; quotes hold it together and are
// taken off) into buf of max bytes. Returns the place behind it, or null when there is none.
const char *mac_item(const char *text, char *buf, int32_t max, bool *quoted);
bool mac_goodname(const char *name, size_t n);  // letters, digits, _; no digit first; 1 to 32
// The list of a running foreach stands among the globals: it is nobody's to see or drop.
inline bool mac_hidden(const char *name) { return *name == '!'; }
// Text of an enclosing pair of quotes taken off in place; 198 without its closer.
[[nodiscard]] int32_t mac_unquote(char **text, size_t *n);

[[nodiscard]] int32_t macexp();   // expands console in place
// References that floors above answer; null gives the empty text. .x of classes, and the
// strings of gdi(), _gedi(), _sedi(). A code above 1 stops the expansion.
extern int32_t (*mac_clsxpand)(const char *ref, std::string *result);
extern int32_t (*mac_graphtext)(const char *fcn, const char *arg, std::string *result);
// What `display` would show of the rest of tokinfo's line, as text.
extern int32_t (*mac_displaytext)(std::string *result);
enum mac_mode : int32_t {
    MG_DEFINE = 0, MG_LOCAL = 1, MG_GLOBAL = 2, MG_RETURN = 4, MG_ERETURN = 5, MG_SRETURN = 6,
    MG_CLOCAL = 7,
};
[[nodiscard]] int32_t macgen(int32_t mode);
[[nodiscard]] int32_t macro(int32_t arg);
// The value of what stands behind ":" in a definition, from tokinfo.
[[nodiscard]] int32_t macexfcn(std::string *result);
[[nodiscard]] int32_t ti_maclistfcn(std::string *result);
[[nodiscard]] int32_t tmpvcmd(int32_t kind);  // 0 tempvar, 1 tempname, 2 tempfile
// Keyword i of the functions behind ":" (0-based); 0 past the last.
int32_t mac_extword(int32_t i, const char **word);
