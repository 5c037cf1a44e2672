#pragma once

#include "design/criterion.h"
#include "design/named_sequence.h"
#include "training/training_table.h"

namespace corvath::training {

/// Checks the names in criteria: where a project is solved, they see the inputs that are not
/// constant, the responses and each other.
/// @throws TrainingError  a criterion has the name of a column, or names a constant input
void RequireUsableCriteria(const TrainingTable& table,
                           const algorithm::datatypes::CriterionSequence& criteria);

}  // namespace corvath::training
