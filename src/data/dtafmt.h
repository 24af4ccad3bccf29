// data/dtafmt.h - the layouts of dataset files, as rows.
//
// Reader, writer, dump and tests walk the same rows, so a field has one name and one place.
// docs/dataset-format.md describes the release written by default.
#pragma once
#include "core/bytes.h"
#include "data/dtafile.h"
#include <cstddef>
#include <cstdint>

// kind: u one byte, i a signed integer in the file's order, t text.
struct dtafld {
    const char *name;
    uint16_t at, width;
    char kind;
    uint16_t to;  // offset in dtahdr; 0 is release
};
// What stands once for each variable, in file order, ends with a null name.
struct dtasection {
    const char *name;
    uint8_t which;
};
enum : uint8_t { DS_TYPES, DS_NAMES, DS_SORT, DS_FMTS, DS_LBLS, DS_VARLABS, DS_N };
extern const dtasection dtasections[];

struct dtalayout {
    uint8_t release;
    uint8_t hdrlen;
    const dtafld *hdr;       // ends with a null name
    bool letters;            // storage types as letters
    uint8_t width[DS_N];     // bytes a variable in each section
    uint8_t expansion;       // bytes of a record's head; 0 there are none
    uint8_t labname;         // bytes of a table's name; 0 the early form of tables
};
const dtalayout *dta_layout(uint8_t release);  // or null
extern const dtalayout dtalayouts[];           // ends with release 0

void dta_takehdr(const dtalayout *lay, const uint8_t *bytes, dtahdr *h);
void dta_puthdr(const dtalayout *lay, const dtahdr *h, uint8_t *bytes);
inline byteorder dta_order(const dtahdr *h) { return h->order == B_LITTLE ? B_LITTLE : B_BIG; }

// A file's head and dictionary, in memory. Types below release 112 are the single-missing ones.
struct dtadict {
    dtahdr h;
    const dtalayout *lay;
    int32_t K, N;
    uint64_t width;  // of a row in the file
    uint8_t *types;
    char (*names)[33];
    int16_t *srt;    // K + 1
    char (*fmts)[49];
    char (*lbls)[33];
    char (*varlabs)[81];
    dtadict();
    ~dtadict();
    dtadict(const dtadict &) = delete;
    dtadict &operator=(const dtadict &) = delete;
};
// Reads what follows a header that was read into dict->h. Prints its words.
[[nodiscard]] int32_t dta_readdict(int32_t fd, dtadict *dict, const char *name);
// Reads the expansion fields and hands out each characteristic. A code of each ends the reading.
using dta_charfn = int32_t (*)(void *arg, const char *owner, const char *name, const char *text);
[[nodiscard]] int32_t getgchar(int32_t fd, const dtadict *dict, const char *file, dta_charfn each,
                               void *arg);
// Opens, reads header and dictionary, closes.
[[nodiscard]] int32_t dta_peek(const char *name, dtadict *dict);
// Lists fields and sections by name and offset.
[[nodiscard]] int32_t dta_dump(const char *name);

void get113fmt(char *out, const char *format);             // 12 bytes
void cnv110to111vtype(uint8_t *types, int32_t K);
// Value labels at the end of a file. wanted is null for all tables.
[[nodiscard]] int32_t loadlab(int32_t fd, const dtadict *dict, bool (*wanted)(const char *name));
