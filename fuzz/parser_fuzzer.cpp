// Expression texts for two parsers, the library's and one that Boost.Spirit makes of the grammar:
// they match alike, stop at the same places and give the same trees.

#include "calculator/parser.h"
#include "foundation/text.h"
#include "spirit_grammar.h"

#include <algorithm>
#include <clocale>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <string>
#include <string_view>

namespace {

namespace calculator = corvath::calculator;
using calculator::SyntaxTree;

/// Spirit takes twice the time or more for each level.
constexpr std::ptrdiff_t kMaxOpen = 5;

void Print(const SyntaxTree& tree, SyntaxTree::Index node, std::wstring_view text,
           std::string& out) {
  if (calculator::GetRuleName(tree[node].rule) == nullptr) std::abort();
  out += std::to_string(static_cast<int>(tree[node].rule)) + '\'';
  for (const wchar_t c : tree.Text(node, text)) out += std::to_string(static_cast<long>(c)) + ' ';
  out += '\'';
  std::string children;
  for (std::size_t i = 0; i < tree.NumChildren(node); ++i) {
    const SyntaxTree::Index child = tree.Child(node, i);
    // Spirit drops the empty node that empty parentheses leave.
    if (!tree.Text(child, text).empty()) Print(tree, child, text, children);
  }
  if (!children.empty()) out += '(' + children + ')';
}

void Compare(std::wstring_view text) {
  const auto opens = [](wchar_t c) { return c == L'(' || c == L'[' || c == L'#'; };
  if (std::count_if(text.begin(), text.end(), opens) > kMaxOpen) return;
  // One letter that is no ASCII has a small one that is: keywords take ASCII alone.
  if (text.find(L'\u0130') != text.npos) return;
  const calculator::ParseResult result = calculator::Parse(text);
  fuzz::Parsed parsed;
  parsed.match = result.match;
  parsed.stop = result.stop;
  if (result.match) Print(result.tree, result.tree.GetRoot(), text, parsed.tree);
  const fuzz::Parsed expected = fuzz::ParseWithSpirit(text);
  if (parsed == expected) return;
  std::cerr << corvath::utils::ToUtf8(text) << "\nstops at " << parsed.stop << ", expected "
            << expected.stop << '\n'
            << parsed.tree << '\n'
            << expected.tree << '\n';
  std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const char* const locale = std::setlocale(LC_CTYPE, "C.UTF-8");  // Spirit's letters
  if (locale == nullptr) return 0;
  const std::wstring text = calculator::DeleteBlanks(
      corvath::utils::FromUtf8({reinterpret_cast<const char*>(data), size}));
  std::size_t begin = 0;
  for (std::size_t end; (end = text.find(L'\n', begin)) != text.npos; begin = end + 1)
    Compare(std::wstring_view(text).substr(begin, end - begin));
  Compare(std::wstring_view(text).substr(begin));
  return 0;
}
