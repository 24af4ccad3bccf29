// interp/dm.h - the dm store: every named object of the running system.
//
// One process-wide store of named, typed blobs. Macros, programs, scalars, matrices, value
// labels, characteristics, results and the working objects of the matrix language are all
// records in it. A record is one allocation, header and payload; callers hold the payload.
//
//   name table   1009 chains, by the 31-times hash of the name modulo 1009
//   type table   6311 chains, by type
//
// New records go to the head of both chains, so the newest of a name is found first, and a
// whole type is found, moved to another owner (dmretypeall) or removed (dmzap) without a
// search. A payload stays where it is until it is removed or saved anew.
//
// Failure to allocate prints "insufficient memory for " and the type's word, and the caller
// returns 950.
#pragma once
#include <cstddef>
#include <cstdint>

// THE numbering of record types. A level is 0 at the prompt and at most 63.
enum dmtype : int32_t {
    DM_VALLABEL = 1,
    DM_GLOBAL = 2,
    DM_VARLIST = 3,
    DM_LASTCMD = 4,
    DM_ESTIMATES = 5,
    DM_VARLABEL = 6,
    DM_PROGRAM = 7,
    DM_MATRIX = 9,        // the numbers, umat.h
    DM_MATROWS = 10,      // its row stripe
    DM_MATCOLS = 11,      // its column stripe
    DM_CMDBUFFER = 12,    // a line set aside while a program file loads
    DM_CONSTRAINT = 13,
    DM_GRAPH = 14,
    DM_SCALAR = 15,
    DM_ESTPRESERVE = 16,
    DM_CHAR = 17,
    DM_TMPNAME = 18,      // temporary names, the postfile
    DM_TMPMATRIX = 19,
    DM_RSCALAR = 20,
    DM_RMACRO = 21,
    DM_RMATRIX = 22,      // 23 rows, 24 columns
    DM_RMATROWS = 23,
    DM_RMATCOLS = 24,
    DM_ESCALAR = 25,
    DM_EMACRO = 26,
    DM_EMATRIX = 27,      // 28 rows, 29 columns
    DM_EMATROWS = 28,
    DM_EMATCOLS = 29,
    DM_SMACRO = 30,
    DM_PLUGIN = 31,
    DM_PARKED = 32,       // the start-up command while profile files run
    DM_BYOBS = 33,
    DM_FILEHANDLE = 36,
    DM_PGMINDEX = 37,
    DM_CLSKEY = 40,       // keys of class objects
    DM_MOSA = 43,         // matrix-language values
    DM_MOSAFCN = 44,
    DM_MOSASCRATCH = 45,
    DM_MOSAKEYS = 47,     // keys while an object file is written
    DM_ESTMAT = 49,
    DM_RAUX1 = 52,        // what travels with r() matrices
    DM_RAUX2 = 53,
    DM_EAUX1 = 54,
    DM_EAUX2 = 55,
    DM_ESTAUX1 = 56,
    DM_ESTAUX2 = 60,
    DM_HELD_FIRST = 62,   // held estimates
    DM_HELD_LAST = 5178,
    DM_LOCAL = 5179,      // local macros, one type a level
    DM_LOCAL_LAST = 5242,
    // From a level's local type to its other types.
    DM_TO_RETSCALAR = 64,
    DM_TO_RETMACRO = 128,
    DM_TO_RETMATRIX = 192,
    DM_TO_RETROWS = 256,
    DM_TO_RETCOLS = 320,
    DM_TO_RETAUX1 = 384,
    DM_TO_RETAUX2 = 448,
    DM_LEVELVARLIST = 5761,
    DM_NTYPE = 6311,
};

struct dmrec {
    dmrec *nprev, *nnext;  // name chain
    dmrec *tprev, *tnext;  // type chain
    uint64_t cap, len;     // payload bytes held and used
    int32_t hash, type;
    int32_t aux;
    int16_t a, b;          // -1 at first
    char name[33];
    uint8_t flag;          // hit count of value labels
};
inline constexpr size_t dm_hdrsize = (sizeof(dmrec) + 15) & ~size_t{15};
inline constexpr int32_t dm_nhash = 1009;
extern dmrec *dm_hname[dm_nhash];
extern dmrec *dm_dtyp[DM_NTYPE];

