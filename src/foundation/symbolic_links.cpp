#include "foundation/symbolic_links.h"

#include <limits.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace corvath::utils {

std::string FollowLinks(std::string path) {
  constexpr int kMaxLinks = 40;  // as Linux follows at most
  for (int count = 0; count <= kMaxLinks; ++count) {
    char target[PATH_MAX];
    const ssize_t length = ::readlink(path.c_str(), target, sizeof target);
    if (length < 0 && (errno == EINVAL || errno == ENOENT || errno == ENOTDIR))
      return path;  // no link, or nothing there
    if (length < 0) throw std::system_error(errno, std::system_category());
    const std::string text(target, static_cast<std::size_t>(length));
    // Directories stay as they are named: the system resolves them step by step.
    path = text.front() == '/' ? text : path.substr(0, path.find_last_of('/') + 1) + text;
  }
  throw std::system_error(ELOOP, std::system_category());
}

}  // namespace corvath::utils
