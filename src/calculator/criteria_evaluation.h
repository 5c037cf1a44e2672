#pragma once

#include "calculator/calculator.h"
#include "calculator/scalar_program.h"
#include "calculator/workspace.h"
#include "design/designs/design.h"

#include <optional>
#include <string>
#include <vector>

namespace corvath::calculator {

/// What an evaluation of criteria lets pass.
struct CriteriaOptions {
  /// Sides of every kind have values, not those of SCALAR kind alone. (The type RHS_ANY takes every
  /// kind in any case.)
  bool allow_all_kinds = false;
  /// Responses without a value or NaN are no problem.
  bool allow_invalid_responses = false;
  /// A criterion whose sides do not combine keeps the values that it has.
  bool keep_partial_values = false;
};

/// Evaluates the criteria of designs, one after the other, with one calculator: each text is parsed
/// once, and what the texts of one design define does not show in the next.
///
/// A design's parameters and responses are objects under their names; so are its criteria, with
/// their expressions, and later with their values. What a criterion refers to is evaluated before it,
/// wherever it stands, also where a macro's body refers to it. A side that takes part in a cycle has
/// no value.
///
/// The plan (order, trees, cycles) of one design serves the following ones while they hold the same
/// names and criteria and no text defines anything. It takes time in proportion to the texts.
class CriteriaEvaluation {
 public:
  using Design = algorithm::datatypes::Design;
  using Criterion = algorithm::datatypes::Criterion;
  using CDesignEntry = algorithm::datatypes::CDesignEntry;
  /// Of a response, or an element of one that is a vector: its numbers at the rows of a block.
  struct RowNumbers {
    std::size_t response;
    std::size_t element;  ///< ScalarProgram::kWhole of a scalar
    const double* numbers;
  };

  /// @param macros  those that the texts may call beside the built-in ones; by default the user's,
  ///                whose file is read when the first design comes with a text that calls any macro
  explicit CriteriaEvaluation(CriteriaOptions options = {},
                              std::optional<CalculatorTypeTraits::Macros> macros = std::nullopt);

  /// Evaluates the criteria that ask for it. Problems are added to the status of the design, and
  /// each concerns one response or criterion alone: 103 for a value that cannot be used, 209 for a
  /// side that fails, 210 for sides that do not combine.
  void Calculate(Design& design);
  /// The same for the design of the last call, which has other numbers since then, but the same names
  /// and criteria, of which the same ask for evaluation. Saves comparing them.
  void CalculateAgain(Design& design);

  /// Whether CalculateRows() serves the designs that CalculateAgain() does: all sides are programs of
  /// numbers.
  bool TakesRows() const { return plan_.takes_rows; }
  /// CalculateAgain() for many designs at once, without a design: the values of the criteria alone.
  /// Only if TakesRows().
  /// @param parameters  of each parameter its numbers at the rows
  /// @param responses   of all responses and elements
  /// @param rows        at most ScalarProgram::kMaxRows
  /// @param values      receives rows * criteria numbers, row after row; those of a row begin with NaN
  ///                    where CalculateAgain() has to tell, and count for nothing
  void CalculateRows(const std::vector<const double*>& parameters,
                     const std::vector<RowNumbers>& responses, std::size_t rows, double* values);

  /// Whether CalculateAgain() does at any later time what a new calculator would: the plan serves, no
  /// text calls a macro, whose file may change, and none has drawn a random number, which a forked
  /// process would draw again.
  bool IsLasting() const;

 private:
  using Entries = algorithm::datatypes::EntrySequence;

  /// A parameter or response.
  struct Input {
    std::wstring name;
    Object* object;
    std::wstring problem;  ///< why it cannot be an object; empty if it can
  };
  struct Side {
    const ParsedText* text = nullptr;      ///< null: nothing to evaluate
    std::wstring problem;                  ///< why it cannot be evaluated
    std::optional<ScalarProgram> program;  ///< of the text
  };
  /// A criterion in the order of evaluation.
  struct Step {
    std::size_t position = 0;
    Object* object = nullptr;
    bool settable = false;  ///< others may read its value by its name
    Side lhs;
    Side rhs;
  };
  struct PlannedCriterion {
    std::wstring name;
    algorithm::datatypes::CriterionDescription description;
    bool needs_evaluation;
  };
  struct Plan {
    bool reusable = false;
    bool takes_rows = false;
    std::vector<Input> parameters;
    std::vector<Input> responses;
    std::vector<PlannedCriterion> criteria;
    std::vector<Step> steps;
  };

  void NeedMacros(const Design& design);
  bool IsPlanFor(const Design& design) const;
  void MakePlan(Design& design);
  void FollowPlan(Design& design);
  void DefineCriteria(const Design& design);
  std::vector<std::size_t> FindOrder(const Design& design);
  Side PrepareSide(const std::wstring& text);
  bool ReadsOnlyFinished();
  void RenewPrograms();
  bool HasProgramsOnly() const;
  Input PrepareInput(const std::wstring& name, const CDesignEntry& entry);
  void SetInputs(const std::vector<Input>& inputs, const Entries& entries, Design& design);
  void CheckResponses(Design& design) const;
  void Run(const Step& step, Design& design);
  bool EvaluateSide(const Side& side, const std::wstring& name, Design& design, math::Value& value);

  CriteriaOptions options_;
  CCalculator calculator_;
  bool has_macros_;  ///< the calculator has all that texts may call
  Plan plan_;
  std::vector<double> work_;  ///< of CalculateRows()
};

/// A copy of the design with its criteria evaluated, see CriteriaEvaluation.
algorithm::datatypes::Design CalculateCriteria(
    const algorithm::datatypes::Design& design, CriteriaOptions options = {},
    std::optional<CalculatorTypeTraits::Macros> macros = std::nullopt);

}  // namespace corvath::calculator
