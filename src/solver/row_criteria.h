#pragma once

#include "calculator/criteria_evaluation.h"
#include "design/criterion.h"
#include "design/designs/design.h"

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace corvath::zel {

/// Criteria at rows of inputs and predicted outputs: one design that takes on the values of each
/// row, and one calculator, so that each text is parsed once. Not to be shared by threads.
class RowCriteria {
 public:
  using EntrySequence = algorithm::datatypes::EntrySequence;

  /// @param inputs   names of the columns of the inputs
  /// @param outputs  names of the outputs, elements of vector responses as "name[i]"; empty for
  ///                 what has no values
  RowCriteria(const std::vector<std::wstring>& inputs, const std::vector<std::wstring>& outputs,
              const algorithm::datatypes::CriterionSequence& criteria);

  std::size_t GetCount() const { return design_.GetCriteria().size(); }
  const std::vector<std::wstring>& GetOutputs() const { return outputs_; }

  /// Whether it evaluates at any later time as a new one would, and holds no more than the project
  /// does: no criterion is a vector, which may be far longer than its text.
  bool IsLasting() const;

  /// The criteria at one row.
  /// @param inputs    the value of input i at inputs[i * input_stride], of output k likewise
  /// @param criteria  receives GetCount() values; NaN for one without a number
  void Evaluate(const double* inputs, std::size_t input_stride, const double* outputs,
                std::size_t output_stride, double* criteria);

  /// The same at `rows` rows: the value of input i in row d at inputs[i * input_stride + d].
  void EvaluateRows(const double* inputs, std::size_t input_stride, const double* outputs,
                    std::size_t output_stride, std::size_t rows, double* criteria);

  /// What was wrong with a criterion or a response when that first happened.
  struct Problem {
    std::wstring name;
    std::vector<std::wstring> messages;
  };
  /// In the order in which they came, one for each name, since they were last taken.
  std::vector<Problem> TakeProblems() { return std::exchange(problems_, {}); }

 private:
  struct Place {
    std::size_t output;
    std::size_t position;  ///< of the response
    std::size_t element;   ///< in a vector response
  };

  void PlaceOutputs();
  void SetResponses(const double* outputs, std::size_t stride);
  void NoteProblems();
  void EvaluateBlock(const double* inputs, std::size_t input_stride, const double* outputs,
                     std::size_t output_stride, std::size_t rows, double* criteria);

  std::vector<std::wstring> outputs_;
  std::vector<Problem> problems_;
  calculator::CriteriaEvaluation evaluation_;
  std::vector<Place> places_;        ///< of the outputs in the responses of the design
  std::vector<math::Value> values_;  ///< of the responses
  math::Value::Vector vector_;       ///< elements of one response on their way
  algorithm::datatypes::Design design_;
};

}  // namespace corvath::zel
