#pragma once

#include "calculator/calculator_exception.h"
#include "calculator/macro.h"
#include "calculator/object_table.h"
#include "variant/value/variant.h"

#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace corvath::calculator {
class ParsedText;
struct Workspace;
}  // namespace corvath::calculator

/// Evaluates expression texts over named objects, each a value or a text of its own. The grammar
/// stands in calculator/parser.h. One thread at a time.
///
/// Objects, macros and what texts assign stay until they are replaced. A text is parsed once.
class CCalculator {
 public:
  using Variant = corvath::math::Value;

  struct ObjectRecord {
    std::wstring name;
    std::wstring expression;  ///< empty for a plain value
    Variant value;            ///< with an expression that of its last evaluation
  };

  CCalculator();  ///< knows constants and built-in macros, no objects
  CCalculator(const CCalculator&) = delete;
  CCalculator& operator=(const CCalculator&) = delete;
  ~CCalculator();

  /// The value of `text`.
  /// @throws CExpressionPositionException  the text is no expression, or an operator or function in
  ///         it fails; the message shows the place
  /// @throws CCalculatorException          another failure, see calculator/calculator_exception.h
  /// @throws CVariantException             a failure of the value type outside any operator
  Variant Evaluate(const std::wstring& text);

  /// Adds or replaces an object. With an expression, `value` counts until it is first read.
  /// @throws CCalculatorException  the name denotes a constant, or is no name
  void SetObject(const std::wstring& name, const std::wstring& expression, const Variant& value);
  /// @throws CCalculatorObjectUnknownException
  ObjectRecord GetObject(const std::wstring& name) const;
  /// The same, empty for a name that is not known.
  std::optional<ObjectRecord> FindObject(const std::wstring& name) const;
  /// What the name stands for at present. Does not evaluate.
  corvath::calculator::ObjectState GetObjectState(const std::wstring& name) const;

  /// Names that `text` depends on, directly or through the expressions of objects. Names that are
  /// not known do not count.
  /// @throws CCircularDependencyException  an object depends on itself
  std::set<std::wstring> GetDependencies(const std::wstring& text);
  /// Whether GetDependencies() would refuse the text.
  bool HasCircularDependency(const std::wstring& text);

  /// Whether `name` is a name that an object can have and, with `check_constants`, denotes no
  /// constant.
  bool IsValidIdentifier(const std::wstring& name, bool check_constants) const;

  /// Adds macros; those whose name is taken, by a built-in one for example, are left out.
  void AddMacros(const CalculatorTypeTraits::Macros& macros);

  /// The inside, for the evaluation of many texts over the same names.
  corvath::calculator::Workspace& GetWorkspace() { return *workspace_; }
  const corvath::calculator::Workspace& GetWorkspace() const { return *workspace_; }

 private:
  std::unique_ptr<corvath::calculator::Workspace> workspace_;
};