inline dmrec *dm_rec(void *payload)
{
    return reinterpret_cast<dmrec *>(static_cast<char *>(payload) - dm_hdrsize);
}
inline const dmrec *dm_rec(const void *payload)
{
    return reinterpret_cast<const dmrec *>(static_cast<const char *>(payload) - dm_hdrsize);
}
inline void *dm_payload(dmrec *r) { return reinterpret_cast<char *>(r) + dm_hdrsize; }
uint32_t dm_hash(const char *name);  // h = h*31 + byte, wrapping

void dminit();
void dmshutdown();  // frees everything

// A new record with size bytes of zeroed payload, or null after printing the failure. A name
// is cut to 32 characters. Records of the same name and type may stand side by side.
[[nodiscard]] void *dmadd(const char *name, int32_t type, int32_t aux, uint64_t size);
[[nodiscard]] void *dmadd23(const char *name, int32_t type, int32_t aux, int16_t a, int16_t b,
                            uint64_t size);
// Adds a record holding a copy of data. Returns 0 or 950.
[[nodiscard]] int32_t dmsave(const char *name, int32_t type, int32_t aux, const void *data,
                             uint64_t size);
[[nodiscard]] int32_t dmsave23(const char *name, int32_t type, int32_t aux, int16_t a, int16_t b,
                               const void *data, uint64_t size);
// The record of that name and type resized for size bytes: in place when its capacity is at
// least size and at most size plus slack (half of size, held to 128..1024), else a new one in
// its stead. Contents are not kept. Null leaves the old record as it was.
[[nodiscard]] void *dmreadd23(const char *name, int32_t type, int32_t aux, int16_t a, int16_t b,
                              uint64_t size);
// As dmreadd23, with the contents: the record of that name and type comes to hold data, which
// may be part of its old payload. Returns 0 or 950.
[[nodiscard]] int32_t dmresave(const char *name, int32_t type, int32_t aux, const void *data,
                               uint64_t size);
// Copies at most size bytes of the payload out. Returns 0, or 111 without printing.
[[nodiscard]] int32_t dmuse(const char *name, int32_t type, uint64_t *length, void *buffer,
                            uint64_t size);
void dmrm(void *payload);                    // null does nothing
void dmzap(int32_t type);                    // removes a whole type
void dmretype(void *payload, int32_t type);  // to the head of the new type's chain
void dmretypeall(int32_t from, int32_t to);
void dmrename(void *payload, const char *name);
void *dmfind(const char *name, int32_t type, uint64_t *length);  // length 0 when absent
void *dmfind0(const char *name, int32_t type);
void *dmfindany(const char *name);
void *dmnamenext(void *payload, int32_t type);  // next of the same name; type -1 for any
// Walks a type: null gives the first, a payload the one behind it. name (33 bytes) and length
// may be null. The record handed out last may be removed only after the next was fetched.
void *dmnext(void *payload, char *name, int32_t type, uint64_t *length);
// A copy of a record under another name and type. Returns 0 or 950.
[[nodiscard]] int32_t dmcp(const void *payload, const char *name, int32_t type);
uint64_t dmmemory(int32_t type);             // bytes held by a type, -1 for all
// A record to a file and back, for objects that are kept on disk. dmwrite gives 0 or 693; dmread
// gives 0 and the payload, -1 at the end of the file, 688, 692 or 950.
[[nodiscard]] int32_t dmwrite(int32_t fd, const void *payload);
[[nodiscard]] int32_t dmread(int32_t fd, void **payload);
const char *dm_word(int32_t type);           // the word of its memory message
// Called before a record goes, so that cached pointers to it can be dropped.
extern void (*dm_onremove)(void *payload, int32_t type);
