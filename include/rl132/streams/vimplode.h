// Block compression in the PKWARE Data Compression Library "implode" format.
//
// Both engines are driven entirely through caller callbacks and keep all their
// state in a caller-supplied work area, so they are reentrant and never allocate.
#ifndef RL132_STREAMS_VIMPLODE_H
#define RL132_STREAMS_VIMPLODE_H
#include "rl132/core/rldefs.h"

// Literal modes.
#define CMP_BINARY 0
#define CMP_ASCII  1

// Work-area sizes the callers allocate.
#define CMP_BUFFER_SIZE 36312u   // implode
#define EXP_BUFFER_SIZE 12596u   // explode

// Return codes.
#define CMP_NO_ERROR         0
#define CMP_INVALID_DICTSIZE 1
#define CMP_INVALID_MODE     2
#define CMP_BAD_DATA         3
#define CMP_ABORT            4

// Read callback: fill buf with up to *size bytes; return how many were placed
// (0 at the end of input).
typedef unsigned int (*vIMPLODEREAD)(char* buf, unsigned int* size, void* param);
// Write callback: consume *size bytes from buf.
typedef void (*vIMPLODEWRITE)(char* buf, unsigned int* size, void* param);

// Compresses everything read into the implode format. *type is CMP_BINARY or
// CMP_ASCII, *dsize 1024, 2048 or 4096. Returns 0, CMP_INVALID_DICTSIZE or
// CMP_INVALID_MODE. The output grows at most to 9/8 of the input in binary mode
// and 14/8 in ASCII mode, plus 5 bytes. It is never shorter than 5 bytes: the
// empty input's stream gets a zero byte after its end code, so that expanders
// which insist on five bytes accept it.
RL132_API unsigned int implode(vIMPLODEREAD read, vIMPLODEWRITE write, char* work,
                               void* param, unsigned int* type, unsigned int* dsize);

// Expands an implode stream. Returns 0, CMP_INVALID_DICTSIZE (bad dictionary
// code), CMP_INVALID_MODE (bad literal mode), CMP_BAD_DATA (fewer than 5 bytes at
// the start) or CMP_ABORT (corrupt or truncated data; what was decoded before the
// fault has been written).
RL132_API unsigned int explode(vIMPLODEREAD read, vIMPLODEWRITE write, char* work, void* param);

// After explode returned: how many input bytes it used, through the byte that
// holds the end code (or the last item decoded). Bytes the read callback
// delivered beyond that belong to whatever follows the compressed data.
RL132_API unsigned long long explode_used(const char* work);

// Compression effort, a parameter of this library beside the format's interface.
// Levels 1 to 8 work in CMP_BUFFER_SIZE bytes; level 9 finds the smallest output
// the format allows for the window and needs implode_work_size(9) bytes (when
// the work area is smaller, it compresses like level 8). implode uses the default.
#define CMP_LEVEL_FASTEST 1
#define CMP_LEVEL_DEFAULT 5
#define CMP_LEVEL_BEST    9

// Bytes of work area implode_level needs at the given level.
RL132_API unsigned int implode_work_size(unsigned int level);

// implode with a chosen effort; workSize is the size of the work area.
RL132_API unsigned int implode_level(vIMPLODEREAD read, vIMPLODEWRITE write, char* work,
                                     unsigned int workSize, void* param, unsigned int* type,
                                     unsigned int* dsize, unsigned int level);

#endif
