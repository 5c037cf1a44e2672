#pragma once

#include <cstddef>
#include <string>

namespace support {

/// The outcome of parsing a text with the grammar as Boost.Spirit Classic runs it.
struct Rendering {
  std::size_t stop;
  bool match;
  bool full;
  std::string tree;  ///< id:first-last(children), e.g. "10:1-2(11:0-1(...) 11:2-3(...))"
};

/// Takes exponential time for nested texts. Letters are those of the process's locale.
Rendering RenderWithSpirit(const std::wstring& text);

}  // namespace support
