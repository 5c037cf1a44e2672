#pragma once

#include <cstdio>
#include <string_view>

namespace cli {

/// Whether warnings and notes of the library's log are shown, on standard error.
void ShowLog(bool show);

/// Standard output for the command's results alone: from the first call on, what the library logs
/// there is dropped, or goes to standard error (see ShowLog). Errors of the log go there anyway. To
/// be called before a project is opened.
/// @throws Refusal  there is no standard output
std::FILE* ClaimStandardOutput();

/// Writes `text` to the claimed standard output and flushes it. @throws Refusal  it cannot
void PrintResult(std::string_view text);

/// Flushes what went to std::cout: help, version, pages. @throws Refusal  it cannot
void FlushStandardOutput();

}  // namespace cli
