#pragma once

#include <string>
#include <vector>

namespace support {

/// The rows of a table of numbers as Boost.Spirit Qi reads its grammar; numbers are good to some
/// units in the last place.
std::vector<std::vector<double>> ReadTableWithSpirit(const std::string& text);

}  // namespace support
