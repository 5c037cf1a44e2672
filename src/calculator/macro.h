#pragma once

#include <list>
#include <set>
#include <string>
#include <vector>

/// Types of the calculator that files hold. They have no namespace.
struct CalculatorTypeTraits {
  /// A named text with parameters. A call "$NAME(a,b)" puts the texts of its arguments in the
  /// places of the parameters and evaluates the result.
  struct Macro {
    std::wstring macro_id_;  ///< the name behind "$"
    std::list<std::wstring> arg_names_;
    std::wstring expression_;
    std::wstring description_;
    std::wstring category_;

    friend bool operator<(const Macro& a, const Macro& b) { return a.macro_id_ < b.macro_id_; }
  };
  using Macros = std::set<Macro>;
};

namespace corvath::calculator {

/// The body of `macro` without blanks, each parameter replaced by the text of its argument, without
/// parentheses around it. Names of functions and macros and quoted texts stay as they are.
/// @throws CCalculatorException          another number of arguments
/// @throws CExpressionPositionException  the body is no expression
std::wstring ExpandMacro(const CalculatorTypeTraits::Macro& macro,
                         const std::vector<std::wstring>& arguments);

}  // namespace corvath::calculator
