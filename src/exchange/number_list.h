#pragma once

#include "exchange/number_text.h"

#include <cstddef>
#include <string>

namespace corvath::exchange {

/// Numbers between commas, in lines that begin with `indent`.
template <class Numbers>
std::string NumberLines(const Numbers& numbers, const std::string& indent) {
  constexpr std::size_t kLine = 96;
  std::string text;
  std::string line = indent;
  for (std::size_t i = 0; i < static_cast<std::size_t>(numbers.size()); ++i) {
    const std::string number = RealText(numbers[static_cast<decltype(numbers.size())>(i)]) +
                               (i + 1 < static_cast<std::size_t>(numbers.size()) ? "," : "");
    if (line.size() + number.size() + 1 > kLine && line.size() > indent.size()) {
      text += line + '\n';
      line = indent;
    }
    line += (line.size() > indent.size() ? " " : "") + number;
  }
  return text + line + '\n';
}

}  // namespace corvath::exchange
