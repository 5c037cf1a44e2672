#include "standard_output.h"

#include "commands.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <iostream>

namespace cli {
namespace {

[[noreturn]] void Fail() {
  throw Refusal(std::string("standard output: ") + std::strerror(errno));
}

bool show_log = false;

std::FILE* Claim() {
  std::fflush(stdout);
  const int results = dup(STDOUT_FILENO);
  const int log = show_log ? dup(STDERR_FILENO) : open("/dev/null", O_WRONLY);
  if (results < 0 || log < 0 || dup2(log, STDOUT_FILENO) < 0) Fail();
  close(log);
  std::FILE* const file = fdopen(results, "wb");
  if (file == nullptr) Fail();
  return file;
}

}  // namespace

void ShowLog(bool show) {
  show_log = show;
}

std::FILE* ClaimStandardOutput() {
  static std::FILE* const file = Claim();
  return file;
}

void PrintResult(std::string_view text) {
  std::FILE* const out = ClaimStandardOutput();
  if (std::fwrite(text.data(), 1, text.size(), out) != text.size() || std::fflush(out) != 0) Fail();
}

void FlushStandardOutput() {
  if (!std::cout.flush()) Fail();
}

}  // namespace cli
