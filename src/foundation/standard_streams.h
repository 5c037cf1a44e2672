#pragma once

#include <string_view>

/// The standard streams of a process that belongs to somebody else.
namespace corvath::utils {

/// Prints UTF-8 on the standard output or error at once, behind what the host has printed there,
/// and leaves the stream as the host has it. Through std::cout or std::cerr, so that a host that
/// redirects these gets the text; past them where they would fail or decide the orientation of the
/// C stream below, after which the host's own wide text would be lost.
void PrintOutput(std::string_view utf8);
void PrintError(std::string_view utf8);

}  // namespace corvath::utils
