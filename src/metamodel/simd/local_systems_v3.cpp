// Compiled for x86-64-v3, AVX2: 16 registers of four doubles.
#if defined(__x86_64__)

#define ZEL_LANES 4
#define ZEL_TILE_VECTORS 2
#define ZEL_TILE_COLUMNS 4
#define ZEL_ROUTINES kLocalRoutinesV3
#define ZEL_LEVEL "x86-64-v3"

#include "metamodel/simd/local_systems.inc"

#endif
