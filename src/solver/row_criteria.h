#pragma once

#include "calculator/criteria_evaluation.h"
#include "design/criterion.h"
#include "design/designs/design.h"
#include "foundation/log.h"
#include "metamodel/types.h"

#include <boost/shared_ptr.hpp>

#include <cstddef>
#include <string>
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

  /// The criteria at one row.
  /// @param inputs    the value of input i at inputs[i * input_stride], of output k likewise
  /// @param criteria  receives GetCount() values; NaN for one without a number
  void Evaluate(const double* inputs, std::size_t input_stride, const double* outputs,
                std::size_t output_stride, double* criteria);

  /// What was wrong with a criterion or a response when that first happened.
  struct Problem {
    std::wstring name;
    std::vector<std::wstring> messages;
  };
  /// In the order in which they came, one for each name.
  const std::vector<Problem>& GetProblems() const { return problems_; }

 private:
  struct Place {
    std::size_t output;
    std::size_t position;  ///< of the response
    std::size_t element;   ///< in a vector response
  };

  void PlaceOutputs(const std::vector<std::wstring>& names);
  void SetResponses(const double* outputs, std::size_t stride);
  void NoteProblems();

  std::vector<Problem> problems_;
  calculator::CriteriaEvaluation evaluation_;
  std::vector<Place> places_;        ///< of the outputs in the responses of the design
  std::vector<math::Value> values_;  ///< of the responses
  math::Value::Vector vector_;       ///< elements of one response on their way
  algorithm::datatypes::Design design_;
};

/// Criteria at many rows: ranges of them side by side, with one calculator each.
/// @param x          n x m
/// @param responses  n x k
/// @param log        told once what is wrong with a criterion or a response, as if the ranges had run
///                   in order; may be null
/// @param values     receives n * c values, row after row
void EvaluateCriteriaAtRows(const std::vector<std::wstring>& inputs,
                            const std::vector<std::wstring>& outputs,
                            const algorithm::datatypes::CriterionSequence& criteria,
                            const math::metamodel::ConstPoints& x,
                            const math::metamodel::ConstPoints& responses,
                            const boost::shared_ptr<utils::LogBase>& log, double* values);

}  // namespace corvath::zel
