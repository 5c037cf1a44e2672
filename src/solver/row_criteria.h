#pragma once

#include "calculator/criteria_evaluation.h"
#include "design/criterion.h"
#include "design/designs/design.h"
#include "foundation/log.h"
#include "metamodel/types.h"

#include <boost/shared_ptr.hpp>

#include <cstddef>
#include <set>
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
  /// @param log      told once what is wrong with a criterion or a response
  RowCriteria(const std::vector<std::wstring>& inputs, const std::vector<std::wstring>& outputs,
              const algorithm::datatypes::CriterionSequence& criteria,
              boost::shared_ptr<utils::LogBase> log);

  std::size_t GetCount() const { return design_.GetCriteria().size(); }

  /// The criteria at one row.
  /// @param inputs    the value of input i at inputs[i * input_stride], of output k likewise
  /// @param criteria  receives GetCount() values; NaN for one without a number
  void Evaluate(const double* inputs, std::size_t input_stride, const double* outputs,
                std::size_t output_stride, double* criteria);

 private:
  struct Place {
    std::size_t output;
    std::size_t position;  ///< of the response
    std::size_t element;   ///< in a vector response
  };

  void PlaceOutputs(const std::vector<std::wstring>& names);
  void SetResponses(const double* outputs, std::size_t stride);
  void TellProblems();

  boost::shared_ptr<utils::LogBase> log_;
  std::set<std::wstring> known_problems_;
  calculator::CriteriaEvaluation evaluation_;
  std::vector<Place> places_;        ///< of the outputs in the responses of the design
  std::vector<math::Value> values_;  ///< of the responses
  math::Value::Vector vector_;       ///< elements of one response on their way
  algorithm::datatypes::Design design_;
};

}  // namespace corvath::zel
