// Compiled for x86-64-v4, AVX-512: 32 registers of eight doubles.
#if defined(__x86_64__)

#define ZEL_LANES 8
#define ZEL_TILE_VECTORS 3
#define ZEL_TILE_COLUMNS 8
#define ZEL_ROUTINES kLocalRoutinesV4
#define ZEL_LEVEL "x86-64-v4"

#include "metamodel/simd/local_systems.inc"

#endif
