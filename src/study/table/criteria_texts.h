#pragma once

#include "design/criterion.h"
#include "design/designs/design.h"
#include "design/named_sequence.h"
#include "training/training_table.h"

#include <string>
#include <vector>

namespace corvath::study {

/// The criteria that texts such as "name: expression" or "name: left <= right" describe (see
/// training::ParseCriterion), tried on the first design that failed for no response.
/// @throws Refusal  a text is malformed, its name is taken or cannot be used; it uses a name or a
///                  function that there is not, depends on itself or fails; or its value is no
///                  number
corvath::algorithm::datatypes::CriterionSequence ParseCriteria(
    const std::vector<std::string>& texts, const corvath::training::TrainingTable& table);

/// Evaluates the criteria of `design` as every design will, those from position `first` on to be
/// tried.
/// @throws Refusal  one of them depends on itself, fails, or its value is no number
void TryCriteria(corvath::algorithm::datatypes::Design design, std::size_t first = 0);

}  // namespace corvath::study
