#include "foundation/standard_streams.h"

#include <ext/stdio_sync_filebuf.h>
#include <poll.h>
#include <unistd.h>
#include <wchar.h>

#include <cerrno>
#include <cstdio>
#include <iostream>

namespace corvath::utils {
namespace {

/// Whether `stream` ends in the C stream `file`, as the standard streams do at first.
bool EndsIn(const std::ostream& stream, FILE* file) {
  using Synchronised = __gnu_cxx::stdio_sync_filebuf<char>;
  auto* const buffer = dynamic_cast<Synchronised*>(stream.rdbuf());
  return buffer != nullptr && buffer->file() == file;
}

/// Whether `file` takes narrow text already. One without orientation would be given it for good.
bool IsNarrow(FILE* file) {
  return fwide(file, 0) < 0;
}

void WriteBytes(int file, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t count = ::write(file, bytes.data(), bytes.size());
    if (count >= 0) {
      bytes.remove_prefix(static_cast<std::size_t>(count));
    } else if (errno == EAGAIN) {  // the host made it non-blocking
      pollfd ready{file, POLLOUT, 0};
      ::poll(&ready, 1, /*timeout=*/-1);
    } else if (errno != EINTR) {
      return;
    }
  }
}

void Print(std::string_view utf8, std::ostream& stream, FILE* file) {
  const int descriptor = fileno(file);
  if (descriptor < 0 || (stream.good() && (!EndsIn(stream, file) || IsNarrow(file)))) {
    stream << utf8 << std::flush;
    return;
  }
  std::fflush(file);
  WriteBytes(descriptor, utf8);
}

}  // namespace

void PrintOutput(std::string_view utf8) {
  Print(utf8, std::cout, stdout);
}

void PrintError(std::string_view utf8) {
  Print(utf8, std::cerr, stderr);
}

}  // namespace corvath::utils
