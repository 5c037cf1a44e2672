#pragma once

#include <cstddef>

/// Calls of malloc of the program whose only source includes this.
static long num_allocations = 0;

extern "C" void* __libc_malloc(std::size_t size);

/// In place of the C library's: Eigen and operator new come here, too.
extern "C" void* malloc(std::size_t size) {
  ++num_allocations;
  return __libc_malloc(size);
}
