#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace fuzz {

/// What a parse came to. The tree is one line, rule'text'(children); a token counts to the rule
/// around it.
struct Parsed {
  bool match = false;
  std::size_t stop = 0;
  std::string tree;  ///< empty without a match

  bool operator==(const Parsed& other) const {
    return match == other.match && stop == other.stop && tree == other.tree;
  }
};

/// The grammar of expression texts as Boost.Spirit Classic runs it, straight from its rules, in
/// exponential time: a second parser, which shares no line with the library's own.
Parsed ParseWithSpirit(std::wstring_view text);

}  // namespace fuzz
