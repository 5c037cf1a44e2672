#include "calculator/macro.h"

#include "calculator/calculator_exception.h"
#include "calculator/parser.h"

#include <algorithm>
#include <map>

namespace corvath::calculator {

namespace {

struct Occurrence {
  std::wstring name;
  std::size_t first;
  std::size_t last;
};

/// The objects in the tree of a body, from left to right.
std::vector<Occurrence> FindObjects(const std::wstring& body) {
  const ParseResult result = Parse(body, Whitespace::kSkip);
  if (!result.match)
    throw CExpressionPositionException(
        result.too_deep ? kNestedTooDeep : L"Error determining object positions", body,
        result.stop);
  std::vector<Occurrence> objects;
  for (SyntaxTree::Index node = 0; node < result.tree.size(); ++node)
    if (const Node& object = result.tree[node]; object.rule == Rule::kObject)
      objects.push_back(
          {body.substr(object.first, object.last - object.first), object.first, object.last});
  std::sort(objects.begin(), objects.end(),
            [](const Occurrence& a, const Occurrence& b) { return a.first < b.first; });
  return objects;
}

}  // namespace

std::wstring ExpandMacro(const CalculatorTypeTraits::Macro& macro,
                         const std::vector<std::wstring>& arguments) {
  if (arguments.size() != macro.arg_names_.size())
    throw CCalculatorException(L"Number of arguments error while calling a macro");
  std::map<std::wstring, const std::wstring*> values;
  auto argument = arguments.begin();
  for (const std::wstring& name : macro.arg_names_) values[name] = &*argument++;

  const std::wstring body = DeleteBlanks(macro.expression_);
  if (body.size() > kMaxTextLength)
    throw CCalculatorException(L"Macro of more than " + std::to_wstring(kMaxTextLength) +
                               L" characters");
  std::wstring expansion;
  std::size_t copied = 0;  // what of the body is in the expansion
  for (const Occurrence& object : FindObjects(body)) {
    const auto value = values.find(object.name);
    if (value == values.end()) continue;
    expansion.append(body, copied, object.first - copied).append(*value->second);
    copied = object.last;
    if (expansion.size() > kMaxTextLength) break;  // which no parser takes
  }
  return expansion.append(body, copied);
}

}  // namespace corvath::calculator
