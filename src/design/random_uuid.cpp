#include "design/random_uuid.h"

#include <boost/uuid/entropy_error.hpp>
#include <sys/random.h>

#include <cerrno>

namespace corvath::algorithm::datatypes {

void SystemRandomSource(void* data, std::size_t size) {
  auto* next = static_cast<unsigned char*>(data);
  while (size > 0) {
    const ssize_t got = getrandom(next, size, 0);
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) throw boost::uuids::entropy_error(errno, "getrandom");
    next += got;
    size -= static_cast<std::size_t>(got);
  }
}

boost::uuids::uuid NewRandomUuid(RandomSource source) {
  boost::uuids::uuid id;
  source(id.data, sizeof id.data);
  id.data[8] = static_cast<unsigned char>((id.data[8] & 63u) | 128u);
  id.data[6] = static_cast<unsigned char>((id.data[6] & 15u) | 64u);
  return id;
}

}  // namespace corvath::algorithm::datatypes
