// Compiled for the baseline of the build: 16 registers of two doubles.

#define ZEL_LANES 2
#define ZEL_TILE_VECTORS 2
#define ZEL_TILE_COLUMNS 4
#define ZEL_ROUTINES kLocalRoutinesBaseline
#define ZEL_LEVEL "generic"

#include "metamodel/simd/local_systems.inc"
