#pragma once

#include "design/named_sequence.h"
#include "foundation/log.h"
#include "metamodel/types.h"

#include <boost/shared_ptr.hpp>

#include <atomic>
#include <memory>
#include <string>
#include <vector>

namespace corvath::zel {

class RowCriteria;

/// The calculator of the last call on some criteria, for the next one: to parse the texts takes
/// longer than to evaluate them at one row. Of one list of inputs and criteria.
///
/// Threads may share it. Who takes the calculator has it alone; others build one of their own, of
/// which one is kept. No lock, so none that a fork could leave behind.
class IdleCriteria {
 public:
  IdleCriteria() = default;
  IdleCriteria(const IdleCriteria&) = delete;
  IdleCriteria& operator=(const IdleCriteria&) = delete;
  ~IdleCriteria() { Drop(); }

  /// What was given back, if it is of these outputs; else null.
  std::unique_ptr<RowCriteria> Take(const std::vector<std::wstring>& outputs);
  /// Keeps it where a later call could not tell it from a new one.
  void GiveBack(std::unique_ptr<RowCriteria> rows);
  void Drop();

 private:
  std::atomic<RowCriteria*> idle_{nullptr};
};

/// Criteria at many rows: ranges of them side by side, with one calculator each.
/// @param x          n x m
/// @param responses  n x k
/// @param log        told once what is wrong with a criterion or a response, as if the ranges had run
///                   in order; may be null
/// @param idle       where calculators of these inputs and criteria come from and go to
/// @param values     receives n * c values, row after row
void EvaluateCriteriaAtRows(const std::vector<std::wstring>& inputs,
                            const std::vector<std::wstring>& outputs,
                            const algorithm::datatypes::CriterionSequence& criteria,
                            const math::metamodel::ConstPoints& x,
                            const math::metamodel::ConstPoints& responses,
                            const boost::shared_ptr<utils::LogBase>& log, IdleCriteria& idle,
                            double* values);

}  // namespace corvath::zel
