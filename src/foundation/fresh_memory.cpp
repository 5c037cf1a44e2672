#include "foundation/fresh_memory.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>

namespace corvath::utils {

void PopulatePages(void* begin, std::size_t size) {
#ifdef MADV_POPULATE_WRITE  // Linux 5.14; older ones refuse it
  static const auto page = static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE));
  const auto address = reinterpret_cast<std::uintptr_t>(begin);
  const std::uintptr_t first = (address + page - 1) / page * page;
  const std::uintptr_t last = (address + size) / page * page;
  if (first >= last) return;
  const int error = errno;
  madvise(reinterpret_cast<void*>(first), last - first, MADV_POPULATE_WRITE);
  errno = error;
#else
  static_cast<void>(begin);
  static_cast<void>(size);
#endif
}

}  // namespace corvath::utils
