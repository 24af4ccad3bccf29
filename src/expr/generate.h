// expr/generate.h - storage types that follow the values: what generate, replace, compress
// and recast share.
#pragma once
#include <cstdint>

// Variables there were when generate began under by: what by goes back to when a group fails.
// -1 when no generate has run since by began.
extern int32_t byKvaronexit;

// The smallest type at or above type that holds value exactly.
uint8_t promoted_vartype(double value, uint8_t type);
// Gives a variable another type, all rows, keeping its place, format, labels and
// characteristics. 0, 1 after a break, or a storage code; on failure nothing has changed.
[[nodiscard]] int32_t change_vartype(int32_t var, uint8_t type, int32_t nobs);
// As change_vartype over all rows; the format of a string that is the default of its old type
// becomes that of the new one.
[[nodiscard]] int32_t change_vartype_fmt(int32_t var, uint8_t type);
int32_t doupstr(int32_t var, int32_t newlen);  // -1 cut to 244; 0; or a code
[[nodiscard]] int32_t doupnum(double value, int32_t var, uint8_t *typeout);
void missmsg(int32_t n, bool newline_after);
void tmsg(const char *name, uint8_t oldtype, uint8_t newtype);
void nvalues(int32_t n);  // "(n value" with its plural, the beginning of a count's line
const char *plural(int64_t n);  // "s" unless n is 1
