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
  std::wstring signature;  ///< "atan2(y, x)"; optional arguments in brackets
  std::wstring text;  ///< may hold the markup <sub>, <sup> and <br>; the first sentence sums up
  std::vector<ArgumentHelp> arguments;
};

/// Help records by the name of the function, one for each signature.
using HelpTable = std::map<std::wstring, std::vector<FunctionHelp>, std::less<>>;

/// The records that a list of functions shows: without second names, filters, transforms, tables of
/// numbers and the is... queries.
const HelpTable& GetFunctionHelp();
/// The records of all other functions.
const HelpTable& GetFurtherFunctionHelp();

/// The records of any function; null for an unknown name.
const std::vector<FunctionHelp>* FindFunctionHelp(std::wstring_view name);

}  // namespace corvath::calculator
