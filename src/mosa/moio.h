// mosa/moio.h - matrices as streams of bytes, with all that their pointers lead to.
//
//   "MOTOP", a zero byte, order (1 big, 2 little)      texts come with their NUL
//     "OBJ", store type (1 byte), name (33), key (int32)
//       "MAT", letter R C S P or T, rows, cols (int32)
//         R  rows * cols doubles      C  the real plane, then the imaginary one
//         S  for each element its length (int32) and bytes
//         P, T  for each element "NUL", "KEY" and a key, or "NEW" and an object
//       "TAM"
//     "JBO"
//   "POTOM"
//
// Keys count the objects from 1 in the order met; an object met again is its key, so a graph
// keeps its shape, circles included. Pointers to functions become null. Numbers have the
// writer's order, which readers turn; keys are compared as they stand.
#pragma once
#include "mosa/values.h"
#include <cstdint>

enum moio_code : int32_t {
    MOIO_GOOD = 0,
    MOIO_BUSY = 1,     // called from within itself
    MOIO_TYPE = 2,     // storage that streams do not hold
    MOIO_WRITE = 3,    // write failure
    MOIO_MEMORY = 4,   // out of memory, or nested too deeply
    MOIO_FORMAT = 5,   // not a stream, damaged, or read failure
    MOIO_KEY = 6,      // a key nothing has, or an element that must not be empty
    MOIO_FUNCTION = 7, // a function where a matrix is required
    MOIO_END = 8,      // nothing more to read
    MOIO_SIZE = 9,     // rows and columns too large
    MOIO_VIEW = 10,    // a view that cannot be read
};

// Writes at the present position of a file.
[[nodiscard]] moio_code moio_write(int32_t fd, matobj *object);
// Reads from the present position; a file is left behind the stream. The object is a temporary,
// its name goes into name.
[[nodiscard]] moio_code moio_read(int32_t fd, matobj **object, char name[33]);

// ---- types as files of matrices and of functions keep them; what is none is told of and passed
// as it is (store types: 255 and -1)
int32_t itox_dttype(int32_t type);
int32_t xtoi_dttype(int32_t type);
int32_t itox_eltype(int32_t eltype);
int32_t xtoi_eltype(int32_t eltype);
int32_t itox_orgtype(int32_t orgtype);
int32_t xtoi_orgtype(int32_t orgtype);
