#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace corvath::algorithm::datatypes {

/// Name of one element of the vector response `base`: "base[index]".
std::wstring IndexedName(const std::wstring& base, std::uint64_t index);

/// A name taken apart.
struct SplitName {
  std::wstring base;        ///< the text before the "[", or the whole name
  std::wstring index_text;  ///< the text between the brackets
  bool has_brackets = false;

  /// The index text as a decimal number with an optional sign; nothing without brackets, for
  /// another text or for a number outside 64 bits.
  std::optional<std::int64_t> GetIndex() const;
};

/// Splits a name at its last "[" and the "]" that follows. A base name may hold brackets of its own
/// ("x[mm][0]"); without the pair, or with "]" in front, the name is its own base.
SplitName SplitIndexedName(const std::wstring& name);

}  // namespace corvath::algorithm::datatypes
