// Compiled for x86-64-v3, AVX2 and FMA: 16 registers of four doubles.
#if defined(__x86_64__)

#define ZEL_LANES 4
#define ZEL_TILE_VECTORS 3
#define ZEL_TILE_COLUMNS 4
#define ZEL_DOT_ROWS 3
#define ZEL_DOT_COLUMNS 3
#define ZEL_ROUTINES kDenseRoutinesV3
#define ZEL_LEVEL "x86-64-v3"

#include "metamodel/simd/dense_products.inc"

#endif
