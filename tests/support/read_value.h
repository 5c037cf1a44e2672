#pragma once

#include "support/values.h"

#include <regex>

namespace support {

/// "1", "2-3i", "nan"; `text` goes behind it.
inline Complex ReadNumber(const char*& text) {
  char* end;
  const double re = std::strtod(text, &end);
  double im = 0.0;
  if (*end == '+' || *end == '-') {
    im = std::strtod(end, &end);
    ++end;  // the i
  }
  text = end;
  return {re, im};
}

/// "true", "nothing", "2-3i", "[1,2]", "[[1,2],[3,4]]", "xy[0,1][5,6]" and "signal[0,1][5,6][7,8]",
/// which has a list for each channel.
inline Value ReadValue(const std::string& text) {
  if (text == "true" || text == "false") return Value(text == "true");
  if (text == "nothing") return Value();
  std::vector<std::vector<Complex>> lists;
  const std::regex innermost(R"(\[[^\[\]]*\])");
  for (std::sregex_iterator list(text.begin(), text.end(), innermost), end; list != end; ++list) {
    lists.emplace_back();
    const std::string entries = list->str();
    for (const char* at = entries.c_str() + 1; *at != ']' && *at != '\0'; at += *at == ',')
      lists.back().push_back(ReadNumber(at));
  }
  const char* at = text.c_str();
  if (lists.empty()) return Value(ReadNumber(at));
  if (text.substr(0, 2) == "[[") return Mat(lists);
  if (text[0] == '[') return Vec(lists[0]);
  if (text[0] == 'x') return XY(lists[0], lists[1]);
  return Sig(lists[0], {lists.begin() + 1, lists.end()});
}

}  // namespace support
