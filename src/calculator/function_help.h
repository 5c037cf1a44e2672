#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace corvath::calculator {

/// One argument as a user reads about it.
struct ArgumentHelp {
  std::wstring name;
  std::wstring values;  ///< "real, complex"
  std::wstring types;   ///< "scalar, vector", or names of constants
  bool optional = false;
  std::wstring description;
};

/// One signature of a function.
struct FunctionHelp {
  std::wstring signature;  ///< "atan2(y, x)"
  std::wstring text;       ///< may hold the markup <sub>, <sup> and <br>
  std::vector<ArgumentHelp> arguments;
};

/// The help records of the functions by name.
using HelpTable = std::map<std::wstring, std::vector<FunctionHelp>, std::less<>>;
const HelpTable& GetFunctionHelp();

}  // namespace corvath::calculator
