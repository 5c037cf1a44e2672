#pragma once

#include "calculator/function_help.h"
#include "variant/value/variant.h"

#include <functional>
#include <initializer_list>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace corvath::calculator {

class FunctionCall;

/// What functions are listed under.
enum class FunctionGroup {
  kElementary,
  kStatistics,
  kComplex,
  kLinearAlgebra,
  kModal,
  kConstructors,
  kSignals,
  kPeaks,
  kFilters,
  kFourier,
  kData,
  kQueries
};
constexpr FunctionGroup kLastFunctionGroup = FunctionGroup::kQueries;

/// "Complex numbers" for example.
const wchar_t* GetGroupName(FunctionGroup group);

/// A function that texts can call.
struct Function {
  static constexpr int kAnyCount = -1;

  FunctionGroup group;
  std::vector<int> counts;  ///< allowed numbers of arguments
  void (*run)(FunctionCall& call, math::Value& result);

  /// Whether it can be called with `count` arguments.
  bool Takes(std::size_t count) const;
};

/// The functions by name, the same for all calculators. Names are case-sensitive.
class FunctionTable {
 public:
  using Functions = std::map<std::wstring, Function, std::less<>>;

  /// The table, filled at the first call.
  static const FunctionTable& Get();

  /// Null for a name that is no function.
  const Function* Find(std::wstring_view name) const;
  const Functions& GetFunctions() const { return functions_; }
  /// Enters one function under each of `names`. `counts`: allowed numbers of arguments.
  void Add(FunctionGroup group, std::initializer_list<const wchar_t*> names,
           std::vector<int> counts, void (*run)(FunctionCall&, math::Value&));

 private:
  FunctionTable();

  Functions functions_;
};

}  // namespace corvath::calculator
